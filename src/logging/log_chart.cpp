#include "logging/log_chart.h"

#include "core/text.h"
#include "image/scaling.h"
#include "logging/log_signals.h"
#include "logging/log_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace quorlen {

namespace {

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();

int Span(const Chart_Window& w) {
    return w.Zoom_Stop - w.Zoom_Start + 1;
}

// The rule of every window command: the first row inside the log, the last not past it, and
// the last above the first. A window pushed against the end keeps its two rows inside.
void Clamp_Zoom(int& start, int& stop, int rows) {
    const int last = std::max(rows, 1);
    start = std::clamp(start, 1, last);
    stop = std::min(stop, last);
    if (stop <= start) stop = start + 1;
    if (stop > last) {
        stop = last;
        start = std::max(1, last - 1);
    }
}

// The same span moved whole inside rows 1..rows; a span longer than the file starts at row 1.
void Shift_Inside(int& start, int& stop, int rows) {
    const int span = stop - start + 1;
    if (stop > rows) {
        stop = rows;
        start = stop - span + 1;
    }
    if (start < 1) {
        start = 1;
        stop = span;
    }
}

// The compared rows span as many rows as the log's and stay inside their own file; where
// that file is the shorter, its columns end early.
void Hold_Compare(Chart_Window& w, const Window_Limits& limits) {
    if (limits.compare_rows <= 0) {
        w.Compare_Start = w.Zoom_Start;
        w.Compare_Stop = w.Zoom_Stop;
        return;
    }
    w.Compare_Stop = w.Compare_Start + Span(w) - 1;
    Shift_Inside(w.Compare_Start, w.Compare_Stop, limits.compare_rows);
}

Chart_Window Apply(const Chart_Window& before, int start, int stop, const Window_Limits& limits) {
    Clamp_Zoom(start, stop, limits.rows);
    Chart_Window w;
    w.Zoom_Start = start;
    w.Zoom_Stop = stop;
    w.Compare_Start = before.Compare_Start + (start - before.Zoom_Start);
    w.Compare_Stop = before.Compare_Stop + (stop - before.Zoom_Stop);
    Hold_Compare(w, limits);
    return w;
}

Chart_Window Moved(const Chart_Window& w, const Window_Limits& limits, int rows_right) {
    int start = w.Zoom_Start + rows_right, stop = w.Zoom_Stop + rows_right;
    Shift_Inside(start, stop, limits.rows);
    return Apply(w, start, stop, limits);
}

Chart_Window Moved_Comp(const Chart_Window& w, const Window_Limits& limits, int rows_right) {
    Chart_Window moved = w;
    if (limits.compare_rows <= 0) return moved;
    moved.Compare_Start += rows_right;
    Hold_Compare(moved, limits);
    return moved;
}

// A scroll moves half a screen, so the tuner keeps his bearings; lining the compared file up
// wants finer steps, a tenth.
int Scroll_Step(const Chart_Window& w) {
    return std::max(1, Span(w) / 2);
}

int Comp_Step(const Chart_Window& w) {
    return std::max(1, Span(w) / 10);
}

// --- values ---

int Data_Rows(const Log_State& log, bool compare) {
    if (compare) return log.Compare_Last_Row;
    return log.capture.Logging_Running ? log.capture.Log_Row_Count : log.Last_Row;
}

// The files on show: the log, and in compare mode the compared file, each with its array, the
// first of its rows on show and the rows it has.
struct Shown_File {
    const Log_Array& data;
    int first;
    int rows;
    bool compare;
};

std::vector<Shown_File> Shown_Files(const Log_State& log) {
    std::vector<Shown_File> files{{log.Log_Data, log.window.Zoom_Start, Data_Rows(log, false), false}};
    if (log.Compare_Mode)
        files.push_back({log.Compare_Data, log.window.Compare_Start, Data_Rows(log, true), true});
    return files;
}

bool In_Range(int column, int first, int count) {
    return first >= 0 && column >= first && column < first + count;
}

// The calculation already smooths RPM2 and power, and a status bit is a level, not a curve.
bool Smoothable(const Log_Columns& c, int column) {
    if (column == c.Col_RPM2 || column == c.Col_Power) return false;
    return !In_Range(column, c.Col_Status1, 8) && !In_Range(column, c.Col_Status2, 8) &&
           !In_Range(column, c.Col_Status3, 8);
}

// One column asked of Columns_Values: `count` values from the first row, each the mean of the
// values `smoothing` rows either side of it when that is above 0 (gaps left out).
struct Column_Request {
    int column = 0;
    int smoothing = 0;
    std::vector<double>* out = nullptr;
};

// The asked columns for `count` rows from row `first` (NaN outside rows 1..last), read in one
// pass along the rows: the array keeps a row's columns together, and walking a column alone
// would take a cache line a row.
void Columns_Values(const Log_Array& data, int last, int first, int count,
                    const std::vector<Column_Request>& asked) {
    last = std::min(last, Log_Row_Limit);
    int pad = 0;
    for (const Column_Request& c : asked) {
        c.out->assign(static_cast<std::size_t>(std::max(count, 0)), Nan);
        pad = std::max(pad, c.smoothing);
    }
    const int lo = std::max(1, first - pad), hi = std::min(last, first + count - 1 + pad);
    if (hi < lo || asked.empty()) return;
    const auto span = static_cast<std::size_t>(hi - lo + 1);
    // Smoothed columns gather their padded rows first; the others go straight to their place.
    std::vector<std::vector<double>> padded(asked.size());
    for (std::size_t i = 0; i < asked.size(); ++i)
        if (asked[i].smoothing > 0) padded[i].resize(span);
    for (int r = lo; r <= hi; ++r) {
        const double* row = data.Row(r);
        const bool shown = r >= first && r < first + count;
        for (std::size_t i = 0; i < asked.size(); ++i) {
            const double v = row[asked[i].column];
            if (asked[i].smoothing > 0)
                padded[i][static_cast<std::size_t>(r - lo)] = v;
            else if (shown)
                (*asked[i].out)[static_cast<std::size_t>(r - first)] = v;
        }
    }
    std::vector<double> sum(span + 1);
    std::vector<int> seen(span + 1);
    for (std::size_t i = 0; i < asked.size(); ++i) {
        const int n = asked[i].smoothing;
        if (n <= 0) continue;
        const std::vector<double>& v = padded[i];
        for (std::size_t k = 0; k < span; ++k) {
            const bool empty = Log_Array::Empty(v[k]);
            sum[k + 1] = sum[k] + (empty ? 0.0 : v[k]);
            seen[k + 1] = seen[k] + (empty ? 0 : 1);
        }
        const int from = std::max(first, lo), to = std::min(first + count - 1, hi);
        for (int r = from; r <= to; ++r) {
            if (Log_Array::Empty(v[static_cast<std::size_t>(r - lo)])) continue;
            const auto a = static_cast<std::size_t>(std::max(lo, r - n) - lo);
            const auto b = static_cast<std::size_t>(std::min(hi, r + n) - lo + 1);
            (*asked[i].out)[static_cast<std::size_t>(r - first)] = (sum[b] - sum[a]) / (seen[b] - seen[a]);
        }
    }
}

void Column_Values(const Log_Array& data, int last, int column, int first, int count, int n,
                   std::vector<double>& out) {
    Columns_Values(data, last, first, count, {Column_Request{column, n, &out}});
}

// Min and max of each of `buckets` runs of values, in the order they occur: the line through
// them touches every peak a pixel column holds. Few values go through as they are.
void Decimate(const std::vector<double>& v, double x_first, double dx, int buckets, Chart_Series& s) {
    s.points.clear();
    const long n = static_cast<long>(v.size());
    auto add = [&](long k) {
        s.points.push_back({x_first + static_cast<double>(k) * dx, v[static_cast<std::size_t>(k)]});
    };
    if (buckets < 1 || n <= 2L * buckets) {
        s.points.reserve(static_cast<std::size_t>(n));
        for (long k = 0; k < n; ++k)
            if (!Log_Array::Empty(v[static_cast<std::size_t>(k)])) add(k);
    } else {
        s.points.reserve(static_cast<std::size_t>(2 * buckets));
        for (long b = 0; b < buckets; ++b) {
            const long from = b * n / buckets, to = (b + 1) * n / buckets;
            long low = -1, high = -1;
            for (long k = from; k < to; ++k) {
                const double y = v[static_cast<std::size_t>(k)];
                if (Log_Array::Empty(y)) continue;
                if (low < 0 || y < v[static_cast<std::size_t>(low)]) low = k;
                if (high < 0 || y > v[static_cast<std::size_t>(high)]) high = k;
            }
            if (low < 0) continue;
            add(std::min(low, high));
            if (low != high) add(std::max(low, high));
        }
    }
    // A level held for many rows (a status bit, the gear, a target) is one line: only the ends
    // of each run of equal values are drawn.
    std::size_t kept = 0;
    for (std::size_t k = 0; k < s.points.size(); ++k) {
        const bool inside_run = k > 0 && k + 1 < s.points.size() && s.points[k - 1].y == s.points[k].y &&
                                s.points[k + 1].y == s.points[k].y;
        if (!inside_run) s.points[kept++] = s.points[k];
    }
    s.points.resize(kept);
    s.any = !s.points.empty();
    s.low = s.high = 0;
    for (const Chart_Point& p : s.points) {
        if (&p == &s.points.front() || p.y < s.low) s.low = p.y;
        if (&p == &s.points.front() || p.y > s.high) s.high = p.y;
    }
}

// The signals ticked for the chart among those the list offers.
std::vector<int> Shown_Signals(const Log_State& log) {
    std::vector<int> shown;
    for (int i = 0; i < std::min(log.columns.Signals, Log_Signal_Count); ++i) {
        const Signal_Controls& c = log.setup.controls[static_cast<std::size_t>(i)];
        if (c.view != 0 && c.log_signal != 0) shown.push_back(i);
    }
    return shown;
}

std::string Label_Of(const Log_State& log, int signal, bool compare) {
    return (compare ? std::string(Compare_Label_Prefix) : std::string()) + Shown_Signal_Name(log, signal);
}

const std::string& Unit_Of(const Log_State& log, int signal) {
    return log.Log_Signal_Tab[static_cast<std::size_t>(signal)].unit;
}

std::string Head_Of(const Log_State& log, int signal, bool compare) {
    const std::string& unit = Unit_Of(log, signal);
    return Label_Of(log, signal, compare) + (unit.empty() ? "" : " [" + unit + "]");
}

std::string Value_Text(double v) {
    return Log_Array::Empty(v) ? std::string() : Number_Text(Round_Even(v, 3));
}

// The data range of the series on one axis, for an axis left to the data.
void Fit(Axis_Scale& scale, const std::vector<Chart_Series>& series, bool secondary) {
    if (!scale.automatic) return;
    bool any = false;
    for (const Chart_Series& s : series) {
        if (s.secondary != secondary || !s.any) continue;
        scale.min = any ? std::min(scale.min, s.low) : s.low;
        scale.max = any ? std::max(scale.max, s.high) : s.high;
        any = true;
    }
    if (!any) {
        scale.min = 0;
        scale.max = 1;
    } else if (scale.max <= scale.min) {
        scale.min -= 1;
        scale.max += 1;
    }
}

} // namespace

// --- the window -----------------------------------------------------------------------------

int Log_Rows(const Log_State& log) {
    const int rows = Data_Rows(log, false);
    return log.Compare_Mode ? std::min(rows, log.Compare_Last_Row) : rows;
}

Window_Limits Limits_Of(const Log_State& log) {
    return {Log_Rows(log), log.Compare_Mode ? log.Compare_Last_Row : 0};
}

Chart_Window Zoom_In(const Chart_Window& w, const Window_Limits& limits) {
    const int quarter = Span(w) / 4;
    return Apply(w, w.Zoom_Start + quarter, w.Zoom_Stop - quarter, limits);
}

Chart_Window Zoom_Out(const Chart_Window& w, const Window_Limits& limits) {
    const int half = Span(w) / 2;
    return Apply(w, w.Zoom_Start - half, w.Zoom_Stop + half, limits);
}

Chart_Window Zoom_All(const Window_Limits& limits) {
    Chart_Window w{1, limits.rows, 1, limits.rows};
    return Settle(w, limits);
}

Chart_Window Scroll_Left(const Chart_Window& w, const Window_Limits& limits) {
    return Moved(w, limits, -Scroll_Step(w));
}

Chart_Window Scroll_Right(const Chart_Window& w, const Window_Limits& limits) {
    return Moved(w, limits, Scroll_Step(w));
}

Chart_Window Scroll_Left_Comp(const Chart_Window& w, const Window_Limits& limits) {
    return Moved_Comp(w, limits, -Comp_Step(w));
}

Chart_Window Scroll_Right_Comp(const Chart_Window& w, const Window_Limits& limits) {
    return Moved_Comp(w, limits, Comp_Step(w));
}

Chart_Window Zoom_To_Rows(const Chart_Window& w, const Window_Limits& limits, int from_row, int to_row) {
    int start = std::min(from_row, to_row), stop = std::max(from_row, to_row);
    if (stop == start) {
        const int span = std::max(2, Span(w) - 2 * (Span(w) / 4));
        start = from_row - (span - 1) / 2;
        stop = start + span - 1;
        Shift_Inside(start, stop, limits.rows);
    }
    return Apply(w, start, stop, limits);
}

Chart_Window Settle(const Chart_Window& w, const Window_Limits& limits) {
    Chart_Window settled = w;
    Clamp_Zoom(settled.Zoom_Start, settled.Zoom_Stop, limits.rows);
    Hold_Compare(settled, limits);
    return settled;
}

// --- scales ---------------------------------------------------------------------------------

Axis_Scale Axis_Scale_Of(const std::string& min_text, const std::string& max_text) {
    Axis_Scale scale;
    auto automatic = [](const std::string& t) { return Trim(t).empty() || Trim(t) == "Auto"; };
    if (automatic(min_text) || automatic(max_text)) return scale;
    const double low = Text_Value(min_text), high = Text_Value(max_text);
    if (!(high > low)) return scale;
    scale.automatic = false;
    scale.min = low;
    scale.max = high;
    return scale;
}

Axis_Scale Nice_Scale(const Axis_Scale& scale, int ticks) {
    Axis_Scale nice = scale;
    if (!scale.automatic || !(scale.max > scale.min) || !std::isfinite(scale.max - scale.min)) {
        nice.ticks = 9;
        return nice;
    }
    const double raw = (scale.max - scale.min) / std::max(ticks - 1, 1);
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    const double fraction = raw / power;
    const double step = (fraction <= 1 ? 1 : fraction <= 2 ? 2 : fraction <= 5 ? 5 : 10) * power;
    nice.min = std::floor(scale.min / step + 1e-9) * step;
    nice.max = std::ceil(scale.max / step - 1e-9) * step;
    nice.ticks = static_cast<int>(std::lround((nice.max - nice.min) / step)) + 1;
    return nice;
}

std::string Scale_Entry_Text(const std::string& typed) {
    const std::string t = Trim(typed);
    if (Equal_No_Case(t, "a") || Equal_No_Case(t, "auto")) return "Auto";
    return Number_Text(Text_Value(t));
}

int Chart_Smoothing(const Log_Setup& setup) {
    if (!View_On(setup, Smooth_View)) return 0;
    const double n = std::trunc(Text_Value(setup.txt_FIR[1]));
    return static_cast<int>(std::clamp(n, 0.0, 100.0));
}

// --- the chart ------------------------------------------------------------------------------

const Chart_Content& Chart_Builder::Build(const Log_State& log, const Chart_Options& options) {
    rebuilt_ = 0;
    Chart_Content next;
    const Chart_Window& w = log.window;
    next.rows = std::max(0, Span(w));
    next.x_in_rows = options.x_in_rows;
    auto x_of = [&](int row) { return options.x_in_rows ? row : (row - 1) * Row_Seconds; };
    next.x_first = x_of(w.Zoom_Start);
    next.x_last = x_of(w.Zoom_Stop);
    next.label_rows = std::max(1, next.rows / 8);
    next.primary = Axis_Scale_Of(log.setup.Scale[0], log.setup.Scale[1]);
    next.secondary = Axis_Scale_Of(log.setup.Scale[2], log.setup.Scale[3]);

    const std::vector<int> shown = Shown_Signals(log);
    next.no_signal = shown.empty();
    // Where each series of the last build stands, to keep what hasn't changed.
    std::array<std::array<int, 2>, Log_Signal_Count> old{};
    for (auto& o : old)
        o = {-1, -1};
    for (std::size_t k = 0; k < content_.series.size(); ++k) {
        const Chart_Series& s = content_.series[k];
        old[static_cast<std::size_t>(s.signal)][s.compare ? 1 : 0] = static_cast<int>(k);
    }

    const int smoothing = Chart_Smoothing(log.setup);
    for (const Shown_File& file : Shown_Files(log)) {
        const bool compare = file.compare;
        const int first = file.first;
        const int data_rows = file.rows;
        // Series whose key is the one they were made with keep their points; the rest are read
        // together, then thinned.
        std::vector<std::size_t> fresh;
        for (int signal : shown) {
            const int column = signal + 1;
            Series_Key key;
            key.first_row = first;
            key.rows = next.rows;
            key.buckets = std::max(options.width, 1);
            key.smoothing = Smoothable(log.columns, column) ? smoothing : 0;
            key.x_in_rows = options.x_in_rows;
            key.x_first = next.x_first;
            key.data_version = log.Data_Version;
            key.data_rows = data_rows;

            Chart_Series s;
            const int at = old[static_cast<std::size_t>(signal)][compare ? 1 : 0];
            if (at >= 0 && content_.series[static_cast<std::size_t>(at)].key == key) {
                s = std::move(content_.series[static_cast<std::size_t>(at)]);
            } else {
                s.key = key;
                s.version = next_version_++;
                fresh.push_back(next.series.size());
            }
            s.signal = signal;
            s.compare = compare;
            s.secondary = log.setup.controls[static_cast<std::size_t>(signal)].secondary != 0;
            s.label = Label_Of(log, signal, compare);
            next.uses_secondary = next.uses_secondary || s.secondary;
            next.series.push_back(std::move(s));
        }
        std::vector<std::vector<double>> values(fresh.size());
        std::vector<Column_Request> asked;
        for (std::size_t i = 0; i < fresh.size(); ++i) {
            const Chart_Series& s = next.series[fresh[i]];
            asked.push_back({s.signal + 1, s.key.smoothing, &values[i]});
        }
        Columns_Values(file.data, data_rows, first, next.rows, asked);
        for (std::size_t i = 0; i < fresh.size(); ++i) {
            Chart_Series& s = next.series[fresh[i]];
            Decimate(values[i], next.x_first, options.x_in_rows ? 1.0 : Row_Seconds, s.key.buckets, s);
        }
        rebuilt_ += static_cast<int>(fresh.size());
    }
    Fit(next.primary, next.series, false);
    Fit(next.secondary, next.series, true);
    content_ = std::move(next);
    return content_;
}

int Row_At(const Log_State& log, double x, bool x_in_rows) {
    const double row = x_in_rows ? x : x / Row_Seconds + 1;
    const int r = static_cast<int>(std::lround(std::clamp(row, -1e6, 1e6)));
    return std::clamp(r, log.window.Zoom_Start, std::max(log.window.Zoom_Start, log.window.Zoom_Stop));
}

std::string Show_All_Point_Values(const Log_State& log, int row) {
    std::string text = "Time: " + Format_Number((row - 1) * Row_Seconds, "0.00");
    const int compare_row = log.window.Compare_Start + (row - log.window.Zoom_Start);
    for (const Shown_File& file : Shown_Files(log)) {
        const int r = file.compare ? compare_row : row;
        const bool inside = r >= 1 && r <= file.rows;
        for (int signal : Shown_Signals(log)) {
            const double v = inside ? file.data(r, signal + 1) : Nan;
            text += "\r\n" + Label_Of(log, signal, file.compare) + ": " + Value_Text(v) + " [" +
                    Unit_Of(log, signal) + "]";
        }
    }
    return text;
}

std::string Chart_Csv(const Log_State& log, bool x_in_rows) {
    const Chart_Window& w = log.window;
    const int rows = std::max(0, Span(w));
    const std::vector<int> shown = Shown_Signals(log);
    std::string text = x_in_rows ? "Time,Row" : "Time";
    std::vector<std::vector<double>> columns;
    const int smoothing = Chart_Smoothing(log.setup);
    for (const Shown_File& file : Shown_Files(log)) {
        const std::size_t from = columns.size();
        columns.resize(from + shown.size());
        std::vector<Column_Request> asked;
        for (std::size_t i = 0; i < shown.size(); ++i) {
            const int column = shown[i] + 1;
            text += "," + Csv_Field(Head_Of(log, shown[i], file.compare));
            asked.push_back({column, Smoothable(log.columns, column) ? smoothing : 0, &columns[from + i]});
        }
        Columns_Values(file.data, file.rows, file.first, rows, asked);
    }
    text += "\r\n";
    text.reserve(text.size() + static_cast<std::size_t>(rows) * (8 + 8 * columns.size()));
    for (int k = 0; k < rows; ++k) {
        const int row = w.Zoom_Start + k;
        text += Format_Number((row - 1) * Row_Seconds, "0.00");
        if (x_in_rows) text += "," + std::to_string(row);
        for (const auto& values : columns)
            text += "," + Value_Text(values[static_cast<std::size_t>(k)]);
        text += "\r\n";
    }
    return text;
}

std::string Csv_Field(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (char ch : text)
        quoted += ch == '"' ? std::string("\"\"") : std::string(1, ch);
    return quoted + "\"";
}

std::string Export_Name(const Log_State& log, const std::string& suffix) {
    std::string stem = log.Log_File_Name;
    if (Ends_With_No_Case(stem, ".qxl")) stem.resize(stem.size() - 4);
    return stem + suffix;
}

// --- the RPM graph --------------------------------------------------------------------------

const char* Reference_Name(Reference_Signal reference) {
    return reference == Reference_Signal::MAP ? "MAP" : "RPM";
}

int Reference_Column(const Log_State& log, Reference_Signal reference) {
    const int column = reference == Reference_Signal::MAP ? log.columns.Col_AN3 : log.columns.Col_RPM;
    return column >= 1 && column < Log_Data_Columns ? column : 1;
}

Xy_Content Rpm_Graph(const Log_State& log, Reference_Signal reference, int width, int height) {
    Xy_Content content;
    const Chart_Window& w = log.window;
    const int rows = std::max(0, Span(w));
    const int x_column = Reference_Column(log, reference);
    const std::string& x_unit = Unit_Of(log, x_column - 1);
    content.x_title = std::string(Reference_Name(reference)) + (x_unit.empty() ? "" : " [" + x_unit + "]");
    content.primary = Axis_Scale_Of(log.setup.Scale[0], log.setup.Scale[1]);
    content.secondary = Axis_Scale_Of(log.setup.Scale[2], log.setup.Scale[3]);
    const std::vector<int> shown = Shown_Signals(log);
    content.no_signal = shown.empty();

    width = std::clamp(width, 1, 4000);
    height = std::clamp(height, 1, 4000);
    std::vector<std::uint8_t> taken(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
    std::vector<std::size_t> marked;
    std::vector<double> xs, ys;
    bool any_x = false;
    for (const Shown_File& file : Shown_Files(log)) {
        Column_Values(file.data, file.rows, x_column, file.first, rows, 0, xs);
        for (int signal : shown) {
            Column_Values(file.data, file.rows, signal + 1, file.first, rows, 0, ys);
            Chart_Series s;
            s.signal = signal;
            s.compare = file.compare;
            s.secondary = log.setup.controls[static_cast<std::size_t>(signal)].secondary != 0;
            s.label = Label_Of(log, signal, file.compare);
            double x_low = 0, x_high = 0;
            bool any = false;
            for (int k = 0; k < rows; ++k) {
                const double x = xs[static_cast<std::size_t>(k)], y = ys[static_cast<std::size_t>(k)];
                if (Log_Array::Empty(x) || Log_Array::Empty(y)) continue;
                x_low = any ? std::min(x_low, x) : x;
                x_high = any ? std::max(x_high, x) : x;
                s.low = any ? std::min(s.low, y) : y;
                s.high = any ? std::max(s.high, y) : y;
                any = true;
            }
            s.any = any;
            if (any) {
                // One point a cell of the grid over this series' own range.
                const double x_step = x_high > x_low ? (x_high - x_low) / (width - 1 > 0 ? width - 1 : 1) : 1;
                const double y_step =
                    s.high > s.low ? (s.high - s.low) / (height - 1 > 0 ? height - 1 : 1) : 1;
                for (int k = 0; k < rows; ++k) {
                    const double x = xs[static_cast<std::size_t>(k)], y = ys[static_cast<std::size_t>(k)];
                    if (Log_Array::Empty(x) || Log_Array::Empty(y)) continue;
                    const auto cx = static_cast<std::size_t>(std::lround((x - x_low) / x_step));
                    const auto cy = static_cast<std::size_t>(std::lround((y - s.low) / y_step));
                    const std::size_t cell = std::min<std::size_t>(cy, static_cast<std::size_t>(height - 1)) *
                                                 static_cast<std::size_t>(width) +
                                             std::min<std::size_t>(cx, static_cast<std::size_t>(width - 1));
                    if (taken[cell] != 0) continue;
                    taken[cell] = 1;
                    marked.push_back(cell);
                    s.points.push_back({x, y});
                }
                for (std::size_t cell : marked)
                    taken[cell] = 0;
                marked.clear();
                content.x_low = any_x ? std::min(content.x_low, x_low) : x_low;
                content.x_high = any_x ? std::max(content.x_high, x_high) : x_high;
                any_x = true;
            }
            content.uses_secondary = content.uses_secondary || s.secondary;
            content.series.push_back(std::move(s));
        }
    }
    if (!any_x) {
        content.x_low = 0;
        content.x_high = 1;
    } else if (content.x_high <= content.x_low) {
        content.x_low -= 1;
        content.x_high += 1;
    }
    Fit(content.primary, content.series, false);
    Fit(content.secondary, content.series, true);
    return content;
}

std::string Rpm_Graph_Csv(const Log_State& log, Reference_Signal reference) {
    const Chart_Window& w = log.window;
    const int rows = std::max(0, Span(w));
    const int x_column = Reference_Column(log, reference);
    std::string text = "Row";
    struct Pair {
        std::vector<double> x, y;
    };
    std::vector<Pair> pairs;
    for (const Shown_File& file : Shown_Files(log)) {
        for (int signal : Shown_Signals(log)) {
            text += std::string(",") + Reference_Name(reference) + "," +
                    Csv_Field(Head_Of(log, signal, file.compare));
            Pair p;
            Column_Values(file.data, file.rows, x_column, file.first, rows, 0, p.x);
            Column_Values(file.data, file.rows, signal + 1, file.first, rows, 0, p.y);
            pairs.push_back(std::move(p));
        }
    }
    text += "\r\n";
    for (int k = 0; k < rows; ++k) {
        text += std::to_string(w.Zoom_Start + k);
        for (const Pair& p : pairs)
            text += "," + Value_Text(p.x[static_cast<std::size_t>(k)]) + "," +
                    Value_Text(p.y[static_cast<std::size_t>(k)]);
        text += "\r\n";
    }
    return text;
}

std::string Rpm_Graph_Caption(const Log_State& log) {
    std::string caption = "RPM Graph - " + log.Log_File_Name;
    if (log.Compare_Mode) caption += "  compared with  " + log.Compare_File_Name;
    return caption;
}

} // namespace quorlen
