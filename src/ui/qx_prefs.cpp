#include "ui/qx_prefs.h"

#include "app/app_context.h"
#include "app/startup.h"
#include "link/serial_port_list.h"
#include "ui/qt_dialogs.h"
#include "ui/translation.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <cstdlib>

namespace quorlen::ui {

QRadioButton* QX_prefs::Radio(QButtonGroup* group, const QString& name, const QString& caption, int id) {
    auto* button = new QRadioButton(caption, this);
    button->setObjectName(name);
    group->addButton(button, id);
    return button;
}

QX_prefs::QX_prefs(App_Context& app, QWidget* parent, std::function<void()> update_all,
                   std::function<void(bool)> port_chosen)
    : Child_Form(app.program.Closing, parent), app_(app), update_all_(std::move(update_all)),
      port_chosen_(std::move(port_chosen)) {
    setObjectName("QX_prefs");
    setWindowTitle(QString::fromStdString(app.program.Program_Title) + "PC settings");
    auto* layout = new QVBoxLayout(this);
    auto* grid = new QGridLayout;
    layout->addLayout(grid);

    auto group_box = [&](const QString& title, int row, int col) {
        auto* box = new QGroupBox(title, this);
        grid->addWidget(box, row, col);
        auto* inner = new QVBoxLayout(box);
        return inner;
    };

    interface_group_ = new QButtonGroup(this);
    auto* iface = group_box("Default interface", 0, 0);
    iface->addWidget(Radio(interface_group_, "interface_option_a", "RZ-box over the serial line", 0));
    iface->addWidget(Radio(interface_group_, "interface_option_b", "Smart card reader", 1));
    iface->addWidget(Radio(interface_group_, "interface_option_c", "Mapchip", 2));
    iface->addWidget(Radio(interface_group_, "interface_option_d", "Todos II card reader", 3));

    language_group_ = new QButtonGroup(this);
    auto* lang = group_box("Language", 0, 1);
    lang->addWidget(Radio(language_group_, "Language(0)", "English", 0));
    lang->addWidget(Radio(language_group_, "Language(1)", "Svenska", 1));
    lang->addStretch();

    autoguide_group_ = new QButtonGroup(this);
    auto* guide = group_box("Auto setup guide", 1, 0);
    guide->addWidget(Radio(autoguide_group_, "Autoguide(0)", "Do not ask at program start", 0));
    guide->addWidget(Radio(autoguide_group_, "Autoguide(1)", "Ask at program start", 1));

    speed_group_ = new QButtonGroup(this);
    auto* speed = group_box("Serial speed", 1, 1);
    speed->addWidget(Radio(speed_group_, "ComSpeed_option(0)", "115200 baud", 0));
    speed->addWidget(Radio(speed_group_, "ComSpeed_option(1)", "625000 baud", 1));

    auto* start = group_box("When the box is found", 2, 0);
    Auto_Start_option_[0] = new QCheckBox("Start logging to file", this);
    Auto_Start_option_[0]->setObjectName("Auto_Start_option(0)");
    Auto_Start_option_[1] = new QCheckBox("Start live view", this);
    Auto_Start_option_[1]->setObjectName("Auto_Start_option(1)");
    start->addWidget(Auto_Start_option_[0]);
    start->addWidget(Auto_Start_option_[1]);

    auto* port = group_box("Serial port", 2, 1);
    Combo1_ = new QComboBox(this);
    Combo1_->setObjectName("Combo1");
    Combo1_->setMinimumContentsLength(24);
    // A path can be typed in, so a pseudo-terminal (the simulator) can be chosen.
    Combo1_->setEditable(true);
    Combo1_->setInsertPolicy(QComboBox::NoInsert);
    ManualUSBDetect_Check_ = new QCheckBox("Manual USB detection", this);
    ManualUSBDetect_Check_->setObjectName("ManualUSBDetect_Check");
    port->addWidget(Combo1_);
    port->addWidget(ManualUSBDetect_Check_);

    auto* folder = new QFormLayout;
    Text1_ = new QLineEdit(this);
    Text1_->setObjectName("Text1");
    Text1_->setReadOnly(true);
    folder->addRow("Settings folder", Text1_);
    layout->addLayout(folder);

    auto* buttons = new QDialogButtonBox(this);
    auto* ok = buttons->addButton(QDialogButtonBox::Ok);
    ok->setObjectName("OKButton");
    auto* apply = buttons->addButton(QDialogButtonBox::Apply);
    apply->setObjectName("ApplyButton");
    layout->addWidget(buttons);

    connect(interface_group_, &QButtonGroup::idClicked, this,
            [this](int id) { interface_option_Click(app_, id); });
    connect(language_group_, &QButtonGroup::idClicked, this, [this](int id) {
        Language_Click(app_, id);
        Use_Language(app_.program.Language);
    });
    connect(autoguide_group_, &QButtonGroup::idClicked, this, [this](int id) { Autoguide_Click(app_, id); });
    connect(speed_group_, &QButtonGroup::idClicked, this,
            [this](int id) { ComSpeed_option_Click(app_, id); });
    for (int i = 0; i < 2; ++i) {
        connect(Auto_Start_option_[i], &QCheckBox::clicked, this, [this, i](bool ticked) {
            Auto_Start_option_Click(app_, i, ticked);
            Init_From_State();
        });
    }
    connect(ManualUSBDetect_Check_, &QCheckBox::clicked, this,
            [this](bool ticked) { ManualUSBDetect_Check_Click(app_, ticked); });
    connect(apply, &QPushButton::clicked, this, &QX_prefs::ApplyButton_Click);
    connect(ok, &QPushButton::clicked, this, &QX_prefs::OKButton_Click);
}

void QX_prefs::Init_From_State() {
    auto select = [](QButtonGroup* group, int id) {
        if (id < 0) return;
        if (auto* b = group->button(id)) b->setChecked(true);
    };
    select(interface_group_, app_.prefs.interface_option);
    select(language_group_, app_.prefs.Language);
    select(autoguide_group_, app_.prefs.Autoguide);
    select(speed_group_, app_.prefs.ComSpeed_option);
    for (int i = 0; i < 2; ++i) {
        QSignalBlocker block(Auto_Start_option_[i]);
        Auto_Start_option_[i]->setChecked(app_.prefs.Auto_Start_option[i]);
    }
    QSignalBlocker block(ManualUSBDetect_Check_);
    ManualUSBDetect_Check_->setChecked(app_.prefs.ManualUSBDetect_Check);
}

void QX_prefs::showEvent(QShowEvent* event) {
    app_.link.Connection_Check_Busy = true;
    Text1_->setText(From_8bit(app_.ini.Read_Ini("card_data_dir")));
    Fill_Port_List();
    Init_From_State();
    app_.link.Connection_Check_Busy = false;
    Child_Form::showEvent(event);
}

void QX_prefs::Fill_Port_List() {
    clsSerialPortList list(platform_, app_.link_state.Ports,
                           Simulator_Link_Candidates(std::getenv("XDG_RUNTIME_DIR")));
    list.EnumerateList(16, false, false, false);
    const Combo1_Fill fill = Fill_Combo1(list, app_.program.Com_Port);
    {
        QSignalBlocker block(Combo1_);
        Combo1_->clear();
        for (const Combo1_Entry& entry : fill.entries)
            Combo1_->addItem(From_8bit(entry.text), entry.COMx);
        Combo1_->setCurrentIndex(fill.selected);
    }
    app_.program.Com_Port = fill.Com_Port;
    if (port_chosen_) port_chosen_(fill.selected >= 0);
}

void QX_prefs::ApplyButton_Click() {
    int port = app_.program.Com_Port;
    const int index = Combo1_->currentIndex();
    const QString typed = Combo1_->currentText().trimmed();
    if (index >= 0 && Combo1_->itemText(index) == Combo1_->currentText())
        port = Combo1_->itemData(index).toInt();
    else if (typed.startsWith('/'))
        port = app_.link_state.Ports.Number_For(To_8bit(typed));
    Prefs_Apply(app_, port);
    if (update_all_) update_all_();
}

void QX_prefs::OKButton_Click() {
    ApplyButton_Click();
    hide();
}

} // namespace quorlen::ui
