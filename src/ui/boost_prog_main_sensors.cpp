// The main window's side of the sensor viewer and the map size conversion: making them with
// what they need of the main window and the log window, the menu entries that show them, and
// their refresh when the image changes.

#include "ui/boost_prog_main.h"

#include "ui/qx_log.h"
#include "ui/qx_sensor_editor.h"
#include "ui/qx_transform_3d.h"

namespace quorlen::ui {

QWidget* BoostProgMain::Make_Sensor_Editor() {
    Sensor_Editor_Hooks hooks;
    hooks.Dialogs = [this]() -> User_Dialogs& { return *active_dialogs_; };
    hooks.Update_Tabs = [this] {
        Update_Tabs();
        Show_Right_Tabs();
    };
    hooks.Update_All = [this] { Update_All(); };
    hooks.Update_scroll_change = [this] { Update_scroll_change(); };
    hooks.Start_Logging = [this] {
        auto* log = static_cast<QX_Log*>(Form("QX_Log"));
        if (!log->Logging()) log->cmd_Open_Com_Click();
    };
    hooks.Log_Sensors_Changed = [this] { static_cast<QX_Log*>(Form("QX_Log"))->Log_Sensors_Changed(); };
    return new QX_Sensor_Editor(app_, std::move(hooks), this);
}

QWidget* BoostProgMain::Make_Transform_3D() {
    Transform_Hooks hooks;
    hooks.Dialogs = [this]() -> User_Dialogs& { return *active_dialogs_; };
    hooks.Update_Tabs = [this] { Update_Tabs(); };
    hooks.Show_Right_Tabs = [this] { Show_Right_Tabs(); };
    hooks.Update_All = [this] { Update_All(); };
    hooks.Show_Sensor_Editor = [this] { mnu_Sensor_Editor_Click(); };
    return new QX_Transform_3D(app_, std::move(hooks), this);
}

void BoostProgMain::mnu_Sensor_Editor_Click() {
    QWidget* form = Form("QX_Sensor_Editor");
    form->show();
    form->raise();
}

void BoostProgMain::mnu_Transform_3D_Click() {
    Show_Transform_3D(app_.tables.sstab_Main == 1 ? 1 : 0);
}

void BoostProgMain::Show_Transform_3D(int head) {
    auto* form = static_cast<QX_Transform_3D*>(Form("QX_Transform_3D"));
    form->Show_Head(head == 1 ? Map_Head::Ignition : Map_Head::Fuel);
    form->show();
    form->raise();
}

void BoostProgMain::Refresh_Sensor_Forms() {
    if (Form_Exists("QX_Sensor_Editor"))
        static_cast<QX_Sensor_Editor*>(Form("QX_Sensor_Editor"))->Show_Selections();
    if (Form_Exists("QX_Transform_3D")) static_cast<QX_Transform_3D*>(Form("QX_Transform_3D"))->Refresh();
}

} // namespace quorlen::ui
