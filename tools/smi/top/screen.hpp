// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/top/canvas.hpp"
#include "tools/smi/top/keys.hpp"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

struct screen;
struct _win_st;

namespace nimba::smi::top {

// The terminal of standard input and output, taken over from the construction to the end of the
// object and put back as it was then, also when the process ends by std::terminate meanwhile.
class Screen final {
  public:
    // `colours`: as far as the terminal has any. Throws std::runtime_error when the terminal's type
    // is not known or it cannot do what a full screen needs.
    explicit Screen(bool colours);
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    ~Screen();

    [[nodiscard]] Size size() const;

    // Takes the terminal's new size over.
    void resize();

    void show(const Canvas& canvas);

    // Draws everything anew with the next show, whatever may be on the terminal.
    void forget();

    // Gives the terminal back for a time, and takes it over again.
    void leave();
    void enter();

    // A key that was pressed; nothing when none was.
    std::optional<Key> key();

  private:
    void set_modes();

    screen* terminal_;           // of ncurses
    _win_st* window_ = nullptr;  // all of it
    int colours_ = 0;
    bool left_ = false;
};

// What keeps a full screen from working; empty when nothing does.
std::string terminal_fault(int input, int output);

// Whether the terminal shows UTF-8: the user's locale says so. Takes the locale's characters over.
bool shows_utf8();

}  // namespace nimba::smi::top
