// From a keypress in a 21 x 16 selection of the fuel map to the repainted grid: the key goes
// to the grid as an event, the bytes of all 336 cells are set, the views follow the image
// (colours, charts, sliders) and the grid paints at once. Offscreen, the shipped data, the
// window at its usual size. The target is under 16 ms, one frame.

#include "ui/boost_prog_main.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

#include <benchmark/benchmark.h>

#include <chrono>

namespace {

struct Fuel_Map_On_Show {
    QTemporaryDir dir;
    std::unique_ptr<quorlen::ui::BoostProgMain> window;
    QTableView* grid = nullptr;

    Fuel_Map_On_Show() {
        for (const char* name : {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs"})
            QFile::copy(QStringLiteral(QUORLEN_DATA_DIR "/") + name, dir.filePath(name));
        quorlen::ui::Start_Options options;
        options.app_path = dir.path().toStdString() + "/";
        options.unattended = true;
        window = std::make_unique<quorlen::ui::BoostProgMain>(options);
        window->Form_Load();
        window->resize(1280, 860);
        window->show();
        window->findChild<QTabWidget*>("sstab_Main")->setCurrentIndex(2);
        window->findChild<QTabWidget*>("SSTab_Fuel")->setCurrentIndex(0);
        auto* size = window->findChild<QComboBox*>("FUEL_3D_MAP_Size_Combo");
        size->setCurrentIndex(1); // 21 rpm x 16 analog
        emit size->activated(1);
        QApplication::processEvents();
        grid = window->findChild<QTableView*>("Fuel_3D_Grid");
        auto* model = grid->model();
        grid->setCurrentIndex(model->index(1, 1));
        grid->selectionModel()->select(QItemSelection(model->index(1, 1), model->index(16, 21)),
                                       QItemSelectionModel::ClearAndSelect);
        QApplication::processEvents();
    }
    ~Fuel_Map_On_Show() { window->File_exit_Click(); }

    // One key and the paint it causes, timed.
    double Key_To_Repaint(Qt::Key key) {
        auto start = std::chrono::steady_clock::now();
        QTest::keyClick(grid, key);
        grid->viewport()->repaint();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
};

// A digit typed into all 336 cells; each is the first digit of a new number, as after a
// move of the selection.
void BM_Digit_In_21x16_Selection_To_Repaint(benchmark::State& state) {
    Fuel_Map_On_Show on_show;
    const Qt::Key digits[] = {Qt::Key_3, Qt::Key_4, Qt::Key_5, Qt::Key_6};
    int i = 0;
    for (auto _ : state) {
        on_show.window->App().tables.edit.KeyNewNumber = true;
        state.SetIterationTime(on_show.Key_To_Repaint(digits[i++ % 4]));
    }
}
BENCHMARK(BM_Digit_In_21x16_Selection_To_Repaint)->UseManualTime()->Unit(benchmark::kMillisecond);

// "A" and "Z" in turn: plus and minus over the selection, with the common end of a button
// (enable, update, enable) and the selection set back.
void BM_Plus_Minus_In_21x16_Selection_To_Repaint(benchmark::State& state) {
    Fuel_Map_On_Show on_show;
    int i = 0;
    for (auto _ : state)
        state.SetIterationTime(on_show.Key_To_Repaint(i++ % 2 == 0 ? Qt::Key_A : Qt::Key_Z));
}
BENCHMARK(BM_Plus_Minus_In_21x16_Selection_To_Repaint)->UseManualTime()->Unit(benchmark::kMillisecond);

// The paint alone, for comparison: what the grid costs to draw without any change.
void BM_Repaint_Only(benchmark::State& state) {
    Fuel_Map_On_Show on_show;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        on_show.grid->viewport()->repaint();
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
}
BENCHMARK(BM_Repaint_Only)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
