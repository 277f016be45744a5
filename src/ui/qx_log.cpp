#include "ui/qx_log.h"

#include "engine/page_choices.h"

#include "app/app_context.h"
#include "core/app_path.h"
#include "core/proc_guard.h"
#include "link/qt/qt_serial_line.h"
#include "logging/log_calc.h"
#include "logging/log_capture.h"
#include "logging/log_file.h"
#include "logging/log_settings.h"
#include "logging/log_signals.h"
#include "ui/qt_dialogs.h"

#include <QApplication>
#include <QButtonGroup>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLineSeries>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>
#include <QValueAxis>

#include <cmath>

namespace quorlen::ui {

namespace {

constexpr const char* Log_Filter = "Quorlen logg files *.qxl|*.qxl|All files *.*|*.*";

QLineEdit* Field(QWidget* parent, const char* name, int width = 70) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(name);
    edit->setMaximumWidth(width);
    return edit;
}

QString Shown(const std::string& text) {
    QString s = From_8bit(text);
    s.replace("\r\n", "\n");
    return s;
}

std::string Taken(const QString& text) {
    QString s = text;
    s.replace("\n", "\r\n");
    return To_8bit(s);
}

} // namespace

QX_Log::QX_Log(App_Context& app, Log_Window_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)),
      state_(std::make_unique<Log_State>()), line_(std::make_unique<Qt_Serial_Line>()) {
    setObjectName("QX_Log");
    Build();
}

QX_Log::~QX_Log() {
    // A log still running at shutdown ends as the user's stop would end it.
    if (state_->capture.Logging_Running) {
        Log_Context c = Ctx();
        Start_Logging(c);
    }
}

Log_Context QX_Log::Ctx() {
    Log_Hooks h;
    h.Dummy_Wait = [] {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < 50) {
            QApplication::processEvents(QEventLoop::AllEvents, 20);
            QThread::msleep(2);
        }
    };
    h.Read_Box_Settings = hooks_.Read_Box_Settings;
    h.Settings_Summary = hooks_.Settings_Summary;
    h.Main_Controls_Enabled = hooks_.Main_Controls_Enabled;
    h.Main_Log_Caption = hooks_.Main_Log_Caption;
    h.Main_Status = hooks_.Main_Status;
    h.Update_Chart = [this] { Update_Chart(); };
    h.Signals_Changed = [this] { Fill_Signals(); };
    h.ae_combo_index = [this] { return ae_combo_Index(app_.image); };
    const std::string port = hooks_.Port_Path ? hooks_.Port_Path() : std::string();
    return Log_Context{*state_,  app_.image,       app_.program, app_.texts, app_.link,
                       app_.log, hooks_.Dialogs(), line_.get(),  port,       std::move(h)};
}

// --- building -----------------------------------------------------------------------------

void QX_Log::Setting_Summary_Click() {
    if (hooks_.Show_Setting_Summary) hooks_.Show_Setting_Summary();
}

void QX_Log::Build() {
    setWindowTitle(QString::fromStdString(app_.program.Program_Title) + "Log");
    auto* layout = new QVBoxLayout(this);

    auto* top = new QHBoxLayout;
    cmd_Open_Com_ = new QPushButton("START", this);
    cmd_Open_Com_->setObjectName("cmd_Open_Com");
    cmd_Open_Com_->setMinimumWidth(130);
    connect(cmd_Open_Com_, &QPushButton::clicked, this, &QX_Log::cmd_Open_Com_Click);
    top->addWidget(cmd_Open_Com_);
    Binary_log_opt_ = new QButtonGroup(this);
    int index = 0;
    for (const char* caption : {"Norm", "Binary"}) {
        auto* option = new QRadioButton(caption, this);
        option->setObjectName(QStringLiteral("Binary_log_opt(%1)").arg(index));
        Binary_log_opt_->addButton(option, index++);
        top->addWidget(option);
    }
    Binary_log_opt_->button(0)->setChecked(true);
    connect(Binary_log_opt_, &QButtonGroup::idClicked, this, [this](int id) {
        state_->form.Binary_log_opt = id;
        Rpm_Sensor_For_Mode(*state_);
        Fill_Signals();
    });
    txt_Logging_alert_ = new QLabel(" LOGGING ", this);
    txt_Logging_alert_->setObjectName("txt_Logging_alert");
    txt_Logging_alert_->setAutoFillBackground(true);
    txt_NoConnection_alert_ = new QLabel(" NO DATA FROM THE BOX ", this);
    txt_NoConnection_alert_->setObjectName("txt_NoConnection_alert");
    txt_NoConnection_alert_->setStyleSheet("color: white; background: #b00000;");
    top->addWidget(txt_Logging_alert_);
    top->addWidget(txt_NoConnection_alert_);
    top->addStretch();
    auto button = [&](const char* name, const char* caption, void (QX_Log::*slot)()) {
        auto* b = new QPushButton(caption, this);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, slot);
        top->addWidget(b);
        return b;
    };
    button("File_Open", "Open...", &QX_Log::File_Open_Click);
    button("File_Save", "Save as...", &QX_Log::File_Save_As_Click);
    cmd_Clear_Logg_ = button("cmd_Clear_Logg", "Clear", &QX_Log::cmd_Clear_Logg_Click);
    button("cmd_Export_Log_qxs_settings", "Take settings", &QX_Log::cmd_Export_Log_qxs_settings_Click);
    button("Setting_Summary", "Setting summary", &QX_Log::Setting_Summary_Click);
    layout->addLayout(top);

    auto* info = new QGroupBox("Log", this);
    info->setObjectName("File_Info_Frame");
    auto* info_layout = new QGridLayout(info);
    txt_Log_Date_ = Field(info, "txt_Log_Date", 110);
    txt_Log_time_ = Field(info, "txt_Log_time", 90);
    txt_Log_Length_ = Field(info, "txt_Log_Length", 90);
    for (QLineEdit* e : {txt_Log_Date_, txt_Log_time_, txt_Log_Length_})
        e->setReadOnly(true);
    info_layout->addWidget(new QLabel("Date", info), 0, 0);
    info_layout->addWidget(txt_Log_Date_, 0, 1);
    info_layout->addWidget(new QLabel("Time", info), 0, 2);
    info_layout->addWidget(txt_Log_time_, 0, 3);
    info_layout->addWidget(new QLabel("Length", info), 0, 4);
    info_layout->addWidget(txt_Log_Length_, 0, 5);
    txt_Log_Free_Text_ = new QPlainTextEdit(info);
    txt_Log_Free_Text_->setObjectName("txt_Log_Free_Text");
    txt_Log_Free_Text_->setMaximumHeight(60);
    connect(txt_Log_Free_Text_, &QPlainTextEdit::textChanged, this, [this] {
        if (!syncing_) state_->form.txt_Log_Free_Text = Taken(txt_Log_Free_Text_->toPlainText());
    });
    info_layout->addWidget(txt_Log_Free_Text_, 1, 0, 1, 7);
    info_layout->setColumnStretch(6, 1);
    layout->addWidget(info);

    auto* tabs = new QTabWidget(this);
    tabs->setObjectName("Log_Tabs");
    auto* chart_page = new QWidget(tabs);
    auto* chart_layout = new QHBoxLayout(chart_page);
    Signals_ = new QTableWidget(0, 3, chart_page);
    Signals_->setObjectName("Check_SignalsToView");
    Signals_->setHorizontalHeaderLabels({"Signal", "Sensor", "Unit"});
    Signals_->verticalHeader()->setVisible(false);
    Signals_->setMaximumWidth(330);
    Signals_->horizontalHeader()->setStretchLastSection(true);
    connect(Signals_, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
        if (syncing_ || item->column() != 0) return;
        const int i = item->data(Qt::UserRole).toInt();
        state_->setup.controls[static_cast<std::size_t>(i)].view = item->checkState() == Qt::Checked ? 1 : 0;
        Update_Chart();
    });
    chart_layout->addWidget(Signals_);
    auto* chart = new QChart;
    chart->legend()->setAlignment(Qt::AlignBottom);
    MSChart1_ = new QChartView(chart, chart_page);
    MSChart1_->setObjectName("MSChart1");
    MSChart1_->setRenderHint(QPainter::Antialiasing);
    label_NoGraph_ = new QLabel("Logging to file only: no chart while the log runs", chart_page);
    label_NoGraph_->setObjectName("label_NoGraph");
    chart_layout->addWidget(MSChart1_, 1);
    chart_layout->addWidget(label_NoGraph_, 1);
    tabs->addTab(chart_page, "Chart");
    tabs->addTab(Build_Setup_Page(), "Settings");
    layout->addWidget(tabs, 1);

    Timer1_ = new QTimer(this);
    Timer1_->setObjectName("Timer1");
    connect(Timer1_, &QTimer::timeout, this, &QX_Log::Timer1_Tick);
    timer_LogAlert_ = new QTimer(this);
    timer_LogAlert_->setObjectName("timer_LogAlert");
    timer_LogAlert_->setInterval(Log_Alert_Period);
    connect(timer_LogAlert_, &QTimer::timeout, this, &QX_Log::LogAlert_Tick);
    ShowCurser_Timer_ = new QTimer(this);
    ShowCurser_Timer_->setObjectName("ShowCurser_Timer");
    ShowCurser_Timer_->setInterval(200);
    Receive_Timer_ = new QTimer(this);
    Receive_Timer_->setObjectName("MSComm1_OnComm");
    Receive_Timer_->setInterval(Receive_Poll_Period);
    connect(Receive_Timer_, &QTimer::timeout, this, &QX_Log::Receive_Poll);
    resize(1050, 700);
    Sync();
}

QWidget* QX_Log::Build_Setup_Page() {
    auto* page = new QWidget;
    page->setObjectName("QX_Log_Setup");
    auto* grid = new QGridLayout(page);

    auto* car = new QGroupBox("Car", page);
    auto* form = new QFormLayout(car);
    auto* gears = new QHBoxLayout;
    for (int g = 1; g <= 6; ++g) {
        txt_Gearing_[g] = Field(car, "", 55);
        txt_Gearing_[g]->setObjectName(QStringLiteral("txt_Gearing(%1)").arg(g));
        gears->addWidget(txt_Gearing_[g]);
    }
    form->addRow("Speed per 1000 rpm, gears 1-6", gears);
    Gear_option_ = new QComboBox(car);
    Gear_option_->setObjectName("Gear_option");
    for (int g = 1; g <= 6; ++g)
        Gear_option_->addItem(QString::number(g));
    form->addRow("Gear of the calculation", Gear_option_);
    auto* calc = new QHBoxLayout;
    txt_Speed_ = Field(car, "txt_Speed");
    txt_RPM_ = Field(car, "txt_RPM");
    auto* calc_button = new QPushButton("Calculate gear 1", car);
    calc_button->setObjectName("cmd_Calc_Gearing");
    connect(calc_button, &QPushButton::clicked, this, &QX_Log::cmd_Calc_Gearing_Click);
    calc->addWidget(txt_Speed_);
    calc->addWidget(new QLabel("at rpm", car));
    calc->addWidget(txt_RPM_);
    calc->addWidget(calc_button);
    form->addRow("Known speed", calc);
    txt_Weight_ = Field(car, "txt_Weight");
    form->addRow("Weight", txt_Weight_);
    txt_Min_Hp_ = Field(car, "txt_Min_Hp");
    txt_Max_Hp_ = Field(car, "txt_Max_Hp");
    auto* hp = new QHBoxLayout;
    hp->addWidget(txt_Min_Hp_);
    hp->addWidget(txt_Max_Hp_);
    form->addRow("Power shown, hp (min, max)", hp);
    txt_AirResistance_ = Field(car, "txt_AirResistance");
    txt_FrontalArea_ = Field(car, "txt_FrontalArea");
    txt_AirDensity_ = Field(car, "txt_AirDensity");
    auto* air = new QHBoxLayout;
    air->addWidget(txt_AirResistance_);
    air->addWidget(txt_FrontalArea_);
    air->addWidget(txt_AirDensity_);
    form->addRow("Drag factor, frontal area, air density", air);
    txt_Transloss_0k_ = Field(car, "txt_Transloss_0k");
    txt_Transloss_6k_ = Field(car, "txt_Transloss_6k");
    auto* loss = new QHBoxLayout;
    loss->addWidget(txt_Transloss_0k_);
    loss->addWidget(txt_Transloss_6k_);
    form->addRow("Transmission loss % at 0 and 6000 rpm", loss);
    txt_FuelInjectorSize_ = Field(car, "txt_FuelInjectorSize");
    form->addRow("Injectors in all, cc/min", txt_FuelInjectorSize_);
    grid->addWidget(car, 0, 0);

    auto* logging = new QGroupBox("Logging", page);
    auto* lform = new QFormLayout(logging);
    txt_Default_Save_Name_ = Field(logging, "txt_Default_Save_Name", 160);
    lform->addRow("File name", txt_Default_Save_Name_);
    txt_Show_Log_Sek_ = Field(logging, "txt_Show_Log_Sek");
    lform->addRow("Seconds shown", txt_Show_Log_Sek_);
    txt_Show_Log_Interval_ = Field(logging, "txt_Show_Log_Interval");
    lform->addRow("Update interval, s", txt_Show_Log_Interval_);
    check_SettingsInLogg_ = new QCheckBox("Read the box settings into the log", logging);
    check_SettingsInLogg_->setObjectName("check_SettingsInLogg");
    check_AutoSave_ = new QCheckBox("Save the log when it stops", logging);
    check_AutoSave_->setObjectName("check_AutoSave");
    check_LogToFileOnly_ = new QCheckBox("Log to file only", logging);
    check_LogToFileOnly_->setObjectName("check_LogToFileOnly");
    lform->addRow(check_SettingsInLogg_);
    lform->addRow(check_AutoSave_);
    lform->addRow(check_LogToFileOnly_);
    auto* defaults = new QHBoxLayout;
    auto add = [&](const char* name, const char* caption, void (QX_Log::*slot)()) {
        auto* b = new QPushButton(caption, logging);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, slot);
        defaults->addWidget(b);
    };
    add("Apply_Settings", "Apply", &QX_Log::Apply_Settings_Click);
    add("Open_Default_File", "Load defaults", &QX_Log::Open_Default_File_Click);
    add("Save_as_Default_File", "Save as defaults", &QX_Log::Save_as_Default_File_Click);
    lform->addRow(defaults);
    grid->addWidget(logging, 0, 1);
    grid->setRowStretch(1, 1);
    return page;
}

// --- state to screen and back ---------------------------------------------------------------

void QX_Log::Sync() {
    syncing_ = true;
    const Log_Form& f = state_->form;
    const Capture_State& cap = state_->capture;
    if (!f.Caption.empty()) setWindowTitle(From_8bit(f.Caption));
    cmd_Open_Com_->setText(QString::fromStdString(f.cmd_Open_Com_Caption));
    cmd_Open_Com_->setEnabled(f.cmd_Open_Com_Enabled);
    cmd_Clear_Logg_->setEnabled(f.cmd_Clear_Logg_Enabled);
    Binary_log_opt_->button(f.Binary_log_opt == 1 ? 1 : 0)->setChecked(true);
    for (auto* b : Binary_log_opt_->buttons())
        b->setEnabled(!cap.Logging_Running);
    txt_Logging_alert_->setVisible(f.txt_Logging_alert_Visible);
    const QString blink = f.txt_Logging_alert_Inverted ? "color: white; background: black;"
                                                       : "color: black; background: white;";
    if (txt_Logging_alert_->styleSheet() != blink) txt_Logging_alert_->setStyleSheet(blink);
    txt_NoConnection_alert_->setVisible(f.txt_NoConnection_alert_Visible);
    MSChart1_->setVisible(f.MSChart1_Visible && !f.label_NoGraph_Visible);
    label_NoGraph_->setVisible(f.label_NoGraph_Visible);
    txt_Log_Date_->setText(From_8bit(f.txt_Log_Date));
    txt_Log_time_->setText(From_8bit(f.txt_Log_time));
    txt_Log_Length_->setText(From_8bit(f.txt_Log_Length));
    const QString free_text = Shown(f.txt_Log_Free_Text);
    if (txt_Log_Free_Text_->toPlainText() != free_text) txt_Log_Free_Text_->setPlainText(free_text);
    syncing_ = false;
    Sync_Timers();
}

void QX_Log::Sync_Timers() {
    const Capture_State& cap = state_->capture;
    auto timer = [](QTimer* t, bool on, int interval) {
        if (interval > 0 && t->interval() != interval) t->setInterval(interval);
        if (on && !t->isActive()) t->start();
        if (!on && t->isActive()) t->stop();
    };
    timer(Timer1_, cap.Timer1_Enabled, cap.Timer1_Interval);
    timer(timer_LogAlert_, cap.timer_LogAlert_Enabled, 0);
    timer(ShowCurser_Timer_, cap.ShowCurser_Timer_Enabled, 0);
    timer(Receive_Timer_, cap.Logging_Running, 0);
}

std::array<std::pair<QLineEdit*, std::string*>, 14> QX_Log::Setting_Fields() {
    Log_Setup& s = state_->setup;
    return {{{txt_Speed_, &s.txt_Speed},
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
             {txt_Show_Log_Interval_, &s.txt_Show_Log_Interval}}};
}

void QX_Log::Show_Settings() {
    syncing_ = true;
    const Log_Setup& s = state_->setup;
    for (int g = 1; g <= 6; ++g)
        txt_Gearing_[g]->setText(From_8bit(s.txt_Gearing[static_cast<std::size_t>(g)]));
    Gear_option_->setCurrentIndex(std::clamp(s.Gear_option, 1, 6) - 1);
    for (const auto& [edit, text] : Setting_Fields())
        edit->setText(From_8bit(*text));
    check_SettingsInLogg_->setChecked(s.check_SettingsInLogg != 0);
    check_AutoSave_->setChecked(s.check_AutoSave != 0);
    check_LogToFileOnly_->setChecked(s.check_LogToFileOnly != 0);
    syncing_ = false;
}

void QX_Log::Take_Settings() {
    Log_Setup& s = state_->setup;
    for (int g = 1; g <= 6; ++g)
        s.txt_Gearing[static_cast<std::size_t>(g)] = To_8bit(txt_Gearing_[g]->text());
    s.Gear_option = Gear_option_->currentIndex() + 1;
    for (const auto& [edit, text] : Setting_Fields())
        *text = To_8bit(edit->text());
    s.check_SettingsInLogg = check_SettingsInLogg_->isChecked() ? 1 : 0;
    s.check_AutoSave = check_AutoSave_->isChecked() ? 1 : 0;
    s.check_LogToFileOnly = check_LogToFileOnly_->isChecked() ? 1 : 0;
}

void QX_Log::Fill_Signals() {
    syncing_ = true;
    const Log_State& log = *state_;
    Signals_->setRowCount(0);
    for (int i = 0; i < log.columns.Signals; ++i) {
        const auto& c = log.setup.controls[static_cast<std::size_t>(i)];
        const auto& sig = log.Log_Signal_Tab[static_cast<std::size_t>(i)];
        const int row = Signals_->rowCount();
        Signals_->insertRow(row);
        auto* name = new QTableWidgetItem(From_8bit(Shown_Signal_Name(log, i)));
        name->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        name->setCheckState(c.view != 0 ? Qt::Checked : Qt::Unchecked);
        name->setData(Qt::UserRole, i);
        Signals_->setItem(row, 0, name);
        const std::string sensor = c.combo_index >= 0
                                       ? log.Log_Sens_Tab[static_cast<std::size_t>(c.combo_index)][0]
                                       : std::string("< Not used >");
        auto* sensor_item = new QTableWidgetItem(From_8bit(sensor));
        sensor_item->setFlags(Qt::ItemIsEnabled);
        Signals_->setItem(row, 1, sensor_item);
        auto* unit = new QTableWidgetItem(From_8bit(sig.unit));
        unit->setFlags(Qt::ItemIsEnabled);
        Signals_->setItem(row, 2, unit);
    }
    Signals_->resizeColumnsToContents();
    syncing_ = false;
}

void QX_Log::Update_Chart() {
    const Log_State& log = *state_;
    QChart* chart = MSChart1_->chart();
    chart->removeAllSeries();
    // A removed axis is handed back to us, not deleted by the chart.
    for (QAbstractAxis* axis : chart->axes()) {
        chart->removeAxis(axis);
        delete axis;
    }
    const bool live = log.capture.Logging_Running;
    const int last = live ? log.capture.Log_Row_Count : log.Last_Row;
    const int first = live ? std::max(1, log.First_Shown_Row) : 1;
    const Log_Array& rows = log.Log_Data;
    auto* x_axis = new QValueAxis;
    x_axis->setTitleText("s");
    auto* y_axis = new QValueAxis;
    chart->addAxis(x_axis, Qt::AlignBottom);
    chart->addAxis(y_axis, Qt::AlignLeft);
    double low = 0, high = 1;
    bool any = false;
    for (int i = 0; i < log.columns.Signals && last >= first; ++i) {
        if (log.setup.controls[static_cast<std::size_t>(i)].view == 0) continue;
        auto* series = new QLineSeries;
        series->setName(From_8bit(Shown_Signal_Name(log, i)));
        QList<QPointF> points;
        points.reserve(last - first + 1);
        for (int r = first; r <= last && r <= Log_Row_Limit; ++r) {
            const double v = rows(r, i + 1);
            if (Log_Array::Empty(v)) continue;
            points.append(QPointF((r - 1) * 0.05, v));
            low = any ? std::min(low, v) : v;
            high = any ? std::max(high, v) : v;
            any = true;
        }
        series->replace(points);
        chart->addSeries(series);
        series->attachAxis(x_axis);
        series->attachAxis(y_axis);
    }
    x_axis->setRange((first - 1) * 0.05, std::max(first, last) * 0.05);
    if (high <= low) high = low + 1;
    y_axis->setRange(low, high);
}

// --- commands ---------------------------------------------------------------------------

void QX_Log::Form_Load() {
    Log_Context c = Ctx();
    Load_Log_Defaults(c);
    std::string dir = app_.ini.Read_Ini("Default_Logdir");
    while (dir.size() > 1 && dir.back() == '/')
        dir.pop_back();
    state_->Log_Dir = dir.empty() ? app_.program.App_Path.substr(0, app_.program.App_Path.size() - 1) : dir;
    Show_Settings();
    Fill_Signals();
    Update_Chart();
    Sync();
}

void QX_Log::cmd_Open_Com_Click() {
    if (!state_->capture.Logging_Running) Take_Settings();
    Log_Context c = Ctx();
    Start_Logging(c);
    Sync();
    Update_Chart();
}

bool QX_Log::Logging() const {
    return state_->capture.Logging_Running;
}

double QX_Log::Logged_RPM() const {
    const int r = state_->capture.Log_Row_Count;
    if (r < 1) return 0;
    return state_->Log_Data.Num(r, std::max<int>(state_->columns.Col_RPM, 1));
}

bool QX_Log::Open_File(const std::string& path) {
    Log_Context c = Ctx();
    const bool opened = quorlen::Open_File(c, path);
    Show_Settings();
    Sync();
    return opened;
}

void QX_Log::File_Open_Click() {
    File_Dialog_Setup setup;
    setup.initial_dir = state_->Log_Dir;
    setup.filter = Log_Filter;
    setup.must_exist = true;
    if (auto picked = hooks_.Dialogs().Pick_Open_File(setup)) {
        Open_File(picked->full_name);
        Remember_Log_Dir();
    }
}

void QX_Log::File_Save_As_Click() {
    Take_Settings();
    File_Dialog_Setup setup;
    setup.initial_dir = state_->Log_Dir;
    setup.filter = Log_Filter;
    setup.default_ext = "qxl";
    setup.confirm_overwrite = true;
    setup.initial_name = state_->Log_File_Name;
    auto picked = hooks_.Dialogs().Pick_Save_File(setup);
    if (!picked || picked->full_name.empty()) return;
    Log_Context c = Ctx();
    Save_File(c, picked->full_name);
    Remember_Log_Dir();
    Sync();
}

void QX_Log::Remember_Log_Dir() {
    Proc_Guard guard(app_.log, "Log dir");
    guard.Step([&] { app_.ini.Write_Ini("Default_Logdir", state_->Log_Dir); });
}

void QX_Log::Open_Default_File_Click() {
    Log_Context c = Ctx();
    quorlen::Open_Default_File_Click(c);
    Show_Settings();
    Sync();
}

void QX_Log::Save_as_Default_File_Click() {
    Apply_Settings_Click();
    Log_Context c = Ctx();
    quorlen::Save_as_Default_File_Click(c);
}

void QX_Log::cmd_Clear_Logg_Click() {
    Log_Context c = Ctx();
    quorlen::cmd_Clear_Logg_Click(c);
    Update_Chart();
    Sync();
}

void QX_Log::cmd_Export_Log_qxs_settings_Click() {
    if (hooks_.Take_Settings) hooks_.Take_Settings(state_->Log_Dataset_Text);
}

void QX_Log::cmd_Calc_Gearing_Click() {
    Take_Settings();
    quorlen::cmd_Calc_Gearing_Click(state_->setup);
    Show_Settings();
}

void QX_Log::Apply_Settings_Click() {
    Take_Settings();
    Log_Context c = Ctx();
    Update_Log_Sens_Tab(*state_);
    Update_Log_Settings_Setup(c);
    state_->plan_ready = false;
    Fill_Signals();
    Update_Chart();
}

void QX_Log::Receive_Poll() {
    Log_Context c = Ctx();
    Log_Receive_Event(c);
    Sync_Timers();
}

void QX_Log::Timer1_Tick() {
    Log_Context c = Ctx();
    Timer1_Timer(c);
    Sync();
}

void QX_Log::LogAlert_Tick() {
    Log_Context c = Ctx();
    timer_LogAlert_Timer(c);
    Sync();
}

} // namespace quorlen::ui
