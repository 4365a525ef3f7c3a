// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/command_options.hpp"

#include "tools/smi/option_value.hpp"

namespace nimba::smi {

void add_doctor_options(CLI::App& command, Options& options)
{
    add_value(command, "-i,--adapter", "SLOT|BUS_ID",
              "a slot from 0 to 2 or a bus id such as 0000:01:00.0",
              "Of the adapters, check this one alone", parse_adapter_choice,
              [&options](const AdapterChoice& choice) { options.adapter = choice; });
}

}  // namespace nimba::smi
