// The sensor viewer and the map size conversion in the main window, offscreen, on the shipped
// data: reached from the menu and the map tabs, driven by their objectNames. With
// QUORLEN_SCREENSHOTS=DIR their pictures are saved there.

#include "app/app_context.h"
#include "engine/axis_transform.h"
#include "engine/settings_pages.h"
#include "support/main_window_run.h"
#include "support/pictures.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_sensor_editor.h"
#include "ui/qx_transform_3d.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdlib>

namespace quorlen {
namespace {

using test::Read_File;

class Sensor_Forms : public ::testing::Test {
protected:
    void SetUp() override {
        test::Copy_Shipped_Data(dir);
        window = test::Start_Main_Window(dir, dialogs);
    }
    void TearDown() override { window->close(); }

    template <class T>
    T* Child(QWidget* parent, const char* name) {
        auto* w = parent->findChild<T*>(name);
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    void Pick(QComboBox* box, int index) {
        box->setCurrentIndex(index);
        emit box->activated(index);
    }
    void Type(QLineEdit* edit, const QString& text) {
        edit->clear();
        QTest::keyClicks(edit, text);
    }
    ui::QX_Sensor_Editor* Editor() {
        window->findChild<QAction*>("mnu_Sensor_Editor")->trigger();
        return static_cast<ui::QX_Sensor_Editor*>(window->Form("QX_Sensor_Editor"));
    }
    static const char* Shots() { return std::getenv("QUORLEN_SCREENSHOTS"); }

    test::Temp_Dir dir;
    test::Scripted_Dialogs dialogs;
    std::unique_ptr<ui::BoostProgMain> window;
};

TEST_F(Sensor_Forms, AnInputTakesItsSensorFromTheListAndTheTablesFollow) {
    auto* editor = Editor();
    ASSERT_TRUE(editor->isVisible());
    auto* map = Child<QComboBox>(editor, "AN_Combo(3)");
    EXPECT_EQ(Child<QLabel>(editor, "AN_Label(3)")->text(), "Analog 3, MAP");
    EXPECT_EQ(map->currentText(), "MAP 2.5 bar Bosch");
    // The fuel map's load axis is read through the sensor of its input.
    const std::vector<std::string> loads_before = window->App().tables.Fuel_Load_Text;

    const App_Context& app = window->App();
    const int snapshots = app.undo.UndoIndex;
    Pick(map, 13); // MAP 4 bar Bosch
    EXPECT_EQ(app.undo.UndoIndex, snapshots + 1);
    EXPECT_EQ(app.sensors.inputs.An_Sel[3], 13);
    EXPECT_EQ(app.image.CardByte[886], 13);
    EXPECT_EQ(app.image.ChangedByte[886], Changed_Mark);
    EXPECT_EQ(app.ini.Read_Ini("an_sel3"), "13");
    EXPECT_NE(app.tables.Fuel_Load_Text, loads_before);
    EXPECT_FALSE(app.tables.Fuel_Load_Text.empty());
    // A step back brings the old sensor back on the input, and the axis read through it.
    window->findChild<QAction*>("edit_undo")->trigger();
    EXPECT_EQ(app.sensors.inputs.An_Sel[3], 3);
    EXPECT_EQ(map->currentIndex(), 3);
    EXPECT_EQ(app.tables.Fuel_Load_Text, loads_before);
    window->findChild<QAction*>("edit_redo")->trigger();
    EXPECT_EQ(app.sensors.inputs.An_Sel[3], 13);
    // The list follows the image when another one is loaded.
    window->App().image.CardByte[886] = 8;
    window->Analog_Follows_Image();
    EXPECT_EQ(map->currentIndex(), 8);
}

TEST_F(Sensor_Forms, ATypedSensorIsDrawnSavedAndOfferedOnEveryInput) {
    auto* editor = Editor();
    Child<QTabWidget>(editor, "SensorEditor_SSTab")->setCurrentIndex(1);
    Type(Child<QLineEdit>(editor, "txt_SensorName"), "Oil temp 0-150");
    Type(Child<QLineEdit>(editor, "txt_SensorUnit"), "C");
    Type(Child<QLineEdit>(editor, "txt_SensorDecimals"), "1");
    Type(Child<QLineEdit>(editor, "txt_SensorGain"), "0,6");
    Type(Child<QLineEdit>(editor, "txt_SensorOffset"), "-3");
    auto* grid = Child<QTableWidget>(editor, "Sensor_grid");
    EXPECT_EQ(grid->horizontalHeaderItem(2)->text(), "Out [C]");
    EXPECT_EQ(grid->item(2, 1)->text(), "0.31"); // raw 16 in volts
    EXPECT_EQ(grid->item(2, 2)->text(), "6.6");
    ASSERT_TRUE(Child<QWidget>(editor, "Save_sensor_frame")->isVisible());

    QTest::mouseClick(Child<QPushButton>(editor, "cmd_SaveSensor"), Qt::LeftButton);
    EXPECT_FALSE(Child<QWidget>(editor, "Save_sensor_frame")->isVisible());
    EXPECT_EQ(Read_File(dir.File("RZ400_800M3.ini"))
                      .find("Sens_Def=Oil temp 0-150\tLinear\t0.6\t-3\t0\t255\tC\t1\tbin\t\r\n") !=
                  std::string::npos,
              true);
    const int count = window->App().sensors.table.Sens_Count;
    EXPECT_EQ(Child<QComboBox>(editor, "AN_Combo(12)")->count(), count);
    EXPECT_EQ(Child<QComboBox>(editor, "AN_Combo(12)")->itemText(count - 1), "Oil temp 0-150");

    // The tester reads through the sensor being viewed.
    Pick(Child<QComboBox>(editor, "View_Tuning_Sensor_Combo"), count - 1);
    Type(Child<QLineEdit>(editor, "Text2"), "2.5");
    QTest::mouseClick(Child<QPushButton>(editor, "cmd_Frw_Calc"), Qt::LeftButton);
    EXPECT_EQ(Child<QLineEdit>(editor, "Text1")->text(), "73.50");
    Type(Child<QLineEdit>(editor, "Text1"), "150");
    QTest::mouseClick(Child<QPushButton>(editor, "cmd_Rev_Calc"), Qt::LeftButton);
    EXPECT_EQ(Child<QLineEdit>(editor, "Text2")->text(), "5.00");
}

TEST_F(Sensor_Forms, TheConversionKeepsTheFuelMapThroughAnotherShape) {
    window->findChild<QPushButton*>("Fuel_Transform_3D_cmd")->click();
    auto* form = static_cast<ui::QX_Transform_3D*>(window->Form("QX_Transform_3D"));
    ASSERT_TRUE(form->isVisible());
    QWidget* page = Child<QWidget>(form, "Transform_Fuel_page");
    Settings_Image& image = window->App().image;
    const std::uint8_t corner = image.CardByte[Head_Block(image, Map_Head::Fuel).Cell(1, 1)];

    QTest::mouseClick(Child<QPushButton>(page, "Save_transform"), Qt::LeftButton);
    EXPECT_EQ(Child<QTableWidget>(page, "Fuel_3D_Grid_Transform")->rowCount(), 19);
    Pick(Child<QComboBox>(page, "FUEL_3D_MAP_Size_Combo"), 1);
    EXPECT_EQ(window->findChild<QComboBox*>("FUEL_3D_MAP_Size_Combo")->currentIndex(), 1);
    Child<QScrollBar>(page, "d_3D_RPM_scroll")->setValue(4); // 500 rpm a step
    EXPECT_EQ(Child<QLabel>(page, "d_3D_RPM_text")->text(), "500");
    auto* rpm = Child<QTableWidget>(page, "RPM_3D_Grid");
    EXPECT_EQ(rpm->columnCount(), 21);
    EXPECT_EQ(rpm->item(0, 20)->text(), "10500");

    // The first RPM step is an offset: the buttons move it by one.
    rpm->setFocus();
    rpm->setCurrentCell(1, 0);
    QTest::mouseClick(Child<QPushButton>(page, "Table_Decrease"), Qt::LeftButton);
    EXPECT_EQ(image.CardByte[Head_Block(image, Map_Head::Fuel).Rpm_Step(1)], 7);

    QTest::mouseClick(Child<QPushButton>(page, "Convert_Transform"), Qt::LeftButton);
    EXPECT_EQ(Child<QTableWidget>(page, "Fuel_3D_Grid2_Transform")->columnCount(), 22);
    // 437.5 rpm lies below the first saved speed of 500, 937.5 between two saved ones.
    auto* fuel = window->findChild<QTableView*>("Fuel_3D_Grid");
    EXPECT_EQ(fuel->model()->columnCount(), 22);
    EXPECT_EQ(fuel->model()->index(0, 2).data().toString(), "938");
    EXPECT_NE(image.CardByte[Head_Block(image, Map_Head::Fuel).Cell(1, 2)], 0);
    EXPECT_NE(corner, 0);

    if (Shots() != nullptr) {
        form->resize(1400, 900);
        QTest::qWait(200);
        form->grab().save(QString(Shots()) + "/transform_fuel.png");
    }
}

TEST_F(Sensor_Forms, TheSettingsFormShowsEachMapsShapeAndLeadsToTheConversion) {
    window->Show_Settings(Settings_Tab::Ignition);
    QWidget* settings = window->Form("QX_settings");
    auto* axes = Child<QWidget>(settings, "Ign_Axes_frame");
    ASSERT_TRUE(axes->isVisible());
    auto* load = Child<QTableWidget>(axes, "MAP_3D_Ign_Grid");
    EXPECT_EQ(load->rowCount(), 11);
    load->setFocus();
    load->setRangeSelected(QTableWidgetSelectionRange(3, 0, 4, 1), true);
    const Map_Block ign = Head_Block(window->App().image, Map_Head::Ignition);
    const int step = window->App().image.CardByte[ign.Load_Step(4)];
    QTest::mouseClick(Child<QPushButton>(axes, "Table_Ign_Increase"), Qt::LeftButton);
    EXPECT_EQ(window->App().image.CardByte[ign.Load_Step(4)], std::min(step * 2, 128));
    // The load column of the main map follows at once.
    auto* grid = window->findChild<QTableView*>("Ignition_3D_Grid");
    EXPECT_EQ(
        grid->model()->index(4, 0).data().toString().toStdString(),
        Load_Axis_Texts({window->App().image, window->App().sensors, window->App().undo, window->App().log},
                        Map_Head::Ignition)[3]
            .substr(0, 4));

    QTest::mouseClick(Child<QPushButton>(axes, "Ign_Transform_3D_cmd"), Qt::LeftButton);
    auto* form = window->Form("QX_Transform_3D");
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(Child<QTabWidget>(form, "Transform_SSTab")->currentIndex(), 1);
}

TEST_F(Sensor_Forms, ConvertingWithoutASavedMapTellsSoAndChangesNothing) {
    window->findChild<QAction*>("mnu_Transform_3D")->trigger();
    auto* form = window->Form("QX_Transform_3D");
    auto before = window->App().image.CardByte;
    QTest::mouseClick(Child<QPushButton>(form, "Convert_Ign_Transform"), Qt::LeftButton);
    ASSERT_FALSE(dialogs.informed.empty());
    EXPECT_EQ(dialogs.informed.back(), Nothing_Saved_Text);
    EXPECT_EQ(window->App().image.CardByte, before);
}

TEST_F(Sensor_Forms, Screenshots) {
    test::Picture_Folder pictures;
    auto* editor = Editor();
    editor->resize(1000, 420);
    QTest::qWait(200);
    ASSERT_TRUE(editor->grab().save(pictures.Path() + "/sensor_viewer_inputs.png"));
    Child<QTabWidget>(editor, "SensorEditor_SSTab")->setCurrentIndex(1);
    Pick(Child<QComboBox>(editor, "View_Tuning_Sensor_Combo"), 4);
    editor->resize(1300, 820);
    QTest::qWait(200);
    ASSERT_TRUE(editor->grab().save(pictures.Path() + "/sensor_viewer_editor.png"));
    for (const char* name : {"/sensor_viewer_inputs.png", "/sensor_viewer_editor.png"})
        EXPECT_TRUE(test::Has_Content(QImage(pictures.Path() + name))) << name;
}

} // namespace
} // namespace quorlen
