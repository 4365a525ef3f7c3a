// SPDX-License-Identifier: MIT
#include "tools/smi/capture/frame_nodes.hpp"

#include "nimba_mgmt_interface.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace nimba::smi {
namespace {

constexpr std::size_t kLimit = 256;

// What the node shows, without what makes no text of a record.
std::string printable(std::string text)
{
    std::erase_if(text, [](char c) { return static_cast<unsigned char>(c) >= 0x7F || c == '\0'; });
    return text;
}

}  // namespace

FrameNodeReader::FrameNodeReader(DeadlineReader& reader, std::span<const NodeOwner> owners)
    : reader_{reader}, owners_{owners.begin(), owners.end()}, first_{read(owners)}
{
}

std::map<std::string, archive::FrameNodes> FrameNodeReader::read(std::span<const NodeOwner> owners)
{
    std::map<std::string, archive::FrameNodes> read;
    for (const NodeOwner& owner : owners) {
        const std::string directory =
            fmt::format("/sys/bus/pci/devices/{}/{}", owner.bus_id,
                        owner.vendor == QV_VENDOR_ID ? "qv_info" : "jw_info");
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin_;
        const ReadNode flips = reader_.read(directory + "/fps_count", kLimit);
        const ReadNode blits = reader_.read(directory + "/rxa_blt_scn_cnt", kLimit);
        if (flips.error == 0) {
            read.emplace(owner.bus_id, archive::FrameNodes{time.count(), printable(flips.text),
                                                           printable(blits.text)});
        }
    }
    return read;
}

std::vector<archive::Counters> FrameNodeReader::merged(std::vector<archive::Counters> first,
                                                       const std::vector<archive::Counters>& last)
{
    const auto last_frames = read(owners_);
    for (const auto& [bus_id, frames] : first_) {
        if (std::ranges::find(first, bus_id, &archive::Counters::bus_id) == first.end()) {
            first.emplace_back().bus_id = bus_id;
        }
    }
    for (archive::Counters& counters : first) {
        const auto later = std::ranges::find(last, counters.bus_id, &archive::Counters::bus_id);
        if (counters.flips && later != last.end() && later->flips) {
            counters.flips->back() = later->flips->front();
        }
        const auto begin = first_.find(counters.bus_id);
        const auto end = last_frames.find(counters.bus_id);
        if (begin != first_.end() && end != last_frames.end()) {
            counters.frames = std::array{begin->second, end->second};
        }
    }
    return first;
}

}  // namespace nimba::smi
