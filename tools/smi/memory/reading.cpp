// SPDX-License-Identifier: MIT
#include "tools/smi/memory/reading.hpp"

#include "tools/smi/worker/payload_json.hpp"

// An allocation is the list of its fields: there may be many.
template <>
struct nlohmann::adl_serializer<nimba::smi::Allocation> {
    static void to_json(json& value, const nimba::smi::Allocation& allocation)
    {
        value = json::array();
        auto& fields = value.get_ref<json::array_t&>();
        fields.reserve(nimba::smi::kAllocationFields.size());
        for (const nimba::smi::AllocationField& field : nimba::smi::kAllocationFields) {
            fields.emplace_back(allocation.*field.member);
        }
    }
    static void from_json(const json& value, nimba::smi::Allocation& allocation)
    {
        for (std::size_t i = 0; i < nimba::smi::kAllocationFields.size(); ++i) {
            value.at(i).get_to(allocation.*nimba::smi::kAllocationFields[i].member);
        }
    }
};

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(DeviceContext, device, pid, name)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(MemoryReading, bus_id, contexts, remarks, stale, allocations)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(DeviceCount, device, count)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Shape, width, height, size, hw_format, at_type)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(LeakGroup, shape, oldest_hits, owners)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(LeakReading, bus_id, contexts, remarks, stale, groups)

NIMBA_SMI_PAYLOAD(MemoryReading)
NIMBA_SMI_PAYLOAD(LeakReading)

}  // namespace nimba::smi
