// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/svg.hpp"

#include "tools/smi/pagetable/faces.hpp"
#include "tools/smi/pagetable/picture.hpp"
#include "tools/smi/pagetable/svg_canvas.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

constexpr std::size_t kPatches = 40;
constexpr std::size_t kNotes = 12;  // texts below a strip for what is too small to bear one
constexpr std::size_t kSegmentsTold = 8;
constexpr std::size_t kLanes = 4;  // for allocations that overlap

constexpr double kMargin = 20;
constexpr double kStripWidth = SvgCanvas::kWidth - 2 * kMargin;
constexpr double kLineHeight = 18;
constexpr double kBlockHeight = 46;
constexpr double kLaneHeight = 22;
constexpr double kLeastWidth = 1;
constexpr double kPadding = 4;  // at both sides of a text in a block

// By segment, the last for all from there on.
constexpr std::array kFills{"#a6cee3", "#b2df8a", "#fdd49e", "#cab2d6", "#fbb4ae"};
constexpr const char* kMixedFill = "#d2c2a4";
constexpr SvgFill kAllocationFill{"#eeeeee"};
constexpr SvgFill kGapFill{"#ffffff"};

// Fainter for what is mapped only in part.
SvgFill fill_of(const Patch& patch)
{
    const std::size_t segment = patch.shares.front().kind.segment;
    return {has_one_segment(patch) ? kFills.at(std::min(segment, kFills.size() - 1)) : kMixedFill,
            patch.has_gaps()};
}

// "segment 0", or "segments 0, 1" of patches with several, "57 segments" of those with many.
std::string segments_text(const Patch& patch)
{
    std::vector<uint16_t> segments;
    for (const KindShare& share : patch.shares) {
        if (std::ranges::find(segments, share.kind.segment) == segments.end()) {
            segments.push_back(share.kind.segment);
        }
    }
    if (segments.size() > kSegmentsTold) {
        return fmt::format("{} segments", segments.size());
    }
    std::ranges::sort(segments);
    return fmt::format("segment{} {}", segments.size() == 1 ? "" : "s", fmt::join(segments, ", "));
}

// "4 KiB pages, 1 MiB", or "57 stretches, 1 MiB mapped" of several, "57 stretches, 1 MiB of 4 MiB
// mapped" with gaps between them.
std::string pages_text(const Patch& patch)
{
    const PageKind& kind = patch.shares.front().kind;
    if (patch.stretches == 1) {
        return fmt::format("{} pages{}, {}", size_text(kind.page_size(), SizeUnit::kAuto),
                           kind.snooped ? ", snooped" : "", size_text(patch.mapped));
    }
    const std::string whole =
        patch.has_gaps() ? fmt::format(" of {}", size_text(patch.range.size())) : "";
    return fmt::format("{} stretches, {}{} mapped", patch.stretches, size_text(patch.mapped),
                       whole);
}

// Draws from top to bottom.
class SvgPainter final {
  public:
    void process(const ProcessSpace& process)
    {
        const Picture picture = picture_of(process.space, kPatches);
        y_ += kLineHeight;
        canvas_.text(kMargin, y_ + kPadding, "GPU address space of " + process.title, 18);
        y_ += kLineHeight + kPadding;
        canvas_.text(kMargin, y_, picture_text(picture) + "; each strip has a scale of its own");
        y_ += kLineHeight;
        const auto groups = picture.groups();
        for (std::size_t i = 0; i < groups.size(); ++i) {
            strip(groups[i], process.allocations);
            if (i + 1 < groups.size()) {
                fold(groups[i + 1].front().range.begin - groups[i].back().range.end);
            }
        }
    }

    [[nodiscard]] std::string document(std::string_view title) const
    {
        return canvas_.document(static_cast<int>(y_ + kMargin), title);
    }

  private:
    [[nodiscard]] double x_of(uint64_t address) const
    {
        const auto offset = static_cast<double>(address - whole_.begin);
        return kMargin + kStripWidth * offset / static_cast<double>(whole_.size());
    }

    void strip(std::span<const Patch> patches, std::span<const VmAllocation> allocations)
    {
        whole_ = {patches.front().range.begin, patches.back().range.end};
        notes_.clear();
        untold_ = 0;
        axis();
        canvas_.rectangle(kMargin, y_, kStripWidth, kBlockHeight, kGapFill);
        for (std::size_t i = 0; i < patches.size(); ++i) {
            if (i > 0) {
                gap({patches[i - 1].range.end, patches[i].range.begin});
            }
            block(patches[i]);
        }
        y_ += kBlockHeight;
        allocation_lanes(allocations_in(allocations, whole_));
        y_ += kLineHeight;
        notes();
    }

    // The addresses of the strip's ends and quarters.
    void axis()
    {
        constexpr int kTicks = 4;
        y_ += kLineHeight;
        for (int tick = 0; tick <= kTicks; ++tick) {
            const uint64_t address =
                whole_.begin + whole_.size() / kTicks * static_cast<uint64_t>(tick);
            const double x = kMargin + kStripWidth * tick / kTicks;
            canvas_.line(x, y_ + kPadding, x, y_ + 3 * kPadding);
            canvas_.text(x, y_, address_text(tick == kTicks ? whole_.end : address), 13,
                         tick == 0        ? SvgCanvas::Anchor::kStart
                         : tick == kTicks ? SvgCanvas::Anchor::kEnd
                                          : SvgCanvas::Anchor::kMiddle);
        }
        y_ += 3 * kPadding;
    }

    void block(const Patch& patch)
    {
        const double x = x_of(patch.range.begin);
        const double width = std::max(kLeastWidth, x_of(patch.range.end) - x);
        canvas_.rectangle(x, y_, width, kBlockHeight, fill_of(patch));
        const std::string above = segments_text(patch);
        const std::string below = pages_text(patch);
        if (std::max(svg_text_width(above), svg_text_width(below)) + 2 * kPadding <= width) {
            canvas_.text(x + width / 2, y_ + kLineHeight, above, 13, SvgCanvas::Anchor::kMiddle);
            canvas_.text(x + width / 2, y_ + 2 * kLineHeight, below, 13,
                         SvgCanvas::Anchor::kMiddle);
        } else {
            note(fill_of(patch), fmt::format("{}  {}, {}", range_text(patch.range), above, below));
        }
    }

    void gap(const AddressRange& range)
    {
        const std::string text = fmt::format("not mapped, {}", size_text(range.size()));
        const double x = x_of(range.begin);
        const double width = x_of(range.end) - x;
        if (svg_text_width(text) + 2 * kPadding <= width) {
            canvas_.text(x + width / 2, y_ + 1.5 * kLineHeight, text, 13,
                         SvgCanvas::Anchor::kMiddle);
        }
    }

    // A row of boxes that do not overlap.
    struct Lane {
        uint64_t end = 0;    // address behind the last one
        double drawn = 0.0;  // up to here
    };

    // In the first lane that is free there; those beyond the last lane are told below.
    void allocation_lanes(std::span<const VmAllocation> allocations)
    {
        std::vector<Lane> lanes;
        for (const VmAllocation& allocation : allocations) {
            auto lane = std::ranges::find_if(
                lanes, [&](const Lane& free) { return free.end <= allocation.range.begin; });
            if (lane == lanes.end() && lanes.size() < kLanes) {
                lane = lanes.insert(lane, Lane{});
            }
            if (lane == lanes.end()) {
                note(allocation);
            } else {
                const double y = y_ + static_cast<double>(lane - lanes.begin()) * kLaneHeight;
                lane->end = allocation.range.end;
                allocation_box(allocation, y, lane->drawn);
            }
        }
        y_ += kLaneHeight * static_cast<double>(lanes.size());
    }

    // `drawn`: up to where the lane has boxes. One that would show nothing new is not drawn: there
    // may be many.
    void allocation_box(const VmAllocation& allocation, double y, double& drawn)
    {
        const double x = x_of(std::max(allocation.range.begin, whole_.begin));
        const double end = x_of(std::min(allocation.range.end, whole_.end));
        const double width = std::max(kLeastWidth, end - x);
        if (end - drawn >= kLeastWidth) {
            canvas_.rectangle(x, y, width, kLaneHeight, kAllocationFill);
            drawn = end;
        }
        const std::string text = "allocation " + hexadecimal_text(allocation.handle);
        if (svg_text_width(text) + 2 * kPadding <= width) {
            canvas_.text(x + width / 2, y + kLineHeight - kPadding / 2, text, 13,
                         SvgCanvas::Anchor::kMiddle);
        } else {
            note(allocation);
        }
    }

    void note(const VmAllocation& allocation)
    {
        note(kAllocationFill,
             fmt::format("{}  allocation {}, {}", range_text(allocation.range),
                         hexadecimal_text(allocation.handle), size_text(allocation.range.size())));
    }

    void note(const SvgFill& fill, std::string text)
    {
        if (notes_.size() < kNotes) {
            notes_.push_back({fill, std::move(text)});
        } else {
            ++untold_;
        }
    }

    void notes()
    {
        constexpr double kSquare = 10;
        for (const Note& note : notes_) {
            canvas_.rectangle(kMargin, y_ - kSquare, kSquare, kSquare, note.fill);
            canvas_.text(kMargin + 2 * kSquare, y_, note.text);
            y_ += kLineHeight;
        }
        if (untold_ > 0) {
            canvas_.text(kMargin + 2 * kSquare, y_,
                         fmt::format("and {} more that are too small here", untold_));
            y_ += kLineHeight;
        }
    }

    void fold(uint64_t bytes)
    {
        y_ += kPadding;
        const std::string text = fmt::format("{} not mapped, folded", size_text(bytes));
        const double half = svg_text_width(text) / 2 + 2 * kPadding;
        const double middle = SvgCanvas::kWidth / 2.0;
        canvas_.zigzag(kMargin, middle - half, y_);
        canvas_.text(middle, y_ + kPadding, text, 13, SvgCanvas::Anchor::kMiddle);
        canvas_.zigzag(middle + half, kMargin + kStripWidth, y_);
        y_ += kLineHeight;
    }

    struct Note {
        SvgFill fill;
        std::string text;
    };

    SvgCanvas canvas_;
    double y_ = kPadding;      // where the next thing goes
    AddressRange whole_;       // of the strip
    std::vector<Note> notes_;  // below the strip
    uint64_t untold_ = 0;      // those beyond
};

}  // namespace

std::string svg_text(std::span<const ProcessSpace> processes)
{
    SvgPainter painter;
    std::string titles;
    for (const ProcessSpace& process : processes) {
        painter.process(process);
        titles += (titles.empty() ? "" : "; ") + process.title;
    }
    return painter.document("GPU address space of " + titles);
}

}  // namespace nimba::smi
