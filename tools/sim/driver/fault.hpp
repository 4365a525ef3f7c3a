// SPDX-License-Identifier: MIT
#pragma once

#include "node_directory.hpp"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::sim {

enum class FaultKind {
    kOpen,     // opening fails
    kRead,     // reading fails, at once or behind some bytes
    kShort,    // a read gives few bytes
    kBlock,    // the first read waits
    kGarbage,  // the text is random bytes
    kWrite,    // a command fails, and does nothing
    kVanish,   // the node is not there
    kList,     // listing fails behind some entries
    kGone,     // the whole driver is not there, and what was open is dead
};

// Of the openings of nodes that a fault fits, or the commands, those that it befalls.
enum class FaultTimes { kAlways, kFirst, kEvery };

// Something that goes wrong in a simulated driver.
struct Fault {
    FaultKind kind = FaultKind::kOpen;
    std::optional<int> card;  // none: every adapter
    NodeDirectory directory = NodeDirectory::kDebug;
    std::string path;  // in the directory; a component "*" is any; "" is the directory itself
    int error = EIO;
    uint64_t bytes = 0;                   // kRead, kShort, kGarbage
    std::optional<uint64_t> entries;      // kList; none: half of them
    std::chrono::milliseconds length{0};  // kBlock
    uint64_t seed = 0;                    // kGarbage
    FaultTimes times = FaultTimes::kAlways;
    uint64_t count = 0;                                 // kFirst, kEvery
    std::chrono::milliseconds after{0};                 // begins so long after it was switched on
    std::optional<std::chrono::milliseconds> duration;  // ends so long after it began
};

// What a machine file and `nimba-sim fault` call the kind.
std::string_view to_text(FaultKind kind);

// The number of an error such as "ENOENT", if it is one that a fault can have.
std::optional<int> error_number(std::string_view name);

// The fault as a machine file tells it: lines "key = value".
std::string to_text(const Fault& fault);

}  // namespace nimba::sim
