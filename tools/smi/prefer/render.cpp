// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/render.hpp"

#include "tools/smi/prefer/gpu.hpp"
#include "tools/smi/text/csv.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/table.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace nimba::smi {
namespace {

std::string presence_text(const std::optional<bool>& present, const char* unknown)
{
    return !present ? unknown : *present ? "yes" : "no";
}

Document preference_json(const PreferenceSnapshot& snapshot, const Preference& preference)
{
    return {{"application", preference.application},
            {"path", preference.path},
            {"value", preference.value},
            {"gpu",
             {{"name", preference.gpu_name},
              {"bus_id", bus_id_text(preference.gpu)},
              {"present", or_null(is_present(snapshot.discovery, preference.gpu))}}}};
}

}  // namespace

std::string preferences_text(const PreferenceSnapshot& snapshot)
{
    if (!snapshot.preferences || snapshot.preferences->empty()) {
        return {};
    }
    std::vector<Row> rows{{"APPLICATION", "VALUE", "GPU", "BUS ID", "PRESENT"}};
    for (const Preference& preference : *snapshot.preferences) {
        rows.push_back({preference.application, std::to_string(preference.value),
                        preference.gpu_name.empty() ? "-" : preference.gpu_name,
                        bus_id_text(preference.gpu),
                        presence_text(is_present(snapshot.discovery, preference.gpu), "unknown")});
    }
    return aligned(rows);
}

std::string preferences_csv(const PreferenceSnapshot& snapshot)
{
    std::vector<Row> rows{{"application", "path", "value", "gpu_name", "bus_id", "present"}};
    for (const Preference& preference : snapshot.preferences.value_or(std::vector<Preference>{})) {
        rows.push_back({preference.application, preference.path, std::to_string(preference.value),
                        preference.gpu_name, bus_id_text(preference.gpu),
                        presence_text(is_present(snapshot.discovery, preference.gpu), "")});
    }
    return csv_text(rows);
}

std::string preferences_json(const PreferenceSnapshot& snapshot)
{
    Document preferences = nullptr;
    if (snapshot.preferences) {
        preferences = Document::array();
        for (const Preference& preference : *snapshot.preferences) {
            preferences.push_back(preference_json(snapshot, preference));
        }
    }
    std::vector<Problem> problems = snapshot.told;
    std::ranges::copy(snapshot.problems, std::back_inserter(problems));
    return json_text({{"schema", "nimba-smi.prefer.1"},
                      {"file", snapshot.file.empty() ? Document(nullptr) : Document(snapshot.file)},
                      {"preferences", std::move(preferences)},
                      {"errors", json_errors(problems)}});
}

}  // namespace nimba::smi
