// SPDX-License-Identifier: MIT
#include "tools/archive/writer.hpp"

#include "tools/archive/archive_error.hpp"

#include <archive.h>
#include <archive_entry.h>
#include <endian.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace nimba::archive {
namespace {

constexpr mode_t kMode = 0600;
// The records that end an archive find room for so much, and so many entries.
constexpr uint64_t kReservedBytes = 64ULL << 20U;
constexpr uint64_t kReservedEntries = 16;

// The magic number of a Zstandard frame that is passed over.
constexpr uint32_t kSkippableFrame = 0x184D2A50;

struct FreeEntry {
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};

[[noreturn]] void fail_with(int error)
{
    throw ArchiveError{std::string{"cannot write it: "} + std::strerror(error)};
}

// The file that a path leads to, which may have to be made.
std::string without_links(const std::string& path)
{
    std::error_code error;
    const auto resolved = std::filesystem::canonical(path, error);
    return error ? path : resolved.string();
}

}  // namespace

void Writer::Close::operator()(::archive* writer) const
{
    archive_write_free(writer);
}

Writer::Writer(const std::string& file, const Limits& limits)
    : target_{without_links(file)}, limits_{limits}
{
    struct stat status {};
    if (::stat(target_.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        throw ArchiveError{S_ISDIR(status.st_mode) ? "it is a directory" : "it is no regular file"};
    }
    make_temporary();
    writer_.reset(archive_write_new());
    if (!writer_ || archive_write_add_filter_zstd(writer_.get()) != ARCHIVE_OK ||
        archive_write_set_format_pax_restricted(writer_.get()) != ARCHIVE_OK ||
        archive_write_open_fd(writer_.get(), descriptor_.get()) != ARCHIVE_OK) {
        fail();
    }
}

void Writer::make_temporary()
{
    std::string name =
        (std::filesystem::path{target_}.parent_path() / ".nimba-smi.XXXXXX").string();
    descriptor_ = tools::Descriptor{::mkostemp(name.data(), O_CLOEXEC)};
    if (!descriptor_) {
        fail_with(errno);
    }
    temporary_ = name;
}

Writer::~Writer()
{
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
    }
}

void Writer::fail() const
{
    const int error = writer_ ? archive_errno(writer_.get()) : ENOMEM;
    if (error > 0) {
        fail_with(error);
    }
    const char* const text = archive_error_string(writer_.get());
    throw ArchiveError{std::string{"cannot write it: "} + (text == nullptr ? "unknown" : text)};
}

bool Writer::has_room(uint64_t bytes, uint64_t waiting_entries, uint64_t waiting_bytes) const
{
    return bytes <= limits_.entry_bytes &&
           total_ + waiting_bytes + bytes + kReservedBytes <= limits_.total_bytes &&
           entries_ + waiting_entries + kReservedEntries <= limits_.entries;
}

void Writer::add(const std::string& name, std::string_view bytes)
{
    const std::unique_ptr<archive_entry, FreeEntry> entry{archive_entry_new()};
    archive_entry_set_pathname(entry.get(), name.c_str());
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), kMode);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(bytes.size()));
    archive_entry_set_mtime(entry.get(), 0, 0);
    if (archive_write_header(writer_.get(), entry.get()) != ARCHIVE_OK ||
        (!bytes.empty() && archive_write_data(writer_.get(), bytes.data(), bytes.size()) !=
                               static_cast<la_ssize_t>(bytes.size()))) {
        fail();
    }
    total_ += bytes.size();
    ++entries_;
}

// A series of which little changes gets smaller than a reader lets an archive be: what unpacks to
// nothing makes up for that.
void Writer::pad() const
{
    const auto all = static_cast<uint64_t>(archive_filter_bytes(writer_.get(), 0));
    const uint64_t counted = all - std::min(all, limits_.free_bytes);
    const uint64_t least = counted / limits_.ratio + 1;
    struct stat status {};
    if (::fstat(descriptor_.get(), &status) != 0) {
        fail_with(errno);
    }
    const auto size = static_cast<uint64_t>(status.st_size);
    if (size >= least) {
        return;
    }
    const auto padding = static_cast<uint32_t>(least - size);
    const std::array<uint32_t, 2> frame{htole32(kSkippableFrame), htole32(padding)};
    if (::pwrite(descriptor_.get(), frame.data(), sizeof frame, status.st_size) !=
            static_cast<ssize_t>(sizeof frame) ||
        ::ftruncate(descriptor_.get(), static_cast<off_t>(least + sizeof frame)) != 0) {
        fail_with(errno);
    }
}

void Writer::complete()
{
    if (archive_write_close(writer_.get()) != ARCHIVE_OK) {
        fail();
    }
    pad();
    if (::fchmod(descriptor_.get(), kMode) != 0 || ::fsync(descriptor_.get()) != 0 ||
        ::rename(temporary_.c_str(), target_.c_str()) != 0) {
        fail_with(errno);
    }
    temporary_.clear();
}

}  // namespace nimba::archive
