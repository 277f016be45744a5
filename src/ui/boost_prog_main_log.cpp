// The main window's side of logging: the log window made at load, the START/STOP LOGGING
// button, auto start, a log picked in the settings file dialog, what a running log changes on
// the main window, and the RPM graph beside the log window. The logging itself is in logging/ and
// ui/qx_log.cpp.

#include "app/tune_tools.h"
#include "core/proc_guard.h"
#include "link/qt/qt_port_platform.h"
#include "logging/log_export.h"
#include "ui/boost_prog_main.h"
#include "ui/map_tabs.h"
#include "ui/qt_dialogs.h"
#include "ui/qx_log.h"
#include "ui/qx_rpm.h"
#include "ui/qx_setting_summary.h"
#include "ui/qx_settings.h"

#include <QAction>
#include <QLabel>
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
    hooks.Show_Engine_On = [this](const std::string& text) {
        Engine_On_label_->setText(From_8bit(text));
        if (QX_settings* settings = Settings_Form_If_Made()) settings->Show_Engine_On(text);
    };
    hooks.Show_RPM_Graph = [this] {
        QWidget* graph = Form("QX_RPM");
        graph->show();
        graph->raise();
    };
    hooks.Show_Fuel_Correction = [this] {
        QWidget* form = Form("QX_Fuel_Correction");
        form->show();
        form->raise();
    };
    hooks.Chart_Changed = [this] {
        if (Form_Exists("QX_RPM")) static_cast<QX_RPM*>(Form("QX_RPM"))->Update_Graph();
        if (map_tabs_ != nullptr) map_tabs_->Log_Changed();
    };
    return new QX_Log(app_, std::move(hooks), this);
}

void BoostProgMain::View_Log_Click() {
    QWidget* log = Form("QX_Log");
    log->show();
    log->raise();
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
    cmd_Export_Log_qxs_settings_Click(ctx, app_.log_state->Log_Dataset_Text);
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
    // Option 0 logs to a file; option 1 is a live view that keeps no file.
    if (index >= 0 && index <= 1 && app_.prefs.Auto_Start_option[index]) log->Start_Log(index == 1);
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
