// SPDX-License-Identifier: MIT
#include "tools/smi/top/view_table.hpp"

#include "tools/smi/memory/faces.hpp"
#include "tools/smi/text/printable.hpp"
#include "tools/smi/text/size.hpp"
#include "tools/smi/top/clock_text.hpp"
#include "tools/smi/top/unicode.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace nimba::smi::top {
namespace {

// From the width of the table on that some columns are there.
constexpr int kWithShare = 50;
constexpr int kWithDevice = 66;
constexpr int kWithBar = 90;
constexpr int kBarShare = 4;  // of the width: one in so many columns

enum class ColumnKind : uint8_t { kSorted, kShare, kBar };

struct Column {
    const char* heading;
    int width;
    bool right;
    ColumnKind kind;
    SortKey key = SortKey::kPid;  // of a kSorted one
};

std::vector<Column> columns_for(int width, bool all_adapters)
{
    std::vector<Column> columns{{"PID", 9, true, ColumnKind::kSorted, SortKey::kPid}};
    if (all_adapters) {
        columns.push_back({"GPU", 5, true, ColumnKind::kSorted, SortKey::kGpu});
    }
    if (width >= kWithDevice) {
        columns.push_back({"DEVICE", 10, true, ColumnKind::kSorted, SortKey::kDevice});
        columns.push_back({"ALLOCS", 8, true, ColumnKind::kSorted, SortKey::kAllocations});
    }
    columns.push_back({"MEMORY", 11, true, ColumnKind::kSorted, SortKey::kMemory});
    if (width >= kWithShare) {
        columns.push_back({"SHARE", 6, true, ColumnKind::kShare});
    }
    if (width >= kWithBar) {
        columns.push_back({"", width / kBarShare, false, ColumnKind::kBar});
    }
    int taken = 0;
    for (const Column& column : columns) {
        taken += column.width + 1;
    }
    columns.push_back({"PROCESS", width - taken, false, ColumnKind::kSorted, SortKey::kProcess});
    return columns;
}

std::string sorted_cell(const ProcessRow& row, SortKey key)
{
    switch (key) {
        case SortKey::kPid:
            return row.pids;
        case SortKey::kGpu:
            return std::to_string(row.slot);
        case SortKey::kDevice:
            return handle_text(row.device);
        case SortKey::kAllocations:
            return std::to_string(row.allocations);
        case SortKey::kMemory:
            return size_text(row.bytes);
        case SortKey::kProcess:
            break;
    }
    return row.names;
}

std::string share_cell(const ProcessRow& row)
{
    return row.share ? fmt::format("{:.0f} %", *row.share * 100) : "n/a";
}

void draw_cell(Canvas& canvas, int x, int y, const Column& column, const std::string& text, Ink ink)
{
    const std::string shown = cut(text, column.width);
    canvas.put(column.right ? x + column.width - width_of(shown) : x, y, shown, ink);
}

// A bar as long as the share, at least one character for anything.
void draw_bar(Canvas& canvas, int x, int y, int width, const std::optional<double>& share)
{
    if (!share) {
        return;
    }
    const int least = *share > 0 ? 1 : 0;
    const int filled = std::clamp(static_cast<int>(std::lround(*share * width)), least, width);
    for (int column = 0; column < width; ++column) {
        const bool is_filled = column < filled;
        canvas.put(x + column, y, is_filled ? U'━' : U'─', is_filled ? Ink::kMemory : Ink::kFrame);
    }
}

void draw_row(Canvas& canvas, const Area& room, int y, const std::vector<Column>& columns,
              const ProcessRow& row)
{
    int x = room.x;
    for (const Column& column : columns) {
        switch (column.kind) {
            case ColumnKind::kSorted:
                draw_cell(canvas, x, y, column, sorted_cell(row, column.key), Ink::kPlain);
                break;
            case ColumnKind::kShare:
                draw_cell(canvas, x, y, column, share_cell(row), Ink::kPlain);
                break;
            case ColumnKind::kBar:
                draw_bar(canvas, x + 1, y, column.width - 2, row.share);
                break;
        }
        x += column.width + 1;
    }
}

void draw_head(Canvas& canvas, const Area& room, const std::vector<Column>& columns,
               const SortOrder& order)
{
    canvas.dye(room.x, room.y, room.width, Ink::kHead);
    int x = room.x;
    for (const Column& column : columns) {
        const bool sorted = column.kind == ColumnKind::kSorted && column.key == order.key;
        const std::string mark = !sorted ? "" : order.descending ? "▼" : "▲";
        draw_cell(canvas, x, room.y, column, column.heading + mark,
                  sorted ? Ink::kSorted : Ink::kHead);
        x += column.width + 1;
    }
}

std::string title_text(const State& state)
{
    const ProcessTable& table = state.table();
    const std::string count =
        table.hidden() == 0
            ? fmt::format("{}", table.rows().size())
            : fmt::format("{} of {}", table.rows().size(), table.rows().size() + table.hidden());
    const std::string filter =
        table.filter().empty() ? "" : fmt::format(", with \"{}\"", printable(table.filter()));
    const auto time = state.processes_time();
    return fmt::format(" Processes{}: {}{}{} ",
                       state.shows_all_processes() ? " of all adapters" : "", count, filter,
                       time ? " at " + clock_text(*time) : "");
}

// Why there is no row.
std::string empty_text(const State& state)
{
    if (!state.snapshot()) {
        return "";
    }
    if (state.table().hidden() > 0) {
        return "no process has that in its name or id; Esc shows all";
    }
    const AdapterState* const adapter = state.adapter();
    return adapter != nullptr && adapter->processes_known ? "no process uses the memory"
                                                          : "the processes are not known";
}

void draw_rows(Canvas& canvas, const Area& room, State& state)
{
    const auto columns = columns_for(room.width, state.shows_all_processes());
    draw_head(canvas, room, columns, state.table().order());
    const auto height = static_cast<std::size_t>(std::max(room.height - 1, 0));
    const std::size_t first = state.fit_table(height);
    const auto rows = state.table().rows();
    for (std::size_t i = 0; i < height && first + i < rows.size(); ++i) {
        const int y = room.y + 1 + static_cast<int>(i);
        draw_row(canvas, room, y, columns, rows[first + i]);
        if (first + i == state.table().chosen()) {
            canvas.dye(room.x, y, room.width, Ink::kSelected);
        }
    }
    if (rows.empty()) {
        canvas.put(room.x + 1, room.y + 1, cut(empty_text(state), room.width - 1), Ink::kDim);
    }
}

}  // namespace

void draw_table(Canvas& canvas, const Area& area, bool framed, State& state)
{
    Area room{area.x, area.y + 1, area.width, area.height - 1};
    if (framed) {
        draw_frame(canvas, area);
        room = {area.x + 1, area.y + 1, area.width - 2, area.height - 2};
    } else {
        for (int x = area.x; x < area.x + area.width; ++x) {
            canvas.put(x, area.y, U'─', Ink::kFrame);
        }
    }
    canvas.put(area.x + 1, area.y, title_text(state), Ink::kTitle, area.width - 2);
    draw_rows(canvas, room, state);
}

}  // namespace nimba::smi::top
