// SPDX-License-Identifier: MIT
// The summary of clocks, memory, display outputs and link.
#include "core/chip_table.hpp"
#include "core/display_outputs.hpp"
#include "core/gpuinfo_text.hpp"
#include "core/node_buffer.hpp"
#include "core/scan_text.hpp"
#include "nimba_mgmt_interface.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace nimba {
namespace {

constexpr uint32_t kNoChip = std::numeric_limits<uint32_t>::max();

// What does not change of the chip that was described last. Written by the first call for it.
struct Kept {
    uint32_t chip_id = kNoChip;
    uint32_t fb_size = 0;
    uint32_t memory_speed = 0;  // MT/s
    uint32_t memory_type = 0;
    uint32_t memory_bit_width = 0;
    uint32_t miu_channel_num = 0;
    uint32_t pcie_link_width = 0;
    DisplayOutputs outputs;
};
Kept kept;

uint32_t info_value(int32_t index)
{
    return static_cast<uint32_t>(gpuinfo_get_jwinfoFD_value_int(index));
}

// MT/s, as dmidecode tells for the first module that has a configured speed.
uint32_t memory_speed()
{
    std::array<char, 1024> output{};
    runShellCommand("dmidecode -t memory |grep Configured |grep MT/s", output.data(),
                    output.size());
    const int32_t position =
        find_str_in_buffer(output.data(), static_cast<int32_t>(output.size()), "Memory Speed: ");
    int speed = 0;
    if (position >= 0) {
        scan_text(output.data() + position, "%d MT/s", &speed);
    }
    return static_cast<uint32_t>(speed);
}

uint32_t link_width()
{
    std::array<char, 128> path{};
    std::snprintf(path.data(), path.size(), "%s/current_link_width",
                  sys_bus_pci_devices_BUSID_path);
    int width = 0;
    NodeBuffer<64> node;
    if (node.read(0, path.data()) > 0) {
        scan_text(node.text(), "%d", &width);
    }
    lib_print_func("cached_current_link_width: 0x%x\n", static_cast<unsigned>(width));
    return static_cast<uint32_t>(width);
}

DisplayOutputs outputs_of(uint32_t chip_id, int card)
{
    GpuinfoText text;
    DisplayOutputs outputs;
    if (text.read(card)) {
        outputs = told_outputs(text, chip_id);
    }
    if (outputs == DisplayOutputs{} && !is_nimba_chip(chip_id)) {
        outputs = listed_outputs(card);
    }
    lib_print_func("cached_display_port_number: 0x%x, cached_support_disp_port_type: 0x%x\n",
                   outputs.count, outputs.types);
    return outputs;
}

void refill(uint32_t chip_id, int card)
{
    kept = {};
    kept.fb_size = info_value(INFO_NODE_FB_SIZE);
    kept.memory_speed = memory_speed();
    kept.memory_type = static_cast<uint32_t>(runShellCommand_getMemoryTYpe());
    kept.memory_bit_width = static_cast<uint32_t>(runShellCommand_getBitWidth());
    kept.miu_channel_num = info_value(INFO_NODE_MIU_CHANNEL_NUM);
    kept.pcie_link_width = link_width();
    kept.outputs = outputs_of(chip_id, card);
    kept.chip_id = chip_id;
}

void describe_memory(uint32_t chip_id, adapter_summary& out)
{
    if (is_nimba_chip(chip_id)) {
        out.memory_data_rate = out.mclk * 2;
        return;
    }
    out.memory_data_rate = kept.memory_speed;
    out.memory_type = kept.memory_type;
    out.memory_bit_width = kept.memory_bit_width;
}

}  // namespace
}  // namespace nimba

int32_t gpu_info_get_adapter_summary(adapter_summary* out, find_adapter* rec)
{
    const uint32_t chip_id = rec->header.chip_id[rec->chip_id_idx];
    if (chip_id != nimba::kept.chip_id) {
        nimba::refill(chip_id, rec->header.drm_card_idx[rec->chip_id_idx]);
    }
    out->eclk = nimba::info_value(INFO_NODE_ECLK);
    out->mclk = nimba::info_value(INFO_NODE_MCLK);
    out->vclk = nimba::info_value(INFO_NODE_VCLK);
    out->coreclk = nimba::info_value(INFO_NODE_CORECLK);
    out->fb_size = nimba::kept.fb_size;
    nimba::describe_memory(chip_id, *out);
    out->miu_channel_num = nimba::kept.miu_channel_num;
    out->pcie_link_width = nimba::kept.pcie_link_width;
    out->display_port_num = nimba::kept.outputs.count;
    out->display_type_mask = nimba::kept.outputs.types;
    return 0;
}

int32_t get_adapter_summary(adapter_summary* out, find_adapter* rec)
{
    return gpu_info_get_adapter_summary(out, rec);
}
