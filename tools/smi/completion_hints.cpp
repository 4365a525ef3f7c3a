// SPDX-License-Identifier: MIT
#include "tools/smi/completion_hints.hpp"

#include "tools/smi/dvfs/field.hpp"
#include "tools/smi/dvfs/level.hpp"
#include "tools/smi/export/collectors.hpp"

#include <string>

namespace nimba::smi {
namespace {

using completion::Value;

// Each key by itself, which has a direction of its own, and with each direction.
Value sort_orders()
{
    Value orders;
    for (const char* const key : {"slot", "handle", "device", "pid", "process", "size", "segment",
                                  "width", "height", "format", "type"}) {
        for (const char* const direction : {"", ":asc", ":desc"}) {
            orders.words.push_back(std::string{key} + direction);
        }
    }
    return orders;
}

Value field_names()
{
    Value names;
    for (const DvfsField& field : dvfs_fields()) {
        names.words.emplace_back(field.name);
    }
    return names;
}

Value collectors()
{
    Value names;
    for (const std::string_view name : exporting::kCollectorNames) {
        names.words.emplace_back(name);
    }
    return names;
}

Value assignments()
{
    Value texts;
    for (const DvfsField& field : dvfs_fields()) {
        if (!field.writable) {
            continue;
        }
        const std::string name = std::string{field.name} + '=';
        if (field.kind != FieldKind::kLevel) {
            texts.words.push_back(name);
            continue;
        }
        for (const std::string_view level : kLevelNames) {
            texts.words.push_back(name + std::string{level});
        }
    }
    return texts;
}

}  // namespace

completion::Hints completion_hints()
{
    const Value file{.files = true};
    const Value slot{.words = {"0", "1", "2"}};
    const Value process{.processes = true};
    return {.values = {{"PATH", file},
                       {"APPLICATION", file},
                       {"FILE", file},
                       {"PID", process},
                       {"SLOT|BUS_ID", slot},
                       {"KEY[:asc|:desc]", sort_orders()},
                       {"UNIT", {.words = {"auto", "B", "KiB", "MiB", "GiB", "kB", "MB", "GB"}}},
                       {"COLLECTOR[,COLLECTOR...]", collectors()},
                       {"FIELD", field_names()},
                       {"FIELD=VALUE", assignments()},
                       {"--depth", {.words = {"0", "1", "2", "3"}}}},
            .runs_another = {},
            .own_group = kOverviewGroup};
}

}  // namespace nimba::smi
