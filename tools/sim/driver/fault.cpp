// SPDX-License-Identifier: MIT
#include "driver/fault.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <utility>

namespace nimba::sim {
namespace {

struct ErrorName {
    std::string_view name;
    int number;
};

constexpr std::array kErrors{
    ErrorName{"EACCES", EACCES}, ErrorName{"EAGAIN", EAGAIN}, ErrorName{"EBUSY", EBUSY},
    ErrorName{"EINTR", EINTR},   ErrorName{"EINVAL", EINVAL}, ErrorName{"EIO", EIO},
    ErrorName{"EMFILE", EMFILE}, ErrorName{"ENFILE", ENFILE}, ErrorName{"ENODEV", ENODEV},
    ErrorName{"ENOENT", ENOENT}, ErrorName{"ENOMEM", ENOMEM}, ErrorName{"ENXIO", ENXIO},
    ErrorName{"EPERM", EPERM},   ErrorName{"ESTALE", ESTALE}, ErrorName{"ETIMEDOUT", ETIMEDOUT},
};

bool has_error(FaultKind kind)
{
    return kind == FaultKind::kOpen || kind == FaultKind::kRead || kind == FaultKind::kWrite ||
           kind == FaultKind::kList;
}

bool has_bytes(FaultKind kind)
{
    return kind == FaultKind::kRead || kind == FaultKind::kShort || kind == FaultKind::kGarbage;
}

}  // namespace

std::string_view to_text(FaultKind kind)
{
    switch (kind) {
        case FaultKind::kOpen:
            return "open";
        case FaultKind::kRead:
            return "read";
        case FaultKind::kShort:
            return "short";
        case FaultKind::kBlock:
            return "block";
        case FaultKind::kGarbage:
            return "garbage";
        case FaultKind::kWrite:
            return "write";
        case FaultKind::kVanish:
            return "vanish";
        case FaultKind::kList:
            return "list";
        case FaultKind::kGone:
            break;
    }
    return "gone";
}

std::optional<int> error_number(std::string_view name)
{
    const auto* const found = std::ranges::find(kErrors, name, &ErrorName::name);
    return found == kErrors.end() ? std::nullopt : std::optional{found->number};
}

std::string to_text(const Fault& fault)
{
    std::string text = fmt::format("kind = \"{}\"\n", to_text(fault.kind));
    const auto add = [&](std::string_view key, auto value) {
        text += fmt::format("{} = {}\n", key, value);
    };
    if (fault.directory != NodeDirectory::kDebug) {
        text += fmt::format("directory = \"{}\"\n", to_text(fault.directory));
    }
    if (!fault.path.empty()) {
        text += fmt::format("path = \"{}\"\n", fault.path);
    }
    if (fault.card) {
        add("adapter", *fault.card);
    }
    if (has_error(fault.kind)) {
        text += fmt::format("error = \"{}\"\n",
                            std::ranges::find(kErrors, fault.error, &ErrorName::number)->name);
    }
    if (has_bytes(fault.kind)) {
        add("bytes", fault.bytes);
    }
    if (fault.entries) {
        add("entries", *fault.entries);
    }
    if (fault.kind == FaultKind::kBlock) {
        add("ms", fault.length.count());
    }
    if (fault.kind == FaultKind::kGarbage) {
        add("seed", fault.seed);
    }
    if (fault.times != FaultTimes::kAlways) {
        add(fault.times == FaultTimes::kFirst ? "first" : "every", fault.count);
    }
    if (fault.after.count() != 0) {
        add("after_ms", fault.after.count());
    }
    if (fault.duration) {
        add("for_ms", fault.duration->count());
    }
    return text;
}

}  // namespace nimba::sim
