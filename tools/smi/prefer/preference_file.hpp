// SPDX-License-Identifier: MIT
// The preference file of the user: where it is, reading it and replacing it as a whole.
#pragma once

#include "tools/smi/exit_status.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nimba::smi {

struct PreferenceFile {
    std::string home;
    std::string directory;
    std::string path;
};

// Where the library looks for the file when HOME is `home`; null when HOME is unset. A problem when
// it uses none then, or one of the current directory.
std::variant<PreferenceFile, Problem> preference_file_in(const char* home);

struct FileContent {
    bool exists = false;
    std::string text{};

    bool operator==(const FileContent&) const = default;
};

// What the file holds. Nothing, and a problem, when it is no regular file, larger than any list of
// preferences, or cannot be read.
std::optional<FileContent> read_preferences(const std::string& path,
                                            std::vector<Problem>& problems);

// Makes the directory of the file, with mode 0700, and the one that it is in. Returns whether it
// had to be made, or a problem.
std::variant<bool, Problem> make_preference_directory(const PreferenceFile& file);

// Makes `text` the file's content, which is all of it or what it was before. A file that may not be
// written, and one that no longer holds `expected`, is left alone. Permissions and owner stay.
std::optional<Problem> replace_preferences(const std::string& path, const FileContent& expected,
                                           std::string_view text);

}  // namespace nimba::smi
