// SPDX-License-Identifier: MIT
#include "toml_table.hpp"

#include "key_problem.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace nimba::sim {

TableReader::TableReader(const toml::table& table, std::string path, std::string file,
                         std::span<const std::string_view> known_keys)
    : table_{&table}, path_{std::move(path)}, file_{std::move(file)}
{
    for (const auto& [key, value] : table) {
        if (std::ranges::find(known_keys, key.str()) == known_keys.end()) {
            fail_key(file_, value, full_key(key.str()),
                     fmt::format("unknown key, expected {}", one_of(known_keys)));
        }
    }
}

std::string TableReader::full_key(std::string_view key) const
{
    return path_.empty() ? std::string{key} : fmt::format("{}.{}", path_, key);
}

template <typename T>
auto TableReader::find(std::string_view key) const
{
    const auto* value = table_->get(key);
    return value == nullptr ? nullptr : value->as<T>();
}

void TableReader::reject(std::string_view key, const std::string& expected) const
{
    const auto* value = table_->get(key);
    if (value == nullptr) {
        fail_key(file_, *table_, full_key(key), fmt::format("expected {}, got nothing", expected));
    }
    fail_expected(file_, *value, full_key(key), expected);
}

void TableReader::reject_item(std::string_view key, std::size_t index,
                              const std::string& expected) const
{
    fail_expected(file_, find<toml::array>(key)->at(index),
                  fmt::format("{}[{}]", full_key(key), index), expected);
}

void TableReader::reject_name(std::string_view key, const std::string& name,
                              const std::string& expected) const
{
    fail_key(file_, find<toml::table>(key)->at(name), full_key(key),
             fmt::format("expected {}, got {}", expected, quoted(name)));
}

bool TableReader::is_text(std::string_view key) const
{
    return find<std::string>(key) != nullptr;
}

std::string TableReader::text(std::string_view key) const
{
    const auto* text = find<std::string>(key);
    if (text == nullptr || text->get().empty()) {
        reject(key, "a text");
    }
    return text->get();
}

std::optional<std::string> TableReader::any_text(std::string_view key) const
{
    if (!has(key)) {
        return std::nullopt;
    }
    const auto* text = find<std::string>(key);
    if (text == nullptr) {
        reject(key, "a text");
    }
    return text->get();
}

int64_t TableReader::integer(std::string_view key, int64_t least, int64_t greatest) const
{
    const auto* number = find<int64_t>(key);
    if (number == nullptr || number->get() < least || number->get() > greatest) {
        reject(key, fmt::format("a whole number from {} to {}", least, greatest));
    }
    return number->get();
}

int64_t TableReader::integer_or(std::string_view key, int64_t least, int64_t greatest,
                                int64_t fallback) const
{
    return has(key) ? integer(key, least, greatest) : fallback;
}

std::variant<int64_t, std::string> TableReader::integer_or_text(std::string_view key, int64_t least,
                                                                int64_t greatest) const
{
    if (const auto* text = find<std::string>(key)) {
        return text->get();
    }
    const auto* number = find<int64_t>(key);
    if (number == nullptr || number->get() < least || number->get() > greatest) {
        reject(key, fmt::format("a whole number from {} to {}, or a text", least, greatest));
    }
    return number->get();
}

std::vector<int64_t> TableReader::integers(std::string_view key, int64_t least,
                                           int64_t greatest) const
{
    const auto* list = find<toml::array>(key);
    if (list == nullptr) {
        reject(key, "a list of numbers");
    }
    std::vector<int64_t> numbers;
    for (std::size_t index = 0; index < list->size(); ++index) {
        const auto* number = list->at(index).as_integer();
        if (number == nullptr || number->get() < least || number->get() > greatest) {
            reject_item(key, index, fmt::format("a whole number from {} to {}", least, greatest));
        }
        numbers.push_back(number->get());
    }
    return numbers;
}

bool TableReader::flag_or(std::string_view key, bool fallback) const
{
    if (!has(key)) {
        return fallback;
    }
    const auto* flag = find<bool>(key);
    if (flag == nullptr) {
        reject(key, "true or false");
    }
    return flag->get();
}

std::string TableReader::choice(std::string_view key,
                                std::span<const std::string_view> choices) const
{
    const auto* text = find<std::string>(key);
    if (text == nullptr || std::ranges::find(choices, text->get()) == choices.end()) {
        reject(key, one_of(choices));
    }
    return text->get();
}

std::vector<std::string> TableReader::texts(std::string_view key) const
{
    const auto* list = find<toml::array>(key);
    if (list == nullptr) {
        reject(key, "a list of texts");
    }
    std::vector<std::string> texts;
    for (std::size_t index = 0; index < list->size(); ++index) {
        const auto* text = list->at(index).as_string();
        if (text == nullptr) {
            reject_item(key, index, "a text");
        }
        texts.push_back(text->get());
    }
    return texts;
}

std::optional<std::vector<std::string>> TableReader::texts_or_false(std::string_view key) const
{
    if (const auto* flag = find<bool>(key); flag != nullptr && !flag->get()) {
        return std::nullopt;
    }
    if (find<toml::array>(key) == nullptr) {
        reject(key, "a list of texts, or false");
    }
    return texts(key);
}

std::optional<TableReader::Texts> TableReader::texts_by_name_or(std::string_view key,
                                                                const Texts& fallback) const
{
    if (!has(key)) {
        return fallback;
    }
    if (const auto* flag = find<bool>(key); flag != nullptr && !flag->get()) {
        return std::nullopt;
    }
    const auto* table = find<toml::table>(key);
    if (table == nullptr) {
        reject(key, "a table of texts, or false");
    }
    Texts texts;
    for (const auto& [name, item] : *table) {
        const auto* text = item.as_string();
        if (text == nullptr) {
            fail_expected(file_, item, fmt::format("{}.{}", full_key(key), name.str()), "a text");
        }
        texts.emplace(name.str(), text->get());
    }
    return texts;
}

std::optional<TableReader> TableReader::table(std::string_view key,
                                              std::span<const std::string_view> known_keys) const
{
    if (!has(key)) {
        return std::nullopt;
    }
    const auto* table = find<toml::table>(key);
    if (table == nullptr) {
        reject(key, "a table");
    }
    return TableReader{*table, full_key(key), file_, known_keys};
}

std::vector<TableReader> TableReader::tables(std::string_view key,
                                             std::span<const std::string_view> known_keys) const
{
    std::vector<TableReader> readers;
    if (!has(key)) {
        return readers;
    }
    const auto* list = find<toml::array>(key);
    if (list == nullptr) {
        reject(key, fmt::format("a list of tables, [[{}]]", key));
    }
    for (std::size_t index = 0; index < list->size(); ++index) {
        const auto* table = list->at(index).as_table();
        if (table == nullptr) {
            reject_item(key, index, "a table");
        }
        readers.emplace_back(*table, fmt::format("{}[{}]", full_key(key), index), file_,
                             known_keys);
    }
    return readers;
}

}  // namespace nimba::sim
