// The settings pages without a window: what a slider shows and writes, the rules of the teeth
// and the warnings, the sensor-bound limits, the choices' bit fields, the visibility of the
// groups, typed values, the curves, and the settings and set commands.

#include "engine/page_charts.h"
#include "engine/page_choices.h"
#include "engine/settings_pages.h"
#include "support/cli_run.h"
#include "support/file_opens.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quorlen {
namespace {

// Layout 0 semi-sequential at 10 degrees a tooth with teeth 0 and 35 forbidden; layout 1
// sequential at 6 degrees; layout 2 an empty row.
const char* const Test_Ini = "Engine_Config=Layout\tCrank\r\n"
                             "Engine_Config=0\t36-1\tc\tc\tt\tf\ti\tSemiseq\tEX: A\t-\t4 "
                             "cyl\tn\t-\t-\t,0,35,\t-\to\t90\t10\tv\to\tw\tw\r\n"
                             "Engine_Config=1\t60-2\tc\tc\tt\tf\ti\tSequential\tEX: B\t-\t4 "
                             "cyl\tn\t-\t-\t-\t-\to\t90\t6\tv\to\tw\tw\r\n"
                             "Digital_Function=Not used\tnone\t\r\n"
                             "Digital_Function=Fan\tfan\t\r\n"
                             "Digital_Function=RPM switch\trpm\t\r\n"
                             "Digital_Function=Analog switch\tanalog\t\r\n"
                             "Digital_Sensor=Analog 1\t\r\n";

class Pages : public ::testing::Test {
protected:
    void SetUp() override {
        test::Write_File(dir.File("test.ini"), Test_Ini);
        ini = Ini_File(dir.File("test.ini"), "");
        Reset_Sensor_Table(sensors.table);
        Proc_Guard guard(log, "Init ini file");
        Add_Sensor_Definition(sensors.table, "AFR\tLinear\t0.0392157\t10\t0\t255\tAFR\t1\tbin\t", guard);
        Add_Sensor_Definition(sensors.table, "MAP\tLinear\t0.01\t0\t0\t255\tbar\t2\tbin\t", guard);
        Add_Sensor_Definition(sensors.table, "MAP kPa\tLinear\t1\t0\t0\t255\tkPa\t0\tbin\t", guard);
        Add_Sensor_Definition(sensors.table, "TPS\tLinear\t0.4\t0\t0\t255\t%\t1\tbin\t", guard);
        for (int i = 1; i <= 12; ++i)
            sensors.inputs.An_Sel[static_cast<std::size_t>(i)] = i == 1 ? 1 : i == 2 ? 4 : 2;
        Init_Cardbyte(image, log);
        pages.lists = Load_Output_Lists(ini);
    }
    std::uint8_t& Byte(int address) { return image.CardByte[static_cast<std::size_t>(address)]; }
    bool Changed(int address) { return image.ChangedByte[static_cast<std::size_t>(address)] == Changed_Mark; }
    std::vector<std::string> Texts(const Scroll_Outcome& out) {
        std::vector<std::string> texts;
        for (const Page_Message& m : out.messages)
            texts.push_back(m.text);
        return texts;
    }

    test::Temp_Dir dir;
    Ini_File ini{"", ""};
    Debug_Log log;
    Settings_Image image;
    Sensor_State sensors;
    Pages_State pages;
    Engine_Config_State engine;
    Undo_List undo;
    Pages_Context ctx{image, sensors, pages, engine, undo, ini, log};
};

const char* const Semi_Message =
    "You run semisequential fuel. You can not select fuel to start later than 1 rev from missing pulse";
const char* const Sequential_Message =
    "You run sequential fuel. You can not select fuel to start later than 2 revs from missing pulse";

TEST_F(Pages, FuelStartAboveOneRevolutionOfTeethWarnsAndStaysChanged) {
    Byte(6) = 0; // 10 degrees a tooth, semi-sequential: 36 teeth
    EXPECT_TRUE(scroll_Change(ctx, 20, 36).messages.empty());
    Scroll_Outcome out = scroll_Change(ctx, 20, 37);
    EXPECT_EQ(Texts(out), std::vector<std::string>{Semi_Message});
    EXPECT_EQ(Byte(20), 37);
    EXPECT_TRUE(Changed(20));
    EXPECT_EQ(out.shown.text, "37");

    Byte(6) = 1; // 6 degrees, sequential: two revolutions are 120 teeth
    EXPECT_TRUE(scroll_Change(ctx, 20, 120).messages.empty());
    EXPECT_EQ(Texts(scroll_Change(ctx, 20, 121)), std::vector<std::string>{Sequential_Message});

    Byte(6) = 2; // no such layout: nothing to check against
    EXPECT_TRUE(scroll_Change(ctx, 20, 200).messages.empty());
}

TEST_F(Pages, TeethToTheMarkRecommendTheFuelStartAndFlagForbiddenTeeth) {
    Byte(6) = 1;
    scroll_Change(ctx, 18, 10);
    EXPECT_EQ(pages.Fuel_teeth_recomend, "Recomended: 77 teeth"); // 102 / 6 + 360 / 6
    EXPECT_FALSE(pages.Forbidden_tooth_visible);
    EXPECT_EQ(Texts(scroll_Change(ctx, 18, 121)), std::vector<std::string>{Sequential_Message});

    Byte(6) = 0;
    scroll_Change(ctx, 18, 35);
    EXPECT_TRUE(pages.Forbidden_tooth_visible);
    EXPECT_EQ(pages.Fuel_teeth_recomend, "Recomended: 10 teeth");
    scroll_Change(ctx, 18, 3);
    EXPECT_FALSE(pages.Forbidden_tooth_visible); // ",3," is not ",35,"
    scroll_Change(ctx, 18, 0);
    EXPECT_TRUE(pages.Forbidden_tooth_visible);
}

TEST_F(Pages, DwellAndBoostWarningsAtTheirEdges) {
    EXPECT_TRUE(scroll_Change(ctx, 21, 25).messages.empty()); // exactly 5.0 ms
    Scroll_Outcome out = scroll_Change(ctx, 21, 26);
    ASSERT_EQ(out.messages.size(), 1u);
    EXPECT_EQ(out.messages[0].text,
              "Warning, Dwell time larger than 5 ms could be dangerous. 3 ms is normal");
    EXPECT_TRUE(out.messages[0].stop_icon);
    EXPECT_EQ(Byte(21), 26);

    // Input 3 is the MAP sensor in bar, 0.01 a step.
    EXPECT_TRUE(scroll_Change(ctx, 23, 100).messages.empty()); // 1.00 bar is not vacuum
    out = scroll_Change(ctx, 23, 99);
    ASSERT_EQ(out.messages.size(), 1u);
    EXPECT_EQ(out.messages[0].text,
              "Warning, boost limit is set to vaccum. Fuel cut at atmospheric pressure, "
              "will make it impossible to start");
    EXPECT_FALSE(out.messages[0].stop_icon);
    out = scroll_Change(ctx, 23, 255);
    EXPECT_EQ(out.shown.text, "OFF");
    EXPECT_TRUE(out.messages.empty());
    // A sensor in kPa says nothing about vacuum in bar.
    sensors.inputs.An_Sel[3] = 3;
    EXPECT_TRUE(scroll_Change(ctx, 23, 50).messages.empty());
}

TEST_F(Pages, ASensorChangeRewritesTheLimitTextsButNotTheirBytes) {
    Byte(984) = 50;
    Byte(985) = 200;
    image.ChangedByte.fill(0);
    EXPECT_EQ(Show_Scroll(ctx, 984).text, "0.50");
    EXPECT_EQ(Show_Scroll(ctx, 985).unit, "bar");

    sensors.inputs.An_Sel[3] = 3; // MAP in kPa now
    std::vector<int> run = Update_scroll_change(ctx);
    EXPECT_NE(std::find(run.begin(), run.end(), 984), run.end());
    EXPECT_NE(std::find(run.begin(), run.end(), 23), run.end());
    EXPECT_EQ(Show_Scroll(ctx, 984).text, "50.00");
    EXPECT_EQ(Show_Scroll(ctx, 985).unit, "kPa");
    EXPECT_DOUBLE_EQ(image.CardValue[985], 200);
    EXPECT_EQ(Byte(984), 50);
    EXPECT_EQ(Byte(985), 200);
    EXPECT_EQ(std::count(image.ChangedByte.begin(), image.ChangedByte.end(), Changed_Mark), 0);
    EXPECT_EQ(undo.UndoIndex, 0);

    // The inputs run in order: AFR limits (input 1) before the throttle's (input 2).
    auto at = [&](int address) { return std::find(run.begin(), run.end(), address) - run.begin(); };
    EXPECT_LT(at(980), at(982));
    EXPECT_LT(at(982), at(984));
}

TEST_F(Pages, BindingsFollowTheirChoices) {
    // AFR_Number moves the AFR limits to input 5; the AFR control's load option moves its
    // load limits from MAP to throttle.
    Byte(981) = 100;
    EXPECT_EQ(Show_Scroll(ctx, 981).unit, "AFR");
    Byte(15) |= 64;
    EXPECT_EQ(Show_Scroll(ctx, 981).unit, "bar");
    EXPECT_EQ(Show_Scroll(ctx, 227).unit, "bar");
    Byte(216) |= 16;
    EXPECT_EQ(Show_Scroll(ctx, 227).unit, "%");
    // The high temperature cut off reads on the input its sensor slider names, or in volts.
    Byte(177) = 100;
    EXPECT_EQ(Show_Scroll(ctx, 177).text, "1.96");
    EXPECT_EQ(Show_Scroll(ctx, 131).text, "OFF");
    Byte(131) = 2;
    EXPECT_EQ(Show_Scroll(ctx, 131).text, "Analog 2, TPS");
    EXPECT_EQ(Show_Scroll(ctx, 177).text, "40.00");
    // An analogue threshold of a digital output reads on the sensor chosen for it.
    Byte(233) = 100;
    Byte(230) = 0x32; // function 3, sensor 2 (input 3)
    EXPECT_EQ(Show_Scroll(ctx, 233).text, "1.00");
    EXPECT_EQ(Show_Scroll(ctx, 233).unit, "bar");
    EXPECT_EQ(Show_Scroll(ctx, 231).unit, "rpm");
}

TEST_F(Pages, DefaultTextsWideValuesAndUnchangedMoves) {
    EXPECT_EQ(Show_Scroll(ctx, 17).text, Byte(17) == 255 ? "16000" : "");
    scroll_Change(ctx, 17, 0);
    EXPECT_EQ(Show_Scroll(ctx, 17).text, "3250");
    scroll_Change(ctx, 79, 0);
    EXPECT_EQ(Show_Scroll(ctx, 79).text, "0.816");
    scroll_Change(ctx, 79, 255);
    EXPECT_EQ(Show_Scroll(ctx, 79).text, "1.632");

    image.ChangedByte.fill(0);
    Scroll_Outcome out = scroll_Change(ctx, 82, 2400);
    EXPECT_TRUE(out.changed);
    EXPECT_EQ(Byte(82), 96);
    EXPECT_EQ(Byte(83), 9);
    EXPECT_TRUE(Changed(82) && Changed(83));
    EXPECT_EQ(out.shown.text, "2400");
    EXPECT_EQ(Scroll_Tooltip(image, *Find_Page_Param(82)), "Address 82/83, bytes 96, 9 (2400)");
    EXPECT_EQ(Scroll_Tooltip(image, *Find_Page_Param(21)), "Address 21, byte 15 (0x0F)");

    // A move to the byte it holds writes nothing, marks nothing and takes no undo level.
    image.ChangedByte.fill(0);
    const int level = undo.UndoIndex;
    EXPECT_FALSE(scroll_Change(ctx, 21, Byte(21)).changed);
    EXPECT_FALSE(Changed(21));
    EXPECT_EQ(undo.UndoIndex, level);
    // Values outside the slider's range are held to it.
    int v = 400;
    Update_Scroll(ctx, 21, v);
    EXPECT_EQ(v, 50);
    EXPECT_EQ(Byte(21), 50);
}

TEST_F(Pages, EveryChangeTakesOneUndoLevelBeforeItWrites) {
    Byte(21) = 15;
    scroll_Change(ctx, 21, 20);
    ASSERT_EQ(undo.UndoIndex, 1);
    EXPECT_EQ(undo.UndoList[0][21], 15); // the snapshot holds the byte before the change
    scroll_Change(ctx, 82, 1000);        // two bytes, one level
    EXPECT_EQ(undo.UndoIndex, 2);
    Choice_Click(ctx, "Dig1_function", 2, {});
    EXPECT_EQ(undo.UndoIndex, 3);
    Choice_Click(ctx, "Dig1_function", 2, {}); // the same choice again changes nothing
    EXPECT_EQ(undo.UndoIndex, 3);
    // While the engine layout is being filled in, only the write happens.
    engine.Engine_Config_Busy = true;
    Byte(6) = 0;
    Scroll_Outcome out = scroll_Change(ctx, 20, 100);
    EXPECT_TRUE(out.messages.empty());
    EXPECT_EQ(Byte(20), 100);
}

TEST_F(Pages, ChoicesRewriteOnlyTheirOwnBits) {
    std::vector<std::string> calls;
    Choice_Hooks hooks{[&] { calls.push_back("Update_Tabs"); }, [&] { calls.push_back("Show_Right_Tabs"); },
                       [&] { calls.push_back("Update_All"); }};

    Byte(230) = 0x57;
    EXPECT_TRUE(Choice_Click(ctx, "Digital_sensor_combo_0", 3, hooks));
    EXPECT_EQ(Byte(230), 0x53); // the function nibble stays
    EXPECT_TRUE(Choice_Click(ctx, "digital_combo_0", 2, hooks));
    EXPECT_EQ(Byte(230), 0x23); // the sensor nibble stays
    EXPECT_TRUE(Changed(230));
    EXPECT_EQ(calls, (std::vector<std::string>{"Update_All", "Update_All"}));

    Byte(185) = 0xFD;
    Choice_Click(ctx, "Dig1_function", 2, hooks);
    EXPECT_EQ(Byte(185), 0xFE); // the upper six bits stay
    Choice_Click(ctx, "AutoTune_option", 0, hooks);
    EXPECT_EQ(Byte(185), 0xDE);
    Choice_Click(ctx, "Anti_lag_sensor_combo", 0, hooks);
    EXPECT_EQ(Byte(185), 0xC2);

    Byte(182) = 0x80; // MAP resolution, bit 7, is not Digital 2's
    Choice_Click(ctx, "Dig2_function", 7, hooks);
    EXPECT_EQ(Byte(182), 0x87);
    Choice_Click(ctx, "pwm_combo_0", 5, hooks);
    EXPECT_EQ(Byte(182), 0xAF);

    // PWM 1 is the low nibble of 186, PWM 2 the high one; the tables follow before the views.
    calls.clear();
    Byte(186) = 0;
    Choice_Click(ctx, "pwm_combo_2", 1, hooks);
    Choice_Click(ctx, "pwm_combo_1", 8, hooks);
    EXPECT_EQ(Byte(186), 0x81);
    EXPECT_EQ(Pwm_Signal(image, 1), 1);
    EXPECT_EQ(Pwm_Signal(image, 2), 8);
    EXPECT_EQ(calls, (std::vector<std::string>{"Update_Tabs", "Show_Right_Tabs", "Update_All", "Update_Tabs",
                                               "Show_Right_Tabs", "Update_All"}));

    // Single bits go through the bit helper; values that do not fit the field are refused.
    Byte(215) = 0;
    Choice_Click(ctx, "Lambda_On_Off", 1, hooks);
    Choice_Click(ctx, "Idle_Control_Ignition", 2, hooks);
    EXPECT_EQ(Byte(215), 0x41);
    EXPECT_FALSE(Choice_Click(ctx, "Lambda_On_Off", 2, hooks));
    EXPECT_FALSE(Choice_Click(ctx, "digital_combo_1", 16, hooks));
    EXPECT_FALSE(Choice_Click(ctx, "no_such_control", 0, hooks));

    Choice_Click(ctx, "ae_combo", 2, hooks);
    EXPECT_EQ(ae_combo_Index(image), 2);
}

TEST_F(Pages, GroupsShowWhatTheChosenFunctionsNeed) {
    Byte(215) = 0;
    Byte(182) = 3; // Digital 2 not activated
    Byte(185) = 1; // Digital 1 not activated
    Settings_View view = Show_Right_Settings(ctx);
    EXPECT_FALSE(view.param_visible[7]); // idle control off
    EXPECT_FALSE(view.param_visible[13]);
    EXPECT_FALSE(view.param_visible[91]); // no anti-lag
    EXPECT_FALSE(Frame_Visible(view, "Launch_controls_frame"));
    EXPECT_FALSE(Frame_Visible(view, "Gearing_Ignition_Cut_Frame"));
    EXPECT_EQ(view.Description_label[0], "2nd RPM limit controlled by Coolant");
    EXPECT_EQ(view.Description_label[1], "PWM external activation controlled by Fan");
    EXPECT_FALSE(view.tab_visible[Settings_Tab::Unused]);

    Byte(215) = 0x30; // idle control by ignition: no valve frequency
    Byte(185) = 2;    // launch control
    Byte(182) = 7;    // ignition cut
    Byte(235) = 0x20; // output 2: RPM switch
    Byte(240) = 0x30; // output 3: analog switch
    Byte(245) = 0x10; // output 4: fan
    view = Show_Right_Settings(ctx);
    EXPECT_TRUE(view.param_visible[7]);
    EXPECT_FALSE(view.param_visible[16]);
    EXPECT_TRUE(Frame_Visible(view, "Launch_controls_frame"));
    EXPECT_TRUE(Frame_Visible(view, "Gearing_Ignition_Cut_Frame"));
    EXPECT_TRUE(view.param_visible[236] && !view.param_visible[238]);
    EXPECT_TRUE(!view.param_visible[241] && view.param_visible[243]);
    EXPECT_FALSE(view.sens_visible[1]);
    EXPECT_TRUE(view.sens_visible[2]);
    EXPECT_TRUE(view.fan_visible);

    Byte(185) = 0;
    Byte(182) = 4;
    view = Show_Right_Settings(ctx);
    EXPECT_EQ(view.Description_label[0], "2nd RPM limit controlled by Digital 1");
    EXPECT_EQ(view.Description_label[1], "PWM external activation controlled by Digital 2 in");

    image.DatasetID = 100; // not stand-alone: no ignition pages
    view = Show_Right_Settings(ctx);
    EXPECT_FALSE(view.tab_visible[Settings_Tab::Ignition]);
    EXPECT_TRUE(view.tab_visible[Settings_Tab::Fuel_Settings]);
}

TEST_F(Pages, TypedValuesFindTheNearestPosition) {
    EXPECT_EQ(Position_For_Text(ctx, 21, "5.5"), 28); // halfway: the even position, 5.6
    EXPECT_EQ(Position_For_Text(ctx, 21, "3,0"), 15);
    EXPECT_EQ(Position_For_Text(ctx, 21, "99"), 50);
    EXPECT_EQ(Position_For_Text(ctx, 17, "6500"), 65);
    EXPECT_EQ(Position_For_Text(ctx, 23, "off"), 255);
    EXPECT_EQ(Position_For_Text(ctx, 23, "2.5"), 250); // 2.50 bar, not the OFF position
    EXPECT_EQ(Position_For_Text(ctx, 82, "2400"), 2400);
    EXPECT_EQ(Position_For_Text(ctx, 984, "0.5"), 50);
    EXPECT_FALSE(Position_For_Text(ctx, 21, "abc"));
    EXPECT_FALSE(Position_For_Text(ctx, 21, ""));
    EXPECT_FALSE(Position_For_Text(ctx, 22, "1")); // no slider there
}

TEST_F(Pages, CorrectionCurves) {
    scroll_Change(ctx, 219, 10); // 1.0 ms a volt
    Page_Chart battery = Battery_Chart(ctx);
    ASSERT_EQ(battery.series.size(), 1u);
    EXPECT_DOUBLE_EQ(battery.series[0].y.front(), 5.5); // 8 V
    EXPECT_DOUBLE_EQ(battery.series[0].y.back(), 0);    // 16 V
    scroll_Change(ctx, 219, 255);
    EXPECT_DOUBLE_EQ(Battery_Chart(ctx).series[0].y.front(), 8.4); // at most 8.4 ms

    Page_Chart startup = Startup_Chart(ctx);
    ASSERT_EQ(startup.series.size(), 3u);
    EXPECT_EQ(startup.series[0].y.back(), 0);

    // Output 3 as an analog switch on input 3: on at 1.20 bar rising, off at 0.80 falling.
    Byte(240) = 0x32;
    Byte(243) = 120;
    Byte(244) = 80;
    Page_Chart digital = Digital_Chart(ctx, 2);
    ASSERT_EQ(digital.series.size(), 2u);
    EXPECT_EQ(digital.series[0].x, (std::vector<double>{0, 1.2, 1.2, 2.55}));
    EXPECT_EQ(digital.series[1].x, (std::vector<double>{2.55, 0.8, 0.8, 0}));
    EXPECT_EQ(digital.x_title, "bar");
    EXPECT_TRUE(digital.on_off);
    Byte(240) = 0;
    EXPECT_TRUE(Digital_Chart(ctx, 2).series.empty()); // "Not used" switches on nothing
}

TEST_F(Pages, LayoutAndListsFromTheConfiguration) {
    // The layout follows image byte 6 whenever it names another row.
    Byte(6) = 0;
    EXPECT_DOUBLE_EQ(Current_Layout(ctx).Config_Tooth_Degrees, 10);
    EXPECT_FALSE(Current_Layout(ctx).Sequential_Fuel);
    Byte(6) = 1;
    EXPECT_DOUBLE_EQ(Current_Layout(ctx).Config_Tooth_Degrees, 6);
    EXPECT_TRUE(Current_Layout(ctx).Sequential_Fuel);
    Byte(6) = 40;
    EXPECT_DOUBLE_EQ(Current_Layout(ctx).Config_Tooth_Degrees, 0);

    EXPECT_EQ(pages.lists.Digital_Function.size(), 4u);
    EXPECT_EQ(pages.lists.Digital_Needs[1], "fan");
    // A configuration without a list still offers every value by its number.
    EXPECT_EQ(pages.lists.Pwm_Function.size(), 9u);
    EXPECT_EQ(pages.lists.Pwm_Function[8], "8");
    // The four lists come from one reading of the file, however many lines they have.
    EXPECT_EQ(test::Opens_Of(dir.File("test.ini"), [&] { Load_Output_Lists(ini); }), 1);
    EXPECT_EQ(Choice_Text(pages, image, *Find_Page_Choice("digital_combo_0")), "Not used");
    Byte(230) = 0x70;
    EXPECT_EQ(Choice_Text(pages, image, *Find_Page_Choice("digital_combo_0")), "7");
}

#ifdef QUORLEN_DATA_DIR
// The shipped data through the command line, as a new user would try it.
class Settings_Cli : public ::testing::Test {
protected:
    std::string Default() { return std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3_Default_Settings.qxs"; }
    std::string Ini() { return std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini"; }
    test::Temp_Dir dir;
};

TEST_F(Settings_Cli, SettingsListsEveryParameterWithItsValueAndUnit) {
    auto r = test::Run_Cli({"settings", Default(), "--ini", Ini()});
    ASSERT_EQ(r.code, 0) << r.err;
    std::vector<std::string> lines;
    for (std::size_t p = 0, q; (q = r.out.find('\n', p)) != std::string::npos; p = q + 1)
        lines.push_back(r.out.substr(p, q - p));
    EXPECT_EQ(lines.size(), Page_Items_In_Order().size());
    auto has = [&](const std::string& line) {
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    };
    EXPECT_TRUE(has("Ignition settings\tIgnition charge (dwell) time\t21\t3.0\tms"));
    EXPECT_TRUE(
        has("Ignition settings\tFuel and Ign cut RPM      soft ign cut 250rpm earlier\t17\t6500\trpm"));
    EXPECT_TRUE(has("Ignition settings\tFuel cut boost level\t23\t2.00\tbar"));
    EXPECT_TRUE(has("Idle settings\tIdle RPM\t7\t900\trpm"));
    EXPECT_TRUE(has("Fuel settings\tTotal injector size\t82\t2400\tml/min"));
    EXPECT_TRUE(has("Temp corrections\tWarm engine temperature limit\t172\t70.0\tC"));
    EXPECT_TRUE(has("AFR control\tAFR control\t215\tOn\t"));
    EXPECT_TRUE(has("Digital outputs\tDigital output 1\t230\tNot used\t"));
    EXPECT_EQ(lines.front().rfind("Launch / ALS\t", 0), 0u);
}

TEST_F(Settings_Cli, SetTheDwellWarnsAndChangesOnlyThatByteAndWhatSavesSet) {
    std::string out = dir.File("out.qxs");
    auto r = test::Run_Cli({"set", Default(), "--ini", Ini(), "-o", out, "21=5.5"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "21\tIgnition charge (dwell) time\t5.6\tms\n"
                     "Warning, Dwell time larger than 5 ms could be dangerous. 3 ms is normal\n");
    auto diff = test::Run_Cli({"qxs-diff", Default(), out});
    for (std::size_t p = 0, q; (q = diff.out.find('\n', p)) != std::string::npos; p = q + 1) {
        int address = std::stoi(diff.out.substr(p, q - p));
        EXPECT_TRUE(address == 21 || address == 250 || address == 251 || address == 255) << address;
    }
    EXPECT_NE(diff.out.find("21\t15\t28\n"), std::string::npos) << diff.out;
    // The comment comes back as it was.
    EXPECT_EQ(test::Read_File(out).substr(test::Read_File(out).find("Quorlen base")),
              test::Read_File(Default()).substr(test::Read_File(Default()).find("Quorlen base")));
}

TEST_F(Settings_Cli, SetRefusesWhatNoSliderTakesAndChangesNothing) {
    std::string out = dir.File("out.qxs");
    EXPECT_EQ(test::Run_Cli({"set", Default(), "--ini", Ini(), "-o", out, "21=4", "22=1"}).code, 2);
    EXPECT_EQ(test::Run_Cli({"set", Default(), "--ini", Ini(), "-o", out, "21=4", "21=fast"}).code, 2);
    EXPECT_EQ(test::Run_Cli({"set", Default(), "--ini", Ini(), "-o", out}).code, 2);
    EXPECT_FALSE(std::filesystem::exists(out));
    // Later values read against what the earlier ones set: the cut off follows its sensor.
    auto r = test::Run_Cli({"set", Default(), "--ini", Ini(), "-o", out, "131=4", "177=110"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find("177\tLaunch/ALS high temp cut off \t109.00\tC\n"), std::string::npos) << r.out;
}
#endif

} // namespace
} // namespace quorlen
