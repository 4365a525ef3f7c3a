// SPDX-License-Identifier: MIT
#include "tools/smi/snapshot/load.hpp"

namespace nimba::smi {
namespace {

Load load_of(int64_t figure, int64_t high, int64_t critical)
{
    if (figure >= critical) {
        return Load::kCritical;
    }
    return figure >= high ? Load::kHigh : Load::kUsual;
}

}  // namespace

Load load_of_percent(int64_t percent)
{
    return load_of(percent, 70, 90);
}

Load load_of_temperature(int64_t celsius)
{
    return load_of(celsius, 70, 85);
}

}  // namespace nimba::smi
