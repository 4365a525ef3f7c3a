// SPDX-License-Identifier: MIT
#include "tools/smi/alloc/command_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/memory/command_options.hpp"
#include "tools/smi/option_value.hpp"
#include "tools/smi/text/size.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace nimba::smi {
namespace {

struct KeyName {
    std::string_view name;
    SortKey key;
    bool descending;  // when no direction is given
};

constexpr std::array kKeys{
    KeyName{"slot", SortKey::kSlot, false},       KeyName{"handle", SortKey::kHandle, false},
    KeyName{"device", SortKey::kDevice, false},   KeyName{"pid", SortKey::kPid, false},
    KeyName{"process", SortKey::kProcess, false}, KeyName{"size", SortKey::kSize, true},
    KeyName{"segment", SortKey::kSegment, false}, KeyName{"width", SortKey::kWidth, true},
    KeyName{"height", SortKey::kHeight, true},    KeyName{"format", SortKey::kFormat, false},
    KeyName{"type", SortKey::kType, false},
};

constexpr const char* kSortForm =
    "slot, handle, device, pid, process, size, segment, width, height, format or type, then "
    "nothing, :asc or :desc";

template <typename Number>
std::optional<Number> parse_whole(std::string_view text)
{
    return parse_number<Number>(text, std::numeric_limits<Number>::min(),
                                std::numeric_limits<Number>::max());
}

}  // namespace

std::optional<SortOrder> parse_sort_order(std::string_view text)
{
    const auto colon = text.find(':');
    const std::string_view direction =
        colon == std::string_view::npos ? std::string_view{} : text.substr(colon);
    const auto* const known = std::ranges::find(kKeys, text.substr(0, colon), &KeyName::name);
    if (known == kKeys.end()) {
        return std::nullopt;
    }
    if (direction.empty()) {
        return SortOrder{known->key, known->descending};
    }
    if (direction != ":asc" && direction != ":desc") {
        return std::nullopt;
    }
    return SortOrder{known->key, direction == ":desc"};
}

std::optional<uint32_t> parse_device(std::string_view text)
{
    if (!text.starts_with("0x")) {
        return parse_whole<uint32_t>(text);
    }
    const std::string_view digits = text.substr(2);
    uint32_t device = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), device, 16);
    return error == std::errc{} && end == digits.data() + digits.size() ? std::optional(device)
                                                                        : std::nullopt;
}

void add_alloc_options(CLI::App& command, Options& options)
{
    AllocationFilter& filter = options.alloc.filter;
    add_value(command, "--sort", "KEY[:asc|:desc]", kSortForm, "Sort by this (default: size)",
              parse_sort_order, [&options](SortOrder order) { options.alloc.sort = order; });
    add_value(command, "--pid", "PID", "a process id", "Show what this process holds",
              parse_whole<int>, [&filter](int pid) { filter.pid = pid; });
    add_text(command, "--process", "TEXT", filter.process,
             "Show what processes hold whose name contains this");
    add_value(command, "--device", "HANDLE", "a device handle such as 0x1f or 31",
              "Show the allocations of this device", parse_device,
              [&filter](uint32_t device) { filter.device = device; });
    add_value(command, "--segment", "N", "a segment's number", "Show what is in this segment",
              parse_whole<int32_t>, [&filter](int32_t segment) { filter.segment = segment; });
    add_value(command, "--min-size", "SIZE", "a size such as 4096, 4KiB or 1.5MiB",
              "Show allocations of this size and above", parse_size,
              [&filter](uint64_t size) { filter.min_size = size; });
    add_memory_options(command, options);
}

}  // namespace nimba::smi
