// SPDX-License-Identifier: MIT
#include "fault.hpp"

#include "core/never_destroyed.hpp"
#include "failing.hpp"

#include <cerrno>
#include <set>
#include <utility>

namespace nimba::test {
namespace {

// The fault that is on.
bool armed = false;
Kind failing{};
std::size_t failing_number = 0;
std::array<std::size_t, kKinds.size()> counts{};
std::string kept_output;

// What was taken during faults and not given back.
NeverDestroyed<std::set<const void*>> held;
bool is_counting = false;

// Does something of the test's own, which counts for nothing.
template <typename Action>
void uncounted(Action&& action)
{
    const bool was_armed = std::exchange(armed, false);
    const bool was_counting = std::exchange(is_counting, true);
    action();
    is_counting = was_counting;
    armed = was_armed;
}

// The call before which something else is done.
std::size_t interrupted_number = 0;
void (*interruption)() = nullptr;
std::size_t interruptible = 0;

constexpr bool is_interruptible(Kind kind)
{
    switch (kind) {
        case Kind::kInterruptedRead:
        case Kind::kInterruptedWrite:
        case Kind::kLoad:
        case Kind::kLookUp:
        case Kind::kMalloc:
        case Kind::kNew:
            return false;
        default:
            return true;
    }
}

}  // namespace

bool is_fault_on()
{
    return armed;
}

bool fails(Kind kind)
{
    if (armed && is_interruptible(kind) && ++interruptible == interrupted_number) {
        uncounted(interruption);
    }
    return armed && ++counts[static_cast<std::size_t>(kind)] == failing_number && kind == failing;
}

bool fails_with(Kind kind, int error)
{
    const bool is_failing = fails(kind);
    if (is_failing) {
        errno = error;
    }
    return is_failing;
}

void note_given_back(const void* resource)
{
    if (!is_counting) {
        uncounted([&] { held.value.erase(resource); });
    }
}

void note_taken(const void* resource)
{
    if (armed && resource != nullptr) {
        uncounted([&] { held.value.insert(resource); });
    }
}

void keep_output(const char* text)
{
    uncounted([&] { kept_output.append(text); });
}

Fault::Fault(Kind kind, std::size_t number)
{
    if (kind == Kind::kDescriptors && number != 0) {
        no_more_.emplace();
    }
    kept_output.clear();
    counts = {};
    interruptible = 0;
    failing = kind;
    failing_number = number;
    armed = true;
}

Fault::~Fault()
{
    armed = false;
}

std::size_t Fault::calls(Kind kind)
{
    return counts[static_cast<std::size_t>(kind)];
}

const std::string& Fault::output()
{
    return kept_output;
}

void interrupt_at(std::size_t number, void (*action)())
{
    interrupted_number = number;
    interruption = action;
}

std::size_t interruptible_calls()
{
    return interruptible;
}

std::size_t held_resources()
{
    return held.value.size();
}

}  // namespace nimba::test
