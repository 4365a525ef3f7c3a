// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace nimba::sim {

// The last commands that drivers were given, in order.
class CommandLog {
  public:
    // `error` is that with which the driver rejected the command, or 0.
    void add(std::string_view node, int error, std::string_view command);
    void clear();

    // A line "NODE ERROR TEXT" for each command: ERROR is a name such as "EINVAL", or "ok"; TEXT is
    // the command as a JSON string, in which what is no UTF-8 is replaced.
    std::string text() const;

    // Older ones make room when there are more, or when all lines together are longer.
    static constexpr std::size_t kMost = 100'000;
    static constexpr std::size_t kGreatestSize = std::size_t{64} << 20U;

  private:
    std::deque<std::string> lines_;
    std::size_t size_ = 0;  // of all lines
};

}  // namespace nimba::sim
