// SPDX-License-Identifier: MIT
#include "tools/smi/overview/printer.hpp"

#include "tools/smi/monitor/time_text.hpp"
#include "tools/smi/overview/csv.hpp"
#include "tools/smi/overview/text.hpp"
#include "tools/smi/snapshot/json.hpp"
#include "tools/smi/text/json.hpp"

#include <fmt/core.h>

#include <vector>

namespace nimba::smi {

std::string OverviewPrinter::begin() const
{
    return form_ == MonitorForm::kCsv
               ? csv_text({joined_row(watching_ ? Row{"time"} : Row{}, overview_csv_header())})
               : std::string{};
}

std::string OverviewPrinter::snapshot(const MachineSnapshot& snapshot)
{
    return form_ == MonitorForm::kJson  ? json(snapshot)
           : form_ == MonitorForm::kCsv ? csv(snapshot)
                                        : text(snapshot);
}

std::string OverviewPrinter::text(const MachineSnapshot& snapshot)
{
    std::string time;
    if (watching_) {
        time = fmt::format("{}{}\n", is_first_ ? "" : "\n", local_text(snapshot.time));
    }
    is_first_ = false;
    return time + overview_text(snapshot, top_, style_);
}

std::string OverviewPrinter::csv(const MachineSnapshot& snapshot) const
{
    std::vector<Row> rows;
    for (const AdapterState& adapter : snapshot.adapters) {
        rows.push_back(joined_row(watching_ ? Row{utc_text(snapshot.time)} : Row{},
                                  overview_csv_row(adapter)));
    }
    return csv_text(rows);
}

std::string OverviewPrinter::json(const MachineSnapshot& snapshot) const
{
    const Document document = snapshot_json(snapshot);
    return watching_ ? json_line(document) : json_text(document);
}

}  // namespace nimba::smi
