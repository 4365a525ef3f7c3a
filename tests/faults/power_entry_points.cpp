// SPDX-License-Identifier: MIT
// Sensors, settings, segments, counters, and the memory of the system.
#include "entry_point.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace nimba::test {
namespace {

// A word that still holds the pattern is a dash.
std::string words_of(std::span<const std::uint32_t> words)
{
    std::string told;
    for (const std::uint32_t word : words) {
        told += (told.empty() ? "" : " ") + (word == 0xA5A5A5A5 ? "-" : std::to_string(word));
    }
    return told;
}

// Records that are words alone.
template <typename Record>
std::string told_words(const Record& record)
{
    std::array<std::uint32_t, sizeof(Record) / sizeof(std::uint32_t)> words{};
    std::memcpy(words.data(), &record, sizeof record);
    return words_of(words);
}

Answer temperature(Attempt& attempt)
{
    return filled<std::uint32_t>(
        attempt, [](auto& count) { return gpuinfo_get_temparature_value_int(&count); },
        [](std::uint32_t count) { return std::to_string(count) + " values"; });
}

Answer hwmon_value(Attempt& attempt)
{
    return filled<std::uint32_t>(
        attempt,
        [](auto& count) { return gpuinfo_get_hwmonFD_value_int(HWMON_NODE_TEMP1_INPUT, &count); },
        [](std::uint32_t count) { return std::to_string(count) + " bytes"; });
}

Answer info_value(Attempt& attempt)
{
    return {.status = attempt([] { return gpuinfo_get_jwinfoFD_value_int(INFO_NODE_MCLK); })};
}

Answer flag_set(Attempt& attempt)
{
    Answer answer;
    answer.status = attempt([] { gpuinfo_set_misc_ctl_flag(6, 1); });
    answer.bytes = std::to_string(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_MISC_CTL_FLAG));
    answer.told = "flag " + answer.bytes;
    return answer;
}

void clear_flag()
{
    gpuinfo_set_misc_ctl_flag(9, 6);
}

template <typename Get>
Answer settings_got(Attempt& attempt, Get&& get)
{
    return filled<DvfsRegisterState>(attempt, get, told_words<DvfsRegisterState>);
}

Answer settings(Attempt& attempt)
{
    return settings_got(attempt, [](auto& state) {
        std::uint32_t valid = 0;
        return get_data_from_dvfs_register(&state, &valid);
    });
}

Answer settings_by_worker(Attempt& attempt)
{
    return settings_got(attempt,
                        [](auto& state) { return gpuinfo_get_data_from_dvfs_register(&state); });
}

DvfsRegisterState settings_now()
{
    DvfsRegisterState state{};
    gpuinfo_get_data_from_dvfs_register(&state);
    return state;
}

// Nodes that are plain files keep what is written: each call writes what no call before it left.
template <std::int32_t (*set)(const DvfsRegisterState*)>
Answer settings_written(Attempt& attempt)
{
    DvfsRegisterState state = settings_now();
    state.dvfs_level =
        state.dvfs_level == DVFS_LEVEL_LOW_POWER ? DVFS_LEVEL_PERFORMANCE : DVFS_LEVEL_LOW_POWER;
    Answer answer;
    answer.status = attempt([&] { return set(&state); });
    answer.bytes = settings_now().dvfs_level == state.dvfs_level ? "set" : "as it was";
    answer.told = answer.bytes;
    return answer;
}

Answer clocks(Attempt& attempt)
{
    return filled<DvfsClockInfo>(
        attempt, [](auto& info) { return get_dvfs_info(&info); }, told_words<DvfsClockInfo>);
}

std::string told_segments(const SegmentInfo& info)
{
    return "used " + words_of(std::span{info.used_size}.first(5)) + ", of " +
           words_of(std::span{info.total_size}.first(5));
}

void choose_segments()
{
    segment_init(&adapters);
}

Answer segments_chosen(Attempt& attempt)
{
    return {.status = attempt([] { return segment_init(&adapters); })};
}

template <typename Get>
Answer segments_got(Attempt& attempt, Get&& get)
{
    return filled<SegmentInfo>(attempt, get, told_segments, {});
}

Answer segments(Attempt& attempt)
{
    return segments_got(attempt, [](auto& info) { return get_segment_info(&info); });
}

Answer segments_of_node(Attempt& attempt)
{
    return segments_got(attempt, [](auto& info) { return gpuinfo_get_segment_info(&info); });
}

Answer segments_of_heaps(Attempt& attempt)
{
    return segments_got(attempt, [](auto& info) { return gpuinfo_get_kmd_segment_info(&info, 0); });
}

Answer command_run(Attempt& attempt)
{
    return filled<std::array<char, 16>>(
        attempt,
        [](auto& text) { return runShellCommand("echo a text", text.data(), sizeof text); },
        [](const auto& text) { return text[0] == 'a' ? std::string{text.data()} : "none"; });
}

Answer width(Attempt& attempt)
{
    return {.status = attempt(runShellCommand_getBitWidth)};
}

Answer type(Attempt& attempt)
{
    return {.status = attempt(runShellCommand_getMemoryTYpe)};
}

Answer frames_counted(Attempt& attempt)
{
    std::uint32_t flips = 7;
    std::int64_t time = 7;
    std::int64_t blits = 7;
    Answer answer;
    answer.untouched = "no flips, no time, no blits";
    answer.status = attempt([&] { return gpuinfo_get_fps_count(&flips, &time, &blits); });
    answer.told = answer.bytes = std::string{flips == 7 ? "no flips" : "flips"} +
                                 (time == 7 ? ", no time" : ", time") +
                                 (blits == 7 ? ", no blits" : ", blits");
    return answer;
}

Answer frames_begun(Attempt& attempt)
{
    Answer answer;
    answer.status = attempt(fps_init);
    answer.told = answer.bytes = use_IOCTL_get_fps != 0 ? "by the library" : "by nodes";
    return answer;
}

// The nodes are plain files: a second sample is at the time of the first.
Answer frame_rates(Attempt& attempt)
{
    return filled<FpsInfo>(
        attempt, [](auto& info) { return get_fps_info(&info); },
        [](const FpsInfo& info) { return info.flips >= 0 ? "rates" : "none"; });
}

Answer information_chosen(Attempt& attempt)
{
    return {.status = attempt(bandwidth_init)};
}

void choose_information()
{
    bandwidth_init();
}

Answer information(Attempt& attempt)
{
    return filled<BandwidthInfo>(attempt, [](auto& info) { return get_bandwidth_info(&info); },
                                 told_words<BandwidthInfo>, {});
}

Answer use_chosen(Attempt& attempt)
{
    Answer answer;
    answer.status = attempt(gfxbusy_init);
    answer.told = answer.bytes = "version " + std::to_string(gfxbusy_apiversion);
    return answer;
}

void choose_use()
{
    gfxbusy_init();
}

Answer engine_use(Attempt& attempt)
{
    return filled<GpuBusyInfo>(attempt, [](auto& info) { return get_gpubusy_info(&info); },
                               told_words<GpuBusyInfo>, {});
}

constexpr std::array kEntryPoints{
    without_driver(EntryPoint{"gpuinfo_get_temparature_value_int", 1, nullptr, temperature, false},
                   "0 0 values"),
    without_driver(EntryPoint{"gpuinfo_get_hwmonFD_value_int", 1, nullptr, hwmon_value, false},
                   "0 0 bytes"),
    without_driver(EntryPoint{"gpuinfo_get_jwinfoFD_value_int", 1, nullptr, info_value, false},
                   "0 "),
    without_driver(EntryPoint{"gpuinfo_set_misc_ctl_flag", 1, clear_flag, flag_set, false},
                   "0 flag 0"),
    EntryPoint{"get_data_from_dvfs_register", 1, nullptr, settings, false},
    EntryPoint{"gpuinfo_get_data_from_dvfs_register", 1, nullptr, settings_by_worker, false},
    EntryPoint{"set_data_to_dvfs_register", 0, nullptr, settings_written<set_data_to_dvfs_register>,
               false, false, true},
    EntryPoint{"gpuinfo_set_data_to_dvfs_register", 0, nullptr,
               settings_written<gpuinfo_set_data_to_dvfs_register>, false, false, true},
    EntryPoint{"get_dvfs_info", 1, nullptr, clocks, false},
    EntryPoint{"segment_init, of a node", 1, nullptr, segments_chosen, false},
    EntryPoint{"segment_init, of heaps", 0, nullptr, segments_chosen, false},
    EntryPoint{"get_segment_info, from a node", 1, choose_segments, segments, false},
    without_driver(EntryPoint{"get_segment_info, from heaps", 0, choose_segments, segments, false},
                   "-1 used 0 256 48 8 0, of 0 2048 1024 512 0"),
    EntryPoint{"get_segment_info, from allocations", 0, nullptr, segments, false},
    EntryPoint{"gpuinfo_get_segment_info", 1, nullptr, segments_of_node, false},
    without_driver(EntryPoint{"gpuinfo_get_kmd_segment_info", 0, nullptr, segments_of_heaps, false},
                   "1 used 0 256 256 256 0, of 0 2048 2048 2048 0"),
    EntryPoint{"runShellCommand", -1, nullptr, command_run, false, true},
    EntryPoint{"runShellCommand_getBitWidth", -1, nullptr, width, false, true},
    EntryPoint{"runShellCommand_getMemoryTYpe", -1, nullptr, type, false, true},
    without_driver(EntryPoint{"gpuinfo_get_fps_count", 1, nullptr, frames_counted, false},
                   "0 flips, time, no blits", "0 no flips, no time, no blits"),
    EntryPoint{"fps_init", 1, nullptr, frames_begun, false},
    without_driver(EntryPoint{"get_fps_info", 1, nullptr, frame_rates, true}, "0 rates"),
    EntryPoint{"bandwidth_init", 1, nullptr, information_chosen, false},
    EntryPoint{"get_bandwidth_info", 1, choose_information, information, false},
    EntryPoint{"gfxbusy_init", 1, nullptr, use_chosen, false},
    EntryPoint{"get_gpubusy_info", 1, choose_use, engine_use, false},
};

}  // namespace

std::span<const EntryPoint> power_entry_points()
{
    return kEntryPoints;
}

}  // namespace nimba::test
