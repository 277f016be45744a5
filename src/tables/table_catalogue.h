#pragma once
// Where each map lies in the settings image and how a byte becomes the number a tuner reads.
//
// The two main maps are blocks of one build: at Base the number of RPM columns C, then C RPM
// steps, then the number of load rows R, then R load steps, then the cells row after row. An
// axis byte is a step, not a position: the axis value is the running sum of the steps,
// saturating at 255. The size is chosen by bit fields of byte 175; a change of size moves
// every later byte of the block and converts nothing.

#include "image/settings_image.h"
#include "sensors/sensor_defs.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace quorlen {

enum class Table_Id {
    Fuel_3D,
    Ignition_3D,
    Ign_Comp1,
    Fuel2_Map,
    Fuel2_Rpm,
    Afr,
    Pwm1,
    Pwm2,
    Pwm3,
    Pwm4,
    Pwm2_Fuel
};

inline constexpr int Size_Byte = 175;
inline constexpr int Rpm_Selection = 99; // a load selection that means engine speed
inline constexpr double Rpm_Per_Step = 62.5;

struct Map_Size {
    int cols; // RPM columns
    int rows; // load rows
    const char* item;
};

// FUEL_3D_MAP_Size_Combo by byte 175 bits 0-2, Ign_3D_MAP_Size_Combo by bits 6-7.
std::span<const Map_Size> Fuel_Size_Variants();
std::span<const Map_Size> Ign_Size_Variants();
int Fuel_Size_Index(const Settings_Image& image);
int Ign_Size_Index(const Settings_Image& image);
// FUEL_2nd_MAP_Function_Combo: byte 175 bits 3-5. 0 added time, 1 percentage, 2 subtracted time.
int Fuel_2nd_Function(const Settings_Image& image);
// Fuel_2nd_comp_scale_option: byte 5 bit 6 picks the 0-500 % scale of the percentage.
bool Fuel_2nd_Scale_500(const Settings_Image& image);

struct Map_Block {
    int base = 0;
    int cols = 0;
    int rows = 0;
    int Rpm_Step(int c) const { return base + c; }
    int Rows_Byte() const { return base + cols + 1; }
    int Load_Step(int r) const { return base + cols + 1 + r; }
    int Start() const { return base + cols + rows + 2; }
    int Cell(int r, int c) const { return Start() + (r - 1) * cols + (c - 1); }
    int End() const { return Start() + rows * cols - 1; }
};

// --- cell coding ------------------------------------------------------------------------

// Ignition: b * 0.2 degrees, "0.0".
double Ign_Cell_Value(std::uint8_t b);
std::string Ign_Cell_Text(std::uint8_t b);
// Fuel in two scales: 0 is 0, below 25 the finer b * 0.06 + 1 ms ("0.00"), from 25 b * 0.1 ms
// ("0.0").
double Fuel_Cell_Value(std::uint8_t b);
std::string Fuel_Cell_Text(std::uint8_t b);

// An axis value as its header text: RPM as sum * 62.5, load through the sensor.
std::string Rpm_Axis_Text(int running_sum);

// --- load selections ------------------------------------------------------------------------

// Which input each table's axis runs on: 1 to 12 for an analogue input, Rpm_Selection for
// engine speed. The box reads both main maps on one load input.
struct Load_Selections {
    int IgnLoadSensor = 3;
    int Ign2ndLoadSensor = Rpm_Selection;
    int Ign3rdLoadSensor = Rpm_Selection;
    int Fuel3DLoadSensor = 3;
    int Fuel2ndLoadSensor = Rpm_Selection;
    int Fuel3rdLoadSensor = Rpm_Selection;
    int PwmLoadSensor = Rpm_Selection;
    int LambdaLoadSensor = 3;
    int LambdaSensor = 1; // the input of the lambda sensor itself
};

// Where the image keeps the selections (see the definition for the byte of each).
Load_Selections Read_Load_Selections(const Settings_Image& image);

// The short name of a selection as the tables' combos list it: "Throttle", "MAP", "RPM"...
std::string Load_Input_Name(int selection);

// The sensor number behind a selection (through the channel table and An_Sel), or -1 for
// engine speed and for an input that is not there.
int Sensor_For_Selection(const Settings_Image& image, const Sensor_State& sensors, int selection);

// --- one-dimensional tables -------------------------------------------------------------------

struct One_D_Table {
    Table_Id id;
    const char* caption;
    int points;
};

// Ign_Comp1 at 191, Fuel2_Map at 100, Fuel2_Rpm at 133, Afr at 154 (17 points), PWM 1 to 4 at
// 896, 917, 938, 959; nullopt for the main maps and the PWM2 extra fuel block.
std::optional<One_D_Table> One_D(Table_Id id);
int One_D_Base(Table_Id id);

inline constexpr int Pwm_Fuel_Points = 5;

// The name of each table for the command line ("fuel", "ign-comp1", "pwm2-fuel"...).
std::optional<Table_Id> Table_By_Name(std::string_view name);
std::string_view Table_Name(Table_Id id);

} // namespace quorlen
