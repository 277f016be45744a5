#include "engine/settings_pages.h"

#include "core/proc_guard.h"
#include "core/text.h"
#include "engine/page_choices.h"
#include "image/scaling.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace quorlen {

namespace {

namespace T = Settings_Tab;
using B = Input_Binding;

// Inputs by their place on the box.
constexpr int In_AFR = 1;
constexpr int In_TPS = 2;
constexpr int In_MAP = 3;
constexpr int In_Coolant = 4;
constexpr int In_Slave_AFR = 5;
constexpr int In_Aux1 = 9;
constexpr int In_Aux2 = 10;
constexpr int In_Aux3 = 11;
constexpr int In_Aux4 = 12;

constexpr const char* Settings_Tab_Texts[Settings_Tab_Count] = {
    "Launch / ALS",      "Ignition settings", "PWM outputs",       "AFR control",    "",
    "Idle settings",     "Temp corrections",  "Start up",          "Digital inputs", "Analog settings",
    "Limits / Warnings", "Engine setup",      "Fuel acceleration", "Fuel settings",  "Development",
    "Digital outputs",
};

constexpr Page_Frame Frames[] = {
    {"Launch_controls_frame", T::Launch_ALS, "Launch control", 1,
     "Launch control is off: choose \"Launch control\" for Digital 1 in on the Digital inputs tab."},
    {"ALS_frame", T::Launch_ALS, "Anti-lag (ALS)", 1},
    {"LaunchALS_Temp_frame", T::Launch_ALS, "Launch / ALS temperature protection", 1},
    {"Rev_Limit_frame", T::Ignition, "Rev limit", 1},
    {"Boost_limit_frame", T::Ignition, "Boost limit", 1},
    {"Ignition_Setup_frame", T::Ignition, "Ignition", 1},
    {"Gearing_Ignition_Cut_Frame", T::Ignition, "Ignition cut on Digital 2 in (gear change)", 1,
     "Ignition cut for gear changes: choose \"Ignition cut.\" for Digital 2 in on the Digital inputs tab."},
    {"PWM_Function_frame", T::PWM_Outputs, "PWM output functions", 1},
    {"PWM_PID_Frame", T::PWM_Outputs, "Boost control PID", 1,
     "The boost control PID shows when a PWM output runs Boost control."},
    {"PWM2_FuelCorr_frame", T::PWM_Outputs, "PWM2 extra fuel", 1},
    {"Lambda_frame", T::AFR_Control, "AFR control", 1},
    {"Lambda_Active_frame", T::AFR_Control, "AFR control is active", 1, "AFR control is off."},
    {"Idle_frame", T::Idle, "Idle", 1},
    {"Idle_Control_frame", T::Idle, "Idle control", 1, "Idle control is off."},
    {"Idle_Ignition_frame", T::Idle, "Idle ignition", 1},
    {"Idle_AFR", T::Idle, "AFR control at idle", 1, "AFR control is off (AFR control tab)."},
    {"Air_Temp_frame", T::Temp_Corrections, "Air temperature correction", 1},
    {"Cold_Engine_frame", T::Temp_Corrections, "Cold engine", 1},
    {"frame_Enrichment", T::Start_Up, "Start up fuel", 1},
    {"Startup_Air_frame", T::Start_Up, "Start up idle air", 1},
    {"Dig1_frame", T::Digital_Inputs, "Digital 1 in", 1},
    {"Dig2_frame", T::Digital_Inputs, "Digital 2 in", 1},
    {"Rev2_frame", T::Digital_Inputs, "2nd RPM limit", 1},
    {"Speed_Sensor_frame", T::Digital_Inputs, "Speed sensor", 1,
     "The speed sensor is read when an input has \"Speed sensor input (0-1kHz)\"."},
    {"PWM_Activation_frame", T::Digital_Inputs, "External activation of PWM2 idle air", 1,
     "PWM2 idle air is activated externally when Digital 2 in has that function."},
    {"TPS_frame", T::Analog_Settings, "Throttle", 1},
    {"Limits_frame", T::Limits_Warnings, "Sensor limits (error codes)", 2},
    {"AFR_Supervising_frame", T::Limits_Warnings, "AFR supervising", 1},
    {"Warning_frame", T::Limits_Warnings, "Warning light", 2},
    {"Crank_Teeth_frame", T::Engine_Setup, "Crank and fuel timing", 1},
    {"AE_Base_frame", T::Fuel_Acceleration, "Acceleration enrichment", 1},
    {"AE_Frame", T::Fuel_Acceleration, "Enrichment on acceleration", 1, "Acceleration enrichment is off."},
    {"Injector_frame", T::Fuel_Settings, "Injectors", 1},
    {"Battery_frame", T::Fuel_Settings, "Battery correction", 1},
    {"Cylinder_Trim_frame", T::Fuel_Settings, "Cylinder trim (M master, S slave)", 2},
    {"Box_Mode_frame", T::Development, "Box mode", 1},
    {"Digital_Output_frame", T::Digital_Outputs, "Digital outputs", 4},
    {"Fan_frame", T::Digital_Outputs, "Fan", 1,
     "The fan temperature shows when a digital output runs the Fan."},
};

// Scaling of the sliders without a catalogue row, and where a row's unit is not the one
// shown. The rpm thresholds of the digital outputs are engine speed whatever the row says.
constexpr Page_Param Params[] = {
    // Launch / ALS
    {.address = 180, .tab = T::Launch_ALS, .frame = "Launch_controls_frame", .label = "Launch RPM start"},
    {.address = 218, .tab = T::Launch_ALS, .frame = "Launch_controls_frame", .label = "Launch RPM limit"},
    {.address = 214, .tab = T::Launch_ALS, .frame = "Launch_controls_frame", .label = "Launch extra fuel"},
    {.address = 217,
     .tab = T::Launch_ALS,
     .frame = "Launch_controls_frame",
     .label = "Launch ignition retard"},
    {.address = 179, .tab = T::Launch_ALS, .frame = "ALS_frame", .label = "ALS minimum RPM"},
    {.address = 84,
     .tab = T::Launch_ALS,
     .frame = "ALS_frame",
     .label = "ALS min TPS",
     .binding = B::Fixed,
     .input = In_TPS},
    {.address = 178,
     .tab = T::Launch_ALS,
     .frame = "ALS_frame",
     .label = "ALS max TPS",
     .binding = B::Fixed,
     .input = In_TPS},
    {.address = 176, .tab = T::Launch_ALS, .frame = "ALS_frame", .label = "ALS ignition retard"},
    {.address = 132, .tab = T::Launch_ALS, .frame = "ALS_frame", .label = "ALS extra fuel"},
    {.address = 91, .tab = T::Launch_ALS, .frame = "ALS_frame", .label = "ALS max PWM2 output"},
    {.address = 131,
     .tab = T::Launch_ALS,
     .frame = "LaunchALS_Temp_frame",
     .label = "Launch/ALS high temp sensor",
     .max = Analog_Inputs,
     .factor = 1,
     .format = "0",
     .unit = ""},
    {.address = 177,
     .tab = T::Launch_ALS,
     .frame = "LaunchALS_Temp_frame",
     .label = "Launch/ALS high temp cut off ",
     .binding = B::Als_Temp},
    // Ignition settings
    {.address = 17,
     .tab = T::Ignition,
     .frame = "Rev_Limit_frame",
     .label = "Fuel and Ign cut RPM      soft ign cut 250rpm earlier"},
    {.address = 23,
     .tab = T::Ignition,
     .frame = "Boost_limit_frame",
     .label = "Fuel cut boost level",
     .binding = B::Fixed,
     .input = In_MAP},
    {.address = 21,
     .tab = T::Ignition,
     .frame = "Ignition_Setup_frame",
     .label = "Ignition charge (dwell) time",
     .max = 50},
    {.address = 14, .tab = T::Ignition, .frame = "Ignition_Setup_frame", .label = "Crank ignition"},
    {.address = 189, .tab = T::Ignition, .frame = "Gearing_Ignition_Cut_Frame", .label = "Cut off time:"},
    // PWM outputs
    {.address = 40,
     .tab = T::PWM_Outputs,
     .frame = "PWM_PID_Frame",
     .label = "Init value %",
     .max = 128,
     .unit = "%"},
    {.address = 41,
     .tab = T::PWM_Outputs,
     .frame = "PWM_PID_Frame",
     .label = "P (Proportional)",
     .unit = "."},
    {.address = 42, .tab = T::PWM_Outputs, .frame = "PWM_PID_Frame", .label = "I (Sum)", .unit = "."},
    {.address = 43, .tab = T::PWM_Outputs, .frame = "PWM_PID_Frame", .label = "D (Difference)", .unit = "."},
    // AFR control
    {.address = 212,
     .tab = T::AFR_Control,
     .frame = "Lambda_Active_frame",
     .label = "Coolant temp. to start AFR control",
     .binding = B::Fixed,
     .input = In_Coolant},
    {.address = 225,
     .tab = T::AFR_Control,
     .frame = "Lambda_Active_frame",
     .label = "AFR control start delay"},
    {.address = 213,
     .tab = T::AFR_Control,
     .frame = "Lambda_Active_frame",
     .label = "AFR control max RPM to be active"},
    {.address = 228,
     .tab = T::AFR_Control,
     .frame = "Lambda_Active_frame",
     .label = "AFR control min Load to be active",
     .binding = B::Lambda_Load},
    {.address = 227,
     .tab = T::AFR_Control,
     .frame = "Lambda_Active_frame",
     .label = "AFR control max Load to be active",
     .binding = B::Lambda_Load},
    {.address = 226,
     .tab = T::AFR_Control,
     .frame = "Lambda_Active_frame",
     .label = "Narrow sensor target voltage",
     .binding = B::Lambda_Sensor},
    // Idle settings
    {.address = 12,
     .tab = T::Idle,
     .frame = "Idle_frame",
     .label = "Throttle level to enter idle mode ",
     .binding = B::Fixed,
     .input = In_TPS},
    {.address = 7, .tab = T::Idle, .frame = "Idle_Control_frame", .label = "Idle RPM"},
    {.address = 8, .tab = T::Idle, .frame = "Idle_Control_frame", .label = "Idle control, Gain (P)"},
    {.address = 9, .tab = T::Idle, .frame = "Idle_Control_frame", .label = "Idle control, Sum (I)"},
    {.address = 10, .tab = T::Idle, .frame = "Idle_Control_frame", .label = "Idle control, Difference (D)"},
    {.address = 16,
     .tab = T::Idle,
     .frame = "Idle_Control_frame",
     .label = "Idle control frequency",
     .min = 1,
     .max = 20,
     .factor = 1,
     .format = "0",
     .unit = "",
     .control = "Idle_control_Freq_scroll"},
    {.address = 13, .tab = T::Idle, .frame = "Idle_Ignition_frame", .label = "Idle ignition"},
    {.address = 35,
     .tab = T::Idle,
     .frame = "Idle_Ignition_frame",
     .label = "Throttle level for idle ignition fade out",
     .binding = B::Fixed,
     .input = In_TPS},
    {.address = 224, .tab = T::Idle, .frame = "Idle_AFR", .label = "AFR control speed at idle, Sum (I)"},
    // Temp corrections
    {.address = 220,
     .tab = T::Temp_Corrections,
     .frame = "Air_Temp_frame",
     .label = "Low air temperature limit",
     .binding = B::Fixed,
     .input = In_Aux2},
    {.address = 221,
     .tab = T::Temp_Corrections,
     .frame = "Air_Temp_frame",
     .label = "Low air temp correction fuel"},
    {.address = 222,
     .tab = T::Temp_Corrections,
     .frame = "Air_Temp_frame",
     .label = "High air temperature limit",
     .binding = B::Fixed,
     .input = In_Aux2},
    {.address = 223,
     .tab = T::Temp_Corrections,
     .frame = "Air_Temp_frame",
     .label = "High air temp correction fuel"},
    {.address = 171,
     .tab = T::Temp_Corrections,
     .frame = "Cold_Engine_frame",
     .label = "Cold engine temperature limit",
     .binding = B::Fixed,
     .input = In_Coolant},
    {.address = 172,
     .tab = T::Temp_Corrections,
     .frame = "Cold_Engine_frame",
     .label = "Warm engine temperature limit",
     .binding = B::Fixed,
     .input = In_Coolant},
    {.address = 173, .tab = T::Temp_Corrections, .frame = "Cold_Engine_frame", .label = "Choke fuel"},
    // Start up
    {.address = 36, .tab = T::Start_Up, .frame = "frame_Enrichment", .label = "Crank fuel (snaps at crank)"},
    {.address = 39,
     .tab = T::Start_Up,
     .frame = "frame_Enrichment",
     .label = "Start up fuel comp. at cold engine (depends on choke)",
     .factor = 0.390625,
     .format = "0.0",
     .unit = "%"},
    {.address = 37,
     .tab = T::Start_Up,
     .frame = "frame_Enrichment",
     .label = "Start up fuel comp with warm engine"},
    {.address = 38,
     .tab = T::Start_Up,
     .frame = "frame_Enrichment",
     .label = "Start up fuel duration after crank"},
    {.address = 89,
     .tab = T::Start_Up,
     .frame = "Startup_Air_frame",
     .label = "Start up idle air PWM2 compensation"},
    {.address = 90,
     .tab = T::Start_Up,
     .frame = "Startup_Air_frame",
     .label = "Start up air duration after crank"},
    // Digital inputs
    {.address = 85, .tab = T::Digital_Inputs, .frame = "Rev2_frame", .label = "2nd RPM limit"},
    {.address = 80,
     .tab = T::Digital_Inputs,
     .frame = "Speed_Sensor_frame",
     .label = "Distance factor",
     .max = 65535,
     .wide = true,
     .factor = 1,
     .format = "0",
     .unit = "pulses/km"},
    {.address = 190,
     .tab = T::Digital_Inputs,
     .frame = "PWM_Activation_frame",
     .label = "PWM change on activation"},
    // Analog settings
    {.address = 183, .tab = T::Analog_Settings, .frame = "TPS_frame", .label = "TPS low limit"},
    // Limits / Warnings
    {.address = 980,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "AFR low",
     .binding = B::Lambda_Sensor},
    {.address = 981,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "AFR high",
     .binding = B::Lambda_Sensor},
    {.address = 982,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "Throttle low",
     .binding = B::Fixed,
     .input = In_TPS},
    {.address = 983,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "Throttle high",
     .binding = B::Fixed,
     .input = In_TPS},
    {.address = 984,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "MAP low",
     .binding = B::Fixed,
     .input = In_MAP},
    {.address = 985,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "MAP high",
     .binding = B::Fixed,
     .input = In_MAP},
    {.address = 986,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "Coolant low",
     .binding = B::Fixed,
     .input = In_Coolant},
    {.address = 987,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "Coolant high",
     .binding = B::Fixed,
     .input = In_Coolant},
    {.address = 988,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "12V/Aux1 low",
     .binding = B::Fixed,
     .input = In_Aux1},
    {.address = 989,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "12V/Aux1 high",
     .binding = B::Fixed,
     .input = In_Aux1},
    {.address = 990,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "IAT/Aux2 low",
     .binding = B::Fixed,
     .input = In_Aux2},
    {.address = 991,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "IAT/Aux2 high",
     .binding = B::Fixed,
     .input = In_Aux2},
    {.address = 992,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "12Vs/Aux3 low",
     .binding = B::Fixed,
     .input = In_Aux3},
    {.address = 993,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "12Vs/Aux3 high",
     .binding = B::Fixed,
     .input = In_Aux3},
    {.address = 994,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "IATs/Aux4 low",
     .binding = B::Fixed,
     .input = In_Aux4},
    {.address = 995,
     .tab = T::Limits_Warnings,
     .frame = "Limits_frame",
     .label = "IATs/Aux4 high",
     .binding = B::Fixed,
     .input = In_Aux4},
    {.address = 229,
     .tab = T::Limits_Warnings,
     .frame = "AFR_Supervising_frame",
     .label = "Load level to start AFR supervising"},
    {.address = 996,
     .tab = T::Limits_Warnings,
     .frame = "AFR_Supervising_frame",
     .label = "Max AFR at AFR supervising",
     .binding = B::Lambda_Sensor},
    {.address = 997,
     .tab = T::Limits_Warnings,
     .frame = "AFR_Supervising_frame",
     .label = "NIY adsfasdf",
     .factor = 1,
     .format = "0",
     .unit = ""},
    {.address = 1000,
     .tab = T::Limits_Warnings,
     .frame = "Warning_frame",
     .label = "Crank error",
     .factor = 1,
     .format = "0",
     .unit = ""},
    {.address = 1001,
     .tab = T::Limits_Warnings,
     .frame = "Warning_frame",
     .label = "Sync error (cam/crank)",
     .factor = 1,
     .format = "0",
     .unit = ""},
    {.address = 1002,
     .tab = T::Limits_Warnings,
     .frame = "Warning_frame",
     .label = "Rev Limit ",
     .factor = 1,
     .format = "0",
     .unit = ""},
    {.address = 1003,
     .tab = T::Limits_Warnings,
     .frame = "Warning_frame",
     .label = "Boost limit",
     .factor = 1,
     .format = "0",
     .unit = ""},
    {.address = 1004,
     .tab = T::Limits_Warnings,
     .frame = "Warning_frame",
     .label = "AFR Short adaptive low",
     .factor = 1,
     .format = "0",
     .unit = ""},
    {.address = 1005,
     .tab = T::Limits_Warnings,
     .frame = "Warning_frame",
     .label = "AFR Short adaptive high",
     .factor = 1,
     .format = "0",
     .unit = ""},
    {.address = 1006,
     .tab = T::Limits_Warnings,
     .frame = "Warning_frame",
     .label = "AFR Long adaptive low",
     .factor = 1,
     .format = "0",
     .unit = ""},
    {.address = 1007,
     .tab = T::Limits_Warnings,
     .frame = "Warning_frame",
     .label = "AFR Long adaptive high",
     .factor = 1,
     .format = "0",
     .unit = ""},
    // Engine setup
    {.address = 18,
     .tab = T::Engine_Setup,
     .frame = "Crank_Teeth_frame",
     .label = "Crank sensor teeth between missing pulse and 51deg BTDC marking"},
    {.address = 20,
     .tab = T::Engine_Setup,
     .frame = "Crank_Teeth_frame",
     .label = "Crank sensor teeth between missing pulse and Fuel pulse start"},
    // Fuel acceleration
    {.address = 86, .tab = T::Fuel_Acceleration, .frame = "AE_Frame", .label = "Threshold"},
    {.address = 87, .tab = T::Fuel_Acceleration, .frame = "AE_Frame", .label = "Fuel change gain"},
    {.address = 88,
     .tab = T::Fuel_Acceleration,
     .frame = "AE_Frame",
     .label = "Sustain (number of engine cycles)"},
    {.address = 45,
     .tab = T::Fuel_Acceleration,
     .frame = "AE_Frame",
     .label = "Ignition retard on acceleration",
     .max = 100,
     .factor = 0.2,
     .format = "0.0",
     .unit = "deg",
     .control = "AE_IG_scroll"},
    // Fuel settings
    {.address = 79, .tab = T::Fuel_Settings, .frame = "Injector_frame", .label = "Injector dead time"},
    {.address = 82,
     .tab = T::Fuel_Settings,
     .frame = "Injector_frame",
     .label = "Total injector size",
     .max = 65535,
     .wide = true,
     .factor = 1,
     .format = "0",
     .unit = "ml/min"},
    {.address = 219,
     .tab = T::Fuel_Settings,
     .frame = "Battery_frame",
     .label = "Extra fuel when battery voltage is below 13.5V       (max 8.4 ms)"},
    {.address = 643, .tab = T::Fuel_Settings, .frame = "Cylinder_Trim_frame", .label = "Cyl A, M"},
    {.address = 648, .tab = T::Fuel_Settings, .frame = "Cylinder_Trim_frame", .label = "Cyl A, S"},
    {.address = 644, .tab = T::Fuel_Settings, .frame = "Cylinder_Trim_frame", .label = "Cyl B, M"},
    {.address = 649, .tab = T::Fuel_Settings, .frame = "Cylinder_Trim_frame", .label = "Cyl B, S"},
    {.address = 645, .tab = T::Fuel_Settings, .frame = "Cylinder_Trim_frame", .label = "Cyl C, M"},
    {.address = 650, .tab = T::Fuel_Settings, .frame = "Cylinder_Trim_frame", .label = "Cyl C, S"},
    {.address = 646, .tab = T::Fuel_Settings, .frame = "Cylinder_Trim_frame", .label = "Cyl D, M"},
    {.address = 651, .tab = T::Fuel_Settings, .frame = "Cylinder_Trim_frame", .label = "Cyl D, S"},
    {.address = 647, .tab = T::Fuel_Settings, .frame = "Cylinder_Trim_frame", .label = "Cyl E, M"},
    {.address = 652, .tab = T::Fuel_Settings, .frame = "Cylinder_Trim_frame", .label = "Cyl E, S"},
    // Digital outputs: a grid with the outputs across and the four thresholds down; output
    // 1's labels name the rows.
    {.address = 231,
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .label = "RPM ON",
     .unit = "rpm"},
    {.address = 236, .tab = T::Digital_Outputs, .frame = "Digital_Output_frame", .label = "", .unit = "rpm"},
    {.address = 241, .tab = T::Digital_Outputs, .frame = "Digital_Output_frame", .label = "", .unit = "rpm"},
    {.address = 246, .tab = T::Digital_Outputs, .frame = "Digital_Output_frame", .label = "", .unit = "rpm"},
    {.address = 232,
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .label = "RPM OFF",
     .unit = "rpm"},
    {.address = 237, .tab = T::Digital_Outputs, .frame = "Digital_Output_frame", .label = "", .unit = "rpm"},
    {.address = 242, .tab = T::Digital_Outputs, .frame = "Digital_Output_frame", .label = "", .unit = "rpm"},
    {.address = 247, .tab = T::Digital_Outputs, .frame = "Digital_Output_frame", .label = "", .unit = "rpm"},
    {.address = 233,
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .label = "Analog ON",
     .binding = B::Digital_Output,
     .input = 0,
     .factor = 0.019608,
     .format = "0.00",
     .unit = "V"},
    {.address = 238,
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .label = "",
     .binding = B::Digital_Output,
     .input = 1,
     .factor = 0.019608,
     .format = "0.00",
     .unit = "V"},
    {.address = 243,
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .label = "",
     .binding = B::Digital_Output,
     .input = 2,
     .factor = 0.019608,
     .format = "0.00",
     .unit = "V"},
    {.address = 248,
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .label = "",
     .binding = B::Digital_Output,
     .input = 3,
     .factor = 0.019608,
     .format = "0.00",
     .unit = "V"},
    {.address = 234,
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .label = "Analog OFF",
     .binding = B::Digital_Output,
     .input = 0,
     .factor = 0.019608,
     .format = "0.00",
     .unit = "V"},
    {.address = 239,
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .label = "",
     .binding = B::Digital_Output,
     .input = 1,
     .factor = 0.019608,
     .format = "0.00",
     .unit = "V"},
    {.address = 244,
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .label = "",
     .binding = B::Digital_Output,
     .input = 2,
     .factor = 0.019608,
     .format = "0.00",
     .unit = "V"},
    {.address = 249,
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .label = "",
     .binding = B::Digital_Output,
     .input = 3,
     .factor = 0.019608,
     .format = "0.00",
     .unit = "V"},
    {.address = 30,
     .tab = T::Digital_Outputs,
     .frame = "Fan_frame",
     .label = "Coolant temperature to start fan",
     .binding = B::Fixed,
     .input = In_Coolant},
};

constexpr int Boost_Address = 23;

std::size_t At(int address) {
    return static_cast<std::size_t>(Checked_Address(address));
}

double Factor_Of(const Settings_Image& image, const Page_Param& p) {
    return p.factor != 0 ? p.factor : image.ScrollFactor[At(p.address)];
}

int Offset_Of(const Settings_Image& image, const Page_Param& p) {
    return p.factor != 0 ? p.offset : image.ScrollOffset[At(p.address)];
}

std::string Format_Of(const Settings_Image& image, const Page_Param& p) {
    return p.format != nullptr ? std::string(p.format) : image.ScrollFormat[At(p.address)];
}

std::string Default_Unit(const Page_Param& p) {
    if (p.unit != nullptr) return p.unit;
    const Scaling_Row* row = Find_Scaling_Row(p.address);
    return row != nullptr ? row->unit : "";
}

std::optional<double> Typed_Number(std::string_view typed) {
    std::string text = Trim(typed);
    std::replace(text.begin(), text.end(), ',', '.');
    if (text.empty()) return std::nullopt;
    char* end = nullptr;
    double value = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != 0 || !std::isfinite(value)) return std::nullopt;
    return value;
}

// The fuel start limit of the layout: two revolutions of teeth with sequential fuel, one
// with semi-sequential. Nothing to check when the layout gives no tooth angle.
std::optional<double> Teeth_Limit(const Engine_Config_State& layout) {
    double d = layout.Config_Tooth_Degrees;
    if (!(d > 0)) return std::nullopt;
    return (layout.Sequential_Fuel ? 2 * 360.0 : 360.0) / d;
}

const char* Teeth_Limit_Message(const Engine_Config_State& layout) {
    return layout.Sequential_Fuel ? "You run sequential fuel. You can not select fuel to start later than 2 "
                                    "revs from missing pulse"
                                  : "You run semisequential fuel. You can not select fuel to start later "
                                    "than 1 rev from missing pulse";
}

// The recommendation and the forbidden tooth beside the crank teeth sliders.
void Teeth_Labels(Pages_Context& ctx, int teeth_51) {
    const Engine_Config_State& layout = Current_Layout(ctx);
    const int row = Engine_Config_Row(ctx.image.CardByte[Engine_Layout_Address]);
    ctx.pages.Forbidden_tooth_visible = Forbidden_Tooth(layout.Engine_Config_Tab, row, teeth_51);
    auto limit = Teeth_Limit(layout);
    if (!limit || teeth_51 > *limit) return;
    const double d = layout.Config_Tooth_Degrees;
    int n = Recommended_Fuel_Teeth(d, layout.Sequential_Fuel);
    if (n > 720 / d) n = static_cast<int>(Round_Even_Whole(n - 720 / d));
    ctx.pages.Fuel_teeth_recomend = Recommended_Teeth_Text(n);
}

void Write_Position(Pages_Context& ctx, const Page_Param& p, int v, bool& snapshot_taken) {
    auto write = [&](int address, int value) {
        std::size_t a = At(address);
        auto byte = static_cast<std::uint8_t>(value);
        if (ctx.image.CardByte[a] == byte) return;
        if (!snapshot_taken) {
            save_to_undolist(ctx.undo, ctx.image);
            snapshot_taken = true;
        }
        ctx.image.CardByte[a] = byte;
        ctx.image.ChangedByte[a] = Changed_Mark;
    };
    if (p.wide) {
        write(p.address, v & 255);
        write(p.address + 1, (v >> 8) & 255);
    } else {
        write(p.address, v);
    }
}

} // namespace

std::string_view Settings_Tab_Caption(int index) {
    return index >= 0 && index < Settings_Tab_Count ? Settings_Tab_Texts[index] : "";
}

std::span<const Page_Frame> Page_Frames() {
    return Frames;
}

const Page_Frame* Find_Page_Frame(std::string_view name) {
    for (const Page_Frame& f : Frames)
        if (name == f.name) return &f;
    return nullptr;
}

std::span<const Page_Param> Page_Params() {
    return Params;
}

const Page_Param* Find_Page_Param(int address) {
    for (const Page_Param& p : Params)
        if (p.address == address) return &p;
    return nullptr;
}

std::string Param_Label(const Page_Param& p) {
    if (*p.label != 0 || p.address < 231 || p.address > 249) return p.label;
    int output = (p.address - 230) / 5;
    const Page_Param* row = Find_Page_Param(p.address - 5 * output);
    return std::string(row != nullptr ? row->label : "") + ", output " + std::to_string(output + 1);
}

const Engine_Config_State& Current_Layout(Pages_Context& ctx) {
    if (!ctx.pages.Engine_Tab_Read) {
        Load_Engine_Config_Tab(ctx.engine.Engine_Config_Tab, ctx.ini);
        ctx.pages.Engine_Tab_Read = true;
        ctx.pages.Layout_Row_Taken = -1;
    }
    const int row = Engine_Config_Row(ctx.image.CardByte[Engine_Layout_Address]);
    if (ctx.pages.Layout_Row_Taken != row) {
        Take_Engine_Row(ctx.engine, row);
        ctx.pages.Layout_Row_Taken = row;
    }
    return ctx.engine;
}

Output_Lists Load_Output_Lists(const Ini_File& file) {
    Output_Lists lists;
    const Ini_Snapshot ini = file.Snapshot();
    auto read = [&](const char* key, std::vector<std::string>& items, std::vector<std::string>* second) {
        for (int k = 1; k <= 16; ++k) {
            std::string value;
            if (!ini.Read_Ini(key, value, k) || value.empty()) break;
            value += "\r\n";
            items.push_back(Extract_Data(value, 1));
            if (second != nullptr) second->push_back(Extract_Data(value, 2));
        }
        // An older configuration without the list still shows every value by its number.
        if (items.empty())
            for (int n = 0; n <= 8; ++n) {
                items.push_back(std::to_string(n));
                if (second != nullptr) second->push_back("both");
            }
    };
    read("PWM_Function", lists.Pwm_Function, nullptr);
    read("PWM_Load", lists.Pwm_Load, nullptr);
    read("Digital_Function", lists.Digital_Function, &lists.Digital_Needs);
    read("Digital_Sensor", lists.Digital_Sensor, nullptr);
    return lists;
}

int Scroll_Position(const Settings_Image& image, const Page_Param& p) {
    const auto& b = image.CardByte;
    if (p.wide) return b[At(p.address)] + 256 * b[At(p.address + 1)];
    return b[At(p.address)];
}

int Bound_Input(const Pages_Context& ctx, const Page_Param& p) {
    const auto& b = ctx.image.CardByte;
    switch (p.binding) {
    case B::Fixed:
        return p.input;
    case B::Lambda_Sensor:
        return (b[15] & 64) != 0 ? In_Slave_AFR : In_AFR;
    case B::Lambda_Load:
        return (b[216] & 16) != 0 ? In_TPS : In_MAP;
    case B::Als_Temp: {
        int input = b[131];
        return input >= 1 && input <= Analog_Inputs ? input : 0;
    }
    case B::Digital_Output:
        return Digital_Sensor_Input(ctx.image, p.input);
    case B::None:
        break;
    }
    return 0;
}

Scroll_Shown Scroll_Text_At(const Pages_Context& ctx, const Page_Param& p, int v) {
    const Settings_Image& image = ctx.image;
    if (p.address == Boost_Address && v == Boost_Cut_Off_Byte) return {Off_Text, Default_Unit(p)};
    if (p.address == 131) {
        if (v == 0) return {Off_Text, ""};
        if (v <= Analog_Inputs) return {std::string(Analog_Input_Label(v)), ""};
    }
    std::string format = Format_Of(image, p);
    if (int input = Bound_Input(ctx, p); input != 0) {
        int s = ctx.sensors.Sensor_Of_Input(input);
        double raw = v;
        if (auto value = Forward_Sensor_Calc(ctx.sensors.table, s, raw)) {
            std::string unit = ctx.sensors.table.Unit(s);
            return {Format_Number(*value, format.empty() ? "0.00" : format), unit};
        }
    }
    double value = (v - Offset_Of(image, p)) * Factor_Of(image, p);
    return {Format_Number(value, format), Default_Unit(p)};
}

Scroll_Shown Show_Scroll(Pages_Context& ctx, int address) {
    const Page_Param* p = Find_Page_Param(address);
    if (p == nullptr) return {};
    int v = Scroll_Position(ctx.image, *p);
    Scroll_Shown shown = Scroll_Text_At(ctx, *p, v);
    ctx.image.CardValue[At(address)] = p->address == 131 ? v : std::strtod(shown.text.c_str(), nullptr);
    if (address == 18) Teeth_Labels(ctx, v);
    return shown;
}

Scroll_Outcome scroll_Change(Pages_Context& ctx, int address, int v) {
    Scroll_Outcome out;
    const Page_Param* p = Find_Page_Param(address);
    if (p == nullptr) return out;
    Proc_Guard guard(ctx.log, "scroll change");
    v = std::clamp(v, p->min, p->max);
    guard.Step([&] {
        bool snapshot = false;
        Write_Position(ctx, *p, v, snapshot);
        out.changed = snapshot;
    });
    if (ctx.engine.Engine_Config_Busy) return out;

    guard.Step([&] {
        if (address != 20 && address != 18) return;
        const Engine_Config_State& layout = Current_Layout(ctx);
        auto limit = Teeth_Limit(layout);
        if (limit && v > *limit) out.messages.push_back({Teeth_Limit_Message(layout)});
    });
    guard.Step([&] { out.shown = Show_Scroll(ctx, address); });
    guard.Step([&] {
        if (address == 21 && std::strtod(out.shown.text.c_str(), nullptr) > Dwell_Warning_ms)
            out.messages.push_back(
                {"Warning, Dwell time larger than 5 ms could be dangerous. 3 ms is normal", true});
        if (address == Boost_Address && v != Boost_Cut_Off_Byte && out.shown.unit == "bar" &&
            std::strtod(out.shown.text.c_str(), nullptr) < Vacuum_Limit_Bar)
            out.messages.push_back(
                {"Warning, boost limit is set to vaccum. Fuel cut at atmospheric pressure, "
                 "will make it impossible to start"});
    });
    return out;
}

Scroll_Outcome Update_Scroll(Pages_Context& ctx, int address, int& v) {
    if (const Page_Param* p = Find_Page_Param(address)) v = std::clamp(v, p->min, p->max);
    return scroll_Change(ctx, address, v);
}

std::vector<int> Update_scroll_change(Pages_Context& ctx) {
    std::vector<int> run;
    for (int input = 1; input <= Analog_Inputs; ++input)
        for (const Page_Param& p : Params)
            if (p.binding != B::None && Bound_Input(ctx, p) == input) run.push_back(p.address);
    for (int address : run)
        Show_Scroll(ctx, address);
    return run;
}

std::optional<int> Position_For_Text(const Pages_Context& ctx, int address, std::string_view typed) {
    const Page_Param* p = Find_Page_Param(address);
    if (p == nullptr) return std::nullopt;
    bool off = Equal_No_Case(Trim(typed), Off_Text);
    if (off && address == Boost_Address) return Boost_Cut_Off_Byte;
    if (off && address == 131) return 0;
    auto x = Typed_Number(typed);
    if (!x) return std::nullopt;
    if (p->wide) {
        double factor = Factor_Of(ctx.image, *p);
        if (factor == 0) return std::nullopt;
        double v = Round_Even_Whole(*x / factor + Offset_Of(ctx.image, *p));
        return static_cast<int>(std::clamp(v, double(p->min), double(p->max)));
    }
    std::optional<int> best;
    double best_distance = 0;
    for (int v = p->min; v <= p->max; ++v) {
        if (address == Boost_Address && v == Boost_Cut_Off_Byte) continue;
        double shown = address == 131 ? v : std::strtod(Scroll_Text_At(ctx, *p, v).text.c_str(), nullptr);
        double distance = std::fabs(shown - *x);
        // Halfway between two positions the even one wins, as every rounding here does.
        bool tie = best && std::fabs(distance - best_distance) <= 1e-9 * std::max(1.0, std::fabs(*x));
        if (!best || (!tie && distance < best_distance) || (tie && v % 2 == 0 && *best % 2 != 0)) {
            best = v;
            best_distance = distance;
        }
    }
    return best;
}

std::string Scroll_Tooltip(const Settings_Image& image, const Page_Param& p) {
    char text[96];
    const auto& b = image.CardByte;
    if (p.wide)
        std::snprintf(text, sizeof text, "Address %d/%d, bytes %d, %d (%d)", p.address, p.address + 1,
                      b[At(p.address)], b[At(p.address + 1)], Scroll_Position(image, p));
    else
        std::snprintf(text, sizeof text, "Address %d, byte %d (0x%02X)", p.address, b[At(p.address)],
                      b[At(p.address)]);
    return text;
}

bool Scroll_Changed(const Settings_Image& image, const Page_Param& p) {
    bool changed = image.ChangedByte[At(p.address)] >= Changed_Mark;
    if (p.wide) changed = changed || image.ChangedByte[At(p.address + 1)] >= Changed_Mark;
    return changed;
}

} // namespace quorlen
