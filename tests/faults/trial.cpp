// SPDX-License-Identifier: MIT
#include "trial.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

namespace nimba::test {
namespace {

// Sockets do not count: a simulated machine keeps one for each open DRM node.
std::set<int> descriptors_now()
{
    std::set<int> descriptors;
    for (const auto& entry : std::filesystem::directory_iterator{"/proc/self/fd"}) {
        std::error_code ignored;
        if (!std::filesystem::read_symlink(entry.path(), ignored).string().starts_with("socket:")) {
            descriptors.insert(std::stoi(entry.path().filename().string()));
        }
    }
    // The listing's own is gone now.
    std::erase_if(descriptors, [](int fd) { return ::fcntl(fd, F_GETFD) < 0; });
    return descriptors;
}

Answer call(const EntryPoint& entry, Attempt& attempt)
{
    if (entry.prepare != nullptr) {
        entry.prepare();
    }
    Answer answer = entry.call(attempt);
    answer.output = attempt.output();
    return answer;
}

bool operator==(const Answer& one, const Answer& other)
{
    return one.status == other.status && one.bytes == other.bytes && one.output == other.output;
}

void write_text(std::FILE* file, const std::string& text)
{
    std::fprintf(file, "%zu ", text.size());
    std::fwrite(text.data(), 1, text.size(), file);
}

std::string read_text(std::FILE* file)
{
    std::size_t size = 0;
    if (std::fscanf(file, "%zu", &size) != 1) {
        return {};
    }
    std::fgetc(file);
    std::string text(size, '\0');
    text.resize(std::fread(text.data(), 1, size, file));
    return text;
}

bool is_cleared(std::string_view bytes)
{
    return std::ranges::all_of(bytes, [](char byte) { return byte == '\0'; });
}

// The lines, one behind the other.
std::string in_one_line(std::string text)
{
    std::string line;
    for (const char c : text) {
        line += c == '\n' ? std::string{" / "} : std::string{c};
    }
    return line.substr(0, line.size() - (line.ends_with(" / ") ? 3 : 0));
}

}  // namespace

Trial try_once(const EntryPoint& entry, Kind kind, std::size_t number, const Answer* usual)
{
    Trial trial;
    Attempt attempt{kind, number};
    const std::size_t held = held_resources();
    const std::set<int> before = descriptors_now();
    trial.answer = call(entry, attempt);
    trial.calls = attempt.calls();
    trial.interruptible = interruptible_calls();
    if (descriptors_now() != before) {
        trial.harm += " OPEN DESCRIPTOR";
    }
    if (usual != nullptr) {
        Attempt again{kind, 0};
        const Answer answer = call(entry, again);
        if (!(answer == *usual)) {
            trial.harm += " THEN " + answer.status + " " + answer.told + in_one_line(answer.output);
        }
        if (held_resources() != held) {
            trial.harm +=
                " HELD " + std::to_string(held) + " AND NOW " + std::to_string(held_resources());
        }
    }
    return trial;
}

Trial try_in_process(const EntryPoint& entry, Kind kind, std::size_t number)
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return {.harm = " NO PIPE"};
    }
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        const Trial trial = try_once(entry, kind, number, nullptr);
        std::FILE* const file = ::fdopen(ends[1], "w");
        for (const std::string* text :
             {&trial.answer.status, &trial.answer.bytes, &trial.answer.untouched,
              &trial.answer.told, &trial.answer.output, &trial.harm}) {
            write_text(file, *text);
        }
        write_text(file, std::to_string(trial.calls));
        write_text(file, std::to_string(trial.interruptible));
        std::fclose(file);
        std::exit(EXIT_SUCCESS);
    }
    ::close(ends[1]);
    std::FILE* const file = ::fdopen(ends[0], "r");
    Trial trial;
    for (std::string* text : {&trial.answer.status, &trial.answer.bytes, &trial.answer.untouched,
                              &trial.answer.told, &trial.answer.output, &trial.harm}) {
        *text = read_text(file);
    }
    trial.calls = std::strtoul(read_text(file).c_str(), nullptr, 10);
    trial.interruptible = std::strtoul(read_text(file).c_str(), nullptr, 10);
    std::fclose(file);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (status != 0) {
        trial.harm += " ENDED WITH " + std::to_string(status);
    }
    return trial;
}

std::string outcome_of(const Trial& trial, const Answer& usual)
{
    const Answer& answer = trial.answer;
    if (answer == usual) {
        return "right" + trial.harm;
    }
    if (answer.status == kNoMemory) {
        // How much was written by then is the compiler's matter.
        return answer.status + trial.harm;
    }
    std::string outcome = answer.status;
    if (answer.bytes != usual.bytes) {
        outcome += ", ";
        if (answer.bytes == answer.untouched) {
            outcome += "untouched";
        } else if (is_cleared(answer.bytes)) {
            outcome += "cleared";
        } else {
            outcome += answer.told;
        }
    } else if (!answer.bytes.empty()) {
        outcome += ", right";
    }
    if (answer.output != usual.output) {
        outcome += ", says \"" + in_one_line(answer.output) + "\"";
    }
    return outcome + trial.harm;
}

}  // namespace nimba::test
