// SPDX-License-Identifier: MIT
#include "tools/smi/process/held_signal.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

volatile std::sig_atomic_t received = 0;

TEST(HeldSignal, HasItsEffectAtTheEnd)
{
    std::signal(SIGPIPE, [](int) { received = 1; });
    {
        const HeldSignal held{SIGPIPE};
        std::raise(SIGPIPE);
        EXPECT_EQ(received, 0);
    }
    EXPECT_EQ(received, 1);
    std::signal(SIGPIPE, SIG_DFL);
}

}  // namespace
}  // namespace nimba::smi
