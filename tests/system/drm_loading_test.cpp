// SPDX-License-Identifier: MIT
#include "stub_discovery_fixture.hpp"

#include <dlfcn.h>

#include <ostream>

namespace nimba::test {
namespace {

class DrmLoading : public StubDiscoveryTest {
  protected:
    DrmLoading() { devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K2, {0x9a01, 2, 3, 1}, 71); }

    std::int32_t init() const
    {
        return library_.symbol<decltype(gpuinfo_nimba_init)>("gpuinfo_nimba_init")();
    }
    std::int32_t get_device_handles()
    {
        return library_.symbol<decltype(gpuinfo_nimba_get_device_handles)>(
            "gpuinfo_nimba_get_device_handles")(&record_);
    }
    // Discovers with a record of a pattern and expects that nothing happened at all.
    void expect_failed_load()
    {
        record_ = patterned_record();
        discover();
        EXPECT_EQ(result_, 0);
        EXPECT_EQ(control_enable(), 0);
        EXPECT_EQ(bytes_of(record_), bytes_of(patterned_record()));
        EXPECT_EQ(messages_, Texts{});
        EXPECT_EQ(output_, "");
        EXPECT_EQ(opened_, OpenFiles{});
    }
    void expect_adapter()
    {
        EXPECT_EQ(result_, 0);
        EXPECT_EQ(control_enable(), 1);
        EXPECT_EQ(record_.header.chip_num, 1);
        EXPECT_STREQ(record_.header.chip_name[0], "Gpu0:NimbaK2");
    }
};

TEST_F(DrmLoading, ListsWithDrmGetDevices2AndFlags0WhenItExists)
{
    discover_with("drm_full");
    expect_adapter();
    ASSERT_EQ(stub_->call_count, 2);
    EXPECT_EQ(stub_->calls[0].with_flags, 1);
    EXPECT_EQ(stub_->calls[0].flags, 0U);
    EXPECT_EQ(stub_->calls[1].with_flags, 1);
    EXPECT_EQ(stub_->calls[1].flags, 0U);
}

TEST_F(DrmLoading, ListsWithDrmGetDevicesWhereDrmGetDevices2IsAbsent)
{
    discover_with("drm_without_get_devices2");
    expect_adapter();
    ASSERT_EQ(stub_->call_count, 2);
    EXPECT_EQ(stub_->calls[0].with_flags, 0);
    EXPECT_EQ(stub_->calls[1].with_flags, 0);
}

TEST_F(DrmLoading, WorksWithoutDrmFreeVersion)
{
    discover_with("drm_without_free_version");
    expect_adapter();
}

TEST_F(DrmLoading, LoadsALibraryThatOnlyLazyBindingLoads)
{
    install_stub("drm_unresolved", "libdrm.so");
    install_garbage("libdrm.so.2");
    ASSERT_EQ(::dlopen("libdrm.so", RTLD_NOW), nullptr);
    EXPECT_EQ(init(), 1);
    EXPECT_TRUE(in_process("libdrm.so"));
}

TEST_F(DrmLoading, KeepsTheSymbolsOfLibdrmToItself)
{
    discover_with("drm_full");
    expect_adapter();
    EXPECT_FALSE(visible_to_everyone("drmGetVersion"));
}

TEST_F(DrmLoading, PrefersLibdrmSoToLibdrmSo2)
{
    install_stub("drm_full", "libdrm.so.2");
    discover_with("drm_full");
    expect_adapter();
    EXPECT_EQ(stub_->call_count, 2);
    EXPECT_FALSE(in_process("libdrm.so.2"));
}

TEST_F(DrmLoading, FallsBackToLibdrmSo2WhenLibdrmSoDoesNotLoad)
{
    install_garbage("libdrm.so");
    use_stub("drm_full", "libdrm.so.2");
    discover();
    expect_adapter();
    EXPECT_EQ(stub_->call_count, 2);
}

TEST_F(DrmLoading, DoesNotFallBackToLibdrmSo2ForAFunctionThatLibdrmSoLacks)
{
    install_stub("drm_full", "libdrm.so.2");
    install_stub("drm_without_get_version", "libdrm.so");
    expect_failed_load();
    EXPECT_FALSE(in_process("libdrm.so.2"));
}

TEST_F(DrmLoading, FailsWhenNeitherLibraryLoads)
{
    install_garbage("libdrm.so");
    install_garbage("libdrm.so.2");
    expect_failed_load();
    EXPECT_EQ(init(), 0);
}

TEST_F(DrmLoading, FindsTheFunctionsInTheProcessWhenNeitherLibraryLoads)
{
    install_garbage("libdrm.so");
    install_garbage("libdrm.so.2");
    install_stub("drm_full", "libnimba_test_drm.so");
    hold_stub("libnimba_test_drm.so", RTLD_GLOBAL);
    discover();
    expect_adapter();
    EXPECT_EQ(stub_->call_count, 2);
}

TEST_F(DrmLoading, ForgetsAnEarlierLibraryWhenALaterLoadFails)
{
    discover_with("drm_full");
    expect_adapter();
    stub_library_.reset();
    empty_search_directory();
    install_stub("drm_without_get_version", "libdrm.so");
    expect_failed_load();
    EXPECT_EQ(get_device_handles(), 0);
}

TEST_F(DrmLoading, OpensLibdrmAnewForEveryDiscoveryAndClosesNone)
{
    discover_with("drm_full");
    discover();
    stub_library_.reset();
    EXPECT_EQ(force_out("libdrm.so"), 2);
}

TEST_F(DrmLoading, TellsWhetherLibdrmIsUsable)
{
    use_stub("drm_full");
    EXPECT_EQ(init(), 1);
    EXPECT_EQ(get_device_handles(), 1);
    EXPECT_EQ(record_.header.chip_num, 1);
}

TEST_F(DrmLoading, LeavesTheControlFlagToGfxFindAdapter)
{
    use_stub("drm_full");
    EXPECT_EQ(init(), 1);
    EXPECT_EQ(get_device_handles(), 1);
    EXPECT_EQ(control_enable(), 0);
    discover();
    EXPECT_EQ(control_enable(), 1);
    stub_->device_count = 0;
    EXPECT_EQ(get_device_handles(), 0);
    EXPECT_EQ(init(), 1);
    EXPECT_EQ(control_enable(), 1);
}

TEST_F(DrmLoading, ListsNothingBeforeLibdrmIsLoaded)
{
    record_ = patterned_record();
    EXPECT_EQ(get_device_handles(), 0);
    find_adapter expected = patterned_record();
    expected.header.chip_num = 0;
    EXPECT_EQ(bytes_of(record_), bytes_of(expected));
}

struct Lack {
    const char* stub;
    const char* name;
};

void PrintTo(const Lack& row, std::ostream* out)
{
    *out << row.name;
}

class DrmLoadingWithout : public DrmLoading, public testing::WithParamInterface<Lack> {};

TEST_P(DrmLoadingWithout, ANeededFunctionFailsAndClosesTheLibrary)
{
    install_stub(GetParam().stub, "libdrm.so");
    expect_failed_load();
    EXPECT_FALSE(in_process("libdrm.so"));
    EXPECT_EQ(init(), 0);
    EXPECT_FALSE(in_process("libdrm.so"));
    EXPECT_EQ(get_device_handles(), 0);
}

INSTANTIATE_TEST_SUITE_P(, DrmLoadingWithout,
                         testing::Values(Lack{"drm_without_get_version", "DrmGetVersion"},
                                         Lack{"drm_without_list_functions", "AnyListFunction"},
                                         Lack{"drm_without_free_devices", "DrmFreeDevices"}),
                         [](const testing::TestParamInfo<Lack>& row) { return row.param.name; });

}  // namespace
}  // namespace nimba::test
