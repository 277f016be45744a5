// One Update_All over the shipped image with every grid, chart and slider of the map tabs
// bound, offscreen, the fuel map on show: the table logic, the data-changed signals and the
// chart points. The target is under 5 ms in a release build. Further figures: the update
// after an edit, and the update with the repaint that the event loop does after it.

#include "ui/boost_prog_main.h"

#include <QApplication>
#include <QFile>
#include <QTabWidget>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

std::unique_ptr<quorlen::ui::BoostProgMain> Start(QTemporaryDir& dir) {
    for (const char* name : {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs"})
        QFile::copy(QStringLiteral(QUORLEN_DATA_DIR "/") + name, dir.filePath(name));
    quorlen::ui::Start_Options options;
    options.app_path = dir.path().toStdString() + "/";
    options.unattended = true;
    auto window = std::make_unique<quorlen::ui::BoostProgMain>(options);
    window->Form_Load();
    window->findChild<QTabWidget*>("sstab_Main")->setCurrentIndex(2);
    QApplication::processEvents();
    return window;
}

void BM_Update_All(benchmark::State& state) {
    QTemporaryDir dir;
    auto window = Start(dir);
    for (auto _ : state)
        window->Update_All();
    window->File_exit_Click();
}
BENCHMARK(BM_Update_All)->Unit(benchmark::kMillisecond);

// The update after an edit: a cell of the fuel map on show and a byte of a PWM table whose
// chart is out of sight change each time.
void BM_Update_All_After_Edit(benchmark::State& state) {
    QTemporaryDir dir;
    auto window = Start(dir);
    auto& bytes = window->App().image.CardByte;
    std::uint8_t value = 0;
    for (auto _ : state) {
        ++value;
        bytes[300] = value;
        bytes[900] = value;
        window->Update_All();
    }
    window->File_exit_Click();
}
BENCHMARK(BM_Update_All_After_Edit)->Unit(benchmark::kMillisecond);

// An edit of a one-dimensional table whose chart is on show: that chart is laid out again.
void BM_Update_All_After_Edit_Of_A_Shown_Chart(benchmark::State& state) {
    QTemporaryDir dir;
    auto window = Start(dir);
    window->findChild<QTabWidget*>("SSTab_Fuel")->setCurrentIndex(1);
    QApplication::processEvents();
    auto& bytes = window->App().image.CardByte;
    std::uint8_t value = 0;
    for (auto _ : state) {
        bytes[100] = ++value;
        window->Update_All();
    }
    window->File_exit_Click();
}
BENCHMARK(BM_Update_All_After_Edit_Of_A_Shown_Chart)->Unit(benchmark::kMillisecond);

void BM_Update_All_And_Repaint(benchmark::State& state) {
    QTemporaryDir dir;
    auto window = Start(dir);
    for (auto _ : state) {
        window->Update_All();
        window->repaint();
    }
    window->File_exit_Click();
}
BENCHMARK(BM_Update_All_And_Repaint)->Unit(benchmark::kMillisecond);

} // namespace
