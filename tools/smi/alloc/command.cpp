// SPDX-License-Identifier: MIT
#include "tools/smi/alloc/command.hpp"

#include "tools/smi/alloc/render.hpp"

#include <utility>

namespace nimba::smi {

Report alloc_command(const Options& options)
{
    MemorySnapshot snapshot = take_memory_snapshot(options);
    const Listing listing = list_allocations(snapshot, options.alloc, options.top);
    std::string output = options.json  ? alloc_json(snapshot, listing)
                         : options.csv ? alloc_csv(listing)
                                       : alloc_text(snapshot, listing);
    return {std::move(output), std::move(snapshot.problems)};
}

}  // namespace nimba::smi
