// The high-speed stream of the simulator: the wheel read from the engine layout, the engine
// drawn from the image's maps, and the framing the program checks (echo, check bytes, stop).

#include "box.h"
#include "hs_stream.h"
#include "qxs_file.h"

#include <gtest/gtest.h>

namespace boxsim {
namespace {

using namespace std::chrono_literals;

int Present(const Wheel& w) {
    return static_cast<int>(std::count(w.present.begin(), w.present.end(), true));
}

TEST(HsStream, WheelsAreReadFromTheLayoutsCrankSensor) {
    Wheel w = Parse_Wheel("Crank 36-1");
    EXPECT_EQ(w.positions, 36);
    EXPECT_EQ(Present(w), 35);
    EXPECT_FALSE(w.present[35]); // the gap ends the turn, place 0 is the tooth after it
    w = Parse_Wheel("60-2");
    EXPECT_EQ(Present(w), 58);
    EXPECT_FALSE(w.present[58]);
    EXPECT_EQ(Present(Parse_Wheel("Crank 36-2-2-2")), 30);
    EXPECT_EQ(Present(Parse_Wheel("Crank 36 even")), 36);
    EXPECT_EQ(Present(Parse_Wheel("Dist 24 teeth")), 24);
    EXPECT_EQ(Parse_Wheel("No cam").positions, 0);
    EXPECT_EQ(Parse_Wheel("Crank 1-1").positions, 0);
}

// Level changes of each line over a run of samples.
std::array<int, 8> Edges(const HS_Plan& plan, int rate, double seconds) {
    std::array<int, 8> edges{};
    std::uint8_t last = plan.Sample_At(0);
    for (long i = 1; i < static_cast<long>(seconds * rate); ++i) {
        const std::uint8_t s = plan.Sample_At(static_cast<double>(i) / rate);
        for (int b = 0; b < 8; ++b)
            edges[static_cast<std::size_t>(b)] += ((s ^ last) >> b) & 1;
        last = s;
    }
    return edges;
}

class HsShippedLayout : public ::testing::Test {
protected:
    HsShippedLayout() {
        std::string error;
        setup.layouts = Load_Engine_Layouts(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini", error);
        auto loaded = Load_Qxs(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3_Default_Settings.qxs", error);
        if (loaded) image = *loaded;
        setup.rpm = 3000;
    }
    HS_Setup setup;
    Image image{};
};

TEST_F(HsShippedLayout, TheImagesLayoutAndMapsMakeTheEngine) {
    ASSERT_GT(setup.layouts.size(), 40u);
    ASSERT_EQ(image[6], 0); // row 1: 36-1, no cam, wasted spark, semi-sequential
    const HS_Plan plan = Plan_For(setup, image);
    EXPECT_EQ(plan.wheel.positions, 36);
    EXPECT_EQ(plan.cylinders, 4);
    EXPECT_DOUBLE_EQ(plan.tdc1, image[18] * 10.0 + 51);
    EXPECT_DOUBLE_EQ(plan.dwell_ms, image[21] * 0.2);
    EXPECT_NEAR(plan.advance, 38.0, 0.01); // the ignition map's first load row at 3000 rpm
    EXPECT_NEAR(plan.fuel_ms, 1.30, 0.01);

    // Ten turns at 625000 baud: 35 teeth, a coil pair each turn, the cam every other turn.
    const auto e = Edges(plan, 62500, 0.2);
    EXPECT_NEAR(e[0] / 2.0, 350, 1);
    EXPECT_NEAR(e[1] / 2.0, 10, 1);
    EXPECT_NEAR(e[2] / 2.0, 10, 1);
    EXPECT_NEAR(e[4] / 2.0, 5, 1);
    EXPECT_NEAR(e[7] / 2.0, 10, 1); // semi-sequential: injector A each turn
    EXPECT_EQ(e[5] + e[6], 0);

    // A coil-on-plug layout with a 60-2 wheel: each coil and injector A once in two turns.
    image[6] = 7;
    const HS_Plan cop = Plan_For(setup, image);
    EXPECT_EQ(cop.wheel.positions, 60);
    const auto c = Edges(cop, 62500, 0.2);
    EXPECT_NEAR(c[0] / 2.0, 580, 1);
    EXPECT_NEAR(c[1] / 2.0, 5, 1);
    EXPECT_NEAR(c[2] / 2.0, 5, 1);
    EXPECT_NEAR(c[7] / 2.0, 5, 1);

    // The wheel given on the command line wins over the layout's.
    setup.wheel = "24-1";
    EXPECT_EQ(Plan_For(setup, image).wheel.positions, 24);
}

TEST(HsStream, EchoThenSamplesWithACheckByteEvery11520th) {
    Box_Config config;
    config.hs.rpm = 3000;
    Box box(config, Box_Faults{});
    box.Set_Line_Baud(115200);
    EXPECT_EQ(box.Receive("d", Time{}), "d");
    EXPECT_TRUE(box.HS_Streaming());
    std::string all = "d" + box.Tick(Time(2s));
    ASSERT_EQ(all.size(), 1u + 2 * 11520);
    for (std::size_t n = 1; n <= all.size(); ++n) {
        const bool check = n > 2 && (n - 2) % 11520 == 0;
        if (check) {
            EXPECT_EQ(static_cast<std::uint8_t>(all[n - 1]), 255) << "byte " << n;
        }
    }
    // Only a blank stops it; the box then answers again.
    EXPECT_EQ(box.Receive("v", Time(2s)), "");
    box.Receive(" ", Time(2s));
    EXPECT_FALSE(box.HS_Streaming());
    EXPECT_EQ(box.Tick(Time(3s)), "");
    EXPECT_EQ(box.Receive("v", Time(3s)).substr(0, 1), "v");
}

TEST(HsStream, TheRateIsATenthOfTheLinesSpeed) {
    Box box(Box_Config{}, Box_Faults{});
    box.Set_Line_Baud(625000);
    box.Receive("d", Time{});
    EXPECT_EQ(box.Tick(Time(100ms)).size(), 6250u);
    // The next bytes are due within a few milliseconds, not a sample at a time.
    EXPECT_LE(box.Next_Deadline(), Time(103ms));
}

TEST(HsStream, FaultsSpoilACheckByteOrLeaveAGap) {
    Box_Faults faults;
    faults.hs_bad_check = 2;
    Box bad(Box_Config{}, faults);
    bad.Receive("d", Time{});
    const std::string out = "d" + bad.Tick(Time(4s));
    EXPECT_EQ(static_cast<std::uint8_t>(out[11521]), 255);
    EXPECT_EQ(static_cast<std::uint8_t>(out[23041]), 254);
    EXPECT_EQ(static_cast<std::uint8_t>(out[34561]), 255);

    Box_Faults gap_faults;
    gap_faults.hs_gap_at = 1000;
    Box gap(Box_Config{}, gap_faults);
    gap.Receive("d", Time{});
    EXPECT_EQ(gap.Tick(Time(1s)).size(), 999u); // samples 1 .. 999 after the echo, then quiet
    EXPECT_EQ(gap.Tick(Time(500ms)).size(), 0u);
    // Half a second of samples never comes; the rest keeps its time and its check bytes.
    gap.Tick(Time(2s));
    EXPECT_EQ(gap.HS_Bytes_Sent(), 1 + 2 * 11520 - 5760);
}

} // namespace
} // namespace boxsim
