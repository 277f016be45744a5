// The log window with the main window, offscreen: made at load, started and stopped from the
// main window's button against the simulator, and a log picked in the settings file dialog.

#include "core/ini_file.h"
#include "logging/log_state.h"
#include "support/boxsim_run.h"
#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_log.h"

#include <QAction>
#include <QApplication>
#include <QChartView>
#include <QLineSeries>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>

namespace quorlen {
namespace {

using test::Read_File;
using test::Write_File;

class LogWindow : public ::testing::Test {
protected:
    std::unique_ptr<ui::BoostProgMain> Start(const std::string& port = {}) {
        test::Copy_Shipped_Data(
            dir, {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs", Default_Log_Settings_File_Name});
        return test::Start_Main_Window(dir, dialogs, test::On_Port(port));
    }
    std::string Log() { return Read_File(dir.File("Debug_file.log")); }

    test::Temp_Dir dir;
    test::Scripted_Dialogs dialogs;
};

TEST_F(LogWindow, LiveViewAtStartShowsTheStreamAndSavesNoFile) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {});
    ASSERT_TRUE(box.Ready());
    test::Copy_Shipped_Data(
        dir, {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs", Default_Log_Settings_File_Name});
    Ini_File(dir.File("RZ400_800M3.ini"), dir.File("QXS.new")).Write_Ini("Autostart_Live", "1");
    auto window = test::Start_Main_Window(dir, dialogs, test::On_Port(box.Link()));
    auto* log = static_cast<ui::QX_Log*>(window->Form("QX_Log"));
    window->Check_connection_timer_Timer(); // the first check that answers starts it
    EXPECT_TRUE(log->Logging());
    EXPECT_TRUE(log->isVisible());
    QTest::qWait(1500);
    window->findChild<QPushButton*>("Stop_Logging_cmd")->click();
    EXPECT_FALSE(log->Logging());
    EXPECT_GE(log->State().Last_Row, 20);
    for (const auto& entry : std::filesystem::directory_iterator(dir.Path()))
        EXPECT_NE(entry.path().filename().string().rfind("QXLog-", 0), 0u) << entry.path();

    // The button itself records to a file again.
    window->findChild<QPushButton*>("Stop_Logging_cmd")->click();
    QTest::qWait(1200);
    window->findChild<QPushButton*>("Stop_Logging_cmd")->click();
    EXPECT_TRUE(std::filesystem::exists(dir.File(log->State().Log_File_Name)));
}

TEST_F(LogWindow, ClosingTheProgramWhileALogRunsEndsTheLogAsAStopWould) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {});
    ASSERT_TRUE(box.Ready());
    auto window = Start(box.Link());
    window->findChild<QPushButton*>("Stop_Logging_cmd")->click();
    QTest::qWait(1200);
    window->close();
    window.reset();
    bool saved = false;
    for (const auto& entry : std::filesystem::directory_iterator(dir.Path()))
        saved = saved || entry.path().filename().string().rfind("QXLog-_", 0) == 0;
    EXPECT_TRUE(saved);
}

TEST_F(LogWindow, TheMainWindowsButtonRecordsALogAndSavesIt) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {});
    ASSERT_TRUE(box.Ready());
    auto window = Start(box.Link());
    ASSERT_TRUE(window->Form_Exists("QX_Log"));
    auto* log = static_cast<ui::QX_Log*>(window->Form("QX_Log"));
    EXPECT_FALSE(log->isVisible());
    EXPECT_EQ(log->State().setup.controls[13].label, "AN3 MAP");

    auto* button = window->findChild<QPushButton*>("Stop_Logging_cmd");
    button->click();
    EXPECT_TRUE(log->isVisible());
    EXPECT_TRUE(window->App().link.Logging_Active);
    EXPECT_EQ(button->text(), "STOP LOGGING");
    EXPECT_EQ(log->findChild<QPushButton*>("cmd_Open_Com")->text(), "STOP");
    EXPECT_FALSE(window->findChild<QPushButton*>("Read_Settings")->isEnabled());
    QTest::qWait(2500);
    // The connection poll stays off the port and tells from the log whether the engine runs.
    window->Check_connection_timer_Timer();
    EXPECT_EQ(window->findChild<QAction*>("Engine_OnOff_mnu")->text(), "Engine running");

    button->click();
    EXPECT_FALSE(window->App().link.Logging_Active);
    EXPECT_EQ(button->text(), "START LOGGING");
    EXPECT_TRUE(window->findChild<QPushButton*>("Read_Settings")->isEnabled());
    const Log_State& state = log->State();
    EXPECT_GE(state.Last_Row, 40);
    EXPECT_LE(state.Last_Row, 52);
    // Saved under the default name with the date and time, and the box's settings inside.
    const std::string saved = dir.File(state.Log_File_Name);
    ASSERT_TRUE(std::filesystem::exists(saved)) << saved;
    EXPECT_EQ(state.Log_File_Name.rfind("QXLog-_", 0), 0u);
    const std::string text = Read_File(saved);
    EXPECT_NE(text.find("[log_dataset]\r\n"), std::string::npos);
    // And the words of the box it came from.
    EXPECT_NE(text.find("QX-box firmware: \t\t800M3 V3.42\r\n"), std::string::npos);
    EXPECT_NE(text.find("RZ-box Serial: \t\tRZ1234\r\nRZ mode: \t\tMaster\r\n[end readable_settings]\r\n"),
              std::string::npos);
    auto* chart = log->findChild<QChartView*>("MSChart1");
    ASSERT_FALSE(chart->chart()->series().isEmpty());
    EXPECT_GE(static_cast<QLineSeries*>(chart->chart()->series().front())->count(), 40);
    EXPECT_EQ(Log().find("Error in "), std::string::npos) << Log();
}

TEST_F(LogWindow, ALogPickedInTheSettingsDialogGivesItsSettings) {
    auto window = Start();
    std::string file = Read_File(std::string(QUORLEN_DATA_DIR) + "/" + Default_Log_Settings_File_Name);
    std::string dataset = "[log_dataset]\r\n";
    for (int i = 0; i < 1024; ++i)
        dataset += std::to_string(i == 255 ? 200 : (i * 3) % 256) + "\r\n";
    file.replace(file.find("[log_dataset]"), std::string::npos, dataset + "[end log_dataset]");
    Write_File(dir.File("drive.qxl"), file);

    dialogs.files.push_back(Picked_File{dir.File("drive.qxl"), "drive.qxl"});
    window->File_open_Click();
    EXPECT_EQ(window->App().image.CardByte[100], 44);
    EXPECT_EQ(window->windowTitle(),
              "VELMORA RZ400/RZ800M3 Interface Software - Settings loaded from log file");
    EXPECT_EQ(window->App().files.CurrentFileName, "New1.qxs");
    EXPECT_EQ(static_cast<ui::QX_Log*>(window->Form("QX_Log"))->State().Log_File_Name, "drive.qxl");
}

} // namespace
} // namespace quorlen
