#include "sensors/sensor_editor.h"

#include "core/proc_guard.h"
#include "core/text.h"
#include "image/scaling.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace quorlen {

namespace {

// Typed numbers take a comma or a point.
double Text_Val(std::string_view text) {
    std::string s(text);
    std::replace(s.begin(), s.end(), ',', '.');
    return Val(s);
}

// A number as a definition line carries it: with a point, and no more digits than it has.
std::string Number_Text(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.10g", value == 0 ? 0.0 : value);
    return text;
}

// A text field of a definition line: a tab would start the next field and ";" or a line end
// would close this one, so none of them may stand inside it.
std::string Field_Text(std::string_view text) {
    std::string s(text);
    for (char& c : s)
        if (c == '\t' || c == '\r' || c == '\n' || c == ';') c = ' ';
    return Trim(s);
}

double Raw_Of_Point(int i) {
    return 8.0 * (i - 1);
}

void Sorted(int& first, int& last) {
    if (first > last) std::swap(first, last);
    first = std::max(first, 1);
    last = std::min(last, Sensor_Points);
}

template <class F>
void Each_Selected(Sensor_Editor& e, int first, int last, F&& change) {
    Sorted(first, last);
    int decimals = Editor_Decimals(e);
    for (int i = first; i <= last; ++i) {
        double& p = e.points[static_cast<std::size_t>(i)];
        p = Round_Even(change(p, i - first), decimals);
    }
}

} // namespace

int Editor_Decimals(const Sensor_Editor& e) {
    double d = Text_Val(e.txt_SensorDecimals);
    return static_cast<int>(std::clamp(d, 0.0, 4.0));
}

void Update_Grid(Sensor_Editor& e) {
    if (e.Sensor_Type == Sensor_Kind::Table) return;
    double gain = Text_Val(e.txt_SensorGain);
    double offset = Text_Val(e.txt_SensorOffset);
    double min = Text_Val(e.txt_SensorMin);
    double max = Text_Val(e.txt_SensorMax);
    int decimals = Editor_Decimals(e);
    for (int i = 1; i <= Sensor_Points; ++i) {
        double x = Raw_Of_Point(i);
        if (x > max) x = max;
        if (x < min) x = min;
        if (e.Sensor_Type == Sensor_Kind::Linear_2C && x >= 128) x -= 256;
        e.points[static_cast<std::size_t>(i)] = Round_Even(offset + gain * x, decimals);
    }
}

std::string In_Unit_Text(const Sensor_Editor& e) {
    switch (e.in_display) {
    case In_Display::Volts:
        return "[V]";
    case In_Display::Percent:
        return "[%]";
    case In_Display::Raw:
        break;
    }
    return "[bin]";
}

std::string Out_Unit_Text(const Sensor_Editor& e) {
    std::string unit = Field_Text(e.txt_SensorUnit);
    return unit.empty() ? unit : "[" + unit + "]";
}

std::string Grid_Heading(const Sensor_Editor& e, int col) {
    if (col == 1) return "[no]";
    if (col == 2) return "In " + In_Unit_Text(e);
    std::string unit = Out_Unit_Text(e);
    return unit.empty() ? "Out" : "Out " + unit;
}

double Grid_In_Value(const Sensor_Editor& e, int i) {
    double raw = Raw_Of_Point(i);
    switch (e.in_display) {
    case In_Display::Volts:
        return raw * 5 / 255;
    case In_Display::Percent:
        return raw * 100 / 255;
    case In_Display::Raw:
        break;
    }
    return raw;
}

std::string Grid_In_Text(const Sensor_Editor& e, int i) {
    switch (e.in_display) {
    case In_Display::Volts:
        return Format_Number(Grid_In_Value(e, i), "0.00");
    case In_Display::Percent:
        return Format_Number(Grid_In_Value(e, i), "00.0");
    case In_Display::Raw:
        break;
    }
    return Format_Number(Grid_In_Value(e, i), "0");
}

std::string Grid_Out_Text(const Sensor_Editor& e, int i) {
    return Format_Number(e.points[static_cast<std::size_t>(i)], Decimals_Format(Editor_Decimals(e)));
}

void Set_Point_Text(Sensor_Editor& e, int i, std::string_view text) {
    if (i < 1 || i > Sensor_Points) return;
    e.points[static_cast<std::size_t>(i)] = Round_Even(Text_Val(text), Editor_Decimals(e));
}

// --- viewing -------------------------------------------------------------------------------

void View_Tuning_Sensor(Sensor_Editor& e, const Sensor_Table& table, int s) {
    if (!table.Has(s)) return;
    const auto& def = table.Sens_Def_Tab[static_cast<std::size_t>(s)];
    e.txt_SensorName = def[Sens_Name];
    e.txt_SensorUnit = def[Sens_Unit];
    e.txt_SensorInUnit = def[Sens_In_Unit];
    e.txt_SensorDecimals = std::to_string(table.Decimals(s));
    const auto& points = table.Sens_Point_Tab[static_cast<std::size_t>(s)];
    for (int i = 1; i <= Sensor_Points; ++i)
        e.points[static_cast<std::size_t>(i)] = points[static_cast<std::size_t>(i)];
    if (table.Type(s) == "Linear") {
        e.Sensor_Type = Sensor_Kind::Linear;
        e.txt_SensorGain = def[Sens_Gain];
        e.txt_SensorOffset = def[Sens_Offset];
        e.txt_SensorMin = def[Sens_Min];
        e.txt_SensorMax = def[Sens_Max];
    } else {
        e.Sensor_Type = Sensor_Kind::Table;
    }
}

void View_Log_Sensor(Sensor_Editor& e, const Log_Sensor_Row& row) {
    e.txt_SensorName = row[0];
    if (row[1] == "Tab") {
        e.Sensor_Type = Sensor_Kind::Table;
        for (int i = 1; i <= Sensor_Points; ++i)
            e.points[static_cast<std::size_t>(i)] = Text_Val(row[static_cast<std::size_t>(i + 1)]);
        e.txt_SensorUnit = row[35];
        e.txt_SensorDecimals = row[36];
        return;
    }
    e.Sensor_Type = row[1] == "Linear2c" ? Sensor_Kind::Linear_2C : Sensor_Kind::Linear;
    e.txt_SensorGain = row[2];
    e.txt_SensorOffset = row[3];
    e.txt_SensorMin = row[4];
    e.txt_SensorMax = row[5];
    e.txt_SensorUnit = row[6];
    e.txt_SensorDecimals = row[7];
    Update_Grid(e);
}

// --- lines ---------------------------------------------------------------------------------

namespace {

std::string Linear_Fields(const Sensor_Editor& e, const char* type) {
    std::string line = Field_Text(e.txt_SensorName) + "\t" + type + "\t";
    for (const std::string* number :
         {&e.txt_SensorGain, &e.txt_SensorOffset, &e.txt_SensorMin, &e.txt_SensorMax})
        line += Number_Text(Text_Val(*number)) + "\t";
    return line + Field_Text(e.txt_SensorUnit) + "\t" + std::to_string(Editor_Decimals(e)) + "\t";
}

std::string Table_Fields(const Sensor_Editor& e) {
    std::string line = Field_Text(e.txt_SensorName) + "\tTab\t";
    for (int i = 1; i <= Sensor_Points; ++i) {
        std::string text = Grid_Out_Text(e, i);
        std::replace(text.begin(), text.end(), ',', '.');
        line += text + "\t";
    }
    return line + Field_Text(e.txt_SensorUnit) + "\t" + std::to_string(Editor_Decimals(e)) + "\t";
}

} // namespace

std::optional<std::string> Tuning_Sensor_Line(const Sensor_Editor& e) {
    switch (e.Sensor_Type) {
    case Sensor_Kind::Linear:
        return Linear_Fields(e, "Linear") + Field_Text(e.txt_SensorInUnit) + "\t";
    case Sensor_Kind::Table:
        return Table_Fields(e) + Field_Text(e.txt_SensorInUnit) + "\t";
    case Sensor_Kind::Linear_2C:
        break;
    }
    return std::nullopt;
}

std::string Log_Sensor_Line(const Sensor_Editor& e) {
    switch (e.Sensor_Type) {
    case Sensor_Kind::Linear:
        return Linear_Fields(e, "Linear");
    case Sensor_Kind::Linear_2C:
        return Linear_Fields(e, "Linear2c");
    case Sensor_Kind::Table:
        break;
    }
    return Table_Fields(e);
}

int Store_Log_Sensor(std::span<Log_Sensor_Row> rows, int& count, const Log_Sensor_Row& row) {
    int used = std::clamp(count, 0, static_cast<int>(rows.size()));
    for (int r = 0; r < used; ++r) {
        if (rows[static_cast<std::size_t>(r)][0] == row[0]) {
            rows[static_cast<std::size_t>(r)] = row;
            return r;
        }
    }
    if (used >= static_cast<int>(rows.size())) return -1;
    rows[static_cast<std::size_t>(used)] = row;
    count = used + 1;
    return used;
}

// --- saving --------------------------------------------------------------------------------

namespace {

bool Has_Name(Sensor_Save_Context& ctx) {
    if (!Field_Text(ctx.editor.txt_SensorName).empty()) return true;
    ctx.dialogs.Inform(No_Sensor_Name_Text);
    return false;
}

} // namespace

int Save_New_Tuning_Sensor(Sensor_Save_Context& ctx, const Sensor_Save_Hooks& hooks) {
    Sensor_Editor& e = ctx.editor;
    auto line = Tuning_Sensor_Line(e);
    if (!line) {
        ctx.dialogs.Inform(No_2c_Tuning_Text);
        return -1;
    }
    if (!Has_Name(ctx)) return -1;
    const std::string name = Field_Text(e.txt_SensorName);
    Proc_Guard guard(ctx.log, "Save New Tuning Sensor");
    bool written = false;
    guard.Step([&] {
        // The name with the key's "=" before it and its field's tab after: "MAP" must not
        // replace "MAP 2.5 bar Bosch", nor a sensor whose unit happens to read so.
        ctx.ini.Write_Ini("Sens_Def", *line, "=" + name + "\t");
        written = true;
    });
    if (!written) {
        ctx.dialogs.Inform("The sensor could not be saved: " + guard.Last_Error());
        return -1;
    }
    guard.Step([&] { Load_Sensor_Definitions(ctx.sensors, ctx.ini, guard); });
    Analog_Context analog{ctx.sensors, ctx.image, ctx.ini, ctx.texts, ctx.log};
    guard.Step([&] { Init_Analog_from_CardByte(analog); });
    guard.Step([&] {
        if (hooks.Sensors_Changed) hooks.Sensors_Changed();
    });
    for (int s = 1; s < ctx.sensors.table.Sens_Count; ++s)
        if (ctx.sensors.table.Name(s) == name) return s;
    return -1;
}

int Save_New_Log_Sensor(Sensor_Save_Context& ctx, const Sensor_Save_Hooks& hooks) {
    if (!hooks.Save_Log_Sensor || !Has_Name(ctx)) return -1;
    int row = hooks.Save_Log_Sensor(Parse_Log_Sens_Def(Log_Sensor_Line(ctx.editor)));
    if (row < 0) ctx.dialogs.Inform(Log_Sensors_Full_Text);
    return row;
}

int cmd_SaveSensor(Sensor_Save_Context& ctx, const Sensor_Save_Hooks& hooks) {
    int s = -1;
    if (ctx.editor.chk_Tuning) s = Save_New_Tuning_Sensor(ctx, hooks);
    if (ctx.editor.chk_Log) Save_New_Log_Sensor(ctx, hooks);
    return s;
}

// --- tools ---------------------------------------------------------------------------------

void plus(Sensor_Editor& e, int first, int last) {
    Each_Selected(e, first, last, [](double v, int) { return v + 1; });
}

void minus(Sensor_Editor& e, int first, int last) {
    Each_Selected(e, first, last, [](double v, int) { return v - 1; });
}

void steep(Sensor_Editor& e, int first, int last) {
    Each_Selected(e, first, last, [](double v, int k) { return v + k; });
}

void flat(Sensor_Editor& e, int first, int last) {
    Each_Selected(e, first, last, [](double v, int k) { return v - k; });
}

void scale_table(Sensor_Editor& e, int first, int last) {
    double percent = Text_Val(e.scale_table_text);
    Each_Selected(e, first, last, [percent](double v, int) { return v * percent / 100; });
}

void set_table(Sensor_Editor& e, int first, int last) {
    double value = Text_Val(e.set_table_text);
    Each_Selected(e, first, last, [value](double, int) { return value; });
}

// --- tester --------------------------------------------------------------------------------

void cmd_Frw_Calc(Sensor_Editor& e, const Sensor_Table& table, int s) {
    double raw = Text_Val(e.Text2) * 255 / 5;
    auto value = Forward_Sensor_Value(table, s, raw);
    e.Text1 = value ? Format_Number(*value, "0.00") : std::string();
}

void cmd_Rev_Calc(Sensor_Editor& e, const Sensor_Table& table, int s) {
    e.Text2.clear();
    auto raw = Reversed_Sensor_Value(table, s, Text_Val(e.Text1));
    if (raw) e.Text2 = Format_Number(*raw * 5 / 255, "0.00");
}

// --- two-point sensor ------------------------------------------------------------------------

int Volts_To_Raw(double volts) {
    return static_cast<int>(std::clamp(Round_Even_Whole(volts * 255 / 5), 0.0, 255.0));
}

std::string Raw_To_Volts_Text(int raw) {
    return Format_Number(raw * 5.0 / 255, "0.00");
}

bool cmd_EditSensor(Sensor_Editor& e) {
    const auto& t = e.txt_Create_Sens;
    int r1 = Volts_To_Raw(Text_Val(t[0]));
    int r2 = Volts_To_Raw(Text_Val(t[2]));
    if (r1 == r2) return false;
    double y1 = Text_Val(t[1]);
    double y2 = Text_Val(t[3]);
    double gain = (y2 - y1) / (r2 - r1);
    e.Sensor_Type = Sensor_Kind::Linear;
    e.txt_SensorGain = Number_Text(gain);
    e.txt_SensorOffset = Number_Text(y1 - gain * r1);
    e.txt_SensorMin = std::to_string(std::min(r1, r2));
    e.txt_SensorMax = std::to_string(std::max(r1, r2));
    Update_Grid(e);
    return true;
}

} // namespace quorlen
