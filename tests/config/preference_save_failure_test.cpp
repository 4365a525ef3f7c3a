// SPDX-License-Identifier: MIT
#include "config/preference_file_fixture.hpp"
#include "support/descriptor.hpp"
#include "support/file_size_limit.hpp"
#include "support/ordinary_user.hpp"

#include <sys/stat.h>

#include <filesystem>
#include <iterator>

namespace nimba::test {
namespace {

constexpr std::size_t kRecords = 200;  // more text than a stream keeps before it writes

// What is left of a file that may grow to 100 bytes.
constexpr const char* kFirst100Bytes =
    "; wmt_gfx_util.ini\n\n[a]\nFullPath = /opt/a\nPreferGpuName = \n"
    "PreferGpuBusID = 0000:00:00.0\nGpuPrefer =";

class PreferenceSaveFailure : public PreferenceFile {
  protected:
    PreferenceSaveFailure()
    {
        interface_config_list.assign(kRecords, record({.file_name = "a", .full_path = "/opt/a"}));
    }

    // The failure shows at the end: every other message comes as ever.
    void expect_messages_of_a_failed_write() const
    {
        Texts expected(kRecords, "Save to config: a: /opt/a, , 0000:00:00.0\n");
        expected.insert(expected.begin(), "-------------------------\n");
        expected.emplace_back("\n");
        expected.push_back("savefile_INI: can't write " + path + " \n");
        EXPECT_EQ(take_messages(), expected);
    }

    std::ptrdiff_t files() const
    {
        return std::distance(std::filesystem::directory_iterator{directory.path()}, {});
    }
};

const FileSizeLimit* limit_to_lift = nullptr;

int keep_message_and_lift_limit_behind_most_records(const char* text, ...)
{
    keep_message(text);
    if (kept_messages.size() == 150) {
        limit_to_lift->lift();
    }
    return 0;
}

// `length` bytes of which no two places look alike.
std::string numbered_lines(std::size_t length)
{
    std::string text;
    while (text.size() < length) {
        text.append("; line ").append(std::to_string(text.size())).append("\n");
    }
    text.resize(length);
    return text;
}

TEST_F(PreferenceSaveFailure, FileThatCannotBeOpenedIsLogged)
{
    const std::string missing = (directory.path() / "missing/wmt_gfx_util.ini").string();
    const std::string is_directory = directory.path().string();
    for (const std::string& unopenable : {missing, is_directory, std::string{}}) {
        SCOPED_TRACE(unopenable);
        interface_config_list = {record({.file_name = "a"})};
        savefile_INI(unopenable.c_str());
        EXPECT_EQ(take_messages(), (Texts{"savefile_INI: can't open " + unopenable + " \n"}));
        EXPECT_TRUE(same_records(interface_config_list, {{.file_name = "a"}}));
    }
    EXPECT_FALSE(std::filesystem::exists(directory.path() / "missing"));
}

TEST_F(PreferenceSaveFailure, FileWithoutPermissionToWriteIsLoggedAndLeftAlone)
{
    interface_config_list = {record({.file_name = "a"})};
    write_file(path, "[old]\n");
    ASSERT_EQ(::chmod(path.c_str(), 0400), 0);
    const auto before = open_descriptors();
    {
        const OrdinaryUser user{directory.path()};
        savefile_INI(path.c_str());
    }
    EXPECT_EQ(take_messages(), (Texts{"savefile_INI: can't open " + path + " \n"}));
    EXPECT_TRUE(same_records(interface_config_list, {{.file_name = "a"}}));
    EXPECT_EQ(read_file(path), "[old]\n");
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms{0400});
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(files(), 1);
}

TEST_F(PreferenceSaveFailure, FileThatCannotBeWrittenToTheEndGetsItsTextBack)
{
    const std::string previous = "[old]\nGpuPrefer = 1\n";
    // At the first limit the write fails inside a record, at the second right behind the header.
    for (const rlim_t limit : {100U, 20U}) {
        SCOPED_TRACE(limit);
        write_file(path, previous);
        ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
        {
            const FileSizeLimit full{limit};
            savefile_INI(path.c_str());
        }
        EXPECT_EQ(read_file(path), previous);
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms{0600});
        EXPECT_EQ(interface_config_list.size(), kRecords);
        expect_messages_of_a_failed_write();
        EXPECT_EQ(files(), 1);
    }
}

// Room that comes back in the middle lets the last write, and the close, succeed.
TEST_F(PreferenceSaveFailure, WriteThatFailsInTheMiddleBringsAnyTextOfUpTo16MebibytesBack)
{
    for (const std::size_t length : {0U, 20U, 4097U, 70000U, 16U << 20}) {
        SCOPED_TRACE(length);
        const std::string previous = numbered_lines(length);
        write_file(path, previous);
        {
            const FileSizeLimit full{100};
            limit_to_lift = &full;
            pServerPrintCallback = keep_message_and_lift_limit_behind_most_records;
            savefile_INI(path.c_str());
        }
        EXPECT_TRUE(read_file(path) == previous);  // too long to be shown
        expect_messages_of_a_failed_write();
    }
}

TEST_F(PreferenceSaveFailure, FileOfMoreThan16MebibytesIsLeftCut)
{
    write_file(path, "[old]\n");
    std::filesystem::resize_file(path, (16U << 20) + 1);
    {
        const FileSizeLimit full{100};
        savefile_INI(path.c_str());
    }
    EXPECT_EQ(read_file(path), kFirst100Bytes);
    expect_messages_of_a_failed_write();
}

TEST_F(PreferenceSaveFailure, FileWithoutPermissionToReadIsLeftCut)
{
    write_file(path, "[old]\n");
    ASSERT_EQ(::chmod(path.c_str(), 0200), 0);
    {
        const OrdinaryUser user{directory.path()};
        const FileSizeLimit full{100};
        savefile_INI(path.c_str());
    }
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    EXPECT_EQ(read_file(path), kFirst100Bytes);
    expect_messages_of_a_failed_write();
}

TEST_F(PreferenceSaveFailure, NewFileThatCannotBeWrittenToTheEndIsLogged)
{
    {
        const FileSizeLimit full{100};
        savefile_INI(path.c_str());
    }
    expect_messages_of_a_failed_write();
    // There was no text before, so there is none now.
    EXPECT_TRUE(!std::filesystem::exists(path) || read_file(path).empty());
}

TEST_F(PreferenceSaveFailure, FullDeviceIsLogged)
{
    interface_config_list.clear();
    savefile_INI("/dev/full");
    EXPECT_EQ(take_messages(), (Texts{"-------------------------\n", "\n",
                                      "savefile_INI: can't write /dev/full \n"}));
}

TEST_F(PreferenceSaveFailure, LeavesNoDescriptorOpen)
{
    const auto before = open_descriptors();
    savefile_INI(path.c_str());
    savefile_INI((directory.path() / "missing/file.ini").c_str());
    {
        const FileSizeLimit full{100};
        savefile_INI(path.c_str());
    }
    EXPECT_EQ(open_descriptors(), before);
}

}  // namespace
}  // namespace nimba::test
