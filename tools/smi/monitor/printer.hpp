// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/memory/faces.hpp"
#include "tools/smi/monitor/snapshot.hpp"
#include "tools/smi/monitor/time_text.hpp"
#include "tools/smi/monitor/view.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/text/csv.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/table.hpp"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {

enum class MonitorForm { kText, kCsv, kJson };

inline MonitorForm form_of(const Options& options)
{
    return options.json ? MonitorForm::kJson : options.csv ? MonitorForm::kCsv : MonitorForm::kText;
}

// The columns of a table that has others before it.
std::vector<std::size_t> moved_columns(std::vector<std::size_t> columns, std::size_t before);

// `behind` in one row with `before`.
Row joined_row(Row before, const Row& behind);

// Prints the samples of a command in the form that the options ask for. In a watch each line tells
// the time, and a document is one line.
template <typename Content>
class MonitorPrinter final {
  public:
    MonitorPrinter(MonitorView<Content> view, MonitorForm form, bool watching)
        : view_{std::move(view)},
          form_{form},
          watching_{watching},
          table_{moved_columns(view_.right, watching ? 2 : 1)}
    {
    }

    // What stands before the first sample.
    [[nodiscard]] std::string begin() const
    {
        return form_ == MonitorForm::kCsv
                   ? csv_text({joined_row(
                         watching_ ? Row{"time", "slot", "bus_id"} : Row{"slot", "bus_id"},
                         view_.csv_header)})
                   : std::string{};
    }

    [[nodiscard]] std::string sample(const Snapshot<Content>& snapshot)
    {
        return form_ == MonitorForm::kJson  ? json(snapshot)
               : form_ == MonitorForm::kCsv ? csv(snapshot)
                                            : text(snapshot);
    }

  private:
    // A table that begins with the first adapter.
    std::string text(const Snapshot<Content>& snapshot)
    {
        std::vector<Row> rows;
        if (!has_header_ && !snapshot.adapters.empty()) {
            rows.push_back(
                joined_row(watching_ ? Row{"TIME", "SLOT"} : Row{"SLOT"}, view_.text_header));
            has_header_ = true;
        }
        for (const auto& [adapter, content] : snapshot.adapters) {
            const std::string slot = std::to_string(adapter.slot);
            const Row before = watching_ ? Row{local_text(snapshot.time), slot} : Row{slot};
            for (const Row& row : view_.text_rows(content)) {
                rows.push_back(joined_row(before, row));
            }
        }
        return table_.lines(rows);
    }

    std::string csv(const Snapshot<Content>& snapshot) const
    {
        std::vector<Row> rows;
        for (const auto& [adapter, content] : snapshot.adapters) {
            Row before{std::to_string(adapter.slot), adapter.bus_id};
            if (watching_) {
                before.insert(before.begin(), utc_text(snapshot.time));
            }
            for (const Row& row : view_.csv_rows(content)) {
                rows.push_back(joined_row(before, row));
            }
        }
        return csv_text(rows);
    }

    std::string json(const Snapshot<Content>& snapshot) const
    {
        Document adapters = Document::array();
        for (const auto& [adapter, content] : snapshot.adapters) {
            Document object = json_adapter(adapter);
            object.update(view_.json(content));
            adapters.push_back(std::move(object));
        }
        const Document document{{"schema", view_.schema},
                                {"time", utc_text(snapshot.time)},
                                {"adapters", std::move(adapters)},
                                {"errors", json_errors(snapshot.problems)}};
        return watching_ ? json_line(document) : json_text(document);
    }

    MonitorView<Content> view_;
    MonitorForm form_;
    bool watching_;
    bool has_header_ = false;
    GrowingTable table_;
};

}  // namespace nimba::smi
