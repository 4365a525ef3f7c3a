// SPDX-License-Identifier: MIT
// Nodes of one pass whose lines come in different orders.
#include "allocation_keys.hpp"
#include "allocation_text_fixture.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace nimba::test {
namespace {

// A value that reads alike in base 10 and 16.
struct Spelling {
    const char* text;
    std::int32_t number;
};

constexpr std::array<Spelling, 12> kSpellings{{{"0", 0},
                                               {"1", 1},
                                               {"7", 7},
                                               {"-3", -3},
                                               {"+4", 4},
                                               {" 5", 5},
                                               {"6 ", 6},
                                               {"8\r", 8},
                                               {"9=1", 9},
                                               {"0000000000000000000002", 2},
                                               {"3.5", 3},
                                               {"-0", 0}}};

constexpr std::array<const char*, 8> kOtherLines{"name=5\n", "\n",        "no sign\n", "=5\n",
                                                 "siz=5\n",  "sizes=5\n", "==\n",      "size =5\n"};

class AllocationOrder : public testing::Test {
  protected:
    std::size_t below(std::size_t bound) { return random_() % bound; }

    // Makes the next node of lines in `order`, some left out, doubled or with others between, and
    // notes in expected_ what it says.
    void add_node(const std::string& name, const std::vector<RecordField>& order)
    {
        std::string text;
        Record record = blank();
        for (const RecordField& key : order) {
            const Spelling& value = kSpellings[below(kSpellings.size())];
            switch (below(12)) {
                case 0:
                    continue;
                case 1:
                    text += kOtherLines[below(kOtherLines.size())];
                    break;
                case 2:
                    text += std::string{key.name} + "=7\n";
                    break;
                default:
                    break;
            }
            text += std::string{key.name} + "=" + value.text + "\n";
            record.*key.member = value.number;
        }
        tree_.add(name, text);
        expected_.push_back(record);
    }

    std::mt19937 random_{20};  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same nodes each time
    AllocationTree tree_;
    Records expected_;
};

TEST_F(AllocationOrder, MayChangeFromNodeToNode)
{
    std::vector<std::string> names;
    std::vector<RecordField> order{kAllocationKeys.begin(), kAllocationKeys.end()};
    for (int node = 0; node < 1000; ++node) {
        if (below(4) == 0) {
            std::ranges::shuffle(order, random_);
        } else if (below(4) == 0) {
            std::swap(order[below(order.size())], order[below(order.size())]);
        }
        names.push_back(std::to_string(node));
        add_node(names.back(), order);
    }
    const ListedAs listed{names};
    for (const std::int32_t va_driver : {kVa, kLegacy}) {
        Records list;
        EXPECT_EQ(get_current_allocation_data_try(list, 0, va_driver), 0);
        ASSERT_EQ(list.size(), 1000U);
        for (std::size_t node = 0; node < list.size(); ++node) {
            ASSERT_EQ(list[node], expected_[node]) << "node " << node;
        }
    }
}

TEST_F(AllocationOrder, MayChangeFarBehindTheStartOfANode)
{
    std::string long_node;
    std::string other_node;
    for (int line = 0; line < 300; ++line) {
        long_node += "size=1\nwidth=2\nname=3\n";
        other_node += "width=4\nname=5\nsize=6\n";
    }
    tree_.add("1", long_node);
    tree_.add("2", other_node);
    Record first = blank();
    first.size = 1;
    first.width = 2;
    Record second = blank();
    second.size = 6;
    second.width = 4;
    Records list;
    const ListedAs listed{{"1", "2", "1", "1", "2"}};
    EXPECT_EQ(get_current_allocation_data_try(list, 0, kVa), 0);
    EXPECT_EQ(list, (Records{first, second, first, first, second}));
}

}  // namespace
}  // namespace nimba::test
