#pragma once
// The curves the settings pages draw from the image: the temperature, battery and start-up
// corrections, and the switching thresholds of the digital outputs. Each is a few lines of
// points; the form hands them to its charts.

#include "engine/settings_pages.h"

#include <string>
#include <vector>

namespace quorlen {

struct Page_Series {
    std::string name;
    std::vector<double> x;
    std::vector<double> y;
    bool operator==(const Page_Series&) const = default;
};

struct Page_Chart {
    std::string x_title;
    std::string y_title;
    std::vector<Page_Series> series;
    bool on_off = false; // the y values are 0 (off) and 1 (on)
    bool operator==(const Page_Chart&) const = default;
};

// Air temperature correction over the air temperature (flat outside its two points), and the
// choke fuel over the coolant temperature (full at the cold limit, none from the warm one).
Page_Chart Temp_Chart(Pages_Context& ctx);
// Extra fuel over the battery voltage: rises below 13.5 V at the set rate, at most 8.4 ms.
Page_Chart Battery_Chart(Pages_Context& ctx);
// Start-up corrections over the seconds after cranking: the fuel with a warm and a cold
// engine, and the idle air, each falling to nothing by its duration.
Page_Chart Startup_Chart(Pages_Context& ctx);
// The switching of digital output 0..3 over its input (analogue thresholds) or the engine
// speed: a line for switching on as the value rises and one for switching off as it falls.
Page_Chart Digital_Chart(Pages_Context& ctx, int output);

} // namespace quorlen
