#pragma once
// A text row into numbers, and the signals the box does not send: smoothed RPM, power,
// torque, speed, acceleration, duty cycle, fuel use and the change of the enrichment signal.
// Rows are 0.05 s apart.

#include "logging/log_context.h"

#include <optional>
#include <string_view>

namespace quorlen {

// The car constants from the setup form, with "," read as "." (the extended calculation
// takes a missing drag factor as no drag at all).
void Read_Car_Values(Log_State& log, bool extended);

// One row into `data`. Row 0 writes the signal names, prepares the sensors and reads the car
// constants; later rows need it to have run once.
void Calculate_Data(Log_Context& ctx, std::string_view row, int r, Log_Array& data);

// The raw reading of analogue input 1..3 in the newest row of the running log, from its copy
// in the ADn_BIN column; nullopt before the first row, and for an input without a copy.
std::optional<int> Live_Raw_Input(const Log_State& log, int input);

// Power, acceleration and the rest over rows 1 to `last_row`, after a file is read.
void Calculate_Extended_Signals(Log_Context& ctx, Log_Array& data, int last_row);

// The rows of a smoothing field (txt_FIR): its whole part, 0 when empty or not a number, and
// held just beyond the rows a log can have, where no filter has work.
int Smoothing_Rows(std::string_view text);

// Smoothing of a column over rows 1 to `last_row` into another (or the same) column.
// 1: straight lines across the steps of a coarse RPM. 2: five taps from txt_FIR 0..4.
// 3: centred mean over 2n + 1 rows. 4: trailing mean over n + 1 rows.
void RPM2_Filter1(Log_State& log, Log_Array& data, int last_row, int source, int target);
void RPM2_Filter2(Log_State& log, Log_Array& data, int last_row, int source, int target);
void RPM2_Filter3(Log_Array& data, int last_row, int n, int source, int target);
void RPM2_Filter4(Log_Array& data, int last_row, int n, int source, int target);

} // namespace quorlen
