#include "app/core/heat_tooltip.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace velmora::testing {
namespace {

const std::optional<std::string> busy = "cc1plus 96 %";
const std::optional<std::string> critical = "Critical in about 4 min";
const std::optional<std::string> none;

TEST(HeatTooltip, SaysTheLevelTheFigureTheBusiestAndTheForecast) {
    const auto tip = heatTooltip(Level::hot, 91.4, busy, critical);
    EXPECT_EQ(tip.title, "Velmora Heat Monitor");
    EXPECT_EQ(tip.text, "HOT \u00b7 91 \u00b0C \u2014 cc1plus 96 % \u00b7 critical in about 4 min");
}

TEST(HeatTooltip, EachOptionalPhraseStandsAlone) {
    EXPECT_EQ(heatTooltip(Level::hot, 91, busy, none).text,
              "HOT \u00b7 91 \u00b0C \u2014 cc1plus 96 %");
    EXPECT_EQ(heatTooltip(Level::hot, 91, none, critical).text,
              "HOT \u00b7 91 \u00b0C \u2014 critical in about 4 min");
    EXPECT_EQ(heatTooltip(Level::hot, 91, none, none).text, "HOT \u00b7 91 \u00b0C");
}

TEST(HeatTooltip, TheBusiestProcessIsNamedFromWarmUp) {
    EXPECT_EQ(heatTooltip(Level::ok, 55, busy, none).text, "NORMAL \u00b7 55 \u00b0C");
    EXPECT_EQ(heatTooltip(Level::warm, 78, busy, none).text,
              "WARM \u00b7 78 \u00b0C \u2014 cc1plus 96 %");
    EXPECT_EQ(heatTooltip(Level::extreme, 99, busy, none).text,
              "EXTREME HEAT \u00b7 99 \u00b0C \u2014 cc1plus 96 %");
    EXPECT_EQ(heatTooltip(Level::blowout, 104, busy, none).text,
              "EMERGENCY \u00b7 104 \u00b0C \u2014 cc1plus 96 %");
}

TEST(HeatTooltip, AForecastShowsAtEveryLevelAndEmptyPhrasesAreLeftOut) {
    EXPECT_EQ(heatTooltip(Level::ok, 60, none, "Levelling off at 68 \u00b0C").text,
              "NORMAL \u00b7 60 \u00b0C \u2014 levelling off at 68 \u00b0C");
    EXPECT_EQ(heatTooltip(Level::warm, 80, std::string(), std::string()).text,
              "WARM \u00b7 80 \u00b0C");
}

TEST(HeatTooltip, WithoutAFigureOrALevelItSaysSo) {
    EXPECT_EQ(heatTooltip(Level::warm, std::nullopt, busy, none).text,
              "WARM \u00b7 no CPU temperature \u2014 cc1plus 96 %");
    EXPECT_EQ(heatTooltip(Level::ok, std::nullopt, none, none).text,
              "NORMAL \u00b7 no CPU temperature");
    EXPECT_EQ(heatTooltip(std::nullopt, std::nullopt, busy, critical).text,
              "Waiting for the first reading");
}

TEST(HeatTooltip, NoTextSpeaksOfACountdownOrAShutdown) {
    for (const auto level : {Level::ok, Level::warm, Level::hot, Level::extreme, Level::blowout}) {
        const auto tip = heatTooltip(level, 90, busy, critical);
        for (const auto* word : {"ountdown", "hutdown", "hut down"}) {
            EXPECT_EQ(tip.title.find(word), std::string::npos) << tip.title;
            EXPECT_EQ(tip.text.find(word), std::string::npos) << tip.text;
        }
    }
}

TEST(CelsiusText, RoundsAndLeavesOutWhatIsNotANumber) {
    EXPECT_EQ(celsiusText(72.5), "73 \u00b0C");
    EXPECT_EQ(celsiusText(std::nullopt), std::nullopt);
    EXPECT_EQ(celsiusText(std::nan("")), std::nullopt);
}

}  // namespace
}  // namespace velmora::testing
