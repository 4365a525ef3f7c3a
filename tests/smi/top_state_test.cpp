// SPDX-License-Identifier: MIT
#include "tools/smi/top/state.hpp"
#include "top_snapshots.hpp"

#include <gtest/gtest.h>

#include <string_view>

namespace nimba::smi::top {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kEngine3d = 0;

constexpr Clock::time_point kOpened{};

State opened()
{
    return State{Settings{}, kOpened};
}

State with_two_adapters()
{
    State state = opened();
    state.take(snapshot_of({first_adapter(), second_adapter()}), kOpened + 1s);
    return state;
}

void type(State& state, std::string_view text)
{
    for (const char c : text) {
        state.press(key_of(c));
    }
}

int shown_slot(const State& state)
{
    return state.adapter() == nullptr ? -1 : state.adapter()->adapter.slot;
}

std::vector<uint32_t> devices(const State& state)
{
    std::vector<uint32_t> devices;
    for (const ProcessRow& row : state.table().rows()) {
        devices.push_back(row.device);
    }
    return devices;
}

TEST(TopState, HasNothingToShowBeforeTheFirstSample)
{
    State state = opened();
    EXPECT_FALSE(state.snapshot());
    EXPECT_EQ(state.adapter(), nullptr);
    EXPECT_EQ(state.age(kOpened + 3s), 3s);
    EXPECT_EQ(state.history(kEngine3d).at_age(0), std::nullopt);
    for (const char c : std::string_view{"1a><rMNgbeh+-p "}) {
        state.press(key_of(c));
    }
    state.press(Key::kTab);
    state.press(Key::kBackTab);
    state.press(Key::kDown);
    EXPECT_EQ(state.adapter(), nullptr);
}

TEST(TopState, ShowsTheFiguresOfTheShownAdapter)
{
    State state = with_two_adapters();
    EXPECT_EQ(state.history(kEngine3d).at_age(0), 58);
    EXPECT_EQ(state.times().at_age(0), 1);
    EXPECT_EQ(state.age(kOpened + 5s), 4s);
    state.press(key_of('2'));
    EXPECT_EQ(state.history(kEngine3d).at_age(0), 7);
}

TEST(TopState, GoesFromAdapterToAdapter)
{
    State state = with_two_adapters();
    EXPECT_EQ(shown_slot(state), 0);
    state.press(Key::kTab);
    EXPECT_EQ(shown_slot(state), 1);
    EXPECT_EQ(devices(state), (std::vector<uint32_t>{0x21}));
    state.press(Key::kTab);
    EXPECT_EQ(shown_slot(state), 0);
    state.press(Key::kBackTab);
    EXPECT_EQ(shown_slot(state), 1);
    state.press(key_of('1'));
    EXPECT_EQ(shown_slot(state), 0);
    state.press(key_of('3'));
    EXPECT_EQ(shown_slot(state), 0);
}

TEST(TopState, ShowsTheProcessesOfAllAdapters)
{
    State state = with_two_adapters();
    state.press(key_of('a'));
    EXPECT_TRUE(state.shows_all_processes());
    EXPECT_EQ(devices(state), (std::vector<uint32_t>{0x12, 0x21, 0x11, 0x13}));
    state.press(key_of('a'));
    EXPECT_EQ(devices(state), (std::vector<uint32_t>{0x12, 0x11, 0x13}));
}

TEST(TopState, SortsByTheColumnBeside)
{
    State state = with_two_adapters();
    EXPECT_EQ(state.table().order(), (SortOrder{SortKey::kMemory, true}));
    state.press(Key::kRight);
    EXPECT_EQ(state.table().order(), (SortOrder{SortKey::kProcess, false}));
    state.press(Key::kRight);
    EXPECT_EQ(state.table().order(), (SortOrder{SortKey::kPid, false}));
    state.press(Key::kRight);
    EXPECT_EQ(state.table().order(), (SortOrder{SortKey::kDevice, false}));
    state.press(Key::kLeft);
    state.press(Key::kLeft);
    EXPECT_EQ(state.table().order(), (SortOrder{SortKey::kProcess, false}));
    state.press(key_of('r'));
    EXPECT_EQ(state.table().order(), (SortOrder{SortKey::kProcess, true}));
    state.press(key_of('N'));
    EXPECT_EQ(state.table().order(), (SortOrder{SortKey::kPid, false}));
    state.press(key_of('M'));
    EXPECT_EQ(state.table().order(), (SortOrder{SortKey::kMemory, true}));
}

TEST(TopState, LeavesTheColumnThatIsOnlyThereForAllAdapters)
{
    State state = with_two_adapters();
    state.press(key_of('a'));
    state.press(key_of('N'));
    state.press(Key::kRight);
    EXPECT_EQ(state.table().order().key, SortKey::kGpu);
    state.press(key_of('a'));
    state.press(Key::kLeft);
    EXPECT_EQ(state.table().order().key, SortKey::kProcess);
}

TEST(TopState, FiltersWhileTheUserTypes)
{
    State state = with_two_adapters();
    type(state, "/maq");
    EXPECT_TRUE(state.is_typing());
    EXPECT_FALSE(state.is_over());
    EXPECT_TRUE(devices(state).empty());
    state.press(Key::kBackspace);
    EXPECT_EQ(devices(state), (std::vector<uint32_t>{0x12}));
    state.press(Key::kEnter);
    EXPECT_FALSE(state.is_typing());
    EXPECT_EQ(state.table().filter(), "ma");
    state.press(Key::kEscape);
    EXPECT_EQ(state.table().filter(), "");
}

TEST(TopState, ForgetsTheFilterOnEscape)
{
    State state = with_two_adapters();
    type(state, "/maze");
    state.press(Key::kEscape);
    EXPECT_FALSE(state.is_typing());
    EXPECT_EQ(devices(state).size(), 3U);
}

TEST(TopState, TakesWholeCharactersFromTheFilter)
{
    State state = with_two_adapters();
    state.press(key_of('/'));
    state.press(Key{U'é'});
    state.press(Key{U'画'});
    EXPECT_EQ(state.table().filter(), "é画");
    state.press(Key::kBackspace);
    EXPECT_EQ(state.table().filter(), "é");
    state.press(Key::kBackspace);
    state.press(Key::kBackspace);
    state.press(Key::kF1);
    EXPECT_EQ(state.table().filter(), "");
    EXPECT_TRUE(state.is_typing());
}

TEST(TopState, MovesInTheTableByRowsAndPages)
{
    State state = with_two_adapters();
    EXPECT_EQ(state.fit_table(2), 0U);
    state.press(Key::kDown);
    EXPECT_EQ(state.table().chosen(), 1U);
    state.press(Key::kPageDown);
    EXPECT_EQ(state.table().chosen(), 2U);
    EXPECT_EQ(state.fit_table(2), 1U);
    state.press(Key::kPageUp);
    EXPECT_EQ(state.table().chosen(), 0U);
    state.press(Key::kEnd);
    EXPECT_EQ(state.table().chosen(), 2U);
    state.press(Key::kHome);
    EXPECT_EQ(state.table().chosen(), 0U);
}

TEST(TopState, OpensAndLeavesPages)
{
    State state = with_two_adapters();
    state.press(key_of('?'));
    EXPECT_EQ(state.page(), Page::kHelp);
    state.press(key_of('e'));
    EXPECT_EQ(state.page(), Page::kEvents);
    state.press(key_of('e'));
    EXPECT_EQ(state.page(), Page::kFigures);
    state.press(Key::kF1);
    state.press(Key::kEscape);
    EXPECT_EQ(state.page(), Page::kFigures);
}

TEST(TopState, ScrollsAPageAndNotTheTable)
{
    State state = with_two_adapters();
    state.press(key_of('?'));
    EXPECT_EQ(state.fit_page(10, 4), 0U);
    state.press(Key::kDown);
    EXPECT_EQ(state.fit_page(10, 4), 1U);
    state.press(Key::kPageDown);
    EXPECT_EQ(state.fit_page(10, 4), 5U);
    state.press(Key::kEnd);
    EXPECT_EQ(state.fit_page(10, 4), 6U);
    EXPECT_EQ(state.fit_page(10, 40), 0U);
    EXPECT_EQ(state.table().chosen(), 0U);
}

TEST(TopState, PausesAndLeavesAGapBehind)
{
    State state = with_two_adapters();
    state.press(key_of(' '));
    EXPECT_TRUE(state.is_paused());
    state.press(key_of('p'));
    EXPECT_FALSE(state.is_paused());
    state.take(snapshot_of({first_adapter(), second_adapter()}), kOpened + 60s);
    EXPECT_EQ(state.history(kEngine3d).at_age(0), 58);
    EXPECT_EQ(state.history(kEngine3d).at_age(1), std::nullopt);
    EXPECT_EQ(state.times().at_age(1), std::nullopt);
    EXPECT_EQ(state.history(kEngine3d).at_age(2), 58);
}

TEST(TopState, ChangesTheIntervalAndTheMarks)
{
    State state = opened();
    state.press(key_of('+'));
    EXPECT_EQ(state.settings().interval, 2s);
    state.press(key_of('-'));
    EXPECT_EQ(state.settings().interval, 1s);
    state.press(key_of('b'));
    EXPECT_EQ(state.settings().marks, Marks::kBlocks);
}

TEST(TopState, ShowsTheSetsOfGaugesInTurn)
{
    using Gauges = std::vector<std::size_t>;
    State state = opened();
    EXPECT_EQ(state.wanted_gauges(), (Gauges{0, 1, 2, 3, 4, 5, 6, 7}));
    state.press(key_of('g'));
    EXPECT_EQ(state.wanted_gauges(), (Gauges{0, 1, 2}));
    state.press(key_of('g'));
    EXPECT_EQ(state.wanted_gauges(), (Gauges{3, 4, 5}));
    state.press(key_of('g'));
    EXPECT_EQ(state.wanted_gauges(), (Gauges{6, 7}));
    state.press(key_of('g'));
    EXPECT_EQ(state.wanted_gauges(), (Gauges{}));
    state.press(key_of('g'));
    EXPECT_EQ(state.wanted_gauges(), (Gauges{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(TopState, EndsOnQ)
{
    State state = opened();
    state.press(key_of('q'));
    EXPECT_TRUE(state.is_over());
}

TEST(TopState, AsksOnceToBeDrawnAnew)
{
    State state = opened();
    EXPECT_FALSE(state.take_redraw());
    state.press(Key::kCtrlL);
    EXPECT_TRUE(state.take_redraw());
    EXPECT_FALSE(state.take_redraw());
}

}  // namespace
}  // namespace nimba::smi::top
