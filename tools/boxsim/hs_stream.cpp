#include "hs_stream.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fstream>
#include <optional>
#include <sstream>

namespace boxsim {

namespace {

constexpr double Cam_Width = 20;       // degrees of crank a cam tooth stays high
constexpr double Cam_Before_Tdc1 = 60; // where the cam tooth of cylinder 1 begins
constexpr double Crank_Mark = 51;      // the mark "setting 18" teeth after the gap, before TDC 1

// The numbers in a text, in order ("Crank 36-2-2-2" gives 36, 2, 2, 2).
std::vector<int> Numbers_In(const std::string& text) {
    std::vector<int> numbers;
    for (std::size_t i = 0; i < text.size();) {
        if (!std::isdigit(static_cast<unsigned char>(text[i]))) {
            ++i;
            continue;
        }
        long n = 0;
        while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])) && n < 100000)
            n = n * 10 + (text[i++] - '0');
        numbers.push_back(static_cast<int>(n));
    }
    return numbers;
}

std::string Field(const Layout_Row& row, std::size_t column) {
    return column < row.size() ? row[column] : std::string();
}

std::vector<char> Channels(const std::string& order) {
    std::vector<char> channels;
    std::stringstream in(order);
    for (std::string item; std::getline(in, item, '-');)
        if (!item.empty()) channels.push_back(item[0]);
    return channels;
}

// The value of a 3D map's first load row at `rpm`, interpolated between its columns; the
// block is a column count, its rpm steps, a row count, its load steps, then the cells.
std::optional<int> Map_Byte(const Image_Bytes& image, int base, double rpm) {
    const int columns = image[static_cast<std::size_t>(base)];
    if (columns < 1 || columns > 30) return std::nullopt;
    const int rows = image[static_cast<std::size_t>(base + columns + 1)];
    if (rows < 1 || rows > 30 || base + columns + rows + 2 + columns > 1024) return std::nullopt;
    const int cells = base + columns + rows + 2;
    int sum = 0;
    double last_rpm = 0;
    int last_byte = image[static_cast<std::size_t>(cells)];
    for (int c = 1; c <= columns; ++c) {
        sum = std::min(255, sum + image[static_cast<std::size_t>(base + c)]);
        const double axis = sum * 62.5;
        const int byte = image[static_cast<std::size_t>(cells + c - 1)];
        if (rpm <= axis) {
            if (c == 1 || axis <= last_rpm) return byte;
            const double x = (rpm - last_rpm) / (axis - last_rpm);
            return static_cast<int>(std::lround(last_byte + (byte - last_byte) * x));
        }
        last_rpm = axis;
        last_byte = byte;
    }
    return last_byte;
}

// Degrees between two firings of `channel`, whose order repeats over the cylinders.
double Channel_Interval(const std::vector<char>& order, char channel, int cylinders) {
    const auto in_order = std::max<long>(1, std::count(order.begin(), order.end(), channel));
    return 720.0 * static_cast<double>(order.size()) / static_cast<double>(in_order * cylinders);
}

bool In_Window(double angle, double start, double length) {
    double d = std::fmod(angle - start, 720.0);
    if (d < 0) d += 720.0;
    return d < length;
}

} // namespace

std::vector<Layout_Row> Parse_Engine_Layouts(const std::string& ini_text) {
    std::vector<Layout_Row> rows;
    std::stringstream in(ini_text);
    const std::string key = "Engine_Config=";
    for (std::string line; std::getline(in, line);) {
        if (line.compare(0, key.size(), key) != 0) continue;
        while (!line.empty() && (line.back() == '\r' || line.back() == '\n'))
            line.pop_back();
        Layout_Row row;
        std::stringstream fields(line.substr(key.size()));
        for (std::string field; std::getline(fields, field, '\t');)
            row.push_back(field);
        rows.push_back(std::move(row));
    }
    return rows;
}

std::vector<Layout_Row> Load_Engine_Layouts(const std::string& ini_path, std::string& error) {
    std::ifstream in(ini_path, std::ios::binary);
    if (!in) {
        error = ini_path + ": cannot be read";
        return {};
    }
    std::stringstream text;
    text << in.rdbuf();
    auto rows = Parse_Engine_Layouts(text.str());
    if (rows.empty()) error = ini_path + ": no Engine_Config rows";
    return rows;
}

Wheel Parse_Wheel(const std::string& text) {
    Wheel wheel;
    const std::vector<int> n = Numbers_In(text);
    if (n.empty() || n[0] < 2 || n[0] > 360) {
        wheel.positions = 0;
        return wheel;
    }
    wheel.positions = n[0];
    wheel.present.assign(static_cast<std::size_t>(n[0]), true);
    // "36-1": one gap at the end of the turn. "36-2-2-2": the gaps spread evenly round it.
    const std::size_t gaps = n.size() - 1;
    for (std::size_t g = 0; g < gaps; ++g) {
        const int missing = std::min(n[g + 1], n[0] - 1);
        const int end = static_cast<int>(n[0] - static_cast<long>(g) * n[0] / static_cast<long>(gaps));
        for (int m = 1; m <= missing; ++m)
            wheel.present[static_cast<std::size_t>((end - m + n[0]) % n[0])] = false;
    }
    return wheel;
}

HS_Plan Plan_For(const HS_Setup& setup, const Image_Bytes& image) {
    HS_Plan plan;
    plan.rpm = setup.rpm;
    plan.pwm_hz = setup.pwm_hz;
    const std::size_t row_index = static_cast<std::size_t>(image[6]) + 1;
    const Layout_Row row = row_index < setup.layouts.size() ? setup.layouts[row_index] : Layout_Row{};

    plan.wheel = Parse_Wheel(setup.wheel.empty() ? Field(row, 1) : setup.wheel);
    if (plan.wheel.positions == 0) {
        // A wheel the text does not count: the layout's tooth angle, else the common 36-1.
        const std::vector<int> degrees = Numbers_In(Field(row, 18));
        const int positions =
            !degrees.empty() && degrees[0] > 0 && 360 % degrees[0] == 0 ? 360 / degrees[0] : 0;
        plan.wheel = Parse_Wheel(positions >= 2 ? std::to_string(positions) : "36-1");
    }
    const std::vector<int> cam = Numbers_In(Field(row, 2));
    plan.cam_teeth = cam.empty() || cam[0] < 1 || cam[0] > 36 ? 1 : cam[0];
    plan.ign_channels = Channels(Field(row, 16));
    plan.fuel_channels = Channels(Field(row, 20));
    const std::vector<int> cylinders = Numbers_In(Field(row, 10));
    plan.cylinders = !cylinders.empty() && cylinders[0] >= 1 && cylinders[0] <= 12
                         ? cylinders[0]
                         : std::max<int>(1, static_cast<int>(plan.ign_channels.size()));
    if (plan.ign_channels.empty()) plan.ign_channels = {'A', 'B', 'A', 'B'};
    if (plan.fuel_channels.empty()) plan.fuel_channels = {'A', 'B', 'A', 'B'};
    if (row.empty()) plan.cylinders = 4;

    const double tooth = plan.wheel.Tooth_Degrees();
    plan.tdc1 = std::fmod(image[18] * tooth + Crank_Mark, 720.0);
    plan.fuel_start = std::fmod(image[20] * tooth, 720.0);
    plan.dwell_ms = image[21] * 0.2;
    if (auto b = Map_Byte(image, 653, plan.rpm)) plan.advance = *b * 0.2;
    if (auto b = Map_Byte(image, 256, plan.rpm))
        plan.fuel_ms = *b == 0 ? 0 : (*b < 25 ? *b * 0.06 + 1.0 : *b * 0.1);
    const long point = std::clamp(std::lround(plan.rpm / 500), 0L, 20L);
    plan.pwm_duty = std::min(1.0, image[static_cast<std::size_t>(896 + point)] * 0.005);
    return plan;
}

std::uint8_t HS_Plan::Sample_At(double seconds) const {
    const double degrees_per_second = rpm * 6;
    const double angle = std::fmod(seconds * degrees_per_second, 720.0);
    std::uint8_t lines = 0;

    if (wheel.positions > 0) {
        const double place = std::fmod(angle, 360.0) / wheel.Tooth_Degrees();
        const auto k = static_cast<std::size_t>(place);
        if (k < wheel.present.size() && wheel.present[k] && place - static_cast<double>(k) < 0.5) lines |= 1;
    }
    const double cam_period = 720.0 / cam_teeth;
    const double cam_first = std::fmod(tdc1 - Cam_Before_Tdc1 + 720.0, 720.0);
    for (int t = 0; t < cam_teeth; ++t)
        if (In_Window(angle, cam_first + t * cam_period, Cam_Width)) lines |= 16;

    const double per_ms = degrees_per_second / 1000;
    const double event = 720.0 / cylinders;
    for (int j = 0; j < cylinders; ++j) {
        const char ign = ign_channels[static_cast<std::size_t>(j) % ign_channels.size()];
        if (ign == 'A' || ign == 'B') {
            // The coil charges for the dwell, cut short when it must fire again too soon.
            const double dwell =
                std::min(dwell_ms * per_ms, 0.6 * Channel_Interval(ign_channels, ign, cylinders));
            const double spark = tdc1 + j * event - advance;
            if (In_Window(angle, spark - dwell, dwell)) lines |= ign == 'A' ? 2 : 4;
        }
        const char fuel = fuel_channels[static_cast<std::size_t>(j) % fuel_channels.size()];
        if (fuel == 'A') {
            const double open =
                std::min(fuel_ms * per_ms, 0.9 * Channel_Interval(fuel_channels, 'A', cylinders));
            if (In_Window(angle, fuel_start + j * event, open)) lines |= 128;
        }
    }
    if (pwm_hz > 0 && std::fmod(seconds * pwm_hz, 1.0) < pwm_duty) lines |= 8;
    return lines;
}

std::string HS_Stream::Start(const HS_Plan& plan, int samples_per_second, Stream_Time now) {
    plan_ = plan;
    rate_ = std::max(1, samples_per_second);
    started_ = now;
    sent_ = 1;
    gap_done_ = false;
    gap_skip_ = 0;
    active_ = true;
    return "d";
}

std::string HS_Stream::Tick(Stream_Time now) {
    std::string out;
    if (!active_ || now < started_) return out;
    const double elapsed = std::chrono::duration<double>(now - started_).count();
    const long due = 1 + static_cast<long>(elapsed * rate_) - gap_skip_;
    if (due <= sent_) return out;
    out.reserve(static_cast<std::size_t>(due - sent_));
    while (sent_ < due) {
        const long number = sent_ + 1; // of the byte about to go, the echo being 1
        const long sample = number - 1;
        if (faults_.gap_at > 0 && !gap_done_ && sample >= faults_.gap_at) {
            // The box goes quiet while the engine turns on: those samples are never sent.
            gap_done_ = true;
            gap_skip_ = static_cast<long>(std::chrono::duration<double>(faults_.gap).count() * rate_);
            break;
        }
        std::uint8_t byte = 0;
        if (number > 2 && (number - 2) % Check_Every == 0) {
            ++checks_;
            byte = checks_ == faults_.bad_check ? 254 : 255;
        } else {
            byte = plan_.Sample_At(static_cast<double>(sample - 1 + gap_skip_) / rate_);
        }
        out += static_cast<char>(byte);
        ++sent_;
    }
    return out;
}

Stream_Time HS_Stream::Next_Deadline() const {
    if (!active_) return Stream_Time::max();
    // Bytes are made a couple of milliseconds' worth at a time: the line paces them anyway.
    const long batch = std::max(1, rate_ / 500);
    const double at = static_cast<double>(sent_ - 1 + gap_skip_ + batch) / rate_;
    return started_ + std::chrono::duration_cast<Stream_Time>(std::chrono::duration<double>(at));
}

} // namespace boxsim
