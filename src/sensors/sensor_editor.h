#pragma once
// The sensor viewer without its window: the fields a definition is typed into, the 33 points
// its grid shows, the lines a definition is stored as (a tuning sensor in the configuration
// file, a log sensor among the log's sensors), the tools that edit selected points, the
// tester, and the two-point linear sensor that a throttle calibration makes.

#include "core/debug_log.h"
#include "core/ini_file.h"
#include "core/program_state.h"
#include "core/user_dialogs.h"
#include "sensors/sensor_defs.h"

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quorlen {

// Sensor_Type, by option index.
enum class Sensor_Kind { Linear = 0, Table = 1, Linear_2C = 2 };

inline constexpr const char* No_2c_Tuning_Text = "Quorlen does not support 2c sensors for tuning";
inline constexpr const char* No_Sensor_Name_Text = "The sensor needs a name before it can be saved.";
inline constexpr const char* Log_Sensors_Full_Text = "There is no room for more log sensors.";

// How the "In" column of Sensor_grid shows the raw reading of each point.
enum class In_Display { Volts, Percent, Raw };

struct Sensor_Editor {
    std::string txt_SensorName = "MySensor";
    std::string txt_SensorUnit;
    std::string txt_SensorDecimals = "2";
    std::string txt_SensorInUnit = "bin";
    std::string txt_SensorGain = "1";
    std::string txt_SensorOffset = "0";
    std::string txt_SensorMin = "0";
    std::string txt_SensorMax = "255";
    Sensor_Kind Sensor_Type = Sensor_Kind::Linear;
    bool chk_Tuning = true;
    bool chk_Log = false;
    // The out column: point i (1..33) is the value at raw 8 x (i - 1). Index 0 is unused.
    std::array<double, Sensor_Points + 1> points{};
    In_Display in_display = In_Display::Volts;

    std::string set_table_text = "0";
    std::string scale_table_text = "100";
    // The tester: Text1 the physical value, Text2 the input in volts.
    std::string Text1, Text2 = "2.5";
    // The two pairs of a two-point sensor: volts and value at the low end, then at the high end.
    std::array<std::string, 4> txt_Create_Sens{};
};

// The decimals typed, as the points are rounded to them (0 to 4; text that is no number is 0).
int Editor_Decimals(const Sensor_Editor& e);

// The points follow the typed gain, offset, range and decimals of a linear sensor (a 2C one
// takes raw 128 and above as negative); a table sensor keeps the points it has.
void Update_Grid(Sensor_Editor& e);

// Sensor_grid's texts: the heading of column 1..3 ("[no]", "In [V]", "Out [bar]"), and of
// point i the row number, the input in the chosen display, and the value in its decimals.
// The chart takes the same numbers, with the units in brackets ("[V]", "[bar]", or none).
std::string Grid_Heading(const Sensor_Editor& e, int col);
std::string In_Unit_Text(const Sensor_Editor& e);
std::string Out_Unit_Text(const Sensor_Editor& e);
double Grid_In_Value(const Sensor_Editor& e, int i);
std::string Grid_In_Text(const Sensor_Editor& e, int i);
std::string Grid_Out_Text(const Sensor_Editor& e, int i);
// A value typed into the out column of point i.
void Set_Point_Text(Sensor_Editor& e, int i, std::string_view text);

// --- loading a definition for viewing --------------------------------------------------------

void View_Tuning_Sensor(Sensor_Editor& e, const Sensor_Table& table, int s);
void View_Log_Sensor(Sensor_Editor& e, const Log_Sensor_Row& row);

// --- the lines a definition is stored as ------------------------------------------------------

// The value of a "Sens_Def" line: nine fields for a linear sensor, 38 for a table, each closed
// by a tab. A 2C sensor has none (the tuning sensors can't hold one).
std::optional<std::string> Tuning_Sensor_Line(const Sensor_Editor& e);
// The value of a "Log_Sens_Def" line: eight fields, 37 for a table.
std::string Log_Sensor_Line(const Sensor_Editor& e);

// A log sensor goes to the row of the same name, else to the first free row. Returns the row,
// or -1 when all rows are taken.
int Store_Log_Sensor(std::span<Log_Sensor_Row> rows, int& count, const Log_Sensor_Row& row);

struct Sensor_Save_Context {
    Sensor_Editor& editor;
    Sensor_State& sensors;
    Settings_Image& image;
    Ini_File& ini;
    Form_Texts& texts;
    Debug_Log& log;
    User_Dialogs& dialogs;
};

struct Sensor_Save_Hooks {
    // After a tuning sensor is saved the configuration is read again and the inputs take
    // their sensors from the image; then every view that shows a sensor follows.
    std::function<void()> Sensors_Changed;
    // The log window's sensors take the row; -1 when they have no room.
    std::function<int(const Log_Sensor_Row& row)> Save_Log_Sensor;
};

// The definition becomes the "Sens_Def" entry of its name, replacing that entry in place so
// every other sensor keeps its number, or a new entry after the last. Returns the sensor
// number it has after the reload, or -1 when nothing was saved.
int Save_New_Tuning_Sensor(Sensor_Save_Context& ctx, const Sensor_Save_Hooks& hooks);
// The definition among the log sensors. Returns the row, or -1.
int Save_New_Log_Sensor(Sensor_Save_Context& ctx, const Sensor_Save_Hooks& hooks);
// cmd_SaveSensor: a tuning sensor when chk_Tuning is ticked, a log sensor when chk_Log is;
// returns the tuning sensor's number, or -1.
int cmd_SaveSensor(Sensor_Save_Context& ctx, const Sensor_Save_Hooks& hooks);

// --- the tools on selected points (first and last in either order, 1..33) -----------------------

void plus(Sensor_Editor& e, int first, int last);
void minus(Sensor_Editor& e, int first, int last);
// Adds (takes away) one unit more at each point after the first of the selection.
void steep(Sensor_Editor& e, int first, int last);
void flat(Sensor_Editor& e, int first, int last);
void scale_table(Sensor_Editor& e, int first, int last);
void set_table(Sensor_Editor& e, int first, int last);

// --- the tester -----------------------------------------------------------------------------

// "Calculate out signal": Text2 in volts to Text1 through sensor s; empty without a value.
void cmd_Frw_Calc(Sensor_Editor& e, const Sensor_Table& table, int s);
// "Calculate in signal": Text1 to Text2 in volts. A fault of the arithmetic (a zero gain)
// reaches the caller's guard.
void cmd_Rev_Calc(Sensor_Editor& e, const Sensor_Table& table, int s);

// --- a two-point sensor -------------------------------------------------------------------------

// Volts on the input as the raw reading the box takes (0..255).
int Volts_To_Raw(double volts);
std::string Raw_To_Volts_Text(int raw);

// cmd_EditSensor, "Create sensor": a linear sensor through the two pairs of txt_Create_Sens,
// clamped to the raw range between them. False, with nothing changed, when both pairs lie
// on the same raw reading.
bool cmd_EditSensor(Sensor_Editor& e);

} // namespace quorlen
