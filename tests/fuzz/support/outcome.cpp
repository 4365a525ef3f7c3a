// SPDX-License-Identifier: MIT
#include "fuzz/support/outcome.hpp"

#include "fuzz/support/check.hpp"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace nimba::fuzz {
namespace {

// The errors of other functions, such as std::string_view::substr, have other texts.
void check_conversion(const std::exception& error)
{
    const std::string_view text{error.what()};
    check(text == "stoi" || text == "stoll", "an error is one of a number's conversion");
}

}  // namespace

Outcome outcome_of(const std::function<void()>& call)
{
    try {
        call();
        return Outcome::kDone;
    } catch (const std::invalid_argument& error) {
        check_conversion(error);
        return Outcome::kNoNumber;
    } catch (const std::out_of_range& error) {
        check_conversion(error);
        return Outcome::kOutOfRange;
    } catch (const Breach&) {
        return Outcome::kBreach;
    }
}

Outcome to_long(std::string_view text, int base, int64_t& number)
{
    const std::string copy{text};
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(copy.c_str(), &end, base);
    if (end == copy.c_str()) {
        return Outcome::kNoNumber;
    }
    if (errno == ERANGE) {
        return Outcome::kOutOfRange;
    }
    number = value;
    return Outcome::kDone;
}

Outcome to_int(std::string_view text, int base, int32_t& number)
{
    int64_t value = 0;
    const Outcome outcome = to_long(text, base, value);
    if (outcome == Outcome::kDone && value != static_cast<int32_t>(value)) {
        return Outcome::kOutOfRange;
    }
    if (outcome == Outcome::kDone) {
        number = static_cast<int32_t>(value);
    }
    return outcome;
}

int32_t low_bits(std::string_view text)
{
    return static_cast<int32_t>(std::strtol(std::string{text}.c_str(), nullptr, 10));
}

}  // namespace nimba::fuzz
