// SPDX-License-Identifier: MIT
#include "config/preferences_fixture.hpp"

#include <cstring>
#include <filesystem>

namespace nimba::test {
namespace {

constexpr const char* kHeader = "; wmt_gfx_util.ini\n\n";
constexpr const char* kRule = "-------------------------\n";
constexpr const char* kSameData = "SetGPUPreference_config, same data, skip save log file.\n";
constexpr const char* kThreeSections =
    "[a]\nFullPath = /a\nGpuPrefer = 1\n[b]\nFullPath = /b\nGpuPrefer = 2\n"
    "[c]\nFullPath = /c\nGpuPrefer = 3\n";

const std::vector<Preference> kThree = {{.file_name = "a", .full_path = "/a", .prefer = 1},
                                        {.file_name = "b", .full_path = "/b", .prefer = 2},
                                        {.file_name = "c", .full_path = "/c", .prefer = 3}};

std::string section(const std::string& file_name, const std::string& full_path, int prefer)
{
    return "[" + file_name + "]\nFullPath = " + full_path +
           "\nPreferGpuName = \nPreferGpuBusID = 0000:00:00.0\nGpuPrefer = " +
           std::to_string(prefer) + "\n\n\n";
}

INSTANTIATE_TEST_SUITE_P(, Preferences, testing::Values(kEntryPoints, kWorkers), operations_name);

TEST_P(Preferences, FirstSetLoadsTheFileThenAddsTheRecordAndRewritesTheFile)
{
    write("[a]\n");
    EXPECT_EQ(set({.file_name = "b", .full_path = "/opt/b", .prefer = 2}), 0);
    EXPECT_TRUE(same_records(
        list, {{.file_name = "a"}, {.file_name = "b", .full_path = "/opt/b", .prefer = 2}}));
    EXPECT_EQ(file(), kHeader + section("a", "", 0) + section("b", "/opt/b", 2));
    EXPECT_EQ(config_path, path);
    EXPECT_EQ(take_messages(),
              (Texts{"parseINI " + path + "\n", "Load from config: a: , , 0000:00:00.0\n", kRule,
                     "Save to config: a: , , 0000:00:00.0\n",
                     "Save to config: b: /opt/b, , 0000:00:00.0\n", "\n"}));
}

TEST_P(Preferences, SetWithoutAFileMakesIt)
{
    EXPECT_EQ(set({.file_name = "app", .full_path = "/usr/bin/app"}), 0);
    EXPECT_EQ(file(), kHeader + section("app", "/usr/bin/app", 0));
    EXPECT_EQ(take_messages(),
              (Texts{"parseINI fail to open " + path + "\n", kRule,
                     "Save to config: app: /usr/bin/app, , 0000:00:00.0\n", "\n"}));
}

TEST_P(Preferences, SetReplacesTheRecordOfTheSameFile)
{
    write(kThreeSections);
    EXPECT_EQ(set({.file_name = "b", .full_path = "/opt/bin/b", .prefer = 7}), 0);
    EXPECT_TRUE(same_records(
        list, {kThree[0], {.file_name = "b", .full_path = "/opt/bin/b", .prefer = 7}, kThree[2]}));
    EXPECT_EQ(file(), kHeader + section("a", "/a", 1) + section("b", "/opt/bin/b", 7) +
                          section("c", "/c", 3));
}

TEST_P(Preferences, SetOfAnotherPreferenceLeavesOneRecord)
{
    set({.file_name = "app", .full_path = "/usr/bin/app", .prefer = 1});
    set({.file_name = "app", .full_path = "/usr/bin/app", .prefer = 2});
    EXPECT_TRUE(
        same_records(list, {{.file_name = "app", .full_path = "/usr/bin/app", .prefer = 2}}));
    EXPECT_EQ(file(), kHeader + section("app", "/usr/bin/app", 2));
}

TEST_P(Preferences, SetOfTheSameDataWritesNothing)
{
    const Preference app{.file_name = "app", .full_path = "/usr/bin/app", .prefer = 1};
    set(app);
    write("untouched");
    take_messages();
    EXPECT_EQ(set(app), 0);
    EXPECT_EQ(take_messages(), Texts{kSameData});
    EXPECT_EQ(file(), "untouched");
    EXPECT_TRUE(same_records(list, {app}));
}

TEST_P(Preferences, SetOfTheSameDataAsInTheFileWritesNothing)
{
    write(kThreeSections);
    EXPECT_EQ(set(kThree[1]), 0);
    EXPECT_EQ(file(), kThreeSections);
    EXPECT_EQ(take_messages().back(), kSameData);
}

TEST_P(Preferences, EveryByteOfTheRecordIsCompared)
{
    for (const std::size_t byte : {63U, 500U, 576U, 595U, 596U, 600U, 601U, 1115U}) {
        SCOPED_TRACE(byte);
        list.clear();
        auto node = record({.file_name = "app", .full_path = "/usr/bin/app"});
        auto& set_node = function<decltype(::set_gpu_preference)>(GetParam().set);
        set_node(&node);
        reinterpret_cast<unsigned char*>(&node)[byte] = 1;
        write("overwritten");
        EXPECT_EQ(set_node(&node), 0);
        ASSERT_EQ(list.size(), 1U);
        EXPECT_TRUE(same_record(list.front(), node));
        EXPECT_EQ(file().substr(0, 20), kHeader);
    }
}

TEST_P(Preferences, SetUnderAnotherFileNameAddsARecordEachTime)
{
    const Preference odd{.file_name = "name", .full_path = "/usr/bin/app"};
    set(odd);
    set(odd);
    EXPECT_TRUE(same_records(list, {odd, odd}));
    EXPECT_EQ(file(),
              kHeader + section("name", "/usr/bin/app", 0) + section("name", "/usr/bin/app", 0));
}

TEST_P(Preferences, SetStoresTheCallersFileNameOverAFoundRecord)
{
    write("[app]\n");
    set({.file_name = "name", .full_path = "/usr/bin/app"});
    EXPECT_TRUE(same_records(list, {{.file_name = "name", .full_path = "/usr/bin/app"}}));
}

TEST_P(Preferences, SetReplacesTheFirstOfSeveralAlone)
{
    write("[a]\nGpuPrefer = 1\n[a]\nGpuPrefer = 2\n");
    set({.file_name = "a", .full_path = "/a", .prefer = 5});
    EXPECT_TRUE(same_records(list, {{.file_name = "a", .full_path = "/a", .prefer = 5},
                                    {.file_name = "a", .prefer = 2}}));
}

TEST_P(Preferences, UnwritableFileKeepsTheRecordInMemory)
{
    write("[a]\n");
    count();
    std::filesystem::remove_all(home.path() / ".local");
    take_messages();
    EXPECT_EQ(set({.file_name = "b", .full_path = "/b"}), 0);
    EXPECT_EQ(take_messages(), (Texts{"savefile_INI: can't open " + path + " \n"}));
    EXPECT_EQ(remove({.full_path = "/a"}), 0);
    EXPECT_EQ(take_messages(), (Texts{"savefile_INI: can't open " + path + " \n"}));
    EXPECT_TRUE(same_records(list, {{.file_name = "b", .full_path = "/b"}}));
}

TEST_P(Preferences, GetWithoutABufferTellsTheNumberOfRecords)
{
    write(kThreeSections);
    for (const int32_t capacity : {0, -1, 2, 100}) {
        SCOPED_TRACE(capacity);
        int32_t records = capacity;
        EXPECT_EQ(get(nullptr, records), 0);
        EXPECT_EQ(records, 3);
    }
    EXPECT_EQ(file(), kThreeSections);
}

TEST_P(Preferences, GetCopiesUpToTheCapacityButAtLeastOne)
{
    struct Capacity {
        int32_t given;
        int32_t copied;
    };
    write(kThreeSections);
    for (const auto& [given, copied] :
         {Capacity{3, 3}, Capacity{4, 3}, Capacity{2147483647, 3}, Capacity{2, 2}, Capacity{1, 1},
          Capacity{0, 1}, Capacity{-1, 1}, Capacity{-2147483647 - 1, 1}}) {
        SCOPED_TRACE(given);
        Records buffer(4);
        std::memset(buffer.data(), 0xEE, buffer.size() * sizeof buffer.front());
        const _UTIL_GPU_PREFERENCE_NODE untouched = buffer.back();
        int32_t records = given;
        EXPECT_EQ(get(buffer.data(), records), 0);
        EXPECT_EQ(records, copied);
        for (std::size_t index = 0; index < buffer.size(); ++index) {
            SCOPED_TRACE(index);
            const bool filled = index < static_cast<std::size_t>(copied);
            EXPECT_TRUE(same_record(buffer[index], filled ? record(kThree[index]) : untouched));
        }
    }
}

TEST_P(Preferences, GetReadsTheCapacityAnewForEachRecord)
{
    write(kThreeSections);
    Records buffer(3);
    int32_t& capacity = buffer.front().GpuPrefer;  // the first record raises it
    count();
    list.front().GpuPrefer = 9;
    capacity = 1;
    EXPECT_EQ(get(buffer.data(), capacity), 0);
    EXPECT_TRUE(same_record(buffer[1], record(kThree[1])));
    EXPECT_TRUE(same_record(buffer[2], record(kThree[2])));
    EXPECT_EQ(capacity, 3);
}

TEST_P(Preferences, GetOfAnEmptyListStoresZeroAndCopiesNothing)
{
    Records buffer(1, record({.file_name = "untouched"}));
    for (const int32_t capacity : {5, 1, 0, -1}) {
        SCOPED_TRACE(capacity);
        int32_t records = capacity;
        EXPECT_EQ(get(buffer.data(), records), 0);
        EXPECT_EQ(records, 0);
        EXPECT_TRUE(same_record(buffer.front(), record({.file_name = "untouched"})));
    }
    EXPECT_EQ(count(), 0);
}

TEST_P(Preferences, GetLogsTheLoadAndThenNothing)
{
    write("[a]\n");
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(take_messages(),
              (Texts{"parseINI " + path + "\n", "Load from config: a: , , 0000:00:00.0\n"}));
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_P(Preferences, RemoveDropsTheRecordAndKeepsTheOrderOfTheOthers)
{
    write(kThreeSections);
    count();
    take_messages();
    EXPECT_EQ(remove({.file_name = "c", .full_path = "/any/directory/b", .prefer = 9}), 0);
    EXPECT_TRUE(same_records(list, {kThree[0], kThree[2]}));
    EXPECT_EQ(file(), kHeader + section("a", "/a", 1) + section("c", "/c", 3));
    EXPECT_EQ(take_messages(), (Texts{kRule, "Save to config: a: /a, , 0000:00:00.0\n",
                                      "Save to config: c: /c, , 0000:00:00.0\n", "\n"}));
}

TEST_P(Preferences, RemoveOfTheLastRecordLeavesTheHeader)
{
    set({.file_name = "app", .full_path = "/usr/bin/app"});
    EXPECT_EQ(remove({.full_path = "/usr/bin/app"}), 0);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(file(), kHeader);
}

TEST_P(Preferences, RemoveDropsTheFirstOfSeveralAlone)
{
    write("[a]\nGpuPrefer = 1\n[b]\n[a]\nGpuPrefer = 2\n");
    count();
    EXPECT_EQ(remove({.full_path = "/a"}), 0);
    EXPECT_TRUE(same_records(list, {{.file_name = "b"}, {.file_name = "a", .prefer = 2}}));
}

TEST_P(Preferences, RemoveOfAnUnknownFileRewritesTheFileAllTheSame)
{
    write(kThreeSections);
    count();
    write("overwritten");
    EXPECT_EQ(remove({.file_name = "a", .full_path = "/usr/bin/A"}), 0);
    EXPECT_TRUE(same_records(list, kThree));
    EXPECT_EQ(file(),
              kHeader + section("a", "/a", 1) + section("b", "/b", 2) + section("c", "/c", 3));
}

}  // namespace
}  // namespace nimba::test
