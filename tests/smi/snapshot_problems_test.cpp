// SPDX-License-Identifier: MIT
#include "tools/smi/snapshot/problems.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

const std::string kNoDirectory =
    "adapter 0000:01:00.0: there is no directory /info: the driver "
    "does not show its ";

Problem failed(const char* call, std::string message, ExitStatus status = ExitStatus::kNoAdapter,
               const char* adapter = "0000:01:00.0")
{
    return {status, adapter, call, std::move(message)};
}

std::vector<std::string> told(std::initializer_list<Problem> problems)
{
    std::vector<Problem> all;
    for (const Problem& problem : problems) {
        add_unless_told(all, problem);
    }
    std::vector<std::string> messages;
    messages.reserve(all.size());
    for (const Problem& problem : all) {
        messages.push_back(problem.message);
    }
    return messages;
}

using Messages = std::vector<std::string>;

TEST(SnapshotProblems, TellOfADirectoryOnceHoweverManyQuestionsMissIt)
{
    EXPECT_EQ(told({failed("open /info", kNoDirectory + "figures"),
                    failed("open /info", kNoDirectory + "clocks"),
                    failed("open /info", kNoDirectory + "sensors")}),
              (Messages{kNoDirectory + "figures"}));
}

TEST(SnapshotProblems, TellOfTheKernelInterfaceLibraryOnce)
{
    EXPECT_EQ(told({failed("gfx_global_init", "missing: no bandwidth", ExitStatus::kOk),
                    failed("gfx_global_init", "missing; memory is shown", ExitStatus::kOk)}),
              (Messages{"missing: no bandwidth"}));
}

TEST(SnapshotProblems, TellTheSameWordsOnceWhateverWasCalled)
{
    EXPECT_EQ(told({failed("get_segment_info", "there are no allocations"),
                    failed("get_allocation_raw_list", "there are no allocations")}),
              (Messages{"there are no allocations"}));
}

TEST(SnapshotProblems, TellWhatDiffersInANumberOnceForACall)
{
    EXPECT_EQ(told({failed("get_device_pid_maps", "301 contexts"),
                    failed("get_device_pid_maps", "302 contexts"),
                    failed("get_fan", "no permission to read fan0_input"),
                    failed("get_other_fan", "no permission to read fan1_input")}),
              (Messages{"301 contexts", "no permission to read fan0_input",
                        "no permission to read fan1_input"}));
}

TEST(SnapshotProblems, TellWhatOneCallLacksTwice)
{
    EXPECT_EQ(told({failed("gfx_segment_init", "no permission to read heap_local"),
                    failed("gfx_segment_init", "no permission to read heap_pcie")}),
              (Messages{"no permission to read heap_local", "no permission to read heap_pcie"}));
}

TEST(SnapshotProblems, TellOfEveryAdapterFileAndStatus)
{
    EXPECT_EQ(told({failed("open /info", "a"),
                    failed("open /info", "b", ExitStatus::kNoAdapter, "0000:02:00.0"),
                    failed("open /info", "c", ExitStatus::kNoPermission),
                    failed("open /info/vclk", "d")}),
              (Messages{"a", "b", "c", "d"}));
    EXPECT_EQ(told({{ExitStatus::kNoAdapter, std::nullopt, std::nullopt, "no adapter"},
                    {ExitStatus::kNoAdapter, std::nullopt, std::nullopt, "no card"}}),
              (Messages{"no adapter", "no card"}));
}

}  // namespace
}  // namespace nimba::smi
