// The settings form driven by objectName, offscreen, on the shipped data: its labels, its
// sliders and their undo, the choices, the find field, and what every tab looks like. With
// QUORLEN_SCREENSHOT_DIR set, each tab is saved there as a PNG.

#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_settings.h"

#include "image/settings_image.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

#include <map>
#include <memory>

namespace quorlen {
namespace {

using test::Scripted_Dialogs;
using test::Temp_Dir;

// Every parameter the pages name, as the box's documentation lists them.
const char* const Page_Labels[] = {
    "Cyl A, M",
    "Cyl B, M",
    "Cyl C, M",
    "Cyl D, M",
    "Cyl E, M",
    "Cyl A, S",
    "Cyl B, S",
    "Cyl C, S",
    "Cyl D, S",
    "Cyl E, S",
    "Injector dead time",
    "ALS max PWM2 output",
    "Launch extra fuel",
    "Launch ignition retard",
    "Launch RPM start",
    "Launch RPM limit",
    "ALS minimum RPM",
    "ALS max TPS",
    "Launch/ALS high temp cut off ",
    "Launch/ALS high temp sensor",
    "ALS min TPS",
    "ALS ignition retard",
    "ALS extra fuel",
    "2nd RPM limit",
    "Fuel and Ign cut RPM      soft ign cut 250rpm earlier",
    "Total injector size",
    "Distance factor",
    "Threshold",
    "Fuel change gain",
    "Sustain (number of engine cycles)",
    "PWM change on activation",
    "Start up fuel comp. at cold engine (depends on choke)",
    "Start up air duration after crank",
    "Start up idle air PWM2 compensation",
    "Start up fuel duration after crank",
    "Start up fuel comp with warm engine",
    "Rev Limit ",
    "Boost limit",
    "AFR Long adaptive low",
    "AFR Long adaptive high",
    "Crank error",
    "Sync error (cam/crank)",
    "AFR Short adaptive high",
    "AFR Short adaptive low",
    "Load level to start AFR supervising",
    "NIY adsfasdf",
    "Max AFR at AFR supervising",
    "IATs/Aux4 low",
    "IATs/Aux4 high",
    "12Vs/Aux3 low",
    "12Vs/Aux3 high",
    "Throttle low",
    "Throttle high",
    "AFR high",
    "AFR low",
    "MAP high",
    "MAP low",
    "Coolant high",
    "Coolant low",
    "12V/Aux1 high",
    "12V/Aux1 low",
    "IAT/Aux2 high",
    "IAT/Aux2 low",
    "Init value %",
    "D (Difference)",
    "I (Sum)",
    "P (Proportional)",
    "Analog OFF",
    "Analog ON",
    "RPM OFF",
    "RPM ON",
    "Idle control, Gain (P)",
    "Idle control, Sum (I)",
    "Idle control, Difference (D)",
    "Throttle level for idle ignition fade out",
    "Idle ignition",
    "Narrow sensor target voltage",
    "Idle RPM",
    "Throttle level to enter idle mode ",
    "Fuel cut boost level",
    "Coolant temp. to start AFR control",
    "AFR control max RPM to be active",
    "AFR control max Load to be active",
    "AFR control min Load to be active",
    "AFR control start delay",
    "AFR control speed at idle, Sum (I)",
    "Crank ignition",
    "Ignition charge (dwell) time",
    "Low air temp correction fuel",
    "High air temp correction fuel",
    "Low air temperature limit",
    "High air temperature limit",
    "Crank fuel (snaps at crank)",
    "Warm engine temperature limit",
    "Cold engine temperature limit",
    "Choke fuel",
    "Coolant temperature to start fan",
    "Extra fuel when battery voltage is below 13.5V       (max 8.4 ms)",
    "Crank sensor teeth between missing pulse and 51deg BTDC marking",
    "Crank sensor teeth between missing pulse and Fuel pulse start",
    "TPS low limit",
    "Cut off time:",
};

class SettingsForm : public ::testing::Test {
protected:
    void SetUp() override {
        test::Copy_Shipped_Data(dir);
        window = test::Start_Main_Window(dir, dialogs, test::Unattended());
        window->findChild<QAction*>("mnu_Settings")->trigger();
        form = window->findChild<ui::QX_settings*>("QX_settings");
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
    QScrollBar* Scroll(int address) { return Find<QScrollBar>(QStringLiteral("scroll_%1").arg(address)); }
    QString Text(int address) {
        return Find<QLineEdit>(QStringLiteral("scroll_text_%1").arg(address))->text();
    }
    QString Unit(int address) {
        return Find<QLabel>(QStringLiteral("scroll_unit_label_%1").arg(address))->text();
    }
    // The thumb let go at `value`, as a drag or a click on the bar ends.
    void Move(int address, int value) { Scroll(address)->setValue(value); }
    // A list item chosen by the user.
    void Pick(const QString& combo, int index) {
        auto* box = Find<QComboBox>(combo);
        box->setCurrentIndex(index);
        emit box->activated(index);
    }
    Settings_Image& Image() { return window->App().image; }

    Temp_Dir dir;
    Scripted_Dialogs dialogs;
    std::unique_ptr<ui::BoostProgMain> window;
    ui::QX_settings* form = nullptr;
};

TEST_F(SettingsForm, TabsStandByIndexWithTheirCaptions) {
    auto* tabs = Find<QTabWidget>("QX_Settings_SSTab");
    const std::map<int, QString> captions = {
        {0, "Launch / ALS"},    {1, "Ignition settings"},  {2, "PWM outputs"},     {3, "AFR control"},
        {5, "Idle settings"},   {6, "Temp corrections"},   {7, "Start up"},        {8, "Digital inputs"},
        {9, "Analog settings"}, {10, "Limits / Warnings"}, {11, "Engine setup"},   {12, "Fuel acceleration"},
        {13, "Fuel settings"},  {14, "Development"},       {15, "Digital outputs"}};
    ASSERT_EQ(tabs->count(), 16);
    for (const auto& [index, caption] : captions) {
        EXPECT_EQ(tabs->tabText(index), caption);
        EXPECT_TRUE(tabs->isTabVisible(index)) << index;
    }
    EXPECT_FALSE(tabs->isTabVisible(4));
}

TEST_F(SettingsForm, EveryParameterLabelStandsOnceAndNamesItsSlider) {
    std::map<QString, int> found;
    std::map<QString, int> address_of;
    for (QLabel* label : form->findChildren<QLabel*>()) {
        if (!label->objectName().startsWith("scroll_label_")) continue;
        found[label->text()] += 1;
        address_of[label->text()] = label->objectName().mid(13).toInt();
    }
    for (const char* text : Page_Labels) {
        QString label = QString::fromLatin1(text);
        EXPECT_EQ(found[label], 1) << text;
        // The label's slider, text and unit carry the same address.
        int address = address_of[label];
        EXPECT_NE(form->findChild<QScrollBar*>(QStringLiteral("scroll_%1").arg(address)), nullptr) << text;
        EXPECT_NE(form->findChild<QLineEdit*>(QStringLiteral("scroll_text_%1").arg(address)), nullptr)
            << text;
    }
    EXPECT_EQ(found.size(), std::size(Page_Labels));
}

TEST_F(SettingsForm, SlidersWriteTheImageMarkItAndStepBackWithUndo) {
    Settings_Image& image = Image();
    image.ChangedByte.fill(0);
    window->Update_All();
    const int level = window->App().undo.UndoIndex;
    auto* label = Find<QLabel>("scroll_label_21");
    EXPECT_FALSE(label->font().bold());

    Move(21, 20); // 4.0 ms
    EXPECT_EQ(image.CardByte[21], 20);
    EXPECT_EQ(image.ChangedByte[21], Changed_Mark);
    EXPECT_EQ(Text(21), "4.0");
    EXPECT_EQ(Unit(21), "ms");
    EXPECT_EQ(window->App().undo.UndoIndex, level + 1);
    EXPECT_TRUE(label->font().bold()); // changed and not yet written
    EXPECT_EQ(Scroll(21)->toolTip(), "Address 21, byte 20 (0x14)");
    EXPECT_TRUE(dialogs.warned.empty());

    // The keyboard moves it a step, a page, and the warning above 5 ms comes with a stop sign.
    Scroll(21)->setFocus();
    QTest::keyClick(Scroll(21), Qt::Key_Right);
    EXPECT_EQ(image.CardByte[21], 21);
    EXPECT_EQ(Text(21), "4.2");
    QTest::keyClick(Scroll(21), Qt::Key_PageUp);
    EXPECT_EQ(image.CardByte[21], 24);
    EXPECT_TRUE(dialogs.warned.empty()); // 4.8 ms
    Move(21, 25);                        // exactly 5.0 ms
    EXPECT_TRUE(dialogs.warned.empty());
    Move(21, 26);
    ASSERT_EQ(dialogs.warned.size(), 1u);
    EXPECT_EQ(dialogs.warned[0], "Warning, Dwell time larger than 5 ms could be dangerous. 3 ms is normal");
    EXPECT_EQ(image.CardByte[21], 26); // the warning leaves the value as set
    EXPECT_EQ(window->App().undo.UndoIndex, level + 5);

    // A typed value goes to the nearest position.
    auto* text = Find<QLineEdit>("scroll_text_21");
    text->setText("3,1");
    emit text->editingFinished();
    EXPECT_EQ(image.CardByte[21], 16);
    EXPECT_EQ(Text(21), "3.2");

    // Edit, Undo steps back through the moves, and the form follows.
    window->findChild<QAction*>("edit_undo")->trigger();
    EXPECT_EQ(image.CardByte[21], 26);
    EXPECT_EQ(Text(21), "5.2");
    EXPECT_EQ(Scroll(21)->value(), 26);

    // A 16-bit slider writes both bytes.
    Move(82, 1760);
    EXPECT_EQ(image.CardByte[82], 1760 & 255);
    EXPECT_EQ(image.CardByte[83], 1760 >> 8);
    EXPECT_EQ(Text(82), "1760");
}

TEST_F(SettingsForm, FuelStartOverTheLimitSaysSoAndKeepsTheByte) {
    Move(20, 40); // the shipped layout is semi-sequential at 10 degrees a tooth: 36 at most
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_EQ(
        dialogs.informed[0],
        "You run semisequential fuel. You can not select fuel to start later than 1 rev from missing pulse");
    EXPECT_EQ(Image().CardByte[20], 40);
    EXPECT_EQ(Image().ChangedByte[20], Changed_Mark);
    Move(18, 35);
    EXPECT_FALSE(Find<QLabel>("Forbidden_tooth_label")->isHidden());
    EXPECT_EQ(Find<QLabel>("Fuel_teeth_recomend")->text(), "Recomended: 10 teeth");
    Move(18, 4);
    EXPECT_TRUE(Find<QLabel>("Forbidden_tooth_label")->isHidden());
}

TEST_F(SettingsForm, ChoicesShowTheirGroupsAndTheTablesFollow) {
    auto* gearing = Find<QGroupBox>("Gearing_Ignition_Cut_Frame");
    EXPECT_TRUE(gearing->isHidden());
    Find<QRadioButton>("Dig2_function_7")->click();
    EXPECT_EQ(Image().CardByte[182] & 7, 7);
    EXPECT_FALSE(gearing->isHidden());
    EXPECT_TRUE(Find<QLabel>("Gearing_Ignition_Cut_Frame_hint")->isHidden());

    EXPECT_TRUE(Find<QGroupBox>("PWM_PID_Frame")->isHidden());
    Pick("pwm_combo_2", 1); // PWM 1 runs the boost control
    EXPECT_EQ(Image().CardByte[186] & 15, 1);
    EXPECT_FALSE(Find<QGroupBox>("PWM_PID_Frame")->isHidden());
    EXPECT_TRUE(window->App().tables.Pwm1_Boost); // the map tabs took the new function
    EXPECT_EQ(window->findChild<QTabWidget*>("SSTab_PWM")->tabText(0), "PWM1 Boost control");

    // A digital output's sensor choice and thresholds show with a function that uses them.
    EXPECT_TRUE(Find<QComboBox>("Digital_sensor_combo_1")->isHidden());
    Pick("digital_combo_1", 3);
    EXPECT_FALSE(Find<QComboBox>("Digital_sensor_combo_1")->isHidden());
    EXPECT_FALSE(Scroll(238)->isHidden());
    EXPECT_TRUE(Scroll(236)->isHidden());
    Pick("Digital_sensor_combo_1", 2);
    EXPECT_EQ(Image().CardByte[235], 0x32);
    EXPECT_EQ(Unit(238), "bar"); // input 3, the MAP sensor
    EXPECT_EQ(Find<QComboBox>("digital_combo_1")->toolTip(),
              "Select MAP table data, as defined in qxcard.ini");
}

TEST_F(SettingsForm, PwmExtraFuelTableStandsOnThePwmPageUnderItsSwitch) {
    auto* page = Find<QWidget>("QX_Settings_SSTab_page_2");
    auto* grid = page->findChild<QTableView*>("PWM2_FuelCorr_grid");
    ASSERT_NE(grid, nullptr);
    auto cell = [&](int row, int col) { return grid->model()->index(row, col).data().toString(); };
    // Duty of the output down the side, extra fuel beside; the form follows the image.
    Image().CardByte[49] = 64;
    Image().CardByte[54] = 138;
    window->Update_All();
    EXPECT_EQ(cell(0, 0), "PWM2 [%]");
    EXPECT_EQ(cell(1, 0), "25.1");
    EXPECT_EQ(cell(1, 1), "2.0");
    EXPECT_EQ(grid->model()->rowCount(), 6);

    grid->selectionModel()->select(QItemSelection(grid->model()->index(1, 0), grid->model()->index(2, 1)),
                                   QItemSelectionModel::ClearAndSelect);
    QTest::keySequence(grid, QKeySequence::Copy);
    EXPECT_TRUE(QApplication::clipboard()->text().startsWith("25.1\t2.0"));

    // Typed into as a one-dimensional map, within -25.6 to 25.4 %, one undo step a number;
    // a column from a spreadsheet fills the values from the selected one down.
    const int level = window->App().undo.UndoIndex;
    grid->setCurrentIndex(grid->model()->index(2, 1));
    QTest::keyClick(grid, Qt::Key_Minus);
    QTest::keyClick(grid, Qt::Key_3);
    QTest::keyClick(grid, Qt::Key_0);
    EXPECT_EQ(Image().CardByte[55], 0);
    EXPECT_EQ(Image().ChangedByte[55], Changed_Mark);
    EXPECT_EQ(cell(2, 1), "-25.6");
    EXPECT_EQ(window->App().undo.UndoIndex, level + 1);
    QTest::keyClick(grid, Qt::Key_Down);
    QTest::keyClick(grid, Qt::Key_5);
    EXPECT_EQ(Image().CardByte[56], 153);
    const std::uint8_t before[] = {Image().CardByte[57], Image().CardByte[58]};
    QApplication::clipboard()->setText("1,2\r\n30\r\n-2\r\n");
    grid->setCurrentIndex(grid->model()->index(4, 1));
    QTest::keySequence(grid, QKeySequence::Paste);
    EXPECT_EQ(Image().CardByte[57], 134);
    EXPECT_EQ(Image().CardByte[58], 255);
    EXPECT_EQ(cell(5, 1), "25.4");
    EXPECT_EQ(Image().CardByte[54], 138); // above the selection: untouched
    window->findChild<QAction*>("edit_undo")->trigger();
    EXPECT_EQ(Image().CardByte[57], before[0]);
    EXPECT_EQ(Image().CardByte[58], before[1]);
    EXPECT_EQ(Image().CardByte[56], 153);

    // The switch is one bit of byte 188; the output's other flags stay, and undo takes it back.
    Image().CardByte[188] = 0x81;
    window->Update_All();
    auto* on = Find<QCheckBox>("PWM2_FuelCorr_Opt");
    EXPECT_FALSE(on->isChecked());
    on->click();
    EXPECT_EQ(Image().CardByte[188], 0x89);
    EXPECT_EQ(Image().ChangedByte[188], Changed_Mark);
    window->findChild<QAction*>("edit_undo")->trigger();
    EXPECT_EQ(Image().CardByte[188], 0x81);
    EXPECT_FALSE(on->isChecked());
}

TEST_F(SettingsForm, FindSettingFiltersTheTabsAndJumpsToTheControl) {
    auto* tabs = Find<QTabWidget>("QX_Settings_SSTab");
    auto* find = Find<QLineEdit>("Find_Setting_txt");
    QTest::keyClicks(find, "dwell");
    EXPECT_TRUE(tabs->isTabVisible(1));
    EXPECT_FALSE(tabs->isTabVisible(0));
    EXPECT_FALSE(tabs->isTabVisible(10));
    EXPECT_TRUE(Scroll(17)->isHidden());
    EXPECT_FALSE(Scroll(21)->isHidden());
    QTest::keyClick(find, Qt::Key_Return);
    EXPECT_EQ(tabs->currentIndex(), 1);
    EXPECT_EQ(form->focusWidget(), Scroll(21));
    find->clear();
    for (int t : {0, 10, 13})
        EXPECT_TRUE(tabs->isTabVisible(t)) << t;
    EXPECT_FALSE(Scroll(17)->isHidden());
}

TEST_F(SettingsForm, ScreenshotsOfEveryTabFitTheScreen) {
    // Every function on, so each page shows all it has.
    Find<QRadioButton>("Dig1_function_2")->click();
    Find<QRadioButton>("Dig2_function_7")->click();
    Pick("Anti_lag_sensor_combo", 3);
    Pick("pwm_combo_2", 1);
    Find<QRadioButton>("Idle_ControlON_option")->click();
    Find<QRadioButton>("Idle_Control_Ignition_option_2")->click();
    Find<QRadioButton>("Idle_IgnitionOn_option")->click();
    Pick("ae_combo", 1);
    Find<QCheckBox>("AR_Enable")->click();
    for (int i = 0; i < 4; ++i)
        Pick(QStringLiteral("digital_combo_%1").arg(i), i + 1);
    Pick("Digital_sensor_combo_3", 2);
    dialogs.informed.clear();

    QString out = qEnvironmentVariable("QUORLEN_SCREENSHOT_DIR");
    auto* tabs = Find<QTabWidget>("QX_Settings_SSTab");
    form->resize(1280, 800);
    for (int t = 0; t < tabs->count(); ++t) {
        if (!tabs->isTabVisible(t)) continue;
        tabs->setCurrentIndex(t);
        QApplication::processEvents();
        QPixmap shot = form->grab();
        EXPECT_FALSE(shot.isNull());
        if (!out.isEmpty())
            shot.save(QDir(out).filePath(
                QStringLiteral("settings_%1_%2.png")
                    .arg(t, 2, 10, QChar('0'))
                    .arg(tabs->tabText(t).replace(" / ", "_").replace(' ', '_').toLower())));
    }
}

} // namespace
} // namespace quorlen
