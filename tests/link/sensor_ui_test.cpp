// The throttle calibration through the sensor viewer against the simulator, whose throttle
// reads 30 from the start of the log and 230 from its fifth second. The messages are
// answered from a script; the one that asks for full throttle is held until the pedal is down,
// as a tuner's confirmation would be. With QUORLEN_SCREENSHOTS=DIR each message is also
// drawn as the program shows it and saved there.

#include "logging/log_calc.h"
#include "support/boxsim_run.h"
#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_log.h"
#include "ui/qx_sensor_editor.h"

#include <QAction>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdlib>

namespace quorlen {
namespace {

using test::Read_File;

// Answers like Scripted_Dialogs; "Press full throttle" returns once the log reads `full`.
class Pedal_Dialogs final : public User_Dialogs {
public:
    std::vector<std::string> said;
    std::function<std::optional<int>()> live;
    int full = 230;
    Answer answer = Answer::Yes;

    void Inform(const std::string& text) override {
        Say(text, QMessageBox::Information);
        if (text.find("Press full throttle") == std::string::npos || !live) return;
        QElapsedTimer waited;
        waited.start();
        while (live() != full && waited.elapsed() < 15000)
            QTest::qWait(50);
    }
    void Show_Message(Icon icon, const std::string& text) override {
        Say(text, icon == Icon::Stop ? QMessageBox::Critical : QMessageBox::Information);
    }
    Answer Ask_Ok_Cancel(const std::string& text) override {
        Say(text, QMessageBox::Question);
        return Answer::Ok;
    }
    Answer Ask_Yes_No(const std::string& text) override {
        Say(text, QMessageBox::Question);
        return answer;
    }
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup&) override { return std::nullopt; }
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup&) override { return std::nullopt; }

private:
    void Say(const std::string& text, QMessageBox::Icon icon) {
        said.push_back(text);
        const char* out = std::getenv("QUORLEN_SCREENSHOTS");
        if (out == nullptr) return;
        const char* name = text.rfind("Release", 0) == 0    ? "release"
                           : text.rfind("Min", 0) == 0      ? "min"
                           : text.rfind("Max", 0) == 0      ? "max"
                           : text.rfind("The high", 0) == 0 ? "identical"
                                                            : nullptr;
        const QString file = QStringLiteral("%1/tps_calibration_%2.png").arg(out, name);
        if (name == nullptr || QFile::exists(file)) return;
        QMessageBox box(icon, "Quorlen", QString::fromStdString(text),
                        icon == QMessageBox::Question ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok);
        box.show();
        QTest::qWait(50);
        box.grab().save(file);
    }
};

class Tps_Calibration : public ::testing::Test {
protected:
    std::unique_ptr<ui::BoostProgMain> Start(const test::Boxsim_Run& box) {
        test::Copy_Shipped_Data(dir, {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs",
                                      "RZ400_800M3_Default_Log_Settings.qxl"});
        auto window = test::Start_Main_Window(dir, dialogs, test::On_Port(box.Link()));
        dialogs.live = [w = window.get()] {
            return Live_Raw_Input(static_cast<ui::QX_Log*>(w->Form("QX_Log"))->State(), 2);
        };
        return window;
    }
    static ui::QX_Sensor_Editor* Editor(ui::BoostProgMain& window) {
        window.findChild<QAction*>("mnu_Sensor_Editor")->trigger();
        return static_cast<ui::QX_Sensor_Editor*>(window.Form("QX_Sensor_Editor"));
    }
    static void Run_Until_Done(ui::QX_Sensor_Editor& editor) {
        QElapsedTimer t;
        t.start();
        do
            QTest::qWait(100);
        while (editor.Calibration().TPS_Calib_State != 0 && t.elapsed() < 30000);
    }

    test::Temp_Dir dir;
    Pedal_Dialogs dialogs;
};

TEST_F(Tps_Calibration, TheMeasuredThrottleBecomesInputTwosSensor) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--engine-running", "--tps-script", "0:30,5:230"});
    ASSERT_TRUE(box.Ready());
    auto window = Start(box);
    auto* editor = Editor(*window);
    editor->findChild<QPushButton*>("Calibrate_TPS_sens")->click();
    ASSERT_EQ(editor->Calibration().TPS_Calib_State, 1) << "the log did not start";
    Run_Until_Done(*editor);
    window->Stop_Logging_cmd_Click();

    ASSERT_GE(dialogs.said.size(), 3u);
    EXPECT_EQ(dialogs.said[0], "Release Throttle totally");
    EXPECT_EQ(dialogs.said[1], "Min TPS: 0.59V\r\nPress full throttle");
    EXPECT_EQ(dialogs.said[2], "Max TPS: 4.51V\r\nDo you want to save the new sensor definition");

    const std::string ini = Read_File(dir.File("RZ400_800M3.ini"));
    EXPECT_NE(ini.find("Sens_Def=UserDef_Throttle\tLinear\t0.5\t-15\t30\t230\t%\t0\tbin\t\r\n"),
              std::string::npos);
    const App_Context& app = window->App();
    const int s = app.sensors.table.Sens_Count - 1;
    EXPECT_EQ(app.sensors.table.Name(s), "UserDef_Throttle");
    EXPECT_EQ(app.sensors.inputs.An_Sel[2], s);
    EXPECT_EQ(app.image.CardByte[885], s);
    EXPECT_EQ(app.ini.Read_Ini("an_sel2"), std::to_string(s));
    EXPECT_EQ(editor->findChild<QComboBox*>("AN_Combo(2)")->currentText(), "UserDef_Throttle");
}

TEST_F(Tps_Calibration, AThrottleThatDoesNotMoveSavesNothing) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--engine-running", "--tps-script", "0:77"});
    ASSERT_TRUE(box.Ready());
    auto window = Start(box);
    dialogs.full = 77;
    const std::string before = Read_File(dir.File("RZ400_800M3.ini"));
    auto* editor = Editor(*window);
    editor->Calibrate_TPS_sens_Click();
    Run_Until_Done(*editor);
    window->Stop_Logging_cmd_Click();
    ASSERT_FALSE(dialogs.said.empty());
    EXPECT_EQ(
        dialogs.said.back(),
        "The high and low level of the TPS are identical, so the calibration is aborted.\r\nPlease retry");
    EXPECT_EQ(Read_File(dir.File("RZ400_800M3.ini")), before);
}

TEST_F(Tps_Calibration, WithoutABoxTheLogDoesNotStartAndNothingHappens) {
    test::Copy_Shipped_Data(dir);
    auto window = test::Start_Main_Window(dir, dialogs, test::On_Port(dir.File("no-such-port")));
    auto* editor = Editor(*window);
    editor->Calibrate_TPS_sens_Click();
    EXPECT_EQ(editor->Calibration().TPS_Calib_State, 0);
    QTest::qWait(1200);
    for (const std::string& text : dialogs.said)
        EXPECT_EQ(text.find("TPS"), std::string::npos) << text;
}

} // namespace
} // namespace quorlen
