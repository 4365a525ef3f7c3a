// SPDX-License-Identifier: MIT
#include "tools/smi/ps/command.hpp"

#include "tools/smi/ps/render.hpp"

#include <utility>

namespace nimba::smi {

Report ps_command(const Options& options)
{
    MemorySnapshot snapshot = take_memory_snapshot(options);
    const UsageTable table = usage_table(snapshot, options.top);
    std::string output = options.json  ? ps_json(snapshot, table)
                         : options.csv ? ps_csv(table)
                                       : ps_text(snapshot, table);
    return {std::move(output), std::move(snapshot.problems)};
}

}  // namespace nimba::smi
