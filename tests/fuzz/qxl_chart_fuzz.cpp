// A log file as its chart shows it: opened, compared with itself, settled, zoomed and
// scrolled, drawn against time and against rows, its axes rounded, the values at a row, the
// table export and the RPM graph. The file's zoom, scales, views and sensors steer all of it.

#include "fuzz_support.h"
#include "logging/log_chart.h"
#include "logging/log_file.h"
#include "logging/log_study.h"
#include "support/log_fixture.h"

#include <cstdlib>

namespace {

// The axis the window draws: a scale left to the data gets round steps and a sane count of them.
void Check_Axis(const quorlen::Axis_Scale& scale) {
    const quorlen::Axis_Scale nice = quorlen::Nice_Scale(scale);
    if (nice.ticks < 2 || nice.ticks > 100) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    test::Log_Fixture f;
    f.Load_Defaults(false);
    const std::string path = f.dir.File("fuzz.qxl");
    test::Write_File(path, std::string(fuzz::Text(data, size)));
    auto c = f.Ctx();
    if (!Open_File(c, path)) return 0;
    Log_State& log = *f.state;
    Open_Compare_File(c, path);

    const Window_Limits limits = Limits_Of(log);
    Chart_Builder chart;
    using Move = Chart_Window (*)(const Chart_Window&, const Window_Limits&);
    for (Move move : {Move{Settle}, Move{Zoom_In}, Move{Scroll_Right}, Move{Scroll_Right_Comp},
                      Move{Zoom_Out}, Move{Scroll_Left_Comp}, Move{Scroll_Left}}) {
        log.window = move(log.window, limits);
        const Chart_Window& w = log.window;
        // A window never leaves its file.
        if (limits.rows >= 2 && (w.Zoom_Start < 1 || w.Zoom_Stop > limits.rows || w.Zoom_Start > w.Zoom_Stop))
            std::abort();
        for (const bool x_in_rows : {false, true}) {
            const Chart_Content& content = chart.Build(log, Chart_Options{640, x_in_rows});
            Check_Axis(content.primary);
            Check_Axis(content.secondary);
            Show_All_Point_Values(log, Row_At(log, (content.x_first + content.x_last) / 2, x_in_rows));
        }
    }
    log.window = Zoom_To_Rows(log.window, limits, 5, 2);
    Chart_Csv(log);
    for (const Reference_Signal reference : {Reference_Signal::RPM, Reference_Signal::MAP}) {
        const Xy_Content xy = Rpm_Graph(log, reference, 400, 300);
        Check_Axis(xy.primary);
        Check_Axis(xy.secondary);
        Rpm_Graph_Csv(log, reference);
    }
    Rpm_Graph_Caption(log);
    Close_Compare(log);
    return 0;
}
