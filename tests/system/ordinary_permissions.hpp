// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <linux/capability.h>
#include <sys/syscall.h>

#include <array>

namespace nimba::test {

// Takes root's right to pass over permissions, for the length of its scope.
class OrdinaryPermissions final {
  public:
    OrdinaryPermissions()
    {
        ::syscall(SYS_capget, &header_, before_.data());
        auto less = before_;
        less[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
        ::syscall(SYS_capset, &header_, less.data());
    }
    ~OrdinaryPermissions() { ::syscall(SYS_capset, &header_, before_.data()); }
    OrdinaryPermissions(const OrdinaryPermissions&) = delete;
    OrdinaryPermissions& operator=(const OrdinaryPermissions&) = delete;

  private:
    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> before_{};
};

}  // namespace nimba::test
