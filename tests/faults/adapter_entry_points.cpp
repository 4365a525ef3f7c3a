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
        told += ", " + std::string{record.header.chip_name[slot]};
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

std::string told_words(std::span<const std::uint32_t> words)
{
    std::string told;
    for (const std::uint32_t word : words) {
        told += (told.empty() ? "" : " ") + std::to_string(word);
    }
    return told;
}

template <std::int32_t (*describe)(adapter_summary*, find_adapter*)>
Answer described(Attempt& attempt)
{
    return filled<adapter_summary>(
        attempt, [](auto& out) { return describe(&out, &adapters); },
        [](const adapter_summary& out) {
            std::array<std::uint32_t, 12> words{};
            std::memcpy(words.data(), &out, sizeof out);
            return told_words(words);
        },
        {});
}

template <std::int32_t (*describe)(adapter_summary_ext2*, find_adapter*)>
Answer described_ext2(Attempt& attempt)
{
    return filled<adapter_summary_ext2>(
        attempt, [](auto& out) { return describe(&out, &adapters); },
        [](const adapter_summary_ext2& out) {
            return std::string{out.firmware_name} + " " +
                   told_words(std::array{out.pixel_fillrate, out.memory_clock_freq,
                                         out.gpu_memory_usage, out.realtime_temperature,
                                         out.pcie_gen});
        });
}

// Zero, and all bits set in the words that are not told.
constexpr const char* kNoSummary = "0  0 0 4294967295 4294967295 0";

constexpr std::array kEntryPoints{
    EntryPoint{"gpuinfo_nimba_init", -1, nullptr, drm_loaded, false},
    EntryPoint{"gpuinfo_nimba_get_device_handles", -1, nullptr, handles, false},
    EntryPoint{"gfx_find_adapter", -1, nullptr, found, false},
    EntryPoint{"gfx_global_init", 0, nullptr, started, false},
    EntryPoint{"gfx_global_exit", 0, start, stopped, false},
    without_driver(EntryPoint{"gpuinfo_set_enable_usage", 0, nullptr, usage_switched, false}, "0 "),
    EntryPoint{"get_adapter_summary", 0, describe_another, described<get_adapter_summary>, false,
               true},
    EntryPoint{"gpu_info_get_adapter_summary", 0, describe_another,
               described<gpu_info_get_adapter_summary>, false, true},
    without_driver(EntryPoint{"get_adapter_summary_ext2", 0, describe_another,
                              described_ext2<get_adapter_summary_ext2>, false, true},
                   kNoSummary),
    without_driver(EntryPoint{"gpu_info_get_adapter_summary_ext2", 0, describe_another,
                              described_ext2<gpu_info_get_adapter_summary_ext2>, false, true},
                   kNoSummary),
};

}  // namespace

std::span<const EntryPoint> adapter_entry_points()
{
    return kEntryPoints;
}

}  // namespace nimba::test
