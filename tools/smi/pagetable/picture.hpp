// SPDX-License-Identifier: MIT
// What a drawing of an address space shows: a bounded number of mapped patches, whatever there is.
#pragma once

#include "tools/smi/pagetable/process_space.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

// How much of a patch is of one kind.
struct KindShare {
    PageKind kind;
    uint64_t bytes = 0;

    bool operator==(const KindShare&) const = default;
};

// What is drawn as one piece: a stretch of like pages, or several close together.
struct Patch {
    AddressRange range;
    uint64_t mapped = 0;            // bytes of it
    uint64_t stretches = 0;         // of like pages
    std::vector<KindShare> shares;  // largest first

    [[nodiscard]] bool has_gaps() const { return mapped < range.size(); }

    bool operator==(const Patch&) const = default;
};

struct Picture {
    std::vector<Patch> patches;  // by address
    uint64_t stretches = 0;      // in all patches
    uint64_t mapped = 0;
    uint64_t largest = 0;  // patch, in bytes: gaps that are larger are folded

    // The patches between folded gaps, each group drawn as one.
    [[nodiscard]] std::vector<std::span<const Patch>> groups() const;
};

// A picture of `most` patches at most: what is closest together becomes one.
Picture picture_of(const AddressSpace& space, std::size_t most);

// "segment 0, 4 KiB pages" of a patch of one stretch, "3 stretches: segment 0, 4 KiB pages (8 KiB);
// ..." of another, with three kinds at most; "3 stretches, 12 KiB mapped: ..." when it has gaps.
std::string patch_text(const Patch& patch);

// Whether all pages of a patch are in the same segment.
bool has_one_segment(const Patch& patch);

// The allocations that share addresses with a range.
std::vector<VmAllocation> allocations_in(std::span<const VmAllocation> allocations,
                                         const AddressRange& range);

// "8.2 MiB mapped in 5 stretches of like pages", and how many are drawn when these are fewer;
// "nothing is mapped".
std::string picture_text(const Picture& picture);

}  // namespace nimba::smi
