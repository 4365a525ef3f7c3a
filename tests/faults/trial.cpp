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

void prepare(const EntryPoint& entry)
{
    if (entry.prepare != nullptr) {
        entry.prepare();
    }
}

Answer call(const EntryPoint& entry, Attempt& attempt)
{
    Answer answer = entry.call(attempt);
    answer.output = attempt.output();
    return answer;
}

Answer call_undisturbed(const EntryPoint& entry)
{
    Attempt attempt{Kind::kOpen, 0};
    return call(entry, attempt);
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

// The texts of a trial.
template <typename TrialType, typename Visit>
void for_each_text(TrialType& trial, Visit&& visit)
{
    for (auto* answer : {&trial.answer, &trial.next}) {
        for (auto* text : {&answer->status, &answer->bytes, &answer->untouched, &answer->told,
                           &answer->output}) {
            visit(*text);
        }
    }
    visit(trial.harm);
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
std::string lines_in_one(const std::string& text)
{
    std::string line;
    for (const char c : text) {
        line += c == '\n' ? std::string{" / "} : std::string{c};
    }
    return line.substr(0, line.size() - (line.ends_with(" / ") ? 3 : 0));
}

void note_open_descriptors(const std::set<int>& before, Trial& trial)
{
    if (descriptors_now() != before) {
        trial.harm += " OPEN DESCRIPTOR";
    }
}

void note_held(std::size_t before, Trial& trial)
{
    if (held_resources() != before) {
        trial.harm +=
            " HELD " + std::to_string(before) + " AND NOW " + std::to_string(held_resources());
    }
}

Trial try_call(const EntryPoint& entry, Kind kind, std::size_t number)
{
    Trial trial;
    Attempt attempt{kind, number};
    trial.answer = call(entry, attempt);
    trial.calls = attempt.calls();
    trial.interruptible = interruptible_calls();
    return trial;
}

// In the process of its own. The list that both calls made is emptied before it is looked at what
// is held.
Trial try_twice(const EntryPoint& entry, Kind kind, std::size_t number)
{
    prepare(entry);
    const std::size_t held = held_resources();
    const std::set<int> descriptors = descriptors_now();
    Trial trial = try_call(entry, kind, number);
    trial.next = call_undisturbed(entry);
    note_open_descriptors(descriptors, trial);
    prepare(entry);
    note_held(held, trial);
    return trial;
}

// The answer, and how it differs from the usual one.
std::string difference(const Answer& answer, const Answer& usual)
{
    if (answer == usual) {
        return "right";
    }
    if (answer.status == kNoMemory) {
        // How much was written by then is the compiler's matter.
        return answer.status;
    }
    std::string told = answer.status;
    if (answer.bytes != usual.bytes) {
        told += ", ";
        if (answer.bytes == answer.untouched) {
            told += "untouched";
        } else if (is_cleared(answer.bytes)) {
            told += "cleared";
        } else {
            told += answer.told;
        }
    } else if (!answer.bytes.empty()) {
        told += ", right";
    }
    if (answer.output != usual.output) {
        told += ", says \"" + lines_in_one(answer.output) + "\"";
    }
    return told;
}

}  // namespace

Trial try_once(const EntryPoint& entry, Kind kind, std::size_t number, const Trial* usual)
{
    const std::size_t held = held_resources();
    const std::set<int> descriptors = descriptors_now();
    prepare(entry);
    Trial trial = try_call(entry, kind, number);
    note_open_descriptors(descriptors, trial);
    if (usual != nullptr) {
        prepare(entry);
        trial.next = call_undisturbed(entry);
        if (!(trial.next == usual->answer)) {
            trial.harm += " THEN " + in_one_line(trial.next) + lines_in_one(trial.next.output);
        }
        note_held(held, trial);
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
        const Trial trial = try_twice(entry, kind, number);
        std::FILE* const file = ::fdopen(ends[1], "w");
        for_each_text(trial, [&](const std::string& text) { write_text(file, text); });
        write_text(file, std::to_string(trial.calls));
        std::fclose(file);
        std::exit(EXIT_SUCCESS);
    }
    ::close(ends[1]);
    std::FILE* const file = ::fdopen(ends[0], "r");
    Trial trial;
    for_each_text(trial, [&](std::string& text) { text = read_text(file); });
    trial.calls = std::strtoul(read_text(file).c_str(), nullptr, 10);
    std::fclose(file);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (status != 0) {
        trial.harm += " ENDED WITH " + std::to_string(status);
    }
    return trial;
}

std::string in_one_line(const Answer& answer)
{
    return answer.status + (answer.told.empty() ? "" : ", ") + answer.told;
}

std::string outcome_of(const Trial& trial, const Trial& usual)
{
    std::string outcome = difference(trial.answer, usual.answer);
    const std::string next = difference(trial.next, usual.next);
    if (next != "right" && !usual.next.status.empty()) {
        outcome += "; the next " + next;
    }
    return outcome + trial.harm;
}

}  // namespace nimba::test
