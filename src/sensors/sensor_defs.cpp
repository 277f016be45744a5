#include "sensors/sensor_defs.h"

#include "core/run_error.h"
#include "core/text.h"
#include "image/scaling.h"

#include <cmath>
#include <limits>

namespace quorlen {

namespace {

constexpr std::string_view Input_Labels[] = {"",
                                             "Analog 1, AFR",
                                             "Analog 2, TPS",
                                             "Analog 3, MAP",
                                             "Analog 4, Coolant",
                                             "Analog 5, Slave",
                                             "Analog 6, Slave",
                                             "Analog 7, Slave",
                                             "Analog 8, Slave",
                                             "AUX1 - Battery",
                                             "AUX2, Air Temperature",
                                             "Analog 11",
                                             "Analog 12"};

// 1-based position of `c` at or after 1-based `start`; 0 when there is none.
std::size_t In_Str(std::size_t start, std::string_view text, char c) {
    if (start < 1 || start > text.size()) return 0;
    std::size_t p = text.find(c, start - 1);
    return p == std::string_view::npos ? 0 : p + 1;
}

std::size_t Field_End(std::size_t start, std::string_view text) {
    std::size_t stop = In_Str(start, text, '\t');
    if (stop == 0) stop = In_Str(start, text, ';');
    if (stop == 0) stop = In_Str(start, text, '\r');
    return stop;
}

std::string Points_For_Numbers(std::string_view text) {
    std::string s(text);
    for (char& c : s)
        if (c == ',') c = '.';
    return s;
}

double Scan(std::string_view text) {
    return Val(Points_For_Numbers(text));
}

// A conversion to a 16-bit integer: a tie goes to the even number, and a value outside the
// range is an overflow.
int To_Int16(double value) {
    double r = Round_Even_Whole(value);
    if (!(r >= -32768 && r <= 32767)) throw errors::Overflow();
    return static_cast<int>(r);
}

const Sensor_Table::Linear_Numbers& Numbers(const Sensor_Table& t, int s) {
    return t.Linear[static_cast<std::size_t>(s)];
}

double Point(const Sensor_Table& t, int s, int i) {
    return t.Sens_Point_Tab[static_cast<std::size_t>(s)][static_cast<std::size_t>(i)];
}

} // namespace

std::string_view Analog_Input_Label(int input) {
    return input >= 1 && input <= Analog_Inputs ? Input_Labels[input] : Input_Labels[0];
}

void Extract_Data(std::string_view text, int n, std::string& result, std::string* debug_txt) {
    result.clear();
    auto not_found = [&] {
        if (debug_txt != nullptr) *debug_txt += "Did not find data no:" + std::to_string(n) + "\r\n";
        result.clear();
    };
    std::size_t start = 1;
    std::size_t stop = 1;
    if (n == 1) {
        stop = Field_End(1, text);
        if (stop == 0) return not_found();
    } else {
        for (int i = 2; i <= n; ++i) {
            start = In_Str(stop, text, '\t') + 1;
            stop = Field_End(start, text);
            if (stop == 0) return not_found();
        }
    }
    result = std::string(text.substr(start - 1, stop - start));
}

std::string Extract_Data(std::string_view text, int n, std::string* debug_txt) {
    std::string result;
    Extract_Data(text, n, result, debug_txt);
    return result;
}

void Reset_Sensor_Table(Sensor_Table& table) {
    table.Sens_Def_Tab.assign(1, {});
    table.Sens_Point_Tab.assign(1, {});
    table.Linear.assign(1, {});
    table.Sens_Def_Tab[0][Sens_Name] = "<not used>";
    table.Sens_Def_Tab[0][Sens_Unit] = "value";
    for (int i = 1; i <= Sensor_Points; ++i)
        table.Sens_Point_Tab[0][static_cast<std::size_t>(i)] = i;
    table.Sens_Count = 1;
}

void Add_Sensor_Definition(Sensor_Table& table, std::string_view value, Proc_Guard& guard,
                           std::string* debug_txt) {
    // The reader closes the last field itself, so an entry without a final tab still reads.
    std::string entry = std::string(value) + "\r\n";
    auto field = [&](int n) { return Extract_Data(entry, n, debug_txt); };
    std::array<std::string, 8> def{};
    std::array<double, 34> points{};
    Sensor_Table::Linear_Numbers numbers;
    auto decimals = [&](int n) {
        try {
            return To_Int16(Scan(field(n)));
        } catch (const std::exception& e) {
            guard.Fail(e.what());
            return 0;
        }
    };

    std::string type = field(2);
    if (type == "Linear") {
        def[Sens_Name] = field(1);
        def[Sens_Type] = field(2);
        def[Sens_Unit] = field(7);
        points[0] = decimals(8);
        numbers.gain = Scan(field(3));
        numbers.offset = Scan(field(4));
        numbers.min = Scan(field(5));
        numbers.max = Scan(field(6));
        def[Sens_Gain] = Points_For_Numbers(field(3));
        def[Sens_Offset] = Points_For_Numbers(field(4));
        def[Sens_Min] = Points_For_Numbers(field(5));
        def[Sens_Max] = Points_For_Numbers(field(6));
        def[Sens_In_Unit] = field(9);
        // The last point stands for raw 256, which the clamp brings back to the maximum.
        for (int i = 1; i <= Sensor_Points; ++i) {
            double x = 8.0 * (i - 1);
            if (x > numbers.max) x = numbers.max;
            if (x < numbers.min) x = numbers.min;
            points[static_cast<std::size_t>(i)] =
                Round_Even(numbers.offset + numbers.gain * x, static_cast<int>(points[0]));
        }
    } else if (type == "Tab") {
        def[Sens_Name] = field(1);
        def[Sens_Type] = field(2);
        def[Sens_Unit] = field(36);
        points[0] = decimals(37);
        def[Sens_In_Unit] = field(38);
        for (int i = 1; i <= Sensor_Points; ++i)
            points[static_cast<std::size_t>(i)] = Scan(field(i + 2));
    }
    table.Sens_Def_Tab.push_back(def);
    table.Sens_Point_Tab.push_back(points);
    table.Linear.push_back(numbers);
    ++table.Sens_Count;
}

void Load_Sensor_Definitions(Sensor_State& sensors, const Ini_File& ini, Proc_Guard& guard,
                             std::string* debug_txt) {
    Load_Sensor_Definitions(sensors, ini.Snapshot(), guard, debug_txt);
}

void Load_Sensor_Definitions(Sensor_State& sensors, const Ini_Snapshot& ini, Proc_Guard& guard,
                             std::string* debug_txt) {
    Sensor_Table& table = sensors.table;
    Reset_Sensor_Table(table);
    for (const std::string& value : ini.Read_List("Sens_Def")) {
        if (value.empty()) break;
        Add_Sensor_Definition(table, value, guard, debug_txt);
    }
    Analog_Selection& in = sensors.inputs;
    in.Selection_List.clear();
    in.Sensor_View_List.clear();
    for (int s = 0; s < table.Sens_Count; ++s) {
        in.Selection_List.push_back(table.Name(s));
        in.Sensor_View_List.push_back(table.Name(s) + ", " + table.Type(s));
    }
}

namespace {

std::optional<double> Forward(const Sensor_Table& table, int s, double& raw, bool* is_linear_sensor,
                              bool rounded) {
    if (s == -1 || !table.Has(s)) return std::nullopt;
    const std::string& type = table.Type(s);
    const int decimals = table.Decimals(s);
    const auto Round = [&](double v) { return rounded ? Round_Even(v, decimals) : v; };
    if (type == "Linear") {
        if (is_linear_sensor != nullptr) *is_linear_sensor = true;
        const auto& n = Numbers(table, s);
        if (raw > n.max)
            raw = n.max;
        else if (raw < n.min)
            raw = n.min;
        return Round(raw * n.gain + n.offset);
    }
    if (type == "Tab") {
        if (is_linear_sensor != nullptr) *is_linear_sensor = false;
        if (raw > 255)
            raw = 255;
        else if (raw < 0)
            raw = 0;
        int q = static_cast<int>(Round_Even_Whole(raw)) / 8;
        int lo = q + 1;
        int hi = q + 2;
        double x_lo = 8.0 * (lo - 1);
        double x_hi = 8.0 * (hi - 1);
        double p_lo = Point(table, s, lo);
        double p_hi = Point(table, s, hi);
        return Round(p_lo + (raw - x_lo) * (p_hi - p_lo) / (x_hi - x_lo));
    }
    return 0.0;
}

} // namespace

std::optional<double> Forward_Sensor_Calc(const Sensor_Table& table, int s, double& raw,
                                          bool* is_linear_sensor) {
    return Forward(table, s, raw, is_linear_sensor, true);
}

std::optional<double> Forward_Sensor_Exact(const Sensor_Table& table, int s, double raw) {
    return Forward(table, s, raw, nullptr, false);
}

std::optional<double> Forward_Sensor_Value(const Sensor_Table& table, int s, double raw) {
    return Forward_Sensor_Calc(table, s, raw);
}

std::optional<double> Reversed_Sensor_Value(const Sensor_Table& table, int s, double v) {
    if (s == -1) return std::nullopt;
    if (s < 0 || s >= static_cast<int>(table.Sens_Def_Tab.size())) throw errors::Subscript_Out_Of_Range();
    const std::string& type = table.Type(s);
    if (type == "Linear") {
        const auto& n = Numbers(table, s);
        if (n.gain == 0) throw Run_Error(11, "Division by zero");
        double result = To_Int16((v - n.offset) / n.gain);
        if (result > n.max) result = n.max;
        if (result < n.min) result = n.min;
        return result;
    }
    if (type == "Tab") {
        auto p = [&](int i) { return Point(table, s, i); };
        auto interpolate = [&](int i) {
            return To_Int16(8.0 * (i - 1) + (v - p(i)) * 8 / (p(i + 1) - p(i)));
        };
        bool falling = p(Sensor_Points) < v && v < p(1);
        for (int i = 1; i < Sensor_Points; ++i) {
            bool between = falling ? (p(i) > v && v > p(i + 1)) : (p(i) < v && v < p(i + 1));
            if (between) return interpolate(i);
            if (p(i) == v) return 8.0 * (i - 1);
        }
        return 0.0;
    }
    return std::nullopt;
}

std::optional<double> Reversed_Sensor_Calc(Sensor_State& sensors, int s, double v,
                                           const std::function<void(bool visible)>& show_frame_Linear) {
    if (sensors.table.Has(s)) {
        const std::string& type = sensors.table.Type(s);
        if (type == "Linear" || type == "Tab") {
            sensors.is_linear_sensor = type == "Linear";
            if (show_frame_Linear) show_frame_Linear(sensors.is_linear_sensor);
        }
    }
    return Reversed_Sensor_Value(sensors.table, s, v);
}

// --- log sensors ------------------------------------------------------------------------

Log_Sensor_Row Parse_Log_Sens_Def(std::string_view value) {
    std::string entry = std::string(value) + "\r\n";
    Log_Sensor_Row row{};
    std::string type = Extract_Data(entry, 2);
    int fields = type == "Tab" ? Log_Sensor_Cells : 8;
    for (int n = 1; n <= fields; ++n) {
        std::string text = Extract_Data(entry, n);
        bool numeric = n >= 3 && !(type == "Tab" ? n == 36 : n == 7);
        row[static_cast<std::size_t>(n - 1)] = numeric ? Points_For_Numbers(text) : text;
    }
    return row;
}

namespace {

const Log_Sensor_Row* Log_Row(std::span<const Log_Sensor_Row> rows, std::span<const int> channel_rows,
                              int channel) {
    if (channel < 1 || channel > static_cast<int>(channel_rows.size()))
        throw errors::Subscript_Out_Of_Range();
    int r = channel_rows[static_cast<std::size_t>(channel - 1)];
    if (r == -1) return nullptr;
    if (r < 0 || r >= static_cast<int>(rows.size())) throw errors::Subscript_Out_Of_Range();
    return &rows[static_cast<std::size_t>(r)];
}

double Cell(const Log_Sensor_Row& row, int i) {
    if (i < 0 || i >= Log_Sensor_Cells) throw errors::Subscript_Out_Of_Range();
    return Val(row[static_cast<std::size_t>(i)]);
}

// Each bit decides in turn and there is no early way out, so the highest bit looked at wins.
double Status_Value(const std::string& type, int b) {
    double result = 0;
    if (type == "Status1") {
        for (int i = 0; i <= 7; ++i)
            result = ((b >> i) & 1) ? 0.1 * (i + 1) : 0;
    } else {
        for (int i = 0; i <= 1; ++i)
            result = ((b >> i) & 1) ? 0.9 + 0.1 * i : 0;
    }
    return result;
}

} // namespace

std::optional<double> Forward_Log_Sensor_Calc(std::span<const Log_Sensor_Row> rows,
                                              std::span<const int> channel_rows, int channel, double raw) {
    const Log_Sensor_Row* row = Log_Row(rows, channel_rows, channel);
    if (row == nullptr) return std::nullopt;
    const std::string& type = (*row)[1];
    if (type == "Linear") return Cell(*row, 3) + Cell(*row, 2) * raw;
    if (type == "Linear2c") return Cell(*row, 3) + Cell(*row, 2) * (raw < 128 ? raw : raw - 256);
    if (type == "Tab") {
        int q = static_cast<int>(Round_Even_Whole(raw)) / 8;
        int i = q + 2;
        double lo = Cell(*row, i);
        double hi = Cell(*row, i + 1);
        return Round_Even(lo + (hi - lo) / 8 * (raw - 8.0 * q), 2);
    }
    if (type == "Status1" || type == "Status2") return Status_Value(type, static_cast<int>(raw) & 255);
    return std::nullopt;
}

std::optional<double> Forward_Log_Sensor_Calc(std::span<const Log_Sensor_Row> rows,
                                              std::span<const int> channel_rows, int channel,
                                              std::string_view raw_text) {
    const Log_Sensor_Row* row = Log_Row(rows, channel_rows, channel);
    if (row == nullptr) return std::nullopt;
    const std::string& type = (*row)[1];
    if (type == "Status1" || type == "Status2") {
        std::string digits;
        for (char c : raw_text)
            if (c != 'h') digits += c;
        return Status_Value(type, Hex2_To_Byte(digits));
    }
    return Forward_Log_Sensor_Calc(rows, channel_rows, channel, Val(raw_text));
}

// --- the twelve inputs ------------------------------------------------------------------

namespace {
void Select_Row(Analog_Context& ctx, int input) {
    auto i = static_cast<std::size_t>(input);
    int s = ctx.sensors.inputs.An_Sel[i];
    ctx.sensors.inputs.An_Combo_Index[i] = ctx.sensors.table.Has(s) ? s : -1;
}
} // namespace

void Init_Analog_from_Inifile(Analog_Context& ctx) {
    Proc_Guard guard(ctx.log, "init analog from inifile");
    Ini_Snapshot ini;
    guard.Step([&] { ini = ctx.ini.Snapshot(); });
    for (int i = 1; i <= Analog_Inputs; ++i) {
        guard.Step([&] {
            auto value = Val(ini.Read_Ini("an_sel" + std::to_string(i)));
            ctx.sensors.inputs.An_Sel[static_cast<std::size_t>(i)] = To_Int16(value);
            Select_Row(ctx, i);
        });
    }
}

void Init_Analog_from_CardByte(Analog_Context& ctx) {
    Proc_Guard guard(ctx.log, "init analog from cardbyte");
    Analog_Selection& in = ctx.sensors.inputs;
    in.Analog_Init_Busy = true;
    bool told = false;
    for (int i = 1; i <= Analog_Inputs; ++i) {
        guard.Step([&] {
            int b = ctx.image.CardByte[static_cast<std::size_t>(An_Sel_Base + i)];
            if (b < ctx.sensors.table.Sens_Count) {
                in.An_Sel[static_cast<std::size_t>(i)] = b;
            } else {
                in.An_Sel[static_cast<std::size_t>(i)] = Missing_Sensor_Fallback;
                if (!told) {
                    ctx.texts.Debug_txt += "Selected analog sensor missing.\r\n";
                    ctx.texts.rs232_text = "< Analog sensor missing >";
                    told = true;
                }
            }
            Select_Row(ctx, i);
        });
    }
    in.Analog_Init_Busy = false;
}

void AN_Combo_Click(Analog_Context& ctx, int input, int list_index, const Analog_Hooks& hooks) {
    Analog_Selection& in = ctx.sensors.inputs;
    if (in.Analog_Init_Busy || input < 1 || input > Analog_Inputs) return;
    auto i = static_cast<std::size_t>(input);
    int n = byte_chk(list_index);
    if (n == in.An_Sel[i]) return;
    Proc_Guard guard(ctx.log, "AN Combo Click");
    in.An_Sel[i] = n;
    in.An_Combo_Index[i] = list_index;
    guard.Step([&] { ctx.ini.Write_Ini("an_sel" + std::to_string(input), std::to_string(n)); });
    guard.Step([&] {
        auto a = static_cast<std::size_t>(An_Sel_Base + input);
        if (ctx.image.CardByte[a] != n) ctx.image.ChangedByte[a] = Changed_Mark;
        ctx.image.CardByte[a] = static_cast<std::uint8_t>(n);
    });
    guard.Step([&] {
        if (hooks.Keep_Physical_sensorvalue) hooks.Keep_Physical_sensorvalue(input);
    });
    for (const auto& hook : {hooks.Update_Tabs, hooks.Update_All, hooks.Update_scroll_change})
        guard.Step([&] {
            if (hook) hook();
        });
}

} // namespace quorlen
