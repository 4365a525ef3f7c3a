// SPDX-License-Identifier: MIT
#include "driver/allocation_text.hpp"

#include <fmt/format.h>

#include <iterator>

namespace nimba::sim {
namespace {

void append(std::string& text, const NodeValue& value, bool hexadecimal)
{
    if (const auto* literal = std::get_if<std::string>(&value)) {
        text += *literal;
    } else if (const auto* number = std::get_if<int64_t>(&value)) {
        if (hexadecimal) {
            fmt::format_to(std::back_inserter(text), "{:x}", *number);
        } else {
            fmt::format_to(std::back_inserter(text), "{}", *number);
        }
    }
}

}  // namespace

NodeValue value_of(const AllocationValues& values, AllocationKey key, const OwnValues& own)
{
    if (!std::holds_alternative<std::monostate>(values[key])) {
        return values[key];
    }
    switch (key) {
        case AllocationKey::kHandle:
            return own.handle;
        case AllocationKey::kDevice:
            return own.device;
        case AllocationKey::kSegmentid:
            return own.segment;
        case AllocationKey::kGpuVirtAddr:
            return own.address;
        default:
            return {};
    }
}

std::string allocation_text(const AllocationValues& values, const OwnValues& own, bool va_driver)
{
    std::string text;
    for (std::size_t index = 0; index < kAllocationKeyCount; ++index) {
        const auto key = static_cast<AllocationKey>(index);
        text += kAllocationKeyNames[index];
        text += '=';
        append(text, value_of(values, key, own),
               key == AllocationKey::kHandle || (key == AllocationKey::kDevice && !va_driver));
        text += '\n';
    }
    return text;
}

std::string context_text(const DeviceContext& context)
{
    std::string text = "pid = ";
    append(text, context.pid, false);
    text += "\nhandle = ";
    append(text, context.handle, true);
    text += '\n';
    for (const auto& [key, value] : context.further) {
        text += fmt::format("{} = {}\n", key, value);
    }
    return text;
}

std::string vm_node_text(const AllocationValues& values, const OwnValues& own,
                         const DeviceContext& context, const std::string& process)
{
    std::string text = "=====vm node info=====\ndevice_pid = ";
    append(text, context.pid, false);
    text += fmt::format("\ndevice_pname = {}\ngpu_va = ", process);
    append(text, value_of(values, AllocationKey::kGpuVirtAddr, own), true);
    text += "\nsize = ";
    append(text, value_of(values, AllocationKey::kSize, own), true);
    text += '\n';
    return text;
}

}  // namespace nimba::sim
