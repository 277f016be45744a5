#pragma once
// The map tables as the main window shows them, without any window: the state the table
// updates keep, Update_All / Update_Tabs / Show_Right_Tabs / Init_Tabs, and the text of each
// grid cell and the points of each chart, which the grids, the charts and the command-line
// tool all read the same way.

#include "core/debug_log.h"
#include "core/user_dialogs.h"
#include "image/settings_image.h"
#include "sensors/sensor_defs.h"
#include "tables/edit_state.h"
#include "tables/table_catalogue.h"
#include "tables/undo_list.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorlen {

// PWM1 runs the boost controller when its signal selection is this.
inline constexpr int Pwm_Boost_Selection = 1;
// Step of the one-dimensional tables that run over engine speed.
inline constexpr int One_D_Rpm_Step = 500;

// Labels that follow the selected sensors. Each begins with CR LF, as the labels always did.
struct Tab_Captions {
    std::string Ign_Load;     // "Ignition Load sensor: "
    std::string Ign2nd_Load;  // "1st Ignition comp load sensor: "
    std::string Ign3rd_Load;  // "2nd Ignition comp load sensor: "
    std::string Fuel3D_Load;  // "Fuel 3D Load sensor: "
    std::string Fuel2nd_Load; // "Fuel Load sensor: ", 2nd Fuel MAP
    std::string Fuel3rd_Load; // "Fuel Load sensor: ", 2nd Fuel RPM
    std::string Lambda_Load;  // "Lambda Load sensor: "
    std::string Lambda_Sensor;
    std::string Pwm_Load;
    std::string PWM_boost_sensor_label;
    bool Pwm_Boost_Visible = false;
    std::string Pwm1_Tab = "PWM 1"; // "PWM1 Boost control" in boost mode
    std::string Fuel_Load_Header;   // "Load [bar]"
    std::string Ign_Load_Header;
};

struct Tables_State {
    int FuelCols = 19;
    int FuelRows = 18;
    int IgnCols = 18;
    int IgnRows = 11;
    Load_Selections loads;
    int Fuel2nd_Function = 0;
    bool Fuel2nd_Scale_500 = false;
    bool Pwm1_Boost = false;

    // Header texts of the main maps and of the PWM2 extra fuel axis, as the last update read
    // them (index 0 is column or row 1).
    std::vector<std::string> Fuel_Rpm_Text, Fuel_Load_Text, Ign_Rpm_Text, Ign_Load_Text, Pwm_Fuel_Axis_Text;
    int LastRpmColumn = 0;
    double MaxLoadValue_Fuel = 0;
    double MaxLoadValue_Ign = 0;

    bool UpdateBusy = false;
    int Pwm_Selection[4] = {};
    int Digital_Function[4] = {};
    int Digital_Sensor[4] = {};

    // The tabs on show: sstab_Main, SSTab_Ignition, SSTab_Fuel, SSTab_PWM.
    int sstab_Main = 0;
    int SSTab_Ignition = 0;
    int SSTab_Fuel = 0;
    int SSTab_PWM = 0;
    Tab_Captions captions;

    // Typing, limits and the buttons' text boxes; the colouring of the main maps.
    Edit_State edit;
    Colour_State colours;
};

struct Tables_Context {
    Settings_Image& image;
    const Sensor_State& sensors;
    Tables_State& tables;
    Debug_Log& log;
    User_Dialogs& dialogs;
    // Every edit of a table takes its snapshot here first.
    Undo_List& undo;
};

struct Table_Hooks {
    std::function<void()> Update_Tabs;
    std::function<void()> Show_Right_Tabs;
    std::function<void()> Update_All;
};

// --- the four routines ---------------------------------------------------------------------

// Sizes, selections, the 2nd fuel function and the boost mode from the image; runs after a
// change of size, sensor or function, and after a file is loaded.
void Update_Tabs(Tables_Context& ctx);
// The labels that follow the selected sensors, and the table that the tabs on show make
// current.
void Show_Right_Tabs(Tables_Context& ctx);
// Reads the axes (mending steps out of rule, one message per axis), checks the output
// selections, fixes the PWM2 extra fuel counts and keeps each cell's value in CardValue.
// Does nothing and returns false when an update is already running.
bool Update_All(Tables_Context& ctx);
// Once, at start: the tables take their shapes.
void Init_Tabs(Tables_Context& ctx);

// The table a cell operation works on, by the tabs on show; nullopt on a page without a grid.
std::optional<Table_Id> Current_Table(const Tables_State& tables);

Map_Block Fuel_Block(const Tables_Context& ctx);
Map_Block Ign_Block(const Tables_Context& ctx);

// --- codings that a table's limits decide ---------------------------------------------------

// Datasets from here are the stand-alone box; below it the boost controller's layouts.
inline constexpr int Stand_Alone_Dataset = 200;

// A one-dimensional table whose byte reads as value = (b - offset) / gain, typed within
// min..max. `percent`: shown in percent; degrees otherwise.
struct Linear_Coding {
    double min = 0;
    double max = 0;
    double gain = 1;
    double offset = 0;
    bool percent = false;
};

// The 1st Ignition compensation over an analogue input: 0.2 degrees a step around 128.
inline constexpr Linear_Coding Ign_Map_Coding{-25.6, 25.4, 5, 128, false};
// PWM2 extra fuel: 0.2 % a step around 128.
inline constexpr Linear_Coding Pwm_Fuel_Coding{-25.6, 25.4, 5, 128, true};
// A fuel table over engine speed on the boost controller: 0 to 199 %, 100 % at byte 128.
inline constexpr Linear_Coding Fuel_Rpm_Coding{0, 199, 256.0 / 200, 0, true};
// The 1st Ignition compensation over engine speed, by bits 4 and 5 of byte 44. The
// stand-alone box keeps the 0.2-degree step and takes +-12.7 degrees, or +-25.4 with bit 4;
// the boost controller reads the table in percent, +-100 % (bit 4: +-200 %), or in degrees
// with bit 5.
Linear_Coding Ign_Rpm_Coding(const Settings_Image& image);
// The coding the 1st Ignition compensation reads in now, by its load selection.
Linear_Coding Ign_Comp1_Coding(const Tables_Context& ctx);
// Whether a 2nd fuel table reads in Fuel_Rpm_Coding instead of by the function: over engine
// speed on the boost controller.
bool Fuel2_Rpm_Coded(const Tables_Context& ctx, Table_Id id);

// --- grids --------------------------------------------------------------------------------

struct Grid_Shape {
    int rows = 0; // row 0 is the header row
    int cols = 0; // column 0 is the header column
};

Grid_Shape Grid_Size(const Tables_Context& ctx, Table_Id id);
// The text of one cell, headers included, as the grid shows it.
std::string Grid_Text(const Tables_Context& ctx, Table_Id id, int row, int col);
// The image address behind a value cell; -1 for a header cell or a cell without a byte.
int Grid_Address(const Tables_Context& ctx, Table_Id id, int row, int col);
// The value of a table byte as the table shows it; nullopt when nothing is shown.
std::optional<double> Table_Value(const Tables_Context& ctx, Table_Id id, std::uint8_t b);

// --- charts -------------------------------------------------------------------------------

struct Chart_Data {
    std::vector<double> x;
    std::vector<double> y;
    std::string x_title;
    std::string y_title;
    // Percent, time and degree scales read best from zero; sensor values do not.
    bool y_from_zero = true;
};

// The curve of a one-dimensional table over its axis (the load sensor's value, or engine
// speed).
Chart_Data Table_Chart(const Tables_Context& ctx, Table_Id id);

// The two-point compensation curves set by four sliders each: PWM1 comp. from 92 to 95,
// 2nd ignition compensation from 96 to 99. Flat before the first point and after the second.
Chart_Data Comp_Curve_Chart(const Tables_Context& ctx, int first_index);
// The curve at raw reading `raw` (0 to 255) of its input: straight between its two points,
// flat before the first and after the second.
double Comp_Curve_At(const Tables_Context& ctx, int first_index, double raw);
// Where raw reading `raw` of the curve's input lies: the sensor's value, or engine speed.
double Comp_Curve_Load(const Tables_Context& ctx, int first_index, double raw);
// The unit of the curve's input, as its load point sliders show it ("rpm" over speed).
std::string Comp_Curve_Unit(const Tables_Context& ctx, int first_index);
// The unit of a one-dimensional table's values: "%", "ms", "deg" or its sensor's.
std::string Table_Unit(const Tables_Context& ctx, Table_Id id);

// --- combos and sliders of the map tabs ------------------------------------------------------

std::vector<std::string> Fuel_2nd_Function_Items();

// Each keeps the other bits of byte 175 and writes the new counts into the block.
void FUEL_3D_MAP_Size_Combo_Click(Tables_Context& ctx, int index, const Table_Hooks& hooks);
void Ign_3D_MAP_Size_Combo_Click(Tables_Context& ctx, int index, const Table_Hooks& hooks);
void FUEL_2nd_MAP_Function_Combo_Click(Tables_Context& ctx, int index, const Table_Hooks& hooks);

struct Scroll_Shown {
    std::string text;
    std::string unit;
};

// The text and unit of the main form's slider `index` for the byte it holds. The load points
// of the two compensation curves (92, 94 and 96, 98) are in the unit of the curve's load
// sensor, or in rpm when the curve runs over engine speed.
Scroll_Shown Main_Scroll_Text(const Tables_Context& ctx, int index);

// The user moved the main form's slider `index` to `value`: a byte that differs is written
// and marked changed, and `update` runs so the dependent texts follow. A drag of the slider
// is one step for undo: only its first change passes `new_step`.
Scroll_Shown Main_scroll_Change(Tables_Context& ctx, int index, int value,
                                const std::function<void()>& update, bool new_step = true);

} // namespace quorlen
