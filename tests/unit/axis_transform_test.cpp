// Axis steps, the resolution sliders, the size conversion and the sensor choices that keep
// physical values, on the shipped settings and sensors loaded as the program loads them.

#include "cli/cli_tables.h"
#include "engine/analog_inputs.h"
#include "engine/axis_transform.h"
#include "support/cli_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>

namespace quorlen {
namespace {

const std::string Data = QUORLEN_DATA_DIR;

class Shipped : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(loaded.Load(Data + "/RZ400_800M3_Default_Settings.qxs"));
        app.image.ChangedByte.fill(0);
    }

    Map_Block Fuel() const { return Head_Block(app.image, Map_Head::Fuel); }
    void Set_Steps(int first, const std::vector<int>& steps) {
        for (std::size_t i = 0; i < steps.size(); ++i)
            app.image.CardByte[static_cast<std::size_t>(first) + i] = static_cast<std::uint8_t>(steps[i]);
        hooks.Update_All();
    }
    std::vector<int> Steps(int first, int count) const {
        return {app.image.CardByte.begin() + first, app.image.CardByte.begin() + first + count};
    }
    // The fuel byte at each (speed, load) breakpoint of the map as it is now.
    std::map<std::pair<std::string, std::string>, int> Fuel_Cells() {
        std::map<std::pair<std::string, std::string>, int> cells;
        auto rpm = Rpm_Axis_Texts(ctx, Map_Head::Fuel);
        auto load = Load_Axis_Texts(ctx, Map_Head::Fuel);
        for (int r = 1; r <= Fuel().rows; ++r)
            for (int c = 1; c <= Fuel().cols; ++c)
                cells[{rpm[static_cast<std::size_t>(c - 1)], load[static_cast<std::size_t>(r - 1)]}] =
                    app.image.CardByte[static_cast<std::size_t>(Fuel().Cell(r, c))];
        return cells;
    }

    // Closed after `loaded`, which writes what it logged there as it goes.
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> err{std::tmpfile(), &std::fclose};
    cli::Cli_Tables loaded{err.get(), Data + "/RZ400_800M3.ini"};
    App_Context& app = loaded.app;
    Tables_Context tables = loaded.Context();
    Table_Hooks hooks{[this] { Update_Tabs(tables); }, [this] { Show_Right_Tabs(tables); },
                      [this] { Update_All(tables); }};
    Axis_Context ctx{app.image, app.sensors, app.undo, app.log};
    Transform_State state;
};

using Cells = std::map<std::pair<std::string, std::string>, int>;

// Compares a and b at the breakpoints both hold (and `also` holds, when given).
int Common_Breakpoints_Within_One_Byte(const Cells& a, const Cells& b, const Cells* also = nullptr) {
    int compared = 0;
    for (const auto& [point, byte] : a) {
        auto it = b.find(point);
        if (it == b.end() || (also != nullptr && also->count(point) == 0)) continue;
        EXPECT_LE(std::abs(it->second - byte), 1) << point.first << " rpm, " << point.second;
        ++compared;
    }
    return compared;
}

TEST_F(Shipped, TheFuelMapGoesTo21x16AndBackWithTheSameFuelAtEveryBreakpointBothHold) {
    ASSERT_EQ(Fuel().cols, 19);
    ASSERT_EQ(Fuel().rows, 18);
    const auto original = Fuel_Cells();
    const auto rpm_steps = Steps(Fuel().Rpm_Step(1), 19);
    const auto load_steps = Steps(Fuel().Load_Step(1), 18);

    Save_transform(ctx, state);
    Map_Size_Click(tables, Map_Head::Fuel, 1, hooks);
    ASSERT_EQ(Fuel().cols, 21);
    // The speeds of the old axis and two more above; the first 16 loads.
    auto wider = rpm_steps;
    wider.insert(wider.end(), {16, 16});
    Set_Steps(Fuel().Rpm_Step(1), wider);
    Set_Steps(Fuel().Load_Step(1), std::vector<int>(load_steps.begin(), load_steps.begin() + 16));
    ASSERT_TRUE(Convert_Transform(ctx, state, hooks));
    const auto converted = Fuel_Cells();
    EXPECT_EQ(Common_Breakpoints_Within_One_Byte(original, converted), 19 * 16);
    // Above the old axis the last saved column carries on.
    auto rpm = Rpm_Axis_Texts(ctx, Map_Head::Fuel);
    auto load = Load_Axis_Texts(ctx, Map_Head::Fuel);
    EXPECT_EQ(converted.at({rpm[20], load[5]}), converted.at({rpm[18], load[5]}));

    Save_transform(ctx, state);
    Map_Size_Click(tables, Map_Head::Fuel, 0, hooks);
    Set_Steps(Fuel().Rpm_Step(1), rpm_steps);
    Set_Steps(Fuel().Load_Step(1), load_steps);
    ASSERT_TRUE(Convert_Transform(ctx, state, hooks));
    const auto back = Fuel_Cells();
    EXPECT_EQ(Common_Breakpoints_Within_One_Byte(original, back, &converted), 19 * 16);
    EXPECT_EQ(Common_Breakpoints_Within_One_Byte(converted, back), 19 * 16);
}

TEST_F(Shipped, BetweenBreakpointsTheMapIsInterpolatedAndBelowTheFirstSpeedFromTheLoad) {
    Save_transform(ctx, state);
    const Saved_Grid& saved = state.fuel.grid;
    // A quarter of the way up to the first speed, then half way between the first two.
    auto steps = Steps(Fuel().Rpm_Step(1), 19);
    ASSERT_EQ(steps[0], 8);
    ASSERT_EQ(steps[1], 4);
    std::vector<int> finer{2, 8, 2};
    finer.insert(finer.end(), steps.begin() + 2, steps.end() - 1);
    Set_Steps(Fuel().Rpm_Step(1), finer);
    ASSERT_TRUE(Convert_Transform(ctx, state, hooks));
    const Map_Block block = Fuel();
    for (int r : {1, 9, 18}) {
        double load = saved.Number(r, 0);
        double first = saved.Number(r, 1);
        double second = saved.Number(r, 2);
        EXPECT_EQ(app.image.CardByte[block.Cell(r, 1)], Fuel_Transform_Byte(load * 0.75 + first * 0.25)) << r;
        EXPECT_EQ(app.image.CardByte[block.Cell(r, 2)], Fuel_Transform_Byte((first + second) / 2)) << r;
        EXPECT_EQ(app.image.CardByte[block.Cell(r, 3)], Fuel_Transform_Byte(second)) << r;
    }
    EXPECT_EQ(state.fuel.grid2.At(0, 2), "625");
}

TEST_F(Shipped, ConvertingWithNothingSavedChangesNothing) {
    auto before = app.image.CardByte;
    EXPECT_FALSE(Convert_Ign_Transform(ctx, state, hooks));
    EXPECT_EQ(app.image.CardByte, before);
}

// Each change is one step back: the snapshot holds the image from before the change.
TEST_F(Shipped, UndoTakesEachAxisChangeBackWhole) {
    test::Temp_Dir dir; // the sensor choice writes the configuration
    test::Write_File(dir.File("q.ini"), test::Read_File(Data + "/RZ400_800M3.ini"));
    app.ini = Ini_File(dir.File("q.ini"), dir.File("QXS.new"));
    Analog_Choice_Context choice{app.sensors, app.image,      app.ini, app.texts,
                                 app.log,     loaded.dialogs, app.undo};
    app.image.CardByte[174] =
        static_cast<std::uint8_t>((app.image.CardByte[174] & 0xF0) | 2); // fuel on throttle
    hooks.Update_Tabs();
    Save_transform(ctx, state);
    const std::vector<std::function<void()>> changes = {
        [&] { Map_Size_Click(tables, Map_Head::Fuel, 1, hooks); },
        [&] { ASSERT_TRUE(Convert_Transform(ctx, state, hooks)); },
        [&] { d_3D_RPM_scroll_Change(ctx, Map_Head::Fuel, 4, hooks); },
        [&] { Table_Insert(ctx, Map_Head::Fuel, Axis_Focus::Map, 2, 4, hooks); },
        [&] { Throttle_Load_Steps(ctx, 20, 230, hooks); },
        [&] { Sensor_Choice_Click(choice, 3, 13, {}); },
    };
    std::vector<decltype(app.image.CardByte)> before;
    for (const auto& change : changes) {
        before.push_back(app.image.CardByte);
        change();
        EXPECT_NE(app.image.CardByte, before.back()) << before.size();
    }
    for (auto it = before.rbegin(); it != before.rend(); ++it) {
        edit_undo_Click(app.undo, app.image, hooks.Update_All);
        EXPECT_EQ(app.image.CardByte, *it) << before.rend() - it;
    }
}

TEST_F(Shipped, TheSlidersSetEveryStepAndTheButtonsOnlyTheSelectedOnes) {
    const int snapshots = app.undo.UndoIndex;
    d_3D_RPM_scroll_Change(ctx, Map_Head::Ignition, 3, hooks);
    const Map_Block ign = Head_Block(app.image, Map_Head::Ignition);
    EXPECT_EQ(Steps(ign.Rpm_Step(1), ign.cols), std::vector<int>(static_cast<std::size_t>(ign.cols), 4));
    EXPECT_EQ(Rpm_Axis_Texts(ctx, Map_Head::Ignition)[2], "750");
    EXPECT_EQ(app.image.ChangedByte[ign.Rpm_Step(7)], Changed_Mark);
    EXPECT_EQ(app.undo.UndoIndex, snapshots + 1);
    EXPECT_EQ(Resolution_Of(app.image, Map_Head::Ignition, Axis_Focus::Rpm), 3);
    d_3D_MAP_scroll_Change(ctx, Map_Head::Ignition, 0, hooks); // 2^-1 rounds to 0
    EXPECT_EQ(Steps(ign.Load_Step(1), 3), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(Resolution_Of(app.image, Map_Head::Ignition, Axis_Focus::Map), 0);

    // Increase over steps 5 down to 3, Insert after steps 1 and 2: 2 and 3 halve.
    Table_Increase(ctx, Map_Head::Ignition, Axis_Focus::Rpm, 5, 3, hooks);
    EXPECT_EQ(Steps(ign.Rpm_Step(1), 6), (std::vector<int>{4, 4, 8, 8, 8, 4}));
    Table_Insert(ctx, Map_Head::Ignition, Axis_Focus::Rpm, 1, 2, hooks);
    EXPECT_EQ(Steps(ign.Rpm_Step(1), 6), (std::vector<int>{4, 2, 4, 8, 8, 4}));
    Table_Decrease(ctx, Map_Head::Ignition, Axis_Focus::Rpm, 1, 1, hooks);
    EXPECT_EQ(app.image.CardByte[ign.Rpm_Step(1)], 3); // an offset, kept by the next update
    Table_Increase(ctx, Map_Head::Ignition, Axis_Focus::Rpm, 17, 40, hooks);
    EXPECT_EQ(app.image.CardByte[ign.Rpm_Step(18)], 8);
    EXPECT_EQ(app.image.CardByte[ign.Rows_Byte()], ign.rows); // the count after the axis is untouched
}

TEST(AxisSteps, TheButtonsKeepPowersOfTwoAndTheFirstStepAsAnOffset) {
    EXPECT_EQ(Increased_Step(128, 2), 128);
    EXPECT_EQ(Increased_Step(0, 2), 1);
    EXPECT_EQ(Increased_Step(3, 2), 6);
    EXPECT_EQ(Increased_Step(64, 5), 128);
    EXPECT_EQ(Increased_Step(3, 1), 4);
    EXPECT_EQ(Increased_Step(255, 1), 255);
    EXPECT_EQ(Decreased_Step(1, 2), 1);
    EXPECT_EQ(Decreased_Step(0, 1), 0);
    EXPECT_EQ(Decreased_Step(3, 2), 2); // 1.5, to the even
    EXPECT_EQ(Decreased_Step(128, 2), 64);
    EXPECT_EQ(Inserted_Step(1, 1), 0);
    EXPECT_EQ(Inserted_Step(1, 3), 1);
    EXPECT_EQ(Inserted_Step(16, 1), 8);
    EXPECT_EQ(Resolution_Step(0), 0);
    EXPECT_EQ(Resolution_Step(1), 1);
    EXPECT_EQ(Resolution_Step(8), 128);
    EXPECT_EQ(d_3D_RPM_text(0), "0");
    EXPECT_EQ(d_3D_RPM_text(1), "62.5");
    EXPECT_EQ(d_3D_RPM_text(4), "500");
}

TEST(AxisSteps, SpeedsAreRunningSumsThatStopAt255) {
    Settings_Image image;
    image.CardByte[300] = 4;
    image.CardByte[301] = 4;
    image.CardByte[302] = 4;
    image.CardByte[303] = 128;
    image.CardByte[304] = 128;
    image.CardByte[305] = 0;
    auto sums = Axis_Sums(image, 300, 6);
    EXPECT_EQ(sums, (std::vector<int>{4, 8, 12, 140, 255, 255}));
    EXPECT_EQ(Rpm_Axis_Text(sums[0]), "250");
    EXPECT_EQ(Rpm_Axis_Text(sums[2]), "750");
    EXPECT_EQ(Rpm_Axis_Text(sums[4]), "15938");
}

TEST(AxisSteps, ConvertedValuesAreCodedInTheMapsScales) {
    EXPECT_EQ(Fuel_Transform_Byte(0), 0);
    EXPECT_EQ(Fuel_Transform_Byte(0.3), 0);
    EXPECT_EQ(Fuel_Transform_Byte(0.6), 1);
    EXPECT_EQ(Fuel_Transform_Byte(1.06), 1);
    EXPECT_EQ(Fuel_Transform_Byte(2.44), 24);
    EXPECT_EQ(Fuel_Transform_Byte(2.5), 25);
    EXPECT_EQ(Fuel_Transform_Byte(40), 255);
    for (int b = 0; b < 256; ++b) {
        EXPECT_EQ(Fuel_Transform_Byte(std::stod(Fuel_Cell_Text(static_cast<std::uint8_t>(b)))), b);
        EXPECT_EQ(Ign_Transform_Byte(std::stod(Ign_Cell_Text(static_cast<std::uint8_t>(b)))), b);
    }
}

TEST_F(Shipped, TheThrottleCalibrationLaysOutTheLoadOfAThrottleMap) {
    auto before = app.image.CardByte;
    Throttle_Load_Steps(ctx, 30, 230, hooks); // the maps run on MAP: nothing to do
    EXPECT_EQ(app.image.CardByte, before);

    app.image.CardByte[174] = static_cast<std::uint8_t>((app.image.CardByte[174] & 0xF0) | 2);
    hooks.Update_Tabs();
    Throttle_Load_Steps(ctx, 30, 230, hooks);
    const Map_Block fuel = Fuel(); // 18 rows: 16 x 18 + 30 is the first to reach 230
    std::vector<int> expected(18, 16);
    expected[0] = 30;
    EXPECT_EQ(Steps(fuel.Load_Step(1), 18), expected);
    const Map_Block ign = Head_Block(app.image, Map_Head::Ignition); // 11 rows: 32
    EXPECT_EQ(app.image.CardByte[ign.Load_Step(1)], 30);
    EXPECT_EQ(app.image.CardByte[ign.Load_Step(11)], 32);
    Throttle_Load_Steps(ctx, 200, 210, hooks); // a short travel: steps of 1
    EXPECT_EQ(app.image.CardByte[fuel.Load_Step(1)], 200);
    EXPECT_EQ(app.image.CardByte[fuel.Load_Step(18)], 1);
}

TEST_F(Shipped, AnotherCoolantSensorKeepsTheTemperaturesAndOnlyThose) {
    // The choice is written to the configuration: a copy of it.
    test::Temp_Dir dir;
    test::Write_File(dir.File("q.ini"), test::Read_File(Data + "/RZ400_800M3.ini"));
    app.ini = Ini_File(dir.File("q.ini"), dir.File("QXS.new"));
    Analog_Choice_Context choice{app.sensors, app.image,      app.ini, app.texts,
                                 app.log,     loaded.dialogs, app.undo};
    const int bosch = app.sensors.Sensor_Of_Input(4);
    ASSERT_EQ(app.sensors.table.Name(bosch), "Coolant temp Bosch NTC");
    auto degrees = [&](int address, int s) {
        return *Forward_Sensor_Value(app.sensors.table, s,
                                     app.image.CardByte[static_cast<std::size_t>(address)]);
    };
    std::map<int, double> kept;
    for (int a : Physical_Addresses(app.image, 4))
        kept[a] = degrees(a, bosch);
    ASSERT_TRUE(kept.count(177) && kept.count(30));
    EXPECT_TRUE(Physical_Addresses(app.image, 3).empty());
    const auto map_input = app.image.CardByte;
    int updates = 0;
    Analog_Hooks refresh{[&] { ++updates; }, [&] { ++updates; }, [&] { ++updates; }, {}};
    Sensor_Choice_Click(choice, 3, 8, refresh);
    EXPECT_EQ(updates, 3);
    for (const auto& [a, value] : kept)
        EXPECT_EQ(app.image.CardByte[static_cast<std::size_t>(a)], map_input[static_cast<std::size_t>(a)]);

    Sensor_Choice_Click(choice, 4, 15, refresh); // Coolant temp GM NTC
    EXPECT_EQ(app.sensors.Sensor_Of_Input(4), 15);
    int inside = 0;
    for (const auto& [a, value] : kept) {
        // A temperature past the ends of the new table finds no raw reading and reads raw 0.
        if (value > 159.7 || value < -48.8) continue;
        EXPECT_NEAR(degrees(a, 15), value, 3.0) << a; // within a step of the table
        ++inside;
    }
    EXPECT_GE(inside, 3);
    EXPECT_EQ(app.image.CardByte[887], 15);
    EXPECT_EQ(app.ini.Read_Ini("an_sel4"), "15");
    EXPECT_EQ(app.ini.Read_Ini("an_sel3"), "8");
}

TEST(Physical, PwmMapsOnTheCoolantInputAreNamed) {
    Settings_Image image;
    image.CardByte[186] = 0x44; // PWM1 and PWM2 on input 4
    image.CardByte[187] = 0x30;
    image.CardByte[235] = 0x13; // digital output 2 watches input 4
    EXPECT_EQ(Physical_Map_Messages(image, 4),
              (std::vector<std::string>{"Check PWM1 map. Map is changed", "Check PWM2 map. Map is changed"}));
    EXPECT_TRUE(Physical_Map_Messages(image, 3).empty());
    auto addresses = Physical_Addresses(image, 4);
    EXPECT_NE(std::find(addresses.begin(), addresses.end(), 238), addresses.end());
    EXPECT_EQ(std::find(addresses.begin(), addresses.end(), 233), addresses.end());
}

} // namespace
} // namespace quorlen
