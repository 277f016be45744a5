// The main window's side of the auto setup guide: making it with what it needs of the main
// window, the ways to it (the Settings menu, the start question, the Auto fuel tab), and the
// tabs it brings to the front.

#include "ui/boost_prog_main.h"

#include "ui/map_tabs.h"
#include "ui/qx_autosetup_frm.h"

#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {

// The fuel generator's step of the guide.
constexpr int Fuel_Generator_Step = 6;
constexpr int Auto_Fuel_Tab = 6;

} // namespace

QWidget* BoostProgMain::Make_AutoSetup_Form() {
    AutoSetup_Hooks hooks;
    hooks.Dialogs = [this]() -> User_Dialogs& { return *active_dialogs_; };
    hooks.Update_All = [this] { Update_All(); };
    hooks.Form = [this](const std::string& name) { return Form(name); };
    hooks.Form_Exists = [this](const std::string& name) { return Form_Exists(name); };
    hooks.Show_Settings = [this](int tab) { Show_Settings(tab); };
    hooks.Show_Main_Tab = [this](int tab, int sub_tab) { Show_Main_Tab(tab, sub_tab); };
    hooks.Select_Ignition_First_Cell = [this] {
        map_tabs_->Set_Selection(Table_Id::Ignition_3D, {1, 1, 1, 1});
    };
    hooks.Open_Manual = [this] { Open_Manual(); };
    return new QX_AutoSetup_frm(app_, std::move(hooks), this);
}

void BoostProgMain::Show_AutoSetup(int step) {
    auto* form = static_cast<QX_AutoSetup_frm*>(Form("QX_AutoSetup_frm"));
    form->show();
    form->raise();
    if (step > 0) form->Show_Step(step);
}

void BoostProgMain::Show_Main_Tab(int tab, int sub_tab) {
    sstab_Main_->setCurrentIndex(tab);
    QTabWidget* under = tab == 1 ? SSTab_Ignition_ : tab == 2 ? SSTab_Fuel_ : tab == 3 ? SSTab_PWM_ : nullptr;
    if (under != nullptr && sub_tab >= 0) under->setCurrentIndex(sub_tab);
    raise();
}

// The Auto fuel tab holds no table: it leads to the fuel map generator.
void BoostProgMain::Build_Auto_Fuel_Tab() {
    QWidget* page = SSTab_Fuel_->widget(Auto_Fuel_Tab);
    auto* layout = new QVBoxLayout(page);
    auto* text =
        new QLabel("The fuel map generator works out a first fuel map from the injectors, the engine's "
                   "volume and its volumetric efficiency, and tells whether the injectors are large "
                   "enough. It is the fuel step of the Auto Setup guide.",
                   page);
    text->setObjectName("Auto_fuel_label");
    text->setWordWrap(true);
    text->setMaximumWidth(520);
    auto* open = new QPushButton("Fuel map generator...", page);
    open->setObjectName("Auto_fuel_cmd");
    connect(open, &QPushButton::clicked, this, [this] { Show_AutoSetup(Fuel_Generator_Step); });
    layout->addWidget(text);
    layout->addWidget(open, 0, Qt::AlignLeft);
    layout->addStretch(1);
}

} // namespace quorlen::ui
