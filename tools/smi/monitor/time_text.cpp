// SPDX-License-Identifier: MIT
#include "tools/smi/monitor/time_text.hpp"

#include <fmt/chrono.h>

#include <ctime>

namespace nimba::smi {
namespace {

using std::chrono::system_clock;

// The whole seconds before a time, and the milliseconds since.
struct SplitTime {
    std::time_t seconds;
    int64_t milliseconds;
};

SplitTime split(system_clock::time_point time)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const auto rest = std::chrono::floor<std::chrono::milliseconds>(time - seconds);
    return {system_clock::to_time_t(seconds), rest.count()};
}

}  // namespace

std::string utc_text(system_clock::time_point time)
{
    const auto [seconds, milliseconds] = split(time);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", parts, milliseconds);
}

std::string local_text(system_clock::time_point time)
{
    const auto [seconds, milliseconds] = split(time);
    std::tm parts{};
    ::localtime_r(&seconds, &parts);
    return fmt::format("{:%H:%M:%S}.{:03}", parts, milliseconds);
}

}  // namespace nimba::smi
