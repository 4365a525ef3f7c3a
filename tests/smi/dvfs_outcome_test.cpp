// SPDX-License-Identifier: MIT
#include "dvfs_readings.hpp"
#include "tools/smi/dvfs/outcome.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(Verdict, ComparesWhatIsReadWithWhatWasAsked)
{
    EXPECT_EQ(judge(5, 4, 5), Verdict::kAccepted);
    EXPECT_EQ(judge(5, 5, 5), Verdict::kUnchanged);
    EXPECT_EQ(judge(5, 4, 4), Verdict::kRejected);
    EXPECT_EQ(judge(5, 4, 6), Verdict::kChanged);
    EXPECT_EQ(judge(5, 5, 6), Verdict::kChanged);
    EXPECT_EQ(judge(5, 4, std::nullopt), Verdict::kUnknown);
    EXPECT_EQ(judge(5, std::nullopt, 5), Verdict::kAccepted);
}

TEST(Verdict, HasAWordAndASentence)
{
    EXPECT_EQ(word_of(Verdict::kAccepted), "accepted");
    EXPECT_EQ(word_of(Verdict::kUnchanged), "unchanged");
    EXPECT_EQ(word_of(Verdict::kRejected), "rejected");
    EXPECT_EQ(word_of(Verdict::kChanged), "changed");
    EXPECT_EQ(word_of(Verdict::kUnknown), "unknown");
    EXPECT_EQ(sentence_of(Verdict::kAccepted, "800"), "accepted");
    EXPECT_EQ(sentence_of(Verdict::kUnchanged, "800"), "unchanged: already so");
    EXPECT_EQ(sentence_of(Verdict::kRejected, "800"), "rejected: still 800");
    EXPECT_EQ(sentence_of(Verdict::kChanged, "800"), "changed to 800 by the driver");
    EXPECT_EQ(sentence_of(Verdict::kUnknown, "not available"), "unknown: it cannot be read back");
}

TEST(Outcomes, AreOfTheAssignmentsInTheirOrder)
{
    const DvfsReading before = reading_of({{"dvfs_level", 0}, {"gfx_clock", 800}});
    const DvfsReading after = reading_of({{"dvfs_level", 2}, {"gfx_clock", 800}});
    const DvfsField* const dvfs_level = find_field("dvfs_level");
    const DvfsField* const clock = find_field("gfx_clock");
    EXPECT_EQ(outcomes_of(std::vector<Assignment>{{clock, 900}, {dvfs_level, 2}}, before, after),
              (std::vector<Outcome>{{clock, 900, 800, 800, Verdict::kRejected},
                                    {dvfs_level, 2, 0, 2, Verdict::kAccepted}}));
}

TEST(Changes, LeaveOutWhatIsSoAlready)
{
    const DvfsReading reading = reading_of({{"dvfs_level", 0}, {"gfx_clock", 800}});
    const DvfsField* const dvfs_level = find_field("dvfs_level");
    const DvfsField* const clock = find_field("gfx_clock");
    const DvfsField* const dvfs_mode = find_field("dvfs_mode");
    EXPECT_EQ(
        changes(std::vector<Assignment>{{dvfs_mode, 0}, {dvfs_level, 0}, {clock, 801}}, reading),
        (std::vector<Assignment>{{dvfs_mode, 0}, {clock, 801}}));
}

}  // namespace
}  // namespace nimba::smi
