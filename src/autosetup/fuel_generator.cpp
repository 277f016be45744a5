#include "autosetup/fuel_generator.h"

#include "autosetup/generator_math.h"
#include "core/proc_guard.h"
#include "image/scaling.h"
#include "image/settings_image.h"
#include "tables/cell_entry.h"

#include <cmath>

namespace quorlen {

namespace {

double Rpm(const Auto_Fuel_Inputs& in, int k) {
    return Box_Number(in.MaxRPM_txt[static_cast<std::size_t>(k)]);
}

double Ve(const Auto_Fuel_Inputs& in, int k) {
    return Box_Number(in.Volume_Efficiency_txt[static_cast<std::size_t>(k)]);
}

// "12" for 12, "18.6" for 18.6: as a number shows in a label.
std::string Shown(double value) {
    return Number_As_Text(value);
}

} // namespace

void Update_Air_hp_label(Auto_Fuel& form, Debug_Log& log) {
    Proc_Guard guard(log, "Update Air hp label ");
    guard.Step([&] {
        Auto_Fuel_Inputs& in = form.in;
        Auto_Fuel_Figures& fig = form.fig;
        fig.Air_hp = 0;
        if (!in.max_MAP_txt.empty()) {
            Comma_To_Point(in.max_MAP_txt);
            const double V = Box_Number(in.Cylinder_volume_txt);
            const double M = Box_Number(in.max_MAP_txt);
            fig.Air_torque_hp = To_Integer16(std::trunc(Ve(in, Torque_Point) / 100 * V / 10 * M));
            fig.Air_hp =
                To_Integer16(Ve(in, Power_Point) * 1.7 / 100 * V / 2 / 1000 * Rpm(in, Power_Point) / 60 * M);
        }
        Show_Setup_analyzes(form, log);
    });
}

void Update_Fuel_hp_label(Auto_Fuel& form, bool Sequential_Fuel, Debug_Log& log) {
    Proc_Guard guard(log, "Update Fuel hp label ");
    guard.Step([&] {
        Auto_Fuel_Inputs& in = form.in;
        Auto_Fuel_Figures& fig = form.fig;
        fig.Fuel_hp_at_rpm = 0;
        form.Sequential_Fuel = Sequential_Fuel;
        if (!in.lambda_txt.empty()) {
            Comma_To_Point(in.lambda_txt);
            Comma_To_Point(in.FuelP_txt);
            const double F = in.FuelType_option == E85 ? 1.3 : 1.0;
            const int n = To_Integer16(Box_Number(in.NumberOfInjectors_txt));
            const int c = To_Integer16(Box_Number(in.FuelInjectorSize_txt));
            // Injectors times size is worked out in 16 bits, as the figures always were.
            const int flow = To_Integer16(static_cast<double>(n) * c);
            const double P = Box_Number(in.FuelP_txt);
            const double L = Box_Number(in.lambda_txt);
            const double O = Box_Number(in.InjectorOffset_txt);
            const double R = Rpm(in, Power_Point);
            if (P < 0) throw Run_Error(5, "Invalid procedure call or argument");
            fig.Fuel_hp = To_Integer16(flow * L / 500 * 100 * std::sqrt(P / 3) / F);
            // Two revolutions at R take 6000 / R * 20 ms: one pulse a cycle, less the offset.
            const double X = Divide(6000, R, "the RPM at maximal power is 0") * 20 - O;
            fig.Fuel_hp_at_rpm = To_Integer16(fig.Fuel_hp * X / 6000 * R / 20);
            const double top = Rpm(in, Top_Point);
            const double needed = Round_Even(
                Divide(fig.Air_hp, fig.Fuel_hp_at_rpm, "the fuel is enough for 0 hp") * 6000 / R * 20, 2);
            // Semi-sequential injection gives two pulses in the cycle, each half the fuel.
            const double pulses = Sequential_Fuel ? 1 : 2;
            fig.Max_Fuel_ms = needed / pulses;
            fig.Max_Pulse_ms = Round_Even(Divide(6000, top, "the top RPM is 0") * 20 / pulses - O, 2);
            fig.Max_Rev = To_Integer32(Round_Even(
                Divide(6000, fig.Max_Fuel_ms + O, "the injector offset cancels the fuel pulse") * 20 / pulses,
                0));
        }
        Show_Setup_analyzes(form, log);
    });
}

void Show_Setup_analyzes(Auto_Fuel& form, Debug_Log& log) {
    Proc_Guard guard(log, "Show Setup analyzes ");
    guard.Step([&] {
        const Auto_Fuel_Figures& fig = form.fig;
        Auto_Fuel_Labels& l = form.labels;
        const double O = Box_Number(form.in.InjectorOffset_txt);
        l.Air_hp_label = {"Air power: ", std::to_string(fig.Air_hp) + "hp"};
        l.Fuel_hp_label = {"The fuel is enough for: ", std::to_string(fig.Fuel_hp_at_rpm) + "hp"};
        l.Max_fuel_lable[0] = "Max fuel pulse length at max MAP: ";
        l.Max_fuel_lable[1] = Shown(Round_Even(fig.Max_Fuel_ms + O, 1)) + " ms";
        const double R = Rpm(form.in, Top_Point);
        // Whole percents to the nearest: 6300 rpm of 7000 is 10 % short, not the 9.99 % the
        // binary fraction of 0.9 leaves.
        const int P1 =
            To_Integer32(Divide(fig.Air_hp - fig.Fuel_hp_at_rpm, fig.Air_hp, "the air power is 0") * 100);
        const int P2 = To_Integer32((1 - Divide(fig.Max_Rev, R, "the top RPM is 0")) * 100);
        const std::string short_of = "Not enough fuel capacity by: ";
        const std::string rev_to = "You can only rev to: ";
        const std::string max_rev = std::to_string(fig.Max_Rev) + " rpm";
        if (R < fig.Max_Rev && P1 > 0) {
            l.Under_fuel_lable = {short_of, std::to_string(P1) + "%"};
            l.Max_fuel_lable[2] = l.Max_fuel_lable[3] = "";
        } else if (R > fig.Max_Rev && P1 <= 0) {
            l.Under_fuel_lable = {short_of, std::to_string(P2) + "%"};
            l.Max_fuel_lable[2] = rev_to;
            l.Max_fuel_lable[3] = max_rev;
        } else if (R > fig.Max_Rev && P1 > 0) {
            l.Under_fuel_lable = {short_of, std::to_string(P2) + "%/" + std::to_string(P1) + "%"};
            l.Max_fuel_lable[2] = rev_to;
            l.Max_fuel_lable[3] = max_rev;
        } else {
            l.Under_fuel_lable = {"", ""};
            l.Max_fuel_lable[2] = l.Max_fuel_lable[3] = "";
        }
    });
}

std::vector<std::uint8_t> Autofuel_Cells(const Auto_Fuel& form, const Map_Axes& axes) {
    const Auto_Fuel_Inputs& in = form.in;
    const std::size_t rows = axes.load.size();
    const std::size_t cols = axes.rpm.size();
    std::vector<std::uint8_t> cells(rows * cols);

    // The load curve at peak torque: the pulse grows from the offset at the lowest MAP to the
    // needed pulse at the maximal MAP, straight on beyond both.
    const double low = Box_Number(in.idle_MAP_txt);
    const double high = Box_Number(in.max_MAP_txt);
    const double offset = Box_Number(in.InjectorOffset_txt);
    const double torque_ve = Ve(in, Torque_Point);
    for (std::size_t r = 0; r < rows; ++r) {
        const double map = Box_Number(axes.load[r]);
        double f = Round_Even(
            Divide((map - low) * form.fig.Max_Fuel_ms, high - low, "the lowest MAP equals the maximal MAP"),
            2);
        f = Divide(f * 100, torque_ve, "the volumetric efficiency at maximal torque is 0");
        f += offset;
        const std::uint8_t b = Fuel_ms_to_byte(f);
        for (std::size_t c = 0; c < cols; ++c)
            cells[r * cols + c] = b;
    }

    // The speed curve scales the coded bytes of each column by the volumetric efficiency at
    // its speed: flat below idle and above the top, straight between neighbouring points.
    auto scale = [&](std::size_t c, double factor) {
        for (std::size_t r = 0; r < rows; ++r)
            cells[r * cols + c] = byte_chk(cells[r * cols + c] * factor);
    };
    std::array<double, Speed_Points> T{}, E{};
    for (int k = 0; k < Speed_Points; ++k) {
        T[static_cast<std::size_t>(k)] = Rpm(in, k);
        E[static_cast<std::size_t>(k)] = Ve(in, k);
    }
    auto speed = [&](std::size_t c) { return Box_Number(axes.rpm[c]); };
    std::size_t j = 0;
    for (; j < cols && !(T[0] < speed(j)); ++j)
        scale(j, E[0] / 100);
    for (std::size_t k = 0; k + 1 < Speed_Points; ++k) {
        for (; j < cols; ++j) {
            const double s = speed(j);
            if (T[k] > s || T[k + 1] < s) break;
            const double e =
                Divide(E[k + 1] - E[k], T[k + 1] - T[k], "two neighbouring RPM points are equal") *
                    (s - T[k]) +
                E[k];
            scale(j, e / 100);
        }
    }
    for (; j < cols; ++j)
        scale(j, E[Top_Point] / 100);
    return cells;
}

} // namespace quorlen
