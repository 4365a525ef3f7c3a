// SPDX-License-Identifier: MIT
// What of the C library fails under the library: one call of one function, once.
#pragma once

#include "support/no_more_descriptors.hpp"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::test {

// A function of the C library, or a way in which it fails. In the order of kKinds.
enum class Kind {
    kOpen,
    kOpenAt,
    kOpenStream,
    kStreamOf,
    kRead,
    kInterruptedRead,
    kWrite,
    kInterruptedWrite,
    kClose,
    kSeek,
    kState,
    kOpenDirectory,
    kDirectoryOf,
    kListing,
    kCommand,
    kLoad,
    kLookUp,
    kMalloc,
    kNew,
    kDescriptors,
};

struct KindName {
    Kind kind;
    std::string_view name;
};

inline constexpr std::array kKinds{
    KindName{Kind::kOpen, "open"},
    KindName{Kind::kOpenAt, "openat"},
    KindName{Kind::kOpenStream, "fopen"},
    KindName{Kind::kStreamOf, "fdopen"},
    KindName{Kind::kRead, "read"},
    KindName{Kind::kInterruptedRead, "read EINTR"},
    KindName{Kind::kWrite, "write"},
    KindName{Kind::kInterruptedWrite, "write EINTR"},
    KindName{Kind::kClose, "close"},
    KindName{Kind::kSeek, "lseek"},
    KindName{Kind::kState, "fstat"},
    KindName{Kind::kOpenDirectory, "opendir"},
    KindName{Kind::kDirectoryOf, "fdopendir"},
    KindName{Kind::kListing, "readdir"},
    KindName{Kind::kCommand, "popen"},
    KindName{Kind::kLoad, "dlopen"},
    KindName{Kind::kLookUp, "dlsym"},
    KindName{Kind::kMalloc, "malloc"},
    KindName{Kind::kNew, "new"},
    KindName{Kind::kDescriptors, "no descriptor"},
};

// Whether how often it happens depends on the compiler rather than on the driver.
constexpr bool is_memory(Kind kind)
{
    return kind == Kind::kMalloc || kind == Kind::kNew;
}

// Puts the functions of this test before those that the library and the C++ library under it call.
// Once, before any other use.
void take_over_calls();

// In its scope the call `number` of that kind fails, counted from 1; none with 0. Calls are counted
// and what they write to standard output is kept.
class Fault final {
  public:
    Fault(Kind kind, std::size_t number);
    ~Fault();
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;

    // The calls of this kind so far.
    [[nodiscard]] static std::size_t calls(Kind kind);
    // What was written to standard output so far.
    [[nodiscard]] static const std::string& output();

  private:
    std::optional<NoMoreDescriptors> no_more_;
};

// Has `action` done in the middle of the library's calls: before the one with that number, of all
// kinds but memory and libraries, in the scope of each fault. With 0 there is none.
void interrupt_at(std::size_t number, void (*action)());

// How many such calls there were in the scope of the last fault.
std::size_t interruptible_calls();

// How many streams, listings, commands and blocks of memory the library took in the scope of faults
// and has not given back.
std::size_t held_resources();

}  // namespace nimba::test
