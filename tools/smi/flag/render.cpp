// SPDX-License-Identifier: MIT
#include "tools/smi/flag/render.hpp"

#include "tools/smi/memory/faces.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/core.h>

#include <utility>

namespace nimba::smi {

std::string bits_text(const std::optional<uint32_t>& bits)
{
    return bits ? fmt::format("{:#x}", *bits) : "not available";
}

std::string flag_text(const FlagSnapshot& snapshot)
{
    if (snapshot.adapters.empty()) {
        return {};
    }
    std::vector<Row> rows{{"SLOT", "FLAG"}};
    for (const auto& [adapter, reading] : snapshot.adapters) {
        rows.push_back({std::to_string(adapter.slot), bits_text(reading.flag)});
    }
    return aligned(rows);
}

std::string flag_json(const FlagSnapshot& snapshot)
{
    Document adapters = Document::array();
    for (const auto& [adapter, reading] : snapshot.adapters) {
        Document object = json_adapter(adapter);
        object["flag"] = or_null(reading.flag);
        adapters.push_back(std::move(object));
    }
    return json_text({{"schema", "nimba-smi.flag.1"},
                      {"adapters", std::move(adapters)},
                      {"errors", json_errors(snapshot.problems)}});
}

std::string flag_change_text(const FlagChange& change)
{
    if (!change.outcome) {
        return {};
    }
    const FlagOutcome& outcome = *change.outcome;
    return aligned({{"BEFORE", "ASKED", "RESULT"},
                    {bits_text(outcome.before), bits_text(outcome.asked),
                     sentence_of(outcome.verdict, bits_text(outcome.after))}});
}

std::string flag_change_json(const FlagChange& change)
{
    Document document{
        {"schema", "nimba-smi.flag-set.1"},
        {"adapter", change.adapter ? json_adapter(*change.adapter) : Document(nullptr)},
        {"before", nullptr},
        {"asked", nullptr},
        {"after", nullptr},
        {"result", nullptr}};
    if (change.outcome) {
        document["before"] = change.outcome->before;
        document["asked"] = change.outcome->asked;
        document["after"] = or_null(change.outcome->after);
        document["result"] = word_of(change.outcome->verdict);
    }
    document["errors"] = json_errors(change.problems);
    return json_text(document);
}

}  // namespace nimba::smi
