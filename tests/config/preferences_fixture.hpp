// SPDX-License-Identifier: MIT
#pragma once

#include "config/preference_records.hpp"
#include "support/environment.hpp"
#include "support/loaded_library.hpp"
#include "support/messages.hpp"
#include "support/temp_directory.hpp"

#include <nimba_mgmt_interface.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::test {

using Records = std::vector<_UTIL_GPU_PREFERENCE_NODE>;

// The library as it is at load, every message kept, and a home directory of its own.
class FreshLibrary : public testing::Test {
  protected:
    FreshLibrary()
    {
        std::filesystem::create_directories(home.path() / ".local/share");
        library.symbol<decltype(::set_print_callback)>("set_print_callback")(keep_message);
        take_messages();
    }

    template <class Function>
    Function& function(const char* name) const
    {
        return library.symbol<Function>(name);
    }

    TempDirectory home;
    ScopedVariable home_variable{"HOME", home.path().string()};
    const std::string path = (home.path() / ".local/share/wmt_gfx_util.ini").string();

    LoadedLibrary library;
    char (&config_path)[512] = library.symbol<char[512]>("UTIL_CONFIG_PATH");
    Records& list = library.symbol<Records>("interface_config_list");
};

// The three operations, by the name of their entry points or of their workers.
struct Operations {
    const char* set;
    const char* get;
    const char* remove;

    friend std::ostream& operator<<(std::ostream& stream, const Operations& operations)
    {
        return stream << operations.set;
    }
};

inline constexpr Operations kEntryPoints{"set_gpu_preference", "get_gpu_preference",
                                         "remove_gpu_preference"};
inline constexpr Operations kWorkers{"SetGPUPreference_config", "GetGPUPreference_config",
                                     "RemoveGPUPreference_config"};

// Each test runs with the entry points and with the workers.
class Preferences : public FreshLibrary, public testing::WithParamInterface<Operations> {
  protected:
    int32_t set(const Preference& preference) const
    {
        const auto node = record(preference);
        return function<decltype(::set_gpu_preference)>(GetParam().set)(&node);
    }

    int32_t get(_UTIL_GPU_PREFERENCE_NODE* buffer, int32_t& count) const
    {
        return function<decltype(::get_gpu_preference)>(GetParam().get)(buffer, &count);
    }

    int32_t count() const
    {
        int32_t records = -1;
        get(nullptr, records);
        return records;
    }

    int32_t remove(const Preference& preference) const
    {
        const auto node = record(preference);
        return function<decltype(::remove_gpu_preference)>(GetParam().remove)(&node);
    }

    void write(std::string_view text) const { write_file(path, text); }
    std::string file() const { return read_file(path); }
};

inline std::string operations_name(const testing::TestParamInfo<Operations>& info)
{
    return info.param.set == kEntryPoints.set ? "EntryPoints" : "Workers";
}

}  // namespace nimba::test
