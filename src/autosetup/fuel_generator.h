#pragma once
// The fuel map generator: from a handful of figures about the engine, a first fuel map that
// will run it, and a word on whether the injectors can feed the power the air can give.
//
// The figures stay texts, as the boxes of the form hold them: an empty box is not the same
// as a box holding 0 (an empty lambda leaves the fuel figures as they were). Each is read by
// turning commas into points and taking the leading number; text without one is 0.

#include "core/debug_log.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

// The five points of the curve of volumetric efficiency over engine speed: idle, one
// between, maximal torque, maximal power and the top speed.
inline constexpr int Speed_Points = 5;
inline constexpr int Torque_Point = 2;
inline constexpr int Power_Point = 3;
inline constexpr int Top_Point = 4;

enum Fuel_Type : int { Petrol = 0, E85 = 1 };

struct Auto_Fuel_Inputs {
    std::string FuelInjectorSize_txt = "300"; // cc/min at 3 bar
    std::string NumberOfInjectors_txt = "4";
    std::string Cylinder_volume_txt = "2300"; // cc, all cylinders
    std::string FuelP_txt = "3";              // bar
    std::string InjectorOffset_txt = "1.2";   // ms
    std::string max_MAP_txt = "1.0";          // bar
    std::string idle_MAP_txt = "0.2";         // bar
    std::string lambda_txt = "0.85";
    int FuelType_option = Petrol;
    std::array<std::string, Speed_Points> MaxRPM_txt{"800", "2000", "4000", "6500", "7000"};
    // A production engine's breathing: poor at idle, best at peak torque; 85 % at 6500 rpm
    // makes the default 2.3 litres the 180 hp the guide's example speaks of.
    std::array<std::string, Speed_Points> Volume_Efficiency_txt{"55", "80", "95", "85", "80"};
};

// The figures kept on the form between calculations.
struct Auto_Fuel_Figures {
    int Fuel_hp = 0;        // power the fuel flow feeds at full duty
    int Fuel_hp_at_rpm = 0; // the same, with the injector's offset taking its share of the cycle
    int Air_hp = 0;         // power the air flow gives at maximal power
    int Air_torque_hp = 0;  // air flow figure at maximal torque
    double Max_Fuel_ms = 0; // pulse needed at maximal MAP, without the offset
    double Max_Pulse_ms = 0;
    int Max_Rev = 0; // speed at which the needed pulse fills the cycle
};

// The capacity labels, each a caption and its value as the form pairs them.
struct Auto_Fuel_Labels {
    std::array<std::string, 2> Air_hp_label;
    std::array<std::string, 2> Fuel_hp_label;
    std::array<std::string, 4> Max_fuel_lable;
    std::array<std::string, 2> Under_fuel_lable;
};

struct Auto_Fuel {
    Auto_Fuel_Inputs in;
    Auto_Fuel_Figures fig;
    Auto_Fuel_Labels labels;
    // The injection the fuel figures were last worked out for.
    bool Sequential_Fuel = true;
};

// The air figures from volume, maximal MAP and the curve, then the labels. Does nothing to
// Air_hp beyond clearing it while the maximal MAP box is empty.
void Update_Air_hp_label(Auto_Fuel& form, Debug_Log& log);
// The fuel figures from the injectors, pressure, lambda, fuel and offset, for sequential or
// semi-sequential injection (two pulses a cycle), then the labels. Needs a lambda.
void Update_Fuel_hp_label(Auto_Fuel& form, bool Sequential_Fuel, Debug_Log& log);
// The labels from the figures: capacities, the pulse at maximal MAP, and what is short.
void Show_Setup_analyzes(Auto_Fuel& form, Debug_Log& log);

// The header texts of a main map's grid: the load of each row, the speed of each column.
struct Map_Axes {
    std::vector<std::string> load;
    std::vector<std::string> rpm;
};

// The cells of the fuel map (row after row, rows by the load axis, columns by the speed
// axis) for the form's figures, which must be fresh: the load curve at peak torque in every
// column, then each column scaled by the volumetric efficiency at its speed. Throws Run_Error
// (a Generator_Fault) where a division by zero would leave the map half made.
std::vector<std::uint8_t> Autofuel_Cells(const Auto_Fuel& form, const Map_Axes& axes);

} // namespace quorlen
