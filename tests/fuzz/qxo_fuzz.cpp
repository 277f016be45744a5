// The high-speed log file (.qxo) as the window opens it: the trace, its notes, the chart at
// every zoom, the analysis, the speed of a stretch and the crank viewer's measure of it.

#include "core/ini_file.h"
#include "fuzz_support.h"
#include "hslog/crank_view.h"
#include "hslog/osc_file.h"
#include "hslog/pulse_analysis.h"

#include <cstdlib>
#include <memory>

namespace {

// On the heap: clang 14 crashes compiling the table as a variable of its own.
std::unique_ptr<quorlen::Engine_Config_Table> Load_Shipped_Layouts() {
    auto tab = std::make_unique<quorlen::Engine_Config_Table>();
    const quorlen::Ini_File ini(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini", "");
    quorlen::Load_Engine_Config_Tab(*tab, ini);
    return tab;
}

const quorlen::Engine_Config_Table& Shipped_Layouts() {
    static const std::unique_ptr<quorlen::Engine_Config_Table> tab = Load_Shipped_Layouts();
    return *tab;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    std::string error;
    // A cut-off file takes the rate of the line now chosen: the fast one here.
    const auto trace = Read_Osc_Text(fuzz::Text(data, size), error, 62500);
    if (!trace) {
        if (error.empty()) std::abort(); // a refusal always says why
        return 0;
    }
    if (trace->sample_rate <= 0) std::abort(); // every time is divided by it
    Osc_Trace_Notes(*trace);
    const long count = trace->Count();

    Osc_Stretch stretch = Zoom_All(count);
    for (auto move : {Zoom_In, Zoom_In, Scroll_Right, Zoom_Out, Scroll_Left}) {
        for (const bool peaks : {false, true}) {
            const Osc_Chart chart = Build_Osc_Chart(*trace, stretch, peaks);
            if (chart.first < 1 || (count > 0 && chart.Row_Sample(chart.rows.size() - 1) > count))
                std::abort();
        }
        Count_Level_Changes(*trace, stretch);
        Analyze_Stretch(*trace, stretch, Analyze_Reference::RPM, "3000");
        Analyze_Stretch(*trace, stretch, Analyze_Reference::Crank_Pulses_Per_Rev, "36");
        Stretch_RPM(stretch, trace->sample_rate);
        stretch = move(stretch, count);
    }
    // Texts typed into the start and stop boxes, taken from the trace itself.
    const std::string typed = count > 0 ? std::to_string(trace->samples.front()) + "9" : "-";
    Clamp_Stretch(typed, "99999999999999999999", count);

    const Crank_Measure measure = Measure_Crank(*trace);
    Measure_Crank(*trace, 2);
    const int layout = count > 0 ? trace->samples.back() : 0;
    Crank_View_Report(Wheel_Layout_For(Shipped_Layouts(), layout, 4), &measure, "fuzz.qxo");
    return 0;
}
