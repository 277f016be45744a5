#pragma once
// Where a log row stands in a main map: the cell and the fractions inside it, from the map's
// axes in the image and the row's engine speed and load through the sensor arithmetic. The
// live display places its cursor frames with it, and the log analysis spreads each row over
// the map's points with it, so both agree on where the engine ran.
//
// Use: build a Map_Locator once for an image and a log layout (it reads the axes, the load
// selection and the sensors), then call Locate_Row for each row of Log_Data:
//
//     Map_Locator fuel = Make_Map_Locator(image, sensors, log, Table_Id::Fuel_3D);
//     if (auto cell = Locate_Row(fuel, log.Log_Data.Row(r)))
//         Set_FUEL_Curser(cell->column.cell, cell->row.cell, cell->column.fraction, cell->row.fraction);
//
// The locator copies what it needs; rebuild it after the image's axes, map size, load
// selection or sensors change, or after another log layout is loaded.

#include "logging/log_state.h"
#include "sensors/sensor_defs.h"
#include "tables/table_catalogue.h"

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace quorlen {

// A value's place along one axis.
struct Axis_Spot {
    // The cell (1-based column or row) and the fraction inside it, 0 to 1, as the cursor
    // shows it: the cell whose breakpoint is the first above the value. At or above the last
    // breakpoint the last cell with 0.6; below the first, cell 1 with v / b(1).
    int cell = 1;
    double fraction = 0;
    // The same place as interpolation weights on the map's points: `upper_weight` on point
    // `cell`, the rest on point `lower`. A value on breakpoint i puts all its weight on
    // point i; outside the axis the nearest end point takes all.
    int lower = 1;
    double upper_weight = 1;
};

// The rule along one axis, breakpoints in axis order (b(1) first). An empty axis gives cell 1.
// Two equal breakpoints never divide by zero: the walk stops at the first one above v.
Axis_Spot Locate_On_Axis(std::span<const double> breakpoints, double v);

struct Map_Cell {
    Axis_Spot column; // along the RPM axis: Cursor_Column, Cursor_X
    Axis_Spot row;    // along the load axis: Cursor_Row, Cursor_Y
};

// How one analogue input's raw reading (0-255) is got back from a row of Log_Data: from the
// raw copy the log keeps of the first three inputs, else by undoing the log sensor of the
// input's column (rounded to a whole reading, as the box sends them).
struct Input_Reader {
    enum class Kind { None, Raw, Linear, Linear2c, Tab };
    Kind kind = Kind::None;
    int column = -1;
    double gain = 0, offset = 0;
    std::vector<double> points; // a table sensor's 33 points
    // nullopt when the log has no such input, or the cell is empty or can't be undone.
    std::optional<double> Raw(const double* row) const;
};

// The column of Log_Data that holds input 1..12 in the log's layout, or -1 where the layout
// has none (the boost-controller layout logs the first four inputs only).
int Input_Column(const Log_Columns& columns, int input);
Input_Reader Make_Input_Reader(const Log_State& log, int input);

// Everything the rule needs of one main map, copied out of the image.
struct Map_Locator {
    Table_Id map = Table_Id::Fuel_3D;
    int cols = 0;
    int rows = 0;
    std::vector<double> rpm_points;  // the RPM axis, running sum x 62.5
    std::vector<double> load_points; // the load axis as its header shows it
    int rpm_column = 1;              // Col_RPM
    bool load_is_rpm = false;        // the load selection is engine speed
    int load_sensor = -1;            // the tuning sensor behind the load input
    // A copy of the sensor table the load axis was read with, so the rows are measured with
    // the same arithmetic as the axis even if the table changes meanwhile.
    std::shared_ptr<const Sensor_Table> load_sensors;
    Input_Reader load_input;
    // Which input the load runs on (1..12), for messages; 0 for engine speed.
    int load_input_number = 0;
};

// The main fuel map (Table_Id::Fuel_3D) or the main ignition map (Table_Id::Ignition_3D) of
// `image`, with sizes from byte 175, axes from the step bytes (running sums saturating at
// 255), and the load selection with its sensor. Another table id is taken as the fuel map.
Map_Locator Make_Map_Locator(const Settings_Image& image, const Sensor_State& sensors, const Log_State& log,
                             Table_Id map);

// The row's engine speed and load, each rounded to 2 decimals, located on the two axes;
// nullopt when the row lacks either value (an empty cell, an input the log doesn't hold, a
// load sensor that isn't there).
std::optional<Map_Cell> Locate_Row(const Map_Locator& locator, const double* row);

// The row's values on the two axes, as Locate_Row uses them.
std::optional<double> Row_Rpm(const Map_Locator& locator, const double* row);
std::optional<double> Row_Load(const Map_Locator& locator, const double* row);

} // namespace quorlen
