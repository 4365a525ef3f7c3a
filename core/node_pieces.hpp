// SPDX-License-Identifier: MIT
// Reading the lines of nodes, many nodes in a row, in memory of one size whatever they hold.
#pragma once

#include "core/handles.hpp"
#include "core/read_some.hpp"

#include <fcntl.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace nimba {

// One buffer for all nodes of a pass.
class NodePieces final {
  public:
    // Calls `take` with the text of the node, in order, in pieces of whole lines; only the last
    // line of the node may lack its newline. A usual node is one piece. A line that does not fit
    // the buffer loses bytes in its middle, but never its first "=": it keeps kKeptOfLongLine bytes
    // in front, which is more than any key or value may have. Returns false when the node cannot be
    // opened or not be read to its end; what was taken before that is of no use.
    template <typename Take>
    bool read_at(int directory, const char* name, Take&& take)
    {
        const Descriptor node{::openat(directory, name, O_RDONLY | O_CLOEXEC)};
        if (!node) {
            return false;
        }
        std::size_t held = 0;
        while (true) {
            const ssize_t count =
                read_some(node.get(), buffer_.data() + held, buffer_.size() - held);
            if (count < 0) {
                return false;
            }
            if (count == 0) {
                break;
            }
            held += static_cast<std::size_t>(count);
            if (held == buffer_.size()) {
                const std::size_t whole = whole_lines();
                if (whole > 0) {
                    take(std::string_view{buffer_.data(), whole});
                }
                held = whole > 0 ? move_to_front(whole) : shorten_line();
            }
        }
        if (held > 0) {
            take(std::string_view{buffer_.data(), held});
        }
        return true;
    }

    static constexpr std::size_t kKeptOfLongLine = 1024;

  private:
    // The following are for a full buffer. Its bytes up to its last newline, that included.
    [[nodiscard]] std::size_t whole_lines() const;
    // Moves what is behind the first `taken` bytes to the front. Returns its length.
    std::size_t move_to_front(std::size_t taken);
    // Makes room within a line that has no end yet. Returns how much of the buffer it keeps.
    std::size_t shorten_line();

    std::array<char, 8192> buffer_;
};

}  // namespace nimba
