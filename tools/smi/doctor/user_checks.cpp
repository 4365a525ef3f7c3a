// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/user_checks.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

namespace nimba::smi {
namespace {

constexpr const char* kPermissions = "permissions";
constexpr const char* kHome = "home";
constexpr const char* kPreferenceFile = "preference_file";

constexpr const char* kMoveAway = "look at it, and move it out of the way if it is of no use: mv";

std::string in_quotes(const std::string& path)
{
    return fmt::format("\"{}\"", path);
}

Check no_directory(const PreferenceFacts& facts)
{
    const std::string directory = std::filesystem::path(facts.path).parent_path();
    if (facts.directory_error == ENOENT) {
        return noted(
            kPreferenceFile,
            fmt::format("there is no directory {}, so no preference can be kept", directory),
            fmt::format("type: mkdir -p {}", in_quotes(directory)));
    }
    return noted(kPreferenceFile,
                 fmt::format("no preference can be kept in {}: {}", directory,
                             std::strerror(facts.directory_error)),
                 fmt::format("see what is in its place: namei -l {}", in_quotes(directory)));
}

Check bad_lines(const PreferenceFacts& facts)
{
    return noted(
        kPreferenceFile,
        fmt::format("{}: {} bad {}, at first line {}, which the library ignores, and drops when "
                    "it writes the file",
                    facts.path, facts.bad_lines, facts.bad_lines == 1 ? "line" : "lines",
                    facts.first_bad_line),
        fmt::format("{} {} {}", kMoveAway, in_quotes(facts.path), in_quotes(facts.path + ".bad")));
}

// No other program than this user's writes the file.
Check no_access(const PreferenceFacts& facts, const char* what, int error)
{
    return failed(
        kPreferenceFile, ExitStatus::kNoPermission,
        fmt::format("cannot {} {}: {}, so no preference can be kept", what, facts.path,
                    std::strerror(error)),
        fmt::format(
            "make it this user's own: sudo chown \"$USER\" {}",
            in_quotes(facts.exists ? facts.path
                                   : std::filesystem::path(facts.path).parent_path().string())));
}

}  // namespace

Check permissions_check(const UserFacts& facts)
{
    if (facts.id == 0) {
        return passed(kPermissions, fmt::format("{}, who may do everything", facts.name));
    }
    return noted(kPermissions,
                 fmt::format("{}, in {}, is not root: what the driver shows to root "
                             "alone stays closed",
                             facts.name,
                             facts.groups.empty()
                                 ? "no further group"
                                 : fmt::format("the groups {}", fmt::join(facts.groups, ", "))),
                 "type sudo in front of a command that needs it: sudo nimba-smi ps");
}

Check home_check(const PreferenceFacts& facts)
{
    if (!facts.path.empty()) {
        return passed(kHome, *facts.home);
    }
    const std::string found = !facts.home           ? "HOME is not set"
                              : facts.home->empty() ? "HOME is empty"
                                                    : "HOME is too long";
    return noted(kHome, found + ", so no preference can be kept",
                 "type: export HOME=\"$(getent passwd \"$(id -u)\" | cut -d: -f6)\"");
}

Check preference_file_check(const PreferenceFacts& facts, const Check& home)
{
    if (facts.path.empty()) {
        return skipped(kPreferenceFile, home);
    }
    if (facts.directory_error != 0) {
        return no_directory(facts);
    }
    if (!facts.regular) {
        return noted(kPreferenceFile,
                     fmt::format("{} is no regular file, so no preference can be kept", facts.path),
                     fmt::format("{} {} {}", kMoveAway, in_quotes(facts.path),
                                 in_quotes(facts.path + ".bad")));
    }
    if (facts.read_error != 0) {
        return no_access(facts, "read", facts.read_error);
    }
    if (facts.write_error != 0) {
        return no_access(facts, "write", facts.write_error);
    }
    if (facts.bad_lines > 0) {
        return bad_lines(facts);
    }
    return passed(kPreferenceFile, facts.exists ? fmt::format("{}, of {} applications", facts.path,
                                                              facts.applications)
                                                : fmt::format("{}, not made yet", facts.path));
}

}  // namespace nimba::smi
