#pragma once
// Typing into the grids. There is no edit box: a grid takes the keys, KeyEdit builds the
// number in KeyText, every selected cell takes it and the bytes are recomputed at each key.
// Also the limits of each table (the Get_*_maxmin routines), the number-to-byte rules, and
// the clipboard of the main maps as the tab-separated text a spreadsheet exchanges.

#include "tables/edit_state.h"
#include "tables/map_tables.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorlen {

// Key codes as the grids receive them.
namespace Key {
inline constexpr int Back = 8;
inline constexpr int Enter = 13;
inline constexpr int Delete = 46;
inline constexpr int A = 65;
inline constexpr int O = 79;
inline constexpr int P = 80;
inline constexpr int Z = 90;
inline constexpr int Pad_0 = 96;
inline constexpr int Pad_Minus = 109;
inline constexpr int Pad_Decimal = 110;
inline constexpr int Comma = 188;
inline constexpr int Minus = 189;
inline constexpr int Point = 190;
} // namespace Key

// Keyboard codes of Ctrl+C and Ctrl+V as a key press delivers them.
inline constexpr int Ctrl_C = 3;
inline constexpr int Ctrl_V = 22;

// --- numbers ------------------------------------------------------------------------------

// Text to number: empty is 0; the first comma is made a point in the caller's text, then
// the numeric prefix is read ("1," is 1, "abc" is 0).
double val_chk(std::string& text);
// A number put through its own text, 15 significant digits: (1.06 - 1) / 0.06 reads as 1.
double val_chk(double value);
// Every comma read as a point, then the numeric prefix.
double Text_To_Double(std::string_view text);
// A number as the program writes it into a text box: "25.4", "-25.6", "510".
std::string Number_As_Text(double value);

// Milliseconds to a main-map fuel byte: the reverse of the two-piece coding. 0 is 0; above
// 0.53 and below 1.06 it is 1; below 2.5 from the fine piece, (v - 1) / 0.06, which is 0 for
// 0 < v <= 0.53; from 2.5 on, v / 0.1.
std::uint8_t Fuel_ms_to_byte(double v);
// Degrees to an ignition byte: v / 0.2.
std::uint8_t Ign_deg_to_byte(double v);

// The largest number a main-map cell takes: 25.5 ms on the fuel map, 51 degrees on the
// ignition map, and its text.
double Main_Map_Limit(Table_Id id);
const char* Main_Map_Limit_Text(Table_Id id);

// --- typing -------------------------------------------------------------------------------

// The shared keystroke editor. Digits (48-57, pad 96-105) start a new text when
// KeyNewNumber is set and are appended otherwise; Back cuts the last character; Delete
// empties; the decimal keys (110, 190, 188) append one comma when the text has no mark yet;
// the minus keys (189, 109) make the text "-". All but Back clear KeyNewNumber. Returns
// false for any other key, which changes nothing.
bool KeyEdit(int keycode, std::string& text, bool& KeyNewNumber);

// A change of a grid's selection: the next digit starts a new number.
void Grid_RowColChange(Tables_State& tables);

// --- limits -------------------------------------------------------------------------------

// Each sets TableMin, TableMax (with minText and maxText), TableGain, TableFine and
// TableOffset for its table. Those without a gain leave 1, 0, 0.
void Get_igmap_maxmin(Tables_Context& ctx);      // 1st Ignition compensation
void Get_fuelmap_maxmin(Tables_Context& ctx);    // 2nd Fuel MAP, by its function
void Get_fuelmap2_maxmin(Tables_Context& ctx);   // 2nd Fuel RPM, the same
void Get_fuelrpm_maxmin(Tables_Context& ctx);    // a fuel table over engine speed: 0 to 199 %
void Get_fuellambda_maxmin(Tables_Context& ctx); // AFR target
void Get_pwm_map_maxmin(Tables_Context& ctx);    // PWM in percent, or boost in the sensor's unit
void Get_pwm_rpm_maxmin(Tables_Context& ctx);    // PWM tables over engine speed
void Get_an_maxmin(Tables_Context& ctx);         // PWM tables over an analogue input
void Get_igrpm_maxmin(Tables_Context& ctx);      // ignition compensation over engine speed, by byte 44
// The routine of a one-dimensional table's grid (and the PWM2 extra fuel's), by the table and
// its axis: the 1st Ignition
// compensation takes Get_igrpm_maxmin over engine speed and Get_igmap_maxmin over an input; a
// 2nd fuel table over engine speed on the boost controller takes Get_fuelrpm_maxmin, and
// otherwise its function's limits. False when the table shows nothing (a 2nd fuel function
// out of the list) or is not one-dimensional.
bool Get_Table_maxmin(Tables_Context& ctx, Table_Id id);

// Brings set_table_text into TableMin..TableMax.
void Set_MaxMin_Table_Text(Tables_State& tables);

// The byte of a shown value of a one-dimensional table, by the table's own rule (the limits
// of Get_Table_maxmin must be in place): gain, fine and offset; the 2nd fuel tables by their
// function; the lambda table and the boost table through the sensor. `round` takes the
// nearest byte (tie to even) instead of cutting. nullopt when the table has no rule now.
std::optional<std::uint8_t> One_D_Byte(const Tables_Context& ctx, Table_Id id, double value, bool round);

// --- key handlers -------------------------------------------------------------------------

struct Key_Outcome {
    bool handled = false;
    // The selected cells show KeyText until the selection moves on.
    bool shows_key_text = false;
};

// The main maps. Enter writes while logging and updates; "P" halves and "O" doubles the
// RPM steps of the selected columns; "A" and "Z" are plus and minus; digits and decimal
// keys type into every selected cell, cut at the map's limit. `sel` is put in rising order.
Key_Outcome Fuel_3D_Grid_KeyDown(Tables_Context& ctx, Grid_Selection& sel, int keycode,
                                 const Edit_Hooks& hooks);
Key_Outcome Ignition_3D_Grid_KeyDown(Tables_Context& ctx, Grid_Selection& sel, int keycode,
                                     const Edit_Hooks& hooks);

// Ctrl+C puts the selection's texts on `clipboard`: TAB between cells, CR LF after each row.
// Ctrl+V puts the clipboard's texts into the selection (a single selected cell takes the
// whole block from there on, as far as the map reaches) and turns every selected cell's text
// into its byte, cut at the map's limit. Returns true for the two codes.
bool Fuel_3D_Grid_KeyPress(Tables_Context& ctx, Grid_Selection& sel, int code, std::string& clipboard,
                           const Edit_Hooks& hooks);
bool Ignition_3D_Grid_KeyPress(Tables_Context& ctx, Grid_Selection& sel, int code, std::string& clipboard,
                               const Edit_Hooks& hooks);

// The one-dimensional family (Fuel_MAP_Grid, Fuel_RPM_Grid, Fuel_Lambda_Grid,
// Ig_2ndMAP_Grid, PWM_MAP_Grid), and the values of PWM2_FuelCorr_grid: the typed text goes
// to set_table_text, is brought into the table's limits and becomes every selected point's
// byte.
Key_Outcome One_D_Grid_KeyDown(Tables_Context& ctx, Table_Id id, const Grid_Selection& sel, int keycode,
                               const Edit_Hooks& hooks);

// Ctrl+C and Ctrl+V of the one-dimensional family: the copy as any grid's; the paste takes
// one number a line into the selected points (a single selected point takes the clipboard's
// lines from there on), each brought into the table's limits as a typed number is. `sel`
// comes back as the points that took a line. Returns true for the two codes.
bool One_D_Grid_KeyPress(Tables_Context& ctx, Table_Id id, Grid_Selection& sel, int code,
                         std::string& clipboard, const Edit_Hooks& hooks);

// Copying from any grid: the texts of the selected cells, headers included when selected.
std::string Grid_Selection_Text(const Tables_Context& ctx, Table_Id id, const Grid_Selection& sel);

// Splits tab-separated text into rows of cells: CR LF, LF or CR end a row, and one final
// line end adds no empty row.
std::vector<std::vector<std::string>> Split_Clipboard(std::string_view text);

} // namespace quorlen
