// The "Log hits" colouring of the main maps and the fuel correction form, on the shipped data:
// hand-made rows written straight into the log window's state, and a log of the simulator's
// engine swept through the map opened as a file. With QUORLEN_SCREENSHOT_DIR set, the coloured
// fuel grid and the form over the swept log are saved there as PNGs.

#include "analysis/fuel_correction.h"
#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/sweep_log.h"
#include "support/temp_dir.h"
#include "tables/cell_entry.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_fuel_correction.h"
#include "ui/qx_log.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>

#include <gtest/gtest.h>

#include <memory>

namespace quorlen {
namespace {

using test::Scripted_Dialogs;
using test::Temp_Dir;

class Fuel_Correction_Form : public ::testing::Test {
protected:
    void SetUp() override {
        test::Copy_Shipped_Data(dir, {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs",
                                      "RZ400_800M3_Default_Log_Settings.qxl"});
        window = test::Start_Main_Window(dir, dialogs, test::Unattended());
        window->resize(1280, 860);
        window->show();
        auto* main = window->findChild<QTabWidget*>("sstab_Main");
        main->setCurrentIndex(2);
        window->findChild<QTabWidget*>("SSTab_Fuel")->setCurrentIndex(0);
    }
    void TearDown() override { window->close(); }

    App_Context& App() { return window->App(); }
    Log_State& Log() { return *App().log_state; }

    // `count` rows of a warm engine at `rpm` on the MAP reading `map_raw`, the wide band
    // sensor reading `afr_raw`, as the log calculation leaves them.
    void Add_Rows(int count, double rpm, double map_raw, double afr_raw) {
        const Log_Columns& c = Log().columns;
        for (int i = 0; i < count; ++i) {
            const int r = ++Log().Last_Row;
            Log().Log_Data(r, 0) = (r - 1) * 0.05;
            Log().Log_Data(r, c.Col_RPM) = rpm;
            Log().Log_Data(r, c.Col_Fuel) = 3.0;
            Log().Log_Data(r, c.Col_AD1_Bin) = afr_raw;
            Log().Log_Data(r, c.Col_AN1) = afr_raw * 0.01953125;
            Log().Log_Data(r, c.Col_AD2_Bin) = 51;
            Log().Log_Data(r, c.Col_AN2) = 20;
            Log().Log_Data(r, c.Col_AD3_Bin) = map_raw;
            Log().Log_Data(r, c.Col_AN3) = map_raw * 0.0098039;
            Log().Log_Data(r, c.Col_AN4) = 85;
        }
    }

    // The point that takes all of a place's weight, 0 when it is shared.
    static int Whole_On(const Axis_Spot& spot) {
        if (spot.upper_weight == 1) return spot.cell;
        return spot.upper_weight == 0 ? spot.lower : 0;
    }

    // The engine speed and MAP reading of a row that stands exactly on point (row, col) of
    // the fuel map, found by placing trial rows.
    std::pair<double, double> On_Point(int row, int col) {
        const Map_Locator fuel = Make_Map_Locator(App().image, App().sensors, Log(), Table_Id::Fuel_3D);
        const double rpm = fuel.rpm_points[static_cast<std::size_t>(col - 1)];
        for (int raw = 0; raw < 256; ++raw) {
            Add_Rows(1, rpm, raw, 120);
            auto cell = Locate_Row(fuel, Log().Log_Data.Row(Log().Last_Row));
            --Log().Last_Row;
            if (cell && Whole_On(cell->row) == row && Whole_On(cell->column) == col) return {rpm, raw};
        }
        ADD_FAILURE() << "no reading on point " << row << "," << col;
        return {0, 0};
    }

    QModelIndex Grid_Index(const char* grid, int row, int col) {
        return window->findChild<QTableView*>(grid)->model()->index(row, col);
    }

    void Trigger(QWidget* owner, const char* action) {
        auto* a = owner->findChild<QAction*>(action);
        ASSERT_NE(a, nullptr) << action;
        a->trigger();
        QApplication::processEvents();
    }

    Temp_Dir dir;
    Scripted_Dialogs dialogs;
    std::unique_ptr<ui::BoostProgMain> window;
};

TEST_F(Fuel_Correction_Form, Log_Hits_Colour_The_Cells_The_Log_Ran_In_And_Follow_A_New_Log) {
    // A log on a point of both axes, so its cell takes every row.
    const int r = 8, c = 6;
    const auto [rpm, map] = On_Point(r, c);
    Add_Rows(60, rpm, map, 120);

    auto* mode = window->findChild<QRadioButton*>("Color_3D_Check(4)");
    ASSERT_NE(mode, nullptr);
    ASSERT_TRUE(mode->isEnabled());
    mode->click();
    QApplication::processEvents();
    const QModelIndex hit = Grid_Index("Fuel_3D_Grid", r, c);
    EXPECT_EQ(hit.data(Qt::ToolTipRole).toString(), "3.00 s in the log");
    EXPECT_NE(hit.data(Qt::BackgroundRole).value<QColor>(), QColor(Qt::white));
    EXPECT_EQ(Grid_Index("Fuel_3D_Grid", 1, 1).data(Qt::BackgroundRole).value<QColor>(), QColor(Qt::white));
    EXPECT_EQ(Grid_Index("Fuel_3D_Grid", 1, 1).data(Qt::ToolTipRole).toString(), "0.00 s in the log");
    auto* legend = window->findChild<QLabel*>("Log_Hits_Legend");
    EXPECT_TRUE(legend->isVisible());
    EXPECT_EQ(legend->text(), "Log hits: 0 s to 3.0 s, 60 rows");

    // A new log: the log window's redraw brings the colouring along.
    Log().Last_Row = 0;
    Add_Rows(20, rpm, map, 120);
    Trigger(window->Form("QX_Log"), "Redraw");
    EXPECT_EQ(Grid_Index("Fuel_3D_Grid", r, c).data(Qt::ToolTipRole).toString(), "1.00 s in the log");

    // Back to a value colouring: no tooltips, no legend.
    window->findChild<QRadioButton*>("Color_3D_Check(1)")->click();
    QApplication::processEvents();
    EXPECT_FALSE(legend->isVisible());
    EXPECT_FALSE(Grid_Index("Fuel_3D_Grid", r, c).data(Qt::ToolTipRole).isValid());
}

TEST_F(Fuel_Correction_Form, Opens_From_The_Log_Window_And_Applies_The_Chosen_Cells_As_One_Undoable_Edit) {
    // Lean at one point, rich at another, against the shipped AFR target table (the shipped
    // sensor reads 10 AFR + 0.0392 a count).
    const int r = 8, lean_c = 6, rich_c = 9;
    const auto [lean_rpm, lean_map] = On_Point(r, lean_c);
    const auto [rich_rpm, rich_map] = On_Point(r, rich_c);
    Add_Rows(60, lean_rpm, lean_map, 157);
    Add_Rows(60, rich_rpm, rich_map, 80);

    Trigger(window->Form("QX_Log"), "mnu_Fuel_Correction");
    auto* form = window->findChild<ui::QX_Fuel_Correction*>("QX_Fuel_Correction");
    ASSERT_NE(form, nullptr);
    ASSERT_TRUE(form->isVisible());
    const Fuel_Proposal& p = form->Proposal();
    ASSERT_EQ(p.problem, "");
    EXPECT_EQ(p.target_text, "AFR target table");
    ASSERT_TRUE(p.At(r, lean_c).changed);
    ASSERT_TRUE(p.At(r, rich_c).changed);
    EXPECT_GT(p.At(r, lean_c).percent, 5);
    EXPECT_LT(p.At(r, rich_c).percent, -2);

    QTableWidget* grid = form->Grid();
    EXPECT_TRUE(grid->item(r - 1, lean_c - 1)->text().startsWith("+"));
    EXPECT_TRUE(grid->item(r - 1, lean_c - 1)->text().endsWith("3.0 s"));
    EXPECT_TRUE(grid->item(r - 1, 0)->text().isEmpty());
    auto* apply = form->findChild<QPushButton*>("cmd_Apply");
    EXPECT_FALSE(apply->isEnabled()); // nothing chosen yet

    // A threshold moved and proposed again: with 4 s wanted per cell nothing has enough.
    form->findChild<QLineEdit*>("txt_Min_Seconds")->setText("4");
    form->findChild<QPushButton*>("cmd_Propose")->click();
    EXPECT_EQ(form->Proposal().Changed_Count(), 0);
    form->findChild<QLineEdit*>("txt_Min_Seconds")->setText("1");
    form->findChild<QPushButton*>("cmd_Propose")->click();
    ASSERT_EQ(form->Proposal().Changed_Count(), 2);

    // Only the lean cell chosen: only it is written, marked for the next write, and shown.
    Settings_Image& image = App().image;
    image.ChangedByte.fill(0);
    const Cell_Correction lean = form->Proposal().At(r, lean_c);
    const Cell_Correction rich = form->Proposal().At(r, rich_c);
    grid->item(r - 1, lean_c - 1)->setSelected(true);
    EXPECT_TRUE(apply->isEnabled());
    apply->click();
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(lean.address)], lean.new_byte);
    EXPECT_EQ(image.ChangedByte[static_cast<std::size_t>(lean.address)], Changed_Mark);
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(rich.address)], rich.old_byte);
    EXPECT_EQ(Grid_Index("Fuel_3D_Grid", r, lean_c).data().toString(),
              QString::fromStdString(Fuel_Cell_Text(lean.new_byte)));
    EXPECT_TRUE(grid->item(r - 1, lean_c - 1)->text().endsWith("applied"));

    // The main window's undo takes the whole apply back.
    Trigger(window.get(), "edit_undo");
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(lean.address)], lean.old_byte);
    EXPECT_EQ(Grid_Index("Fuel_3D_Grid", r, lean_c).data().toString(),
              QString::fromStdString(Fuel_Cell_Text(lean.old_byte)));
}

TEST_F(Fuel_Correction_Form, A_Swept_Log_Opened_In_The_Log_Window_Corrects_The_Region_That_Ran_Lean) {
    // Five minutes of the engine swept through the map, needing 12 % more fuel in a region.
    const std::string path = dir.File("sweep.qxl");
    test::Write_File(path,
                     test::Sweep_Log_File(App().image, test::Read_File(dir.File("RZ400_800M3.ini")),
                                          test::Read_File(dir.File("RZ400_800M3_Default_Log_Settings.qxl")),
                                          "3000-5000:1.0-1.5:+12", 6000));
    window->findChild<QRadioButton*>("Color_3D_Check(4)")->click();
    auto* log_window = static_cast<ui::QX_Log*>(window->Form("QX_Log"));
    ASSERT_TRUE(log_window->Open_File(path));
    QApplication::processEvents();
    ASSERT_EQ(Log().Last_Row, 6000);
    // Opening the file recoloured the grid: the sweep reaches most of the map.
    int coloured = 0;
    auto* model = window->findChild<QTableView*>("Fuel_3D_Grid")->model();
    for (int r = 1; r < model->rowCount(); ++r)
        for (int c = 1; c < model->columnCount(); ++c)
            coloured += model->index(r, c).data(Qt::BackgroundRole).value<QColor>() != QColor(Qt::white);
    EXPECT_GT(coloured, (model->rowCount() - 1) * (model->columnCount() - 1) / 2);
    EXPECT_TRUE(window->findChild<QLabel*>("Log_Hits_Legend")->text().endsWith("6000 rows"));

    Trigger(log_window, "mnu_Fuel_Correction");
    auto* form = window->findChild<ui::QX_Fuel_Correction*>("QX_Fuel_Correction");
    ASSERT_NE(form, nullptr);
    const Fuel_Proposal& p = form->Proposal();
    ASSERT_EQ(p.problem, "");
    Tables_Context t = App().Tables(dialogs);
    int region = 0;
    for (const Cell_Correction& c : p.cells) {
        const double rpm = Text_To_Double(Grid_Text(t, Table_Id::Fuel_3D, 0, c.col));
        const double load = Text_To_Double(Grid_Text(t, Table_Id::Fuel_3D, c.row, 0));
        if (rpm >= 3000 && rpm <= 5000 && load >= 1.0 && load <= 1.5) {
            ++region;
            EXPECT_TRUE(c.changed) << c.row << "," << c.col;
            EXPECT_GT(c.percent, 7) << c.row << "," << c.col;
        } else if (c.changed) {
            EXPECT_LE(std::abs(c.new_byte - c.old_byte), 1) << c.row << "," << c.col;
        }
    }
    EXPECT_GE(region, 12);

    if (QString out = qEnvironmentVariable("QUORLEN_SCREENSHOT_DIR"); !out.isEmpty()) {
        window->grab().save(QDir(out).filePath("log_hits_fuel.png"));
        form->resize(1180, 720);
        QApplication::processEvents();
        form->grab().save(QDir(out).filePath("fuel_correction_proposal.png"));
    }

    // Every change chosen and applied: exactly those bytes are marked for the next write.
    Settings_Image& image = App().image;
    image.ChangedByte.fill(0);
    form->findChild<QPushButton*>("cmd_Select_Changes")->click();
    form->findChild<QPushButton*>("cmd_Apply")->click();
    int marked = 0;
    for (auto mark : image.ChangedByte)
        marked += mark != 0;
    EXPECT_EQ(marked, p.Changed_Count());
    for (const Cell_Correction& c : p.cells)
        EXPECT_EQ(image.CardByte[static_cast<std::size_t>(c.address)], c.new_byte);
}

TEST_F(Fuel_Correction_Form, Says_Why_When_There_Is_Nothing_To_Study) {
    Trigger(window->Form("QX_Log"), "mnu_Fuel_Correction");
    auto* form = window->findChild<ui::QX_Fuel_Correction*>("QX_Fuel_Correction");
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(form->findChild<QLabel*>("lbl_Study")->text(),
              "No log is open: record one or open a file in the log window.");
    EXPECT_EQ(form->Proposal().Changed_Count(), 0);
    EXPECT_FALSE(form->findChild<QPushButton*>("cmd_Apply")->isEnabled());
}

} // namespace
} // namespace quorlen
