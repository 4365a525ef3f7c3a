// SPDX-License-Identifier: MIT
#include "driver/fault_control.hpp"

#include "fault_reader.hpp"
#include "machine_file_error.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace nimba::sim {

std::optional<NodeAttributes> FaultControl::look_up(const std::string& path)
{
    return path == kFaultNode ? NodeAttributes{false, 0600} : driver_.look_up(path);
}

std::vector<std::string> FaultControl::list(const std::string& directory)
{
    return driver_.list(directory);
}

std::optional<std::string> FaultControl::read(const std::string& file)
{
    if (file != kFaultNode) {
        return driver_.read(file);
    }
    std::string text;
    for (const Fault& fault : plan_.faults()) {
        text += "[[fault]]\n" + to_text(fault) + "\n";
    }
    return text;
}

int FaultControl::write(const std::string& file, std::string_view text)
{
    return file == kFaultNode ? command(text) : driver_.write(file, text);
}

// Whether a driver shows anything of such a one.
bool FaultControl::has_adapter(int card)
{
    const std::array places{fmt::format("dri/{}", card), fmt::format("info/{}", card),
                            fmt::format("hwmon/{}", card), fmt::format("proc/gpuinfo_{}", card)};
    return std::ranges::any_of(
        places, [&](const std::string& place) { return driver_.look_up(place).has_value(); });
}

int FaultControl::command(std::string_view text)
{
    if (text == kClearFaults) {
        plan_.clear();
        return 0;
    }
    try {
        const Fault fault = parse_fault(text);
        if (fault.card && !has_adapter(*fault.card)) {
            return ENODEV;
        }
        plan_.add(fault);
        return 0;
    } catch (const MachineFileError&) {
        return EINVAL;
    }
}

}  // namespace nimba::sim
