// SPDX-License-Identifier: MIT
// The lines of a node, or of what a command writes, as a line buffer takes them.
#pragma once

#include "core/handles.hpp"
#include "core/line_buffer.hpp"
#include "core/read_some.hpp"

#include <fcntl.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace nimba {

// Reads a text in memory of one size, however large the text is. `kLongest` bytes fit the line
// buffer, the newline included: what a longer line has beyond is a line of its own.
template <std::size_t kLongest>
class LinePieces final {
  public:
    // Behind every text that is handed out there are so many more bytes that may be read. They mean
    // nothing.
    static constexpr std::size_t kLookAhead = 96;

    // The first line of a text that is not empty, with its newline.
    static std::string_view first(std::string_view text) { return first_line(text, kLongest); }

    // Calls `take` with the text of the node, in order, in pieces of whole lines; only the last
    // line of the node may lack its newline. Goes on as long as `take` returns true. Returns false
    // when the node cannot be opened or not be read so far; what was taken until then was read all
    // the same.
    template <typename Take>
    bool read(const char* path, Take&& take)
    {
        const Descriptor node{::open(path, O_RDONLY | O_CLOEXEC)};
        return node && read(node.get(), take);
    }

    // The same for what is open already.
    template <typename Take>
    bool read(int descriptor, Take&& take)
    {
        std::size_t held = 0;
        while (true) {
            const ssize_t count = read_some(descriptor, buffer_.get() + held, kSize - held);
            if (count < 0) {
                return false;
            }
            if (count == 0) {
                break;
            }
            held += static_cast<std::size_t>(count);
            const std::size_t whole = whole_lines({buffer_.get(), held});
            if (whole > 0) {
                if (!take(std::string_view{buffer_.get(), whole})) {
                    return true;
                }
                held -= whole;
                std::memmove(buffer_.get(), buffer_.get() + whole, held);
            }
        }
        if (held > 0) {
            take(std::string_view{buffer_.get(), held});
        }
        return true;
    }

  private:
    static constexpr std::size_t kSize = std::size_t{64} * 1024;

    // The length of the whole lines of a text that begins with a line. Of a line without an end it
    // is that of the pieces into which it falls.
    static std::size_t whole_lines(std::string_view text)
    {
        const std::size_t end = text.rfind('\n') + 1;
        return end + (text.size() - end) / kLongest * kLongest;
    }

    std::unique_ptr<char[]> buffer_ = std::make_unique<char[]>(kSize + kLookAhead);
};

}  // namespace nimba
