// The main window driven as a person would, offscreen: start-up order, title, diagnostics,
// child forms that hide, and both ways out.

#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"
#include "ui/qt_dialogs.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>

namespace quorlen {
namespace {

using test::Read_File;
using test::Scripted_Dialogs;
using test::Temp_Dir;
using test::Write_File;

class MainWindow : public ::testing::Test {
protected:
    std::unique_ptr<ui::BoostProgMain> Start() { return test::Start_Main_Window(dir, dialogs); }
    std::string Log() { return Read_File(dir.File("Debug_file.log")); }

    Temp_Dir dir;
    Scripted_Dialogs dialogs;
};

TEST_F(MainWindow, EmptyProgramFolderComesUpAndLeavesByTheMenuWithoutErrors) {
    auto window = Start();
    EXPECT_TRUE(window->Ready());
    EXPECT_EQ(window->windowTitle(), "VELMORA RZ400/RZ800M3 Interface Software - New1.qxs");
    EXPECT_EQ(Log().rfind("Quorlen started: ", 0), 0u);
    // Without the default settings file the load says so, and carries on.
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_EQ(dialogs.informed[0], "Not a valid qxs-file");
    EXPECT_EQ(window->App().program.ComSpeed, 115200);
    EXPECT_FALSE(window->App().program.Autostart_Pending);
    for (const char* name : {"Write_Settings", "Read_Settings", "Verify_Settings", "Connect_Info"})
        EXPECT_TRUE(window->findChild<QPushButton*>(name)->isEnabled()) << name;
    auto* tabs = window->findChild<QTabWidget*>("sstab_Main");
    ASSERT_NE(tabs, nullptr);
    EXPECT_EQ(tabs->count(), 4);
    auto* comm = window->findChild<QTabWidget*>("SSTab_Communication");
    EXPECT_EQ(comm->tabText(0), "RZ-box");
    EXPECT_EQ(comm->tabText(1), "Mapchip");
    EXPECT_TRUE(window->findChild<QLabel*>("Version_label")->text().startsWith("Ver. "));

    window->Form("QX_Debug"); // a form that exists at exit is unloaded too
    window->File_exit_Click();
    EXPECT_TRUE(window->App().program.Closing);
    EXPECT_FALSE(window->Form_Exists("QX_Debug"));
    EXPECT_EQ(Log().find("Error in "), std::string::npos);
    // File, Exit keeps both windows' places, as the close box does.
    EXPECT_NE(Read_File(dir.File("RZ400_800M3.ini")).find("Main_Window_Size="), std::string::npos);
    EXPECT_NE(Read_File(dir.File("RZ400_800M3.ini")).find("Log_Window_Size="), std::string::npos);
}

TEST(Message_Boxes, EachShowsTheSymbolItsTextCallsFor) {
    QWidget parent;
    ui::Qt_User_Dialogs dialogs(&parent, "Quorlen");
    auto shown = [](auto show) {
        auto icon = std::make_shared<QMessageBox::Icon>(QMessageBox::NoIcon);
        auto seen = std::make_shared<bool>(false);
        QTimer::singleShot(0, [icon, seen] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr) return;
            *seen = true;
            *icon = box->icon();
            box->done(QMessageBox::Ok);
        });
        show();
        EXPECT_TRUE(*seen);
        return *icon;
    };
    EXPECT_EQ(shown([&] { dialogs.Inform("Not a valid qxs-file"); }), QMessageBox::NoIcon);
    EXPECT_EQ(shown([&] { dialogs.Show_Message(Icon::Stop, "No complete data in this chunk"); }),
              QMessageBox::Critical);
    EXPECT_EQ(shown([&] { dialogs.Show_Message(Icon::Information, "Length of log header"); }),
              QMessageBox::Information);
    EXPECT_EQ(shown([&] { dialogs.Ask_Ok_Cancel("load anyway?"); }), QMessageBox::Question);
}

TEST_F(MainWindow, TheCommunicationPageUsedLastComesBackAtTheNextStart) {
    auto window = Start();
    auto* comm = window->findChild<QTabWidget*>("SSTab_Communication");
    EXPECT_EQ(comm->currentIndex(), 0);
    QTabBar* bar = comm->tabBar();
    QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->tabRect(1).center());
    EXPECT_NE(Read_File(dir.File("RZ400_800M3.ini")).find("Default_Com_interface=Mapchip_Communication"),
              std::string::npos);
    window->File_exit_Click();
    window.reset();

    window = Start();
    EXPECT_EQ(window->findChild<QTabWidget*>("SSTab_Communication")->currentIndex(), 1);
    window->File_exit_Click();
}

TEST_F(MainWindow, ShippedDataLoadsTheDefaultFileButTheTitleSaysNew1AndTheCloseBoxLeavesCleanly) {
    test::Copy_Shipped_Data(dir);
    auto window = Start();
    EXPECT_TRUE(dialogs.informed.empty());
    EXPECT_EQ(window->windowTitle(), "VELMORA RZ400/RZ800M3 Interface Software - New1.qxs");
    EXPECT_EQ(window->App().image.CardByte[255], 200);
    EXPECT_EQ(window->App().files.CurrentFileName, "");
    window->close();
    EXPECT_TRUE(window->App().program.Closing);
    EXPECT_EQ(Log().find("Error in "), std::string::npos);
    // Both windows' places are kept for the next start.
    std::string ini = Read_File(dir.File("RZ400_800M3.ini"));
    EXPECT_NE(ini.find("Main_Window_Size="), std::string::npos);
    EXPECT_NE(ini.find("Log_Window_Size="), std::string::npos);
}

TEST_F(MainWindow, PrefsFormHidesOnCloseAndKeepsItsValues) {
    auto window = Start();
    window->Show_Prefs();
    QWidget* prefs = window->Form("QX_prefs");
    ASSERT_NE(prefs, nullptr);
    EXPECT_EQ(prefs->windowTitle(), "VELMORA RZ400/RZ800M3 Interface Software - PC settings");
    auto* speed = prefs->findChild<QRadioButton*>("ComSpeed_option(1)");
    speed->click();
    EXPECT_EQ(window->App().program.ComSpeed, 625000);
    EXPECT_NE(Read_File(dir.File("RZ400_800M3.ini")).find("ComSpeed=1"), std::string::npos);
    prefs->close();
    EXPECT_FALSE(prefs->isVisible());
    EXPECT_TRUE(window->Form_Exists("QX_prefs"));
    EXPECT_TRUE(window->Form("QX_prefs")->findChild<QRadioButton*>("ComSpeed_option(1)")->isChecked());
    window->File_exit_Click();
}

TEST_F(MainWindow, AutoguideQuestionComesOnceAndInTheChosenLanguage) {
    Write_File(dir.File("RZ400_800M3.ini"), "Language=SWE\r\nAutoguide=1\r\n");
    auto window = Start();
    window->Form_Activate();
    ASSERT_TRUE(window->Form_Exists("Autoguide_startup_Dialog"));
    QWidget* dialog = window->Form("Autoguide_startup_Dialog");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->findChild<QLabel*>("Label1")->text(),
              QString::fromUtf8("Vill du köra Autosetup guiden?"));
    dialog->hide();
    window->Form_Activate();
    EXPECT_FALSE(dialog->isVisible());
    // Ticking "do not show again" writes the key.
    auto* check = dialog->findChild<QWidget*>("Check1");
    QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(5, check->height() / 2));
    EXPECT_NE(Read_File(dir.File("RZ400_800M3.ini")).find("Autoguide=0"), std::string::npos);
    window->close();
}

TEST_F(MainWindow, AnActivationAfterExitBringsUpNothingThatWouldKeepTheProgramAlive) {
    Write_File(dir.File("RZ400_800M3.ini"), "Autoguide=1\r\n");
    auto window = Start();
    window->File_exit_Click();
    window->Form_Activate();
    EXPECT_FALSE(window->Form_Exists("Autoguide_startup_Dialog"));
    for (QWidget* w : QApplication::topLevelWidgets())
        EXPECT_FALSE(w->isVisible()) << w->objectName().toStdString();
}

TEST_F(MainWindow, StartsWithoutADiagnosticsLogWhenItCannotBeOpened) {
    // A folder in the log's place stands for any log that cannot be opened (a read-only
    // program folder, a full disk): root may write anywhere, so a permission test would not.
    std::filesystem::create_directory(dir.File("Debug_file.log"));
    auto window = Start();
    EXPECT_TRUE(window->Ready());
    EXPECT_FALSE(window->App().log.Is_Open());
    EXPECT_EQ(window->windowTitle(), "VELMORA RZ400/RZ800M3 Interface Software - New1.qxs");
    window->close();
}

} // namespace
} // namespace quorlen
