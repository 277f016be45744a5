#pragma once
// Where the engine runs on the two main maps while a log runs, and the tuner's one-step
// change of the cells around that point: the live display's cursors and the plus and minus of
// its frame.

#include "analysis/map_cell.h"
#include "logging/live_display.h"
#include "tables/map_tables.h"

#include <utility>
#include <vector>

namespace quorlen {

// The running point of row `row` of the log on both main maps; a row of 0, or one that lacks
// speed or load, shows no cursor.
void Locate_Running_Cells(Live_Display_State& display, const Settings_Image& image,
                          const Sensor_State& sensors, const Log_State& log, int row);

// The cells (row, column) that carry the running point: on each axis the point on the
// cursor's side and the one before it, each while it carries more than a quarter of the
// weight, so one, two or four cells.
std::vector<std::pair<int, int>> Cells_Around(const Running_Cell& cell);

// plus_3D and minus_3D of the live frame: each cell around the running point of `map` one
// byte up (`step` 1) or down (-1), marked for writing, as one edit for undo. False when no
// cursor shows or no byte could move.
bool Adjust_Running_Cells(Tables_Context& ctx, Table_Id map, const Running_Cell& cell, int step);

} // namespace quorlen
