// The main window's side of high-speed logging and the crank viewer: the windows made on
// first use from the View menu, the port the capture takes and who may not have it
// meanwhile, and the viewer following the image and the open capture.

#include "engine/settings_pages.h"
#include "ui/boost_prog_main.h"
#include "ui/link_panel.h"
#include "ui/qx_crankview.h"
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
    hooks.Show_Crank_View = [this] { mnu_CrankView_Click(); };
    hooks.Trace_Changed = [this] { Refresh_Crank_View(); };
    return new QX_Log_HS(app_, std::move(hooks), this);
}

QWidget* BoostProgMain::Make_Crank_View() {
    Crank_View_Hooks hooks;
    // The settings pages' catalogue, read from the ini file when first needed.
    hooks.Layouts = [this]() -> const Engine_Config_Table& {
        Pages_Context pages = app_.Pages();
        return Current_Layout(pages).Engine_Config_Tab;
    };
    const auto hs = [this]() -> QX_Log_HS* {
        return Form_Exists("QX_Log_HS") ? static_cast<QX_Log_HS*>(Form("QX_Log_HS")) : nullptr;
    };
    hooks.Trace = [hs]() -> const Osc_Trace* { return hs() != nullptr ? hs()->Trace() : nullptr; };
    hooks.Trace_Name = [hs] {
        const std::string path = hs() != nullptr ? hs()->Trace_Path() : std::string();
        return path.substr(path.rfind('/') + 1);
    };
    hooks.Show_HS_Log = [this] { mnu_HS_Log_Click(); };
    return new QX_CrankView(app_, std::move(hooks), this);
}

void BoostProgMain::mnu_CrankView_Click() {
    auto* view = static_cast<QX_CrankView*>(Form("QX_CrankView"));
    view->Refresh();
    view->show();
    view->raise();
}

void BoostProgMain::Refresh_Crank_View() {
    if (Form_Exists("QX_CrankView")) static_cast<QX_CrankView*>(Form("QX_CrankView"))->Refresh();
}

void BoostProgMain::mnu_HS_Log_Click() {
    QWidget* form = Form("QX_Log_HS");
    form->show();
    form->raise();
}

} // namespace quorlen::ui
