// SPDX-License-Identifier: MIT
// Nodes of allocations whose reading fails, or is interrupted, in their middle.
#include "allocation_reader_fixture.hpp"
#include "support/descriptor.hpp"
#include "support/planned_reads.hpp"

#include <cerrno>

ssize_t read_of_this_program(int fd, void* buffer, std::size_t size)
{
    return nimba::test::PlannedReads::read(fd, buffer, size);
}

namespace nimba::test {
namespace {

constexpr const char* kNoNode = "Fail to read allocation info. skip...\n";

// A node of more than 20 and of more than 8192 bytes, which tells what it is first of all.
std::string long_node(const std::string& handle)
{
    std::string text = "handle=" + handle + "\nsize=12\ntile=3\n";
    while (text.size() < 20'000) {
        text += "name=some other text\n";
    }
    return text + "width=4\n";
}

class BrokenAllocationNode : public AllocationReader {
  protected:
    // One pass over three allocations. The second one's node fails behind so many bytes.
    void read_broken(std::size_t bytes)
    {
        list_.clear();
        add_numbered(3);
        tree_.add("2", long_node("2"));
        const ListedAs order{{"1", "2", "3"}};
        const PlannedReads reads{
            {.node = "/2/info", .bytes_before_failure = bytes, .error = EIO, .failures = 1}};
        read_once();
        EXPECT_EQ(reads.failures_left(), 0);
    }
};

TEST_F(BrokenAllocationNode, EndsThePassAndHasNoRecord)
{
    for (const std::size_t bytes : {0U, 20U, 8'192U, 8'193U, 12'000U}) {
        SCOPED_TRACE(bytes);
        const auto before = open_descriptors();
        read_broken(bytes);
        EXPECT_EQ(open_descriptors(), before);
        EXPECT_EQ(status_, -1);
        EXPECT_EQ(output_, kNoNode);
        EXPECT_EQ(handles(), (Names{"1"}));
    }
}

TEST_F(BrokenAllocationNode, IsReadAgainInTheNextPass)
{
    add_numbered(3);
    tree_.add("2", long_node("2"));
    const ListedAs order{{"1", "2", "3"}};
    const PlannedReads reads{
        {.node = "/2/info", .bytes_before_failure = 9'000, .error = EIO, .failures = 1}};
    read();
    EXPECT_EQ(reads.failures_left(), 0);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, kNoNode);
    EXPECT_EQ(handles(), (Names{"1", "1", "2", "3"}));
}

TEST_F(BrokenAllocationNode, LeavesNothingToTheNodeReadNext)
{
    read_broken(8'193);
    tree_.add("3", "handle=3\n");
    list_.clear();
    {
        const ListedAs order{{"3"}};
        read_once();
    }
    EXPECT_EQ(list_, (Records{with(blank(), &Record::handle, 3)}));
}

TEST_F(BrokenAllocationNode, ThatIsOnlyInterruptedIsReadToItsEnd)
{
    Record expected = blank();
    expected.handle = 1;
    expected.size = 12;
    expected.tile = 3;
    expected.width = 4;
    tree_.add("1", long_node("1"));
    for (const std::size_t bytes : {0U, 20U, 8'192U, 12'000U}) {
        SCOPED_TRACE(bytes);
        list_.clear();
        const PlannedReads reads{
            {.node = "/1/info", .bytes_before_failure = bytes, .error = EINTR, .failures = 3}};
        read_once();
        EXPECT_EQ(reads.failures_left(), 0);
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(list_, (Records{expected}));
    }
}

}  // namespace
}  // namespace nimba::test
