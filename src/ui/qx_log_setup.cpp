// The log window's settings page: the car, the units, the smoothing and views, and each
// signal's sensor, name and whether it is logged. A change goes into the log at once.

#include "app/app_context.h"
#include "logging/log_settings.h"
#include "logging/log_signals.h"
#include "logging/log_study.h"
#include "ui/qt_dialogs.h"
#include "ui/qx_log.h"
#include "ui/qx_log_parts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {

// The captions of the six view choices, in the order the settings file keeps them.
constexpr const char* View_Captions[6] = {"Dots at each row when zoomed in", "Time axis in rows",
                                          "Legend beside the chart",         "Dark chart",
                                          "Smooth every curve as the power", "RPM graph with each log"};

} // namespace

QWidget* QX_Log::Build_Setup_Page() {
    auto* page = new QWidget;
    Setup_Page_ = page;
    page->setObjectName("QX_Log_Setup");
    auto* grid = new QGridLayout(page);
    auto on_edit = [this](QLineEdit* edit) {
        connect(edit, &QLineEdit::editingFinished, this, [this] {
            if (!syncing_ && Take_Settings()) Setup_Changed();
        });
    };

    auto* car = new QGroupBox("Car", page);
    auto* form = new QFormLayout(car);
    auto* gears = new QHBoxLayout;
    for (int g = 1; g <= 6; ++g) {
        txt_Gearing_[g] = Named_Field(car, "", 55);
        txt_Gearing_[g]->setObjectName(QStringLiteral("txt_Gearing(%1)").arg(g));
        gears->addWidget(txt_Gearing_[g]);
    }
    form->addRow("Speed per 1000 rpm, gears 1-6", gears);
    Gear_option_ = new QComboBox(car);
    Gear_option_->setObjectName("Gear_option");
    for (int g = 1; g <= 6; ++g)
        Gear_option_->addItem(QString::number(g));
    connect(Gear_option_, &QComboBox::currentIndexChanged, this, [this] {
        if (!syncing_ && Take_Settings()) Setup_Changed();
    });
    form->addRow("Gear of the calculation", Gear_option_);
    auto* calc = new QHBoxLayout;
    txt_Speed_ = Named_Field(car, "txt_Speed");
    txt_RPM_ = Named_Field(car, "txt_RPM");
    auto* calc_button = new QPushButton("Calculate gear 1", car);
    calc_button->setObjectName("cmd_Calc_Gearing");
    connect(calc_button, &QPushButton::clicked, this, &QX_Log::cmd_Calc_Gearing_Click);
    calc->addWidget(txt_Speed_);
    calc->addWidget(new QLabel("at rpm", car));
    calc->addWidget(txt_RPM_);
    calc->addWidget(calc_button);
    form->addRow("Known speed", calc);
    auto* units = new QHBoxLayout;
    Speed_option_ = Options(car, units, "Speed_option", {"km/h", "mph", "m/s"});
    form->addRow("Speed in", units);
    auto* weight = new QHBoxLayout;
    txt_Weight_ = Named_Field(car, "txt_Weight");
    weight->addWidget(txt_Weight_);
    Weight_option_ = Options(car, weight, "Weight_option", {"kg", "lbs"});
    form->addRow("Weight", weight);
    auto* torque = new QHBoxLayout;
    Torque_option_ = Options(car, torque, "Torque_option", {"Nm", "ft-lbs"});
    form->addRow("Torque in", torque);
    for (QButtonGroup* group : {Speed_option_, Weight_option_, Torque_option_})
        connect(group, &QButtonGroup::idClicked, this, [this] {
            if (!syncing_ && Take_Settings()) Setup_Changed();
        });
    txt_Min_Hp_ = Named_Field(car, "txt_Min_Hp");
    txt_Max_Hp_ = Named_Field(car, "txt_Max_Hp");
    auto* hp = new QHBoxLayout;
    hp->addWidget(txt_Min_Hp_);
    hp->addWidget(txt_Max_Hp_);
    form->addRow("Power shown, hp (min, max)", hp);
    txt_AirResistance_ = Named_Field(car, "txt_AirResistance");
    txt_FrontalArea_ = Named_Field(car, "txt_FrontalArea");
    txt_AirDensity_ = Named_Field(car, "txt_AirDensity");
    auto* air = new QHBoxLayout;
    air->addWidget(txt_AirResistance_);
    air->addWidget(txt_FrontalArea_);
    air->addWidget(txt_AirDensity_);
    form->addRow("Drag factor, frontal area, air density", air);
    txt_Transloss_0k_ = Named_Field(car, "txt_Transloss_0k");
    txt_Transloss_6k_ = Named_Field(car, "txt_Transloss_6k");
    auto* loss = new QHBoxLayout;
    loss->addWidget(txt_Transloss_0k_);
    loss->addWidget(txt_Transloss_6k_);
    form->addRow("Transmission loss % at 0 and 6000 rpm", loss);
    txt_FuelInjectorSize_ = Named_Field(car, "txt_FuelInjectorSize");
    form->addRow("Injectors in all, cc/min", txt_FuelInjectorSize_);
    auto* left = new QVBoxLayout;
    left->addWidget(car);

    auto* right = new QVBoxLayout;
    auto* logging = new QGroupBox("Logging", page);
    auto* lform = new QFormLayout(logging);
    txt_Default_Save_Name_ = Named_Field(logging, "txt_Default_Save_Name", 160);
    lform->addRow("File name", txt_Default_Save_Name_);
    txt_Show_Log_Sek_ = Named_Field(logging, "txt_Show_Log_Sek");
    lform->addRow("Seconds shown", txt_Show_Log_Sek_);
    txt_Show_Log_Interval_ = Named_Field(logging, "txt_Show_Log_Interval");
    lform->addRow("Update interval, s", txt_Show_Log_Interval_);
    check_SettingsInLogg_ = new QCheckBox("Read the box settings into the log", logging);
    check_SettingsInLogg_->setObjectName("check_SettingsInLogg");
    check_AutoSave_ = new QCheckBox("Save the log when it stops", logging);
    check_AutoSave_->setObjectName("check_AutoSave");
    check_LogToFileOnly_ = new QCheckBox("Log to file only", logging);
    check_LogToFileOnly_->setObjectName("check_LogToFileOnly");
    for (QCheckBox* box : {check_SettingsInLogg_, check_AutoSave_, check_LogToFileOnly_}) {
        lform->addRow(box);
        connect(box, &QCheckBox::toggled, this, [this] {
            if (syncing_) return;
            Take_Settings();
            View_Changed();
        });
    }
    right->addWidget(logging);

    auto* chart = new QGroupBox("Smoothing and views", page);
    auto* cform = new QFormLayout(chart);
    txt_FIR_[0] = Named_Field(chart, "txt_FIR(0)");
    txt_FIR_[0]->setToolTip(
        "The smoothed RPM is the mean of this many rows before each row and the row itself");
    cform->addRow("RPM smoothing, rows", txt_FIR_[0]);
    txt_FIR_[1] = Named_Field(chart, "txt_FIR(1)");
    txt_FIR_[1]->setToolTip("Power is the mean of this many rows either side; with \"Smooth every curve\" so "
                            "is each curve of the chart");
    cform->addRow("Power smoothing, rows either side", txt_FIR_[1]);
    for (int k = 0; k < 6; ++k) {
        auto* box = new QCheckBox(View_Captions[k], chart);
        box->setObjectName(QStringLiteral("Views_chk(%1)").arg(k));
        Views_chk_[static_cast<std::size_t>(k)] = box;
        connect(box, &QCheckBox::toggled, this, [this, k](bool on) {
            if (syncing_) return;
            State().setup.Views_chk[static_cast<std::size_t>(k)] = on ? 1 : 0;
            View_Changed();
        });
        cform->addRow(box);
    }
    left->addWidget(chart);
    auto* defaults = new QHBoxLayout;
    auto add = [&](const char* caption, void (QX_Log::*slot)()) {
        auto* b = new QPushButton(caption, page);
        connect(b, &QPushButton::clicked, this, slot);
        defaults->addWidget(b);
    };
    add("Load defaults", &QX_Log::Open_Default_File_Click);
    add("Save as defaults", &QX_Log::Save_as_Default_File_Click);
    left->addLayout(defaults);
    left->addStretch();
    // The signals want the height: they are many.
    right->addWidget(Build_Signal_Table(page), 1);
    grid->addLayout(left, 0, 0);
    grid->addLayout(right, 0, 1);
    grid->setColumnStretch(1, 1);
    for (const auto& [edit, text] : Setting_Fields())
        on_edit(edit);
    for (int g = 1; g <= 6; ++g)
        on_edit(txt_Gearing_[g]);
    return page;
}

QWidget* QX_Log::Build_Signal_Table(QWidget* parent) {
    Setup_Signals_ = new QTableWidget(0, 5, parent);
    Setup_Signals_->setObjectName("Setup_Signals");
    Setup_Signals_->setHorizontalHeaderLabels({"Signal", "Sensor", "Name", "Unit", "Logged"});
    Setup_Signals_->verticalHeader()->setVisible(false);
    Setup_Signals_->verticalHeader()->setDefaultSectionSize(24);
    Setup_Signals_->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
    Setup_Signals_->setColumnWidth(0, 130);
    Setup_Signals_->setColumnWidth(1, 160);
    Setup_Signals_->setColumnWidth(3, 60);
    Setup_Signals_->setColumnWidth(4, 56);
    Setup_Signals_->setMinimumHeight(180);
    return Setup_Signals_;
}

std::vector<std::pair<QLineEdit*, std::string*>> QX_Log::Setting_Fields() {
    Log_Setup& s = State().setup;
    return {{txt_Speed_, &s.txt_Speed},
            {txt_RPM_, &s.txt_RPM},
            {txt_Weight_, &s.txt_Weight},
            {txt_Max_Hp_, &s.txt_Max_Hp},
            {txt_Min_Hp_, &s.txt_Min_Hp},
            {txt_AirResistance_, &s.txt_AirResistance},
            {txt_FrontalArea_, &s.txt_FrontalArea},
            {txt_AirDensity_, &s.txt_AirDensity},
            {txt_Transloss_0k_, &s.txt_Transloss_0k},
            {txt_Transloss_6k_, &s.txt_Transloss_6k},
            {txt_FuelInjectorSize_, &s.txt_FuelInjectorSize},
            {txt_Default_Save_Name_, &s.txt_Default_Save_Name},
            {txt_Show_Log_Sek_, &s.txt_Show_Log_Sek},
            {txt_Show_Log_Interval_, &s.txt_Show_Log_Interval},
            {txt_FIR_[0], &s.txt_FIR[0]},
            {txt_FIR_[1], &s.txt_FIR[1]}};
}

void QX_Log::Show_Settings() {
    syncing_ = true;
    const Log_Setup& s = State().setup;
    for (int g = 1; g <= 6; ++g)
        txt_Gearing_[g]->setText(From_8bit(s.txt_Gearing[static_cast<std::size_t>(g)]));
    Gear_option_->setCurrentIndex(std::clamp(s.Gear_option, 1, 6) - 1);
    for (const auto& [edit, text] : Setting_Fields())
        edit->setText(From_8bit(*text));
    Speed_option_->button(std::clamp(s.Speed_option, 0, 2))->setChecked(true);
    Weight_option_->button(std::clamp(s.Weight_option, 0, 1))->setChecked(true);
    Torque_option_->button(std::clamp(s.Torque_option, 0, 1))->setChecked(true);
    check_SettingsInLogg_->setChecked(s.check_SettingsInLogg != 0);
    check_AutoSave_->setChecked(s.check_AutoSave != 0);
    check_LogToFileOnly_->setChecked(s.check_LogToFileOnly != 0);
    for (std::size_t k = 0; k < Views_chk_.size(); ++k)
        Views_chk_[k]->setChecked(s.Views_chk[k] != 0);
    for (std::size_t k = 0; k < Scale_.size(); ++k)
        Scale_[k]->setText(From_8bit(s.Scale[k]));
    syncing_ = false;
}

bool QX_Log::Take_Settings() {
    Log_Setup& s = State().setup;
    const Log_Setup before = s;
    for (int g = 1; g <= 6; ++g)
        s.txt_Gearing[static_cast<std::size_t>(g)] = To_8bit(txt_Gearing_[g]->text());
    s.Gear_option = Gear_option_->currentIndex() + 1;
    for (const auto& [edit, text] : Setting_Fields())
        *text = To_8bit(edit->text());
    s.Speed_option = std::max(Speed_option_->checkedId(), 0);
    s.Weight_option = std::max(Weight_option_->checkedId(), 0);
    s.Torque_option = std::max(Torque_option_->checkedId(), 0);
    s.check_SettingsInLogg = check_SettingsInLogg_->isChecked() ? 1 : 0;
    s.check_AutoSave = check_AutoSave_->isChecked() ? 1 : 0;
    s.check_LogToFileOnly = check_LogToFileOnly_->isChecked() ? 1 : 0;
    auto same = [](const Log_Setup& a, const Log_Setup& b) {
        return a.txt_Gearing == b.txt_Gearing && a.Gear_option == b.Gear_option &&
               a.txt_Speed == b.txt_Speed && a.txt_RPM == b.txt_RPM && a.Speed_option == b.Speed_option &&
               a.txt_Weight == b.txt_Weight && a.Weight_option == b.Weight_option &&
               a.Torque_option == b.Torque_option && a.txt_Max_Hp == b.txt_Max_Hp &&
               a.txt_Min_Hp == b.txt_Min_Hp && a.txt_AirResistance == b.txt_AirResistance &&
               a.txt_FrontalArea == b.txt_FrontalArea && a.txt_AirDensity == b.txt_AirDensity &&
               a.txt_Transloss_0k == b.txt_Transloss_0k && a.txt_Transloss_6k == b.txt_Transloss_6k &&
               a.txt_FuelInjectorSize == b.txt_FuelInjectorSize && a.txt_FIR == b.txt_FIR;
    };
    return !same(before, s);
}

void QX_Log::Setup_Changed() {
    Log_Context c = Ctx();
    Apply_Log_Setup(c);
    Fill_Signals();
    Fill_Setup_Signals();
    Update_Chart();
    Sync();
}

void QX_Log::View_Changed() {
    Log_Context c = Ctx();
    Update_Log_Settings_Setup(c);
    Update_Chart();
}

void QX_Log::Fill_Setup_Signals() {
    syncing_ = true;
    Log_State& log = State();
    QStringList sensors;
    for (int s = 0; s < log.Log_Sens_Count; ++s)
        sensors << From_8bit(log.Log_Sens_Tab[static_cast<std::size_t>(s)][0]);
    const int rows = std::clamp(log.columns.Signals, 0, Log_Signal_Count);
    const int had = Setup_Signals_->rowCount();
    Setup_Signals_->setRowCount(rows);
    for (int i = had; i < rows; ++i) {
        auto* label = new QTableWidgetItem;
        label->setFlags(Qt::ItemIsEnabled);
        Setup_Signals_->setItem(i, 0, label);
        auto* combo = new QComboBox(Setup_Signals_);
        combo->setObjectName(QStringLiteral("Log_Sensor_combo(%1)").arg(i));
        connect(combo, &QComboBox::activated, this, [this, i](int place) {
            Log_State& st = State();
            auto& c = st.setup.controls[static_cast<std::size_t>(i)];
            if (place < 0 || place == c.combo_index) return;
            c.combo_index = place;
            st.Log_Signal_Tab[static_cast<std::size_t>(i)].sensor = place;
            Setup_Changed();
        });
        Setup_Signals_->setCellWidget(i, 1, combo);
        auto* name = new QLineEdit(Setup_Signals_);
        name->setObjectName(QStringLiteral("txt_CustomSignalName(%1)").arg(i));
        connect(name, &QLineEdit::editingFinished, this, [this, i, name] {
            if (syncing_) return;
            auto& c = State().setup.controls[static_cast<std::size_t>(i)];
            const std::string text = To_8bit(name->text());
            if (text == c.custom_name) return;
            c.custom_name = text;
            Setup_Changed();
        });
        Setup_Signals_->setCellWidget(i, 2, name);
        auto* unit = new QTableWidgetItem;
        unit->setFlags(Qt::ItemIsEnabled);
        Setup_Signals_->setItem(i, 3, unit);
        auto* logged = new QCheckBox(Setup_Signals_);
        logged->setObjectName(QStringLiteral("LogSignal_Check(%1)").arg(i));
        logged->setTristate(true);
        connect(logged, &QCheckBox::stateChanged, this, [this, i](int state) {
            if (syncing_) return;
            auto& c = State().setup.controls[static_cast<std::size_t>(i)];
            c.log_signal = state == Qt::Unchecked ? 0 : state == Qt::Checked ? 1 : 2;
            Fill_Signals();
            View_Changed();
        });
        Setup_Signals_->setCellWidget(i, 4, logged);
    }
    for (int i = 0; i < rows; ++i) {
        const auto& c = log.setup.controls[static_cast<std::size_t>(i)];
        Setup_Signals_->item(i, 0)->setText(From_8bit(c.label));
        auto* combo = static_cast<QComboBox*>(Setup_Signals_->cellWidget(i, 1));
        QStringList now;
        for (int k = 0; k < combo->count(); ++k)
            now << combo->itemText(k);
        if (now != sensors) {
            combo->clear();
            combo->addItems(sensors);
        }
        combo->setCurrentIndex(c.combo_index >= 0 && c.combo_index < combo->count() ? c.combo_index : -1);
        static_cast<QLineEdit*>(Setup_Signals_->cellWidget(i, 2))->setText(From_8bit(c.custom_name));
        Setup_Signals_->item(i, 3)->setText(From_8bit(log.Log_Signal_Tab[static_cast<std::size_t>(i)].unit));
        static_cast<QCheckBox*>(Setup_Signals_->cellWidget(i, 4))
            ->setCheckState(c.log_signal == 0   ? Qt::Unchecked
                            : c.log_signal == 2 ? Qt::PartiallyChecked
                                                : Qt::Checked);
    }
    syncing_ = false;
}

void QX_Log::cmd_Calc_Gearing_Click() {
    Take_Settings();
    quorlen::cmd_Calc_Gearing_Click(State().setup);
    Show_Settings();
    Setup_Changed();
}

} // namespace quorlen::ui
