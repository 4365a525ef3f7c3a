// SPDX-License-Identifier: MIT
#include "adapter_states.hpp"
#include "tools/smi/overview/text.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

constexpr OverviewStyle kUnstyled;

std::string text_of(const MachineSnapshot& snapshot, std::optional<std::size_t> top = std::nullopt,
                    const OverviewStyle& style = kUnstyled)
{
    return overview_text(snapshot, top, style);
}

// What stands before the table of the processes.
std::string blocks_of(const MachineSnapshot& snapshot, const OverviewStyle& style = kUnstyled)
{
    const std::string text = text_of(snapshot, std::nullopt, style);
    return text.substr(0, text.find("\n\n") + 1);
}

std::string processes_of(const std::string& text)
{
    return text.substr(text.find("-- Processes"));
}

TEST(OverviewText, IsEmptyOnAMachineWithoutGpus)
{
    EXPECT_EQ(text_of(snapshot_of({})), "");
}

TEST(OverviewText, HasBlocksTheForeignGpuAndProcessesOnEightyColumns)
{
    MachineSnapshot snapshot = snapshot_of({busy_adapter()});
    snapshot.foreign_gpu = kForeignGpu;
    EXPECT_EQ(text_of(snapshot),
              "-- 0  Gpu0:Nimba-K6 -------------------------------------- 0000:01:00.0, card 1\n"
              " Driver       1.2.a (va)               Memory  ###################.......   75%\n"
              " Firmware     8.f.0.1c, K6 desktop...          2.8 GiB of 3.7 GiB\n"
              " PCIe link    gen 4, 16 lanes          3D      ########################..   95%\n"
              " Temperature  72 C, fans 1600 1650     Video   #######...................   30%\n"
              " Power level  balance                  VPP     ..........................    0%\n"
              " Clocks       engine 550, video 350, memory 1000, core 600, gfx 550\n"
              "\n"
              "Gpu0:Intel-GPU: 0000:00:02.0 card 0, of another vendor and not examined\n"
              "\n"
              "-- Processes ------------------------------------------------------------------\n"
              " SLOT         PID   MEMORY  ALLOCS  PROCESS\n"
              " 0        4100003  1.5 GiB       3  maze\n"
              " 0     4100001 +1    4 KiB       3  compositor, -\n");
}

TEST(OverviewText, UsesTheColumnsThatThereAre)
{
    EXPECT_EQ(
        blocks_of(snapshot_of({busy_adapter()}), {120, false, false}),
        "-- 0  Gpu0:Nimba-K6 "
        "------------------------------------------------------------------------------ "
        "0000:01:00.0, card 1\n"
        " Driver       1.2.a (va)                                   Memory  "
        "##################################............   75%\n"
        " Firmware     8.f.0.1c, K6 desktop board                           2.8 GiB of 3.7 GiB\n"
        " PCIe link    gen 4, 16 lanes                              3D      "
        "###########################################...   95%\n"
        " Temperature  72 C, fans 1600 1650                         Video   "
        "#############.................................   30%\n"
        " Power level  balance                                      VPP     "
        "..............................................    0%\n"
        " Clocks       engine 550, video 350, memory 1000, core 600, gfx 550\n");
}

TEST(OverviewText, HasBarsBelowTheFactsOnANarrowTerminal)
{
    AdapterState state = busy_adapter();
    state.summary.firmware_name = "a board with a name of many words";
    EXPECT_EQ(blocks_of(snapshot_of({state}), {50, false, false}),
              "-- 0  Gpu0:Nimba-K6 -------- 0000:01:00.0, card 1\n"
              " Driver       1.2.a (va)\n"
              " Firmware     8.f.0.1c, a board with a name of...\n"
              " PCIe link    gen 4, 16 lanes\n"
              " Temperature  72 C, fans 1600 1650\n"
              " Power level  balance\n"
              " Memory  #########################.........   75%\n"
              "         2.8 GiB of 3.7 GiB\n"
              " 3D      ################################..   95%\n"
              " Video   ##########........................   30%\n"
              " VPP     ..................................    0%\n"
              " Clocks       engine 550, video 350, memory 10...\n");
}

TEST(OverviewText, SaysWhatIsNotKnown)
{
    EXPECT_EQ(text_of(snapshot_of({unknown_adapter()})),
              "-- 1  n/a -------------------------------------------------------- 0000:02:00.0\n"
              " Driver       n/a                      Memory  n/a\n"
              " Firmware     n/a\n"
              " PCIe link    n/a                      3D      n/a\n"
              " Temperature  n/a, fan n/a             Video   n/a\n"
              " Power level  n/a                      VPP     n/a\n"
              " Clocks       engine n/a, video n/a, memory n/a, core n/a, gfx n/a\n"
              "\n"
              "-- Processes ------------------------------------------------------------------\n"
              " SLOT  PID  MEMORY  ALLOCS  PROCESS\n"
              " 1     n/a     n/a     n/a  n/a\n");
}

TEST(OverviewText, HasNoFiguresOfAnAdapterThatDidNotAnswer)
{
    AdapterState silent = unknown_adapter();
    silent.there = false;
    EXPECT_EQ(blocks_of(snapshot_of({silent})),
              "-- 1  n/a -------------------------------------------------------- 0000:02:00.0\n"
              " n/a          It gave no answer: standard error says why\n");
}

TEST(OverviewText, ShowsFramesFromTheSecondSnapshotOn)
{
    AdapterState state = busy_adapter();
    state.rates.flips = 59.94;
    EXPECT_TRUE(blocks_of(snapshot_of({state})).ends_with("\n Frames       59.9 flips/s\n"));
    state.rates.blits = 120;
    EXPECT_TRUE(
        blocks_of(snapshot_of({state})).ends_with("\n Frames       59.9 flips/s, 120.0 blits/s\n"));
}

TEST(OverviewText, TakesWhatIsThereOfLinkDriverAndFans)
{
    AdapterState state = unknown_adapter();
    state.summary.link_width = 8;
    state.summary.adapter = Adapter{};
    state.summary.adapter->driver = DriverKind::kLegacy;
    state.summary.firmware_name = "board";
    state.sensors.fan_speed = 900;
    state.sensors.temperature = 85;
    state.segments = {
        SegmentSource::kAllocations, {{"0", std::nullopt, {5, std::nullopt}}}, {5, std::nullopt}};
    const std::string text = blocks_of(snapshot_of({state}));
    for (const char* const part :
         {"\n Driver       n/a (legacy) ", "\n Firmware     n/a, board  ",
          "\n PCIe link    gen n/a, 8 lanes ", "\n Temperature  85 C, fan 900 ", " Memory  n/a\n",
          "       5 MiB of n/a\n"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << text;
    }
}

TEST(OverviewText, IsColouredByLoadAndDrawnInBlocks)
{
    AdapterState state = busy_adapter();
    state.sensors.temperature = 86;
    const std::string text = blocks_of(snapshot_of({state}), {80, true, true});
    for (const char* const part : {
             "\x1b[90m\u2500\u2500\x1b[0m 0  Gpu0:Nimba-K6 \x1b[90m\u2500",
             "\x1b[33m75%\x1b[0m\n",
             "\x1b[31m95%\x1b[0m\n",
             "\x1b[32m30%\x1b[0m\n",
             " Temperature  \x1b[31m86 C\x1b[0m, fans 1600 1650 ",
             "Video   \x1b[32m\u2588\u2588\u2588\u2588\u2588\u2588\u2588\x1b[0m\x1b[90m\u2591",
             "8.f.0.1c, K6 desktop b\u2026 ",
         }) {
        EXPECT_NE(text.find(part), std::string::npos) << part << '\n' << text;
    }
}

TEST(OverviewProcesses, OfAllAdaptersAreInTheOrderOfTheirMemory)
{
    AdapterState second = unknown_adapter();
    second.processes_known = true;
    second.processes.devices = {device_usage(1, 0x21, {{4100005, "cad"}}, 1'048'576),
                                device_usage(1, 0x22, {}, 0)};
    const MachineSnapshot snapshot = snapshot_of({busy_adapter(), second});
    EXPECT_EQ(processes_of(text_of(snapshot)),
              "-- Processes ------------------------------------------------------------------\n"
              " SLOT         PID   MEMORY  ALLOCS  PROCESS\n"
              " 0        4100003  1.5 GiB       3  maze\n"
              " 1        4100005    1 MiB       3  cad\n"
              " 0     4100001 +1    4 KiB       3  compositor, -\n"
              " 1              -      0 B       3  -\n");
    EXPECT_EQ(processes_of(text_of(snapshot, 1)),
              "-- Processes ------------------------------------------------------------------\n"
              " SLOT      PID   MEMORY  ALLOCS  PROCESS\n"
              " 0     4100003  1.5 GiB       3  maze\n"
              " and 3 more\n");
    EXPECT_EQ(processes_of(text_of(snapshot, 4)), processes_of(text_of(snapshot)));
}

TEST(OverviewProcesses, AreNoneWhenThereAreNone)
{
    AdapterState idle = unknown_adapter();
    idle.processes_known = true;
    EXPECT_EQ(processes_of(text_of(snapshot_of({idle}))),
              "-- Processes ------------------------------------------------------------------\n"
              " none\n");
}

TEST(OverviewProcesses, HaveNamesThatAreCutAndPrintable)
{
    AdapterState state = unknown_adapter();
    state.processes_known = true;
    state.processes.devices = {device_usage(1, 1, {{1, "\x1b[2J"}}, 2048),
                               device_usage(1, 2, {{2, std::string(100, 'x')}}, 1024)};
    EXPECT_EQ(processes_of(text_of(snapshot_of({state}))),
              "-- Processes ------------------------------------------------------------------\n"
              " SLOT  PID  MEMORY  ALLOCS  PROCESS\n"
              " 1       1   2 KiB       3  \\x1b[2J\n"
              " 1       2   1 KiB       3  xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...\n");
}

}  // namespace
}  // namespace nimba::smi
