#include "analysis/cell_hits.h"

#include "image/scaling.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace quorlen {

double Hit_Grid::Max() const {
    return seconds.empty() ? 0 : *std::max_element(seconds.begin(), seconds.end());
}

double Hit_Grid::Total() const {
    return std::accumulate(seconds.begin(), seconds.end(), 0.0);
}

void Spread(Hit_Grid& grid, const Map_Cell& cell, double amount) {
    const Axis_Spot& c = cell.column;
    const Axis_Spot& r = cell.row;
    const double wc[2] = {1 - c.upper_weight, c.upper_weight};
    const double wr[2] = {1 - r.upper_weight, r.upper_weight};
    const int cs[2] = {c.lower, c.cell};
    const int rs[2] = {r.lower, r.cell};
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j) {
            const double w = wr[i] * wc[j];
            if (w > 0) grid.At(rs[i], cs[j]) += w * amount;
        }
}

Hit_Grid Cell_Hits(const Map_Locator& locator, const Log_State& log) {
    Hit_Grid grid(locator.map, locator.rows, locator.cols);
    for (int r = 1; r <= log.Last_Row; ++r) {
        const double* row = log.Log_Data.Row(r);
        const auto rpm = Row_Rpm(locator, row);
        if (!rpm || *rpm <= 0) continue;
        const auto cell = Locate_Row(locator, row);
        if (!cell) continue;
        Spread(grid, *cell, Row_Seconds);
        ++grid.rows_counted;
    }
    return grid;
}

namespace {

struct Stop {
    double at;
    Rgb colour;
};

// Pale yellow, orange, deep red.
constexpr Stop Ramp[] = {{0.0, {255, 247, 188}}, {0.5, {253, 141, 60}}, {1.0, {189, 0, 38}}};

Rgb Ramp_Colour(double t) {
    t = std::clamp(t, 0.0, 1.0);
    for (std::size_t i = 1; i < std::size(Ramp); ++i) {
        if (t > Ramp[i].at) continue;
        const Stop& a = Ramp[i - 1];
        const Stop& b = Ramp[i];
        const double f = (t - a.at) / (b.at - a.at);
        const auto mix = [f](std::uint8_t x, std::uint8_t y) {
            return static_cast<std::uint8_t>(std::lround(x + (y - x) * f));
        };
        return {mix(a.colour.r, b.colour.r), mix(a.colour.g, b.colour.g), mix(a.colour.b, b.colour.b)};
    }
    return Ramp[std::size(Ramp) - 1].colour;
}

} // namespace

Map_Colours Log_Hit_Colours(const Hit_Grid& hits) {
    Map_Colours m;
    m.rows = hits.rows;
    m.cols = hits.cols;
    m.cells.assign(hits.seconds.size(), White);
    const double most = hits.Max();
    m.low = White;
    m.high = Ramp_Colour(1);
    if (most <= 0) return m;
    for (std::size_t i = 0; i < hits.seconds.size(); ++i)
        if (hits.seconds[i] > 0) m.cells[i] = Ramp_Colour(std::sqrt(hits.seconds[i] / most));
    return m;
}

std::string Hit_Text(double seconds) {
    return Format_Number(seconds, "0.00") + " s in the log";
}

std::string Hit_Legend(const Hit_Grid& hits) {
    if (hits.rows_counted == 0) return "Log hits: no log rows in this map";
    return "Log hits: 0 s to " + Format_Number(hits.Max(), "0.0") + " s, " +
           std::to_string(hits.rows_counted) + " rows";
}

} // namespace quorlen
