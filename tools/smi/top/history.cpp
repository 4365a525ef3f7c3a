// SPDX-License-Identifier: MIT
#include "tools/smi/top/history.hpp"

#include <algorithm>

namespace nimba::smi::top {

void History::add(std::optional<double> value)
{
    ring_[next_] = value;
    next_ = (next_ + 1) % ring_.size();
    size_ = std::min(size_ + 1, ring_.size());
}

std::optional<double> History::at_age(std::size_t age) const
{
    return age < size_ ? ring_[(next_ + ring_.size() - 1 - age) % ring_.size()] : std::nullopt;
}

std::optional<double> History::largest(std::size_t count) const
{
    std::optional<double> largest;
    for (std::size_t age = 0; age < std::min(count, size_); ++age) {
        largest = std::max(largest, at_age(age));  // nothing is smaller than any value
    }
    return largest;
}

}  // namespace nimba::smi::top
