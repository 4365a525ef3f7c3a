// SPDX-License-Identifier: MIT
#include "tools/smi/worker/counter_reader.hpp"

#include "tools/smi/worker/node_reader.hpp"

#include <fmt/core.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace nimba::smi {
namespace {

// What stays of a record in both of two calls was written by neither.
constexpr int kFirstPattern = 0x5A;
constexpr int kSecondPattern = 0xA5;

constexpr const char* kSwitchOn = "gpuinfo_set_enable_usage";
constexpr const char* kSwitch = "enable_usage";

template <typename Value>
Value pattern(int byte)
{
    Value value{};
    std::memset(&value, byte, sizeof value);
    return value;
}

struct RawFrames {
    uint32_t flips;
    int64_t time;
    int64_t blits;
};

template <typename Value>
std::optional<Value> written(Value first, Value second)
{
    if (first != pattern<Value>(kFirstPattern)) {
        return first;
    }
    return second != pattern<Value>(kSecondPattern) ? std::optional(second) : std::nullopt;
}

RawFrames frames_into(const MonitorEntryPoints& entry, int byte)
{
    RawFrames frames{pattern<uint32_t>(byte), pattern<int64_t>(byte), pattern<int64_t>(byte)};
    entry.fps_count(&frames.flips, &frames.time, &frames.blits);
    return frames;
}

FrameCounts read_frames(Session& session, const MonitorEntryPoints& entry)
{
    return session.call("gpuinfo_get_fps_count", [&] {
        const RawFrames first = frames_into(entry, kFirstPattern);
        const RawFrames second = frames_into(entry, kSecondPattern);
        return FrameCounts{written(first.flips, second.flips), written(first.time, second.time),
                           written(first.blits, second.blits)};
    });
}

std::optional<double> finite(float value)
{
    return std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

FrameRates read_rates(Session& session, const MonitorEntryPoints& entry)
{
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    FpsInfo info{kNone, kNone, kNone, kNone};
    const int32_t status = session.call("get_fps_info", [&] { return entry.fps_info(&info); });
    if (status < 0) {
        return {};
    }
    return {finite(info.flips), finite(info.blits), finite(info.flips_blits),
            finite(info.average_since)};
}

// The words of a record that `read` fills in part.
template <typename Record, std::size_t Count>
void read_words(Session& session, const char* call, int32_t (*read)(Record*),
                std::array<Word, Count>& words)
{
    Record first = pattern<Record>(kFirstPattern);
    Record second = pattern<Record>(kSecondPattern);
    session.call(call, [&] {
        read(&first);
        read(&second);
    });
    for (std::size_t i = 0; i < Count; ++i) {
        words.at(i) = written(first.words[i], second.words[i]);
    }
}

void prepare(Session& session, Monitor& monitor)
{
    const MonitorEntryPoints& entry = monitor.entry;
    session.call("fps_init", [&] { entry.fps_init(); });
    monitor.bandwidth = session.call("bandwidth_init", [&] { return entry.bandwidth_init(); }) == 0;
    monitor.busy = session.call("gfxbusy_init", [&] { return entry.busy_init(); }) == 0;
    monitor.counting = true;
}

// Whether engine use is counted. A driver without a switch counts always.
bool is_accounting(NodeReader& nodes)
{
    return nodes.info(INFO_NODE_ENABLE_USAGE, kSwitch) != 0;
}

void note_no_accounting(NodeReader& nodes, AdapterReading& reading)
{
    const std::string path = nodes.info_path(kSwitch);
    const bool denied = !nodes.may_write(kSwitch);
    const char* const why = denied ? "no permission to write {}: run as root; engine use is not "
                                     "counted"
                                   : "{} stays 0: engine use is not counted";
    reading.remarks.push_back({denied ? ExitStatus::kNoPermission : ExitStatus::kOk, kSwitchOn,
                               fmt::format(fmt::runtime(why), path)});
}

void take_engines(const CounterReading& figures, CounterReading& reading)
{
    reading.engine_3d = figures.engine_3d;
    reading.engine_vcp = figures.engine_vcp;
    reading.engine_vpp = figures.engine_vpp;
    reading.busy = figures.busy;
}

void read_engines(Session& session, const Monitor& monitor, NodeReader& nodes,
                  CounterReading& reading)
{
    reading.engine_3d = nodes.info(INFO_NODE_ENGINE_3D_USAGE, "engine_3d_usage");
    reading.engine_vcp = nodes.info(INFO_NODE_ENGINE_VCP_USAGE, "engine_vcp_usage");
    reading.engine_vpp = nodes.info(INFO_NODE_ENGINE_VPP_USAGE, "engine_vpp_usage");
    if (monitor.busy) {
        read_words(session, "get_gpubusy_info", monitor.entry.busy_info, reading.busy);
    }
}

// The exit of another tool makes zeros of the figures: they count when accounting is on before and
// behind them.
void read_counted_engines(Session& session, const Monitor& monitor, NodeReader& nodes,
                          CounterReading& reading)
{
    constexpr int kTries = 3;
    for (int tries = 0; tries < kTries; ++tries) {
        if (tries > 0) {
            session.call(kSwitchOn, [&] { monitor.entry.set_enable_usage("1"); });
        }
        CounterReading figures;
        if (is_accounting(nodes)) {
            read_engines(session, monitor, nodes, figures);
            if (is_accounting(nodes)) {
                take_engines(figures, reading);
                return;
            }
        }
    }
    note_no_accounting(nodes, reading);
}

}  // namespace

void read_counters(Session& session, Monitor& monitor, const Adapter& adapter,
                   CounterReading& reading)
{
    const bool is_first = !monitor.counting;
    if (is_first) {
        prepare(session, monitor);
    }
    NodeReader nodes{session, monitor.entry, adapter, "counters", reading};
    reading.frames = read_frames(session, monitor.entry);
    if (!reading.frames.flips || !reading.frames.time) {
        nodes.explain("fps_count");
        // Right behind fps_init there is either no frame yet or the chance of one.
        if (!is_first) {
            reading.rates = read_rates(session, monitor.entry);
        }
    }
    if (!reading.frames.blits) {
        nodes.explain("rxa_blt_scn_cnt");
    }
    read_counted_engines(session, monitor, nodes, reading);
    if (monitor.bandwidth) {
        read_words(session, "get_bandwidth_info", monitor.entry.bandwidth_info, reading.bandwidth);
    }
}

}  // namespace nimba::smi
