// SPDX-License-Identifier: MIT
#include "driver/gpuinfo_text.hpp"

#include "driver/adapter_state.hpp"

#include <fmt/format.h>

#include <cstdint>
#include <iterator>
#include <string_view>

namespace nimba::sim {
namespace {

void add(std::string& text, std::string_view key, std::string_view value)
{
    if (!value.empty()) {
        fmt::format_to(std::back_inserter(text), "{} : {}\n", key, value);
    }
}

void add(std::string& text, std::string_view key, int64_t value)
{
    fmt::format_to(std::back_inserter(text), "{} : {}\n", key, value);
}

int64_t used_percent(const MemorySegment& memory)
{
    return memory.total == 0 ? 0 : static_cast<int64_t>(memory.used * 100 / memory.total);
}

// An adapter without ports says nothing of its displays.
void add_displays(std::string& text, const AdapterBoard& board)
{
    if (board.display_ports == 0) {
        return;
    }
    add(text, "Max Display Port", fmt::format("{:x}", board.display_ports));
    add(text, "Support Display Type", board.display_types);
}

}  // namespace

std::string gpuinfo_text(const AdapterState& state)
{
    const AdapterBoard& board = state.board;
    const auto usage = state.usage();
    std::string text;
    add(text, "Device ID", fmt::format("{:04x}", state.device));
    add(text, "Driver Version", board.driver_version);
    add(text, "Firmware Version", board.firmware_version);
    add(text, "Firmware Name", board.firmware_name);
    add(text, "Bus Type", fmt::format("PCIE{}.0 x{}", board.pcie_gen, board.pcie_lanes));
    add_displays(text, board);
    add(text, "Pixel Fillrate", board.pixel_fillrate);
    add(text, "Texture Fillrate", board.texture_fillrate);
    add(text, "Memory Clock Freq", state.dvfs.clocks().memory);
    add(text, "HDMI Max Display Resolution", board.hdmi_resolution);
    add(text, "DP Max Display Resolution", board.dp_resolution);
    add(text, "VGA Max Display Resolution", board.vga_resolution);
    add(text, "GPU Memory Usage", used_percent(state.frame_buffer()));
    add(text, "GPU Use Rate(3d)", usage.at(kUsage3d));
    add(text, "GPU Use Rate(video)", usage.at(kUsageVcp));
    add(text, "GPU Use Rate(vpp)", usage.at(kUsageVpp));
    add(text, "Realtime Temperature", state.cooling.temperature());
    return text;
}

}  // namespace nimba::sim
