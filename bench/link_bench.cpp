// The session check (get_connect_info: one "v" exchange and the banner's fields) against the
// simulator on a pseudo-terminal, 200 times, through the program's QSerialPort line. The
// simulator answers with a banner of natural length, shorter than the 200 characters the
// check may wait for, so the check must end on the banner's own end. With --wire-baud the
// simulator paces its side like a real line, and the figure that matters is the ratio of the
// mean check to the wire time of command and answer (target: at most 1.2).

#include "link/qt/qt_serial_line.h"
#include "link/session.h"
#include "support/boxsim_run.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

// One line per run, printed after the table.
std::vector<std::string> summary;

void V_Exchange(benchmark::State& run) {
    const auto wire_baud = static_cast<int>(run.range(0));
    std::vector<std::string> args;
    if (wire_baud > 0) args = {"--wire-baud", std::to_string(wire_baud)};
    quorlen::test::Boxsim_Run box(BOXSIM_EXECUTABLE, args);
    if (!box.Ready()) {
        run.SkipWithError("boxsim did not start");
        return;
    }
    quorlen::Program_State program;
    quorlen::Form_Texts texts;
    quorlen::Link_Flags flags;
    quorlen::Link_State state;
    quorlen::Debug_Log log;
    quorlen::Qt_Serial_Line line;
    const bool no_auto_start[2] = {false, false};
    program.ComSpeed = wire_baud == 625000 ? 625000 : 115200;
    program.Com_Port = state.Ports.Number_For(box.Link());
    quorlen::Link_Context c{program, texts, flags, state, log, line, no_auto_start, {}};
    quorlen::Open_Port_If_Closed(c);

    // The banner's length, for the wire time.
    std::string answer;
    bool ok = false;
    quorlen::Ask_Banner(c, 0.2, 200, answer, ok);
    const auto characters = static_cast<double>(1 + answer.size());
    std::vector<double> each;
    const double start = quorlen::Steady_Seconds();
    for (auto _ : run) {
        const double t0 = quorlen::Steady_Seconds();
        quorlen::get_connect_info(c);
        each.push_back(quorlen::Steady_Seconds() - t0);
        ok = state.Connected;
        if (!ok) {
            run.SkipWithError("no complete banner");
            break;
        }
    }
    const double mean = (quorlen::Steady_Seconds() - start) / static_cast<double>(run.iterations());
    // The median: on a machine that others share, the checks that another process held up
    // should not decide the figure alone.
    std::sort(each.begin(), each.end());
    const double median = each.empty() ? 0 : each[each.size() / 2];
    line.Close();
    if (!ok) return;

    run.counters["ms_per_exchange"] = mean * 1000.0;
    char line_text[200];
    if (wire_baud > 0) {
        const double wire = characters * 10.0 / wire_baud;
        run.counters["wire_ms"] = wire * 1000.0;
        run.counters["ratio_to_wire"] = mean / wire;
        std::snprintf(
            line_text, sizeof line_text,
            "%d baud: %.3f ms per check (median %.3f), %.0f characters, wire time %.3f ms, ratio %.3f "
            "(median %.3f; target <= 1.2)",
            wire_baud, mean * 1000.0, median * 1000.0, characters, wire * 1000.0, mean / wire, median / wire);
    } else {
        std::snprintf(line_text, sizeof line_text, "unpaced: %.3f ms per check", mean * 1000.0);
    }
    summary.emplace_back(line_text);
}
// 0: no pacing (the pseudo-terminal's own speed); then the two speeds of the box.
BENCHMARK(V_Exchange)
    ->Arg(0)
    ->Arg(115200)
    ->Arg(625000)
    ->Iterations(200)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::fflush(stdout);
    std::printf("\nSession checks against the natural banner, 200 each:\n");
    for (const std::string& line : summary)
        std::printf("  %s\n", line.c_str());
    return 0;
}
