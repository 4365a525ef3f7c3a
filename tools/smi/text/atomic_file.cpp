// SPDX-License-Identifier: MIT
#include "tools/smi/text/atomic_file.hpp"

#include "tools/descriptor.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/text/output.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace nimba::smi {
namespace {

// The file that a path leads to, which may have to be made.
std::string without_links(const std::string& path)
{
    std::error_code error;
    const auto resolved = std::filesystem::canonical(path, error);
    return error ? path : resolved.string();
}

// The permissions that a new file gets, or has already.
mode_t permissions_for(const std::string& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        return status.st_mode & ALLPERMS;
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return (S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH) & ~mask;
}

int write_in_place(const std::string& path, std::string_view text)
{
    const tools::Descriptor file{::open(path.c_str(), O_WRONLY | O_CLOEXEC)};
    return file ? write_all(file.get(), text) : errno;
}

// Fills the new file at `temporary` and gives it its name.
int fill_and_rename(int file, const std::string& temporary, const std::string& path,
                    std::string_view text)
{
    if (const int error = write_all(file, text); error != 0) {
        return error;
    }
    const bool done = ::fchmod(file, permissions_for(path)) == 0 && ::fsync(file) == 0 &&
                      ::rename(temporary.c_str(), path.c_str()) == 0;
    return done ? 0 : errno;
}

}  // namespace

int write_file(const std::string& path, std::string_view text)
{
    const std::string target = without_links(path);
    struct stat status {};
    if (::stat(target.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        return write_in_place(target, text);
    }
    const StopSignals signals{SignalEffect::kEndOfProcess};
    // Beside it, under a name that is no longer than its own may be.
    std::string temporary =
        (std::filesystem::path{target}.parent_path() / ".nimba-smi.XXXXXX").string();
    const tools::Descriptor file{::mkostemp(temporary.data(), O_CLOEXEC)};
    if (!file) {
        return errno;
    }
    const int error = fill_and_rename(file.get(), temporary, target, text);
    if (error != 0) {
        ::unlink(temporary.c_str());
    }
    return error;
}

}  // namespace nimba::smi
