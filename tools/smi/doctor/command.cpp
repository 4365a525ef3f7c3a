// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/command.hpp"

#include "tools/smi/doctor/examine.hpp"
#include "tools/smi/doctor/render.hpp"
#include "tools/smi/text/colour.hpp"

#include <unistd.h>

namespace nimba::smi {

Report doctor_command(const Options& options)
{
    const std::vector<Section> sections = examine(options);
    // The result tells of every problem already.
    return {options.json ? doctor_json(sections)
                         : doctor_text(sections, is_colour_wanted(STDOUT_FILENO)),
            {},
            problems_in(sections)};
}

}  // namespace nimba::smi
