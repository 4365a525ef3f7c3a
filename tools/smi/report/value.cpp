// SPDX-License-Identifier: MIT
#include "tools/smi/report/value.hpp"

#include "tools/smi/text/printable.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

namespace nimba::smi::page {
namespace {

constexpr std::size_t kProcessesNamed = 4;
constexpr std::size_t kMostAdapters = 16;
constexpr std::size_t kLongestText = 500;

const Document kNull;
const Document kEmpty = Document::array();

}  // namespace

const Document& member(const Document& value, std::initializer_list<const char*> path)
{
    const Document* at = &value;
    for (const char* const key : path) {
        const auto found = at->find(key);
        if (found == at->end()) {
            return kNull;
        }
        at = &*found;
    }
    return *at;
}

const Document& list(const Document& value, std::initializer_list<const char*> path)
{
    const Document& found = member(value, path);
    return found.is_array() ? found : kEmpty;
}

std::size_t whole_size(const Document& object, const char* name)
{
    const std::string left_out = std::string{name} + "_left_out";
    return list(object, {name}).size() +
           static_cast<std::size_t>(bytes_of(member(object, {left_out.c_str()})).value_or(0));
}

std::vector<const Document*> adapters_of(const Document& document)
{
    std::vector<const Document*> adapters;
    for (const Document& adapter : list(document, {"adapters"})) {
        if (adapters.size() < kMostAdapters) {
            adapters.push_back(&adapter);
        }
    }
    return adapters;
}

std::string text_of(const Document& value)
{
    if (value.is_string()) {
        return cut(printable(value.get<std::string>()), kLongestText, "…");
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? "yes" : "no";
    }
    if (value.is_number_float()) {
        return fmt::format("{:.6g}", value.get<double>());
    }
    if (value.is_number_unsigned()) {
        return std::to_string(value.get<uint64_t>());
    }
    return value.is_number() ? std::to_string(value.get<int64_t>()) : kUnknown;
}

std::optional<double> number_of(const Document& value)
{
    return value.is_number() && std::isfinite(value.get<double>())
               ? std::optional{value.get<double>()}
               : std::nullopt;
}

std::optional<uint64_t> bytes_of(const Document& value)
{
    return value.is_number_integer() && (value.is_number_unsigned() || value.get<int64_t>() >= 0)
               ? std::optional{value.get<uint64_t>()}
               : std::nullopt;
}

std::string size_of(const Document& value)
{
    const auto bytes = bytes_of(value);
    return bytes ? size_text(*bytes) : kUnknown;
}

std::string adapter_title(const Document& adapter)
{
    const Document& name = member(adapter, {"name"});
    const std::string bus_id = text_of(member(adapter, {"bus_id"}));
    return name.is_string() ? fmt::format("{} ({})", text_of(name), bus_id) : bus_id;
}

std::string processes_text(const Document& owner)
{
    const Document& processes = list(owner, {"processes"});
    std::string text;
    const std::size_t named = std::min(processes.size(), kProcessesNamed);
    for (std::size_t i = 0; i < named; ++i) {
        text += fmt::format("{}{} ({})", text.empty() ? "" : ", ",
                            text_of(member(processes[i], {"name"})),
                            text_of(member(processes[i], {"pid"})));
    }
    if (const std::size_t all = whole_size(owner, "processes"); all > named) {
        text += fmt::format(" and {} more", all - named);
    }
    return text.empty() ? kUnknown : text;
}

}  // namespace nimba::smi::page
