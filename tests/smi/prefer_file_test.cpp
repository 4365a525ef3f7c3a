// SPDX-License-Identifier: MIT
#include "support/temp_directory.hpp"
#include "tools/smi/prefer/preference_file.hpp"
#include "tools/smi/prefer/scratch_home.hpp"

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace nimba::smi {
namespace {

namespace fs = std::filesystem;

class PreferenceFiles : public testing::Test {
  protected:
    [[nodiscard]] std::string at(const char* name) const { return (home.path() / name).string(); }

    // The problem of reading the file at `path`.
    static std::string reading_fault(const std::string& path)
    {
        std::vector<Problem> problems;
        EXPECT_EQ(read_preferences(path, problems), std::nullopt);
        return problems.size() == 1 ? problems[0].message : "none";
    }

    static std::string message(const std::optional<Problem>& problem)
    {
        return problem ? problem->message : "none";
    }

    test::TempDirectory home;
};

TEST(PreferenceFile, IsInTheHomeDirectory)
{
    const auto found = preference_file_in("/home/ann");
    const auto* const file = std::get_if<PreferenceFile>(&found);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->home, "/home/ann");
    EXPECT_EQ(file->directory, "/home/ann/.local/share");
    EXPECT_EQ(file->path, "/home/ann/.local/share/wmt_gfx_util.ini");
}

TEST(PreferenceFile, IsNoneWithoutAnAbsoluteHome)
{
    const auto fault = [](const char* home) {
        const auto found = preference_file_in(home);
        const auto* const problem = std::get_if<Problem>(&found);
        return problem == nullptr ? "none" : problem->message;
    };
    const std::string unset =
        "HOME is not set, so there is no preference file: set it to your home directory";
    EXPECT_EQ(fault(nullptr), unset);
    EXPECT_EQ(fault(""), unset);
    EXPECT_EQ(fault("ann"),
              "HOME is no absolute path (ann), so there is no preference file: set it to your home "
              "directory");
}

TEST(PreferenceFile, IsNoneWhenTheLibraryHasNoRoomForItsPath)
{
    const std::string longest = '/' + std::string(480, 'h');
    EXPECT_TRUE(std::holds_alternative<PreferenceFile>(preference_file_in(longest.c_str())));
    const auto found = preference_file_in((longest + 'h').c_str());
    ASSERT_TRUE(std::holds_alternative<Problem>(found));
    EXPECT_EQ(std::get<Problem>(found).message,
              "HOME is longer than the library can use: " + longest + 'h');
}

TEST_F(PreferenceFiles, AreReadWithEveryByte)
{
    std::vector<Problem> problems;
    const std::string text{"[a\xe9]\n\0\r\n", 8};
    EXPECT_EQ(read_preferences(home.write("file", text), problems), (FileContent{true, text}));
    EXPECT_EQ(read_preferences(home.write("empty", ""), problems), (FileContent{true, ""}));
    EXPECT_EQ(read_preferences(at("none"), problems), FileContent{});
    EXPECT_EQ(read_preferences(at("none/none"), problems), FileContent{});
    EXPECT_TRUE(problems.empty());
}

TEST_F(PreferenceFiles, ThatAreNoRegularFilesAreRefused)
{
    fs::create_directory(home.path() / "directory");
    EXPECT_EQ(reading_fault(at("directory")),
              at("directory") + " is no regular file, so it is no preference file: move it away");
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    EXPECT_EQ(reading_fault(at("pipe")),
              at("pipe") + " is no regular file, so it is no preference file: move it away");
    EXPECT_EQ(reading_fault(home.write("file", "") + "/x"),
              "cannot read " + at("file/x") + ": Not a directory");
}

TEST_F(PreferenceFiles, ThatAreTooLargeAreRefused)
{
    fs::resize_file(home.write("file", ""), 16777216);
    std::vector<Problem> problems;
    EXPECT_TRUE(read_preferences(at("file"), problems));
    fs::resize_file(at("file"), 16777217);
    EXPECT_EQ(reading_fault(at("file")),
              at("file") + " is larger than 16 MiB, so it is no preference file: move it away");
}

TEST_F(PreferenceFiles, GetADirectoryForTheUserAlone)
{
    const auto file = std::get<PreferenceFile>(preference_file_in(home.path().c_str()));
    EXPECT_TRUE(std::get<bool>(make_preference_directory(file)));
    for (const char* const directory : {".local", ".local/share"}) {
        EXPECT_EQ(fs::status(home.path() / directory).permissions(), fs::perms::owner_all);
    }
    EXPECT_FALSE(std::get<bool>(make_preference_directory(file)));
}

TEST_F(PreferenceFiles, GetNoDirectoryInAHomeThatIsNotThere)
{
    const auto file = std::get<PreferenceFile>(preference_file_in(at("none").c_str()));
    const auto made = make_preference_directory(file);
    ASSERT_TRUE(std::holds_alternative<Problem>(made));
    EXPECT_EQ(std::get<Problem>(made).status, ExitStatus::kFailed);
    EXPECT_EQ(std::get<Problem>(made).message,
              "cannot make the directory " + at("none/.local") + ": No such file or directory");
}

TEST_F(PreferenceFiles, AreReplacedWithTheirPermissionsAndThroughLinks)
{
    home.write("file", "old");
    fs::permissions(at("file"), fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("file", at("link"));
    EXPECT_EQ(message(replace_preferences(at("link"), {true, "old"}, "new")), "none");
    EXPECT_EQ(home.read("file"), "new");
    EXPECT_TRUE(fs::is_symlink(at("link")));
    EXPECT_EQ(fs::status(at("file")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(message(replace_preferences(at("first"), {}, "first")), "none");
    EXPECT_EQ(home.read("first"), "first");
}

TEST_F(PreferenceFiles, StayTheirOwners)
{
    home.write("file", "old");
    if (::chown(at("file").c_str(), 65534, 65534) != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    EXPECT_EQ(message(replace_preferences(at("file"), {true, "old"}, "new")), "none");
    struct stat status {};
    ASSERT_EQ(::stat(at("file").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 65534U);
    EXPECT_EQ(status.st_gid, 65534U);
}

TEST_F(PreferenceFiles, ThatAnotherProgramChangedAreLeftAlone)
{
    home.write("file", "theirs");
    const std::string fault = at("file") +
                              " was changed by another program at the same time, and was left so: "
                              "run the command again";
    EXPECT_EQ(message(replace_preferences(at("file"), {true, "old"}, "new")), fault);
    EXPECT_EQ(message(replace_preferences(at("file"), {}, "new")), fault);
    EXPECT_EQ(home.read("file"), "theirs");
    home.write("empty", "");
    EXPECT_NE(message(replace_preferences(at("empty"), {}, "new")), "none");
    EXPECT_NE(message(replace_preferences(at("gone"), {true, ""}, "new")), "none");
    EXPECT_FALSE(fs::exists(at("gone")));
}

TEST_F(PreferenceFiles, ThatCannotBeMadeAreTold)
{
    const auto failure = replace_preferences(at("none/file"), {}, "new");
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->status, ExitStatus::kFailed);
    EXPECT_EQ(failure->message, "cannot write " + at("none/file") + ": No such file or directory");
}

TEST(ScratchHome, HoldsACopyUntilItsEnd)
{
    fs::path path;
    {
        const ScratchHome scratch{"[maze]\n"};
        path = scratch.home();
        EXPECT_EQ(scratch.preferences(), "[maze]\n");
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
        const fs::path file = path / ".local/share/wmt_gfx_util.ini";
        EXPECT_EQ(test::read_file(file), "[maze]\n");
        test::write_file(file, "changed");
        EXPECT_EQ(scratch.preferences(), "changed");
    }
    EXPECT_FALSE(fs::exists(path));
}

}  // namespace
}  // namespace nimba::smi
