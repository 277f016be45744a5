#include "logging/log_state.h"
#include "logging/log_context.h"

#include "core/debug_log.h"
#include "core/run_error.h"
#include "link/command_link.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <thread>

namespace quorlen {

namespace {
constexpr double Empty_Cell = std::numeric_limits<double>::quiet_NaN();
}

void Log_Array::Hold_Row(int row) {
    const auto needed = static_cast<std::size_t>(row + 1) * Log_Data_Columns;
    if (needed <= values_.size()) return;
    // Grown by half again at least, so a log read row by row is not copied row by row.
    const std::size_t all = static_cast<std::size_t>(Log_Row_Limit + 1) * Log_Data_Columns;
    values_.resize(std::min(all, std::max(needed, values_.size() + values_.size() / 2)), Empty_Cell);
}

double& Log_Array::operator()(int row, int column) {
    if (row < 0 || row > Log_Row_Limit || column < 0 || column >= Log_Data_Columns)
        throw errors::Subscript_Out_Of_Range();
    Hold_Row(row);
    return values_[static_cast<std::size_t>(row * Log_Data_Columns + column)];
}

double Log_Array::operator()(int row, int column) const {
    if (row < 0 || row > Log_Row_Limit || column < 0 || column >= Log_Data_Columns)
        throw errors::Subscript_Out_Of_Range();
    const auto at = static_cast<std::size_t>(row * Log_Data_Columns + column);
    return at < values_.size() ? values_[at] : Empty_Cell;
}

const double* Log_Array::Row(int row) const {
    if (row < 0 || row > Log_Row_Limit) throw errors::Subscript_Out_Of_Range();
    const auto at = static_cast<std::size_t>(row * Log_Data_Columns);
    if (at + Log_Data_Columns <= values_.size()) return values_.data() + at;
    // A row past the last one written reads as empty, as every cell of it does.
    static const auto empty = [] {
        std::array<double, Log_Data_Columns> cells;
        cells.fill(Empty_Cell);
        return cells;
    }();
    return empty.data();
}

double Log_Array::Num(int row, int column) const {
    const double v = (*this)(row, column);
    return Empty(v) ? 0.0 : v;
}

std::string& Log_Array::Name(int column) {
    if (column < 0 || column >= Log_Data_Columns) throw errors::Subscript_Out_Of_Range();
    return names_[static_cast<std::size_t>(column)];
}

const std::string& Log_Array::Name(int column) const {
    if (column < 0 || column >= Log_Data_Columns) throw errors::Subscript_Out_Of_Range();
    return names_[static_cast<std::size_t>(column)];
}

void Log_Array::Clear() {
    values_.clear();
    for (auto& n : names_)
        n.clear();
}

double Log_Context::Now() const {
    return hooks.Now ? hooks.Now() : Steady_Seconds();
}

std::string Log_Context::Date_Text() const {
    if (hooks.Date_Text) return hooks.Date_Text();
    return Now_Date_Time_Text().substr(0, 10);
}

std::string Log_Context::Time_Text() const {
    if (hooks.Time_Text) return hooks.Time_Text();
    return Now_Time_Text();
}

void Log_Context::Dummy_Wait() const {
    if (hooks.Dummy_Wait)
        hooks.Dummy_Wait();
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

} // namespace quorlen
