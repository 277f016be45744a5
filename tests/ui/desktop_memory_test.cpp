// What the program remembers from one run to the next as a desktop program: the recent files
// of the File menu, and the main window's place.

#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"
#include "ui/qt_dialogs.h"

#include <QAction>
#include <QDir>
#include <QSettings>
#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace quorlen {
namespace {

using test::Read_File;
using test::Scripted_Dialogs;
using test::Temp_Dir;
using test::Write_File;

class Desktop_Memory : public ::testing::Test {
protected:
    void SetUp() override { test::Copy_Shipped_Data(dir); }
    std::unique_ptr<ui::BoostProgMain> Start() { return test::Start_Main_Window(dir, dialogs); }
    static QAction* Recent(ui::BoostProgMain* window, int index) {
        return window->findChild<QAction*>(QStringLiteral("File_recent(%1)").arg(index));
    }
    // A settings file that differs from the default in byte 20.
    std::string Settings_With(int byte20, const std::string& name) {
        std::string text = Read_File(dir.File("RZ400_800M3_Default_Settings.qxs"));
        std::size_t line = 0;
        for (int i = 0; i < 20; ++i)
            line = text.find("\r\n", line) + 2;
        text.replace(line, text.find("\r\n", line) - line, std::to_string(byte20));
        std::filesystem::create_directories(dir.File("maps"));
        const std::string path = dir.File("maps/" + name);
        Write_File(path, text);
        return path;
    }

    Temp_Dir dir;
    Scripted_Dialogs dialogs;
};

TEST_F(Desktop_Memory, RecentFilesOpenThroughFileOpenAndOutliveTheRun) {
    const std::string first = Settings_With(7, "first.qxs");
    const std::string second = Settings_With(9, "second.qxs");
    {
        auto window = Start();
        EXPECT_FALSE(Recent(window.get(), 0)->isVisible()) << "nothing opened yet";
        dialogs.files.push_back(Picked_File{first, "first.qxs"});
        window->File_open_Click();
        dialogs.files.push_back(Picked_File{second, "second.qxs"});
        window->File_open_Click();
        EXPECT_EQ(window->Recent_Files(), (std::vector<std::string>{second, first}));
        window->File_exit_Click();
    }
    auto window = Start();
    ASSERT_TRUE(Recent(window.get(), 1)->isVisible());
    EXPECT_EQ(Recent(window.get(), 0)->text(), "&1 second.qxs");
    EXPECT_EQ(Recent(window.get(), 1)->text(), "&2 first.qxs");
    EXPECT_FALSE(Recent(window.get(), 2)->isVisible());

    Recent(window.get(), 1)->trigger();
    EXPECT_EQ(window->App().image.CardByte[20], 7);
    EXPECT_EQ(window->windowTitle().toStdString().substr(window->windowTitle().size() - 9), "first.qxs");
    EXPECT_EQ(window->App().files.CurrentDataDir, dir.File("maps") + "/") << "as File, Open leaves it";
    EXPECT_EQ(window->Recent_Files().front(), first) << "opened again, it moves up";

    // A file gone since is said and taken off the list; the image stays.
    std::filesystem::remove(second);
    dialogs.informed.clear();
    Recent(window.get(), 1)->trigger();
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_EQ(dialogs.informed[0], second + " is not there any more");
    EXPECT_EQ(window->Recent_Files(), std::vector<std::string>{first});
    EXPECT_FALSE(Recent(window.get(), 1)->isVisible());
    EXPECT_EQ(window->App().image.CardByte[20], 7);
    window->File_exit_Click();
}

// Saved and restored again and again, the window must not wander by a frame's width each time.
TEST_F(Desktop_Memory, TheMainWindowComesBackWhereItWasLeft) {
    QPoint left_at;
    QSize size;
    for (int run = 0; run < 4; ++run) {
        auto window = Start();
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        if (run == 0) {
            window->resize(900, 640);
            window->move(131, 77);
            QTest::qWait(50);
            left_at = window->geometry().topLeft();
            size = window->size();
        } else {
            EXPECT_EQ(window->geometry().topLeft(), left_at) << "start " << run;
            EXPECT_EQ(window->size(), size) << "start " << run;
        }
        window->close();
    }
    // Placed off every screen (a monitor since unplugged), it comes up on the screen.
    std::string ini = Read_File(dir.File("RZ400_800M3.ini"));
    const std::size_t key = ini.find("Main_Window_Size=");
    ASSERT_NE(key, std::string::npos);
    ini.replace(key, ini.find("\r\n", key) - key, "Main_Window_Size=013500\t9600\t150000\t120000\t;");
    Write_File(dir.File("RZ400_800M3.ini"), ini);
    auto window = Start();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    EXPECT_LT(window->pos().x(), 5000);
    EXPECT_LT(window->pos().y(), 5000);
    window->close();
}

// Settings go where the program keeps them (its ini names the folder); an export goes where
// the last export of its kind went, as long as that folder is still there.
TEST(Dialog_Folders, ExportsReturnToTheirLastFolderSettingsToTheProgramsOwn) {
    Temp_Dir dir;
    for (const char* sub : {"settings", "exports"})
        std::filesystem::create_directories(dir.File(sub));
    QSettings memory(QString::fromStdString(dir.File("quorlen.conf")), QSettings::IniFormat);
    const QString settings = QString::fromStdString(dir.File("settings"));
    const QString exports = QString::fromStdString(dir.File("exports"));

    File_Dialog_Setup csv;
    csv.filter = "3D-map image (*.bmp)|*.bmp|As text file (*.csv)|*.csv";
    csv.initial_dir = settings.toStdString();
    EXPECT_EQ(ui::Dialog_Start_Folder(csv, &memory), settings) << "nothing kept yet";
    ui::Remember_Dialog_Folder(csv, exports + "/New1_qxs.bmp", &memory);
    EXPECT_EQ(ui::Dialog_Start_Folder(csv, &memory), exports);

    File_Dialog_Setup qxs;
    qxs.filter = "Box setting file *.qxs|*.qxs";
    qxs.initial_dir = settings.toStdString();
    ui::Remember_Dialog_Folder(qxs, exports + "/a.qxs", &memory);
    EXPECT_EQ(ui::Dialog_Start_Folder(qxs, &memory), settings);
    qxs.initial_dir.clear();
    EXPECT_EQ(ui::Dialog_Start_Folder(qxs, &memory), exports) << "no folder named: the last one";

    std::filesystem::remove_all(dir.File("exports"));
    EXPECT_EQ(ui::Dialog_Start_Folder(csv, &memory), settings) << "a folder gone is not offered";
    csv.initial_dir.clear();
    EXPECT_EQ(ui::Dialog_Start_Folder(csv, &memory), QDir::homePath());
}

} // namespace
} // namespace quorlen
