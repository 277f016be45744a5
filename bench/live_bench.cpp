// The live side of a running log, against the real simulator with its engine running.
//
// BM_Live_Byte_Write: one byte written the way Enter in a map writes it, on a line paced
// like 115200 baud while the text stream runs. The figure is how long the stream stood
// still: from the blank that stops it until the restart command has crossed the line (what
// the box sends after that comes at its own row pace). `gap_to_wire` is its ratio to the
// wire time, at 10 bits a character, of every character that had to cross the line in that
// time: the blank, the rest of the row in flight when it came, the write's dialogue ("b",
// "w", the address, the value, "$", "ue" and their answers) and the restart command.
// Target: under 1.5. The mean is the figure; the median and the worst show how much of it
// is the load of the machine rather than the program.
//
// BM_Show_Current_Data: the live display's whole update in the main window, offscreen, with
// both map cursors on show: each pass reads a different row than the one before, so every
// gauge and both cursors change, and the gauges and both grids are painted before the pass
// ends. Target: under 20 ms, a tenth of its 200 ms timer.

#include "cli/log_session.h"
#include "link/live_changes.h"
#include "logging/log_live.h"
#include "support/boxsim_run.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_log.h"

#include <QApplication>
#include <QFile>
#include <QFrame>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace quorlen;

// The log's line, counting what crosses it.
class Counting_Line final : public Serial_Line {
public:
    explicit Counting_Line(Serial_Line& line) : line_(line) {}
    long characters = 0;

    void Set_Port(const std::string& path) override { line_.Set_Port(path); }
    std::string Port() const override { return line_.Port(); }
    void Set_Settings(const std::string& settings) override { line_.Set_Settings(settings); }
    Open_Result Open() override { return line_.Open(); }
    void Close() override { line_.Close(); }
    bool Is_Open() const override { return line_.Is_Open(); }
    void Clear_Input() override { characters += static_cast<long>(line_.Read_All().size()); }
    int Bytes_Waiting() override { return line_.Bytes_Waiting(); }
    std::string Read_All() override {
        std::string got = line_.Read_All();
        characters += static_cast<long>(got.size());
        return got;
    }
    void Write(std::string_view bytes) override {
        characters += static_cast<long>(bytes.size());
        line_.Write(bytes);
    }
    bool Wait_For_Input(double seconds) override { return line_.Wait_For_Input(seconds); }

private:
    Serial_Line& line_;
};

void BM_Live_Byte_Write(benchmark::State& state) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--engine-running", "--wire-baud", "115200"});
    if (!box.Ready()) {
        state.SkipWithError("boxsim did not start");
        return;
    }
    QTemporaryDir dir;
    cli::Recording r(stderr, box.Link(), "115200");
    if (!r.Port_Opens(stderr) ||
        !r.Start("live", false, true, dir.filePath("live.qxl").toStdString(), stderr)) {
        state.SkipWithError("the log did not start");
        return;
    }
    Log_Context& log = r.Ctx();
    Counting_Line counting(r.s.line);
    Log_Context counted = log;
    counted.line = &counting;
    Link_Context link = r.link;
    link.hooks.Dummy_Wait = {};
    Link_Context on_log{link.program,           link.texts, link.flags, link.state, link.log, counting,
                        link.Auto_Start_option, link.hooks};
    Settings_Context s{on_log, r.s.image, r.rw, r.files, r.s.dialogs, {}};
    Live_State live;
    std::vector<double> ratios;
    long changes = 0;
    std::uint8_t value = 40;
    for (auto _ : state) {
        state.PauseTiming();
        // Somewhere in a row, as a tuner's Enter would be.
        r.Run_Until(log.Now() + 0.2 + 0.0137 * static_cast<double>(changes % 4));
        r.s.image.CardByte[300] = ++value;
        r.s.image.ChangedByte[300] = Changed_Mark;
        Live_Context ctx = Live_Context_Of(counted, s, live);
        // What waited at the port before the blank is the log's, not the change's.
        const auto tail = ctx.hooks.Stream_Tail;
        ctx.hooks.Stream_Tail = [&tail, &counting] {
            std::string t = tail ? tail() : std::string();
            counting.characters = 0;
            return t;
        };
        state.ResumeTiming();
        Write_while_logging(ctx);
        state.PauseTiming();
        // The window ends as the restart command is handed to the line; the stream stands
        // still until it has crossed it.
        const double char_time = 10.0 / 115200.0;
        const double gap =
            live.Last_Window_Seconds + static_cast<double>(ctx.Log_Start_Command.size()) * char_time;
        const double wire = static_cast<double>(counting.characters) * char_time;
        state.SetIterationTime(gap);
        ratios.push_back(gap / wire);
        ++changes;
        state.ResumeTiming();
    }
    if (!ratios.empty()) {
        double sum = 0;
        for (double ratio : ratios)
            sum += ratio;
        std::sort(ratios.begin(), ratios.end());
        state.counters["gap_to_wire"] = sum / static_cast<double>(ratios.size());
        state.counters["median_gap_to_wire"] = ratios[ratios.size() / 2];
        state.counters["worst_gap_to_wire"] = ratios.back();
    }
    if (log.log.capture.Logging_Running) Start_Logging(log);
}
BENCHMARK(BM_Live_Byte_Write)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_Show_Current_Data(benchmark::State& state) {
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--engine-running"});
    if (!box.Ready()) {
        state.SkipWithError("boxsim did not start");
        return;
    }
    QTemporaryDir dir;
    for (const char* name :
         {"RZ400_800M3.ini", "RZ400_800M3_Default_Settings.qxs", "RZ400_800M3_Default_Log_Settings.qxl"})
        QFile::copy(QStringLiteral(QUORLEN_DATA_DIR "/") + name, dir.filePath(name));
    ui::Start_Options options;
    options.app_path = dir.path().toStdString() + "/";
    options.port = box.Link();
    auto window = std::make_unique<ui::BoostProgMain>(options);
    window->resize(1280, 900);
    window->show();
    window->Form_Load();
    window->findChild<QTabWidget*>("sstab_Main")->setCurrentIndex(2);
    window->findChild<QPushButton*>("Stop_Logging_cmd")->click();
    QTest::qWait(1000);
    window->Show_Display();
    QApplication::processEvents();
    auto* fuel = window->findChild<QFrame*>("Curser_3dfuel");
    auto* ign = window->findChild<QFrame*>("Curser_IGN");
    auto* display = window->findChild<QWidget*>("Display");
    if (fuel->isHidden() || ign->isHidden() || display == nullptr) {
        state.SkipWithError("the cursors or the display are not on show");
        return;
    }
    // Two rows far enough apart that the engine stood elsewhere: the newest, and the first
    // before it where the cursor stands on another spot. The log keeps running, but no
    // events are taken in the loop, so the rows stay as they are.
    int& row_count = window->App().log_state->capture.Log_Row_Count;
    const int newest = row_count;
    const QPoint newest_at = fuel->pos();
    int other = newest;
    for (int r = newest - 1; r >= 1 && other == newest; --r) {
        row_count = r;
        window->cmd_Show_Current_Data_Click();
        if (fuel->pos() != newest_at) other = r;
    }
    if (other == newest) {
        state.SkipWithError("no row of the log puts the cursor elsewhere");
        return;
    }
    const std::array<int, 2> rows{newest, other};
    // A grid on a tab not in front is painted off screen, as a switch of tabs would show it.
    const auto paint = [](QWidget* w) {
        if (w->isVisible())
            w->repaint();
        else
            benchmark::DoNotOptimize(w->grab());
    };
    std::size_t pass = 0;
    for (auto _ : state) {
        row_count = rows[pass++ % 2];
        window->cmd_Show_Current_Data_Click();
        paint(display);
        paint(fuel->parentWidget());
        paint(ign->parentWidget());
    }
    row_count = newest;
    window->findChild<QPushButton*>("Stop_Logging_cmd")->click();
    window->close();
}
BENCHMARK(BM_Show_Current_Data)->Unit(benchmark::kMillisecond);

} // namespace
