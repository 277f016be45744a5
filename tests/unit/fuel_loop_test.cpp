// The tuning loop on a simulated clock: the simulator's engine needs 12 % more fuel in a region
// of the shipped map; a log of its sweep goes through the fuel correction, the corrected map is
// written to the box by the program's own write, and a second log shows lambda on target. The
// box is the simulator's protocol code and the capture the program's, joined by a line that
// hands characters across at once; no real time passes.

#include "analysis/fuel_correction.h"
#include "box.h"
#include "cli/cli_tables.h"
#include "link/write_settings.h"
#include "logging/log_capture.h"
#include "support/box_line.h"
#include "support/log_fixture.h"
#include "tables/cell_entry.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

namespace quorlen {
namespace {

const std::string Data_Dir = QUORLEN_DATA_DIR;

class Fuel_Loop : public test::Log_Fixture, public ::testing::Test {
protected:
    Fuel_Loop() : settings(stderr, Data_Dir + "/RZ400_800M3.ini") {
        EXPECT_TRUE(settings.Load(Data_Dir + "/RZ400_800M3_Default_Settings.qxs"));
        settings.Flush_Diagnostics();
        Load_Defaults();
        state->setup.check_SettingsInLogg = 0;
        state->setup.check_AutoSave = 0;
        state->Log_Dir = dir.Path().string();

        boxsim::Box_Config config;
        std::copy_n(settings.app.image.CardByte.begin(), config.image.size(), config.image.begin());
        config.engine_running = true;
        config.engine.enabled = true;
        config.engine.drive = boxsim::Drive::Sweep;
        std::string error;
        config.engine.errors.push_back(*boxsim::Parse_Fuel_Error("3000-5000:1.0-1.5:+12", error));
        config.engine.sensors = boxsim::Parse_Tuning_Sensors(test::Read_File(Data_Dir + "/RZ400_800M3.ini"));
        box = std::make_unique<boxsim::Box>(config);
        box_line = std::make_unique<test::Box_Line>(*box, clock, 0);
    }

    Log_Context Box_Ctx() {
        return {*state, image, program, texts, flags, debug, dialogs, box_line.get(), "/dev/ttyBOX", hooks};
    }

    // A log of `seconds` of the engine, as the log window records it.
    void Capture(double seconds) {
        auto c = Box_Ctx();
        Start_Logging(c);
        ASSERT_TRUE(state->capture.Logging_Running);
        Log_Timers timers(c);
        timers.Run_Until(clock + seconds, [this](double step) {
            clock += step;
            box_line->Pump();
        });
        Start_Logging(c);
    }

    // The marked bytes to the box, by the program's write dialogue.
    void Write() {
        const bool no_auto_start[2] = {false, false};
        Link_Hooks link_hooks;
        link_hooks.Now = [this] { return clock; };
        link_hooks.Dummy_Wait = [this] {
            clock += 0.05;
            box_line->Pump();
        };
        Link_State link_state;
        Link_Context link{program, texts, flags, link_state, debug, *box_line, no_auto_start, link_hooks};
        Rw_State rw;
        File_State files;
        Settings_Context s{link, settings.app.image, rw, files, dialogs, {}};
        box_line->Open();
        Write_Settings_Fast_Click(s);
        box_line->Close();
        ASSERT_TRUE(rw.Write_Succeeded) << texts.rs232_text;
    }

    // The cells whose RPM and load points lie in the region the engine was given.
    bool In_Region(int r, int c) {
        Tables_Context t = settings.Context();
        const double rpm = Text_To_Double(Grid_Text(t, Table_Id::Fuel_3D, 0, c));
        const double load = Text_To_Double(Grid_Text(t, Table_Id::Fuel_3D, r, 0));
        return rpm >= 3000 && rpm <= 5000 && load >= 1.0 && load <= 1.5;
    }

    // The mean lambda error of the region's cells that had enough steady time, in percent.
    double Region_Error(const Fuel_Proposal& p, int& cells) {
        double sum = 0;
        cells = 0;
        for (const Cell_Correction& c : p.cells)
            if (c.enough && In_Region(c.row, c.col)) {
                sum += std::fabs(c.ratio - 1) * 100;
                ++cells;
            }
        return cells > 0 ? sum / cells : 0;
    }

    cli::Cli_Tables settings;
    std::unique_ptr<boxsim::Box> box;
    std::unique_ptr<test::Box_Line> box_line;
};

TEST_F(Fuel_Loop, A_Corrected_Map_Written_Back_Brings_Lambda_Onto_The_Target) {
    Capture(300);
    ASSERT_GT(state->Last_Row, 5900);
    const Fuel_Proposal first = Propose_Fuel_Correction(settings.app.image, settings.app.sensors, *state);
    ASSERT_EQ(first.problem, "");
    int region_cells = 0;
    const double before = Region_Error(first, region_cells);
    EXPECT_GE(region_cells, 12); // 5 columns by 3 rows, all within the engine's reach
    EXPECT_NEAR(before, 12, 1.5);

    // Outside the region the engine runs on what the map gives: nothing to change there.
    int outside_moved = 0;
    for (const Cell_Correction& c : first.cells)
        if (!In_Region(c.row, c.col) && c.changed) {
            EXPECT_LE(std::abs(c.new_byte - c.old_byte), 1) << "cell " << c.row << "," << c.col;
            ++outside_moved;
        }
    EXPECT_LE(outside_moved, 3);

    settings.app.image.ChangedByte.fill(0);
    const int written = Apply_Fuel_Correction(settings.app.image, settings.app.undo, first);
    EXPECT_EQ(written, first.Changed_Count());
    Write();
    for (const Cell_Correction& c : first.cells)
        EXPECT_EQ(box->Memory()[static_cast<std::size_t>(c.address)],
                  settings.app.image.CardByte[static_cast<std::size_t>(c.address)]);

    Capture(300);
    const Fuel_Proposal second = Propose_Fuel_Correction(settings.app.image, settings.app.sensors, *state);
    int after_cells = 0;
    const double after = Region_Error(second, after_cells);
    EXPECT_EQ(after_cells, region_cells);
    EXPECT_LT(after, 3);
}

} // namespace
} // namespace quorlen
