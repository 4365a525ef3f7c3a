// SPDX-License-Identifier: MIT
#include "device_context_reader.hpp"

#include "allocation_values_reader.hpp"
#include "claims.hpp"
#include "entry_numbers.hpp"
#include "message.hpp"
#include "page_tables_reader.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace nimba::sim {
namespace {

constexpr std::array<std::string_view, 6> kContextKeys{"entry",   "pid",     "handle",
                                                       "further", "vm_info", "page_tables"};

constexpr int64_t kMostContexts = 10000;
constexpr int64_t kFirstGeneratedHandle = 0x1001;

std::map<std::string, std::string> read_further(const TableReader& table)
{
    auto lines = table.texts_by_name_or("further", {}).value_or(TableReader::Texts{});
    const auto is_fit = [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; };
    for (const auto& [key, value] : lines) {
        if (key.empty() || !std::ranges::all_of(key, is_fit) || key == "pid" || key == "handle") {
            table.reject_name("further", key,
                              "a name of letters, digits, \"_\", not \"pid\" or \"handle\"");
        }
        if (has_control_characters(value)) {
            table.reject_name("further", key, "a text of one line behind every name");
        }
    }
    return lines;
}

std::vector<int64_t> read_pids(const TableReader& generated, const std::vector<Process>& processes)
{
    std::vector<int64_t> pids;
    if (generated.has("pids")) {
        pids = generated.integers("pids", 1, kGreatestPid);
    } else {
        for (const Process& process : processes) {
            pids.push_back(process.pid);
        }
    }
    if (pids.empty()) {
        generated.reject("pids", "one or more process ids, or a [[process]]");
    }
    return pids;
}

}  // namespace

std::vector<DeviceContext> read_device_contexts(const TableReader& adapter,
                                                const std::optional<TableReader>& generated,
                                                const std::vector<Process>& processes)
{
    std::vector<DeviceContext> contexts;
    EntryNumbers entries{"context entry"};
    Claims claims;
    std::set<int64_t> handles;
    for (const TableReader& table : adapter.tables("context", kContextKeys)) {
        DeviceContext context;
        context.entry = entries.read(table);
        context.pid = read_node_value(table, "pid", 1, kGreatestPid);
        context.handle = read_node_value(table, "handle", 0, kGreatestHandle);
        if (const auto* handle = std::get_if<int64_t>(&context.handle)) {
            claims.take("context handle", std::to_string(*handle), table, "handle");
            handles.insert(*handle);
        }
        context.further = read_further(table);
        context.vm_info = table.any_text("vm_info");
        context.page_tables = read_page_tables(table);
        if (context.vm_info && context.page_tables) {
            table.reject("vm_info", "no such key beside 'page_tables'");
        }
        contexts.push_back(std::move(context));
    }
    const int64_t count = generated ? generated->integer_or("contexts", 0, kMostContexts, 0) : 0;
    const auto pids = count > 0 ? read_pids(*generated, processes) : std::vector<int64_t>{};
    int64_t handle = kFirstGeneratedHandle;
    for (std::size_t index = 0; index < static_cast<std::size_t>(count); ++index, ++handle) {
        while (handles.contains(handle)) {
            ++handle;
        }
        contexts.push_back({entries.next(), pids[index % pids.size()], handle, {}, {}, {}});
    }
    return contexts;
}

}  // namespace nimba::sim
