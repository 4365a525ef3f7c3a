// SPDX-License-Identifier: MIT
// Leak detection over successive snapshots.
#include "alloc/leak_report.hpp"
#include "core/current_adapter.hpp"
#include "core/emptied_at_exit.hpp"
#include "nimba_mgmt_interface.h"

// Written by get_memleak_information alone.
std::vector<_GFX_ALLOCATION_INFO> vec_memleak_result;

namespace nimba {
namespace {

const EmptiedAtExit list_at_exit{vec_memleak_result};

// Returns whether there is a new snapshot.
bool take_snapshot(uint32_t chip_id, int32_t va_driver)
{
    std::vector<_GFX_ALLOCATION_INFO> snapshot;
    if (get_current_allocation_data(snapshot, chip_id, va_driver) < 0) {
        return false;
    }
    compare_memleak_list(snapshot, vec_memleak_result);
    return true;
}

}  // namespace
}  // namespace nimba

int32_t get_memleak_info(_GFX_MEMLEAK_INFO* buffer)
{
    get_memleak_information(buffer, nimba::current_chip_id, nimba::current_is_va_driver);
    return 0;
}

void get_memleak_information(_GFX_MEMLEAK_INFO* buffer, uint32_t chip_id, int32_t va_driver)
{
    if (nimba::take_snapshot(chip_id, va_driver)) {
        *buffer = nimba::report_leaks(vec_memleak_result);
    }
}
