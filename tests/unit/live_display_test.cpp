// The live display's numbers: which column each gauge reads in either row layout, the text
// and unit it shows, and an empty display when no log runs.

#include "logging/live_display.h"
#include "logging/log_signals.h"
#include "support/log_fixture.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

class LiveDisplay : public test::Log_Fixture, public ::testing::Test {
protected:
    LiveDisplay() { Load_Defaults(); }
    std::map<std::string, int> Columns() {
        std::map<std::string, int> columns;
        for (int g = 0; g < Gauge_Count; ++g)
            columns[Gauge_Captions[static_cast<std::size_t>(g)]] = Gauge_Column(*state, g);
        return columns;
    }
};

TEST_F(LiveDisplay, EachGaugeReadsItsColumnInBothLayouts) {
    // The layout of datasets from 200, as the shipped log settings name its columns.
    const std::map<std::string, int> standalone = {
        {"RPM", 1},     {"MAP", 14},    {"TP", 13},      {"O2 M", 12}, {"O2 S", 25}, {"IAT M", 21},
        {"IAT S", -1},  {"BAT M", 20},  {"BAT S", -1},   {"Cool", 15}, {"IGN", 2},   {"Fuel M", 4},
        {"Fuel S", -1}, {"Ftrim M", 7}, {"FTrim S", -1}, {"POWER", 41}};
    EXPECT_EQ(Columns(), standalone);

    // The older layout has four inputs and four of the slave, and no trim.
    Load_Default_Signal_Names(*state);
    const std::map<std::string, int> boost = {
        {"RPM", 1},     {"MAP", 4},      {"TP", 3},       {"O2 M", 2},  {"O2 S", 17}, {"IAT M", -1},
        {"IAT S", -1},  {"BAT M", -1},   {"BAT S", -1},   {"Cool", 5},  {"IGN", 6},   {"Fuel M", 8},
        {"Fuel S", -1}, {"Ftrim M", -1}, {"FTrim S", -1}, {"POWER", 22}};
    EXPECT_EQ(Columns(), boost);
}

TEST_F(LiveDisplay, ValuesShowInTheirFormatsWithTheirUnits) {
    state->capture.Logging_Running = true;
    state->capture.Log_Row_Count = 3;
    Log_Array& d = state->Log_Data;
    d(3, 1) = 3456.4;
    d(3, 14) = 1.236;
    d(3, 2) = 24.25;
    d(3, 4) = 4.04;
    d(3, 7) = -3.5;
    d(3, 41) = 212.6;
    d(3, 12) = 0.9;
    d(2, 1) = 999; // an older row is not the one in hand
    ASSERT_EQ(Current_Data_Row(*state), 3);
    const Gauge_Readings g = Read_Gauges(*state, Current_Data_Row(*state));

    EXPECT_EQ(g[0].caption, "RPM");
    EXPECT_EQ(g[0].text + g[0].unit, "3456 rpm");
    EXPECT_EQ(g[1].text + g[1].unit, "1.24 bar") << "the MAP sensor has two decimals";
    EXPECT_EQ(g[3].text + g[3].unit, "0.90 lambda");
    EXPECT_EQ(g[10].text + g[10].unit, "24.2 deg") << "ties go to the even digit";
    EXPECT_EQ(g[11].text + g[11].unit, "4.0 ms");
    EXPECT_EQ(g[13].text + g[13].unit, "-3.5 %");
    EXPECT_EQ(g[15].text + g[15].unit, "213 Hp");
    // A gauge whose column is in the layout but empty in the row shows no number.
    EXPECT_TRUE(g[2].present);
    EXPECT_EQ(g[2].text, "");
    EXPECT_FALSE(g[6].present);
    // The bar knows where the value stands: the MAP sensor spans 0.09 to about 2.59 bar.
    EXPECT_NEAR(g[1].low, 0.09, 1e-9);
    EXPECT_NEAR(g[1].high, 0.09 + 255 * 0.0098039, 1e-6);
}

TEST_F(LiveDisplay, NothingShowsWithoutARunningLog) {
    state->Log_Data(1, 1) = 900;
    EXPECT_EQ(Current_Data_Row(*state), 0);
    for (const Gauge_Reading& g : Read_Gauges(*state, 0))
        EXPECT_EQ(g.text, "") << g.caption;
    // A row past the arrays is nothing either, not a fault.
    for (const Gauge_Reading& g : Read_Gauges(*state, Log_Row_Limit + 5))
        EXPECT_EQ(g.text, "") << g.caption;
}

} // namespace
} // namespace quorlen
