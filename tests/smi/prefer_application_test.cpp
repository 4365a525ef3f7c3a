// SPDX-License-Identifier: MIT
#include "support/temp_directory.hpp"
#include "tools/smi/prefer/application.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

namespace fs = std::filesystem;

// A program, a file that is none, and links to both the program and the directories.
class ApplicationFiles : public testing::Test {
  protected:
    ApplicationFiles()
    {
        fs::create_directories(root / "bin");
        fs::create_directories(root / "other");
        test::write_file(root / "bin/maze", "");
        fs::permissions(root / "bin/maze", fs::perms::owner_all);
        test::write_file(root / "other/maze", "");
        fs::permissions(root / "other/maze", fs::perms::owner_read);
        fs::create_directory_symlink(root / "bin", root / "link");
        fs::create_symlink(root / "bin/maze", root / "bin/puzzle");
    }

    std::string at(const char* path) const { return (root / path).string(); }

    test::TempDirectory directory;
    fs::path root = fs::canonical(directory.path());
};

TEST(ApplicationName, IsWhatStandsBehindTheLastSeparator)
{
    EXPECT_EQ(application_name("/usr/bin/maze"), "maze");
    EXPECT_EQ(application_name("maze"), "maze");
    EXPECT_EQ(application_name("C:\\games\\maze.exe"), "maze.exe");
    EXPECT_EQ(application_name("/opt/a\\b"), "b");
    EXPECT_EQ(application_name("C:\\games/maze"), "maze");
    EXPECT_EQ(application_name("/usr/bin/"), "");
    EXPECT_EQ(application_name(""), "");
}

TEST(ApplicationFault, IsNoneForWhatTheFileCarries)
{
    for (const char* const path : {"/usr/bin/maze", "maze", "/opt/a = b/[x/=maze=", "/opt/[a]/ b",
                                   "/opt/#maze", "/opt/\xc3\xa9t\xe9", "/opt/a\tb", "\\maze"}) {
        EXPECT_EQ(application_fault(path), "") << path;
    }
    EXPECT_EQ(application_fault("/opt/" + std::string(63, 'n')), "");
    EXPECT_EQ(application_fault('/' + std::string(505, 'd') + "/maze"), "");
}

TEST(ApplicationFault, NamesWhatTheFileCannotCarry)
{
    for (const char* const path : {"", "/usr/bin/", "/usr/..", ".", "games\\"}) {
        EXPECT_EQ(application_fault(path), "it names no file") << path;
    }
    for (const char* const path : {"/opt/a;b", "/opt;/maze", "/opt/a\nb", "/opt\n/maze"}) {
        EXPECT_EQ(application_fault(path),
                  "the preference file cannot carry a path with \";\" or a newline")
            << path;
    }
    EXPECT_EQ(application_fault("/opt/maze]"),
              "the preference file cannot carry a file name with \"]\"");
    for (const char* const path : {" maze", "/opt/maze ", "/opt/maze\t", "/opt/maze\r"}) {
        EXPECT_EQ(application_fault(path),
                  "the preference file cannot carry a path that begins or ends with white space")
            << path;
    }
    EXPECT_EQ(application_fault("/opt/" + std::string(64, 'n')),
              "its file name has 64 bytes, and the preference file carries 63");
    const std::string long_path = '/' + std::string(507, 'd') + "/a/b";
    EXPECT_EQ(application_fault(long_path),
              "its path " + long_path + " has 512 bytes, and the preference file carries 511");
}

TEST_F(ApplicationFiles, NameIsLookedForInThePath)
{
    EXPECT_EQ(application_path("maze", "/nowhere", at("other") + ":" + at("bin")), at("bin/maze"));
    EXPECT_EQ(application_path("maze", "/nowhere", at("link") + "::relative"), at("link/maze"));
    EXPECT_EQ(application_path("puzzle", "/nowhere", at("bin")), at("bin/puzzle"));
    EXPECT_EQ(application_path("maze", "/nowhere", at("other")), "maze");
    EXPECT_EQ(application_path("maze", at("bin"), ""), "maze");
    EXPECT_EQ(application_path("bin", "/nowhere", root.string()), "bin");
}

TEST_F(ApplicationFiles, PathIsTakenFromTheDirectoryAndKeepsItsOwnName)
{
    EXPECT_EQ(application_path("./maze", at("bin"), ""), at("bin/maze"));
    EXPECT_EQ(application_path("../bin/puzzle", at("other"), ""), at("bin/puzzle"));
    EXPECT_EQ(application_path("link/puzzle", root.string(), ""), at("bin/puzzle"));
    EXPECT_EQ(application_path("new/game", root.string(), ""), at("new/game"));
    EXPECT_EQ(application_path("/a/../maze", at("bin"), ""), "/a/../maze");
    EXPECT_EQ(application_path("bin/", root.string(), ""), at("bin/"));
}

TEST_F(ApplicationFiles, AreExecutableOrNot)
{
    EXPECT_TRUE(is_executable(at("bin/maze")));
    EXPECT_TRUE(is_executable(at("bin/puzzle")));
    EXPECT_FALSE(is_executable(at("other/maze")));
    EXPECT_FALSE(is_executable(at("bin")));
    EXPECT_FALSE(is_executable(at("bin/none")));
}

}  // namespace
}  // namespace nimba::smi
