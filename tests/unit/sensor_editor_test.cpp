// The sensor viewer's logic and the throttle calibration, without a window and without time:
// the calibration's ticks are called by hand, its log is a flag and a number.

#include "sensors/sensor_editor.h"
#include "sensors/tps_calibration.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

using test::Read_File;
using test::Write_File;

constexpr const char* Three_Sensors = "an_sel1=1\r\n"
                                      "Sens_Def=MAP 2.5 bar\tLinear\t0.01\t0\t0\t255\tbar\t2\tbin\t\r\n"
                                      "Sens_Def=MAP\tLinear\t0.02\t0\t0\t255\tbar\t2\tbin\t\r\n"
                                      "Sens_Def=TPS\tLinear\t0.4\t0\t0\t255\t%\t0\tbin\t\r\n"
                                      "\r\n"
                                      "Engine=1\r\n";

class Editor : public ::testing::Test {
protected:
    void SetUp() override {
        Write_File(dir.File("q.ini"), Three_Sensors);
        Proc_Guard guard(log, "Init ini file");
        Load_Sensor_Definitions(sensors, ini, guard);
        hooks.Sensors_Changed = [this] { ++refreshed; };
        hooks.Save_Log_Sensor = [this](const Log_Sensor_Row& row) {
            return Store_Log_Sensor(log_rows, log_count, row);
        };
    }
    int Save() {
        Sensor_Save_Context ctx{e, sensors, image, ini, texts, log, dialogs};
        return cmd_SaveSensor(ctx, hooks);
    }

    test::Temp_Dir dir;
    Ini_File ini{dir.File("q.ini"), dir.File("QXS.new")};
    Debug_Log log;
    Form_Texts texts;
    Settings_Image image;
    Sensor_State sensors;
    test::Scripted_Dialogs dialogs;
    Sensor_Editor e;
    Sensor_Save_Hooks hooks;
    std::vector<Log_Sensor_Row> log_rows = std::vector<Log_Sensor_Row>(Log_Sensor_Rows);
    int log_count = 0;
    int refreshed = 0;
};

TEST_F(Editor, SavingUnderAnExistingNameReplacesItsLineAndEveryOtherSensorKeepsItsNumber) {
    e.txt_SensorName = "MAP";
    e.txt_SensorGain = "0,03";
    e.txt_SensorUnit = "bar";
    EXPECT_EQ(Save(), 2);
    const std::string text = Read_File(dir.File("q.ini"));
    // "MAP 2.5 bar" holds the name too, and stays as it was.
    EXPECT_NE(text.find("Sens_Def=MAP 2.5 bar\tLinear\t0.01\t"), std::string::npos);
    EXPECT_NE(text.find("Sens_Def=MAP\tLinear\t0.03\t0\t0\t255\tbar\t2\tbin\t\r\nSens_Def=TPS"),
              std::string::npos);
    EXPECT_EQ(sensors.table.Sens_Count, 4);
    EXPECT_EQ(sensors.table.Name(1), "MAP 2.5 bar");
    EXPECT_EQ(sensors.table.Name(3), "TPS");
    EXPECT_EQ(sensors.table.Sens_Point_Tab[2][2], 0.24);
    EXPECT_EQ(refreshed, 1);

    // A new name goes after the last entry, before the blank line that closes the list.
    e.txt_SensorName = "Oil\tpressure;";
    EXPECT_EQ(Save(), 4);
    EXPECT_NE(Read_File(dir.File("q.ini")).find("Sens_Def=Oil pressure\tLinear"), std::string::npos);
    EXPECT_NE(Read_File(dir.File("q.ini")).find("\t\r\n\r\nEngine=1"), std::string::npos);
}

TEST_F(Editor, A2cSensorWithBothBoxesTickedIsALogSensorOnly) {
    e.Sensor_Type = Sensor_Kind::Linear_2C;
    e.txt_SensorName = "Knock retard";
    e.txt_SensorGain = "0.5";
    e.chk_Tuning = true;
    e.chk_Log = true;
    const std::string before = Read_File(dir.File("q.ini"));
    EXPECT_EQ(Save(), -1);
    EXPECT_EQ(dialogs.informed, std::vector<std::string>{No_2c_Tuning_Text});
    EXPECT_EQ(Read_File(dir.File("q.ini")), before);
    ASSERT_EQ(log_count, 1);
    EXPECT_EQ(log_rows[0][0], "Knock retard");
    EXPECT_EQ(log_rows[0][1], "Linear2c");
    EXPECT_EQ(log_rows[0][2], "0.5");

    // The same name again replaces its row; a full table says so.
    e.txt_SensorGain = "0.25";
    e.chk_Tuning = false;
    Save();
    EXPECT_EQ(log_count, 1);
    EXPECT_EQ(log_rows[0][2], "0.25");
    log_count = Log_Sensor_Rows;
    e.txt_SensorName = "One more";
    Save();
    EXPECT_EQ(dialogs.informed.back(), Log_Sensors_Full_Text);
}

TEST_F(Editor, ATableSensorIsStoredAsItsShownPointsAndReadsBackTheSame) {
    e.Sensor_Type = Sensor_Kind::Table;
    e.txt_SensorName = "NTC";
    e.txt_SensorUnit = "C";
    e.txt_SensorDecimals = "1";
    for (int i = 1; i <= Sensor_Points; ++i)
        Set_Point_Text(e, i, std::to_string(150 - 5 * i) + ",25");
    EXPECT_EQ(Grid_Out_Text(e, 1), "145.2"); // shown, and so stored, in one decimal
    EXPECT_EQ(Save(), 4);
    EXPECT_EQ(sensors.table.Type(4), "Tab");
    EXPECT_EQ(sensors.table.Unit(4), "C");
    EXPECT_EQ(sensors.table.Sens_Point_Tab[4][1], 145.2);
    EXPECT_EQ(sensors.table.Sens_Point_Tab[4][33], -15.2);
    Sensor_Editor viewed;
    View_Tuning_Sensor(viewed, sensors.table, 4);
    EXPECT_EQ(Tuning_Sensor_Line(viewed), Tuning_Sensor_Line(e));
}

TEST_F(Editor, AnUnnamedSensorIsNotSaved) {
    e.txt_SensorName = "  ";
    EXPECT_EQ(Save(), -1);
    EXPECT_EQ(dialogs.informed, std::vector<std::string>{No_Sensor_Name_Text});
    EXPECT_EQ(sensors.table.Sens_Count, 4);
}

TEST(SensorGrid, LinearPointsFollowTheFieldsAndAreClampedToTheRawRange) {
    Sensor_Editor e;
    e.txt_SensorGain = "0,5";
    e.txt_SensorOffset = "-10";
    e.txt_SensorMin = "40";
    e.txt_SensorMax = "200";
    e.txt_SensorDecimals = "1";
    Update_Grid(e);
    EXPECT_EQ(e.points[1], 10);  // raw 0 taken as 40
    EXPECT_EQ(e.points[10], 26); // raw 72
    EXPECT_EQ(e.points[33], 90); // raw 256 taken as 200
    EXPECT_EQ(Grid_Heading(e, 2), "In [V]");
    EXPECT_EQ(Grid_In_Text(e, 33), "5.02");
    e.in_display = In_Display::Percent;
    EXPECT_EQ(Grid_In_Text(e, 2), "03.1");
    e.in_display = In_Display::Raw;
    EXPECT_EQ(Grid_In_Text(e, 2), "8");
    EXPECT_EQ(Grid_Heading(e, 3), "Out");

    // Raw 128 and up count below zero on a 2C sensor.
    e.Sensor_Type = Sensor_Kind::Linear_2C;
    e.txt_SensorMin = "0";
    e.txt_SensorMax = "255";
    e.txt_SensorOffset = "0";
    Update_Grid(e);
    EXPECT_EQ(e.points[16], 60);   // raw 120
    EXPECT_EQ(e.points[17], -64);  // raw 128
    EXPECT_EQ(e.points[33], -0.5); // raw 255
}

TEST(SensorGrid, TheToolsWorkOnTheSelectedPointsInEitherOrder) {
    Sensor_Editor e;
    e.Sensor_Type = Sensor_Kind::Table;
    e.txt_SensorDecimals = "0";
    for (int i = 1; i <= Sensor_Points; ++i)
        e.points[static_cast<std::size_t>(i)] = 10;
    steep(e, 7, 3);
    EXPECT_EQ(e.points[2], 10);
    EXPECT_EQ(e.points[3], 10);
    EXPECT_EQ(e.points[7], 14);
    flat(e, 3, 7);
    EXPECT_EQ(e.points[7], 10);
    plus(e, 33, 40); // past the last point: only 33
    EXPECT_EQ(e.points[33], 11);
    minus(e, 1, 1);
    EXPECT_EQ(e.points[1], 9);
    e.scale_table_text = "100";
    auto before = e.points;
    scale_table(e, 1, 33);
    EXPECT_EQ(e.points, before);
    e.scale_table_text = "150";
    scale_table(e, 2, 2);
    EXPECT_EQ(e.points[2], 15);
    e.set_table_text = "-3,6";
    set_table(e, 4, 5);
    EXPECT_EQ(e.points[4], -4); // in the sensor's decimals
}

TEST(SensorTester, ForwardFromVoltsAndBackToVolts) {
    Sensor_Table table;
    Reset_Sensor_Table(table);
    Debug_Log log;
    Proc_Guard guard(log, "test");
    Add_Sensor_Definition(table, "TPS\tLinear\t0.4\t0\t0\t255\t%\t1\tbin\t", guard);
    Add_Sensor_Definition(table, "Zero\tLinear\t0\t0\t0\t255\t%\t1\tbin\t", guard);
    Sensor_Editor e;
    e.Text2 = "2,5";
    cmd_Frw_Calc(e, table, 1);
    EXPECT_EQ(e.Text1, "51.00");
    e.Text1 = "51";
    cmd_Rev_Calc(e, table, 1);
    EXPECT_EQ(e.Text2, "2.51");
    cmd_Frw_Calc(e, table, 3);
    EXPECT_EQ(e.Text1, "");
    EXPECT_THROW(cmd_Rev_Calc(e, table, 2), Run_Error);
}

TEST(TwoPointSensor, MadeThroughItsPointsAndClampedBetweenThem) {
    Sensor_Editor e;
    e.txt_Create_Sens = {"4,51", "0", "0.59", "100"}; // a throttle wired the other way round
    ASSERT_TRUE(cmd_EditSensor(e));
    EXPECT_EQ(e.txt_SensorGain, "-0.5");
    EXPECT_EQ(e.txt_SensorOffset, "115");
    EXPECT_EQ(e.txt_SensorMin, "30");
    EXPECT_EQ(e.txt_SensorMax, "230");
    EXPECT_EQ(e.points[1], 100);
    e.txt_Create_Sens = {"1", "0", "1.005", "100"}; // both raw 51
    e.txt_SensorGain = "kept";
    EXPECT_FALSE(cmd_EditSensor(e));
    EXPECT_EQ(e.txt_SensorGain, "kept");
}

// --- the calibration ---------------------------------------------------------------------------

class Calibration : public ::testing::Test {
protected:
    void SetUp() override {
        hooks.Start_Logging = [this] { running = can_start; };
        hooks.Logging_Running = [this] { return running; };
        hooks.Live_Raw = [this] { return raw; };
        hooks.Save_Sensor = [this] {
            saved = e;
            return 24;
        };
        hooks.Select_Input_2 = [this](int s) { input_2 = s; };
        hooks.Throttle_Load_Steps = [this](int lo, int hi) { steps = {lo, hi}; };
    }
    void Tick() { TPS_Timer_Timer(c, e, dialogs, hooks); }

    TPS_Calibration c;
    Sensor_Editor e;
    test::Scripted_Dialogs dialogs;
    TPS_Hooks hooks;
    bool can_start = true;
    bool running = false;
    std::optional<int> raw;
    std::optional<Sensor_Editor> saved;
    int input_2 = -1;
    std::pair<int, int> steps{-1, -1};
};

TEST_F(Calibration, ReleasedAndFullThrottleBecomeASensorOnInputTwo) {
    e.chk_Tuning = false;
    Calibrate_TPS_sens_Click(c, hooks);
    ASSERT_TRUE(c.TPS_Timer_Enabled);
    Tick();
    EXPECT_EQ(dialogs.informed, std::vector<std::string>{TPS_Release_Text});
    Tick(); // no row of the log yet: the next tick tries again
    EXPECT_EQ(c.TPS_Calib_State, 2);
    raw = 30;
    Tick();
    EXPECT_EQ(dialogs.informed.back(), "Min TPS: 0.59V\r\nPress full throttle");
    EXPECT_EQ(e.txt_Create_Sens[1], "0");
    raw = 230;
    Tick();
    EXPECT_EQ(dialogs.asked.back(), "Max TPS: 4.51V\r\nDo you want to save the new sensor definition");
    EXPECT_FALSE(c.TPS_Timer_Enabled);
    EXPECT_EQ(c.TPS_Calib_State, 0);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->txt_SensorName, User_Throttle_Name);
    EXPECT_EQ(Tuning_Sensor_Line(*saved), "UserDef_Throttle\tLinear\t0.5\t-15\t30\t230\t%\t0\tbin\t");
    EXPECT_TRUE(saved->chk_Tuning);
    EXPECT_EQ(input_2, 24);
    EXPECT_EQ(steps, std::make_pair(30, 230));
}

TEST_F(Calibration, IdenticalReadingsOrANoSaveNothing) {
    Calibrate_TPS_sens_Click(c, hooks);
    raw = 128;
    Tick();
    Tick();
    Tick(); // the pedal did not move
    EXPECT_EQ(dialogs.informed.back(), TPS_Identical_Text);
    EXPECT_FALSE(saved);

    dialogs.answers.push_back(Answer::No);
    Calibrate_TPS_sens_Click(c, hooks);
    Tick();
    Tick();
    raw = 200;
    Tick();
    EXPECT_EQ(dialogs.asked.size(), 1u);
    EXPECT_FALSE(saved);
    EXPECT_EQ(steps.first, -1);
}

TEST_F(Calibration, ALogThatWillNotStartDoesNothingAndOneThatStopsEndsIt) {
    can_start = false;
    Calibrate_TPS_sens_Click(c, hooks);
    EXPECT_FALSE(c.TPS_Timer_Enabled);
    EXPECT_EQ(c.TPS_Calib_State, 0);
    Tick();
    EXPECT_TRUE(dialogs.informed.empty());

    can_start = true;
    Calibrate_TPS_sens_Click(c, hooks);
    Tick();
    running = false;
    Tick();
    EXPECT_EQ(dialogs.warned, std::vector<std::string>{TPS_No_Log_Text}); // with the stop sign
    EXPECT_EQ(c.TPS_Calib_State, 0);
    EXPECT_FALSE(c.TPS_Timer_Enabled);
}

// A message box runs the event loop, and the timer fires again underneath it.
class Reentrant_Dialogs final : public User_Dialogs {
public:
    std::vector<std::string> informed;
    std::function<void()> during;
    void Inform(const std::string& text) override {
        informed.push_back(text);
        if (during) during();
    }
    Answer Ask_Ok_Cancel(const std::string&) override { return Answer::Ok; }
    Answer Ask_Yes_No(const std::string&) override { return Answer::Yes; }
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup&) override { return std::nullopt; }
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup&) override { return std::nullopt; }
};

TEST_F(Calibration, ATickWhileAMessageIsOpenDoesNothing) {
    Reentrant_Dialogs reentrant;
    reentrant.during = [&] { TPS_Timer_Timer(c, e, reentrant, hooks); };
    raw = 40;
    Calibrate_TPS_sens_Click(c, hooks);
    TPS_Timer_Timer(c, e, reentrant, hooks);
    EXPECT_EQ(c.TPS_Calib_State, 2);
    EXPECT_EQ(reentrant.informed.size(), 1u);
}

} // namespace
} // namespace quorlen
