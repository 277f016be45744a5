#include "tables/selection_ops.h"

#include "core/proc_guard.h"
#include "image/scaling.h"
#include "tables/cell_entry.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace quorlen {

namespace {

std::size_t At(int address) {
    return static_cast<std::size_t>(Checked_Address(address));
}

std::uint8_t Byte_At(const Settings_Image& image, int address) {
    return image.CardByte[At(address)];
}

void Put(Settings_Image& image, int address, double value) {
    Put_Byte(image, address, byte_chk(value));
}

void Call_Enable(const Edit_Hooks& hooks) {
    if (hooks.Handle_button_enable) hooks.Handle_button_enable();
}

// The common frame of every button: enable, a snapshot for undo, the operation under its
// guard, redraw, enable.
template <class F>
void Run_Handler(Tables_Context& ctx, const Edit_Hooks& hooks, const char* words, F&& operation) {
    Call_Enable(hooks);
    save_to_undolist(ctx.undo, ctx.image);
    {
        Proc_Guard guard(ctx.log, words);
        guard.Step(std::forward<F>(operation));
    }
    Run_Update_All(ctx, hooks);
    Call_Enable(hooks);
}

// --- one-dimensional tables -----------------------------------------------------------------

struct Point_Range {
    Table_Id id;
    int base = 0;
    int Start = 0; // first selected point
    int Size = 0;  // the last is Start + Size
    int points = 0;
    int Address(int i) const { return base + i - 1; }
    bool Holds(int i) const { return i >= 1 && i <= points; }
};

std::optional<Point_Range> Shown_Points(const Tables_Context& ctx, const Grid_Selection& sel) {
    auto id = Current_Table(ctx.tables);
    if (!id) return std::nullopt;
    auto table = One_D(*id);
    if (!table) return std::nullopt;
    return Point_Range{*id, One_D_Base(*id), std::min(sel.Row, sel.RowSel), std::abs(sel.Row - sel.RowSel),
                       table->points};
}

double Shown_Value(const Tables_Context& ctx, Table_Id id, int i) {
    return Text_To_Double(Grid_Text(ctx, id, i, 2));
}

// A ramp over the points: `ramp` gives what point i gets added (negative to take away).
// The 1st Ignition compensation in degrees counts through its shown text, which agrees with
// its byte at the table's step of 0.2 degrees; read in percent it counts on the byte, where
// its one-decimal text would not give the byte back.
template <class Ramp>
void One_D_Ramp(Tables_Context& ctx, const Grid_Selection& sel, Ramp ramp) {
    auto range = Shown_Points(ctx, sel);
    if (!range) return;
    const bool through_text = range->id == Table_Id::Ign_Comp1 && !Ign_Comp1_Coding(ctx).percent;
    if (through_text) Get_igmap_maxmin(ctx);
    const Edit_State& e = ctx.tables.edit;
    for (int i = range->Start; i <= range->Start + range->Size; ++i) {
        if (!range->Holds(i)) continue;
        int a = range->Address(i);
        int step = ramp(i, *range);
        if (through_text)
            Put(ctx.image, a,
                Round_Even_Whole(Shown_Value(ctx, range->id, i) * e.TableGain + e.TableOffset + step));
        else
            Put(ctx.image, a, Byte_At(ctx.image, a) + step);
    }
}

// Plus and minus pass over a point that is already at its end.
void One_D_Step(Tables_Context& ctx, const Grid_Selection& sel, int step) {
    auto range = Shown_Points(ctx, sel);
    if (!range) return;
    for (int i = range->Start; i <= range->Start + range->Size; ++i) {
        if (!range->Holds(i)) continue;
        int a = range->Address(i);
        int b = Byte_At(ctx.image, a);
        if ((step > 0 && b >= 255) || (step < 0 && b <= 0)) continue;
        Put(ctx.image, a, b + step);
    }
}

// --- main maps ------------------------------------------------------------------------------

struct Shown_Map {
    Table_Id id;
    Map_Block block;
    bool fuel;
};

// The 3D buttons act on the ignition map on its tab, on the fuel map on its tab, and on
// nothing elsewhere.
std::optional<Shown_Map> Main_Map_On_Show(const Tables_Context& ctx) {
    auto id = Current_Table(ctx.tables);
    if (id == Table_Id::Ignition_3D) return Shown_Map{*id, Ign_Block(ctx), false};
    if (id == Table_Id::Fuel_3D) return Shown_Map{*id, Fuel_Block(ctx), true};
    return std::nullopt;
}

Grid_Selection Anchored(const Cell_Rect& r) {
    return {r.r1, r.c1, r.r2, r.c2};
}

// Runs `cell` over every selected cell of the map on show with the cell's address, row and
// column, and returns the selection to set back.
template <class Cell>
Grid_Selection Over_Map(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks,
                        const char* words, Cell cell) {
    Grid_Selection back = sel;
    Run_Handler(ctx, hooks, words, [&] {
        auto map = Main_Map_On_Show(ctx);
        if (!map) return;
        Cell_Rect r = Rising(sel, map->block.rows, map->block.cols);
        for (int row = r.r1; row <= r.r2; ++row)
            for (int col = r.c1; col <= r.c2; ++col)
                cell(*map, r, map->block.Cell(row, col), row, col);
        back = Anchored(r);
    });
    return back;
}

template <class Delta>
Grid_Selection Ramp_3D(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks,
                       const char* words, Delta delta) {
    return Over_Map(ctx, sel, hooks, words,
                    [&](const Shown_Map&, const Cell_Rect& r, int a, int row, int col) {
                        Put(ctx.image, a, Byte_At(ctx.image, a) + delta(r, row, col));
                    });
}

} // namespace

Cell_Rect Rising(const Grid_Selection& s, int rows, int cols) {
    auto clamp = [](int v, int hi) { return std::clamp(v, 1, std::max(hi, 1)); };
    return {clamp(std::min(s.Row, s.RowSel), rows), clamp(std::max(s.Row, s.RowSel), rows),
            clamp(std::min(s.Col, s.ColSel), cols), clamp(std::max(s.Col, s.ColSel), cols)};
}

void Put_Byte(Settings_Image& image, int address, std::uint8_t value) {
    auto a = At(address);
    image.CardByte[a] = value;
    image.ChangedByte[a] = Changed_Mark;
}

void Run_Update_All(Tables_Context& ctx, const Edit_Hooks& hooks) {
    if (hooks.Update_All)
        hooks.Update_All();
    else
        Update_All(ctx);
}

double Injector_Dead_Time(const Settings_Image& image) {
    constexpr int Dead_Time_Index = 79;
    return Text_To_Double(Scroll_Text(image, Dead_Time_Index, image.CardByte[Dead_Time_Index]));
}

// --- one-dimensional handlers -----------------------------------------------------------------

void plus_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    Run_Handler(ctx, hooks, "Plus click", [&] { One_D_Step(ctx, sel, 1); });
}

void minus_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    Run_Handler(ctx, hooks, "Minus click", [&] { One_D_Step(ctx, sel, -1); });
}

void steep_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    Run_Handler(ctx, hooks, "Steep Click",
                [&] { One_D_Ramp(ctx, sel, [](int i, const Point_Range& p) { return i - p.Start; }); });
}

void flat_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    Run_Handler(ctx, hooks, "Flat click",
                [&] { One_D_Ramp(ctx, sel, [](int i, const Point_Range& p) { return -(i - p.Start); }); });
}

void steep_L_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    Run_Handler(ctx, hooks, "steep L", [&] {
        One_D_Ramp(ctx, sel, [](int i, const Point_Range& p) { return p.Start + p.Size - i; });
    });
}

void flat_L_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    Run_Handler(ctx, hooks, "Flat L", [&] {
        One_D_Ramp(ctx, sel, [](int i, const Point_Range& p) { return -(p.Start + p.Size - i); });
    });
}

void scale_table_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    Run_Handler(ctx, hooks, "scale table", [&] {
        auto range = Shown_Points(ctx, sel);
        if (!range || !Get_Table_maxmin(ctx, range->id)) return;
        double percent = Text_To_Double(ctx.tables.edit.scale_table_text);
        for (int i = range->Start; i <= range->Start + range->Size; ++i) {
            if (!range->Holds(i)) continue;
            auto byte = One_D_Byte(ctx, range->id, Shown_Value(ctx, range->id, i) * percent / 100, true);
            if (byte) Put_Byte(ctx.image, range->Address(i), *byte);
        }
    });
}

void set_table_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    Run_Handler(ctx, hooks, "Set table", [&] {
        auto range = Shown_Points(ctx, sel);
        if (!range || !Get_Table_maxmin(ctx, range->id)) return;
        Set_MaxMin_Table_Text(ctx.tables);
        auto byte = One_D_Byte(ctx, range->id, Text_To_Double(ctx.tables.edit.set_table_text), false);
        if (!byte) return;
        for (int i = range->Start; i <= range->Start + range->Size; ++i)
            if (range->Holds(i)) Put_Byte(ctx.image, range->Address(i), *byte);
    });
}

// --- main-map handlers ------------------------------------------------------------------------

Grid_Selection plus_3d_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    return Ramp_3D(ctx, sel, hooks, "Plus 3D", [](const Cell_Rect&, int, int) { return 1; });
}

Grid_Selection minus_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    return Ramp_3D(ctx, sel, hooks, "minus 3D", [](const Cell_Rect&, int, int) { return -1; });
}

Grid_Selection steep_Load_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    return Ramp_3D(ctx, sel, hooks, "steep Load 3D",
                   [](const Cell_Rect& r, int row, int) { return row - r.r1; });
}

Grid_Selection steep_Load_3D_B_Click(Tables_Context& ctx, const Grid_Selection& sel,
                                     const Edit_Hooks& hooks) {
    return Ramp_3D(ctx, sel, hooks, "Steep Load 3D B",
                   [](const Cell_Rect& r, int row, int) { return r.r2 - row; });
}

Grid_Selection steep_RPM_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    return Ramp_3D(ctx, sel, hooks, "steep RPM 3D",
                   [](const Cell_Rect& r, int, int col) { return col - r.c1; });
}

Grid_Selection steep_RPM_3D_L_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    return Ramp_3D(ctx, sel, hooks, "steep RPM 3D L",
                   [](const Cell_Rect& r, int, int col) { return r.c2 - col; });
}

Grid_Selection flat_Load_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    return Ramp_3D(ctx, sel, hooks, "Flat Load 3D",
                   [](const Cell_Rect& r, int row, int) { return -(row - r.r1); });
}

Grid_Selection flat_Load_3D_B_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    return Ramp_3D(ctx, sel, hooks, "Flat Load 3D B",
                   [](const Cell_Rect& r, int row, int) { return -(r.r2 - row); });
}

Grid_Selection flat_RPM_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    return Ramp_3D(ctx, sel, hooks, "Flat RPM 3D",
                   [](const Cell_Rect& r, int, int col) { return -(col - r.c1); });
}

Grid_Selection flat_RPM_3D_L_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    return Ramp_3D(ctx, sel, hooks, "Flat RPM 3D L",
                   [](const Cell_Rect& r, int, int col) { return -(r.c2 - col); });
}

Grid_Selection scale_table_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    double percent = Text_To_Double(ctx.tables.edit.scale_table_text_3D);
    double dead_time = Injector_Dead_Time(ctx.image);
    return Over_Map(ctx, sel, hooks, "Scale table 3D",
                    [&](const Shown_Map& map, const Cell_Rect&, int a, int, int) {
                        std::uint8_t b = Byte_At(ctx.image, a);
                        if (!map.fuel) {
                            double value = Ign_Cell_Value(b) * percent / 100;
                            Put(ctx.image, a, val_chk(value / 0.2));
                            return;
                        }
                        // The percentage acts on the part of the time behind the injector's dead time.
                        double v = (Fuel_Cell_Value(b) - dead_time) * percent / 100 + dead_time;
                        Put_Byte(ctx.image, a, Fuel_ms_to_byte(v));
                    });
}

Grid_Selection set_table_3D_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    return Over_Map(ctx, sel, hooks, "Set table 3D click",
                    [&](const Shown_Map& map, const Cell_Rect&, int a, int, int) {
                        std::string& text = ctx.tables.edit.set_table_text_3D;
                        double v = Text_To_Double(text);
                        if (v >= Main_Map_Limit(map.id)) {
                            text = Main_Map_Limit_Text(map.id);
                            v = Main_Map_Limit(map.id);
                        }
                        Put_Byte(ctx.image, a, map.fuel ? Fuel_ms_to_byte(v) : Ign_deg_to_byte(v));
                    });
}

namespace {

// One straight line from byte b1 at position 0 to byte b2 at position n, read at i.
std::uint8_t Between(int b1, int b2, int n, int i) {
    double k = static_cast<double>(b2 - b1) / n;
    return byte_chk(Round_Even_Whole(b1 + i * k));
}

} // namespace

Grid_Selection Even_Cols_cmd_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    Grid_Selection back = sel;
    Run_Handler(ctx, hooks, "Even Cols cmd", [&] {
        auto map = Main_Map_On_Show(ctx);
        if (!map) return;
        Cell_Rect r = Rising(sel, map->block.rows, map->block.cols);
        back = Anchored(r);
        const Map_Block& m = map->block;
        for (int row = r.r1; row <= r.r2; ++row) {
            int b1 = Byte_At(ctx.image, m.Cell(row, r.c1));
            int b2 = Byte_At(ctx.image, m.Cell(row, r.c2));
            for (int col = r.c1 + 1; col <= r.c2 - 1; ++col)
                Put_Byte(ctx.image, m.Cell(row, col), Between(b1, b2, r.c2 - r.c1, col - r.c1));
        }
    });
    return back;
}

Grid_Selection Even_Rows_cmd_Click(Tables_Context& ctx, const Grid_Selection& sel, const Edit_Hooks& hooks) {
    Grid_Selection back = sel;
    Run_Handler(ctx, hooks, "Even rows cmd", [&] {
        auto map = Main_Map_On_Show(ctx);
        if (!map) return;
        Cell_Rect r = Rising(sel, map->block.rows, map->block.cols);
        back = Anchored(r);
        const Map_Block& m = map->block;
        for (int col = r.c1; col <= r.c2; ++col) {
            int b1 = Byte_At(ctx.image, m.Cell(r.r1, col));
            int b2 = Byte_At(ctx.image, m.Cell(r.r2, col));
            for (int row = r.r1 + 1; row <= r.r2 - 1; ++row)
                Put_Byte(ctx.image, m.Cell(row, col), Between(b1, b2, r.r2 - r.r1, row - r.r1));
        }
    });
    return back;
}

// --- buttons ------------------------------------------------------------------------------------

std::vector<Button_State> Handle_button_enable(const Tables_State& tables) {
    static const char* const One_D_Buttons[] = {"plus",    "minus",  "steep",       "flat",
                                                "steep_L", "flat_L", "scale_table", "set_table"};
    static const char* const Main_Map_Buttons[] = {
        "plus_3d",           "minus_3D",          "steep_Load_3D",     "steep_Load_3D_B",
        "steep_RPM_3D",      "steep_RPM_3D_L",    "flat_Load_3D",      "flat_Load_3D_B",
        "flat_RPM_3D",       "flat_RPM_3D_L",     "scale_table_3D",    "set_table_3D",
        "Even_Cols_cmd",     "Even_Rows_cmd",     "Color_3D_Check(0)", "Color_3D_Check(1)",
        "Color_3D_Check(2)", "Color_3D_Check(4)", "Mid_3D_limit_txt",  "Verify_Check"};
    auto id = Current_Table(tables);
    bool main_map = id == Table_Id::Fuel_3D || id == Table_Id::Ignition_3D;
    bool one_d = id && One_D(*id).has_value();
    // The 2nd fuel tables show nothing under a function out of the list.
    if (one_d && (id == Table_Id::Fuel2_Map || id == Table_Id::Fuel2_Rpm) && tables.Fuel2nd_Function > 2)
        one_d = false;
    std::vector<Button_State> states;
    for (const char* name : One_D_Buttons)
        states.push_back({name, one_d});
    for (const char* name : Main_Map_Buttons)
        states.push_back({name, main_map});
    states.push_back({"Color_3D_Check(3)", id == Table_Id::Fuel_3D});
    return states;
}

void Show_Table(Tables_State& t, Table_Id id) {
    switch (id) {
    case Table_Id::Ignition_3D:
        t.sstab_Main = 1, t.SSTab_Ignition = 0;
        break;
    case Table_Id::Ign_Comp1:
        t.sstab_Main = 1, t.SSTab_Ignition = 1;
        break;
    case Table_Id::Fuel_3D:
        t.sstab_Main = 2, t.SSTab_Fuel = 0;
        break;
    case Table_Id::Fuel2_Map:
        t.sstab_Main = 2, t.SSTab_Fuel = 1;
        break;
    case Table_Id::Fuel2_Rpm:
        t.sstab_Main = 2, t.SSTab_Fuel = 2;
        break;
    case Table_Id::Afr:
        t.sstab_Main = 2, t.SSTab_Fuel = 4;
        break;
    case Table_Id::Pwm1:
        t.sstab_Main = 3, t.SSTab_PWM = 0;
        break;
    case Table_Id::Pwm2:
        t.sstab_Main = 3, t.SSTab_PWM = 2;
        break;
    case Table_Id::Pwm3:
        t.sstab_Main = 3, t.SSTab_PWM = 3;
        break;
    case Table_Id::Pwm4:
        t.sstab_Main = 3, t.SSTab_PWM = 4;
        break;
    case Table_Id::Pwm2_Fuel:
        t.sstab_Main = 0;
        break;
    }
}

} // namespace quorlen
