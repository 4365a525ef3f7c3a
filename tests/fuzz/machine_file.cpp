// SPDX-License-Identifier: MIT
// Machine files of nimba-sim: whatever is wrong with one is told in one line that names it, and the
// drivers of a small machine show all of their nodes.
#include "tools/sim/machine_file.hpp"

#include "fuzz/support/check.hpp"
#include "fuzz/support/node_file.hpp"
#include "fuzz/support/target.hpp"
#include "tools/sim/driver/live_driver.hpp"
#include "tools/sim/driver/snapshot.hpp"
#include "tools/sim/machine_file_error.hpp"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace nimba::fuzz {
namespace {

bool is_control(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

void check_message(const std::string& message, const std::string& file)
{
    check(message.starts_with(file + ":"), "a message names the file");
    check(std::ranges::none_of(message, is_control), "a message is one line");
}

// Nothing when the file is no good.
std::optional<sim::Machine> read(const std::string& file)
{
    try {
        return sim::read_machine(file);
    } catch (const sim::MachineFileError& error) {
        check_message(error.what(), file);
        return std::nullopt;
    }
}

void check_machine(const sim::Machine& machine)
{
    std::set<int> cards;
    std::set<sim::PciAddress> addresses;
    for (const sim::Adapter& adapter : machine.adapters) {
        check(cards.insert(adapter.drm.card).second, "a card is that of one adapter");
        check(addresses.insert(adapter.pci.address).second, "an address is that of one adapter");
        check(sim::parse_pci_address(sim::to_text(adapter.pci.address)) == adapter.pci.address,
              "an address is read as it is written");
    }
    check(std::ranges::none_of(machine.description, is_control), "a description is one line");
}

bool is_small(const sim::AllocationValues& values)
{
    constexpr int64_t kMostBytes = 16 << 20;
    const int64_t size = values.number(sim::AllocationKey::kSize);
    return size <= kMostBytes;
}

bool is_small(const sim::DeviceContext& context)
{
    constexpr uint64_t kMostEntries = 2'000;
    return !context.page_tables || context.page_tables->level0 + context.page_tables->level1 +
                                           context.page_tables->level2 +
                                           context.page_tables->entries <=
                                       kMostEntries;
}

// Whether its nodes can be read in no time.
bool is_small(const sim::VideoMemory& memory)
{
    constexpr uint64_t kMostAllocations = 50;
    constexpr uint64_t kGreatestRate = 20;  // per second
    const auto leaks_slowly = [](const sim::AllocationLeak& leak) {
        return leak.per_second <= kGreatestRate;
    };
    return memory.generated.count <= kMostAllocations && memory.change.appear <= kGreatestRate &&
           memory.change.vanish <= kGreatestRate && memory.contexts.size() <= kMostAllocations &&
           std::ranges::all_of(memory.leaks, leaks_slowly) &&
           std::ranges::all_of(memory.contexts, [](const auto& one) { return is_small(one); }) &&
           std::ranges::all_of(memory.shapes,
                               [](const auto& one) { return is_small(one.values); }) &&
           std::ranges::all_of(memory.allocations,
                               [](const auto& one) { return is_small(one.values); });
}

bool is_small(const sim::Machine& machine)
{
    return machine.adapters.size() <= 2 &&
           std::ranges::all_of(machine.adapters,
                               [](const auto& adapter) { return is_small(adapter.video_memory); });
}

void check_drivers(const sim::Machine& machine)
{
    std::chrono::nanoseconds now{0};
    sim::LiveDriver driver{machine, [&] { return now; }};
    for (const auto time : {std::chrono::milliseconds{0}, std::chrono::milliseconds{1'500}}) {
        now = time;
        const auto nodes = sim::take_snapshot(driver, "");
        check(!nodes.empty() && nodes.front().attributes.directory, "drivers have a directory");
    }
}

}  // namespace

void try_input(std::string_view input)
{
    static NodeFile file;
    file.set(input);
    if (const auto machine = read(file.path())) {
        check_machine(*machine);
        if (is_small(*machine)) {
            check_drivers(*machine);
        }
    }
}

}  // namespace nimba::fuzz
