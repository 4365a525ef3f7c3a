// SPDX-License-Identifier: MIT
#include "tools/smi/memory/owners.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

std::vector<Process> of(const Owners& owners, uint32_t device)
{
    const auto processes = owners.of(device);
    return {processes.begin(), processes.end()};
}

TEST(Owners, AreAllProcessesOfADeviceEachOnce)
{
    const std::vector<DeviceContext> contexts{
        {16, 1, "a"}, {17, 2, "b"}, {16, 2, "b"}, {16, 1, "a"}};
    const Owners owners{contexts};
    EXPECT_EQ(of(owners, 16), (std::vector<Process>{{1, "a"}, {2, "b"}}));
    EXPECT_EQ(of(owners, 17), (std::vector<Process>{{2, "b"}}));
    EXPECT_TRUE(of(owners, 18).empty());
}

TEST(Owners, StayWhenTheirContextIsGoneAndGiveWayToNewOnes)
{
    Owners owners{std::vector<DeviceContext>{{16, 1, "a"}, {17, 2, "b"}}};
    owners.learn(std::vector<DeviceContext>{{17, 3, "c"}});
    EXPECT_EQ(of(owners, 16), (std::vector<Process>{{1, "a"}}));
    EXPECT_EQ(of(owners, 17), (std::vector<Process>{{3, "c"}}));
}

TEST(OwnerTexts, ListPidsAndNames)
{
    const std::vector<Process> processes{{1, "a"}, {2, ""}};
    EXPECT_EQ(pids_text(processes, "-"), "1, 2");
    EXPECT_EQ(names_text(processes, "-"), "a, -");
    EXPECT_EQ(pids_text({}, "-"), "-");
    EXPECT_EQ(names_text({}, ""), "");
}

}  // namespace
}  // namespace nimba::smi
