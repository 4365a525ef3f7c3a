// SPDX-License-Identifier: MIT
// GPU preferences, in a home of this process.
#include "entry_point.hpp"

#include <algorithm>
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

std::string told_node(const _UTIL_GPU_PREFERENCE_NODE& node)
{
    std::string told = std::string{node.FileName} + " (" + node.FullPath + " " +
                       std::to_string(node.GpuPrefer) + " \"" + node.PreferGpuName + "\"";
    for (const int figure :
         {int{node.domain}, int{node.bus}, int{node.device}, int{node.function}}) {
        told += " " + std::to_string(figure);
    }
    return told + ")";
}

std::string told_list()
{
    std::string told = "list";
    for (const _UTIL_GPU_PREFERENCE_NODE& node : interface_config_list) {
        told += " " + told_node(node);
    }
    return told;
}

// The names of the file's sections, and a sum of all.
std::string told_file()
{
    const std::string text = file_text();
    if (text == kText) {
        return "file as it was";
    }
    std::string told = "file";
    std::istringstream lines{text};
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('[')) {
            told += " " + line.substr(1, line.size() - 2);
        }
    }
    return told + ", " + checksum(text);
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
    std::strcpy(node.PreferGpuName, "Gpu1");
    node.domain = 1;
    node.bus = 2;
    node.device = 3;
    node.function = 4;
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
    auto node = preference_of("editor");
    // The same again is not saved.
    node.GpuPrefer += static_cast<std::int32_t>(
        std::ranges::count(interface_config_list, std::string_view{"editor"},
                           [](const auto& kept) { return std::string_view{kept.FileName}; }));
    return preferences(attempt, [&] { return set(&node); });
}

template <std::int32_t (*remove)(const _UTIL_GPU_PREFERENCE_NODE*)>
Answer removed(Attempt& attempt)
{
    const auto node = preference_of("viewer");
    return preferences(attempt, [&] { return remove(&node); });
}

template <std::int32_t (*get)(_UTIL_GPU_PREFERENCE_NODE*, std::int32_t*)>
Answer counted(Attempt& attempt)
{
    std::int32_t count = 9;
    Answer answer;
    answer.status = attempt([&] { return get(nullptr, &count); });
    answer.bytes = answer.told = std::to_string(count) + " preferences";
    return answer;
}

template <std::int32_t (*get)(_UTIL_GPU_PREFERENCE_NODE*, std::int32_t*)>
Answer got(Attempt& attempt)
{
    using Nodes = std::array<_UTIL_GPU_PREFERENCE_NODE, 3>;
    auto count = static_cast<std::int32_t>(Nodes{}.size());
    Answer answer = filled<Nodes>(
        attempt, [&](Nodes& nodes) { return get(nodes.data(), &count); },
        [&](const Nodes& nodes) {
            std::string told = std::to_string(count) + " preferences";
            for (const _UTIL_GPU_PREFERENCE_NODE& node :
                 std::span{nodes}.first(static_cast<std::size_t>(std::clamp(count, 0, 3)))) {
                told += " " + told_node(node);
            }
            return told;
        });
    answer.bytes += std::to_string(count);
    return answer;
}

constexpr std::array kEntryPoints{
    EntryPoint{"util_init_config_files", -1, write_file, loaded, false},
    EntryPoint{"parseINI", -1, write_file, parsed, false},
    EntryPoint{"savefile_INI", -1, write_and_load_file, saved, false},
    EntryPoint{"set_gpu_preference", -1, write_file, set_one<set_gpu_preference>, true},
    EntryPoint{"SetGPUPreference_config", -1, write_file, set_one<SetGPUPreference_config>, true},
    EntryPoint{"get_gpu_preference", -1, write_file, counted<get_gpu_preference>, true},
    EntryPoint{"GetGPUPreference_config", -1, write_file, counted<GetGPUPreference_config>, true},
    EntryPoint{"get_gpu_preference, with a buffer", -1, write_file, got<get_gpu_preference>, true},
    EntryPoint{"GetGPUPreference_config, with a buffer", -1, write_file,
               got<GetGPUPreference_config>, true},
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
