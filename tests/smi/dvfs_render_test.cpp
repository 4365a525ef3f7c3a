// SPDX-License-Identifier: MIT
#include "dvfs_readings.hpp"
#include "tools/smi/dvfs/render.hpp"
#include "tools/smi/text/json.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

const SlotIdentity kAdapter{0, "0000:01:00.0", "Gpu0:Nimba-K1"};

SettingsSnapshot snapshot()
{
    return {{find_field("power_gating_3d"), find_field("dvfs_level"), find_field("gfx_clock"),
             find_field("video_clock")},
            {{kAdapter,
              reading_of({{"power_gating_3d", 65535}, {"dvfs_level", 0}, {"gfx_clock", -800}})},
             {{1, "0000:02:00.0", std::nullopt}, reading_of({{"video_clock", 0}})}},
            {}};
}

TEST(SettingsFaces, ShowWhatIsNotAvailableAsSuch)
{
    EXPECT_EQ(settings_text(snapshot()),
              "SLOT  FIELD            VALUE\n"
              "0     power_gating_3d  0xffff\n"
              "0     dvfs_level       balance\n"
              "0     gfx_clock        -800\n"
              "0     video_clock      not available\n"
              "1     power_gating_3d  not available\n"
              "1     dvfs_level       not available\n"
              "1     gfx_clock        not available\n"
              "1     video_clock      0\n");
    EXPECT_EQ(settings_csv(snapshot()),
              "slot,bus_id,field,value\n"
              "0,0000:01:00.0,power_gating_3d,0xffff\n"
              "0,0000:01:00.0,dvfs_level,balance\n"
              "0,0000:01:00.0,gfx_clock,-800\n"
              "0,0000:01:00.0,video_clock,\n"
              "1,0000:02:00.0,power_gating_3d,\n"
              "1,0000:02:00.0,dvfs_level,\n"
              "1,0000:02:00.0,gfx_clock,\n"
              "1,0000:02:00.0,video_clock,0\n");
    EXPECT_EQ(
        Document::parse(settings_json(snapshot())).dump(),
        R"({"schema":"nimba-smi.dvfs.1","adapters":[)"
        R"({"slot":0,"name":"Gpu0:Nimba-K1","bus_id":"0000:01:00.0","fields":)"
        R"({"power_gating_3d":65535,"dvfs_level":"balance","gfx_clock":-800,"video_clock":null}},)"
        R"({"slot":1,"name":null,"bus_id":"0000:02:00.0","fields":)"
        R"({"power_gating_3d":null,"dvfs_level":null,"gfx_clock":null,"video_clock":0}}],)"
        R"("errors":[]})");
}

TEST(SettingsFaces, AreEmptyWithoutAnAdapter)
{
    const SettingsSnapshot none{{find_field("dvfs_level")}, {}, {}};
    EXPECT_EQ(settings_text(none), "");
    EXPECT_EQ(settings_csv(none), "slot,bus_id,field,value\n");
    EXPECT_EQ(Document::parse(settings_json(none)).dump(),
              R"({"schema":"nimba-smi.dvfs.1","adapters":[],"errors":[]})");
}

TEST(ChangeFaces, TellFieldByFieldWhatBecameOfIt)
{
    const SettingsChange change{
        kAdapter,
        {{find_field("power_gating_3d"), 16, 0, 16, Verdict::kAccepted},
         {find_field("dvfs_level"), 2, 0, 0, Verdict::kRejected},
         {find_field("gfx_clock"), 900, 800, std::nullopt, Verdict::kUnknown}},
        {}};
    EXPECT_EQ(change_text(change),
              "FIELD            BEFORE   ASKED        RESULT\n"
              "power_gating_3d  0x0      0x10         accepted\n"
              "dvfs_level       balance  performance  rejected: still balance\n"
              "gfx_clock        800      900          unknown: it cannot be read back\n");
    EXPECT_EQ(Document::parse(change_json(change)).dump(),
              R"({"schema":"nimba-smi.dvfs-set.1",)"
              R"("adapter":{"slot":0,"name":"Gpu0:Nimba-K1","bus_id":"0000:01:00.0"},"fields":[)"
              R"({"field":"power_gating_3d","before":0,"asked":16,"after":16,"result":"accepted"},)"
              R"({"field":"dvfs_level","before":"balance","asked":"performance","after":"balance",)"
              R"("result":"rejected"},)"
              R"({"field":"gfx_clock","before":800,"asked":900,"after":null,"result":"unknown"}],)"
              R"("errors":[]})");
    EXPECT_EQ(change_text({}), "");
    EXPECT_EQ(Document::parse(change_json({})).dump(),
              R"({"schema":"nimba-smi.dvfs-set.1","adapter":null,"fields":[],"errors":[]})");
}

TEST(DryRunFaces, AreTheLinesAndTheirNodes)
{
    const DryRun run{
        kAdapter, {{find_field("power_gating_3d"), 65535}, {find_field("dvfs_level"), 2}}, {}};
    EXPECT_EQ(dry_run_text(run), "pwm_wait_count: 0 0 ffffffff\ndvfs_level: performance\n");
    EXPECT_EQ(Document::parse(dry_run_json(run)).dump(),
              R"({"schema":"nimba-smi.dvfs-dry-run.1",)"
              R"("adapter":{"slot":0,"name":"Gpu0:Nimba-K1","bus_id":"0000:01:00.0"},"writes":[)"
              R"({"node":"pwm_wait_count","line":"0 0 ffffffff"},)"
              R"({"node":"dvfs_level","line":"performance"}],"errors":[]})");
    EXPECT_EQ(dry_run_text({}), "");
}

TEST(SavedFace, NamesTheFileOnlyWhenItWasWritten)
{
    const std::vector<Assignment> state{{find_field("dvfs_level"), 1},
                                        {find_field("gfx_clock"), 8}};
    EXPECT_EQ(Document::parse(saved_json(kAdapter, "a.json", state, {})).dump(),
              R"({"schema":"nimba-smi.dvfs-save.1",)"
              R"("adapter":{"slot":0,"name":"Gpu0:Nimba-K1","bus_id":"0000:01:00.0"},)"
              R"("file":"a.json","fields":{"dvfs_level":"lowpower","gfx_clock":8},"errors":[]})");
    EXPECT_EQ(Document::parse(saved_json(std::nullopt, "a.json", {}, {})).dump(),
              R"({"schema":"nimba-smi.dvfs-save.1","adapter":null,"file":null,"fields":{},)"
              R"("errors":[]})");
}

}  // namespace
}  // namespace nimba::smi
