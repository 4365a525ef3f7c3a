// SPDX-License-Identifier: MIT
#include "tools/archive/reader.hpp"

#include "tools/archive/archive_error.hpp"
#include "tools/descriptor.hpp"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <set>
#include <utility>

namespace nimba::archive {
namespace {

constexpr std::size_t kBlock = 65536;

struct Close {
    void operator()(::archive* reader) const { archive_read_free(reader); }
};
using Reader = std::unique_ptr<::archive, Close>;

[[noreturn]] void fail(const std::string& what)
{
    throw ArchiveError{what};
}

// A name as a message shows it; it may be anything.
std::string shown(std::string_view name)
{
    constexpr std::size_t kLongest = 100;
    std::string text{'"'};
    text.append(encode_path(name.substr(0, kLongest)));
    return text.append(name.size() > kLongest ? "...\"" : "\"");
}

// What the library says of a damaged file differs from version to version; to users it is one.
[[noreturn]] void fail_damaged(::archive* reader)
{
    if (archive_errno(reader) == ENOMEM) {
        fail("not enough memory to read it");
    }
    fail("it is no capture, or damaged, or it ends early");
}

Reader make_reader()
{
    Reader reader{archive_read_new()};
    if (!reader || archive_read_support_filter_zstd(reader.get()) != ARCHIVE_OK ||
        archive_read_support_format_tar(reader.get()) != ARCHIVE_OK) {
        fail("this system's libarchive cannot read tar archives with Zstandard compression");
    }
    return reader;
}

// Of all that was read so far.
class Account {
  public:
    Account(const Limits& limits, uint64_t file_bytes)
        : limits_{limits},
          allowed_{limits.free_bytes +
                   file_bytes * std::min(limits.ratio, kMost / (file_bytes + 1))}
    {
    }

    void add_entry()
    {
        if (++entries_ > limits_.entries) {
            fail("it has too many entries");
        }
    }

    void add_name(std::string_view name)
    {
        names_ += name.size();
        if (names_ > limits_.all_names_bytes) {
            fail("the names of its entries are too long");
        }
    }

    void add_bytes(std::size_t count)
    {
        total_ += count;
        if (total_ > std::min(allowed_, limits_.total_bytes)) {
            fail("it unpacks to more than its size allows");
        }
    }

    // `bytes`: of the unpacked archive until here, with what stands between the entries' bytes.
    void check_position(uint64_t bytes) const
    {
        if (bytes > std::min(allowed_, total_ + kSlack + entries_ * kEntryOverhead)) {
            fail("it unpacks to more than its size allows");
        }
    }

  private:
    static constexpr uint64_t kMost = UINT64_MAX / 2;
    // What headers and padding may take.
    static constexpr uint64_t kEntryOverhead = 8192;
    static constexpr uint64_t kSlack = 1U << 20U;

    const Limits& limits_;
    uint64_t allowed_;
    uint64_t entries_ = 0;
    uint64_t names_ = 0;
    uint64_t total_ = 0;
};

std::string pathname(archive_entry* entry, const Limits& limits)
{
    const char* const text = archive_entry_pathname(entry);
    if (text == nullptr) {
        fail("an entry's name cannot be read");
    }
    std::string name{text};
    if (name.size() > limits.name_bytes) {
        fail("the name of entry " + shown(name) + " is too long");
    }
    return name;
}

EntryName entry_name(archive_entry* entry, const std::string& name)
{
    if (archive_entry_filetype(entry) != AE_IFREG || archive_entry_hardlink(entry) != nullptr ||
        archive_entry_symlink(entry) != nullptr) {
        fail("entry " + shown(name) + " is no regular file");
    }
    auto parsed = parse_entry_name(name);
    if (!parsed) {
        fail("a capture has no entry " + shown(name));
    }
    return *std::move(parsed);
}

uint64_t longest(EntryKind kind, const Limits& limits)
{
    switch (kind) {
        case EntryKind::kManifest:
        case EntryKind::kSample:
            return std::min(limits.record_bytes, limits.entry_bytes);
        case EntryKind::kDocument:
        case EntryKind::kOverview:
            return std::min(limits.document_bytes, limits.entry_bytes);
        case EntryKind::kDmidecode:
        case EntryKind::kPreferences:
        case EntryKind::kNode:
            break;
    }
    return limits.entry_bytes;
}

std::string data(::archive* reader, archive_entry* entry, uint64_t limit, const std::string& name,
                 Account& account)
{
    const auto told = archive_entry_size_is_set(entry) != 0 ? archive_entry_size(entry) : -1;
    std::string bytes;
    std::array<char, kBlock> block;
    while (true) {
        const la_ssize_t count = archive_read_data(reader, block.data(), block.size());
        if (count < 0) {
            fail_damaged(reader);
        }
        if (count == 0) {
            break;
        }
        account.add_bytes(static_cast<std::size_t>(count));
        bytes.append(block.data(), static_cast<std::size_t>(count));
        if (bytes.size() > limit) {
            fail("entry " + shown(name) + " is too large");
        }
    }
    if (told >= 0 && bytes.size() != static_cast<uint64_t>(told)) {
        fail_damaged(reader);
    }
    return bytes;
}

void read_all(::archive* reader, const Limits& limits, uint64_t file_bytes, const TakeEntry& take)
{
    Account account{limits, file_bytes};
    std::set<std::string> names;
    archive_entry* entry = nullptr;
    while (true) {
        const int status = archive_read_next_header(reader, &entry);
        if (status == ARCHIVE_EOF) {
            return;
        }
        if (status != ARCHIVE_OK) {
            fail_damaged(reader);
        }
        account.add_entry();
        account.check_position(static_cast<uint64_t>(archive_filter_bytes(reader, 0)));
        const std::string name = pathname(entry, limits);
        account.add_name(name);
        EntryName parsed = entry_name(entry, name);
        if (!names.insert(name).second) {
            fail("entry " + shown(name) + " comes twice");
        }
        const uint64_t limit = longest(parsed.kind, limits);
        take(std::move(parsed), data(reader, entry, limit, name, account));
    }
}

}  // namespace

void read_file(const std::string& file, const Limits& limits, const TakeEntry& take)
{
    // A pipe without a writer would be waited for.
    const tools::Descriptor descriptor{
        ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)};
    struct stat status {};
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0) {
        fail(std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        fail("it is no regular file");
    }
    const Reader reader = make_reader();
    if (archive_read_open_fd(reader.get(), descriptor.get(), kBlock) != ARCHIVE_OK) {
        fail_damaged(reader.get());
    }
    read_all(reader.get(), limits, static_cast<uint64_t>(status.st_size), take);
}

void read_bytes(std::string_view bytes, const Limits& limits, const TakeEntry& take)
{
    const Reader reader = make_reader();
    if (archive_read_open_memory(reader.get(), bytes.data(), bytes.size()) != ARCHIVE_OK) {
        fail_damaged(reader.get());
    }
    read_all(reader.get(), limits, bytes.size(), take);
}

}  // namespace nimba::archive
