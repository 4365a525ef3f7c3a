// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/preference_file.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/descriptor.hpp"
#include "tools/smi/text/atomic_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace nimba::smi {
namespace {

constexpr off_t kLargestFile = 16 << 20;

Problem file_problem(ExitStatus status, std::string message)
{
    return {status, std::nullopt, std::nullopt, std::move(message)};
}

Problem access_problem(const char* what, const std::string& path, int error)
{
    if (error == EACCES || error == EPERM) {
        return file_problem(ExitStatus::kNoPermission,
                            fmt::format("no permission to {} {}", what, path));
    }
    return file_problem(ExitStatus::kFailed,
                        fmt::format("cannot {} {}: {}", what, path, std::strerror(error)));
}

// Why the open file is none of preferences; empty when it may be.
std::string file_fault(int file)
{
    struct stat status {};
    if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        return "is no regular file";
    }
    return status.st_size > kLargestFile ? "is larger than 16 MiB" : "";
}

// Returns 0, or the number of the error that ended reading.
int read_all(int file, std::string& text)
{
    std::array<char, 16384> piece{};
    ssize_t got = 0;
    while ((got = ::read(file, piece.data(), piece.size())) > 0) {
        text.append(piece.data(), static_cast<std::size_t>(got));
    }
    return got < 0 ? errno : 0;
}

// A file that another user made, such as root's session for this one, stays theirs.
void keep_owner(const std::string& path, const struct stat& before)
{
    struct stat after {};
    if (::stat(path.c_str(), &after) == 0 &&
        (after.st_uid != before.st_uid || after.st_gid != before.st_gid)) {
        // Only root can give it back; others may find it theirs now.
        [[maybe_unused]] const int refused = ::chown(path.c_str(), before.st_uid, before.st_gid);
    }
}

}  // namespace

std::variant<PreferenceFile, Problem> preference_file_in(const char* home)
{
    if (home == nullptr || *home != '/') {
        return file_problem(
            ExitStatus::kFailed,
            home == nullptr || *home == '\0'
                ? "HOME is not set, so there is no preference file: set it to your home directory"
                : fmt::format("HOME is no absolute path ({}), so there is no preference file: set "
                              "it to your home directory",
                              home));
    }
    const std::string directory = fmt::format("{}/.local/share", home);
    PreferenceFile file{home, directory, directory + "/wmt_gfx_util.ini"};
    if (file.path.size() >= sizeof UTIL_CONFIG_PATH) {
        return file_problem(ExitStatus::kFailed,
                            fmt::format("HOME is longer than the library can use: {}", home));
    }
    return file;
}

std::optional<FileContent> read_preferences(const std::string& path, std::vector<Problem>& problems)
{
    const tools::Descriptor file{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    if (!file && errno == ENOENT) {
        return FileContent{};
    }
    if (!file) {
        problems.push_back(access_problem("read", path, errno));
        return std::nullopt;
    }
    if (const std::string fault = file_fault(file.get()); !fault.empty()) {
        problems.push_back(file_problem(
            ExitStatus::kFailed,
            fmt::format("{} {}, so it is no preference file: move it away", path, fault)));
        return std::nullopt;
    }
    FileContent content{true, {}};
    if (const int error = read_all(file.get(), content.text); error != 0) {
        problems.push_back(access_problem("read", path, error));
        return std::nullopt;
    }
    return content;
}

std::variant<bool, Problem> make_preference_directory(const PreferenceFile& file)
{
    bool made = false;
    for (const std::string& directory : {file.home + "/.local", file.directory}) {
        const bool done = ::mkdir(directory.c_str(), S_IRWXU) == 0;
        if (!done && errno != EEXIST) {
            return access_problem("make the directory", directory, errno);
        }
        made = made || done;
    }
    return made;
}

std::optional<Problem> replace_preferences(const std::string& path, const FileContent& expected,
                                           std::string_view text)
{
    std::vector<Problem> problems;
    const auto current = read_preferences(path, problems);
    if (!current) {
        return problems.front();
    }
    if (*current != expected) {
        return file_problem(ExitStatus::kFailed,
                            fmt::format("{} was changed by another program at the same time, and "
                                        "was left so: run the command again",
                                        path));
    }
    struct stat before {};
    if (current->exists &&
        (::access(path.c_str(), W_OK) != 0 || ::stat(path.c_str(), &before) != 0)) {
        return access_problem("write", path, errno);
    }
    if (const int error = write_file(path, text); error != 0) {
        return access_problem("write", path, error);
    }
    if (current->exists) {
        keep_owner(path, before);
    }
    return std::nullopt;
}

}  // namespace nimba::smi
