// The auto setup guide driven by its buttons, offscreen, on the shipped data: the 21 steps
// there and back with the form and tab each brings to the front, the two generators, the
// ways to the guide, and its HELP. With QUORLEN_SCREENSHOT_DIR set, steps 1, 6 and 7 are
// saved there in English and Swedish.

#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_autosetup_frm.h"
#include "ui/translation.h"

#include "tables/table_catalogue.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStringList>
#include <QTabWidget>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace quorlen {
namespace {

using test::Scripted_Dialogs;
using test::Temp_Dir;

// What a step brings to the front: a form on a tab, the main window on a tab and the tab
// under it, or nothing new.
struct In_Front {
    const char* form; // "" for none
    int tab;
    int sub_tab;
};

const In_Front Expected[] = {
    {"", -1, -1},                // 1
    {"QX_Sensor_Editor", 0, -1}, // 2 "Select tuning sensors"
    {"QX_settings", 11, -1},     // 3 "Engine setup"
    {"QX_settings", 13, -1},     // 4 "Fuel settings"
    {"QX_settings", 1, -1},      // 5 "Ignition settings"
    {"BoostProgMain", 2, 6},     // 6 Fuel, "Auto fuel"
    {"BoostProgMain", 1, 1},     // 7 Ignition
    {"QX_settings", 3, -1},      // 8 "AFR control"
    {"BoostProgMain", 2, 4},     // 9 Fuel, "AFR Control"
    {"QX_settings", 6, -1},      // 10 "Temp corrections"
    {"QX_settings", 7, -1},      // 11 "Start up"
    {"QX_settings", 12, -1},     // 12 "Fuel acceleration"
    {"QX_settings", 5, -1},      // 13 "Idle settings"
    {"QX_settings", 8, -1},      // 14 "Digital inputs"
    {"QX_settings", 15, -1},     // 15 "Digital outputs"
    {"QX_settings", 2, -1},      // 16 "PWM outputs"
    {"QX_settings", 9, -1},      // 17 "Analog settings"
    {"QX_settings", 10, -1},     // 18 "Limits / Warnings"
    {"QX_settings", 11, -1},     // 19 "Engine setup"
    {"QX_settings", 11, -1},     // 20 "Engine setup"
    {"", -1, -1},                // 21
};

class AutoSetupForm : public ::testing::Test {
protected:
    void SetUp() override {
        test::Copy_Shipped_Data(dir);
        window = test::Start_Main_Window(dir, dialogs, test::Unattended());
        window->Use_Url_Opener([this](const QUrl& url) {
            opened.push_back(url);
            return true;
        });
        window->findChild<QAction*>("mnu_AutoSetup")->trigger();
        form = window->findChild<ui::QX_AutoSetup_frm*>("QX_AutoSetup_frm");
        ASSERT_NE(form, nullptr);
        ASSERT_TRUE(form->isVisible());
    }
    void TearDown() override { window->close(); }

    template <class W>
    W* Find(const QString& name) {
        auto* w = form->findChild<W*>(name);
        EXPECT_NE(w, nullptr) << name.toStdString();
        return w;
    }
    void Next() { Find<QPushButton>("Autosetup_next(0)")->click(); }
    void Previous() { Find<QPushButton>("Autosetup_next(1)")->click(); }
    QString Guide() { return Find<QPlainTextEdit>("Autosetup_guidetext")->toPlainText(); }
    QString Label(const QString& name) { return Find<QLabel>(name)->text(); }
    // A box typed into as a user does.
    void Type(const QString& name, const QString& text) {
        auto* box = Find<QLineEdit>(name);
        box->selectAll();
        QTest::keyClicks(box, text);
    }
    bool Shown(const char* name) { return window->Form_Exists(name) && window->Form(name)->isVisible(); }
    int Tab(const char* form_name, const char* tabs) {
        return window->Form(form_name)->findChild<QTabWidget*>(tabs)->currentIndex();
    }
    int Main_Tab(const char* tabs) { return window->findChild<QTabWidget*>(tabs)->currentIndex(); }

    // The form and tab step `step` has in front.
    void Check_Step(int step) {
        SCOPED_TRACE("step " + std::to_string(step));
        EXPECT_EQ(window->App().autosetup.Setup_Step, step);
        EXPECT_EQ(Guide(), QString::fromUtf8(Guide_Text(step).c_str()).replace("\r\n", "\n"));
        EXPECT_EQ(Label("Step_label"), QStringLiteral("Step %1 / 21").arg(step));
        const In_Front& e = Expected[step - 1];
        const std::string form_name = e.form;
        if (form_name == "QX_settings") {
            ASSERT_TRUE(Shown("QX_settings"));
            EXPECT_EQ(Tab("QX_settings", "QX_Settings_SSTab"), e.tab);
        } else if (form_name == "QX_Sensor_Editor") {
            ASSERT_TRUE(Shown("QX_Sensor_Editor"));
            EXPECT_EQ(Tab("QX_Sensor_Editor", "SensorEditor_SSTab"), e.tab);
        } else if (form_name == "BoostProgMain") {
            EXPECT_EQ(Main_Tab("sstab_Main"), e.tab);
            EXPECT_EQ(Main_Tab(e.tab == 1 ? "SSTab_Ignition" : "SSTab_Fuel"), e.sub_tab);
        }
        if (step == 3) {
            EXPECT_FALSE(Shown("QX_Sensor_Editor"));
        }
        if (step == 6 || step == 21) {
            EXPECT_FALSE(Shown("QX_settings"));
        }
        if (step == 6 || step == 7) {
            EXPECT_EQ(Find<QGroupBox>("AutoFuel_frame")->isVisible(), step == 6);
            EXPECT_EQ(Find<QGroupBox>("AutoIgnition_frame")->isVisible(), step == 7);
        }
        // The guide stays above what it opens.
        EXPECT_TRUE(form->isVisible());
        EXPECT_TRUE(form->windowFlags() & Qt::WindowStaysOnTopHint);
    }

    Temp_Dir dir;
    Scripted_Dialogs dialogs;
    std::unique_ptr<ui::BoostProgMain> window;
    ui::QX_AutoSetup_frm* form = nullptr;
    std::vector<QUrl> opened;
};

TEST_F(AutoSetupForm, WalksAllStepsThereAndBackByTheTwoButtons) {
    Check_Step(1);
    EXPECT_FALSE(Find<QGroupBox>("AutoFuel_frame")->isVisible());
    EXPECT_FALSE(Find<QGroupBox>("AutoIgnition_frame")->isVisible());
    for (int step = 2; step <= 21; ++step) {
        Next();
        Check_Step(step);
    }
    // Past the last step the counter goes on and the text stays; back comes to 21 again.
    const QString last = Guide();
    Next();
    EXPECT_EQ(window->App().autosetup.Setup_Step, 22);
    EXPECT_EQ(Guide(), last);
    Previous();
    Check_Step(21);
    for (int step = 20; step >= 1; --step) {
        Previous();
        Check_Step(step);
    }
    // Before the first step nothing happens; "Next step" then shows step 1.
    Previous();
    EXPECT_EQ(window->App().autosetup.Setup_Step, 0);
    EXPECT_EQ(Guide(), QString::fromUtf8(Guide_Text(1).c_str()).replace("\r\n", "\n"));
    Next();
    Check_Step(1);

    // "Restart" goes back to step 1 from anywhere.
    for (int i = 0; i < 8; ++i)
        Next();
    Find<QPushButton>("Command1")->click();
    Check_Step(1);
}

TEST(AutoSetupLanguages, StepsOneSixAndSevenInEnglishAndSwedish) {
    const QString out = qEnvironmentVariable("QUORLEN_SCREENSHOT_DIR");
    for (const char* language : {"ENG", "SWE"}) {
        Temp_Dir dir;
        test::Copy_Shipped_Data(dir);
        std::string ini = test::Read_File(dir.File("RZ400_800M3.ini"));
        ini.replace(ini.find("Language=ENG"), 12, std::string("Language=") + language);
        test::Write_File(dir.File("RZ400_800M3.ini"), ini);
        Scripted_Dialogs dialogs;
        auto window = test::Start_Main_Window(dir, dialogs, test::Unattended());
        ASSERT_EQ(window->App().program.Language, language);
        window->findChild<QAction*>("mnu_AutoSetup")->trigger();
        auto* form = window->findChild<ui::QX_AutoSetup_frm*>("QX_AutoSetup_frm");
        ASSERT_NE(form, nullptr);
        auto* next = form->findChild<QPushButton*>("Autosetup_next(0)");
        auto* text = form->findChild<QPlainTextEdit*>("Autosetup_guidetext");
        const QString suffix = QString::fromLatin1(language).toLower();
        const bool swedish = std::string(language) == "SWE";
        for (int step = 1; step <= 7; ++step) {
            const QString english = QString::fromUtf8(Guide_Text(step).c_str()).replace("\r\n", "\n");
            if (swedish) {
                // Every line of the step in Swedish, paragraph for paragraph.
                const QStringList shown = text->toPlainText().split("\n\n");
                const QStringList source = english.split("\n\n");
                ASSERT_EQ(shown.size(), source.size()) << step;
                for (int i = 0; i < shown.size(); ++i)
                    EXPECT_NE(shown[i], source[i]) << step;
            } else {
                EXPECT_EQ(text->toPlainText(), english);
            }
            if (step == 1 || step == 6 || step == 7) {
                QApplication::processEvents();
                QPixmap shot = form->grab();
                EXPECT_FALSE(shot.isNull());
                if (!out.isEmpty())
                    shot.save(QDir(out).filePath(
                        QStringLiteral("autosetup_step%1_%2.png").arg(step, 2, 10, QChar('0')).arg(suffix)));
            }
            next->click();
        }
        window->close();
    }
}

// An English line changed in the guide loses its Swedish until the translation follows: this
// names the line.
TEST(AutoSetupLanguages, EveryLineOfTheGuideHasItsSwedish) {
    ui::Use_Language("SWE");
    for (int step = 1; step <= Guide_Steps; ++step)
        for (const char* line : Guide_Lines(step))
            EXPECT_NE(ui::Tr("Setup_Guide", line), QString::fromUtf8(line))
                << "step " << step << ": " << line;
    EXPECT_EQ(ui::Tr("Setup_Guide", Guide_Lines(21)[0]),
              QString::fromUtf8("Grattis, dags för ett första startförsök!"));
    ui::Use_Language("ENG");
    EXPECT_EQ(ui::Tr("Setup_Guide", Guide_Lines(21)[0]), QString::fromUtf8(Guide_Lines(21)[0]));
}

TEST_F(AutoSetupForm, FuelFrameWorksOutTheFiguresAsTheBoxesChangeAndGenerates) {
    form->Show_Step(6);
    EXPECT_EQ(Label("Air_hp_label(1)"), "180hp");
    EXPECT_EQ(Label("Sequential_Fuel_label"), "Semi sequential fuel");
    Type("NumberOfInjectors_txt", "6");
    Type("lambda_txt", "0,8");
    EXPECT_EQ(Find<QLineEdit>("lambda_txt")->text(), "0.8");
    EXPECT_EQ(window->App().autosetup.fuel.fig.Fuel_hp, 288);
    EXPECT_EQ(Label("Fuel_hp_label(0)") + Label("Fuel_hp_label(1)"), "The fuel is enough for: 269hp");
    // Volume feeds the air figures.
    Type("Cylinder_volume_txt", "1150");
    EXPECT_EQ(Label("Air_hp_label(1)"), "90hp");
    EXPECT_EQ(Label("Under_fuel_lable(0)"), "");

    // Too little fuel for the air is a warning.
    Type("NumberOfInjectors_txt", "2");
    Type("Cylinder_volume_txt", "3000");
    EXPECT_EQ(Label("Under_fuel_lable(0)"), "Not enough fuel capacity by: ");
    EXPECT_EQ(Label("Max_fuel_lable(2)"), "You can only rev to: ");

    Type("NumberOfInjectors_txt", "4");
    Type("Cylinder_volume_txt", "2300");
    Settings_Image& image = window->App().image;
    const auto before = image.CardByte;
    const int snapshots = window->App().undo.UndoIndex;
    Find<QPushButton>("Generate_Autofuel_cmd")->click();
    EXPECT_TRUE(Label("Generate_status_label").startsWith("The fuel map is generated: "))
        << Label("Generate_status_label").toStdString();
    EXPECT_NE(image.CardByte, before);
    EXPECT_EQ(window->App().undo.UndoIndex, snapshots + 1);
    // The grid shows the new map.
    auto* grid = window->findChild<QTableView*>("Fuel_3D_Grid");
    ASSERT_NE(grid, nullptr);
    const Map_Block block{image.FuelBlockBase, window->App().tables.FuelCols, window->App().tables.FuelRows};
    EXPECT_EQ(grid->model()->index(block.rows, 1).data().toString().toStdString(),
              Fuel_Cell_Text(image.CardByte[block.Cell(block.rows, 1)]));

    // Equal MAP limits: nothing is written and the form says why.
    Type("idle_MAP_txt", "1.0");
    const auto generated = image.CardByte;
    Find<QPushButton>("Generate_Autofuel_cmd")->click();
    EXPECT_EQ(image.CardByte, generated);
    EXPECT_TRUE(Label("Generate_status_label").contains("the lowest MAP equals the maximal MAP"));
}

TEST_F(AutoSetupForm, IgnitionFrameFollowsTheLoadAndGenerates) {
    form->Show_Step(7);
    EXPECT_EQ(Label("Ign_advance_txt_label"), "Ignition advance at vaccum");
    EXPECT_TRUE(Label("Ign_load_label").startsWith("Ignition load: MAP"));

    // The layout's injection follows a change of layout at once.
    window->App().image.CardByte[Engine_Layout_Address] = 7; // a sequential layout
    window->Update_All();
    EXPECT_EQ(Label("Sequential_Fuel_label"), "Sequential fuel");
    EXPECT_TRUE(window->App().autosetup.fuel.Sequential_Fuel);

    Settings_Image& image = window->App().image;
    const auto before = image.CardByte;
    Find<QPushButton>("Generate_Autoignition_cmd")->click();
    EXPECT_NE(image.CardByte, before);
    const Map_Block block{image.IgnBlockBase, window->App().tables.IgnCols, window->App().tables.IgnRows};
    EXPECT_EQ(image.CardByte[block.Cell(1, 1)], 75); // 15 degrees at idle
}

TEST_F(AutoSetupForm, TheWaysToTheGuideAndItsHelp) {
    // HELP opens the manual beside the program with the desktop's viewer.
    std::filesystem::create_directories(dir.File("Manual"));
    test::Write_File(dir.File("Manual/RZ400_800M3_Manual.pdf"), "%PDF-1.4\n");
    Find<QPushButton>("Command2")->click();
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0].toLocalFile().toStdString(), dir.File("Manual/RZ400_800M3_Manual.pdf"));
    window->findChild<QAction*>("Help_Quorlen")->trigger();
    EXPECT_EQ(opened.size(), 2u);
    // Without it, a word on where it was looked for.
    std::filesystem::remove_all(dir.File("Manual"));
    Find<QPushButton>("Command2")->click();
    EXPECT_EQ(opened.size(), 2u);
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_NE(dialogs.informed[0].find("Manual/RZ400_800M3_Manual.pdf"), std::string::npos);

    // The guide hides when closed and keeps its step; the menu brings it back there.
    Next();
    Next();
    form->close();
    EXPECT_FALSE(form->isVisible());
    window->findChild<QAction*>("mnu_AutoSetup")->trigger();
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(window->App().autosetup.Setup_Step, 3);

    // The Auto fuel tab leads to the fuel step.
    form->close();
    window->findChild<QPushButton*>("Auto_fuel_cmd")->click();
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(window->App().autosetup.Setup_Step, 6);
}

TEST(AutoSetupStart, TheStartQuestionsYesOpensTheGuide) {
    Temp_Dir dir;
    test::Copy_Shipped_Data(dir);
    // The shipped configuration asks at the first start.
    ASSERT_NE(test::Read_File(dir.File("RZ400_800M3.ini")).find("Autoguide=1\r\n"), std::string::npos);
    Scripted_Dialogs dialogs;
    auto window = test::Start_Main_Window(dir, dialogs, test::Unattended());
    window->Form_Activate();
    ASSERT_TRUE(window->Form_Exists("Autoguide_startup_Dialog"));
    QWidget* question = window->Form("Autoguide_startup_Dialog");
    EXPECT_FALSE(window->Form_Exists("QX_AutoSetup_frm"));
    question->findChild<QPushButton*>("OKButton")->click();
    EXPECT_FALSE(question->isVisible());
    ASSERT_TRUE(window->Form_Exists("QX_AutoSetup_frm"));
    EXPECT_TRUE(window->Form("QX_AutoSetup_frm")->isVisible());
    EXPECT_EQ(window->App().autosetup.Setup_Step, 1);
    window->close();
}

} // namespace
} // namespace quorlen
