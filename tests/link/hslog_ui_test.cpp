// The high-speed log window with the main window, offscreen, against the simulator: opened
// from the View menu, a capture started and stopped by its buttons, the chart and the
// analysis of what came, and the port that the main window holds.

#include "support/boxsim_run.h"
#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_crankview.h"
#include "ui/qx_log_hs.h"

#include <QAction>
#include <QApplication>
#include <QChartView>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QLineSeries>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>

namespace quorlen {
namespace {

using test::Read_File;

class HsLogWindow : public ::testing::Test {
protected:
    std::unique_ptr<ui::BoostProgMain> Start(const std::string& port) {
        test::Copy_Shipped_Data(dir, {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs"});
        auto window = test::Start_Main_Window(dir, dialogs, test::On_Port(port));
        window->findChild<QAction*>("mnu_HS_Log")->trigger();
        hs = static_cast<ui::QX_Log_HS*>(window->Form("QX_Log_HS"));
        return window;
    }
    template <class T>
    T* Child(const char* name) {
        return hs->findChild<T*>(name);
    }
    void Click(const char* name) { Child<QPushButton>(name)->click(); }
    QString Shots() { return qEnvironmentVariable("QUORLEN_SCREENSHOT_DIR"); }

    test::Temp_Dir dir;
    test::Scripted_Dialogs dialogs;
    ui::QX_Log_HS* hs = nullptr;
};

TEST_F(HsLogWindow, ACaptureFromTheViewMenuBecomesAChartAndItsAnalysis) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--hs-rpm", "3000"});
    ASSERT_TRUE(box.Ready());
    auto window = Start(box.Link());
    ASSERT_TRUE(hs->isVisible());

    Click("Start_HSLogg");
    EXPECT_TRUE(window->App().link.HS_Logging_Active);
    EXPECT_FALSE(Child<QPushButton>("Start_HSLogg")->isEnabled());
    EXPECT_FALSE(Child<QChartView>("Osc_Chart")->isVisible());
    QTest::qWait(1500);
    // The connection poll and the log leave the port to the stream.
    window->Check_connection_timer_Timer();
    EXPECT_TRUE(hs->Capturing());
    window->findChild<QPushButton*>("Stop_Logging_cmd")->click();
    EXPECT_FALSE(window->App().link.Logging_Active);
    EXPECT_EQ(dialogs.informed,
              std::vector<std::string>{"Com port used by high speed logging. Stop it and retry"});
    dialogs.informed.clear();
    EXPECT_EQ(Child<QLineEdit>("txt_Log_Length")->text().left(2), "1.");

    Click("Stop_HSLogg");
    EXPECT_FALSE(window->App().link.HS_Logging_Active);
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_NE(dialogs.informed[0].find(" samples were captured. Time: 1."), std::string::npos)
        << dialogs.informed[0];
    ASSERT_NE(hs->Trace(), nullptr);
    const long count = hs->Trace() != nullptr ? hs->Trace()->Count() : 0;
    EXPECT_NEAR(static_cast<double>(count), 1.5 * 11520, 0.1 * 11520);
    EXPECT_EQ(std::filesystem::path(hs->Trace_Path()).parent_path(), dir.Path());
    EXPECT_EQ(std::filesystem::path(hs->Trace_Path()).filename().string().rfind("RZ_Osc_file_", 0), 0u);
    EXPECT_TRUE(Child<QChartView>("Osc_Chart")->isVisible());
    EXPECT_EQ(Child<QLineEdit>("txt_start")->text(), "1");
    EXPECT_EQ(Child<QLineEdit>("txt_stop")->text().toLong(), count);
    auto* crank_line = static_cast<QLineSeries*>(Child<QChartView>("Osc_Chart")->chart()->series().front());
    EXPECT_GT(crank_line->count(), 100);

    // A screen of the chart, sample by sample, and its analysis against the crank teeth.
    Child<QLineEdit>("txt_start")->setText("2");
    Child<QLineEdit>("txt_stop")->setText("2001");
    hs->Update_HSlog_chart();
    EXPECT_EQ(hs->Chart().step, 1);
    Child<QRadioButton>("Analyze_option(1)")->setChecked(true);
    Child<QLineEdit>("txt_RPM")->setText("35");
    Click("cmd_Analyze");
    const QString text = Child<QPlainTextEdit>("txt_Analyze")->toPlainText();
    const auto at = text.indexOf("RPM: ");
    ASSERT_GE(at, 0) << text.toStdString();
    EXPECT_NEAR(text.mid(at + 5, text.indexOf('\n', at) - at - 5).toDouble(), 3000, 30) << text.toStdString();
    EXPECT_TRUE(text.contains("Crank pulse/rev: 35.00")) << text.toStdString();

    Click("cmd_GetRPM");
    EXPECT_EQ(Child<QLineEdit>("txt_RPM")->text(), "345.6"); // 2000 samples as one turn
    Click("cmd_ZoomIn");
    EXPECT_EQ(Child<QLineEdit>("txt_start")->text(), "502");
    EXPECT_EQ(Child<QLineEdit>("txt_stop")->text(), "1501");
    hs->Show_Point(0.5);
    EXPECT_TRUE(Child<QLabel>("Point_Value")->text().startsWith("Sample 7 at 0.52 ms: "))
        << Child<QLabel>("Point_Value")->text().toStdString();
    if (!Shots().isEmpty()) {
        Child<QLineEdit>("txt_start")->setText("2");
        Child<QLineEdit>("txt_stop")->setText("1000");
        hs->Update_HSlog_chart();
        Child<QLineEdit>("txt_RPM")->setText("35");
        Click("cmd_Analyze");
        hs->Show_Point(21.7);
        hs->grab().save(QDir(Shots()).filePath("hslog_chart.png"));
        // The whole capture with peak detection, analysed against the engine speed.
        Click("cmd_ZoomAll");
        Child<QCheckBox>("PeakDetect")->setChecked(true);
        Child<QRadioButton>("Analyze_option(0)")->setChecked(true);
        Child<QLineEdit>("txt_RPM")->setText("3000");
        Click("cmd_Analyze");
        hs->grab().save(QDir(Shots()).filePath("hslog_analysis.png"));
        Child<QCheckBox>("PeakDetect")->setChecked(false);
    }
    EXPECT_EQ(Read_File(dir.File("Debug_file.log")).find("Error in "), std::string::npos);

    // The crank viewer measures the capture on show against the image's layout.
    Click("cmd_CrankView");
    auto* crank = static_cast<ui::QX_CrankView*>(window->Form("QX_CrankView"));
    ASSERT_TRUE(crank->isVisible());
    auto* info = crank->findChild<QPlainTextEdit*>("txt_Crank_Info");
    auto* warnings = crank->findChild<QLabel*>("lbl_Crank_Warnings");
    EXPECT_TRUE(info->toPlainText().contains("35.0 teeth a turn")) << info->toPlainText().toStdString();
    EXPECT_TRUE(info->toPlainText().contains("a 36-1 wheel"));
    // The shipped layout has no cam sensor; the simulator's wheel has one.
    EXPECT_EQ(warnings->text(),
              "Warning: The capture has cam pulses; the layout uses no cam sensor (No cam).");
    if (!Shots().isEmpty()) crank->grab().save(QDir(Shots()).filePath("crank_view_warning.png"));

    // Choosing the layout with a cam sensor, and moving the mark, redraws at once.
    window->App().image.CardByte[6] = 2;
    window->App().image.CardByte[18] = 6;
    window->Update_All();
    EXPECT_TRUE(warnings->text().isEmpty()) << warnings->text().toStdString();
    EXPECT_TRUE(
        info->toPlainText().contains("51deg BTDC mark: tooth 6 after the missing pulse, 60 deg after it; "
                                     "TDC of cylinder 1 at 111 deg"))
        << info->toPlainText().toStdString();
    if (!Shots().isEmpty()) crank->grab().save(QDir(Shots()).filePath("crank_view.png"));
}

TEST_F(HsLogWindow, ThePortOfTheMainWindowIsNotTaken) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {});
    ASSERT_TRUE(box.Ready());
    auto window = Start(box.Link());
    window->findChild<QPushButton*>("Com_Open")->click();
    Click("Start_HSLogg");
    EXPECT_EQ(dialogs.informed,
              std::vector<std::string>{"Com port used by normal logging. Close logging and retry"});
    EXPECT_FALSE(window->App().link.HS_Logging_Active);
    EXPECT_TRUE(Child<QPushButton>("Start_HSLogg")->isEnabled());
}

TEST_F(HsLogWindow, ACutOffCaptureOpensAndSaysSo) {
    auto window = Start("");
    test::Write_File(dir.File("cut.qxo"), "[Log_Osc_Data]\r\n001\r\n000\r\n001\r\n00");
    dialogs.files.push_back(Picked_File{dir.File("cut.qxo"), "cut.qxo"});
    Click("cmd_Open");
    ASSERT_NE(hs->Trace(), nullptr);
    EXPECT_EQ(hs->Trace() != nullptr ? hs->Trace()->Count() : 0, 3);
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_EQ(dialogs.informed[0].rfind("The capture was cut off", 0), 0u);
    EXPECT_EQ(Child<QLineEdit>("txt_Log_Length")->text(), "0.0 sek");
    EXPECT_EQ(dialogs.dialogs_shown.at(0).filter,
              "Quorlen high speed log files *.qxo|*.qxo|All files *.*|*.*");

    // No reference for the analysis: the text stands as far as it got, the fault is logged.
    Child<QRadioButton>("Analyze_option(0)")->setChecked(true);
    Child<QLineEdit>("txt_RPM")->setText("");
    Click("cmd_Analyze");
    EXPECT_EQ(Child<QPlainTextEdit>("txt_Analyze")->toPlainText(), "\nTest results\nTot time: 0.000\n");
    EXPECT_NE(Read_File(dir.File("Debug_file.log")).find("Error in cmd Analyze clickDivision by zero"),
              std::string::npos);
}

} // namespace
} // namespace quorlen
