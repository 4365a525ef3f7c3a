// SPDX-License-Identifier: MIT
// The values of a virtual-memory node belong to whole keys.
#include "vm_node_fixture.hpp"

namespace nimba::test {
namespace {

using VmNodeKeys = VmNodeReader;

TEST_F(VmNodeKeys, AreNotFoundByTheirEndsAlone)
{
    add("a",
        "=====vm node info=====\npid = 1\ndevice_pi = 2\npname = 3\ndevice_pnam = 4\n"
        "va = 5\ngpu_v = 6\nize = 7\nsiz = 8\n" +
            std::string{"device_pid = 9\ndevice_pname = app\ngpu_va = b\nsize = c\n"});
    read_once();
    EXPECT_EQ(list_, (VmNodes{{"9", "app", "a", "b", "c"}}));
}

TEST_F(VmNodeKeys, AreFoundWithTheirOwnCaseAlone)
{
    add("a", "=====vm node info=====\nDevice_Pid = 1\nDEVICE_PNAME = 2\nGpu_va = 3\nSize = 4\n");
    read_once();
    EXPECT_EQ(list_, (VmNodes{{"", "", "a", "", ""}}));
}

}  // namespace
}  // namespace nimba::test
