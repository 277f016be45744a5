// The fuel and ignition map generators and the setup guide's steps.

#include "autosetup/auto_setup.h"
#include "autosetup/generator_math.h"
#include "core/atomic_file.h"
#include "files/settings_files.h"
#include "support/cli_run.h"
#include "support/fresh_tables.h"
#include "support/temp_dir.h"

#include "core/text.h"
#include "tables/cell_entry.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quorlen {
namespace {

// Figures that make the load curve f = offset + (MAP - 0.2) ms, with every speed at 100 %
// so that the speed curve leaves the bytes alone.
Auto_Fuel Plain_Fuel(const std::string& offset) {
    Auto_Fuel form;
    form.in.InjectorOffset_txt = offset;
    form.in.idle_MAP_txt = "0.2";
    form.in.max_MAP_txt = "1.2";
    form.fig.Max_Fuel_ms = 1.0;
    form.in.Volume_Efficiency_txt = {"100", "100", "100", "100", "100"};
    return form;
}

Map_Axes Axes(std::vector<std::string> load, std::vector<std::string> rpm) {
    return {std::move(load), std::move(rpm)};
}

// The byte the generator gives the lowest MAP row for an offset of `f` ms.
int Coded(const std::string& f) {
    return Autofuel_Cells(Plain_Fuel(f), Axes({"0.2"}, {"3000"}))[0];
}

TEST(Fuel_Generator, LoadCurveCodesEachRowByTheFuelRule) {
    // The lowest MAP gives the offset alone: 1.2 ms is (1.2 - 1) / 0.06 = 3.33, byte 3. Every
    // column of a row takes the row's byte; the curve runs on straight past the maximal MAP.
    auto cells = Autofuel_Cells(Plain_Fuel("1.2"), Axes({"0.2", "0.7", "1,2", "2.2"}, {"3000", "5000"}));
    EXPECT_EQ(cells, (std::vector<std::uint8_t>{3, 3, 11, 11, 20, 20, 32, 32}));

    // The edges of the two scales.
    EXPECT_EQ(Coded("0.53"), 0);
    EXPECT_EQ(Coded("0.54"), 1);
    EXPECT_EQ(Coded("1.0"), 1); // opens the injector, rather than shutting it
    EXPECT_EQ(Coded("1.06"), 1);
    EXPECT_EQ(Coded("2.49"), 24);
    EXPECT_EQ(Coded("2.5"), 25);
    EXPECT_EQ(Coded("0"), 0);
    EXPECT_EQ(Coded("-1"), 0);

    // A MAP below the lowest takes off fuel; far enough below it shuts the injector.
    EXPECT_EQ(Autofuel_Cells(Plain_Fuel("1.2"), Axes({"0.1", "-1"}, {"3000"})),
              (std::vector<std::uint8_t>{1, 0}));
}

TEST(Fuel_Generator, SpeedCurveScalesEachColumnByItsEfficiency) {
    Auto_Fuel form = Plain_Fuel("5.2"); // 5.2 ms: byte 52 in every row of the lowest MAP
    form.in.MaxRPM_txt = {"1000", "2000", "4000", "6000", "7000"};
    form.in.Volume_Efficiency_txt = {"50", "60", "100", "90", "80"};
    auto cells = Autofuel_Cells(form, Axes({"0.2"}, {"500", "1000", "1500", "3000", "4000", "6500", "8000"}));
    // At and below idle 50 %; between points straight (55 %, 80 %, 85 %); above the top 80 %.
    // The factor works on the coded byte, not on the time: 52 * 0.55 = 28.6 is 28.
    EXPECT_EQ(cells, (std::vector<std::uint8_t>{26, 26, 28, 41, 52, 44, 41}));

    // An axis wholly below the idle point is done by the first step; the others find nothing.
    cells = Autofuel_Cells(form, Axes({"0.2"}, {"250", "500", "750"}));
    EXPECT_EQ(cells, (std::vector<std::uint8_t>{26, 26, 26}));

    // The volumetric efficiency at peak torque divides the load curve, so at that speed the
    // map holds the pulse itself.
    form = Plain_Fuel("0");
    form.fig.Max_Fuel_ms = 10;
    form.in.Volume_Efficiency_txt = {"50", "50", "50", "50", "50"};
    cells = Autofuel_Cells(form, Axes({"1.2"}, {"4000"}));
    EXPECT_EQ(cells, (std::vector<std::uint8_t>{100})); // 10 / 0.5 = 20 ms is byte 200, times 0.5
}

TEST(Fuel_Generator, InputsThatDivideByZeroAreFaults) {
    Auto_Fuel form = Plain_Fuel("1.2");
    form.in.max_MAP_txt = "0.2";
    EXPECT_THROW(Autofuel_Cells(form, Axes({"0.5"}, {"3000"})), Generator_Fault);
    form = Plain_Fuel("1.2");
    form.in.Volume_Efficiency_txt[Torque_Point] = "0";
    EXPECT_THROW(Autofuel_Cells(form, Axes({"0.5"}, {"3000"})), Generator_Fault);
    // Equal neighbouring speeds only divide when a column falls between them.
    form = Plain_Fuel("1.2");
    form.in.MaxRPM_txt = {"1000", "1000", "4000", "6000", "7000"};
    EXPECT_NO_THROW(Autofuel_Cells(form, Axes({"0.5"}, {"500", "2000", "8000"})));
}

class Fuel_Figures : public ::testing::Test {
protected:
    void SetUp() override { log.Open(dir.File("Debug_file.log")); }
    std::string Log() {
        log.Close();
        return test::Read_File(dir.File("Debug_file.log"));
    }
    test::Temp_Dir dir;
    Debug_Log log;
    Auto_Fuel form;
};

TEST_F(Fuel_Figures, FuelPowerFromInjectorsPressureLambdaAndFuel) {
    form.in.NumberOfInjectors_txt = "6";
    form.in.FuelInjectorSize_txt = "300";
    form.in.FuelP_txt = "3";
    form.in.lambda_txt = "0,8";
    Update_Air_hp_label(form, log); // the labels compare fuel with air
    Update_Fuel_hp_label(form, true, log);
    EXPECT_EQ(form.fig.Fuel_hp, 288);
    EXPECT_EQ(form.in.lambda_txt, "0.8"); // the box takes the point

    form.in.FuelType_option = E85;
    Update_Fuel_hp_label(form, true, log);
    EXPECT_EQ(form.fig.Fuel_hp, 222); // 288 / 1.3 = 221.5

    form.in.FuelType_option = Petrol;
    form.in.FuelP_txt = "4,32"; // a fifth more pressure, a fifth more flow
    Update_Fuel_hp_label(form, true, log);
    EXPECT_EQ(form.fig.Fuel_hp, 346);
    EXPECT_EQ(Log().find("Error in "), std::string::npos);
}

TEST_F(Fuel_Figures, SemiSequentialHalvesThePulseAndItsRoom) {
    // 2300 cc, 85 % at 6500 rpm and 1 bar: 180 hp of air.
    Update_Air_hp_label(form, log);
    EXPECT_EQ(form.fig.Air_hp, 180);
    EXPECT_EQ(form.fig.Air_torque_hp, 218);
    Update_Fuel_hp_label(form, true, log);
    const double sequential = form.fig.Max_Fuel_ms;
    EXPECT_EQ(form.fig.Max_Pulse_ms, 15.94); // 120000 / 7000 - 1.2
    Update_Fuel_hp_label(form, false, log);
    EXPECT_DOUBLE_EQ(form.fig.Max_Fuel_ms, sequential / 2);
    EXPECT_EQ(form.fig.Max_Pulse_ms, 7.37);
    EXPECT_FALSE(form.Sequential_Fuel);
}

TEST_F(Fuel_Figures, TheLabelsTellWhatIsShort) {
    auto show = [&](int air, int fuel, int max_rev) {
        form.fig.Air_hp = air;
        form.fig.Fuel_hp_at_rpm = fuel;
        form.fig.Max_Rev = max_rev;
        Show_Setup_analyzes(form, log);
        const auto& l = form.labels;
        return l.Under_fuel_lable[0] + l.Under_fuel_lable[1] + "|" + l.Max_fuel_lable[2] +
               l.Max_fuel_lable[3];
    };
    form.in.MaxRPM_txt[Top_Point] = "7000";
    EXPECT_EQ(show(200, 150, 8000), "Not enough fuel capacity by: 25%|");
    EXPECT_EQ(show(150, 200, 6300), "Not enough fuel capacity by: 10%|You can only rev to: 6300 rpm");
    EXPECT_EQ(show(200, 150, 6300), "Not enough fuel capacity by: 10%/25%|You can only rev to: 6300 rpm");
    EXPECT_EQ(show(150, 200, 8000), "|");
    EXPECT_EQ(show(200, 150, 7000), "|"); // exactly the top speed: none of the cases

    form.fig.Max_Fuel_ms = 14.47;
    form.in.InjectorOffset_txt = "1.2";
    show(150, 200, 8000);
    EXPECT_EQ(form.labels.Air_hp_label[1], "150hp");
    EXPECT_EQ(form.labels.Fuel_hp_label[0] + form.labels.Fuel_hp_label[1], "The fuel is enough for: 200hp");
    EXPECT_EQ(form.labels.Max_fuel_lable[1], "15.7 ms");
    EXPECT_EQ(Log().find("Error in "), std::string::npos);
}

TEST_F(Fuel_Figures, FaultsLeaveTheLabelsAndGoToTheLog) {
    Update_Air_hp_label(form, log);
    Update_Fuel_hp_label(form, true, log);
    const Auto_Fuel_Labels before = form.labels;
    const int fuel_hp = form.fig.Fuel_hp;

    // 8 injectors of 5000 cc/min do not fit 16 bits.
    form.in.NumberOfInjectors_txt = "8";
    form.in.FuelInjectorSize_txt = "5000";
    Update_Fuel_hp_label(form, true, log);
    EXPECT_EQ(form.fig.Fuel_hp, fuel_hp);
    EXPECT_EQ(form.labels.Fuel_hp_label, before.Fuel_hp_label);

    // Without a lambda the fuel figures are not worked out at all.
    form.in.NumberOfInjectors_txt = "4";
    form.in.FuelInjectorSize_txt = "300";
    form.in.lambda_txt.clear();
    Update_Fuel_hp_label(form, true, log);
    EXPECT_EQ(form.fig.Fuel_hp_at_rpm, 0);
    EXPECT_EQ(form.fig.Fuel_hp, fuel_hp);
    EXPECT_NE(Log().find("Error in Update Fuel hp label Overflow"), std::string::npos);
}

// Ignition cells of one column at `speed` with the generator's defaults unless given.
std::vector<std::uint8_t> Ignition(int load, std::vector<std::string> rows, std::vector<std::string> cols,
                                   Auto_Ignition_Inputs in = {}, const std::string& top = "7000") {
    Auto_Ignition form;
    form.in = std::move(in);
    auto cells = Autoignition_Cells(form, load, top, Axes(std::move(rows), std::move(cols)));
    return cells ? *cells : std::vector<std::uint8_t>{};
}

TEST(Ignition_Generator, ManifoldPressureAdvancesInVacuumAndRetardsInBoost) {
    Auto_Ignition_Inputs in;
    in.Ign_atm_maxrpm_txt = "30";
    in.Ign_advance_txt = "10";
    in.Ign_retard_txt = "8";
    // At the top speed no speed correction; above 1500 rpm no idle corner.
    EXPECT_EQ(Ignition(Ign_Load_MAP, {"0.5", "1.0", "1.5", "2,5"}, {"7000"}, in),
              (std::vector<std::uint8_t>{175, 150, 130, 90})); // 35, 30, 26, 18 degrees

    // An axis that starts above 1 bar takes the boost rule in every row.
    EXPECT_EQ(Ignition(Ign_Load_MAP, {"1.5", "2.0"}, {"7000"}, in), (std::vector<std::uint8_t>{130, 110}));

    // Below 0 degrees is 0.
    in.Ign_atm_maxrpm_txt = "5";
    in.Ign_retard_txt = "10";
    EXPECT_EQ(Ignition(Ign_Load_MAP, {"2.0"}, {"7000"}, in), (std::vector<std::uint8_t>{0}));
}

TEST(Ignition_Generator, ThrottleAdvancesTowardsReleasedThrottle) {
    Auto_Ignition_Inputs in;
    in.Ign_atm_maxrpm_txt = "20";
    in.Ign_advance_txt = "10";
    in.Ign_retard_txt = "99"; // boost is not used on a throttle axis
    EXPECT_EQ(Ignition(Ign_Load_Throttle, {"5", "50", "100"}, {"7000"}, in),
              (std::vector<std::uint8_t>{147, 125, 100})); // 29.5, 25, 20 degrees
    EXPECT_THROW(Ignition(Ign_Load_Throttle, {"0", "0"}, {"7000"}, in),
                 Generator_Fault); // the axis ends at 0
}

TEST(Ignition_Generator, SpeedCorrectionAndTheIdleCorner) {
    Auto_Ignition_Inputs in;
    in.Ign_atm_maxrpm_txt = "30";
    in.Ign_atm_idle_txt = "10";
    in.Ign_advance_txt = "10";
    // Full load: 10 degrees at 1000 rpm, 20 at 4000, 30 at 7000 and above; the corner of
    // speeds to 1500 and loads to 0.8 bar is 15 degrees.
    auto cells = Ignition(Ign_Load_MAP, {"0.5", "1.0"}, {"1000", "1500", "4000", "7000", "8000"}, in);
    EXPECT_EQ(cells, (std::vector<std::uint8_t>{75, 75, 125, 175, 175, //
                                                50, 59, 100, 150, 150}));

    // A correction larger than the cell leaves 0.
    in.Ign_atm_idle_txt = "-40";
    EXPECT_EQ(Ignition(Ign_Load_MAP, {"1.0"}, {"1000"}, in), (std::vector<std::uint8_t>{0}));

    // On a throttle axis the corner goes to 2.5.
    in.Ign_atm_idle_txt = "10";
    EXPECT_EQ(Ignition(Ign_Load_Throttle, {"2.5", "3", "100"}, {"1500", "2000"}, in),
              (std::vector<std::uint8_t>{75, 115, 107, 115, 59, 67}));
}

TEST(Ignition_Generator, OnlyManifoldPressureAndThrottleAreKnown) {
    for (int load : {0, 1, 4, 9, Rpm_Selection}) {
        Auto_Ignition form;
        EXPECT_FALSE(Autoignition_Cells(form, load, "7000", Axes({"1.0"}, {"7000"}))) << load;
        Update_Ignition_maxload_label(form, load);
        EXPECT_EQ(form.captions[0], "") << load;
    }
    Auto_Ignition form;
    Update_Ignition_maxload_label(form, Ign_Load_MAP);
    EXPECT_EQ(form.captions[2], "Ignition retard per 1 bar (15psi) boost");
    Update_Ignition_maxload_label(form, 7);
    EXPECT_EQ(form.captions[3], "Ignition advance at vaccum");
    Update_Ignition_maxload_label(form, Ign_Load_Throttle);
    EXPECT_EQ(form.captions[0], "Ignition at full throttle and Max rpm");
    EXPECT_EQ(form.captions[1], "Ignition at full throttle and 1000rpm");

    EXPECT_THROW(Autoignition_Cells(form, Ign_Load_MAP, "1000", Axes({"1.0"}, {"7000"})), Generator_Fault);
}

TEST(Setup_Guide, StepsBeyondEitherEndDoNothingUntilTheUserWalksBack) {
    int step = Guide_Steps;
    EXPECT_EQ(Autosetup_next(step, 0), nullptr);
    EXPECT_EQ(step, 22);
    EXPECT_EQ(Autosetup_next(step, 1), Guide_Step_Of(21));

    step = 1;
    EXPECT_EQ(Autosetup_next(step, 1), nullptr);
    EXPECT_EQ(step, 0);
    EXPECT_EQ(Autosetup_next(step, 0), Guide_Step_Of(1));
    EXPECT_EQ(Guide_Text(0), "");

    step = 17;
    EXPECT_EQ(Guide_Restart(step), Guide_Step_Of(1));
    EXPECT_EQ(step, 1);
}

TEST(Setup_Guide, EveryStepHasItsLinesJoinedByAnEmptyLine) {
    for (int step = 1; step <= Guide_Steps; ++step)
        EXPECT_FALSE(Guide_Lines(step).empty()) << step;
    EXPECT_TRUE(Guide_Lines(22).empty());
    EXPECT_EQ(Guide_Text(21), "Congratulation, it is time to make a first start attemt!");
    EXPECT_EQ(Guide_Text(3), "Select the right cam and crank setup to match your engine. \r\n\r\nLater you "
                             "might have to change the trigger slope at this page, depending on if you have "
                             "positive or negative slope");
}

TEST(Setup_Guide, OnlyTheGeneratorStepsSwitchTheFrames) {
    for (int step = 1; step <= Guide_Steps; ++step) {
        const Guide_Frame frame = Guide_Step_Of(step)->frame;
        EXPECT_EQ(frame, step == 6   ? Guide_Frame::Fuel
                         : step == 7 ? Guide_Frame::Ignition
                                     : Guide_Frame::Keep)
            << step;
    }
}

class Generate_Maps : public test::Fresh_Tables {
protected:
    void SetUp() override {
        Fresh_Tables::SetUp();
        log.Open(dir.File("Debug_file.log"));
        // Speeds every 500 rpm; loads every 0.08 bar from 0.08 (raw steps of 8 on a sensor
        // of 0.01 bar a step).
        for (Map_Block block : {Fuel_Block(ctx), Ign_Block(ctx)}) {
            image.CardByte[block.base] = static_cast<std::uint8_t>(block.cols);
            image.CardByte[block.Rows_Byte()] = static_cast<std::uint8_t>(block.rows);
            for (int c = 1; c <= block.cols; ++c)
                image.CardByte[block.Rpm_Step(c)] = 8;
            for (int r = 1; r <= block.rows; ++r)
                image.CardByte[block.Load_Step(r)] = 8;
        }
        Update_All(ctx);
    }
    Auto_Setup_Context Setup_Context() { return {form, ctx, undo, engine}; }
    test::Temp_Dir dir;
    Auto_Setup_State form;
    Undo_List undo;
    Engine_Config_State engine;
    int updates = 0;
    std::function<void()> update_all = [this] {
        ++updates;
        Update_All(ctx);
    };
};

TEST_F(Generate_Maps, FuelMapGoesInAsOneEdit) {
    const Map_Block block = Fuel_Block(ctx);
    const auto before = image.CardByte;
    const int snapshots = undo.UndoIndex;
    Auto_Setup_Context setup = Setup_Context();
    Generate_Outcome out = Generate_Autofuel_cmd(setup, update_all);
    ASSERT_TRUE(out.made) << out.message;
    EXPECT_EQ(undo.UndoIndex, snapshots + 1);
    EXPECT_GT(out.changed, 0);
    EXPECT_EQ(updates, 1);
    int changed = 0;
    for (int a = 0; a < Image_Size; ++a) {
        const auto i = static_cast<std::size_t>(a);
        if (image.CardByte[i] == before[i]) continue;
        ++changed;
        EXPECT_TRUE(a >= block.Start() && a <= block.End()) << a;
        EXPECT_EQ(image.ChangedByte[i], Changed_Mark) << a;
    }
    EXPECT_EQ(changed, out.changed);
    // More fuel with more load in every column.
    for (int c = 1; c <= block.cols; ++c)
        for (int r = 2; r <= block.rows; ++r)
            EXPECT_GE(Fuel_Cell_Value(image.CardByte[block.Cell(r, c)]),
                      Fuel_Cell_Value(image.CardByte[block.Cell(r - 1, c)]))
                << r << "," << c;

    // The same figures again change nothing and take no snapshot.
    const int index = undo.UndoIndex;
    out = Generate_Autofuel_cmd(setup, update_all);
    EXPECT_TRUE(out.made);
    EXPECT_EQ(out.changed, 0);
    EXPECT_EQ(undo.UndoIndex, index);
}

TEST_F(Generate_Maps, AFaultLeavesTheImageAndSaysWhichInput) {
    const auto before = image.CardByte;
    form.fuel.in.max_MAP_txt = "0.2";
    Auto_Setup_Context setup = Setup_Context();
    Generate_Outcome out = Generate_Autofuel_cmd(setup, update_all);
    EXPECT_FALSE(out.made);
    EXPECT_NE(out.message.find("the lowest MAP equals the maximal MAP"), std::string::npos) << out.message;
    EXPECT_EQ(image.CardByte, before);
    EXPECT_EQ(updates, 0);

    form.fuel.in.MaxRPM_txt[Top_Point] = "1000";
    out = Generate_Autoignition_cmd(setup, update_all);
    EXPECT_FALSE(out.made);
    EXPECT_EQ(image.CardByte, before);
    log.Close();
    const std::string text = test::Read_File(dir.File("Debug_file.log"));
    EXPECT_NE(text.find("Error in Generate Autofuel cmd "), std::string::npos) << text;
    EXPECT_NE(text.find("Error in Generate Autoignition cmd Division by zero"), std::string::npos) << text;
}

TEST_F(Generate_Maps, IgnitionMapFollowsTheLoadOfTheTable) {
    const Map_Block block = Ign_Block(ctx);
    tables.loads.IgnLoadSensor = 1;
    const auto before = image.CardByte;
    Auto_Setup_Context setup = Setup_Context();
    Generate_Outcome out = Generate_Autoignition_cmd(setup, update_all);
    EXPECT_FALSE(out.made);
    EXPECT_EQ(image.CardByte, before);

    tables.loads.IgnLoadSensor = Ign_Load_MAP;
    out = Generate_Autoignition_cmd(setup, update_all);
    ASSERT_TRUE(out.made) << out.message;
    EXPECT_EQ(image.CardByte[block.Cell(1, 1)], 75); // idle corner

    // The form follows a new load with its captions, and a new layout with its figures.
    EXPECT_TRUE(Auto_Setup_Follow_Image(setup));
    EXPECT_EQ(form.ignition.captions[3], "Ignition advance at vaccum");
    EXPECT_FALSE(Auto_Setup_Follow_Image(setup));
    engine.Sequential_Fuel = false;
    EXPECT_TRUE(Auto_Setup_Follow_Image(setup));
    EXPECT_FALSE(form.fuel.Sequential_Fuel);
}

TEST(Auto_Setup_Inputs, BoxesAreSetByTheirControlNames) {
    Auto_Setup_State form;
    EXPECT_TRUE(Set_Fuel_Input(form.fuel.in, "NumberOfInjectors_txt", "6"));
    EXPECT_TRUE(Set_Fuel_Input(form.fuel.in, "MaxRPM_txt(3)", "6000"));
    EXPECT_TRUE(Set_Fuel_Input(form.fuel.in, "Volume_Efficiency_txt4", "70"));
    EXPECT_TRUE(Set_Fuel_Input(form.fuel.in, "FuelType_option", "e85"));
    EXPECT_FALSE(Set_Fuel_Input(form.fuel.in, "FuelType_option", "Diesel"));
    EXPECT_FALSE(Set_Fuel_Input(form.fuel.in, "MaxRPM_txt(5)", "1"));
    EXPECT_FALSE(Set_Fuel_Input(form.fuel.in, "Ign_retard_txt", "1"));
    EXPECT_TRUE(Set_Ignition_Input(form.ignition.in, "Ign_retard_txt", "7"));
    EXPECT_EQ(form.fuel.in.NumberOfInjectors_txt, "6");
    EXPECT_EQ(form.fuel.in.MaxRPM_txt[3], "6000");
    EXPECT_EQ(form.fuel.in.Volume_Efficiency_txt[4], "70");
    EXPECT_EQ(form.fuel.in.FuelType_option, E85);
    EXPECT_EQ(form.ignition.in.Ign_retard_txt, "7");
}

class Generate_Command : public ::testing::Test {
protected:
    const std::string data = QUORLEN_DATA_DIR;
    const std::string ini = data + "/RZ400_800M3.ini";
    const std::string qxs = data + "/RZ400_800M3_Default_Settings.qxs";
    test::Temp_Dir dir;
    const std::string out = dir.File("out.qxs");
};

TEST_F(Generate_Command, PrintsTheLabelsAsTheFormShowsThemAndSaves) {
    auto r =
        test::Run_Cli({"generate", qxs, "-o", out, "--ini", ini, "--fuel", "NumberOfInjectors_txt=6",
                       "lambda_txt=0,8", "--ignition", "Ign_advance_txt=12", "--fuel", "MaxRPM_txt(4)=7500"});
    ASSERT_EQ(r.code, 0) << r.err;
    // 6 x 300 cc/min at lambda 0.8 feed 288 hp at full duty, less the offset's share.
    EXPECT_NE(r.out.find("Air power: 180hp\nThe fuel is enough for: 269hp\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Semi sequential fuel\n"), std::string::npos);
    EXPECT_NE(r.out.find("Ignition advance at vaccum\t12\n"), std::string::npos);
    EXPECT_NE(r.out.find("The fuel map is generated: "), std::string::npos);
    EXPECT_NE(r.out.find("The ignition map is generated: "), std::string::npos);
    auto saved = Load_Qxs_File(out);
    auto original = Load_Qxs_File(qxs);
    ASSERT_TRUE(saved && original);
    EXPECT_EQ(saved->comment, original->comment);
    for (std::size_t a = 0; a < 256; ++a)
        EXPECT_EQ(saved->bytes[a], original->bytes[a]) << a; // the maps change, nothing else
}

TEST_F(Generate_Command, OnlyOneMapAndTheKeys) {
    auto r = test::Run_Cli({"generate", qxs, "-o", out, "--ini", ini, "--only", "ignition"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out.find("The fuel map"), std::string::npos);
    auto diff = test::Run_Cli({"qxs-diff", qxs, out});
    EXPECT_EQ(diff.out.find("\n3"), std::string::npos); // nothing below the ignition block at 653
    EXPECT_EQ(diff.out.rfind("6", 0), 0u) << diff.out;

    r = test::Run_Cli({"generate", "--keys"});
    EXPECT_NE(r.out.find("--fuel MaxRPM_txt(3)\t6500\tRPM maxP\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("--ignition Ign_retard_txt\t10\tIgnition retard per 1 bar (15psi) boost\n"),
              std::string::npos);
}

TEST_F(Generate_Command, MistakesSaveNothing) {
    EXPECT_EQ(test::Run_Cli({"generate", qxs, "-o", out, "--fuel", "Injectors=6"}).code, 2);
    EXPECT_EQ(test::Run_Cli({"generate", qxs, "-o", out, "--fuel", "FuelType_option=Diesel"}).code, 2);
    EXPECT_EQ(test::Run_Cli({"generate", qxs, "-o", out, "--only", "boost"}).code, 2);
    EXPECT_EQ(test::Run_Cli({"generate", qxs}).code, 2);
    auto r = test::Run_Cli({"generate", qxs, "-o", out, "--ini", ini, "--fuel", "idle_MAP_txt=1.0"});
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.err.find(
                  "The fuel map was not generated: Division by zero - the lowest MAP equals the maximal MAP"),
              std::string::npos)
        << r.err;
    EXPECT_FALSE(File_Exists(out));
    EXPECT_EQ(test::Run_Cli({"generate", dir.File("none.qxs"), "-o", out}).code, 1);
}

// The shipped base maps, as the build made them beside the program.
class Base_Maps : public ::testing::Test {
protected:
    const std::string bin = QUORLEN_BIN_DIR;
    const std::string ini = std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini";
    static constexpr const char* Files[] = {"1.6L_4cyl_NA.qxs", "2.0L_4cyl_Turbo.qxs", "3.0L_6cyl_NA.qxs",
                                            "5.0L_V8_NA.qxs"};
};

TEST_F(Base_Maps, LoadWithoutRepairAndGiveMoreFuelWithMoreLoad) {
    for (const char* name : Files) {
        SCOPED_TRACE(name);
        const std::string file = bin + "/Basemaps/" + name;
        auto r = test::Run_Cli({"show", file, "--table", "fuel", "--ini", ini});
        ASSERT_EQ(r.code, 0) << r.err;
        EXPECT_EQ(r.err, ""); // no axis was mended, nothing was said
        // Rows by load, columns by speed: every column rises (or stays) from row to row.
        std::vector<std::vector<double>> rows;
        for (const std::string& line : Split_Lines(r.out)) {
            std::vector<double> cells;
            std::size_t from = line.find('\t');
            if (line.rfind("RPM", 0) == 0) continue;
            while (from != std::string::npos) {
                cells.push_back(Text_To_Double(std::string_view(line).substr(from + 1)));
                from = line.find('\t', from + 1);
            }
            rows.push_back(cells);
        }
        ASSERT_GE(rows.size(), 11u);
        for (std::size_t i = 1; i < rows.size(); ++i)
            for (std::size_t c = 0; c < rows[i].size(); ++c)
                EXPECT_GE(rows[i][c], rows[i - 1][c]) << "row " << i + 1 << " column " << c + 1;
        EXPECT_GT(rows.back().front(), 3.0); // full load gets real fuel

        auto ignition = test::Run_Cli({"show", file, "--table", "ignition", "--ini", ini});
        EXPECT_EQ(ignition.code, 0);
        EXPECT_EQ(ignition.err, "");
        auto content = Load_Qxs_File(file);
        ASSERT_TRUE(content);
        EXPECT_EQ(content->comment.rfind("Quorlen base map: ", 0), 0u) << content->comment;
    }
}

TEST_F(Base_Maps, TheToolMakesTheSameFilesAgain) {
    test::Temp_Dir dir;
    const std::string command = bin + "/make_basemaps --data " + QUORLEN_DATA_DIR + " --out " + dir.Slash();
    ASSERT_EQ(std::system(command.c_str()), 0);
    for (const char* name : Files)
        EXPECT_EQ(test::Read_File(dir.File(name)), test::Read_File(bin + "/Basemaps/" + name)) << name;
}

} // namespace
} // namespace quorlen
