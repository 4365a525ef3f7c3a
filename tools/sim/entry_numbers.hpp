// SPDX-License-Identifier: MIT
#pragma once

#include "claims.hpp"
#include "toml_table.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

namespace nimba::sim {

// The numbers by which a directory of the driver names its entries.
class EntryNumbers {
  public:
    // `kind` says in messages what is named.
    explicit EntryNumbers(std::string kind) : kind_{std::move(kind)} {}

    // Reads "entry"; without it the entry is the one behind the greatest until now.
    int64_t read(const TableReader& table)
    {
        const int64_t entry = table.integer_or("entry", 0, kGreatest, greatest_ + 1);
        claims_.take(kind_, std::to_string(entry), table, "entry");
        greatest_ = std::max(greatest_, entry);
        return entry;
    }

    // The entry behind the greatest until now.
    int64_t next() { return ++greatest_; }

  private:
    static constexpr int64_t kGreatest = 999999999;

    std::string kind_;
    Claims claims_;
    int64_t greatest_ = 0;
};

}  // namespace nimba::sim
