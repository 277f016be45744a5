// Reading and writing settings against the simulator paced like a real line
// (boxsim --wire-baud 115200), through the program's QSerialPort line with the port open
// as after "Open port". The figure that matters is the ratio of the time a procedure takes to
// the wire time of every character it exchanged, both ways, at 10 bits a character.
// Targets: reads at most 1.15, the byte-wise write of 1011 bytes at most 1.2 (of 64 bytes,
// where the two verifies weigh more, 1.5), the binary write at most 1.15.
// The byte-wise write waits for an echo some 2000 times, and every wait that another process
// stretches counts; the best run shows what the program itself costs.

#include "support/settings_session.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

namespace {

using namespace quorlen;

constexpr int Baud = 115200;

// The program's line, counting what crosses it and how long the program waits for answers.
class Counting_Line final : public Serial_Line {
public:
    explicit Counting_Line(Serial_Line& line) : line_(line) {}
    long characters = 0;
    double waiting = 0; // seconds blocked for the box's characters

    void Set_Port(const std::string& path) override { line_.Set_Port(path); }
    std::string Port() const override { return line_.Port(); }
    void Set_Settings(const std::string& settings) override { line_.Set_Settings(settings); }
    Open_Result Open() override { return line_.Open(); }
    void Close() override { line_.Close(); }
    bool Is_Open() const override { return line_.Is_Open(); }
    void Clear_Input() override { line_.Clear_Input(); }
    int Bytes_Waiting() override { return line_.Bytes_Waiting(); }
    std::string Read_All() override {
        std::string got = line_.Read_All();
        characters += static_cast<long>(got.size());
        return got;
    }
    void Write(std::string_view bytes) override {
        line_.Write(bytes);
        characters += static_cast<long>(bytes.size());
    }
    bool Wait_For_Input(double seconds) override {
        const double t0 = Steady_Seconds();
        const bool got = line_.Wait_For_Input(seconds);
        waiting += Steady_Seconds() - t0;
        return got;
    }

private:
    Serial_Line& line_;
};

enum class Job { Text_Read, Binary_Read, Write_64, Write_1011, Binary_Write_1011 };

std::vector<std::string> summary;

Image_Bytes Base_Image() {
    Image_Bytes image{};
    for (std::size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<std::uint8_t>(i * 13 + 5);
    image[1] = 0;
    image[255] = 200;
    for (int a = 1011; a <= 1023; ++a)
        image[static_cast<std::size_t>(a)] = 0;
    return image;
}

// The tuner's edits for one round: every round changes the same bytes again, so that each
// write has the same work to do.
void Edit(Settings_Image& image, Job job, int round) {
    const auto change = [&](int a) {
        image.CardByte[a] = static_cast<std::uint8_t>(image.CardByte[a] + 1 + round % 7);
        image.ChangedByte[a] = Changed_Mark;
    };
    if (job == Job::Write_64) {
        for (int run = 0; run < 16; ++run) // four-cell strokes across the fuel map
            for (int k = 0; k < 4; ++k)
                change(300 + run * 20 + k);
    } else {
        for (int a = 0; a <= 1010; ++a)
            if (Compared_Address(a)) change(a);
    }
}

void Settings_Job(benchmark::State& run, Job job, const char* title, double target) {
    test::Temp_Dir dir;
    test::Save_Image(dir.File("box.qxs"), Base_Image());
    test::Boxsim_Run box(BOXSIM_EXECUTABLE,
                         {"--wire-baud", std::to_string(Baud), "--image", dir.File("box.qxs")});
    if (!box.Ready()) {
        run.SkipWithError("boxsim did not start");
        return;
    }
    test::Settings_Session p(box.Link());
    p.Take(Base_Image());
    Counting_Line counted(p.line);
    Link_Context link{p.program, p.texts, p.flags, p.state, p.log, counted, {false, false}, {}};
    // The product's pause after opening a port.
    double paused = 0;
    link.hooks.Dummy_Wait = [&paused] {
        const double t0 = Steady_Seconds();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        paused += Steady_Seconds() - t0;
    };
    Settings_Context s{link, p.image, p.rw, p.files, p.dialogs, {}};
    Open_Port_If_Closed(link);

    double elapsed = 0;
    double waiting = 0;
    double pauses = 0;
    long characters = 0;
    double best = 1e9; // the run least disturbed by whatever else the machine does
    int round = 0;
    bool ok = true;
    for (auto _ : run) {
        if (job == Job::Write_64 || job == Job::Write_1011 || job == Job::Binary_Write_1011)
            Edit(p.image, job, round);
        ++round;
        counted.characters = 0;
        counted.waiting = 0;
        paused = 0;
        const double t0 = Steady_Seconds();
        switch (job) {
        case Job::Text_Read:
            Read_Settings_Click(s);
            ok = p.rw.Read_Complete;
            break;
        case Job::Binary_Read:
            Read_bin_command_cmd_Click(s);
            ok = p.rw.Read_Complete;
            break;
        case Job::Write_64:
        case Job::Write_1011:
            Write_Settings_Click(s);
            ok = p.rw.Write_Succeeded;
            break;
        case Job::Binary_Write_1011:
            Write_bin_command_cmd_Click(s);
            ok = p.rw.Write_Succeeded;
            break;
        }
        const double took = Steady_Seconds() - t0;
        elapsed += took;
        waiting += counted.waiting;
        pauses += paused;
        characters += counted.characters;
        best = std::min(best, took / (static_cast<double>(counted.characters) * 10.0 / Baud));
        if (!ok) {
            run.SkipWithError(("failed: " + p.texts.rs232_text).c_str());
            break;
        }
    }
    counted.Close();
    if (!ok) return;
    const double wire = static_cast<double>(characters) * 10.0 / Baud;
    run.counters["ratio_to_wire"] = elapsed / wire;
    run.counters["best_ratio"] = best;
    char line[240];
    std::snprintf(
        line, sizeof line,
        "%-28s %7.1f ms, %5ld characters, wire %7.1f ms, ratio %.3f, best run %.3f (target <= %.2f)", title,
        elapsed * 1000.0 / round, characters / round, wire * 1000.0 / round, elapsed / wire, best, target);
    summary.emplace_back(line);
    // Where the time beyond the wire goes: waiting for the box's answers (the wire and the
    // latency of both ends), pauses, and the program's own work between exchanges.
    std::snprintf(
        line, sizeof line, "%-28s   waiting for the box %.1f ms, pauses %.1f ms, the program %.1f ms", "",
        waiting * 1000.0 / round, pauses * 1000.0 / round, (elapsed - waiting - pauses) * 1000.0 / round);
    summary.emplace_back(line);
}

void Text_Read(benchmark::State& run) {
    Settings_Job(run, Job::Text_Read, "text read (v, rd)", 1.15);
}
void Binary_Read(benchmark::State& run) {
    Settings_Job(run, Job::Binary_Read, "binary read (v, bR)", 1.15);
}
void Write_64(benchmark::State& run) {
    Settings_Job(run, Job::Write_64, "byte-wise write, 64 bytes", 1.5);
}
void Write_1011(benchmark::State& run) {
    Settings_Job(run, Job::Write_1011, "byte-wise write, 1011 bytes", 1.2);
}
void Binary_Write_1011(benchmark::State& run) {
    Settings_Job(run, Job::Binary_Write_1011, "binary write, 1011 bytes", 1.15);
}

BENCHMARK(Text_Read)->Iterations(10)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Binary_Read)->Iterations(10)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Write_64)->Iterations(5)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Write_1011)->Iterations(5)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Binary_Write_1011)->Iterations(10)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::fflush(stdout);
    std::printf("\nSettings against boxsim --wire-baud %d, port open, time per run and ratio to the wire:\n",
                Baud);
    for (const std::string& line : summary)
        std::printf("  %s\n", line.c_str());
    return 0;
}
