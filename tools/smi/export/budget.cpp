// SPDX-License-Identifier: MIT
#include "tools/smi/export/budget.hpp"

#include <algorithm>

namespace nimba::smi::exporting {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

milliseconds Budget::for_next() const
{
    const auto left = std::chrono::floor<milliseconds>(left_);
    return std::clamp(left, milliseconds{0}, each_);
}

void Budget::spend(nanoseconds took, milliseconds allowed, bool lost)
{
    left_ -= lost ? std::min<nanoseconds>(took, allowed) : took;
}

}  // namespace nimba::smi::exporting
