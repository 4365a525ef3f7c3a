// SPDX-License-Identifier: MIT
#include "tools/smi/worker/memory_requests.hpp"

#include "tools/smi/memory/group.hpp"
#include "tools/smi/worker/driver_files.hpp"
#include "tools/smi/worker/entered_adapter.hpp"
#include "tools/smi/worker/memory_reader.hpp"
#include "tools/smi/worker/own_adapter.hpp"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <utility>

namespace nimba::smi {
namespace {

constexpr const char* kInit = "gfx_global_init";

// The adapter whose memory can be read.
struct Entered {
    std::string debug_directory;
    ReadingBase reading;  // without what is to be read
};

// Without a readable info node the library takes every driver for a legacy one.
std::optional<Failure> unknown_driver(Session& session, const Adapter& adapter)
{
    const std::string info = driver_info_path(adapter.card.value_or(-1), adapter.vendor_id);
    if (adapter.driver == DriverKind::kVa ||
        (has_primary_node(adapter) &&
         session.call("open " + info, [&] { return read_access(info); }) == Access::kOpen)) {
        return std::nullopt;
    }
    return Failure{ExitStatus::kOk, "open",
                   fmt::format("the driver kind is unknown, since {} cannot be read: devices of "
                               "allocations may be wrong",
                               info)};
}

// Makes the worker's adapter current. An empty slot has no bus id and no directory.
std::variant<Entered, Failure> enter(Session& session)
{
    const auto own = enter_own_adapter(session);
    if (!own) {
        return Entered{};
    }
    Entered entered;
    entered.debug_directory = *session.library().entry.debug_directory;
    entered.reading.bus_id = own->adapter.bus_id;
    if (entered.debug_directory.empty()) {
        return Failure{ExitStatus::kNoAdapter, kInit,
                       "the library does not know where its driver shows its memory: install the "
                       "library that knows the chip"};
    }
    if (!own->complete) {
        entered.reading.remarks.push_back(
            {ExitStatus::kOk, kInit,
             "its kernel-interface library is missing or unusable; video memory is shown all the "
             "same"});
    }
    if (auto unknown = unknown_driver(session, own->adapter)) {
        entered.reading.remarks.push_back(*std::move(unknown));
    }
    return entered;
}

using Allocations = std::variant<std::vector<Allocation>, Failure>;

// Enters the adapter, reads its allocations with `read` and its contexts, and hands both to `make`,
// which makes the answer.
template <typename Make>
Message answer_reading(Session& session, Allocations (*read)(Session&, const std::string&),
                       Make make)
{
    auto entered = enter(session);
    if (auto* const failure = std::get_if<Failure>(&entered)) {
        return std::move(*failure);
    }
    auto& [directory, reading] = std::get<Entered>(entered);
    std::vector<Allocation> allocations;
    if (reading.bus_id) {
        Allocations result = read(session, directory);
        if (auto* const failure = std::get_if<Failure>(&result)) {
            return std::move(*failure);
        }
        allocations = std::get<std::vector<Allocation>>(std::move(result));
        read_contexts(session, directory, reading);
    }
    return Answer{to_json_value(make(std::move(reading), std::move(allocations)))};
}

}  // namespace

Message answer_memory_sample(Session& session)
{
    return answer_reading(session, read_allocations, [](ReadingBase base, auto allocations) {
        return MemoryReading{std::move(base), std::move(allocations)};
    });
}

Message answer_memory(Session& session)
{
    Message message = answer_memory_sample(session);
    session.leave_adapter();
    return message;
}

Message answer_leaks(Session& session)
{
    return answer_reading(session, read_leaks, [](ReadingBase base, const auto& allocations) {
        return LeakReading{std::move(base), group_by_shape(allocations)};
    });
}

Message answer_tidy(Session& session)
{
    const auto entered = enter(session);
    session.leave_adapter();
    return Answer{std::holds_alternative<Entered>(entered)};
}

}  // namespace nimba::smi
