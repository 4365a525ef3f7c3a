// SPDX-License-Identifier: MIT
#pragma once

#include "toml_table.hpp"

#include <fmt/core.h>

#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace nimba::sim {

// What only one part of a machine may have: card numbers, bus ids and the like.
class Claims {
  public:
    // Takes `value` for the table that `reader` reads; if another one has it, rejects `key`.
    void take(const std::string& kind, const std::string& value, const TableReader& reader,
              std::string_view key)
    {
        const auto [owner, is_new] = owners_.try_emplace({kind, value}, reader.path());
        if (!is_new) {
            reader.reject(key,
                          fmt::format("a free {} ({} is that of {})", kind, value, owner->second));
        }
    }

  private:
    std::map<std::pair<std::string, std::string>, std::string> owners_;
};

}  // namespace nimba::sim
