// SPDX-License-Identifier: MIT
// A program that a host starts while the preference file is open does not inherit it.
#include "config/preference_file_fixture.hpp"
#include "support/descriptor.hpp"
#include "support/file_size_limit.hpp"

#include <dlfcn.h>

#include <cstdio>
#include <vector>

namespace nimba::test {
namespace {

struct Watch {
    std::string path;
    std::vector<bool> closes_on_exec;  // one entry per stream on the path, as it is closed
};

Watch* watch = nullptr;

void look_at(int fd)
{
    if (watch != nullptr && descriptors_on(watch->path).contains(fd)) {
        watch->closes_on_exec.push_back(closes_on_exec(fd));
    }
}

class PreferenceDescriptor : public PreferenceFile {
  protected:
    PreferenceDescriptor()
    {
        write_file(path, "[a]\n[b]\n");
        watched.path = path;
        watch = &watched;
    }
    ~PreferenceDescriptor() override { watch = nullptr; }

    Watch watched;
};

}  // namespace

// Stands before the C library's function in this program.
extern "C" int fclose(std::FILE* stream)
{
    look_at(::fileno(stream));
    static const auto next = reinterpret_cast<int (*)(std::FILE*)>(::dlsym(RTLD_NEXT, "fclose"));
    return next(stream);
}

namespace {

TEST_F(PreferenceDescriptor, IsNotInheritedWhileTheFileIsRead)
{
    parseINI(path.c_str());
    EXPECT_EQ(watched.closes_on_exec, (std::vector<bool>{true}));
}

TEST_F(PreferenceDescriptor, IsNotInheritedWhileTheOldTextIsReadAndTheNewOneWritten)
{
    savefile_INI(path.c_str());
    EXPECT_EQ(watched.closes_on_exec, (std::vector<bool>{true, true}));
}

TEST_F(PreferenceDescriptor, IsNotInheritedWhileTheOldTextIsPutBack)
{
    interface_config_list.assign(200, record({.file_name = "a", .full_path = "/opt/a"}));
    {
        const FileSizeLimit full{100};
        savefile_INI(path.c_str());
    }
    EXPECT_EQ(watched.closes_on_exec, (std::vector<bool>{true, true, true}));
}

}  // namespace
}  // namespace nimba::test
