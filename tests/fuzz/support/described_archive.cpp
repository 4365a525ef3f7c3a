// SPDX-License-Identifier: MIT
#include "fuzz/support/described_archive.hpp"

#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <optional>

namespace nimba::fuzz {
namespace {

constexpr std::size_t kMostEntries = 40;
constexpr std::size_t kMostZeros = 20'000;
constexpr uint8_t kCompressed = 1;

struct CloseWriter {
    void operator()(::archive* writer) const { archive_write_free(writer); }
};
using Writer = std::unique_ptr<::archive, CloseWriter>;

struct FreeEntry {
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
using Header = std::unique_ptr<archive_entry, FreeEntry>;

la_ssize_t append(::archive* /*writer*/, void* text, const void* bytes, std::size_t size)
{
    static_cast<std::string*>(text)->append(static_cast<const char*>(bytes), size);
    return static_cast<la_ssize_t>(size);
}

void choose_format(::archive* writer, uint8_t form)
{
    constexpr std::array kFormats{archive_write_set_format_pax_restricted,
                                  archive_write_set_format_gnutar, archive_write_set_format_ustar,
                                  archive_write_set_format_v7tar};
    check(kFormats[(form >> 1U) % kFormats.size()](writer) == ARCHIVE_OK,
          "a format can be written");
    if ((form & kCompressed) != 0) {
        check(archive_write_add_filter_zstd(writer) == ARCHIVE_OK, "archives can be compressed");
        archive_write_set_filter_option(writer, "zstd", "compression-level", "1");
    }
    archive_write_set_bytes_in_last_block(writer, 1);
}

unsigned file_type(char type)
{
    switch (type) {
        case 'd':
            return AE_IFDIR;
        case 'l':
            return AE_IFLNK;
        case 'p':
            return AE_IFIFO;
        case 'c':
            return AE_IFCHR;
        case 'b':
            return AE_IFBLK;
        default:
            return AE_IFREG;
    }
}

Header header_of(const DescribedEntry& entry)
{
    Header header{archive_entry_new()};
    archive_entry_set_pathname(header.get(), entry.name.c_str());
    archive_entry_set_filetype(header.get(), file_type(entry.type));
    archive_entry_set_perm(header.get(), 0600);
    archive_entry_set_mtime(header.get(), 0, 0);
    archive_entry_set_size(header.get(), static_cast<la_int64_t>(entry.bytes.size()));
    if (entry.type == 'l') {
        archive_entry_set_symlink(header.get(), "manifest.json");
    } else if (entry.type == 'h') {
        archive_entry_set_hardlink(header.get(), "manifest.json");
    } else if (entry.type == 's') {
        const std::size_t end = entry.bytes.find_last_not_of('\0') + 1;
        archive_entry_sparse_add_entry(header.get(), 0, static_cast<la_int64_t>(end));
    }
    return header;
}

// Returns whether the format can hold it.
bool write(::archive* writer, const DescribedEntry& entry)
{
    const int status = archive_write_header(writer, header_of(entry).get());
    check(status != ARCHIVE_FATAL, "an archive can be written");
    if (status == ARCHIVE_FAILED) {
        return false;
    }
    archive_write_data(writer, entry.bytes.data(), entry.bytes.size());
    check(archive_write_finish_entry(writer) == ARCHIVE_OK, "an entry can be written");
    return true;
}

// The number of a sample whose record has that name; nothing when it is no record.
std::optional<std::size_t> sample_of(std::string_view name)
{
    constexpr std::string_view kBefore = "samples/";
    std::size_t number = 0;
    if (name.starts_with(kBefore)) {
        std::from_chars(name.data() + kBefore.size(), name.data() + name.size(), number);
    }
    const bool is_record = name == "samples/" + std::to_string(number) + "/sample.json";
    return is_record ? std::optional{number} : std::nullopt;
}

std::string manifest_for(const std::vector<DescribedEntry>& entries)
{
    std::string times;
    for (const DescribedEntry& entry : entries) {
        if (sample_of(entry.name)) {
            times += (times.empty() ? "" : ",") + std::string{R"({"time":"t","seconds":)"} +
                     std::to_string(times.size()) + "}";
        }
    }
    return R"({"format":"nimba-capture","version":1,"tool":"0.1.0","time":"t","redacted":false,)"
           R"("library":null,"samples":[)" +
           times +
           R"(],"drm":{"library":null,"devices":[]},"adapters":[],"errors":[],"problems":[]})";
}

std::string record_for(const std::vector<DescribedEntry>& entries, std::size_t sample)
{
    const std::string directory = "samples/" + std::to_string(sample) + "/nodes";
    std::string nodes;
    for (const DescribedEntry& entry : entries) {
        if (entry.name.starts_with(directory + "/")) {
            nodes += (nodes.empty() ? R"({"path":")" : R"(,{"path":")") +
                     entry.name.substr(directory.size()) + R"(","mode":420,"bytes":)" +
                     std::to_string(entry.bytes.size()) + "}";
        }
    }
    return R"({"nodes":[)" + nodes + R"(],"counters":[]})";
}

void fill_in(std::vector<DescribedEntry>& entries)
{
    for (DescribedEntry& entry : entries) {
        if (!entry.bytes.empty()) {
            continue;
        }
        if (entry.name == "manifest.json") {
            entry.bytes = manifest_for(entries);
        } else if (const auto sample = sample_of(entry.name)) {
            entry.bytes = record_for(entries, *sample);
        }
    }
}

}  // namespace

bool DescribedEntry::is_file() const
{
    return type != 'h' && file_type(type) == AE_IFREG;
}

std::vector<DescribedEntry> described_entries(std::string_view input)
{
    std::vector<DescribedEntry> entries;
    for (std::string_view text : split(input, kMostEntries)) {
        std::string_view line = take_line(text);
        DescribedEntry& entry = entries.emplace_back();
        entry.type = static_cast<char>(take_byte(line));
        std::size_t zeros = 0;
        std::from_chars(line.data(), line.data() + line.size(), zeros);
        line.remove_prefix(std::min(line.find(' '), line.size() - 1) + 1);
        entry.name = up_to_nul(line);
        entry.bytes = std::string{text} + std::string(std::min(zeros, kMostZeros), '\0');
    }
    fill_in(entries);
    return entries;
}

std::string archive_of(std::vector<DescribedEntry>& entries, uint8_t form)
{
    std::string bytes;
    const Writer writer{archive_write_new()};
    choose_format(writer.get(), form);
    check(archive_write_open(writer.get(), &bytes, nullptr, append, nullptr) == ARCHIVE_OK,
          "an archive can be opened");
    std::erase_if(entries,
                  [&](const DescribedEntry& entry) { return !write(writer.get(), entry); });
    check(archive_write_close(writer.get()) == ARCHIVE_OK, "an archive can be completed");
    return bytes;
}

}  // namespace nimba::fuzz
