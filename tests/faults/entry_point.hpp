// SPDX-License-Identifier: MIT
// The entry points of the interface that read or write anything, each with a call of it whose
// answer is known.
#pragma once

#include "fault.hpp"
#include "nimba_mgmt_interface.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace nimba::test {

// The status of a call that std::bad_alloc left.
inline constexpr const char* kNoMemory = "bad_alloc";

// What a call gave.
struct Answer {
    std::string status{};
    std::string bytes{};      // what it wrote
    std::string untouched{};  // the same bytes before the call
    std::string told{};       // the same for people
    std::string output{};     // on standard output
};

// A call during which something may fail.
class Attempt final {
  public:
    Attempt(Kind kind, std::size_t number) : kind_{kind}, number_{number} {}

    // Makes the call; it is all that `call` does. Returns its status as a text.
    template <typename Call>
    std::string operator()(Call&& call)
    {
        bool is_without_memory = false;
        std::int64_t status = 0;
        {
            const Fault fault{kind_, number_};
            try {
                if constexpr (std::is_void_v<decltype(call())>) {
                    call();
                } else {
                    status = call();
                }
            } catch (const std::bad_alloc&) {
                is_without_memory = true;
            }
            calls_ = Fault::calls(kind_);
        }
        output_ = Fault::output();
        return is_without_memory ? kNoMemory : std::to_string(status);
    }

    // How many calls of the kind there were.
    [[nodiscard]] std::size_t calls() const { return calls_; }
    [[nodiscard]] const std::string& output() const { return output_; }

  private:
    Kind kind_;
    std::size_t number_;
    std::size_t calls_ = 0;
    std::string output_;
};

struct EntryPoint {
    const char* name;
    int slot;           // of the adapter that is current; -1: none is
    void (*prepare)();  // what is done before each call; null: nothing
    Answer (*call)(Attempt& attempt);
    bool first_call_only;  // what it does is done once in the life of a process
    bool starts_commands = false;
    bool changes_answers = false;  // of others
    // It asks the kernel-interface library alone, or nobody: there is no call in whose middle the
    // driver can go away.
    bool calls_nothing = false;
    // What is told of answers without the driver whose status or bytes are of their own: a status
    // and what is told of the bytes. See driver_goes_away.
    std::array<const char*, 2> without_driver{};
    // The answer where drivers live, as outcomes.txt has answers, if it is another; else null.
    const char* live_answer = nullptr;
};

// The entry point, of whose answers without the driver these are told.
constexpr EntryPoint without_driver(EntryPoint entry, const char* told, const char* other = nullptr)
{
    entry.without_driver = {told, other};
    return entry;
}

constexpr EntryPoint without_calls(EntryPoint entry)
{
    entry.calls_nothing = true;
    return entry;
}

constexpr EntryPoint answers_live(EntryPoint entry, const char* answer)
{
    entry.live_answer = answer;
    return entry;
}

// The discovery record of this process.
inline find_adapter adapters{};

// Whether the drivers of the simulated machine live, rather than having plain files as their nodes,
// which keep what the test writes.
inline bool drivers_live = false;

std::span<const EntryPoint> adapter_entry_points();
std::span<const EntryPoint> memory_entry_points();
std::span<const EntryPoint> page_table_entry_points();
std::span<const EntryPoint> power_entry_points();
std::span<const EntryPoint> preference_entry_points();
std::span<const EntryPoint> text_entry_points();

template <typename Record>
std::string bytes_of(const Record& record)
{
    static_assert(std::is_trivially_copyable_v<Record>);
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

template <typename Record>
Record patterned()
{
    Record record;
    std::memset(&record, 0xA5, sizeof record);
    return record;
}

// A word that still holds the pattern is a dash.
inline std::string words_of(std::span<const std::uint32_t> words)
{
    std::string told;
    for (const std::uint32_t word : words) {
        told += (told.empty() ? "" : " ") + (word == 0xA5A5A5A5 ? "-" : std::to_string(word));
    }
    return told;
}

// Records that are words alone.
template <typename Record>
std::string told_words(const Record& record)
{
    std::array<std::uint32_t, sizeof(Record) / sizeof(std::uint32_t)> words{};
    std::memcpy(words.data(), &record, sizeof record);
    return words_of(words);
}

// Stands for bytes that are too many to be told.
inline std::string checksum(std::string_view bytes)
{
    std::uint32_t sum = 2166136261U;  // FNV-1a
    for (const char byte : bytes) {
        sum = (sum ^ static_cast<unsigned char>(byte)) * 16777619U;
    }
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "sum %08x", sum);
    return text.data();
}

// A call that fills one record, which holds a pattern before.
template <typename Record, typename Call, typename Tell>
Answer filled(Attempt& attempt, Call&& call, Tell&& tell, Record record = patterned<Record>())
{
    Answer answer;
    answer.untouched = bytes_of(record);
    answer.status = attempt([&] { return call(record); });
    answer.bytes = bytes_of(record);
    answer.told = tell(record);
    return answer;
}

}  // namespace nimba::test
