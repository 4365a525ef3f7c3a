// SPDX-License-Identifier: MIT
#include "tools/smi/top/view.hpp"
#include "top_snapshots.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

namespace nimba::smi::top {
namespace {

using namespace std::chrono_literals;

constexpr Clock::time_point kOpened{};

// Times are shown in the user's time zone.
class TopView : public testing::Test {
  protected:
    TopView()
    {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }
};

std::string text_of(const Canvas& canvas)
{
    std::string text;
    for (int y = 0; y < canvas.size().height; ++y) {
        text += canvas.row(y) + '\n';
    }
    return text;
}

std::string picture(State& state, Size size, Clock::time_point now)
{
    return text_of(draw(state, size, now));
}

// A state with twenty samples, in which engine use rises and the temperature falls.
State with_samples()
{
    State state{Settings{}, kOpened};
    for (int i = 0; i < 20; ++i) {
        AdapterState first = first_adapter();
        first.counters.engine_3d = i * 5;
        first.sensors.temperature = 64 - i;
        state.take(snapshot_of({first, second_adapter()}, i), kOpened + std::chrono::seconds(i));
    }
    return state;
}

TEST_F(TopView, SaysWhatItWaitsForBeforeTheFirstSample)
{
    State state{Settings{}, kOpened};
    EXPECT_EQ(picture(state, {60, 10}, kOpened + 3s),
              R"( nimba-smi top                     asking the adapters, 3 s
╭ 3D engine ── n/a ╮╭ Memory ───── n/a ╮╭ Temperature  n/a ╮
│                  ││                  ││                  │
│                  ││                  ││                  │
╰──────────────────╯╰──────────────────╯╰──────────────────╯
─ Processes: 0 ─────────────────────────────────────────────
      PID     MEMORY▼  SHARE PROCESS


 q Quit  ? Help  Tab Adapter  Right Sort  r Reverse
)");
}

TEST_F(TopView, FillsAUsualTerminal)
{
    State state = with_samples();
    EXPECT_EQ(picture(state, {80, 24}, kOpened + 20s),
              R"( nimba-smi top   1 Gpu0:Nimba-K1   2 Gpu1:QV-M40            00:00:19, every 1 s
 0000:01:00.0 · PCIe 4 x16 · level lowpower · fan 1200 · driver 1.2.a
╭ 3D engine ─ 95 % ╮╭ VCP engine  22 % ╮╭ VPP engine ─ n/a ╮╭ Frames ── 96.2/s ╮
│                ⣠⣴││                  ││                  ││        ⣶⣶⣶⣶⣶⣶⣶⣶⣶⣶│
│             ⢀⣤⣾⣿⣿││                  ││                  ││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│           ⣠⣴⣿⣿⣿⣿⣿││                  ││                  ││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│        ⣀⣤⣾⣿⣿⣿⣿⣿⣿⣿││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                  ││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
╰──────────────────╯╰──────────────────╯╰──────────────────╯╰─────────── 100/s ╯
╭ Memory ─ 2.8 GiB ╮╭ Temp ───── 45 °C ╮╭ Core clock  1450 ╮╭ Mem clk ─── 2000 ╮
│                  ││                  ││                  ││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│                  ││        ⣤⣤⣄⣀⣀⡀    ││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│        ⣤⣤⣤⣤⣤⣤⣤⣤⣤⣤││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣶││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││        ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
╰───────── 7.5 GiB ╯╰──────────────────╯╰──────────── 2000 ╯╰──────────── 2000 ╯
╭ Processes: 3 ────────────────────────────────────────────────────────────────╮
│      PID     DEVICE   ALLOCS     MEMORY▼  SHARE PROCESS                      │
│  4100003       0x12        4     1.9 GiB   25 % /usr/games/maze              │
│  4100001       0x11       20   381.5 MiB    5 % /usr/bin/compositor          │
│  4100002       0x13        7    38.1 MiB    0 % /usr/bin/Browser             │
│                                                                              │
│                                                                              │
╰──────────────────────────────────────────────────────────────────────────────╯

 q Quit  ? Help  Tab Adapter  Right Sort  r Reverse  / Filter  p Pause  + Slower
)");
}

TEST_F(TopView, ShowsWhatMattersMostOnTheSmallestScreen)
{
    State state = with_samples();
    EXPECT_EQ(picture(state, {40, 10}, kOpened + 20s), R"( 1   2              00:00:19, every 1 s
╭ 3D engine ─ 95 % ╮╭ Memory ─ 2.8 GiB ╮
│              ⣀⣤⣴⣾││                  │
│        ⣀⣀⣤⣴⣾⣿⣿⣿⣿⣿││        ⣶⣶⣶⣶⣶⣶⣶⣶⣶⣶│
╰──────────────────╯╰───────── 7.5 GiB ╯
─ Processes: 3 ─────────────────────────
      PID     MEMORY▼ PROCESS
  4100003     1.9 GiB /usr/games/maze
  4100001   381.5 MiB /usr/bin/composit…
 q Quit  ? Help  Tab Adapter  Right Sort
)");
    EXPECT_EQ(draw(state, {39, 12}, kOpened).row(0), "needs 40x10, q quits");
    EXPECT_EQ(draw(state, {5, 1}, kOpened).row(0), "needs");
}

TEST_F(TopView, SaysForHowLongThereWasNoAnswer)
{
    State state = with_samples();
    EXPECT_EQ(draw(state, {80, 24}, kOpened + 22s).row(0).find("no answer"), std::string::npos);
    const Canvas late = draw(state, {120, 16}, kOpened + 30s);
    EXPECT_EQ(
        text_of(late),
        R"( nimba-smi top   1 Gpu0:Nimba-K1   2 Gpu1:QV-M40                                           00:00:19, no answer for 11 s
 0000:01:00.0 · PCIe 4 x16 · level lowpower · fan 1200 · driver 1.2.a
╭ 3D engine ─────────── 95 % ╮╭ Frames ──────────── 96.2/s ╮╭ Memory ─────────── 2.8 GiB ╮╭ Temperature ──────── 45 °C ╮
│                          ⢀⣴││                  ⣶⣶⣶⣶⣶⣶⣶⣶⣶⣶││                            ││                            │
│                        ⢀⣴⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                            ││                  ⣀         │
│                      ⢀⣴⣿⣿⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                            ││                  ⣿⣿⣿⣷⣶⣶⣤⣤⣄⣀│
│                    ⢀⣴⣿⣿⣿⣿⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│                  ⣀⣴⣿⣿⣿⣿⣿⣿⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
╰────────────────────────────╯╰───────────────────── 100/s ╯╰─────────────────── 7.5 GiB ╯╰────────────────────────────╯
╭ Processes: 3 ────────────────────────────────────────────────────────────────────────────────────────────────────────╮
│      PID     DEVICE   ALLOCS     MEMORY▼  SHARE                               PROCESS                                │
│  4100003       0x12        4     1.9 GiB   25 %  ━━━━━━━────────────────────  /usr/games/maze                        │
│  4100001       0x11       20   381.5 MiB    5 %  ━──────────────────────────  /usr/bin/compositor                    │
╰──────────────────────────────────────────────────────────────────────────────────────────────────────────────────────╯

 q Quit  ? Help  Tab Adapter  Right Sort  r Reverse  / Filter  p Pause  + Slower  - Faster  g Plots
)");
    // The newest value is one of a time ago.
    EXPECT_EQ(late.cell(24, 2), (Cell{U'9', Ink::kDim}));
}

TEST_F(TopView, ShowsOneSetOfGaugesAndTheProcessesOfAllAdapters)
{
    State state = with_samples();
    for (const char key : {'a', 'g', 'g', 'g', 'p'}) {
        state.press(key_of(key));
    }
    EXPECT_EQ(
        picture(state, {100, 18}, kOpened + 30s),
        R"( nimba-smi top   1 Gpu0:Nimba-K1   2 Gpu1:QV-M40                                 paused at 00:00:19
 0000:01:00.0 · PCIe 4 x16 · level lowpower · fan 1200 · driver 1.2.a
╭ Core clock ────────────────────────────── 1450 ╮╭ Memory clock ──────────────────────────── 2000 ╮
│                                                ││                                      ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│                                      ⣀⣀⣀⣀⣀⣀⣀⣀⣀⣀││                                      ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│                                      ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                                      ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│                                      ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                                      ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│                                      ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                                      ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│                                      ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                                      ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
╰────────────────────────────────────────── 2000 ╯╰────────────────────────────────────────── 2000 ╯
╭ Processes of all adapters: 4 ────────────────────────────────────────────────────────────────────╮
│      PID   GPU     DEVICE   ALLOCS     MEMORY▼  SHARE                          PROCESS           │
│  4100003     0       0x12        4     1.9 GiB   25 %  ━━━━━━────────────────  /usr/games/maze   │
│  4100005     1       0x21        9   858.3 MiB    n/a                          /opt/cad/bin/cad  │
│  4100001     0       0x11       20   381.5 MiB    5 %  ━─────────────────────  /usr/bin/composit…│
╰──────────────────────────────────────────────────────────────────────────────────────────────────╯

 q Quit  ? Help  Tab Adapter  Right Sort  r Reverse  / Filter  p Pause  + Slower  - Faster  g Plots
)");
}

TEST_F(TopView, ShowsTheHelpAsFarAsThereIsRoom)
{
    State state = with_samples();
    state.press(key_of('?'));
    EXPECT_EQ(picture(state, {60, 10}, kOpened + 20s),
              R"( 1 Gpu0:Nimba-K1   2 Gpu1:QV-M40        00:00:19, every 1 s
╭─ Keys ───────────────────────────────────────────────────╮
│        q, F10  Leave                                     │
│      ?, h, F1  Show the keys, and go back                │
│             e  Show what happened since the start, and   │
│                go back                                   │
│           Tab  Show the next adapter                     │
│     Shift-Tab  Show the adapter before                   │
╰─ Down: more ─────────────────────────────────────────────╯
 q Quit  ? Help  Tab Adapter  Right Sort  r Reverse
)");
}

TEST_F(TopView, ShowsTheFilterThatIsTyped)
{
    State state = with_samples();
    for (const char key : {'a', 'g', 'g', 'g', 'p', '/', 'z', 'z'}) {
        state.press(key_of(key));
    }
    EXPECT_EQ(picture(state, {60, 12}, kOpened + 30s),
              R"( 1 Gpu0:Nimba-K1   2 Gpu1:QV-M40         paused at 00:00:19
╭ Core clock ────────── 1450 ╮╭ Memory clock ──────── 2000 ╮
│                            ││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
│                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿││                  ⣿⣿⣿⣿⣿⣿⣿⣿⣿⣿│
╰────────────────────── 2000 ╯╰────────────────────── 2000 ╯
─ Processes of all adapters: 0 of 4, with "zz" ─────────────
      PID   GPU     MEMORY▼  SHARE PROCESS
 no process has that in its name or id; Esc shows all

 Filter: zz   Enter keeps it, Esc shows all
)");
}

TEST_F(TopView, SaysWhoseDriverIsGone)
{
    State state = with_samples();
    for (const char key : {'a', 'g', 'g', 'g', 'p'}) {
        state.press(key_of(key));
    }
    state.take(snapshot_of({absent(first_adapter()), second_adapter()}, 20), kOpened + 40s);
    EXPECT_EQ(picture(state, {80, 16}, kOpened + 40s),
              R"( nimba-smi top   1 Gpu0:Nimba-K1!   2 Gpu1:QV-M40            paused at 00:00:20
 0000:01:00.0: the driver is gone or does not answer; nimba-smi doctor says why
╭ Core clock ───────────────────── n/a ╮╭ Memory clock ─────────────────── n/a ╮
│                                      ││                           ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇│
│                           ⢰⣶⣶⣶⣶⣶⣶⣶⣶⣶⡆││                           ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇│
│                           ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇││                           ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇│
│                           ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇││                           ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇│
│                           ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇││                           ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇│
╰──────────────────────────────── 2000 ╯╰──────────────────────────────── 2000 ╯
╭ Processes of all adapters: 1 ────────────────────────────────────────────────╮
│      PID   GPU     DEVICE   ALLOCS     MEMORY▼  SHARE PROCESS                │
│  4100005     1       0x21        9   858.3 MiB    n/a /opt/cad/bin/cad       │
│                                                                              │
╰──────────────────────────────────────────────────────────────────────────────╯
 00:00:20  the driver of adapter 0000:01:00.0 (Gpu0:Nimba-K1) is gone or does …
 q Quit  ? Help  Tab Adapter  Right Sort  r Reverse  / Filter  p Pause  + Slower
)");
    EXPECT_EQ(picture(state, {60, 12}, kOpened + 40s),
              R"( 1 Gpu0:Nimba-K1!   2 Gpu1:QV-M40        paused at 00:00:20
╭ Core clock ─────────── n/a ╮╭ Memory clock ───────── n/a ╮
│                            ││                 ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇│
│                 ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇││                 ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇│
│                 ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇││                 ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇│
│                 ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇││                 ⢸⣿⣿⣿⣿⣿⣿⣿⣿⣿⡇│
╰────────────────────── 2000 ╯╰────────────────────── 2000 ╯
─ Processes of all adapters: 1 ─────────────────────────────
      PID   GPU     MEMORY▼  SHARE PROCESS
  4100005     1   858.3 MiB    n/a /opt/cad/bin/cad

 00:00:20  the driver of adapter 0000:01:00.0 (Gpu0:Nimba-…
)");
}

TEST_F(TopView, KeepsTheProcessesOfASampleThatLacksThem)
{
    State state = with_samples();
    AdapterState first = first_adapter();
    first.processes = {};
    first.processes_known = false;
    state.take(snapshot_of({first}, 25), kOpened + 25s);
    const Canvas canvas = draw(state, {80, 24}, kOpened + 25s);
    EXPECT_TRUE(canvas.row(14).starts_with("╭ Processes: 3 at 00:00:19 ──")) << canvas.row(14);
    EXPECT_TRUE(canvas.row(16).starts_with("│  4100003       0x12        4     1.9 GiB"));
}

TEST_F(TopView, LeavesEventsOnAPageOfTheirOwn)
{
    State state = with_samples();
    state.press(key_of('e'));
    EXPECT_TRUE(
        draw(state, {80, 24}, kOpened + 20s).row(2).starts_with("│ Nothing happened yet. "));
    state.take(snapshot_of({absent(first_adapter()), second_adapter()}, 20), kOpened + 20s);
    state.take(snapshot_of({first_adapter(), second_adapter()}, 21), kOpened + 21s);
    const Canvas canvas = draw(state, {80, 24}, kOpened + 21s);
    EXPECT_TRUE(canvas.row(2).starts_with(
        "│ 00:00:21  the driver of adapter 0000:01:00.0 (Gpu0:Nimba-K1) is back"));
    EXPECT_TRUE(canvas.row(3).starts_with(
        "│ 00:00:20  the driver of adapter 0000:01:00.0 (Gpu0:Nimba-K1) is gone or does │"))
        << canvas.row(3);
    EXPECT_TRUE(canvas.row(4).starts_with(
        "│           not answer; it is asked again with every sample                    │"))
        << canvas.row(4);
}

TEST_F(TopView, LetsAnEventStandOutForTenSeconds)
{
    State state = with_samples();
    state.take(snapshot_of({absent(first_adapter()), second_adapter()}, 20), kOpened + 20s);
    EXPECT_EQ(draw(state, {80, 24}, kOpened + 20s).cell(1, 22), (Cell{U'0', Ink::kWarning}));
    state.take(snapshot_of({absent(first_adapter()), second_adapter()}, 30), kOpened + 30s);
    EXPECT_EQ(draw(state, {80, 24}, kOpened + 30s).cell(1, 22), (Cell{U'0', Ink::kDim}));
    EXPECT_TRUE(draw(state, {80, 12}, kOpened + 30s).row(11).starts_with(" q Quit"));
}

TEST_F(TopView, ColoursSharesByTheirHeight)
{
    State state = with_samples();
    const Canvas canvas = draw(state, {80, 24}, kOpened + 20s);
    EXPECT_EQ(canvas.cell(18, 3), (Cell{U'⣴', Ink::kScale4}));
    EXPECT_EQ(canvas.cell(18, 6), (Cell{U'⣿', Ink::kScale0}));
    EXPECT_EQ(canvas.cell(18, 11).ink, Ink::kMemory);
    EXPECT_EQ(canvas.cell(2, 16).ink, Ink::kSelected);
    EXPECT_EQ(canvas.cell(2, 17).ink, Ink::kPlain);
}

TEST_F(TopView, HasNothingButAsciiWhereNothingElseIsPossible)
{
    State state{Settings{1s, Marks::kAscii, true}, kOpened};
    state.take(snapshot_of({first_adapter()}), kOpened);
    for (const char32_t key : {U'x', U'a', U'?', U'e', U'/'}) {
        state.press(Key{key});
        for (const char c : picture(state, {120, 40}, kOpened + 60s)) {
            ASSERT_TRUE(c == '\n' || (c >= ' ' && c <= '~'));
        }
    }
}

}  // namespace
}  // namespace nimba::smi::top
