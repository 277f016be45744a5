#pragma once
// The data of the surface view of a main map: engine speed across, load deep, the cell
// values up, each at two decimals, with the words of the series and the axes; and the same
// as a comma-separated text for a spreadsheet.

#include "tables/map_tables.h"

#include <string>
#include <vector>

namespace quorlen {

struct Surface_Data {
    std::string series;                 // "Fuel map"
    std::string x_title;                // "RPM"
    std::string z_title;                // "Load [" unit "]"
    std::string y_title;                // "Fuel [ms]"
    std::vector<double> x;              // engine speed of each column
    std::vector<double> z;              // load of each row
    std::vector<std::vector<double>> y; // row after row
};

// From the image and the axis values the last Update_All read.
Surface_Data Calculate_Fuel3dmap(const Tables_Context& ctx);
Surface_Data Calculate_Ign3dmap(const Tables_Context& ctx);
// What PWM 1 asks for: its table over its axis (speed or load) across, the PWM1 comp. curve's
// load deep, the table's byte scaled by the curve's percentage up. "Boost map" while PWM 1 runs
// the boost control, in the boost sensor's unit; "PWM map" in percent otherwise.
Surface_Data Calculate_PWM3dmap(const Tables_Context& ctx);
// The acceleration enrichment: the load change per sample across, the engine cycles from the
// change deep, the fuel added up. A change above the threshold adds change times the gain for
// as many cycles as the sustain says; with the enrichment off it adds nothing.
Surface_Data Calculate_Acc3dmap(const Tables_Context& ctx);

// The load title over its axis, then one line a load row: the load, then the cells. The
// first line has the RPM title and the speeds. Numbers with a point, at two decimals.
std::string Surface_Csv(const Surface_Data& data);

// The name an export proposes: the settings file's name with "_qxs" for its extension
// ("New1.qxs" gives "New1_qxs").
std::string Export_Name(const std::string& settings_file_name);

} // namespace quorlen
