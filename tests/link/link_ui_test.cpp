// The communication page against the simulator, offscreen: the poll names the port, Connect
// info shows the box, the manual port buttons, and the preferences offer the simulator.

#include "support/boxsim_run.h"
#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

namespace quorlen {
namespace {

class Main_Window_Link : public ::testing::Test {
protected:
    std::unique_ptr<ui::BoostProgMain> Start(const std::string& port) {
        return test::Start_Main_Window(dir, dialogs, test::On_Port(port));
    }
    QString Caption(ui::BoostProgMain& w, const char* name) { return w.findChild<QAction*>(name)->text(); }
    std::string Log() { return test::Read_File(dir.File("Debug_file.log")); }

    test::Temp_Dir dir;
    test::Scripted_Dialogs dialogs;
};

TEST_F(Main_Window_Link, PollConnectInfoAndManualPortAgainstTheSimulator) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--engine-running", "--serial", "1234", "--firmware",
                                             "800M3 V3.42", "--dataset", "201"});
    ASSERT_TRUE(box.Ready());
    auto window = Start(box.Link());
    EXPECT_EQ(Caption(*window, "Online_mnu"), "System not connected");
    EXPECT_FALSE(window->findChild<QAction*>("Engine_OnOff_mnu")->isVisible());

    window->Check_connection_timer_Timer();
    EXPECT_EQ(Caption(*window, "Online_mnu"), QString::fromStdString("System connected to " + box.Link()));
    EXPECT_EQ(Caption(*window, "Engine_OnOff_mnu"), "Engine running");
    EXPECT_TRUE(window->App().link_state.Connected);
    EXPECT_EQ(window->findChild<QLabel*>("Box_Info_label")->text(),
              "VELMORA RZ 800M3 V3.42  -  Serial RZ1234  -  SC ID 201  -  Master mode");

    dialogs.informed.clear();
    window->findChild<QPushButton*>("Connect_Info")->click();
    ASSERT_EQ(dialogs.informed_titles, std::vector<std::string>{"Connected box info"});
    EXPECT_EQ(dialogs.informed.back().rfind("VELMORA RZ 800M3 V3.42\r\nSerial RZ1234\r\n", 0), 0u);
    EXPECT_EQ(window->findChild<QLineEdit*>("rs232_text")->text(), "< Info received OK >");
    EXPECT_TRUE(window->findChild<QPushButton*>("Connect_Info")->isEnabled());

    auto* open = window->findChild<QPushButton*>("Com_Open");
    auto* close = window->findChild<QPushButton*>("Com_Close");
    open->click();
    EXPECT_FALSE(open->isEnabled());
    EXPECT_TRUE(close->isEnabled());
    EXPECT_EQ(window->findChild<QLineEdit*>("rs232_text")->text(),
              QString::fromStdString("< " + box.Link() + " open >"));
    window->Check_connection_timer_Timer(); // uses the open port and leaves it open
    close->click();
    EXPECT_TRUE(open->isEnabled());
    EXPECT_EQ(window->findChild<QLineEdit*>("rs232_text")->text(),
              QString::fromStdString("< " + box.Link() + " closed >"));

    box.Stop();
    window->Check_connection_timer_Timer();
    window->Check_connection_timer_Timer();
    EXPECT_TRUE(window->isVisible()) << "the window carries on without its box";
    window->File_exit_Click();
    const std::string log = Log();
    EXPECT_EQ(log.find("Error in Check"), log.rfind("Error in Check"));
}

TEST_F(Main_Window_Link, PreferencesOfferTheSimulatorAndKeepItsPath) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {});
    ASSERT_TRUE(box.Ready());
    auto window = Start(box.Link());
    window->Check_connection_timer_Timer();
    QWidget* prefs = window->Form("QX_prefs");
    prefs->show();
    auto* combo = prefs->findChild<QComboBox*>("Combo1");
    EXPECT_EQ(combo->currentText(),
              QString::fromStdString("Not available! " + box.Link() + "  pseudo-terminal"));
    prefs->findChild<QPushButton*>("ApplyButton")->click();
    EXPECT_NE(test::Read_File(dir.File("RZ400_800M3.ini")).find("comport1=" + box.Link()), std::string::npos);

    // A path typed into the list is taken as it stands.
    combo->setEditText(QString::fromStdString(dir.File("other-box")));
    prefs->findChild<QPushButton*>("ApplyButton")->click();
    EXPECT_NE(test::Read_File(dir.File("RZ400_800M3.ini")).find("comport1=" + dir.File("other-box")),
              std::string::npos);
    window->File_exit_Click();
}

} // namespace
} // namespace quorlen
