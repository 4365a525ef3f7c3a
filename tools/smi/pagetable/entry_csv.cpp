// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/address_space.hpp"
#include "tools/smi/pagetable/entry_text.hpp"
#include "tools/smi/pagetable/faces.hpp"
#include "tools/smi/pagetable/number.hpp"
#include "tools/smi/text/csv.hpp"

#include <algorithm>
#include <iterator>
#include <optional>

namespace nimba::smi {
namespace {

std::string begin_cell(const std::optional<AddressRange>& range)
{
    return range ? address_text(range->begin) : "";
}

std::string size_cell(const std::optional<AddressRange>& range)
{
    return range ? std::to_string(range->size()) : "";
}

class CsvEntries final : public EntryText {
  public:
    explicit CsvEntries(const AddressSplit& split) : split_{split} {}

    std::string begin(std::span<const VmDevice> devices) override
    {
        devices_.assign(devices.begin(), devices.end());
        return csv_text(
            {{"space", "pid", "process", "kind", "level", "index", "parent_level", "parent_index",
              "va", "size", "segment", "snoop", "large_page", "address", "buffer", "handle"}});
    }

    std::string tables(std::size_t device, std::span<const TableRecord> records) override
    {
        return rows_of(records, [&](const TableRecord& record) -> Row {
            const auto range = split_.table_range(record.level, record.index);
            return {std::to_string(device),
                    devices_.at(device).pid,
                    devices_.at(device).name,
                    "table",
                    std::to_string(record.level),
                    std::to_string(record.index),
                    "",
                    "",
                    begin_cell(range),
                    size_cell(range),
                    "",
                    "",
                    "",
                    hexadecimal_text(record.address),
                    record.buffer,
                    ""};
        });
    }

    std::string pages(std::size_t device, std::span<const PageRecord> records) override
    {
        return rows_of(records, [&](const PageRecord& record) -> Row {
            const auto range = place_of(split_, record);
            return {std::to_string(device),
                    devices_.at(device).pid,
                    devices_.at(device).name,
                    "page",
                    std::to_string(record.level),
                    std::to_string(record.index),
                    std::to_string(record.parent_level),
                    std::to_string(record.parent_index),
                    begin_cell(range),
                    size_cell(range),
                    std::to_string(record.segment),
                    std::to_string(record.snoop),
                    std::to_string(record.large_page),
                    hexadecimal_text(record.address),
                    "",
                    ""};
        });
    }

    std::string allocations(std::span<const VmAllocationRecord> records) override
    {
        return rows_of(records, [&](const VmAllocationRecord& record) -> Row {
            const auto size = hexadecimal_in(record.size);
            return {"",
                    record.pid,
                    name_of(record.pid),
                    "allocation",
                    "",
                    "",
                    "",
                    "",
                    hexadecimal_text(record.address),
                    size ? std::to_string(*size) : record.size,
                    "",
                    "",
                    "",
                    "",
                    "",
                    hexadecimal_text(record.handle)};
        });
    }

    std::string end(std::span<const Problem> /*problems*/) override { return {}; }

  private:
    template <typename Record, typename RowOf>
    static std::string rows_of(std::span<const Record> records, RowOf row_of)
    {
        std::vector<Row> rows;
        rows.reserve(records.size());
        std::ranges::transform(records, std::back_inserter(rows), row_of);
        return csv_text(rows);
    }

    [[nodiscard]] std::string name_of(const std::string& pid) const
    {
        const auto device = std::ranges::find(devices_, pid, &VmDevice::pid);
        return device == devices_.end() ? "" : device->name;
    }

    AddressSplit split_;
    std::vector<VmDevice> devices_;
};

}  // namespace

std::unique_ptr<EntryText> entries_as_csv(const AddressSplit& split)
{
    return std::make_unique<CsvEntries>(split);
}

}  // namespace nimba::smi
