// SPDX-License-Identifier: MIT
#include "fuzz/support/input.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"

#include <cstdio>

namespace {

int drop_message(const char* /*text*/, ...)
{
    return 0;
}

}  // namespace

// Texts of the driver reach the print callback as a format: the default one, printf, is replaced
// before any. What the library writes to standard output is of no use here.
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    set_print_callback(drop_message);
    return std::freopen("/dev/null", "we", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    nimba::fuzz::try_input({reinterpret_cast<const char*>(data), size});
    return 0;
}
