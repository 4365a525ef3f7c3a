// SPDX-License-Identifier: MIT
// Virtual-memory nodes and listings whose reading is short, fails, or is interrupted.
#include "support/descriptor.hpp"
#include "support/planned_reads.hpp"
#include "vm_node_fixture.hpp"

#include <cerrno>

ssize_t read_of_this_program(int fd, void* buffer, std::size_t size)
{
    return nimba::test::PlannedReads::read(fd, buffer, size);
}

namespace nimba::test {
namespace {

// More bytes than any buffer for them is likely to have; the block stands behind these.
std::string long_node(const std::string& gpu_va)
{
    std::string text;
    while (text.size() < 150'000) {
        text += "some other line\n";
    }
    return text + block_at(gpu_va);
}

class BrokenVmNode : public VmNodeReader {
  protected:
    // Three allocations, the second with two virtual-memory nodes far apart.
    void add_three() const
    {
        add("a", block_at("1"));
        add("b", block_at("2") + long_node("3"));
        add("c", block_at("4"));
    }

    // One pass over the three. The second one's node fails behind so many bytes.
    void read_broken(std::size_t bytes)
    {
        list_.clear();
        const ListedAs order{{"a", "b", "c"}};
        const PlannedReads reads{
            {.node = "/b/vm_info", .bytes_before_failure = bytes, .error = EIO, .failures = 1}};
        read_once();
        EXPECT_EQ(reads.failures_left(), 0);
    }
};

TEST_F(BrokenVmNode, EndsThePassAndHasNoRecord)
{
    add_three();
    for (const std::size_t bytes : {0U, 20U, 4'096U, 100'000U}) {
        SCOPED_TRACE(bytes);
        const auto before = open_descriptors();
        read_broken(bytes);
        EXPECT_EQ(open_descriptors(), before);
        EXPECT_EQ(status_, -1);
        EXPECT_EQ(output_, kNoVmNode);
        EXPECT_EQ(handles(), (Names{"a"}));
    }
}

TEST_F(BrokenVmNode, IsReadAgainInTheNextPass)
{
    add_three();
    const ListedAs order{{"a", "b", "c"}};
    const PlannedReads reads{
        {.node = "/b/vm_info", .bytes_before_failure = 9'000, .error = EIO, .failures = 1}};
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"a", "a", "b", "b", "c"}));
}

TEST_F(BrokenVmNode, ThatIsOnlyInterruptedIsReadToItsEnd)
{
    add("b", long_node("3"));
    for (const std::size_t bytes : {0U, 20U, 100'000U}) {
        SCOPED_TRACE(bytes);
        list_.clear();
        const PlannedReads reads{
            {.node = "/b/vm_info", .bytes_before_failure = bytes, .error = EINTR, .failures = 3}};
        read_once();
        EXPECT_EQ(reads.failures_left(), 0);
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(list_, (VmNodes{{"7", "app", "b", "3", "1000"}}));
    }
}

TEST_F(BrokenVmNode, ThatComesInShortReadsIsReadToItsEnd)
{
    add("b", block_at("1") + block_at("2"));
    for (const std::size_t bytes : {1U, 7U}) {
        SCOPED_TRACE(bytes);
        list_.clear();
        const PlannedReads reads{{.node = "/b/vm_info", .bytes_at_once = bytes}};
        read_once();
        EXPECT_GT(reads.reads(), 10);
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(list_, (VmNodes{{"7", "app", "b", "1", "1000"}, {"7", "app", "b", "2", "1000"}}));
    }
}

TEST_F(BrokenVmNode, MayBeADirectory)
{
    add_without_node("b");
    std::filesystem::create_directory(allocations() / "b" / "vm_info");
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoVmNode);
    EXPECT_TRUE(list_.empty());
}

TEST_F(BrokenVmNode, IsNoMessageForAListingThatBreaksOff)
{
    add("a", block_at("1"));
    const ListedAs listed{{"a", "b"}};
    {
        const BrokenListing broken{1, 1};
        read_once();
    }
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(handles(), (Names{"a"}));
}

}  // namespace
}  // namespace nimba::test
