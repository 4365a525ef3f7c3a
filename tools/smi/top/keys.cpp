// SPDX-License-Identifier: MIT
#include "tools/smi/top/keys.hpp"

#include "tools/smi/top/unicode.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace nimba::smi::top {
namespace {

struct NamedKey {
    Key key;
    const char* name;
};

constexpr std::array kNames{
    NamedKey{Key::kTab, "Tab"},
    NamedKey{Key::kEnter, "Enter"},
    NamedKey{Key::kEscape, "Esc"},
    NamedKey{Key::kCtrlL, "Ctrl-L"},
    NamedKey{Key::kBackspace, "Backspace"},
    NamedKey{Key::kBackTab, "Shift-Tab"},
    NamedKey{Key::kUp, "Up"},
    NamedKey{Key::kDown, "Down"},
    NamedKey{Key::kLeft, "Left"},
    NamedKey{Key::kRight, "Right"},
    NamedKey{Key::kPageUp, "PgUp"},
    NamedKey{Key::kPageDown, "PgDn"},
    NamedKey{Key::kHome, "Home"},
    NamedKey{Key::kEnd, "End"},
    NamedKey{Key::kF1, "F1"},
    NamedKey{Key::kF3, "F3"},
    NamedKey{Key::kF4, "F4"},
    NamedKey{Key::kF10, "F10"},
    NamedKey{key_of(' '), "Space"},
};

// scdoc takes these for marks of its own.
std::string scdoc_text(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        escaped += std::string_view{"\\*_+~[#"}.find(c) == std::string_view::npos
                       ? std::string{c}
                       : std::string{'\\', c};
    }
    return escaped;
}

}  // namespace

std::span<const Binding> bindings()
{
    static const std::vector<Binding> kBindings{
        {Action::kQuit, {key_of('q'), Key::kF10}, "Leave", "Quit"},
        {Action::kHelp, {key_of('?'), key_of('h'), Key::kF1}, "Show the keys, and go back", "Help"},
        {Action::kEvents,
         {key_of('e')},
         "Show what happened since the start, and go back",
         nullptr},
        {Action::kNextAdapter, {Key::kTab}, "Show the next adapter", "Adapter"},
        {Action::kPreviousAdapter, {Key::kBackTab}, "Show the adapter before", nullptr},
        {Action::kAdapter0, {key_of('1')}, "Show the first adapter", nullptr},
        {Action::kAdapter1, {key_of('2')}, "Show the second adapter", nullptr},
        {Action::kAdapter2, {key_of('3')}, "Show the third adapter", nullptr},
        {Action::kEveryAdapter,
         {key_of('a')},
         "Show the processes of all adapters, or of the one above",
         nullptr},
        {Action::kSortLeft, {Key::kLeft, key_of('<')}, "Sort by the column to the left", nullptr},
        {Action::kSortRight, {Key::kRight, key_of('>')}, "Sort by the column to the right", "Sort"},
        {Action::kReverse, {key_of('r'), key_of('I')}, "Turn the order round", "Reverse"},
        {Action::kSortMemory, {key_of('M')}, "Sort by memory", nullptr},
        {Action::kSortPid, {key_of('N')}, "Sort by process id", nullptr},
        {Action::kFilter,
         {key_of('/'), key_of('\\'), Key::kF3, Key::kF4},
         "Show processes by name or id as you type; Enter keeps it so",
         "Filter"},
        {Action::kLeave, {Key::kEscape}, "Show all processes again; leave a page", nullptr},
        {Action::kUp, {Key::kUp, key_of('k')}, "Go to the row above", nullptr},
        {Action::kDown, {Key::kDown, key_of('j')}, "Go to the row below", nullptr},
        {Action::kPageUp, {Key::kPageUp}, "Go up by a page", nullptr},
        {Action::kPageDown, {Key::kPageDown}, "Go down by a page", nullptr},
        {Action::kFirst, {Key::kHome}, "Go to the first row", nullptr},
        {Action::kLast, {Key::kEnd, key_of('G')}, "Go to the last row", nullptr},
        {Action::kPause, {key_of('p'), key_of(' ')}, "Take no more samples, or go on", "Pause"},
        {Action::kSlower, {key_of('+'), key_of('=')}, "Take samples less often", "Slower"},
        {Action::kFaster, {key_of('-')}, "Take samples more often", "Faster"},
        {Action::kPlots,
         {key_of('g')},
         "Show all plots, those of one kind after the other, or none",
         "Plots"},
        {Action::kMarks, {key_of('b')}, "Draw plots of dots, of blocks or of ASCII", nullptr},
        {Action::kRedraw, {Key::kCtrlL}, "Draw the screen anew", nullptr},
    };
    return kBindings;
}

std::string key_name(Key key)
{
    const auto named = std::ranges::find(kNames, key, &NamedKey::key);
    if (named != kNames.end()) {
        return named->name;
    }
    std::string name;
    append_utf8(name, static_cast<char32_t>(key));
    return name;
}

std::optional<Action> action_of(Key key)
{
    const auto all = bindings();
    const auto binding = std::ranges::find_if(all, [key](const Binding& candidate) {
        return std::ranges::find(candidate.keys, key) != candidate.keys.end();
    });
    return binding == all.end() ? std::nullopt : std::optional(binding->action);
}

std::string key_names(const Binding& binding)
{
    std::string names;
    for (const Key key : binding.keys) {
        names += (names.empty() ? "" : ", ") + key_name(key);
    }
    return names;
}

std::vector<std::string> help_lines()
{
    std::vector<std::string> lines;
    for (const Binding& binding : bindings()) {
        lines.push_back(fmt::format("{:>13}  {}", key_names(binding), binding.what));
    }
    return lines;
}

std::string man_text()
{
    std::string text;
    for (const Binding& binding : bindings()) {
        std::string names;
        for (const Key key : binding.keys) {
            names += fmt::format("{}*{}*", names.empty() ? "" : ", ", scdoc_text(key_name(key)));
        }
        text += fmt::format("{}\n\t{}.\n\n", names, binding.what);
    }
    return text;
}

}  // namespace nimba::smi::top
