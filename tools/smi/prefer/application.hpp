// SPDX-License-Identifier: MIT
// Applications as the preference file names them.
#pragma once

#include <string>
#include <string_view>

namespace nimba::smi {

// An application's file name, the key of its preference: the part of its path behind the last "/"
// or "\", as the library finds it.
std::string_view application_name(std::string_view path);

// The path to record for what was typed. A name without "/" is looked for in `search_path`, a PATH,
// and stays as it is when it is not there; other texts are relative to `directory`.
std::string application_path(const std::string& typed, const std::string& directory,
                             std::string_view search_path);

// Why the preference file cannot carry an application with this path, as the end of a sentence;
// empty when it can.
std::string application_fault(std::string_view path);

// Whether the path is one of a file that this user may execute.
bool is_executable(const std::string& path);

}  // namespace nimba::smi
