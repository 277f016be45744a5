// The main window's map tabs: building them, and the four table refreshes that every change
// of the image, of a size, a sensor or a function runs.

#include "ui/boost_prog_main.h"

#include "ui/map_tabs.h"
#include "ui/qx_autosetup_frm.h"
#include "ui/qx_settings.h"

#include "app/tune_tools.h"

#include <QLabel>

#include <QTabWidget>

namespace quorlen::ui {

void BoostProgMain::Build_Map_Tabs() {
    Map_Tabs_Hooks hooks;
    hooks.Dialogs = [this]() -> User_Dialogs& { return *active_dialogs_; };
    hooks.Update_All = [this] { Update_All(); };
    hooks.Update_Tabs = [this] { Update_Tabs(); };
    hooks.Show_Right_Tabs = [this] { Show_Right_Tabs(); };
    hooks.Form = [this](const std::string& name) { return Form(name); };
    hooks.Form_Exists = [this](const std::string& name) { return Form_Exists(name); };
    hooks.Show_Transform_3D = [this](int head) { Show_Transform_3D(head); };
    map_tabs_ = new Map_Tabs(app_, std::move(hooks), SSTab_Ignition_, SSTab_Fuel_, SSTab_PWM_, this);
}

void BoostProgMain::Update_All() {
    if (UpdateBusy_) return;
    UpdateBusy_ = true;
    Tables_Context ctx = app_.Tables(*active_dialogs_);
    quorlen::Update_All(ctx);
    map_tabs_->Update_All();
    Engine_Config_Follow_Image(app_.engine, app_.image);
    Show_Fuel_Mode();
    Undo_Menu_Follows();
    if (Form_Exists("QX_AutoSetup_frm"))
        static_cast<QX_AutoSetup_frm*>(Form("QX_AutoSetup_frm"))->Follow_Image();
    // A hidden settings form catches up when it is shown.
    if (QX_settings* settings = Settings_Form_If_Made(); settings != nullptr && settings->isVisible())
        settings->Update_Settings();
    Refresh_Crank_View();
    Refresh_Sensor_Forms();
    UpdateBusy_ = false;
}

void BoostProgMain::Show_Fuel_Mode() {
    QString text = QString::fromStdString(app_.engine.Main_Fuel_label);
    text.replace("\r\n", "\n");
    Fuel_Mode_label_->setText(text);
    Fuel_Mode_label_->setStyleSheet(app_.engine.Sequential_Fuel ? QString()
                                                                : "color: #b00000; font-weight: bold;");
}

void BoostProgMain::Update_Tabs() {
    Tables_Context ctx = app_.Tables(*active_dialogs_);
    quorlen::Update_Tabs(ctx);
    map_tabs_->Update_Tabs();
}

void BoostProgMain::Init_Tabs() {
    Tables_Context ctx = app_.Tables(*active_dialogs_);
    quorlen::Init_Tabs(ctx);
    Init_Engine_Config(app_);
    map_tabs_->Init_Tabs();
    map_tabs_->Update_Tabs();
}

void BoostProgMain::Show_Right_Tabs() {
    // The communication page the tuner used last: "Box_Communication" or
    // "Mapchip_Communication", by the page's name.
    const std::string page = app_.ini.Read_Ini("Default_Com_interface");
    if (auto* tab = SSTab_Communication_->findChild<QWidget*>(QString::fromStdString(page));
        !page.empty() && tab != nullptr && SSTab_Communication_->indexOf(tab) >= 0)
        SSTab_Communication_->setCurrentWidget(tab);
    Tables_State& t = app_.tables;
    t.sstab_Main = sstab_Main_->currentIndex();
    t.SSTab_Ignition = SSTab_Ignition_->currentIndex();
    t.SSTab_Fuel = SSTab_Fuel_->currentIndex();
    t.SSTab_PWM = SSTab_PWM_->currentIndex();
    Tables_Context ctx = app_.Tables(*active_dialogs_);
    quorlen::Show_Right_Tabs(ctx);
    map_tabs_->Show_Right_Tabs();
    Show_Com_Tab();
}

void BoostProgMain::Init_Analog_from_CardByte(App_Context& app) {
    Analog_Context ctx = app.Analog();
    quorlen::Init_Analog_from_CardByte(ctx);
    Show_Texts();
}

void BoostProgMain::Analog_Follows_Image() {
    Init_Analog_from_CardByte(app_);
    Update_Tabs();
    Show_Right_Tabs();
    Update_All();
    Update_scroll_change();
}

void BoostProgMain::Update_scroll_change() {
    if (QX_settings* settings = Settings_Form_If_Made()) settings->Update_scroll_change();
}

QX_settings* BoostProgMain::Settings_Form_If_Made() {
    return Form_Exists("QX_settings") ? static_cast<QX_settings*>(Form("QX_settings")) : nullptr;
}

} // namespace quorlen::ui
