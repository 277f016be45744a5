#include "engine_model.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

namespace boxsim {

namespace {

// The box's layout of its settings, as far as the engine needs it.
constexpr int Fuel_Base = 256;
constexpr int Fuel_Block_End = 652; // the ignition block starts at 653
constexpr int Dead_Time_Byte = 79;
constexpr int Main_Load_Byte = 174;
constexpr int Lambda_Input_Byte = 15; // bit 6: the sensor on input 5 instead of 1
constexpr int Afr_Table = 154;
constexpr int Afr_Points = 17;
constexpr int Afr_Load_Byte = 216; // bit 4: the table over the throttle instead of MAP
constexpr int An_Sel_Base = 883;   // the sensor of input i at 883 + i
constexpr double Rpm_Step = 62.5;
constexpr int Map_Input = 3;
constexpr int Throttle_Input = 2;

// The engine's limits: what a dyno can hold it at.
constexpr double Sweep_Rpm_Low = 800;
constexpr double Sweep_Rpm_High = 7000;
constexpr double Lowest_Map_Bar = 0.30;

// The box's MAP input as this simulator's sensor electrics give it (see the stream).
double Map_Bar_Of_Raw(double raw) {
    return raw * 0.0098039 + 0.09;
}

// The most manifold pressure the turbo makes at an engine speed.
double Highest_Map_Bar(double rpm) {
    return 1.05 + 0.9 * std::clamp((rpm - 2000) / 2500, 0.0, 1.0);
}

double Fuel_Ms(std::uint8_t b) {
    if (b == 0) return 0;
    if (b < 25) return b * 0.06 + 1.0;
    return b * 0.1;
}

bool To_Double(std::string_view text, double& value) {
    if (!text.empty() && text[0] == '+') text.remove_prefix(1);
    auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && ptr == text.data() + text.size() && !text.empty();
}

// "3000-5000" (the second number may not be negative; a first one may).
bool To_Range(const std::string& text, double& from, double& to) {
    const auto dash = text.find('-', 1);
    if (dash == std::string::npos) return false;
    return To_Double(std::string_view(text).substr(0, dash), from) &&
           To_Double(std::string_view(text).substr(dash + 1), to) && from <= to;
}

// Where `x` stands between the points of an axis: the two points and the weight of the upper.
struct Span {
    int lo = 0, hi = 0;
    double f = 0;
};

Span Span_Of(const std::vector<double>& axis, double x) {
    const int n = static_cast<int>(axis.size());
    if (n == 0 || x <= axis.front()) return {0, 0, 0};
    if (x >= axis.back()) return {n - 1, n - 1, 0};
    for (int i = 0; i + 1 < n; ++i) {
        const double a = axis[static_cast<std::size_t>(i)], b = axis[static_cast<std::size_t>(i + 1)];
        if (x >= a && x < b) return {i, i + 1, (x - a) / (b - a)};
    }
    return {n - 1, n - 1, 0};
}

} // namespace

std::optional<Fuel_Error> Parse_Fuel_Error(const std::string& text, std::string& error) {
    Fuel_Error e;
    std::vector<std::string> parts;
    std::stringstream in(text);
    for (std::string part; std::getline(in, part, ':');)
        parts.push_back(part);
    if (parts.size() != 3 || !To_Range(parts[0], e.rpm_from, e.rpm_to) ||
        !To_Range(parts[1], e.load_from, e.load_to) || !To_Double(parts[2], e.percent) || e.percent <= -90 ||
        e.percent > 500) {
        error = "--fuel-error wants RPM1-RPM2:LOAD1-LOAD2:PCT, e.g. 3000-5000:1.0-1.5:+12";
        return std::nullopt;
    }
    return e;
}

// --- sensors ------------------------------------------------------------------------------------

double Tuning_Sensor::Value(double raw) const {
    if (!table) return gain * std::clamp(raw, min, max) + offset;
    raw = std::clamp(raw, 0.0, 255.0);
    const int q = std::min(static_cast<int>(raw / 8), 31);
    const double a = points[static_cast<std::size_t>(q)], b = points[static_cast<std::size_t>(q + 1)];
    return a + (b - a) * (raw - 8.0 * q) / 8;
}

double Tuning_Sensor::Raw(double value) const {
    if (!table) return gain == 0 ? min : std::clamp(std::round((value - offset) / gain), min, max);
    // The reading whose value comes nearest, which also finds the nearer rail when the value
    // lies beyond the sensor.
    double best = 0, best_error = INFINITY;
    for (int raw = 0; raw <= 255; ++raw) {
        const double error = std::fabs(Value(raw) - value);
        if (error < best_error) best = raw, best_error = error;
    }
    return best;
}

std::vector<std::optional<Tuning_Sensor>> Parse_Tuning_Sensors(const std::string& ini_text) {
    std::vector<std::optional<Tuning_Sensor>> sensors(1);
    std::stringstream in(ini_text);
    const std::string key = "Sens_Def=";
    for (std::string line; std::getline(in, line);) {
        if (line.compare(0, key.size(), key) != 0) continue;
        while (!line.empty() && (line.back() == '\r' || line.back() == '\n'))
            line.pop_back();
        std::vector<std::string> f;
        std::stringstream fields(line.substr(key.size()));
        for (std::string field; std::getline(fields, field, '\t');) {
            std::replace(field.begin(), field.end(), ',', '.');
            f.push_back(field);
        }
        const auto number = [&](std::size_t i) {
            double v = 0;
            return i < f.size() && To_Double(f[i], v) ? v : 0.0;
        };
        std::optional<Tuning_Sensor> s;
        if (f.size() >= 7 && f[1] == "Linear") {
            s.emplace();
            s->gain = number(2), s->offset = number(3), s->min = number(4), s->max = number(5);
            s->unit = f[6];
        } else if (f.size() >= 36 && f[1] == "Tab") {
            s.emplace();
            s->table = true;
            for (std::size_t i = 0; i < 33; ++i)
                s->points[i] = number(i + 2);
            s->unit = f[35];
        }
        sensors.push_back(s);
    }
    return sensors;
}

// --- the map ------------------------------------------------------------------------------------

Engine_Model::Fuel_Map Engine_Model::Read_Map(const Image_Bytes& image) {
    Fuel_Map m;
    m.cols = image[Fuel_Base];
    if (m.cols < 1 || m.cols > 25 || Fuel_Base + m.cols + 1 > Fuel_Block_End) return m;
    m.rows = image[static_cast<std::size_t>(Fuel_Base + m.cols + 1)];
    const int start = Fuel_Base + m.cols + m.rows + 2;
    if (m.rows < 1 || m.rows > 25 || start + m.cols * m.rows - 1 > Fuel_Block_End) return m;
    const int load = image[Main_Load_Byte] & 15;
    m.load_input = load >= 1 && load <= 12 ? load : 0;
    int sum = 0;
    for (int c = 1; c <= m.cols; ++c) {
        sum = std::min(255, sum + image[static_cast<std::size_t>(Fuel_Base + c)]);
        m.rpm.push_back(sum * Rpm_Step);
    }
    sum = 0;
    for (int r = 1; r <= m.rows; ++r) {
        sum = std::min(255, sum + image[static_cast<std::size_t>(Fuel_Base + m.cols + 1 + r)]);
        m.load.push_back(m.load_input == 0 ? sum * Rpm_Step : sum);
    }
    for (int i = 0; i < m.cols * m.rows; ++i)
        m.ms.push_back(Fuel_Ms(image[static_cast<std::size_t>(start + i)]));
    m.valid = true;
    return m;
}

// The box interpolates between the four points around where the engine runs.
double Engine_Model::Fuel_Map::At(double rpm_value, double load_value) const {
    const Span c = Span_Of(rpm, rpm_value);
    const Span r = Span_Of(load, load_value);
    const auto cell = [&](int row, int col) { return ms[static_cast<std::size_t>(row * cols + col)]; };
    const double low = cell(r.lo, c.lo) + (cell(r.lo, c.hi) - cell(r.lo, c.lo)) * c.f;
    const double high = cell(r.hi, c.lo) + (cell(r.hi, c.hi) - cell(r.hi, c.lo)) * c.f;
    return low + (high - low) * r.f;
}

const Tuning_Sensor* Engine_Model::Sensor_Of_Input(int input) const {
    if (input < 1 || input > 12) return nullptr;
    const std::size_t s = engine_[static_cast<std::size_t>(An_Sel_Base + input)];
    return s > 0 && s < setup_.sensors.size() && setup_.sensors[s] ? &*setup_.sensors[s] : nullptr;
}

Engine_Model::Engine_Model(Engine_Setup setup, const Image_Bytes& engine)
    : setup_(std::move(setup)), engine_(engine), need_(Read_Map(engine)) {
    dead_ms_ = (engine_[Dead_Time_Byte] + 255) * 0.0032;
    lambda_input_ = (engine_[Lambda_Input_Byte] & 0x40) ? 5 : 1;
    afr_load_input_ = (engine_[Afr_Load_Byte] & 0x10) ? Throttle_Input : Map_Input;
    if (const Tuning_Sensor* lambda = Sensor_Of_Input(lambda_input_)) {
        lambda_modelled_ = true;
        for (int i = 0; i < Afr_Points; ++i)
            afr_target_[static_cast<std::size_t>(i)] =
                lambda->Value(engine_[static_cast<std::size_t>(Afr_Table + i)]);
    }
    if (!need_.valid) return;
    // The regions of extra need, judged on each point's values as the tuner reads the axes.
    const Tuning_Sensor* load_sensor = Sensor_Of_Input(need_.load_input);
    for (int r = 1; r <= need_.rows; ++r)
        for (int c = 1; c <= need_.cols; ++c) {
            const double rpm = need_.rpm[static_cast<std::size_t>(c - 1)];
            const double reading = need_.load[static_cast<std::size_t>(r - 1)];
            double load = need_.load_input == 0 ? reading
                          : load_sensor         ? load_sensor->Value(reading)
                                                : Map_Bar_Of_Raw(reading);
            load = std::round(load * 100) / 100;
            double& ms = need_.ms[static_cast<std::size_t>((r - 1) * need_.cols + (c - 1))];
            if (ms <= 0) continue;
            for (const Fuel_Error& e : setup_.errors)
                if (rpm >= e.rpm_from && rpm <= e.rpm_to && load >= e.load_from && load <= e.load_to)
                    ms = dead_ms_ + (ms - dead_ms_) * (1 + e.percent / 100);
        }
}

double Engine_Model::Need_Factor(int r, int c) const {
    const Fuel_Map start = Read_Map(engine_);
    if (!start.valid || r < 1 || c < 1 || r > start.rows || c > start.cols) return 1;
    const std::size_t i = static_cast<std::size_t>((r - 1) * start.cols + (c - 1));
    if (start.ms[i] <= dead_ms_) return 1;
    return (need_.ms[i] - dead_ms_) / (start.ms[i] - dead_ms_);
}

// --- the sweep ------------------------------------------------------------------------------------

std::vector<std::pair<int, int>> Engine_Model::Sweep_Points(const Image_Bytes& memory) const {
    const Fuel_Map map = Read_Map(memory);
    std::vector<std::pair<int, int>> points;
    if (!map.valid) return points;
    bool backwards = false;
    for (int r = 1; r <= map.rows; ++r) {
        const double reading = map.load[static_cast<std::size_t>(r - 1)];
        // Load row by load row, back and forth along the speed, so each step is a small one.
        std::vector<std::pair<int, int>> row;
        for (int c = 1; c <= map.cols; ++c) {
            const double rpm = map.rpm[static_cast<std::size_t>(c - 1)];
            if (rpm < Sweep_Rpm_Low || rpm > Sweep_Rpm_High) continue;
            if (map.load_input == Map_Input) {
                const double bar = Map_Bar_Of_Raw(reading);
                if (bar < Lowest_Map_Bar || bar > Highest_Map_Bar(rpm)) continue;
            }
            row.emplace_back(c, r);
        }
        if (backwards) std::reverse(row.begin(), row.end());
        if (!row.empty()) backwards = !backwards;
        points.insert(points.end(), row.begin(), row.end());
        // A load axis on engine speed has one row to drive.
        if (map.load_input == 0) break;
    }
    return points;
}

int Engine_Model::Sweep_Hold_Rows(std::size_t points) const {
    const double hold = std::max(Sweep_Min_Hold_Seconds,
                                 points == 0 ? 0.0 : Sweep_Cycle_Seconds / static_cast<double>(points));
    return static_cast<int>(std::ceil(hold / 0.05));
}

Engine_Sample Engine_Model::Sweep_At(long row, const Image_Bytes& memory, double& load_reading) const {
    const std::vector<std::pair<int, int>> points = Sweep_Points(memory);
    Engine_Sample s = Drive_At_Row(row);
    if (points.empty()) return s;
    const Fuel_Map map = Read_Map(memory);
    const long hold = Sweep_Hold_Rows(points.size());
    const auto [c, r] = points[static_cast<std::size_t>(row / hold % static_cast<long>(points.size()))];
    s.rpm = map.rpm[static_cast<std::size_t>(c - 1)];
    load_reading = map.load[static_cast<std::size_t>(r - 1)];
    s.gear = 4;
    s.fuel_cut = false;
    if (map.load_input == Map_Input) {
        s.map_bar = Map_Bar_Of_Raw(load_reading);
        // The throttle opens with the pressure wanted, and stays wide open on boost.
        s.throttle = std::clamp((s.map_bar - Lowest_Map_Bar) / 0.75 * 100, 0.0, 100.0);
    } else if (map.load_input == Throttle_Input) {
        s.throttle = load_reading * 0.390625;
        s.map_bar = 0.3 + 0.7 * s.throttle / 100;
    } else {
        s.throttle = 40;
        s.map_bar = 0.6;
    }
    s.wot = s.throttle >= 99.5;
    s.boost = std::clamp((s.map_bar - 1.0) / 0.8, 0.0, 1.0);
    s.coolant = 88 + (s.wot ? 1.5 : 0);
    s.air = 28 + 4 * s.boost;
    return s;
}

// --- a row --------------------------------------------------------------------------------------

Engine_Sample Engine_Model::Sample(long row, const Image_Bytes& memory) const {
    double load_reading = -1;
    Engine_Sample s = setup_.drive == Drive::Sweep ? Sweep_At(row, memory, load_reading) : Drive_At_Row(row);
    const Fuel_Map box = Read_Map(memory);
    Encode(s);
    if (!box.valid || !need_.valid) return s;

    // The load input reads exactly the point the sweep holds.
    if (load_reading >= 0 && box.load_input > 0)
        s.columns[static_cast<std::size_t>(Input_Column(box.load_input))] =
            static_cast<std::uint8_t>(std::clamp(load_reading, 0.0, 255.0));
    const auto reading = [&](int input) {
        return input >= 1 && input <= 12
                   ? static_cast<double>(s.columns[static_cast<std::size_t>(Input_Column(input))])
                   : 0.0;
    };
    const double box_load = box.load_input == 0 ? s.rpm : reading(box.load_input);
    const double need_load = need_.load_input == 0 ? s.rpm : reading(need_.load_input);

    const double delivered = s.fuel_cut ? 0 : box.At(s.rpm, box_load);
    const double needed = need_.At(s.rpm, need_load);
    s.fuel_ms = delivered;
    s.columns[4] = static_cast<std::uint8_t>(std::clamp(std::lround(delivered / 0.204), 0L, 255L));
    s.columns[7] = 0; // no closed-loop trim: the mixture shows what the map gives

    if (!lambda_modelled_) return s;
    const Tuning_Sensor* sensor = Sensor_Of_Input(lambda_input_);
    const double pos = std::clamp(reading(afr_load_input_), 0.0, 255.0) * (Afr_Points - 1) / 255;
    const int i = std::min(static_cast<int>(pos), Afr_Points - 2);
    const double target =
        afr_target_[static_cast<std::size_t>(i)] +
        (afr_target_[static_cast<std::size_t>(i + 1)] - afr_target_[static_cast<std::size_t>(i)]) * (pos - i);
    // The mixture leans with the air the engine takes over the fuel it gets: the open time
    // of the injector is what it needs over what it has. No fuel at all reads the lean rail.
    const double open = delivered - dead_ms_;
    const double value = open > 0.01 ? target * std::max(needed - dead_ms_, 0.0) / open : 1e9;
    s.columns[static_cast<std::size_t>(Input_Column(lambda_input_))] =
        static_cast<std::uint8_t>(sensor->Raw(value));
    return s;
}

} // namespace boxsim
