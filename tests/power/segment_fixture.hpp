// SPDX-License-Identifier: MIT
// The three sources of segments: the node "segment_info", the driver's heaps and its allocations.
#pragma once

#include "adapter_nodes.hpp"
#include "alloc/allocation_tree.hpp"

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

namespace nimba::test {

using SegmentWords = std::array<std::uint32_t, SEGMENT_INFO_NUM>;

inline SegmentWords used_in(const SegmentInfo& info)
{
    SegmentWords words{};
    std::memcpy(words.data(), info.used_size, sizeof info.used_size);
    return words;
}

inline SegmentWords total_in(const SegmentInfo& info)
{
    SegmentWords words{};
    std::memcpy(words.data(), info.total_size, sizeof info.total_size);
    return words;
}

// A current adapter without a node "segment_info", heaps and allocations.
class SegmentTest : public AdapterNodesTest {
  protected:
    static constexpr const char* kInvalid = "heap_invalid";
    static constexpr const char* kLocal = "heap_local";
    static constexpr const char* kUnsnoop = "heap_pcie_unsnoop";
    static constexpr const char* kSnoop = "heap_pcie_snoop";

    std::filesystem::path heaps() const { return tree_.debug_directory() / "heaps"; }
    std::filesystem::path heap_node(const char* heap) const { return heaps() / heap / "info"; }

    // Makes the heap's node with this text, or changes it.
    void heap_text(const char* heap, std::string_view text) const
    {
        std::filesystem::create_directories(heaps() / heap);
        write_file(heap_node(heap), text);
    }
    // The same with both sizes, in bytes.
    void heap(const char* name, const char* total, const char* used) const
    {
        heap_text(name, std::string{"Total segment size:  "} + total +
                            "\nKMD used segment memory:  " + used + "\n");
    }
    // Heaps of 1, 256, 512 and 1024 MiB, of which 0, 16, 32 and 64 MiB are used.
    void four_heaps() const
    {
        heap(kInvalid, "1048576", "0");
        heap(kLocal, "268435456", "16777216");
        heap(kUnsnoop, "536870912", "33554432");
        heap(kSnoop, "1073741824", "67108864");
    }

    void allocation(const std::string& name, const char* segment, const char* size) const
    {
        tree_.add(name, std::string{"segmentid="} + segment + "\nsize=" + size + "\n");
    }

    AllocationTree tree_;
    SegmentInfo info_{};
};

}  // namespace nimba::test
