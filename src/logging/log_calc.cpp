#include "logging/log_calc.h"

#include "core/proc_guard.h"
#include "core/run_error.h"
#include "core/text.h"
#include "image/scaling.h"
#include "logging/log_text.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace quorlen {

namespace {

using Kind = Signal_Plan::Kind;

// Round to 0..3 places with a tie to the even digit, as Round_Even does (a value within a hair
// of the tie counts as the tie its decimal text means), inline: every cell of a log passes here.
inline double Round_To(double value, int decimals) {
    static constexpr double Scale[] = {1, 10, 100, 1000};
    const double s = Scale[decimals];
    const double x = value * s;
    const double down = std::floor(x);
    const double diff = x - down;
    const double tolerance = 1e-9 * std::max(1.0, std::fabs(x));
    double whole;
    if (std::fabs(diff - 0.5) <= tolerance)
        whole = std::fmod(down, 2.0) == 0 ? down : down + 1;
    else
        whole = diff > 0.5 ? down + 1 : down;
    return whole / s;
}

// Val of a short field: three digits are by far the common case.
double Field_Value(std::string_view x) {
    if (x.size() == 3 && x[0] >= '0' && x[0] <= '9' && x[1] >= '0' && x[1] <= '9' && x[2] >= '0' &&
        x[2] <= '9')
        return (x[0] - '0') * 100 + (x[1] - '0') * 10 + (x[2] - '0');
    return Val(x);
}

std::string_view Field_At(std::string_view row, int c) {
    const std::size_t at = static_cast<std::size_t>(4 * c - 1);
    if (at >= row.size()) return {};
    return row.substr(at, 3);
}

Signal_Plan Plan_Of(const Log_State& log, int signal) {
    Signal_Plan p;
    const int s = log.Log_Signal_Tab[static_cast<std::size_t>(signal)].sensor;
    if (s < 0 || s >= Log_Sensor_Rows) return p;
    const Log_Sensor_Row& row = log.Log_Sens_Tab[static_cast<std::size_t>(s)];
    const std::string& type = row[1];
    p.kind = type == "Linear"     ? Kind::Linear
             : type == "Linear2c" ? Kind::Linear2c
             : type == "Tab"      ? Kind::Tab
             : type == "Status1"  ? Kind::Status1
             : type == "Status2"  ? Kind::Status2
             : type == "Status3"  ? Kind::Status3
                                  : Kind::Unknown;
    p.gain = Val(row[2]);
    p.offset = Val(row[3]);
    for (int i = 2; i < Log_Sensor_Cells; ++i)
        p.cells[static_cast<std::size_t>(i)] = Val(row[static_cast<std::size_t>(i)]);
    return p;
}

void Prepare(Log_State& log) {
    for (int i = 0; i < Log_Signal_Count; ++i)
        log.plan[static_cast<std::size_t>(i)] = Plan_Of(log, i);
    log.plan_ready = true;
}

double Gain_Of_Column(const Log_State& log, int column) {
    if (column < 1 || column > Log_Signal_Count) return 0;
    const Signal_Plan& p = log.plan[static_cast<std::size_t>(column - 1)];
    return p.kind == Kind::Linear || p.kind == Kind::Linear2c ? p.gain : 0;
}

// The eight bits of a status byte on levels of their own: 0.1 to 0.8 for the first byte,
// 0.9 to 1.6 for the second, 1.9 to 2.6 for the third.
void Status_Bits(Log_Array& data, int r, int first_column, int value, Kind kind) {
    if (first_column < 0) throw errors::Subscript_Out_Of_Range();
    for (int k = 0; k < 8; ++k) {
        const double level = kind == Kind::Status1   ? 0.1 * (k + 1)
                             : kind == Kind::Status2 ? 0.9 + 0.1 * k
                                                     : 1.9 + 0.1 * k;
        data(r, first_column + k) = (value >> k) & 1 ? level : 0;
    }
}

double Speed_Factor(int option) {
    return option == 1 ? 3.6 / 1.609344 : option == 2 ? 1.0 : 3.6;
}

// The enrichment signal's change from the row before.
void Delta(Log_Context& ctx, Log_Array& data, int r) {
    const Log_Columns& c = ctx.log.columns;
    const int index = ctx.hooks.ae_combo_index ? ctx.hooks.ae_combo_index() : 0;
    double delta = 0;
    if (index == 2) delta = data.Num(r, c.Col_AN3) - data.Num(r - 1, c.Col_AN3);
    if (index == 1) delta = data.Num(r, c.Col_AN2) - data.Num(r - 1, c.Col_AN2);
    if (c.Col_Delta < 0) return;
    data(r, c.Col_Delta) = Round_To(delta, 2);
}

} // namespace

void Read_Car_Values(Log_State& log, bool extended) {
    const Log_Setup& s = log.setup;
    auto& car = log.car;
    const int gear = s.Gear_option >= 1 && s.Gear_option <= 6 ? s.Gear_option : 1;
    car.Gearing = Text_Value(s.txt_Gearing[static_cast<std::size_t>(gear)]);
    car.Speed_Factor = Speed_Factor(s.Speed_option);
    car.Mass = Text_Value(s.txt_Weight) / (s.Weight_option == 1 ? 2.205 : 1.0);
    car.Power_Max = Text_Value(s.txt_Max_Hp);
    car.Power_Min = Text_Value(s.txt_Min_Hp);
    if (!s.txt_AirResistance.empty())
        car.Air_Constant = Text_Value(s.txt_AirDensity) * Text_Value(s.txt_FrontalArea) *
                           Text_Value(s.txt_AirResistance) / 2;
    else if (extended)
        car.Air_Constant = 0;
    car.Loss_0 = Text_Value(s.txt_Transloss_0k) / 100;
    car.Loss_6000 = Text_Value(s.txt_Transloss_6k) / 100;
}

void Calculate_Data(Log_Context& ctx, std::string_view row, int r, Log_Array& data) {
    Proc_Guard guard(ctx.debug, "Calculate log signals");
    Log_State& log = ctx.log;
    const Log_Columns& col = log.columns;
    const int columns = std::min<int>(log.Log_Row_Columns, Log_Signal_Count);

    if (r == 0) {
        guard.Step([&] {
            for (int c = 1; c <= columns; ++c)
                data.Name(c) = log.Log_Signal_Tab[static_cast<std::size_t>(c - 1)].name;
        });
        guard.Step([&] { Prepare(log); });
        guard.Step([&] { Read_Car_Values(log, false); });
        return;
    }
    if (!log.plan_ready) Prepare(log);

    guard.Step([&] { data(r, 0) = (r - 1) * 0.05; });
    guard.Step([&] {
        const Signal_Plan& p = log.plan[0];
        if (p.kind != Kind::Linear) return;
        std::string head;
        for (char ch : row.substr(0, 6))
            if (ch != '$') head += ch == ',' ? '.' : ch;
        const double raw = head == "A.0000" ? 10 : Val(head);
        data(r, col.Col_RPM) = p.offset + p.gain * raw;
    });

    for (int c = 2; c <= columns; ++c) {
        const Signal_Plan& p = log.plan[static_cast<std::size_t>(c - 1)];
        if (p.kind == Kind::None) continue;
        guard.Step([&] {
            const std::string_view x = Field_At(row, c);
            switch (p.kind) {
            case Kind::Linear:
                data(r, c) = Round_To(p.offset + p.gain * Field_Value(x), 3);
                break;
            case Kind::Linear2c: {
                const double v = Field_Value(x);
                data(r, c) = Round_To(p.offset + p.gain * (v < 128 ? v : v - 256), 3);
                break;
            }
            case Kind::Tab: {
                const int v = static_cast<int>(Field_Value(x));
                const int i = 2 + v / 8;
                if (i < 0 || i + 1 >= Log_Sensor_Cells) throw errors::Subscript_Out_Of_Range();
                const double y0 = p.cells[static_cast<std::size_t>(i)],
                             y1 = p.cells[static_cast<std::size_t>(i + 1)];
                data(r, c) = Round_To(y0 + (y1 - y0) / 8 * (v - 8 * (v / 8)), 3);
                break;
            }
            case Kind::Status1:
                Status_Bits(data, r, col.Col_Status1, Hex_Field_Value(x), p.kind);
                break;
            case Kind::Status2:
                Status_Bits(data, r, col.Col_Status2, Hex_Field_Value(x), p.kind);
                break;
            case Kind::Status3:
                Status_Bits(data, r, col.Col_Status3, Hex_Field_Value(x), p.kind);
                break;
            default:
                break;
            }
            if (c == col.Col_AN1) data(r, col.Col_AD1_Bin) = Field_Value(x);
            if (c == col.Col_AN2) data(r, col.Col_AD2_Bin) = Field_Value(x);
            if (c == col.Col_AN3) data(r, col.Col_AD3_Bin) = Field_Value(x);
        });
    }

    if (!log.capture.Logging_Running || r < 4) return;
    guard.Step([&] {
        const auto& car = log.car;
        const double v0 = data.Num(r - 3, col.Col_RPM) * car.Gearing / car.Speed_Factor / 1000;
        const double v1 = data.Num(r, col.Col_RPM) * car.Gearing / car.Speed_Factor / 1000;
        const double p_accel = (car.Mass / 2) * (v1 * v1 - v0 * v0) * Log_Rows_Per_Second / 736 / 3;
        const double p_air = v0 * v0 * v0 * car.Air_Constant / 736;
        const double loss = 1 + car.Loss_0 + data.Num(r, col.Col_RPM) * (car.Loss_6000 - car.Loss_0) / 6000;
        const double power = (p_accel + p_air) * loss;
        if (power > car.Power_Min && power < car.Power_Max)
            data(r, col.Col_Power) = Round_Even_Whole(power);
        else if (power < car.Power_Min)
            data(r, col.Col_Power) = car.Power_Min;
        else if (power > car.Power_Max)
            data(r, col.Col_Power) = car.Power_Max;
    });
    guard.Step([&] { Delta(ctx, data, r); });
}

void Calculate_Extended_Signals(Log_Context& ctx, Log_Array& data, int L) {
    Proc_Guard guard(ctx.debug, "Calculate exteded log singals");
    Log_State& log = ctx.log;
    const Log_Setup& s = log.setup;
    const Log_Columns& col = log.columns;
    if (!log.plan_ready) Prepare(log);

    guard.Step([&] { RPM2_Filter4(data, L, Smoothing_Rows(s.txt_FIR[0]), col.Col_RPM, col.Col_RPM2); });
    guard.Step([&] { Read_Car_Values(log, true); });
    const auto& car = log.car;
    guard.Step([&] {
        for (int r = 1; r <= L; ++r) {
            const double speed = data.Num(r, col.Col_RPM2) * car.Gearing / 1000;
            data(r, col.Col_Speed) = speed > 0 && speed < 500 ? Round_To(speed, 3) : 0;
        }
    });
    guard.Step([&] {
        for (int r = 1; r <= L && r < 3; ++r) {
            data(r, col.Col_Power) = 0;
            data(r, col.Col_Accel) = 0;
        }
        for (int r = 3; r <= L; ++r) {
            const double rpm2 = data.Num(r, col.Col_RPM2);
            const double v0 = data.Num(r - 3, col.Col_RPM2) * car.Gearing / car.Speed_Factor / 1000;
            const double v1 = rpm2 * car.Gearing / car.Speed_Factor / 1000;
            data(r, col.Col_Accel) = Round_To((v1 - v0) / 3 / 0.05, log.Reading_Compare ? 2 : 1);
            const double p_accel = (car.Mass / 2) * (v1 * v1 - v0 * v0) * Log_Rows_Per_Second / 736 / 3;
            const double p_air = v0 * v0 * v0 * car.Air_Constant / 736;
            const double loss = rpm2 * (car.Loss_6000 - car.Loss_0) / 6000 + 1 + car.Loss_0;
            const double power = (p_accel + p_air) * loss;
            if (power > car.Power_Min && power < car.Power_Max)
                data(r, col.Col_Power) = Round_Even_Whole(power);
            else if (power > car.Power_Max)
                data(r, col.Col_Power) = car.Power_Max;
            else if (power < car.Power_Min)
                data(r, col.Col_Power) = car.Power_Min;
        }
    });
    guard.Step([&] { RPM2_Filter3(data, L, Smoothing_Rows(s.txt_FIR[1]), col.Col_Power, col.Col_Power); });
    guard.Step([&] {
        const double unit = s.Torque_option == 1 ? 1.35582 : 1.0;
        for (int r = 1; r <= L; ++r) {
            const double rpm2 = data.Num(r, col.Col_RPM2);
            data(r, col.Col_Torque) =
                rpm2 > 0 ? Round_Even_Whole(data.Num(r, col.Col_Power) / rpm2 * 1000 / 142 * 1000 / unit) : 0;
        }
    });
    guard.Step([&] {
        // The second duty cycle is for the other fuel sensor: scaled by the ratio of gains.
        const double g1 = Gain_Of_Column(log, col.Col_Fuel_DC), g2 = Gain_Of_Column(log, col.Col_Fuel_DC2);
        const double ratio = g1 != 0 && g2 != 0 ? g2 / g1 : 1.0;
        const double injectors = Text_Value(s.txt_FuelInjectorSize);
        for (int r = 1; r <= L - 1; ++r) {
            const double dc =
                Round_To(data.Num(r, col.Col_Fuel) * data.Num(r, col.Col_RPM) / 120000 * 1 * 100, 1);
            if (col.Col_Fuel_DC >= 0) data(r, col.Col_Fuel_DC) = dc;
            if (col.Col_Fuel_DC2 >= 0) data(r, col.Col_Fuel_DC2) = dc * ratio;
            if (col.Col_Consumption >= 0)
                data(r, col.Col_Consumption) = Round_To(dc / 100 * injectors / 1000, 3);
        }
    });
    guard.Step([&] {
        if (col.Col_Economy < 0) return;
        for (int r = 1; r <= L; ++r) {
            const double speed = data.Num(r, col.Col_Speed);
            data(r, col.Col_Economy) =
                speed == 0 ? 0 : Round_To(data.Num(r, col.Col_Consumption) / speed * 60 * 10, 2);
        }
    });
    guard.Step([&] {
        for (int r = 2; r <= L; ++r)
            Delta(ctx, data, r);
    });
}

void RPM2_Filter1(Log_State& log, Log_Array& data, int L, int source, int target) {
    (void)log;
    int r = 1;
    while (r <= L) {
        int k = r + 1;
        while (k <= L && data.Num(k, source) == data.Num(r, source))
            ++k;
        if (k > L) break;
        const double from = data.Num(r, source);
        const double slope = (data.Num(k, source) - from) / (k - r);
        for (int row = r; row < k; ++row)
            data(row, target) = Round_To(from + slope * (row - r), 2);
        r = k;
    }
    for (int row = r; row <= L; ++row)
        data(row, target) = data(row, source);
    if (L >= 2) data(L, target) = data(L - 1, target);
}

void RPM2_Filter2(Log_State& log, Log_Array& data, int L, int source, int target) {
    std::array<double, 5> a{};
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (log.setup.txt_FIR[i].empty()) log.setup.txt_FIR[i] = "0";
        a[i] = Text_Value(log.setup.txt_FIR[i]);
    }
    for (int r = 5; r <= L; ++r) {
        double sum = 0;
        for (int t = 0; t < 5; ++t)
            sum += a[static_cast<std::size_t>(t)] * data.Num(r - t, source);
        data(r, target) = Round_To(sum, 2);
    }
}

int Smoothing_Rows(std::string_view text) {
    if (text.empty()) return 0;
    const double n = std::trunc(Text_Value(text));
    if (n != n) return 0;
    return static_cast<int>(std::clamp(n, -1.0, Log_Row_Limit + 1.0));
}

void RPM2_Filter3(Log_Array& data, int L, int n, int source, int target) {
    // Widened: n comes from a file, and 2n + 1 must not wrap to a small number.
    if (n < 0 || L <= 2LL * n + 1) return;
    std::vector<double> mean(static_cast<std::size_t>(L + 1), 0);
    for (int r = n + 1; r <= L - n; ++r) {
        double sum = 0;
        for (int k = r - n; k <= r + n; ++k)
            sum += data.Num(k, source);
        mean[static_cast<std::size_t>(r)] = sum / (2 * n + 1);
    }
    for (int r = n + 1; r <= L - n; ++r)
        data(r, target) = Round_To(mean[static_cast<std::size_t>(r)], 2);
    for (int r = 1; r <= n; ++r)
        data(r, target) = data(n + 1, target);
    for (int r = L - n + 1; r <= L; ++r)
        data(r, target) = data(L - n, target);
}

void RPM2_Filter4(Log_Array& data, int L, int n, int source, int target) {
    if (n < 0 || L <= static_cast<long long>(n) + 1) return;
    for (int r = n + 1; r <= L; ++r) {
        double sum = 0;
        for (int k = r - n; k <= r; ++k)
            sum += data.Num(k, source);
        data(r, target) = Round_To(sum / (n + 1), 2);
    }
    for (int r = 1; r <= n; ++r)
        data(r, target) = data(n + 1, target);
}

std::optional<int> Live_Raw_Input(const Log_State& log, int input) {
    const Log_Columns& c = log.columns;
    const int column = input == 1   ? c.Col_AD1_Bin
                       : input == 2 ? c.Col_AD2_Bin
                       : input == 3 ? c.Col_AD3_Bin
                                    : -1;
    const int r = log.capture.Log_Row_Count;
    if (column < 1 || r < 1 || r > Log_Row_Limit) return std::nullopt;
    const double v = log.Log_Data(r, column);
    if (Log_Array::Empty(v)) return std::nullopt;
    return static_cast<int>(v);
}

} // namespace quorlen
