// SPDX-License-Identifier: MIT
// What the parser remembers of earlier nodes never changes what it reads of the next.
#include "alloc/allocation_text.hpp"
#include "alloc/key_value.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace nimba::test {
namespace {

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

// The record, or nothing when the conversion of a handle or a device failed.
std::optional<_GFX_ALLOCATION_INFO> parse(AllocationParser& parser, const std::string& text,
                                          bool line_by_line)
{
    parser.begin();
    try {
        if (line_by_line) {
            for_each_line(text, [&](std::string_view line) { parser.add(line); });
        } else {
            parser.add(text);
        }
    } catch (const std::logic_error&) {
        return std::nullopt;
    }
    return parser.record();
}

bool same(const std::optional<_GFX_ALLOCATION_INFO>& a,
          const std::optional<_GFX_ALLOCATION_INFO>& b)
{
    return a.has_value() == b.has_value() && (!a || std::memcmp(&*a, &*b, sizeof *a) == 0);
}

class RememberedKeys : public testing::TestWithParam<bool> {
  protected:
    std::size_t below(std::size_t bound) { return random() % bound; }

    // The lines of an earlier node with a few of them changed, moved, lost or cut.
    void change(std::vector<std::string>& lines)
    {
        for (std::size_t times = below(4); times > 0; --times) {
            std::string& line = lines[below(lines.size())];
            switch (below(5)) {
                case 0:
                    line = kLines[below(kLines.size())];
                    break;
                case 1:
                    line.insert(below(line.size()), 1, static_cast<char>(below(256)));
                    break;
                case 2:
                    std::swap(line, lines[below(lines.size())]);
                    break;
                case 3:
                    lines.push_back(kLines[below(kLines.size())]);
                    break;
                default:
                    line[below(line.size())] = static_cast<char>('0' + below(16));
                    break;
            }
            if (lines.size() > 80) {
                lines.resize(21);
            }
        }
    }

    std::mt19937 random{20260601};  // NOLINT(cert-msc32-c,cert-msc51-cpp): repeatable
};

TEST_P(RememberedKeys, DoNotChangeWhatIsRead)
{
    std::vector<std::string> lines{kLines.begin(), kLines.begin() + 21};
    AllocationParser experienced{GetParam()};
    int failed = 0;
    for (int node = 0; node < 50'000; ++node) {
        change(lines);
        std::string text;
        for (const std::string& line : lines) {
            text += line;
        }
        if (below(10) == 0) {
            text.pop_back();
        }
        AllocationParser fresh{GetParam()};
        const auto expected = parse(fresh, text, true);
        ASSERT_TRUE(same(parse(experienced, text, below(2) == 0), expected)) << text;
        failed += expected ? 0 : 1;
        if (!expected) {
            lines.assign(kLines.begin(), kLines.begin() + 21);
        }
    }
    EXPECT_GT(failed, 100);  // both kinds of nodes were met
    EXPECT_LT(failed, 40'000);
}

INSTANTIATE_TEST_SUITE_P(BothDriverKinds, RememberedKeys, testing::Bool());

// A fresh parser remembers the first of two equal lines only, so this is read both ways.
TEST(RememberedKey, OfTheLastNodeReadsEveryNumberAlike)
{
    for (const auto& [text, size] : std::vector<std::pair<std::string, int32_t>>{
             {"0", 0},
             {"-0", 0},
             {"8294400", 8294400},
             {"-5", -5},
             {"2147483647", 2147483647},
             {"2147483648", -2147483648},
             {"-2147483649", 2147483647},
             {"4294967297", 1},
             {"1234567", 1234567},
             {"12345678", 12345678},
             {"123456789", 123456789},
             {"99999999", 99999999},
             {"100000000", 100000000},
             {"123456789012345", -2045911175},
             {"-123456789012345", 2045911175},
             {"1234567890123456", 1015724736},
             {"999999999999999999", -1486618625},
             {"1234567\xFA", 1234567},
             {"12345678\xFF", 12345678},
             {"1/", 1},
             {"1:", 1},
             {"9223372036854775807", -1},
             {"9223372036854775808", -1},
             {"-9223372036854775808", 0},
             {"-9223372036854775809", 0},
             {"00000000000000000000000000000000000012", 12},
             {"+7", 7},
             {" \t\v\f\r7", 7},
             {"- 7", 0},
             {"--7", 0},
             {"0x10", 0},
             {"1e3", 1},
             {"", 0}}) {
        AllocationParser parser{true};
        for (int node = 0; node < 2; ++node) {
            parser.begin();
            parser.add("size=" + text + "\n");
            EXPECT_EQ(parser.record().size, size) << text << " in node " << node;
        }
    }
}

}  // namespace
}  // namespace nimba::test
