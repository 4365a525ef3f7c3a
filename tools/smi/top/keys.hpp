// SPDX-License-Identifier: MIT
// What each key does: one table, of which the help page and the man page are made.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi::top {

// A key: the character that it types, or one of those beyond all characters.
enum class Key : uint32_t {
    kTab = '\t',
    kEnter = '\n',
    kEscape = 0x1B,
    kCtrlL = 0x0C,
    kBackspace = 0x110000,
    kBackTab,
    kUp,
    kDown,
    kLeft,
    kRight,
    kPageUp,
    kPageDown,
    kHome,
    kEnd,
    kF1,
    kF3,
    kF4,
    kF10,
};

constexpr Key key_of(char character)
{
    return static_cast<Key>(static_cast<unsigned char>(character));
}

// "q", "Tab", "PgUp"
std::string key_name(Key key);

enum class Action : uint8_t {
    kQuit,
    kHelp,
    kEvents,
    kNextAdapter,
    kPreviousAdapter,
    kAdapter0,
    kAdapter1,
    kAdapter2,
    kEveryAdapter,
    kSortLeft,
    kSortRight,
    kReverse,
    kSortMemory,
    kSortPid,
    kFilter,
    kLeave,
    kUp,
    kDown,
    kPageUp,
    kPageDown,
    kFirst,
    kLast,
    kPause,
    kSlower,
    kFaster,
    kPlots,
    kMarks,
    kRedraw,
};

struct Binding {
    Action action;
    std::vector<Key> keys;
    const char* what;   // what they do, a sentence without its point
    const char* brief;  // the same in a word, for the line of keys; null: it is not in it
};

std::span<const Binding> bindings();

// What a key does; nothing when it does nothing.
std::optional<Action> action_of(Key key);

// "q, F10": the keys of a binding.
std::string key_names(const Binding& binding);

// The lines of the help page, and the text for the man page in scdoc's form.
std::vector<std::string> help_lines();
std::string man_text();

}  // namespace nimba::smi::top
