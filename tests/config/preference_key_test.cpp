// SPDX-License-Identifier: MIT
// Which record an operation finds: the file name in the given path against the stored file names.
#include "config/preferences_fixture.hpp"

namespace nimba::test {
namespace {

using PreferenceKey = Preferences;

const std::string k63 = std::string(63, 'n');
const std::string k64 = std::string(64, 'n');  // fills its field: no NUL before the path behind it

INSTANTIATE_TEST_SUITE_P(, PreferenceKey, testing::Values(kEntryPoints, kWorkers), operations_name);

TEST_P(PreferenceKey, IsTheFileNameInThePathBehindEitherSeparator)
{
    for (const char* full_path : {"/usr/bin/app", "C:\\bin\\app", "/usr\\app", "app"}) {
        SCOPED_TRACE(full_path);
        list = {record({.file_name = "other"}), record({.file_name = "app"})};
        set({.file_name = "app", .full_path = full_path});
        EXPECT_TRUE(same_records(
            list, {{.file_name = "other"}, {.file_name = "app", .full_path = full_path}}));
    }
}

TEST_P(PreferenceKey, IsComparedExactly)
{
    write("[App]\n[app2]\n[ap]\n[app ]\n");
    set({.file_name = "app", .full_path = "/app"});
    EXPECT_TRUE(same_records(list, {{.file_name = "App"},
                                    {.file_name = "app2"},
                                    {.file_name = "ap"},
                                    {.file_name = "app "},
                                    {.file_name = "app", .full_path = "/app"}}));
}

TEST_P(PreferenceKey, OfTheLongestFileNamesIsFound)
{
    for (const std::string& name : {k63, k64}) {
        for (const std::string directory : {"/", "C:\\", "n/"}) {
            SCOPED_TRACE(directory + name);
            const std::string full_path = directory + name;
            const Preference app{.file_name = name, .full_path = full_path, .prefer = 2};
            list = {record({.file_name = "other"})};
            set({.file_name = name, .full_path = full_path, .prefer = 1});
            set(app);
            EXPECT_TRUE(same_records(list, {{.file_name = "other"}, app}));
            remove({.full_path = full_path});
            EXPECT_TRUE(same_records(list, {{.file_name = "other"}}));
        }
    }
}

TEST_P(PreferenceKey, LongerThanAFileNameMatchesNothing)
{
    const std::string full_path = "/" + k64 + "g";
    const Preference beginning{.file_name = k64};
    const Preference running_on{.file_name = k64, .full_path = "g"};
    const Preference app{.file_name = k64, .full_path = full_path, .prefer = 5};
    list = {record(beginning), record(running_on)};
    set(app);
    EXPECT_TRUE(same_records(list, {beginning, running_on, app}));
    remove({.full_path = full_path});
    EXPECT_TRUE(same_records(list, {beginning, running_on, app}));
}

TEST_P(PreferenceKey, WithoutATextMatchesARecordWithoutAFileName)
{
    for (const char* full_path : {"", "/", "/opt/", "C:\\Games\\"}) {
        SCOPED_TRACE(full_path);
        list = {record({.file_name = "other"}), record({.full_path = "/a", .prefer = 1})};
        set({.full_path = full_path, .prefer = 2});
        EXPECT_TRUE(
            same_records(list, {{.file_name = "other"}, {.full_path = full_path, .prefer = 2}}));
        remove({.full_path = full_path});
        EXPECT_TRUE(same_records(list, {{.file_name = "other"}}));
    }
}

TEST_P(PreferenceKey, EndsWithAPathThatFillsItsField)
{
    const std::string full_path = "/" + std::string(507, 'd') + "/app";
    const Preference app{.file_name = "app", .full_path = full_path, .prefer = 0x00434241};  // ABC
    set(app);
    set(app);
    EXPECT_TRUE(same_records(list, {app}));
    EXPECT_EQ(take_messages().back(), "SetGPUPreference_config, same data, skip save log file.\n");
    remove(app);
    EXPECT_TRUE(list.empty());
}

}  // namespace
}  // namespace nimba::test
