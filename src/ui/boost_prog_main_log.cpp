// The main window's side of logging: the log window made at load, the START/STOP LOGGING
// button, auto start, a log picked in the settings file dialog, and what a running log
// changes on the main window. The logging itself is in logging/ and ui/qx_log.cpp.

#include "app/tune_tools.h"
#include "core/proc_guard.h"
#include "link/qt/qt_port_platform.h"
#include "logging/log_export.h"
#include "ui/boost_prog_main.h"
#include "ui/qx_log.h"
#include "ui/qx_setting_summary.h"

#include <QAction>
#include <QPushButton>

namespace quorlen::ui {

QWidget* BoostProgMain::Make_Log_Window() {
    Log_Window_Hooks hooks;
    hooks.Dialogs = [this]() -> User_Dialogs& { return *active_dialogs_; };
    hooks.Read_Box_Settings = [this] { Read_Settings_Click(); };
    hooks.Main_Controls_Enabled = [this](bool enabled) {
        Set_Command_Buttons_Enabled(enabled);
        Com_Open_->setEnabled(enabled && app_.link_state.Com_Open_Enabled);
    };
    hooks.Main_Log_Caption = [this](const std::string& caption) {
        Stop_Logging_cmd_->setText(QString::fromStdString(caption));
    };
    hooks.Main_Status = [this](const std::string& caption) {
        if (caption.empty())
            Show_Link_State();
        else
            Online_mnu_->setText(QString::fromStdString(caption));
    };
    hooks.Take_Settings = [this](const std::string& log_text) {
        Take_Comment_From_Window();
        Settings_File_Context ctx = File_Context();
        cmd_Export_Log_qxs_settings_Click(ctx, log_text);
        Show_Texts();
    };
    hooks.Port_Path = [this] { return app_.link_state.Ports.Name_Of(app_.program.Com_Port); };
    hooks.Settings_Summary = [this] {
        return Readable_Settings_Body(Readable_Settings_Text(Summary_Facts_Of(app_, Running_System_Name())));
    };
    hooks.Show_Setting_Summary = [this] { Setting_Summary_Click(true); };
    return new QX_Log(app_, std::move(hooks), this);
}

void BoostProgMain::Build_Log_Window() {
    auto* log = static_cast<QX_Log*>(Form("QX_Log"));
    log->Form_Load();
    log->show();
    log->hide();
    connect(Stop_Logging_cmd_, &QPushButton::clicked, this, &BoostProgMain::Stop_Logging_cmd_Click);
}

void BoostProgMain::Open_Log_File(const std::string& path) {
    auto* log = static_cast<QX_Log*>(Form("QX_Log"));
    if (!log->Open_File(path)) return;
    Settings_File_Context ctx = File_Context();
    cmd_Export_Log_qxs_settings_Click(ctx, log->State().Log_Dataset_Text);
}

void BoostProgMain::Stop_Logging_cmd_Click() {
    auto* log = static_cast<QX_Log*>(Form("QX_Log"));
    if (!log->Logging()) {
        log->show();
        log->raise();
    }
    log->cmd_Open_Com_Click();
}

void BoostProgMain::Log_Autostart(int index) {
    auto* log = static_cast<QX_Log*>(Form("QX_Log"));
    log->show();
    log->raise();
    if (index >= 0 && index <= 1 && app_.prefs.Auto_Start_option[index] && !log->Logging())
        log->cmd_Open_Com_Click();
}

QWidget* BoostProgMain::Make_Setting_Summary_Window() {
    Summary_Window_Hooks hooks;
    hooks.Dialogs = [this]() -> User_Dialogs& { return *active_dialogs_; };
    hooks.Log_Readable_Settings = [this] {
        return Form_Exists("QX_Log") ? static_cast<QX_Log*>(Form("QX_Log"))->State().Readable_Settings_Text
                                     : std::string();
    };
    hooks.Log_File_Name = [this] {
        return Form_Exists("QX_Log") ? static_cast<QX_Log*>(Form("QX_Log"))->State().Log_File_Name
                                     : std::string();
    };
    return new QX_Setting_Summary(app_, std::move(hooks), this);
}

void BoostProgMain::Setting_Summary_Click(bool log_settings) {
    auto* summary = static_cast<QX_Setting_Summary*>(Form("QX_Setting_Summary"));
    if (log_settings)
        summary->cmd_View_Log_Settings_Click();
    else
        summary->Update_Readable_Setting_Window();
    summary->show();
    summary->raise();
}

double BoostProgMain::Logged_RPM() {
    if (!Form_Exists("QX_Log")) return 0;
    return static_cast<QX_Log*>(Form("QX_Log"))->Logged_RPM();
}

} // namespace quorlen::ui
