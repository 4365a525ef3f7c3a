// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/lookup_render.hpp"

#include "tools/smi/pagetable/faces.hpp"
#include "tools/smi/pagetable/lookup.hpp"
#include "tools/smi/pagetable/tree.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/core.h>

namespace nimba::smi {
namespace {

// Of what stands below the path.
int depth_below(const AddressLookup& lookup)
{
    return static_cast<int>(lookup.path.size()) + 1;
}

std::string page_text(const MappedPage& page)
{
    return fmt::format("page {}  {}  {}  segment {}{}", page.index, range_text(page.range),
                       size_text(page.kind.page_size(), SizeUnit::kAuto), page.kind.segment,
                       page.kind.snooped ? "  snooped" : "");
}

// Why the path goes no further.
std::string end_text(const AddressSplit& split, const AddressLookup& lookup)
{
    const int level = static_cast<int>(lookup.path.size());
    if (lookup.address >> split.total() != 0) {
        return fmt::format("beyond the address space of {} bits", split.total());
    }
    if (level == kPageTableLevels) {
        return "the path ends here: its sub-table has no entry for the address";
    }
    return fmt::format("the path ends here: level {} has no entry {}", level,
                       lookup.address >> split.table_shift(level));
}

std::string extent_text(const std::optional<AddressRange>& extent)
{
    return extent ? fmt::format("{}  {}", range_text(*extent), size_text(extent->size()))
                  : "nothing";
}

std::string allocation_text(const VmAllocation& allocation, uint64_t address)
{
    return fmt::format("{}  {}  {}  offset {:#x}", hexadecimal_text(allocation.handle),
                       range_text(allocation.range), size_text(allocation.range.size()),
                       address - allocation.range.begin);
}

void append_page(std::string& text, const ProcessSpace& process, const AddressLookup& lookup)
{
    const MappedPage& page = *lookup.page;
    append_line(text, depth_below(lookup), page_text(page));
    append_line(text, 1,
                "physical address  " +
                    (page.physical ? address_text(*page.physical)
                                   : fmt::format("unknown: the driver tells \"{}\"",
                                                 process.space.unreadable.at(page.range.begin))));
}

void append_lookup(std::string& text, const ProcessSpace& process, uint64_t address)
{
    const AddressLookup lookup = look_up(process, address);
    append_line(text, 0,
                fmt::format("{}: {} is {}mapped", process.title, address_text(address),
                            lookup.page ? "" : "not "));
    for (const TableEntry& table : lookup.path) {
        append_line(text, 1 + table.level, table_text(table));
    }
    if (lookup.page) {
        append_page(text, process, lookup);
    } else {
        append_line(text, depth_below(lookup), end_text(process.space.split, lookup));
        append_line(text, 1, "mapped below      " + extent_text(lookup.below));
        append_line(text, 1, "mapped above      " + extent_text(lookup.above));
    }
    for (const VmAllocation& allocation : lookup.allocations) {
        append_line(text, 1, "allocation        " + allocation_text(allocation, address));
    }
    if (lookup.allocations.empty()) {
        append_line(text, 1, "allocation        none has the address");
    }
}

Document json_page(const MappedPage& page)
{
    Document object{{"index", page.index}};
    object.update(json_range(page.range));
    object.update(json_kind(page.kind));
    object["physical"] = page.physical ? Document(address_text(*page.physical)) : Document(nullptr);
    return object;
}

Document json_lookup(const AddressLookup& lookup)
{
    const auto extent = [](const std::optional<AddressRange>& range) {
        return range ? json_range(*range) : Document(nullptr);
    };
    Document path = Document::array();
    for (const TableEntry& table : lookup.path) {
        path.push_back(json_table(table));
    }
    Document allocations = Document::array();
    for (const VmAllocation& allocation : lookup.allocations) {
        Document object = json_allocation(allocation);
        object["offset"] = lookup.address - allocation.range.begin;
        allocations.push_back(std::move(object));
    }
    return {{"address", address_text(lookup.address)},
            {"mapped", lookup.page.has_value()},
            {"path", std::move(path)},
            {"page", lookup.page ? json_page(*lookup.page) : Document(nullptr)},
            {"below", extent(lookup.below)},
            {"above", extent(lookup.above)},
            {"allocations", std::move(allocations)}};
}

}  // namespace

std::string lookup_text(std::span<const ProcessSpace> processes, uint64_t address)
{
    std::string text;
    for (const ProcessSpace& process : processes) {
        append_lookup(text, process, address);
    }
    return text;
}

std::string lookup_json(const AddressSplit& split, std::span<const ProcessSpace> processes,
                        uint64_t address, std::span<const Problem> problems)
{
    return view_json(
        "nimba-smi.pagetable-va.1", split, processes,
        [address](const ProcessSpace& process) { return json_lookup(look_up(process, address)); },
        problems);
}

}  // namespace nimba::smi
