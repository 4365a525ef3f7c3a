// SPDX-License-Identifier: MIT
// The summary that the driver's file /proc/gpuinfo_<card> gives.
#include "core/gpuinfo_text.hpp"
#include "nimba_mgmt_interface.h"

#include <cstdint>
#include <limits>

namespace nimba {
namespace {

constexpr uint32_t kNotTold = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kNoChip = std::numeric_limits<uint32_t>::max();

// What does not change of the chip that was described last. Written by the first call for it.
struct Kept {
    uint32_t chip_id = kNoChip;
    adapter_summary_ext2 fields{};
};
Kept kept;

void refill(uint32_t chip_id, int card)
{
    kept = {chip_id, {}};
    GpuinfoText text;
    if (text.read(card)) {
        kept.fields = lasting_fields(text);
    }
    lib_print_func("cached_current_pcie_gen: %d\n", static_cast<int>(kept.fields.pcie_gen));
}

void set_not_told(adapter_summary_ext2& record)
{
    record.gpu_memory_usage = kNotTold;
    record.gpu_use_rate_3d = kNotTold;
    record.gpu_use_rate_video = kNotTold;
    record.gpu_use_rate_vpp = kNotTold;
    record.realtime_temperature = kNotTold;
}

}  // namespace
}  // namespace nimba

int32_t gpu_info_get_adapter_summary_ext2(adapter_summary_ext2* out, find_adapter* rec)
{
    const uint32_t chip_id = rec->header.chip_id[rec->chip_id_idx];
    const int32_t card = rec->header.drm_card_idx[rec->chip_id_idx];
    *out = {};
    nimba::set_not_told(*out);
    if (chip_id != nimba::kept.chip_id) {
        nimba::refill(chip_id, card);
    }
    nimba::GpuinfoText text;
    if (text.read(card)) {
        *out = nimba::kept.fields;
        nimba::set_not_told(*out);
        nimba::read_changing_fields(text, *out);
    }
    return 0;
}

int32_t get_adapter_summary_ext2(adapter_summary_ext2* out, find_adapter* rec)
{
    return gpu_info_get_adapter_summary_ext2(out, rec);
}
