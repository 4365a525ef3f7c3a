// SPDX-License-Identifier: MIT
// The machine files that come with nimba-sim.
#include "driver/live_driver.hpp"
#include "machine_file.hpp"
#include "machine_file_error.hpp"
#include "machine_list.hpp"
#include "nimba_mgmt_interface.h"
#include "support/temp_directory.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace nimba::sim::test {
namespace {

TEST(ShippedMachines, AreThese)
{
    std::vector<std::string> names;
    for (const ListedMachine& machine : list_machines(SHIPPED_MACHINES).machines) {
        names.push_back(machine.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"amd-beside",
                                               "bare-adapter",
                                               "busy",
                                               "closed-nodes",
                                               "closed-render",
                                               "control-only",
                                               "default",
                                               "fallback-library",
                                               "fifty-contexts",
                                               "foreign-only",
                                               "forty-allocations",
                                               "hundred-thousand",
                                               "intel-beside",
                                               "leaking",
                                               "library-of-size-zero",
                                               "library-without-size",
                                               "many-devices",
                                               "million-pages",
                                               "no-gpu",
                                               "no-library",
                                               "no-version",
                                               "page-tables",
                                               "qv-m20-heaps",
                                               "qv-m30-heaps",
                                               "qv-m40-heaps",
                                               "seven-segments",
                                               "showcase",
                                               "sixty-devices",
                                               "steady-adapter",
                                               "steady-desktop",
                                               "three-adapters",
                                               "three-and-foreign",
                                               "two-and-foreign",
                                               "two-qv",
                                               "unknown-beside",
                                               "unknown-chip",
                                               "unreadable"}));
}

// What a shipped machine's drivers list there in the beginning.
std::vector<std::string> listing(const std::string& machine, const std::string& directory)
{
    LiveDriver driver{read_machine(find_machine(machine, SHIPPED_MACHINES)),
                      [] { return std::chrono::nanoseconds{0}; }};
    return driver.list(directory);
}

// The values of a key in all allocations of card 0.
std::set<std::string> values(const std::string& machine, const std::string& key)
{
    LiveDriver driver{read_machine(find_machine(machine, SHIPPED_MACHINES)),
                      [] { return std::chrono::nanoseconds{0}; }};
    const std::string directory = "dri/0/jw/allocations";
    std::set<std::string> found;
    for (const std::string& entry : driver.list(directory)) {
        const std::string text = driver.read(fmt::format("{}/{}/info", directory, entry)).value();
        const std::size_t start = text.find("\n" + key + "=");
        found.insert(text.substr(start, text.find('\n', start + 1) - start));
    }
    return found;
}

TEST(ShippedMachines, HaveTheNumbersOfTheirNames)
{
    EXPECT_EQ(listing("hundred-thousand", "dri/0/jw/allocations").size(), 100000U);
    EXPECT_EQ(listing("hundred-thousand", "dri/0/jw/devices").size(), 40U);
    EXPECT_EQ(listing("forty-allocations", "dri/0/jw/allocations").size(), 40U);
    EXPECT_EQ(listing("sixty-devices", "dri/0/jw/devices").size(), 60U);
    EXPECT_EQ(values("sixty-devices", "device").size(), 60U);
    EXPECT_EQ(listing("fifty-contexts", "dri/0/qv/devices").size(), 50U);
    EXPECT_EQ(listing("fifty-contexts", "dri/1/qv/devices").size(), 50U);
}

TEST(ShippedMachines, LeakingOneLosesTwentyAllocationsPerSecond)
{
    const Machine machine = read_machine(find_machine("leaking", SHIPPED_MACHINES));
    std::chrono::nanoseconds now{0};
    LiveDriver driver{machine, [&] { return now; }};
    const std::string directory = "dri/0/jw/allocations";
    EXPECT_EQ(driver.list(directory).size(), 60U);
    now = std::chrono::seconds{2};
    EXPECT_EQ(driver.list(directory).size(), 100U);
    EXPECT_NE(driver.read(directory + "/100/info")->find("\ndevice=19\nwidth=128\nheight=64\n"),
              std::string::npos);
}

TEST(ShippedMachines, BusyOneKeepsChangingWithinItsBounds)
{
    const Machine machine = read_machine(find_machine("busy", SHIPPED_MACHINES));
    std::chrono::nanoseconds now{0};
    LiveDriver driver{machine, [&] { return now; }};
    for (const char* directory : {"dri/0/jw/allocations", "dri/1/qv/allocations"}) {
        const auto before = driver.list(directory);
        now += std::chrono::seconds{60};
        const auto after = driver.list(directory);
        EXPECT_NE(before, after);
        EXPECT_EQ(before.size(), after.size());
    }
}

TEST(ShippedMachines, HaveEveryChipOfTheProduct)
{
    std::set<std::pair<int, int>> chips;
    for (const ListedMachine& machine : list_machines(SHIPPED_MACHINES).machines) {
        for (const Adapter& adapter : read_machine(machine.file).adapters) {
            chips.emplace(adapter.pci.vendor, adapter.pci.device);
        }
    }
    for (const int device : {DEVICE_ID_NIMBA_K1, DEVICE_ID_NIMBA_K2, DEVICE_ID_NIMBA_K3,
                             DEVICE_ID_NIMBA_K3T, DEVICE_ID_NIMBA_K5, DEVICE_ID_NIMBA_K6}) {
        EXPECT_TRUE(chips.contains({NIMBA_VENDOR_ID, device})) << device;
    }
    for (const int device : {DEVICE_ID_QV_M20, DEVICE_ID_QV_M30, DEVICE_ID_QV_M40}) {
        EXPECT_TRUE(chips.contains({QV_VENDOR_ID, device})) << device;
    }
}

TEST(MachineList, HoldsTheMachineFilesOfADirectoryByName)
{
    const nimba::test::TempDirectory directory;
    directory.write("b.toml", "description = \"Second\"\n");
    directory.write("a.toml", "description = \"First\"\n");
    directory.write("notes.txt", "not a machine");
    const auto [machines, problems] = list_machines(directory.path());
    EXPECT_TRUE(problems.empty());
    ASSERT_EQ(machines.size(), 2U);
    EXPECT_EQ(machines.at(0).name, "a");
    EXPECT_EQ(machines.at(0).description, "First");
    EXPECT_EQ(machines.at(0).file, directory.path().string() + "/a.toml");
    EXPECT_EQ(machines.at(1).name, "b");
}

TEST(MachineList, TellsWhatIsNoMachineBesideThoseThatAre)
{
    const nimba::test::TempDirectory directory;
    directory.write("b.toml", "description = \"Good\"\n");
    const std::string bad = directory.write("a.toml", "description = 1\n");
    const auto [machines, problems] = list_machines(directory.path());
    ASSERT_EQ(machines.size(), 1U);
    EXPECT_EQ(machines.at(0).name, "b");
    EXPECT_EQ(problems,
              std::vector<std::string>{bad + ":1: key 'description': expected a text, got 1"});
}

TEST(MachineList, WithoutItsDirectoryIsAnError)
{
    EXPECT_THROW(list_machines("/nonexistent"), MachineFileError);
}

TEST(FindMachine, TakesANameOfTheListOrAFile)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("mine.toml", "description = \"Mine\"\n");
    EXPECT_EQ(find_machine("mine", directory.path()), file);
    EXPECT_EQ(find_machine("./mine", directory.path()), "./mine");
    EXPECT_EQ(find_machine("other.toml", directory.path()), "other.toml");
}

TEST(FindMachine, SaysWhereTheNamesAre)
{
    const nimba::test::TempDirectory directory;
    try {
        find_machine("absent", directory.path());
        FAIL() << "a machine was found";
    } catch (const MachineFileError& error) {
        EXPECT_STREQ(
            error.what(),
            "no machine is called 'absent'; `nimba-sim machines` lists those that there are");
    }
}

}  // namespace
}  // namespace nimba::sim::test
