// The log chart without a screen: how zoom and scroll move the window of rows and keep two
// files in step, what the chart draws (columns, axes, thinned points with every peak), the
// values at a clicked row, the exports, the RPM graph, and the compared file, the unsaved
// question and a change of settings on an open log.

#include "core/text.h"
#include "logging/log_chart.h"
#include "logging/log_study.h"
#include "support/drive_log.h"
#include "support/log_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace quorlen {
namespace {

using test::Read_File;
using test::Write_File;

Chart_Window Window(int start, int stop, int compare_start, int compare_stop) {
    return Chart_Window{start, stop, compare_start, compare_stop};
}

int Span(const Chart_Window& w) {
    return w.Zoom_Stop - w.Zoom_Start + 1;
}

// --- the window ------------------------------------------------------------------------------

TEST(ChartWindow, ZoomInKeepsAtLeastTwoRowsAndHalvesLargerWindows) {
    const Window_Limits limits{500, 0};
    EXPECT_EQ(Zoom_In(Window(10, 11, 10, 11), limits), Window(10, 11, 10, 11));
    EXPECT_EQ(Zoom_In(Window(499, 500, 499, 500), limits), Window(499, 500, 499, 500));
    EXPECT_EQ(Zoom_In(Window(1, 3, 1, 3), limits), Window(1, 3, 1, 3));
    EXPECT_EQ(Zoom_In(Window(101, 200, 101, 200), limits), Window(126, 175, 126, 175));
    // Zooming in again and again ends at two rows, never fewer.
    Chart_Window w = Window(1, 500, 1, 500);
    for (int i = 0; i < 20; ++i)
        w = Zoom_In(w, limits);
    EXPECT_EQ(Span(w), 2);
}

TEST(ChartWindow, ZoomOutAtTheEndsStaysInsideTheLog) {
    const Window_Limits limits{500, 0};
    EXPECT_EQ(Zoom_Out(Window(2, 41, 2, 41), limits), Window(1, 61, 1, 61));
    EXPECT_EQ(Zoom_Out(Window(460, 499, 460, 499), limits), Window(440, 500, 440, 500));
    EXPECT_EQ(Zoom_Out(Window(100, 400, 100, 400), limits), Window(1, 500, 1, 500));
    // A log of one row, and none at all, still give a window inside it.
    EXPECT_EQ(Zoom_Out(Window(1, 1, 1, 1), Window_Limits{1, 0}), Window(1, 1, 1, 1));
    EXPECT_EQ(Zoom_Out(Window(1, 1, 1, 1), Window_Limits{0, 0}), Window(1, 1, 1, 1));
}

TEST(ChartWindow, ScrollsMoveHalfTheSpanAndStopAtTheEnds) {
    const Window_Limits limits{500, 0};
    EXPECT_EQ(Scroll_Right(Window(101, 200, 101, 200), limits), Window(151, 250, 151, 250));
    EXPECT_EQ(Scroll_Left(Window(101, 200, 101, 200), limits), Window(51, 150, 51, 150));
    EXPECT_EQ(Scroll_Right(Window(380, 479, 380, 479), limits), Window(401, 500, 401, 500));
    EXPECT_EQ(Scroll_Left(Window(20, 119, 20, 119), limits), Window(1, 100, 1, 100));
    EXPECT_EQ(Scroll_Left(Window(1, 100, 1, 100), limits), Window(1, 100, 1, 100));
    EXPECT_EQ(Scroll_Right(Window(499, 500, 499, 500), limits), Window(499, 500, 499, 500));
}

TEST(ChartWindow, TheComparedFileMovesInStepAndLinesUpAlone) {
    // The log has 800 rows, the compared file 300: the shorter limits the common range.
    const Window_Limits limits{300, 300};
    Chart_Window w = Zoom_All(limits);
    EXPECT_EQ(w, Window(1, 300, 1, 300));
    w = Zoom_In(Zoom_In(w, limits), limits); // 75 rows in the middle
    EXPECT_EQ(w, Window(113, 188, 113, 188));
    // The compared file alone, a tenth of the span a step.
    w = Scroll_Right_Comp(w, limits);
    EXPECT_EQ(w, Window(113, 188, 120, 195));
    // In step afterwards: both move by the same rows, the offset stays.
    w = Scroll_Left(w, limits);
    EXPECT_EQ(w, Window(75, 150, 82, 157));
    w = Zoom_In(w, limits);
    EXPECT_EQ(w.Compare_Start - w.Zoom_Start, 7);
    EXPECT_EQ(Span(w), w.Compare_Stop - w.Compare_Start + 1);
    // Neither leaves its file: at the end of the compared file it stops and the log goes on.
    for (int i = 0; i < 200; ++i)
        w = Scroll_Right_Comp(w, limits);
    EXPECT_EQ(w.Compare_Stop, 300);
    for (int i = 0; i < 200; ++i)
        w = Scroll_Left_Comp(w, limits);
    EXPECT_EQ(w.Compare_Start, 1);
    // Zoom all shows row 1 of both files at the left edge, whatever the lining up did.
    w = Scroll_Right_Comp(w, limits);
    EXPECT_EQ(Zoom_All(limits), Window(1, 300, 1, 300));
}

TEST(ChartWindow, TheRightButtonZoomsToItsRowsOrAroundAClick) {
    const Window_Limits limits{1000, 0};
    const Chart_Window w = Window(1, 400, 1, 400);
    EXPECT_EQ(Zoom_To_Rows(w, limits, 300, 120), Window(120, 300, 120, 300));
    EXPECT_EQ(Zoom_To_Rows(w, limits, 200, 200), Window(101, 300, 101, 300));
    // A click near the start keeps the halved window inside the log.
    EXPECT_EQ(Zoom_To_Rows(w, limits, 10, 10), Window(1, 200, 1, 200));
    EXPECT_EQ(Span(Zoom_To_Rows(Window(5, 6, 5, 6), limits, 5, 5)), 2);
}

TEST(ChartWindow, AWindowFromAFileIsHeldInsideTheRows) {
    EXPECT_EQ(Settle(Window(0, 9000, 0, 0), Window_Limits{300, 0}), Window(1, 300, 1, 300));
    EXPECT_EQ(Settle(Window(250, 120, 0, 0), Window_Limits{300, 0}), Window(250, 251, 250, 251));
    EXPECT_EQ(Settle(Window(20, 60, 290, 330), Window_Limits{300, 300}), Window(20, 60, 260, 300));
}

// --- scales ----------------------------------------------------------------------------------

TEST(ChartRows, ARowPastTheLastOneWrittenReadsEmpty) {
    // The array holds rows only up to the last one written; the chart walks rows by pointer
    // up to the window's end, which a file's zoom or a recording may put further.
    Log_Array data;
    data(3, 5) = 1.5;
    EXPECT_EQ(data.Row(3)[5], 1.5);
    for (const int row : {4, 100, Log_Row_Limit}) {
        const double* cells = data.Row(row);
        EXPECT_TRUE(std::all_of(cells, cells + Log_Data_Columns, Log_Array::Empty)) << row;
        EXPECT_TRUE(Log_Array::Empty(data(row, 5))) << row;
    }
    data.Clear();
    EXPECT_TRUE(Log_Array::Empty(data.Row(3)[5]));
}

TEST(ChartScales, AnAxisIsFixedOnlyByTwoNumbers) {
    EXPECT_TRUE(Axis_Scale_Of("0", "").automatic);
    EXPECT_TRUE(Axis_Scale_Of("Auto", "100").automatic);
    EXPECT_TRUE(Axis_Scale_Of("5", "5").automatic);
    const Axis_Scale fixed = Axis_Scale_Of("0,5", "1.5");
    EXPECT_FALSE(fixed.automatic);
    EXPECT_DOUBLE_EQ(fixed.min, 0.5);
    EXPECT_DOUBLE_EQ(fixed.max, 1.5);

    EXPECT_EQ(Scale_Entry_Text("a"), "Auto");
    EXPECT_EQ(Scale_Entry_Text("A"), "Auto");
    EXPECT_EQ(Scale_Entry_Text(" auto "), "Auto");
    EXPECT_EQ(Scale_Entry_Text("1,25"), "1.25");
    EXPECT_EQ(Scale_Entry_Text("-10"), "-10");
    EXPECT_EQ(Scale_Entry_Text("bar"), "0");
}

// --- what the chart draws --------------------------------------------------------------------

class LogChart : public test::Log_Fixture, public ::testing::Test {
protected:
    // The shipped settings around `count` rows of the simulator's drive from `first`.
    std::string Drive(const std::string& name, int first, int count) {
        const std::string path = dir.File(name);
        Write_File(path, test::Drive_Log_Text(Shipped_Default_File(), first, count, name));
        return path;
    }
    void Open(const std::string& path) {
        auto c = Ctx();
        ASSERT_TRUE(Open_File(c, path));
    }
    bool Compare(const std::string& path) {
        auto c = Ctx();
        return Open_Compare_File(c, path);
    }
    void Only(std::initializer_list<int> signals) {
        for (auto& c : state->setup.controls)
            c.view = 0;
        for (int s : signals)
            state->setup.controls[static_cast<std::size_t>(s)].view = 1;
    }
    const Chart_Series* Find(const Chart_Content& content, int signal, bool compare) {
        for (const Chart_Series& s : content.series)
            if (s.signal == signal && s.compare == compare) return &s;
        return nullptr;
    }
    Chart_Builder builder;
};

TEST_F(LogChart, NoTickShowsTheOneColumnSelectASignal) {
    Load_Defaults();
    Open(Drive("a.qxl", 0, 200));
    Only({});
    const Chart_Content& content = builder.Build(*state, {});
    EXPECT_TRUE(content.no_signal);
    EXPECT_TRUE(content.series.empty());
    EXPECT_STREQ(No_Signal_Text, "Select a signal to view");
    // The export is the times alone then.
    const std::string csv = Chart_Csv(*state);
    EXPECT_EQ(csv.rfind("Time\r\n0.00\r\n0.05\r\n", 0), 0u);
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 201);
}

TEST_F(LogChart, ColumnsAreTheTickedSignalsDoubledForTheComparedFile) {
    Load_Defaults();
    Open(Drive("a.qxl", 0, 300));
    Only({0, 13});
    state->setup.controls[13].secondary = 1;
    Chart_Content content = builder.Build(*state, {});
    ASSERT_EQ(content.series.size(), 2u);
    EXPECT_EQ(content.series[0].label, "RPM");
    EXPECT_EQ(content.series[1].label, "AN3 MAP");
    EXPECT_TRUE(content.uses_secondary);
    EXPECT_EQ(content.rows, 300);
    EXPECT_EQ(content.label_rows, 37); // about eight time labels
    EXPECT_DOUBLE_EQ(content.x_last, 299 * 0.05);

    ASSERT_TRUE(Compare(Drive("b.qxl", 400, 250)));
    content = builder.Build(*state, {});
    ASSERT_EQ(content.series.size(), 4u);
    EXPECT_EQ(content.series[2].label, "(2)RPM");
    EXPECT_EQ(content.series[3].label, "(2)AN3 MAP");
    // Both files from their row 1, the shorter one limiting the rows.
    EXPECT_EQ(state->window, Window(1, 250, 1, 250));
    EXPECT_EQ(content.rows, 250);
    const Chart_Series* second = Find(content, 0, true);
    ASSERT_NE(second, nullptr);
    EXPECT_DOUBLE_EQ(second->points.front().x, 0.0);
    EXPECT_DOUBLE_EQ(second->points.front().y, state->Compare_Data(1, 1));
    EXPECT_NE(state->Compare_Data(1, 1), state->Log_Data(1, 1));
}

TEST_F(LogChart, AxesFollowTheScaleBoxesOrTheData) {
    Load_Defaults();
    Open(Drive("a.qxl", 0, 600));
    Only({0, 13});
    state->setup.controls[13].secondary = 1;
    state->setup.Scale = {"0", "", "Auto", "Auto"};
    Chart_Content content = builder.Build(*state, {});
    // An empty maximum counts as automatic: the axis takes the data's range.
    EXPECT_TRUE(content.primary.automatic);
    EXPECT_NEAR(content.primary.min, 875, 30);
    EXPECT_NEAR(content.primary.max, 6500, 30);
    EXPECT_NEAR(content.secondary.max, 1.8, 0.05);
    state->setup.Scale = {"0", "8000", "0,2", "2"};
    content = builder.Build(*state, {});
    EXPECT_FALSE(content.primary.automatic);
    EXPECT_DOUBLE_EQ(content.primary.max, 8000);
    EXPECT_DOUBLE_EQ(content.secondary.min, 0.2);
}

TEST_F(LogChart, ThinnedSeriesKeepEveryPeakAndFewRowsGoThroughWhole) {
    Load_Defaults();
    Open(Drive("a.qxl", 0, 7000));
    Only({0});
    // Single-row spikes the thinning must not lose.
    for (int r : {17, 3333, 6999})
        state->Log_Data(r, 1) = 20000 + r;
    state->Log_Data(4000, 1) = -500;
    ++state->Data_Version;
    const Chart_Content& content = builder.Build(*state, Chart_Options{300, false});
    const Chart_Series& s = content.series.front();
    EXPECT_LE(s.points.size(), 600u);
    for (double peak : {20017.0, 23333.0, 26999.0, -500.0})
        EXPECT_TRUE(std::any_of(s.points.begin(), s.points.end(), [&](const Chart_Point& p) {
            return p.y == peak;
        })) << peak;
    EXPECT_DOUBLE_EQ(s.high, 26999);
    EXPECT_DOUBLE_EQ(s.low, -500);
    EXPECT_TRUE(std::is_sorted(s.points.begin(), s.points.end(),
                               [](const Chart_Point& a, const Chart_Point& b) { return a.x < b.x; }));

    state->window = Window(101, 400, 101, 400);
    const Chart_Content& zoomed = builder.Build(*state, Chart_Options{300, false});
    EXPECT_EQ(zoomed.series.front().points.size(), 300u);
    EXPECT_DOUBLE_EQ(zoomed.series.front().points.front().x, 5.0);
}

TEST_F(LogChart, ATickRebuildsOneSeriesAndNewDataRebuildsAll) {
    Load_Defaults();
    Open(Drive("a.qxl", 0, 2000));
    Only({0, 11, 13});
    builder.Build(*state, {});
    EXPECT_EQ(builder.Rebuilt(), 3);
    builder.Build(*state, {});
    EXPECT_EQ(builder.Rebuilt(), 0);
    state->setup.controls[1].view = 1;
    builder.Build(*state, {});
    EXPECT_EQ(builder.Rebuilt(), 1);
    state->setup.controls[11].secondary = 1; // another axis, the same points
    builder.Build(*state, {});
    EXPECT_EQ(builder.Rebuilt(), 0);
    state->window = Scroll_Left(Zoom_In(state->window, Limits_Of(*state)), Limits_Of(*state));
    builder.Build(*state, {});
    EXPECT_EQ(builder.Rebuilt(), 4);
    ++state->Data_Version;
    builder.Build(*state, {});
    EXPECT_EQ(builder.Rebuilt(), 4);
}

TEST_F(LogChart, SmoothingTakesTheMeanOfTheRowsEitherSideButLeavesLevelsAlone) {
    Load_Defaults();
    Open(Drive("a.qxl", 0, 400));
    Only({0, 52});
    state->setup.txt_FIR[1] = "2";
    EXPECT_EQ(Chart_Smoothing(state->setup), 0); // unasked, every row as it is
    state->setup.Views_chk[static_cast<std::size_t>(Smooth_View)] = 1;
    const Log_Array& d = state->Log_Data;
    const Chart_Content& content = builder.Build(*state, Chart_Options{1000, false});
    const Chart_Series* rpm = Find(content, 0, false);
    const Chart_Series* bit = Find(content, 52, false);
    ASSERT_TRUE(rpm != nullptr && bit != nullptr);
    const double mean = (d(148, 1) + d(149, 1) + d(150, 1) + d(151, 1) + d(152, 1)) / 5;
    EXPECT_NEAR(rpm->points[149].y, mean, 1e-9);
    // At the log's first row only the rows after it count.
    EXPECT_NEAR(rpm->points[0].y, (d(1, 1) + d(2, 1) + d(3, 1)) / 3, 1e-9);
    // A status bit stays a level.
    EXPECT_DOUBLE_EQ(bit->points[149].y, d(150, 53));
    // The export has what the chart draws, every row of it.
    const std::string csv = Chart_Csv(*state);
    EXPECT_EQ(csv.rfind("Time,RPM [rpm],", 0), 0u);
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 401);
}

TEST_F(LogChart, TheClickedRowListsEverySignalShownOfBothFiles) {
    Load_Defaults();
    Open(Drive("a.qxl", 0, 300));
    Only({0, 13});
    state->window = Window(101, 200, 101, 200);
    EXPECT_EQ(Row_At(*state, 7.5, false), 151);
    EXPECT_EQ(Row_At(*state, 0.0, false), 101);
    EXPECT_EQ(Row_At(*state, 180.0, true), 180);
    const Log_Array& d = state->Log_Data;
    auto number = [](double v) {
        char t[32];
        std::snprintf(t, sizeof t, "%g", v);
        return std::string(t);
    };
    EXPECT_EQ(Show_All_Point_Values(*state, 151), "Time: 7.50\r\nRPM: " + number(d(151, 1)) +
                                                      " [rpm]\r\nAN3 MAP: " + number(d(151, 14)) + " [bar]");
    ASSERT_TRUE(Compare(Drive("b.qxl", 500, 300)));
    state->window = Scroll_Right_Comp(Window(101, 200, 101, 200), Limits_Of(*state));
    const std::string text = Show_All_Point_Values(*state, 151);
    EXPECT_NE(text.find("\r\n(2)RPM: " + number(state->Compare_Data(161, 1)) + " [rpm]"), std::string::npos)
        << text;
}

TEST_F(LogChart, TheTableExportLinesTheComparedRowsUpWithTheLogs) {
    Load_Defaults();
    Open(Drive("a.qxl", 0, 300));
    Only({0});
    ASSERT_TRUE(Compare(Drive("b.qxl", 500, 300)));
    state->window = Scroll_Right_Comp(Window(11, 20, 11, 20), Limits_Of(*state));
    const std::string csv = Chart_Csv(*state);
    const auto lines = Split_Lines(csv);
    ASSERT_EQ(lines.size(), 11u);
    EXPECT_EQ(lines[0], "Time,RPM [rpm],(2)RPM [rpm]");
    char first[96];
    std::snprintf(first, sizeof first, "0.50,%g,%g", state->Log_Data(11, 1), state->Compare_Data(12, 1));
    EXPECT_EQ(lines[1], first);
}

// --- the RPM graph --------------------------------------------------------------------------

TEST_F(LogChart, TheRpmGraphPairsEachSignalWithTheReference) {
    Load_Defaults();
    Open(Drive("a.qxl", 0, 600));
    Only({13});
    Xy_Content xy = Rpm_Graph(*state, Reference_Signal::RPM, 200, 100);
    ASSERT_EQ(xy.series.size(), 1u);
    EXPECT_EQ(xy.x_title, "RPM [rpm]");
    // Idle rows, and the same climb in each gear, fall on cells of the grid already drawn.
    EXPECT_LT(xy.series[0].points.size(), 400u);
    EXPECT_GT(xy.series[0].points.size(), 20u);
    EXPECT_NEAR(xy.x_high, 6500, 30);

    xy = Rpm_Graph(*state, Reference_Signal::MAP, 200, 100);
    EXPECT_EQ(xy.x_title, "MAP [bar]");
    EXPECT_EQ(Reference_Column(*state, Reference_Signal::MAP), 14);

    state->window = Window(1, 3, 1, 3);
    const auto lines = Split_Lines(Rpm_Graph_Csv(*state, Reference_Signal::RPM));
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "Row,RPM,AN3 MAP [bar]");
    EXPECT_EQ(lines[3].rfind("3,", 0), 0u);
    EXPECT_EQ(Rpm_Graph_Caption(*state), "RPM Graph - a.qxl");
    ASSERT_TRUE(Compare(Drive("b.qxl", 500, 600)));
    EXPECT_EQ(Rpm_Graph_Caption(*state), "RPM Graph - a.qxl  compared with  b.qxl");
    EXPECT_EQ(Rpm_Graph(*state, Reference_Signal::RPM, 200, 100).series.size(), 2u);
    EXPECT_EQ(Split_Lines(Rpm_Graph_Csv(*state, Reference_Signal::MAP))[0],
              "Row,MAP,AN3 MAP [bar],MAP,(2)AN3 MAP [bar]");
}

// --- the compared file, the unsaved question, settings on an open log -------------------------

TEST_F(LogChart, AComparedFileLeavesTheLogsOwnSectionsAndSettings) {
    Load_Defaults();
    const std::string a = Drive("a.qxl", 0, 300);
    Open(a);
    const std::string settings = state->Log_Settings_Text, data = state->Log_Data_Text;
    const double rpm = state->Log_Data(50, 1);
    // The compared file has its own gearing: its speed is calculated with it.
    std::string other = test::Drive_Log_Text(Shipped_Default_File(), 600, 200, "b.qxl");
    const std::string gearing = "Log_Gearing=8\t13\t18.5\t"; // the calculation takes gear 3
    other.replace(other.find(gearing), gearing.size(), "Log_Gearing=8\t13\t37\t");
    Write_File(dir.File("b.qxl"), other);
    ASSERT_TRUE(Compare(dir.File("b.qxl")));
    EXPECT_TRUE(state->Compare_Mode);
    EXPECT_EQ(state->Compare_File_Name, "b.qxl");
    EXPECT_EQ(state->Log_Settings_Text, settings);
    EXPECT_EQ(state->Log_Data_Text, data);
    EXPECT_EQ(state->Log_File_Name, "a.qxl");
    EXPECT_EQ(state->setup.txt_Gearing[3], "18.5");
    EXPECT_DOUBLE_EQ(state->Log_Data(50, 1), rpm);
    EXPECT_EQ(state->Compare_Last_Row, 200);
    const int speed = state->columns.Col_Speed;
    EXPECT_NEAR(state->Compare_Data(100, speed),
                state->Compare_Data(100, state->columns.Col_RPM2) * 37 / 1000, 0.01);

    auto c = Ctx();
    Save_File(c, dir.File("refused.qxl"));
    EXPECT_EQ(dialogs.informed.back(), "Can not save because two files are open in compare mode.");
    EXPECT_FALSE(std::filesystem::exists(dir.File("refused.qxl")));

    // A file without rows is no comparison: all stays as it was.
    Write_File(dir.File("empty.qxl"), Read_File(Shipped_Default_File()));
    EXPECT_FALSE(Compare(dir.File("empty.qxl")));
    EXPECT_EQ(state->Compare_File_Name, "b.qxl");
    Close_Compare(*state);
    EXPECT_FALSE(state->Compare_Mode);
    EXPECT_EQ(state->window, Window(1, 200, 1, 200));
}

TEST_F(LogChart, AnUnsavedLogIsNotReplacedWithoutTheQuestion) {
    Load_Defaults();
    const std::string a = Drive("a.qxl", 0, 100), b = Drive("b.qxl", 0, 120);
    Open(a);
    hooks.Check_If_Unsaved_File = [this] {
        auto c = Ctx();
        Check_If_Unsaved_File(c);
    };
    state->Unsaved = true;
    // Comparing keeps the log: nothing is asked.
    ASSERT_TRUE(Compare(b));
    EXPECT_TRUE(dialogs.asked.empty());
    // No: the other file opens and the log is gone, as the tuner chose.
    dialogs.answers = {Answer::No};
    Open(b);
    EXPECT_EQ(dialogs.asked, std::vector<std::string>{Unsaved_Log_Question});
    EXPECT_EQ(state->Last_Row, 120);

    // Yes: saved where the tuner says before the next file replaces it, compare mode or not.
    ASSERT_TRUE(Compare(a));
    state->Unsaved = true;
    dialogs.answers = {Answer::Yes};
    dialogs.files.push_back(Picked_File{dir.File("kept.qxl"), "kept.qxl"});
    Open(a);
    EXPECT_EQ(dialogs.dialogs_shown.back().initial_name, "b.qxl");
    EXPECT_NE(Read_File(dir.File("kept.qxl")).find("Log_File_Name=kept.qxl"), std::string::npos);
    EXPECT_EQ(state->Last_Row, 100);
    EXPECT_FALSE(state->Unsaved);
}

TEST_F(LogChart, ASettingChangedOnAnOpenLogIsCalculatedAndSavedWithIt) {
    Load_Defaults();
    Open(Drive("a.qxl", 0, 400));
    const int speed = state->columns.Col_Speed, torque = state->columns.Col_Torque;
    const double before = state->Log_Data(300, speed);
    const double torque_nm = state->Log_Data(300, torque);
    ASSERT_GT(before, 0);
    state->setup.txt_Gearing[1] = "16";
    state->setup.Gear_option = 1;
    state->setup.Torque_option = 1;
    state->setup.controls[13].custom_name = "Boost";
    auto c = Ctx();
    Apply_Log_Setup(c);
    EXPECT_NEAR(state->Log_Data(300, speed), state->Log_Data(300, state->columns.Col_RPM2) * 16 / 1000, 0.01);
    EXPECT_NE(state->Log_Data(300, torque), torque_nm);
    EXPECT_EQ(state->Log_Signal_Tab[static_cast<std::size_t>(torque - 1)].unit, "ft-lbs");
    EXPECT_TRUE(state->Unsaved);
    state->setup.controls[13].view = 1;
    const Chart_Series* boost = Find(builder.Build(*state, {}), 13, false);
    ASSERT_NE(boost, nullptr);
    EXPECT_EQ(boost->label, "Boost");

    Save_File(c, dir.File("changed.qxl"));
    Load_Defaults();
    Open(dir.File("changed.qxl"));
    EXPECT_EQ(state->setup.Torque_option, 1);
    EXPECT_EQ(state->setup.txt_Gearing[1], "16");
    EXPECT_EQ(state->setup.controls[13].custom_name, "Boost");
    EXPECT_NEAR(state->Log_Data(300, speed), state->Log_Data(300, state->columns.Col_RPM2) * 16 / 1000, 0.01);
}

} // namespace
} // namespace quorlen
