// SPDX-License-Identifier: MIT
#include "tools/smi/worker/monitor_requests.hpp"

#include "tools/smi/monitor/readings.hpp"
#include "tools/smi/worker/counter_reader.hpp"
#include "tools/smi/worker/entered_adapter.hpp"
#include "tools/smi/worker/monitor.hpp"
#include "tools/smi/worker/node_reader.hpp"
#include "tools/smi/worker/segment_reader.hpp"

#include <nlohmann/json.hpp>

#include <cstring>
#include <utility>

namespace nimba::smi {
namespace {

// Looks the entry points up at the first sample.
std::variant<Monitor*, Failure> ensure_monitor(Session& session)
{
    auto& monitor = session.monitor();
    if (!monitor) {
        auto found =
            session.call("dlsym", [&] { return find_monitor_entry_points(session.library()); });
        if (auto* const message = std::get_if<std::string>(&found)) {
            return Failure{ExitStatus::kNoLibrary, session.current_call(), std::move(*message)};
        }
        monitor.emplace().entry = std::get<MonitorEntryPoints>(found);
    }
    return &*monitor;
}

// Enters the adapter and answers with what `read` puts into the reading. An empty slot has no bus
// id. `read` may return a failure.
template <typename Reading, typename Read>
Message answer_sample(Session& session, Read read)
{
    auto ensured = ensure_monitor(session);
    if (auto* const failure = std::get_if<Failure>(&ensured)) {
        return std::move(*failure);
    }
    Monitor& monitor = *std::get<Monitor*>(ensured);
    Reading reading;
    if (const auto own = enter_own_adapter(session)) {
        reading.bus_id = own->adapter.bus_id;
        session.call("gpuinfo_set_enable_usage", [&] { monitor.entry.set_enable_usage("1"); });
        if (std::optional<Failure> failure = read(monitor, *own, reading)) {
            return *std::move(failure);
        }
    }
    return Answer{to_json_value(reading)};
}

DvfsRegisterState dvfs_state(Session& session, const MonitorEntryPoints& entry, int byte)
{
    DvfsRegisterState state;
    std::memset(&state, byte, sizeof state);
    session.call("gpuinfo_get_data_from_dvfs_register", [&] { entry.dvfs_state(&state); });
    return state;
}

// The settings before and after a reading.
struct DvfsReadings {
    DvfsRegisterState before[2];
    DvfsRegisterState after[2];
};

// A field that the driver does not give stays as it was, in two readings.
template <typename Number>
std::optional<int64_t> given(const DvfsReadings& readings, Number DvfsRegisterState::*member)
{
    for (std::size_t i = 0; i < 2; ++i) {
        if (readings.after[i].*member != readings.before[i].*member) {
            return readings.after[i].*member;
        }
    }
    return std::nullopt;
}

void read_dvfs(Session& session, const MonitorEntryPoints& entry, NodeReader& nodes,
               ClockReading& reading)
{
    constexpr int kPatterns[] = {0x5A, 0xA5};
    DvfsReadings readings;
    for (std::size_t i = 0; i < 2; ++i) {
        std::memset(&readings.before[i], kPatterns[i], sizeof readings.before[i]);
        readings.after[i] = dvfs_state(session, entry, kPatterns[i]);
    }
    reading.gfx = given(readings, &DvfsRegisterState::gfx_clock);
    reading.gfx_voltage = given(readings, &DvfsRegisterState::gfx_voltage);
    reading.level = given(readings, &DvfsRegisterState::dvfs_level);
    if (!reading.gfx || !reading.gfx_voltage) {
        nodes.explain("dvfs_clk_voltage");
    }
    if (!reading.level) {
        nodes.explain("dvfs_level");
    }
}

std::optional<Failure> read_clocks(Session& session, const Monitor& monitor,
                                   const EnteredAdapter& own, ClockReading& reading)
{
    NodeReader nodes{session, monitor.entry, own.adapter, "clocks", reading};
    reading.engine = nodes.info(INFO_NODE_ECLK, "eclk");
    reading.video = nodes.info(INFO_NODE_VCLK, "vclk");
    reading.memory = nodes.info(INFO_NODE_MCLK, "mclk");
    reading.core = nodes.info(INFO_NODE_CORECLK, "coreclk");
    read_dvfs(session, monitor.entry, nodes, reading);
    return std::nullopt;
}

std::optional<Failure> read_sensors(Session& session, const Monitor& monitor,
                                    const EnteredAdapter& own, SensorReading& reading)
{
    NodeReader nodes{session, monitor.entry, own.adapter, "sensors", reading};
    reading.temperature = nodes.temperature();
    reading.fan0 = nodes.hwmon(HWMON_NODE_FAN0_INPUT, "fan0_input");
    reading.fan1 = nodes.hwmon(HWMON_NODE_FAN1_INPUT, "fan1_input");
    reading.fan_speed = nodes.info(INFO_NODE_FAN_SPEED, "fan_speed");
    return std::nullopt;
}

}  // namespace

Message answer_segments(Session& session)
{
    return answer_sample<SegmentReading>(
        session, [&](Monitor& monitor, const EnteredAdapter& own, SegmentReading& reading) {
            return read_segments(session, monitor.entry, own.adapter, reading);
        });
}

Message answer_clocks(Session& session)
{
    return answer_sample<ClockReading>(
        session, [&](Monitor& monitor, const EnteredAdapter& own, ClockReading& reading) {
            return read_clocks(session, monitor, own, reading);
        });
}

Message answer_sensors(Session& session)
{
    return answer_sample<SensorReading>(
        session, [&](Monitor& monitor, const EnteredAdapter& own, SensorReading& reading) {
            return read_sensors(session, monitor, own, reading);
        });
}

Message answer_counters(Session& session)
{
    return answer_sample<CounterReading>(session, [&](Monitor& monitor, const EnteredAdapter& own,
                                                      CounterReading& reading) {
        if (!own.complete) {
            reading.remarks.push_back(
                {ExitStatus::kOk, "gfx_global_init",
                 "its kernel-interface library is missing or unusable: bandwidth and busy words "
                 "are not available"});
        }
        read_counters(session, monitor, own.adapter, reading);
        return std::optional<Failure>{};
    });
}

}  // namespace nimba::smi
