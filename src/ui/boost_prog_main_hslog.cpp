// The main window's side of high-speed logging: the window made on first use from the View
// menu, the port it takes, and who may not have that port meanwhile.

#include "ui/boost_prog_main.h"
#include "ui/link_panel.h"
#include "ui/qx_log.h"
#include "ui/qx_log_hs.h"

namespace quorlen::ui {

QWidget* BoostProgMain::Make_HS_Log_Window() {
    HS_Window_Hooks hooks;
    hooks.Dialogs = [this]() -> User_Dialogs& { return *active_dialogs_; };
    hooks.Port_Path = [this] { return app_.link_state.Ports.Name_Of(app_.program.Com_Port); };
    hooks.Main_Port_Busy = [this] {
        const Link_Flags& f = app_.link;
        return link_->MSComm1.Is_Open() || f.Logging_Active || f.Link_Busy || f.Write_In_Progress ||
               f.Connect_Info_Busy || f.Connection_Check_Busy;
    };
    hooks.Log_Dir = [this] {
        return Form_Exists("QX_Log") ? static_cast<QX_Log*>(Form("QX_Log"))->State().Log_Dir : std::string();
    };
    return new QX_Log_HS(app_, std::move(hooks), this);
}

void BoostProgMain::mnu_HS_Log_Click() {
    QWidget* form = Form("QX_Log_HS");
    form->show();
    form->raise();
}

} // namespace quorlen::ui
