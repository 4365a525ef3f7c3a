// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/picture.hpp"

#include "tools/smi/pagetable/faces.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>

namespace nimba::smi {
namespace {

constexpr std::size_t kKindsTold = 3;

// Like pages without a gap, also across sub-tables and whatever the physical addresses.
struct Stretch {
    AddressRange range;
    PageKind kind;
};

std::vector<Stretch> stretches_of(const AddressSpace& space)
{
    std::vector<Stretch> stretches;
    for (const PageRun& run : space.runs) {
        const AddressRange range = run.range();
        if (!stretches.empty() && stretches.back().kind == run.kind &&
            stretches.back().range.end == range.begin) {
            stretches.back().range.end = range.end;
        } else {
            stretches.push_back({range, run.kind});
        }
    }
    return stretches;
}

// Which stretches begin a patch, so that there are `most` patches at most: the first, and those
// behind the largest gaps.
std::vector<std::size_t> beginnings(std::span<const Stretch> stretches, std::size_t most)
{
    std::vector<std::size_t> first;
    for (std::size_t i = 0; i < stretches.size(); ++i) {
        first.push_back(i);
    }
    if (first.size() > most) {
        const auto gap_before = [&](std::size_t i) {
            return stretches[i].range.begin - stretches[i - 1].range.end;
        };
        std::ranges::stable_sort(first.begin() + 1, first.end(), std::greater{}, gap_before);
        first.resize(most);
        std::ranges::sort(first);
    }
    return first;
}

Patch patch_of(std::span<const Stretch> stretches)
{
    std::map<PageKind, uint64_t> kinds;
    Patch patch{
        {stretches.front().range.begin, stretches.back().range.end}, 0, stretches.size(), {}};
    for (const Stretch& stretch : stretches) {
        kinds[stretch.kind] += stretch.range.size();
        patch.mapped += stretch.range.size();
    }
    for (const auto& [kind, bytes] : kinds) {
        patch.shares.push_back({kind, bytes});
    }
    std::ranges::stable_sort(patch.shares, std::greater{}, &KindShare::bytes);
    return patch;
}

}  // namespace

std::vector<std::span<const Patch>> Picture::groups() const
{
    std::vector<std::span<const Patch>> groups;
    auto begin = patches.begin();
    for (auto patch = patches.begin(); patch != patches.end(); ++patch) {
        const auto next = std::next(patch);
        if (next == patches.end() || next->range.begin - patch->range.end > largest) {
            groups.emplace_back(begin, next);
            begin = next;
        }
    }
    return groups;
}

Picture picture_of(const AddressSpace& space, std::size_t most)
{
    const std::vector<Stretch> stretches = stretches_of(space);
    const std::vector<std::size_t> first = beginnings(stretches, most);
    Picture picture;
    picture.stretches = stretches.size();
    for (std::size_t i = 0; i < first.size(); ++i) {
        const std::size_t end = i + 1 < first.size() ? first[i + 1] : stretches.size();
        picture.patches.push_back(patch_of(std::span{stretches}.subspan(first[i], end - first[i])));
        picture.mapped += picture.patches.back().mapped;
        picture.largest = std::max(picture.largest, picture.patches.back().range.size());
    }
    return picture;
}

std::string patch_text(const Patch& patch)
{
    if (patch.stretches == 1) {
        return kind_text(patch.shares.front().kind);
    }
    std::string text =
        fmt::format("{} stretches{}: ", patch.stretches,
                    patch.has_gaps() ? fmt::format(", {} mapped", size_text(patch.mapped)) : "");
    const std::size_t told = std::min(patch.shares.size(), kKindsTold);
    for (std::size_t i = 0; i < told; ++i) {
        text += fmt::format("{}{} ({})", i == 0 ? "" : "; ", kind_text(patch.shares[i].kind),
                            size_text(patch.shares[i].bytes));
    }
    if (const std::size_t untold = patch.shares.size() - told; untold > 0) {
        text += fmt::format("; {} more kind{}", untold, untold == 1 ? "" : "s");
    }
    return text;
}

bool has_one_segment(const Patch& patch)
{
    return std::ranges::all_of(patch.shares, [&](const KindShare& share) {
        return share.kind.segment == patch.shares.front().kind.segment;
    });
}

std::vector<VmAllocation> allocations_in(std::span<const VmAllocation> allocations,
                                         const AddressRange& range)
{
    std::vector<VmAllocation> inside;
    std::ranges::copy_if(allocations, std::back_inserter(inside), [&](const auto& allocation) {
        return std::max(allocation.range.begin, range.begin) <
               std::min(allocation.range.end, range.end);
    });
    std::ranges::stable_sort(inside, {},
                             [](const auto& allocation) { return allocation.range.begin; });
    return inside;
}

std::string picture_text(const Picture& picture)
{
    if (picture.patches.empty()) {
        return "nothing is mapped";
    }
    std::string text =
        fmt::format("{} mapped in {} stretch{} of like pages", size_text(picture.mapped),
                    picture.stretches, picture.stretches == 1 ? "" : "es");
    if (picture.patches.size() < picture.stretches) {
        text += fmt::format(", drawn as {}", picture.patches.size());
    }
    return text;
}

}  // namespace nimba::smi
