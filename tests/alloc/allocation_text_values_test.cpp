// SPDX-License-Identifier: MIT
// What the values in the text of one allocation are read as.
#include "allocation_text_fixture.hpp"

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace nimba::test {
namespace {

using namespace std::string_literals;

// A value without its newline, and what it is read as.
struct Value {
    std::string text;
    std::int32_t number;
};

void PrintTo(const Value& value, std::ostream* out)
{
    *out << '"' << value.text << '"';
}

class DecimalValue : public AllocationText, public testing::WithParamInterface<Value> {};

TEST_P(DecimalValue, IsItsNumbersLowBits)
{
    const std::string value = GetParam().text + "\n";
    EXPECT_EQ(read("width=" + value).width, GetParam().number);
    EXPECT_EQ(read("width=" + value, kLegacy).width, GetParam().number);
    EXPECT_EQ(read("gpu_virt_addr=" + value).gpu_virt_addr, GetParam().number);
    EXPECT_EQ(read("segmentid=" + value + "share=3\n").segmentid, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    , DecimalValue,
    testing::Values(Value{"", 0}, Value{"0", 0}, Value{"12abc", 12}, Value{"abc", 0},
                    Value{"-5", -5}, Value{"+5", 5}, Value{"  \t\v\f\r 8", 8}, Value{" -8 ", -8},
                    Value{"- 8", 0}, Value{"+-8", 0}, Value{"--8", 0}, Value{"-", 0}, Value{"+", 0},
                    Value{" ", 0}, Value{"0x10", 0}, Value{"010", 10}, Value{"0b11", 0},
                    Value{"000000000000000000000009", 9}, Value{"1.9", 1}, Value{"1e3", 1},
                    Value{"1,000", 1}, Value{"7=8", 7}, Value{"=8", 0},
                    Value{"2147483647", 2147483647}, Value{"-2147483648", -2147483647 - 1},
                    Value{"2147483648", -2147483647 - 1}, Value{"-2147483649", 2147483647},
                    Value{"4294967295", -1}, Value{"4294967296", 0}, Value{"4294967297", 1},
                    Value{"-4294967295", 1}, Value{"68719476741", 5},
                    Value{"9223372036854775807", -1}, Value{"9223372036854775808", -1},
                    Value{"99999999999999999999999", -1}, Value{"-9223372036854775808", 0},
                    Value{"-9223372036854775807", 1}, Value{"-9223372036854775809", 0},
                    Value{"-99999999999999999999999", 0}, Value{"18446744073709551616", -1},
                    Value{"18446744073709551621", -1}, Value{"9223372036854775806", -2},
                    Value{"\xc3\xa9", 0}, Value{"5\xff", 5},
                    Value{"\xa0"
                          "5",
                          0}));

// A value that both "handle" and, with a driver of the other kind, "device" read in base 16.
class HexadecimalValue : public AllocationText, public testing::WithParamInterface<Value> {};

TEST_P(HexadecimalValue, IsReadForHandleAndDevice)
{
    EXPECT_EQ(read("handle=" + GetParam().text + "\n").handle, GetParam().number);
    EXPECT_EQ(read("handle=" + GetParam().text + "\n", kLegacy).handle, GetParam().number);
    EXPECT_EQ(read("device=" + GetParam().text + "\n", kLegacy).device, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    , HexadecimalValue,
    testing::Values(Value{"ffff", 65535}, Value{"FFFF", 65535}, Value{"aBcD", 0xabcd},
                    Value{"0x1f", 31}, Value{"0X1F", 31}, Value{"-0x10", -16}, Value{"+10", 16},
                    Value{"  \t\v\f\r10", 16}, Value{"10 ", 16}, Value{"10g", 16}, Value{"0x", 0},
                    Value{"0xg", 0}, Value{"00x10", 0}, Value{"0", 0}, Value{"-0", 0},
                    Value{"10=20", 16}, Value{"7fffffff", 2147483647},
                    Value{"0x7fffffff", 2147483647}, Value{"-80000000", -2147483647 - 1},
                    Value{"00000000000000000000007fffffff", 2147483647}, Value{"1_0", 1},
                    Value{"face-b", 0xface}));

class DecimalDevice : public AllocationText, public testing::WithParamInterface<Value> {};

TEST_P(DecimalDevice, IsReadWithAVaDriver)
{
    EXPECT_EQ(read("device=" + GetParam().text + "\n").device, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(, DecimalDevice,
                         testing::Values(Value{"16", 16}, Value{"0x10", 0}, Value{"010", 10},
                                         Value{" \t+7", 7}, Value{"-7", -7}, Value{"12abc", 12},
                                         Value{"2147483647", 2147483647},
                                         Value{"-2147483648", -2147483647 - 1}));

TEST_F(AllocationText, MayHaveAnyCharacterBehindADigit)
{
    const std::string digits = "0123456789abcdefABCDEF";
    for (int code = 0; code < 256; ++code) {
        const char character = static_cast<char>(code);
        const std::size_t place = digits.find(character);
        // Upper case follows lower case in `digits`.
        const auto digit = static_cast<std::int32_t>(place < 16 ? place : place - 6);
        const bool decimal = place < 10;
        const bool hexadecimal = place < digits.size();
        const std::string value = std::string{"=1"} + character + "\n";
        EXPECT_EQ(read("size" + value, kLegacy).size, decimal ? 10 + digit : 1) << code;
        EXPECT_EQ(read("device" + value).device, decimal ? 10 + digit : 1) << code;
        EXPECT_EQ(read("handle" + value).handle, hexadecimal ? 16 + digit : 1) << code;
    }
}

// A line that makes the standard conversion fail, with a driver of this kind.
struct Refused {
    const char* text;
    std::int32_t va_driver;
};

void PrintTo(const Refused& refused, std::ostream* out)
{
    *out << '"' << refused.text << "\", VA=" << refused.va_driver;
}

class RefusedValue : public AllocationText, public testing::WithParamInterface<Refused> {
  protected:
    // Expects that the exception leaves the reader as this type, with the conversion's name, also
    // behind other nodes.
    template <class Error>
    void expect_error()
    {
        tree_.add("1", GetParam().text + "\nsize=5\n"s);
        tree_.add("alike", "handle=1\ndevice=1\n");
        tree_.add("device", "device=1\n");
        expect_error_behind<Error>({});
        expect_error_behind<Error>({"usual"});
        expect_error_behind<Error>({"alike"});
        expect_error_behind<Error>({"device"});
        expect_error_behind<Error>({"usual", "alike", "alike"});
    }

  private:
    template <class Error>
    void expect_error_behind(std::vector<std::string> names)
    {
        const std::size_t count = names.size();
        names.emplace_back("1");
        const ListedAs listed{names};
        Records list;
        std::string what;
        try {
            get_current_allocation_data(list, 0, GetParam().va_driver);
        } catch (const Error& error) {
            EXPECT_EQ(typeid(error), typeid(Error));
            what = error.what();
        }
        EXPECT_EQ(what, "stoi");
        EXPECT_EQ(list.size(), count);
    }
};

using ValueWithoutDigits = RefusedValue;

TEST_P(ValueWithoutDigits, IsAnInvalidArgument)
{
    expect_error<std::invalid_argument>();
}

INSTANTIATE_TEST_SUITE_P(
    , ValueWithoutDigits,
    testing::Values(Refused{"handle=", kVa}, Refused{"handle=", kLegacy}, Refused{"handle=g", kVa},
                    Refused{"handle= ", kVa}, Refused{"handle=-", kVa}, Refused{"handle=+-1", kVa},
                    Refused{"handle=x10", kVa}, Refused{"handle=\r", kVa},
                    Refused{"handle==1", kVa}, Refused{"handle=@", kVa}, Refused{"handle=`", kVa},
                    Refused{"device=", kVa}, Refused{"device=", kLegacy}, Refused{"device=ff", kVa},
                    Refused{"device=g", kLegacy}, Refused{"device=- 1", kVa},
                    Refused{"device=-", kVa}, Refused{"handle=1\nhandle=", kVa},
                    Refused{"handle=\nhandle=1", kVa}, Refused{"device=1\ndevice=none", kVa}));

using ValueOutOfRange = RefusedValue;

TEST_P(ValueOutOfRange, IsOutOfRange)
{
    expect_error<std::out_of_range>();
}

INSTANTIATE_TEST_SUITE_P(
    , ValueOutOfRange,
    testing::Values(
        Refused{"handle=80000000", kVa}, Refused{"handle=0x80000000", kLegacy},
        Refused{"handle=ffffffff", kVa}, Refused{"handle=-80000001", kVa},
        Refused{"handle=100000000", kVa}, Refused{"handle=ffffffffffffffff", kVa},
        Refused{"handle=fffffffffffffffff", kVa}, Refused{"handle=ffffffff80000000", kLegacy},
        Refused{"handle=10000000000000000", kVa}, Refused{"handle=100000000000000001", kVa},
        Refused{"device=ffffffffffffffff", kLegacy}, Refused{"device=100000000000000001", kLegacy},
        Refused{"device=18446744073709551617", kVa}, Refused{"handle=-fffffffffffffffff", kVa},
        Refused{"device=2147483648", kVa}, Refused{"device=-2147483649", kVa},
        Refused{"device=4294967297", kVa}, Refused{"device=99999999999999999999", kVa},
        Refused{"device=80000000", kLegacy}, Refused{"device=-80000001", kLegacy},
        Refused{"device=10000000000000000", kLegacy}));

}  // namespace
}  // namespace nimba::test
