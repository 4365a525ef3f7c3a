// SPDX-License-Identifier: MIT
#include "core/node_pieces.hpp"

#include <cstring>

namespace nimba {

std::size_t NodePieces::whole_lines() const
{
    const std::string_view text{buffer_.data(), buffer_.size()};
    return text.rfind('\n') + 1;
}

std::size_t NodePieces::move_to_front(std::size_t taken)
{
    const std::size_t rest = buffer_.size() - taken;
    std::memmove(buffer_.data(), buffer_.data() + taken, rest);
    return rest;
}

std::size_t NodePieces::shorten_line()
{
    const std::string_view line{buffer_.data(), buffer_.size()};
    const std::size_t equals_sign = line.find('=');
    if (equals_sign == std::string_view::npos || equals_sign < kKeptOfLongLine) {
        return kKeptOfLongLine;
    }
    buffer_[kKeptOfLongLine] = '=';
    return kKeptOfLongLine + 1;
}

}  // namespace nimba
