// The log window's chart rebuilt after a zoom, a scroll and a tick, with all 74 signals of a
// 7000-row log ticked, and the same with a second 7000-row log laid over it (148 series);
// each against a plain copy of the values on show into the chart's point lists. A repaint of
// the whole window is timed beside them. Offscreen unless the caller names a platform.

#include "app/app_context.h"
#include "core/user_dialogs.h"
#include "logging/log_chart.h"
#include "logging/log_study.h"
#include "support/drive_log.h"
#include "ui/log_chart_view.h"
#include "ui/qx_log.h"

#include <QApplication>
#include <QEvent>
#include <QList>
#include <QPixmap>
#include <QPointF>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Two logs of the simulator's drive, 7000 rows each, and the log window on the first with
// every signal ticked.
struct Window {
    fs::path dir = fs::temp_directory_path() / ("quorlen-chart-bench-" + std::to_string(::getpid()));
    std::string a = (dir / "a.qxl").string(), b = (dir / "b.qxl").string();
    quorlen::App_Context app;
    quorlen::Silent_Dialogs dialogs;
    std::unique_ptr<quorlen::ui::QX_Log> log;

    Window() {
        fs::create_directories(dir);
        const std::string shipped = QUORLEN_DATA_DIR "/RZ400_800M3_Default_Log_Settings.qxl";
        fs::copy_file(shipped, dir / "RZ400_800M3_Default_Log_Settings.qxl",
                      fs::copy_options::overwrite_existing);
        std::ofstream(a, std::ios::binary) << quorlen::test::Drive_Log_Text(shipped, 0, 7000, "a.qxl");
        std::ofstream(b, std::ios::binary) << quorlen::test::Drive_Log_Text(shipped, 300, 7000, "b.qxl");
        app.program.App_Path = dir.string() + "/";
        quorlen::ui::Log_Window_Hooks hooks;
        hooks.Dialogs = [this]() -> quorlen::User_Dialogs& { return dialogs; };
        log = std::make_unique<quorlen::ui::QX_Log>(app, std::move(hooks), nullptr);
        log->Form_Load();
        log->resize(1280, 820);
        log->show();
        QApplication::processEvents();
        log->Open_File(a);
        for (auto& c : State().setup.controls) {
            c.view = 1;
            c.log_signal = 1;
        }
        log->Update_Chart();
        QApplication::processEvents();
    }
    ~Window() {
        log.reset();
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
    quorlen::Log_State& State() { return *app.log_state; }
    void Compare(bool on) {
        if (on == State().Compare_Mode) return;
        if (on) {
            quorlen::Log_Hooks none;
            quorlen::Log_Context c{State(), app.image, app.program, app.texts, app.link,
                                   app.log, dialogs,   nullptr,     "",        none};
            quorlen::Open_Compare_File(c, b);
        } else {
            quorlen::Close_Compare(State());
        }
        log->Update_Chart();
    }
    int Series() const { return static_cast<int>(log->Chart().series.size()); }
};

// Made on first use, gone before the application object is.
std::unique_ptr<Window>& Window_Slot() {
    static std::unique_ptr<Window> w;
    return w;
}

Window& The_Window() {
    if (!Window_Slot()) Window_Slot() = std::make_unique<Window>();
    return *Window_Slot();
}

// Milliseconds of the wall clock and of this thread's processor time; the machine may be
// shared, and the thread's own time shows what the update costs whatever else runs.
struct Time {
    double wall = 0, cpu = 0;
};

double Thread_Ms() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

template <class F>
Time Median(F&& f, int times) {
    std::vector<double> wall, cpu;
    for (int i = 0; i < times; ++i) {
        const auto start = std::chrono::steady_clock::now();
        const double start_cpu = Thread_Ms();
        f(i);
        cpu.push_back(Thread_Ms() - start_cpu);
        wall.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::nth_element(wall.begin(), wall.begin() + times / 2, wall.end());
    std::nth_element(cpu.begin(), cpu.begin() + times / 2, cpu.end());
    return {wall[static_cast<std::size_t>(times / 2)], cpu[static_cast<std::size_t>(times / 2)]};
}

// What any chart would have to do at the least: the values on show copied into point lists
// (kept between copies, as the chart keeps its series).
void Copy_Values(const quorlen::Log_State& log) {
    static std::vector<QList<QPointF>> lists(2 * quorlen::Log_Signal_Count);
    std::size_t list = 0;
    for (bool compare : {false, true}) {
        if (compare && !log.Compare_Mode) break;
        const quorlen::Log_Array& data = compare ? log.Compare_Data : log.Log_Data;
        const int first = compare ? log.window.Compare_Start : log.window.Zoom_Start;
        const int rows = log.window.Zoom_Stop - log.window.Zoom_Start + 1;
        for (int c = 1; c <= quorlen::Log_Signal_Count; ++c) {
            QList<QPointF>& points = lists[list++];
            points.clear();
            points.reserve(rows);
            for (int k = 0; k < rows; ++k)
                points.append(QPointF((first + k - 1) * 0.05, data.Row(first + k)[c]));
            benchmark::DoNotOptimize(points.data());
        }
    }
}

// Work the chart leaves to the event loop (queued calls, layouts) belongs to the update; the
// paint that follows does not.
void Settle_Chart() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
}

// From the whole log shown, `change` runs back and forth (a zoom in then out, a scroll right
// then left, a tick off then on), each time updating the chart.
template <class Change>
void Start(Window& w, bool compare, Change change) {
    for (auto& c : w.State().setup.controls)
        c.view = 1;
    w.Compare(compare);
    w.State().window = quorlen::Zoom_All(quorlen::Limits_Of(w.State()));
    w.log->Update_Chart();
    change(w, -1);
}

template <class Change>
void Measure(benchmark::State& state, bool compare, Change change) {
    Window& w = The_Window();
    Start(w, compare, change);
    long n = 0;
    for (auto _ : state) {
        change(w, n++);
        Settle_Chart();
    }
    state.counters["series"] = w.Series();
}

void Zoom(Window& w, long n) {
    if (n < 0) return;
    if (n % 2 == 0)
        w.log->cmd_ZoomIn_Click();
    else
        w.log->cmd_ZoomOut_Click();
}

void Scroll(Window& w, long n) {
    if (n < 0) {
        w.State().window = quorlen::Chart_Window{1, 3500, 1, 3500};
        return;
    }
    if (n % 2 == 0)
        w.log->cmd_Scroll_Right();
    else
        w.log->cmd_Scroll_Left();
}

void Tick(Window& w, long n) {
    if (n >= 0) w.log->Check_SignalsToView_Click(5, n % 2 != 0);
}

void BM_Zoom(benchmark::State& s) {
    Measure(s, false, Zoom);
}
void BM_Scroll(benchmark::State& s) {
    Measure(s, false, Scroll);
}
void BM_Tick(benchmark::State& s) {
    Measure(s, false, Tick);
}
void BM_Compare_Zoom(benchmark::State& s) {
    Measure(s, true, Zoom);
}
void BM_Compare_Scroll(benchmark::State& s) {
    Measure(s, true, Scroll);
}
void BM_Compare_Tick(benchmark::State& s) {
    Measure(s, true, Tick);
}
BENCHMARK(BM_Zoom)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Scroll)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Tick)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Compare_Zoom)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Compare_Scroll)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Compare_Tick)->Unit(benchmark::kMillisecond);

// The repaint that follows, for the record: Qt Charts drawing every series anew.
void BM_Repaint_Compared(benchmark::State& s) {
    Window& w = The_Window();
    w.Compare(true);
    w.State().window = quorlen::Zoom_All(quorlen::Limits_Of(w.State()));
    w.log->Update_Chart();
    for (auto _ : s)
        benchmark::DoNotOptimize(w.log->Chart_View()->grab());
    s.counters["series"] = w.Series();
}
BENCHMARK(BM_Repaint_Compared)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    struct Scenario {
        const char* what;
        bool compare;
        void (*change)(Window&, long);
    };
    const Scenario scenarios[] = {{"zoom in and out", false, Zoom},
                                  {"scroll half a screen", false, Scroll},
                                  {"tick one signal", false, Tick},
                                  {"zoom in and out, compared", true, Zoom},
                                  {"scroll half a screen, compared", true, Scroll},
                                  {"tick one signal, compared", true, Tick}};
    Window& w = The_Window();
    std::printf("\nThe chart of a 7000-row log with all 74 signals ticked, medians of 40 updates\n"
                "(target: under 16 ms an update; the copy is the values on show into point lists):\n");
    for (const Scenario& s : scenarios) {
        Start(w, s.compare, s.change);
        std::vector<quorlen::Chart_Window> windows;
        const Time update = Median(
            [&](int i) {
                s.change(w, i);
                Settle_Chart();
                windows.push_back(w.State().window);
            },
            40);
        // The same windows, copied.
        const Time copy = Median(
            [&](int i) {
                w.State().window = windows[static_cast<std::size_t>(i)];
                Copy_Values(w.State());
            },
            40);
        std::printf(
            "  %-31s %3d series  update %6.2f ms (%5.2f ms processor)  copy %5.2f ms (%5.2f)  ratio %.2f\n",
            s.what, w.Series(), update.wall, update.cpu, copy.wall, copy.cpu, update.cpu / copy.cpu);
    }
    double load[3] = {0, 0, 0};
    if (getloadavg(load, 3) > 0) std::printf("  (load average while measuring: %.2f)\n", load[0]);
    Window_Slot().reset();
    return 0;
}
