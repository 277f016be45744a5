#pragma once
// Tuning sensors: the rules that turn a raw 8-bit reading of an analogue input into bar,
// degrees or volts, as the configuration file defines them, and the sensor chosen for each
// of the twelve inputs. A sensor number is the place of its Sens_Def entry in the file
// (first entry = 1; row 0 is built in), and that number is what the settings image stores.

#include "core/debug_log.h"
#include "core/ini_file.h"
#include "core/proc_guard.h"
#include "core/program_state.h"
#include "image/settings_image.h"

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

inline constexpr int Sensor_Points = 33;
inline constexpr int Analog_Inputs = 12;
inline constexpr int An_Sel_Base = 883; // input i is image byte 883 + i
inline constexpr int Missing_Sensor_Fallback = 7;

// Cells of Sens_Def_Tab.
enum Sens_Cell {
    Sens_Name = 0,
    Sens_Unit = 1,
    Sens_Type = 2,
    Sens_Gain = 3,
    Sens_Offset = 4,
    Sens_Min = 5,
    Sens_Max = 6,
    Sens_In_Unit = 7
};

struct Sensor_Table {
    // Eight text cells a row, as the configuration has them.
    std::vector<std::array<std::string, 8>> Sens_Def_Tab;
    // Cell 0 the number of decimals, cells 1 to 33 the physical value at raw 8 x (i - 1).
    std::vector<std::array<double, 34>> Sens_Point_Tab;
    // The numbers of a Linear row, scanned once at load.
    struct Linear_Numbers {
        double gain = 0, offset = 0, min = 0, max = 0;
    };
    std::vector<Linear_Numbers> Linear;
    int Sens_Count = 0;

    bool Has(int s) const { return s >= 0 && s < Sens_Count; }
    const std::string& Type(int s) const { return Sens_Def_Tab[static_cast<std::size_t>(s)][Sens_Type]; }
    const std::string& Name(int s) const { return Sens_Def_Tab[static_cast<std::size_t>(s)][Sens_Name]; }
    const std::string& Unit(int s) const { return Sens_Def_Tab[static_cast<std::size_t>(s)][Sens_Unit]; }
    int Decimals(int s) const { return static_cast<int>(Sens_Point_Tab[static_cast<std::size_t>(s)][0]); }
};

// The twelve analogue inputs and their selection lists.
struct Analog_Selection {
    std::array<int, Analog_Inputs + 1> An_Sel{}; // 1..12
    // Row selected in selection list i (1..12), -1 when the list has no such row.
    std::array<int, Analog_Inputs + 1> An_Combo_Index{};
    std::vector<std::string> Selection_List;   // names of rows 0 .. Sens_Count - 1, for all 12
    std::vector<std::string> Sensor_View_List; // "name, type" of each row
    bool Analog_Init_Busy = false;
};

struct Sensor_State {
    Sensor_Table table;
    Analog_Selection inputs;
    bool is_linear_sensor = false;

    // The sensor number chosen for input 1..12, or -1 for another input.
    int Sensor_Of_Input(int input) const {
        return input >= 1 && input <= Analog_Inputs ? inputs.An_Sel[static_cast<std::size_t>(input)] : -1;
    }
};

// "Analog 1, AFR" ... "Analog 12"; index 0 is empty.
std::string_view Analog_Input_Label(int input);

// Field n (1-based) of a tab-separated entry. Only a tab moves on to the next field; ";" and
// a carriage return only end the field being read. Asking past the last field starts again
// at the front of the entry (an entry with fewer fields than asked reads its name there).
// When a field has no end at all, "Did not find data no:" n and CR LF go to `debug_txt`
// and the result is empty.
void Extract_Data(std::string_view text, int n, std::string& result, std::string* debug_txt = nullptr);
std::string Extract_Data(std::string_view text, int n, std::string* debug_txt = nullptr);

// The sensor table without any entry: row 0 "<not used>" alone.
void Reset_Sensor_Table(Sensor_Table& table);

// Appends one Sens_Def value as the next sensor row. A row of an unknown type is blank but
// still takes its number. A decimals field that cannot be a 16-bit number is reported on
// `guard` and read as 0.
void Add_Sensor_Definition(Sensor_Table& table, std::string_view value, Proc_Guard& guard,
                           std::string* debug_txt = nullptr);

// The Sens_Def entries of the configuration, then the selection lists. Part of Init_ini_file.
void Load_Sensor_Definitions(Sensor_State& sensors, const Ini_File& ini, Proc_Guard& guard,
                             std::string* debug_txt = nullptr);
// The same from a snapshot the caller took for a load of its own.
void Load_Sensor_Definitions(Sensor_State& sensors, const Ini_Snapshot& ini, Proc_Guard& guard,
                             std::string* debug_txt = nullptr);

// The physical value of raw reading `raw` on sensor `s`, rounded to its decimals; nullopt
// for no sensor (-1 or not below Sens_Count). The caller's raw is clamped in place to what
// the sensor accepts. A row that is neither Linear nor Tab (row 0 among them) gives 0.
std::optional<double> Forward_Sensor_Calc(const Sensor_Table& table, int s, double& raw,
                                          bool* is_linear_sensor = nullptr);
// The same without the clamp on the caller's variable.
std::optional<double> Forward_Sensor_Value(const Sensor_Table& table, int s, double raw);
// The value before its rounding to the sensor's decimals, for a ratio of two readings that
// the rounding would blur (an AFR sensor shows one decimal, 0.7 % of a reading).
std::optional<double> Forward_Sensor_Exact(const Sensor_Table& table, int s, double raw);

// The raw reading of physical value `v`: the arithmetic alone, with no effect on any screen.
// nullopt for -1 and for a row that is neither Linear nor Tab. A value outside a Tab table,
// or equal to its last point, finds no segment and gives 0. A zero gain is a division fault
// (thrown, for the caller's guard), as is a sensor number past the table.
std::optional<double> Reversed_Sensor_Value(const Sensor_Table& table, int s, double v);

// Reversed_Sensor_Value with what the sensor screen does besides: is_linear_sensor follows
// the row's type, and `show_frame_Linear` is told whether the Linear panel is to be seen.
std::optional<double> Reversed_Sensor_Calc(Sensor_State& sensors, int s, double v,
                                           const std::function<void(bool visible)>& show_frame_Linear = {});

// --- log sensors ------------------------------------------------------------------------

inline constexpr int Log_Sensor_Rows = 101;
inline constexpr int Log_Sensor_Cells = 37;
using Log_Sensor_Row = std::array<std::string, Log_Sensor_Cells>;

// One Log_Sens_Def value as its row: Linear and Linear2c fill cells 0 to 7, Tab cells 0 to
// 36; the in-signal unit is not kept. Commas in numbers become points.
Log_Sensor_Row Parse_Log_Sens_Def(std::string_view value);

// The physical value of raw reading `raw` on log channel 1..75, through the row that
// `channel_rows` (cell 0 of each channel of the log signal table) names; nullopt for no
// sensor (-1) or an unknown type. Status bytes take their byte from `raw`.
std::optional<double> Forward_Log_Sensor_Calc(std::span<const Log_Sensor_Row> rows,
                                              std::span<const int> channel_rows, int channel, double raw);
// The same for a status byte kept as text in the log ("3Fh"): "h" is dropped and the first
// two characters are the hex digits. Other types read the text as a number.
std::optional<double> Forward_Log_Sensor_Calc(std::span<const Log_Sensor_Row> rows,
                                              std::span<const int> channel_rows, int channel,
                                              std::string_view raw_text);

// --- the twelve inputs ------------------------------------------------------------------

struct Analog_Context {
    Sensor_State& sensors;
    Settings_Image& image;
    Ini_File& ini;
    Form_Texts& texts;
    Debug_Log& log;
};

struct Analog_Hooks {
    std::function<void()> Update_Tabs;
    std::function<void()> Update_All;
    std::function<void()> Update_scroll_change;
    // Parameters measured on the input keep their physical value under the new sensor; runs
    // before the others.
    std::function<void(int input)> Keep_Physical_sensorvalue;
};

// An_Sel from the keys "an_sel1" to "an_sel12", unchecked.
void Init_Analog_from_Inifile(Analog_Context& ctx);

// An_Sel from image bytes 884 to 895. A number past the sensor table selects sensor 7 and,
// once a pass, says "Selected analog sensor missing." in the debug text and
// "< Analog sensor missing >" on the status line; the image keeps its byte.
void Init_Analog_from_CardByte(Analog_Context& ctx);

// The user picked row `list_index` for input i (1..12).
void AN_Combo_Click(Analog_Context& ctx, int input, int list_index, const Analog_Hooks& hooks);

} // namespace quorlen
