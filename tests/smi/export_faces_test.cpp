// SPDX-License-Identifier: MIT
#include "tools/smi/export/faces.hpp"
#include "tools/smi/export/metric.hpp"
#include "tools/smi/export/problem_lines.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace nimba::smi::exporting {
namespace {

std::vector<MetricSamples> some_samples()
{
    Samples samples;
    samples.add(Metric::kFrames, {{"gpu", "0000:01:00.0"}, {"kind", "flip"}}, 4294967295.0);
    samples.add(Metric::kTemperature, {{"gpu", "0000:01:00.0"}, {"slot", ""}}, -40);
    samples.add(Metric::kFrameRate, {}, std::optional<double>{});
    samples.add(Metric::kFrameRate, {}, std::optional<double>{59.94});
    return std::move(samples).take();
}

TEST(ExportFaces, TextHasTheMetricsInTheirOrderAndNoEmptyOnes)
{
    EXPECT_EQ(exposition_text(some_samples()),
              R"(# HELP nimba_temperature_celsius Temperature of the adapter.
# TYPE nimba_temperature_celsius gauge
nimba_temperature_celsius{gpu="0000:01:00.0"} -40
# HELP nimba_frames_total Frames that were shown, by flip and by blit.
# TYPE nimba_frames_total counter
nimba_frames_total{gpu="0000:01:00.0",kind="flip"} 4294967295
# HELP nimba_frame_rate_hertz Frames per second since the scrape before.
# TYPE nimba_frame_rate_hertz gauge
nimba_frame_rate_hertz 59.94
)");
}

TEST(ExportFaces, DocumentHasTheSameSamplesAndTheProblems)
{
    const Problem problem{ExitStatus::kWorkerLost, "0000:01:00.0", "fps_init", "it is gone"};
    EXPECT_EQ(export_json(some_samples(), {&problem, 1}), R"({
  "schema": "nimba-smi.export.1",
  "metrics": [
    {
      "name": "nimba_temperature_celsius",
      "type": "gauge",
      "help": "Temperature of the adapter.",
      "samples": [
        {
          "labels": {
            "gpu": "0000:01:00.0"
          },
          "value": -40
        }
      ]
    },
    {
      "name": "nimba_frames_total",
      "type": "counter",
      "help": "Frames that were shown, by flip and by blit.",
      "samples": [
        {
          "labels": {
            "gpu": "0000:01:00.0",
            "kind": "flip"
          },
          "value": 4294967295
        }
      ]
    },
    {
      "name": "nimba_frame_rate_hertz",
      "type": "gauge",
      "help": "Frames per second since the scrape before.",
      "samples": [
        {
          "labels": {},
          "value": 59.94
        }
      ]
    }
  ],
  "errors": [
    {
      "status": 7,
      "adapter": "0000:01:00.0",
      "call": "fps_init",
      "message": "it is gone"
    }
  ]
}
)");
}

TEST(ExportMetrics, CountersAloneEndInTotalAndEveryNameIsItsOwn)
{
    std::set<std::string> names;
    for (const MetricRow& row : metric_table()) {
        const std::string name = row.name;
        EXPECT_TRUE(name.starts_with("nimba_")) << name;
        EXPECT_EQ(name.ends_with("_total"), row.is_counter) << name;
        EXPECT_TRUE(names.insert(name).second) << name;
    }
    EXPECT_EQ(names.size(), 37U);
}

TEST(ExportMetrics, ManualPageHasThemAll)
{
    std::ifstream file{MAN_PAGES "nimba-smi-export.1.scd"};
    const std::string page{std::istreambuf_iterator<char>{file}, {}};
    for (const MetricRow& row : metric_table()) {
        const std::string type = row.is_counter ? "counter" : "gauge";
        EXPECT_NE(page.find(std::string{"\n*"} + row.name + "* (" + type + ", "), std::string::npos)
            << row.name;
    }
}

Problem problem_with(const char* message)
{
    return {ExitStatus::kNoAdapter, std::nullopt, std::nullopt, message};
}

std::vector<std::string> told(ProblemLines& lines, const std::vector<Problem>& problems)
{
    std::vector<std::string> messages;
    for (const Problem& problem : lines.news(problems)) {
        messages.push_back(problem.message);
    }
    return messages;
}

TEST(ExportProblemLines, AProblemIsToldWhenItComesUpAndWhenItComesAgain)
{
    using Messages = std::vector<std::string>;
    ProblemLines lines;
    EXPECT_EQ(told(lines, {problem_with("entry 1 is odd"), problem_with("entry 2 is odd"),
                           problem_with("no fan")}),
              (Messages{"entry 1 is odd", "no fan"}));
    EXPECT_EQ(told(lines, {problem_with("entry 7 is odd"), problem_with("no heap")}),
              (Messages{"no heap"}));
    EXPECT_EQ(told(lines, {}), Messages{});
    EXPECT_EQ(told(lines, {problem_with("no fan")}), (Messages{"no fan"}));
}

TEST(ExportProblemLines, WhatIsToldOnceIsNotToldWhenItComesAgain)
{
    ProblemLines lines;
    const std::vector<Problem> problems{problem_with("no entry 1"), problem_with("no entry 2")};
    ASSERT_EQ(lines.never_told(problems).size(), 1U);
    EXPECT_TRUE(lines.never_told({}).empty());
    EXPECT_TRUE(lines.never_told(problems).empty());
    EXPECT_EQ(told(lines, problems), std::vector<std::string>{"no entry 1"});
}

}  // namespace
}  // namespace nimba::smi::exporting
