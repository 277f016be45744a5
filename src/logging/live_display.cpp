#include "logging/live_display.h"

#include "image/scaling.h"
#include "logging/log_signals.h"

#include <algorithm>
#include <cmath>

namespace quorlen {

const std::array<const char*, Gauge_Count> Gauge_Captions = {
    "RPM",   "MAP",  "TP",  "O2 M",   "O2 S",   "IAT M",   "IAT S",   "BAT M",
    "BAT S", "Cool", "IGN", "Fuel M", "Fuel S", "Ftrim M", "FTrim S", "POWER"};

namespace {

enum class Kind { Speed, Analog, Ignition, Fuel, Percent, Power };

// The box's inputs as the map tables number them: 1 AFR, 2 throttle, 3 MAP, 4 coolant,
// 9 AUX1 (battery), 10 AUX2 (air temperature).
constexpr int Afr_Input = 1, Throttle_Input = 2, Map_Input = 3, Coolant_Input = 4, Bat_Input = 9,
              Iat_Input = 10;
constexpr const char* Fuel_Trim_Label = "Lambda trim";

struct Gauge_Source {
    Kind kind;
    int input = 0; // for an analogue signal
    bool slave = false;
};

constexpr std::array<Gauge_Source, Gauge_Count> Sources = {{
    {Kind::Speed},
    {Kind::Analog, Map_Input},
    {Kind::Analog, Throttle_Input},
    {Kind::Analog, Afr_Input},
    {Kind::Analog, Afr_Input, true},
    {Kind::Analog, Iat_Input},
    {Kind::Analog, Iat_Input, true},
    {Kind::Analog, Bat_Input},
    {Kind::Analog, Bat_Input, true},
    {Kind::Analog, Coolant_Input},
    {Kind::Ignition},
    {Kind::Fuel},
    {Kind::Fuel, 0, true},
    {Kind::Percent},
    {Kind::Percent, 0, true},
    {Kind::Power},
}};

bool In_Layout(const Log_State& log, int column) {
    return column >= 1 && column <= log.columns.Signals && column < Log_Data_Columns;
}

int Labelled_Column(const Log_State& log, const std::string& label) {
    for (int i = 0; i < log.columns.Signals && i < Log_Signal_Count; ++i)
        if (log.setup.controls[static_cast<std::size_t>(i)].label == label) return i + 1;
    return -1;
}

const Log_Sensor_Row* Sensor_Of(const Log_State& log, int column) {
    const int s = log.Log_Signal_Tab[static_cast<std::size_t>(column - 1)].sensor;
    if (s < 0 || s >= static_cast<int>(log.Log_Sens_Tab.size())) return nullptr;
    return &log.Log_Sens_Tab[static_cast<std::size_t>(s)];
}

double Number(const std::string& text) {
    std::string t = text;
    std::replace(t.begin(), t.end(), ',', '.');
    char* end = nullptr;
    const double v = std::strtod(t.c_str(), &end);
    return end == t.c_str() ? 0 : v;
}

// What a sensor reads over its whole raw range 0..255, and its number of decimals.
void Sensor_Range(const Log_Sensor_Row& row, double& low, double& high, int& decimals) {
    if (row[1] == "Tab") {
        low = high = Number(row[2]);
        for (int i = 2; i <= 34; ++i) {
            low = std::min(low, Number(row[static_cast<std::size_t>(i)]));
            high = std::max(high, Number(row[static_cast<std::size_t>(i)]));
        }
        decimals = static_cast<int>(Number(row[36]));
        return;
    }
    const double gain = Number(row[2]), offset = Number(row[3]);
    const bool signed_raw = row[1] == "Linear2c";
    const double a = offset + gain * (signed_raw ? -128 : 0), b = offset + gain * (signed_raw ? 127 : 255);
    low = std::min(a, b);
    high = std::max(a, b);
    decimals = static_cast<int>(Number(row[7]));
}

} // namespace

int Gauge_Column(const Log_State& log, int gauge) {
    if (gauge < 0 || gauge >= Gauge_Count) return -1;
    const Gauge_Source& g = Sources[static_cast<std::size_t>(gauge)];
    const Log_Columns& c = log.columns;
    int column = -1;
    switch (g.kind) {
    case Kind::Speed:
        column = c.Col_RPM;
        break;
    case Kind::Analog:
        column = g.slave ? Slave_Input_Column(c, g.input) : Input_Column(c, g.input);
        break;
    case Kind::Ignition:
        column = c.Col_Ign;
        break;
    case Kind::Fuel:
        column = g.slave ? -1 : c.Col_Fuel;
        break;
    case Kind::Percent:
        column = g.slave ? -1 : Labelled_Column(log, Fuel_Trim_Label);
        break;
    case Kind::Power:
        column = c.Col_Power;
        break;
    }
    return In_Layout(log, column) ? column : -1;
}

int Current_Data_Row(const Log_State& log) {
    if (!log.capture.Logging_Running) return 0;
    return std::clamp(log.capture.Log_Row_Count, 0, Log_Row_Limit);
}

Gauge_Readings Read_Gauges(const Log_State& log, int row) {
    Gauge_Readings out;
    for (int k = 0; k < Gauge_Count; ++k) {
        Gauge_Reading& r = out[static_cast<std::size_t>(k)];
        const Gauge_Source& g = Sources[static_cast<std::size_t>(k)];
        r.caption = Gauge_Captions[static_cast<std::size_t>(k)];
        const int column = Gauge_Column(log, k);
        r.present = column > 0;
        std::string format = "0.0";
        switch (g.kind) {
        case Kind::Speed:
            r.unit = " rpm";
            format = "0";
            r.low = 0;
            r.high = 8000;
            break;
        case Kind::Analog: {
            r.unit = r.present ? " " + log.Log_Signal_Tab[static_cast<std::size_t>(column - 1)].unit : " ";
            int decimals = 1;
            if (const Log_Sensor_Row* sensor = r.present ? Sensor_Of(log, column) : nullptr)
                Sensor_Range(*sensor, r.low, r.high, decimals);
            format = decimals >= 2 ? "0.00" : "0.0";
            break;
        }
        case Kind::Ignition:
            r.unit = " deg";
            r.low = -10;
            r.high = 50;
            break;
        case Kind::Fuel:
            r.unit = " ms";
            r.low = 0;
            r.high = 25.5;
            break;
        case Kind::Percent:
            r.unit = " %";
            r.low = -25;
            r.high = 25;
            break;
        case Kind::Power:
            r.unit = " Hp";
            format = "0";
            r.low = 0;
            r.high = log.car.Power_Max > 0 ? log.car.Power_Max : 500;
            break;
        }
        if (r.high <= r.low) r.high = r.low + 1;
        if (!r.present || row < 1 || row > Log_Row_Limit) continue;
        const double v = log.Log_Data(row, column);
        if (Log_Array::Empty(v)) continue;
        r.value = v;
        r.text = Format_Number(v, format);
        // An engine beyond the bar's end moves the end, so the bar stays a measure.
        if (g.kind == Kind::Speed && v > r.high) r.high = std::ceil(v / 1000) * 1000;
    }
    return out;
}

} // namespace quorlen
