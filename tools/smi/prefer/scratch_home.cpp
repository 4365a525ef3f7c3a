// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/scratch_home.hpp"

#include "tools/smi/prefer/preference_file.hpp"
#include "tools/smi/text/atomic_file.hpp"

#include <fmt/core.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace nimba::smi {
namespace {

[[noreturn]] void fail(int error, const std::string& path)
{
    throw std::system_error{error, std::generic_category(), "cannot write " + path};
}

std::string temporary_directory()
{
    std::error_code error;
    const auto directory = std::filesystem::temp_directory_path(error);
    return error ? "/tmp" : std::filesystem::absolute(directory).string();
}

}  // namespace

ScratchHome::ScratchHome(std::string_view preferences)
    : home_{temporary_directory() + "/nimba-smi.XXXXXX"}
{
    if (::mkdtemp(home_.data()) == nullptr) {
        fail(errno, home_);
    }
    try {
        fill(preferences);
    } catch (const std::system_error&) {
        remove();
        throw;
    }
}

ScratchHome::~ScratchHome()
{
    remove();
}

std::optional<std::string> ScratchHome::preferences() const
{
    std::vector<Problem> problems;
    const auto file = std::get<PreferenceFile>(preference_file_in(home_.c_str()));
    auto content = read_preferences(file.path, problems);
    return content ? std::optional(std::move(content->text)) : std::nullopt;
}

void ScratchHome::fill(std::string_view preferences) const
{
    const auto found = preference_file_in(home_.c_str());
    const auto* const file = std::get_if<PreferenceFile>(&found);
    if (file == nullptr) {
        fail(ENAMETOOLONG, home_);
    }
    if (std::holds_alternative<Problem>(make_preference_directory(*file))) {
        fail(errno, file->directory);
    }
    if (const int error = write_file(file->path, preferences); error != 0) {
        fail(error, file->path);
    }
}

void ScratchHome::remove() const
{
    std::error_code ignored;
    std::filesystem::remove_all(home_, ignored);
}

}  // namespace nimba::smi
