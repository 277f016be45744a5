// High-speed captures from the real simulator over a pseudo-terminal, in real time, through
// quorlen-cli as a tuner would take them: the sample rate of each line speed, every check
// byte in its place, the analysis of what came, and the faults of the stream.

#include "hslog/osc_file.h"
#include "support/boxsim_run.h"
#include "support/cli_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <regex>

namespace quorlen {
namespace {

using test::Read_File;
using test::Run_Cli;

double Field(const std::string& text, const std::string& label) {
    const std::regex pattern(label + ": *([0-9.]+)");
    std::smatch m;
    return std::regex_search(text, m, pattern) ? std::stod(m[1]) : -1;
}

class HsRecording : public ::testing::TestWithParam<int> {
protected:
    test::Temp_Dir dir;
};

TEST_P(HsRecording, BaudOverTenSamplesASecondWithEveryCheckByte) {
    const int baud = GetParam();
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--hs-rpm", "3000"});
    ASSERT_TRUE(box.Ready());
    const std::string file = dir.File("wheel.qxo");
    const auto r = Run_Cli(
        {"hslog", "--port", box.Link(), "--seconds", "2", "--baud", std::to_string(baud), "-o", file});
    ASSERT_EQ(r.code, 0) << r.out << r.err;
    EXPECT_NE(r.out.find(", all 255"), std::string::npos) << r.out;
    const double rate = baud / 10.0;
    EXPECT_NEAR(Field(r.out, "samples"), 2 * rate, 0.01 * 2 * rate) << r.out;
    EXPECT_EQ(Field(r.out, "rate"), rate);

    // Every check byte stands where the program looks for it: nothing lost on the way.
    const std::string text = Read_File(file);
    const auto samples = static_cast<long>(Field(r.out, "samples"));
    long checks = 0;
    for (long n = 2 + Osc_Check_Interval; n <= samples; n += Osc_Check_Interval, ++checks)
        ASSERT_EQ(text.substr(static_cast<std::size_t>(16 + (n - 1) * 5), 5), "255\r\n") << "byte " << n;
    EXPECT_GE(checks, 2 * rate / Osc_Check_Interval - 1);

    const auto a = Run_Cli({"hs-analyze", file, "--teeth", "35"});
    ASSERT_EQ(a.code, 0) << a.err;
    EXPECT_NEAR(Field(a.out, "RPM"), 3000, 30) << a.out;
    EXPECT_NEAR(Field(a.out, "CAM   pulse/rev"), 0.5, 0.02) << a.out;
    EXPECT_NEAR(Field(a.out, "IGN A pulse/rev"), 1.0, 0.02) << a.out;
    EXPECT_NEAR(Field(a.out, "IGN B pulse/rev"), 1.0, 0.02) << a.out;
    EXPECT_EQ(Field(a.out, "Launch pulse/rev"), 0) << a.out;

    const auto by_speed = Run_Cli({"hs-analyze", file, "--rpm", "3000", "--start", "2", "--stop", "2001"});
    EXPECT_NEAR(Field(by_speed.out, "Crank pulse/rev"), 35, 0.5) << by_speed.out;
}

INSTANTIATE_TEST_SUITE_P(Speeds, HsRecording, ::testing::Values(115200, 625000));

TEST(HsFaults, AWrongCheckByteEndsTheCaptureWithWhatCameBefore) {
    test::Temp_Dir dir;
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--fault", "hscheck@1"});
    ASSERT_TRUE(box.Ready());
    const std::string file = dir.File("bad.qxo");
    const auto r = Run_Cli({"hslog", "--port", box.Link(), "--seconds", "3", "-o", file});
    EXPECT_EQ(r.code, 3) << r.out << r.err;
    EXPECT_NE(r.err.find("Checksum error. Automatic stop of logging"), std::string::npos);
    EXPECT_EQ(Field(r.out, "samples"), 11521);
    std::string error;
    const auto trace = Read_Osc_File(file, error);
    ASSERT_TRUE(trace) << error;
    EXPECT_FALSE(trace->cut_off);
    EXPECT_EQ(trace->Count(), 11521);
}

TEST(HsFaults, AGapLosesTimeButNoCheckByte) {
    test::Temp_Dir dir;
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--fault", "hsgap@3000"});
    ASSERT_TRUE(box.Ready());
    const auto r = Run_Cli({"hslog", "--port", box.Link(), "--seconds", "2", "-o", dir.File("gap.qxo")});
    EXPECT_EQ(r.code, 0) << r.out << r.err;
    EXPECT_NEAR(Field(r.out, "samples"), 1.5 * 11520, 0.02 * 11520) << r.out;
}

TEST(HsFaults, APortThatIsNotThereIsSaid) {
    test::Temp_Dir dir;
    const auto r =
        Run_Cli({"hslog", "--port", dir.File("nothing"), "--seconds", "1", "-o", dir.File("x.qxo")});
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.err.find("nothing"), std::string::npos) << r.err;
    const auto bad = Run_Cli({"hslog", "--port", "x", "--seconds", "1", "--baud", "9600", "-o", "x.qxo"});
    EXPECT_EQ(bad.code, 2);
}

} // namespace
} // namespace quorlen
