// The chart rows and the analysis of a trace: the stretch's clamping, the step at 2000
// rows, peak detection, and every line of the analysis text with both references.

#include "hslog/pulse_analysis.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

Osc_Trace Trace(long count, std::uint8_t level = 0, int rate = Default_Sample_Rate) {
    Osc_Trace t;
    t.samples.assign(static_cast<std::size_t>(count), level);
    t.sample_rate = rate;
    return t;
}

// A square wave on `bit`: `high` samples set, then `low` clear, from sample `from` (from 1).
void Wave(Osc_Trace& t, int bit, long high, long low, long from = 1) {
    for (long i = from - 1; i < t.Count(); ++i)
        if ((i - (from - 1)) % (high + low) < high)
            t.samples[static_cast<std::size_t>(i)] =
                static_cast<std::uint8_t>(t.samples[static_cast<std::size_t>(i)] | 1 << bit);
}

TEST(PulseAnalysis, TheStretchIsKeptInsideTheTrace) {
    auto s = Clamp_Stretch("500", "100", 1000); // stop below start becomes the start
    EXPECT_EQ(s.first, 500);
    EXPECT_EQ(s.last, 500);
    s = Clamp_Stretch("1200", "9000", 1000);
    EXPECT_EQ(s.first, 1000);
    EXPECT_EQ(s.last, 1000);
    EXPECT_EQ(s.start_text, "1000");
    s = Clamp_Stretch("-5", "abc", 1000);
    EXPECT_EQ(s.first, 1);
    EXPECT_EQ(s.last, 1);
    s = Clamp_Stretch("10,6", "20", 1000); // a comma is a decimal mark; a tie rounds to even
    EXPECT_EQ(s.first, 11);
    s = Clamp_Stretch("1", "99999999999999999999", 1000);
    EXPECT_EQ(s.last, 1000);
    EXPECT_EQ(Clamp_Stretch("1", "10", 0).Numbers(), 0);
}

TEST(PulseAnalysis, UpTo2000SamplesAreDrawnOneByOneAndMoreTakeASteps) {
    Osc_Trace t = Trace(5000);
    Wave(t, 0, 1, 1);
    Osc_Chart c = Build_Osc_Chart(t, Stretch_Of(1, 2000, 5000), false);
    EXPECT_EQ(c.step, 1);
    ASSERT_EQ(c.rows.size(), 2000u);
    EXPECT_EQ(c.rows[0], 1); // sample 1
    EXPECT_EQ(c.rows[1], 0);
    c = Build_Osc_Chart(t, Stretch_Of(1, 2001, 5000), false);
    EXPECT_EQ(c.step, 2);
    EXPECT_EQ(c.rows.size(), 1001u);
    EXPECT_EQ(c.Row_Sample(1000), 2001);
    EXPECT_EQ(Chart_Step(4000), 2);
    EXPECT_EQ(Chart_Step(4001), 3);
    EXPECT_EQ(Sample_Time_ms(1, 11520), 0);
    EXPECT_DOUBLE_EQ(Sample_Time_ms(11521, 11520), 1000);
}

TEST(PulseAnalysis, AOneSamplePulseIn100000ShowsOnlyWithPeakDetection) {
    Osc_Trace t = Trace(100000);
    t.samples[12345] = 1 << 3; // inside a row of 50, not its first sample
    Wave(t, 0, 1000, 1000);    // a slow line that every row follows
    const Osc_Stretch all = Zoom_All(t.Count());
    const Osc_Chart plain = Build_Osc_Chart(t, all, false);
    const Osc_Chart peak = Build_Osc_Chart(t, all, true);
    ASSERT_EQ(plain.step, 50);
    long plain_rows = 0, peak_rows = 0;
    for (std::size_t k = 0; k < plain.rows.size(); ++k) {
        plain_rows += plain.rows[k] >> 3 & 1;
        peak_rows += peak.rows[k] >> 3 & 1;
        EXPECT_EQ(plain.rows[k] & 1, peak.rows[k] & 1) << "row " << k; // the slow line is drawn alike
    }
    EXPECT_EQ(plain_rows, 0);
    EXPECT_EQ(peak_rows, 1);
    EXPECT_EQ(peak.rows[12345 / 50] >> 3 & 1, 1);
    // A line held high with a one-sample drop shows the notch downwards.
    Osc_Trace high = Trace(100000, 1 << 5);
    high.samples[777] = 0;
    const Osc_Chart notch = Build_Osc_Chart(high, all, true);
    long low_rows = 0;
    for (std::uint8_t r : notch.rows)
        low_rows += (r >> 5 & 1) == 0;
    EXPECT_EQ(low_rows, 1);
}

TEST(PulseAnalysis, TheTextCountsEachLineAgainstCrankTeeth) {
    // 36-1 would be uneven; an even 10-tooth wheel, 4 samples a tooth: 40 samples a turn.
    Osc_Trace t = Trace(4000);
    Wave(t, 0, 2, 2);
    Wave(t, 1, 5, 35);  // IGN A once a turn
    Wave(t, 4, 10, 70); // CAM once in two turns
    const auto counts = Count_Level_Changes(t, Zoom_All(4000));
    EXPECT_EQ(counts[0], 1999);
    EXPECT_EQ(counts[7], 0); // a line that never changes counts 0

    const Analyze_Result r =
        Analyze_Stretch(t, Zoom_All(4000), Analyze_Reference::Crank_Pulses_Per_Rev, "10");
    EXPECT_EQ(r.fault, "");
    EXPECT_EQ(r.text, "\r\nTest results\r\n"
                      "Tot time: 0.347\r\n"
                      "Number of revs: 99.95\r\n"
                      "RPM: 17271.4\r\n" // 99.95 revs in 0.347 s
                      "-------------------------\r\n"
                      "Crank pulse/rev: 10.00\r\n"
                      "IGN A pulse/rev: 1.00\r\n"
                      "IGN B pulse/rev: 0.00\r\n"
                      "PWM   pulse/rev: 0.00\r\n"
                      "CAM   pulse/rev: 0.50\r\n"
                      "Launch pulse/rev: 0.00\r\n"
                      "IG Cut pulse/rev: 0.00\r\n"
                      "Fuel   pulse/rev: 0.00\r\n");
}

TEST(PulseAnalysis, TheTextTakesRevolutionsFromTheEngineSpeed) {
    Osc_Trace t = Trace(11520);
    Wave(t, 2, 10, 230, 11); // IGN B every 240 samples is once a turn at 2880 rpm
    const Analyze_Result r = Analyze_Stretch(t, Zoom_All(11520), Analyze_Reference::RPM, "2880");
    EXPECT_EQ(r.fault, "");
    EXPECT_NE(r.text.find("Tot time: 1.000\r\nCrank rev time: 0.021\r\nNumber of revs: 48.00\r\n"),
              std::string::npos)
        << r.text;
    EXPECT_NE(r.text.find("IGN B pulse/rev: 1.00\r\n"), std::string::npos) << r.text;
    // "1500,5" is read with the comma as its decimal mark.
    EXPECT_NE(Analyze_Stretch(t, Zoom_All(11520), Analyze_Reference::RPM, "1500,5")
                  .text.find("Number of revs: 25.01"),
              std::string::npos);
}

TEST(PulseAnalysis, NoReferenceStopsTheTextWhereTheDivisionFailed) {
    Osc_Trace t = Trace(100);
    Wave(t, 0, 5, 5);
    for (const char* text : {"", "0", "abc"}) {
        const Analyze_Result r = Analyze_Stretch(t, Zoom_All(100), Analyze_Reference::RPM, text);
        EXPECT_EQ(r.fault, "Division by zero");
        EXPECT_EQ(r.text, "\r\nTest results\r\nTot time: 0.009\r\n");
    }
    const Analyze_Result teeth =
        Analyze_Stretch(t, Zoom_All(100), Analyze_Reference::Crank_Pulses_Per_Rev, "0");
    EXPECT_EQ(teeth.fault, "Division by zero");
}

TEST(PulseAnalysis, AnEmptyChartGivesPlainZeroPulses) {
    const Osc_Trace t;
    const Analyze_Result r = Analyze_Stretch(t, Zoom_All(0), Analyze_Reference::Crank_Pulses_Per_Rev, "35");
    EXPECT_EQ(r.fault, "");
    EXPECT_EQ(r.text, "\r\nTest results\r\nTot time: 0.000\r\nNumber of revs: 0.00\r\nRPM: 0.0\r\n"
                      "-------------------------\r\n"
                      "Crank pulses: 0\r\nIGN A pulses: 0\r\nIGN B pulses: 0\r\nPWM   pulses: 0\r\n"
                      "CAM   pulses: 0\r\nLaunch pulses: 0\r\nIG Cut pulses: 0\r\nFuel   pulses: 0\r\n");
    // Without crank teeth there are no revolutions; half a pulse is a line that rose and
    // was still up at the end.
    Osc_Trace rising = Trace(10);
    rising.samples[9] = 2;
    EXPECT_NE(Analyze_Stretch(rising, Zoom_All(10), Analyze_Reference::Crank_Pulses_Per_Rev, "35")
                  .text.find("IGN A pulses: 0.5\r\n"),
              std::string::npos);
}

TEST(PulseAnalysis, TheStretchOnShowAsOneRevolution) {
    EXPECT_DOUBLE_EQ(*Stretch_RPM(Stretch_Of(1, 2304, 5000), 11520), 300);
    EXPECT_DOUBLE_EQ(*Stretch_RPM(Stretch_Of(1, 1250, 5000), 62500), 3000);
    EXPECT_FALSE(Stretch_RPM(Zoom_All(0), 11520));
}

TEST(PulseAnalysis, ZoomAndScrollStayInsideTheTrace) {
    const long n = 1000;
    Osc_Stretch s = Zoom_In(Zoom_All(n), n);
    EXPECT_EQ(s.first, 251);
    EXPECT_EQ(s.last, 750);
    s = Scroll_Right(s, n);
    EXPECT_EQ(s.first, 501);
    s = Scroll_Right(s, n);
    EXPECT_EQ(s.last, 1000);
    EXPECT_EQ(s.Numbers(), 500);
    s = Zoom_Out(s, n);
    EXPECT_EQ(s.first, 1);
    EXPECT_EQ(s.last, 1000);
    s = Scroll_Left(Stretch_Of(1, 10, n), n);
    EXPECT_EQ(s.first, 1);
    EXPECT_EQ(s.last, 10);
    s = Stretch_Of(5, 6, n);
    for (int i = 0; i < 5; ++i)
        s = Zoom_In(s, n);
    EXPECT_GE(s.Numbers(), 1);
    EXPECT_EQ(Byte_2_BitString(0x81), "10000001");
    EXPECT_EQ(Byte_2_BitString(0x06), "00000110");
}

} // namespace
} // namespace quorlen
