// SPDX-License-Identifier: MIT
// driver_goes_away COMMANDS OUTCOMES: calls every entry point of the library that asks the driver,
// each in a process of its own, on the simulated machine it is run on. Its answer is the one in the
// file OUTCOMES, or the one that the table of entry points has for drivers that live. In the middle
// of all of the calls the driver goes away, for two seconds. They end, and so do further ones
// meanwhile, without a descriptor left open. Their status is as before or -1, and what they write
// is, word by word, as before, untouched or cleared, but for the answers that the table of entry
// points has for them. When the driver is back the answers are what they were, byte by byte. Writes
// what is not so, and what was so. COMMANDS is a directory of commands that are found first.
#include "trial.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <system_error>
#include <thread>
#include <vector>

namespace nimba::test {
namespace {

constexpr const char* kGoAway = "nimba-sim fault gone --for-ms 2000";
// One node of each adapter.
constexpr std::array kNodes{"/sys/kernel/debug/dri/0/qv/info",
                            "/sys/bus/pci/devices/0000:02:00.0/jw_info/mclk"};
// The status with which most entry points tell a failure.
constexpr const char* kFailed = "-1";
constexpr auto kPatience = std::chrono::seconds{30};

int be_silent(const char* /*text*/, ...)
{
    return 0;
}

std::array<int, 2> make_pipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error{errno, std::generic_category(), "cannot make a pipe"};
    }
    return ends;
}

// Many processes wait at a gate until another opens it.
class Gate final {
  public:
    void open() { ::close(ends_[1]); }
    // First thing in a process that will wait: it does not hold the gate shut.
    void let_go() { ::close(ends_[1]); }
    void wait()
    {
        char none = 0;
        while (::read(ends_[0], &none, 1) > 0) {
        }
    }

  private:
    std::array<int, 2> ends_ = make_pipe();
};

// Counts processes that come by.
class Counter final {
  public:
    void come_by()
    {
        if (::write(ends_[1], "x", 1) != 1) {
            std::puts("nobody counts");
        }
    }
    // Waits until so many came by. Returns false when it takes too long.
    bool wait_for(std::size_t count)
    {
        constexpr int kMilliseconds = 30'000;
        pollfd end{ends_[0], POLLIN, 0};
        char one = 0;
        for (; count > 0; --count) {
            if (::poll(&end, 1, kMilliseconds) != 1 || ::read(ends_[0], &one, 1) != 1) {
                std::puts("not all come as far");
                return false;
            }
        }
        return true;
    }

  private:
    std::array<int, 2> ends_ = make_pipe();
};

// Each is used in one direction: by the processes that call, or by the one that waits for them.
struct Meeting {
    Counter in_the_middle;
    Gate gone;
    Counter ended;
    Gate back;
};

Meeting* meeting = nullptr;

void wait_until_gone()
{
    interrupt_at(0, nullptr);
    meeting->in_the_middle.come_by();
    meeting->gone.wait();
}

// The directories of a driver that is back are others.
void discover(int slot)
{
    adapters = {};
    adapters.header.vendor_id_filter = 0xFFFF;
    gfx_find_adapter(&adapters);
    if (slot >= 0) {
        adapters.chip_id_idx = slot;
        gfx_global_init(&adapters);
    }
}

Trial call(const EntryPoint& entry)
{
    return try_once(entry, Kind::kOpen, 0, nullptr);
}

// The answers that outcomes.txt begins with, in one line each.
std::set<std::string> known_answers;

bool read_answers(const char* path)
{
    std::ifstream file{path};
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with(' ')) {
            known_answers.insert(line);
        }
    }
    return file.eof() && !known_answers.empty();
}

// Whether a call that nothing disturbs gives what is written down.
bool is_known(const EntryPoint& entry, const Answer& usual)
{
    const std::string told = in_one_line(usual);
    const bool known = entry.live_answer != nullptr
                           ? told == entry.live_answer
                           : known_answers.contains(std::string{entry.name} + ": " + told);
    if (!known) {
        std::printf("%s, undisturbed: %s, which is not written down\n", entry.name, told.c_str());
    }
    return known;
}

// Whether there is a middle of the call as the table has it: the driver goes away there.
bool has_known_middle(const EntryPoint& entry, std::size_t calls)
{
    if ((calls == 0) == entry.calls_nothing) {
        return true;
    }
    std::printf("%s: %zu calls in whose middle the driver can go away\n", entry.name, calls);
    return false;
}

void tell_difference(const EntryPoint& entry, const char* when, const Answer& answer,
                     const Answer& usual)
{
    std::printf("%s, %s: %s %s, before %s %s\n", entry.name, when, answer.status.c_str(),
                answer.told.c_str(), usual.status.c_str(), usual.told.c_str());
}

bool is_right_again(const EntryPoint& entry, const Answer& usual)
{
    const Answer answer = call(entry).answer;
    if (answer.status == usual.status && answer.told == usual.told && answer.bytes == usual.bytes) {
        return true;
    }
    tell_difference(entry, "when it is back", answer, usual);
    return false;
}

// Whether each word is as before, as it was before the call, or cleared; a list may end early.
bool is_part_of(const Answer& answer, const Answer& usual)
{
    constexpr std::size_t kWord = sizeof(std::uint32_t);
    const std::string_view bytes = answer.bytes;
    for (std::size_t place = 0; place < bytes.size(); place += kWord) {
        const std::string_view word = bytes.substr(place, kWord);
        const auto is_of = [&](std::string_view others) {
            return place < others.size() && others.substr(place, word.size()) == word;
        };
        const bool is_cleared = word.find_first_not_of('\0') == std::string_view::npos;
        if (!is_cleared && !is_of(usual.bytes) && !is_of(answer.untouched)) {
            return false;
        }
    }
    return true;
}

bool is_told(const EntryPoint& entry, const Answer& answer)
{
    const std::string told = answer.status + " " + answer.told;
    return std::ranges::any_of(
        entry.without_driver, [&](const char* known) { return known != nullptr && told == known; });
}

// Whether a call without the driver ended well: with the status from before or that of a failure
// and nothing that was in neither record, or with an answer that is known to be the interface's.
bool ends_well(const EntryPoint& entry, const char* when, const Trial& trial, const Answer& usual)
{
    const Answer& answer = trial.answer;
    bool well = trial.harm.empty();
    if (!well) {
        std::printf("%s, %s:%s\n", entry.name, when, trial.harm.c_str());
    }
    const bool is_likely = answer.status == usual.status || answer.status == kFailed;
    if (!(is_likely && is_part_of(answer, usual)) && !is_told(entry, answer)) {
        tell_difference(entry, when, answer, usual);
        well = false;
    }
    return well;
}

int go_through(const EntryPoint& entry)
{
    meeting->gone.let_go();
    meeting->back.let_go();
    discover(entry.slot);
    call(entry);
    const Trial undisturbed = call(entry);
    const Answer& usual = undisturbed.answer;
    const std::size_t calls = undisturbed.interruptible;
    const bool expected = is_known(entry, usual) && has_known_middle(entry, calls);
    if (calls == 0) {
        wait_until_gone();
    } else {
        interrupt_at((calls + 1) / 2, wait_until_gone);
    }
    const Trial interrupted = call(entry);
    interrupt_at(0, nullptr);
    const Trial without = call(entry);
    meeting->ended.come_by();
    meeting->back.wait();
    discover(entry.slot);
    const bool well = ends_well(entry, "in the middle", interrupted, usual);
    const bool also_well = ends_well(entry, "without it", without, usual);
    return is_right_again(entry, usual) && expected && well && also_well ? EXIT_SUCCESS
                                                                         : EXIT_FAILURE;
}

bool is_there(const char* node)
{
    const int fd = ::open(node, O_RDONLY | O_CLOEXEC);
    char byte = 0;
    const bool is_readable = fd >= 0 && ::read(fd, &byte, 1) == 1;
    if (fd >= 0) {
        ::close(fd);
    }
    return is_readable;
}

bool comes_back(const char* node)
{
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!is_there(node)) {
        if (std::chrono::steady_clock::now() > end) {
            std::printf("%s does not come back\n", node);
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds{20});
    }
    return true;
}

int run(const std::string& commands, const char* outcomes)
{
    if (!read_answers(outcomes)) {
        std::printf("cannot read %s\n", outcomes);
        return EXIT_FAILURE;
    }
    drivers_live = true;
    ::setenv("PATH", (commands + ":" + std::getenv("PATH")).c_str(), 1);
    set_print_callback(be_silent);
    take_over_calls();
    std::fflush(stdout);

    Meeting all;
    meeting = &all;
    std::vector<pid_t> children;
    std::size_t left_out = 0;
    std::size_t good = 0;
    for (const auto room : {adapter_entry_points(), memory_entry_points(),
                            page_table_entry_points(), power_entry_points()}) {
        for (const EntryPoint& entry : room) {
            if (entry.changes_answers) {
                ++left_out;
                continue;
            }
            const pid_t child = ::fork();
            if (child == 0) {
                std::exit(go_through(entry));
            }
            children.push_back(child);
        }
    }
    bool well = all.in_the_middle.wait_for(children.size());
    well = std::system(kGoAway) == 0 && well;  // NOLINT(cert-env33-c): a text of this test
    if (is_there(kNodes[0])) {
        std::puts("the driver has not gone away");
        well = false;
    }
    all.gone.open();
    well = all.ended.wait_for(children.size()) && well;
    well = std::ranges::all_of(kNodes, comes_back) && well;
    all.back.open();
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        good += status == 0 ? 1 : 0;
    }
    well = good == children.size() && well;
    std::printf(
        "%zu of %zu entry points gave what is written down; a call in the middle of which the "
        "driver "
        "went away, and one more without it, ended with an answer from before or that of a failure "
        "and no descriptor left open; one when it was back was right again. Not called: %zu that "
        "change others' answers, "
        "and those that do not ask the driver\n",
        good, children.size(), left_out);
    return well ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace nimba::test

int main(int argument_count, char** arguments)
{
    if (argument_count != 3) {
        std::fputs("usage: driver_goes_away COMMANDS OUTCOMES\n", stderr);
        return 2;
    }
    return nimba::test::run(arguments[1], arguments[2]);
}
