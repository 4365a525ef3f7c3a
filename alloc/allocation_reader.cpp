// SPDX-License-Identifier: MIT
// The reader that every query about allocations starts with.
#include "alloc/allocation_text.hpp"
#include "core/debug_directory.hpp"
#include "core/entries.hpp"
#include "core/node_pieces.hpp"
#include "core/retry.hpp"
#include "nimba_mgmt_interface.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

namespace nimba {
namespace {

constexpr useconds_t kPause = 5'000;  // microseconds

}  // namespace
}  // namespace nimba

int32_t get_current_allocation_data_try(std::vector<_GFX_ALLOCATION_INFO>& list,
                                        uint32_t /*chip_id*/, int32_t va_driver)
{
    nimba::Directory directory = nimba::open_debug_directory("allocations");
    if (!directory) {
        std::puts("Error opening directory");
        return -1;
    }
    nimba::Entries entries{std::move(directory)};
    std::string path;  // relative to the directory
    nimba::NodePieces node;
    nimba::AllocationParser parser{va_driver != 0};
    while (const char* entry = entries.next()) {
        parser.begin();
        path.assign(entry).append("/info");
        if (!node.read_at(entries.fd(), path.c_str(),
                          [&](std::string_view lines) { parser.add(lines); })) {
            // Despite the wording the pass ends. Callers rely on what it read staying in the list.
            std::puts("Fail to read allocation info. skip...");
            return -1;
        }
        _GFX_ALLOCATION_INFO& record = list.emplace_back(parser.record());
        record.hit_count = 1;
        record.sum_count = 1;
    }
    return entries.failed() ? -1 : 0;
}

int32_t get_current_allocation_data(std::vector<_GFX_ALLOCATION_INFO>& list, uint32_t chip_id,
                                    int32_t va_driver)
{
    return nimba::try_passes(
        nimba::kPause, [&] { return get_current_allocation_data_try(list, chip_id, va_driver); });
}
