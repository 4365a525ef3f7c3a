// SPDX-License-Identifier: MIT
#include "tools/smi/memory/owners.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace nimba::smi {
namespace {

template <typename Text>
std::string listed(std::span<const Process> processes, const std::string& none, Text text)
{
    if (processes.empty()) {
        return none;
    }
    std::vector<std::string> texts;
    std::ranges::transform(processes, std::back_inserter(texts), text);
    return fmt::format("{}", fmt::join(texts, ", "));
}

}  // namespace

void Owners::learn(std::span<const DeviceContext> contexts)
{
    for (const DeviceContext& context : contexts) {
        devices_[context.device].clear();
    }
    for (const DeviceContext& context : contexts) {
        std::vector<Process>& processes = devices_[context.device];
        const Process process{context.pid, context.name};
        if (std::ranges::find(processes, process) == processes.end()) {
            processes.push_back(process);
        }
    }
}

std::span<const Process> Owners::of(uint32_t device) const
{
    const auto found = devices_.find(device);
    return found == devices_.end() ? std::span<const Process>{} : found->second;
}

std::string pids_text(std::span<const Process> processes, const std::string& none)
{
    return listed(processes, none, [](const Process& p) { return std::to_string(p.pid); });
}

std::string names_text(std::span<const Process> processes, const std::string& none)
{
    return listed(processes, none,
                  [&](const Process& p) { return p.name.empty() ? none : p.name; });
}

}  // namespace nimba::smi
