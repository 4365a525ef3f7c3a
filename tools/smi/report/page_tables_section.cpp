// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/svg_canvas.hpp"
#include "tools/smi/report/sections.hpp"
#include "tools/smi/report/value.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi::page {
namespace {

constexpr std::size_t kMostProcesses = 20;
constexpr std::size_t kMostPatches = 64;  // of a process
constexpr std::size_t kMostKinds = 3;
constexpr std::size_t kMostHandles = 3;
constexpr std::size_t kMostErrors = 20;
constexpr std::size_t kFills = 5;  // by segment, the last for all from there on

// "0x10000202000"
std::optional<uint64_t> address_of(const Document& value)
{
    const std::string text = value.is_string() ? value.get<std::string>() : "";
    if (!text.starts_with("0x")) {
        return std::nullopt;
    }
    uint64_t address = 0;
    const auto [end, error] =
        std::from_chars(text.data() + 2, text.data() + text.size(), address, 16);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional{address}
                                                                    : std::nullopt;
}

struct Patch {
    uint64_t begin = 0;
    uint64_t end = 0;
    const Document* record = nullptr;

    [[nodiscard]] uint64_t size() const { return end - begin; }
};

// The patches of a process that make sense, by address.
std::vector<Patch> patches_of(const Document& process)
{
    std::vector<Patch> patches;
    for (const Document& record : list(process, {"patches"})) {
        const auto begin = address_of(member(record, {"begin"}));
        const auto end = address_of(member(record, {"end"}));
        const bool follows = patches.empty() || (begin && *begin >= patches.back().end);
        if (begin && end && *begin < *end && follows) {
            patches.push_back({*begin, *end, &record});
        }
    }
    return patches;
}

// The segment of a patch; nothing when it has several.
std::optional<uint64_t> segment_of(const Document& record)
{
    const Document& kinds = list(record, {"kinds"});
    if (kinds.empty()) {
        return std::nullopt;
    }
    const Document& segment = member(kinds.front(), {"segment"});
    const bool one = std::ranges::all_of(
        kinds, [&](const Document& kind) { return member(kind, {"segment"}) == segment; });
    return one ? bytes_of(segment) : std::nullopt;
}

// A strip of all patches, to scale but for what lies between them: a gap that is larger than the
// largest patch is folded to a narrow one.
std::string strip(std::span<const Patch> patches, const std::string& title)
{
    constexpr double kWidth = 1000;
    constexpr double kHeight = 40;
    constexpr double kFold = 14;
    constexpr double kLeast = 1.5;
    const uint64_t largest = std::ranges::max(patches, {}, &Patch::size).size();
    double scaled = 0;
    double fixed = 0;
    for (std::size_t i = 0; i < patches.size(); ++i) {
        scaled += static_cast<double>(patches[i].size());
        fixed += kLeast;
        const uint64_t gap = i == 0 ? 0 : patches[i].begin - patches[i - 1].end;
        (gap > largest ? fixed : scaled) += gap > largest ? kFold : static_cast<double>(gap);
    }
    const double scale = std::max(0.0, kWidth - fixed) / scaled;
    std::string body;
    double x = 0;
    for (std::size_t i = 0; i < patches.size(); ++i) {
        const uint64_t gap = i == 0 ? 0 : patches[i].begin - patches[i - 1].end;
        if (gap > largest) {
            body += fmt::format(
                R"(<path class="fold" d="M{:.1f} 0 l-4 13 8 13 -4 14"><title>{}</title></path>)"
                "\n",
                x + kFold / 2, xml_text(size_text(gap) + " not mapped, folded"));
        }
        x += gap > largest ? kFold : static_cast<double>(gap) * scale;
        const double width = kLeast + static_cast<double>(patches[i].size()) * scale;
        const auto segment = segment_of(*patches[i].record);
        body += fmt::format(
            R"(<rect class="{}" x="{:.1f}" y="2" width="{:.2f}" height="{}"><title>{}</title></rect>)"
            "\n",
            segment ? fmt::format("fill{}", std::min<uint64_t>(*segment, kFills - 1)) : "mixed", x,
            width, kHeight - 4,
            xml_text(fmt::format("0x{:x} to 0x{:x}, {}", patches[i].begin, patches[i].end,
                                 size_text(patches[i].size()))));
        x += width;
    }
    const std::string name = xml_text(title);
    return fmt::format(
        R"(<svg class="strip" viewBox="0 0 {} {}" role="img" aria-label="{}" preserveAspectRatio="none"><title>{}</title>)"
        "\n{}</svg>\n",
        kWidth, kHeight, name, name, body);
}

// "segment 0, 4 KiB pages; ..."
std::string kinds_text(const Document& record)
{
    std::string text;
    std::size_t told = 0;
    const Document& kinds = list(record, {"kinds"});
    for (const Document& kind : kinds) {
        if (++told > kMostKinds) {
            return text + fmt::format("; {} more", whole_size(record, "kinds") - kMostKinds);
        }
        const Document& snooped = member(kind, {"snooped"});
        text +=
            fmt::format("{}segment {}, {} pages{}", text.empty() ? "" : "; ",
                        text_of(member(kind, {"segment"})), size_of(member(kind, {"page_size"})),
                        snooped.is_boolean() && snooped.get<bool>() ? ", snooped" : "");
    }
    return text.empty() ? kUnknown : text;
}

std::string handles_text(const Document& record)
{
    const Document& allocations = list(record, {"allocations"});
    std::string text;
    for (std::size_t i = 0; i < std::min(allocations.size(), kMostHandles); ++i) {
        text += (text.empty() ? "" : ", ") + text_of(member(allocations[i], {"handle"}));
    }
    if (const std::size_t all = whole_size(record, "allocations"); all > kMostHandles) {
        text += fmt::format(" and {} more", all - kMostHandles);
    }
    return text.empty() ? kUnknown : text;
}

Html process_html(const Document& process)
{
    const std::string title = fmt::format("process {} ({})", text_of(member(process, {"pid"})),
                                          text_of(member(process, {"name"})));
    Html html = heading("GPU address space of " + title);
    html += paragraph(fmt::format("{} mapped in {} stretches of like pages",
                                  size_of(member(process, {"mapped"})),
                                  text_of(member(process, {"stretches"}))));
    std::vector<Patch> patches = patches_of(process);
    if (patches.empty()) {
        return html;
    }
    patches.resize(std::min(patches.size(), kMostPatches));
    html += Html::markup(strip(patches, "Map of the GPU address space of " + title));
    std::vector<Cells> rows;
    rows.reserve(patches.size());
    for (const Patch& patch : patches) {
        rows.push_back(
            {Html::text(fmt::format("0x{:x}", patch.begin)), Html::text(size_text(patch.size())),
             Html::text(size_of(member(*patch.record, {"mapped"}))),
             Html::text(kinds_text(*patch.record)), Html::text(handles_text(*patch.record))});
    }
    html +=
        table("Mapped patches of " + title,
              {{"Address"}, {"Size", true}, {"Mapped", true}, {"Pages"}, {"Allocations"}}, rows);
    html += left_out(rows.size(), whole_size(process, "patches"), "patches");
    return html;
}

// Which colour is which segment.
Html segment_key()
{
    Html html;
    for (std::size_t i = 0; i <= kFills; ++i) {
        const bool mixed = i == kFills;
        html += Html::markup(fmt::format(
            R"(<svg class="patch" viewBox="0 0 14 14" aria-hidden="true"><rect class="{}" width="14" height="14"/></svg> )",
            mixed ? "mixed" : fmt::format("fill{}", i)));
        html += Html::text(mixed             ? "several segments"
                           : i + 1 == kFills ? fmt::format("segment {} and beyond, ", i)
                                             : fmt::format("segment {}, ", i));
    }
    return element("p", html);
}

// The errors that a document tells itself.
Html errors_of(const Document& document)
{
    Html html;
    const Document& errors = list(document, {"errors"});
    for (std::size_t i = 0; i < std::min(errors.size(), kMostErrors); ++i) {
        html += paragraph(text_of(member(errors[i], {"message"})));
    }
    html += left_out(kMostErrors, errors.size(), "errors");
    return html;
}

}  // namespace

Html page_tables_section(const Content& content)
{
    const Document& document = content.document(kPageTables);
    const Document& processes = list(document, {"processes"});
    Html html;
    std::size_t shown = 0;
    for (const Document& process : processes) {
        if (shown < kMostProcesses) {
            html += process_html(process);
            ++shown;
        }
    }
    if (html.empty()) {
        html = paragraph("No page tables were read.");
        html += errors_of(document);
        return html;
    }
    html += segment_key();
    html += left_out(shown, whole_size(document, "processes"), "address spaces");
    return html;
}

}  // namespace nimba::smi::page
