// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/tree.hpp"

#include "tools/smi/pagetable/faces.hpp"
#include "tools/smi/pagetable/options.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/core.h>

namespace nimba::smi {
namespace {

// Where the pages of a run are in memory, as the driver tells it when that is no number.
std::string physical_text(const AddressSpace& space, const PageRun& run)
{
    return run.physical ? address_text(*run.physical)
                        : fmt::format("\"{}\"", space.unreadable.at(run.address));
}

std::string run_text(const AddressSpace& space, const PageRun& run)
{
    return fmt::format("{}  {} x {}  segment {}{}  -> {}", range_text(run.range()), run.pages,
                       size_text(run.kind.page_size(), SizeUnit::kAuto), run.kind.segment,
                       run.kind.snooped ? "  snooped" : "", physical_text(space, run));
}

void append_table(std::string& text, const AddressSpace& space, const TableEntry& table, int depth)
{
    append_line(text, table.level, table_text(table));
    if (depth == kDepthOfPages) {
        for (const PageRun& run : runs_of(space, table)) {
            append_line(text, table.level + 1, run_text(space, run));
        }
    }
    if (table.level < depth) {
        for (const TableEntry& below : tables_below(space, table)) {
            append_table(text, space, below, depth);
        }
    }
}

Document json_run(const PageRun& run)
{
    Document object = json_range(run.range());
    object.update({{"first_index", run.first_index}, {"pages", run.pages}});
    object.update(json_kind(run.kind));
    object["physical"] = run.physical ? Document(address_text(*run.physical)) : Document(nullptr);
    return object;
}

Document json_tree(const AddressSpace& space, const TableEntry& table, int depth)
{
    Document object = json_table(table);
    if (depth == kDepthOfPages) {
        Document runs = Document::array();
        for (const PageRun& run : runs_of(space, table)) {
            runs.push_back(json_run(run));
        }
        object["runs"] = std::move(runs);
    }
    if (table.level < depth && table.level < kPageTableLevels - 1) {
        Document tables = Document::array();
        for (const TableEntry& below : tables_below(space, table)) {
            tables.push_back(json_tree(space, below, depth));
        }
        object["tables"] = std::move(tables);
    }
    return object;
}

}  // namespace

std::string table_text(const TableEntry& table)
{
    return fmt::format("level {}  index {}  {}  table {}  buffer {}", table.level, table.index,
                       range_text(table.range), hexadecimal_text(table.address), table.buffer);
}

Document json_table(const TableEntry& table)
{
    Document object{{"level", table.level}, {"index", table.index}};
    object.update(json_range(table.range));
    object.update({{"address", json_hexadecimal(table.address)}, {"buffer", table.buffer}});
    return object;
}

std::string tree_text(std::span<const ProcessSpace> processes, int depth)
{
    std::string text;
    for (const ProcessSpace& process : processes) {
        append_line(text, 0, process.title);
        for (const TableEntry& table : process.space.tables.front()) {
            append_table(text, process.space, table, depth);
        }
    }
    return text;
}

std::string tree_json(const AddressSplit& split, std::span<const ProcessSpace> processes, int depth,
                      std::span<const Problem> problems)
{
    return view_json(
        "nimba-smi.pagetable-tree.1", split, processes,
        [depth](const ProcessSpace& process) {
            Document tables = Document::array();
            for (const TableEntry& table : process.space.tables.front()) {
                tables.push_back(json_tree(process.space, table, depth));
            }
            return Document{{"tables", std::move(tables)}};
        },
        problems);
}

}  // namespace nimba::smi
