// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/record.hpp"

#include "tools/smi/worker/payload_json.hpp"

#include <tuple>
#include <type_traits>

namespace nimba::smi {
namespace {

// The fields of a record, in the order in which they travel.
template <typename Record>
auto fields(Record& record) requires std::is_same_v<std::remove_const_t<Record>, TableRecord>
{
    return std::tie(record.level, record.index, record.address, record.buffer);
}

template <typename Record>
auto fields(Record& record) requires std::is_same_v<std::remove_const_t<Record>, PageRecord>
{
    return std::tie(record.level, record.index, record.parent_level, record.parent_index,
                    record.large_page, record.snoop, record.segment, record.address);
}

template <typename Record>
auto fields(Record& record) requires std::is_same_v<std::remove_const_t<Record>, VmAllocationRecord>
{
    return std::tie(record.pid, record.handle, record.address, record.size);
}

}  // namespace

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(VmDevice, number, pid, name, tables, pages)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PageTableContents, devices, allocations)

// A block is one flat list of the fields of all records.
template <typename Record>
void to_json(nlohmann::json& value, const Block<Record>& block)
{
    value = nlohmann::json::array();
    auto& list = value.get_ref<nlohmann::json::array_t&>();
    for (const Record& record : block.records) {
        std::apply([&](const auto&... field) { (list.emplace_back(field), ...); }, fields(record));
    }
}

template <typename Record>
void from_json(const nlohmann::json& value, Block<Record>& block)
{
    std::size_t next = 0;
    while (next < value.size()) {
        Record& record = block.records.emplace_back();
        std::apply([&](auto&... field) { (value.at(next++).get_to(field), ...); }, fields(record));
    }
}

NIMBA_SMI_PAYLOAD(PageTableContents)
NIMBA_SMI_PAYLOAD(Block<TableRecord>)
NIMBA_SMI_PAYLOAD(Block<PageRecord>)
NIMBA_SMI_PAYLOAD(Block<VmAllocationRecord>)

}  // namespace nimba::smi
