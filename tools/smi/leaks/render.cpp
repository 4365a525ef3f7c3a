// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/render.hpp"

#include "tools/smi/leaks/growth.hpp"
#include "tools/smi/memory/faces.hpp"
#include "tools/smi/text/csv.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/size.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <functional>
#include <tuple>

namespace nimba::smi {
namespace {

std::string change_text(int64_t change)
{
    return change > 0 ? fmt::format("+{}", change) : std::to_string(change);
}

Row text_row(const LeakRow& row)
{
    const GroupGrowth& group = row.group;
    return {std::to_string(row.adapter->slot),
            std::to_string(group.count),
            change_text(group.change),
            std::to_string(group.oldest_hits),
            fmt::format("{}x{}", group.shape.width, group.shape.height),
            size_text(group.shape.size),
            std::to_string(group.shape.hw_format),
            std::to_string(group.shape.at_type),
            size_text(group.bytes()),
            owners_text(group.owners)};
}

std::string snapshots_line(const LeaksResult& result)
{
    return fmt::format("{} snapshot{}\n", result.snapshots, result.snapshots == 1 ? "" : "s");
}

// The texts of all owners that are not empty, one after the other.
template <typename Text>
std::string joined(const std::vector<GroupOwner>& owners, Text text)
{
    std::vector<std::string> texts;
    std::ranges::transform(owners, std::back_inserter(texts), text);
    std::erase(texts, std::string{});
    return fmt::format("{}", fmt::join(texts, ", "));
}

Row csv_row(const LeakRow& row)
{
    const GroupGrowth& group = row.group;
    const auto pids = [](const GroupOwner& owner) { return pids_text(owner.processes, ""); };
    const auto names = [](const GroupOwner& owner) { return names_text(owner.processes, ""); };
    return {std::to_string(row.adapter->slot),
            row.adapter->bus_id,
            std::to_string(group.count),
            std::to_string(group.change),
            std::to_string(group.oldest_hits),
            std::to_string(group.shape.width),
            std::to_string(group.shape.height),
            std::to_string(group.shape.size),
            std::to_string(group.shape.hw_format),
            std::to_string(group.shape.at_type),
            std::to_string(group.bytes()),
            joined(group.owners, [](const auto& owner) { return handle_text(owner.device); }),
            joined(group.owners, pids),
            joined(group.owners, names)};
}

Document owners_json(const std::vector<GroupOwner>& owners)
{
    Document list = Document::array();
    for (const GroupOwner& owner : owners) {
        list.push_back({{"device", json_handle(owner.device)},
                        {"processes", json_processes(owner.processes)},
                        {"count", owner.count},
                        {"change", owner.change}});
    }
    return list;
}

Document row_json(const LeakRow& row)
{
    const GroupGrowth& group = row.group;
    return {{"slot", row.adapter->slot},
            {"bus_id", row.adapter->bus_id},
            {"count", group.count},
            {"change", group.change},
            {"oldest_hits", group.oldest_hits},
            {"width", group.shape.width},
            {"height", group.shape.height},
            {"size", group.shape.size},
            {"hw_format", group.shape.hw_format},
            {"at_type", group.shape.at_type},
            {"bytes", group.bytes()},
            {"owners", owners_json(group.owners)}};
}

Document adapters_json(const LeaksResult& result)
{
    Document list = Document::array();
    for (const AdapterHistory& history : result.adapters) {
        Document adapter = json_adapter(history.adapter());
        adapter["snapshots"] = history.snapshots();
        list.push_back(std::move(adapter));
    }
    return list;
}

}  // namespace

std::string leaks_progress(uint64_t snapshots, const std::optional<uint64_t>& count,
                           std::span<const AdapterHistory> adapters)
{
    uint64_t allocations = 0;
    uint64_t bytes = 0;
    GroupGrowth most;
    for (const AdapterHistory& history : adapters) {
        for (GroupGrowth& group : history.groups()) {
            allocations += group.count;
            bytes += group.bytes();
            if (group.change > most.change) {
                most = std::move(group);
            }
        }
    }
    return fmt::format(
        "snapshot {}{}: {} allocation{}, {}, {}", snapshots,
        count ? fmt::format(" of {}", *count) : "", allocations, allocations == 1 ? "" : "s",
        size_text(bytes),
        most.change > 0 ? fmt::format("{} of {}", change_text(most.change), shape_text(most.shape))
                        : "no growth");
}

std::vector<LeakRow> leak_rows(const LeaksResult& result, const std::optional<std::size_t>& top)
{
    std::vector<LeakRow> rows;
    for (const AdapterHistory& history : result.adapters) {
        for (GroupGrowth& group : history.groups()) {
            rows.push_back({&history.adapter(), std::move(group)});
        }
    }
    std::ranges::stable_sort(rows, std::greater{}, [](const LeakRow& row) {
        return std::tuple{row.group.change, row.group.bytes()};
    });
    rows.resize(std::min(rows.size(), top.value_or(rows.size())));
    return rows;
}

std::string leaks_text(const LeaksResult& result, const std::vector<LeakRow>& rows)
{
    const bool any = std::ranges::any_of(
        result.adapters, [](const AdapterHistory& history) { return history.snapshots() > 0; });
    if (!any) {
        return {};
    }
    std::vector<Row> lines{{"SLOT", "COUNT", "CHANGE", "OLDEST", "SHAPE", "SIZE", "FORMAT", "TYPE",
                            "MEMORY", "HELD BY"}};
    std::ranges::transform(rows, std::back_inserter(lines), text_row);
    return aligned(lines, {1, 2, 3, 5, 8}) + snapshots_line(result);
}

std::string leaks_csv(const std::vector<LeakRow>& rows)
{
    std::vector<Row> lines{{"slot", "bus_id", "count", "change", "oldest_hits", "width", "height",
                            "size", "hw_format", "at_type", "bytes", "devices", "pids",
                            "processes"}};
    std::ranges::transform(rows, std::back_inserter(lines), csv_row);
    return csv_text(lines);
}

std::string leaks_json(const LeaksResult& result, const std::vector<LeakRow>& rows,
                       std::chrono::milliseconds interval)
{
    Document groups = Document::array();
    for (const LeakRow& row : rows) {
        groups.push_back(row_json(row));
    }
    return json_text({{"schema", "nimba-smi.leaks.1"},
                      {"snapshots", result.snapshots},
                      {"interval_seconds", std::chrono::duration<double>(interval).count()},
                      {"adapters", adapters_json(result)},
                      {"groups", std::move(groups)},
                      {"errors", json_errors(result.problems)}});
}

}  // namespace nimba::smi
