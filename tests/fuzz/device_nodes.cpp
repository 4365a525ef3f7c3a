// SPDX-License-Identifier: MIT
// The names and texts of device nodes and a process's command line, against reading line by line. A
// first byte with the bit kNamed gives the entries names: the first lines of their texts.
#include "fuzz/support/check.hpp"
#include "fuzz/support/entry_names.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/machine_paths.hpp"
#include "fuzz/support/node_tree.hpp"
#include "fuzz/support/outcome.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace nimba::fuzz {
namespace {

constexpr unsigned kNamed = 8;
constexpr std::size_t kMostNodes = 52;  // more than the map holds
constexpr std::size_t kMostBytes = 24'000;
constexpr std::size_t kLongestPart = 127;

// What getPackageNameFromPid makes of the only command line that there is; nothing when it leaves
// the name as it was.
void name_process(int32_t pid, const std::string& command_line, std::string& name)
{
    if (std::to_string(pid).back() % 2 != 0) {
        name.clear();
        return;
    }
    if (command_line.empty()) {
        return;
    }
    std::string line = command_line.substr(0, 511);
    line = line.substr(0, line.find('\n') == std::string::npos ? line.size() : line.find('\n') + 1);
    line = up_to_nul(line);
    if (line.size() >= sizeof gfx_device_pid::process_name) {
        line = line.substr(0, line.find(' '));
        line = line.substr(line.rfind('/') + 1);
    }
    name = line.substr(0, sizeof gfx_device_pid::process_name - 1);
}

struct Context {
    int32_t pid = 0;
    int32_t handle = 0;
    std::string name;
};

Outcome read_line(std::string_view line, const std::string& command_line, Context& context)
{
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        return Outcome::kDone;
    }
    const std::string_view key = line.substr(0, equals == 0 ? 0 : equals - 1);
    std::string_view value = line.substr(std::min(equals + 2, line.size()));
    if (key.size() > kLongestPart || value.size() > kLongestPart) {
        return Outcome::kBreach;
    }
    value = value.substr(0, value.empty() ? 0 : value.size() - 1);
    if (key == "pid") {
        context.pid = low_bits(value);
        name_process(context.pid, command_line, context.name);
    }
    return key == "handle" ? to_int(value, 16, context.handle) : Outcome::kDone;
}

Outcome read_plainly(std::string_view text, const std::string& command_line, Context& context)
{
    Outcome outcome = Outcome::kDone;
    while (outcome == Outcome::kDone && !text.empty()) {
        const std::size_t newline = text.find('\n');
        const std::string_view line =
            text.substr(0, newline == std::string_view::npos ? newline : newline + 1);
        outcome = read_line(line, command_line, context);
        text.remove_prefix(line.size());
    }
    return outcome;
}

void check_entry(const gfx_device_pid& entry, const Context& expected)
{
    gfx_device_pid same{};
    same.pid = expected.pid;
    same.handle = expected.handle;
    expected.name.copy(same.process_name, sizeof same.process_name - 1);
    check(entry.pid == same.pid && entry.handle == same.handle, "an entry has the node's numbers");
    check(std::strcmp(entry.process_name, same.process_name) == 0,
          "an entry has the process's name");
}

void use_tree(const std::string& path)
{
    check(path.size() < sizeof sys_kernel_debug_ID_dri_ADAPTER_path, "TMPDIR is short");
    std::strcpy(sys_kernel_debug_ID_dri_ADAPTER_path, path.c_str());
}

void check_map(const std::vector<std::string>& texts, const std::vector<std::size_t>& listed,
               const std::string& command_line, bool va_driver)
{
    _GFX_DEVICE_PID_MAP map;
    std::memset(&map, 0xA5, sizeof map);
    const Outcome outcome = outcome_of([&] {
        check(get_device_pid_maps_internal(&map, 0, va_driver ? 1 : 0) == 0,
              "nodes that are there can be read");
    });
    std::size_t filled = 0;
    Outcome expected = Outcome::kDone;
    for (const std::size_t node : listed) {
        Context context;
        expected = filled == ALLOCATION_SUMMARY_MAX
                       ? Outcome::kDone
                       : read_plainly(texts[node], command_line, context);
        if (expected != Outcome::kDone || filled == ALLOCATION_SUMMARY_MAX) {
            break;
        }
        check_entry(map.entries[filled++], context);
    }
    check(outcome == expected, "a listing ends as the lines of its nodes do");
    const gfx_device_pid zero{};
    for (; filled < ALLOCATION_SUMMARY_MAX; ++filled) {
        check(std::memcmp(&map.entries[filled], &zero, sizeof zero) == 0,
              "entries that are not used are zero");
    }
}

}  // namespace

void try_input(std::string_view input)
{
    static NodeTree tree{"devices", "info"};
    static NodeFile command_line;
    redirect_command_lines(command_line.path());
    const uint8_t control = take_byte(input);
    std::vector<std::string_view> parts = split(input, kMostNodes + 1);
    command_line.set(parts[0]);
    const std::size_t count = parts.size() - 1;
    const std::vector<std::string> names =
        (control & kNamed) != 0 ? take_names(std::span{parts}.subspan(1)) : numbered_names(count);
    std::vector<std::string> texts;
    for (std::size_t node = 0; node < count; ++node) {
        texts.push_back(repeated(parts[node + 1], control, kMostBytes / count));
        tree.node(node).set(texts.back());
    }
    const NodeTree::Tree& shown = tree.with_entries(names);
    use_tree(shown.path);
    check_map(texts, shown.listed, std::string{parts[0]}, (control & 4U) != 0);
}

}  // namespace nimba::fuzz
