// SPDX-License-Identifier: MIT
// A program that a host starts while the preference file is open does not inherit it.
#include "config/preference_file_fixture.hpp"
#include "support/closed_files.hpp"
#include "support/file_size_limit.hpp"

#include <string>
#include <vector>

namespace nimba::test {
namespace {

std::string written(const std::string& path)
{
    write_file(path, "[a]\n[b]\n");
    return path;
}

class PreferenceDescriptor : public PreferenceFile {
  protected:
    ClosedFiles files{written(path)};
};

TEST_F(PreferenceDescriptor, IsNotInheritedWhileTheFileIsRead)
{
    parseINI(path.c_str());
    EXPECT_EQ(files.closes_on_exec(), (std::vector<bool>{true}));
}

TEST_F(PreferenceDescriptor, IsNotInheritedWhileTheOldTextIsReadAndTheNewOneWritten)
{
    savefile_INI(path.c_str());
    EXPECT_EQ(files.closes_on_exec(), (std::vector<bool>{true, true}));
}

TEST_F(PreferenceDescriptor, IsNotInheritedWhileTheOldTextIsPutBack)
{
    interface_config_list.assign(200, record({.file_name = "a", .full_path = "/opt/a"}));
    {
        const FileSizeLimit full{100};
        savefile_INI(path.c_str());
    }
    EXPECT_EQ(files.closes_on_exec(), (std::vector<bool>{true, true, true}));
}

}  // namespace
}  // namespace nimba::test
