#include "engine/engine_catalogue.h"

#include "core/run_error.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace quorlen;
using quorlen::test::Temp_Dir;

namespace {

Engine_Config_Table Shipped_Catalogue() {
    Ini_File ini(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini", "");
    Engine_Config_Table tab;
    Load_Engine_Config_Tab(tab, ini);
    return tab;
}

} // namespace

TEST(EngineCatalogue, ShippedFileFillsTheListAndStopsAfter49Lines) {
    Engine_Config_Table tab = Shipped_Catalogue();
    EXPECT_EQ(tab.At(0, Eng_Car_Example), "Car example"); // the heading line
    auto items = Engine_Combo_Items(tab);
    ASSERT_EQ(items.size(), 256u);
    // Image value 0 is row 1, and its item is numbered 1.
    EXPECT_EQ(items[0],
              "1. EX: Generic 4 cyl base setting Crank 36-1  No cam  No cam 2  No TDC  1-3-4-2  4 cylinders");
    // The 50th line of the file is never read: its row stays empty, its item shows blanks.
    EXPECT_EQ(tab.At(49, Eng_Car_Example), "");
    EXPECT_EQ(items[48], "49.            ");
    EXPECT_EQ(items[49], "50. Not supported ");
    EXPECT_EQ(items[255], "256. Not supported ");
}

TEST(EngineCatalogue, ShortLineFillsMissingColumnsByWrappingAround) {
    Engine_Config_Table tab;
    std::string debug;
    Fill_Engine_Config_Row(tab, 3, "7\tCrank 60-2\tNo cam", &debug);
    EXPECT_EQ(tab.At(3, 0), "7");
    EXPECT_EQ(tab.At(3, Eng_Crank_Sensor), "Crank 60-2");
    EXPECT_EQ(tab.At(3, Eng_Cam_Sensor), "No cam");
    // The first missing column reads the first field; the reader then goes round the entry
    // again, so further ones repeat the fields in turn.
    EXPECT_EQ(tab.At(3, Eng_Cam2_Sensor), "7");
    EXPECT_EQ(tab.At(3, Eng_TDC_Sensor), "Crank 60-2");
    EXPECT_EQ(tab.At(3, Eng_Firing_Order), "No cam");
    EXPECT_EQ(tab.At(3, Eng_Ignition_Type), "7");
    EXPECT_EQ(tab.At(3, Eng_Fuel_Channel_To_Cyl), "Crank 60-2");
    EXPECT_EQ(tab.At(3, 23), "");
    EXPECT_EQ(debug, "");
}

TEST(EngineCatalogue, RowsOutsideTheTableReadEmptyOrFault) {
    Engine_Config_Table tab = Shipped_Catalogue();
    // Image byte 255 asks for row 256.
    EXPECT_EQ(tab.Cell(Engine_Config_Row(255), Eng_Car_Example), "");
    EXPECT_THROW(tab.At(Engine_Config_Row(255), Eng_Car_Example), Run_Error);
    Engine_Layout layout = Engine_Layout_Of(tab, 256);
    EXPECT_EQ(layout.crank_sensor, "");
    EXPECT_EQ(layout.tooth_degrees, 0);
    EXPECT_THROW(Fill_Engine_Config_Row(tab, 51, "x"), Run_Error);
}

TEST(EngineCatalogue, RecommendedTeeth) {
    EXPECT_EQ(Recommended_Fuel_Teeth(6, true), 77); // 102/6 + 360/6
    EXPECT_EQ(Recommended_Fuel_Teeth(6, false), 17);
    EXPECT_EQ(Recommended_Fuel_Teeth(10, true), 46); // 46.2
    // Ties go to the even number: 102/12 = 8.5, 102/4 + 90 = 115.5.
    EXPECT_EQ(Recommended_Fuel_Teeth(12, false), 8);
    EXPECT_EQ(Recommended_Fuel_Teeth(4, true), 116);
    EXPECT_THROW(Recommended_Fuel_Teeth(0, true), Run_Error);
    EXPECT_THROW(Recommended_Fuel_Teeth(0.001, true), Run_Error);
    EXPECT_EQ(Recommended_Teeth_Text(77), "Recomended: 77 teeth");
}

TEST(EngineCatalogue, FieldsOfARow) {
    Engine_Config_Table tab;
    Fill_Engine_Config_Row(tab, 5,
                           "4\tCrank 60-2\tCam 1 tooth\tNo cam 2\tNo TDC\t1-3-4-2\tCoil on plug\tSequential\t"
                           "EX: VW EX:1.8T\t-\t4 cylinders\tIn-line\t-\t-\t,0,3,58,\t-\tA-B-C-D\t114\t6 deg\t"
                           ">3.033\tA-B-C-D\tA-1 B-3 C-4 D-2\tA-1 B-3 C-4 D-2");
    EXPECT_EQ(Config_Tooth_Degrees_Of(tab, 5), 6); // the leading number
    EXPECT_TRUE(Sequential_Fuel_Of(tab, 5));
    EXPECT_EQ(Car_Example_Caption(tab.At(5, Eng_Car_Example)), " VW 1.8T");
    EXPECT_TRUE(Forbidden_Tooth(tab, 5, 3));
    EXPECT_TRUE(Forbidden_Tooth(tab, 5, 58));
    EXPECT_FALSE(Forbidden_Tooth(tab, 5, 5)); // "5" stands inside "58" only
    EXPECT_FALSE(Forbidden_Tooth(tab, 6, 0)); // an empty row forbids nothing

    Engine_Config_State engine;
    engine.Engine_Config_Tab = tab;
    Take_Engine_Row(engine, 5);
    EXPECT_EQ(engine.Main_Fuel_label, "Sequential fuel");
    tab.cells[5][Eng_Fuel_System] = "Semiseq (batch)";
    engine.Engine_Config_Tab = tab;
    Take_Engine_Row(engine, 5);
    EXPECT_FALSE(engine.Sequential_Fuel);
    EXPECT_EQ(engine.Main_Fuel_label, "NOTICE!\r\nSemi sequential fuel");
    EXPECT_EQ(engine.Setup_Fuel_label, "Semi sequential fuel");
}

TEST(EngineCatalogue, CrankWheels) {
    auto w = Crank_Wheel_Of("Crank 36-1");
    ASSERT_TRUE(w);
    EXPECT_EQ(w->positions, 36);
    EXPECT_EQ(w->gaps, std::vector<int>{1});
    w = Crank_Wheel_Of("Crank 36-2-2-2");
    ASSERT_TRUE(w);
    EXPECT_EQ(w->gaps, (std::vector<int>{2, 2, 2}));
    w = Crank_Wheel_Of("Crank 36 even");
    ASSERT_TRUE(w);
    EXPECT_TRUE(w->gaps.empty());
    w = Crank_Wheel_Of("Dist 24 teeth");
    ASSERT_TRUE(w);
    EXPECT_TRUE(w->on_distributor);
    EXPECT_EQ(w->positions, 24);
    EXPECT_FALSE(Crank_Wheel_Of("No cam"));
}

TEST(EngineCatalogue, MissingFileLeavesTheTableEmpty) {
    Temp_Dir dir;
    Ini_File ini(dir.File("none.ini"), "");
    Engine_Config_Table tab;
    tab.cells[1][1] = "stale";
    Load_Engine_Config_Tab(tab, ini);
    EXPECT_EQ(tab.At(1, 1), "");
    EXPECT_EQ(Engine_Combo_Item(tab, 0), "1.            ");
}
