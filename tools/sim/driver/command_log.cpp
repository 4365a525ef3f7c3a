// SPDX-License-Identifier: MIT
#include "driver/command_log.hpp"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <utility>

namespace nimba::sim {

void CommandLog::add(std::string_view node, int error, std::string_view command)
{
    std::string line = fmt::format(
        "{} {} {}\n", node, error == 0 ? "ok" : strerrorname_np(error),
        nlohmann::json(command).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    size_ += line.size();
    lines_.push_back(std::move(line));
    while (lines_.size() > kMost || size_ > kGreatestSize) {
        size_ -= lines_.front().size();
        lines_.pop_front();
    }
}

void CommandLog::clear()
{
    lines_.clear();
    size_ = 0;
}

std::string CommandLog::text() const
{
    std::string text;
    text.reserve(size_);
    for (const std::string& line : lines_) {
        text += line;
    }
    return text;
}

}  // namespace nimba::sim
