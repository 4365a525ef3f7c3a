// SPDX-License-Identifier: MIT
// The memory of all allocations by segment.
#include "alloc/segments.hpp"
#include "nimba_mgmt_interface.h"

#include <array>
#include <limits>

namespace nimba {
namespace {

// Callers compare with figures of the driver that were rounded alike: sums and both scalings are in
// single precision. A result outside 32 bits becomes the nearest that fits.
int32_t whole_mebibytes(float bytes)
{
    constexpr float kOver = 2147483648.0F;
    constexpr float kScale = 1.0F / 1024.0F;
    const float kibibytes = bytes * kScale;
    const float mebibytes = kibibytes * kScale;
    if (mebibytes >= kOver) {
        return std::numeric_limits<int32_t>::max();
    }
    return mebibytes < -kOver ? std::numeric_limits<int32_t>::min()
                              : static_cast<int32_t>(mebibytes);
}

}  // namespace
}  // namespace nimba

int32_t get_segment_info_through_allocation(int32_t* segment_size, uint32_t chip_id,
                                            int32_t va_driver)
{
    std::vector<_GFX_ALLOCATION_INFO> list;
    const int32_t status = get_current_allocation_data(list, chip_id, va_driver);
    std::array<float, SEGMENT_SLOT_NUM> sums{};
    if (status >= 0) {
        for (const _GFX_ALLOCATION_INFO& record : list) {
            if (record.segmentid >= 0) {
                sums[nimba::segment_slot(record.segmentid)] += static_cast<float>(record.size);
            }
        }
    }
    std::ranges::transform(sums, segment_size, nimba::whole_mebibytes);
    return status;
}
