// SPDX-License-Identifier: MIT
// Sensors, settings, segments, counters, and the memory of the system.
#include "entry_point.hpp"

#include <array>
#include <chrono>
#include <cmath>
#include <fstream>

namespace nimba::test {
namespace {

constexpr const char* kModeNode = "/sys/bus/pci/devices/0000:01:00.0/qv_info/power_mode";
constexpr const char* kLevelNode = "/sys/bus/pci/devices/0000:01:00.0/qv_info/dvfs_level";
constexpr const char* kFlipsNode = "/sys/bus/pci/devices/0000:02:00.0/jw_info/fps_count";
constexpr const char* kBlitsNode = "/sys/bus/pci/devices/0000:02:00.0/jw_info/rxa_blt_scn_cnt";

void write_node(const char* path, const std::string& text)
{
    std::ofstream{path} << text;
}

std::string first_line(const char* path)
{
    std::string line;
    std::getline(std::ifstream{path} >> std::ws, line);
    return line;
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

// What a write is compared with is what was read last.
void reset_settings()
{
    write_node(kModeNode, "0x1\n");
    write_node(kLevelNode, "balance\n");
    settings_now();
}

// Two settings; the nodes keep the text of what sets them.
template <std::int32_t (*set)(const DvfsRegisterState*)>
Answer settings_written(Attempt& attempt)
{
    DvfsRegisterState state = settings_now();
    state.power_mode = 2;
    state.dvfs_level = DVFS_LEVEL_LOW_POWER;
    Answer answer;
    answer.untouched = "mode 0x1, level balance";
    answer.status = attempt([&] { return set(&state); });
    answer.told = answer.bytes =
        "mode " + first_line(kModeNode) + ", level " + first_line(kLevelNode);
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
    return filled<SegmentInfo>(attempt, get, told_segments);
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
        [](const auto& text) {
            return text[0] == 'a'
                       ? '"' + std::string{text.data(), ::strcspn(text.data(), "\n")} + '"'
                       : "none";
        });
}

Answer width(Attempt& attempt)
{
    return {.status = attempt(runShellCommand_getBitWidth)};
}

Answer type(Attempt& attempt)
{
    return {.status = attempt(runShellCommand_getMemoryTYpe)};
}

// Of so many seconds, where the nodes are plain files.
void write_frames(int seconds)
{
    const auto node = [=](int frames) { return std::to_string(frames * seconds); };
    write_node(kFlipsNode, node(6000) + " " + node(1'000'000'000) + "\n");
    write_node(kBlitsNode, node(3000) + "\n");
}

void count_frames()
{
    if (!drivers_live) {
        write_frames(1);
    }
}

// What drivers count that live is another at each time.
std::string told_count(std::int64_t count)
{
    if (count == 7) {
        return "none";
    }
    return drivers_live && count > 0 ? "some" : std::to_string(count);
}

Answer frames_counted(Attempt& attempt)
{
    std::uint32_t flips = 7;
    std::int64_t time = 7;
    std::int64_t blits = 7;
    Answer answer;
    answer.untouched = "flips none at none, blits none";
    answer.status = attempt([&] { return gpuinfo_get_fps_count(&flips, &time, &blits); });
    answer.told = answer.bytes =
        "flips " + told_count(flips) + " at " + told_count(time) + ", blits " + told_count(blits);
    return answer;
}

Answer frames_begun(Attempt& attempt)
{
    Answer answer;
    answer.status = attempt(fps_init);
    answer.told = answer.bytes = use_IOCTL_get_fps != 0 ? "by the library" : "by nodes";
    return answer;
}

std::int64_t time_of_last_flip()
{
    std::uint32_t flips = 0;
    std::int64_t time = 0;
    std::int64_t blits = 0;
    gpuinfo_get_fps_count(&flips, &time, &blits);
    return time;
}

// Drivers that live have counted for a while since a first sample, which is the library's. Nodes
// that are plain files have had a sample, and are a second on.
void begin_frames()
{
    constexpr std::int64_t kWhile = 10'000'000;  // nanoseconds
    constexpr auto kPatience = std::chrono::seconds{10};
    if (!drivers_live) {
        FpsInfo ignored{};
        write_frames(1);
        get_fps_info(&ignored);
        write_frames(2);
        return;
    }
    fps_init();
    const auto end = std::chrono::steady_clock::now() + kPatience;
    const std::int64_t begin = time_of_last_flip();
    std::int64_t now = begin;
    while (now != 0 && now < begin + kWhile && std::chrono::steady_clock::now() < end) {
        now = time_of_last_flip();
    }
}

// In whole numbers: time stamps have the precision that they have.
std::string told_rates(const FpsInfo& info)
{
    std::string told;
    for (const float rate : {info.flips, info.blits, info.flips_blits, info.average_since}) {
        told += told.empty() ? "" : " ";
        told += bytes_of(rate) == bytes_of(patterned<float>()) ? "-"
                                                               : std::to_string(std::lround(rate));
    }
    return told;
}

Answer frame_rates(Attempt& attempt)
{
    Answer answer = filled<FpsInfo>(
        attempt, [](auto& info) { return get_fps_info(&info); }, told_rates);
    answer.untouched = told_rates(patterned<FpsInfo>());
    answer.bytes = answer.told;
    return answer;
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
    return filled<BandwidthInfo>(
        attempt, [](auto& info) { return get_bandwidth_info(&info); }, told_words<BandwidthInfo>);
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
    return filled<GpuBusyInfo>(
        attempt, [](auto& info) { return get_gpubusy_info(&info); }, told_words<GpuBusyInfo>);
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
    EntryPoint{"set_data_to_dvfs_register", 0, reset_settings,
               settings_written<set_data_to_dvfs_register>, false, false, true},
    EntryPoint{"gpuinfo_set_data_to_dvfs_register", 0, reset_settings,
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
    answers_live(
        without_driver(EntryPoint{"gpuinfo_get_fps_count", 1, count_frames, frames_counted, false},
                       "0 flips some at some, blits none", "0 flips none at none, blits none"),
        "1, flips some at some, blits some"),
    without_calls(EntryPoint{"fps_init", 1, nullptr, frames_begun, false}),
    answers_live(without_calls(EntryPoint{"get_fps_info", 1, begin_frames, frame_rates, false}),
                 "0, 120 - - 120"),
    without_calls(EntryPoint{"bandwidth_init", 1, nullptr, information_chosen, false}),
    without_calls(EntryPoint{"get_bandwidth_info", 1, choose_information, information, false}),
    without_calls(EntryPoint{"gfxbusy_init", 1, nullptr, use_chosen, false}),
    answers_live(without_calls(EntryPoint{"get_gpubusy_info", 0, choose_use, engine_use, false}),
                 "0, - - 45 - 30 25 - 15 - -"),
};

}  // namespace

std::span<const EntryPoint> power_entry_points()
{
    return kEntryPoints;
}

}  // namespace nimba::test
