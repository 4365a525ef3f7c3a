// SPDX-License-Identifier: MIT
#include "tools/smi/list/render.hpp"

#include "tools/smi/text/json.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/format.h>

#include <string_view>

namespace nimba::smi {
namespace {

std::string_view driver_word(DriverKind kind)
{
    switch (kind) {
        case DriverKind::kVa:
            return "va";
        case DriverKind::kLegacy:
            return "legacy";
        case DriverKind::kUnknown:
            break;
    }
    return "unknown";
}

std::string id_text(uint32_t id)
{
    return fmt::format("{:#06x}", id);
}

std::string luid_text(const Luid& luid)
{
    return fmt::format("{:#x}:{:#x}", luid.low, luid.high);
}

std::string card_text(const std::optional<int>& card)
{
    return card ? std::to_string(*card) : "-";
}

Row adapter_row(const Adapter& adapter)
{
    return {std::to_string(adapter.slot),
            adapter.name.value_or("-"),
            adapter.bus_id,
            card_text(adapter.card),
            adapter.device_id ? id_text(*adapter.device_id) : "-",
            std::string{driver_word(adapter.driver)},
            luid_text(adapter.luid)};
}

Row foreign_row(const ForeignGpu& gpu)
{
    return {"-", gpu.name,           gpu.bus_id, card_text(gpu.card), id_text(gpu.device_id),
            "-", luid_text(gpu.luid)};
}

Document adapter_json(const Adapter& adapter)
{
    return {{"slot", adapter.slot},
            {"name", or_null(adapter.name)},
            {"bus_id", adapter.bus_id},
            {"card", or_null(adapter.card)},
            {"vendor_id", json_id(adapter.vendor_id)},
            {"device_id", adapter.device_id ? json_id(*adapter.device_id) : Document(nullptr)},
            {"driver", driver_word(adapter.driver)},
            {"luid", json_luid(adapter.luid)}};
}

Document foreign_json(const ForeignGpu& gpu)
{
    return {{"name", gpu.name},
            {"bus_id", gpu.bus_id},
            {"card", or_null(gpu.card)},
            {"vendor_id", json_id(gpu.vendor_id)},
            {"device_id", json_id(gpu.device_id)},
            {"luid", json_luid(gpu.luid)}};
}

}  // namespace

std::string list_text(const ListSnapshot& snapshot)
{
    if (snapshot.adapters.empty() && !snapshot.foreign_gpu) {
        return {};
    }
    std::vector<Row> rows{{"SLOT", "NAME", "BUS ID", "CARD", "DEVICE", "DRIVER", "LUID"}};
    for (const Adapter& adapter : snapshot.adapters) {
        rows.push_back(adapter_row(adapter));
    }
    if (snapshot.foreign_gpu) {
        rows.push_back(foreign_row(*snapshot.foreign_gpu));
    }
    return aligned(rows);
}

std::string list_json(const ListSnapshot& snapshot)
{
    Document adapters = Document::array();
    for (const Adapter& adapter : snapshot.adapters) {
        adapters.push_back(adapter_json(adapter));
    }
    const auto& foreign = snapshot.foreign_gpu;
    return json_text({{"schema", "nimba-smi.list.1"},
                      {"adapters", std::move(adapters)},
                      {"foreign_gpu", foreign ? foreign_json(*foreign) : Document(nullptr)},
                      {"errors", json_errors(snapshot.problems)}});
}

}  // namespace nimba::smi
