#include "analysis/map_cell.h"

#include "support/hand_log.h"

#include <gtest/gtest.h>

#include <vector>

namespace quorlen {
namespace {

using test::Hand_Log;

TEST(Locate_On_Axis, Follows_The_Cursor_Rule_At_Both_Ends_And_Between) {
    const std::vector<double> b{500, 1000, 2000, 3000};

    // Above the last breakpoint: visibly inside the last cell, and all weight on its point.
    Axis_Spot above = Locate_On_Axis(b, 9000);
    EXPECT_EQ(above.cell, 4);
    EXPECT_DOUBLE_EQ(above.fraction, 0.6);
    EXPECT_EQ(above.lower, 4);
    EXPECT_DOUBLE_EQ(above.upper_weight, 1);
    EXPECT_EQ(Locate_On_Axis(b, 3000).cell, 4); // at the last one too

    // A speed of 0 stands at the left edge of the first cell; below b(1) the fraction is v / b(1).
    Axis_Spot zero = Locate_On_Axis(b, 0);
    EXPECT_EQ(zero.cell, 1);
    EXPECT_DOUBLE_EQ(zero.fraction, 0);
    EXPECT_DOUBLE_EQ(Locate_On_Axis(b, 250).fraction, 0.5);
    EXPECT_EQ(Locate_On_Axis(b, 250).lower, 1);

    Axis_Spot between = Locate_On_Axis(b, 2500);
    EXPECT_EQ(between.cell, 4);
    EXPECT_DOUBLE_EQ(between.fraction, 0.5);
    EXPECT_EQ(between.lower, 3);
    EXPECT_DOUBLE_EQ(between.upper_weight, 0.5);
}

TEST(Locate_On_Axis, A_Value_On_A_Breakpoint_Weighs_On_That_Point_Alone) {
    const std::vector<double> b{500, 1000, 2000, 3000};
    Axis_Spot on = Locate_On_Axis(b, 1000);
    // The first breakpoint above 1000 is 2000: cell 3 at its left edge, so point 2 takes all.
    EXPECT_EQ(on.cell, 3);
    EXPECT_DOUBLE_EQ(on.fraction, 0);
    EXPECT_EQ(on.lower, 2);
    EXPECT_DOUBLE_EQ(on.upper_weight, 0);
}

TEST(Locate_On_Axis, Equal_Breakpoints_And_Odd_Axes_Stay_In_Range) {
    // Step bytes of 0 repeat a point; the walk passes over the repeat.
    const std::vector<double> flat{500, 1000, 1000, 1000, 2000};
    Axis_Spot spot = Locate_On_Axis(flat, 1500);
    EXPECT_EQ(spot.cell, 5);
    EXPECT_DOUBLE_EQ(spot.fraction, 0.5);
    EXPECT_EQ(Locate_On_Axis(flat, 1000).cell, 5);

    // An axis of zeros (all steps 0) puts everything in the last cell.
    const std::vector<double> zeros{0, 0, 0};
    EXPECT_EQ(Locate_On_Axis(zeros, 0).cell, 3);
    // A first breakpoint of 0 with a value below it (a sensor that reads negative).
    const std::vector<double> from_zero{0, 1};
    EXPECT_DOUBLE_EQ(Locate_On_Axis(from_zero, -0.5).fraction, 0);
    // A falling axis (a temperature sensor as load) still gives fractions from 0 to 1.
    const std::vector<double> falling{100, 80, 60};
    Axis_Spot f = Locate_On_Axis(falling, 90);
    EXPECT_GE(f.fraction, 0);
    EXPECT_LE(f.fraction, 1);
    EXPECT_EQ(Locate_On_Axis(std::vector<double>{}, 5).cell, 1);
}

class Map_Cell_Test : public Hand_Log {};

TEST_F(Map_Cell_Test, Reads_The_Axes_Of_Either_Map_From_The_Image) {
    Map_Locator fuel = Make_Map_Locator(image, sensors, *log, Table_Id::Fuel_3D);
    ASSERT_EQ(fuel.cols, 19);
    ASSERT_EQ(fuel.rows, 18);
    EXPECT_DOUBLE_EQ(fuel.rpm_points[0], 500);
    EXPECT_DOUBLE_EQ(fuel.rpm_points[18], 9500);
    EXPECT_DOUBLE_EQ(fuel.load_points[0], 0.08);
    EXPECT_DOUBLE_EQ(fuel.load_points[17], 1.44);

    Map_Locator ign = Make_Map_Locator(image, sensors, *log, Table_Id::Ignition_3D);
    EXPECT_EQ(ign.cols, 18);
    EXPECT_EQ(ign.rows, 11);

    // Steps that sum past 255 saturate: 15937.5 rpm for every further column.
    for (int c = 1; c <= 19; ++c)
        image.CardByte[static_cast<std::size_t>(image.FuelBlockBase + c)] = 64;
    fuel = Make_Map_Locator(image, sensors, *log, Table_Id::Fuel_3D);
    EXPECT_DOUBLE_EQ(fuel.rpm_points[3], 15937.5);
    EXPECT_DOUBLE_EQ(fuel.rpm_points[18], 15937.5);
}

TEST_F(Map_Cell_Test, Places_A_Row_By_Its_Speed_And_Its_Raw_Load_Through_The_Tuning_Sensor) {
    const Map_Locator fuel = Make_Map_Locator(image, sensors, *log, Table_Id::Fuel_3D);
    // 2750 rpm halfway between the 2500 and 3000 columns; raw 20 halfway between 0.16 and 0.24 bar.
    // The log's own MAP sensor reads another number (0.29 bar); the map's sensor decides.
    auto cell = Locate_Row(fuel, Row(Add_Row(2750, 20)));
    ASSERT_TRUE(cell);
    EXPECT_EQ(cell->column.cell, 6);
    EXPECT_DOUBLE_EQ(cell->column.fraction, 0.5);
    EXPECT_EQ(cell->row.cell, 3);
    EXPECT_DOUBLE_EQ(cell->row.fraction, 0.5);

    // On a breakpoint of each axis: one point takes the whole row.
    cell = Locate_Row(fuel, Row(Add_Row(3000, 24)));
    ASSERT_TRUE(cell);
    EXPECT_EQ(cell->column.lower, 6);
    EXPECT_DOUBLE_EQ(cell->column.upper_weight, 0);
    EXPECT_EQ(cell->row.lower, 3);
    EXPECT_DOUBLE_EQ(cell->row.upper_weight, 0);

    // An empty RPM cell (a row the calculation skipped) is no place at all.
    const int r = Add_Row(3000, 24);
    log->Log_Data(r, log->columns.Col_RPM) = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(Locate_Row(fuel, Row(r)));
}

TEST_F(Map_Cell_Test, Reads_Inputs_Without_A_Raw_Copy_By_Undoing_Their_Log_Sensor) {
    // Load on input 5: the log holds it in column 16 through "Analog_0-5V" (linear).
    image.CardByte[174] = 5;
    log->Log_Signal_Tab[15].sensor = 3;
    const int r = Add_Row(1000, 0);
    log->Log_Data(r, 16) = 0.01953125 * 40; // what the calculation makes of raw 40
    const Map_Locator fuel = Make_Map_Locator(image, sensors, *log, Table_Id::Fuel_3D);
    EXPECT_EQ(fuel.load_input_number, 5);
    ASSERT_TRUE(Row_Load(fuel, Row(r)));
    EXPECT_DOUBLE_EQ(*Row_Load(fuel, Row(r)), 0.40);

    // Through a table sensor: "WB_Lambda" is flat at its ends and rises between.
    log->Log_Signal_Tab[15].sensor = 16;
    ASSERT_EQ(log->Log_Sens_Tab[16][0], "WB_Lambda");
    const Input_Reader lambda = Make_Input_Reader(*log, 5);
    log->Log_Data(r, 16) = 1.0; // point 17, raw 128
    ASSERT_TRUE(lambda.Raw(Row(r)));
    EXPECT_DOUBLE_EQ(*lambda.Raw(Row(r)), 128);
    log->Log_Data(r, 16) = 0.5; // below everything the sensor can say
    EXPECT_FALSE(lambda.Raw(Row(r)));

    // The boost-controller layout logs the first four inputs only.
    Load_Default_Signal_Names(*log);
    EXPECT_EQ(Input_Column(log->columns, 5), -1);
    EXPECT_EQ(Input_Column(log->columns, 4), 5);
    EXPECT_FALSE(Make_Map_Locator(image, sensors, *log, Table_Id::Fuel_3D).load_input.Raw(Row(r)));
}

TEST_F(Map_Cell_Test, A_Load_On_Engine_Speed_Or_On_A_Missing_Sensor) {
    image.CardByte[174] = 0; // engine speed
    Map_Locator fuel = Make_Map_Locator(image, sensors, *log, Table_Id::Fuel_3D);
    EXPECT_TRUE(fuel.load_is_rpm);
    auto cell = Locate_Row(fuel, Row(Add_Row(1000, 0)));
    ASSERT_TRUE(cell);
    EXPECT_EQ(cell->row.lower, 2); // 1000 rpm is the second point of a 500-step axis
    EXPECT_EQ(cell->column.lower, 2);

    image.CardByte[174] = 3;
    sensors.inputs.An_Sel[3] = 99; // no such sensor
    fuel = Make_Map_Locator(image, sensors, *log, Table_Id::Fuel_3D);
    EXPECT_FALSE(Locate_Row(fuel, Row(Add_Row(1000, 10))));
}

} // namespace
} // namespace quorlen
