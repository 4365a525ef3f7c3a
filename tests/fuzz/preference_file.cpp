// SPDX-License-Identifier: MIT
// The preference file: any text is read, and what can be written is read as it was.
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/machine_paths.hpp"
#include "fuzz/support/node_file.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

namespace nimba::fuzz {
namespace {

using Record = _UTIL_GPU_PREFERENCE_NODE;
using Records = std::vector<Record>;

constexpr const char* kPath = "/home/.local/share/wmt_gfx_util.ini";
constexpr std::size_t kMostBytes = 24'000;
constexpr std::string_view kBlanks = " \t\n\v\f\r";

NodeFile& file()
{
    static NodeFile file;
    return file;
}

template <std::size_t size>
std::string text_in(const char (&field)[size])
{
    return {field, ::strnlen(field, size)};
}

// The file's form has no place for these characters, nor for a text that fills its field.
template <std::size_t size>
bool can_carry(const char (&field)[size], const char* others)
{
    const std::string text = text_in(field);
    return text.size() < size && text.find_first_of(others) == std::string::npos;
}

template <std::size_t size>
bool has_no_outer_blanks(const char (&field)[size])
{
    const std::string text = text_in(field);
    return text.empty() || (kBlanks.find(text.front()) == std::string_view::npos &&
                            kBlanks.find(text.back()) == std::string_view::npos);
}

bool can_carry(const Record& record)
{
    return can_carry(record.FileName, ";]\n") && can_carry(record.FullPath, ";\n") &&
           can_carry(record.PreferGpuName, ";\n") && has_no_outer_blanks(record.FullPath) &&
           has_no_outer_blanks(record.PreferGpuName);
}

bool says_the_same(const Record& a, const Record& b)
{
    return text_in(a.FileName) == text_in(b.FileName) &&
           text_in(a.FullPath) == text_in(b.FullPath) &&
           text_in(a.PreferGpuName) == text_in(b.PreferGpuName) && a.GpuPrefer == b.GpuPrefer &&
           a.domain == b.domain && a.bus == b.bus && a.device == b.device &&
           a.function == b.function;
}

void load()
{
    interface_config_list.clear();
    const int32_t sections = parseINI(kPath);
    check(sections == static_cast<int32_t>(interface_config_list.size()),
          "each section is a record");
}

// Writes the list, reads it and writes it again.
void check_round_trip()
{
    savefile_INI(kPath);
    const Records written = interface_config_list;
    const std::string text = file().text();
    load();
    if (!std::ranges::all_of(written, [](const Record& record) { return can_carry(record); })) {
        return;
    }
    check(std::ranges::equal(interface_config_list, written, says_the_same),
          "what was written is read as it was");
    savefile_INI(kPath);
    check(file().text() == text, "what was read is written as it was");
}

// In memory of the size that the caller tells.
void check_listing(int32_t capacity)
{
    const auto held = static_cast<int32_t>(interface_config_list.size());
    int32_t count = -1;
    GetGPUPreference_config(nullptr, &count);
    check(count == held, "all records count");
    std::vector<Record> buffer(static_cast<std::size_t>(std::max(capacity, 1)));
    count = capacity;
    GetGPUPreference_config(buffer.data(), &count);
    check(count == std::min(held, std::max(capacity, 1)), "as many records are listed as fit");
}

std::string take_line(std::string_view& input)
{
    const std::size_t end = std::min(input.find('\n'), input.size());
    std::string line{input.substr(0, end)};
    input.remove_prefix(std::min(end + 1, input.size()));
    return line;
}

Record take_record(std::string_view& input)
{
    Record record{};
    const std::string path = take_line(input);
    const std::string name = take_line(input);
    path.copy(record.FullPath, sizeof record.FullPath);
    get_filename(up_to_nul(path)).copy(record.FileName, sizeof record.FileName);
    name.copy(record.PreferGpuName, sizeof record.PreferGpuName);
    record.GpuPrefer = take_number<int32_t>(input);
    record.domain = take_number<uint16_t>(input);
    record.bus = take_byte(input);
    record.device = take_byte(input);
    record.function = take_byte(input);
    return record;
}

void check_operations(std::string_view input)
{
    initGPUPreference_config();
    while (!input.empty()) {
        const uint8_t operation = take_byte(input);
        const Record record = take_record(input);
        if (operation % 4 == 0) {
            RemoveGPUPreference_config(&record);
        } else {
            SetGPUPreference_config(&record);
        }
    }
    check_round_trip();
}

void check_trimming(std::string_view text)
{
    std::string line{text.substr(0, text.find('\0'))};
    std::string expected = line.substr(0, line.find_last_not_of(kBlanks) + 1);
    const std::size_t first = expected.find_first_not_of(kBlanks);
    expected = first == std::string::npos ? "" : expected.substr(first);
    trimWhitespace(line.data());
    check(up_to_nul(line) == expected, "blanks around a text are cut off");
}

}  // namespace

void try_input(std::string_view input)
{
    ::setenv("HOME", "/home", 1);
    redirect(kPath, file().path());
    const uint8_t control = take_byte(input);
    file().set("");
    if ((control & 4U) != 0) {
        check_operations(input);
    } else {
        file().set(repeated(input, control, kMostBytes));
        load();
        check_round_trip();
        check_trimming(input);
    }
    check_listing(control / 8);
}

}  // namespace nimba::fuzz
