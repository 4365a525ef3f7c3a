// SPDX-License-Identifier: MIT
#include "made_archive.hpp"

#include "tools/archive/archive_error.hpp"
#include "tools/archive/load.hpp"

#include <archive.h>
#include <archive_entry.h>

#include <stdexcept>

namespace nimba::archive {
namespace {

la_ssize_t append(::archive* /*writer*/, void* text, const void* bytes, std::size_t size)
{
    static_cast<std::string*>(text)->append(static_cast<const char*>(bytes), size);
    return static_cast<la_ssize_t>(size);
}

void add_filter(::archive* writer, Packing packing)
{
    if (packing == Packing::kZstandard) {
        archive_write_add_filter_zstd(writer);
    } else if (packing == Packing::kGzip) {
        archive_write_add_filter_gzip(writer);
    }
}

void add(::archive* writer, const MadeEntry& made)
{
    archive_entry* const entry = archive_entry_new();
    archive_entry_set_pathname(entry, made.name.c_str());
    archive_entry_set_filetype(entry, made.type == 0 ? AE_IFREG : made.type);
    archive_entry_set_perm(entry, 0644);
    archive_entry_set_size(entry, static_cast<la_int64_t>(made.bytes.size()));
    if (!made.hard_link.empty()) {
        archive_entry_set_hardlink(entry, made.hard_link.c_str());
        archive_entry_unset_size(entry);
    }
    if (!made.symbolic_link.empty()) {
        archive_entry_set_symlink(entry, made.symbolic_link.c_str());
    }
    if (!made.attribute.empty()) {
        archive_entry_xattr_add_entry(entry, "user.x", made.attribute.data(),
                                      made.attribute.size());
    }
    const bool written = archive_write_header(writer, entry) == ARCHIVE_OK &&
                         archive_write_data(writer, made.bytes.data(), made.bytes.size()) ==
                             static_cast<la_ssize_t>(made.bytes.size());
    archive_entry_free(entry);
    if (!written) {
        throw std::runtime_error{"the test's archive cannot be made"};
    }
}

}  // namespace

std::string made_archive(const std::vector<MadeEntry>& entries, Packing packing)
{
    std::string text;
    ::archive* const writer = archive_write_new();
    add_filter(writer, packing);
    archive_write_set_format_pax(writer);
    archive_write_set_bytes_in_last_block(writer, 1);
    archive_write_open(writer, &text, nullptr, append, nullptr);
    for (const MadeEntry& entry : entries) {
        add(writer, entry);
    }
    archive_write_close(writer);
    archive_write_free(writer);
    return text;
}

std::string small_manifest(int samples)
{
    std::string times;
    for (int i = 0; i < samples; ++i) {
        times += (i == 0 ? "" : ", ") + std::string{R"({"time": "t", "seconds": )"} +
                 std::to_string(i) + "}";
    }
    return R"({"format": "nimba-capture", "version": 1, "tool": "0.1.0", "time": "t",
               "redacted": false, "library": null, "samples": [)" +
           times + R"(], "drm": {"library": null, "devices": []}, "adapters": [],
               "errors": [], "problems": []})";
}

std::string small_sample()
{
    return R"({"nodes": [], "counters": []})";
}

std::string fault_in(const std::string& archive)
{
    try {
        load_capture_bytes(archive);
        return "";
    } catch (const ArchiveError& error) {
        return error.what();
    }
}

}  // namespace nimba::archive
