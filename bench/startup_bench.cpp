// Start-up to a ready main window: the whole load order with the shipped ini and default
// settings, offscreen, then the exit route. The target is under one second in a release build.
// Then the configuration's part of it with a configuration of 17 MiB.

#include "app/startup.h"
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

// Init_ini_file over a configuration of 17 MiB (the shipped one over and over: some 27,000
// sensors and as many presets). The file is read once for the whole load, so this grows with
// the file and not with its square.
void BM_Init_ini_file_17MiB(benchmark::State& state) {
    QTemporaryDir dir;
    QFile shipped(QStringLiteral(QUORLEN_DATA_DIR "/RZ400_800M3.ini"));
    shipped.open(QIODevice::ReadOnly);
    const QByteArray once = shipped.readAll();
    QFile big(dir.filePath("RZ400_800M3.ini"));
    big.open(QIODevice::WriteOnly);
    for (qint64 size = 0; size < 17 * 1024 * 1024; size += once.size())
        big.write(once);
    big.close();
    for (auto _ : state) {
        quorlen::App_Context app;
        app.Use_App_Path(dir.path().toStdString() + "/");
        quorlen::Init_ini_file(app);
        benchmark::DoNotOptimize(app.sensors.table.Sens_Count);
        state.counters["sensors"] = app.sensors.table.Sens_Count;
    }
}
BENCHMARK(BM_Init_ini_file_17MiB)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
