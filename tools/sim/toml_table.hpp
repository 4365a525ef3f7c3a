// SPDX-License-Identifier: MIT
// Typed reading of a machine file's tables. Whatever is wrong throws a MachineFileError of the form
//   FILE:LINE: key 'adapter[0].card': expected a whole number from 0 to 63, got "one"
#pragma once

#include <toml++/toml.h>

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nimba::sim {

class TableReader {
  public:
    // Reads `table` of `file`; `path` is the table's own key, empty for the file's top.
    // A key that is not in `known_keys` is an error.
    TableReader(const toml::table& table, std::string path, std::string file,
                std::span<const std::string_view> known_keys);

    bool has(std::string_view key) const { return table_->contains(key); }
    bool is_text(std::string_view key) const;

    // The readers throw when the key is missing, unless they take or return a fallback.
    std::string text(std::string_view key) const;
    int64_t integer(std::string_view key, int64_t least, int64_t greatest) const;
    int64_t integer_or(std::string_view key, int64_t least, int64_t greatest,
                       int64_t fallback) const;
    // The text, which may be empty; nothing if it is missing.
    std::optional<std::string> any_text(std::string_view key) const;
    // A number in that range, or a text, which may be empty.
    std::variant<int64_t, std::string> integer_or_text(std::string_view key, int64_t least,
                                                       int64_t greatest) const;

    // The numbers of a list.
    std::vector<int64_t> integers(std::string_view key, int64_t least, int64_t greatest) const;

    bool flag_or(std::string_view key, bool fallback) const;

    // The text of `key`, which must be one of `choices`.
    std::string choice(std::string_view key, std::span<const std::string_view> choices) const;

    // The texts of a list.
    std::vector<std::string> texts(std::string_view key) const;
    // The same; nothing if the value is the word `false`.
    std::optional<std::vector<std::string>> texts_or_false(std::string_view key) const;

    // A table of texts; nothing if the value is the word `false`; `fallback` if it is missing.
    using Texts = std::map<std::string, std::string>;
    std::optional<Texts> texts_by_name_or(std::string_view key, const Texts& fallback) const;

    // The tables of a list, each of which may hold `known_keys`; none if the key is missing.
    std::vector<TableReader> tables(std::string_view key,
                                    std::span<const std::string_view> known_keys) const;

    // The table of `key`, which may hold `known_keys`; nothing if it is missing.
    std::optional<TableReader> table(std::string_view key,
                                     std::span<const std::string_view> known_keys) const;

    const std::string& path() const { return path_; }

    // Says that the value of `key` (of item `index` in it, of the part `name` in it) is not what
    // was expected, or that there is none.
    [[noreturn]] void reject(std::string_view key, const std::string& expected) const;
    [[noreturn]] void reject_item(std::string_view key, std::size_t index,
                                  const std::string& expected) const;
    [[noreturn]] void reject_name(std::string_view key, const std::string& name,
                                  const std::string& expected) const;

  private:
    // The value of `key` if it is a T, else null.
    template <typename T>
    auto find(std::string_view key) const;
    std::string full_key(std::string_view key) const;

    const toml::table* table_;  // never null
    std::string path_;
    std::string file_;
};

}  // namespace nimba::sim
