// SPDX-License-Identifier: MIT
// Commands, and what they tell of the system's memory.
#include "core/handles.hpp"
#include "core/read_some.hpp"
#include "nimba_mgmt_interface.h"
#include "power/memory_modules.hpp"

#include <cstdio>
#include <cstring>
#include <string_view>

namespace nimba {
namespace {

Command start(const char* text)
{
    Command command = start_command(text);
    if (!command) {
        std::puts("Failed to run command");
    }
    return command;
}

// What `tell` makes of the modules; 1 when the command cannot be started.
int32_t ask_modules(MemoryModules modules, int32_t (*tell)(const MemoryModules& modules))
{
    const Command command = start("dmidecode -t memory");
    if (!command) {
        return 1;
    }
    MemoryLines{}.read(::fileno(command.get()),
                       [&](std::string_view lines) { return modules.take(lines); });
    return tell(modules);
}

}  // namespace
}  // namespace nimba

int32_t runShellCommand(const char* command, char* buf, uint32_t size)
{
    const nimba::Command running = nimba::start(command);
    if (!running) {
        return 1;
    }
    if (size == 0) {
        return 0;
    }
    std::memset(buf, 0, size);
    return static_cast<int32_t>(nimba::read_until_full(::fileno(running.get()), buf, size - 1));
}

int32_t runShellCommand_getBitWidth(void)
{
    return nimba::ask_modules({"Bank", "CHANNEL"}, nimba::memory_width);
}

int32_t runShellCommand_getMemoryTYpe(void)
{
    return nimba::ask_modules({"Type", "DDR"}, nimba::ddr_generation);
}
