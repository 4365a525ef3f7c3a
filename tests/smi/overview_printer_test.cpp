// SPDX-License-Identifier: MIT
#include "adapter_states.hpp"
#include "tools/smi/overview/printer.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace nimba::smi {
namespace {

// Half an hour east of UTC.
class OverviewPrinterTest : public testing::Test {
  protected:
    OverviewPrinterTest()
    {
        ::setenv("TZ", "TST-0:30", 1);
        ::tzset();
    }
    ~OverviewPrinterTest() override
    {
        ::unsetenv("TZ");
        ::tzset();
    }
};

OverviewPrinter printer(MonitorForm form, bool watching)
{
    return {form, watching, std::nullopt, OverviewStyle{}};
}

MachineSnapshot foreign_only()
{
    MachineSnapshot snapshot = snapshot_of({});
    snapshot.foreign_gpu = kForeignGpu;
    return snapshot;
}

TEST_F(OverviewPrinterTest, ATextTellsTheTimeInAWatchAlone)
{
    constexpr const char* kLine =
        "Gpu0:Intel-GPU: 0000:00:02.0 card 0, of another vendor and not examined\n";
    auto once = printer(MonitorForm::kText, false);
    EXPECT_EQ(once.begin(), "");
    EXPECT_EQ(once.snapshot(foreign_only()), kLine);
    auto watch = printer(MonitorForm::kText, true);
    EXPECT_EQ(watch.begin(), "");
    EXPECT_EQ(watch.snapshot(foreign_only()), std::string{"18:32:59.007\n"} + kLine);
    EXPECT_EQ(watch.snapshot(foreign_only()), std::string{"\n18:32:59.007\n"} + kLine);
}

TEST_F(OverviewPrinterTest, CommaSeparatedValuesHaveARowForEachAdapter)
{
    auto once = printer(MonitorForm::kCsv, false);
    EXPECT_TRUE(once.begin().starts_with("slot,bus_id,name,"));
    const std::string rows = once.snapshot(snapshot_of({busy_adapter(), unknown_adapter()}));
    EXPECT_TRUE(rows.starts_with("0,0000:01:00.0,Gpu0:Nimba-K6,")) << rows;
    EXPECT_NE(rows.find("\n1,0000:02:00.0,,"), std::string::npos) << rows;
    EXPECT_EQ(once.snapshot(foreign_only()), "");
    auto watch = printer(MonitorForm::kCsv, true);
    EXPECT_TRUE(watch.begin().starts_with("time,slot,bus_id,name,"));
    EXPECT_TRUE(watch.snapshot(snapshot_of({busy_adapter()}))
                    .starts_with("2026-11-21T18:02:59.007Z,0,0000:01:00.0,"));
}

TEST_F(OverviewPrinterTest, DocumentsAreOneLineInAWatch)
{
    EXPECT_EQ(printer(MonitorForm::kJson, true).snapshot(snapshot_of({})),
              R"({"schema":"nimba-smi.overview.1","time":"2026-11-21T18:02:59.007Z",)"
              R"("adapters":[],"foreign_gpu":null,"errors":[]})"
              "\n");
    EXPECT_EQ(printer(MonitorForm::kJson, false).snapshot(snapshot_of({})),
              "{\n"
              "  \"schema\": \"nimba-smi.overview.1\",\n"
              "  \"time\": \"2026-11-21T18:02:59.007Z\",\n"
              "  \"adapters\": [],\n"
              "  \"foreign_gpu\": null,\n"
              "  \"errors\": []\n"
              "}\n");
}

}  // namespace
}  // namespace nimba::smi
