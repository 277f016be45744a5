// Start-up to a ready main window: the whole load order with the shipped ini and default
// settings, offscreen, then the exit route. The target is under one second in a release build.

#include "ui/boost_prog_main.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

void BM_Startup_To_Ready(benchmark::State& state) {
    QTemporaryDir dir;
    for (const char* name : {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs"})
        QFile::copy(QStringLiteral(QUORLEN_DATA_DIR "/") + name, dir.filePath(name));
    for (auto _ : state) {
        quorlen::ui::Start_Options options;
        options.app_path = dir.path().toStdString() + "/";
        options.unattended = true;
        quorlen::ui::BoostProgMain window(options);
        window.Form_Load();
        benchmark::DoNotOptimize(window.Ready());
        state.PauseTiming();
        window.File_exit_Click();
        QApplication::processEvents();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Startup_To_Ready)->Unit(benchmark::kMillisecond)->Iterations(10);

} // namespace
