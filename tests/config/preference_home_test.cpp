// SPDX-License-Identifier: MIT
// Where the preference file is looked for.
#include "config/preferences_fixture.hpp"

#include <algorithm>
#include <filesystem>
#include <optional>

namespace nimba::test {
namespace {

// A directory below `base`, made here, whose path has `length` characters.
std::string directory_of_length(const std::filesystem::path& base, std::size_t length)
{
    std::string path = base.string();
    while (length - path.size() > 202) {
        path += '/' + std::string(100, 'd');
    }
    path += '/' + std::string(length - path.size() - 1, 'd');
    std::filesystem::create_directories(path);
    return path;
}

// A new empty working directory for the length of its scope.
class WorkingDirectory final {
  public:
    WorkingDirectory() { std::filesystem::current_path(directory_.path()); }
    ~WorkingDirectory() { std::filesystem::current_path(previous_); }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

    bool empty() const { return std::filesystem::is_empty(directory_.path()); }

  private:
    const std::filesystem::path previous_ = std::filesystem::current_path();
    const TempDirectory directory_;
};

class PreferenceHome : public FreshLibrary {
  protected:
    decltype(::util_init_config_files)& util_init_config_files =
        function<decltype(::util_init_config_files)>("_Z22util_init_config_filesv");
    decltype(::set_gpu_preference)& set_gpu_preference =
        function<decltype(::set_gpu_preference)>("set_gpu_preference");
    decltype(::get_gpu_preference)& get_gpu_preference =
        function<decltype(::get_gpu_preference)>("get_gpu_preference");
};

TEST_F(PreferenceHome, PathIsEmptyAtLoad)
{
    EXPECT_EQ(std::ranges::count(config_path, '\0'), 512);
}

TEST_F(PreferenceHome, FileIsSoughtBelowHome)
{
    write_file(path, "[a]\n[b]\nGpuPrefer = 1\n");
    EXPECT_EQ(util_init_config_files(), 0);
    EXPECT_EQ(config_path, path);
    EXPECT_TRUE(same_records(list, {{.file_name = "a"}, {.file_name = "b", .prefer = 1}}));
    EXPECT_EQ(take_messages(),
              (Texts{"parseINI " + path + "\n", "Load from config: a: , , 0000:00:00.0\n",
                     "Load from config: b: , , 0000:00:00.0\n"}));
}

TEST_F(PreferenceHome, HomeIsTakenAsItStands)
{
    home_variable.assign(home.path().string() + "/./");
    write_file(path, "[a]\n");
    EXPECT_EQ(util_init_config_files(), 0);
    EXPECT_EQ(config_path, home.path().string() + "/.//.local/share/wmt_gfx_util.ini");
    EXPECT_TRUE(same_records(list, {{.file_name = "a"}}));
}

TEST_F(PreferenceHome, MissingFileLoadsNothing)
{
    EXPECT_EQ(util_init_config_files(), 0);
    EXPECT_EQ(config_path, path);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(take_messages(), (Texts{"parseINI fail to open " + path + "\n"}));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(PreferenceHome, LongestPathHas511Characters)
{
    const std::string longest = directory_of_length(home.path(), 481);
    std::filesystem::create_directories(longest + "/.local/share");
    write_file(longest + "/.local/share/wmt_gfx_util.ini", "[a]\n");
    home_variable.assign(longest);
    EXPECT_EQ(util_init_config_files(), 0);
    EXPECT_EQ(config_path, longest + "/.local/share/wmt_gfx_util.ini");
    EXPECT_EQ(std::string{config_path}.size(), 511U);
    EXPECT_TRUE(same_records(list, {{.file_name = "a"}}));
}

TEST_F(PreferenceHome, UnusableHomeLogsOneLineAndLoadsNothing)
{
    const std::vector<std::optional<std::string>> unusable = {
        std::nullopt,
        "",
        directory_of_length(home.path(), 482),
        directory_of_length(home.path(), 512),
        std::string(5000, 'd'),
    };
    for (const auto& value : unusable) {
        SCOPED_TRACE(value.value_or("unset"));
        home_variable.assign(value);
        EXPECT_EQ(util_init_config_files(), 0);
        EXPECT_STREQ(config_path, "");
        EXPECT_TRUE(list.empty());
        const Texts messages = take_messages();
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_GT(messages.front().size(), 1U);
        EXPECT_EQ(messages.front().find('\n'), messages.front().size() - 1);
        EXPECT_NE(messages.front().find("HOME"), std::string::npos);
    }
}

TEST_F(PreferenceHome, OneCharacterTooManyNeitherReadsNorWritesTheFile)
{
    const std::string too_long = directory_of_length(home.path(), 482);
    std::filesystem::create_directories(too_long + "/.local/share");
    write_file(too_long + "/.local/share/wmt_gfx_util.ini", "[a]\n");
    home_variable.assign(too_long);
    const auto node = record({.file_name = "b", .full_path = "/b"});
    EXPECT_EQ(set_gpu_preference(&node), 0);
    EXPECT_TRUE(same_records(list, {{.file_name = "b", .full_path = "/b"}}));
    EXPECT_EQ(read_file(too_long + "/.local/share/wmt_gfx_util.ini"), "[a]\n");
}

TEST_F(PreferenceHome, WithoutHomePreferencesLiveInMemoryAlone)
{
    const WorkingDirectory working;
    home_variable.assign(std::nullopt);
    const auto node = record({.file_name = "b", .full_path = "/b"});
    int32_t count = -1;
    EXPECT_EQ(set_gpu_preference(&node), 0);
    EXPECT_EQ(get_gpu_preference(nullptr, &count), 0);
    EXPECT_EQ(count, 1);
    EXPECT_STREQ(config_path, "");
    const Texts messages = take_messages();
    ASSERT_EQ(messages.size(), 2U);  // the load is tried, and logged, once
    EXPECT_NE(messages[0].find("HOME"), std::string::npos);
    EXPECT_EQ(messages[1], "savefile_INI: can't open  \n");
    EXPECT_TRUE(working.empty());
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(PreferenceHome, HomeThatGoesAwayTakesThePathAlong)
{
    const WorkingDirectory working;
    write_file(path, "[a]\n");
    int32_t count = -1;
    get_gpu_preference(nullptr, &count);
    EXPECT_EQ(config_path, path);
    home_variable.assign(std::nullopt);
    EXPECT_EQ(util_init_config_files(), 0);
    EXPECT_STREQ(config_path, "");
    take_messages();

    const auto node = record({.file_name = "b", .full_path = "/b"});
    EXPECT_EQ(set_gpu_preference(&node), 0);
    EXPECT_EQ(take_messages(), (Texts{"savefile_INI: can't open  \n"}));
    EXPECT_TRUE(same_records(list, {{.file_name = "a"}, {.file_name = "b", .full_path = "/b"}}));
    EXPECT_EQ(read_file(path), "[a]\n");
    EXPECT_TRUE(working.empty());
}

TEST_F(PreferenceHome, FileIsLoadedAgainEachTimeItIsSought)
{
    write_file(path, "[a]\n[b]\n");
    EXPECT_EQ(util_init_config_files(), 0);
    EXPECT_EQ(util_init_config_files(), 0);
    EXPECT_TRUE(same_records(
        list, {{.file_name = "a"}, {.file_name = "b"}, {.file_name = "a"}, {.file_name = "b"}}));
    EXPECT_EQ(config_path, path);
}

TEST_F(PreferenceHome, FirstGetLoadsTheFileAlsoBehindALoadByHand)
{
    write_file(path, "[a]\n[b]\n");
    EXPECT_EQ(util_init_config_files(), 0);
    int32_t count = -1;
    EXPECT_EQ(get_gpu_preference(nullptr, &count), 0);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(get_gpu_preference(nullptr, &count), 0);
    EXPECT_EQ(count, 4);
}

TEST_F(PreferenceHome, HomeThatComesLaterIsNotSought)
{
    home_variable.assign(std::nullopt);
    int32_t count = -1;
    get_gpu_preference(nullptr, &count);
    home_variable.assign(home.path().string());
    write_file(path, "[a]\n");
    get_gpu_preference(nullptr, &count);
    EXPECT_EQ(count, 0);
    EXPECT_STREQ(config_path, "");
}

TEST_F(PreferenceHome, MissingDirectoryIsNotMade)
{
    std::filesystem::remove_all(home.path() / ".local");
    const auto node = record({.file_name = "b", .full_path = "/b"});
    EXPECT_EQ(set_gpu_preference(&node), 0);
    EXPECT_EQ(take_messages(), (Texts{"parseINI fail to open " + path + "\n",
                                      "savefile_INI: can't open " + path + " \n"}));
    EXPECT_TRUE(std::filesystem::is_empty(home.path()));
    EXPECT_TRUE(same_records(list, {{.file_name = "b", .full_path = "/b"}}));
}

}  // namespace
}  // namespace nimba::test
