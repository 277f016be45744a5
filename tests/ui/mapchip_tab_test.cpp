// The Mapchip tab of the main window offscreen: its controls, the tab that is remembered,
// and what a tuner sees when no card reader can be reached.

#include "support/main_window_run.h"
#include "support/pictures.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"

#include <QApplication>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdlib>

namespace quorlen {
namespace {

class Mapchip_Tab : public ::testing::Test {
protected:
    std::unique_ptr<ui::BoostProgMain> Start() { return test::Start_Main_Window(dir, dialogs); }
    static QString Text(QWidget* window, const char* name) {
        auto* line = window->findChild<QLineEdit*>(name);
        return line != nullptr ? line->text() : QString("(missing)");
    }
    static void Click(QWidget* window, const char* name) {
        auto* button = window->findChild<QPushButton*>(name);
        ASSERT_NE(button, nullptr) << name;
        ASSERT_TRUE(button->isEnabled()) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }

    test::Temp_Dir dir;
    test::Scripted_Dialogs dialogs;
};

TEST_F(Mapchip_Tab, ItsTabIsRememberedAndEveryCardCommandIsThere) {
    auto window = Start();
    for (const char* name : {"Check_Card_Present_cmd", "Read_Card_Inbox_cmd", "Write_Card_Inbox_cmd",
                             "Chipdrive_Connect", "Read_Chipdrive_cmd", "Write_Chipdrive_cmd",
                             "cmd_FindTodos", "cmdReadTodos", "cmd_WriteTodos", "cmd_DisConnectTodos"})
        EXPECT_NE(window->findChild<QPushButton*>(name), nullptr) << name;
    EXPECT_EQ(Text(window.get(), "txt_TodosStatus"), "<------>");
    auto* tabs = window->findChild<QTabWidget*>("SSTab_Communication");
    EXPECT_EQ(tabs->currentIndex(), 0);
    tabs->setCurrentIndex(1);
    EXPECT_EQ(window->App().ini.Read_Ini("Default_Com_interface"), "Mapchip_Communication");
    window->File_exit_Click();
    window.reset();

    auto again = Start();
    EXPECT_EQ(again->findChild<QTabWidget*>("SSTab_Communication")->currentIndex(), 1);
}

TEST_F(Mapchip_Tab, WithoutTheCardServiceTheTextsSaySoAndTheProgramGoesOn) {
    setenv("PCSCLITE_CSOCK_NAME", "/nonexistent/quorlen/pcscd.comm", 0);
    auto window = Start();
    window->findChild<QTabWidget*>("SSTab_Communication")->setCurrentIndex(1);
    // The search runs on the timer's tick, after "< Searching... >" was painted.
    for (int i = 0; i < 50 && Text(window.get(), "txt_Chipdrive_status") != "< No Reader >"; ++i)
        QTest::qWait(10);
    EXPECT_EQ(Text(window.get(), "txt_Chipdrive_status"), "< No Reader >");
    EXPECT_NE(window->App().texts.Debug_txt.find("(pcscd) is not running"), std::string::npos);
    const auto before = window->App().image.CardByte;
    Click(window.get(), "Read_Chipdrive_cmd");
    EXPECT_EQ(Text(window.get(), "txt_Chipdrive_status"), "< No Reader >");

    dialogs.informed.clear();
    Click(window.get(), "cmd_FindTodos");
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_EQ(dialogs.informed[0].rfind("There are no Todos reader/writer connected to the PC", 0), 0u);
    EXPECT_FALSE(window->Form_Exists("frm_TodosII"));
    Click(window.get(), "cmdReadTodos");
    EXPECT_EQ(Text(window.get(), "txt_TodosStatus"), "<------>");
    EXPECT_EQ(window->App().image.CardByte, before);
    EXPECT_TRUE(window->Ready());
}

// The pictures the documentation shows of the card pages, best taken inside
// scripts/virtual-card.sh so that a reader and a card are there.
TEST_F(Mapchip_Tab, Screenshots) {
    test::Picture_Folder pictures;
    const QString out = pictures.Path();
    auto window = Start();
    window->resize(1100, 760);
    window->show();
    window->findChild<QTabWidget*>("SSTab_Communication")->setCurrentIndex(1);
    QTest::qWait(300);
    Click(window.get(), "cmd_FindTodos");
    Click(window.get(), "cmdReadTodos");
    QTest::qWait(100);
    ASSERT_TRUE(window->grab().save(out + "/mapchip_tab.png"));
    QWidget* form = window->Form("frm_TodosII");
    form->show();
    QTest::qWait(100);
    ASSERT_TRUE(form->grab().save(out + "/frm_todos_ii.png"));
    for (const char* name : {"/mapchip_tab.png", "/frm_todos_ii.png"})
        EXPECT_TRUE(test::Has_Content(QImage(out + name))) << name;
}

} // namespace
} // namespace quorlen
