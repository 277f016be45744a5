// The engine behind the log stream: what it needs, what its lambda sensor reads, and the sweep.

#include "engine_model.h"
#include "options.h"
#include "qxs_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>

namespace boxsim {
namespace {

std::string Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

class Engine_Model_Test : public ::testing::Test {
protected:
    Engine_Model_Test() {
        std::string error;
        image = *Load_Qxs(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3_Default_Settings.qxs", error);
        setup.enabled = true;
        setup.drive = Drive::Sweep;
        setup.sensors = Parse_Tuning_Sensors(Read(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini"));
    }
    Image_Bytes image{};
    Engine_Setup setup;
};

TEST(Fuel_Errors, Read_Ranges_And_Signed_Percentages) {
    std::string error;
    auto e = Parse_Fuel_Error("3000-5000:1.0-1.5:+12", error);
    ASSERT_TRUE(e);
    EXPECT_DOUBLE_EQ(e->rpm_from, 3000);
    EXPECT_DOUBLE_EQ(e->load_to, 1.5);
    EXPECT_DOUBLE_EQ(e->percent, 12);
    EXPECT_DOUBLE_EQ(Parse_Fuel_Error("0-9000:-0.5-0.2:-8", error)->load_from, -0.5);
    for (const char* bad : {"3000-5000:1.0-1.5", "5000-3000:1-2:5", "a-b:1-2:3", "1-2:3-4:-95", ""})
        EXPECT_FALSE(Parse_Fuel_Error(bad, error)) << bad;
    EXPECT_NE(error.find("RPM1-RPM2:LOAD1-LOAD2:PCT"), std::string::npos);

    auto o = Parse_Options(
        {"--link", "x", "--fuel-error", "3000-5000:1-1.5:12", "--fuel-error", "1000-2000:0-1:-5"}, error);
    ASSERT_TRUE(o);
    EXPECT_TRUE(o->box.engine.enabled);
    EXPECT_EQ(o->box.engine.errors.size(), 2u);
    EXPECT_EQ(o->box.engine.drive, Drive::Demo);
    EXPECT_FALSE(Parse_Options({"--link", "x", "--drive", "fast"}, error));
}

TEST_F(Engine_Model_Test, Needs_More_Only_In_The_Region_As_The_Map_Axes_Read) {
    setup.errors.push_back({3000, 5000, 1.0, 1.5, 12});
    const Engine_Model engine(setup, image);
    // The shipped map: columns 8..12 are 3000..5000 rpm, rows 11..13 read 1.00, 1.17, 1.34 bar
    // (1.51 is past the region).
    EXPECT_NEAR(engine.Need_Factor(11, 8), 1.12, 1e-12);
    EXPECT_NEAR(engine.Need_Factor(13, 12), 1.12, 1e-12);
    EXPECT_DOUBLE_EQ(engine.Need_Factor(14, 10), 1);
    EXPECT_DOUBLE_EQ(engine.Need_Factor(11, 13), 1);
    EXPECT_DOUBLE_EQ(engine.Need_Factor(10, 8), 1);
}

TEST_F(Engine_Model_Test, Lambda_Reads_The_Target_On_The_Map_It_Was_Tuned_With_And_Follows_A_Written_One) {
    const Engine_Model engine(setup, image);
    const auto points = engine.Sweep_Points(image);
    const int hold = engine.Sweep_Hold_Rows(points.size());
    // The point at 1.00 bar (raw 96 through the MAP sensor) wants 12.8 AFR: the table's byte
    // for it is what the wide band sensor on input 1 reads.
    long row = -1;
    for (std::size_t i = 0; i < points.size(); ++i)
        if (points[i] == std::pair{8, 11}) row = static_cast<long>(i) * hold + hold / 2;
    ASSERT_GE(row, 0);
    Engine_Sample s = engine.Sample(row, image);
    EXPECT_DOUBLE_EQ(s.rpm, 3000);
    EXPECT_EQ(s.columns[14], 96); // the load input holds the point exactly
    const Tuning_Sensor& afr = *setup.sensors[1];
    EXPECT_NEAR(afr.Value(s.columns[12]), 12.8, 0.05);

    // The box's cell given 10 % less open time: the mixture leans by the same share.
    Image_Bytes leaner = image;
    const int cell = 256 + 19 + 18 + 2 + 10 * 19 + 7;
    const double dead = (image[79] + 255) * 0.0032;
    const double ms = image[static_cast<std::size_t>(cell)] * 0.1;
    leaner[static_cast<std::size_t>(cell)] =
        static_cast<std::uint8_t>(std::lround((dead + (ms - dead) * 0.9) / 0.1));
    const double open_share = (ms - dead) / (leaner[static_cast<std::size_t>(cell)] * 0.1 - dead);
    s = engine.Sample(row, leaner);
    EXPECT_NEAR(afr.Value(s.columns[12]) / 12.8, open_share, 0.01);
}

TEST_F(Engine_Model_Test, The_Sweep_Holds_Every_Point_It_Can_Reach_Within_A_Round) {
    const Engine_Model engine(setup, image);
    const auto points = engine.Sweep_Points(image);
    // 14 speeds from 1000 to 7000 rpm on the ten light-load rows, and the boost rows as the
    // turbo comes in.
    EXPECT_EQ(points.size(), 180u);
    const int hold = engine.Sweep_Hold_Rows(points.size());
    EXPECT_GE(hold * 0.05, Sweep_Min_Hold_Seconds);
    EXPECT_LE(hold * 0.05 * static_cast<double>(points.size()), 300);
    // Each step moves one column along a load row, or on to the next row at its end.
    for (std::size_t i = 1; i < points.size(); ++i) {
        const int dc = std::abs(points[i].first - points[i - 1].first);
        const int dr = points[i].second - points[i - 1].second;
        EXPECT_TRUE((dc == 1 && dr == 0) || dr == 1) << i;
    }
}

} // namespace
} // namespace boxsim
