// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/map.hpp"

#include "tools/smi/pagetable/faces.hpp"
#include "tools/smi/pagetable/picture.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/printable.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <vector>

namespace nimba::smi {
namespace {

constexpr std::size_t kPatches = 32;
constexpr std::size_t kBarWidth = 40;
constexpr std::size_t kShortBarWidth = 10;
constexpr std::size_t kSizeWidth = 10;
constexpr std::size_t kGap = 2;  // between columns
constexpr std::size_t kHandlesTold = 3;

// By segment, the last for all from there on.
constexpr std::array kColours{"\x1b[36m", "\x1b[32m", "\x1b[33m", "\x1b[35m", "\x1b[34m"};
constexpr const char* kNoColour = "\x1b[0m";

std::string allocations_text(std::span<const VmAllocation> allocations)
{
    if (allocations.size() > kHandlesTold) {
        return fmt::format(", {} allocations", allocations.size());
    }
    std::string text;
    for (const VmAllocation& allocation : allocations) {
        text += fmt::format("{} {}", text.empty() ? ", allocation" : ",",
                            hexadecimal_text(allocation.handle));
    }
    return text;
}

// What a row says of a patch behind its bar.
std::string description_of(const Patch& patch, std::span<const VmAllocation> allocations)
{
    return printable(patch_text(patch) +
                     allocations_text(allocations_in(allocations, patch.range)));
}

class MapText final {
  public:
    // `widest`: columns of the widest description.
    MapText(const Picture& picture, const MapStyle& style, std::size_t widest)
        : picture_{picture},
          coloured_{style.coloured},
          address_width_{address_text(picture.patches.back().range.begin).size()}
    {
        const std::size_t others = address_width_ + kSizeWidth + widest + 3 * kGap;
        if (style.columns && *style.columns < others + kBarWidth) {
            bar_width_ =
                std::max(kShortBarWidth, *style.columns - std::min(*style.columns, others));
        }
    }

    void append(std::string& text, const Patch& patch, const std::string& description)
    {
        const std::string bar(width_of(patch.range.size()), patch.has_gaps() ? '+' : '#');
        append_row(text, patch.range, painted(bar, patch), bar.size(), description);
    }

    void append_gap(std::string& text, const AddressRange& gap)
    {
        const bool folded = gap.size() > picture_.largest;
        const std::string bar = folded ? "~ ~ ~" : std::string(width_of(gap.size()), '.');
        append_row(text, gap, bar, bar.size(), folded ? "not mapped, folded" : "not mapped");
    }

  private:
    // In the colour of its segment, if it has one.
    [[nodiscard]] std::string painted(const std::string& bar, const Patch& patch) const
    {
        const std::size_t segment = patch.shares.front().kind.segment;
        return coloured_ && has_one_segment(patch)
                   ? kColours.at(std::min(segment, kColours.size() - 1)) + bar + kNoColour
                   : bar;
    }

    [[nodiscard]] std::size_t width_of(uint64_t bytes) const
    {
        const double share = static_cast<double>(bytes) / static_cast<double>(picture_.largest);
        const double width = share * static_cast<double>(bar_width_);
        return std::max<std::size_t>(1, static_cast<std::size_t>(width));
    }

    void append_row(std::string& text, const AddressRange& range, const std::string& bar,
                    std::size_t width, const std::string& what) const
    {
        text += fmt::format("{:<{}}{:{}}{}{:{}}{:>{}}{:{}}{}\n", address_text(range.begin),
                            address_width_, "", kGap, bar, "", bar_width_ - width + kGap,
                            size_text(range.size()), kSizeWidth, "", kGap, what);
    }

    const Picture& picture_;
    bool coloured_;
    std::size_t address_width_;
    std::size_t bar_width_ = kBarWidth;
};

void append_map(std::string& text, const ProcessSpace& process, const MapStyle& style)
{
    const Picture picture = picture_of(process.space, kPatches);
    text += fmt::format("{}: {}\n", printable(process.title), picture_text(picture));
    if (picture.patches.empty()) {
        return;
    }
    std::vector<std::string> descriptions;
    std::size_t widest = 0;
    for (const Patch& patch : picture.patches) {
        descriptions.push_back(description_of(patch, process.allocations));
        widest = std::max(widest, columns(descriptions.back()));
    }
    MapText map{picture, style, widest};
    uint64_t end = picture.patches.front().range.begin;
    for (std::size_t i = 0; i < picture.patches.size(); ++i) {
        const Patch& patch = picture.patches[i];
        if (patch.range.begin > end) {
            map.append_gap(text, {end, patch.range.begin});
        }
        map.append(text, patch, descriptions[i]);
        end = patch.range.end;
    }
}

Document json_map(const ProcessSpace& process)
{
    const Picture picture = picture_of(process.space, kPatches);
    Document patches = Document::array();
    for (const Patch& patch : picture.patches) {
        Document kinds = Document::array();
        for (const KindShare& share : patch.shares) {
            kinds.push_back(json_kind(share.kind));
            kinds.back()["bytes"] = share.bytes;
        }
        Document allocations = Document::array();
        for (const VmAllocation& allocation : allocations_in(process.allocations, patch.range)) {
            allocations.push_back(json_allocation(allocation));
        }
        Document object = json_range(patch.range);
        object.update({{"mapped", patch.mapped},
                       {"stretches", patch.stretches},
                       {"kinds", std::move(kinds)},
                       {"allocations", std::move(allocations)}});
        patches.push_back(std::move(object));
    }
    return {{"mapped", picture.mapped},
            {"stretches", picture.stretches},
            {"patches", std::move(patches)}};
}

}  // namespace

std::string map_text(std::span<const ProcessSpace> processes, const MapStyle& style)
{
    std::string text;
    for (const ProcessSpace& process : processes) {
        append_map(text, process, style);
    }
    return text;
}

std::string map_json(const AddressSplit& split, std::span<const ProcessSpace> processes,
                     std::span<const Problem> problems)
{
    return view_json("nimba-smi.pagetable-map.1", split, processes, json_map, problems);
}

}  // namespace nimba::smi
