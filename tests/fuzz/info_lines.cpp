// SPDX-License-Identifier: MIT
// Nodes of one line: single values, the counts of frames, the driver's kind, and the process of a
// device.
#include "core/adapter_sysfs.hpp"
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/machine_paths.hpp"
#include "fuzz/support/node_directory.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"
#include "pagetable/process_command.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

namespace nimba::fuzz {
namespace {

constexpr std::array kNodes{"eclk",  "temp1_input",   "fps_count", "rxa_blt_scn_cnt",
                            "debug", "misc_ctl_flag", "process"};
constexpr std::size_t kMostBytes = 70'000;  // more than a line buffer

NodeDirectory& nodes()
{
    static NodeDirectory nodes{"eclk",  "temp1_input",   "fps_count", "rxa_blt_scn_cnt",
                               "debug", "misc_ctl_flag", "process"};
    return nodes;
}

void use_nodes()
{
    static gpu_infos infos{};
    infos.jw_info_dir_fd = nodes().descriptor();
    infos.hwmon_dir_fd = nodes().descriptor();
    pCurrent_gpu_infos = &infos;
    redirect("/sys/kernel/debug/dri/5/jw/info", nodes().path() + "/debug");
}

int32_t value_in(const std::string& text)
{
    return static_cast<int32_t>(std::strtol(text.substr(0, 64).c_str(), nullptr, 10));
}

void check_value()
{
    check(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_ECLK) == value_in(nodes().text("eclk")),
          "a value is the number that its node begins with");
    uint32_t count = 0;
    const std::string text = nodes().text("temp1_input");
    check(gpuinfo_get_hwmonFD_value_int(0, &count) == value_in(text),
          "a sensor's value is the number that its node begins with");
    check(count == std::min<std::size_t>(text.size(), 64), "as many bytes are read as there are");
}

void check_temperature()
{
    const std::string text = nodes().text("temp1_input");
    char* end = nullptr;
    const auto expected = static_cast<int32_t>(std::strtoul(text.c_str(), &end, 10));
    uint32_t count = 7;
    check(gpuinfo_get_temparature_value_int(&count) == expected,
          "a temperature is the number that its node begins with");
    check(count == (end == text.c_str() ? 0U : 1U), "a temperature counts when there is a number");
}

void check_frames()
{
    const std::string text = nodes().text("fps_count");
    const std::string blit_text = nodes().text("rxa_blt_scn_cnt");
    uint32_t due_flips = 1;
    int64_t due_time = 2;
    int64_t due_blits = 3;
    char* behind_flips = nullptr;
    char* end = nullptr;
    const auto flips = static_cast<uint32_t>(std::strtoul(text.c_str(), &behind_flips, 10));
    if (behind_flips != text.c_str()) {
        due_flips = flips;
        const long time = std::strtol(behind_flips, &end, 10);
        due_time = end == behind_flips ? due_time : time;
    }
    const long blits = std::strtol(blit_text.c_str(), &end, 10);
    due_blits = end == blit_text.c_str() ? due_blits : blits;
    uint32_t flip_count = 1;
    int64_t time_stamp = 2;
    int64_t blit_count = 3;
    gpuinfo_get_fps_count(&flip_count, &time_stamp, &blit_count);
    check(flip_count == due_flips && time_stamp == due_time && blit_count == due_blits,
          "counts of frames are the numbers of their nodes, or stay");
}

void check_driver_kind()
{
    const ChipFamily family{0, "jw", "jw_info"};
    const bool expected = nodes().text("debug").substr(0, 128).find("VA=1") != std::string::npos;
    check(is_va_driver(5, family) == expected, "a VA driver is one that says so");
}

void check_flag(int32_t set, int32_t clear)
{
    const std::string before = nodes().text("misc_ctl_flag");
    const std::string written = std::to_string((value_in(before) & ~clear) | set) + "\n";
    gpuinfo_set_misc_ctl_flag(set, clear);
    const std::string after = nodes().text("misc_ctl_flag");
    check(!nodes().has("misc_ctl_flag") || after.starts_with(written), "a flag is written whole");
}

// "pid" of the first line that has it.
std::string process_in(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t newline = text.find('\n');
        const std::size_t length = newline == std::string_view::npos ? text.size() : newline + 1;
        std::string line{text.substr(0, std::min<std::size_t>(length, 511))};
        text.remove_prefix(line.size());
        line = up_to_nul(line);
        if (line.find("pid") == std::string::npos) {
            continue;
        }
        const std::size_t key = line.find("pid = ");
        line = key == std::string::npos ? "" : line.substr(key + std::strlen("pid = "));
        return line.substr(0, line.find_last_not_of(" \n\r\t") + 1).substr(0, 47);
    }
    return "";
}

// What a shell makes of one word of the command's arguments; nothing may end it early.
std::string shell_word(std::string_view text)
{
    std::string word;
    bool is_quoted = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\'') {
            is_quoted = !is_quoted;
        } else if (!is_quoted && text[at] == '\\') {
            word += text.at(++at);
        } else {
            check(is_quoted || (text[at] >= '0' && text[at] <= '9'), "a shell sees digits alone");
            word += text[at];
        }
    }
    check(!is_quoted, "a quotation ends");
    return word;
}

void check_process()
{
    constexpr std::string_view kBefore = "ps -p ";
    constexpr std::string_view kBehind = " -o comm=";
    data_vectors device{};
    std::memset(device.pid, 0, sizeof device.pid);
    const std::string path = nodes().path() + "/process";
    check(get_Pid_info(&device, path.c_str()) == (nodes().has("process") ? 0 : -1),
          "a node that is there can be read");
    const std::string pid = device.pid;
    check(pid == process_in(nodes().text("process")), "a process id is that of its line");
    const std::string command = process_command(pid);
    check(command.starts_with(kBefore) && command.ends_with(kBehind), "a command asks for a name");
    const std::string_view word{command.data() + kBefore.size(),
                                command.size() - kBefore.size() - kBehind.size()};
    check(!word.empty() && shell_word(word) == pid, "a process id reaches the command as it is");
}

}  // namespace

void try_input(std::string_view input)
{
    use_nodes();
    const uint8_t control = take_byte(input);
    const auto set = take_number<int32_t>(input);
    const auto clear = take_number<int32_t>(input);
    const std::vector<std::string_view> texts = split_into(input, kNodes.size());
    for (std::size_t node = 0; node < kNodes.size(); ++node) {
        nodes().show(kNodes[node], repeated(texts[node], control, kMostBytes));
    }
    check_value();
    check_temperature();
    check_frames();
    check_driver_kind();
    check_flag(set, clear);
    check_process();
}

}  // namespace nimba::fuzz
