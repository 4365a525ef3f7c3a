// SPDX-License-Identifier: MIT
// What the parser remembers of earlier nodes never changes what it reads of the next.
#include "alloc/allocation_text.hpp"
#include "alloc/key_value.hpp"
#include "allocation_keys.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::test {
namespace {

constexpr std::size_t kUsualLines = 21;

const std::vector<std::string> kLines{"handle=1f\n",
                                      "device=16\n",
                                      "width=1920\n",
                                      "height=1080\n",
                                      "pitch=7680\n",
                                      "bit_cnt=32\n",
                                      "secured=0\n",
                                      "size=8294400\n",
                                      "tile=1\n",
                                      "cpu_visible=0\n",
                                      "cache_type=2\n",
                                      "pool_type=1\n",
                                      "at_type=3\n",
                                      "segmentid=-1\n",
                                      "hw_format=28\n",
                                      "compress_format=0\n",
                                      "imported=0\n",
                                      "fb_offset=4096\n",
                                      "bl_slot_index=-1\n",
                                      "gpu_virt_addr=4294967297\n",
                                      "share=0\n",
                                      "driver_note=7\n",
                                      "\n",
                                      "no equals sign\n",
                                      "handle=0x1F\n",
                                      "handle= 7f\n",
                                      "handle=ffffffff\n",
                                      "handle=\n",
                                      "handle=-1\n",
                                      "device=ff\n",
                                      "device=4294967296\n",
                                      "device=+5\n",
                                      "size=+5\n",
                                      "size= 5\n",
                                      "size=5 \n",
                                      "size=5\r\n",
                                      "size=\n",
                                      "size=-\n",
                                      "size=12abc\n",
                                      "size=99999999999999999999\n",
                                      "size=-99999999999999999999\n",
                                      "size=999999999999999999\n",
                                      "size=2147483648\n",
                                      "size =5\n",
                                      "sizes=5\n",
                                      "siz=5\n",
                                      "=5\n",
                                      "size==5\n",
                                      "size=5=6\n",
                                      "width=0x10\n",
                                      "handle=000000000000000000001f\n",
                                      "handle=80000000\n",
                                      "handle=10000000000000001\n",
                                      "handle=7fffffff\n"};

// The record, or which error left.
struct Outcome {
    Record record{};
    std::string error;

    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out)
{
    PrintTo(outcome.record, out);
    *out << outcome.error;
}

// What `read` returns, or which error of a conversion leaves it.
template <class Read>
Outcome outcome_of(Read&& read)
{
    try {
        return {read(), ""};
    } catch (const std::invalid_argument&) {
        return {{}, "invalid argument"};
    } catch (const std::out_of_range&) {
        return {{}, "out of range"};
    }
}

Record parse(AllocationParser& parser, const std::string& text, bool line_by_line)
{
    parser.begin();
    if (line_by_line) {
        for_each_line(text, [&](std::string_view line) { parser.add(line); });
    } else {
        parser.add(text);
    }
    return parser.record();
}

// The number of a field, read as the interface says and in no other way.
std::int32_t plain_number(const std::string& key, const std::string& value, bool va_driver)
{
    if (key == "handle") {
        return std::stoi(value, nullptr, 16);
    }
    if (key == "device") {
        return std::stoi(value, nullptr, va_driver ? 10 : 16);
    }
    return static_cast<std::int32_t>(std::strtol(value.c_str(), nullptr, 10));
}

Record read_plainly(const std::string& text, bool va_driver)
{
    Record record{};
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        const std::string line = text.substr(start, end - start);
        start = end;
        const std::size_t sign = line.find('=');
        if (sign == std::string::npos) {
            continue;
        }
        const std::string key = line.substr(0, sign);
        std::string value = line.substr(sign + 1);
        if (!value.empty()) {
            value.pop_back();
        }
        for (const RecordField& field : kAllocationKeys) {
            if (key == field.name) {
                record.*field.member = plain_number(key, value, va_driver);
            }
        }
    }
    return record;
}

// Whether a line has more characters than a value may have.
bool has_long_line(const std::string& text)
{
    std::size_t start = 0;
    std::size_t end = 0;
    while ((end = text.find('\n', start)) != std::string::npos && end - start < 127) {
        start = end + 1;
    }
    return end != std::string::npos || text.size() - start >= 127;
}

class RememberedKeys : public testing::TestWithParam<bool> {
  protected:
    std::size_t below(std::size_t bound) { return random() % bound; }

    void change(std::string& line)
    {
        const std::size_t place = below(line.size());
        switch (below(5)) {
            case 0:
                line = kLines[below(kLines.size())];
                break;
            case 1:
                line.insert(place, 1, static_cast<char>(below(256)));
                break;
            case 2:
                line[place] = static_cast<char>(line[place] ^ (1 << below(8)));
                break;
            case 3:
                line.resize(place + 1);
                break;
            default:
                line[place] = static_cast<char>('0' + below(16));
                break;
        }
    }

    // The lines of an earlier node with a few of them changed, moved, added or lost.
    void change(std::vector<std::string>& lines)
    {
        for (std::size_t times = below(4); times > 0; --times) {
            switch (below(7)) {
                case 0:
                    std::swap(lines[below(lines.size())], lines[below(lines.size())]);
                    break;
                case 1:
                    lines.push_back(kLines[below(kLines.size())]);
                    break;
                default:
                    change(lines[below(lines.size())]);
                    break;
            }
        }
        if (lines.size() > 80) {
            lines.resize(kUsualLines);
        }
    }

    // The text of the next node, whose last line may lack its end.
    std::string next_text()
    {
        change(lines_);
        std::string text = text_of_lines();
        if (has_long_line(text)) {
            begin_again();
            text = text_of_lines();
        }
        if (below(10) == 0) {
            text.resize(text.size() - below(lines_.back().size() + 1));
        }
        return text;
    }

    void begin_again() { lines_.assign(kLines.begin(), kLines.begin() + kUsualLines); }

    std::mt19937 random{20260601};  // NOLINT(cert-msc32-c,cert-msc51-cpp): repeatable

  private:
    std::string text_of_lines() const
    {
        std::string text;
        for (const std::string& line : lines_) {
            text += line;
        }
        return text;
    }

    std::vector<std::string> lines_{kLines.begin(), kLines.begin() + kUsualLines};
};

TEST_P(RememberedKeys, DoNotChangeWhatIsRead)
{
    AllocationParser experienced{GetParam()};
    int failed = 0;
    for (int node = 0; node < 50'000; ++node) {
        const std::string text = next_text();
        const bool line_by_line = below(2) == 0;
        const Outcome expected = outcome_of([&] { return read_plainly(text, GetParam()); });
        ASSERT_EQ(outcome_of([&] { return parse(experienced, text, line_by_line); }), expected)
            << text;
        if (!expected.error.empty()) {
            ++failed;
            begin_again();
        }
    }
    EXPECT_GT(failed, 100);  // both kinds of nodes were met
    EXPECT_LT(failed, 40'000);
}

INSTANTIATE_TEST_SUITE_P(BothDriverKinds, RememberedKeys, testing::Bool());

}  // namespace
}  // namespace nimba::test
