#include "cell_adjust.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace boxsim {

namespace {

constexpr double Running_Rpm = 300;
constexpr double Close = 0.25; // of the axis step, either side of a breakpoint

// The cells of one axis that the running value leans on: one when it is close to a
// breakpoint, the two either side when it is not; empty for an axis that has no points.
std::vector<int> Axis_Cells(const std::vector<double>& points, double v) {
    const int n = static_cast<int>(points.size());
    if (n == 0) return {};
    if (v >= points.back()) return {n};
    int i = 0;
    while (points[static_cast<std::size_t>(i)] <= v)
        ++i;
    if (i == 0) return {1};
    const double low = points[static_cast<std::size_t>(i - 1)];
    const double f = (v - low) / (points[static_cast<std::size_t>(i)] - low);
    if (f <= Close) return {i};
    if (f >= 1 - Close) return {i + 1};
    return {i, i + 1};
}

struct Block {
    int base, cols, rows;
    int Start() const { return base + cols + rows + 2; }
    int Cell(int r, int c) const { return Start() + (r - 1) * cols + (c - 1); }
};

// Running sums of the step bytes, saturating at 255 as the firmware adds them.
std::vector<double> Steps(const Adjust_Image& m, int first, int count, double scale) {
    std::vector<double> points;
    int sum = 0;
    for (int k = 0; k < count; ++k) {
        sum = std::min(255, sum + m[static_cast<std::size_t>(first + k)]);
        points.push_back(sum * scale);
    }
    return points;
}

// The raw reading of the input the main maps run on; RPM when the nibble names none.
double Load_Reading(const Engine_Sample& engine, const Adjust_Image& m) {
    const int input = m[Main_Load_Byte] & 15;
    if (input >= 1 && input <= 12) return engine.columns[static_cast<std::size_t>(11 + input)];
    return std::min(255.0, engine.rpm / 62.5);
}

std::string Entry(int address, std::uint8_t value) {
    char text[32];
    std::snprintf(text, sizeof text, "EEadr:%04X EEdata: %02X", address, value);
    return text;
}

} // namespace

bool Is_Cell_Adjust_Command(char c) {
    return c == '+' || c == '-' || c == '>' || c == '<';
}

Cell_Adjustment Adjust_Running_Cell(char command, const Engine_Sample& engine, bool engine_running,
                                    const Adjust_Image& memory, long fault_address) {
    Cell_Adjustment result;
    result.answer = std::string(1, command);
    if (!engine_running || engine.rpm < Running_Rpm) {
        result.answer += "#0:NO RPM - nothing done\r\n";
        return result;
    }
    const bool fuel = command == '+' || command == '-';
    const int step = command == '+' || command == '>' ? 1 : -1;
    const int base = fuel ? Fuel_Map_Base : Ign_Map_Base;
    const Block block{base, memory[static_cast<std::size_t>(base)],
                      memory[static_cast<std::size_t>(base + memory[static_cast<std::size_t>(base)] + 1)]};
    const auto columns = Axis_Cells(Steps(memory, base + 1, block.cols, 62.5), engine.rpm);
    const auto rows =
        Axis_Cells(Steps(memory, base + block.cols + 2, block.rows, 1.0), Load_Reading(engine, memory));
    if (columns.empty() || rows.empty() || block.Cell(block.rows, block.cols) > 1023) {
        result.answer += "#2:NO MAP\r\n";
        return result;
    }
    if (columns.size() > 1 && rows.size() > 1) {
        result.answer += "#1:NOT CLOSE\r\n";
        return result;
    }
    std::vector<int> addresses;
    if (fault_address >= 0) {
        addresses.push_back(static_cast<int>(std::min(fault_address, 1023L)));
    } else {
        for (int r : rows)
            for (int c : columns)
                addresses.push_back(block.Cell(r, c));
    }
    for (std::size_t k = 0; k < addresses.size(); ++k) {
        const int a = addresses[k];
        const auto value =
            static_cast<std::uint8_t>(std::clamp(memory[static_cast<std::size_t>(a)] + step, 0, 255));
        result.writes.emplace_back(a, value);
        result.answer += (k > 0 ? " " : "") + Entry(a, value);
    }
    result.answer += "\r\n";
    return result;
}

} // namespace boxsim
