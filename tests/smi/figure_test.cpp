// SPDX-License-Identifier: MIT
#include "tools/smi/monitor/figure.hpp"

#include "tools/smi/clocks/figures.hpp"
#include "tools/smi/sensors/figures.hpp"
#include "tools/smi/usage/figures.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <limits>

namespace nimba::smi {
namespace {

constexpr std::array kColumns{
    FigureColumn{"heat", "HEAT", " C"}, FigureColumn{"rate", "RATE"},
    FigureColumn{"mode", "MODE"},       FigureColumn{"words", "WORDS"},
    FigureColumn{"words", "WORDS"},     FigureColumn{"words", "WORDS"},
};

const Figures kFigures{int64_t{45}, 59.96,        std::string{"low"},
                       int64_t{7},  std::nullopt, int64_t{0}};
const Figures kNothing(kColumns.size());

TEST(Figure, HeadersNameEveryFigure)
{
    const auto view = figure_view("test.1", kColumns);
    EXPECT_EQ(view.schema, "test.1");
    EXPECT_EQ(view.text_header, (Row{"HEAT", "RATE", "MODE", "WORDS"}));
    EXPECT_EQ(view.right, (std::vector<std::size_t>{0, 1, 2}));
    EXPECT_EQ(view.csv_header, (Row{"heat", "rate", "mode", "words_0", "words_1", "words_2"}));
}

TEST(Figure, TextHasUnitsOneDecimalPlaceAndNumberedWords)
{
    const auto view = figure_view("test.1", kColumns);
    EXPECT_EQ(view.text_rows(kFigures), (std::vector<Row>{{"45 C", "60.0", "low", "0=7 2=0"}}));
    EXPECT_EQ(view.text_rows(kNothing), (std::vector<Row>{{"n/a", "n/a", "n/a", "n/a"}}));
}

TEST(Figure, ScriptsGetAllDecimalPlacesAndNoUnits)
{
    const auto view = figure_view("test.1", kColumns);
    EXPECT_EQ(view.csv_rows(kFigures), (std::vector<Row>{{"45", "59.96", "low", "7", "", "0"}}));
    EXPECT_EQ(view.csv_rows(kNothing), (std::vector<Row>{{"", "", "", "", "", ""}}));
    EXPECT_EQ(view.json(kFigures).dump(),
              R"({"heat":45,"rate":59.96,"mode":"low","words":[7,null,0]})");
    EXPECT_EQ(view.json(kNothing).dump(),
              R"({"heat":null,"rate":null,"mode":null,"words":[null,null,null]})");
}

TEST(Figure, WhatIsInfiniteOrNoNumberIsNotAvailable)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(figure(std::optional(kInfinity)), std::nullopt);
    EXPECT_EQ(figure(std::optional(-kInfinity)), std::nullopt);
    EXPECT_EQ(figure(std::optional(std::nan(""))), std::nullopt);
    EXPECT_EQ(figure(std::optional(0.0)), Figure{0.0});
    EXPECT_EQ(figure(std::optional(int64_t{0})), Figure{int64_t{0}});
}

TEST(ClockFigures, ShowTheWordOfTheLevel)
{
    ClockReading reading;
    reading.engine = 800;
    reading.memory = 0;
    reading.gfx_voltage = -1;
    reading.level = 1;
    const auto view = clocks_view();
    EXPECT_EQ(view.json(clock_figures(reading)).dump(),
              R"({"engine_clock":800,"video_clock":null,"memory_clock":0,"core_clock":null,)"
              R"("gfx_clock":null,"gfx_voltage":-1,"dvfs_level":"lowpower"})");
    reading.level = 3;
    EXPECT_EQ(clock_figures(reading).back(), std::nullopt);
}

TEST(SensorFigures, ShowDegreesCelsius)
{
    SensorReading reading;
    reading.temperature = 61;
    reading.fan1 = 0;
    const auto view = sensors_view();
    EXPECT_EQ(view.text_rows(sensor_figures(reading)),
              (std::vector<Row>{{"61 C", "n/a", "0", "n/a"}}));
    EXPECT_EQ(view.csv_header, (Row{"temperature_celsius", "fan0", "fan1", "fan_speed"}));
}

TEST(UsageFigures, ShowTheRatesOfTheNodesWhereTheyCount)
{
    CounterReading reading;
    reading.rates = {{1.5}, {}, {}, {2.5}};
    reading.engine_3d = 40;
    reading.bandwidth[11] = 9;
    reading.busy[2] = 90;
    const FrameRates counted{60.0, 15.0, 75.0, 74.0};
    const auto view = usage_view();
    EXPECT_EQ(
        view.text_rows(usage_figures(reading, counted)),
        (std::vector<Row>{{"1.5", "n/a", "n/a", "2.5", "40%", "n/a", "n/a", "11=9", "2=90"}}));
    reading.frames = {10, 20, 30};
    EXPECT_EQ(
        view.text_rows(usage_figures(reading, counted)),
        (std::vector<Row>{{"60.0", "15.0", "75.0", "74.0", "40%", "n/a", "n/a", "11=9", "2=90"}}));
}

TEST(UsageFigures, WordsStandUnderTheirNumbers)
{
    CounterReading reading;
    reading.bandwidth[0] = 4294967295;
    reading.busy[9] = 5;
    const auto document = usage_view().json(usage_figures(reading, {}));
    EXPECT_EQ(document["bandwidth_words"].dump(),
              "[4294967295,null,null,null,null,null,null,null,null,null,null,null]");
    EXPECT_EQ(document["busy_words"].dump(), "[null,null,null,null,null,null,null,null,null,5]");
}

}  // namespace
}  // namespace nimba::smi
