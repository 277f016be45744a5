#include "analysis/map_cell.h"

#include "core/text.h"
#include "image/scaling.h"

#include <algorithm>
#include <cmath>

namespace quorlen {

namespace {

// Past the last breakpoint the cursor stands well inside the last cell rather than on its
// far edge, where it would look like the next cell's.
constexpr double Last_Cell_Fraction = 0.6;

std::vector<int> Running_Sums(const Settings_Image& image, int first_step, int count) {
    std::vector<int> sums(static_cast<std::size_t>(std::max(count, 0)));
    int sum = 0;
    for (int i = 0; i < count; ++i) {
        sum = std::min(255, sum + image.CardByte[static_cast<std::size_t>(Checked_Address(first_step + i))]);
        sums[static_cast<std::size_t>(i)] = sum;
    }
    return sums;
}

bool Empty(double v) {
    return v != v;
}

} // namespace

Axis_Spot Locate_On_Axis(std::span<const double> b, double v) {
    Axis_Spot spot;
    const int n = static_cast<int>(b.size());
    if (n == 0) return spot;
    if (v >= b[static_cast<std::size_t>(n - 1)]) {
        spot.cell = n;
        spot.fraction = Last_Cell_Fraction;
        spot.lower = n;
        spot.upper_weight = 1;
        return spot;
    }
    if (v < b[0]) {
        spot.cell = 1;
        spot.fraction = b[0] > 0 ? std::clamp(v / b[0], 0.0, 1.0) : 0;
        spot.lower = 1;
        spot.upper_weight = 1;
        return spot;
    }
    for (int i = 2; i <= n; ++i) {
        const double hi = b[static_cast<std::size_t>(i - 1)];
        if (hi <= v) continue;
        const double lo = b[static_cast<std::size_t>(i - 2)];
        // The walk stops at the first breakpoint above v and v is not below b(1), so on an
        // axis that rises lo <= v < hi. An axis that falls somewhere (a sensor whose value
        // drops with its reading) can have lo above v too; the fraction then stays in range.
        const double f = hi > lo ? std::clamp((v - lo) / (hi - lo), 0.0, 1.0) : 0.0;
        spot.cell = i;
        spot.fraction = f;
        spot.lower = i - 1;
        spot.upper_weight = f;
        return spot;
    }
    return spot; // not reached: v is below the last breakpoint
}

// --- reading an input back from a row -------------------------------------------------------

int Input_Column(const Log_Columns& c, int input) {
    switch (input) {
    case 1:
        return c.Col_AN1;
    case 2:
        return c.Col_AN2;
    case 3:
        return c.Col_AN3;
    case 4:
        return c.Col_AN4;
    default:
        break;
    }
    // The stand-alone layout (the one with status bytes) logs all twelve inputs in order.
    if (input >= 5 && input <= Analog_Inputs && c.Col_Status1 >= 0 && c.Col_AN1 >= 1)
        return c.Col_AN1 + input - 1;
    return -1;
}

Input_Reader Make_Input_Reader(const Log_State& log, int input) {
    Input_Reader reader;
    const Log_Columns& c = log.columns;
    const int raw_copy = input == 1   ? c.Col_AD1_Bin
                         : input == 2 ? c.Col_AD2_Bin
                         : input == 3 ? c.Col_AD3_Bin
                                      : -1;
    const int column = Input_Column(c, input);
    if (column < 1 || column > Log_Signal_Count) return reader;
    const int sensor = log.Log_Signal_Tab[static_cast<std::size_t>(column - 1)].sensor;
    // The calculation keeps the raw copy only for a column that has a sensor.
    if (raw_copy >= 1 && raw_copy < Log_Data_Columns && sensor >= 0) {
        reader.kind = Input_Reader::Kind::Raw;
        reader.column = raw_copy;
        return reader;
    }
    if (sensor < 0 || sensor >= static_cast<int>(log.Log_Sens_Tab.size())) return reader;
    const Log_Sensor_Row& row = log.Log_Sens_Tab[static_cast<std::size_t>(sensor)];
    reader.column = column;
    const std::string& type = row[1];
    if (type == "Linear" || type == "Linear2c") {
        reader.gain = Val(row[2]);
        reader.offset = Val(row[3]);
        if (reader.gain != 0)
            reader.kind = type == "Linear" ? Input_Reader::Kind::Linear : Input_Reader::Kind::Linear2c;
    } else if (type == "Tab") {
        reader.kind = Input_Reader::Kind::Tab;
        for (int i = 2; i <= 34; ++i)
            reader.points.push_back(Val(row[static_cast<std::size_t>(i)]));
    }
    return reader;
}

std::optional<double> Input_Reader::Raw(const double* row) const {
    if (kind == Kind::None) return std::nullopt;
    const double v = row[column];
    if (Empty(v)) return std::nullopt;
    switch (kind) {
    case Kind::Raw:
        return v;
    case Kind::Linear:
        return std::clamp(std::round((v - offset) / gain), 0.0, 255.0);
    case Kind::Linear2c: {
        double x = std::round((v - offset) / gain);
        if (x < 0) x += 256;
        return std::clamp(x, 0.0, 255.0);
    }
    case Kind::Tab:
        // The first segment that spans v; a flat segment spans nothing and is passed over.
        for (std::size_t i = 0; i + 1 < points.size(); ++i) {
            const double y0 = points[i], y1 = points[i + 1];
            if (y0 == y1 || v < std::min(y0, y1) || v > std::max(y0, y1)) continue;
            return std::clamp(std::round(8.0 * static_cast<double>(i) + 8.0 * (v - y0) / (y1 - y0)), 0.0,
                              255.0);
        }
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

// --- the map --------------------------------------------------------------------------------

Map_Locator Make_Map_Locator(const Settings_Image& image, const Sensor_State& sensors, const Log_State& log,
                             Table_Id map) {
    Map_Locator m;
    const bool ign = map == Table_Id::Ignition_3D;
    m.map = ign ? Table_Id::Ignition_3D : Table_Id::Fuel_3D;
    const Map_Size& size = ign ? Ign_Size_Variants()[static_cast<std::size_t>(Ign_Size_Index(image))]
                               : Fuel_Size_Variants()[static_cast<std::size_t>(Fuel_Size_Index(image))];
    const Map_Block block{ign ? image.IgnBlockBase : image.FuelBlockBase, size.cols, size.rows};
    m.cols = block.cols;
    m.rows = block.rows;
    m.rpm_column = log.columns.Col_RPM;

    for (int sum : Running_Sums(image, block.Rpm_Step(1), block.cols))
        m.rpm_points.push_back(sum * Rpm_Per_Step);

    const Load_Selections loads = Read_Load_Selections(image);
    const int selection = ign ? loads.IgnLoadSensor : loads.Fuel3DLoadSensor;
    const std::vector<int> load_sums = Running_Sums(image, block.Load_Step(1), block.rows);
    if (selection == Rpm_Selection) {
        m.load_is_rpm = true;
        for (int sum : load_sums)
            m.load_points.push_back(sum * Rpm_Per_Step);
        return m;
    }
    m.load_sensor = Sensor_For_Selection(image, sensors, selection);
    if (m.load_sensor < 0) return m; // no load axis to stand on
    for (int sum : load_sums)
        m.load_points.push_back(Forward_Sensor_Value(sensors.table, m.load_sensor, sum).value_or(0));
    m.load_input_number = image.Analog_Channel[static_cast<std::size_t>(selection)];
    m.load_input = Make_Input_Reader(log, m.load_input_number);
    m.load_sensors = std::make_shared<const Sensor_Table>(sensors.table);
    return m;
}

std::optional<double> Row_Rpm(const Map_Locator& m, const double* row) {
    if (m.rpm_column < 1 || m.rpm_column >= Log_Data_Columns) return std::nullopt;
    const double rpm = row[m.rpm_column];
    if (Empty(rpm)) return std::nullopt;
    return Round_Even(rpm, 2);
}

std::optional<double> Row_Load(const Map_Locator& m, const double* row) {
    if (m.load_is_rpm) return Row_Rpm(m, row);
    if (!m.load_sensors || m.load_points.empty()) return std::nullopt;
    const auto raw = m.load_input.Raw(row);
    if (!raw) return std::nullopt;
    const auto value = Forward_Sensor_Value(*m.load_sensors, m.load_sensor, *raw);
    if (!value) return std::nullopt;
    return Round_Even(*value, 2);
}

std::optional<Map_Cell> Locate_Row(const Map_Locator& m, const double* row) {
    if (m.rpm_points.empty() || m.load_points.empty()) return std::nullopt;
    const auto rpm = Row_Rpm(m, row);
    const auto load = Row_Load(m, row);
    if (!rpm || !load) return std::nullopt;
    return Map_Cell{Locate_On_Axis(m.rpm_points, *rpm), Locate_On_Axis(m.load_points, *load)};
}

} // namespace quorlen
