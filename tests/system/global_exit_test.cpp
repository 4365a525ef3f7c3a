// SPDX-License-Identifier: MIT
#include "lifecycle_fixture.hpp"

#include <cstring>
#include <filesystem>

namespace nimba::test {
namespace {

class GlobalExit : public LifecycleTest {
  protected:
    GlobalExit() { fill_slot(1, DEVICE_ID_QV_M40, 3); }

    void start()
    {
        install_stub("kernel_interface_gfx", kMv9Library);
        ASSERT_EQ(init(1), DEVICE_ID_QV_M40);
        ASSERT_TRUE(in_process(kMv9Library));
        take_messages();
    }
};

TEST_F(GlobalExit, SwitchesUsageOffUnloadsTheLibraryAndFreesTheBlock)
{
    start();
    EXPECT_EQ(usage(1), "1");
    EXPECT_EQ(exit(1), 0);
    EXPECT_EQ(take_messages(), (Texts{"gfx_global_exit enter, chip_id_idx: 1 \n", kStopMessage}));
    EXPECT_EQ(usage(1), "0");
    EXPECT_FALSE(in_process(kMv9Library));
    EXPECT_FALSE(visible_to_everyone("gfx_get_struct_size"));
    EXPECT_EQ(block(), nullptr);
}

TEST_F(GlobalExit, LeavesTheCurrentAdapterAndItsDescriptors)
{
    start();
    const auto descriptors = open_descriptors();
    EXPECT_EQ(exit(1), 0);
    EXPECT_EQ(global<std::int32_t>("__perf_event_fd"), 41);
    EXPECT_EQ(global<gpu_infos*>("pCurrent_gpu_infos"), &record_.gpu_infos[1]);
    EXPECT_STREQ(global<char[60]>("sys_bus_pci_devices_BUSID_path"),
                 "/sys/bus/pci/devices/9a01:01:00.0");
    EXPECT_STREQ(debug_path(), "/sys/kernel/debug/dri/3/qv");
    EXPECT_EQ(open_descriptors(), descriptors);
}

TEST_F(GlobalExit, OnlyLogsItsArgument)
{
    start();
    EXPECT_EQ(exit(-7), 0);
    EXPECT_EQ(take_messages(), (Texts{"gfx_global_exit enter, chip_id_idx: -7 \n", kStopMessage}));
    EXPECT_EQ(usage(1), "0");
}

TEST_F(GlobalExit, TwiceFollowsItsStepsAgain)
{
    start();
    EXPECT_EQ(exit(1), 0);
    info_directories_[1].write("enable_usage", "?");
    take_messages();
    EXPECT_EQ(exit(1), 0);
    EXPECT_EQ(take_messages(), (Texts{"gfx_global_exit enter, chip_id_idx: 1 \n", kStopMessage}));
    EXPECT_EQ(usage(1), "0");
    EXPECT_EQ(block(), nullptr);
}

TEST_F(GlobalExit, BeforeAnyInitSwitchesNothing)
{
    record_.chip_id_idx = 1;
    global<decltype(gpuinfo_select_new_chip)>("gpuinfo_select_new_chip")(&record_);
    take_messages();
    EXPECT_EQ(exit(1), 0);
    EXPECT_EQ(take_messages(), (Texts{"gfx_global_exit enter, chip_id_idx: 1 \n", kStopMessage}));
    EXPECT_EQ(usage(1), "?");
}

TEST_F(GlobalExit, AfterAnInitOfAZeroedSlotSwitchesNothing)
{
    fill_slot(2, 0, 0);
    EXPECT_EQ(init(2), -1);
    EXPECT_EQ(exit(2), 0);
    EXPECT_EQ(usage(2), "?");
}

TEST_F(GlobalExit, AfterAFailedInitSwitchesUsageOff)
{
    fill_slot(2, 0x7777, 0);
    EXPECT_EQ(init(2), -1);
    EXPECT_EQ(usage(2), "1");
    EXPECT_EQ(exit(2), 0);
    EXPECT_EQ(usage(2), "0");
}

TEST_F(GlobalExit, ClosesALibraryWithoutASizeFunction)
{
    install_stub("kernel_interface_none", kMv9Library);
    EXPECT_EQ(init(1), -1);
    EXPECT_TRUE(in_process(kMv9Library));
    EXPECT_EQ(exit(1), 0);
    EXPECT_FALSE(in_process(kMv9Library));
}

TEST_F(GlobalExit, CanBeFollowedByANewInit)
{
    start();
    EXPECT_EQ(exit(1), 0);
    EXPECT_EQ(init(1), DEVICE_ID_QV_M40);
    EXPECT_TRUE(in_process(kMv9Library));
    EXPECT_NE(block(), nullptr);
    EXPECT_EQ(usage(1), "1");
}

class PreferencesInALifecycle : public GlobalExit {
  protected:
    PreferencesInALifecycle()
    {
        std::filesystem::create_directories(home_.path() / ".local/share");
        _UTIL_GPU_PREFERENCE_NODE node{};
        std::strcpy(node.FileName, "app");
        std::strcpy(node.FullPath, "/usr/bin/app");
        global<decltype(set_gpu_preference)>("set_gpu_preference")(&node);
        file_ = home_.read(".local/share/wmt_gfx_util.ini");
        take_messages();
    }
    std::int32_t count() const
    {
        std::int32_t number = -1;
        global<decltype(get_gpu_preference)>("get_gpu_preference")(nullptr, &number);
        return number;
    }
    std::string file() const { return home_.read(".local/share/wmt_gfx_util.ini"); }

    std::string file_;
};

TEST_F(PreferencesInALifecycle, AreForgottenByInitAndStayInTheFile)
{
    ASSERT_EQ(count(), 1);
    start();
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(file(), file_);
}

TEST_F(PreferencesInALifecycle, AreForgottenByAnInitThatFails)
{
    ASSERT_EQ(count(), 1);
    fill_slot(2, 0, 0);
    EXPECT_EQ(init(2), -1);
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(file(), file_);
}

TEST_F(PreferencesInALifecycle, AreForgottenByExitAndStayInTheFile)
{
    ASSERT_EQ(count(), 1);
    EXPECT_EQ(exit(0), 0);
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(file(), file_);
}

}  // namespace
}  // namespace nimba::test
