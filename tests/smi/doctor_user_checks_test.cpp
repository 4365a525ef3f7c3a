// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/user_checks.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace nimba::smi {
namespace {

PreferenceFacts with_file()
{
    PreferenceFacts facts;
    facts.home = "/home/ann";
    facts.path = "/home/ann/.local/share/wmt_gfx_util.ini";
    facts.exists = true;
    facts.applications = 2;
    return facts;
}

Check file_of(const PreferenceFacts& facts)
{
    return preference_file_check(facts, home_check(facts));
}

TEST(PermissionsCheck, PassesForRoot)
{
    EXPECT_EQ(permissions_check({0, "root", {"root"}}),
              passed("permissions", "root, who may do everything"));
}

TEST(PermissionsCheck, TellsOthersWhatTheyDoNotSee)
{
    EXPECT_EQ(permissions_check({1000, "ann", {"video", "render"}}),
              noted("permissions",
                    "ann, in the groups video, render, is not root: what the driver shows to root "
                    "alone stays closed",
                    "type sudo in front of a command that needs it: sudo nimba-smi ps"));
    EXPECT_EQ(permissions_check({65534, "nobody", {}}).found,
              "nobody, in no further group, is not root: what the driver shows to root "
              "alone stays closed");
}

TEST(HomeCheck, IsANoteWithoutAUsableHome)
{
    PreferenceFacts facts = with_file();
    EXPECT_EQ(home_check(facts), passed("home", "/home/ann"));
    facts.path.clear();
    EXPECT_EQ(home_check(facts).found, "HOME is too long, so no preference can be kept");
    facts.home = "";
    EXPECT_EQ(home_check(facts).found, "HOME is empty, so no preference can be kept");
    facts.home.reset();
    EXPECT_EQ(home_check(facts),
              noted("home", "HOME is not set, so no preference can be kept",
                    "type: export HOME=\"$(getent passwd \"$(id -u)\" | cut -d: -f6)\""));
    EXPECT_EQ(file_of(facts).found, "because of home");
}

TEST(PreferenceFileCheck, PassesWithAndWithoutAFile)
{
    PreferenceFacts facts = with_file();
    EXPECT_EQ(file_of(facts).found, "/home/ann/.local/share/wmt_gfx_util.ini, of 2 applications");
    facts.exists = false;
    EXPECT_EQ(file_of(facts),
              passed("preference_file", "/home/ann/.local/share/wmt_gfx_util.ini, not made yet"));
}

TEST(PreferenceFileCheck, TellsHowToMakeTheDirectory)
{
    PreferenceFacts facts = with_file();
    facts.directory_error = ENOENT;
    EXPECT_EQ(file_of(facts),
              noted("preference_file",
                    "there is no directory /home/ann/.local/share, so no preference can be kept",
                    "type: mkdir -p \"/home/ann/.local/share\""));
    facts.directory_error = ENOTDIR;
    EXPECT_EQ(file_of(facts).found,
              "no preference can be kept in /home/ann/.local/share: Not a directory");
}

TEST(PreferenceFileCheck, FailsForAFileThatCannotBeReadOrWritten)
{
    PreferenceFacts facts = with_file();
    facts.write_error = EACCES;
    EXPECT_EQ(file_of(facts),
              failed("preference_file", ExitStatus::kNoPermission,
                     "cannot write /home/ann/.local/share/wmt_gfx_util.ini: Permission denied, so "
                     "no preference can be kept",
                     "make it this user's own: sudo chown \"$USER\" "
                     "\"/home/ann/.local/share/wmt_gfx_util.ini\""));
    facts.read_error = EACCES;
    EXPECT_EQ(file_of(facts).found,
              "cannot read /home/ann/.local/share/wmt_gfx_util.ini: Permission denied, so no "
              "preference can be kept");
}

TEST(PreferenceFileCheck, FailsForADirectoryInWhichNoFileCanBeMade)
{
    PreferenceFacts facts = with_file();
    facts.exists = false;
    facts.write_error = EACCES;
    EXPECT_EQ(file_of(facts).remedy,
              "make it this user's own: sudo chown \"$USER\" \"/home/ann/.local/share\"");
}

TEST(PreferenceFileCheck, NotesLinesThatAreLost)
{
    PreferenceFacts facts = with_file();
    facts.bad_lines = 3;
    facts.first_bad_line = 7;
    EXPECT_EQ(
        file_of(facts),
        noted("preference_file",
              "/home/ann/.local/share/wmt_gfx_util.ini: 3 bad lines, at first line 7, which the "
              "library ignores, and drops when it writes the file",
              "look at it, and move it out of the way if it is of no use: mv "
              "\"/home/ann/.local/share/wmt_gfx_util.ini\" "
              "\"/home/ann/.local/share/wmt_gfx_util.ini.bad\""));
}

TEST(PreferenceFileCheck, NotesWhatIsNoFile)
{
    PreferenceFacts facts = with_file();
    facts.regular = false;
    EXPECT_EQ(file_of(facts).found,
              "/home/ann/.local/share/wmt_gfx_util.ini is no regular file, so no preference can be "
              "kept");
}

}  // namespace
}  // namespace nimba::smi
