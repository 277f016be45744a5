// Opening a 7000-row log as the log window does (read, filter the box's messages, every row
// through Calculate_Data, the extended signals), against a plain read of the same file.

#include "core/atomic_file.h"
#include "log_stream.h"
#include "logging/log_file.h"
#include "logging/log_signals.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct Fixture {
    fs::path dir = fs::temp_directory_path() / ("quorlen-log-bench-" + std::to_string(::getpid()));
    std::string path = (dir / "long.qxl").string();

    Fixture() {
        fs::create_directories(dir);
        std::ifstream in(QUORLEN_DATA_DIR "/RZ400_800M3_Default_Log_Settings.qxl", std::ios::binary);
        std::ostringstream s;
        s << in.rdbuf();
        std::string shipped = s.str();
        fs::copy_file(QUORLEN_DATA_DIR "/RZ400_800M3_Default_Log_Settings.qxl",
                      dir / "RZ400_800M3_Default_Log_Settings.qxl", fs::copy_options::overwrite_existing);
        // A text log of 7000 rows as the box sends them, with its messages now and then.
        std::string data = "[log_data]\r\nLa\r\n" + boxsim::Text_Header() + "\r\n";
        for (long r = 0; r < 7000; ++r) {
            if (r > 0 && r % 200 == 0) data += "#Knock cyl 3\r\n";
            data += boxsim::Text_Row(boxsim::Engine_At(r)) + "\r\n";
        }
        data += "[end log_data]\r\n";
        const auto at = shipped.find("[log_data]");
        const auto end = shipped.find("[log_dataset]");
        std::ofstream(path, std::ios::binary) << shipped.substr(0, at) << data << "\r\n"
                                              << shipped.substr(end);
    }
    ~Fixture() {
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
};

struct Opener {
    std::unique_ptr<quorlen::Log_State> state = std::make_unique<quorlen::Log_State>();
    quorlen::Settings_Image image;
    quorlen::Program_State program;
    quorlen::Form_Texts texts;
    quorlen::Link_Flags flags;
    quorlen::Debug_Log debug;
    quorlen::Silent_Dialogs dialogs;
    quorlen::Log_Context ctx{*state, image, program, texts, flags, debug, dialogs, nullptr, "", {}};

    explicit Opener(const std::string& app_path) {
        program.App_Path = app_path;
        quorlen::Load_Log_Defaults(ctx);
    }
};

Fixture& Data() {
    static Fixture f;
    return f;
}

void BM_Open_Log_7000_Rows(benchmark::State& state) {
    Opener o(Data().dir.string() + "/");
    for (auto _ : state)
        benchmark::DoNotOptimize(quorlen::Open_File(o.ctx, Data().path));
    state.counters["rows"] = o.state->Last_Row;
}
BENCHMARK(BM_Open_Log_7000_Rows)->Unit(benchmark::kMillisecond);

void BM_Plain_Read(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(quorlen::Read_Whole_File(Data().path));
}
BENCHMARK(BM_Plain_Read)->Unit(benchmark::kMillisecond);

// The same two by hand, for the summary line.
template <class F>
double Mean_Seconds(F&& f, int times) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i)
        f();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / times;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    Opener o(Data().dir.string() + "/");
    const double open_seconds = Mean_Seconds([&] { quorlen::Open_File(o.ctx, Data().path); }, 20);
    const double read_seconds =
        Mean_Seconds([] { benchmark::DoNotOptimize(quorlen::Read_Whole_File(Data().path)); }, 20);
    std::fflush(stdout);
    std::printf("\nOpening a log of %d rows (%.0f kB): %.2f ms; a plain read of the file: %.3f ms; ratio %.1f"
                " (target: under 20 ms in a release build)\n",
                o.state->Last_Row, static_cast<double>(fs::file_size(Data().path)) / 1024,
                open_seconds * 1000, read_seconds * 1000, open_seconds / read_seconds);
    return 0;
}
