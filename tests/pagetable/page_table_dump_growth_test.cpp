// SPDX-License-Identifier: MIT
// Dumps of any size and order against a plain model of the linking rules, which knows entries by
// their positions. Links hold however many entries there are.
#include "page_table_dump_fixture.hpp"

#include <optional>

namespace nimba::test {
namespace {

// The same numbers in every run.
class Draws final {
  public:
    explicit Draws(std::uint64_t seed) : state_{seed} {}

    // From 0 to limit - 1.
    int below(int limit)
    {
        state_ = state_ * 6'364'136'223'846'793'005U + 1'442'695'040'888'963'407U;
        return static_cast<int>((state_ >> 33U) % static_cast<std::uint64_t>(limit));
    }

  private:
    std::uint64_t state_;
};

constexpr int kNone = -1;

// A link to the entry at `position` of a level.
std::string link_text(const char* name, int level, int position)
{
    return position == kNone ? ""
                             : part(name, std::to_string(level) + '.' + std::to_string(position));
}

struct PlainPage {
    int level = 0;
    int index = 0;
    int parent = kNone;
    int child = kNone;
    int sub = kNone;
    int pre = kNone;
    int next = kNone;
};

std::string told(const PlainPage& page)
{
    const std::string number = std::to_string(page.index);
    return std::to_string(page.level) + ':' + number + part("addr", "a" + number) +
           part("buffer", "b" + number) + link_text("parent", page.level - 1, page.parent) +
           link_text("child", page.level + 1, page.child) + link_text("sub", page.level, page.sub) +
           link_text("pre", page.level, page.pre) + link_text("next", page.level, page.next);
}

// Every fourth has more digits than a driver prints.
std::string address_of(int index)
{
    return std::string(index % 4 == 0 ? 16 : 1, 'f') + std::to_string(index);
}

struct PlainSub {
    int level = 0;
    int index = 0;
    int large = 0;
    int parent = kNone;
    int pre = kNone;
    int next = kNone;
};

std::string told(const PlainSub& sub)
{
    return std::to_string(sub.level) + ':' + std::to_string(sub.index) +
           number_part("snoop", sub.index % 3) + number_part("segment", sub.index % 5) +
           number_part("large", sub.large) + part("addr", address_of(sub.index)) +
           link_text("parent", sub.level, sub.parent) + link_text("pre", sub.level, sub.pre) +
           link_text("next", sub.level, sub.next);
}

class PlainTree final {
  public:
    std::array<std::vector<PlainPage>, 3> pages;
    std::array<std::vector<PlainSub>, 3> subs;

    void begin_dump()
    {
        last_level_ = kNone;
        in_run_ = false;
        large_ = 0;
    }

    void add_page(int level, int index)
    {
        in_run_ = false;
        if (level < 0 || level > 2) {
            return;
        }
        const int before = last_level_;
        last_level_ = level;
        const bool first_child = level > 0 && before == level - 1;
        const bool sibling = level > 0 && before >= level;
        if (level > 0 && !first_child && !sibling) {
            return;
        }
        auto& row = pages.at(static_cast<std::size_t>(level));
        const int position = static_cast<int>(row.size());
        row.push_back({.level = level, .index = index});
        if (first_child) {
            auto& above = pages.at(static_cast<std::size_t>(level - 1));
            if (!above.empty()) {
                row.back().parent = static_cast<int>(above.size()) - 1;
                above.back().child = position;
            }
        }
        if (sibling && position > 0) {
            row.back().pre = position - 1;
            row.at(static_cast<std::size_t>(position - 1)).next = position;
        }
    }

    void add_sub(int level, int index, std::optional<int> large)
    {
        large_ = large.value_or(large_);
        const bool head = !in_run_;
        in_run_ = true;
        if (level < 0 || level > 2) {
            return;
        }
        auto& row = subs.at(static_cast<std::size_t>(level));
        auto& owners = pages.at(static_cast<std::size_t>(level));
        const int position = static_cast<int>(row.size());
        row.push_back({.level = level, .index = index, .large = large_});
        if (head && !owners.empty()) {
            row.back().parent = static_cast<int>(owners.size()) - 1;
            owners.back().sub = position;
        }
        if (!head && position > 0) {
            row.back().pre = position - 1;
            row.at(static_cast<std::size_t>(position - 1)).next = position;
        }
    }

  private:
    int last_level_ = kNone;
    bool in_run_ = false;
    int large_ = 0;
};

// How often lines come: those of page tables and sub-tables of the levels 0, 1, 2 and 3, and
// others.
struct Weights {
    std::array<int, 4> pages;
    std::array<int, 4> subs;
    int others;
};

constexpr Weights kAnything{{3, 4, 5, 1}, {2, 3, 4, 1}, 2};
// About as many of each as a driver reserves room for.
constexpr Weights kFull{{2, 6, 70, 2}, {2, 70, 830, 3}, 15};

class PageTableGrowth : public PageTableDump {
  protected:
    // The text of one more dump with so many lines, which tree_ has the entries of, too.
    std::string dump_of(int lines, const Weights& weights)
    {
        tree_.begin_dump();
        std::string dump;
        for (int line = 0; line < lines; ++line) {
            dump += next_line(weights);
        }
        return dump;
    }

    void expect_the_tree() const
    {
        for (std::size_t level = 0; level < 3; ++level) {
            expect_same(*page_levels(device_)[level], tree_.pages[level]);
            expect_same(*sub_levels(device_)[level], tree_.subs[level]);
        }
    }

    Draws draws_{2'024};
    PlainTree tree_;

  private:
    std::string next_line(const Weights& weights)
    {
        int total = weights.others;
        for (std::size_t level = 0; level < 4; ++level) {
            total += weights.pages.at(level) + weights.subs.at(level);
        }
        int draw = draws_.below(total);
        for (int level = 0; level < 4; ++level) {
            draw -= weights.pages.at(static_cast<std::size_t>(level));
            if (draw < 0) {
                return page_line(level);
            }
            draw -= weights.subs.at(static_cast<std::size_t>(level));
            if (draw < 0) {
                return sub_line(level);
            }
        }
        return "some other line\n";
    }

    std::string page_line(int level)
    {
        const int index = draws_.below(100'000);
        tree_.add_page(level, index);
        const std::string number = std::to_string(index);
        return std::to_string(level) + ':' + number + ": entry addr:a" + number + ", buffer:b" +
               number + '\n';
    }

    std::string sub_line(int level)
    {
        const int index = draws_.below(100'000);
        std::optional<int> large;
        if (draws_.below(2) == 0) {
            large = draws_.below(70'000);
        }
        tree_.add_sub(level, index, large);
        return std::to_string(level) + ':' + std::to_string(index) +
               " Snoop:" + std::to_string(index % 3) + " Segment:" + std::to_string(index % 5) +
               (large ? " LargePage:" + std::to_string(*large) : "") +
               " Addr:" + address_of(index) + (index % 7 == 0 ? " \r\n" : "\n");
    }

    template <typename Entry, typename Plain>
    void expect_same(const std::vector<Entry>& entries, const std::vector<Plain>& expected) const
    {
        ASSERT_EQ(entries.size(), expected.size());
        for (std::size_t position = 0; position < entries.size(); ++position) {
            ASSERT_EQ(nimba::test::told(entries[position], device_), told(expected[position]))
                << "position " << position;
        }
    }
};

TEST_F(PageTableGrowth, KeepsTheLinksOfAnyDump)
{
    for (int dump = 0; dump < 400; ++dump) {
        SCOPED_TRACE(dump);
        tree_ = {};
        read_anew(dump_of(1 + draws_.below(80), kAnything));
        ASSERT_NO_FATAL_FAILURE(expect_the_tree());
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(PageTableGrowth, KeepsTheLinksWithinArraysThatWereNeverReserved)
{
    read(dump_of(40'000, kAnything));
    EXPECT_EQ(status_, 0);
    expect_the_tree();
}

TEST_F(PageTableGrowth, KeepsTheLinksBeyondTheReservedCapacities)
{
    create_vector(device_);
    const std::size_t sub_capacity = device_.st_level2.capacity();
    read(dump_of(375'000, kFull));
    EXPECT_EQ(status_, 0);
    EXPECT_GT(device_.pt_level0.size(), 500);
    EXPECT_GT(device_.pt_level1.size(), 2'000);
    EXPECT_GT(device_.pt_level2.size(), 22'000);
    EXPECT_GT(device_.st_level0.size(), 500);
    EXPECT_GT(device_.st_level1.size(), 22'000);
    EXPECT_GT(device_.st_level2.size(), 305'000);
    EXPECT_GT(device_.st_level2.size(), sub_capacity);
    expect_the_tree();
}

TEST_F(PageTableGrowth, KeepsTheLinksOfEarlierDumpsOfTheDevice)
{
    for (int dump = 0; dump < 12; ++dump) {
        SCOPED_TRACE(dump);
        read(dump_of(1'000, kAnything));
        expect_the_tree();
    }
    EXPECT_GT(device_.pt_level2.size(), 1'000);
}

TEST_F(PageTableGrowth, KeepsTheLinksOfALongRunWithOneOwner)
{
    constexpr int kEntries = 5'000;
    std::string dump = "0:1: entry\n";
    for (int index = 0; index < kEntries; ++index) {
        dump += "0:" + std::to_string(index) + " Snoop:0\n";
    }
    read(dump);
    ASSERT_EQ(device_.st_level0.size(), kEntries);
    int index = 0;
    const vidmm_vm_pte_elt3k* last = nullptr;
    for (const auto* entry = device_.pt_level0.at(0).PT_sub_entries; entry != nullptr;
         entry = entry->next) {
        ASSERT_EQ(entry, &device_.st_level0[static_cast<std::size_t>(index)]);
        ASSERT_EQ(entry->Index, index);
        ASSERT_EQ(entry->pre, last);
        last = entry;
        ++index;
    }
    EXPECT_EQ(index, kEntries);
    EXPECT_EQ(device_.st_level0[0].parent, device_.pt_level0.data());
}

}  // namespace
}  // namespace nimba::test
