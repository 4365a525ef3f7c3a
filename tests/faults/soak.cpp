// SPDX-License-Identifier: MIT
// soak COMMANDS CALLS: makes so many calls of the library's entry points, one after the other and
// all over again, on the simulated machine it is run on, and tells the memory, the part of it that
// is allocated and the descriptors that the process has meanwhile. It fails when one of them grows
// behind the first quarter.
#include "entry_point.hpp"

#include <unistd.h>

#include <sanitizer/allocator_interface.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace nimba::test {
namespace {

// An entry point that starts commands takes hundreds of times as long as another: its turn comes
// once in so many rounds.
constexpr std::size_t kRoundsOfCommands = 20;
constexpr int kParts = 8;
constexpr int kWarmUp = kParts / 4;
// What the allocator and the sanitizer's own tables may take more.
constexpr std::size_t kSlack = 4096;  // KiB
// What may be allocated more, however many calls there are: a list of allocations, which come and
// go.
constexpr std::size_t kAllocatedSlack = 4;  // KiB

int be_silent(const char* /*text*/, ...)
{
    return 0;
}

struct Use {
    std::size_t memory;     // resident, KiB
    std::size_t allocated;  // bytes
    std::ptrdiff_t descriptors;
};

template <typename List>
void empty(List& list)
{
    List{}.swap(list);
}

// Without the lists of the interface's own.
Use use_now()
{
    empty(vec_memleak_result);
    empty(Pagetable_List);
    empty(Allocation_List);
    empty(interface_config_list);
    std::ifstream statm{"/proc/self/statm"};
    std::size_t size = 0;
    std::size_t resident = 0;
    statm >> size >> resident;
    return {resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) / 1024,
            __sanitizer_get_current_allocated_bytes(),
            std::distance(std::filesystem::directory_iterator{"/proc/self/fd"}, {})};
}

bool is_flat_behind(const Use& warm, const Use& now)
{
    return now.memory <= warm.memory + kSlack &&
           now.allocated <= warm.allocated + kAllocatedSlack * 1024 &&
           now.descriptors == warm.descriptors;
}

class Soak final {
  public:
    Soak()
    {
        for (const auto room :
             {adapter_entry_points(), memory_entry_points(), page_table_entry_points(),
              power_entry_points(), preference_entry_points(), text_entry_points()}) {
            entries_.insert(entries_.end(), room.begin(), room.end());
        }
        // One change of the adapter in a round rather than many.
        std::ranges::stable_sort(entries_, {}, &EntryPoint::slot);
    }

    [[nodiscard]] std::size_t entries() const { return entries_.size(); }
    // Whether all of them have had their turn: what they keep is then of the same calls.
    [[nodiscard]] bool is_round_done() const { return next_ == 0; }

    void make_one()
    {
        while (!is_due(entries_[next_])) {
            step();
        }
        call(entries_[next_]);
        step();
    }

  private:
    [[nodiscard]] bool is_due(const EntryPoint& entry) const
    {
        return !entry.starts_commands || round_ % kRoundsOfCommands == 0;
    }

    void step()
    {
        next_ = (next_ + 1) % entries_.size();
        round_ += next_ == 0 ? 1 : 0;
    }

    static void call(const EntryPoint& entry)
    {
        if (entry.slot >= 0 && (entry.slot != adapters.chip_id_idx || pdev == nullptr)) {
            adapters.chip_id_idx = entry.slot;
            gfx_global_init(&adapters);
        }
        if (entry.prepare != nullptr) {
            entry.prepare();
        }
        Attempt attempt{Kind::kOpen, 0};
        entry.call(attempt);
    }

    std::vector<EntryPoint> entries_;
    std::size_t next_ = 0;
    std::size_t round_ = 0;
};

int run(const std::string& commands, std::size_t calls)
{
    ::setenv("PATH", (commands + ":" + std::getenv("PATH")).c_str(), 1);
    set_print_callback(be_silent);
    drivers_live = true;
    adapters.header.vendor_id_filter = 0xFFFF;
    gfx_find_adapter(&adapters);

    Soak soak;
    std::printf("%zu entry points\n%10s  %10s  %12s  %11s\n", soak.entries(), "calls", "memory",
                "allocated", "descriptors");
    Use warm{};
    bool is_flat = true;
    std::size_t made = 0;
    for (int part = 1; part <= kParts; ++part) {
        const std::size_t end = calls * static_cast<std::size_t>(part) / kParts;
        for (; made < end || !soak.is_round_done(); ++made) {
            soak.make_one();
        }
        const Use now = use_now();
        std::printf("%10zu  %6zu KiB  %12zu  %11td\n", made, now.memory, now.allocated,
                    now.descriptors);
        std::fflush(stdout);
        if (part == kWarmUp) {
            warm = now;
        }
        is_flat = is_flat && (part <= kWarmUp || is_flat_behind(warm, now));
    }
    std::puts(is_flat ? "flat" : "it grows");
    return is_flat ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace nimba::test

int main(int argument_count, char** arguments)
{
    if (argument_count != 3) {
        std::fputs("usage: soak COMMANDS CALLS\n", stderr);
        return 2;
    }
    return nimba::test::run(arguments[1], std::strtoul(arguments[2], nullptr, 10));
}
