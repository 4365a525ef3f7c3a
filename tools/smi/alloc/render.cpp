// SPDX-License-Identifier: MIT
#include "tools/smi/alloc/render.hpp"

#include "tools/smi/memory/faces.hpp"
#include "tools/smi/text/csv.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/size.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace nimba::smi {
namespace {

// The fields that are shown as handles, and those that are shown as unsigned numbers.
constexpr std::array kHandles{&Allocation::handle, &Allocation::device, &Allocation::gpu_virt_addr};
constexpr std::array kUnsigned{&Allocation::size};

bool is_among(int32_t Allocation::*member, std::span<int32_t Allocation::*const> members)
{
    return std::ranges::find(members, member) != members.end();
}

Document field_json(const Allocation& allocation, const AllocationField& field)
{
    const int32_t value = allocation.*field.member;
    if (is_among(field.member, kHandles)) {
        return json_handle(unsigned_bits(value));
    }
    return is_among(field.member, kUnsigned) ? Document(unsigned_bits(value)) : Document(value);
}

std::string field_text(const Allocation& allocation, const AllocationField& field)
{
    const int32_t value = allocation.*field.member;
    if (is_among(field.member, kHandles)) {
        return handle_text(unsigned_bits(value));
    }
    return is_among(field.member, kUnsigned) ? std::to_string(unsigned_bits(value))
                                             : std::to_string(value);
}

Row text_row(const ListedAllocation& row)
{
    const Allocation& allocation = *row.allocation;
    return {std::to_string(row.adapter->slot),
            handle_text(unsigned_bits(allocation.handle)),
            handle_text(unsigned_bits(allocation.device)),
            pids_text(row.processes, "-"),
            size_text(bytes_of(allocation)),
            allocation.segmentid < 0 ? "-" : std::to_string(allocation.segmentid),
            fmt::format("{}x{}", allocation.width, allocation.height),
            std::to_string(allocation.hw_format),
            std::to_string(allocation.at_type),
            names_text(row.processes, "-")};
}

std::string count_text(const AllocationCount& count)
{
    return fmt::format("{} allocation{}, {}", count.allocations, count.allocations == 1 ? "" : "s",
                       size_text(count.bytes));
}

std::string totals_line(const Listing& listing)
{
    if (listing.matched == listing.all) {
        return count_text(listing.all) + '\n';
    }
    return fmt::format("{} of {}\n", count_text(listing.matched), count_text(listing.all));
}

Document count_json(const AllocationCount& count)
{
    return {{"allocations", count.allocations}, {"bytes", count.bytes}};
}

Document row_json(const ListedAllocation& row)
{
    Document object = Document::object();
    // Every key is a new one, which needs no search among those that are there.
    auto& members = object.get_ref<Document::object_t&>();
    members.reserve(kAllocationFields.size() + 3);
    const auto add = [&](const char* key, Document value) {
        members.Container::emplace_back(key, std::move(value));
    };
    add("slot", row.adapter->slot);
    add("bus_id", row.adapter->bus_id);
    add("processes", json_processes(row.processes));
    for (const AllocationField& field : kAllocationFields) {
        add(field.name, field_json(*row.allocation, field));
    }
    return object;
}

// One line for each allocation: there may be many.
std::string rows_json(const std::vector<ListedAllocation>& rows)
{
    std::string text{"["};
    for (const ListedAllocation& row : rows) {
        text += text.size() == 1 ? "\n    " : ",\n    ";
        text += row_json(row).dump(-1, ' ', false, Document::error_handler_t::replace);
    }
    return text + (rows.empty() ? "]" : "\n  ]");
}

}  // namespace

std::string alloc_text(const MemorySnapshot& snapshot, const Listing& listing)
{
    if (snapshot.adapters.empty()) {
        return {};
    }
    std::vector<Row> rows{
        {"SLOT", "HANDLE", "DEVICE", "PID", "SIZE", "SEG", "SHAPE", "FORMAT", "TYPE", "PROCESS"}};
    std::ranges::transform(listing.rows, std::back_inserter(rows), text_row);
    return aligned(rows, {4}) + totals_line(listing);
}

std::string alloc_csv(const Listing& listing)
{
    Row header{"slot", "bus_id", "pid", "process"};
    for (const AllocationField& field : kAllocationFields) {
        header.emplace_back(field.name);
    }
    std::vector<Row> rows{std::move(header)};
    for (const ListedAllocation& listed : listing.rows) {
        Row row{std::to_string(listed.adapter->slot), listed.adapter->bus_id,
                pids_text(listed.processes, ""), names_text(listed.processes, "")};
        for (const AllocationField& field : kAllocationFields) {
            row.push_back(field_text(*listed.allocation, field));
        }
        rows.push_back(std::move(row));
    }
    return csv_text(rows);
}

std::string alloc_json(const MemorySnapshot& snapshot, const Listing& listing)
{
    // The rows are put in as text, which takes much less memory than a document of them. No text
    // value can look like the empty list in which they go: its quotation marks would be escaped.
    constexpr std::string_view kEmptyList = "\"allocations\": []";
    std::string text = json_text({{"schema", "nimba-smi.alloc.1"},
                                  {"adapters", json_adapters(snapshot)},
                                  {"allocations", Document::array()},
                                  {"matched", count_json(listing.matched)},
                                  {"all", count_json(listing.all)},
                                  {"errors", json_errors(snapshot.problems)}});
    const auto list = text.find(kEmptyList) + kEmptyList.size() - 2;
    return text.replace(list, 2, rows_json(listing.rows));
}

}  // namespace nimba::smi
