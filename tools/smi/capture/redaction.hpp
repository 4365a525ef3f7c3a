// SPDX-License-Identifier: MIT
// Puts stand-ins in the place of names.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace nimba::smi {

// One that nobody can foretell.
uint32_t random_number();

// What was replaced once is replaced by the same in all texts that come later, so the texts that
// introduce names come first. Which stand-in a name gets is drawn; nothing tells it afterwards.
class Redactor final {
  public:
    // `draw`: random numbers.
    explicit Redactor(std::function<uint32_t()> draw = random_number);

    // The same path with a stand-in for each of its components.
    std::string path(std::string_view path);

    // The name of a process, of at most 15 bytes, whose program is `program`: as much of its name
    // as fits is that name.
    std::string process_name(std::string_view name, std::string_view program);

    // Introduces the names that a node's text has behind "device_pname".
    void learn(std::string_view text);

    // A node's text. What stands behind "device_pname" is a name; other names count where they are
    // whole words, but for what the driver itself says.
    std::string text(std::string_view text);

    // What a command says. Besides the names that a text may have, each part is one of a path that
    // is not of the system: the file's own name stays when commands know it.
    std::string sentence(std::string_view text);

    // The preference file: sections and full paths are names, and GPUs that are none of `gpus`.
    // Nothing else stays but numbers, where the library reads such.
    std::string preferences(std::string_view text, std::span<const std::string> gpus);

    // What dmidecode writes: serial numbers and asset tags are names, where there are any.
    std::string memory_modules(std::string_view text);

  private:
    // One may be a part of another.
    struct LongestFirst {
        bool operator()(const std::string& one, const std::string& other) const
        {
            return one.size() != other.size() ? one.size() > other.size() : one < other;
        }
    };

    std::string name(std::string_view name);
    std::string section_name(std::string_view name);
    std::string told_path(std::string_view told);
    std::string words(std::string_view line) const;
    std::string_view phrase_at(std::string_view text) const;

    std::function<uint32_t()> draw_;
    std::unordered_map<std::string, std::string> stand_ins_;
    std::set<std::string> taken_;
    std::set<std::string, LongestFirst> phrases_;  // names that are more than a word
};

}  // namespace nimba::smi
