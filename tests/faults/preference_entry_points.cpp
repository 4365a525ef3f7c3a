// SPDX-License-Identifier: MIT
// GPU preferences, in a home of this process.
#include "entry_point.hpp"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace nimba::test {
namespace {

constexpr const char* kText =
    "[viewer]\n"
    "FullPath = /usr/bin/viewer\n"
    "GpuPrefer = 1\n"
    "[maze]\n"
    "FullPath = /usr/games/maze\n"
    "GpuPrefer = 2\n";

std::string file_path()
{
    return std::string{std::getenv("HOME")} + "/.local/share/wmt_gfx_util.ini";
}

void write_file()
{
    std::filesystem::create_directories(std::filesystem::path{file_path()}.parent_path());
    std::ofstream{file_path()} << kText;
    initGPUPreference_config();
}

void write_and_load_file()
{
    write_file();
    util_init_config_files();
}

std::string file_text()
{
    std::ostringstream text;
    text << std::ifstream{file_path()}.rdbuf();
    return text.str();
}

std::string told_list()
{
    std::string told = "list";
    for (const _UTIL_GPU_PREFERENCE_NODE& node : interface_config_list) {
        told += std::string{" "} + node.FileName;
    }
    return told;
}

// The names of the file's sections.
std::string told_file()
{
    std::string told = "file";
    std::istringstream lines{file_text()};
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('[')) {
            told += " " + line.substr(1, line.size() - 2);
        }
    }
    return file_text() == kText ? "file as it was" : told;
}

template <typename Call>
Answer preferences(Attempt& attempt, Call&& call)
{
    Answer answer;
    answer.status = attempt(call);
    answer.bytes = answer.told = told_list() + "; " + told_file();
    return answer;
}

_UTIL_GPU_PREFERENCE_NODE preference_of(const char* name)
{
    _UTIL_GPU_PREFERENCE_NODE node{};
    std::strcpy(node.FileName, name);
    std::strcpy(node.FullPath, ("/opt/" + std::string{name}).c_str());
    node.GpuPrefer = 3;
    return node;
}

Answer loaded(Attempt& attempt)
{
    return preferences(attempt, [] { return util_init_config_files(); });
}

Answer parsed(Attempt& attempt)
{
    const std::string path = file_path();
    return preferences(attempt, [&] { return parseINI(path.c_str()); });
}

Answer saved(Attempt& attempt)
{
    const std::string path = file_path();
    return preferences(attempt, [&] { savefile_INI(path.c_str()); });
}

template <std::int32_t (*set)(const _UTIL_GPU_PREFERENCE_NODE*)>
Answer set_one(Attempt& attempt)
{
    const auto node = preference_of("editor");
    return preferences(attempt, [&] { return set(&node); });
}

template <std::int32_t (*remove)(const _UTIL_GPU_PREFERENCE_NODE*)>
Answer removed(Attempt& attempt)
{
    const auto node = preference_of("viewer");
    return preferences(attempt, [&] { return remove(&node); });
}

template <std::int32_t (*get)(_UTIL_GPU_PREFERENCE_NODE*, std::int32_t*)>
Answer got(Attempt& attempt)
{
    std::int32_t count = 9;
    Answer answer;
    answer.status = attempt([&] { return get(nullptr, &count); });
    answer.bytes = answer.told = std::to_string(count) + " preferences";
    return answer;
}

constexpr std::array kEntryPoints{
    EntryPoint{"util_init_config_files", -1, write_file, loaded, false},
    EntryPoint{"parseINI", -1, write_file, parsed, false},
    EntryPoint{"savefile_INI", -1, write_and_load_file, saved, false},
    EntryPoint{"set_gpu_preference", -1, write_file, set_one<set_gpu_preference>, true},
    EntryPoint{"SetGPUPreference_config", -1, write_file, set_one<SetGPUPreference_config>, true},
    EntryPoint{"get_gpu_preference", -1, write_file, got<get_gpu_preference>, true},
    EntryPoint{"GetGPUPreference_config", -1, write_file, got<GetGPUPreference_config>, true},
    EntryPoint{"remove_gpu_preference", -1, write_and_load_file, removed<remove_gpu_preference>,
               false},
    EntryPoint{"RemoveGPUPreference_config", -1, write_and_load_file,
               removed<RemoveGPUPreference_config>, false},
};

}  // namespace

std::span<const EntryPoint> preference_entry_points()
{
    return kEntryPoints;
}

}  // namespace nimba::test
