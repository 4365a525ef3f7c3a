// SPDX-License-Identifier: MIT
#include "tools/smi/worker/driver_directory.hpp"

#include "tools/descriptor.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

namespace nimba::smi {
namespace {

struct ListingCloser {
    void operator()(DIR* listing) const { ::closedir(listing); }
};
using Listing = std::unique_ptr<DIR, ListingCloser>;

// The next entry but "." and ".."; null at the end, where errno is 0, and when the listing fails.
const char* next_entry(const Listing& listing)
{
    errno = 0;
    while (const dirent* const entry = ::readdir(listing.get())) {
        const std::string_view name{entry->d_name};
        if (name != "." && name != "..") {
            return entry->d_name;
        }
    }
    return nullptr;
}

// The error number of opening a file and reading all of it; 0 when that works.
int reading_error(const std::string& path)
{
    const tools::Descriptor file{::open(path.c_str(), O_RDONLY | O_CLOEXEC)};
    std::array<char, 4096> piece{};
    ssize_t length = file ? 1 : -1;
    while (length > 0) {
        length = ::read(file.get(), piece.data(), piece.size());
    }
    return length == 0 ? 0 : errno;
}

}  // namespace

std::optional<FileFault> first_fault(const std::string& directory, std::string_view node)
{
    const Listing listing{::opendir(directory.c_str())};
    if (!listing) {
        return FileFault{directory, errno};
    }
    while (const char* const entry = next_entry(listing)) {
        const std::string path =
            fmt::format("{}/{}/{}", directory, entry, node == kLikeEntry ? entry : node);
        // What has gone in between is no fault.
        if (const int error = reading_error(path); error != 0 && error != ENOENT) {
            return FileFault{path, error};
        }
    }
    return errno == 0 ? std::nullopt : std::optional(FileFault{directory, errno});
}

std::size_t entries_in(const std::string& directory)
{
    const Listing listing{::opendir(directory.c_str())};
    std::size_t count = 0;
    while (listing && next_entry(listing) != nullptr) {
        ++count;
    }
    return count;
}

FaultSentence describe_fault(const std::optional<FileFault>& fault, const std::string& directory,
                             const char* what)
{
    if (!fault) {
        return {ExitStatus::kNoAdapter,
                fmt::format("the {} in {} cannot be read as a whole: they come and go too fast, or "
                            "an entry has no node; run the command again",
                            what, directory)};
    }
    if (fault->error == EACCES || fault->error == EPERM) {
        return {ExitStatus::kNoPermission,
                fmt::format("no permission to read {}: run as root", fault->path)};
    }
    if (fault->error == ENOENT || fault->error == ENOTDIR) {
        return {ExitStatus::kNoAdapter,
                fmt::format("there is no directory {}: the driver does not show its {}, or the "
                            "adapter is gone (see dmesg)",
                            fault->path, what)};
    }
    return {ExitStatus::kNoAdapter, fmt::format("cannot read {}: {} (see dmesg)", fault->path,
                                                std::strerror(fault->error))};
}

}  // namespace nimba::smi
