#include "log_stream.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace boxsim {

namespace {

constexpr double Cycle_Seconds = 45.0;
constexpr double Idle_Rpm = 900;
constexpr double Shift_Rpm = 6500;
// Road speed per 1000 rpm (km/h) and seconds to climb from the shift point to the limit.
constexpr double Gear_Speed[] = {0, 8.0, 13.0, 18.5, 24.0, 30.0};
constexpr double Gear_Seconds[] = {0, 2.2, 3.0, 4.0, 5.2, 6.6};
constexpr double Shift_Seconds = 0.35;
constexpr double Launch_Rpm = 3000;
constexpr double Launch_At = 5.0;

// Sensor electrics as the box sees them: 8 bits over 0-5 V.
std::uint8_t Raw(double value) {
    return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

// NTC to ground, 2.2 kOhm pull-up to 5 V, a Bosch-like curve (beta model).
std::uint8_t Ntc_Raw(double celsius) {
    const double r = 2500.0 * std::exp(3500.0 * (1.0 / (celsius + 273.15) - 1.0 / 293.15));
    return Raw(255.0 * r / (r + 2200.0));
}

// A 0-5 V wideband controller whose output the lambda table of the log settings reads.
std::uint8_t Lambda_Raw(double lambda) {
    static constexpr double raw[] = {72, 80, 88, 96, 104, 112, 120, 128, 136, 144, 152};
    static constexpr double lam[] = {0.68, 0.72, 0.758, 0.79, 0.83, 0.88, 0.935, 1.0, 1.128, 1.273, 1.4};
    if (lambda <= lam[0]) return Raw(raw[0]);
    for (int i = 0; i < 10; ++i)
        if (lambda <= lam[i + 1]) return Raw(raw[i] + (lambda - lam[i]) / (lam[i + 1] - lam[i]) * 8);
    return Raw(raw[10]);
}

// A signed reading as the box sends it: two's complement in one byte.
std::uint8_t Twos(double value) {
    return static_cast<std::uint8_t>(std::lround(value) & 0xFF);
}

std::uint8_t Map_Raw(double bar) {
    return Raw((bar - 0.09) / 0.0098039);
}

struct Phase {
    double rpm;
    int gear;
    double throttle;
    bool fuel_cut;
};

// Where in the test-drive second t (0 .. cycle) falls.
Phase Drive_At(double t) {
    if (t < Launch_At) return {Idle_Rpm + 25 * std::sin(t * 3.1), 0, 0.5, false};
    double at = t - Launch_At;
    double from = Launch_Rpm;
    for (int gear = 1; gear <= 5; ++gear) {
        const double climb = Gear_Seconds[gear];
        if (at < climb) {
            // Boost comes in after the first third, so the climb speeds up then.
            const double x = at / climb;
            return {from + (Shift_Rpm - from) * (x * x * 0.4 + x * 0.6), gear, 100, false};
        }
        at -= climb;
        if (gear == 5) break;
        const double next = Shift_Rpm * Gear_Speed[gear] / Gear_Speed[gear + 1];
        if (at < Shift_Seconds) return {Shift_Rpm + (next - Shift_Rpm) * at / Shift_Seconds, 0, 0, false};
        at -= Shift_Seconds;
        from = next;
    }
    // Lift-off in fifth: engine braking down to idle with the injectors off.
    const double rpm = std::max(Idle_Rpm, Shift_Rpm - 700 * at);
    if (rpm > 1500) return {rpm, 5, 0, true};
    return {rpm + 25 * std::sin(t * 3.1), 0, 0.5, false};
}

std::string Hex2(std::uint8_t b) {
    char text[4];
    std::snprintf(text, sizeof text, "%02X", b);
    return text;
}

} // namespace

Engine_Sample Drive_At_Row(long row) {
    Engine_Sample s;
    const double total = static_cast<double>(row) * 0.05;
    const double t = std::fmod(total, Cycle_Seconds);
    const Phase p = Drive_At(t);
    s.seconds = total;
    s.rpm = p.rpm;
    s.gear = p.gear;
    s.throttle = p.throttle;
    s.wot = p.throttle > 50;
    s.fuel_cut = p.fuel_cut;
    s.boost = s.wot ? std::clamp((s.rpm - 2500) / 2000, 0.0, 1.0) * 0.8 : 0;

    const bool wot = s.wot;
    const double boost = s.boost;
    s.map_bar = wot ? 1.0 + boost : (p.fuel_cut ? 0.25 : 0.36 + 0.01 * std::sin(total * 7));
    s.lambda = wot ? 0.86 - 0.06 * boost : (p.fuel_cut ? 1.4 : 1.0 + 0.015 * std::sin(total * 2.3));
    s.ignition =
        wot ? 24 - 10 * boost + 4 * std::clamp((s.rpm - 3000) / 3000, 0.0, 1.0) : (p.fuel_cut ? 32 : 15);
    const double ve = 0.55 + 0.34 * std::clamp(1 - std::fabs(s.rpm - 4500) / 4000, 0.0, 1.0);
    s.fuel_ms = p.fuel_cut ? 0 : 1.0 + 3.0 * s.map_bar * ve / std::max(s.lambda, 0.7);
    s.coolant = 84 + 6 * (1 - std::exp(-total / 240)) + (wot ? 1.5 : 0);
    s.air = 28 + 4 * boost;
    s.battery = 13.9 - (wot ? 0.2 : 0);
    s.engine_on = static_cast<std::uint32_t>(2400 + row) & 0xFFFFFFu;
    return s;
}

Engine_Sample Engine_At(long row) {
    Engine_Sample s = Drive_At_Row(row);
    Encode(s);
    return s;
}

int Input_Column(int input) {
    return input >= 1 && input <= 12 ? 11 + input : 0;
}

void Encode(Engine_Sample& s) {
    const bool wot = s.wot;
    const double boost = s.boost;
    auto& c = s.columns;
    c[2] = Raw((s.ignition + 25.4) / 0.2);
    c[3] = Twos(wot ? -2 * boost / 0.2 : 0); // ignition correction, degrees
    c[4] = Raw(s.fuel_ms / 0.204);
    c[5] = Twos(wot ? 8 / 0.5 : 0);                              // fuel correction, %
    c[6] = Raw((wot ? 0.85 : 1.0) / 0.01);                       // lambda target
    c[7] = Twos(s.fuel_cut ? 0 : (s.lambda > 1 ? -4 : 3) / 0.5); // closed-loop trim, %
    c[8] = Raw(wot ? 0 : 32 / 0.390625);                         // idle valve %
    c[9] = Raw((wot ? 60 + 30 * boost : 0) / 0.390625);          // boost control PWM %
    c[10] = Raw(s.rpm > 6000 ? 100 / 0.390625 : 0);              // shift light output %
    c[11] = static_cast<std::uint8_t>(s.gear);
    c[12] = Lambda_Raw(s.lambda);
    c[13] = Raw(s.throttle / 0.390625);
    c[14] = Map_Raw(s.map_bar);
    c[15] = Ntc_Raw(s.coolant);
    for (int i = 16; i <= 19; ++i)
        c[i] = Raw(255.0 * 0.02 * (i - 15)); // the spare analogue inputs idle near 0 V
    c[20] = Raw(s.battery / 20 * 255);
    c[21] = Ntc_Raw(s.air);
    c[22] = Raw(2.5 / 5 * 255);
    c[23] = 0;
    c[24] = static_cast<std::uint8_t>(wot ? 0x05 : 0x01); // digital inputs
    c[25] = Lambda_Raw(s.lambda + 0.01);                  // the slave box's inputs
    c[26] = c[13];
    c[27] = c[14];
    c[28] = Ntc_Raw(s.coolant - 1);
    c[29] = static_cast<std::uint8_t>(wot && s.rpm > 5500 ? 3 : 0); // knock level
    c[30] = static_cast<std::uint8_t>(s.engine_on & 0xFF);
    c[31] = Map_Raw(wot ? 1.8 : 1.0); // boost target
    c[32] = Raw(3.0 / 0.02);          // fuel pressure 3 bar
    c[33] = Raw(wot ? 0 : 4);         // idle ignition correction
    c[34] = 0;                        // error count
    for (int i = 35; i <= 39; ++i)
        c[i] = 0;

    // Bits chosen so that a running engine sets a high bit of every status byte: a byte from
    // 10 to 15 would come out as a single hex letter in the program's row.
    const bool running = s.rpm > 300;
    const bool idle = !wot && !s.fuel_cut && s.rpm < 1500;
    s.status[0] = static_cast<std::uint8_t>((running ? 0x10 : 0) | (idle ? 0x04 : 0) | (idle ? 0x08 : 0) |
                                            (s.rpm > 6400 ? 0x20 : 0) | (s.fuel_cut ? 0x40 : 0));
    s.status[1] = static_cast<std::uint8_t>((running ? 0x01 : 0) | (s.coolant > 90 ? 0x02 : 0) |
                                            (running ? 0x10 : 0) | (s.rpm > 6000 ? 0x20 : 0));
    s.status[2] = static_cast<std::uint8_t>(0x40 | (wot ? 0x80 : 0));
}

std::string Text_Header() {
    static constexpr const char* Titles[] = {
        "IGN", "IGC", "FUL", "FUC", "LTG", "LCR", "IDV", "PW1", "PW2", "GER", "AN1", "AN2", "AN3", "AN4",
        "AN5", "AN6", "AN7", "AN8", "BAT", "AIR", "A11", "A12", "DIG", "S-1", "S-2", "S-3", "S-4", "KNK",
        "ENG", "BTG", "FPR", "IIC", "ERR", "O35", "O36", "O37", "O38", "O39", "ST1", "ST2", "ST3"};
    std::string header = "#RPM   ";
    for (const char* title : Titles)
        header += std::string(title) + " ";
    return header;
}

std::string Text_Row(const Engine_Sample& s) {
    char rpm[16];
    std::snprintf(rpm, sizeof rpm, "%5.3f", std::min(s.rpm, 9999.0) / 1000.0);
    std::string row = "$" + std::string(rpm).substr(0, 5) + " ";
    char field[8];
    for (int c = 2; c <= 39; ++c) {
        std::snprintf(field, sizeof field, "%03d ", s.columns[static_cast<std::size_t>(c)]);
        row += field;
    }
    for (std::uint8_t b : s.status)
        row += "h" + Hex2(b) + " ";
    return row;
}

std::string Frame_Data(const Engine_Sample& s, int length) {
    std::string d(static_cast<std::size_t>(std::max(length, 0)), '\0');
    auto put = [&](int i, std::uint8_t v) {
        if (i < length) d[static_cast<std::size_t>(i)] = static_cast<char>(v);
    };
    const auto count = static_cast<unsigned>(std::lround(s.rpm * 65536.0 / 16000.0));
    put(0, static_cast<std::uint8_t>(count >> 8));
    put(1, static_cast<std::uint8_t>(count & 0xFF));
    for (int c = 2; c <= 29; ++c)
        put(c, s.columns[static_cast<std::size_t>(c)]);
    put(30, static_cast<std::uint8_t>(s.engine_on >> 16));
    put(31, static_cast<std::uint8_t>(s.engine_on >> 8));
    put(32, static_cast<std::uint8_t>(s.engine_on));
    for (int i = 33; i <= 36; ++i)
        put(i, s.columns[static_cast<std::size_t>(i - 2)]);
    for (int i = 39; i <= 41; ++i)
        put(i, s.columns[static_cast<std::size_t>(i - 4)]);
    put(43, s.columns[38]);
    put(44, s.columns[39]);
    for (int i = 46; i <= 48; ++i)
        put(i, s.status[static_cast<std::size_t>(i - 46)]);
    // The frame has no escape for its own markers: the firmware nudges a byte that would
    // make "PS" or "DS" with the byte before it.
    for (std::size_t i = 1; i < d.size(); ++i)
        if (d[i] == 'S' && (d[i - 1] == 'P' || d[i - 1] == 'D')) d[i] = 'T';
    return d;
}

std::string Frame(const std::string& data, bool spoil_sum) {
    unsigned sum = static_cast<unsigned>(data.size());
    for (char c : data)
        sum += static_cast<std::uint8_t>(c);
    sum = (sum - 1) & 0xFFFFu;
    if (spoil_sum) sum = (sum + 0x101) & 0xFFFFu;
    std::string frame = "PS";
    frame += static_cast<char>(data.size());
    frame += data;
    frame += static_cast<char>(sum >> 8);
    frame += static_cast<char>(sum & 0xFF);
    frame += "DS";
    return frame;
}

std::string Log_Stream::Start_Text(Stream_Time now) {
    mode_ = Mode::Text;
    started_ = now;
    next_row_ = 0;
    return Text_Header() + "\r\n";
}

void Log_Stream::Start_Binary(int length, Stream_Time now) {
    mode_ = Mode::Binary;
    length_ = length;
    started_ = now;
    next_row_ = 0;
}

Stream_Time Log_Stream::Next_Deadline() const {
    if (mode_ == Mode::Off) return Stream_Time::max();
    return started_ + (next_row_ + 1) * Row_Period;
}

bool Parse_Throttle_Script(const std::string& text, Throttle_Script& script, std::string& error) {
    script.clear();
    std::size_t pos = 0;
    while (pos <= text.size()) {
        const auto comma = std::min(text.find(',', pos), text.size());
        const std::string item = text.substr(pos, comma - pos);
        const auto colon = item.find(':');
        double seconds = -1;
        int raw = -1;
        bool ok = colon != std::string::npos;
        if (ok) {
            const std::string time = item.substr(0, colon);
            const std::string value = item.substr(colon + 1);
            auto [tp, tec] = std::from_chars(time.data(), time.data() + time.size(), seconds);
            auto [vp, vec] = std::from_chars(value.data(), value.data() + value.size(), raw);
            ok = tec == std::errc() && tp == time.data() + time.size() && vec == std::errc() &&
                 vp == value.data() + value.size() && seconds >= 0 && raw >= 0 && raw <= 255;
        }
        if (!ok) {
            error = "bad throttle point '" + item + "': want SECONDS:RAW with RAW 0..255";
            return false;
        }
        script.emplace_back(seconds, raw);
        pos = comma + 1;
    }
    std::stable_sort(script.begin(), script.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    return true;
}

int Scripted_Throttle(const Throttle_Script& script, double seconds) {
    int raw = -1;
    for (const auto& [from, value] : script)
        if (from <= seconds) raw = value;
    return raw;
}

std::string Log_Stream::Row_Text(long row) {
    Engine_Sample sample = engine_ ? engine_(row) : Engine_At(row);
    // This stream's own rows count the script's time, whatever ran before it.
    const int scripted = Scripted_Throttle(throttle_, static_cast<double>(next_row_ - 1) * 0.05);
    if (scripted >= 0) {
        sample.columns[13] = static_cast<std::uint8_t>(scripted);
        sample.columns[26] = static_cast<std::uint8_t>(scripted);
    }
    if (mode_ == Mode::Binary) return Frame(Frame_Data(sample, length_), row == faults_.bad_sum_row);
    std::string text;
    if (faults_.message_every > 0 && row > 0 && row % faults_.message_every == 0)
        text += row % (2 * faults_.message_every) == 0 ? "#Knock cyl 3\r\n" : "#Lambda heater\r\n";
    return text + Text_Row(sample) + "\r\n";
}

std::string Log_Stream::Tick(Stream_Time now) {
    std::string out;
    const long pause_rows = static_cast<long>(faults_.pause / Row_Period);
    while (mode_ != Mode::Off && Next_Deadline() <= now) {
        const long row = stream_rows_++;
        ++next_row_;
        // The engine runs on while the line is quiet; those rows never reach the program.
        if (faults_.pause_at_row >= 0 && row >= faults_.pause_at_row &&
            row < faults_.pause_at_row + pause_rows)
            continue;
        out += Row_Text(row);
        ++rows_sent_;
    }
    return out;
}

} // namespace boxsim
