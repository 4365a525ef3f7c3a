// SPDX-License-Identifier: MIT
#include "dvfs_readings.hpp"
#include "tools/smi/dvfs/faults.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

namespace nimba::smi {
namespace {

const Subject kSubject{"adapter 0000:01:00.0", "0000:01:00.0"};

struct Said {
    ExitStatus status;
    std::string message;

    bool operator==(const Said&) const = default;
};

std::vector<Said> said(const std::vector<Problem>& problems)
{
    std::vector<Said> result;
    for (const Problem& problem : problems) {
        EXPECT_EQ(problem.adapter, "0000:01:00.0");
        result.push_back({problem.status, problem.message});
    }
    return result;
}

NodeAccess& node(DvfsReading& reading, std::string_view name)
{
    for (NodeAccess& access : reading.nodes) {
        if (access.node == name) {
            return access;
        }
    }
    throw std::out_of_range{"no such node"};
}

TEST(ReadingFaults, AreOfTheFieldsThatAreAskedForOnceForEachNode)
{
    DvfsReading reading = reading_of({});
    node(reading, "dvfs_control_params").read_error = EIO;
    node(reading, "power_mode").read_error = EACCES;
    node(reading, "vclk").read_error = EIO;
    reading.values[index_of(*find_field("dvfs_mode"))] = 1;
    const std::vector<const DvfsField*> fields{
        find_field("power_mode"), find_field("gfx_check_size"), find_field("gfx_high_threshold"),
        find_field("dvfs_mode")};
    EXPECT_EQ(said(reading_problems(kSubject, reading, fields)),
              (std::vector<Said>{
                  {ExitStatus::kNoPermission,
                   "adapter 0000:01:00.0: no permission to read /info/power_mode: run as root"},
                  {ExitStatus::kNoAdapter,
                   "adapter 0000:01:00.0: cannot read /info/dvfs_control_params: Input/output "
                   "error (see dmesg)"}}));
}

TEST(ReadingFaults, ANodeThatTellsNothingIsOne)
{
    const DvfsReading reading = reading_of({{"gfx_clock", 550}});
    const std::vector<const DvfsField*> fields{find_field("power_gating_3d"),
                                               find_field("clock_gating_3d"),
                                               find_field("gfx_clock"), find_field("gfx_voltage")};
    EXPECT_EQ(said(reading_problems(kSubject, reading, fields)),
              (std::vector<Said>{{ExitStatus::kNoAdapter,
                                  "adapter 0000:01:00.0: there are no settings in "
                                  "/info/pwm_wait_count (see dmesg)"}}));
}

TEST(ReadingFaults, AMissingNodeIsNoneUnlessAllAreMissing)
{
    DvfsReading reading = reading_of({});
    const std::vector<const DvfsField*> fields{find_field("power_mode")};
    node(reading, "power_mode").read_error = ENOENT;
    EXPECT_TRUE(reading_problems(kSubject, reading, fields).empty());
    for (NodeAccess& access : reading.nodes) {
        access.read_error = ENOENT;
    }
    EXPECT_EQ(said(reading_problems(kSubject, reading, fields)),
              (std::vector<Said>{{ExitStatus::kNoAdapter,
                                  "adapter 0000:01:00.0: the driver shows no settings, or the "
                                  "adapter is gone (see dmesg)"}}));
}

TEST(MissingFields, AreNamedWithWhatKeepsThemFromBeingRead)
{
    DvfsReading reading = reading_of({{"dvfs_level", 0}});
    node(reading, "dvfs_mode").read_error = EPERM;
    const std::vector<Assignment> assignments{
        {find_field("power_mode"), 1}, {find_field("dvfs_mode"), 1}, {find_field("dvfs_level"), 1}};
    EXPECT_EQ(
        said(missing_fields(kSubject, reading, assignments)),
        (std::vector<Said>{
            {ExitStatus::kNotTaken,
             "adapter 0000:01:00.0: the driver does not give power_mode; nothing was written"},
            {ExitStatus::kNotTaken,
             "adapter 0000:01:00.0: the driver does not give dvfs_mode; nothing was written"},
            {ExitStatus::kNoPermission,
             "adapter 0000:01:00.0: no permission to read /info/dvfs_mode: run as root"}}));
}

TEST(WritingFaults, AreOfTheNodesThatWouldBeWrittenOnceForEach)
{
    DvfsReading reading = reading_of({});
    node(reading, "pwm_wait_count").write_error = EACCES;
    node(reading, "dvfs_level").write_error = EROFS;
    node(reading, "power_mode").write_error = EACCES;
    const std::vector<Assignment> assignments{{find_field("power_gating_3d"), 1},
                                              {find_field("clock_gating_3d"), 1},
                                              {find_field("dvfs_level"), 1}};
    EXPECT_EQ(said(writing_problems(kSubject, reading, assignments)),
              (std::vector<Said>{
                  {ExitStatus::kNoPermission,
                   "adapter 0000:01:00.0: no permission to write /info/pwm_wait_count: run as "
                   "root; nothing was written"},
                  {ExitStatus::kNoAdapter,
                   "adapter 0000:01:00.0: cannot write /info/dvfs_level: Read-only file system "
                   "(see dmesg); nothing was written"}}));
}

TEST(NodeAccessOf, ANodeThatNobodyAskedAboutIsNotThere)
{
    EXPECT_EQ(access_of(reading_of({}).nodes, "vclk"), (NodeAccess{"vclk", "/info/vclk", 0, 0}));
    EXPECT_EQ(access_of({}, "vclk"), (NodeAccess{"vclk", "vclk", ENOENT, ENOENT}));
}

}  // namespace
}  // namespace nimba::smi
