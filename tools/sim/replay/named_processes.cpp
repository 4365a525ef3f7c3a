// SPDX-License-Identifier: MIT
#include "replay/named_processes.hpp"

#include "machine.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace nimba::sim {
namespace {

// As the library takes it: the low bits of what it makes of all digits.
void add_number(std::string_view digits, std::set<int>& processes)
{
    const auto pid = static_cast<int32_t>(std::strtol(std::string{digits}.c_str(), nullptr, 10));
    if (pid >= 1 && pid <= kGreatestPid) {
        processes.insert(pid);
    }
}

// All numbers of the lines that have the word.
void add_processes_in(std::string_view text, std::set<int>& processes)
{
    constexpr std::string_view kDigits = "0123456789";
    for (auto at = text.find("pid"); at != std::string_view::npos; at = text.find("pid", at)) {
        const auto end = std::min(text.find('\n', at), text.size());
        while ((at = text.find_first_of(kDigits, at)) < end) {
            const auto behind = std::min(text.find_first_not_of(kDigits, at), end);
            add_number(text.substr(at, behind - at), processes);
            at = behind;
        }
        at = end;
    }
}

}  // namespace

std::set<int> named_processes(const archive::Capture& capture)
{
    std::set<int> processes;
    for (const archive::Sample& sample : capture.samples) {
        for (const auto& [path, text] : sample.texts) {
            if (path.find("/devices/") != std::string::npos) {
                add_processes_in(*text, processes);
            }
        }
    }
    return processes;
}

}  // namespace nimba::sim
