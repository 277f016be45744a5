#pragma once
// The engine layouts the box supports: crank and cam sensor arrangements, ignition and
// injection schemes, firing orders. They are not code but rows of the configuration file
// (the Engine_Config lines), read into Engine_Config_Tab. Image byte 6 names the layout:
// image value e is list entry e and table row e + 1. Row 0 is the file's heading.
//
// This header is the whole read side: the table, what each column means, the tooth angle,
// sequential fuel and the recommended number of teeth. The frame that shows a layout and the
// selection guide are in engine/engine_config_frame.h.

#include "core/ini_file.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

// The image byte that names the layout.
inline constexpr int Engine_Layout_Address = 6;
// Rows 0 to 50 by columns 0 to 23. Column 23 is never filled.
inline constexpr int Engine_Config_Rows = 51;
inline constexpr int Engine_Config_Columns = 24;
// The reader stops after this many Engine_Config lines: line k fills row k - 1.
inline constexpr int Engine_Config_Lines = 49;
// List entries 1 to 49 are layouts; the list goes on to 256 so that any byte has an item.
inline constexpr int Engine_Layouts = 49;
inline constexpr int Engine_Combo_Count = 256;
// The rows the selection guide works on; rows 36 to 49 are reached from the list only.
inline constexpr int Guide_First_Row = 2;
inline constexpr int Guide_Last_Row = 35;

// What the columns of a row mean. 0, 9, 12, 13 and 15 are read and used by nothing.
enum Engine_Column : int {
    Eng_Crank_Sensor = 1,
    Eng_Cam_Sensor = 2,
    Eng_Cam2_Sensor = 3,
    Eng_TDC_Sensor = 4,
    Eng_Firing_Order = 5,
    Eng_Ignition_Type = 6,
    Eng_Fuel_System = 7, // "Semiseq" somewhere in it: semi-sequential injection
    Eng_Car_Example = 8, // may begin with "EX:"
    Eng_Cylinders = 10,
    Eng_Cylinder_Notes = 11,
    Eng_Forbidden_Teeth = 14, // ",0,35,": a tooth count v is forbidden when ",v," is in it
    Eng_Ign_Firing_Order = 16,
    Eng_Crank_Angle_Example = 17, // degrees
    Eng_Tooth_Degrees = 18,       // degrees of crank per tooth, a number
    Eng_Needed_FW = 19,           // ">3.033", "=2.702", "2.027-2.045": for the user to read
    Eng_Fuel_Firing_Order = 20,
    Eng_Ign_Channel_To_Cyl = 21, // "A-1:4 B-3:2": channel A drives cylinders 1 and 4
    Eng_Fuel_Channel_To_Cyl = 22
};

struct Engine_Config_Table {
    std::array<std::array<std::string, Engine_Config_Columns>, Engine_Config_Rows> cells{};

    static bool Has_Row(int row) { return row >= 0 && row < Engine_Config_Rows; }
    // Throws Subscript out of range outside the table, as a row past 50 does: image values
    // from 50 up have an item in the list but no row.
    const std::string& At(int row, int column) const;
    // The same, with an empty text outside the table.
    const std::string& Cell(int row, int column) const;
};

// The row of an image value.
constexpr int Engine_Config_Row(int image_value) {
    return image_value + 1;
}

// One Engine_Config value into `row`: tab-separated fields 1 to 23 into columns 0 to 22.
// A value with fewer fields reads its first field into the missing columns (the field
// reader starts again at the front of the entry when asked past its end).
void Fill_Engine_Config_Row(Engine_Config_Table& tab, int row, std::string_view value,
                            std::string* debug_txt = nullptr);
// The whole catalogue from the configuration file. Missing lines leave their rows empty.
void Load_Engine_Config_Tab(Engine_Config_Table& tab, const Ini_File& ini, std::string* debug_txt = nullptr);

// Item `index` (0 to 255) of the layout list: "1. EX: Generic ... 4 cylinders" for the
// rows, "50. Not supported " past them.
std::string Engine_Combo_Item(const Engine_Config_Table& tab, int index);
std::vector<std::string> Engine_Combo_Items(const Engine_Config_Table& tab);

// Column 8 without any "EX:", as frame captions show the car.
std::string Car_Example_Caption(std::string_view car_example);

// Degrees of crank per tooth of a row (the leading number of column 18; 0 when there is
// none, and for a row outside the table).
double Config_Tooth_Degrees_Of(const Engine_Config_Table& tab, int row);
// True unless column 7 contains "Semiseq".
bool Sequential_Fuel_Of(const Engine_Config_Table& tab, int row);

// The crank teeth recommended between the missing pulse and the fuel start: 2 x 51 / D +
// 360 / D with sequential fuel, 2 x 51 / D without, rounded to a 16-bit integer with a tie
// to the even one. Throws Division by zero for D = 0 and Overflow past 16 bits.
int Recommended_Fuel_Teeth(double tooth_degrees, bool sequential_fuel);
// "Recomended: N teeth"
std::string Recommended_Teeth_Text(int teeth);
// Whether a tooth count stands in the row's list of forbidden teeth.
bool Forbidden_Tooth(const Engine_Config_Table& tab, int row, int teeth);

// The shape of a crank wheel, read from the crank sensor text of a row: "Crank 36-1" has 36
// tooth positions and one gap of one missing tooth, "Crank 36-2-2-2" three gaps of two,
// "Crank 36 even" none, "Dist 24 teeth" 24 teeth turning at cam speed. Where around the
// wheel the gaps stand is not part of the catalogue.
struct Crank_Wheel {
    int positions = 0;     // teeth the wheel would have without gaps
    std::vector<int> gaps; // missing teeth of each gap
    bool on_distributor = false;
};
// nullopt when the text names no tooth count.
std::optional<Crank_Wheel> Crank_Wheel_Of(std::string_view crank_sensor);

// The fields of one row as the engine frame shows them.
struct Engine_Layout {
    int row = 0;
    std::string crank_sensor, cam_sensor, cam2_sensor, tdc_sensor, firing_order;
    std::string ignition_type, fuel_system, car_example, cylinders, cylinder_notes;
    std::string forbidden_teeth, ign_firing_order, crank_angle_example, needed_fw;
    std::string fuel_firing_order, ign_channel_to_cyl, fuel_channel_to_cyl;
    double tooth_degrees = 0;
    bool sequential_fuel = true;
};
// Every field empty for a row outside the table.
Engine_Layout Engine_Layout_Of(const Engine_Config_Table& tab, int row);

// What the rest of the program reads of the chosen layout.
struct Engine_Config_State {
    Engine_Config_Table Engine_Config_Tab;
    double Config_Tooth_Degrees = 0;
    bool Sequential_Fuel = true;
    // Set while the frame's lists are filled from a row, so their own handlers stay still.
    bool Engine_Config_Busy = false;
    // The row the selection guide has arrived at.
    int Engine_Config_New_Row = 0;
    // The fuel labels of the main window and of the auto setup form.
    std::string Main_Fuel_label;
    std::string Setup_Fuel_label;
};

// Config_Tooth_Degrees, Sequential_Fuel and the two fuel labels from a row. A row without
// "Semiseq" counts as sequential, an empty one too.
void Take_Engine_Row(Engine_Config_State& engine, int row);

} // namespace quorlen
