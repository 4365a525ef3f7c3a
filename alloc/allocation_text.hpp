// SPDX-License-Identifier: MIT
// The text of allocation nodes.
#pragma once

#include "nimba_mgmt_interface.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nimba {

// Makes records of the texts of allocation nodes. A driver prints the keys of all nodes in one
// order, so each line is first held against the key and the length that the last node's had.
class AllocationParser final {
  public:
    explicit AllocationParser(bool va_driver) : device_base_{va_driver ? 10 : 16} {}

    // Begins a node.
    void begin();

    // Takes the next lines of the node, whole but for the node's last one. Throws what std::stoi
    // throws for a handle or a device.
    void add(std::string_view lines);

    // The record of the lines so far.
    [[nodiscard]] const _GFX_ALLOCATION_INFO& record() const { return record_; }

  private:
    // Takes lines while more than `rest` bytes are left. Returns what is left.
    std::string_view add_lines(std::string_view text, std::size_t rest);

    // Both take the line at the beginning of what they are given and return its length, the newline
    // included. The first returns 0 when it is not an expected one; it looks at kLookAhead bytes.
    std::size_t add_expected_line(const char* text, std::size_t line);
    std::size_t add_any_line(std::string_view text, std::size_t line);

    // What a line is expected to be: that of the last node in its place.
    struct Expected {
        uint8_t field = kNoField;
        uint8_t length = 0;  // the newline included
    };

    void expect(std::size_t line, std::size_t field, std::size_t length);
    [[nodiscard]] int base_of(std::size_t field) const;

    static constexpr std::size_t kRememberedLines = 64;
    static constexpr uint8_t kNoField = 0xFF;

    int device_base_;
    std::size_t line_ = 0;
    _GFX_ALLOCATION_INFO record_{};
    std::array<Expected, kRememberedLines> expected_{};
};

}  // namespace nimba
