// SPDX-License-Identifier: MIT
#include "tools/smi/overview/command_options.hpp"

#include "tools/smi/memory/command_options.hpp"
#include "tools/smi/monitor/command_options.hpp"

namespace nimba::smi {

void add_overview_options(CLI::App& app, Options& options)
{
    add_monitor_options(app, options);
    add_top_option(app, options);
}

}  // namespace nimba::smi
