#include "analysis/running_cell.h"

#include "tables/selection_ops.h"
#include "tables/undo_list.h"

namespace quorlen {

namespace {

// A point carries the running value when more than this share of its weight is on it; the
// box's own adjustment draws the same line.
constexpr double Carries = 0.25;

Running_Cell Cell_Of(const std::optional<Map_Cell>& at) {
    Running_Cell cell;
    if (!at) return cell;
    cell.shown = true;
    cell.Cursor_Column = at->column.cell;
    cell.Cursor_Row = at->row.cell;
    cell.Cursor_X = at->column.fraction;
    cell.Cursor_Y = at->row.fraction;
    cell.lower_column = at->column.lower;
    cell.lower_row = at->row.lower;
    cell.column_weight = at->column.upper_weight;
    cell.row_weight = at->row.upper_weight;
    return cell;
}

std::vector<int> Points(int lower, int upper, double upper_weight) {
    if (lower == upper) return {upper};
    std::vector<int> points;
    if (1 - upper_weight > Carries) points.push_back(lower);
    if (upper_weight > Carries) points.push_back(upper);
    return points;
}

} // namespace

void Locate_Running_Cells(Live_Display_State& display, const Settings_Image& image,
                          const Sensor_State& sensors, const Log_State& log, int row) {
    display = {};
    if (row < 1 || row > Log_Row_Limit) return;
    const double* values = log.Log_Data.Row(row);
    display.fuel = Cell_Of(Locate_Row(Make_Map_Locator(image, sensors, log, Table_Id::Fuel_3D), values));
    display.ign = Cell_Of(Locate_Row(Make_Map_Locator(image, sensors, log, Table_Id::Ignition_3D), values));
}

std::vector<std::pair<int, int>> Cells_Around(const Running_Cell& cell) {
    std::vector<std::pair<int, int>> cells;
    if (!cell.shown) return cells;
    for (int r : Points(cell.lower_row, cell.Cursor_Row, cell.row_weight))
        for (int c : Points(cell.lower_column, cell.Cursor_Column, cell.column_weight))
            cells.emplace_back(r, c);
    return cells;
}

bool Adjust_Running_Cells(Tables_Context& ctx, Table_Id map, const Running_Cell& cell, int step) {
    const Map_Block block = map == Table_Id::Ignition_3D ? Ign_Block(ctx) : Fuel_Block(ctx);
    std::vector<int> addresses;
    for (auto [r, c] : Cells_Around(cell)) {
        if (r < 1 || r > block.rows || c < 1 || c > block.cols) continue;
        const int a = block.Cell(r, c);
        const int b = ctx.image.CardByte[static_cast<std::size_t>(Checked_Address(a))];
        if (b + step >= 0 && b + step <= 255) addresses.push_back(a);
    }
    if (addresses.empty()) return false;
    save_to_undolist(ctx.undo, ctx.image);
    for (int a : addresses)
        Put_Byte(ctx.image, a,
                 static_cast<std::uint8_t>(ctx.image.CardByte[static_cast<std::size_t>(a)] + step));
    return true;
}

} // namespace quorlen
