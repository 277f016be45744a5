// The crank viewer's words and numbers: the wheel of a layout of the shipped catalogue, and
// what a capture of the simulator's wheel says of it, with the warnings a tuner must see.

#include "core/ini_file.h"
#include "hs_stream.h"
#include "hslog/crank_view.h"

#include <gtest/gtest.h>

#include <numeric>

namespace quorlen {
namespace {

class CrankView : public ::testing::Test {
protected:
    CrankView() {
        const Ini_File ini(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini", "");
        Load_Engine_Config_Tab(tab, ini);
    }

    // A capture of the simulator's engine: `wheel` at `rpm` for `seconds`.
    static Osc_Trace Capture(const std::string& wheel, double rpm, double seconds, int cam_teeth = 1) {
        boxsim::HS_Plan plan;
        plan.wheel = boxsim::Parse_Wheel(wheel);
        plan.rpm = rpm;
        plan.cam_teeth = cam_teeth;
        plan.ign_channels = {'A', 'B', 'A', 'B'};
        plan.fuel_channels = {'A', 'B', 'A', 'B'};
        plan.tdc1 = 4 * plan.wheel.Tooth_Degrees() + 51;
        Osc_Trace t;
        t.sample_rate = 62500;
        for (long i = 0; i < static_cast<long>(seconds * t.sample_rate); ++i)
            t.samples.push_back(plan.Sample_At(static_cast<double>(i) / t.sample_rate));
        if (cam_teeth == 0)
            for (auto& s : t.samples)
                s = static_cast<std::uint8_t>(s & ~16);
        return t;
    }

    Engine_Config_Table tab;
};

TEST_F(CrankView, TheLayoutsWheelWithTheMarkAndTopDeadCentre) {
    const Wheel_Layout w = Wheel_Layout_For(tab, 0, 4);
    ASSERT_TRUE(w.known);
    EXPECT_EQ(w.positions, 36);
    EXPECT_EQ(w.Teeth(), 35);
    EXPECT_FALSE(w.present[35]);
    EXPECT_DOUBLE_EQ(w.mark_angle, 40);
    EXPECT_DOUBLE_EQ(w.tdc_angle, 91);
    EXPECT_EQ(w.cam_teeth, 0);
    EXPECT_EQ(w.name.rfind("1. EX: Generic 4 cyl", 0), 0u);

    const Wheel_Layout sixty = Wheel_Layout_For(tab, 6, 20); // 60-2, cam 1 tooth
    EXPECT_EQ(sixty.Teeth(), 58);
    EXPECT_EQ(sixty.cam_teeth, 1);
    EXPECT_DOUBLE_EQ(sixty.tdc_angle, 171);

    const Wheel_Layout subaru = Wheel_Layout_For(tab, 35, 0); // 36-2-2-2
    EXPECT_EQ(subaru.Teeth(), 30);
    EXPECT_EQ(subaru.notes.back(), "The 3 gaps are drawn evenly spaced.");
    const Wheel_Layout dist = Wheel_Layout_For(tab, 17, 0); // 24 teeth in the distributor, 30 deg
    EXPECT_TRUE(dist.on_distributor);
    EXPECT_EQ(dist.positions, 12);
    EXPECT_EQ(dist.Missing(), 0);

    // A byte past the rows: the list's item and nothing to draw.
    const Wheel_Layout none = Wheel_Layout_For(tab, 255, 4);
    EXPECT_FALSE(none.known);
    EXPECT_EQ(none.name, "256. Not supported ");
    // The mark set beyond two turns is named.
    EXPECT_NE(Wheel_Layout_For(tab, 0, 80).notes.back().find("more than two turns"), std::string::npos);
}

TEST_F(CrankView, ACaptureOfTheRightWheelAgreesWithTheLayout) {
    const Osc_Trace t = Capture("36-1", 3000, 1.0);
    const Crank_Measure m = Measure_Crank(t);
    ASSERT_EQ(m.problem, "");
    EXPECT_GE(m.turns, 48);
    EXPECT_EQ(m.teeth_min, 35);
    EXPECT_EQ(m.teeth_max, 35);
    EXPECT_NEAR(m.gap_ratio, 2.0, 0.1);
    EXPECT_EQ(m.missing, 1);
    EXPECT_EQ(m.positions, 36);
    EXPECT_NEAR(m.rpm, 3000, 10);
    EXPECT_NEAR(m.cam_per_two_turns, 1.0, 0.05);
    ASSERT_TRUE(m.cam_angle);
    EXPECT_NEAR(*m.cam_angle, 31, 2); // 60 deg before top dead centre at 91

    const Crank_Report r = Crank_View_Report(Wheel_Layout_For(tab, 2, 4), &m, "wheel.qxo"); // 36-1 with cam
    EXPECT_TRUE(r.warnings.empty()) << r.warnings.front();
    const auto line = [&](const std::string& head) {
        for (const std::string& l : r.lines)
            if (l.rfind(head, 0) == 0) return l;
        return std::string();
    };
    EXPECT_NE(line("Measured: ").find("35.0 teeth a turn"), std::string::npos) << line("Measured: ");
    EXPECT_NE(line("Measured: ").find("a 36-1 wheel"), std::string::npos);
    EXPECT_NE(
        line("Cam: ").find("1.0 pulses in two turns, the first 31 deg after the missing pulse (tooth 3)"),
        std::string::npos)
        << line("Cam: ");
}

TEST_F(CrankView, AWrongWheelOrCamIsAWarning) {
    const Crank_Measure sixty = Measure_Crank(Capture("60-2", 1000, 1.0));
    EXPECT_EQ(sixty.missing, 2);
    EXPECT_EQ(sixty.positions, 60);
    const Crank_Report r = Crank_View_Report(Wheel_Layout_For(tab, 0, 4), &sixty, "x.qxo"); // 36-1, no cam
    ASSERT_EQ(r.warnings.size(), 2u);
    EXPECT_EQ(r.warnings[0], "The capture shows a 60-2 wheel; the layout has 36-1 (Crank 36-1).");
    EXPECT_EQ(r.warnings[1], "The capture has cam pulses; the layout uses no cam sensor (No cam).");

    const Crank_Measure no_cam = Measure_Crank(Capture("36-1", 600, 1.0, 0));
    const Crank_Report missing_cam = Crank_View_Report(Wheel_Layout_For(tab, 2, 4), &no_cam, "x.qxo");
    ASSERT_EQ(missing_cam.warnings.size(), 1u);
    EXPECT_EQ(missing_cam.warnings[0], "No cam pulses in the capture; the layout expects Cam 1 tooth.");
}

TEST_F(CrankView, ACaptureWithoutAWheelSaysWhy) {
    Osc_Trace flat;
    flat.samples.assign(1000, 0);
    EXPECT_EQ(Measure_Crank(flat).problem, "The capture has 0 crank pulses: too few to measure a wheel.");
    const Crank_Measure even = Measure_Crank(Capture("36", 3000, 0.5));
    EXPECT_NE(even.problem.find("No gap repeats"), std::string::npos);
    const Crank_Report r = Crank_View_Report(Wheel_Layout_For(tab, 0, 4), &even, "even.qxo");
    EXPECT_EQ(r.warnings, std::vector<std::string>{even.problem});
    const Crank_Report none = Crank_View_Report(Wheel_Layout_For(tab, 0, 4), nullptr, "");
    EXPECT_EQ(none.lines.back().rfind("No high-speed capture is open", 0), 0u);
}

} // namespace
} // namespace quorlen
