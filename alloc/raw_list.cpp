// SPDX-License-Identifier: MIT
// The raw list: all allocations, handed out block by block.
#include "core/emptied_at_exit.hpp"
#include "core/never_destroyed.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace nimba {
namespace {

struct Free {
    void operator()(void* block) const { std::free(block); }
};
using RecordBlock = std::unique_ptr<_GFX_ALLOCATION_INFO[], Free>;

constexpr std::size_t kSpareRecords = 10;

// The list of the last page 0, sorted by device. Written by every page 0 that can read the driver.
// The count is also that of a list for which there was no memory; the list is then missing.
struct KeptList {
    RecordBlock global_allocation_raw_list;
    int32_t global_allocation_raw_count = 0;
};

NeverDestroyed<KeptList> kept_list;

const EmptiedAtExit list_at_exit{kept_list.value};

bool compare_allo_device(const _GFX_ALLOCATION_INFO& a, const _GFX_ALLOCATION_INFO& b)
{
    return a.device < b.device;
}

// Returns whether there was memory for the list.
bool keep(const std::vector<_GFX_ALLOCATION_INFO>& sorted)
{
    KeptList& kept = kept_list.value;
    kept.global_allocation_raw_count = static_cast<int32_t>(sorted.size());
    kept.global_allocation_raw_list.reset();
    kept.global_allocation_raw_list.reset(static_cast<_GFX_ALLOCATION_INFO*>(
        std::malloc((sorted.size() + kSpareRecords) * sizeof(_GFX_ALLOCATION_INFO))));
    if (!kept.global_allocation_raw_list) {
        std::puts("allocate memory for global_allocation_raw_list fail.");
        return false;
    }
    std::ranges::copy(sorted, kept.global_allocation_raw_list.get());
    return true;
}

int32_t refresh(const find_adapter& adapters)
{
    const auto& header = adapters.header;
    const int32_t slot = adapters.chip_id_idx;
    std::vector<_GFX_ALLOCATION_INFO> list;
    const int32_t status =
        get_current_allocation_data(list, header.chip_id[slot], header.IS_VA_driver[slot]);
    if (status < 0) {
        return status;
    }
    std::ranges::sort(list, compare_allo_device);
    return keep(list) ? status : -1;
}

void hand_out(_GFX_ALLOCATION_RAW_LIST& block)
{
    const KeptList& kept = kept_list.value;
    block.total_cnt = kept.global_allocation_raw_count;
    const int64_t present = kept.global_allocation_raw_list ? block.total_cnt : 0;
    const int64_t first = int64_t{block.page_index} * RAW_LIST_BLOCK_MAX;
    const int64_t remaining = present - first;
    block.more_flag = 0;
    if (first < 0 || remaining < 0 || (remaining == 0 && first > 0)) {
        std::puts("get_allocation_raw_list_internal, invalid trasfer_cnt !!!");
        block.trasfer_cnt = 0;
        return;
    }
    block.more_flag = remaining > RAW_LIST_BLOCK_MAX ? 1 : 0;
    block.trasfer_cnt = static_cast<int32_t>(std::min<int64_t>(remaining, RAW_LIST_BLOCK_MAX));
    std::copy_n(kept.global_allocation_raw_list.get() + first, block.trasfer_cnt, block.records);
}

}  // namespace
}  // namespace nimba

int32_t get_allocation_raw_list(_GFX_ALLOCATION_RAW_LIST* buffer, const find_adapter* rec)
{
    return get_allocation_raw_list_internal(buffer, rec);
}

int32_t get_allocation_raw_list_internal(_GFX_ALLOCATION_RAW_LIST* buffer, const find_adapter* rec)
{
    const int32_t status = buffer->page_index == 0 ? nimba::refresh(*rec) : 0;
    if (status >= 0) {
        nimba::hand_out(*buffer);
    }
    return status;
}
