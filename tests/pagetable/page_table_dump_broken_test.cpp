// SPDX-License-Identifier: MIT
// Dumps whose reading is short, fails, or is interrupted, and the descriptors on them.
#include "node_pipe.hpp"
#include "page_table_dump_fixture.hpp"
#include "support/descriptor.hpp"
#include "support/planned_reads.hpp"

#include <cerrno>
#include <filesystem>
#include <stdexcept>

ssize_t read_of_this_program(int fd, void* buffer, std::size_t size)
{
    return nimba::test::PlannedReads::read(fd, buffer, size);
}

namespace nimba::test {
namespace {

constexpr const char* kTwoEntries = "0:1: entry addr:1, buffer:b\n0:2 Snoop:1 Segment:2 Addr:3\n";

class BrokenDump : public PageTableDump {
  protected:
    // A dump of more bytes than any buffer for it is likely to have, with kTwoEntries at its end.
    void write_long_dump() const
    {
        directory_.write("vm_info", std::string(150'000, '\n') + kTwoEntries);
    }

    void expect_two_entries() const
    {
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(pages(), (Lines{"0:1 addr=1 buffer=b sub=0.0"}));
        EXPECT_EQ(subs(), (Lines{"0:2 snoop=1 segment=2 addr=3 parent=0.0"}));
    }
};

TEST_F(BrokenDump, Fails)
{
    write_long_dump();
    for (const std::size_t bytes : {0U, 20U, 511U, 100'000U}) {
        SCOPED_TRACE(bytes);
        const auto before = open_descriptors();
        const PlannedReads reads{
            {.node = "/vm_info", .bytes_before_failure = bytes, .error = EIO, .failures = 1}};
        read();
        EXPECT_EQ(reads.failures_left(), 0);
        EXPECT_EQ(status_, -1);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(open_descriptors(), before);
    }
}

TEST_F(BrokenDump, FailsBehindItsLastLineAsWell)
{
    directory_.write("vm_info", kTwoEntries);
    const PlannedReads reads{{.node = "/vm_info",
                              .bytes_before_failure = std::string{kTwoEntries}.size(),
                              .error = EIO,
                              .failures = 1}};
    read();
    EXPECT_EQ(reads.failures_left(), 0);
    EXPECT_EQ(status_, -1);
}

TEST_F(BrokenDump, ThatIsOnlyInterruptedIsReadToItsEnd)
{
    write_long_dump();
    for (const std::size_t bytes : {0U, 20U, 100'000U}) {
        SCOPED_TRACE(bytes);
        device_ = {};
        const PlannedReads reads{
            {.node = "/vm_info", .bytes_before_failure = bytes, .error = EINTR, .failures = 3}};
        read();
        EXPECT_EQ(reads.failures_left(), 0);
        expect_two_entries();
    }
}

TEST_F(BrokenDump, ThatComesInShortReadsHasTheSameLines)
{
    directory_.write("vm_info", std::string(511, 'x') + kTwoEntries);
    for (const std::size_t bytes : {1U, 7U}) {
        SCOPED_TRACE(bytes);
        device_ = {};
        const PlannedReads reads{{.node = "/vm_info", .bytes_at_once = bytes}};
        read();
        EXPECT_GT(reads.reads(), 50);
        expect_two_entries();
    }
}

TEST_F(BrokenDump, MayBeADirectory)
{
    std::filesystem::create_directory(path());
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "");
}

using DumpDescriptor = PageTableDump;

TEST_F(DumpDescriptor, IsClosedWhateverTheDumpHolds)
{
    const auto before = open_descriptors();
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
    read(kTwoEntries);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_THROW(read("0:x: entry\n"), std::invalid_argument);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_THROW(read("0:2147483648 Snoop:1\n"), std::out_of_range);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(DumpDescriptor, IsNotInherited)
{
    EXPECT_EQ(closing_on_exec_in(path(), kTwoEntries,
                                 [&] { status_ = get_pagetable_info(&device_, path().c_str()); }),
              (std::vector<bool>{true}));
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(pages(), (Lines{"0:1 addr=1 buffer=b sub=0.0"}));
}

}  // namespace
}  // namespace nimba::test
