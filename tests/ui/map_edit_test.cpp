// Editing the maps in the window, driven as a tuner drives it: clicks and shift-clicks on the
// grids, keys, the clipboard, the buttons, the menu, all found by their objectNames, on the
// shipped data. With QUORLEN_SCREENSHOT_DIR set, the coloured fuel map of each mode and the
// surface view are saved there as PNG (the surface only where OpenGL is at hand, as under
// xvfb-run).

#include "files/settings_files.h"
#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "tables/map_colours.h"
#include "tables/table_catalogue.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_3dmap.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSet>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

#include <fstream>
#include <memory>

namespace quorlen {
namespace {

using test::Read_File;
using test::Scripted_Dialogs;
using test::Temp_Dir;
using test::Write_File;

class MapEdit : public ::testing::Test {
protected:
    void SetUp() override {
        test::Copy_Shipped_Data(dir);
        window = test::Start_Main_Window(dir, dialogs, test::Unattended());
        window->resize(1280, 860);
        window->show();
        Open_Tab(2, "SSTab_Fuel", 0); // the fuel map, 19 x 18 on the shipped image
    }
    void TearDown() override { window->close(); }

    void Open_Tab(int main, const char* sub, int page) {
        window->findChild<QTabWidget*>("sstab_Main")->setCurrentIndex(main);
        window->findChild<QTabWidget*>(sub)->setCurrentIndex(page);
        QApplication::processEvents();
    }
    QTableView* Grid(const char* name) { return window->findChild<QTableView*>(name); }
    // A click on the anchor and a shift-click on the far corner.
    void Select(const char* grid, int r1, int c1, int r2, int c2) {
        QTableView* view = Grid(grid);
        auto at = [&](int r, int c) { return view->visualRect(view->model()->index(r, c)).center(); };
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at(r1, c1));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ShiftModifier, at(r2, c2));
    }
    void Click(const char* button) {
        auto* b = window->findChild<QPushButton*>(button);
        ASSERT_NE(b, nullptr) << button;
        ASSERT_TRUE(b->isEnabled()) << button;
        b->click();
    }
    QString Cell(const char* grid, int r, int c) {
        return Grid(grid)->model()->index(r, c).data().toString();
    }
    int Fuel(int r, int c) {
        return window->App().image.CardByte[static_cast<std::size_t>(Fuel_Address(r, c))];
    }
    int Fuel_Address(int r, int c) { return 256 + 19 + 18 + 2 + (r - 1) * 19 + (c - 1); }
    std::uint8_t& Byte(int address) {
        return window->App().image.CardByte[static_cast<std::size_t>(address)];
    }
    QString Shots() { return qEnvironmentVariable("QUORLEN_SCREENSHOT_DIR"); }

    Temp_Dir dir;
    Scripted_Dialogs dialogs;
    std::unique_ptr<ui::BoostProgMain> window;
};

TEST_F(MapEdit, SteepAndFlatButtonsChangeTheSelectedBlockAndPutTheSelectionBack) {
    int before[4][4];
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            before[r][c] = Fuel(3 + r, 5 + c);
    Select("Fuel_3D_Grid", 6, 8, 3, 5); // dragged up and left
    Click("steep_RPM_3D");
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(Fuel(3 + r, 5 + c), before[r][c] + c) << r << "," << c;
    EXPECT_EQ(window->App().image.ChangedByte[static_cast<std::size_t>(Fuel_Address(3, 6))], 255);
    EXPECT_EQ(Cell("Fuel_3D_Grid", 3, 8).toStdString(),
              Fuel_Cell_Text(static_cast<std::uint8_t>(before[0][3] + 3)));

    // The selection stands anchored at its top left, so the next button takes the same block.
    QTableView* grid = Grid("Fuel_3D_Grid");
    EXPECT_EQ(grid->currentIndex(), grid->model()->index(3, 5));
    EXPECT_EQ(grid->selectionModel()->selectedIndexes().size(), 16);
    Click("flat_RPM_3D");
    Click("steep_Load_3D_B");
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(Fuel(3 + r, 5 + c), before[r][c] + (3 - r)) << r << "," << c;

    // The one-dimensional buttons stay off on a main map, and serve a table of their own.
    EXPECT_FALSE(window->findChild<QPushButton*>("steep")->isVisible());
    Open_Tab(3, "SSTab_PWM", 2);
    for (int i = 0; i < 21; ++i)
        Byte(917 + i) = 10;
    Select("PWM_MAP_Grid(2)", 4, 2, 8, 2);
    Click("steep");
    EXPECT_EQ(Byte(917 + 3), 10);
    EXPECT_EQ(Byte(917 + 7), 14);
    EXPECT_EQ(Cell("PWM_MAP_Grid(2)", 8, 2), "7.0");
    EXPECT_EQ(window->findChild<QLabel*>("maxText")->text(), "100");
}

TEST_F(MapEdit, TypingShowsTheTextInEverySelectedCellAndSetsTheBytes) {
    Select("Fuel_3D_Grid", 2, 2, 3, 4);
    QTableView* grid = Grid("Fuel_3D_Grid");
    QTest::keyClick(grid, Qt::Key_1);
    EXPECT_EQ(Cell("Fuel_3D_Grid", 3, 4), "1");
    EXPECT_EQ(Fuel(2, 2), 1); // the injector stays open on the way to 1,5
    QTest::keyClick(grid, Qt::Key_Comma);
    EXPECT_EQ(Cell("Fuel_3D_Grid", 2, 3), "1,");
    QTest::keyClick(grid, Qt::Key_5);
    for (int r = 2; r <= 3; ++r)
        for (int c = 2; c <= 4; ++c) {
            EXPECT_EQ(Cell("Fuel_3D_Grid", r, c), "1,5");
            EXPECT_EQ(Fuel(r, c), 8);
        }
    EXPECT_EQ(Cell("Fuel_3D_Grid", 2, 5).toStdString(),
              Fuel_Cell_Text(static_cast<std::uint8_t>(Fuel(2, 5))));

    // Moving on shows the cells as the image has them, and starts a new number.
    Select("Fuel_3D_Grid", 10, 10, 10, 10);
    EXPECT_EQ(Cell("Fuel_3D_Grid", 2, 2), "1.48");
    QTest::keyClick(grid, Qt::Key_3);
    QTest::keyClick(grid, Qt::Key_0);
    EXPECT_EQ(Cell("Fuel_3D_Grid", 10, 10), "25.5");
    EXPECT_EQ(Fuel(10, 10), 255);

    // "A" is plus, "P" halves the RPM step of the selected column.
    int b = Fuel(11, 11);
    Select("Fuel_3D_Grid", 11, 11, 11, 11);
    QTest::keyClick(grid, Qt::Key_A);
    EXPECT_EQ(Fuel(11, 11), b + 1);
    int step = Byte(256 + 11);
    QTest::keyClick(grid, Qt::Key_P);
    EXPECT_EQ(Byte(256 + 11), step / 2);
    // A letter without a meaning neither types nor moves the cursor.
    QTest::keyClick(grid, Qt::Key_Q);
    EXPECT_EQ(grid->currentIndex(), grid->model()->index(11, 11));

    // The one-dimensional grids type into set_table_text within the table's limits: the
    // shipped 1st Ignition compensation runs over engine speed, +-12.7 degrees by byte 44.
    Open_Tab(1, "SSTab_Ignition", 1);
    Select("Ig_2ndMAP_Grid", 3, 2, 4, 2);
    QTest::keyClick(Grid("Ig_2ndMAP_Grid"), Qt::Key_Minus);
    QTest::keyClick(Grid("Ig_2ndMAP_Grid"), Qt::Key_3);
    QTest::keyClick(Grid("Ig_2ndMAP_Grid"), Qt::Key_0);
    EXPECT_EQ(window->findChild<QLineEdit*>("set_table_text")->text(), "-12.8");
    EXPECT_EQ(window->findChild<QLabel*>("maxText")->text(), "12.7");
    EXPECT_EQ(Byte(191 + 2), 64);
    EXPECT_EQ(Cell("Ig_2ndMAP_Grid", 4, 2), "-12.8");
}

TEST_F(MapEdit, CopyGoesToASpreadsheetAndItsTextPastesBack) {
    Select("Fuel_3D_Grid", 1, 1, 2, 3);
    QTableView* grid = Grid("Fuel_3D_Grid");
    QTest::keyClick(grid, Qt::Key_C, Qt::ControlModifier);
    QString copied = QApplication::clipboard()->text();
    EXPECT_EQ(copied.count('\t'), 4);
    EXPECT_EQ(copied.count("\r\n"), 2);
    EXPECT_TRUE(copied.startsWith(Cell("Fuel_3D_Grid", 1, 1) + "\t"));

    // The spreadsheet doubles every time and gives the text back with comma decimals.
    QStringList rows = copied.split("\r\n", Qt::SkipEmptyParts);
    QStringList doubled;
    for (const QString& row : rows) {
        QStringList cells;
        for (const QString& cell : row.split('\t'))
            cells << QString::number(cell.toDouble() * 2, 'f', 2).replace('.', ',');
        doubled << cells.join('\t');
    }
    QApplication::clipboard()->setText(doubled.join("\n") + "\n");
    Select("Fuel_3D_Grid", 8, 8, 8, 8); // one cell takes the whole block
    QTest::keyClick(grid, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(grid->selectionModel()->selectedIndexes().size(), 6);
    for (int r = 0; r < 2; ++r)
        for (int c = 0; c < 3; ++c) {
            double doubled_ms = Cell("Fuel_3D_Grid", 1 + r, 1 + c).toDouble() * 2;
            EXPECT_NEAR(Cell("Fuel_3D_Grid", 8 + r, 8 + c).toDouble(), doubled_ms, 0.07) << r << "," << c;
        }

    // A column from a spreadsheet into a one-dimensional grid, from the point selected down,
    // within the table's limits.
    Open_Tab(3, "SSTab_PWM", 2);
    Select("PWM_MAP_Grid(2)", 3, 2, 3, 2);
    QApplication::clipboard()->setText("10\r\n20,5\r\n150\r\n");
    QTest::keyClick(Grid("PWM_MAP_Grid(2)"), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Byte(917 + 2), 20);
    EXPECT_EQ(Byte(917 + 3), 41);
    EXPECT_EQ(Byte(917 + 4), 200);
    EXPECT_EQ(Cell("PWM_MAP_Grid(2)", 4, 2), "20.5");
    EXPECT_EQ(Cell("PWM_MAP_Grid(2)", 5, 2), "100.0");
}

TEST_F(MapEdit, TenEditsOfEveryKindAreUndoneToTheLoadedFileAndRedone) {
    auto* undo_entry = window->findChild<QAction*>("edit_undo");
    auto* redo_entry = window->findChild<QAction*>("edit_redo");
    auto image = [&] { return window->App().image.CardByte; };
    auto paste = [&](const char* grid, const char* text) {
        QApplication::clipboard()->setText(text);
        QTest::keyClick(Grid(grid), Qt::Key_V, Qt::ControlModifier);
    };

    // At start nothing can be undone or redone, and Redo changes nothing.
    const auto loaded = image();
    auto file = Load_Qxs_File(dir.File("RZ400_800M3_Default_Settings.qxs"));
    ASSERT_TRUE(file);
    EXPECT_TRUE(std::equal(file->bytes.begin(), file->bytes.end(), loaded.begin()));
    window->Undo_Menu_Follows();
    EXPECT_FALSE(undo_entry->isEnabled());
    EXPECT_FALSE(redo_entry->isEnabled());
    redo_entry->trigger();
    EXPECT_EQ(image(), loaded);

    std::vector<Image_Array<std::uint8_t>> states{loaded};
    const auto edited = [&](const char* what) {
        EXPECT_NE(image(), states.back()) << what;
        states.push_back(image());
    };
    Select("Fuel_3D_Grid", 1, 1, 1, 1);
    QTest::keyClick(Grid("Fuel_3D_Grid"), Qt::Key_9);
    edited("typing on the fuel map");
    Select("Fuel_3D_Grid", 1, 3, 1, 4);
    QTest::keyClick(Grid("Fuel_3D_Grid"), Qt::Key_P);
    edited("P on the RPM axis");
    Select("Fuel_3D_Grid", 10, 10, 10, 10);
    paste("Fuel_3D_Grid", "5\t6\r\n7\t8\r\n");
    edited("paste on the fuel map");
    Select("Fuel_3D_Grid", 5, 5, 6, 6);
    auto* set_text = window->findChild<QLineEdit*>("set_table_text_3D");
    set_text->clear();
    QTest::keyClicks(set_text, "12,5");
    Click("set_table_3D");
    edited("Set on the fuel map");
    Open_Tab(1, "SSTab_Ignition", 0);
    Select("Ignition_3D_Grid", 2, 2, 2, 2);
    QTest::keyClick(Grid("Ignition_3D_Grid"), Qt::Key_1);
    QTest::keyClick(Grid("Ignition_3D_Grid"), Qt::Key_7); // one number, one step
    edited("typing on the ignition map");
    Open_Tab(1, "SSTab_Ignition", 1);
    Select("Ig_2ndMAP_Grid", 4, 2, 4, 2);
    QTest::keyClick(Grid("Ig_2ndMAP_Grid"), Qt::Key_3);
    edited("typing on a one-dimensional table");
    Open_Tab(2, "SSTab_Fuel", 1);
    Select("Fuel_MAP_Grid", 3, 2, 5, 2);
    Click("plus");
    edited("+1 on a one-dimensional table");
    Open_Tab(3, "SSTab_PWM", 0);
    Select("PWM_MAP_Grid(1)", 2, 2, 2, 2);
    paste("PWM_MAP_Grid(1)", "40\r\n50\r\n");
    edited("paste on a one-dimensional table");
    auto* slider = window->findChild<QScrollBar*>("scroll(92)");
    ASSERT_NE(slider, nullptr);
    slider->setValue(slider->value() == 200 ? 100 : 200);
    edited("a slider");
    emit window->findChild<QComboBox*>("FUEL_3D_MAP_Size_Combo")->activated(2);
    edited("the size of the fuel map");

    // Back one by one to the loaded file, byte for byte, every change marked for the write.
    for (int step = 10; step > 0; --step) {
        ASSERT_TRUE(undo_entry->isEnabled()) << step;
        undo_entry->trigger();
        EXPECT_EQ(image(), states[static_cast<std::size_t>(step - 1)]) << step;
    }
    EXPECT_EQ(image(), loaded);
    EXPECT_FALSE(undo_entry->isEnabled());
    EXPECT_EQ(window->App().image.ChangedByte[static_cast<std::size_t>(Fuel_Address(1, 1))], 255);
    EXPECT_EQ(Cell("Fuel_3D_Grid", 1, 1).toStdString(),
              Fuel_Cell_Text(loaded[static_cast<std::size_t>(Fuel_Address(1, 1))]));

    // And forward again to the last edit.
    for (int step = 1; step <= 10; ++step) {
        ASSERT_TRUE(redo_entry->isEnabled()) << step;
        redo_entry->trigger();
        EXPECT_EQ(image(), states[static_cast<std::size_t>(step)]) << step;
    }
    EXPECT_FALSE(redo_entry->isEnabled());
}

TEST_F(MapEdit, FourColourModesWithTheirLegendAndScreenshots) {
    auto colour = [&](int r, int c) {
        return Grid("Fuel_3D_Grid")->model()->index(r, c).data(Qt::BackgroundRole).value<QBrush>().color();
    };
    auto mode = [&](int index) {
        window->findChild<QRadioButton*>(QStringLiteral("Color_3D_Check(%1)").arg(index))->click();
        QApplication::processEvents();
    };
    auto* mid = window->findChild<QLineEdit*>("Mid_3D_limit_txt");
    auto mid_text = [&](const char* text) {
        mid->clear();
        QTest::keyClicks(mid, text);
    };
    // Mid-value colouring about M = 100 (10 ms), and the legend's two ends.
    const int first = Fuel(1, 1), second = Fuel(1, 2);
    Byte(Fuel_Address(1, 1)) = 100;
    Byte(Fuel_Address(1, 2)) = 99;
    window->Update_All();
    mode(1);
    mid_text("10");
    EXPECT_EQ(colour(1, 1), QColor(255, 245, 245));
    EXPECT_EQ(colour(1, 2), QColor(249, 249, 255));
    EXPECT_TRUE(window->findChild<QFrame*>("Color_Low_frame")->styleSheet().contains("rgb(150,150,255)"));
    EXPECT_TRUE(window->findChild<QFrame*>("Color_High_frame")->styleSheet().contains("rgb(255,90,90)"));
    mode(2);
    EXPECT_EQ(colour(1, 2), QColor(50, 50, 50)); // 49.5 to the even 50
    mode(3);
    Rgb duty = Duty_Colour(Fuel(3, 19), 8500);
    EXPECT_EQ(colour(3, 19), QColor(duty.r, duty.g, duty.b));
    mode(0);
    EXPECT_EQ(colour(1, 1), QColor(Qt::white));

    // The shipped map in each mode, with a mid value in its range.
    Byte(Fuel_Address(1, 1)) = static_cast<std::uint8_t>(first);
    Byte(Fuel_Address(1, 2)) = static_cast<std::uint8_t>(second);
    window->Update_All();
    mid_text("4");
    Select("Fuel_3D_Grid", 18, 19, 18, 19);
    const char* names[] = {"none", "mid", "grey", "duty"};
    for (int m = 0; m < 4; ++m) {
        mode(m);
        if (!Shots().isEmpty())
            window->grab().save(QDir(Shots()).filePath(QStringLiteral("fuel_colour_%1.png").arg(names[m])));
    }
    // The ignition tab has no duty colouring, and names the mid mode for itself.
    Open_Tab(1, "SSTab_Ignition", 0);
    EXPECT_FALSE(window->findChild<QRadioButton*>("Color_3D_Check(3)")->isEnabled());
    EXPECT_EQ(window->findChild<QRadioButton*>("Color_3D_Check(1)")->text(), "Colored");
}

TEST_F(MapEdit, VerifyMirrorsTheMapWithTheBoxValuesAndTheList) {
    Settings_Image& image = window->App().image;
    image.ChangedByte.fill(0);
    image.TempByte = image.CardByte; // as a read from the box leaves it
    int a = Fuel_Address(2, 2);
    image.CardByte[static_cast<std::size_t>(a)] = 100;
    image.TempByte[static_cast<std::size_t>(a)] = 80;
    image.ChangedByte[static_cast<std::size_t>(a)] = 255;
    image.CardByte[900] = image.TempByte[900] + 1;
    image.ChangedByte[900] = 255;
    window->findChild<QLineEdit*>("Mid_3D_limit_txt")->setText("10");
    window->App().tables.colours.Mid_3D_limit_txt = "10";
    window->findChild<QCheckBox*>("Verify_Check")->click();
    auto* form = window->findChild<QWidget*>("QX_Verify_frm");
    ASSERT_NE(form, nullptr);
    EXPECT_TRUE(form->isVisible());
    auto* mirror = form->findChild<QTableWidget*>("Verify_Grid");
    EXPECT_EQ(mirror->rowCount(), 19);
    EXPECT_EQ(mirror->item(0, 1)->text(), Cell("Fuel_3D_Grid", 0, 1));
    EXPECT_EQ(mirror->item(2, 2)->text(), "-2.0");
    EXPECT_EQ(mirror->item(2, 2)->background().color(), QColor(5, 208, 255)); // 20 % leaner
    EXPECT_EQ(mirror->item(3, 3)->text(), "0.0");
    EXPECT_EQ(form->findChild<QLabel*>("Label7")->text(), "Leaner in box");
    auto* list = form->findChild<QTableWidget*>("VerifyData_Grid");
    ASSERT_EQ(list->rowCount(), 1);
    EXPECT_EQ(list->item(0, 1)->text(), "PWM 1 point 5");
    if (!Shots().isEmpty()) form->grab().save(QDir(Shots()).filePath("verify_fuel.png"));

    window->findChild<QCheckBox*>("Verify_Check")->click();
    EXPECT_FALSE(form->isVisible());
}

TEST_F(MapEdit, SurfaceViewExportsItsPictureAndItsData) {
    Click("View_3D_cmd");
    auto* form = window->findChild<ui::QX_3Dmap*>("QX_3Dmap");
    ASSERT_NE(form, nullptr);
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(form->Data().series, "Fuel map");
    EXPECT_EQ(form->Data().z_title, "Load [bar]");
    ASSERT_EQ(form->Data().y.size(), 18u);
    EXPECT_DOUBLE_EQ(form->Data().y[0][0], Cell("Fuel_3D_Grid", 1, 1).toDouble());
    // The window's other maps, by its list; the PWM item names what PWM 1 runs. Something to
    // see on them: a PWM ramp over speed, less at low load, and the enrichment on.
    for (int i = 0; i < 21; ++i)
        Byte(896 + i) = static_cast<std::uint8_t>(40 + 7 * i);
    Byte(92) = 40;
    Byte(93) = 120;
    Byte(94) = 200;
    Byte(95) = 200;
    Byte(4) = static_cast<std::uint8_t>((Byte(4) & ~3) | 1);
    Byte(86) = 10;
    Byte(87) = 60;
    Byte(88) = 4;
    window->Update_All();
    auto* pick = form->findChild<QComboBox*>("Map_Select_Combo");
    const char* const shots[] = {"surface_fuel.png", "surface_ignition.png", "surface_pwm.png",
                                 "surface_acceleration.png"};
    for (int i = 3; i >= 0; --i) {
        pick->setCurrentIndex(i);
        if (form->Has_Surface() && !Shots().isEmpty())
            form->Surface_Image(QSize(900, 680)).save(QDir(Shots()).filePath(shots[i]));
    }
    pick->setCurrentIndex(3);
    EXPECT_EQ(form->Data().series, "Acceleration fuel");
    EXPECT_EQ(form->Data().y_title, "Acc fuel [ms]");
    pick->setCurrentIndex(2);
    EXPECT_EQ(pick->currentText(), "PWM map");
    EXPECT_EQ(form->Data().series, "PWM map");
    EXPECT_EQ(form->Data().x.size(), 21u);
    pick->setCurrentIndex(0);

    // An edit of the map reaches the open surface.
    Select("Fuel_3D_Grid", 1, 1, 1, 1);
    QTest::keyClick(Grid("Fuel_3D_Grid"), Qt::Key_7);
    EXPECT_DOUBLE_EQ(form->Data().y[0][0], 7.0);

    dialogs.files.push_back(Picked_File{dir.File("New1_qxs.csv"), "New1_qxs.csv"});
    dialogs.files.push_back(Picked_File{dir.File("New1_qxs.bmp"), "New1_qxs.bmp"});
    form->findChild<QPushButton*>("Export_Image")->click();
    form->findChild<QPushButton*>("Export_Image")->click();
    ASSERT_EQ(dialogs.dialogs_shown.size(), 2u);
    EXPECT_EQ(dialogs.dialogs_shown[0].initial_name, "New1_qxs");
    EXPECT_EQ(dialogs.dialogs_shown[0].filter, "3D-map image (*.bmp)|*.bmp|As text file (*.csv)|*.csv");
    std::string csv = Read_File(dir.File("New1_qxs.csv"));
    EXPECT_EQ(csv.substr(0, csv.find(',')), "Load [bar] / RPM");
    EXPECT_NE(csv.find("\r\n0.15,7.00,"), std::string::npos);
    QImage bmp(QString::fromStdString(dir.File("New1_qxs.bmp")), "BMP");
    EXPECT_FALSE(bmp.isNull());

    if (!form->Has_Surface()) {
        // scripts/run-tests.sh gives the tests an X server with OpenGL: there the surface must be.
        if (!qEnvironmentVariableIsEmpty("QUORLEN_TEST_PLATFORM"))
            FAIL() << "no OpenGL surface on the X server";
        GTEST_SKIP() << "no OpenGL here (offscreen): the surface itself is not drawn";
    }
    const QImage surface = form->Surface_Image(QSize(640, 480));
    ASSERT_FALSE(surface.isNull());
    // The map is drawn, not only the background.
    QSet<QRgb> colours;
    for (int y = 0; y < surface.height(); y += 9)
        for (int x = 0; x < surface.width(); x += 9)
            colours.insert(surface.pixel(x, y));
    EXPECT_GT(colours.size(), 20);
}

} // namespace
} // namespace quorlen
