// SPDX-License-Identifier: MIT
// A preference file that is there and cannot be read keeps what is in it.
#include "config/preferences_fixture.hpp"
#include "support/no_more_descriptors.hpp"
#include "support/ordinary_user.hpp"

#include <sys/stat.h>

#include <new>
#include <string_view>

namespace nimba::test {
namespace {

// A print callback that finds no memory for the second record.
int lack_memory_for_b(const char* text, ...)
{
    if (std::string_view{text}.starts_with("Load from config: b")) {
        throw std::bad_alloc{};
    }
    return 0;
}

class UnreadPreferences : public Preferences {
  protected:
    // Sets a preference of the application "new" and expects that it stays in the list alone.
    void expect_set_to_change_nothing_in_the_file(const Texts& messages) const
    {
        EXPECT_EQ(set({.file_name = "new", .full_path = "/opt/new", .prefer = 1}), 0);
        EXPECT_EQ(take_messages(), messages);
        EXPECT_TRUE(
            same_records(list, {{.file_name = "new", .full_path = "/opt/new", .prefer = 1}}));
    }

    const std::string kept = "[a]\nGpuPrefer = 2\n";
    const std::string cannot_read = "parseINI fail to open " + path + "\n";
    const std::string cannot_save = "savefile_INI: can't open " + path + " \n";
};

INSTANTIATE_TEST_SUITE_P(, UnreadPreferences, testing::Values(kEntryPoints, kWorkers),
                         operations_name);

TEST_P(UnreadPreferences, StayUntilTheFileIsLoaded)
{
    write(kept);
    {
        const NoMoreDescriptors full;
        expect_set_to_change_nothing_in_the_file({cannot_read, cannot_save});
    }
    EXPECT_EQ(file(), kept);
    EXPECT_EQ(set({.file_name = "new", .full_path = "/opt/new", .prefer = 2}), 0);
    EXPECT_EQ(take_messages(), (Texts{cannot_save}));
    EXPECT_EQ(file(), kept);
    EXPECT_EQ(remove({.file_name = "new", .full_path = "/opt/new"}), 0);
    EXPECT_EQ(file(), kept);

    EXPECT_EQ(function<int32_t(const char*)>("_Z8parseINIPKc")(path.c_str()), 1);
    EXPECT_EQ(set({.file_name = "new", .full_path = "/opt/new", .prefer = 3}), 0);
    EXPECT_TRUE(same_records(list, {{.file_name = "a", .prefer = 2},
                                    {.file_name = "new", .full_path = "/opt/new", .prefer = 3}}));
    EXPECT_EQ(file(),
              "; wmt_gfx_util.ini\n\n"
              "[a]\nFullPath = \nPreferGpuName = \nPreferGpuBusID = 0000:00:00.0\n"
              "GpuPrefer = 2\n\n\n"
              "[new]\nFullPath = /opt/new\nPreferGpuName = \nPreferGpuBusID = 0000:00:00.0\n"
              "GpuPrefer = 3\n\n\n");
}

TEST_P(UnreadPreferences, AreInTheListOnceWhenLoadingIsTriedAgain)
{
    write("[a]\nGpuPrefer = 1\n[b]\nGpuPrefer = 2\n[c]\nGpuPrefer = 3\n");
    auto& install = function<decltype(::set_print_callback)>("set_print_callback");
    install(lack_memory_for_b);
    EXPECT_THROW(count(), std::bad_alloc);
    EXPECT_TRUE(list.empty());
    install(keep_message);
    EXPECT_EQ(count(), 3);
    EXPECT_TRUE(same_records(list, {{.file_name = "a", .prefer = 1},
                                    {.file_name = "b", .prefer = 2},
                                    {.file_name = "c", .prefer = 3}}));
}

TEST_P(UnreadPreferences, StayWhenTheUserMayOnlyWriteThem)
{
    write(kept);
    ASSERT_EQ(::chmod(path.c_str(), 0200), 0);
    {
        const OrdinaryUser user{home.path()};
        expect_set_to_change_nothing_in_the_file({cannot_read, cannot_save});
    }
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    EXPECT_EQ(file(), kept);
}

}  // namespace
}  // namespace nimba::test
