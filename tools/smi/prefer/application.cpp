// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/application.hpp"

#include "nimba_mgmt_interface.h"

#include <unistd.h>

#include <fmt/core.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

namespace nimba::smi {
namespace {

constexpr std::size_t kLongestName = sizeof(_UTIL_GPU_PREFERENCE_NODE::FileName) - 1;
constexpr std::size_t kLongestPath = sizeof(_UTIL_GPU_PREFERENCE_NODE::FullPath) - 1;

// What the library removes from both ends of a path when it reads the file.
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

bool is_white_space(char c)
{
    return kWhiteSpace.find(c) != std::string_view::npos;
}

}  // namespace

std::string_view application_name(std::string_view path)
{
    const auto separator = path.find_last_of("/\\");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

std::string application_path(const std::string& typed, const std::string& directory,
                             std::string_view search_path)
{
    namespace fs = std::filesystem;
    if (typed.find('/') != std::string::npos) {
        const fs::path path{typed};
        if (path.is_absolute()) {
            return typed;
        }
        // A link to the application has its own name; those on the way to it do not count.
        std::error_code error;
        const fs::path whole = directory / path;
        const fs::path parent = fs::weakly_canonical(whole.parent_path(), error);
        return ((error ? whole.parent_path() : parent) / whole.filename()).string();
    }
    while (!search_path.empty()) {
        const auto colon = std::min(search_path.find(':'), search_path.size());
        std::string candidate = fmt::format("{}/{}", search_path.substr(0, colon), typed);
        if (search_path.front() == '/' && is_executable(candidate)) {
            return candidate;
        }
        search_path.remove_prefix(std::min(colon + 1, search_path.size()));
    }
    return typed;
}

std::string application_fault(std::string_view path)
{
    const std::string_view name = application_name(path);
    if (name.empty() || name == "." || name == "..") {
        return "it names no file";
    }
    if (path.find_first_of(";\n") != std::string_view::npos) {
        return "the preference file cannot carry a path with \";\" or a newline";
    }
    if (name.find(']') != std::string_view::npos) {
        return "the preference file cannot carry a file name with \"]\"";
    }
    if (is_white_space(path.front()) || is_white_space(path.back())) {
        return "the preference file cannot carry a path that begins or ends with white space";
    }
    if (name.size() > kLongestName) {
        return fmt::format("its file name has {} bytes, and the preference file carries {}",
                           name.size(), kLongestName);
    }
    if (path.size() > kLongestPath) {
        return fmt::format("its path {} has {} bytes, and the preference file carries {}", path,
                           path.size(), kLongestPath);
    }
    return "";
}

bool is_executable(const std::string& path)
{
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

}  // namespace nimba::smi
