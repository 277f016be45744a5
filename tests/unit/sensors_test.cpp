#include "core/run_error.h"
#include "sensors/sensor_defs.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

using test::Temp_Dir;
using test::Write_File;

std::string Tab_Def(const std::string& name, double first, double step) {
    std::string line = "Sens_Def=" + name + "\tTab\t";
    for (int i = 0; i < 33; ++i)
        line += std::to_string(first + step * i) + "\t";
    return line + "C\t1\tbin\t\r\n";
}

class Sensors : public ::testing::Test {
protected:
    void Load(const std::string& ini_text) {
        Write_File(dir.File("q.ini"), ini_text);
        ini = Ini_File(dir.File("q.ini"), dir.File("QXS.new"));
        Proc_Guard guard(log, "Init ini file");
        Load_Sensor_Definitions(sensors, ini, guard, &texts.Debug_txt);
    }
    Analog_Context Ctx() { return {sensors, image, ini, texts, log}; }

    Temp_Dir dir;
    Ini_File ini{"", ""};
    Debug_Log log;
    Form_Texts texts;
    Settings_Image image;
    Sensor_State sensors;
};

TEST(ExtractData, FieldsEndsAndTheWrapAround) {
    EXPECT_EQ(Extract_Data("a\tb\tc\t", 2), "b");
    EXPECT_EQ(Extract_Data("a\tb\r\n", 3), "a"); // past the last field: back to the front
    EXPECT_EQ(Extract_Data("a\tb;", 2), "b");    // ";" ends a field as a tab does
    EXPECT_EQ(Extract_Data("a\tb\t", 2), Extract_Data("a\tb;", 2));
    std::string debug;
    EXPECT_EQ(Extract_Data("abc", 1, &debug), "");
    EXPECT_EQ(debug, "Did not find data no:1\r\n");
}

TEST_F(Sensors, LinearAndTabRowsLoadWithTheirPointsAndBlankRowsKeepTheirNumbers) {
    Load("Sens_Def=MAP\tLinear\t0,01\t-0.02\t2\t255\tbar\t2\tbin\t\r\n"
         "Sens_Def=Odd\tLinear2c\t1\t0\t0\t255\tx\t0\tbin\t\r\n" +
         Tab_Def("Temp", 100, -5) + "Sens_Def=Short\tLinear\t1\r\n");
    const Sensor_Table& t = sensors.table;
    ASSERT_EQ(t.Sens_Count, 5);
    EXPECT_EQ(t.Name(0), "<not used>");
    EXPECT_EQ(t.Unit(0), "value");
    EXPECT_EQ(t.Sens_Point_Tab[0][33], 33);
    EXPECT_EQ(t.Unit(1), "bar");
    EXPECT_DOUBLE_EQ(t.Sens_Point_Tab[1][1], 0.0);   // raw 0 clamps to the minimum 2
    EXPECT_DOUBLE_EQ(t.Sens_Point_Tab[1][33], 2.53); // raw 256 clamps to 255
    EXPECT_EQ(t.Name(2), "");                        // Linear2c is refused for tuning
    EXPECT_EQ(t.Type(3), "Tab");
    EXPECT_EQ(t.Unit(3), "C");
    EXPECT_DOUBLE_EQ(t.Sens_Point_Tab[3][33], -60);
    // Fewer fields than asked: the missing ones read from the front of the entry.
    EXPECT_EQ(t.Unit(4), "Short");
    EXPECT_EQ(sensors.inputs.Selection_List.size(), 5u);
    EXPECT_EQ(sensors.inputs.Sensor_View_List[3], "Temp, Tab");
}

TEST_F(Sensors, ForwardClampsTheCallersRawAndTabInterpolatesTheLastSegment) {
    Load("Sens_Def=Ten\tLinear\t1\t0\t0\t10\tV\t1\tbin\t\r\n" + Tab_Def("Temp", 100, -5));
    double raw = 200;
    bool linear = false;
    EXPECT_EQ(Forward_Sensor_Calc(sensors.table, 1, raw, &linear), 10.0);
    EXPECT_EQ(raw, 10);
    EXPECT_TRUE(linear);
    // Raw 255 is seven eighths of the way from point 32 (raw 248, -55) to point 33 (-60).
    raw = 255;
    EXPECT_DOUBLE_EQ(*Forward_Sensor_Calc(sensors.table, 2, raw, &linear), -59.4);
    EXPECT_FALSE(linear);
    raw = 300;
    Forward_Sensor_Calc(sensors.table, 2, raw);
    EXPECT_EQ(raw, 255);
    EXPECT_DOUBLE_EQ(*Forward_Sensor_Value(sensors.table, 2, 7.6),
                     95.2); // 95.25: segment of raw 8, tie to even
    EXPECT_FALSE(Forward_Sensor_Value(sensors.table, 3, 1).has_value()); // s = Sens_Count
    EXPECT_FALSE(Forward_Sensor_Value(sensors.table, -1, 1).has_value());
    EXPECT_EQ(Forward_Sensor_Value(sensors.table, 0, 100), 0.0);
}

TEST_F(Sensors, ReverseFindsRawValuesAndKeepsItsQuirks) {
    Load("Sens_Def=Lin\tLinear\t0.5\t10\t4\t200\tV\t1\tbin\t\r\n" + Tab_Def("Temp", 100, -5) +
         Tab_Def("Up", 0, 5) + "Sens_Def=Zero\tLinear\t0\t0\t0\t255\tV\t0\tbin\t\r\n");
    EXPECT_EQ(Reversed_Sensor_Value(sensors.table, 1, 20), 20);
    EXPECT_EQ(Reversed_Sensor_Value(sensors.table, 1, 11), 4);    // below the minimum
    EXPECT_EQ(Reversed_Sensor_Value(sensors.table, 1, 500), 200); // above the maximum
    EXPECT_EQ(Reversed_Sensor_Value(sensors.table, 1, 11.25), 4); // 2.5 converts to 2, then the minimum
    EXPECT_EQ(Reversed_Sensor_Value(sensors.table, 2, 97.5), 4);  // falling table
    EXPECT_EQ(Reversed_Sensor_Value(sensors.table, 2, 90), 16);   // on a point
    EXPECT_EQ(Reversed_Sensor_Value(sensors.table, 3, 12.5), 20); // rising table
    EXPECT_EQ(Reversed_Sensor_Value(sensors.table, 3, 160), 0);   // the top point finds nothing
    EXPECT_EQ(Reversed_Sensor_Value(sensors.table, 3, 999), 0);
    EXPECT_FALSE(Reversed_Sensor_Value(sensors.table, 0, 5).has_value());
    EXPECT_THROW(Reversed_Sensor_Value(sensors.table, 4, 5), Run_Error);
    EXPECT_THROW(Reversed_Sensor_Value(sensors.table, 9, 5), Run_Error);

    bool shown = true;
    Reversed_Sensor_Calc(sensors, 2, 50, [&](bool visible) { shown = visible; });
    EXPECT_FALSE(shown);
    EXPECT_FALSE(sensors.is_linear_sensor);
}

TEST(LogSensors, AllFiveTypes) {
    std::vector<Log_Sensor_Row> rows(5);
    rows[0] = Parse_Log_Sens_Def("RPM\tLinear\t1000\t0\t0\t10\trpm\t0\ttrpm\t");
    std::string tab = "Temp\tTab\t";
    for (int i = 0; i < 33; ++i)
        tab += std::to_string(i * 8) + ",5\t";
    rows[1] = Parse_Log_Sens_Def(tab + "C\t0\tbin\t");
    rows[2] = Parse_Log_Sens_Def("Acc\tLinear2c\t0.1\t1\t0\t255\tg\t1\tbin\t");
    rows[3] = Parse_Log_Sens_Def("S1\tStatus1\t");
    rows[4] = Parse_Log_Sens_Def("S2\tStatus2\t");
    std::vector<int> channels = {0, 1, 2, 3, 4, -1};
    auto calc = [&](int channel, double raw) {
        return Forward_Log_Sensor_Calc(rows, channels, channel, raw);
    };
    EXPECT_EQ(calc(1, 2.5), 2500);
    EXPECT_EQ(rows[1][35], "C");
    EXPECT_DOUBLE_EQ(*calc(2, 255), 255.5);
    EXPECT_DOUBLE_EQ(*calc(3, 10), 2);
    EXPECT_DOUBLE_EQ(*calc(3, 246), 0); // -10 in two's complement
    EXPECT_DOUBLE_EQ(*calc(4, 0x80), 0.8);
    EXPECT_DOUBLE_EQ(*calc(4, 0x7F), 0); // bit 7 decides
    EXPECT_DOUBLE_EQ(*Forward_Log_Sensor_Calc(rows, channels, 5, std::string_view("02h")), 1.0);
    EXPECT_DOUBLE_EQ(*calc(5, 1), 0);
    EXPECT_FALSE(calc(6, 1).has_value());
}

TEST_F(Sensors, InputsFromTheImageFallBackOnceAndClicksWriteThrough) {
    Load("Sens_Def=A\tLinear\t1\t0\t0\t255\tV\t0\tbin\t\r\n");
    for (int i = 1; i <= 12; ++i)
        image.CardByte[static_cast<std::size_t>(883 + i)] = 1;
    image.CardByte[886] = 200;
    image.CardByte[887] = 100;
    Analog_Context ctx = Ctx();
    Init_Analog_from_CardByte(ctx);
    EXPECT_EQ(sensors.inputs.An_Sel[3], 7);
    EXPECT_EQ(sensors.inputs.An_Sel[4], 7);
    EXPECT_EQ(sensors.inputs.An_Sel[1], 1);
    EXPECT_EQ(image.CardByte[886], 200);
    EXPECT_EQ(texts.Debug_txt, "Selected analog sensor missing.\r\n");
    EXPECT_EQ(texts.rs232_text, "< Analog sensor missing >");

    int updates = 0;
    Analog_Hooks hooks{[&] { ++updates; }, [&] { ++updates; }, [&] { ++updates; }, {}};
    AN_Combo_Click(ctx, 2, 1, hooks); // already selected: nothing
    EXPECT_EQ(updates, 0);
    AN_Combo_Click(ctx, 2, 0, hooks);
    EXPECT_EQ(updates, 3);
    EXPECT_EQ(image.CardByte[885], 0);
    EXPECT_EQ(image.ChangedByte[885], 255);
    EXPECT_EQ(ini.Read_Ini("an_sel2"), "0");
    Init_Analog_from_Inifile(ctx);
    EXPECT_EQ(sensors.inputs.An_Sel[2], 0);
    EXPECT_EQ(sensors.inputs.An_Sel[5], 0); // a missing key reads as 0, unchecked
}

} // namespace
} // namespace quorlen
