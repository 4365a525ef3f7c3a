// SPDX-License-Identifier: MIT
// The memory of each device by segment.
#include "alloc/segments.hpp"
#include "core/current_adapter.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <type_traits>

namespace nimba {
namespace {

// The last entry is never filled: callers rely on a zero entry behind those in use.
constexpr std::ptrdiff_t kUsableEntries = ALLOCATION_SUMMARY_MAX - 1;

template <typename Summary>
class Summing final {
  public:
    explicit Summing(Summary& summary) : entries_{summary.entries} {}

    void add(const _GFX_ALLOCATION_INFO& record)
    {
        auto* const entry = entry_of(record.device);
        if (entry == nullptr) {
            std::puts("exceed ALLOCATION_SUMMARY_MAX !!! ");
        } else if (record.segmentid < 0) {
            std::puts("invalid segmentid !!! ");
        } else {
            auto& sum = entry->segment_size[segment_slot(record.segmentid)];
            sum += static_cast<std::remove_reference_t<decltype(sum)>>(record.size);
        }
    }

  private:
    // The first entry in use with this device, or a new one; null when there is no room for it.
    auto* entry_of(int32_t device)
    {
        auto* const end = entries_ + used_;
        auto* const entry =
            std::find_if(entries_, end, [&](const auto& used) { return used.device == device; });
        if (entry != end) {
            return entry;
        }
        if (used_ == kUsableEntries) {
            return static_cast<decltype(end)>(nullptr);
        }
        ++used_;
        entry->device = device;
        return entry;
    }

    std::remove_extent_t<decltype(Summary::entries)>* entries_;
    std::ptrdiff_t used_ = 0;
};

template <typename Summary>
int32_t summarise(Summary& summary, uint32_t chip_id, int32_t va_driver)
{
    summary = {};
    std::vector<_GFX_ALLOCATION_INFO> list;
    const int32_t status = get_current_allocation_data(list, chip_id, va_driver);
    if (status >= 0) {
        Summing sums{summary};
        for (const _GFX_ALLOCATION_INFO& record : list) {
            sums.add(record);
        }
    }
    return status;
}

}  // namespace
}  // namespace nimba

int32_t get_device_allocation_summary(_GFX_DEVICE_ALLOCATION_SUMMARY* buffer)
{
    return get_device_allocation_summary_internal(buffer, nimba::current_chip_id,
                                                  nimba::current_is_va_driver);
}

int32_t get_device_allocation_summary_ext1(_GFX_DEVICE_ALLOCATION_SUMMARY_EXT1* buffer)
{
    return get_device_allocation_summary_internal_ext1(buffer, nimba::current_chip_id,
                                                       nimba::current_is_va_driver);
}

int32_t get_device_allocation_summary_internal(_GFX_DEVICE_ALLOCATION_SUMMARY* buffer,
                                               uint32_t chip_id, int32_t va_driver)
{
    return nimba::summarise(*buffer, chip_id, va_driver);
}

int32_t get_device_allocation_summary_internal_ext1(_GFX_DEVICE_ALLOCATION_SUMMARY_EXT1* buffer,
                                                    uint32_t chip_id, int32_t va_driver)
{
    return nimba::summarise(*buffer, chip_id, va_driver);
}
