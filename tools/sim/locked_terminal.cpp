// SPDX-License-Identifier: MIT
#include "locked_terminal.hpp"

#include "test_bed_error.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <fmt/core.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace nimba::sim {

LockedTerminal::LockedTerminal() : controller_{posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)}
{
    std::array<char, 64> path{};
    if (controller_ < 0 || ptsname_r(controller_, path.data(), path.size()) != 0) {
        throw TestBedError{fmt::format("cannot make a terminal: {}", std::strerror(errno))};
    }
    path_ = path.data();
}

LockedTerminal::~LockedTerminal()
{
    if (controller_ >= 0) {
        close(controller_);
    }
}

LockedTerminal::LockedTerminal(LockedTerminal&& other) noexcept
    : controller_{std::exchange(other.controller_, -1)}, path_{std::move(other.path_)}
{
}

}  // namespace nimba::sim
