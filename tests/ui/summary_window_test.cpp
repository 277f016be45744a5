// The setting summary viewer as a tuner reaches it: from the main window's menu and from the
// log window, exported to rich text and opened again, printed to a PDF.

#include "support/cli_run.h"
#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_log.h"
#include "ui/qx_setting_summary.h"

#include "core/atomic_file.h"
#include "files/rtf_text.h"

#include <QAction>
#include <QLabel>
#include <QPrinter>
#include <QPushButton>
#include <QTextEdit>

#include <gtest/gtest.h>

#include <cstdlib>

namespace quorlen {
namespace {

using test::Scripted_Dialogs;
using test::Temp_Dir;

class SummaryWindow : public ::testing::Test {
protected:
    void SetUp() override {
        test::Copy_Shipped_Data(dir);
        window = test::Start_Main_Window(dir, dialogs);
    }
    ui::QX_Setting_Summary* Summary() {
        return static_cast<ui::QX_Setting_Summary*>(window->Form("QX_Setting_Summary"));
    }
    QString Shown() { return Summary()->findChild<QTextEdit*>("txt_SettingSummary")->toPlainText(); }

    Temp_Dir dir;
    Scripted_Dialogs dialogs;
    std::unique_ptr<ui::BoostProgMain> window;
};

TEST_F(SummaryWindow, MenuOpensTheViewerOnTheImage) {
    window->findChild<QAction*>("Setting_Summary")->trigger();
    ASSERT_TRUE(window->Form_Exists("QX_Setting_Summary"));
    auto* summary = Summary();
    EXPECT_TRUE(summary->isVisible());
    EXPECT_EQ(summary->windowTitle(), "Setting summary viewer");
    const QStringList lines = Shown().split('\n');
    ASSERT_GE(lines.size(), 8);
    EXPECT_EQ(lines[0], "[readable_settings]");
    EXPECT_EQ(lines[1], "Quorlen version: \t\t3.4.0");
    // No box has answered: the labels stay, their values are empty.
    EXPECT_EQ(lines[3], "QX-box firmware: \t\t");
    EXPECT_EQ(lines[5], "RZ-box Serial: \t\t");
    EXPECT_EQ(lines[6], "RZ mode: \t\tMaster");
    EXPECT_EQ(lines[7], "[end readable_settings]");
    EXPECT_TRUE(Shown().contains("--------Tables--------\nIgnition load table:"));
}

TEST_F(SummaryWindow, LogWindowShowsItsLogsSettingsAndAnEmptyLogNone) {
    window->Form("QX_Log")->findChild<QPushButton*>("Setting_Summary")->click();
    EXPECT_TRUE(Summary()->isVisible());
    EXPECT_EQ(Shown(), ""); // the default log settings carry no readable settings

    auto& log = static_cast<ui::QX_Log*>(window->Form("QX_Log"))->State();
    log.Readable_Settings_Text = "[readable_settings]\r\nRZ mode: \t\tSlave\r\n[end readable_settings]\r\n";
    Summary()->findChild<QPushButton*>("cmd_View_Log_Settings")->click();
    EXPECT_EQ(Shown(), "[readable_settings]\nRZ mode: \t\tSlave\n[end readable_settings]\n");
    Summary()->findChild<QPushButton*>("cmd_View_Box_Settings")->click();
    EXPECT_TRUE(Shown().startsWith("[readable_settings]\nQuorlen version:"));
}

TEST_F(SummaryWindow, ExportAndOpenKeepTheText) {
    window->Setting_Summary_Click();
    const std::string before = Summary()->Shown_Text();
    const std::string file = dir.File("summary.rtf");
    dialogs.files.push_back(Picked_File{file, "summary.rtf"});
    Summary()->SaveAs_Click();
    ASSERT_FALSE(dialogs.dialogs_shown.empty());
    EXPECT_EQ(dialogs.dialogs_shown.back().initial_name, "New1_summary.rtf");
    EXPECT_EQ(dialogs.dialogs_shown.back().default_ext, "rtf");
    EXPECT_EQ(Rtf_To_Text(test::Read_File(file)), before);

    Summary()->findChild<QTextEdit*>("txt_SettingSummary")->clear();
    dialogs.files.push_back(Picked_File{file, "summary.rtf"});
    Summary()->Open_Click();
    EXPECT_EQ(Summary()->Shown_Text(), before);
}

TEST_F(SummaryWindow, PrintsToPages) {
    window->Setting_Summary_Click();
    const std::string pdf = dir.File("summary.pdf");
    {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(QString::fromStdString(pdf));
        Summary()->Print_To(printer);
    }
    const std::string bytes = test::Read_File(pdf);
    EXPECT_EQ(bytes.rfind("%PDF", 0), 0u);
    EXPECT_GT(bytes.size(), 2000u);
}

TEST_F(SummaryWindow, CommandLinePagesAndRichText) {
    const std::string qxs = dir.File("RZ400_800M3_Default_Settings.qxs");
    const std::string pdf = dir.File("cli.pdf");
    const std::string rtf = dir.File("cli.rtf");
    auto r = test::Run_Cli({"summary", qxs, "--tables", "alt1", "--pdf", pdf, "--rtf", rtf, "--ini",
                            dir.File("RZ400_800M3.ini")});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, ""); // written, not printed
    EXPECT_EQ(test::Read_File(pdf).rfind("%PDF", 0), 0u);
    const std::string text = Rtf_To_Text(test::Read_File(rtf));
    EXPECT_EQ(text.rfind("[readable_settings]\r\n", 0), 0u);
    EXPECT_NE(text.find("Boost load table:\r\n"), std::string::npos);
    // A word processor's reading of the file, when one is installed, has the same words.
    if (std::system("command -v unrtf >/dev/null 2>&1") == 0) {
        const std::string out = dir.File("unrtf.txt");
        ASSERT_EQ(std::system(("unrtf --text '" + rtf + "' > '" + out + "' 2>/dev/null").c_str()), 0);
        auto words = [](const std::string& s) {
            std::string w;
            for (char c : s)
                if (c != ' ' && c != '\t' && c != '\r' && c != '\n') w += c;
            return w;
        };
        std::string read = test::Read_File(out);
        read = read.substr(read.find("[readable_settings]"));
        EXPECT_EQ(words(read), words(text));
    }
}

TEST_F(SummaryWindow, MainWindowCallsOutSemiSequentialFuel) {
    auto* label = window->findChild<QLabel*>("Fuel_Mode_label");
    ASSERT_NE(label, nullptr);
    // The default settings run layout 1, semi-sequential.
    EXPECT_EQ(label->text(), "NOTICE!\nSemi sequential fuel");
    window->App().image.CardByte[6] = 7;
    window->Update_All();
    EXPECT_EQ(label->text(), "Sequential fuel");
}

} // namespace
} // namespace quorlen
