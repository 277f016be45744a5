// The main window while a log runs against the simulator with its engine running: the cursor
// on the fuel map, Enter in the map sending the typed cell to the box without ending the log,
// the live frame's plus asking the box to move its running cell, the port kept from every
// other command, and everything put away when the log stops. With QUORLEN_SCREENSHOT_DIR
// set, the live display and the main window with its cursor are saved there as PNG.

#include "logging/log_state.h"
#include "support/boxsim_run.h"
#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/settings_session.h"
#include "support/temp_dir.h"
#include "tables/map_tables.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_log.h"

#include <QApplication>
#include <QDir>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

namespace quorlen {
namespace {

class LiveWindow : public ::testing::Test {
protected:
    void SetUp() override {
        box = std::make_unique<test::Boxsim_Run>(
            BOXSIM_EXECUTABLE,
            std::vector<std::string>{"--engine-running", "--image-out", dir.File("box.qxs")});
        ASSERT_TRUE(box->Ready());
        test::Copy_Shipped_Data(
            dir, {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs", Default_Log_Settings_File_Name});
        window = test::Start_Main_Window(dir, dialogs, test::On_Port(box->Link()));
        window->resize(1280, 900);
        window->show();
        window->findChild<QTabWidget*>("sstab_Main")->setCurrentIndex(2);
        window->findChild<QTabWidget*>("SSTab_Fuel")->setCurrentIndex(0);
        log = static_cast<ui::QX_Log*>(window->Form("QX_Log"));
    }
    void TearDown() override {
        if (window) window->close();
    }

    template <typename T = QWidget>
    T* Find(const char* name) {
        auto* w = window->findChild<T*>(name);
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    QString Status() { return Find<QLineEdit>("rs232_text")->text(); }
    std::uint8_t Byte(int address) { return window->App().image.CardByte[static_cast<std::size_t>(address)]; }
    QString Shots() { return qEnvironmentVariable("QUORLEN_SCREENSHOT_DIR"); }

    test::Temp_Dir dir;
    test::Scripted_Dialogs dialogs;
    std::unique_ptr<test::Boxsim_Run> box;
    std::unique_ptr<ui::BoostProgMain> window;
    ui::QX_Log* log = nullptr;
};

TEST_F(LiveWindow, EnterAndTheLiveFrameReachTheBoxWhileTheLogRunsOn) {
    auto* start_stop = Find<QPushButton>("Stop_Logging_cmd");
    start_stop->click();
    QTest::qWait(1200);
    ASSERT_TRUE(log->Logging());

    // The log has the port: the box commands are off, the live frame and the cursor are on.
    EXPECT_FALSE(Find<QPushButton>("Read_Settings")->isEnabled());
    EXPECT_FALSE(Find<QPushButton>("Write_bin_command_cmd")->isEnabled());
    EXPECT_TRUE(Find("Adjust_current_frame")->isVisible());
    EXPECT_TRUE(Find<QRadioButton>("Live_Adjust_option(0)")->isVisible()) << "the engine runs";
    QFrame* cursor = Find<QFrame>("Curser_3dfuel");
    ASSERT_TRUE(cursor->isVisible());
    QTableView* grid = Find<QTableView>("Fuel_3D_Grid");
    // The box stands round the running point, inside the cell the display found.
    const Running_Cell& running = window->App().display.fuel;
    ASSERT_TRUE(running.shown);
    const QRect cell = grid->visualRect(grid->model()->index(running.Cursor_Row, running.Cursor_Column));
    EXPECT_TRUE(cell.adjusted(-1, -1, 1, 1).contains(cursor->geometry().center()))
        << cursor->geometry().center().x() << "," << cursor->geometry().center().y();

    // Typing into a cell changes the image; Enter sends it the live way.
    const int address = Fuel_Block(window->App().Tables(dialogs)).Cell(3, 4);
    grid->setFocus();
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier,
                      grid->visualRect(grid->model()->index(3, 4)).center());
    QTest::keyClick(grid, Qt::Key_7);
    const std::uint8_t typed = Byte(address);
    const int rows_before = log->State().capture.Log_Row_Count;
    QTest::keyClick(grid, Qt::Key_Return);
    EXPECT_EQ(Status(), "< Settings updated >");
    EXPECT_EQ(window->App().image.ChangedByte[static_cast<std::size_t>(address)], 0);
    // Twenty rows a second: eight rows are 0.4 s of a stream that came back; a loaded machine
    // may take longer to serve them, which says nothing about the write.
    for (int waited = 0; waited < 3000 && log->State().capture.Log_Row_Count < rows_before + 8; waited += 50)
        QTest::qWait(50);
    EXPECT_TRUE(log->Logging());
    EXPECT_GE(log->State().capture.Log_Row_Count, rows_before + 8) << "the stream came back";

    // The box moves the fuel cell it runs in, and says which bytes it wrote.
    Find<QRadioButton>("Live_Adjust_option(0)")->click();
    Find<QPushButton>("plus_3D(1)")->click();
    const QString said = Find<QLabel>("ErrCode_label(1)")->text();
    EXPECT_TRUE(said == "Update OK" || said == "Not in cell") << said.toStdString();
    EXPECT_EQ(Status(), "< Settings updated >");

    // The live display follows the log.
    window->Show_Display();
    QTest::qWait(500);
    QWidget* display = window->Form("Display");
    ASSERT_TRUE(display->isVisible());
    if (!Shots().isEmpty()) {
        display->grab().save(QDir(Shots()).filePath("live_display.png"));
        window->grab().save(QDir(Shots()).filePath("live_fuel_cursor.png"));
    }

    start_stop->click();
    EXPECT_FALSE(log->Logging());
    EXPECT_FALSE(cursor->isVisible());
    EXPECT_FALSE(Find("Adjust_current_frame")->isVisible());
    EXPECT_TRUE(Find<QPushButton>("Read_Settings")->isEnabled());

    // What the box kept is what the program holds, the typed cell among it.
    box->Stop();
    const auto kept = test::Load_Image(dir.File("box.qxs"));
    ASSERT_TRUE(kept.has_value());
    EXPECT_EQ((*kept)[static_cast<std::size_t>(address)], typed);
    for (int a = 258; a <= 883; ++a)
        EXPECT_EQ((*kept)[static_cast<std::size_t>(a)], Byte(a)) << "address " << a;
}

} // namespace
} // namespace quorlen
