// The engine frame and the model presets on the settings form as a tuner uses them,
// offscreen, by the controls' names: the guide from "EDIT" to "APPLY", "CANCEL", and a preset applied and
// taken back.

#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>

#include <gtest/gtest.h>

namespace quorlen {
namespace {

using test::Scripted_Dialogs;
using test::Temp_Dir;

class EngineFrames : public ::testing::Test {
protected:
    void SetUp() override {
        test::Copy_Shipped_Data(dir);
        window = test::Start_Main_Window(dir, dialogs);
        // As a tuner gets there: Settings, Engine settings, the "Engine setup" tab.
        window->findChild<QAction*>("mnu_Settings")->trigger();
        settings = window->findChild<QWidget*>("QX_settings");
        ASSERT_NE(settings, nullptr);
        settings->findChild<QTabWidget*>("QX_Settings_SSTab")->setCurrentIndex(11);
        engine = In<QGroupBox>(settings, "Engine_Config_frame");
        presets = In<QGroupBox>(settings, "Model_preset_frame");
        ASSERT_TRUE(engine != nullptr && presets != nullptr);
        ASSERT_TRUE(engine->isVisible());
    }
    template <class W>
    W* In(QWidget* parent, const char* name) {
        auto* w = parent->findChild<W*>(name);
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    // The user picks the item with this text.
    void Choose(QWidget* parent, const char* list, const QString& text) {
        auto* combo = In<QComboBox>(parent, list);
        const int index = combo->findText(text);
        ASSERT_GE(index, 0) << list << " has no " << text.toStdString();
        ASSERT_TRUE(combo->isEnabled()) << list;
        combo->setCurrentIndex(index);
        emit combo->activated(index);
    }
    std::uint8_t Byte(int address) { return window->App().image.CardByte[static_cast<std::size_t>(address)]; }

    Temp_Dir dir;
    Scripted_Dialogs dialogs;
    std::unique_ptr<ui::BoostProgMain> window;
    QWidget* settings = nullptr;
    QGroupBox* engine = nullptr;
    QGroupBox* presets = nullptr;
};

TEST_F(EngineFrames, GuideFromEditThroughEveryListToApply) {
    QWidget* f = engine;
    EXPECT_EQ(In<QComboBox>(f, "Engine_setup_combo")->count(), 256);
    EXPECT_TRUE(engine->title().startsWith("Engine configuration.  Current selection: "));
    EXPECT_FALSE(In<QComboBox>(f, "Cylinder_info")->isEnabled());

    In<QPushButton>(f, "Init_Selection_guide")->click();
    EXPECT_EQ(engine->title(), "EDITING - Engine configuration. Do not change when engine is running!");
    EXPECT_FALSE(In<QComboBox>(f, "Engine_setup_combo")->isEnabled());
    EXPECT_FALSE(In<QPushButton>(f, "Engine_Config_OK")->isEnabled());
    Choose(f, "Cylinder_info", "4 cylinders");
    Choose(f, "Ignition_type", "Coil on plug");
    Choose(f, "Fuel_system", "Sequential");
    Choose(f, "Crank_sensor", "Crank 60-2");
    Choose(f, "Cam_sensor", "Cam 1 tooth");
    Choose(f, "Cam2_sensor", "No cam 2");
    // One answer left on each question from here: the chain has run to its end. Choosing
    // those answers again arrives at the same row.
    EXPECT_EQ(In<QComboBox>(f, "Car_Example")->currentText(), "8: EX: VW/Audi 1.8T 20V");
    Choose(f, "TDC_sensor", "No TDC");
    Choose(f, "Firing_order", "1-3-4-2");
    EXPECT_EQ(engine->title(), "Engine configuration.  New selection: EX: VW/Audi 1.8T 20V");
    EXPECT_EQ(In<QLineEdit>(f, "Selected_Engine_config_row_txt")->text(), "8");
    ASSERT_TRUE(In<QPushButton>(f, "Engine_Config_OK")->isEnabled());
    EXPECT_EQ(Byte(6), 0); // nothing written before APPLY
    if (const QString out = qEnvironmentVariable("QUORLEN_SCREENSHOT_DIR"); !out.isEmpty()) {
        settings->resize(1280, 800);
        QApplication::processEvents();
        settings->grab().save(QDir(out).filePath("settings_11_engine_guide.png"));
    }

    In<QPushButton>(f, "Engine_Config_OK")->click();
    EXPECT_EQ(Byte(6), 7);
    EXPECT_EQ(window->App().image.ChangedByte[6], Changed_Mark);
    EXPECT_TRUE(In<QComboBox>(f, "Engine_setup_combo")->isEnabled());
    EXPECT_EQ(In<QComboBox>(f, "Engine_setup_combo")->currentIndex(), 7);
    EXPECT_EQ(In<QLabel>(settings, "Fuel_teeth_recomend")->text(), "Recomended: 77 teeth");
    EXPECT_EQ(window->findChild<QLabel*>("Fuel_Mode_label")->text(), "Sequential fuel");

    // Undo takes the layout back, and the frame follows.
    window->edit_undo_Click();
    EXPECT_EQ(Byte(6), 0);
    EXPECT_EQ(In<QComboBox>(f, "Engine_setup_combo")->currentIndex(), 0);
    EXPECT_EQ(In<QComboBox>(f, "Crank_sensor")->currentText(), "Crank 36-1");
}

TEST_F(EngineFrames, CancelLeavesTheLayoutAndTheLock) {
    QWidget* f = engine;
    In<QPushButton>(f, "Init_Selection_guide")->click();
    Choose(f, "Cylinder_info", "5 cylinders");
    In<QPushButton>(f, "Engine_Config_Cancle")->click();
    EXPECT_EQ(engine->title(), "Engine configuration");
    EXPECT_EQ(Byte(6), 0);
    EXPECT_EQ(In<QComboBox>(f, "Crank_sensor")->currentText(), "Crank 36-1");
    EXPECT_FALSE(In<QPushButton>(f, "Engine_Config_OK")->isEnabled());
    EXPECT_FALSE(In<QComboBox>(f, "Engine_setup_combo")->isEnabled());
}

TEST_F(EngineFrames, PresetAppliedIsAnEditUndoTakesBack) {
    QWidget* p = presets;
    Choose(p, "PresetList", "Sequential fuel (needs cam sensor)");
    EXPECT_EQ(In<QPlainTextEdit>(p, "Preset_Changes_txt")->toPlainText(),
              "These presets will change:\n185: 0 -> 64\n");
    In<QPushButton>(p, "Apply_Preset")->click();
    EXPECT_EQ(Byte(185), 64);
    EXPECT_EQ(window->App().image.ChangedByte[185], Changed_Mark);
    EXPECT_EQ(In<QPlainTextEdit>(p, "Preset_Changes_txt")->toPlainText(), "These presets will change:\n");
    window->edit_undo_Click();
    EXPECT_EQ(Byte(185), 0);
    // The choice is kept for the next start.
    EXPECT_EQ(window->App().ini.Read_Ini("User_Preset"), "6");
}

TEST_F(EngineFrames, PresetBWantsABasePercentage) {
    QWidget* p = presets;
    Choose(p, "PresetList", "Rev limit 7500 rpm");
    In<QPushButton>(p, "Preset_B")->click();
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_EQ(dialogs.informed[0], "Please specify base percentage for preset calculation");
    EXPECT_FALSE(In<QLineEdit>(p, "Pre_perc")->styleSheet().isEmpty());
    EXPECT_EQ(Byte(17), 65);

    const Map_Block fuel = Fuel_Block(window->App().Tables(dialogs));
    const std::uint8_t cell = Byte(fuel.Cell(fuel.rows, fuel.cols));
    In<QLineEdit>(p, "Pre_perc")->setText("110");
    EXPECT_TRUE(In<QLineEdit>(p, "Pre_perc")->styleSheet().isEmpty());
    In<QPushButton>(p, "Preset_B")->click();
    EXPECT_EQ(dialogs.informed.size(), 1u);
    EXPECT_EQ(Byte(17), 85);
    EXPECT_GT(Byte(fuel.Cell(fuel.rows, fuel.cols)), cell);
}

} // namespace
} // namespace quorlen
