// SPDX-License-Identifier: MIT
// When the preference file is loaded, and what initialisation and exit do to the list.
#include "config/preferences_fixture.hpp"

namespace nimba::test {
namespace {

constexpr const char* kTwoSections = "[a]\nGpuPrefer = 1\n[b]\nGpuPrefer = 2\n";

class PreferenceLife : public Preferences {
  protected:
    PreferenceLife() { write(kTwoSections); }

    int32_t init_list() const
    {
        return function<decltype(::initGPUPreference_config)>("initGPUPreference_config")();
    }

    int32_t uninit_list() const
    {
        return function<decltype(::uninitGPUPreference_config)>("uninitGPUPreference_config")();
    }

    // An exit and a new initialisation, both with a slot that holds no adapter.
    void exit_and_init()
    {
        function<decltype(::gfx_global_exit)>("gfx_global_exit")(0);
        function<decltype(::gfx_global_init)>("gfx_global_init")(&adapters);
    }

    find_adapter adapters{};
};

using PreferencesAtLoad = FreshLibrary;

TEST_F(PreferencesAtLoad, ListIsEmptyWhateverTheFileHolds)
{
    write_file(path, kTwoSections);
    EXPECT_TRUE(list.empty());
}

INSTANTIATE_TEST_SUITE_P(, PreferenceLife, testing::Values(kEntryPoints, kWorkers),
                         operations_name);

TEST_P(PreferenceLife, FileIsLoadedByTheFirstGetOnly)
{
    EXPECT_EQ(count(), 2);
    write("[c]\n");
    EXPECT_EQ(count(), 2);
}

TEST_P(PreferenceLife, FileIsLoadedByTheFirstSetOnly)
{
    set({.file_name = "c", .full_path = "/c"});
    EXPECT_EQ(list.size(), 3U);
    write("[d]\n");
    set({.file_name = "c", .full_path = "/c", .prefer = 1});
    EXPECT_EQ(count(), 3);
}

TEST_P(PreferenceLife, FileIsAppendedToWhatTheListHoldsBeforeTheLoad)
{
    list = {record({.file_name = "earlier"})};
    EXPECT_EQ(count(), 3);
    EXPECT_TRUE(same_records(list, {{.file_name = "earlier"},
                                    {.file_name = "a", .prefer = 1},
                                    {.file_name = "b", .prefer = 2}}));
}

TEST_P(PreferenceLife, FailedLoadIsNotTriedAgain)
{
    std::filesystem::remove(path);
    EXPECT_EQ(count(), 0);
    write(kTwoSections);
    take_messages();
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_P(PreferenceLife, RemoveBeforeTheLoadChangesNothing)
{
    EXPECT_EQ(remove({.full_path = "/a"}), 0);
    EXPECT_EQ(take_messages(), (Texts{"savefile_INI: can't open  \n"}));
    EXPECT_STREQ(config_path, "");
    EXPECT_EQ(file(), kTwoSections);
    EXPECT_EQ(count(), 2);
}

TEST_P(PreferenceLife, InitialisingTheListEmptiesItAndFreesItsStorage)
{
    count();
    take_messages();
    EXPECT_EQ(init_list(), 0);
    EXPECT_EQ(list.size(), 0U);
    EXPECT_EQ(list.capacity(), 0U);
    EXPECT_EQ(config_path, path);
    EXPECT_EQ(take_messages(), (Texts{"initGPUPreference_config.\n "}));
    EXPECT_EQ(file(), kTwoSections);
}

TEST_P(PreferenceLife, UninitialisingTheListEmptiesItAndFreesItsStorage)
{
    count();
    take_messages();
    EXPECT_EQ(uninit_list(), 0);
    EXPECT_EQ(list.size(), 0U);
    EXPECT_EQ(list.capacity(), 0U);
    EXPECT_EQ(config_path, path);
    EXPECT_EQ(take_messages(), (Texts{"uninitGPUPreference_config.\n "}));
    EXPECT_EQ(file(), kTwoSections);
}

TEST_P(PreferenceLife, InitialisingTheListBeforeTheLoadDoesNotPreventIt)
{
    init_list();
    uninit_list();
    EXPECT_EQ(count(), 2);
}

TEST_P(PreferenceLife, GlobalInitialisationEmptiesTheList)
{
    count();
    take_messages();
    EXPECT_EQ(function<decltype(::gfx_global_init)>("gfx_global_init")(&adapters), -1);
    EXPECT_EQ(list.capacity(), 0U);
    EXPECT_EQ(take_messages(),
              (Texts{"gpuinfo_select_new_chip index: 0, name:  \n", "initGPUPreference_config.\n ",
                     "invalidate chip id. \n ", "open libhwbridge module fail. \n "}));
}

TEST_P(PreferenceLife, GlobalExitEmptiesTheList)
{
    count();
    take_messages();
    EXPECT_EQ(function<decltype(::gfx_global_exit)>("gfx_global_exit")(2), 0);
    EXPECT_EQ(list.capacity(), 0U);
    EXPECT_EQ(take_messages(), (Texts{"gfx_global_exit enter, chip_id_idx: 2 \n",
                                      "uninitGPUPreference_config.\n "}));
}

TEST_P(PreferenceLife, FileIsNotReadAgainAfterExitAndInitialisation)
{
    EXPECT_EQ(count(), 2);
    exit_and_init();
    take_messages();
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(take_messages(), Texts{});
    EXPECT_EQ(file(), kTwoSections);
}

TEST_P(PreferenceLife, SetAfterExitAndInitialisationKeepsOnlyWhatWasSetSince)
{
    count();
    exit_and_init();
    set({.file_name = "c", .full_path = "/c", .prefer = 3});
    EXPECT_EQ(file(),
              "; wmt_gfx_util.ini\n\n[c]\nFullPath = /c\nPreferGpuName = \n"
              "PreferGpuBusID = 0000:00:00.0\nGpuPrefer = 3\n\n\n");
}

TEST_P(PreferenceLife, RemoveAfterExitAndInitialisationDropsEveryStoredRecord)
{
    count();
    exit_and_init();
    EXPECT_EQ(remove({.full_path = "/c"}), 0);
    EXPECT_EQ(file(), "; wmt_gfx_util.ini\n\n");
}

TEST_P(PreferenceLife, FirstGetAfterInitialisationLoadsTheFile)
{
    exit_and_init();
    EXPECT_EQ(count(), 2);
}

}  // namespace
}  // namespace nimba::test
