#pragma once
// The log window: start and stop of a log, its alerts, its file, the chart with its window of
// rows, the compared file, and the log settings (car, units, sensors and names of the
// signals, smoothing, views). The logic is in logging/; this shows the state and runs its
// timers. The log itself lives in the program's state, where the other windows read it.

#include "logging/log_chart.h"
#include "logging/log_context.h"
#include "ui/child_form.h"

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class QAction;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;
class QTimer;
class QWidget;

namespace quorlen {
struct App_Context;
class Qt_Serial_Line;
} // namespace quorlen

namespace quorlen::ui {

class Log_Chart_View;

// What the log window asks of the main window.
struct Log_Window_Hooks {
    std::function<User_Dialogs&()> Dialogs;
    std::function<void()> Read_Box_Settings;
    std::function<void(bool enabled)> Main_Controls_Enabled;
    std::function<void(const std::string& caption)> Main_Log_Caption;
    std::function<void(const std::string& caption)> Main_Status;
    // The image out of the log's dataset section, through the settings files' flow.
    std::function<void(const std::string& log_text)> Take_Settings;
    // The device path of the selected port.
    std::function<std::string()> Port_Path;
    // The readable settings summary of the image, for the log's [readable_settings].
    std::function<std::string()> Settings_Summary;
    // The setting summary viewer on this log's settings.
    std::function<void()> Show_Setting_Summary;
    // "Engine on for ..." from a binary log, for the settings window.
    std::function<void(const std::string& text)> Show_Engine_On;
    // The RPM graph: shown on request, and brought up to date whenever the chart changes.
    std::function<void()> Show_RPM_Graph;
    // The fuel correction from this log, made on first use.
    std::function<void()> Show_Fuel_Correction;
    std::function<void()> Chart_Changed;
};

class QX_Log final : public Child_Form {
public:
    QX_Log(App_Context& app, Log_Window_Hooks hooks, QWidget* parent);
    ~QX_Log() override;

    // The defaults, then the default log settings file when it is there.
    void Form_Load();

    // cmd_Open_Com: starts a log, or stops the one that runs.
    void cmd_Open_Com_Click();
    // Starts a log when none runs: to a file, or as a live view that saves none.
    void Start_Log(bool live_view);
    bool Logging() const;
    double Logged_RPM() const;

    bool Open_File(const std::string& path);
    void File_Open_Click();
    void File_Open_Compare_Click();
    void File_Close_Compare_Click();
    void File_Save_As_Click();
    void Open_Default_File_Click();
    void Save_as_Default_File_Click();
    void cmd_Clear_Logg_Click();
    void cmd_Export_Log_qxs_settings_Click();
    void cmd_Calc_Gearing_Click();
    // The setting summary viewer, showing the settings this log was taken with.
    void Setting_Summary_Click();
    void Log_Picture_File_Save_As_Click();
    // The log sensors changed (one was stored by the sensor viewer): their section text, the
    // signals' names and units, and the list follow.
    void Log_Sensors_Changed();

    // The chart and its window of rows.
    void Update_Chart();
    void Redraw_Click();
    void cmd_ZoomIn_Click();
    void cmd_ZoomOut_Click();
    void cmd_ZoomAll_Click();
    void cmd_Scroll_Left();
    void cmd_Scroll_Right();
    void cmd_Scroll_Left_Comp();
    void cmd_Scroll_Right_Comp();
    // A click at `x` on the time axis, and the right button's gesture between two places.
    void MSChart1_PointSelected(double x);
    void MSChart1_Zoom(double from_x, double to_x);
    void Clear_LineTextWindow();
    // The signal list of the chart: the tick that shows a signal, the one that puts it on the
    // second value axis.
    void Check_SignalsToView_Click(int signal, bool checked);
    void Secondary_Check_Click(int signal, bool checked);

    Log_State& State();
    const Chart_Content& Chart() const { return builder_.Content(); }
    Log_Chart_View* Chart_View() const { return MSChart1_; }

    // The timers' bodies, for tests that tick without waiting.
    void Receive_Poll();
    void Timer1_Tick();
    void LogAlert_Tick();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    Log_Context Ctx();
    void Build();
    void Build_Menus();
    QWidget* Build_Chart_Page();
    QWidget* Build_Setup_Page();
    QWidget* Build_Signal_Table(QWidget* parent);
    void Sync();
    void Sync_Timers();
    void Show_Settings();
    // The car-setting text boxes and the setting each one edits.
    std::vector<std::pair<QLineEdit*, std::string*>> Setting_Fields();
    // The form's texts and choices into the state; true when something changed.
    bool Take_Settings();
    // A setting changed: into the signals and the settings text, and the log calculated again.
    void Setup_Changed();
    // A choice of what is shown changed: the settings text follows, so a save keeps it.
    void View_Changed();
    void Fill_Signals();
    void Fill_Setup_Signals();
    void Move_Window(const char* name,
                     const std::function<Chart_Window(const Chart_Window&, const Window_Limits&)>& move);
    void Scale_Entry(int index);
    void After_Open();
    // The folder of the last log opened or saved stays for the next run.
    void Remember_Log_Dir();

    App_Context& app_;
    Log_Window_Hooks hooks_;
    std::unique_ptr<Qt_Serial_Line> line_;
    Chart_Builder builder_;
    bool syncing_ = false;

    QPushButton* cmd_Open_Com_ = nullptr;
    QPushButton* cmd_Clear_Logg_ = nullptr;
    QButtonGroup* Binary_log_opt_ = nullptr;
    std::vector<QMenu*> menus_;
    QAction* File_Close_Compare_ = nullptr;
    QLabel* txt_Logging_alert_ = nullptr;
    QLabel* txt_NoConnection_alert_ = nullptr;
    QLabel* Engine_On_label_ = nullptr;
    QLabel* label_NoGraph_ = nullptr;
    QLabel* label_TimePerCall_ = nullptr;
    QLineEdit* txt_Log_Date_ = nullptr;
    QLineEdit* txt_Log_time_ = nullptr;
    QLineEdit* txt_Log_Length_ = nullptr;
    QPlainTextEdit* txt_Log_Free_Text_ = nullptr;
    QWidget* Compare_Frame_ = nullptr;
    QLabel* Compare_Info_ = nullptr;
    QLineEdit* txt_Log_Free_Text_compare_ = nullptr;
    QTableWidget* Signals_ = nullptr;
    Log_Chart_View* MSChart1_ = nullptr;
    QWidget* Chart_Buttons_ = nullptr;
    QPushButton* cmd_Scroll_Left_Comp_ = nullptr;
    QPushButton* cmd_Scroll_Right_Comp_ = nullptr;
    QPlainTextEdit* txt_LineTextWindow_ = nullptr;
    std::array<QLineEdit*, 4> Scale_ = {}; // txt_1stYScale_Min, _Max, txt_2ndYScale_Min, _Max
    QWidget* Setup_Page_ = nullptr;
    QTableWidget* Setup_Signals_ = nullptr;
    QLineEdit* txt_Gearing_[7] = {};
    QComboBox* Gear_option_ = nullptr;
    QButtonGroup* Speed_option_ = nullptr;
    QButtonGroup* Weight_option_ = nullptr;
    QButtonGroup* Torque_option_ = nullptr;
    QLineEdit* txt_Speed_ = nullptr;
    QLineEdit* txt_RPM_ = nullptr;
    QLineEdit* txt_Weight_ = nullptr;
    QLineEdit* txt_Max_Hp_ = nullptr;
    QLineEdit* txt_Min_Hp_ = nullptr;
    QLineEdit* txt_AirResistance_ = nullptr;
    QLineEdit* txt_FrontalArea_ = nullptr;
    QLineEdit* txt_AirDensity_ = nullptr;
    QLineEdit* txt_Transloss_0k_ = nullptr;
    QLineEdit* txt_Transloss_6k_ = nullptr;
    QLineEdit* txt_FuelInjectorSize_ = nullptr;
    QLineEdit* txt_Default_Save_Name_ = nullptr;
    QLineEdit* txt_Show_Log_Sek_ = nullptr;
    QLineEdit* txt_Show_Log_Interval_ = nullptr;
    std::array<QLineEdit*, 2> txt_FIR_ = {};
    std::array<QCheckBox*, 6> Views_chk_ = {};
    QCheckBox* check_SettingsInLogg_ = nullptr;
    QCheckBox* check_AutoSave_ = nullptr;
    QCheckBox* check_LogToFileOnly_ = nullptr;
    QTimer* Timer1_ = nullptr;
    QTimer* timer_LogAlert_ = nullptr;
    QTimer* ShowCurser_Timer_ = nullptr;
    QTimer* Receive_Timer_ = nullptr;
};

} // namespace quorlen::ui
