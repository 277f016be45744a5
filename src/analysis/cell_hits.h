#pragma once
// How long the engine ran in each cell of a main map during a log. The box interpolates
// between the four points around where it runs, so a row counts in those four by the same
// weights: a row on a point counts there alone, a row in the middle of four counts a
// quarter in each.

#include "analysis/map_cell.h"
#include "logging/log_chart.h"
#include "tables/map_colours.h"

#include <string>
#include <vector>

namespace quorlen {

// Seconds (or any weighted sum) per cell of a map, row after row as the image holds them.
struct Hit_Grid {
    Table_Id map = Table_Id::Fuel_3D;
    int rows = 0;
    int cols = 0;
    std::vector<double> seconds;
    int rows_counted = 0; // log rows that stood somewhere in the map

    Hit_Grid() = default;
    Hit_Grid(Table_Id id, int rows_, int cols_)
        : map(id), rows(rows_), cols(cols_), seconds(static_cast<std::size_t>(rows_ * cols_)) {}
    double& At(int r, int c) { return seconds[static_cast<std::size_t>((r - 1) * cols + (c - 1))]; }
    double At(int r, int c) const { return seconds[static_cast<std::size_t>((r - 1) * cols + (c - 1))]; }
    double Max() const;
    double Total() const;
};

// Adds `amount` to the four points around `cell`, by the interpolation weights.
void Spread(Hit_Grid& grid, const Map_Cell& cell, double amount);

// Every row of the log with the engine turning, 0.05 s each, over the locator's map.
Hit_Grid Cell_Hits(const Map_Locator& locator, const Log_State& log);

// "Log hits" colouring: cells the engine never ran in stay white; the others warm from pale
// yellow to deep red with their share of the busiest cell's time (on a square-root scale,
// so a short visit still shows). The legend's ends: white for none, red for the most.
Map_Colours Log_Hit_Colours(const Hit_Grid& hits);

// The tooltip of a cell in that colouring: "1.25 s in the log".
std::string Hit_Text(double seconds);
// The legend beside the grid: "Log hits: 0 s to 12.3 s, 7000 rows", or that no row of the
// log stood in the map (no log open, or one without these signals).
std::string Hit_Legend(const Hit_Grid& hits);

} // namespace quorlen
