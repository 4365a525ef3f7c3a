// SPDX-License-Identifier: MIT
// A host with static objects and a destructor function of its own, all of which log.
#include <nimba_mgmt_interface.h>

#include <cstdio>

namespace {

class LoggingObject final {
  public:
    LoggingObject() { lib_print_func("static object made\n"); }
    ~LoggingObject() { lib_print_func("static object destroyed\n"); }
    LoggingObject(const LoggingObject&) = delete;
    LoggingObject& operator=(const LoggingObject&) = delete;
};

// 101 is the earliest priority that a host may ask for.
[[gnu::init_priority(101)]] const LoggingObject earliest_object;
const LoggingObject ordinary_object;

// Runs after the destructors of every static object, and after destructor functions without a
// priority.
[[gnu::destructor(101)]] void log_last()
{
    lib_print_func("destructor function\n");
}

}  // namespace

int main()
{
    std::puts("main");
}
