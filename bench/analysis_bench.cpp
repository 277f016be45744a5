// The cell hits of a 7000-row log over the main fuel map, and the fuel correction from the same
// log, on the shipped settings. The log is the simulator's engine swept through the map with a
// fuel error in one region, opened as the log window opens a file.

#include "analysis/fuel_correction.h"
#include "cli/cli_tables.h"
#include "core/atomic_file.h"
#include "logging/log_file.h"
#include "logging/log_signals.h"
#include "support/sweep_log.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr int Rows = 7000;

struct Fixture {
    fs::path dir = fs::temp_directory_path() / ("quorlen-analysis-bench-" + std::to_string(::getpid()));
    quorlen::cli::Cli_Tables settings{stderr, QUORLEN_DATA_DIR "/RZ400_800M3.ini"};
    std::unique_ptr<quorlen::Log_State> log = std::make_unique<quorlen::Log_State>();
    quorlen::Program_State program;
    quorlen::Form_Texts texts;
    quorlen::Link_Flags flags;
    quorlen::Debug_Log debug;
    quorlen::Silent_Dialogs dialogs;

    Fixture() {
        fs::create_directories(dir);
        if (!settings.Load(QUORLEN_DATA_DIR "/RZ400_800M3_Default_Settings.qxs")) std::exit(1);
        settings.Flush_Diagnostics();

        fs::copy_file(QUORLEN_DATA_DIR "/RZ400_800M3_Default_Log_Settings.qxl",
                      dir / "RZ400_800M3_Default_Log_Settings.qxl", fs::copy_options::overwrite_existing);
        const std::string path = (dir / "sweep.qxl").string();
        std::ofstream(path, std::ios::binary) << quorlen::test::Sweep_Log_File(
            settings.app.image, quorlen::Read_Whole_File(QUORLEN_DATA_DIR "/RZ400_800M3.ini"),
            quorlen::Read_Whole_File(QUORLEN_DATA_DIR "/RZ400_800M3_Default_Log_Settings.qxl"),
            "3000-5000:1.0-1.5:+12", Rows);

        program.App_Path = dir.string() + "/";
        quorlen::Log_Context ctx{*log, settings.app.image, program, texts, flags, debug, dialogs, nullptr, "",
                                 {}};
        quorlen::Load_Log_Defaults(ctx);
        if (!quorlen::Open_File(ctx, path) || log->Last_Row < Rows) {
            std::fprintf(stderr, "the sweep log did not open\n");
            std::exit(1);
        }
    }
    ~Fixture() {
        std::error_code ec;
        fs::remove_all(dir, ec);
    }

    quorlen::Hit_Grid Hits() const {
        const quorlen::App_Context& app = settings.app;
        return quorlen::Cell_Hits(
            quorlen::Make_Map_Locator(app.image, app.sensors, *log, quorlen::Table_Id::Fuel_3D), *log);
    }
    quorlen::Fuel_Proposal Proposal() const {
        return quorlen::Propose_Fuel_Correction(settings.app.image, settings.app.sensors, *log);
    }
};

Fixture& Data() {
    static Fixture f;
    return f;
}

void BM_Cell_Hits_7000_Rows(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(Data().Hits());
}
BENCHMARK(BM_Cell_Hits_7000_Rows)->Unit(benchmark::kMillisecond);

void BM_Fuel_Correction_7000_Rows(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(Data().Proposal());
}
BENCHMARK(BM_Fuel_Correction_7000_Rows)->Unit(benchmark::kMillisecond);

template <class F>
double Mean_Ms(F&& f, int times) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i)
        benchmark::DoNotOptimize(f());
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count() /
           times;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    Fixture& f = Data();
    const double hits = Mean_Ms([&] { return f.Hits(); }, 20);
    const double correction = Mean_Ms([&] { return f.Proposal(); }, 20);
    const quorlen::Fuel_Proposal p = f.Proposal();
    std::fflush(stdout);
    std::printf("\nA log of %d rows: cell hits %.2f ms, fuel correction %.2f ms (%d steady rows, %d cells to "
                "change) (target: each under 20 ms in a release build)\n",
                f.log->Last_Row, hits, correction, p.verdicts[0], p.Changed_Count());
    return 0;
}
