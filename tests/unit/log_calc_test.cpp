// Rows into numbers and the signals the box does not send. The figures are worked by hand
// from the formulas, so a change of rounding or of a column shows.

#include "logging/log_calc.h"
#include "support/log_fixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace quorlen {
namespace {

// A stand-alone row: the RPM field, then 41 fields of three characters.
std::string Row(const std::string& rpm, const std::map<int, std::string>& fields) {
    std::string row = rpm + " ";
    for (int c = 2; c <= 42; ++c) {
        auto it = fields.find(c);
        row += (it == fields.end() ? std::string("000") : it->second) + " ";
    }
    return row;
}

class LogCalc : public test::Log_Fixture, public ::testing::Test {
protected:
    LogCalc() {
        Load_Defaults(false);
        state->Log_Row_Columns = 42;
    }
    // Signal c-1 reads its column with sensor `def` (a Log_Sens_Def value).
    void Sensor(int column, const std::string& def) {
        const int row = state->Log_Sens_Count++;
        state->Log_Sens_Tab[static_cast<std::size_t>(row)] = Parse_Log_Sens_Def(def);
        state->Log_Signal_Tab[static_cast<std::size_t>(column - 1)].sensor = row;
    }
    void No_Sensor(int column) { state->Log_Signal_Tab[static_cast<std::size_t>(column - 1)].sensor = -1; }
    void Calc(const std::string& row, int r) {
        auto c = Ctx();
        Calculate_Data(c, row, r, state->Log_Data);
    }
    void Prepare() {
        Update_Log_Sens_Tab(*state);
        Calc("", 0);
    }
    double At(int r, int c) { return state->Log_Data(r, c); }
    // Rows 1..n of RPM (and RPM2 as the extended calculation would smooth it with n = 0).
    void Rpm_Rows(const std::vector<double>& rpm) {
        for (std::size_t i = 0; i < rpm.size(); ++i)
            state->Log_Data(static_cast<int>(i + 1), 1) = rpm[i];
    }
    void Extended(int rows) {
        auto c = Ctx();
        Calculate_Extended_Signals(c, state->Log_Data, rows);
    }
};

TEST_F(LogCalc, EveryKindOfSensorInItsColumns) {
    Sensor(2, "Ign\tLinear\t0.2\t-25.4\t0\t255\tDeg\t1\t");
    Sensor(3, "Corr\tLinear2c\t0.2\t0\t0\t255\tDeg\t1\t");
    Sensor(
        14,
        "MPX_Tab\tTab\t0\t0\t0.24\t0.32\t0.4\t0.48\t0.55\t0.63\t0.71\t0.79\t0.87\t0.94\t1.02\t1.1\t1.18\t1.26"
        "\t1.34\t1.41\t1.49\t1.57\t1.65\t1.73\t1.8\t1.88\t1.96\t2.04\t2.12\t2.19\t2.27\t2.35\t2.43\t2.5\t2.5"
        "\tbar\t2\t");
    Sensor(12, "Raw\tLinear\t1\t0\t0\t255\tAD\t0\t");
    Sensor(40, "S1\tStatus1\t1\t0\t0\t255\tbit\t0\t");
    Sensor(41, "S2\tStatus2\t1\t0\t0\t255\tbit\t0\t");
    Sensor(42, "S3\tStatus3\t1\t0\t0\t255\tbit\t0\t");
    No_Sensor(5);
    Prepare();
    EXPECT_EQ(state->Log_Data.Name(2), "Ign");

    Calc(Row("$3.450",
             {{2, "202"}, {3, "248"}, {14, "100"}, {12, "077"}, {40, "h15"}, {41, "h82"}, {42, "h01"}}),
         1);
    EXPECT_DOUBLE_EQ(At(1, 0), 0);
    EXPECT_DOUBLE_EQ(At(1, 1), 3450);
    EXPECT_DOUBLE_EQ(At(1, 2), 15);
    EXPECT_DOUBLE_EQ(At(1, 3), -1.6);
    EXPECT_DOUBLE_EQ(At(1, 14), 1.06);
    EXPECT_DOUBLE_EQ(At(1, 48), 77); // raw copies of the first three inputs
    EXPECT_DOUBLE_EQ(At(1, 50), 100);
    EXPECT_TRUE(Log_Array::Empty(At(1, 5)));
    // The status bits lie on three separate levels.
    const double s1[] = {0.1, 0, 0.3, 0, 0.5, 0, 0, 0};
    for (int k = 0; k < 8; ++k)
        EXPECT_DOUBLE_EQ(At(1, 51 + k), s1[k]) << k;
    EXPECT_DOUBLE_EQ(At(1, 59 + 1), 1.0);
    EXPECT_DOUBLE_EQ(At(1, 59 + 7), 1.6);
    EXPECT_DOUBLE_EQ(At(1, 67), 1.9);

    // "A.0000" is ten thousand; a row cut short reads blanks, which are 0: offset only.
    Calc("A.0000 ", 2);
    EXPECT_DOUBLE_EQ(At(2, 1), 10000);
    EXPECT_DOUBLE_EQ(At(2, 2), -25.4);
    EXPECT_DOUBLE_EQ(At(2, 0), 0.05);
    // A status byte written as one hex letter still reads as that byte.
    std::string shifted = Row("$1.000", {{40, "hA "}, {41, "h82"}});
    shifted.erase(shifted.find("hA ") + 2, 1);
    Calc(shifted, 3);
    EXPECT_DOUBLE_EQ(At(3, 51 + 1), 0.2);
    EXPECT_DOUBLE_EQ(At(3, 51 + 3), 0.4);
}

TEST_F(LogCalc, LivePowerOnlyWhileLoggingAndWithinItsLimits) {
    auto& s = state->setup;
    s.txt_Gearing[1] = "30";
    s.Gear_option = 1;
    s.txt_Weight = "1000";
    s.txt_Min_Hp = "20";
    s.txt_Max_Hp = "1000";
    s.txt_AirResistance = "";
    s.txt_Transloss_0k = "0";
    s.txt_Transloss_6k = "0";
    Prepare();
    const auto rpm_row = [](double rpm) {
        char text[16];
        std::snprintf(text, sizeof text, "$%5.3f", rpm / 1000);
        return Row(text, {});
    };
    for (int r = 1; r <= 6; ++r)
        Calc(rpm_row(3000 + 100.0 * r), r);
    EXPECT_TRUE(Log_Array::Empty(At(6, 41))); // not while reading a file

    state->capture.Logging_Running = true;
    for (int r = 1; r <= 6; ++r)
        Calc(rpm_row(3000 + 100.0 * r), r);
    // v = rpm * 30 / 3.6 / 1000 m/s; P = 500 * (v1^2 - v0^2) * 20 / 736 / 3
    const double v0 = 3300 * 30 / 3.6 / 1000, v1 = 3600 * 30 / 3.6 / 1000;
    EXPECT_DOUBLE_EQ(At(6, 41), std::round(500 * (v1 * v1 - v0 * v0) * 20 / 736 / 3));
    EXPECT_TRUE(Log_Array::Empty(At(3, 41))); // the first three rows have no row three back

    s.txt_Max_Hp = "100";
    Prepare();
    Calc(rpm_row(3600), 6);
    EXPECT_DOUBLE_EQ(At(6, 41), 100);
    // Constant speed and no drag: P = 0, below the floor.
    for (int r = 1; r <= 6; ++r)
        Calc(rpm_row(3000), r);
    EXPECT_DOUBLE_EQ(At(6, 41), 20);
    // Exactly on a limit the cell keeps what it had.
    s.txt_Min_Hp = "0";
    Prepare();
    state->Log_Data(6, 41) = 77;
    Calc(rpm_row(3000), 6);
    EXPECT_DOUBLE_EQ(At(6, 41), 77);
}

TEST_F(LogCalc, ExtendedSignalsFromTheWholeLog) {
    auto& s = state->setup;
    s.txt_Gearing[3] = "20";
    s.Gear_option = 3;
    s.txt_Weight = "1000";
    s.txt_Min_Hp = "0";
    s.txt_Max_Hp = "900";
    s.txt_AirResistance = "0.3";
    s.txt_FrontalArea = "2";
    s.txt_AirDensity = "1.2";
    s.txt_Transloss_0k = "0";
    s.txt_Transloss_6k = "0";
    s.txt_FIR = {"0", "0", "", "", ""};
    s.txt_FuelInjectorSize = "2000";
    Prepare();
    std::vector<double> rpm;
    for (int r = 1; r <= 10; ++r)
        rpm.push_back(2000 + 300.0 * r);
    Rpm_Rows(rpm);
    for (int r = 1; r <= 10; ++r)
        state->Log_Data(r, 4) = 4; // fuel, ms
    Extended(10);

    EXPECT_DOUBLE_EQ(At(5, 40), rpm[4]);             // RPM smoothed, n = 0
    EXPECT_DOUBLE_EQ(At(5, 43), rpm[4] * 20 / 1000); // speed
    const double v0 = rpm[1] * 20 / 3.6 / 1000, v1 = rpm[4] * 20 / 3.6 / 1000;
    EXPECT_DOUBLE_EQ(At(5, 44), std::round((v1 - v0) / 3 / 0.05 * 10) / 10);
    const double air = 1.2 * 2 * 0.3 / 2;
    const double power = std::round(500 * (v1 * v1 - v0 * v0) * 20 / 736 / 3 + v0 * v0 * v0 * air / 736);
    EXPECT_DOUBLE_EQ(At(5, 41), power);
    EXPECT_DOUBLE_EQ(At(2, 41), 0); // no row three back
    EXPECT_DOUBLE_EQ(At(5, 42), std::round(power / rpm[4] * 1000 / 142 * 1000));
    const double dc = std::round(4 * rpm[4] / 120000 * 100 * 10) / 10;
    EXPECT_DOUBLE_EQ(At(5, 45), dc);
    const double litres_a_minute = std::round(dc / 100 * 2000 / 1000 * 1000) / 1000;
    EXPECT_DOUBLE_EQ(At(5, 47), std::round(litres_a_minute / At(5, 43) * 60 * 10 * 100) / 100);
    EXPECT_DOUBLE_EQ(At(5, 46), 0);            // the enrichment delta writes last in the shared column
    EXPECT_TRUE(Log_Array::Empty(At(10, 45))); // the duty cycle stops a row short

    // No drag factor at all: the air term falls away.
    s.txt_AirResistance = "";
    Extended(10);
    EXPECT_DOUBLE_EQ(At(5, 41), std::round(500 * (v1 * v1 - v0 * v0) * 20 / 736 / 3));
    // A gearing of 0: no speed, no power above the floor.
    s.txt_Gearing[3] = "0";
    s.txt_Min_Hp = "20";
    Extended(10);
    EXPECT_DOUBLE_EQ(At(5, 43), 0);
    EXPECT_DOUBLE_EQ(At(5, 41), 20);
}

TEST_F(LogCalc, PowerSmoothingNeedsALogLongerThanItsWindow) {
    auto& s = state->setup;
    s.txt_Gearing[1] = "30";
    s.txt_Min_Hp = "-100000";
    s.txt_Max_Hp = "100000";
    s.txt_AirResistance = "";
    s.txt_FIR = {"0", "5", "", "", ""};
    Prepare();
    std::vector<double> rpm;
    for (int r = 1; r <= 11; ++r)
        rpm.push_back(2000 + 50.0 * r * r);
    Rpm_Rows(rpm);
    s.txt_FIR[1] = "0";
    Extended(11);
    std::vector<double> unsmoothed;
    for (int r = 1; r <= 11; ++r)
        unsmoothed.push_back(At(r, 41));
    s.txt_FIR[1] = "5";
    Extended(11); // 11 rows are not more than 2 * 5 + 1
    for (int r = 1; r <= 11; ++r)
        EXPECT_DOUBLE_EQ(At(r, 41), unsmoothed[static_cast<std::size_t>(r - 1)]) << r;
    s.txt_FIR[1] = "1";
    Extended(11);
    EXPECT_DOUBLE_EQ(At(8, 41), std::round((unsmoothed[6] + unsmoothed[7] + unsmoothed[8]) / 3 * 100) / 100);
    EXPECT_NE(At(8, 41), unsmoothed[7]);
}

TEST_F(LogCalc, TheFourFilters) {
    const double x[] = {1000, 1000, 1000, 1090, 1090, 1210, 1210, 1210};
    for (int r = 1; r <= 8; ++r)
        state->Log_Data(r, 1) = x[r - 1];
    RPM2_Filter1(*state, state->Log_Data, 8, 1, 40);
    const double f1[] = {1000, 1030, 1060, 1090, 1150, 1210, 1210, 1210};
    for (int r = 1; r <= 8; ++r)
        EXPECT_DOUBLE_EQ(At(r, 40), f1[r - 1]) << r;

    RPM2_Filter4(state->Log_Data, 8, 2, 1, 41);
    EXPECT_DOUBLE_EQ(At(3, 41), 1000);
    EXPECT_DOUBLE_EQ(At(4, 41), 1030);
    EXPECT_DOUBLE_EQ(At(1, 41), At(3, 41));
    EXPECT_DOUBLE_EQ(At(8, 41), 1210);

    RPM2_Filter3(state->Log_Data, 8, 1, 1, 42);
    EXPECT_DOUBLE_EQ(At(4, 42), std::round((1000 + 1090 + 1090) / 3.0 * 100) / 100);
    EXPECT_DOUBLE_EQ(At(1, 42), At(2, 42));
    EXPECT_DOUBLE_EQ(At(8, 42), At(7, 42));

    state->setup.txt_FIR = {"0.5", "0.5", "", "", ""};
    RPM2_Filter2(*state, state->Log_Data, 8, 1, 43);
    EXPECT_DOUBLE_EQ(At(6, 43), (1210 + 1090) / 2.0);
    EXPECT_EQ(state->setup.txt_FIR[4], "0");
    EXPECT_TRUE(Log_Array::Empty(At(4, 43)));

    // A window from a file wider than any log does nothing, however wide: 2n + 1 must not wrap.
    for (int n : {1 << 30, 2147483647}) {
        EXPECT_NO_THROW(RPM2_Filter3(state->Log_Data, 8, n, 1, 44));
        EXPECT_NO_THROW(RPM2_Filter4(state->Log_Data, 8, n, 1, 44));
    }
    EXPECT_TRUE(Log_Array::Empty(At(1, 44)));
    EXPECT_EQ(Smoothing_Rows("2147483647"), Log_Row_Limit + 1);
    EXPECT_EQ(Smoothing_Rows("-5"), -1);
    EXPECT_EQ(Smoothing_Rows("3,7"), 3);
    EXPECT_EQ(Smoothing_Rows(""), 0);
}

TEST_F(LogCalc, GearingAndTheReadersOfTheSavedImage) {
    state->setup.txt_Speed = "135";
    state->setup.txt_RPM = "3647";
    cmd_Calc_Gearing_Click(state->setup);
    EXPECT_EQ(state->setup.txt_Gearing[1], "37.02");

    std::string dataset = "[log_dataset]\r\n";
    for (int i = 0; i < 1024; ++i)
        dataset += std::to_string(i == 1 ? 0x0E : i == 5 ? 7 : 0) + "\r\n";
    state->Log_Dataset_Text = dataset + "[end log_dataset]";
    EXPECT_EQ(Get_Ignition_mode(*state, debug), 2);
    EXPECT_EQ(Get_MasterSlave_mode(*state, debug), 3);
    EXPECT_EQ(Get_Boost_sensor(*state, debug), 9);
    std::string old = "[log_dataset]\r\n";
    for (int i = 0; i < 256; ++i)
        old += std::to_string(i == 5 ? 7 : 0) + "\r\n";
    state->Log_Dataset_Text = old + "[end log_dataset]";
    EXPECT_EQ(Get_Boost_sensor(*state, debug), 3);
    EXPECT_EQ(Get_Ignition_mode(*state, debug), 9);
}

} // namespace
} // namespace quorlen
