// SPDX-License-Identifier: MIT
// A driver's nodes as files: what programs see of them, and what is left when they go away.
#include "driver/debug_fs.hpp"

#include "driver/fault_control.hpp"
#include "map_source.hpp"
#include "support/descriptor.hpp"
#include "support/temp_directory.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <future>
#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

using namespace std::chrono_literals;
using nimba::test::Descriptor;

class DebugFsTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        source_.set("dri/0/jw/info", "VA=1\n");
        source_.set("dri/0/jw/other", "other\n");
        try {
            mounted_.emplace(control_, faults_, directory_.path());
        } catch (const MountError& error) {
            GTEST_SKIP() << "no FUSE file system can be mounted here: " << error.what();
        }
    }

    std::string path(const std::string& node) const { return (directory_.path() / node).string(); }

    std::string info() const { return path("dri/0/jw/info"); }

    // Reads in pieces of `size` bytes; returns the pieces, the last of them "errno N" if it failed.
    static std::vector<std::string> read_pieces(int fd, std::size_t size)
    {
        std::vector<std::string> pieces;
        std::string piece(size, '\0');
        ssize_t length = 0;
        while ((length = ::read(fd, piece.data(), size)) > 0) {
            pieces.push_back(piece.substr(0, static_cast<std::size_t>(length)));
        }
        if (length < 0) {
            pieces.push_back("errno " + std::to_string(errno));
        }
        return pieces;
    }

    std::vector<std::string> read_pieces(const std::string& node, std::size_t size) const
    {
        return read_pieces(Descriptor{::open(path(node).c_str(), O_RDONLY)}.get(), size);
    }

    // 0 or the error with which the node opens.
    int open_error(const std::string& node) const
    {
        const int fd = ::open(path(node).c_str(), O_RDONLY);
        if (fd < 0) {
            return errno;
        }
        ::close(fd);
        return 0;
    }

    // The names in listing order without the dots; the last is "errno N" if listing failed.
    std::vector<std::string> names(const std::string& directory) const
    {
        std::vector<std::string> names;
        DIR* stream = ::opendir(path(directory).c_str());
        if (stream == nullptr) {
            return {"errno " + std::to_string(errno)};
        }
        errno = 0;
        while (const dirent* entry = ::readdir(stream)) {
            if (entry->d_name[0] != '.') {
                names.emplace_back(entry->d_name);
            }
            errno = 0;
        }
        if (errno != 0) {
            names.push_back("errno " + std::to_string(errno));
        }
        ::closedir(stream);
        return names;
    }

    void fault(const std::string& text) { ASSERT_EQ(control_.write(".nimba-sim-faults", text), 0); }

    using Texts = std::vector<std::string>;

    nimba::test::TempDirectory directory_;
    MapSource source_;
    FaultPlan faults_;
    FaultControl control_{source_, faults_};
    std::optional<DebugFs> mounted_;
};

TEST_F(DebugFsTest, TextIsReadInPiecesOfAnySize)
{
    EXPECT_EQ(read_pieces("dri/0/jw/info", 4096), Texts{"VA=1\n"});
    EXPECT_EQ(read_pieces("dri/0/jw/info", 2), (Texts{"VA", "=1", "\n"}));
}

TEST_F(DebugFsTest, TextOfAnyLengthIsReadToItsEnd)
{
    std::string text;
    for (int i = 0; i < 300000; ++i) {
        text += "line " + std::to_string(i) + "\n";
    }
    source_.set("dri/0/jw/large", text);
    EXPECT_TRUE(nimba::test::read_file(path("dri/0/jw/large")) == text);
    source_.set("dri/0/jw/empty", "");
    EXPECT_EQ(read_pieces("dri/0/jw/empty", 10), Texts{});
}

TEST_F(DebugFsTest, ReadsAtOffsetsGiveThatPart)
{
    const Descriptor file{::open(info().c_str(), O_RDONLY)};
    std::string part(3, '\0');
    EXPECT_EQ(::pread(file.get(), part.data(), 3, 3), 2);
    EXPECT_EQ(part.substr(0, 2), "1\n");
    EXPECT_EQ(::pread(file.get(), part.data(), 3, 5), 0);
    EXPECT_EQ(::pread(file.get(), part.data(), 3, 100), 0);
    EXPECT_EQ(::pread(file.get(), part.data(), 3, 0), 3);
    EXPECT_EQ(part, "VA=");
}

TEST_F(DebugFsTest, OneOpeningSeesOneTextAndTheNextOneTheNew)
{
    const Descriptor file{::open(info().c_str(), O_RDONLY)};
    source_.set("dri/0/jw/info", "VA=0 and more\n");
    EXPECT_EQ(read_pieces(file.get(), 4), (Texts{"VA=1", "\n"}));
    EXPECT_EQ(read_pieces("dri/0/jw/info", 100), Texts{"VA=0 and more\n"});
}

TEST_F(DebugFsTest, NodesComeAndGoAtOnce)
{
    EXPECT_EQ(open_error("dri/0/jw/new"), ENOENT);
    source_.set("dri/0/jw/new", "new");
    EXPECT_EQ(read_pieces("dri/0/jw/new", 100), Texts{"new"});
    source_.remove("dri/0/jw/new");
    EXPECT_EQ(open_error("dri/0/jw/new"), ENOENT);
    source_.set("dri/0/jw/new/inside", "now a directory");
    EXPECT_EQ(names("dri/0/jw/new"), Texts{"inside"});
}

TEST_F(DebugFsTest, OpenNodeThatIsGoneKeepsItsTextAndAttributes)
{
    const Descriptor file{::open(info().c_str(), O_RDONLY)};
    source_.remove("dri/0/jw/info");
    struct stat status {};
    EXPECT_EQ(::fstat(file.get(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0644));
    EXPECT_EQ(read_pieces(file.get(), 100), Texts{"VA=1\n"});
}

TEST_F(DebugFsTest, EachWriteIsOneCommand)
{
    const Descriptor file{::open(info().c_str(), O_WRONLY | O_TRUNC)};
    EXPECT_EQ(::write(file.get(), "one", 3), 3);
    EXPECT_EQ(::write(file.get(), "two\n", 4), 4);
    EXPECT_EQ(source_.commands(), (Texts{"dri/0/jw/info<one", "dri/0/jw/info<two\n"}));
}

TEST_F(DebugFsTest, RejectedCommandFailsInTheWriteAndAtTheCloseOfAStream)
{
    const Descriptor file{::open(info().c_str(), O_WRONLY)};
    EXPECT_EQ(::write(file.get(), "bad", 3), -1);
    EXPECT_EQ(errno, EINVAL);

    std::FILE* stream = std::fopen(info().c_str(), "w");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(std::fputs("bad", stream), 1);
    EXPECT_EQ(std::fclose(stream), EOF);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(DebugFsTest, NothingCanBeMadeMovedOrRemoved)
{
    EXPECT_EQ(::mkdir(path("dri/x").c_str(), 0755), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(::open(path("dri/x").c_str(), O_WRONLY | O_CREAT, 0644), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(::unlink(info().c_str()), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(::rename(info().c_str(), path("dri/x").c_str()), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(::chmod(info().c_str(), 0), -1);
    EXPECT_EQ(errno, EPERM);
}

TEST_F(DebugFsTest, ListingOfAHundredThousandIsWholeAndInOrder)
{
    Texts expected;
    for (int i = 0; i < 100000; ++i) {
        expected.push_back(std::to_string(100000 + i));
        source_.set("dri/0/jw/allocations/" + expected.back() + "/info", "");
    }
    EXPECT_TRUE(names("dri/0/jw/allocations") == expected);
}

TEST_F(DebugFsTest, ListingIsThatOfTheOpeningUntilItIsRewound)
{
    DIR* const stream = ::opendir(path("dri/0/jw").c_str());
    ASSERT_NE(stream, nullptr);
    const auto count = [&] {
        int entries = 0;
        while (::readdir(stream) != nullptr) {
            ++entries;
        }
        return entries;
    };
    source_.set("dri/0/jw/third", "");
    EXPECT_EQ(count(), 4);  // with the dots
    ::rewinddir(stream);
    EXPECT_EQ(count(), 5);
    ::closedir(stream);
}

TEST_F(DebugFsTest, DriverThatTakesLongHoldsUpOnlyWhoReadsThatNode)
{
    source_.hold("dri/0/jw/info");
    Texts held(20);
    std::vector<std::future<Texts>> readers;
    for (std::size_t i = 0; i < held.size(); ++i) {
        readers.push_back(
            std::async(std::launch::async, [this] { return read_pieces("dri/0/jw/info", 100); }));
    }
    source_.wait_for_reads(20);
    EXPECT_EQ(read_pieces("dri/0/jw/other", 100), Texts{"other\n"});
    EXPECT_EQ(names("dri/0/jw"), (Texts{"info", "other"}));
    source_.release();
    for (auto& reader : readers) {
        EXPECT_EQ(reader.get(), Texts{"VA=1\n"});
    }
}

TEST_F(DebugFsTest, ManyReadersAtOnceAllSeeWhatTheyRead)
{
    std::vector<std::future<int>> readers;
    readers.reserve(8);
    for (int i = 0; i < 8; ++i) {
        readers.push_back(std::async(std::launch::async, [this, i] {
            int right = 0;
            for (int round = 0; round < 200; ++round) {
                const bool first = (round + i) % 2 == 0;
                const Texts texts = read_pieces(first ? "dri/0/jw/info" : "dri/0/jw/other", 100);
                right += texts == Texts{first ? "VA=1\n" : "other\n"} ? 1 : 0;
            }
            return right;
        }));
    }
    for (auto& reader : readers) {
        EXPECT_EQ(reader.get(), 200);
    }
}

TEST_F(DebugFsTest, NothingIsMountedAfterwardsThoughFilesAreOpen)
{
    const Descriptor file{::open(info().c_str(), O_RDONLY)};
    mounted_.reset();
    EXPECT_TRUE(std::filesystem::is_empty(directory_.path()));
    EXPECT_EQ(read_pieces(file.get(), 100), Texts{"errno " + std::to_string(ENOTCONN)});
    EXPECT_NO_THROW(mounted_.emplace(control_, faults_, directory_.path()));
    EXPECT_EQ(read_pieces("dri/0/jw/info", 100), Texts{"VA=1\n"});
}

TEST_F(DebugFsTest, FaultOfOpeningHasItsError)
{
    fault("kind = \"open\"\npath = \"info\"\nerror = \"ENOENT\"\nfirst = 2\n");
    EXPECT_EQ(open_error("dri/0/jw/info"), ENOENT);
    EXPECT_EQ(open_error("dri/0/jw/other"), 0);
    EXPECT_EQ(open_error("dri/0/jw/info"), ENOENT);
    EXPECT_EQ(open_error("dri/0/jw/info"), 0);
    fault("kind = \"open\"\n");
    EXPECT_EQ(open_error("dri/0/jw"), EIO);
}

TEST_F(DebugFsTest, FaultOfReadingComesAtOnceOrBehindSomeBytes)
{
    fault("kind = \"read\"\npath = \"info\"\n");
    fault("kind = \"read\"\npath = \"other\"\nbytes = 3\nerror = \"ENODEV\"\n");
    EXPECT_EQ(read_pieces("dri/0/jw/info", 100), Texts{"errno 5"});
    EXPECT_EQ(read_pieces("dri/0/jw/other", 100), (Texts{"oth", "errno 19"}));
}

TEST_F(DebugFsTest, ShortReadsLoseNothing)
{
    fault("kind = \"short\"\npath = \"*\"\nbytes = 4\n");
    EXPECT_EQ(read_pieces("dri/0/jw/other", 100), (Texts{"othe", "r\n"}));
}

TEST_F(DebugFsTest, GarbageIsTheSameForTheSameSeed)
{
    fault("kind = \"garbage\"\npath = \"*\"\nbytes = 64\nseed = 7\n");
    const std::string first = nimba::test::read_file(info());
    EXPECT_EQ(first.size(), 64U);
    EXPECT_NE(first.find('\0'), std::string::npos);
    EXPECT_NE(first.find('\n'), std::string::npos);
    EXPECT_EQ(nimba::test::read_file(info()), first);
    EXPECT_NE(nimba::test::read_file(path("dri/0/jw/other")), first);
}

TEST_F(DebugFsTest, ListingFailsInTheMiddle)
{
    fault("kind = \"list\"\nentries = 1\nfirst = 1\n");
    EXPECT_EQ(names("dri/0/jw"), (Texts{"info", "errno 5"}));
    EXPECT_EQ(names("dri/0/jw"), (Texts{"info", "other"}));
    fault("kind = \"list\"\nerror = \"ENOMEM\"\n");
    EXPECT_EQ(names("dri/0/jw"), (Texts{"info", "errno 12"}));
}

TEST_F(DebugFsTest, VanishedNodeIsInNoListing)
{
    fault("kind = \"vanish\"\npath = \"info\"\n");
    EXPECT_EQ(open_error("dri/0/jw/info"), ENOENT);
    EXPECT_EQ(names("dri/0/jw"), Texts{"other"});
    ASSERT_EQ(control_.write(".nimba-sim-faults", "clear\n"), 0);
    EXPECT_EQ(names("dri/0/jw"), (Texts{"info", "other"}));
}

TEST_F(DebugFsTest, DriverThatIsGoneTakesItsNodesAndOpenFilesAlong)
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

TEST_F(DebugFsTest, BlockedNodeLetsOthersBeReadAndThenGivesItsText)
{
    fault("kind = \"block\"\npath = \"info\"\nms = 300\n");
    auto blocked =
        std::async(std::launch::async, [this] { return read_pieces("dri/0/jw/info", 3); });
    EXPECT_EQ(read_pieces("dri/0/jw/other", 100), Texts{"other\n"});
    EXPECT_EQ(blocked.get(), (Texts{"VA=", "1\n"}));
}

TEST_F(DebugFsTest, ProcessThatWaitsForABlockedNodeCanBeKilled)
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

TEST_F(DebugFsTest, BlockedNodesDoNotHoldUpTheEnd)
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

TEST_F(DebugFsTest, FaultNodeIsInNoListingAndTellsWhatIsSwitchedOn)
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
