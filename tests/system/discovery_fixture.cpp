// SPDX-License-Identifier: MIT
#include "discovery_fixture.hpp"

#include "support/captured_stdout.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace nimba::test {

OpenFiles open_files()
{
    OpenFiles files;
    for (const auto& entry : std::filesystem::directory_iterator{"/proc/self/fd"}) {
        std::error_code ignored;
        files[std::stoi(entry.path().filename().string())] =
            std::filesystem::read_symlink(entry.path(), ignored).string();
    }
    // The listing's own descriptor is gone now.
    std::erase_if(files, [](const auto& file) {
        return ::fcntl(file.first, F_GETFD) < 0 || file.second.starts_with("socket:");
    });
    return files;
}

std::string check_line(unsigned vendor, unsigned device)
{
    char text[64];
    std::snprintf(text, sizeof text, "check venderid: 0x%x, device id:0x%x\n", vendor, device);
    return text;
}

find_adapter empty_record()
{
    find_adapter record{};
    record.header.vendor_id_filter = 0xFFFF;
    return record;
}

find_adapter patterned_record()
{
    find_adapter record;
    std::memset(&record, 0xa5, sizeof record);
    return record;
}

std::vector<std::uint8_t> bytes_of(const find_adapter& record)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&record);
    return {bytes, bytes + sizeof record};
}

DiscoveryTest::DiscoveryTest()
{
    library_.symbol<decltype(set_print_callback)>("set_print_callback")(keep_message);
    take_messages();
}

DiscoveryTest::~DiscoveryTest()
{
    library_.unload();
    EXPECT_FALSE(LoadedLibrary::loaded());
    for (const auto& [fd, file] : open_files()) {
        if (!files_before_.contains(fd)) {
            ::close(fd);
        }
    }
}

void DiscoveryTest::discover()
{
    auto& find = library_.symbol<decltype(gfx_find_adapter)>("gfx_find_adapter");
    const OpenFiles files = open_files();
    take_messages();
    output_ = stdout_of([&] { result_ = find(&record_); });
    messages_ = take_messages();
    opened_ = open_files();
    std::erase_if(opened_, [&](const auto& file) { return files.contains(file.first); });
}

std::uint8_t DiscoveryTest::control_enable() const
{
    return library_.symbol<std::uint8_t>("gpuinfo_control_enable");
}

const find_adapter_ext1& DiscoveryTest::cache() const
{
    return library_.symbol<find_adapter_ext1>("find_adapter_ext1_cache");
}

}  // namespace nimba::test
