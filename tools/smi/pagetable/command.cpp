// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/command.hpp"

#include "tools/smi/pagetable/collect.hpp"
#include "tools/smi/pagetable/entry_stream.hpp"
#include "tools/smi/pagetable/lookup_render.hpp"
#include "tools/smi/pagetable/map.hpp"
#include "tools/smi/pagetable/svg.hpp"
#include "tools/smi/pagetable/tree.hpp"
#include "tools/smi/text/atomic_file.hpp"
#include "tools/smi/text/colour.hpp"
#include "tools/smi/text/terminal.hpp"

#include <unistd.h>

#include <fmt/core.h>

#include <utility>

namespace nimba::smi {
namespace {

Report summary(const Options& options)
{
    Report report;
    if (const auto sums = collect_sums(options, report.problems)) {
        report.output = summary_text(*sums);
    }
    return report;
}

std::string view_text(const PageTableOptions& tables, std::span<const ProcessSpace> spaces)
{
    return tables.tree      ? tree_text(spaces, tables.depth.value_or(kDepthOfPages))
           : tables.address ? lookup_text(spaces, *tables.address)
                            : map_text(spaces, {is_colour_wanted(STDOUT_FILENO),
                                                terminal_columns(STDOUT_FILENO)});
}

std::string view_document(const PageTableOptions& tables, std::span<const ProcessSpace> spaces,
                          std::span<const Problem> problems)
{
    return tables.tree
               ? tree_json(tables.split, spaces, tables.depth.value_or(kDepthOfPages), problems)
           : tables.address ? lookup_json(tables.split, spaces, *tables.address, problems)
                            : map_json(tables.split, spaces, problems);
}

// Draws into the file, or into the report for standard output. Without an address space there is
// nothing to draw.
void draw(const std::string& file, std::span<const ProcessSpace> spaces, Report& report)
{
    if (spaces.empty()) {
        return;
    }
    std::string picture = svg_text(spaces);
    if (file == "-") {
        report.output = std::move(picture);
    } else if (const int error = write_file(file, picture); error != 0) {
        report.problems.push_back({ExitStatus::kFailed, std::nullopt, std::nullopt,
                                   fmt::format("cannot write {}: {}", file, std::strerror(error))});
    }
}

}  // namespace

Report pagetable_command(const Options& options)
{
    const PageTableOptions& tables = options.page_tables;
    if (!tables.has_view()) {
        return options.json || options.csv ? Report{{}, stream_entries(options, STDOUT_FILENO)}
                                           : summary(options);
    }
    Report report;
    const auto spaces = collect_spaces(options, report.problems);
    if (tables.svg) {
        draw(*tables.svg, spaces, report);
    } else {
        report.output = options.json ? view_document(tables, spaces, report.problems)
                                     : view_text(tables, spaces);
    }
    return report;
}

}  // namespace nimba::smi
