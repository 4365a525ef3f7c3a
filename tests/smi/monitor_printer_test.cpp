// SPDX-License-Identifier: MIT
#include "memory_records.hpp"
#include "tools/smi/monitor/printer.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace nimba::smi {
namespace {

using std::chrono::system_clock;
using Sample = Snapshot<std::string>;

// 2026-11-21 18:02:59.007 UTC
constexpr system_clock::time_point kTime{std::chrono::milliseconds{1'795'284'179'007}};

MonitorView<std::string> view()
{
    return {"test.1",
            {"A", "B"},
            {0},
            {"a", "b"},
            [](const std::string& text) {
                return std::vector<Row>{{text, "x"}};
            },
            [](const std::string& text) {
                return std::vector<Row>{{text, "y"}, {"2", "z"}};
            },
            [](const std::string& text) {
                return Document{{"a", text}};
            }};
}

Sample sample(const std::string& content)
{
    return {kTime, {{kFirstSlot, content}}, {}};
}

MonitorPrinter<std::string> printer(MonitorForm form, bool watching)
{
    return {view(), form, watching};
}

class MonitorPrinterTest : public testing::Test {
  protected:
    // Half an hour east of UTC.
    MonitorPrinterTest()
    {
        ::setenv("TZ", "TST-0:30", 1);
        ::tzset();
    }
    ~MonitorPrinterTest() override
    {
        ::unsetenv("TZ");
        ::tzset();
    }
};

TEST_F(MonitorPrinterTest, ASingleTextHasNoTime)
{
    auto text = printer(MonitorForm::kText, false);
    EXPECT_EQ(text.begin(), "");
    EXPECT_EQ(text.sample(sample("10")),
              "SLOT   A  B\n"
              "0     10  x\n");
}

TEST_F(MonitorPrinterTest, AWatchHasOneHeaderAndStaysAligned)
{
    auto text = printer(MonitorForm::kText, true);
    EXPECT_EQ(text.sample({kTime, {}, {}}), "");
    EXPECT_EQ(text.sample(sample("10")),
              "TIME          SLOT   A  B\n"
              "18:32:59.007  0     10  x\n");
    EXPECT_EQ(text.sample(sample("5")), "18:32:59.007  0      5  x\n");
    EXPECT_EQ(text.sample({kTime, {}, {}}), "");
}

TEST_F(MonitorPrinterTest, CommaSeparatedValuesTellTheTimeInAWatch)
{
    auto once = printer(MonitorForm::kCsv, false);
    EXPECT_EQ(once.begin(), "slot,bus_id,a,b\n");
    EXPECT_EQ(once.sample(sample("1")), "0,0000:01:00.0,1,y\n0,0000:01:00.0,2,z\n");
    auto watch = printer(MonitorForm::kCsv, true);
    EXPECT_EQ(watch.begin(), "time,slot,bus_id,a,b\n");
    EXPECT_EQ(watch.sample(sample("1")),
              "2026-11-21T18:02:59.007Z,0,0000:01:00.0,1,y\n"
              "2026-11-21T18:02:59.007Z,0,0000:01:00.0,2,z\n");
}

TEST_F(MonitorPrinterTest, DocumentsAreOneLineInAWatch)
{
    Sample with_problem = sample("1");
    with_problem.problems = {{ExitStatus::kNoAdapter, "0000:02:00.0", std::nullopt, "gone"}};
    EXPECT_EQ(printer(MonitorForm::kJson, true).sample(with_problem),
              R"({"schema":"test.1","time":"2026-11-21T18:02:59.007Z","adapters":[{"slot":0,)"
              R"("name":"Gpu0:Nimba-K1","bus_id":"0000:01:00.0","a":"1"}],"errors":[{"status":3,)"
              R"("adapter":"0000:02:00.0","call":null,"message":"gone"}]})"
              "\n");
    EXPECT_EQ(printer(MonitorForm::kJson, false).sample({kTime, {}, {}}),
              "{\n"
              "  \"schema\": \"test.1\",\n"
              "  \"time\": \"2026-11-21T18:02:59.007Z\",\n"
              "  \"adapters\": [],\n"
              "  \"errors\": []\n"
              "}\n");
}

}  // namespace
}  // namespace nimba::smi
