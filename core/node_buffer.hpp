// SPDX-License-Identifier: MIT
#pragma once

#include "core/node_access.hpp"
#include "nimba_mgmt_interface.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace nimba {

// The first `Size` bytes of a node as a text that ends with a NUL. Zero until a node is read; what
// a node does not overwrite stays as the node before left it.
template <std::size_t Size>
class NodeBuffer final {
  public:
    // Returns the number of bytes read.
    int read(int directory, const char* name)
    {
        return read_node_at(directory, name, bytes_.data(), Size);
    }

    // The text behind the key's first occurrence, or null. See find_str_in_buffer.
    [[nodiscard]] const char* behind(const char* key) const
    {
        const int32_t position = find_str_in_buffer(bytes_.data(), static_cast<int32_t>(Size), key);
        return position < 0 ? nullptr : bytes_.data() + position;
    }

    [[nodiscard]] const char* text() const { return bytes_.data(); }

  private:
    std::array<char, Size + 1> bytes_{};
};

}  // namespace nimba
