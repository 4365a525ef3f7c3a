// SPDX-License-Identifier: MIT
// Whether the state that was last seen is the driver's.
#include "dvfs_fixture.hpp"

namespace nimba::test {
namespace {

using DvfsFlag = DvfsTest;

TEST_F(DvfsFlag, IsOneAtLoad)
{
    EXPECT_EQ(flushed(), 1);
}

TEST_F(DvfsFlag, IsZeroAfterAWriteAndOneAfterARead)
{
    write_to_nodes({});
    EXPECT_EQ(flushed(), 0);
    write_to_nodes({});
    EXPECT_EQ(flushed(), 0);
    read();
    EXPECT_EQ(flushed(), 1);
    read();
    EXPECT_EQ(flushed(), 1);
    DvfsRegisterState state{};
    state.power_mode = 1;
    write_to_nodes(state);
    EXPECT_EQ(flushed(), 0);
}

TEST_F(DvfsFlag, IsSetWhateverTheCallerMadeOfIt)
{
    auto& flag = library_.symbol<decltype(dvfs_register_state_data_flushed)>(
        "dvfs_register_state_data_flushed");
    flag = 42;
    read();
    EXPECT_EQ(flag, 1);
    flag = 42;
    write_to_nodes({});
    EXPECT_EQ(flag, 0);
}

TEST_F(DvfsFlag, IsNotChangedByTheWorkersNorByTheClocks)
{
    auto& flag = library_.symbol<decltype(dvfs_register_state_data_flushed)>(
        "dvfs_register_state_data_flushed");
    DvfsRegisterState state{};
    DvfsClockInfo clocks{};
    for (const std::int32_t value : {0, 1, 42}) {
        flag = value;
        EXPECT_EQ(function<decltype(gpuinfo_get_data_from_dvfs_register)>(
                      "gpuinfo_get_data_from_dvfs_register")(&state),
                  0);
        EXPECT_EQ(function<decltype(gpuinfo_set_data_to_dvfs_register)>(
                      "gpuinfo_set_data_to_dvfs_register")(&state),
                  0);
        EXPECT_EQ(function<decltype(get_dvfs_info)>("get_dvfs_info")(&clocks), 0);
        EXPECT_EQ(flag, value);
    }
}

TEST_F(DvfsFlag, IsKeptByTheEndOfTheLibrarysUse)
{
    write_to_nodes({});
    function<decltype(gfx_global_exit)>("gfx_global_exit")(0);
    EXPECT_EQ(flushed(), 0);
}

}  // namespace
}  // namespace nimba::test
