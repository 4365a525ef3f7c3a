// SPDX-License-Identifier: MIT
#include "lifecycle_fixture.hpp"

#include <dlfcn.h>
#include <malloc.h>

#include <sys/resource.h>

#include <cstring>
#include <filesystem>

namespace nimba::test {
namespace {

class GlobalInit : public LifecycleTest {
  protected:
    GlobalInit() { fill_slot(0, DEVICE_ID_NIMBA_K1, 3); }
};

void* const* block_seen = nullptr;
bool block_was_null = false;

// Limits the address space for the length of its scope.
class AddressSpaceLimit final {
  public:
    explicit AddressSpaceLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_AS, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_AS, &limit);
    }
    ~AddressSpaceLimit() { ::setrlimit(RLIMIT_AS, &before_); }
    AddressSpaceLimit(const AddressSpaceLimit&) = delete;
    AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;

  private:
    rlimit before_{};
};

TEST_F(GlobalInit, MakesTheSlotCurrentAndReturnsItsChip)
{
    use_kernel_interface(kNimbaLibrary);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(global<std::int32_t>("__perf_event_fd"), 40);
    EXPECT_EQ(global<gpu_infos*>("pCurrent_gpu_infos"), &record_.gpu_infos[0]);
    EXPECT_STREQ(global<char[60]>("sys_bus_pci_devices_BUSID_path"),
                 "/sys/bus/pci/devices/9a00:01:00.0");
    EXPECT_STREQ(debug_path(), "/sys/kernel/debug/dri/3/jw");
    EXPECT_EQ(usage(0), "1");
    EXPECT_EQ(take_messages(),
              (Texts{"gpuinfo_select_new_chip index: 0, name: Gpu0:Test \n", kStartMessage}));
}

TEST_F(GlobalInit, AsksTheLibraryOnceWithTheDrmDescriptorForTheBlocksSize)
{
    auto& library = use_kernel_interface(kNimbaLibrary);
    library.size = 100000;
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(library.gfx_calls, 1);
    EXPECT_EQ(library.last_fd, 40);
    ASSERT_NE(block(), nullptr);
    EXPECT_GE(::malloc_usable_size(block()), 100000U);
    std::memset(block(), 0x5a, 100000);
}

TEST_F(GlobalInit, PrefersTheSizeFunctionGfx)
{
    auto& library = use_kernel_interface(kNimbaLibrary, "kernel_interface_both");
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(library.gfx_calls, 1);
    EXPECT_EQ(library.qv_calls, 0);
}

TEST_F(GlobalInit, TakesTheSizeFunctionQvWhereGfxIsAbsent)
{
    auto& library = use_kernel_interface(kNimbaLibrary, "kernel_interface_qv");
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(library.qv_calls, 1);
    EXPECT_EQ(library.last_fd, 40);
}

TEST_F(GlobalInit, MakesTheLibrarysSymbolsVisibleToTheProcess)
{
    use_kernel_interface(kNimbaLibrary);
    ASSERT_FALSE(visible_to_everyone("gfx_get_struct_size"));
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_TRUE(visible_to_everyone("gfx_get_struct_size"));
}

TEST_F(GlobalInit, LoadsALibraryThatOnlyLazyBindingLoads)
{
    install_stub("kernel_interface_unresolved", kNimbaLibrary);
    ASSERT_EQ(::dlopen(kNimbaLibrary, RTLD_NOW), nullptr);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
}

TEST_F(GlobalInit, WorksWithoutAnInfoDirectory)
{
    use_kernel_interface(kNimbaLibrary);
    record_.gpu_infos[0].jw_info_dir_fd = -1;
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(usage(0), "?");
}

TEST_F(GlobalInit, DoesNotCreateTheUsageNode)
{
    use_kernel_interface(kNimbaLibrary);
    std::filesystem::remove(info_directories_[0].path() / "enable_usage");
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_FALSE(std::filesystem::exists(info_directories_[0].path() / "enable_usage"));
}

TEST_F(GlobalInit, LeavesTheRecordAndTheDescriptorsAsTheyWere)
{
    use_kernel_interface(kNimbaLibrary);
    find_adapter before = record_;
    before.chip_id_idx = 0;
    const auto descriptors = open_descriptors();
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(std::memcmp(&record_, &before, sizeof before), 0);
    EXPECT_EQ(open_descriptors(), descriptors);
}

TEST_F(GlobalInit, FailsWithoutASizeFunction)
{
    use_kernel_interface(kNimbaLibrary, "kernel_interface_none");
    EXPECT_EQ(init(0), -1);
    EXPECT_EQ(take_messages(), (Texts{"gpuinfo_select_new_chip index: 0, name: Gpu0:Test \n",
                                      kStartMessage, "get pfn_gfx_get_struct_size fail. \n "}));
    EXPECT_EQ(block(), nullptr);
    EXPECT_EQ(usage(0), "1");
    EXPECT_STREQ(debug_path(), "/sys/kernel/debug/dri/3/jw");
}

TEST_F(GlobalInit, FailsForASizeOf0)
{
    use_kernel_interface(kNimbaLibrary).size = 0;
    EXPECT_EQ(init(0), -1);
    EXPECT_EQ(take_messages(), (Texts{"gpuinfo_select_new_chip index: 0, name: Gpu0:Test \n",
                                      kStartMessage, "get_struct_size err\n "}));
    EXPECT_EQ(block(), nullptr);
    EXPECT_EQ(usage(0), "1");
    EXPECT_STREQ(debug_path(), "/sys/kernel/debug/dri/3/jw");
}

TEST_F(GlobalInit, FailsWithoutMemoryForTheBlock)
{
    use_kernel_interface(kNimbaLibrary).size = 0xFFFFFFFF;
#ifdef NIMBA_SANITIZE
    EXPECT_EQ(init(0), -1);  // its allocator has a limit of its own
#else
    const AddressSpaceLimit limit{rlim_t{1} << 31};
    EXPECT_EQ(init(0), -1);
#endif
    EXPECT_EQ(take_messages(), (Texts{"gpuinfo_select_new_chip index: 0, name: Gpu0:Test \n",
                                      kStartMessage, "pdev alloc mem fail.\n "}));
    EXPECT_EQ(block(), nullptr);
    EXPECT_EQ(usage(0), "1");
}

TEST_F(GlobalInit, FreesTheEarlierBlockBeforeItAsksForTheNewSize)
{
    auto& library = use_kernel_interface(kNimbaLibrary);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    ASSERT_NE(block(), nullptr);
    block_seen = &global<void*>("pdev");
    block_was_null = false;
    library.on_call = [] { block_was_null = *block_seen == nullptr; };
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(library.gfx_calls, 2);
    EXPECT_TRUE(block_was_null);
    EXPECT_NE(block(), nullptr);
    library.size = 0;
    EXPECT_EQ(init(0), -1);
    EXPECT_EQ(block(), nullptr);
}

#ifndef NIMBA_SANITIZE
TEST_F(GlobalInit, HoldsOneBlockAtATime)
{
    constexpr std::uint32_t kSize = 64U << 20;  // large enough to be mapped by itself
    use_kernel_interface(kNimbaLibrary).size = kSize;
    const std::size_t before = ::mallinfo2().hblkhd;
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    const std::size_t once = ::mallinfo2().hblkhd;
    EXPECT_GE(once, before + kSize);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(::mallinfo2().hblkhd, once);
    EXPECT_EQ(exit(0), 0);
    EXPECT_EQ(::mallinfo2().hblkhd, before);
}
#endif

TEST_F(GlobalInit, AgainForTheSameSlotStillFindsTheEntryPoints)
{
    use_kernel_interface(kNimbaLibrary);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    kernel_interfaces_.clear();
    EXPECT_TRUE(in_process(kNimbaLibrary));
    EXPECT_TRUE(visible_to_everyone("gfx_get_struct_size"));
}

TEST_F(GlobalInit, AgainForAnotherSlotReplacesTheCurrentAdapter)
{
    use_kernel_interface(kNimbaLibrary);
    auto& qv = use_kernel_interface(kQvLibrary);
    fill_slot(2, DEVICE_ID_QV_M20, 12);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(init(2), DEVICE_ID_QV_M20);
    EXPECT_EQ(qv.gfx_calls, 1);
    EXPECT_EQ(qv.last_fd, 42);
    EXPECT_EQ(global<std::int32_t>("__perf_event_fd"), 42);
    EXPECT_EQ(global<gpu_infos*>("pCurrent_gpu_infos"), &record_.gpu_infos[2]);
    EXPECT_STREQ(global<char[60]>("sys_bus_pci_devices_BUSID_path"),
                 "/sys/bus/pci/devices/9a02:01:00.0");
    EXPECT_STREQ(debug_path(), "/sys/kernel/debug/dri/12/qv");
    EXPECT_EQ(usage(0), "1");
    EXPECT_EQ(usage(2), "1");
}

TEST_F(GlobalInit, ForAnUnknownChipFailsThoughAnEarlierLibraryIsLoaded)
{
    use_kernel_interface(kNimbaLibrary);
    fill_slot(1, 0x7777, 12);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    void* const earlier = block();
    take_messages();
    EXPECT_EQ(init(1), -1);
    EXPECT_EQ(take_messages(),
              (Texts{"gpuinfo_select_new_chip index: 1, name: Gpu1:Test \n", kStartMessage,
                     "invalidate chip id. \n ", "open libhwbridge module fail. \n "}));
    EXPECT_EQ(usage(1), "1");
    EXPECT_EQ(block(), earlier);
    EXPECT_STREQ(debug_path(), "/sys/kernel/debug/dri/3/jw");
}

TEST_F(GlobalInit, ThatFindsNoLibraryOrSizeFunctionKeepsTheEarlierBlock)
{
    use_kernel_interface(kNimbaLibrary);
    use_kernel_interface(kQvLibrary, "kernel_interface_none");
    install_garbage(kMv9Library);
    install_garbage(kMv9Fallback);
    fill_slot(1, DEVICE_ID_QV_M30, 5);
    fill_slot(2, DEVICE_ID_QV_M20, 6);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    void* const earlier = block();
    ASSERT_NE(earlier, nullptr);
    EXPECT_EQ(init(1), -1);
    EXPECT_EQ(block(), earlier);
    EXPECT_STREQ(debug_path(), "/sys/kernel/debug/dri/5/qv");
    EXPECT_EQ(init(2), -1);
    EXPECT_EQ(block(), earlier);
    EXPECT_STREQ(debug_path(), "/sys/kernel/debug/dri/6/qv");
}

TEST_F(GlobalInit, RecoversFromAFailure)
{
    auto& library = use_kernel_interface(kNimbaLibrary);
    library.size = 0;
    EXPECT_EQ(init(0), -1);
    library.size = 16;
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_NE(block(), nullptr);
}

}  // namespace
}  // namespace nimba::test
