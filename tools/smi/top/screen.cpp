// SPDX-License-Identifier: MIT
// The one file that knows of ncurses.
#include "tools/smi/top/screen.hpp"

#include "tools/smi/top/unicode.hpp"

#include <clocale>
#include <cwchar>
#include <langinfo.h>
#include <unistd.h>

#include <sys/ioctl.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1
#include <curses.h>
#include <term.h>

namespace nimba::smi::top {
namespace {

// How an ink looks: a colour of 256, one of 8, -1 for the terminal's own, and attributes; of 256
// colours one behind the characters, instead of reversing them.
struct Look {
    short rich = -1;
    short plain = -1;
    attr_t attributes = A_NORMAL;
    short rich_ground = -1;
};

constexpr std::array<Look, kInks> kLooks{{
    {},                                    // kPlain
    {245, -1, A_NORMAL},                   // kDim
    {240, COLOR_BLUE, A_NORMAL},           // kFrame
    {-1, -1, A_BOLD},                      // kTitle
    {80, COLOR_CYAN, A_BOLD},              // kKey
    {250, -1, A_BOLD},                     // kHead
    {80, COLOR_CYAN, A_BOLD},              // kSorted
    {-1, -1, A_REVERSE, 238},              // kSelected
    {250, -1, A_NORMAL},                   // kTab
    {80, COLOR_CYAN, A_REVERSE | A_BOLD},  // kTabHere
    {220, COLOR_YELLOW, A_BOLD},           // kWarning
    {203, COLOR_RED, A_BOLD},              // kBad
    {77, COLOR_GREEN, A_NORMAL},           // kScale0
    {149, COLOR_GREEN, A_NORMAL},          // kScale1
    {221, COLOR_YELLOW, A_NORMAL},         // kScale2
    {208, COLOR_YELLOW, A_BOLD},           // kScale3
    {203, COLOR_RED, A_BOLD},              // kScale4
    {141, COLOR_MAGENTA, A_NORMAL},        // kMemory
    {80, COLOR_CYAN, A_NORMAL},            // kFrames
    {75, COLOR_BLUE, A_NORMAL},            // kClock
}};

// The time in which the bytes of a function key come, milliseconds.
constexpr int kEscapeDelay = 25;

constexpr int kRichColours = 256;

struct CursesKey {
    wint_t code;
    Key key;
};

constexpr std::array kCursesKeys{
    CursesKey{KEY_UP, Key::kUp},        CursesKey{KEY_DOWN, Key::kDown},
    CursesKey{KEY_LEFT, Key::kLeft},    CursesKey{KEY_RIGHT, Key::kRight},
    CursesKey{KEY_PPAGE, Key::kPageUp}, CursesKey{KEY_NPAGE, Key::kPageDown},
    CursesKey{KEY_HOME, Key::kHome},    CursesKey{KEY_END, Key::kEnd},
    CursesKey{KEY_BTAB, Key::kBackTab}, CursesKey{KEY_BACKSPACE, Key::kBackspace},
    CursesKey{KEY_ENTER, Key::kEnter},  CursesKey{KEY_F(1), Key::kF1},
    CursesKey{KEY_F(3), Key::kF3},      CursesKey{KEY_F(4), Key::kF4},
    CursesKey{KEY_F(10), Key::kF10},
};

Key typed_key(wint_t character)
{
    constexpr wint_t kDelete = 0x7F;
    constexpr wint_t kControlH = 0x08;
    if (character == kDelete || character == kControlH) {
        return Key::kBackspace;
    }
    return character == L'\r' ? Key::kEnter : static_cast<Key>(character);
}

attr_t attributes_of(Ink ink, int colours)
{
    const auto number = static_cast<std::size_t>(ink);
    const Look& look = kLooks.at(number);
    const bool has_ground = colours >= kRichColours && look.rich_ground >= 0;
    const attr_t attributes = has_ground ? look.attributes & ~A_REVERSE : look.attributes;
    return colours > 0 ? attributes | static_cast<attr_t>(COLOR_PAIR(static_cast<int>(number) + 1))
                       : attributes;
}

// Returns the number of colours that there are; 0 without any.
int set_colours()
{
    if (!has_colors() || start_color() == ERR) {
        return 0;
    }
    use_default_colors();
    const bool rich = COLORS >= kRichColours;
    for (std::size_t i = 0; i < kLooks.size(); ++i) {
        const Look& look = kLooks.at(i);
        init_pair(static_cast<short>(i + 1), rich ? look.rich : look.plain,
                  rich ? look.rich_ground : static_cast<short>(-1));
    }
    return COLORS;
}

std::terminate_handler g_before_screen = nullptr;

// Nobody reads a message on a screen that is never given back.
[[noreturn]] void terminate_without_screen()
{
    endwin();
    if (g_before_screen != nullptr) {
        g_before_screen();
    }
    std::abort();
}

}  // namespace

Screen::Screen(bool colours) : terminal_{newterm(nullptr, stdout, stdin)}
{
    if (terminal_ == nullptr) {
        throw std::runtime_error{"the terminal cannot be used"};
    }
    window_ = stdscr;
    g_before_screen = std::set_terminate(terminate_without_screen);
    if (colours) {
        colours_ = set_colours();
    }
    set_modes();
    // The variables LINES and COLUMNS, which were believed, may be out of date.
    resize();
}

Screen::~Screen()
{
    leave();
    std::set_terminate(g_before_screen);
    delscreen(terminal_);
}

void Screen::set_modes()
{
    cbreak();
    noecho();
    nonl();
    set_escdelay(kEscapeDelay);
    curs_set(0);
    keypad(window_, TRUE);
    nodelay(window_, TRUE);
    leaveok(window_, TRUE);
}

Size Screen::size() const
{
    return {getmaxx(window_), getmaxy(window_)};
}

void Screen::resize()
{
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0) {
        resizeterm(size.ws_row, size.ws_col);
    }
    forget();
}

void Screen::show(const Canvas& canvas)
{
    werase(window_);
    std::wstring run;
    for (int y = 0; y < canvas.size().height; ++y) {
        for (int x = 0; x < canvas.size().width;) {
            const int begin = x;
            const Ink ink = canvas.cell(x, y).ink;
            run.clear();
            for (; x < canvas.size().width && canvas.cell(x, y).ink == ink; ++x) {
                const char32_t glyph = canvas.cell(x, y).glyph;
                if (glyph != U'\0') {
                    run += static_cast<wchar_t>(glyph);
                }
            }
            wattrset(window_, static_cast<int>(attributes_of(ink, colours_)));
            mvwaddnwstr(window_, y, begin, run.data(), static_cast<int>(run.size()));
        }
    }
    wrefresh(window_);
}

void Screen::forget()
{
    clearok(window_, TRUE);
}

void Screen::leave()
{
    if (!left_) {
        endwin();
        left_ = true;
    }
}

void Screen::enter()
{
    // Whoever had the terminal meanwhile may have set it up anew.
    leave();
    resize();
    wrefresh(window_);
    left_ = false;
}

std::optional<Key> Screen::key()
{
    wint_t code = 0;
    const int kind = wget_wch(window_, &code);
    if (kind == OK) {
        return typed_key(code);
    }
    if (kind == KEY_CODE_YES) {
        for (const auto& [curses, key] : kCursesKeys) {
            if (curses == code) {
                return key;
            }
        }
    }
    return std::nullopt;
}

std::string terminal_fault(int input, int output)
{
    if (::isatty(input) == 0 || ::isatty(output) == 0) {
        return "top needs a terminal; use nimba-smi --watch";
    }
    int error = 0;
    const bool known = setupterm(nullptr, output, &error) == OK;
    const char* const address = known ? tigetstr("cup") : nullptr;
    if (known) {
        del_curterm(cur_term);
    }
    if (!known) {
        return "top does not know the type of this terminal: set TERM";
    }
    return address == nullptr || reinterpret_cast<std::intptr_t>(address) == -1
               ? "top needs a terminal with a cursor that can be moved; use nimba-smi --watch"
               : "";
}

bool shows_utf8()
{
    std::setlocale(LC_CTYPE, "");
    return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
}

}  // namespace nimba::smi::top
