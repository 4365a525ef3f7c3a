// SPDX-License-Identifier: MIT
#include "tools/smi/list/render.hpp"

#include "tools/smi/text/csv.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/core.h>

namespace nimba::smi {
namespace {

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

}  // namespace

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

std::string list_csv(const ListSnapshot& snapshot)
{
    const auto card = [](const std::optional<int>& number) {
        return number ? std::to_string(*number) : std::string{};
    };
    std::vector<Row> rows{{"slot", "name", "bus_id", "card", "vendor_id", "device_id", "driver",
                           "luid_low", "luid_high"}};
    for (const Adapter& adapter : snapshot.adapters) {
        rows.push_back({std::to_string(adapter.slot), adapter.name.value_or(""), adapter.bus_id,
                        card(adapter.card), id_text(adapter.vendor_id),
                        adapter.device_id ? id_text(*adapter.device_id) : "",
                        std::string{driver_word(adapter.driver)}, std::to_string(adapter.luid.low),
                        std::to_string(adapter.luid.high)});
    }
    if (const auto& gpu = snapshot.foreign_gpu) {
        rows.push_back({"", gpu->name, gpu->bus_id, card(gpu->card), id_text(gpu->vendor_id),
                        id_text(gpu->device_id), "", std::to_string(gpu->luid.low),
                        std::to_string(gpu->luid.high)});
    }
    return csv_text(rows);
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
