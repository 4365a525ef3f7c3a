// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/render.hpp"
#include "tools/smi/text/json.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace nimba::smi {
namespace {

PreferenceSnapshot three_preferences()
{
    Discovery discovery;
    discovery.slots = {{0, "0000:01:00.0", "Gpu0:Nimba-K1"}};
    discovery.drm_devices = 1;
    PreferenceSnapshot snapshot;
    snapshot.file = "/home/ann/.local/share/wmt_gfx_util.ini";
    snapshot.preferences = {{"maze", "/usr/bin/maze", 1, "Gpu0:Nimba-K1", {0, 1, 0, 0}},
                            {"a,\"b\"\xe9", "/opt/a,b", -12, "", {1, 0xaf, 0x1f, 7}},
                            {"\x1b[2J", "game", 0, "Gpu1:QV M-30", {0, 2, 0, 0}}};
    snapshot.discovery = discovery;
    return snapshot;
}

TEST(PreferenceFaces, AreATable)
{
    EXPECT_EQ(preferences_text(three_preferences()),
              "APPLICATION  VALUE  GPU            BUS ID        PRESENT\n"
              "maze         1      Gpu0:Nimba-K1  0000:01:00.0  yes\n"
              "a,\"b\"\xef\xbf\xbd       -12    -              0001:af:1f.7  no\n"
              "\\x1b[2J      0      Gpu1:QV M-30   0000:02:00.0  no\n");
    EXPECT_EQ(preferences_text({}), "");
    PreferenceSnapshot unseen = three_preferences();
    unseen.discovery.reset();
    unseen.preferences->resize(1);
    EXPECT_EQ(preferences_text(unseen),
              "APPLICATION  VALUE  GPU            BUS ID        PRESENT\n"
              "maze         1      Gpu0:Nimba-K1  0000:01:00.0  unknown\n");
}

TEST(PreferenceFaces, AreCommaSeparatedValues)
{
    EXPECT_EQ(preferences_csv(three_preferences()),
              "application,path,value,gpu_name,bus_id,present\n"
              "maze,/usr/bin/maze,1,Gpu0:Nimba-K1,0000:01:00.0,yes\n"
              "\"a,\"\"b\"\"\xef\xbf\xbd\",\"/opt/a,b\",-12,,0001:af:1f.7,no\n"
              "\\x1b[2J,game,0,Gpu1:QV M-30,0000:02:00.0,no\n");
    PreferenceSnapshot unseen = three_preferences();
    unseen.discovery.reset();
    unseen.preferences->resize(1);
    EXPECT_EQ(preferences_csv(unseen),
              "application,path,value,gpu_name,bus_id,present\n"
              "maze,/usr/bin/maze,1,Gpu0:Nimba-K1,0000:01:00.0,\n");
    EXPECT_EQ(preferences_csv({}), "application,path,value,gpu_name,bus_id,present\n");
}

TEST(PreferenceFaces, AreADocument)
{
    PreferenceSnapshot snapshot = three_preferences();
    snapshot.preferences->resize(1);
    snapshot.told = {{ExitStatus::kOk, std::nullopt, std::nullopt, "first"}};
    snapshot.problems = {{ExitStatus::kNotTaken, std::nullopt, std::nullopt, "second"}};
    EXPECT_EQ(
        nlohmann::ordered_json::parse(preferences_json(snapshot)).dump(),
        R"({"schema":"nimba-smi.prefer.1",)"
        R"("file":"/home/ann/.local/share/wmt_gfx_util.ini","preferences":[)"
        R"({"application":"maze","path":"/usr/bin/maze","value":1,)"
        R"("gpu":{"name":"Gpu0:Nimba-K1","bus_id":"0000:01:00.0","present":true}}],"errors":[)"
        R"({"status":0,"adapter":null,"call":null,"message":"first"},)"
        R"({"status":9,"adapter":null,"call":null,"message":"second"}]})");
    EXPECT_EQ(nlohmann::ordered_json::parse(preferences_json({})).dump(),
              R"({"schema":"nimba-smi.prefer.1","file":null,"preferences":null,"errors":[]})");
}

}  // namespace
}  // namespace nimba::smi
