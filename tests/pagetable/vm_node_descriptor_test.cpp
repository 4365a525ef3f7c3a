// SPDX-License-Identifier: MIT
// A program that a host starts while a virtual-memory node is open does not inherit it.
#include "node_pipe.hpp"
#include "vm_node_fixture.hpp"

namespace nimba::test {
namespace {

using VmNodeDescriptor = VmNodeReader;

TEST_F(VmNodeDescriptor, IsNotInherited)
{
    add_without_node("a");
    EXPECT_EQ(closing_on_exec_in((allocations() / "a" / "vm_info").string(), block_at("1"),
                                 [&] { status_ = get_alloction_data_try(list_); }),
              (std::vector<bool>{true}));
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"a"}));
}

}  // namespace
}  // namespace nimba::test
