#pragma once
// The high-speed log window: the capture of the box's digital stream into a .qxo file, the
// eight lines drawn one above the other, and the pulse analysis of the stretch on show. The
// capture and the analysis are in hslog/; this shows their state and runs the timers.

#include "hslog/hs_capture.h"
#include "hslog/osc_file.h"
#include "hslog/pulse_analysis.h"
#include "ui/child_form.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

class QButtonGroup;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTimer;
class QLineSeries;
class QValueAxis;

namespace quorlen {
struct App_Context;
class Qt_Serial_Line;
} // namespace quorlen

namespace quorlen::ui {

class Osc_Chart_View;

// What the high-speed log window asks of the main window.
struct HS_Window_Hooks {
    std::function<User_Dialogs&()> Dialogs;
    std::function<std::string()> Port_Path;
    // The main window's port is open: a log runs, or the port was opened by hand.
    std::function<bool()> Main_Port_Busy;
    std::function<std::string()> Log_Dir;
    // Shows the crank viewer, which measures the trace on show.
    std::function<void()> Show_Crank_View;
    // A trace was opened or closed.
    std::function<void()> Trace_Changed;
};

class QX_Log_HS final : public Child_Form {
public:
    QX_Log_HS(App_Context& app, HS_Window_Hooks hooks, QWidget* parent);
    ~QX_Log_HS() override;

    void Start_HSLogg_Click();
    void Stop_HSLogg_Click();
    bool Capturing() const;
    // Opens a capture for the chart: the lines between the marks, their length shown.
    bool Open_File(const std::string& path);
    void cmd_Open_Click();
    void Update_HSlog_chart();
    void cmd_Analyze_Click();
    void cmd_GetRPM_Click();
    void cmd_ZoomAll();
    void cmd_ZoomIn();
    void cmd_ZoomOut();
    void cmd_Scroll_Left();
    void cmd_Scroll_Right();

    // The trace on show; nullptr before one is opened.
    const Osc_Trace* Trace() const { return trace_ ? &*trace_ : nullptr; }
    const std::string& Trace_Path() const { return trace_path_; }
    HS_State& State() { return hs_; }
    const Osc_Chart& Chart() const { return chart_; }

    // The timers' bodies, for tests that tick without waiting.
    void Receive_Poll();
    void Timer1_Tick();
    // The chart clicked at `ms`: the sample there and its eight lines.
    void Show_Point(double ms);

private:
    HS_Context Ctx();
    void Build();
    void Sync();
    void Set_Stretch(const Osc_Stretch& stretch);
    // The open trace, or an empty one; the stretch the two texts name in it.
    const Osc_Trace& Shown_Trace() const;
    Osc_Stretch Current_Stretch() const;

    App_Context& app_;
    HS_Window_Hooks hooks_;
    HS_State hs_;
    std::unique_ptr<Qt_Serial_Line> line_;
    std::optional<Osc_Trace> trace_;
    std::string trace_path_;
    Osc_Chart chart_;

    QPushButton* Start_HSLogg_ = nullptr;
    QPushButton* Stop_HSLogg_ = nullptr;
    QLineEdit* txt_Log_time_ = nullptr;
    QLineEdit* txt_Log_Length_ = nullptr;
    QLineEdit* txt_start_ = nullptr;
    QLineEdit* txt_stop_ = nullptr;
    QLineEdit* txt_RPM_ = nullptr;
    QCheckBox* PeakDetect_ = nullptr;
    QButtonGroup* Analyze_option_ = nullptr;
    QPlainTextEdit* txt_Analyze_ = nullptr;
    QPlainTextEdit* txt_Err_ = nullptr;
    QLineEdit* Text3_ = nullptr;
    QLineEdit* txt_LineData_ = nullptr;
    QLabel* Point_Value_ = nullptr;
    Osc_Chart_View* Osc_Chart_ = nullptr;
    QLineSeries* series_[Osc_Lines] = {};
    QValueAxis* time_axis_ = nullptr;
    QTimer* Timer1_ = nullptr;
    QTimer* Receive_Timer_ = nullptr;
};

} // namespace quorlen::ui
