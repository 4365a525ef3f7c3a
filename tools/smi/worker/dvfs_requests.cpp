// SPDX-License-Identifier: MIT
#include "tools/smi/worker/dvfs_requests.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/dvfs/assignment.hpp"
#include "tools/smi/dvfs/reading.hpp"
#include "tools/smi/flag/reading.hpp"
#include "tools/smi/worker/dvfs_adapter.hpp"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <limits>

namespace nimba::smi {
namespace {

constexpr const char* kFlagNode = "misc_ctl_flag";

// A field that the driver does not give keeps what the record had: one of these each time.
constexpr int kFirstFill = 0xA5;
constexpr int kSecondFill = 0x5A;

Failure bad_request(const Session& session)
{
    return {ExitStatus::kFailed, session.current_call(), "a request has no such arguments"};
}

DvfsRegisterState read_record(Session& session, const DvfsEntryPoints& entry, int fill)
{
    DvfsRegisterState record;
    std::memset(&record, fill, sizeof record);
    uint32_t valid = 0;
    session.call("get_data_from_dvfs_register", [&] { return entry.get_data(&record, &valid); });
    return record;
}

bool is_kept(const DvfsRegisterState& record, const DvfsField& field, int fill)
{
    DvfsRegisterState filled;
    std::memset(&filled, fill, sizeof filled);
    return value_in(record, field) == value_in(filled, field);
}

NodeAccess node_access(Session& session, const InfoDirectory& info, const char* node)
{
    return session.call(fmt::format("open {}/{}", info.path, node),
                        [&] { return access_to(info, node); });
}

bool has_number(Session& session, const InfoDirectory& info, const char* node)
{
    return session.call(fmt::format("open {}/{}", info.path, node),
                        [&] { return begins_with_number(info, node); });
}

struct Settings {
    DvfsReading reading;
    DvfsRegisterState record{};  // what the library compares with when it writes
};

Settings read_settings(Session& session, const DvfsEntryPoints& entry,
                       const SelectedAdapter& adapter)
{
    const DvfsRegisterState first = read_record(session, entry, kFirstFill);
    Settings settings;
    settings.record = read_record(session, entry, kSecondFill);
    DvfsReading& reading = settings.reading;
    reading.bus_id = adapter.bus_id;
    reading.chip = adapter.chip;
    for (const DvfsField& field : dvfs_fields()) {
        // The library reads a clock without a node as 0.
        const bool given = field.writable ? !(is_kept(first, field, kFirstFill) &&
                                              is_kept(settings.record, field, kSecondFill))
                                          : has_number(session, adapter.info, field.node);
        reading.values.push_back(given ? std::optional(value_in(settings.record, field))
                                       : std::nullopt);
        if (std::ranges::find(reading.nodes, field.node, &NodeAccess::node) ==
            reading.nodes.end()) {
            reading.nodes.push_back(node_access(session, adapter.info, field.node));
        }
    }
    return settings;
}

FlagReading read_flag(Session& session, const DvfsEntryPoints& entry,
                      const SelectedAdapter& adapter)
{
    FlagReading reading;
    reading.bus_id = adapter.bus_id;
    reading.access = node_access(session, adapter.info, kFlagNode);
    const int32_t value = session.call("gpuinfo_get_jwinfoFD_value_int", [&] {
        return entry.get_info_value(INFO_NODE_MISC_CTL_FLAG);
    });
    if (has_number(session, adapter.info, kFlagNode)) {
        reading.flag = static_cast<uint32_t>(value);
    }
    return reading;
}

// The two numbers of "SET CLEAR".
std::optional<std::pair<uint32_t, uint32_t>> bits_in(std::string_view arguments)
{
    const auto number = [](std::string_view text) {
        return parse_number<uint32_t>(text, 0, std::numeric_limits<uint32_t>::max());
    };
    const auto blank = std::min(arguments.find(' '), arguments.size());
    const auto set = number(arguments.substr(0, blank));
    const auto clear = number(arguments.substr(std::min(blank + 1, arguments.size())));
    return set && clear ? std::optional(std::pair{*set, *clear}) : std::nullopt;
}

}  // namespace

Message answer_dvfs(Session& session)
{
    return with_selected_adapter(
        session, Answer{to_json_value(DvfsReading{})},
        [&](const DvfsEntryPoints& entry, const SelectedAdapter& adapter) {
            return Answer{to_json_value(read_settings(session, entry, adapter).reading)};
        });
}

Message answer_dvfs_write(Session& session, std::string_view arguments)
{
    const auto assignments = decode_assignments(arguments);
    if (!assignments) {
        return bad_request(session);
    }
    return with_selected_adapter(
        session, Answer{to_json_value(DvfsWriting{})},
        [&](const DvfsEntryPoints& entry, const SelectedAdapter& adapter) {
            Settings before = read_settings(session, entry, adapter);
            for (const auto& [field, value] : *assignments) {
                if (value_of(before.reading, *field)) {
                    set_value(before.record, *field, value);
                }
            }
            session.call("set_data_to_dvfs_register",
                         [&] { return entry.set_data(&before.record); });
            Settings after = read_settings(session, entry, adapter);
            return Answer{to_json_value(
                DvfsWriting{adapter.bus_id, std::move(before.reading), std::move(after.reading)})};
        });
}

Message answer_flag(Session& session)
{
    return with_selected_adapter(
        session, Answer{to_json_value(FlagReading{})},
        [&](const DvfsEntryPoints& entry, const SelectedAdapter& adapter) {
            return Answer{to_json_value(read_flag(session, entry, adapter))};
        });
}

Message answer_flag_write(Session& session, std::string_view arguments)
{
    const auto bits = bits_in(arguments);
    if (!bits) {
        return bad_request(session);
    }
    return with_selected_adapter(session, Answer{to_json_value(FlagWriting{})},
                                 [&](const DvfsEntryPoints& entry, const SelectedAdapter& adapter) {
                                     FlagWriting writing;
                                     writing.bus_id = adapter.bus_id;
                                     writing.before = read_flag(session, entry, adapter);
                                     if (writing.before.flag) {
                                         session.call("gpuinfo_set_misc_ctl_flag", [&] {
                                             entry.set_flag(static_cast<int32_t>(bits->first),
                                                            static_cast<int32_t>(bits->second));
                                         });
                                     }
                                     writing.after = read_flag(session, entry, adapter);
                                     return Answer{to_json_value(writing)};
                                 });
}

}  // namespace nimba::smi
