// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/command.hpp"

#include "tools/smi/leaks/growth.hpp"
#include "tools/smi/leaks/render.hpp"
#include "tools/smi/leaks/status_line.hpp"
#include "tools/smi/leaks/watch.hpp"

#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace nimba::smi {
namespace {

// With a line on the terminal about the snapshots so far. The library's messages, which go there in
// verbose mode, would break it.
LeaksResult watch(const Options& options)
{
    StatusLine line{STDERR_FILENO};
    const bool shown = line.is_visible() && !options.verbose;
    return watch_for_leaks(
        options, [&](uint64_t snapshots, std::span<const AdapterHistory> adapters) {
            if (shown) {
                line.show(leaks_progress(snapshots, options.leaks.count, adapters));
            }
        });
}

}  // namespace

Report leaks_command(const Options& options)
{
    LeaksResult result = watch(options);
    if (const auto limit = options.leaks.fail_on_growth) {
        std::ranges::move(growth_problems(result, *limit), std::back_inserter(result.problems));
        if (auto too_short = too_short_problem(result)) {
            result.problems.push_back(*std::move(too_short));
        }
    }
    const auto rows = leak_rows(result, options.top);
    std::string output = options.json  ? leaks_json(result, rows, options.leaks.interval)
                         : options.csv ? leaks_csv(rows)
                                       : leaks_text(result, rows);
    return {std::move(output), std::move(result.problems)};
}

}  // namespace nimba::smi
