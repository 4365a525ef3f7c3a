// SPDX-License-Identifier: MIT
// The settings before an adapter is current, and of one without an info directory.
#include "dvfs_fixture.hpp"

#include <filesystem>

namespace nimba::test {
namespace {

class DvfsBeforeAdapter : public DvfsTest {
  protected:
    DvfsBeforeAdapter()
    {
        show_empty_nodes();
        node("power_mode", "power_mode:0x3\n");
        node("vclk", "500\n");
    }
    void forget_adapter() const { library_.symbol<gpu_infos*>("pCurrent_gpu_infos") = nullptr; }
};

TEST_F(DvfsBeforeAdapter, StayWhenTheyAreReadButForTheReadOnlyClocks)
{
    forget_adapter();
    EXPECT_EQ(read(untouched_state()), untouched_state_without_clocks());
    EXPECT_EQ(flushed(), 1);
}

TEST_F(DvfsBeforeAdapter, ReachNoNodeWhenTheyAreWritten)
{
    forget_adapter();
    EXPECT_EQ(write(untouched_state()), Texts{});
    EXPECT_EQ(flushed(), 0);
    EXPECT_EQ(adapter_.info().read("power_mode"), "power_mode:0x3\n");
}

TEST_F(DvfsBeforeAdapter, AreComparedWithAfterwardsAsTheyWereRead)
{
    forget_adapter();
    DvfsRegisterState state{};
    state.power_mode = 3;
    read(state);
    function<decltype(gpuinfo_select_new_chip)>("gpuinfo_select_new_chip")(&adapter_.record());
    EXPECT_EQ(write(state), Texts{});
    EXPECT_EQ(write({}), Texts{"power_mode <- 0x0\n"});
}

TEST_F(DvfsBeforeAdapter, StayWithoutADirectory)
{
    adapter_.handles().jw_info_dir_fd = -1;
    EXPECT_EQ(read(untouched_state()), untouched_state_without_clocks());
    EXPECT_EQ(write(untouched_state()), Texts{});
    EXPECT_EQ(adapter_.info().read("power_mode"), "power_mode:0x3\n");
}

TEST_F(DvfsBeforeAdapter, StayWithADescriptorThatIsNoDirectory)
{
    const Descriptor null{::open("/dev/null", O_RDWR | O_CLOEXEC)};
    adapter_.handles().jw_info_dir_fd = null.get();
    EXPECT_EQ(read(untouched_state()), untouched_state_without_clocks());
    EXPECT_EQ(write(untouched_state()), Texts{});
}

TEST_F(DvfsBeforeAdapter, FollowTheCurrentAdapter)
{
    EXPECT_EQ(read(untouched_state()).power_mode, 3U);
    adapter_.record().chip_id_idx = 0;
    function<decltype(gpuinfo_select_new_chip)>("gpuinfo_select_new_chip")(&adapter_.record());
    EXPECT_EQ(read(untouched_state()), untouched_state_without_clocks());
}

}  // namespace
}  // namespace nimba::test
