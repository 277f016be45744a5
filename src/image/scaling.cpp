#include "image/scaling.h"

#include "core/proc_guard.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace quorlen {

double Round_Even_Whole(double value) {
    double down = std::floor(value);
    double diff = value - down;
    double tolerance = 1e-9 * std::max(1.0, std::fabs(value));
    if (std::fabs(diff - 0.5) <= tolerance) return std::fmod(down, 2.0) == 0 ? down : down + 1;
    return std::round(value);
}

double Round_Even(double value, int decimals) {
    if (!std::isfinite(value)) return value;
    double scale = std::pow(10.0, decimals);
    return Round_Even_Whole(value * scale) / scale;
}

int Format_Decimals(std::string_view format) {
    std::size_t point = format.find('.');
    if (point == std::string_view::npos) return 0;
    int decimals = 0;
    for (std::size_t i = point + 1; i < format.size() && (format[i] == '0' || format[i] == '#'); ++i)
        ++decimals;
    return decimals;
}

std::string Format_Number(double value, std::string_view format) {
    if (!std::isfinite(value)) return "";
    int decimals = Format_Decimals(format);
    std::size_t point = format.find('.');
    int digits = 0;
    for (std::size_t i = 0; i < std::min(point, format.size()); ++i)
        if (format[i] == '0') ++digits;
    double rounded = Round_Even(value, decimals);
    if (rounded == 0) rounded = 0; // no "-0.0"
    char text[64];
    int width = digits + (decimals > 0 ? decimals + 1 : 0);
    if (rounded < 0) ++width;
    std::snprintf(text, sizeof text, "%0*.*f", width, decimals, rounded);
    return text;
}

std::string Decimals_Format(int decimals) {
    if (decimals <= 0) return "0";
    return "0." + std::string(static_cast<std::size_t>(std::min(decimals, 4)), '0');
}

namespace {

// Factors stand as the box's documentation has them: 0.019608 is 5/255 to six places and
// 0.390625 is 100/256.
constexpr Scaling_Row Catalogue[] = {
    {7, 100, 0, 10, "0", "Idle RPM", "rpm"},
    {8, 0, 0, 1, "0", "Idle control, Gain (P)", "."},
    {9, 0, 0, 1, "0", "Idle control, Sum (I)", "."},
    {10, 0, 0, 1, "0", "Idle control, Difference (D)", "."},
    {12, 0, 0, 0.019608, "0.00", "Throttle level to enter idle mode", "%"},
    {13, 100, 0, 0.2, "0.0", "Idle ignition", "deg"},
    {14, 100, 0, 0.2, "0.0", "Crank ignition", "deg"},
    {17, 255, -65, 50, "0", "Fuel and Ign cut RPM      soft ign cut 250rpm earlier", "rpm"},
    {18, 0, 0, 1, "0", "Crank sensor teeth between missing pulse and 51deg BTDC marking", "teeth"},
    {19, 0, 0, 0.2, "0.0", "", ""},
    {20, 0, 0, 1, "0", "Crank sensor teeth between missing pulse and Fuel pulse start", "teeth"},
    {21, 15, 0, 0.2, "0.0", "Ignition charge (dwell) time", "ms"},
    {24, 128, 128, 0.0256, "0.00", "", ""},
    {25, 128, 128, 0.0256, "0.00", "", ""},
    {26, 128, 128, 0.0256, "0.00", "", ""},
    {27, 128, 128, 0.0256, "0.00", "", ""},
    {28, 128, 128, 0.0256, "0.00", "", ""},
    {29, 128, 128, 0.0256, "0.00", "", ""},
    {30, 128, 0, 0.019608, "0.0", "Coolant temperature to start fan", "C"},
    {31, 128, 128, 0.0256, "0.00", "", ""},
    {32, 128, 128, 0.0256, "0.00", "", ""},
    {33, 128, 128, 0.0256, "0.00", "", ""},
    {34, 128, 128, 0.0256, "0.00", "", ""},
    {35, 0, 0, 0.2, "0.00", "Throttle level for idle ignition fade out", "%"},
    {36, 0, 0, 30, "0", "Crank fuel (snaps at crank)", "ms"},
    {37, 0, 0, 0.390625, "0.0", "Start up fuel comp with warm engine", "%"},
    {38, 0, 0, 0.2097152, "0.0", "Start up fuel duration after crank", "s"},
    {79, 0, -255, 0.0032, "0.000", "Injector dead time", "ms"},
    {84, 0, 0, 0.019608, "0.00", "ALS min TPS", "V"},
    {84, 0, 0, 0.019608, "0.00", "ALS min TPS", "V"},
    {85, 255, -65, 50, "0", "2nd RPM limit", "rpm"},
    {86, 0, 0, 0.019608, "0.00", "Threshold", "dV/samp"},
    {87, 0, 0, 0.019608, "0.00", "Fuel change gain", "ms/dV"},
    {88, 0, 0, 1, "0", "Sustain (number of engine cycles)", "cycles"},
    {89, 0, 0, 0.390625, "0.0", "Start up idle air PWM2 compensation", "%"},
    {90, 0, 0, 0.2097152, "0.0", "Start up air duration after crank", "s"},
    {91, 0, 0, 0.390625, "0.0", "ALS max PWM2 output", "%"},
    {93, 200, 0, 0.5, "0.0", "Low load PWM1 comp.", "%"},
    {95, 200, 0, 0.5, "0.0", "", "%"},
    {97, 128, 128, 0.2, "0.0", "Low limit ignition compensation", "deg"},
    {99, 128, 128, 0.2, "0.0", "High limit ignition compensation", "deg"},
    {171, 0, 0, 1, "0.0", "Cold engine temperature limit", "C"},
    {172, 0, 0, 0.019608, "0.0", "Warm engine temperature limit", "C"},
    {173, 0, 0, 0.390625, "0.0", "Choke fuel", "%"},
    {212, 128, 0, 0.019608, "0.0", "Coolant temp. to start AFR control", "C"},
    {132, 0, 0, 0.390625, "0.0", "ALS extra fuel", "%"},
    {176, 0, 0, 0.390625, "0.0", "ALS ignition retard", "deg"},
    {177, 0, 0, 0.019608, "0.00", "Launch/ALS high temp cut off", "V"},
    {178, 0, 0, 0.019608, "0.00", "ALS max TPS", "V"},
    {179, 100, 0, 50, "0", "ALS minimum RPM", "rpm"},
    {180, 100, 0, 50, "0", "Launch RPM start", "rpm"},
    {183, 200, 0, 0.019608, "0.00", "TPS low limit", "V"},
    {184, 20, 0, 0.019608, "0.00", "", ""},
    {189, 20, 0, 0.0065536, "0.000", "Cut off time:", "s"},
    {190, 128, 128, 0.2, "0.0", "PWM change on activation", "%"},
    {213, 255, 0, 62.5, "0", "AFR control max RPM to be active", "rpm"},
    {214, 0, 0, 0.390625, "0.0", "Launch extra fuel", "%"},
    {217, 0, 0, 0.390625, "0.0", "Launch ignition retard", "deg"},
    {218, 255, -65, 50, "0", "Launch RPM limit", "rpm"},
    {219, 0, 0, 0.1, "0.0", "Extra fuel when battery voltage is below 13.5V       (max 8.4 ms)", "ms/V"},
    {220, 0, 0, 0.019608, "0.0", "Low air temperature limit", "C"},
    {221, 128, 128, 0.19608, "0.0", "Low air temp correction fuel", "%"},
    {222, 0, 0, 0.019608, "0.0", "High air temperature limit", "C"},
    {223, 128, 128, 0.19608, "0.0", "High air temp correction fuel", "%"},
    {224, 0, 0, 0.390625, "0", "AFR control speed at idle, Sum (I)", "."},
    {225, 0, 0, 1, "0", "AFR control start delay", "s"},
    {226, 0, 0, 0.019608, "0.00", "Narrow sensor target voltage", "V"},
    {227, 0, 0, 0.019608, "0.00", "AFR control max Load to be active", "bar"},
    {228, 0, 0, 0.019608, "0.00", "AFR control min Load to be active", "bar"},
    {229, 255, 0, 0.019608, "0.00", "Load level to start AFR supervising", "bar"},
    {231, 255, 0, 62.5, "0", "RPM ON", "%"},
    {232, 255, 0, 62.5, "0", "RPM OFF", ""},
    {236, 255, 0, 62.5, "0", "RPM ON", "%"},
    {237, 255, 0, 62.5, "0", "RPM OFF", "%"},
    {241, 255, 0, 62.5, "0", "RPM ON", "%"},
    {242, 255, 0, 62.5, "0", "RPM OFF", "%"},
    {246, 255, 0, 62.5, "0", "RPM ON", "%"},
    {247, 255, 0, 62.5, "0", "RPM OFF", "%"},
    {643, 0, 0, 62.5, "0.0", "Cyl A, M", ""},
    {644, 0, 0, 62.5, "0.0", "Cyl B, M", ""},
    {645, 0, 0, 62.5, "0.0", "Cyl C, M", ""},
    {646, 0, 0, 62.5, "0.0", "Cyl D, M", ""},
    {647, 0, 0, 62.5, "0.0", "Cyl E, M", ""},
    {648, 0, 0, 62.5, "0.0", "Cyl A, S", ""},
    {649, 0, 0, 62.5, "0.0", "Cyl B, S", ""},
    {650, 0, 0, 62.5, "0.0", "Cyl C, S", ""},
    {651, 0, 0, 62.5, "0.0", "Cyl D, S", ""},
    {652, 0, 0, 62.5, "0.0", "Cyl E, S", ""},
};

} // namespace

std::span<const Scaling_Row> Scaling_Catalogue() {
    return Catalogue;
}

const Scaling_Row* Find_Scaling_Row(int address) {
    for (const Scaling_Row& row : Catalogue)
        if (row.address == address) return &row;
    return nullptr;
}

double Scroll_Value(const Settings_Image& image, int address, int byte_value) {
    int a = Checked_Address(address);
    return (byte_value - image.ScrollOffset[a]) * image.ScrollFactor[a];
}

std::string Scroll_Text(const Settings_Image& image, int address, int byte_value) {
    return Format_Number(Scroll_Value(image, address, byte_value),
                         image.ScrollFormat[Checked_Address(address)]);
}

std::string Settings_scroll_Change(Settings_Image& image, int address, int value) {
    int a = Checked_Address(address);
    std::uint8_t byte = byte_chk(value);
    if (image.CardByte[a] != byte) {
        image.CardByte[a] = byte;
        image.ChangedByte[a] = Changed_Mark;
    }
    std::string text = Scroll_Text(image, a, byte);
    image.CardValue[a] = std::strtod(text.c_str(), nullptr);
    return text;
}

void show_scroll(Scroll_Limits& limits, int index, int min, int max) {
    int a = Checked_Address(index);
    limits.Min[a] = min;
    if (max != Keep_Limit) limits.Max[a] = max;
}

void Set_StandAlone_ScrollFactors(Settings_Image& image, Debug_Log& log) {
    Proc_Guard guard(log, "Set stabd akibe scrikk factors");
    guard.Step([&] {
        for (int i = 1; i <= 12; ++i)
            image.Analog_Channel[static_cast<std::size_t>(i)] = i;
        image.BoostSensor = 3;
    });
    guard.Step([&] {
        image.CardByte[3] = static_cast<std::uint8_t>(Bin_2_Dec("10001000"));
        image.CardByte[5] = static_cast<std::uint8_t>(Bin_2_Dec("00010010"));
        image.CardByte[6] = static_cast<std::uint8_t>(Bin_2_Dec("00000000"));
        image.CardByte[11] = static_cast<std::uint8_t>(Bin_2_Dec("00010101"));
        image.CardByte[12] = 0;
        image.CardByte[215] = static_cast<std::uint8_t>(Bin_2_Dec("00000000"));
        image.CardByte[216] = static_cast<std::uint8_t>(Bin_2_Dec("00000000"));
    });
    for (const Scaling_Row& row : Catalogue)
        Set_Cbyte(image, log, row.address, row.value, row.offset, row.factor, row.format);
    guard.Step([&] {
        image.CardByte[174] = static_cast<std::uint8_t>(Bin_2_Dec("00010011"));
        image.CardByte[175] = static_cast<std::uint8_t>(Bin_2_Dec("00001000"));
    });
    guard.Step([&] {
        image.FuelBlockBase = 256;
        image.IgnBlockBase = 653;
        image.Further_Table_Bases = {653, 653, 653};
        image.PwmFuelBase = 46;
    });
}

} // namespace quorlen
