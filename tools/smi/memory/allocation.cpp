// SPDX-License-Identifier: MIT
#include "tools/smi/memory/allocation.hpp"

#include <cstddef>
#include <cstring>
#include <string>
#include <unordered_set>

namespace nimba::smi {
namespace {

// The driver's fields are the first part of the record.
using Fields = std::array<int32_t, kAllocationFields.size()>;
static_assert(sizeof(Fields) == offsetof(Allocation, hit_count));

struct FieldsHash {
    std::size_t operator()(const Fields& fields) const
    {
        char bytes[sizeof fields];
        std::memcpy(bytes, fields.data(), sizeof bytes);
        return std::hash<std::string_view>{}({bytes, sizeof bytes});
    }
};

}  // namespace

void drop_repeated(std::vector<Allocation>& allocations)
{
    std::unordered_set<Fields, FieldsHash> met;
    met.reserve(allocations.size());
    std::erase_if(allocations, [&](const Allocation& allocation) {
        Fields fields{};
        std::memcpy(fields.data(), &allocation, sizeof fields);
        return !met.insert(fields).second;
    });
}

}  // namespace nimba::smi
