#pragma once
// The log window: start and stop of a log, its alerts, its file, the car settings of the
// setup form and a chart of the ticked signals. The logic is in logging/; this shows the
// state and runs its timers.

#include "logging/log_context.h"
#include "ui/child_form.h"

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <utility>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;
class QTimer;

class QChartView;

namespace quorlen {
struct App_Context;
class Qt_Serial_Line;
} // namespace quorlen

namespace quorlen::ui {

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
};

class QX_Log final : public Child_Form {
public:
    QX_Log(App_Context& app, Log_Window_Hooks hooks, QWidget* parent);
    ~QX_Log() override;

    // The defaults, then the default log settings file when it is there.
    void Form_Load();

    // cmd_Open_Com: starts a log, or stops the one that runs.
    void cmd_Open_Com_Click();
    bool Logging() const;
    double Logged_RPM() const;

    bool Open_File(const std::string& path);
    void File_Open_Click();
    void File_Save_As_Click();
    void Open_Default_File_Click();
    void Save_as_Default_File_Click();
    void cmd_Clear_Logg_Click();
    void cmd_Export_Log_qxs_settings_Click();
    void cmd_Calc_Gearing_Click();
    // The setting summary viewer, showing the settings this log was taken with.
    void Setting_Summary_Click();
    // The setup texts into the settings section, as the setup form's OK does.
    void Apply_Settings_Click();

    Log_State& State() { return *state_; }

    // The timers' bodies, for tests that tick without waiting.
    void Receive_Poll();
    void Timer1_Tick();
    void LogAlert_Tick();

private:
    Log_Context Ctx();
    void Build();
    QWidget* Build_Setup_Page();
    void Sync();
    void Sync_Timers();
    void Show_Settings();
    // The car-setting text boxes and the setting each one edits.
    std::array<std::pair<QLineEdit*, std::string*>, 14> Setting_Fields();
    void Take_Settings();
    void Fill_Signals();
    void Update_Chart();
    // The folder of the last log opened or saved stays for the next run.
    void Remember_Log_Dir();

    App_Context& app_;
    Log_Window_Hooks hooks_;
    std::unique_ptr<Log_State> state_;
    std::unique_ptr<Qt_Serial_Line> line_;
    bool syncing_ = false;

    QPushButton* cmd_Open_Com_ = nullptr;
    QPushButton* cmd_Clear_Logg_ = nullptr;
    QButtonGroup* Binary_log_opt_ = nullptr;
    QLabel* txt_Logging_alert_ = nullptr;
    QLabel* txt_NoConnection_alert_ = nullptr;
    QLabel* label_NoGraph_ = nullptr;
    QLineEdit* txt_Log_Date_ = nullptr;
    QLineEdit* txt_Log_time_ = nullptr;
    QLineEdit* txt_Log_Length_ = nullptr;
    QPlainTextEdit* txt_Log_Free_Text_ = nullptr;
    QTableWidget* Signals_ = nullptr;
    QChartView* MSChart1_ = nullptr;
    QLineEdit* txt_Gearing_[7] = {};
    QComboBox* Gear_option_ = nullptr;
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
    QCheckBox* check_SettingsInLogg_ = nullptr;
    QCheckBox* check_AutoSave_ = nullptr;
    QCheckBox* check_LogToFileOnly_ = nullptr;
    QTimer* Timer1_ = nullptr;
    QTimer* timer_LogAlert_ = nullptr;
    QTimer* ShowCurser_Timer_ = nullptr;
    QTimer* Receive_Timer_ = nullptr;
};

} // namespace quorlen::ui
