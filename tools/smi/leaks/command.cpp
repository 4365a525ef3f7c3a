// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/command.hpp"

#include "tools/smi/leaks/growth.hpp"
#include "tools/smi/leaks/render.hpp"
#include "tools/smi/leaks/watch.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace nimba::smi {

Report leaks_command(const Options& options)
{
    LeaksResult result = watch_for_leaks(options);
    if (const auto limit = options.leaks.fail_on_growth) {
        std::ranges::move(growth_problems(result, *limit), std::back_inserter(result.problems));
    }
    const auto rows = leak_rows(result, options.top);
    std::string output = options.json  ? leaks_json(result, rows, options.leaks.interval)
                         : options.csv ? leaks_csv(rows)
                                       : leaks_text(result, rows);
    return {std::move(output), std::move(result.problems)};
}

}  // namespace nimba::smi
