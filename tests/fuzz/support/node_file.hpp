// SPDX-License-Identifier: MIT
#pragma once

#include "support/descriptor.hpp"

#include <string>
#include <string_view>

namespace nimba::fuzz {

// A node in memory. It is opened by its path.
class NodeFile final {
  public:
    NodeFile();

    void set(std::string_view text);
    [[nodiscard]] std::string text() const;
    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    test::Descriptor memory_;
    std::string path_;
};

}  // namespace nimba::fuzz
