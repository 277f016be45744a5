#include "tables/cell_entry.h"

#include "core/proc_guard.h"
#include "core/text.h"
#include "image/scaling.h"
#include "tables/selection_ops.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace quorlen {

namespace {

std::size_t At(int address) {
    return static_cast<std::size_t>(Checked_Address(address));
}

bool Is_Digit_Key(int keycode) {
    return (keycode >= '0' && keycode <= '9') || (keycode >= Key::Pad_0 && keycode <= Key::Pad_0 + 9);
}

bool Is_Decimal_Key(int keycode) {
    return keycode == Key::Pad_Decimal || keycode == Key::Point || keycode == Key::Comma;
}

bool Is_Pwm(Table_Id id) {
    return id == Table_Id::Pwm1 || id == Table_Id::Pwm2 || id == Table_Id::Pwm3 || id == Table_Id::Pwm4;
}

void Set_Limits(Edit_State& e, double min, double max, double gain = 1, double fine = 0, double offset = 0) {
    e.TableMin = min;
    e.TableMax = max;
    e.TableGain = gain;
    e.TableFine = fine;
    e.TableOffset = offset;
    e.minText = Number_As_Text(min);
    e.maxText = Number_As_Text(max);
}

void Set_Limits(Edit_State& e, const Linear_Coding& coding) {
    Set_Limits(e, coding.min, coding.max, coding.gain, 0, coding.offset);
}

int Lambda_Sensor(const Tables_Context& ctx) {
    return Sensor_For_Selection(ctx.image, ctx.sensors, ctx.tables.loads.LambdaSensor);
}

int Boost_Sensor(const Tables_Context& ctx) {
    return Sensor_For_Selection(ctx.image, ctx.sensors, ctx.image.BoostSensor);
}

// The limits of a table whose byte is a sensor's raw reading, from the sensor's values at
// two raw readings, in the sensor's own order.
void Sensor_Limits(Tables_Context& ctx, int sensor, double raw_low, double raw_high) {
    Edit_State& e = ctx.tables.edit;
    auto low = Forward_Sensor_Value(ctx.sensors.table, sensor, raw_low);
    auto high = Forward_Sensor_Value(ctx.sensors.table, sensor, raw_high);
    double a = Round_Even(low.value_or(0), 2);
    double b = Round_Even(high.value_or(0), 2);
    Set_Limits(e, std::min(a, b), std::max(a, b));
    e.minText = Format_Number(e.TableMin, "0.00");
    e.maxText = Format_Number(e.TableMax, "0.00");
}

// A number typed or pasted into a main-map cell, cut at the map's limit (the text with it),
// and its byte.
std::uint8_t Main_Map_Byte(Table_Id id, std::string& text) {
    std::string copy = text;
    double v = val_chk(copy);
    if (v >= Main_Map_Limit(id)) {
        text = Main_Map_Limit_Text(id);
        v = Main_Map_Limit(id);
    }
    return id == Table_Id::Fuel_3D ? Fuel_ms_to_byte(v) : Ign_deg_to_byte(v);
}

// "P" halves and "O" doubles the RPM steps over the selected columns. A step below 2 halves
// to 0 only in the first column, where the axis may start at zero.
void Rpm_Steps(Tables_Context& ctx, const Map_Block& block, const Cell_Rect& r, bool halve) {
    for (int c = r.c1; c <= r.c2; ++c) {
        int a = block.Rpm_Step(c);
        int b = ctx.image.CardByte[At(a)];
        if (halve) {
            if (b < 2) {
                if (c == 1) Put_Byte(ctx.image, a, 0);
            } else {
                Put_Byte(ctx.image, a, byte_chk(std::pow(2.0, std::log2(b) - 1)));
            }
        } else if (b < 128) {
            Put_Byte(ctx.image, a, b == 0 ? 1 : byte_chk(std::pow(2.0, std::log2(b) + 1)));
        }
    }
}

Key_Outcome Main_Map_KeyDown(Tables_Context& ctx, Table_Id id, Grid_Selection& sel, int keycode,
                             const Edit_Hooks& hooks, const char* words) {
    Key_Outcome out;
    bool typed = Is_Digit_Key(keycode) || Is_Decimal_Key(keycode);
    bool command = keycode == Key::Enter || keycode == Key::P || keycode == Key::O || keycode == Key::A ||
                   keycode == Key::Z;
    if (!typed && !command) return out;
    out.handled = true;
    Proc_Guard guard(ctx.log, words);
    guard.Step([&] {
        bool fuel = id == Table_Id::Fuel_3D;
        Map_Block block = fuel ? Fuel_Block(ctx) : Ign_Block(ctx);
        Cell_Rect r = Rising(sel, block.rows, block.cols);
        switch (keycode) {
        case Key::Enter:
            if (hooks.Write_while_logging) hooks.Write_while_logging();
            Run_Update_All(ctx, hooks);
            return;
        case Key::P:
        case Key::O:
            save_to_undolist(ctx.undo, ctx.image);
            Rpm_Steps(ctx, block, r, keycode == Key::P);
            Run_Update_All(ctx, hooks);
            return;
        case Key::A:
            sel = plus_3d_Click(ctx, sel, hooks);
            return;
        case Key::Z:
            sel = minus_3D_Click(ctx, sel, hooks);
            return;
        default:
            break;
        }
        Edit_State& e = ctx.tables.edit;
        // A number is one step for undo, however many keys it takes.
        if (e.KeyNewNumber) save_to_undolist(ctx.undo, ctx.image);
        KeyEdit(keycode, e.KeyText, e.KeyNewNumber);
        std::uint8_t byte = Main_Map_Byte(id, e.KeyText);
        for (int row = r.r1; row <= r.r2; ++row)
            for (int col = r.c1; col <= r.c2; ++col)
                Put_Byte(ctx.image, block.Cell(row, col), byte);
        out.shows_key_text = true;
    });
    return out;
}

bool Main_Map_KeyPress(Tables_Context& ctx, Table_Id id, Grid_Selection& sel, int code,
                       std::string& clipboard, const Edit_Hooks& hooks, const char* words) {
    if (code != Ctrl_C && code != Ctrl_V) return false;
    Proc_Guard guard(ctx.log, words);
    guard.Step([&] {
        Map_Block block = id == Table_Id::Fuel_3D ? Fuel_Block(ctx) : Ign_Block(ctx);
        Cell_Rect r = Rising(sel, block.rows, block.cols);
        if (code == Ctrl_C) {
            clipboard = Grid_Selection_Text(ctx, id, {r.r1, r.c1, r.r2, r.c2});
            return;
        }
        auto rows = Split_Clipboard(clipboard);
        if (rows.empty()) return;
        save_to_undolist(ctx.undo, ctx.image);
        if (r.r1 == r.r2 && r.c1 == r.c2) {
            std::size_t widest = 0;
            for (const auto& row : rows)
                widest = std::max(widest, row.size());
            r.r2 = std::min(block.rows, r.r1 + static_cast<int>(rows.size()) - 1);
            r.c2 = std::min(block.cols, r.c1 + static_cast<int>(widest) - 1);
        }
        // The texts go in first, then every selected cell's text becomes its byte; a cell
        // the clipboard does not reach keeps the text it shows.
        std::vector<std::string> texts;
        for (int row = r.r1; row <= r.r2; ++row)
            for (int col = r.c1; col <= r.c2; ++col) {
                auto ri = static_cast<std::size_t>(row - r.r1);
                auto ci = static_cast<std::size_t>(col - r.c1);
                bool given = ri < rows.size() && ci < rows[ri].size();
                texts.push_back(given ? rows[ri][ci] : Grid_Text(ctx, id, row, col));
            }
        std::size_t k = 0;
        for (int row = r.r1; row <= r.r2; ++row)
            for (int col = r.c1; col <= r.c2; ++col)
                Put_Byte(ctx.image, block.Cell(row, col), Main_Map_Byte(id, texts[k++]));
        sel = {r.r1, r.c1, r.r2, r.c2};
        Run_Update_All(ctx, hooks);
    });
    return true;
}

// The points a typed or pasted number goes to: those of a one-dimensional table, or the five
// values of the PWM2 extra fuel block (its axis is not typed into).
int Typed_Points(Table_Id id) {
    if (id == Table_Id::Pwm2_Fuel) return Pwm_Fuel_Points;
    auto table = One_D(id);
    return table ? table->points : 0;
}

int Typed_Point_Address(const Tables_Context& ctx, Table_Id id, int i) {
    return id == Table_Id::Pwm2_Fuel ? Grid_Address(ctx, id, i, 1) : One_D_Base(id) + i - 1;
}

int Value_Column(Table_Id id) {
    return id == Table_Id::Pwm2_Fuel ? 1 : 2;
}

const char* One_D_KeyPress_Words(Table_Id id) {
    switch (id) {
    case Table_Id::Pwm2_Fuel:
        return "PWM2 FuelCorr grid KeyPress";
    case Table_Id::Fuel2_Map:
        return "Fuel Map grid";
    case Table_Id::Fuel2_Rpm:
        return "Fuel RPM grid";
    case Table_Id::Afr:
        return "Fuel Lambda Grid Keydown";
    case Table_Id::Ign_Comp1:
        return "Ig 2ndMAP Grid KeyPress";
    default:
        return "PWM MAP Grid KeyPress";
    }
}

const char* One_D_KeyDown_Words(Table_Id id) {
    switch (id) {
    case Table_Id::Pwm2_Fuel:
        return "PWM2 FuelCorr grid KeyDown";
    case Table_Id::Fuel2_Map:
        return "Fuel MAP Grid KeyDown";
    case Table_Id::Fuel2_Rpm:
        return "Fuel RPM Grid KeyDown";
    case Table_Id::Afr:
        return "Fuel Lambda Grid Keydown";
    case Table_Id::Ign_Comp1:
        return "Ig 2ndMAP Grid KeyDown";
    default:
        return "PWM MAP Grid Key down";
    }
}

} // namespace

// --- numbers ------------------------------------------------------------------------------

double val_chk(std::string& text) {
    if (text.empty()) return 0;
    auto comma = text.find(',');
    if (comma != std::string::npos) text[comma] = '.';
    return Val(text);
}

double val_chk(double value) {
    if (!std::isfinite(value)) return 0;
    char text[40];
    std::snprintf(text, sizeof text, "%.15g", value);
    return std::strtod(text, nullptr);
}

double Text_To_Double(std::string_view text) {
    std::string copy(text);
    std::replace(copy.begin(), copy.end(), ',', '.');
    return Val(copy);
}

std::string Number_As_Text(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.15g", value == 0 ? 0.0 : value);
    return text;
}

// Any time a tuner types above 0.53 ms opens the injector: up to the fine piece's first
// step (1.06 ms, byte 1) it takes that smallest open time. Only 0, and times too short to
// mean anything, shut it.
std::uint8_t Fuel_ms_to_byte(double v) {
    if (v == 0) return 0;
    if (v > 0.53 && v < 1.06) return 1;
    if (v < 2.5) return byte_chk(val_chk((v - 1) / 0.06));
    return byte_chk(val_chk(v / 0.1));
}

std::uint8_t Ign_deg_to_byte(double v) {
    return byte_chk(val_chk(v / 0.2));
}

double Main_Map_Limit(Table_Id id) {
    return id == Table_Id::Fuel_3D ? 25.5 : 51;
}

const char* Main_Map_Limit_Text(Table_Id id) {
    return id == Table_Id::Fuel_3D ? "25.5" : "51";
}

// --- typing -------------------------------------------------------------------------------

bool KeyEdit(int keycode, std::string& text, bool& KeyNewNumber) {
    if (Is_Digit_Key(keycode)) {
        char digit = static_cast<char>(keycode >= Key::Pad_0 ? keycode - Key::Pad_0 + '0' : keycode);
        if (KeyNewNumber)
            text = std::string(1, digit);
        else
            text += digit;
        KeyNewNumber = false;
        return true;
    }
    switch (keycode) {
    case Key::Back:
        if (!text.empty()) text.pop_back();
        return true;
    case Key::Delete:
        text.clear();
        break;
    case Key::Pad_Decimal:
    case Key::Point:
    case Key::Comma:
        if (text.find_first_of(".,") == std::string::npos) text += ',';
        break;
    case Key::Minus:
    case Key::Pad_Minus:
        text = "-";
        break;
    default:
        return false;
    }
    KeyNewNumber = false;
    return true;
}

void Grid_RowColChange(Tables_State& tables) {
    tables.edit.KeyNewNumber = true;
}

// --- limits -------------------------------------------------------------------------------

void Get_igmap_maxmin(Tables_Context& ctx) {
    Set_Limits(ctx.tables.edit, Ign_Map_Coding);
}

void Get_fuelmap_maxmin(Tables_Context& ctx) {
    Edit_State& e = ctx.tables.edit;
    switch (ctx.tables.Fuel2nd_Function) {
    case 0:
        Set_Limits(e, 0, 25.4, 10);
        break;
    case 1:
        if (ctx.tables.Fuel2nd_Scale_500)
            Set_Limits(e, 0, 510, 0.5);
        else
            Set_Limits(e, 0, 255, 1);
        break;
    case 2:
        Set_Limits(e, -25.4, 0, -10);
        break;
    default:
        Set_Limits(e, 0, 0, 0);
        break;
    }
}

void Get_fuelmap2_maxmin(Tables_Context& ctx) {
    Get_fuelmap_maxmin(ctx);
}

void Get_fuelrpm_maxmin(Tables_Context& ctx) {
    Set_Limits(ctx.tables.edit, Fuel_Rpm_Coding);
}

// The target is the lambda sensor's value; older datasets take what the sensor can show.
void Get_fuellambda_maxmin(Tables_Context& ctx) {
    if (ctx.image.DatasetID >= 200)
        Set_Limits(ctx.tables.edit, 0, 50);
    else
        Sensor_Limits(ctx, Lambda_Sensor(ctx), 0, 255);
}

void Get_pwm_map_maxmin(Tables_Context& ctx) {
    if (Current_Table(ctx.tables) == Table_Id::Pwm1 && ctx.tables.Pwm1_Boost)
        Sensor_Limits(ctx, Boost_Sensor(ctx), 0, 200);
    else
        Set_Limits(ctx.tables.edit, 0, 100, 2);
}

void Get_pwm_rpm_maxmin(Tables_Context& ctx) {
    Get_pwm_map_maxmin(ctx);
}

void Get_an_maxmin(Tables_Context& ctx) {
    Get_pwm_map_maxmin(ctx);
}

void Get_igrpm_maxmin(Tables_Context& ctx) {
    Set_Limits(ctx.tables.edit, Ign_Rpm_Coding(ctx.image));
}

bool Get_Table_maxmin(Tables_Context& ctx, Table_Id id) {
    switch (id) {
    case Table_Id::Pwm2_Fuel:
        Set_Limits(ctx.tables.edit, Pwm_Fuel_Coding);
        return true;
    case Table_Id::Ign_Comp1:
        if (ctx.tables.loads.Ign2ndLoadSensor == Rpm_Selection)
            Get_igrpm_maxmin(ctx);
        else
            Get_igmap_maxmin(ctx);
        return true;
    case Table_Id::Fuel2_Map:
    case Table_Id::Fuel2_Rpm:
        if (Fuel2_Rpm_Coded(ctx, id)) {
            Get_fuelrpm_maxmin(ctx);
            return true;
        }
        if (id == Table_Id::Fuel2_Map)
            Get_fuelmap_maxmin(ctx);
        else
            Get_fuelmap2_maxmin(ctx);
        return ctx.tables.Fuel2nd_Function <= 2;
    case Table_Id::Afr:
        Get_fuellambda_maxmin(ctx);
        return true;
    default:
        if (!Is_Pwm(id)) return false;
        if (ctx.tables.loads.PwmLoadSensor == Rpm_Selection)
            Get_pwm_rpm_maxmin(ctx);
        else
            Get_an_maxmin(ctx);
        return true;
    }
}

void Set_MaxMin_Table_Text(Tables_State& tables) {
    Edit_State& e = tables.edit;
    double v = Text_To_Double(e.set_table_text);
    if (v > e.TableMax)
        e.set_table_text = e.maxText.empty() ? Number_As_Text(e.TableMax) : e.maxText;
    else if (v < e.TableMin)
        e.set_table_text = e.minText.empty() ? Number_As_Text(e.TableMin) : e.minText;
}

std::optional<std::uint8_t> One_D_Byte(const Tables_Context& ctx, Table_Id id, double value, bool round) {
    const Edit_State& e = ctx.tables.edit;
    double raw = 0;
    if (id == Table_Id::Afr || (id == Table_Id::Pwm1 && ctx.tables.Pwm1_Boost)) {
        int sensor = id == Table_Id::Afr ? Lambda_Sensor(ctx) : Boost_Sensor(ctx);
        auto r = Reversed_Sensor_Value(ctx.sensors.table, sensor, value);
        if (!r) return std::nullopt;
        raw = *r;
    } else {
        if ((id == Table_Id::Fuel2_Map || id == Table_Id::Fuel2_Rpm) && !Fuel2_Rpm_Coded(ctx, id) &&
            ctx.tables.Fuel2nd_Function > 2)
            return std::nullopt;
        raw = value * e.TableGain + e.TableFine + e.TableOffset;
    }
    return round ? byte_chk(Round_Even_Whole(raw)) : byte_chk(raw);
}

// --- key handlers -------------------------------------------------------------------------

Key_Outcome Fuel_3D_Grid_KeyDown(Tables_Context& ctx, Grid_Selection& sel, int keycode,
                                 const Edit_Hooks& hooks) {
    return Main_Map_KeyDown(ctx, Table_Id::Fuel_3D, sel, keycode, hooks, "Fuel 3D Grid KeyDown");
}

Key_Outcome Ignition_3D_Grid_KeyDown(Tables_Context& ctx, Grid_Selection& sel, int keycode,
                                     const Edit_Hooks& hooks) {
    return Main_Map_KeyDown(ctx, Table_Id::Ignition_3D, sel, keycode, hooks, "Ignition 3D Grid Key down");
}

bool Fuel_3D_Grid_KeyPress(Tables_Context& ctx, Grid_Selection& sel, int code, std::string& clipboard,
                           const Edit_Hooks& hooks) {
    return Main_Map_KeyPress(ctx, Table_Id::Fuel_3D, sel, code, clipboard, hooks, "Fuel 3D Grid KeyPress");
}

bool Ignition_3D_Grid_KeyPress(Tables_Context& ctx, Grid_Selection& sel, int code, std::string& clipboard,
                               const Edit_Hooks& hooks) {
    return Main_Map_KeyPress(ctx, Table_Id::Ignition_3D, sel, code, clipboard, hooks,
                             "Ignition 3D Grid Key press");
}

Key_Outcome One_D_Grid_KeyDown(Tables_Context& ctx, Table_Id id, const Grid_Selection& sel, int keycode,
                               const Edit_Hooks& hooks) {
    Key_Outcome out;
    const int points = Typed_Points(id);
    if (points == 0) return out;
    {
        Proc_Guard guard(ctx.log, One_D_KeyDown_Words(id));
        guard.Step([&] {
            if (!Get_Table_maxmin(ctx, id)) return;
            Edit_State& e = ctx.tables.edit;
            const bool new_number = e.KeyNewNumber;
            std::string text = e.KeyText;
            bool next_new = e.KeyNewNumber;
            if (!KeyEdit(keycode, text, next_new)) return;
            if (new_number) save_to_undolist(ctx.undo, ctx.image);
            e.KeyText = text;
            e.KeyNewNumber = next_new;
            out.handled = true;
            e.set_table_text = e.KeyText;
            Set_MaxMin_Table_Text(ctx.tables);
            auto byte = One_D_Byte(ctx, id, Text_To_Double(e.set_table_text), false);
            if (!byte) return;
            int start = std::min(sel.Row, sel.RowSel);
            int last = std::max(sel.Row, sel.RowSel);
            for (int i = std::max(start, 1); i <= std::min(last, points); ++i)
                Put_Byte(ctx.image, Typed_Point_Address(ctx, id, i), *byte);
        });
    }
    if (out.handled) Run_Update_All(ctx, hooks);
    return out;
}

bool One_D_Grid_KeyPress(Tables_Context& ctx, Table_Id id, Grid_Selection& sel, int code,
                         std::string& clipboard, const Edit_Hooks& hooks) {
    if (code != Ctrl_C && code != Ctrl_V) return false;
    const int points = Typed_Points(id);
    if (points == 0) return false;
    if (code == Ctrl_C) {
        clipboard = Grid_Selection_Text(ctx, id, sel);
        return true;
    }
    bool changed = false;
    {
        Proc_Guard guard(ctx.log, One_D_KeyPress_Words(id));
        guard.Step([&] {
            auto rows = Split_Clipboard(clipboard);
            if (rows.empty() || !Get_Table_maxmin(ctx, id)) return;
            int first = std::clamp(std::min(sel.Row, sel.RowSel), 1, points);
            int last = std::clamp(std::max(sel.Row, sel.RowSel), 1, points);
            // A single point takes the whole column from there on, as far as the table reaches.
            if (first == last) last = std::min(points, first + static_cast<int>(rows.size()) - 1);
            save_to_undolist(ctx.undo, ctx.image);
            Edit_State& e = ctx.tables.edit;
            for (int i = first; i <= last; ++i) {
                auto k = static_cast<std::size_t>(i - first);
                // A point the clipboard does not reach keeps its value; of a row of cells the
                // first is the value.
                if (k >= rows.size() || rows[k].empty()) continue;
                e.set_table_text = rows[k].front();
                Set_MaxMin_Table_Text(ctx.tables);
                auto byte = One_D_Byte(ctx, id, Text_To_Double(e.set_table_text), false);
                if (byte) Put_Byte(ctx.image, Typed_Point_Address(ctx, id, i), *byte);
            }
            sel = {first, Value_Column(id), last, Value_Column(id)};
            changed = true;
        });
    }
    if (changed) Run_Update_All(ctx, hooks);
    return true;
}

std::string Grid_Selection_Text(const Tables_Context& ctx, Table_Id id, const Grid_Selection& sel) {
    Grid_Shape shape = Grid_Size(ctx, id);
    int r1 = std::clamp(std::min(sel.Row, sel.RowSel), 0, shape.rows - 1);
    int r2 = std::clamp(std::max(sel.Row, sel.RowSel), 0, shape.rows - 1);
    int c1 = std::clamp(std::min(sel.Col, sel.ColSel), 0, shape.cols - 1);
    int c2 = std::clamp(std::max(sel.Col, sel.ColSel), 0, shape.cols - 1);
    std::string text;
    for (int r = r1; r <= r2; ++r) {
        for (int c = c1; c <= c2; ++c) {
            if (c > c1) text += '\t';
            text += Grid_Text(ctx, id, r, c);
        }
        text += "\r\n";
    }
    return text;
}

std::vector<std::vector<std::string>> Split_Clipboard(std::string_view text) {
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> row(1);
    bool open = false; // a row has begun and not ended
    for (std::size_t i = 0; i < text.size(); ++i) {
        char ch = text[i];
        if (ch == '\r' || ch == '\n') {
            if (ch == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
            rows.push_back(std::move(row));
            row.assign(1, std::string());
            open = false;
        } else if (ch == '\t') {
            row.emplace_back();
            open = true;
        } else {
            row.back() += ch;
            open = true;
        }
    }
    if (open) rows.push_back(std::move(row));
    return rows;
}

} // namespace quorlen
