// SPDX-License-Identifier: MIT
#include "tools/smi/monitor/figure.hpp"

#include "tools/smi/text/json.hpp"

#include <fmt/core.h>

#include <cmath>
#include <string_view>
#include <utility>

namespace nimba::smi {
namespace {

constexpr const char* kUnknown = "n/a";

// Columns of one key.
struct Group {
    std::size_t first;
    std::size_t size;
};

std::vector<Group> groups_of(std::span<const FigureColumn> columns)
{
    std::vector<Group> groups;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (i > 0 && std::string_view{columns[i].key} == columns[i - 1].key) {
            ++groups.back().size;
        } else {
            groups.push_back({i, 1});
        }
    }
    return groups;
}

// Fractions with one decimal place, or as they are.
enum class Precision { kShort, kFull };

std::string text_of(const Figure& figure, Precision precision, const char* otherwise)
{
    if (!figure) {
        return otherwise;
    }
    if (const auto* const number = std::get_if<int64_t>(&*figure)) {
        return std::to_string(*number);
    }
    if (const auto* const fraction = std::get_if<double>(&*figure)) {
        return precision == Precision::kShort ? fmt::format("{:.1f}", *fraction)
                                              : fmt::format("{}", *fraction);
    }
    return std::get<std::string>(*figure);
}

// "0=812 1=403": the words that are available.
std::string words_text(std::span<const Figure> words)
{
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i]) {
            text += fmt::format("{}{}={}", text.empty() ? "" : " ", i,
                                text_of(words[i], Precision::kShort, kUnknown));
        }
    }
    return text.empty() ? kUnknown : text;
}

Document json_of(const Figure& figure)
{
    return figure ? std::visit([](const auto& value) { return Document(value); }, *figure)
                  : Document(nullptr);
}

class FigureFaces final {
  public:
    explicit FigureFaces(std::span<const FigureColumn> columns)
        : columns_{columns}, groups_{groups_of(columns)}
    {
    }

    [[nodiscard]] Row text_header() const
    {
        Row row;
        for (const Group& group : groups_) {
            row.emplace_back(columns_[group.first].heading);
        }
        return row;
    }

    // Those of single figures.
    [[nodiscard]] std::vector<std::size_t> right() const
    {
        std::vector<std::size_t> right;
        for (std::size_t i = 0; i < groups_.size(); ++i) {
            if (groups_[i].size == 1) {
                right.push_back(i);
            }
        }
        return right;
    }

    [[nodiscard]] Row text_row(std::span<const Figure> figures) const
    {
        Row row;
        for (const auto& [first, size] : groups_) {
            const char* const unit = figures[first] ? columns_[first].unit : "";
            row.push_back(size == 1 ? text_of(figures[first], Precision::kShort, kUnknown) + unit
                                    : words_text(figures.subspan(first, size)));
        }
        return row;
    }

    [[nodiscard]] Row csv_header() const
    {
        Row row;
        for (const auto& [first, size] : groups_) {
            for (std::size_t i = 0; i < size; ++i) {
                const char* const key = columns_[first].key;
                row.push_back(size == 1 ? key : fmt::format("{}_{}", key, i));
            }
        }
        return row;
    }

    [[nodiscard]] static Row csv_row(std::span<const Figure> figures)
    {
        Row row;
        for (const Figure& figure : figures) {
            row.push_back(text_of(figure, Precision::kFull, ""));
        }
        return row;
    }

    [[nodiscard]] Document json(std::span<const Figure> figures) const
    {
        Document members = Document::object();
        for (const auto& [first, size] : groups_) {
            Document& member = members[columns_[first].key];
            if (size == 1) {
                member = json_of(figures[first]);
                continue;
            }
            for (const Figure& word : figures.subspan(first, size)) {
                member.push_back(json_of(word));
            }
        }
        return members;
    }

  private:
    std::span<const FigureColumn> columns_;
    std::vector<Group> groups_;
};

}  // namespace

Figure figure(const std::optional<int64_t>& number)
{
    return number ? Figure{*number} : std::nullopt;
}

Figure figure(const std::optional<double>& number)
{
    return number && std::isfinite(*number) ? Figure{*number} : std::nullopt;
}

MonitorView<Figures> figure_view(std::string schema, std::span<const FigureColumn> columns)
{
    const FigureFaces faces{columns};
    return {std::move(schema),
            faces.text_header(),
            faces.right(),
            faces.csv_header(),
            [faces](const Figures& figures) { return std::vector<Row>{faces.text_row(figures)}; },
            [](const Figures& figures) { return std::vector<Row>{FigureFaces::csv_row(figures)}; },
            [faces](const Figures& figures) { return faces.json(figures); }};
}

}  // namespace nimba::smi
