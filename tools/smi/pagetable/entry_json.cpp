// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/address_space.hpp"
#include "tools/smi/pagetable/entry_text.hpp"
#include "tools/smi/pagetable/faces.hpp"
#include "tools/smi/pagetable/number.hpp"
#include "tools/smi/text/json.hpp"

#include <fmt/format.h>

#include <iterator>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

// JSON values as text; a document for each of a million entries would take its time.

std::string hexadecimal_value(const std::optional<uint64_t>& number)
{
    return number ? fmt::format("\"{:#x}\"", *number) : "null";
}

std::string hexadecimal_value(std::string_view digits)
{
    return hexadecimal_value(hexadecimal_in(digits));
}

std::string value(const Document& document)
{
    return document.dump(-1, ' ', false, Document::error_handler_t::replace);
}

// "va" and "size" of what an entry is for.
std::string place(const std::optional<AddressRange>& range)
{
    return range ? fmt::format(R"("va": "{:#x}", "size": {})", range->begin, range->size())
                 : R"("va": null, "size": null)";
}

class JsonEntries final : public EntryText {
  public:
    explicit JsonEntries(const AddressSplit& split) : split_{split} {}

    std::string begin(std::span<const VmDevice> devices) override
    {
        std::string text = fmt::format(
            "{{\n  \"schema\": \"nimba-smi.pagetable.1\",\n  \"split\": {},\n  \"processes\": [",
            value(split_.bits()));
        for (std::size_t i = 0; i < devices.size(); ++i) {
            const VmDevice& device = devices[i];
            pids_.push_back(value(json_pid(device.pid)));
            text += fmt::format("{}\n    {}", i == 0 ? "" : ",",
                                value({{"space", i},
                                       {"pid", json_pid(device.pid)},
                                       {"name", json_name(device.name)},
                                       {"tables", device.tables},
                                       {"pages", device.pages}}));
        }
        open_ = "entries";
        return text + fmt::format("{}],\n  \"entries\": [", devices.empty() ? "" : "\n  ");
    }

    std::string tables(std::size_t device, std::span<const TableRecord> records) override
    {
        std::string text;
        for (const TableRecord& record : records) {
            fmt::format_to(std::back_inserter(text),
                           R"({}{{"space": {}, "pid": {}, "kind": "table", "level": {}, )"
                           R"("index": {}, {}, "address": {}, "buffer": {}}})",
                           separator(), device, pids_.at(device), record.level, record.index,
                           place(split_.table_range(record.level, record.index)),
                           hexadecimal_value(record.address), value(record.buffer));
        }
        return text;
    }

    std::string pages(std::size_t device, std::span<const PageRecord> records) override
    {
        std::string text;
        for (const PageRecord& record : records) {
            fmt::format_to(std::back_inserter(text),
                           R"({}{{"space": {}, "pid": {}, "kind": "page", "level": {}, )"
                           R"("index": {}, "parent_level": {}, "parent_index": {}, {}, )"
                           R"("segment": {}, "snoop": {}, "large_page": {}, "address": {}}})",
                           separator(), device, pids_.at(device), record.level, record.index,
                           record.parent_level, record.parent_index,
                           place(place_of(split_, record)), record.segment, record.snoop,
                           record.large_page, hexadecimal_value(record.address));
        }
        return text;
    }

    std::string allocations(std::span<const VmAllocationRecord> records) override
    {
        std::string text = next_list("allocations");
        for (const VmAllocationRecord& record : records) {
            const auto size = hexadecimal_in(record.size);
            fmt::format_to(std::back_inserter(text),
                           R"({}{{"pid": {}, "handle": {}, "va": {}, "size": {}}})", separator(),
                           value(json_pid(record.pid)), hexadecimal_value(record.handle),
                           hexadecimal_value(record.address), value(or_null(size)));
        }
        return text;
    }

    std::string end(std::span<const Problem> problems) override
    {
        std::string text = next_list("allocations");
        text += close();
        return text + fmt::format(",\n  \"errors\": {}\n}}\n", value(json_errors(problems)));
    }

  private:
    const char* separator() { return std::exchange(empty_, false) ? "\n    " : ",\n    "; }

    // The end of the list that is open.
    [[nodiscard]] const char* close() const { return empty_ ? "]" : "\n  ]"; }

    // Begins the list, unless it is open.
    std::string next_list(std::string_view name)
    {
        if (open_ == name) {
            return {};
        }
        const std::string before = close();
        open_ = name;
        empty_ = true;
        return fmt::format("{},\n  \"{}\": [", before, name);
    }

    AddressSplit split_;
    std::vector<std::string> pids_;  // of the devices, as values
    std::string_view open_;          // the list that is being written
    bool empty_ = true;              // so far
};

}  // namespace

std::unique_ptr<EntryText> entries_as_json(const AddressSplit& split)
{
    return std::make_unique<JsonEntries>(split);
}

}  // namespace nimba::smi
