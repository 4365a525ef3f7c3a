// SPDX-License-Identifier: MIT
#include "lifecycle_fixture.hpp"

#include <fcntl.h>

#include <cstdio>

namespace nimba::test {

LifecycleTest::LifecycleTest()
{
    global<decltype(set_print_callback)>("set_print_callback")(keep_message);
    take_messages();
}

LifecycleTest::~LifecycleTest()
{
    exit(0);
    take_messages();
    library_.unload();
    EXPECT_FALSE(LoadedLibrary::loaded());
    kernel_interfaces_.clear();
    empty_search_directory();
}

void LifecycleTest::fill_slot(int slot, std::uint32_t chip_id, int card)
{
    const auto& directory = info_directories_[static_cast<std::size_t>(slot)];
    directory.write("enable_usage", "?");
    const Descriptor& descriptor =
        info_descriptors_.emplace_back(::open(directory.path().c_str(), O_RDONLY | O_DIRECTORY));
    record_.header.chip_id[slot] = chip_id;
    record_.header.drm_fd[slot] = 40 + slot;
    record_.header.drm_card_idx[slot] = card;
    std::snprintf(record_.header.chip_name[slot], sizeof record_.header.chip_name[slot],
                  "Gpu%d:Test", slot);
    std::snprintf(record_.gpu_infos[slot].busid, sizeof record_.gpu_infos[slot].busid,
                  "9a0%d:01:00.0", slot);
    record_.gpu_infos[slot].jw_info_dir_fd = descriptor.get();
}

std::string LifecycleTest::usage(int slot) const
{
    return info_directories_[static_cast<std::size_t>(slot)].read("enable_usage");
}

kernel_interface_state& LifecycleTest::use_kernel_interface(const char* name, const char* stub)
{
    install_stub(stub, name);
    const HeldLibrary& library = kernel_interfaces_.emplace_back(name);
    return *reinterpret_cast<decltype(kernel_interface)*>(library.symbol("kernel_interface"))();
}

std::int32_t LifecycleTest::init(int slot)
{
    record_.chip_id_idx = slot;
    return global<decltype(gfx_global_init)>("gfx_global_init")(&record_);
}

std::int32_t LifecycleTest::exit(std::int32_t slot)
{
    return global<decltype(gfx_global_exit)>("gfx_global_exit")(slot);
}

}  // namespace nimba::test
