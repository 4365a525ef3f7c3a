// SPDX-License-Identifier: MIT
// What programs see of a driver's nodes while faults are switched on.
#include "node_file_system_fixture.hpp"

#include <future>
#include <semaphore>
#include <signal.h>

#include <sys/wait.h>

#include <chrono>

namespace nimba::sim::test {
namespace {

using namespace std::chrono_literals;
using nimba::test::Descriptor;

class NodeFileSystemFaultsTest : public NodeFileSystemTest {};

TEST_F(NodeFileSystemFaultsTest, FaultOfOpeningHasItsError)
{
    fault("kind = \"open\"\npath = \"info\"\nerror = \"ENOENT\"\nfirst = 2\n");
    EXPECT_EQ(open_error("dri/0/jw/info"), ENOENT);
    EXPECT_EQ(open_error("dri/0/jw/other"), 0);
    EXPECT_EQ(open_error("dri/0/jw/info"), ENOENT);
    EXPECT_EQ(open_error("dri/0/jw/info"), 0);
    fault("kind = \"open\"\n");
    EXPECT_EQ(open_error("dri/0/jw"), EIO);
}

TEST_F(NodeFileSystemFaultsTest, FaultOfReadingComesAtOnceOrBehindSomeBytes)
{
    fault("kind = \"read\"\npath = \"info\"\n");
    fault("kind = \"read\"\npath = \"other\"\nbytes = 3\nerror = \"ENODEV\"\n");
    EXPECT_EQ(read_pieces("dri/0/jw/info", 100), Texts{"errno 5"});
    EXPECT_EQ(read_pieces("dri/0/jw/other", 100), (Texts{"oth", "errno 19"}));
}

TEST_F(NodeFileSystemFaultsTest, ShortReadsLoseNothing)
{
    fault("kind = \"short\"\npath = \"*\"\nbytes = 4\n");
    EXPECT_EQ(read_pieces("dri/0/jw/other", 100), (Texts{"othe", "r\n"}));
}

TEST_F(NodeFileSystemFaultsTest, GarbageIsTheSameForTheSameSeed)
{
    fault("kind = \"garbage\"\npath = \"*\"\nbytes = 64\nseed = 7\n");
    const std::string first = nimba::test::read_file(info());
    EXPECT_EQ(first.size(), 64U);
    EXPECT_NE(first.find('\0'), std::string::npos);
    EXPECT_NE(first.find('\n'), std::string::npos);
    EXPECT_EQ(nimba::test::read_file(info()), first);
    EXPECT_NE(nimba::test::read_file(path("dri/0/jw/other")), first);
}

TEST_F(NodeFileSystemFaultsTest, GarbageStaysBehindACommandOfTheSameOpening)
{
    fault("kind = \"garbage\"\npath = \"info\"\nbytes = 8\nseed = 7\n");
    const nimba::test::Descriptor file{::open(info().c_str(), O_RDWR)};
    std::string first(8, ' ');
    EXPECT_EQ(::pread(file.get(), first.data(), first.size(), 0), 8);
    EXPECT_EQ(::write(file.get(), "good", 4), 4);
    std::string second(100, ' ');
    EXPECT_EQ(::pread(file.get(), second.data(), second.size(), 0), 8);
    EXPECT_EQ(second.substr(0, 8), first);
}

TEST_F(NodeFileSystemFaultsTest, ListingFailsInTheMiddle)
{
    fault("kind = \"list\"\nentries = 1\nfirst = 1\n");
    EXPECT_EQ(names("dri/0/jw"), (Texts{"info", "errno 5"}));
    EXPECT_EQ(names("dri/0/jw"), (Texts{"info", "other"}));
    fault("kind = \"list\"\nerror = \"ENOMEM\"\n");
    EXPECT_EQ(names("dri/0/jw"), (Texts{"info", "errno 12"}));
}

TEST_F(NodeFileSystemFaultsTest, VanishedNodeIsInNoListing)
{
    fault("kind = \"vanish\"\npath = \"info\"\n");
    EXPECT_EQ(open_error("dri/0/jw/info"), ENOENT);
    EXPECT_EQ(names("dri/0/jw"), Texts{"other"});
    ASSERT_EQ(control_.write(".nimba-sim-faults", "clear\n"), 0);
    EXPECT_EQ(names("dri/0/jw"), (Texts{"info", "other"}));
}

TEST_F(NodeFileSystemFaultsTest, DriverThatIsGoneTakesItsNodesAndOpenFilesAlong)
{
    source_.set("dri/1/jw/info", "another\n");
    const Descriptor file{::open(info().c_str(), O_RDWR)};
    fault("kind = \"gone\"\nadapter = 0\n");
    EXPECT_EQ(open_error("dri/0/jw/info"), ENOENT);
    EXPECT_EQ(names("dri"), Texts{"1"});
    EXPECT_EQ(read_pieces(file.get(), 100), Texts{"errno 19"});
    EXPECT_EQ(::write(file.get(), "x", 1), -1);
    EXPECT_EQ(errno, ENODEV);
    EXPECT_EQ(read_pieces("dri/1/jw/info", 100), Texts{"another\n"});

    ASSERT_EQ(control_.write(".nimba-sim-faults", "clear\n"), 0);
    EXPECT_EQ(read_pieces(file.get(), 100), Texts{"errno 19"});
    EXPECT_EQ(read_pieces("dri/0/jw/info", 100), Texts{"VA=1\n"});
}

TEST_F(NodeFileSystemFaultsTest, BlockedNodeLetsOthersBeReadAndThenGivesItsText)
{
    fault("kind = \"block\"\npath = \"info\"\nms = 300\n");
    auto blocked =
        std::async(std::launch::async, [this] { return read_pieces("dri/0/jw/info", 3); });
    EXPECT_EQ(read_pieces("dri/0/jw/other", 100), Texts{"other\n"});
    EXPECT_EQ(blocked.get(), (Texts{"VA=", "1\n"}));
}

TEST_F(NodeFileSystemFaultsTest, ProcessThatWaitsForABlockedNodeCanBeKilled)
{
    fault("kind = \"block\"\npath = \"info\"\nms = 3600000\n");
    const pid_t child = ::fork();
    if (child == 0) {
        char byte = 0;
        const int fd = ::open(info().c_str(), O_RDONLY);
        ::_exit(static_cast<int>(::read(fd, &byte, 1)));
    }
    source_.wait_for_reads(1);  // it has opened the node, and reads it next
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
}

TEST_F(NodeFileSystemFaultsTest, BlockedNodesDoNotHoldUpTheEnd)
{
    fault("kind = \"block\"\npath = \"info\"\nms = 3600000\n");
    std::vector<std::future<Texts>> readers;
    readers.reserve(12);
    for (int i = 0; i < 12; ++i) {
        readers.push_back(std::async(std::launch::async, [this] {
            const int fd = ::open(info().c_str(), O_RDONLY);
            return fd < 0 ? Texts{} : read_pieces(Descriptor{fd}.get(), 100);
        }));
    }
    mounted_.reset();
    for (auto& reader : readers) {
        const Texts texts = reader.get();
        EXPECT_TRUE(texts.empty() || texts.back().starts_with("errno "));
    }
}

TEST_F(NodeFileSystemFaultsTest, ReadsBeyondTwoHundredThatWaitAreNotHeldUp)
{
    fault("kind = \"block\"\npath = \"info\"\nms = 3600000\n");
    std::counting_semaphore<> done{0};
    std::vector<std::future<Texts>> readers;
    readers.reserve(203);
    for (int i = 0; i < 203; ++i) {
        readers.push_back(std::async(std::launch::async, [&] {
            Texts texts = read_pieces("dri/0/jw/info", 100);
            done.release();
            return texts;
        }));
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(done.try_acquire_for(20s));
    }
    EXPECT_EQ(read_pieces("dri/0/jw/other", 100), Texts{"other\n"});
    mounted_.reset();
    int undisturbed = 0;
    for (auto& reader : readers) {
        undisturbed += reader.get() == Texts{"VA=1\n"} ? 1 : 0;
    }
    EXPECT_EQ(undisturbed, 3);
}

TEST_F(NodeFileSystemFaultsTest, FaultNodeIsInNoListingAndTellsWhatIsSwitchedOn)
{
    fault("kind = \"read\"\npath = \"allocations/*/info\"\nadapter = 0\nevery = 2\n");
    EXPECT_EQ(names(""), Texts{"dri"});
    EXPECT_EQ(nimba::test::read_file(path(".nimba-sim-faults")),
              "[[fault]]\nkind = \"read\"\npath = \"allocations/*/info\"\nadapter = 0\n"
              "error = \"EIO\"\nbytes = 0\nevery = 2\n\n");
    EXPECT_EQ(control_.write(".nimba-sim-faults", "kind = \"gone\"\nadapter = 5\n"), ENODEV);
    EXPECT_EQ(control_.write(".nimba-sim-faults", "kind = \"odd\"\n"), EINVAL);
    EXPECT_EQ(control_.write(".nimba-sim-faults", "no TOML"), EINVAL);
}

}  // namespace
}  // namespace nimba::sim::test
