// Studying logs in the log window, offscreen, as a tuner does: two logs recorded from the
// simulator, signals ticked, the window zoomed and scrolled, the second log laid over the
// first and lined up, values read at a click, the chart exported as a table and as pictures,
// and the RPM graph beside it. With QUORLEN_SCREENSHOT_DIR set the windows are saved there.

#include "core/text.h"
#include "logging/log_chart.h"
#include "logging/log_study.h"
#include "support/boxsim_run.h"
#include "support/cli_run.h"
#include "support/drive_log.h"
#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"
#include "ui/log_chart_view.h"
#include "ui/qx_log.h"
#include "ui/qx_rpm.h"

#include <QAction>
#include <QApplication>
#include <QChart>
#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QXYSeries>

#include <gtest/gtest.h>

#include <filesystem>

namespace quorlen {
namespace {

using test::Read_File;
using test::Write_File;

class LogChartWindow : public ::testing::Test {
protected:
    std::unique_ptr<ui::BoostProgMain> Start(const std::string& port = {}) {
        test::Copy_Shipped_Data(
            dir, {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs", Default_Log_Settings_File_Name});
        auto window = test::Start_Main_Window(dir, dialogs, test::On_Port(port));
        log = static_cast<ui::QX_Log*>(window->Form("QX_Log"));
        state = window->App().log_state.get();
        return window;
    }
    // A log from the simulator through the main window's button; the window saves it itself.
    std::string Record(ui::BoostProgMain& window, int milliseconds) {
        auto* button = window.findChild<QPushButton*>("Stop_Logging_cmd");
        button->click();
        QTest::qWait(milliseconds);
        button->click();
        return dir.File(state->Log_File_Name);
    }
    void Menu(const char* name) { log->findChild<QAction*>(name)->trigger(); }
    void Click(const char* name) { log->findChild<QPushButton*>(name)->click(); }
    void Tick(int column, int signal, bool on) {
        auto* table = log->findChild<QTableWidget*>("Check_SignalsToView");
        for (int row = 0; row < table->rowCount(); ++row) {
            QTableWidgetItem* item = table->item(row, column);
            if (item->data(Qt::UserRole).toInt() == signal)
                item->setCheckState(on ? Qt::Checked : Qt::Unchecked);
        }
    }
    std::vector<QString> Series_Names(QChartView* view) {
        std::vector<QString> names;
        for (QAbstractSeries* s : view->chart()->series())
            names.push_back(s->name());
        return names;
    }
    int Span() const { return state->window.Zoom_Stop - state->window.Zoom_Start + 1; }
    // The place on the chart's plot at fraction `f` of its width, halfway up.
    QPoint Plot_At(ui::Log_Chart_View* view, double f) {
        const QRectF plot = view->chart()->plotArea();
        const QPointF at =
            view->chart()->mapToScene(QPointF(plot.left() + f * plot.width(), plot.center().y()));
        return view->mapFromScene(at);
    }
    void Shot(QWidget* w, const char* name) {
        const QString out = qEnvironmentVariable("QUORLEN_SCREENSHOT_DIR");
        if (out.isEmpty()) return;
        QApplication::processEvents();
        w->grab().save(out + "/" + name);
    }
    std::string Debug_Log() { return Read_File(dir.File("Debug_file.log")); }

    test::Temp_Dir dir;
    test::Scripted_Dialogs dialogs;
    ui::QX_Log* log = nullptr;
    Log_State* state = nullptr;
};

TEST_F(LogChartWindow, TwoSimulatorLogsTickedZoomedComparedAndExported) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {});
    ASSERT_TRUE(box.Ready());
    auto window = Start(box.Link());
    // The first log in text rows: idle, then the launch. The second in binary frames, which
    // tell the settings window how long the engine has run.
    const std::string a = Record(*window, 7000);
    log->findChild<QRadioButton*>("Binary_log_opt(1)")->click();
    const std::string b = Record(*window, 6000);
    ASSERT_NE(a, b);
    ASSERT_TRUE(std::filesystem::exists(a) && std::filesystem::exists(b));
    EXPECT_EQ(window->findChild<QLabel*>("Engine_On_label")->text().left(14), "Engine on for ");
    EXPECT_EQ(window->Form("QX_settings")->findChild<QLabel*>("Engine_On_label")->text().left(14),
              "Engine on for ");

    log->resize(1280, 820);
    log->show();
    dialogs.files.push_back(Picked_File{a, ""});
    Menu("File_Open");
    const int rows = state->Last_Row;
    ASSERT_GE(rows, 110);
    EXPECT_EQ(state->window.Zoom_Start, 1);
    EXPECT_EQ(state->window.Zoom_Stop, rows);

    // The shipped settings show RPM, lambda, MAP and power; ignition joins them, and lambda and
    // MAP read on the second axis.
    auto* chart = log->Chart_View();
    Tick(0, 1, true);
    Tick(1, 11, true);
    Tick(1, 13, true);
    EXPECT_EQ(Series_Names(chart),
              (std::vector<QString>{"RPM", "AN1 Lambda", "AN3 MAP", "Power", "Ignition"}));
    auto* map = static_cast<QXYSeries*>(chart->chart()->series()[2]);
    ASSERT_EQ(map->attachedAxes().size(), 2);
    EXPECT_EQ(map->attachedAxes()[1]->alignment(), Qt::AlignRight);
    // Every row, but a level held stays its two ends.
    EXPECT_LE(map->count(), rows);
    EXPECT_DOUBLE_EQ(map->at(0).x(), 0.0);
    EXPECT_DOUBLE_EQ(map->at(map->count() - 1).x(), (rows - 1) * 0.05);

    Click("cmd_ZoomIn");
    EXPECT_EQ(Span(), rows - 2 * (rows / 4));
    const int zoomed = state->window.Zoom_Start;
    Click("cmd_Scroll_Right");
    EXPECT_GT(state->window.Zoom_Start, zoomed);
    Click("cmd_Scroll_Left");
    Click("cmd_Scroll_Left");
    EXPECT_EQ(state->window.Zoom_Start, 1);
    Click("cmd_ZoomAll");
    EXPECT_EQ(Span(), rows);
    QApplication::processEvents();

    // A click on the plot lists the values there; the right button drags out rows to zoom to.
    QTest::mouseClick(chart->viewport(), Qt::LeftButton, {}, Plot_At(chart, 0.5));
    const QString values = log->findChild<QPlainTextEdit*>("txt_LineTextWindow")->toPlainText();
    EXPECT_TRUE(values.startsWith("Time: ")) << values.toStdString();
    EXPECT_TRUE(values.contains("\nAN3 MAP: ")) << values.toStdString();
    QTest::mousePress(chart->viewport(), Qt::RightButton, {}, Plot_At(chart, 0.6));
    QTest::mouseMove(chart->viewport(), Plot_At(chart, 0.75));
    QTest::mouseRelease(chart->viewport(), Qt::RightButton, {}, Plot_At(chart, 0.9));
    EXPECT_NEAR(state->window.Zoom_Start, 0.6 * rows, 3);
    EXPECT_NEAR(state->window.Zoom_Stop, 0.9 * rows, 3);
    Shot(log, "log_chart_zoomed.png");
    Click("Clear_LineTextWindow");
    EXPECT_EQ(log->findChild<QPlainTextEdit*>("txt_LineTextWindow")->toPlainText().toStdString(),
              Line_Text_Window_Hint);

    // The second log over the first, both from their row 1; then lined up by moving it alone.
    dialogs.files.push_back(Picked_File{b, ""});
    Menu("File_Open_Compare");
    ASSERT_TRUE(state->Compare_Mode);
    const int common = std::min(rows, state->Compare_Last_Row);
    EXPECT_EQ(state->window, (Chart_Window{1, common, 1, common}));
    EXPECT_EQ(Series_Names(chart).size(), 10u);
    EXPECT_EQ(Series_Names(chart)[5], "(2)RPM");
    EXPECT_TRUE(log->findChild<QWidget*>("Compare_Frame")->isVisible());
    Click("cmd_ZoomIn");
    Click("cmd_Scroll_Right_Comp");
    EXPECT_GT(state->window.Compare_Start, state->window.Zoom_Start);
    Click("cmd_ZoomAll");
    EXPECT_EQ(state->window.Compare_Start, 1);
    Shot(log, "log_chart_compare.png");

    dialogs.files.push_back(Picked_File{dir.File("both.qxl"), "both.qxl"});
    Menu("File_Save");
    EXPECT_EQ(dialogs.informed.back(), "Can not save because two files are open in compare mode.");
    EXPECT_FALSE(std::filesystem::exists(dir.File("both.qxl")));

    // The table of every shown row, and the picture as BMP and PNG.
    const std::string csv = dir.File("chart.csv");
    dialogs.files.push_back(Picked_File{csv, "chart.csv"});
    Menu("Log_Picture_File_Save_As");
    EXPECT_EQ(dialogs.dialogs_shown.back().initial_name, std::filesystem::path(a).stem().string() + "_qxl");
    const std::string table = Read_File(csv);
    EXPECT_EQ(
        table.rfind("Time,RPM [rpm],Ignition [Deg],AN1 Lambda [lambda],AN3 MAP [bar],Power [hp],(2)RPM", 0),
        0u)
        << table.substr(0, 200);
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), common + 1);
    for (const char* name : {"chart.bmp", "chart.png"}) {
        dialogs.files.push_back(Picked_File{dir.File(name), name});
        Menu("Log_Picture_File_Save_As");
        const QImage picture(QString::fromStdString(dir.File(name)));
        EXPECT_EQ(picture.size(), chart->size()) << name;
    }

    // The same rows against RPM, then against MAP, and its own exports.
    Click("cmd_RPM_Graph");
    auto* rpm = static_cast<ui::QX_RPM*>(window->Form("QX_RPM"));
    ASSERT_TRUE(rpm->isVisible());
    rpm->resize(900, 650);
    QApplication::processEvents();
    EXPECT_EQ(rpm->windowTitle().toStdString(),
              "RPM Graph - " + std::filesystem::path(a).filename().string() + "  compared with  " +
                  std::filesystem::path(b).filename().string());
    EXPECT_EQ(Series_Names(rpm->Chart_View()).size(), 10u);
    Shot(rpm, "rpm_graph_compare.png");
    rpm->findChild<QRadioButton*>("MAP_Option")->click();
    EXPECT_EQ(rpm->Reference(), Reference_Signal::MAP);
    dialogs.files.push_back(Picked_File{dir.File("pairs.csv"), "pairs.csv"});
    rpm->findChild<QAction*>("mnu_export")->trigger();
    EXPECT_EQ(Read_File(dir.File("pairs.csv")).rfind("Row,MAP,RPM [rpm],MAP,Ignition [Deg]", 0), 0u);
    dialogs.files.push_back(Picked_File{dir.File("pairs.bmp"), "pairs.bmp"});
    rpm->findChild<QAction*>("mnu_export")->trigger();
    EXPECT_FALSE(QImage(QString::fromStdString(dir.File("pairs.bmp"))).isNull());
    Shot(rpm, "rpm_graph_map.png");

    // Zooming the log window brings the graph to the same rows.
    Click("cmd_ZoomIn");
    const int zoomed_points = static_cast<QXYSeries*>(rpm->Chart_View()->chart()->series()[0])->count();
    EXPECT_LE(zoomed_points, Span());

    Menu("File_Close_Compare");
    EXPECT_FALSE(state->Compare_Mode);
    EXPECT_EQ(Series_Names(chart).size(), 5u);
    log->findChild<QTabWidget*>("Log_Tabs")->setCurrentIndex(1);
    Shot(log, "log_settings.png");
    EXPECT_EQ(Debug_Log().find("Error in "), std::string::npos) << Debug_Log();
}

TEST_F(LogChartWindow, TheSettingsFormRecalculatesTheLogAndNothingIsLostUnasked) {
    auto window = Start();
    const std::string a = dir.File("a.qxl"), b = dir.File("b.qxl");
    Write_File(a, test::Drive_Log_Text(std::string(QUORLEN_DATA_DIR) + "/" + Default_Log_Settings_File_Name,
                                       0, 400, "a.qxl"));
    Write_File(b, test::Drive_Log_Text(std::string(QUORLEN_DATA_DIR) + "/" + Default_Log_Settings_File_Name,
                                       200, 100, "b.qxl"));
    ASSERT_TRUE(log->Open_File(a));
    EXPECT_FALSE(state->Unsaved);

    // Another gearing for the gear the calculation takes: the speed follows at once.
    const int speed = state->columns.Col_Speed, rpm2 = state->columns.Col_RPM2;
    auto* gear = log->findChild<QLineEdit*>("txt_Gearing(3)");
    gear->setText("37");
    emit gear->editingFinished();
    EXPECT_NEAR(state->Log_Data(300, speed), state->Log_Data(300, rpm2) * 37 / 1000, 0.01);
    EXPECT_TRUE(state->Unsaved);

    // Another sensor and a name of one's own for a signal, the speed in mph.
    auto* sensor = log->findChild<QComboBox*>("Log_Sensor_combo(12)");
    const int volts = sensor->findText("Analog_0-5V");
    ASSERT_GE(volts, 0);
    sensor->setCurrentIndex(volts);
    emit sensor->activated(volts);
    EXPECT_NEAR(state->Log_Data(10, 13), 5.0 * boxsim::Engine_At(9).columns[13] / 256, 0.01);
    auto* name = log->findChild<QLineEdit*>("txt_CustomSignalName(12)");
    name->setText("TPS volts");
    emit name->editingFinished();
    log->findChild<QRadioButton*>("Speed_option(1)")->click();
    EXPECT_EQ(state->Log_Signal_Tab[static_cast<std::size_t>(speed - 1)].unit, "mph");
    log->findChild<QCheckBox*>("Views_chk(4)")->setChecked(true);
    EXPECT_EQ(state->setup.Views_chk[4], 1);

    // Opening another log asks first; Yes offers the save, and the saved file has it all.
    dialogs.answers = {Answer::Yes};
    dialogs.files.push_back(Picked_File{b, "b.qxl"});
    dialogs.files.push_back(Picked_File{dir.File("mine.qxl"), "mine.qxl"});
    Menu("File_Open");
    ASSERT_EQ(dialogs.asked, std::vector<std::string>{Unsaved_Log_Question});
    EXPECT_EQ(state->Last_Row, 100);
    const std::string saved = Read_File(dir.File("mine.qxl"));
    EXPECT_NE(saved.find("Log_Def12=TPS volts\t3\tAnalog_0-5V\t"), std::string::npos);
    EXPECT_NE(saved.find("Log_Speed_Unit=mph\t"), std::string::npos);
    EXPECT_NE(saved.find("Log_Views=0\t0\t0\t0\t1\t0\t"), std::string::npos);
    ASSERT_TRUE(log->Open_File(dir.File("mine.qxl")));
    EXPECT_EQ(log->findChild<QLineEdit*>("txt_CustomSignalName(12)")->text(), "TPS volts");
    EXPECT_TRUE(log->findChild<QRadioButton*>("Speed_option(1)")->isChecked());

    // Clearing an unsaved log asks too, and so does leaving the program.
    state->Unsaved = true;
    dialogs.answers = {Answer::No};
    Click("cmd_Clear_Logg");
    EXPECT_EQ(dialogs.asked.size(), 2u);
    EXPECT_EQ(state->Last_Row, 0);
    ASSERT_TRUE(log->Open_File(b));
    state->Unsaved = true;
    dialogs.answers = {Answer::No};
    window->File_exit_Click();
    EXPECT_EQ(dialogs.asked.size(), 3u);
}

TEST_F(LogChartWindow, TheMainWindowsViewMenuShowsTheLogWindow) {
    auto window = Start();
    EXPECT_FALSE(log->isVisible());
    window->findChild<QAction*>("View_Log")->trigger();
    EXPECT_TRUE(log->isVisible());
    // With nothing ticked the chart says what to do.
    Tick(0, 0, false);
    for (int s : {11, 13, 40})
        Tick(0, s, false);
    EXPECT_EQ(Series_Names(log->Chart_View()), std::vector<QString>{"Select a signal to view"});
}

// quorlen-cli draws the same chart without a window, and writes its rows.
TEST(LogChartCli, DrawsAndExportsTheChartOfNamedSignals) {
    test::Temp_Dir dir;
    const std::string shipped = std::string(QUORLEN_DATA_DIR) + "/" + Default_Log_Settings_File_Name;
    const std::string a = dir.File("a.qxl"), b = dir.File("b.qxl");
    Write_File(a, test::Drive_Log_Text(shipped, 0, 600, "a.qxl"));
    Write_File(b, test::Drive_Log_Text(shipped, 300, 400, "b.qxl"));

    auto r = test::Run_Cli({"log-chart", a, "--signals", "rpm,13", "--compare", b, "--from", "101", "--to",
                            "110", "-o", dir.File("rows.csv")});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "rows: 101 to 110\nfile: " + dir.File("rows.csv") + "\ncompared rows: 101 to 110\n");
    const std::vector<std::string> lines = Split_Lines(Read_File(dir.File("rows.csv")));
    ASSERT_EQ(lines.size(), 11u);
    EXPECT_EQ(lines[0], "Time,RPM [rpm],AN3 MAP [bar],(2)RPM [rpm],(2)AN3 MAP [bar]");
    EXPECT_EQ(lines[1].rfind("5.00,", 0), 0u);

    r = test::Run_Cli({"log-chart", a, "--signals", "Power", "--second", "AN3 MAP", "--x", "MAP", "--size",
                       "800x500", "-o", dir.File("pairs.png")});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(QImage(QString::fromStdString(dir.File("pairs.png"))).size(), QSize(800, 500));
    r = test::Run_Cli({"log-chart", a, "--signals", "RPM", "-o", dir.File("chart.bmp")});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(QImage(QString::fromStdString(dir.File("chart.bmp"))).size(), QSize(1200, 700));

    r = test::Run_Cli({"log-chart", a, "--signals", "RPM,Boost", "-o", dir.File("x.png")});
    EXPECT_EQ(r.code, 2);
    EXPECT_NE(r.err.find("no signal 'Boost'; it has: RPM, Ignition,"), std::string::npos) << r.err;
    EXPECT_EQ(
        test::Run_Cli({"log-chart", dir.File("none.qxl"), "--signals", "RPM", "-o", dir.File("x.png")}).code,
        1);
    EXPECT_EQ(
        test::Run_Cli({"log-chart", a, "--signals", "RPM", "--from", "5", "-o", dir.File("x.png")}).code, 2);
    EXPECT_EQ(test::Run_Cli({"log-chart", a, "--signals", "RPM", "-o", dir.File("x.jpg")}).code, 2);
    EXPECT_FALSE(std::filesystem::exists(dir.File("x.png")));
}

} // namespace
} // namespace quorlen
