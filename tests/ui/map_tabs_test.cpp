// The Ignition, Fuel and PWM tabs driven by their objectNames, offscreen, on the shipped data.
// With QUORLEN_SCREENSHOT_DIR set, each tab page is also saved there as a PNG.

#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"

#include <QApplication>
#include <QChartView>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableView>

#include <gtest/gtest.h>

#include <memory>

namespace quorlen {
namespace {

using test::Read_File;
using test::Scripted_Dialogs;
using test::Temp_Dir;
using test::Write_File;

class MapTabs : public ::testing::Test {
protected:
    void SetUp() override {
        test::Copy_Shipped_Data(dir);
        window = test::Start_Main_Window(dir, dialogs, test::Unattended());
    }
    void TearDown() override { window->close(); }

    QString Cell(const char* grid, int row, int col) {
        auto* view = window->findChild<QTableView*>(grid);
        EXPECT_NE(view, nullptr) << grid;
        return view == nullptr ? QString() : view->model()->index(row, col).data().toString();
    }
    QSize Shape(const char* grid) {
        auto* model = window->findChild<QTableView*>(grid)->model();
        return {model->columnCount(), model->rowCount()};
    }
    void Pick(const char* combo, int index) {
        auto* box = window->findChild<QComboBox*>(combo);
        ASSERT_NE(box, nullptr) << combo;
        box->setCurrentIndex(index);
        emit box->activated(index);
    }
    Settings_Image& Image() { return window->App().image; }

    Temp_Dir dir;
    Scripted_Dialogs dialogs;
    std::unique_ptr<ui::BoostProgMain> window;
};

TEST_F(MapTabs, ShippedImageLoadsWithoutRepairAndShowsItsMapsWithSensorCaptions) {
    EXPECT_TRUE(dialogs.informed.empty());
    EXPECT_EQ(Shape("Fuel_3D_Grid"), QSize(20, 19));
    EXPECT_EQ(Shape("Ignition_3D_Grid"), QSize(19, 12));
    EXPECT_EQ(Cell("Fuel_3D_Grid", 0, 0), "RPM");
    EXPECT_EQ(Cell("Fuel_3D_Grid", 0, 1), "500");
    EXPECT_EQ(Cell("Fuel_3D_Grid", 0, 19), "8500");
    EXPECT_EQ(Cell("Fuel_3D_Grid", 1, 0), "0.15"); // raw 16 on the 2.5 bar MAP sensor
    EXPECT_EQ(Cell("Ignition_3D_Grid", 0, 18), "8000");
    auto label = [&](const char* name) { return window->findChild<QLabel*>(name)->text(); };
    EXPECT_EQ(label("Fuel_3D_Load_label"), "Fuel 3D Load sensor:  - MAP [bar]");
    EXPECT_EQ(label("Fuel_Load_Header_label"), "Load [bar]");
    EXPECT_EQ(label("Lambda_Sensor_label"), "Lambda sensor:  - AFR [AFR]");
    EXPECT_EQ(Cell("Fuel_Lambda_Grid", 0, 2), "AFR");
    EXPECT_EQ(Cell("Fuel_Lambda_Grid", 1, 2), "14.7");
    EXPECT_EQ(Shape("Fuel_Lambda_Grid"), QSize(3, 18));
    for (const char* chart : {"Ig2ndMapChart", "FuelMapChart", "FuelRpmChart", "FuelLambdaChart",
                              "PwmMapChart(0)", "PwmMapChart(1)", "PwmMapChart(4)", "IG_3rd_Chart"})
        EXPECT_NE(window->findChild<QChartView*>(chart), nullptr) << chart;
    EXPECT_EQ(window->findChild<QTabWidget*>("SSTab_PWM")->tabText(0), "PWM 1");
}

TEST_F(MapTabs, EverySizeOfBothMainMapsRendersWithItsShapeAndFirstCell) {
    const int fuel_sizes[8][2] = {{19, 18}, {21, 16}, {25, 13}, {18, 11},
                                  {16, 21}, {13, 25}, {11, 11}, {15, 13}};
    for (int i = 0; i < 8; ++i) {
        Pick("FUEL_3D_MAP_Size_Combo", i);
        auto [cols, rows] = fuel_sizes[i];
        EXPECT_EQ(Image().CardByte[175] & 7, i);
        EXPECT_EQ(Image().CardByte[256], cols);
        EXPECT_EQ(Image().CardByte[256 + cols + 1], rows);
        EXPECT_EQ(Shape("Fuel_3D_Grid"), QSize(cols + 1, rows + 1)) << i;
        int first = 256 + cols + rows + 2;
        Image().CardByte[first - 1] = 2; // the last load step, never a cell
        Image().CardByte[first] = 77;
        Image().CardByte[first + rows * cols - 1] = 10;
        window->Update_All();
        EXPECT_EQ(Cell("Fuel_3D_Grid", 1, 1), "7.7") << i;
        EXPECT_EQ(Cell("Fuel_3D_Grid", rows, cols), "1.60") << i;
    }
    const int ign_sizes[4][2] = {{18, 11}, {15, 13}, {11, 18}, {11, 11}};
    for (int i = 0; i < 4; ++i) {
        Pick("Ign_3D_MAP_Size_Combo", i);
        auto [cols, rows] = ign_sizes[i];
        EXPECT_EQ((Image().CardByte[175] & 192) / 64, i);
        EXPECT_EQ(Shape("Ignition_3D_Grid"), QSize(cols + 1, rows + 1)) << i;
        int first = 653 + cols + rows + 2;
        Image().CardByte[first] = 77;
        window->Update_All();
        EXPECT_EQ(Cell("Ignition_3D_Grid", 1, 1), "15.4") << i;
    }
    // The fuel size is kept while the ignition size changes.
    EXPECT_EQ(Image().CardByte[175] & 7, 7);
}

TEST_F(MapTabs, AStepOfThreeBecomesTwoWithOneMessageForItsAxis) {
    Image().CardByte[257] = 2; // fuel RPM axis: an offset, then twice out of rule
    Image().CardByte[258] = 3;
    Image().CardByte[260] = 200;
    Image().CardByte[653 + 18 + 1 + 2] = 5; // ignition load axis
    window->Update_All();
    ASSERT_EQ(dialogs.informed.size(), 2u);
    EXPECT_EQ(dialogs.informed[0],
              "Some errors in Fuel RPM table was automatically corrected. Double check and save the file");
    EXPECT_EQ(
        dialogs.informed[1],
        "Some errors in Ignition Load table was automatically corrected. Double check and save the file");
    EXPECT_EQ(Image().CardByte[258], 2);
    EXPECT_EQ(Image().CardByte[260], 128);
    EXPECT_EQ(Cell("Fuel_3D_Grid", 0, 2), "250");
    window->Update_All();
    EXPECT_EQ(dialogs.informed.size(), 2u);
}

TEST_F(MapTabs, OneDimensionalTablesAndCompensationSlidersFollowTheImage) {
    Image().CardByte[191] = 128;
    Image().CardByte[192] = 0;
    Image().CardByte[896] = 200;
    window->Update_All();
    EXPECT_EQ(Cell("Ig_2ndMAP_Grid", 1, 2), "0.0");
    EXPECT_EQ(Cell("Ig_2ndMAP_Grid", 2, 2), "-25.6");
    EXPECT_EQ(Cell("PWM_MAP_Grid(1)", 1, 2), "100.0");
    EXPECT_EQ(Cell("PWM_MAP_Grid(1)", 21, 0), "10000");

    // PWM2 extra fuel stands on the settings form, not with the PWM tables.
    EXPECT_EQ(window->findChild<QTabWidget*>("SSTab_PWM")->findChild<QTableView*>("PWM2_FuelCorr_grid"),
              nullptr);

    auto* scroll = window->findChild<QScrollBar*>("scroll(93)");
    ASSERT_NE(scroll, nullptr);
    scroll->setValue(100);
    EXPECT_EQ(Image().CardByte[93], 100);
    EXPECT_EQ(Image().ChangedByte[93], 255);
    EXPECT_EQ(window->findChild<QLabel*>("scroll_text(93)")->text(), "50.0");
    EXPECT_EQ(window->findChild<QLabel*>("scroll_unit_label(93)")->text(), "%");

    // Switching to percent turns the 2nd fuel tables' column into whole percents.
    Image().CardByte[100] = 150;
    Pick("FUEL_2nd_MAP_Function_Combo", 1);
    EXPECT_EQ(Cell("Fuel_MAP_Grid", 0, 2), "%");
    EXPECT_EQ(Cell("Fuel_MAP_Grid", 1, 2), "150");
}

TEST_F(MapTabs, TabsGrabbedOffscreenShowFullGrids) {
    QString out = qEnvironmentVariable("QUORLEN_SCREENSHOT_DIR");
    auto* main = window->findChild<QTabWidget*>("sstab_Main");
    const char* names[] = {"", "ignition", "fuel", "pwm"};
    window->resize(1280, 860);
    window->show();
    for (int tab = 1; tab <= 3; ++tab) {
        main->setCurrentIndex(tab);
        auto* sub = static_cast<QTabWidget*>(main->currentWidget());
        for (int page = 0; page < sub->count(); ++page) {
            sub->setCurrentIndex(page);
            QApplication::processEvents();
            QPixmap shot = window->grab();
            EXPECT_FALSE(shot.isNull());
            if (!out.isEmpty())
                shot.save(QDir(out).filePath(QStringLiteral("%1_%2.png").arg(names[tab]).arg(page)));
        }
    }
    // The widest fuel size still shows every column in a window of this size.
    main->setCurrentIndex(2);
    window->findChild<QTabWidget*>("SSTab_Fuel")->setCurrentIndex(0);
    Pick("FUEL_3D_MAP_Size_Combo", 2);
    QApplication::processEvents();
    if (!out.isEmpty()) window->grab().save(QDir(out).filePath("fuel_25x13.png"));
    auto* grid = window->findChild<QTableView*>("Fuel_3D_Grid");
    EXPECT_FALSE(grid->horizontalScrollBar()->isVisible());
    // Each column leaves room around its widest text, the bold RPM header, so nothing is cut.
    QFont bold = grid->font();
    bold.setBold(true);
    QFontMetrics fm(bold);
    for (int c = 0; c < grid->model()->columnCount(); ++c)
        EXPECT_GE(grid->columnWidth(c),
                  fm.horizontalAdvance(grid->model()->index(0, c).data().toString()) + 8)
            << c;
}

} // namespace
} // namespace quorlen
