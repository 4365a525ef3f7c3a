// SPDX-License-Identifier: MIT
#include "tools/smi/worker/segment_reader.hpp"

#include "tools/smi/worker/driver_directory.hpp"
#include "tools/smi/worker/driver_numbers.hpp"
#include "tools/smi/worker/node_text.hpp"

#include <fcntl.h>

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace nimba::smi {
namespace {

constexpr const char* kSegmentInit = "segment_init";
constexpr const char* kSegmentInfo = "get_segment_info";
constexpr const char* kSegmentNode = "segment_info";

constexpr std::size_t kSumSegment = 4;  // the node's reader adds all behind it to it

constexpr uint32_t kUnwritten = UINT32_MAX;
constexpr uint32_t kUnwrittenDivided = kUnwritten / 1000;

constexpr std::array kNimbaChips{
    DEVICE_ID_NIMBA_K1,  DEVICE_ID_NIMBA_K2, DEVICE_ID_NIMBA_K3,
    DEVICE_ID_NIMBA_K3T, DEVICE_ID_NIMBA_K5, DEVICE_ID_NIMBA_K6,
};

using Sizes = std::span<const uint32_t, SEGMENT_INFO_NUM>;

// The size of a segment itself.
uint32_t own_size(Sizes sizes, std::size_t segment, std::size_t count)
{
    uint32_t size = sizes[segment];
    if (segment == kSumSegment) {
        for (std::size_t i = kSumSegment + 1; i < count; ++i) {
            size -= sizes[i];
        }
    }
    return size;
}

std::optional<uint64_t> size_in_node(Sizes cleared, Sizes filled, std::size_t segment,
                                     std::size_t count)
{
    const uint32_t size = own_size(cleared, segment, count);
    const bool written = size != 0 || own_size(filled, segment, count) != kUnwrittenDivided;
    return written ? std::optional<uint64_t>(size) : std::nullopt;
}

// The library has chosen the node.
std::optional<Failure> read_node(Session& session, const MonitorEntryPoints& entry,
                                 SegmentReading& reading)
{
    SegmentInfo cleared{};
    SegmentInfo filled;
    std::memset(&filled, 0xFF, sizeof filled);
    const bool read = session.call(kSegmentInfo, [&] {
        return entry.segment_info(&cleared) > 0 && entry.segment_node(&filled) > 0;
    });
    if (!read) {
        return Failure{ExitStatus::kNoAdapter, kSegmentInfo,
                       "the segments cannot be read any more: run the command again"};
    }
    reading.segments = segments_in_node(cleared, filled);
    return std::nullopt;
}

// Sizes of allocations count as signed: a sum below 0 is no size.
std::optional<uint64_t> used_by_allocations(uint32_t used)
{
    return used <= INT32_MAX ? std::optional<uint64_t>(used) : std::nullopt;
}

std::string heap_directory(Session& session)
{
    return std::string{*session.library().entry.debug_directory} + "/heaps";
}

void note_heap_fault(const FileFault& fault, const std::string& directory, SegmentReading& reading)
{
    const FaultSentence sentence = describe_fault(fault, directory, "heaps");
    reading.remarks.push_back({sentence.status, kSegmentInit, sentence.text});
}

// The library takes a heap without a text of its own for one like the heap before it.
void forget_unread_heaps(Session& session, SegmentReading& reading)
{
    const std::string directory = heap_directory(session);
    for (std::size_t i = 0; i < kHeapNames.size(); ++i) {
        const std::string path = fmt::format("{}/{}/info", directory, kHeapNames.at(i));
        const NodeText text =
            session.call("open " + path, [&] { return node_text(AT_FDCWD, path.c_str()); });
        if (text.text.empty()) {
            reading.segments[i] = {};
        }
        if (text.error != 0 && !means_absent(text.error)) {
            note_heap_fault({path, text.error}, directory, reading);
        }
    }
}

// The heaps are read by the library again, and use by allocations added.
std::optional<Failure> read_allocations(Session& session, const MonitorEntryPoints& entry,
                                        bool with_heaps, SegmentReading& reading)
{
    const std::string directory = *session.library().entry.debug_directory;
    SegmentInfo info{};
    int32_t status = 0;
    const auto bad = session.call(
        kSegmentInfo,
        [&] {
            return with_numbers(kSegmentInfo, kAllocationNumber,
                                [&] { status = entry.segment_info(&info); });
        },
        reading_time(session, directory));
    std::optional<Failure> failure = bad;
    if (!failure && status < 0) {
        failure = no_allocations(session, kSegmentInfo, directory);
    }
    if (failure && !with_heaps) {
        return failure;
    }
    for (std::size_t i = 0; i < SEGMENT_SLOT_NUM; ++i) {
        SegmentUse& segment = reading.segments.emplace_back();
        segment.used = failure ? std::nullopt : used_by_allocations(info.used_size[i]);
        segment.total = with_heaps && i < kHeapNames.size()
                            ? std::optional<uint64_t>(info.total_size[i])
                            : std::nullopt;
    }
    if (with_heaps) {
        forget_unread_heaps(session, reading);
    }
    if (failure) {
        reading.remarks.push_back(*std::move(failure));
    }
    return std::nullopt;
}

// Why the driver's heaps give no segments, when they are there.
void explain_heaps(Session& session, SegmentReading& reading)
{
    const std::string directory = heap_directory(session);
    const auto fault =
        session.call("open " + directory, [&] { return first_fault(directory, "info"); });
    if (fault && !means_absent(fault->error)) {
        note_heap_fault(*fault, directory, reading);
    } else if (!fault && entries_in(directory) > 0) {
        reading.remarks.push_back({ExitStatus::kNoAdapter, kSegmentInit,
                                   fmt::format("there are no heaps in {} (see dmesg)", directory)});
    }
}

}  // namespace

std::vector<SegmentUse> segments_in_node(const SegmentInfo& cleared, const SegmentInfo& filled)
{
    const std::span sizes{filled.total_size};
    const auto count =
        static_cast<std::size_t>(std::ranges::find(sizes, kUnwritten) - sizes.begin());
    std::vector<SegmentUse> segments;
    for (std::size_t i = 0; i < count; ++i) {
        segments.push_back({size_in_node(cleared.used_size, filled.used_size, i, count),
                            size_in_node(cleared.total_size, filled.total_size, i, count)});
    }
    return segments;
}

std::optional<Failure> read_segments(Session& session, const MonitorEntryPoints& entry,
                                     const Adapter& adapter, SegmentReading& reading)
{
    find_adapter record = session.adapters();
    const bool chosen = session.call(kSegmentInit, [&] { return entry.segment_init(&record); }) > 0;
    const bool has_node =
        std::ranges::find(kNimbaChips, record.header.chip_id[adapter.slot]) != kNimbaChips.end();
    if (chosen && has_node) {
        reading.source = SegmentSource::kNode;
        return read_node(session, entry, reading);
    }
    reading.source = chosen ? SegmentSource::kHeaps : SegmentSource::kAllocations;
    if (!chosen && has_node) {
        NodeReader{session, entry, adapter, "segments", reading}.explain_useless(kSegmentNode);
    } else if (!chosen) {
        explain_heaps(session, reading);
    }
    return read_allocations(session, entry, chosen, reading);
}

}  // namespace nimba::smi
