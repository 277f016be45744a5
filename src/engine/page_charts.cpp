#include "engine/page_charts.h"

#include "engine/page_choices.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace quorlen {

namespace {

// The number slider `address` shows now.
double Shown(Pages_Context& ctx, int address) {
    return std::strtod(Show_Scroll(ctx, address).text.c_str(), nullptr);
}

// A two-point correction, flat before the first point and after the second.
Page_Series Two_Point(std::string name, double x1, double y1, double x2, double y2, double margin) {
    if (x2 < x1) {
        std::swap(x1, x2);
        std::swap(y1, y2);
    }
    return {std::move(name), {x1 - margin, x1, x2, x2 + margin}, {y1, y1, y2, y2}};
}

// Falls from `start` at 0 s to nothing at `seconds`, and stays there until `end`.
Page_Series Fade(std::string name, double start, double seconds, double end) {
    return {std::move(name), {0, seconds, end}, {start, 0, 0}};
}

} // namespace

Page_Chart Temp_Chart(Pages_Context& ctx) {
    Page_Chart chart{"Temperature [C]", "Fuel [%]", {}};
    chart.series.push_back(
        Two_Point("Air temperature", Shown(ctx, 220), Shown(ctx, 221), Shown(ctx, 222), Shown(ctx, 223), 20));
    chart.series.push_back(
        Two_Point("Choke (coolant)", Shown(ctx, 171), Shown(ctx, 173), Shown(ctx, 172), 0, 20));
    return chart;
}

Page_Chart Battery_Chart(Pages_Context& ctx) {
    Page_Chart chart{"Battery [V]", "Extra fuel [ms]", {}};
    const double rate = Shown(ctx, 219);
    Page_Series s{"Extra fuel", {}, {}};
    for (int i = 0; i <= 16; ++i) {
        double volts = 8 + 0.5 * i;
        s.x.push_back(volts);
        s.y.push_back(std::clamp((13.5 - volts) * rate, 0.0, 8.4));
    }
    chart.series.push_back(std::move(s));
    return chart;
}

Page_Chart Startup_Chart(Pages_Context& ctx) {
    Page_Chart chart{"Time after crank [s]", "Correction [%]", {}};
    const double fuel_s = Shown(ctx, 38);
    const double air_s = Shown(ctx, 90);
    const double end = std::max({fuel_s, air_s, 1.0}) * 1.2;
    chart.series.push_back(Fade("Fuel, warm engine", Shown(ctx, 37), fuel_s, end));
    chart.series.push_back(Fade("Fuel, cold engine", Shown(ctx, 39), fuel_s, end));
    chart.series.push_back(Fade("Idle air (PWM2)", Shown(ctx, 89), air_s, end));
    return chart;
}

Page_Chart Digital_Chart(Pages_Context& ctx, int output) {
    const int base = 230 + 5 * std::clamp(output, 0, 3);
    Settings_View view = Show_Right_Settings(ctx);
    const bool analog = view.param_visible[static_cast<std::size_t>(base + 3)];
    const bool rpm = view.param_visible[static_cast<std::size_t>(base + 1)];
    Page_Chart chart{"", "", {}, true};
    if (!analog && !rpm) return chart;
    const int on_address = analog ? base + 3 : base + 1;
    const Page_Param* p = Find_Page_Param(on_address);
    const double on = Shown(ctx, on_address);
    const double off = Shown(ctx, on_address + 1);
    Scroll_Shown low = Scroll_Text_At(ctx, *p, 0);
    double x_min = std::strtod(low.text.c_str(), nullptr);
    double x_max = std::strtod(Scroll_Text_At(ctx, *p, 255).text.c_str(), nullptr);
    if (x_max < x_min) std::swap(x_min, x_max);
    chart.x_title = analog ? low.unit : "rpm";
    chart.series.push_back({"On, rising", {x_min, on, on, x_max}, {0, 0, 1, 1}});
    chart.series.push_back({"Off, falling", {x_max, off, off, x_min}, {1, 1, 0, 0}});
    return chart;
}

} // namespace quorlen
