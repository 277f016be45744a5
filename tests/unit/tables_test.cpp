#include "files/settings_files.h"
#include "support/fresh_tables.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "tables/map_tables.h"
#include "tables/table_repair.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

using test::Scripted_Dialogs;

class Tables : public test::Fresh_Tables {
protected:
    std::string Text(Table_Id id, int row, int col) { return Grid_Text(ctx, id, row, col); }
};

TEST_F(Tables, CellCodingOfTheMapsAndTheFirstCompensation) {
    EXPECT_EQ(Fuel_Cell_Text(0), "0.0");
    EXPECT_EQ(Fuel_Cell_Text(1), "1.06");
    EXPECT_EQ(Fuel_Cell_Text(24), "2.44");
    EXPECT_EQ(Fuel_Cell_Text(25), "2.5");
    EXPECT_EQ(Fuel_Cell_Text(255), "25.5");
    EXPECT_EQ(Ign_Cell_Text(77), "15.4");
    image.CardByte[191] = 128;
    image.CardByte[192] = 0;
    EXPECT_EQ(Text(Table_Id::Ign_Comp1, 1, 2), "0.0");
    EXPECT_EQ(Text(Table_Id::Ign_Comp1, 2, 2), "-25.6");
    EXPECT_EQ(Text(Table_Id::Ign_Comp1, 0, 2), "deg");

    // The 2nd fuel tables by function and scale.
    image.CardByte[100] = 25;
    auto function = [&](int index, bool wide) {
        image.CardByte[175] = static_cast<std::uint8_t>((image.CardByte[175] & ~56) | index << 3);
        image.CardByte[5] = wide ? 64 : 0;
        Update_Tabs(ctx);
        return Text(Table_Id::Fuel2_Map, 0, 2) + " " + Text(Table_Id::Fuel2_Map, 1, 2);
    };
    EXPECT_EQ(function(0, false), "ms 2.5");
    EXPECT_EQ(function(1, false), "% 25");
    EXPECT_EQ(function(1, true), "% 50");
    EXPECT_EQ(function(2, false), "ms -2.5");
    EXPECT_EQ(function(5, false), " ");
}

TEST_F(Tables, AxesRunningSumsSaturateAndLoadGoesThroughTheSensor) {
    Map_Block fuel = Fuel_Block(ctx);
    for (int c = 1; c <= fuel.cols; ++c)
        image.CardByte[static_cast<std::size_t>(fuel.Rpm_Step(c))] = c <= 3 ? 128 : 0;
    image.CardByte[static_cast<std::size_t>(fuel.Load_Step(1))] = 64;
    image.CardByte[static_cast<std::size_t>(fuel.Load_Step(2))] = 0; // repeats the previous point
    image.CardByte[static_cast<std::size_t>(fuel.Load_Step(3))] = 128;
    ASSERT_TRUE(Update_All(ctx));
    EXPECT_TRUE(dialogs.informed.empty());
    EXPECT_EQ(Text(Table_Id::Fuel_3D, 0, 0), "RPM");
    EXPECT_EQ(Text(Table_Id::Fuel_3D, 0, 1), "8000");
    EXPECT_EQ(Text(Table_Id::Fuel_3D, 0, 2), "15938");
    EXPECT_EQ(Text(Table_Id::Fuel_3D, 0, 19), "15938");
    EXPECT_EQ(Text(Table_Id::Fuel_3D, 1, 0), "0.64");
    EXPECT_EQ(Text(Table_Id::Fuel_3D, 2, 0), "0.64");
    EXPECT_EQ(Text(Table_Id::Fuel_3D, 3, 0), "1.92");
    EXPECT_EQ(Text(Table_Id::Ignition_3D, 0, 1), "0"); // all steps 0
    EXPECT_DOUBLE_EQ(image.CardValue[257], 8000);
    EXPECT_EQ(tables.LastRpmColumn, 18);
    EXPECT_DOUBLE_EQ(tables.MaxLoadValue_Fuel, 1.92);
}

TEST_F(Tables, EverySizeVariantHasItsShapeAndFirstCellAddress) {
    int index = 0;
    for (const Map_Size& size : Fuel_Size_Variants()) {
        FUEL_3D_MAP_Size_Combo_Click(ctx, index++, {[&] { Update_Tabs(ctx); }, {}, {}});
        Grid_Shape shape = Grid_Size(ctx, Table_Id::Fuel_3D);
        EXPECT_EQ(shape.rows, size.rows + 1);
        EXPECT_EQ(shape.cols, size.cols + 1);
        int first = 256 + size.cols + size.rows + 2;
        EXPECT_EQ(Grid_Address(ctx, Table_Id::Fuel_3D, 1, 1), first) << size.item;
        EXPECT_EQ(Grid_Address(ctx, Table_Id::Fuel_3D, size.rows, size.cols),
                  first + size.rows * size.cols - 1);
        EXPECT_LT(first + size.rows * size.cols - 1, 643) << "reaches the cylinder trims";
        EXPECT_EQ(image.CardByte[256], size.cols);
        EXPECT_EQ(image.CardByte[256 + size.cols + 1], size.rows);
    }
    EXPECT_EQ(Grid_Address(ctx, Table_Id::Fuel_3D, 0, 1), -1);
    index = 0;
    for (const Map_Size& size : Ign_Size_Variants()) {
        Ign_3D_MAP_Size_Combo_Click(ctx, index, {[&] { Update_Tabs(ctx); }, {}, {}});
        EXPECT_EQ(image.CardByte[175] >> 6, index++);
        EXPECT_EQ(image.CardByte[175] & 7, 7); // the fuel choice is kept
        EXPECT_EQ(Grid_Address(ctx, Table_Id::Ignition_3D, 1, 1), 653 + size.cols + size.rows + 2);
        EXPECT_LE(Ign_Block(ctx).End(), 883);
    }
}

TEST_F(Tables, OutOfRuleStepsAreMendedWithOneMessagePerAxis) {
    Map_Block ign = Ign_Block(ctx);
    const std::uint8_t good[] = {1, 2, 4, 8, 16, 32, 64, 128};
    for (int i = 0; i < 8; ++i)
        image.CardByte[static_cast<std::size_t>(ign.Rpm_Step(i + 1))] = good[i];
    image.CardByte[static_cast<std::size_t>(ign.Load_Step(1))] = 3; // an offset: any value
    image.CardByte[static_cast<std::size_t>(ign.Load_Step(2))] = 255;
    image.CardByte[static_cast<std::size_t>(ign.Load_Step(3))] = 3;
    image.CardByte[50] = 200; // PWM2 extra fuel axis
    Update_All(ctx);
    ASSERT_EQ(dialogs.informed.size(), 2u);
    EXPECT_EQ(dialogs.icons, (std::vector<Icon>{Icon::Information, Icon::Information}));
    EXPECT_EQ(
        dialogs.informed[0],
        "Some errors in Ignition Load table was automatically corrected. Double check and save the file");
    EXPECT_EQ(dialogs.informed[1],
              "Some errors in PWM2 extra fuel table was automatically corrected. Check and save the file");
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(ign.Load_Step(1))], 3);
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(ign.Load_Step(2))], 128);
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(ign.Load_Step(3))], 2);
    EXPECT_EQ(image.CardByte[50], 128);
    EXPECT_EQ(image.ChangedByte[50], 255);
    EXPECT_EQ(image.ChangedByte[static_cast<std::size_t>(ign.Rpm_Step(3))], 0);
    Update_All(ctx);
    EXPECT_EQ(dialogs.informed.size(), 2u); // mended: the next run is silent
}

TEST_F(Tables, SelectionNibblesAndFixedCountsAreMendedQuietly) {
    test::Temp_Dir dir;
    ASSERT_TRUE(log.Open(dir.File("Debug_file.log")));
    image.CardByte[186] = 0x9A; // PWM2 9, PWM1 10
    image.CardByte[187] = 0x18;
    image.CardByte[235] = 0xC3; // digital 2 function 12, sensor 3
    image.CardByte[46] = 0;
    Update_All(ctx);
    log.Close();
    EXPECT_TRUE(dialogs.informed.empty());
    EXPECT_EQ(image.CardByte[186], 0);
    EXPECT_EQ(image.CardByte[187], 0x18);
    EXPECT_EQ(image.CardByte[235], 0x03);
    EXPECT_EQ(tables.Pwm_Selection[2], 8);
    EXPECT_EQ(tables.Digital_Sensor[1], 3);
    EXPECT_EQ(image.CardByte[46], 1);
    EXPECT_EQ(image.CardByte[48], 5);
    EXPECT_EQ(test::Read_File(dir.File("Debug_file.log")),
              "Error in PWM1 signal selection setting\r\nError in PWM2 signal selection setting\r\n"
              "Error in Digital 2 function setting\r\n");
}

TEST_F(Tables, ALoadedImageOfAnotherSizeIsReadUnderItsOwnShape) {
    // A file of the 25 x 13 fuel size arrives while the tables still have 19 x 18: its count
    // byte and its cells must not be taken for steps.
    image.CardByte[175] = 2;
    image.CardByte[256] = 25;
    for (int c = 1; c <= 25; ++c)
        image.CardByte[static_cast<std::size_t>(256 + c)] = 8;
    image.CardByte[282] = 13;
    for (int r = 1; r <= 13; ++r)
        image.CardByte[static_cast<std::size_t>(282 + r)] = 16;
    image.CardByte[296] = 77; // first cell
    Update_All(ctx);
    EXPECT_TRUE(dialogs.informed.empty());
    EXPECT_EQ(image.CardByte[282], 13);
    EXPECT_EQ(image.CardByte[296], 77);
    EXPECT_EQ(Grid_Size(ctx, Table_Id::Fuel_3D).cols, 26);
    EXPECT_EQ(Text(Table_Id::Fuel_3D, 1, 1), "7.7");
}

TEST_F(Tables, UpdateAllDoesNothingWhileItRuns) {
    tables.UpdateBusy = true;
    image.CardByte[257] = 3;
    EXPECT_FALSE(Update_All(ctx));
    EXPECT_EQ(image.CardByte[257], 3);
    tables.UpdateBusy = false;
    EXPECT_TRUE(Update_All(ctx));
    EXPECT_FALSE(tables.UpdateBusy);
}

TEST_F(Tables, OneDimensionalAxesCaptionsAndBoostMode) {
    image.CardByte[74] = 3; // PWM load on the MAP input
    image.CardByte[186] = Pwm_Boost_Selection;
    image.CardByte[896] = 100;
    Update_Tabs(ctx);
    Show_Right_Tabs(ctx);
    EXPECT_EQ(Text(Table_Id::Pwm1, 0, 0), "V");
    EXPECT_EQ(Text(Table_Id::Pwm1, 0, 1), "bar");
    EXPECT_EQ(Text(Table_Id::Pwm1, 21, 0), "5.00");
    EXPECT_EQ(Text(Table_Id::Pwm1, 21, 1), "2.55");
    EXPECT_EQ(Text(Table_Id::Pwm1, 1, 2), "1.00"); // the boost sensor's value of the byte
    EXPECT_EQ(Text(Table_Id::Pwm2, 1, 2), "0.0");
    EXPECT_EQ(tables.captions.Pwm1_Tab, "PWM1 Boost control");
    EXPECT_EQ(tables.captions.PWM_boost_sensor_label, "\r\nPWM PID control. Boost sensor:  MAP");
    EXPECT_EQ(tables.captions.Pwm_Load, "\r\nPWM Load sensor:  - MAP [bar]");
    EXPECT_EQ(tables.captions.Ign2nd_Load, "\r\n1st Ignition comp load sensor:  - RPM");
    EXPECT_EQ(tables.captions.Fuel_Load_Header, "Load [bar]");
    EXPECT_EQ(Text(Table_Id::Ign_Comp1, 21, 0), "10000");
    EXPECT_EQ(Text(Table_Id::Ign_Comp1, 0, 1), "");
    EXPECT_EQ(Grid_Size(ctx, Table_Id::Afr).rows, 18);
    EXPECT_EQ(Text(Table_Id::Afr, 17, 0), "5.00");
    EXPECT_EQ(Text(Table_Id::Afr, 0, 2), "AFR");
    EXPECT_EQ(Table_Chart(ctx, Table_Id::Pwm1).x.back(), 2.55);
}

TEST_F(Tables, TheMainFormsCompensationSliders) {
    int updates = 0;
    Scroll_Shown shown = Main_scroll_Change(ctx, 93, image.CardByte[93], [&] { ++updates; });
    EXPECT_EQ(updates, 0);
    EXPECT_EQ(image.ChangedByte[93], 0);
    EXPECT_EQ(shown.text, "100.0");
    shown = Main_scroll_Change(ctx, 92, 255, [&] { ++updates; });
    EXPECT_EQ(updates, 1);
    EXPECT_EQ(shown.text, "10000");
    EXPECT_EQ(shown.unit, "rpm");
    image.CardByte[74] = 3;
    Update_Tabs(ctx);
    shown = Main_Scroll_Text(ctx, 92);
    EXPECT_EQ(shown.text, "2.55");
    EXPECT_EQ(shown.unit, "bar");
    Chart_Data curve = Comp_Curve_Chart(ctx, 92);
    ASSERT_EQ(curve.x.size(), 4u);
    EXPECT_EQ(curve.y[0], 100);
}

TEST(ShippedImage, LoadsWithoutAnyRepair) {
    auto content = Load_Qxs_File(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3_Default_Settings.qxs");
    ASSERT_TRUE(content);
    Debug_Log log;
    Settings_Image image;
    Init_Cardbyte(image, log);
    std::copy(content->bytes.begin(), content->bytes.end(), image.CardByte.begin());
    Sensor_State sensors;
    Reset_Sensor_Table(sensors.table);
    Tables_State tables;
    Scripted_Dialogs dialogs;
    Undo_List undo;
    Tables_Context ctx{image, sensors, tables, log, dialogs, undo};
    Update_Tabs(ctx);
    Update_All(ctx);
    EXPECT_TRUE(dialogs.informed.empty());
    EXPECT_EQ(std::count(image.ChangedByte.begin(), image.ChangedByte.end(), 255), 0);
}

} // namespace
} // namespace quorlen
