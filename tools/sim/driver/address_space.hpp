// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <vector>

namespace nimba::sim {

// GPU virtual addresses have 48 bits.
inline constexpr int64_t kAddressEnd = int64_t{1} << 48U;

// Memory that a device context sees at a GPU virtual address.
struct Mapping {
    uint64_t address = 0;
    uint64_t size = 0;      // in bytes
    uint64_t physical = 0;  // address of its first page
    int64_t segment = 0;
    bool snoop = false;
};

// Pages of 4 KiB that lie one behind the other in both kinds of memory.
struct PageRun {
    uint64_t begin = 0;  // number of the first page
    uint64_t end = 0;    // number of the page behind the last one
    uint64_t physical = 0;
    int64_t segment = 0;
    bool snoop = false;

    bool operator==(const PageRun&) const = default;
};

// What a device context sees at the GPU virtual addresses.
class AddressSpace {
  public:
    // Maps each page that the memory touches, save for those that are mapped or reserved already
    // and those beyond the address space. Addresses and sizes are below 2^63.
    void map(const Mapping& mapping);

    // Keeps the pages from being mapped.
    void reserve(uint64_t begin, uint64_t end);

    // The mapped pages in the order of their addresses.
    std::vector<PageRun> runs() const;

  private:
    struct Part {
        PageRun run;
        bool mapped;
    };

    std::map<uint64_t, Part> parts_;  // by their first pages; none meets another one
};

}  // namespace nimba::sim
