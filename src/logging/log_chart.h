#pragma once
// What the log window's chart shows, worked out without a screen: the window of rows and how
// zoom and scroll move it, the second file lined up beside the first, the columns and their
// points (at most two a pixel column, every peak kept), the value axes, the values at a
// clicked row, the table export, and the x-y pairs of the RPM graph.

#include "logging/log_state.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorlen {

inline constexpr const char* No_Signal_Text = "Select a signal to view";
inline constexpr const char* Line_Text_Window_Hint =
    "Show value by clicking at a line. Zoom by clicking on the right mouse button.";
inline constexpr const char* Compare_Label_Prefix = "(2)";
inline constexpr double Row_Seconds = 0.05;
// The six view choices of the log settings (Views_chk), in the order the file keeps them.
enum View_Choice : int {
    Dots_View = 0,      // a dot at each row once the rows stand apart
    Rows_View = 1,      // the time axis counts rows
    Legend_View = 2,    // the legend beside the chart
    Dark_View = 3,      // light lines on dark, for a dim workshop
    Smooth_View = 4,    // every curve smoothed as the power is
    Rpm_Graph_View = 5, // the RPM graph comes up with each log
};
inline bool View_On(const Log_Setup& setup, View_Choice view) {
    return setup.Views_chk[static_cast<std::size_t>(view)] != 0;
}

// --- the window of rows ---------------------------------------------------------------------

// Rows the window may range over: the log's (the rows so far while one is recorded); in
// compare mode the shorter of the two files limits the common range.
int Log_Rows(const Log_State& log);

struct Window_Limits {
    int rows = 0;         // Log_Rows
    int compare_rows = 0; // rows of the compared file; 0 outside compare mode
};
Window_Limits Limits_Of(const Log_State& log);

// Each command gives the new window. The compared file's rows move by the same differences
// as the log's, so the two stay in step; the _Comp scrolls move the compared file alone, to
// line the two up. Nothing leaves its file, and a window has two rows at least.
Chart_Window Zoom_In(const Chart_Window& w, const Window_Limits& limits);
Chart_Window Zoom_Out(const Chart_Window& w, const Window_Limits& limits);
Chart_Window Zoom_All(const Window_Limits& limits);
Chart_Window Scroll_Left(const Chart_Window& w, const Window_Limits& limits);
Chart_Window Scroll_Right(const Chart_Window& w, const Window_Limits& limits);
Chart_Window Scroll_Left_Comp(const Chart_Window& w, const Window_Limits& limits);
Chart_Window Scroll_Right_Comp(const Chart_Window& w, const Window_Limits& limits);
// The right-button gesture: the rows between press and release; a click without a drag
// zooms in centred on its row.
Chart_Window Zoom_To_Rows(const Chart_Window& w, const Window_Limits& limits, int from_row, int to_row);
// The window held inside the files after they were read or recorded.
Chart_Window Settle(const Chart_Window& w, const Window_Limits& limits);

// --- what the chart draws -------------------------------------------------------------------

struct Chart_Point {
    double x = 0, y = 0;
};

struct Axis_Scale {
    bool automatic = true;
    double min = 0, max = 0;
    int ticks = 9; // lines across the axis, both ends counted
};

// An axis left to the data widened to round steps of 1, 2 or 5 times a power of ten, with
// about `ticks` lines; a fixed axis is divided in eight as it stands.
Axis_Scale Nice_Scale(const Axis_Scale& scale, int ticks = 7);

// Fixed only when both texts hold a number: "" and "Auto" leave the axis to the data. A
// maximum not above the minimum can't be drawn and leaves it to the data too.
Axis_Scale Axis_Scale_Of(const std::string& min_text, const std::string& max_text);
// What Return makes of a scale box: "a", "A" or "auto" is "Auto", anything else a number
// with a point for its decimal mark ("1,5" is "1.5", "x" is "0").
std::string Scale_Entry_Text(const std::string& typed);

// Rows either side of each shown row that the chart's mean takes: with the view choice "smooth
// every curve" (Views_chk 4) set, the whole number in the power smoothing box (txt_FIR 1), so
// every curve is as calm as the power curve; otherwise 0, and the rows are drawn as they are,
// so no single-row spike is ever hidden unasked.
int Chart_Smoothing(const Log_Setup& setup);

// What a series was built from; the same key gives the same points.
struct Series_Key {
    int first_row = 0, rows = 0, buckets = 0, smoothing = 0;
    int data_rows = 0; // rows the file had
    bool x_in_rows = false;
    double x_first = 0;
    std::uint64_t data_version = 0;
    int reference = 0; // the x column of an x-y series
    bool operator==(const Series_Key&) const = default;
};

struct Chart_Series {
    int signal = 0;       // 0..73, column signal + 1
    bool compare = false; // from the compared file
    bool secondary = false;
    std::string label; // the signal's name, "(2)" in front for the compared file
    std::vector<Chart_Point> points;
    double low = 0, high = 0; // of the values shown
    bool any = false;         // a value at all
    Series_Key key;
    std::uint64_t version = 0; // new whenever the points are made afresh
};

struct Chart_Options {
    int width = 800;        // pixel columns of the plot
    bool x_in_rows = false; // the time axis counts rows instead of seconds
};

struct Chart_Content {
    bool no_signal = false; // nothing ticked: the one column "Select a signal to view"
    std::vector<Chart_Series> series;
    int rows = 0; // rows on show
    double x_first = 0, x_last = 0;
    bool x_in_rows = false;
    Axis_Scale primary, secondary;
    bool uses_secondary = false;
    int label_rows = 1; // rows between time labels: about eight stand on the chart
};

// The shown columns, kept between builds: a series whose key hasn't changed keeps its points,
// so a tick rebuilds one series and a repaint none.
class Chart_Builder {
public:
    const Chart_Content& Build(const Log_State& log, const Chart_Options& options);
    const Chart_Content& Content() const { return content_; }
    // Series made afresh by the last build.
    int Rebuilt() const { return rebuilt_; }

private:
    Chart_Content content_;
    int rebuilt_ = 0;
    std::uint64_t next_version_ = 1;
};

// The log's row nearest to `x` on the time axis, held inside the window.
int Row_At(const Log_State& log, double x, bool x_in_rows);
// "Time: " and the row's time, then one line a shown signal: name, value and [unit]; the
// compared file's columns follow with "(2)" in front, from its lined-up row.
std::string Show_All_Point_Values(const Log_State& log, int row);
// Every shown row (no thinning) of every shown column, as the chart draws them, under a head
// that starts with "Time". Lines end in CR LF.
std::string Chart_Csv(const Log_State& log, bool x_in_rows = false);

// A field of a comma-separated table, quoted when it holds a comma, a quote or a line end.
std::string Csv_Field(const std::string& text);

// The name an export of the log's chart is offered under: the log's name without ".qxl" and
// `suffix` ("drive.qxl" and "_qxl" give "drive_qxl").
std::string Export_Name(const Log_State& log, const std::string& suffix);

// --- the RPM graph ----------------------------------------------------------------------------

enum class Reference_Signal { RPM, MAP };
const char* Reference_Name(Reference_Signal reference);
// The column the pairs take their x from: the RPM, or the third analogue input, where both
// row layouts carry the manifold pressure.
int Reference_Column(const Log_State& log, Reference_Signal reference);

struct Xy_Content {
    bool no_signal = false;
    std::vector<Chart_Series> series;
    double x_low = 0, x_high = 1;
    Axis_Scale primary, secondary;
    bool uses_secondary = false;
    std::string x_title; // "RPM" or "MAP" with the unit
};
// Each ticked signal against the reference over the log window's rows; doubled for the
// compared file. Points that would fall on one cell of a `width` x `height` grid are drawn once.
Xy_Content Rpm_Graph(const Log_State& log, Reference_Signal reference, int width, int height);
// The pairs as rows: "Row", then for each series the reference's name and the series' label.
std::string Rpm_Graph_Csv(const Log_State& log, Reference_Signal reference);
// "RPM Graph - " and the file's name, and "  compared with  " and the second in compare mode.
std::string Rpm_Graph_Caption(const Log_State& log);

} // namespace quorlen
