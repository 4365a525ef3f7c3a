// SPDX-License-Identifier: MIT
// The memory segments as the driver's heaps in debugfs tell them.
#include "core/debug_directory.hpp"
#include "core/node_buffer.hpp"
#include "core/scan_text.hpp"
#include "nimba_mgmt_interface.h"

#include <dirent.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace nimba {
namespace {

// By segment. Their names follow from the directory "heaps".
constexpr std::array kHeaps{
    "heap_invalid/info",
    "heap_local/info",
    "heap_pcie_unsnoop/info",
    "heap_pcie_snoop/info",
};

using HeapBuffer = NodeBuffer<512>;

// The number of bytes behind a key, in mebibytes. It is cut to 32 bits before it is divided:
// callers rely on it. Nothing when the key is missing; 0 when there is no number behind it.
std::optional<uint32_t> mebibytes(const HeapBuffer& node, const char* key)
{
    const char* const text = node.behind(key);
    if (text == nullptr) {
        return std::nullopt;
    }
    unsigned long bytes = 0;
    scan_text(text, "%lu", &bytes);
    return static_cast<uint32_t>(bytes) >> 20U;
}

// Returns false when one of the two is missing.
bool take_heap(const HeapBuffer& node, std::size_t heap, SegmentInfo& info)
{
    const auto total = mebibytes(node, "Total segment size:  ");
    if (!total) {
        return false;
    }
    info.total_size[heap] = *total;
    const auto used = mebibytes(node, "KMD used segment memory:  ");
    if (!used) {
        return false;
    }
    info.used_size[heap] = *used;
    return true;
}

}  // namespace
}  // namespace nimba

int32_t gpuinfo_get_kmd_segment_info(SegmentInfo* info, int32_t /*unused*/)
{
    const nimba::Directory heaps = nimba::open_debug_directory("heaps");
    if (!heaps) {
        std::puts("Error opening directory");
        return -1;
    }
    nimba::HeapBuffer node;  // a heap without its own text shows that of the heap before it
    for (std::size_t heap = 0; heap < nimba::kHeaps.size(); ++heap) {
        node.read(::dirfd(heaps.get()), nimba::kHeaps[heap]);
        if (!nimba::take_heap(node, heap, *info)) {
            return -1;
        }
    }
    info->total_size[nimba::kHeaps.size()] = 0;
    info->used_size[nimba::kHeaps.size()] = 0;
    return 1;
}
