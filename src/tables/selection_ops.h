#pragma once
// The buttons beside the grids: each changes the selected cells in one step, byte by byte in
// the image, marks what it wrote in ChangedByte and redraws. Which table a button acts on
// follows from the tabs on show. Ramps count in bytes: the fuel coding is not linear in
// milliseconds, and a fuel ramp over byte 25 keeps the jump of the coding in it.

#include "tables/edit_state.h"
#include "tables/map_tables.h"

#include <string>
#include <vector>

namespace quorlen {

// --- one-dimensional tables (the selection's rows are the points) ---------------------------

void plus_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
void minus_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
// Ramps with their zero at the first selected point (steep adds, flat takes away) ...
void steep_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
void flat_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
// ... and at the last.
void steep_L_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
void flat_L_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
// The shown values times scale_table_text percent.
void scale_table_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
// set_table_text, brought into the table's limits, into every selected point.
void set_table_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);

// --- main maps: each returns the selection to set back, anchored at the top left ----------

Grid_Selection plus_3d_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
Grid_Selection minus_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
// Ramps down the load rows (zero at the top row; _B: at the bottom row) ...
Grid_Selection steep_Load_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
Grid_Selection steep_Load_3D_B_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
Grid_Selection flat_Load_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
Grid_Selection flat_Load_3D_B_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
// ... and along the RPM columns (zero at the left column; _L: at the right column).
Grid_Selection steep_RPM_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
Grid_Selection steep_RPM_3D_L_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
Grid_Selection flat_RPM_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
Grid_Selection flat_RPM_3D_L_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
// scale_table_text_3D percent: of the degrees on the ignition map; of the time behind the
// injector dead time on the fuel map.
Grid_Selection scale_table_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
// set_table_text_3D into every selected cell, cut (text and all) at the map's limit.
Grid_Selection set_table_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
// Straight lines between the end columns (rows) of each row (column) of the selection,
// rounded with ties to the even byte; the ends stay.
Grid_Selection Even_Cols_cmd_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);
Grid_Selection Even_Rows_cmd_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks);

// --- shared by the buttons and the keys ------------------------------------------------------

// A selection's rows and columns in rising order, kept on the cells of a map of `rows` by
// `cols`.
struct Cell_Rect {
    int r1, r2, c1, c2;
};
Cell_Rect Rising(const Grid_Selection& sel, int rows, int cols);

// Every byte an edit writes is marked for the next write to the box.
void Put_Byte(Settings_Image& image, int address, std::uint8_t value);

// The redraw of an edit: the program's own, or the tables' when there is none.
void Run_Update_All(Tables_Context& ctx, const Edit_Hooks& hooks);

// The injector dead time as its page shows it (scroll_text(79)), in ms.
double Injector_Dead_Time(const Settings_Image& image);

// --- which buttons serve the table on show --------------------------------------------------

struct Button_State {
    std::string name; // the button's objectName
    bool enabled = false;
};

// Every button of the table side with whether it serves the table the tabs make current:
// the one-dimensional set for a one-dimensional table that shows values, the main-map set
// (with the colouring, "Colored as duty cycle" on the fuel map only) for a main map.
std::vector<Button_State> Handle_button_enable(const Tables_State& tables);

// Puts the tabs on the page of a table, so that the buttons act on it.
void Show_Table(Tables_State& tables, Table_Id id);

} // namespace quorlen
