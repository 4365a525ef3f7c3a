// SPDX-License-Identifier: MIT
// What dmidecode writes, against taking its lines one by one.
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/machine_paths.hpp"
#include "fuzz/support/node_file.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string>

namespace nimba::fuzz {
namespace {

constexpr std::size_t kMostBytes = 66'000;  // more than the reader's buffer
constexpr std::size_t kLongestLine = 1023;
constexpr std::size_t kMostModules = 8;

struct Modules {
    std::array<int, kMostModules> widths{};
    std::array<unsigned, kMostModules> marks{};
    std::size_t count = 0;
};

bool has(std::string_view line, const char* word)
{
    return line.find(word) != std::string_view::npos;
}

void scan_behind(std::string_view line, const char* word, const char* format, void* number)
{
    const std::string behind{line.substr(line.find(word) + std::strlen(word))};
    // NOLINTNEXTLINE(cert-err34-c): scanf's rules are what the text is defined by
    std::sscanf(behind.c_str(), format, number);
}

Modules modules_of(std::string_view text, const char* word, const char* before)
{
    Modules modules;
    bool is_armed = false;
    while (!text.empty() && modules.count < kMostModules) {
        const std::size_t newline = text.find('\n');
        const std::size_t length = newline == std::string_view::npos ? text.size() : newline + 1;
        const std::string_view whole = text.substr(0, std::min(length, kLongestLine));
        text.remove_prefix(whole.size());
        const std::string_view line = whole.substr(0, whole.find('\0'));
        if (has(line, "bits") && has(line, "Total") && has(line, "Width:")) {
            scan_behind(line, "Width:", " %d", &modules.widths[modules.count]);
            is_armed = true;
        } else if (is_armed && has(line, word) && has(line, before)) {
            scan_behind(line, before, " %x", &modules.marks[modules.count++]);
            is_armed = false;
        }
    }
    return modules;
}

int32_t bit_width_of(const std::string& text)
{
    const Modules modules = modules_of(text, "Bank", "CHANNEL");
    const auto& widths = modules.widths;
    const auto width = static_cast<uint32_t>(widths[0]);
    if (modules.count == 2 && modules.marks[0] != modules.marks[1] && widths[1] == widths[0]) {
        return static_cast<int32_t>(width * 2);
    }
    if (modules.count == 4 && widths[2] == widths[0] && widths[3] == widths[1]) {
        return static_cast<int32_t>((width + static_cast<uint32_t>(widths[1])) * 2);
    }
    return widths[0];
}

void check_modules(const std::string& text)
{
    check(runShellCommand_getBitWidth() == bit_width_of(text), "a width is that of the modules");
    const unsigned generation = modules_of(text, "Type", "DDR").marks[0];
    check(runShellCommand_getMemoryTYpe() == (generation == 5 ? 5 : 4),
          "a type is that of the first module");
}

void check_output(const std::string& text, uint32_t size)
{
    std::string output(size, '\xA5');
    const int32_t count = runShellCommand("dmidecode", output.data(), size);
    std::string expected = text.substr(0, size == 0 ? 0 : size - 1);
    check(count == static_cast<int32_t>(expected.size()), "as much is read as fits");
    expected.resize(size);
    check(output == expected, "an output is copied, with zeros behind it");
}

// The memory's speed is part of the summary of a chip; another chip's is read anew.
void check_speed(const std::string& text)
{
    static find_adapter adapters{};
    uint32_t& chip = adapters.header.chip_id[0];
    chip = chip == DEVICE_ID_QV_M20 ? DEVICE_ID_QV_M30 : DEVICE_ID_QV_M20;
    const std::size_t key = text.substr(0, kLongestLine).find("Memory Speed: ");
    int speed = 0;
    if (key != std::string::npos) {
        const std::string behind = text.substr(0, kLongestLine).substr(key);
        // NOLINTNEXTLINE(cert-err34-c): scanf's rules are what the text is defined by
        std::sscanf(behind.c_str(), "Memory Speed: %d", &speed);
    }
    adapter_summary summary{};
    get_adapter_summary(&summary, &adapters);
    check(summary.memory_data_rate == static_cast<uint32_t>(speed), "a speed is that of its line");
}

}  // namespace

void try_input(std::string_view input)
{
    static NodeFile output;
    redirect_commands(output.path());
    const uint8_t control = take_byte(input);
    const auto size = take_number<uint16_t>(input);
    const std::string text = repeated(input, control, kMostBytes);
    output.set(text);
    check_modules(text);
    check_output(text, size);
    check_speed(text);
}

}  // namespace nimba::fuzz
