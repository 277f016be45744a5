// The main window reading and writing against the simulator, offscreen: the buttons are off
// while the port is owned, the window is served during a write, the progress reaches its
// end, and the error counters come and go beside the report.

#include "support/boxsim_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

namespace quorlen {
namespace {

// Remembers whether any of the four command buttons could be pressed while a question was up.
class Watching_Dialogs final : public User_Dialogs {
public:
    ui::BoostProgMain* window = nullptr;
    test::Scripted_Dialogs script;
    bool buttons_on_during_question = false;

    void Inform(const std::string& text) override { script.Inform(text); }
    Answer Ask_Ok_Cancel(const std::string& text) override {
        Look();
        return script.Ask_Ok_Cancel(text);
    }
    Answer Ask_Yes_No(const std::string& text) override {
        Look();
        return script.Ask_Yes_No(text);
    }
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup& s) override {
        return script.Pick_Open_File(s);
    }
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup& s) override {
        return script.Pick_Save_File(s);
    }

private:
    void Look() {
        for (const char* name : {"Write_Settings", "Read_Settings", "Verify_Settings", "Connect_Info"})
            if (window->findChild<QPushButton*>(name)->isEnabled()) buttons_on_during_question = true;
    }
};

TEST(Main_Window_Settings, ReadWriteAndClearTheErrorCounters) {
    test::Temp_Dir dir;
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--dataset", "77", "--errors", "1011=0x21"});
    ASSERT_TRUE(box.Ready());
    ui::Start_Options options;
    options.app_path = dir.Slash();
    options.port = box.Link();
    ui::BoostProgMain window(options);
    Watching_Dialogs dialogs;
    dialogs.window = &window;
    window.Use_Dialogs(&dialogs);
    window.Form_Load();
    window.App().program.Com_Port = window.App().link_state.Ports.Number_For(box.Link());

    window.findChild<QPushButton*>("Read_Settings")->click();
    ASSERT_EQ(dialogs.script.asked.size(), 1u) << "the box holds dataset 77";
    EXPECT_FALSE(dialogs.buttons_on_during_question);
    EXPECT_TRUE(window.findChild<QLineEdit*>("rs232_text")->text().startsWith("Read finished "));
    EXPECT_TRUE(window.windowTitle().endsWith("Settings loaded from box"));
    auto* progress = window.findChild<QProgressBar*>("rw_Progress");
    EXPECT_EQ(progress->maximum(), 200 + 2056);
    EXPECT_EQ(progress->value(), progress->maximum());
    EXPECT_TRUE(window.findChild<QLabel*>("ErrCode_label")->isVisible());
    EXPECT_EQ(window.findChild<QPlainTextEdit*>("Error_Codes_txt")->toPlainText(),
              "Master:\nAFR high 1\nAFR low 2\n\nSlave:\n");
    EXPECT_TRUE(window.findChild<QPushButton*>("Write_Settings")->isEnabled());

    // An edit, written while a timer waits to be served.
    App_Context& app = window.App();
    app.image.CardByte[300] = static_cast<std::uint8_t>(app.image.CardByte[300] + 1);
    app.image.ChangedByte[300] = Changed_Mark;
    bool served_during_write = false;
    QTimer::singleShot(0, &window, [&] { served_during_write = app.link.Write_In_Progress; });
    window.findChild<QPushButton*>("Write_Settings")->click();
    EXPECT_TRUE(served_during_write);
    EXPECT_EQ(window.findChild<QLineEdit*>("rs232_text")->text(), "Write finished, M");
    EXPECT_EQ(progress->value(), progress->maximum());
    EXPECT_FALSE(app.link.Write_In_Progress || app.link.Link_Busy);

    dialogs.script.informed.clear(); // the load's word about the missing default file
    window.findChild<QPushButton*>("Clear_Err_Counters_cmd")->click();
    EXPECT_EQ(dialogs.script.informed, std::vector<std::string>{"All error codes are cleared"});
    EXPECT_FALSE(window.findChild<QLabel*>("ErrCode_label")->isVisible());
    EXPECT_FALSE(app.image.Write_Errors_Only);

    window.findChild<QPushButton*>("Verify_bR_Settings")->click();
    EXPECT_EQ(window.findChild<QLineEdit*>("rs232_text")->text(), "Verify finished, M");
    EXPECT_FALSE(window.findChild<QLabel*>("ErrCode_label")->isVisible()) << "a clean read hides them";
    for (const char* name : {"Write_Settings", "Read_Settings", "Verify_Settings", "Connect_Info"})
        EXPECT_TRUE(window.findChild<QPushButton*>(name)->isEnabled()) << name;
    window.File_exit_Click();
}

} // namespace
} // namespace quorlen
