// SPDX-License-Identifier: MIT
// The script that completes a tool's command line, for each shell.
#pragma once

#include "tools/completion/model.hpp"

#include <string>

namespace nimba::completion {

std::string bash_script(const Tool& tool);
std::string zsh_script(const Tool& tool);
std::string fish_script(const Tool& tool);

}  // namespace nimba::completion
