// SPDX-License-Identifier: MIT
// Discovery, life cycle and summaries.
#include "entry_point.hpp"

#include <unistd.h>

#include <array>

namespace nimba::test {
namespace {

find_adapter fresh_record()
{
    find_adapter record{};
    record.header.vendor_id_filter = 0xFFFF;
    for (int slot = 0; slot < MAX_CHIP_NUM; ++slot) {
        record.header.drm_fd[slot] = -1;
        record.gpu_infos[slot].pci_dir_fd = -1;
        record.gpu_infos[slot].jw_info_dir_fd = -1;
        record.gpu_infos[slot].hwmon_dir_fd = -1;
    }
    return record;
}

// Closes what a discovery opened, and leaves in the record whether it was open.
std::string close_all(find_adapter& record)
{
    std::string told = std::to_string(record.header.chip_num) + " chips";
    for (int slot = 0; slot < record.header.chip_num; ++slot) {
        gpu_infos& infos = record.gpu_infos[slot];
        told += ", " + std::string{record.header.chip_name[slot]} + " " +
                std::to_string(record.header.chip_id[slot]) + " of " +
                std::to_string(infos.vendor_id) + " at \"" + infos.busid + "\", card " +
                std::to_string(record.header.drm_card_idx[slot]);
        told += record.header.IS_VA_driver[slot] != 0 ? "" : " without VA";
        for (const auto& [name, fd] : {std::pair{" without node", &record.header.drm_fd[slot]},
                                       std::pair{" without PCI", &infos.pci_dir_fd},
                                       std::pair{" without info", &infos.jw_info_dir_fd},
                                       std::pair{" without hwmon", &infos.hwmon_dir_fd}}) {
            if (*fd >= 0) {
                ::close(*fd);
                *fd = 0;
            } else {
                told += name;
            }
        }
    }
    return told;
}

Answer discovered(Attempt& attempt, std::int32_t (*find)(find_adapter*))
{
    Answer answer;
    find_adapter record = fresh_record();
    answer.untouched = bytes_of(record);
    answer.status = attempt([&] { return find(&record); });
    answer.told = close_all(record);
    answer.bytes = bytes_of(record);
    return answer;
}

Answer found(Attempt& attempt)
{
    return discovered(attempt, gfx_find_adapter);
}

Answer handles(Attempt& attempt)
{
    return discovered(attempt, gpuinfo_nimba_get_device_handles);
}

Answer drm_loaded(Attempt& attempt)
{
    return {.status = attempt(gpuinfo_nimba_init)};
}

std::string life_state()
{
    return pdev != nullptr ? "a block" : "no block";
}

void start()
{
    gfx_global_init(&adapters);
}

Answer started(Attempt& attempt)
{
    Answer answer;
    answer.status = attempt([] { return gfx_global_init(&adapters); });
    answer.told = answer.bytes = life_state();
    return answer;
}

Answer stopped(Attempt& attempt)
{
    Answer answer;
    answer.status = attempt([] { return gfx_global_exit(1); });
    answer.told = answer.bytes = life_state();
    return answer;
}

Answer usage_switched(Attempt& attempt)
{
    return {.status = attempt([] { return gpuinfo_set_enable_usage("1"); })};
}

// Makes the library forget what it keeps of the adapter.
void describe_another()
{
    find_adapter another = adapters;
    another.chip_id_idx = 0;
    another.header.chip_id[0] = 0;
    adapter_summary summary{};
    adapter_summary_ext2 summary_ext2{};
    get_adapter_summary(&summary, &another);
    get_adapter_summary_ext2(&summary_ext2, &another);
}

template <std::int32_t (*describe)(adapter_summary*, find_adapter*)>
Answer described(Attempt& attempt)
{
    return filled<adapter_summary>(
        attempt, [](auto& out) { return describe(&out, &adapters); }, told_words<adapter_summary>);
}

std::string told_ext2(const adapter_summary_ext2& out)
{
    std::array<char, 128> versions{};
    std::snprintf(versions.data(), versions.size(), "driver %jx, firmware %jx \"%.31s\"",
                  std::uintmax_t{out.driver_version}, std::uintmax_t{out.firmware_version},
                  out.firmware_name);
    std::array<char, 64> resolutions{};
    std::snprintf(resolutions.data(), resolutions.size(), "%jx %jx",
                  std::uintmax_t{out.max_resolution_hdmi_dp},
                  std::uintmax_t{out.max_resolution_vga});
    return std::string{versions.data()} + ", fills " +
           words_of(std::array{out.pixel_fillrate, out.texture_fillrate}) + ", clock " +
           words_of(std::array{out.memory_clock_freq}) + ", shows " + resolutions.data() +
           ", use " +
           words_of(std::array{out.gpu_memory_usage, out.gpu_use_rate_3d, out.gpu_use_rate_video,
                               out.gpu_use_rate_vpp}) +
           ", at " + words_of(std::array{out.realtime_temperature}) + ", PCIe " +
           words_of(std::array{out.pcie_gen});
}

template <std::int32_t (*describe)(adapter_summary_ext2*, find_adapter*)>
Answer described_ext2(Attempt& attempt)
{
    return filled<adapter_summary_ext2>(
        attempt, [](auto& out) { return describe(&out, &adapters); }, told_ext2);
}

// What the file of a driver that has gone tells: zeros, and all bits set.
constexpr const char* kNoSummary =
    "0 driver 0, firmware 0 \"\", fills 0 0, clock 0, shows 0 0, "
    "use 4294967295 4294967295 4294967295 4294967295, at 4294967295, PCIe 0";

// Drivers that live have the use of engines counted, as an initialisation asks.
constexpr const char* kLiveSummary =
    "0, driver 10002000a, firmware 8000f0000001c \"Simulated adapter\", fills 9600 19200, "
    "clock 1000, shows f0008700000003c 78004380000004b, use 12 45 30 15, at 50, PCIe 4";

// An end stops the counting of its adapter for all: that has no other entry point with engines.
constexpr std::array kEntryPoints{
    without_calls(EntryPoint{"gpuinfo_nimba_init", -1, nullptr, drm_loaded, false}),
    EntryPoint{"gpuinfo_nimba_get_device_handles", -1, nullptr, handles, false},
    EntryPoint{"gfx_find_adapter", -1, nullptr, found, false},
    EntryPoint{"gfx_global_init", 0, nullptr, started, false},
    EntryPoint{"gfx_global_exit", 1, start, stopped, false},
    without_driver(EntryPoint{"gpuinfo_set_enable_usage", 0, nullptr, usage_switched, false}, "0 "),
    EntryPoint{"get_adapter_summary", 0, describe_another, described<get_adapter_summary>, false,
               true},
    EntryPoint{"gpu_info_get_adapter_summary", 0, describe_another,
               described<gpu_info_get_adapter_summary>, false, true},
    answers_live(without_driver(EntryPoint{"get_adapter_summary_ext2", 0, describe_another,
                                           described_ext2<get_adapter_summary_ext2>, false, true},
                                kNoSummary),
                 kLiveSummary),
    answers_live(
        without_driver(EntryPoint{"gpu_info_get_adapter_summary_ext2", 0, describe_another,
                                  described_ext2<gpu_info_get_adapter_summary_ext2>, false, true},
                       kNoSummary),
        kLiveSummary),
};

}  // namespace

std::span<const EntryPoint> adapter_entry_points()
{
    return kEntryPoints;
}

}  // namespace nimba::test
