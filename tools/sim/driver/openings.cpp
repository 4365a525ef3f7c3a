// SPDX-License-Identifier: MIT
#include "driver/openings.hpp"

#include <utility>

namespace nimba::sim {

uint64_t Openings::add(std::shared_ptr<Opening> opening)
{
    const std::scoped_lock lock{mutex_};
    openings_.emplace(++last_handle_, std::move(opening));
    return last_handle_;
}

std::shared_ptr<Opening> Openings::opening(uint64_t handle)
{
    const std::scoped_lock lock{mutex_};
    return openings_.at(handle);
}

void Openings::remove(uint64_t handle)
{
    const std::scoped_lock lock{mutex_};
    openings_.erase(handle);
}

}  // namespace nimba::sim
