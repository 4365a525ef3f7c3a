// SPDX-License-Identifier: MIT
// The two nodes of a device, and the name of its process.
#include "core/handles.hpp"
#include "core/line_pieces.hpp"
#include "core/whole_node.hpp"
#include "nimba_mgmt_interface.h"
#include "pagetable/dump_line.hpp"
#include "pagetable/process_command.hpp"
#include "pagetable/tree_builder.hpp"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace nimba {
namespace {

// The nodes are read by lines of 512 bytes at most, a NUL behind them included.
using NodeLines = LinePieces<511>;
static_assert(NodeLines::kLookAhead >= kPlainLineLookAhead);

// Fills the whole field: the text as far as it fits, then zeros.
template <std::size_t size>
void set_text(std::string_view text, char (&field)[size])
{
    const std::size_t length = text.copy(field, size - 1);
    std::fill(field + length, field + size, '\0');
}

void add_line(std::string_view line, TreeBuilder& tree)
{
    switch (kind_of(line)) {
        case LineKind::kPageTable:
            tree.add(parse_page_table_line(line));
            break;
        case LineKind::kSubTable:
            tree.add(parse_sub_table_line(line));
            break;
        case LineKind::kOther:
            break;
    }
}

void add_lines(std::string_view lines, TreeBuilder& tree)
{
    SubTableLine plain;
    while (!lines.empty()) {
        std::size_t length = parse_plain_sub_table_line(lines.data(), plain);
        if (length > 0 && length <= lines.size()) {
            tree.add(plain);
        } else {
            const std::string_view line = NodeLines::first(lines);
            add_line(text_of(line), tree);
            length = line.size();
        }
        lines.remove_prefix(length);
    }
}

// What the command writes. Nothing when it cannot be started.
std::optional<std::string> output_of(const std::string& command)
{
    const Command running = start_command(command.c_str());
    if (!running) {
        return std::nullopt;
    }
    std::string output;
    read_to_end(::fileno(running.get()), output);
    return output;
}

}  // namespace
}  // namespace nimba

int32_t get_Pid_info(data_vectors* device, const char* path)
{
    bool is_found = false;
    const bool is_read = nimba::NodeLines{}.read(path, [&](std::string_view lines) {
        while (!is_found && !lines.empty()) {
            const std::string_view line = nimba::NodeLines::first(lines);
            const std::string_view text = nimba::text_of(line);
            is_found = text.find("pid") != std::string_view::npos;
            if (is_found) {
                nimba::set_text(nimba::process_id_in(text), device->pid);
            }
            lines.remove_prefix(line.size());
        }
        return !is_found;
    });
    if (!is_read) {
        std::puts("Fail to read pid info. skip...");
        return -1;
    }
    return 0;
}

int32_t get_AppName_info(data_vectors* device)
{
    const std::string_view pid{device->pid};
    if (pid == "0") {
        nimba::set_text("0", device->app_name);
        return 0;
    }
    const auto output = nimba::output_of(nimba::process_command(pid));
    if (!output) {
        return -1;
    }
    std::string_view name{*output};
    if (name.ends_with('\n')) {
        name.remove_suffix(1);
    }
    nimba::set_text(name, device->app_name);
    return 0;
}

int32_t get_pagetable_info(data_vectors* device, const char* path)
{
    nimba::TreeBuilder tree{*device};
    const bool is_read = nimba::NodeLines{}.read(path, [&](std::string_view lines) {
        nimba::add_lines(lines, tree);
        return true;
    });
    return is_read ? 0 : -1;
}
