// SPDX-License-Identifier: MIT
#include "tools/smi/overview/text.hpp"

#include "tools/smi/overview/block.hpp"
#include "tools/smi/overview/line.hpp"
#include "tools/smi/overview/process_table.hpp"

#include <fmt/core.h>

namespace nimba::smi {
namespace {

std::string foreign_line(const ForeignGpu& gpu, const OverviewStyle& style)
{
    const std::string card = gpu.card ? fmt::format(" card {}", *gpu.card) : "";
    return Line{style, style.columns - 1}
        .add(
            fmt::format("{}: {}{}, of another vendor and not examined", gpu.name, gpu.bus_id, card))
        .text();
}

}  // namespace

std::string overview_text(const MachineSnapshot& snapshot, const std::optional<std::size_t>& top,
                          const OverviewStyle& style)
{
    std::string text;
    for (const AdapterState& adapter : snapshot.adapters) {
        text += adapter_block(adapter, style);
    }
    if (snapshot.foreign_gpu) {
        text += text.empty() ? "" : "\n";
        text += foreign_line(*snapshot.foreign_gpu, style);
    }
    if (!snapshot.adapters.empty()) {
        text += '\n';
        text += process_table_text(snapshot, top, style);
    }
    return text;
}

}  // namespace nimba::smi
