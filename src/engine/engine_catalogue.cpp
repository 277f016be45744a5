#include "engine/engine_catalogue.h"

#include "core/run_error.h"
#include "core/text.h"
#include "image/scaling.h"
#include "sensors/sensor_defs.h"

#include <cctype>
#include <cmath>
#include <limits>

namespace quorlen {

namespace {

const std::string& Empty() {
    static const std::string empty;
    return empty;
}

std::string Item_Text(const Engine_Config_Table& tab, int index) {
    const int row = Engine_Config_Row(index);
    auto c = [&](int column) -> const std::string& { return tab.Cell(row, column); };
    return std::to_string(row) + ". " + c(Eng_Car_Example) + " " + c(Eng_Crank_Sensor) + "  " +
           c(Eng_Cam_Sensor) + "  " + c(Eng_Cam2_Sensor) + "  " + c(Eng_TDC_Sensor) + "  " +
           c(Eng_Firing_Order) + "  " + c(Eng_Cylinders);
}

} // namespace

const std::string& Engine_Config_Table::At(int row, int column) const {
    if (!Has_Row(row) || column < 0 || column >= Engine_Config_Columns)
        throw errors::Subscript_Out_Of_Range();
    return cells[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
}

const std::string& Engine_Config_Table::Cell(int row, int column) const {
    if (!Has_Row(row) || column < 0 || column >= Engine_Config_Columns) return Empty();
    return cells[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
}

void Fill_Engine_Config_Row(Engine_Config_Table& tab, int row, std::string_view value,
                            std::string* debug_txt) {
    if (!Engine_Config_Table::Has_Row(row)) throw errors::Subscript_Out_Of_Range();
    // The reader closes the last field itself, so a line without a final tab still reads.
    const std::string entry = std::string(value) + "\r\n";
    auto& cells = tab.cells[static_cast<std::size_t>(row)];
    for (int column = 0; column < Engine_Config_Columns - 1; ++column)
        cells[static_cast<std::size_t>(column)] = Extract_Data(entry, column + 1, debug_txt);
    cells[Engine_Config_Columns - 1].clear();
}

void Load_Engine_Config_Tab(Engine_Config_Table& tab, const Ini_File& ini, std::string* debug_txt) {
    tab = Engine_Config_Table{};
    // One read of the file for all the lines: it may be long.
    const std::vector<std::string> lines = ini.Snapshot().Read_List("Engine_Config");
    for (std::size_t line = 0; line < lines.size() && line < Engine_Config_Lines; ++line)
        Fill_Engine_Config_Row(tab, static_cast<int>(line), lines[line], debug_txt);
}

std::string Engine_Combo_Item(const Engine_Config_Table& tab, int index) {
    if (index < 0 || index >= Engine_Combo_Count) throw errors::Subscript_Out_Of_Range();
    if (index < Engine_Layouts) return Item_Text(tab, index);
    return std::to_string(index + 1) + "." + " Not supported ";
}

std::vector<std::string> Engine_Combo_Items(const Engine_Config_Table& tab) {
    std::vector<std::string> items;
    items.reserve(Engine_Combo_Count);
    for (int i = 0; i < Engine_Combo_Count; ++i)
        items.push_back(Engine_Combo_Item(tab, i));
    return items;
}

std::string Car_Example_Caption(std::string_view car_example) {
    std::string text(car_example);
    for (std::size_t p = text.find("EX:"); p != std::string::npos; p = text.find("EX:", p))
        text.erase(p, 3);
    return text;
}

double Config_Tooth_Degrees_Of(const Engine_Config_Table& tab, int row) {
    return Val(tab.Cell(row, Eng_Tooth_Degrees));
}

bool Sequential_Fuel_Of(const Engine_Config_Table& tab, int row) {
    return tab.Cell(row, Eng_Fuel_System).find("Semiseq") == std::string::npos;
}

int Recommended_Fuel_Teeth(double tooth_degrees, bool sequential_fuel) {
    if (tooth_degrees == 0) throw Run_Error(11, "Division by zero");
    double teeth = 2 * 51 / tooth_degrees;
    if (sequential_fuel) teeth += 360 / tooth_degrees;
    const double whole = Round_Even_Whole(teeth);
    if (!std::isfinite(whole) || whole < std::numeric_limits<std::int16_t>::min() ||
        whole > std::numeric_limits<std::int16_t>::max())
        throw errors::Overflow();
    return static_cast<int>(whole);
}

std::string Recommended_Teeth_Text(int teeth) {
    return "Recomended: " + std::to_string(teeth) + " teeth";
}

bool Forbidden_Tooth(const Engine_Config_Table& tab, int row, int teeth) {
    return tab.Cell(row, Eng_Forbidden_Teeth).find("," + std::to_string(teeth) + ",") != std::string::npos;
}

std::optional<Crank_Wheel> Crank_Wheel_Of(std::string_view crank_sensor) {
    std::size_t p = 0;
    while (p < crank_sensor.size() && !std::isdigit(static_cast<unsigned char>(crank_sensor[p])))
        ++p;
    if (p == crank_sensor.size()) return std::nullopt;
    auto number = [&](std::size_t& at) {
        int n = 0;
        while (at < crank_sensor.size() && std::isdigit(static_cast<unsigned char>(crank_sensor[at])) &&
               n < 10000)
            n = n * 10 + (crank_sensor[at++] - '0');
        return n;
    };
    Crank_Wheel wheel;
    wheel.on_distributor = crank_sensor.rfind("Dist", 0) == 0;
    wheel.positions = number(p);
    if (wheel.positions <= 0) return std::nullopt;
    while (p + 1 < crank_sensor.size() && crank_sensor[p] == '-' &&
           std::isdigit(static_cast<unsigned char>(crank_sensor[p + 1]))) {
        ++p;
        wheel.gaps.push_back(number(p));
    }
    return wheel;
}

Engine_Layout Engine_Layout_Of(const Engine_Config_Table& tab, int row) {
    Engine_Layout l;
    l.row = row;
    auto c = [&](int column) { return tab.Cell(row, column); };
    l.crank_sensor = c(Eng_Crank_Sensor);
    l.cam_sensor = c(Eng_Cam_Sensor);
    l.cam2_sensor = c(Eng_Cam2_Sensor);
    l.tdc_sensor = c(Eng_TDC_Sensor);
    l.firing_order = c(Eng_Firing_Order);
    l.ignition_type = c(Eng_Ignition_Type);
    l.fuel_system = c(Eng_Fuel_System);
    l.car_example = c(Eng_Car_Example);
    l.cylinders = c(Eng_Cylinders);
    l.cylinder_notes = c(Eng_Cylinder_Notes);
    l.forbidden_teeth = c(Eng_Forbidden_Teeth);
    l.ign_firing_order = c(Eng_Ign_Firing_Order);
    l.crank_angle_example = c(Eng_Crank_Angle_Example);
    l.needed_fw = c(Eng_Needed_FW);
    l.fuel_firing_order = c(Eng_Fuel_Firing_Order);
    l.ign_channel_to_cyl = c(Eng_Ign_Channel_To_Cyl);
    l.fuel_channel_to_cyl = c(Eng_Fuel_Channel_To_Cyl);
    l.tooth_degrees = Config_Tooth_Degrees_Of(tab, row);
    l.sequential_fuel = Sequential_Fuel_Of(tab, row);
    return l;
}

void Take_Engine_Row(Engine_Config_State& engine, int row) {
    engine.Config_Tooth_Degrees = Config_Tooth_Degrees_Of(engine.Engine_Config_Tab, row);
    engine.Sequential_Fuel = Sequential_Fuel_Of(engine.Engine_Config_Tab, row);
    if (engine.Sequential_Fuel) {
        engine.Main_Fuel_label = "Sequential fuel";
        engine.Setup_Fuel_label = "Sequential fuel";
    } else {
        engine.Main_Fuel_label = "NOTICE!\r\nSemi sequential fuel";
        engine.Setup_Fuel_label = "Semi sequential fuel";
    }
}

} // namespace quorlen
