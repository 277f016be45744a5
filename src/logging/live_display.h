#pragma once
// What the live display shows while a log runs: sixteen gauges, each the value of one log
// column in the newest complete row with its unit and format, and how far along its range it
// stands, for the bar beside the number. The master box's signals are marked "M", the slave's
// "S"; a gauge whose signal the log's layout does not carry shows nothing.

#include "logging/log_state.h"

#include <array>
#include <string>

namespace quorlen {

inline constexpr int Gauge_Count = 16;

// The gauges in their order: "RPM", "MAP", "TP", "O2 M", "O2 S", "IAT M", "IAT S", "BAT M",
// "BAT S", "Cool", "IGN", "Fuel M", "Fuel S", "Ftrim M", "FTrim S", "POWER".
extern const std::array<const char*, Gauge_Count> Gauge_Captions;

struct Gauge_Reading {
    std::string caption;
    std::string text; // the value in its format; empty when there is none
    std::string unit; // with its leading blank: " rpm", " bar", " deg" ...
    double value = 0;
    double low = 0, high = 1; // the range the bar spans
    bool present = false;     // the layout logs this signal at all
};

using Gauge_Readings = std::array<Gauge_Reading, Gauge_Count>;

// The cell the engine runs in on one main map, as the cursor shows it (Cursor_Column,
// Cursor_Row, and the fractions Cursor_X, Cursor_Y inside that cell), with the map's points the
// engine draws on: the lower ones and the weights of the cursor's, for the cells around it.
struct Running_Cell {
    bool shown = false;
    int Cursor_Column = 1, Cursor_Row = 1;
    double Cursor_X = 0, Cursor_Y = 0;
    int lower_column = 1, lower_row = 1;
    double column_weight = 1, row_weight = 1;
};

// What the live display keeps between its updates: the running cell of each main map, on
// which the live frame's plus and minus act.
struct Live_Display_State {
    Running_Cell fuel, ign;
};

// The column of Log_Data that gauge `gauge` shows in this log's layout; -1 for none.
int Gauge_Column(const Log_State& log, int gauge);

// The row in hand: while a log runs the newest complete one, else 0 (nothing to show).
int Current_Data_Row(const Log_State& log);

// cmd_Show_Current_Data's numbers for row `row` of Log_Data; row 0 gives empty gauges, as
// cmd_Show_Current_Data_Clear leaves them.
Gauge_Readings Read_Gauges(const Log_State& log, int row);

} // namespace quorlen
