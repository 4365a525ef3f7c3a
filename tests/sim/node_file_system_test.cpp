// SPDX-License-Identifier: MIT
// A driver's nodes as files: what programs see of them, and what is left when they go away.
#include "node_file_system_fixture.hpp"

#include <future>

#include <sys/stat.h>

#include <cstdio>
#include <filesystem>

namespace nimba::sim::test {
namespace {

using nimba::test::Descriptor;

TEST_F(NodeFileSystemTest, TextIsReadInPiecesOfAnySize)
{
    EXPECT_EQ(read_pieces("dri/0/jw/info", 4096), Texts{"VA=1\n"});
    EXPECT_EQ(read_pieces("dri/0/jw/info", 2), (Texts{"VA", "=1", "\n"}));
}

TEST_F(NodeFileSystemTest, TextOfAnyLengthIsReadToItsEnd)
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

TEST_F(NodeFileSystemTest, ReadsAtOffsetsGiveThatPart)
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

TEST_F(NodeFileSystemTest, OneOpeningSeesOneTextAndTheNextOneTheNew)
{
    const Descriptor file{::open(info().c_str(), O_RDONLY)};
    source_.set("dri/0/jw/info", "VA=0 and more\n");
    EXPECT_EQ(read_pieces(file.get(), 4), (Texts{"VA=1", "\n"}));
    EXPECT_EQ(read_pieces("dri/0/jw/info", 100), Texts{"VA=0 and more\n"});
}

TEST_F(NodeFileSystemTest, NodesComeAndGoAtOnce)
{
    EXPECT_EQ(open_error("dri/0/jw/new"), ENOENT);
    source_.set("dri/0/jw/new", "new");
    EXPECT_EQ(read_pieces("dri/0/jw/new", 100), Texts{"new"});
    source_.remove("dri/0/jw/new");
    EXPECT_EQ(open_error("dri/0/jw/new"), ENOENT);
    source_.set("dri/0/jw/new/inside", "now a directory");
    EXPECT_EQ(names("dri/0/jw/new"), Texts{"inside"});
}

TEST_F(NodeFileSystemTest, NodeThatIsGoneIsNotThereForWhoHasJustSeenIt)
{
    struct stat status {};
    EXPECT_EQ(::stat(info().c_str(), &status), 0);
    source_.remove("dri/0/jw/info");
    EXPECT_EQ(::stat(info().c_str(), &status), -1);
    EXPECT_EQ(errno, ENOENT);
    source_.remove("dri/0/jw/other");
    EXPECT_EQ(::stat(path("dri/0").c_str(), &status), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(NodeFileSystemTest, OpeningAsksTheDriverOnceForEachNameOfThePath)
{
    EXPECT_EQ(open_error("dri/0/jw/info"), 0);
    const int before = source_.look_ups();
    EXPECT_EQ(open_error("dri/0/jw/info"), 0);
    EXPECT_EQ(source_.look_ups() - before, 4);
}

TEST_F(NodeFileSystemTest, OpenNodeThatIsGoneKeepsItsTextAndAttributes)
{
    const Descriptor file{::open(info().c_str(), O_RDONLY)};
    source_.remove("dri/0/jw/info");
    struct stat status {};
    EXPECT_EQ(::fstat(file.get(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0644));
    EXPECT_EQ(read_pieces(file.get(), 100), Texts{"VA=1\n"});
}

TEST_F(NodeFileSystemTest, EachWriteIsOneCommand)
{
    const Descriptor file{::open(info().c_str(), O_WRONLY | O_TRUNC)};
    EXPECT_EQ(::write(file.get(), "one", 3), 3);
    EXPECT_EQ(::write(file.get(), "two\n", 4), 4);
    EXPECT_EQ(source_.commands(), (Texts{"dri/0/jw/info<one", "dri/0/jw/info<two\n"}));
}

TEST_F(NodeFileSystemTest, OneOpeningSeesWhatItsOwnAcceptedCommandHasChanged)
{
    const Descriptor file{::open(info().c_str(), O_RDWR)};
    const Descriptor other{::open(info().c_str(), O_RDWR)};
    const auto text = [](const Descriptor& opened) {
        std::string part(100, '\0');
        const ssize_t length = ::pread(opened.get(), part.data(), part.size(), 0);
        return part.substr(0, static_cast<std::size_t>(length));
    };
    EXPECT_EQ(text(file), "VA=1\n");
    source_.set("dri/0/jw/info", "VA=0 and more\n");
    EXPECT_EQ(::write(file.get(), "bad", 3), -1);
    EXPECT_EQ(text(file), "VA=1\n");
    EXPECT_EQ(::write(file.get(), "good", 4), 4);
    EXPECT_EQ(text(file), "VA=0 and more\n");
    EXPECT_EQ(text(other), "VA=1\n");
    source_.remove("dri/0/jw/info");
    EXPECT_EQ(::write(file.get(), "last", 4), 4);
    EXPECT_EQ(text(file), "VA=0 and more\n");
}

TEST_F(NodeFileSystemTest, RejectedCommandFailsInTheWriteAndAtTheCloseOfAStream)
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

TEST_F(NodeFileSystemTest, NothingCanBeMadeMovedOrRemoved)
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

TEST_F(NodeFileSystemTest, ListingOfAHundredThousandIsWholeAndInOrder)
{
    Texts expected;
    for (int i = 0; i < 100000; ++i) {
        expected.push_back(std::to_string(100000 + i));
        source_.set("dri/0/jw/allocations/" + expected.back() + "/info", "");
    }
    EXPECT_TRUE(names("dri/0/jw/allocations") == expected);
}

TEST_F(NodeFileSystemTest, ListingIsThatOfTheOpeningUntilItIsRewound)
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

TEST_F(NodeFileSystemTest, DriverThatTakesLongHoldsUpOnlyWhoReadsThatNode)
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

TEST_F(NodeFileSystemTest, ManyReadersAtOnceAllSeeWhatTheyRead)
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

TEST_F(NodeFileSystemTest, NothingIsMountedAfterwardsThoughFilesAreOpen)
{
    const Descriptor file{::open(info().c_str(), O_RDONLY)};
    mounted_.reset();
    EXPECT_TRUE(std::filesystem::is_empty(directory_.path()));
    EXPECT_EQ(read_pieces(file.get(), 100), Texts{"errno " + std::to_string(ENOTCONN)});
    EXPECT_NO_THROW(mounted_.emplace(control_, faults_, directory_.path()));
    EXPECT_EQ(read_pieces("dri/0/jw/info", 100), Texts{"VA=1\n"});
}

}  // namespace
}  // namespace nimba::sim::test
