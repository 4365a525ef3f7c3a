// SPDX-License-Identifier: MIT
#include "tools/smi/worker/complaints.hpp"

#include "tools/smi/text/output.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(Complaints, EndWithTheLastLine)
{
    const tools::Descriptor memory = make_complaint_memory();
    ASSERT_TRUE(memory);
    EXPECT_EQ(last_line_in(memory.get()), "");
    write_all(memory.get(), "first\nsecond");
    EXPECT_EQ(last_line_in(memory.get()), "second");
    write_all(memory.get(), " half\n\n");
    EXPECT_EQ(last_line_in(memory.get()), "second half");
}

TEST(Complaints, AreForgottenAndGoOn)
{
    const tools::Descriptor memory = make_complaint_memory();
    write_all(memory.get(), "old\n");
    forget_complaints(memory.get());
    EXPECT_EQ(last_line_in(memory.get()), "");
    write_all(memory.get(), "new\n");
    EXPECT_EQ(last_line_in(memory.get()), "new");
}

TEST(Complaints, OfALongLineShowItsEnd)
{
    const tools::Descriptor memory = make_complaint_memory();
    write_all(memory.get(), std::string(1000, 'a') + "end\n");
    EXPECT_EQ(last_line_in(memory.get()), std::string(296, 'a') + "end");
}

}  // namespace
}  // namespace nimba::smi
