// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/render.hpp"

#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/text/colour.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/printable.hpp"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string_view>
#include <utility>

namespace nimba::smi {
namespace {

struct ResultWords {
    const char* in_text;
    const char* in_json;
    Colour colour;
};

ResultWords words_of(CheckResult result)
{
    switch (result) {
        case CheckResult::kNote:
            return {"note", "note", Colour::kYellow};
        case CheckResult::kFail:
            return {"FAIL", "fail", Colour::kRed};
        case CheckResult::kSkipped:
            return {"-", "skipped", Colour::kGrey};
        case CheckResult::kOk:
            break;
    }
    return {"ok", "ok", Colour::kGreen};
}

std::string_view word_of(CheckGroup group)
{
    switch (group) {
        case CheckGroup::kLibrary:
            return "library";
        case CheckGroup::kAdapter:
            return "adapter";
        case CheckGroup::kUser:
            return "user";
        case CheckGroup::kMachine:
            break;
    }
    return "machine";
}

std::size_t count(std::span<const Section> sections, CheckResult result)
{
    std::size_t number = 0;
    for (const Section& section : sections) {
        number +=
            static_cast<std::size_t>(std::ranges::count(section.checks, result, &Check::result));
    }
    return number;
}

std::size_t widest_id(std::span<const Section> sections)
{
    std::size_t width = 0;
    for (const Section& section : sections) {
        for (const Check& check : section.checks) {
            width = std::max(width, check.id.size());
        }
    }
    return width;
}

std::string heading(const Section& section)
{
    return section.adapter ? adapter_subject(*section.adapter).name
                           : std::string{word_of(section.group)};
}

std::string check_lines(const Check& check, std::size_t width, bool colours)
{
    constexpr int kWordWidth = 4;
    const ResultWords words = words_of(check.result);
    const std::string padded = fmt::format("{:<{}}", words.in_text, kWordWidth);
    const bool was_made = check.result != CheckResult::kSkipped;
    std::string text =
        fmt::format("  {}  {:<{}}  {}{}\n", coloured(padded, words.colour, colours), check.id,
                    width, was_made ? "" : "skipped ", printable(check.found));
    if (!check.remedy.empty()) {
        text += fmt::format("        {:<{}}  {}\n", "", width, printable(check.remedy));
    }
    return text;
}

Document check_json(const Section& section, const Check& check)
{
    const auto adapter = section.adapter ? std::optional(section.adapter->bus_id) : check.adapter;
    return {{"id", check.id},
            {"group", word_of(section.group)},
            {"adapter", or_null(adapter)},
            {"result", words_of(check.result).in_json},
            {"found", check.found},
            {"remedy", check.remedy.empty() ? Document(nullptr) : Document(check.remedy)}};
}

}  // namespace

std::string doctor_text(std::span<const Section> sections, bool colours)
{
    const std::size_t width = widest_id(sections);
    std::string text;
    for (const Section& section : sections) {
        text += printable(heading(section)) + '\n';
        for (const Check& check : section.checks) {
            text += check_lines(check, width, colours);
        }
    }
    return text + summary_line(sections) + '\n';
}

std::string doctor_json(std::span<const Section> sections)
{
    Document checks = Document::array();
    for (const Section& section : sections) {
        for (const Check& check : section.checks) {
            checks.push_back(check_json(section, check));
        }
    }
    return json_text({{"schema", "nimba-smi.doctor.1"},
                      {"checks", std::move(checks)},
                      {"summary", summary_line(sections)},
                      {"errors", json_errors(problems_in(sections))}});
}

std::string summary_line(std::span<const Section> sections)
{
    const std::size_t failures = count(sections, CheckResult::kFail);
    const std::size_t notes = count(sections, CheckResult::kNote);
    if (failures > 1) {
        return fmt::format("{} checks failed: mend the first first, and run nimba-smi doctor again",
                           failures);
    }
    if (failures == 1) {
        return "1 check failed: mend it, and run nimba-smi doctor again";
    }
    if (notes > 0) {
        return fmt::format("all that matters works; {} {} what is missing", notes,
                           notes == 1 ? "note says" : "notes say");
    }
    return "all that matters works";
}

}  // namespace nimba::smi
