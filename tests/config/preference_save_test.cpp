// SPDX-License-Identifier: MIT
#include "config/preference_file_fixture.hpp"
#include "support/descriptor.hpp"

#include <future>

#include <sys/stat.h>

#include <chrono>
#include <cstring>
#include <filesystem>

namespace nimba::test {
namespace {

using PreferenceSave = PreferenceFile;
using PreferenceLog = PreferenceFile;

TEST_F(PreferenceSave, EmptyListYieldsTheHeaderAlone)
{
    savefile_INI(path.c_str());
    EXPECT_EQ(read_file(path), "; wmt_gfx_util.ini\n\n");
    EXPECT_EQ(take_messages(), (Texts{"-------------------------\n", "\n"}));
}

TEST_F(PreferenceSave, RecordsAreWrittenInListOrder)
{
    interface_config_list = {record({.file_name = "game",
                                     .full_path = "/opt/app/bin/game",
                                     .prefer = 2,
                                     .gpu_name = "Nimba-K1",
                                     .bus = 3}),
                             record({.file_name = "app",
                                     .full_path = "C:\\app",
                                     .prefer = -1,
                                     .gpu_name = "QV M-30",
                                     .domain = 65535,
                                     .bus = 255,
                                     .device = 255,
                                     .function = 255}),
                             record({})};
    savefile_INI(path.c_str());
    EXPECT_EQ(read_file(path),
              "; wmt_gfx_util.ini\n"
              "\n"
              "[game]\n"
              "FullPath = /opt/app/bin/game\n"
              "PreferGpuName = Nimba-K1\n"
              "PreferGpuBusID = 0000:03:00.0\n"
              "GpuPrefer = 2\n"
              "\n"
              "\n"
              "[app]\n"
              "FullPath = C:\\app\n"
              "PreferGpuName = QV M-30\n"
              "PreferGpuBusID = 65535:255:255.255\n"
              "GpuPrefer = -1\n"
              "\n"
              "\n"
              "[]\n"
              "FullPath = \n"
              "PreferGpuName = \n"
              "PreferGpuBusID = 0000:00:00.0\n"
              "GpuPrefer = 0\n"
              "\n"
              "\n");
}

TEST_F(PreferenceSave, LogsARuleEachRecordAndAnEmptyLine)
{
    interface_config_list = {
        record({.file_name = "game", .full_path = "/opt/game", .gpu_name = "K1", .bus = 3}),
        record({.file_name = "app", .domain = 16, .bus = 32, .device = 4, .function = 1})};
    savefile_INI(path.c_str());
    EXPECT_EQ(take_messages(), (Texts{"-------------------------\n",
                                      "Save to config: game: /opt/game, K1, 0000:03:00.0\n",
                                      "Save to config: app: , , 0016:32:04.1\n", "\n"}));
}

TEST_F(PreferenceSave, PreviousTextGoesAway)
{
    write_file(path, std::string(10000, 'x'));
    savefile_INI(path.c_str());
    EXPECT_EQ(read_file(path), "; wmt_gfx_util.ini\n\n");
}

TEST_F(PreferenceSave, ListStaysAsItIs)
{
    interface_config_list = {record({.file_name = "a", .prefer = 1}), record({.file_name = "b"})};
    savefile_INI(path.c_str());
    EXPECT_TRUE(
        same_records(interface_config_list, {{.file_name = "a", .prefer = 1}, {.file_name = "b"}}));
}

TEST_F(PreferenceSave, FileIsRewrittenInItsPlace)
{
    const std::string target = directory.write("target.ini", "[old]\n");
    ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
    std::filesystem::create_symlink("target.ini", path);
    savefile_INI(path.c_str());
    EXPECT_TRUE(std::filesystem::is_symlink(path));
    EXPECT_EQ(read_file(target), "; wmt_gfx_util.ini\n\n");
    EXPECT_EQ(std::filesystem::status(target).permissions(), std::filesystem::perms{0640});
}

TEST_F(PreferenceSave, WrittenFileIsReadBackAsTheSameRecords)
{
    const std::vector<Preference> preferences = {
        {.file_name = "game",
         .full_path = "/opt/two words/game",
         .prefer = -2147483647 - 1,
         .gpu_name = "123456789012345",
         .domain = 65535,
         .bus = 255,
         .device = 31,
         .function = 7},
        // the domain of 0 ends the full name
        {.file_name = "app", .gpu_name = "1234567890123456", .bus = 1}};
    interface_config_list = {record(preferences[0]), record(preferences[1])};
    savefile_INI(path.c_str());
    interface_config_list.clear();
    EXPECT_EQ(parseINI(path.c_str()), 2);
    EXPECT_TRUE(same_records(interface_config_list, preferences));
}

TEST_F(PreferenceSave, TextsBeyondAsciiAreWrittenByteForByte)
{
    interface_config_list = {
        record({.file_name = "игра", .full_path = "/opt/größe/游戏/игра", .gpu_name = "K1™ é"}),
        record({.file_name = "\x85\xFF", .full_path = "/\xA0", .gpu_name = "\xC2"})};
    savefile_INI(path.c_str());
    EXPECT_EQ(read_file(path),
              "; wmt_gfx_util.ini\n\n"
              "[игра]\nFullPath = /opt/größe/游戏/игра\nPreferGpuName = K1™ é\n"
              "PreferGpuBusID = 0000:00:00.0\nGpuPrefer = 0\n\n\n"
              "[\x85\xFF]\nFullPath = /\xA0\nPreferGpuName = \xC2\n"
              "PreferGpuBusID = 0000:00:00.0\nGpuPrefer = 0\n\n\n");
    EXPECT_EQ(take_messages(),
              (Texts{"-------------------------\n",
                     "Save to config: игра: /opt/größe/游戏/игра, K1™ é, 0000:00:00.0\n",
                     "Save to config: \x85\xFF: /\xA0, \xC2, 0000:00:00.0\n", "\n"}));
}

TEST_F(PreferenceSave, PipeWithAReaderGetsTheTextAtOnce)
{
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const Descriptor reader{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    const auto saving = std::async(std::launch::async, [&] { savefile_INI(path.c_str()); });
    const bool at_once = saving.wait_for(std::chrono::seconds{10}) == std::future_status::ready;
    if (!at_once) {
        const Descriptor freeing{::open(path.c_str(), O_RDWR | O_CLOEXEC)};
        saving.wait();
    }
    EXPECT_TRUE(at_once);
    std::string text(64, '#');
    const ssize_t count = ::read(reader.get(), text.data(), text.size());
    ASSERT_GE(count, 0);
    EXPECT_EQ(text.substr(0, static_cast<std::size_t>(count)), "; wmt_gfx_util.ini\n\n");
    EXPECT_EQ(take_messages(), (Texts{"-------------------------\n", "\n"}));
}

// What a text field without a terminator prints is what follows it in the record.
TEST_F(PreferenceSave, FullFileNameRunsIntoThePath)
{
    const std::string name(64, 'f');
    interface_config_list = {record({.file_name = name, .full_path = "/opt/game"})};
    savefile_INI(path.c_str());
    EXPECT_EQ(read_file(path), "; wmt_gfx_util.ini\n\n[" + name +
                                   "/opt/game]\n"
                                   "FullPath = /opt/game\nPreferGpuName = \n"
                                   "PreferGpuBusID = 0000:00:00.0\nGpuPrefer = 0\n\n\n");
}

TEST_F(PreferenceSave, FullPathRunsIntoThePreference)
{
    const std::string full_path(512, 'p');
    interface_config_list = {
        record({.file_name = "g", .full_path = full_path, .prefer = 0x00434241})};
    savefile_INI(path.c_str());
    EXPECT_EQ(read_file(path), "; wmt_gfx_util.ini\n\n[g]\nFullPath = " + full_path +
                                   "ABC\nPreferGpuName = \n"
                                   "PreferGpuBusID = 0000:00:00.0\nGpuPrefer = 4407873\n\n\n");
}

TEST_F(PreferenceSave, FullGpuNameRunsIntoTheBusId)
{
    interface_config_list = {
        record({.file_name = "g", .gpu_name = "1234567890123456", .domain = 0x4241, .bus = 0x43})};
    savefile_INI(path.c_str());
    EXPECT_EQ(read_file(path),
              "; wmt_gfx_util.ini\n\n[g]\nFullPath = \nPreferGpuName = 1234567890123456ABC\n"
              "PreferGpuBusID = 16961:67:00.0\nGpuPrefer = 0\n\n\n");
}

TEST_F(PreferenceSave, TextsEndAtTheLatestWithTheRecord)
{
    _UTIL_GPU_PREFERENCE_NODE node;
    std::memset(&node, 'A', sizeof node);
    interface_config_list = {node};
    interface_config_list.shrink_to_fit();
    savefile_INI(path.c_str());
    EXPECT_EQ(read_file(path), "; wmt_gfx_util.ini\n\n[" + std::string(1116, 'A') +
                                   "]\nFullPath = " + std::string(1052, 'A') +
                                   "\nPreferGpuName = " + std::string(536, 'A') +
                                   "\nPreferGpuBusID = 16705:65:65.65\n"
                                   "GpuPrefer = 1094795585\n\n\n");
    EXPECT_EQ(take_messages(),
              (Texts{"-------------------------\n",
                     "Save to config: " + std::string(1007, 'A'),  // 1023 characters in all
                     "\n"}));
}

TEST_F(PreferenceSave, PercentSignsAreWrittenAsTheyStand)
{
    interface_config_list = {record({.file_name = "100%s", .full_path = "/a%n", .gpu_name = "%d"})};
    savefile_INI(path.c_str());
    EXPECT_EQ(read_file(path),
              "; wmt_gfx_util.ini\n\n[100%s]\nFullPath = /a%n\nPreferGpuName = %d\n"
              "PreferGpuBusID = 0000:00:00.0\nGpuPrefer = 0\n\n\n");
    EXPECT_EQ(take_messages(), (Texts{"-------------------------\n",
                                      "Save to config: 100%s: /a%n, %d, 0000:00:00.0\n", "\n"}));
}

TEST_F(PreferenceLog, IsOneLineBehindAPrefix)
{
    const auto node = record({.file_name = "game",
                              .full_path = "/opt/game",
                              .prefer = 5,
                              .gpu_name = "Nimba-K1",
                              .domain = 1,
                              .bus = 2,
                              .device = 30,
                              .function = 4});
    printConfigNodeLog("Prefix:", &node);
    printConfigNodeLog("", &node);
    EXPECT_EQ(take_messages(), (Texts{"Prefix: game: /opt/game, Nimba-K1, 0001:02:30.4\n",
                                      " game: /opt/game, Nimba-K1, 0001:02:30.4\n"}));
}

}  // namespace
}  // namespace nimba::test
