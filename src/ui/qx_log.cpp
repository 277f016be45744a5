#include "ui/qx_log.h"

#include "engine/page_choices.h"

#include "app/app_context.h"
#include "core/app_path.h"
#include "core/atomic_file.h"
#include "core/proc_guard.h"
#include "core/text.h"
#include "link/qt/qt_serial_line.h"
#include "logging/log_calc.h"
#include "logging/log_capture.h"
#include "logging/log_file.h"
#include "logging/log_settings.h"
#include "logging/log_signals.h"
#include "logging/log_study.h"
#include "ui/form_helpers.h"
#include "ui/log_chart_view.h"
#include "ui/qt_dialogs.h"
#include "ui/qx_log_parts.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>

namespace quorlen::ui {

namespace {

constexpr const char* Picture_Filter =
    "Logg file image (*.bmp)|*.bmp|As text file (*.csv)|*.csv|Logg file image (*.png)|*.png";

std::string Taken(const QString& text) {
    QString s = text;
    s.replace("\n", "\r\n");
    return To_8bit(s);
}

} // namespace

QX_Log::QX_Log(App_Context& app, Log_Window_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)),
      line_(std::make_unique<Qt_Serial_Line>()) {
    setObjectName("QX_Log");
    Build();
}

QX_Log::~QX_Log() {
    // A log still running at shutdown ends as the user's stop would end it.
    if (State().capture.Logging_Running) {
        Log_Context c = Ctx();
        Start_Logging(c);
    }
}

Log_State& QX_Log::State() {
    return *app_.log_state;
}

Log_Context QX_Log::Ctx() {
    Log_Hooks h;
    h.Dummy_Wait = [] { Serve_Events(50); };
    h.Read_Box_Settings = hooks_.Read_Box_Settings;
    h.Settings_Summary = hooks_.Settings_Summary;
    h.Main_Controls_Enabled = hooks_.Main_Controls_Enabled;
    h.Main_Log_Caption = hooks_.Main_Log_Caption;
    h.Main_Status = hooks_.Main_Status;
    h.Show_Engine_On = hooks_.Show_Engine_On;
    h.Check_If_Unsaved_File = [this] {
        Log_Context c = Ctx();
        quorlen::Check_If_Unsaved_File(c);
    };
    h.Update_Chart = [this] { Update_Chart(); };
    h.Signals_Changed = [this] {
        Fill_Signals();
        Fill_Setup_Signals();
    };
    h.ae_combo_index = [this] { return ae_combo_Index(app_.image); };
    const std::string port = hooks_.Port_Path ? hooks_.Port_Path() : std::string();
    return Log_Context{State(),  app_.image,       app_.program, app_.texts, app_.link,
                       app_.log, hooks_.Dialogs(), line_.get(),  port,       std::move(h)};
}

// --- building -----------------------------------------------------------------------------

void QX_Log::Setting_Summary_Click() {
    if (hooks_.Show_Setting_Summary) hooks_.Show_Setting_Summary();
}

void QX_Log::Build() {
    setWindowTitle(QString::fromStdString(app_.program.Program_Title) + "Log");
    auto* layout = new QVBoxLayout(this);
    Build_Menus();

    auto* top = new QHBoxLayout;
    cmd_Open_Com_ = new QPushButton("START", this);
    cmd_Open_Com_->setObjectName("cmd_Open_Com");
    cmd_Open_Com_->setMinimumWidth(130);
    connect(cmd_Open_Com_, &QPushButton::clicked, this, &QX_Log::cmd_Open_Com_Click);
    top->addWidget(cmd_Open_Com_);
    Binary_log_opt_ = Options(this, top, "Binary_log_opt", {"Norm", "Binary"});
    Binary_log_opt_->button(0)->setChecked(true);
    connect(Binary_log_opt_, &QButtonGroup::idClicked, this, [this](int id) {
        State().form.Binary_log_opt = id;
        Rpm_Sensor_For_Mode(State());
        Fill_Signals();
        Fill_Setup_Signals();
    });
    txt_Logging_alert_ = new QLabel(" LOGGING ", this);
    txt_Logging_alert_->setObjectName("txt_Logging_alert");
    txt_Logging_alert_->setAutoFillBackground(true);
    txt_NoConnection_alert_ = new QLabel(" NO DATA FROM THE BOX ", this);
    txt_NoConnection_alert_->setObjectName("txt_NoConnection_alert");
    txt_NoConnection_alert_->setStyleSheet("color: white; background: #b00000;");
    Engine_On_label_ = new QLabel(this);
    Engine_On_label_->setObjectName("Engine_On_label");
    top->addWidget(txt_Logging_alert_);
    top->addWidget(txt_NoConnection_alert_);
    top->addWidget(Engine_On_label_);
    top->addStretch();
    cmd_Clear_Logg_ = new QPushButton("Clear", this);
    cmd_Clear_Logg_->setObjectName("cmd_Clear_Logg");
    connect(cmd_Clear_Logg_, &QPushButton::clicked, this, &QX_Log::cmd_Clear_Logg_Click);
    top->addWidget(cmd_Clear_Logg_);
    auto* summary = new QPushButton("Setting summary", this);
    summary->setObjectName("Setting_Summary");
    connect(summary, &QPushButton::clicked, this, &QX_Log::Setting_Summary_Click);
    top->addWidget(summary);
    layout->addLayout(top);

    auto* info = new QGroupBox("Log", this);
    info->setObjectName("File_Info_Frame");
    auto* info_layout = new QGridLayout(info);
    txt_Log_Date_ = Named_Field(info, "txt_Log_Date", 110);
    txt_Log_time_ = Named_Field(info, "txt_Log_time", 90);
    txt_Log_Length_ = Named_Field(info, "txt_Log_Length", 90);
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
    txt_Log_Free_Text_->setMaximumHeight(50);
    connect(txt_Log_Free_Text_, &QPlainTextEdit::textChanged, this, [this] {
        if (!syncing_) State().form.txt_Log_Free_Text = Taken(txt_Log_Free_Text_->toPlainText());
    });
    info_layout->addWidget(txt_Log_Free_Text_, 1, 0, 1, 7);
    Compare_Frame_ = new QWidget(info);
    Compare_Frame_->setObjectName("Compare_Frame");
    auto* compare_row = new QHBoxLayout(Compare_Frame_);
    compare_row->setContentsMargins(0, 0, 0, 0);
    Compare_Info_ = new QLabel(Compare_Frame_);
    Compare_Info_->setObjectName("Compare_Info");
    Compare_Info_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    txt_Log_Free_Text_compare_ = new QLineEdit(Compare_Frame_);
    txt_Log_Free_Text_compare_->setObjectName("txt_Log_Free_Text_compare");
    txt_Log_Free_Text_compare_->setReadOnly(true);
    compare_row->addWidget(Compare_Info_);
    compare_row->addWidget(txt_Log_Free_Text_compare_, 1);
    info_layout->addWidget(Compare_Frame_, 2, 0, 1, 7);
    info_layout->setColumnStretch(6, 1);
    layout->addWidget(info);

    auto* tabs = new QTabWidget(this);
    tabs->setObjectName("Log_Tabs");
    tabs->addTab(Build_Chart_Page(), "Chart");
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
    resize(1150, 760);
    Sync();
}

void QX_Log::Build_Menus() {
    auto* bar = new QMenuBar(this);
    static_cast<QVBoxLayout*>(layout())->setMenuBar(bar);
    auto action = [this](QMenu* menu, const char* name, const char* caption, void (QX_Log::*slot)()) {
        QAction* a = menu->addAction(caption);
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    QMenu* file = bar->addMenu("&File");
    file->setObjectName("Log_File_menu");
    action(file, "File_Open", "&Open...", &QX_Log::File_Open_Click);
    action(file, "File_Open_Compare", "Open a log to &compare...", &QX_Log::File_Open_Compare_Click);
    File_Close_Compare_ =
        action(file, "File_Close_Compare", "Close the compared log", &QX_Log::File_Close_Compare_Click);
    action(file, "File_Save", "Save &as...", &QX_Log::File_Save_As_Click);
    action(file, "Log_Picture_File_Save_As", "Save chart as &picture or table...",
           &QX_Log::Log_Picture_File_Save_As_Click);
    file->addSeparator();
    action(file, "cmd_Export_Log_qxs_settings", "&Take the box settings from the log",
           &QX_Log::cmd_Export_Log_qxs_settings_Click);
    file->addSeparator();
    action(file, "Open_Default_File", "Load the &default log settings", &QX_Log::Open_Default_File_Click);
    action(file, "Save_as_Default_File", "Save as default log settings", &QX_Log::Save_as_Default_File_Click);
    QMenu* log = bar->addMenu("&Log");
    log->setObjectName("Log_menu");
    action(log, "Start_Logg", "&Start or stop logging", &QX_Log::cmd_Open_Com_Click);
    action(log, "mnu_Clear_Logg", "&Clear the log", &QX_Log::cmd_Clear_Logg_Click);
    log->addSeparator();
    QAction* fuel = log->addAction("&Fuel correction...");
    fuel->setObjectName("mnu_Fuel_Correction");
    connect(fuel, &QAction::triggered, this, [this] {
        if (hooks_.Show_Fuel_Correction) hooks_.Show_Fuel_Correction();
    });
    QMenu* view = bar->addMenu("&View");
    view->setObjectName("Log_View_menu");
    action(view, "Redraw", "&Redraw", &QX_Log::Redraw_Click);
    action(view, "cmd_ZoomAll", "Zoom &all", &QX_Log::cmd_ZoomAll_Click);
    QAction* rpm = view->addAction("RPM &graph...");
    rpm->setObjectName("mnu_RPM_Graph");
    connect(rpm, &QAction::triggered, this, [this] {
        if (hooks_.Show_RPM_Graph) hooks_.Show_RPM_Graph();
    });
    menus_ = {file, log, view};
}

QWidget* QX_Log::Build_Chart_Page() {
    auto* page = new QWidget;
    auto* row = new QHBoxLayout(page);

    auto* side = new QVBoxLayout;
    Signals_ = new QTableWidget(0, 2, page);
    Signals_->setObjectName("Check_SignalsToView");
    Signals_->setHorizontalHeaderLabels({"Signal", "2nd axis"});
    Signals_->horizontalHeaderItem(1)->setToolTip(
        "Secondary_Check: the signal reads on the right value axis");
    Signals_->verticalHeader()->setVisible(false);
    Signals_->verticalHeader()->setDefaultSectionSize(20);
    Signals_->setMinimumWidth(300);
    Signals_->setMaximumWidth(300);
    Signals_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    Signals_->setColumnWidth(1, 64);
    connect(Signals_, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
        if (syncing_) return;
        const int i = item->data(Qt::UserRole).toInt();
        const bool on = item->checkState() == Qt::Checked;
        if (item->column() == 0)
            Check_SignalsToView_Click(i, on);
        else
            Secondary_Check_Click(i, on);
    });
    side->addWidget(Signals_, 1);
    auto* scales = new QGroupBox("Value axes (number or Auto)", page);
    auto* scale_grid = new QGridLayout(scales);
    const char* names[4] = {"txt_1stYScale_Min", "txt_1stYScale_Max", "txt_2ndYScale_Min",
                            "txt_2ndYScale_Max"};
    for (int k = 0; k < 4; ++k) {
        Scale_[static_cast<std::size_t>(k)] = Named_Field(scales, names[k], 80);
        QLineEdit* edit = Scale_[static_cast<std::size_t>(k)];
        connect(edit, &QLineEdit::returnPressed, this, [this, k] { Scale_Entry(k); });
        connect(edit, &QLineEdit::editingFinished, this, [this, k, edit] {
            if (syncing_) return;
            std::string& scale = State().setup.Scale[static_cast<std::size_t>(k)];
            const std::string text = To_8bit(edit->text());
            if (text == scale) return;
            scale = text;
            Update_Chart();
        });
    }
    scale_grid->addWidget(new QLabel("1st", scales), 0, 0);
    scale_grid->addWidget(Scale_[0], 0, 1);
    scale_grid->addWidget(Scale_[1], 0, 2);
    scale_grid->addWidget(new QLabel("2nd", scales), 1, 0);
    scale_grid->addWidget(Scale_[2], 1, 1);
    scale_grid->addWidget(Scale_[3], 1, 2);
    side->addWidget(scales);
    row->addLayout(side);

    auto* main = new QVBoxLayout;
    Chart_Buttons_ = new QWidget(page);
    auto* buttons = new QHBoxLayout(Chart_Buttons_);
    buttons->setContentsMargins(0, 0, 0, 0);
    auto button = [&](const char* name, const char* caption, const char* tip, void (QX_Log::*slot)()) {
        auto* b = new QPushButton(caption, Chart_Buttons_);
        b->setObjectName(name);
        b->setToolTip(tip);
        connect(b, &QPushButton::clicked, this, slot);
        buttons->addWidget(b);
        return b;
    };
    button("cmd_Redraw", "Redraw", "Draw the chart again", &QX_Log::Redraw_Click);
    button("cmd_ZoomIn", "Zoom in", "Half the rows, around the middle", &QX_Log::cmd_ZoomIn_Click);
    button("cmd_ZoomOut", "Zoom out", "Twice the rows", &QX_Log::cmd_ZoomOut_Click);
    button("cmd_ZoomAll", "All", "The whole log", &QX_Log::cmd_ZoomAll_Click);
    button("cmd_Scroll_Left", "<<", "Back half a screen", &QX_Log::cmd_Scroll_Left);
    button("cmd_Scroll_Right", ">>", "On half a screen", &QX_Log::cmd_Scroll_Right);
    cmd_Scroll_Left_Comp_ =
        button("cmd_Scroll_Left_Comp", "(2) <", "Move the compared log alone, to line it up",
               &QX_Log::cmd_Scroll_Left_Comp);
    cmd_Scroll_Right_Comp_ =
        button("cmd_Scroll_Right_Comp", "(2) >", "Move the compared log alone, to line it up",
               &QX_Log::cmd_Scroll_Right_Comp);
    auto* rpm = new QPushButton("RPM graph", Chart_Buttons_);
    rpm->setObjectName("cmd_RPM_Graph");
    connect(rpm, &QPushButton::clicked, this, [this] {
        if (hooks_.Show_RPM_Graph) hooks_.Show_RPM_Graph();
    });
    buttons->addWidget(rpm);
    buttons->addStretch();
    label_TimePerCall_ = new QLabel(Chart_Buttons_);
    label_TimePerCall_->setObjectName("label_TimePerCall");
    label_TimePerCall_->setStyleSheet("color: gray;");
    buttons->addWidget(label_TimePerCall_);
    main->addWidget(Chart_Buttons_);

    MSChart1_ = new Log_Chart_View(page);
    MSChart1_->setObjectName("MSChart1");
    MSChart1_->setMinimumHeight(300);
    MSChart1_->Point_Clicked = [this](double x) { MSChart1_PointSelected(x); };
    MSChart1_->Zoom_Gesture = [this](double from, double to) { MSChart1_Zoom(from, to); };
    MSChart1_->Width_Changed = [this] { Update_Chart(); };
    label_NoGraph_ = new QLabel("Logging to file only: no chart while the log runs", page);
    label_NoGraph_->setObjectName("label_NoGraph");
    label_NoGraph_->setAlignment(Qt::AlignCenter);
    main->addWidget(MSChart1_, 1);
    main->addWidget(label_NoGraph_, 1);

    auto* line_row = new QHBoxLayout;
    txt_LineTextWindow_ = new QPlainTextEdit(page);
    txt_LineTextWindow_->setObjectName("txt_LineTextWindow");
    txt_LineTextWindow_->setReadOnly(true);
    txt_LineTextWindow_->setMaximumHeight(80);
    auto* clear = new QPushButton("Clear", page);
    clear->setObjectName("Clear_LineTextWindow");
    connect(clear, &QPushButton::clicked, this, &QX_Log::Clear_LineTextWindow);
    line_row->addWidget(txt_LineTextWindow_, 1);
    line_row->addWidget(clear, 0, Qt::AlignTop);
    main->addLayout(line_row);
    row->addLayout(main, 1);
    State().form.txt_LineTextWindow = Line_Text_Window_Hint;
    return page;
}

// --- state to screen and back ---------------------------------------------------------------

void QX_Log::Sync() {
    syncing_ = true;
    const Log_State& log = State();
    const Log_Form& f = log.form;
    const Capture_State& cap = log.capture;
    if (!f.Caption.empty()) setWindowTitle(From_8bit(f.Caption));
    cmd_Open_Com_->setText(QString::fromStdString(f.cmd_Open_Com_Caption));
    cmd_Open_Com_->setEnabled(f.cmd_Open_Com_Enabled);
    cmd_Clear_Logg_->setEnabled(f.cmd_Clear_Logg_Enabled);
    for (QMenu* menu : menus_)
        menu->setEnabled(f.menus_Enabled);
    Binary_log_opt_->button(f.Binary_log_opt == 1 ? 1 : 0)->setChecked(true);
    for (auto* b : Binary_log_opt_->buttons())
        b->setEnabled(!cap.Logging_Running);
    txt_Logging_alert_->setVisible(f.txt_Logging_alert_Visible);
    const QString blink = f.txt_Logging_alert_Inverted ? "color: white; background: black;"
                                                       : "color: black; background: white;";
    if (txt_Logging_alert_->styleSheet() != blink) txt_Logging_alert_->setStyleSheet(blink);
    txt_NoConnection_alert_->setVisible(f.txt_NoConnection_alert_Visible);
    Engine_On_label_->setText(From_8bit(f.Engine_On_Text));
    Engine_On_label_->setVisible(cap.Logging_Running && !f.Engine_On_Text.empty());
    MSChart1_->setVisible(f.MSChart1_Visible && !f.label_NoGraph_Visible);
    label_NoGraph_->setVisible(f.label_NoGraph_Visible);
    txt_Log_Date_->setText(From_8bit(f.txt_Log_Date));
    txt_Log_time_->setText(From_8bit(f.txt_Log_time));
    txt_Log_Length_->setText(From_8bit(f.txt_Log_Length));
    const QString free_text = Shown_Text(f.txt_Log_Free_Text);
    if (txt_Log_Free_Text_->toPlainText() != free_text) txt_Log_Free_Text_->setPlainText(free_text);
    Compare_Frame_->setVisible(log.Compare_Mode && f.txt_Log_Free_Text_compare_Visible);
    Compare_Info_->setText(From_8bit("Compared with (2): " + log.Compare_File_Name + "  " +
                                     f.txt_Log_Date_compare + " " + f.txt_Log_time_compare + "  " +
                                     f.txt_Log_Length_compare));
    txt_Log_Free_Text_compare_->setText(From_8bit(f.txt_Log_Free_Text_compare));
    File_Close_Compare_->setEnabled(log.Compare_Mode);
    // While a log runs its window follows the newest rows, and its settings hold still.
    Chart_Buttons_->setEnabled(!cap.Logging_Running);
    cmd_Scroll_Left_Comp_->setEnabled(log.Compare_Mode);
    cmd_Scroll_Right_Comp_->setEnabled(log.Compare_Mode);
    Setup_Page_->setEnabled(!cap.Logging_Running);
    const QString line_text = Shown_Text(f.txt_LineTextWindow);
    if (txt_LineTextWindow_->toPlainText() != line_text) txt_LineTextWindow_->setPlainText(line_text);
    syncing_ = false;
    Sync_Timers();
}

void QX_Log::Sync_Timers() {
    const Capture_State& cap = State().capture;
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

void QX_Log::Fill_Signals() {
    syncing_ = true;
    const Log_State& log = State();
    Signals_->setRowCount(0);
    for (int i = 0; i < log.columns.Signals; ++i) {
        const auto& c = log.setup.controls[static_cast<std::size_t>(i)];
        // A signal that isn't logged isn't offered.
        if (c.log_signal == 0) continue;
        const int row = Signals_->rowCount();
        Signals_->insertRow(row);
        const std::string& unit = log.Log_Signal_Tab[static_cast<std::size_t>(i)].unit;
        const std::string caption = Shown_Signal_Name(log, i) + (unit.empty() ? "" : " [" + unit + "]");
        auto* name = new QTableWidgetItem(From_8bit(caption));
        name->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        name->setCheckState(c.view != 0 ? Qt::Checked : Qt::Unchecked);
        name->setData(Qt::UserRole, i);
        Signals_->setItem(row, 0, name);
        auto* secondary = new QTableWidgetItem;
        secondary->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        secondary->setCheckState(c.secondary != 0 ? Qt::Checked : Qt::Unchecked);
        secondary->setData(Qt::UserRole, i);
        Signals_->setItem(row, 1, secondary);
    }
    syncing_ = false;
}

// --- the chart ------------------------------------------------------------------------------

void QX_Log::Update_Chart() {
    QElapsedTimer timer;
    timer.start();
    const Log_State& log = State();
    Chart_Options options;
    options.width = MSChart1_->Buckets();
    options.x_in_rows = View_On(log.setup, Rows_View);
    MSChart1_->Show(builder_.Build(log, options), Look_Of(log.setup));
    label_TimePerCall_->setText(
        QStringLiteral("Time/call: %1 ms").arg(static_cast<double>(timer.nsecsElapsed()) / 1e6, 0, 'f', 1));
    if (hooks_.Chart_Changed) hooks_.Chart_Changed();
}

void QX_Log::Redraw_Click() {
    Proc_Guard guard(app_.log, "Redraw click");
    guard.Step([&] {
        // A redraw at the user's wish takes everything afresh.
        ++State().Data_Version;
        Update_Chart();
    });
}

void QX_Log::Move_Window(const char* name,
                         const std::function<Chart_Window(const Chart_Window&, const Window_Limits&)>& move) {
    Proc_Guard guard(app_.log, name);
    guard.Step([&] {
        Log_State& log = State();
        log.window = move(log.window, Limits_Of(log));
    });
    Update_Chart();
}

void QX_Log::cmd_ZoomIn_Click() {
    Move_Window("Zoom in", Zoom_In);
}

void QX_Log::cmd_ZoomOut_Click() {
    Move_Window("Zoom out", Zoom_Out);
}

void QX_Log::cmd_ZoomAll_Click() {
    Move_Window("Zoom all",
                [](const Chart_Window&, const Window_Limits& limits) { return Zoom_All(limits); });
}

void QX_Log::cmd_Scroll_Left() {
    Move_Window("Scroll left", Scroll_Left);
}

void QX_Log::cmd_Scroll_Right() {
    Move_Window("Scroll right", Scroll_Right);
}

void QX_Log::cmd_Scroll_Left_Comp() {
    Move_Window("Scroll left comp", Scroll_Left_Comp);
}

void QX_Log::cmd_Scroll_Right_Comp() {
    Move_Window("Scroll right comp", Scroll_Right_Comp);
}

void QX_Log::MSChart1_PointSelected(double x) {
    Proc_Guard guard(app_.log, "MSChart1 pointselected");
    guard.Step([&] {
        Log_State& log = State();
        const bool rows = View_On(log.setup, Rows_View);
        const int row = Row_At(log, x, rows);
        log.form.txt_LineTextWindow = Show_All_Point_Values(log, row);
        MSChart1_->Set_Cursor(rows ? row : (row - 1) * Row_Seconds);
    });
    Sync();
}

void QX_Log::MSChart1_Zoom(double from_x, double to_x) {
    const bool rows = View_On(State().setup, Rows_View);
    const int from = Row_At(State(), from_x, rows), to = Row_At(State(), to_x, rows);
    Move_Window("MSChart1 mouse up", [from, to](const Chart_Window& w, const Window_Limits& limits) {
        return Zoom_To_Rows(w, limits, from, to);
    });
}

void QX_Log::Clear_LineTextWindow() {
    Proc_Guard guard(app_.log, "Clear Line text window");
    guard.Step([&] {
        State().form.txt_LineTextWindow = Line_Text_Window_Hint;
        MSChart1_->Set_Cursor(std::nullopt);
    });
    Sync();
}

void QX_Log::Check_SignalsToView_Click(int signal, bool checked) {
    if (signal < 0 || signal >= Log_Signal_Count) return;
    State().setup.controls[static_cast<std::size_t>(signal)].view = checked ? 1 : 0;
    View_Changed();
}

void QX_Log::Secondary_Check_Click(int signal, bool checked) {
    if (signal < 0 || signal >= Log_Signal_Count) return;
    State().setup.controls[static_cast<std::size_t>(signal)].secondary = checked ? 1 : 0;
    View_Changed();
}

void QX_Log::Scale_Entry(int index) {
    QLineEdit* edit = Scale_[static_cast<std::size_t>(index)];
    edit->setText(From_8bit(Scale_Entry_Text(To_8bit(edit->text()))));
}

void QX_Log::Log_Picture_File_Save_As_Click() {
    Proc_Guard guard(app_.log, "Log picture file save as ");
    Log_State& log = State();
    File_Dialog_Setup setup;
    setup.initial_dir = log.Log_Dir;
    setup.filter = Picture_Filter;
    setup.default_ext = "bmp";
    setup.confirm_overwrite = true;
    setup.initial_name = Export_Name(log, "_qxl");
    const auto picked = hooks_.Dialogs().Pick_Save_File(setup);
    if (!picked || picked->full_name.empty()) return;
    const std::string& path = picked->full_name;
    bool written = false;
    guard.Step([&] {
        if (Ends_With_No_Case(path, ".csv")) {
            Replace_File_Atomically(path, Chart_Csv(log, View_On(log.setup, Rows_View)));
            written = true;
        } else {
            written = Save_Chart_Picture(*MSChart1_, path);
        }
    });
    if (!written) hooks_.Dialogs().Inform("Could not write " + path);
}

// --- commands ---------------------------------------------------------------------------

void QX_Log::Form_Load() {
    Log_Context c = Ctx();
    Load_Log_Defaults(c);
    std::string dir = app_.ini.Read_Ini("Default_Logdir");
    while (dir.size() > 1 && dir.back() == '/')
        dir.pop_back();
    State().Log_Dir = dir.empty() ? app_.program.App_Path.substr(0, app_.program.App_Path.size() - 1) : dir;
    Show_Settings();
    Fill_Signals();
    Fill_Setup_Signals();
    Update_Chart();
    Sync();
}

void QX_Log::Start_Log(bool live_view) {
    if (State().capture.Logging_Running) return;
    State().capture.Live_View = live_view;
    Take_Settings();
    Log_Context c = Ctx();
    Start_Logging(c);
    Sync();
    Update_Chart();
}

void QX_Log::cmd_Open_Com_Click() {
    if (!State().capture.Logging_Running) {
        // The button records to a file; a live view is the auto start's.
        State().capture.Live_View = false;
        Take_Settings();
    }
    Log_Context c = Ctx();
    const bool was_running = State().capture.Logging_Running;
    Start_Logging(c);
    Sync();
    Update_Chart();
    if (was_running && !State().capture.Logging_Running) After_Open();
}

void QX_Log::Log_Sensors_Changed() {
    Update_Log_Sens_Def(State());
    Update_Log_Sens_Tab(State());
    Fill_Signals();
    Fill_Setup_Signals();
}

bool QX_Log::Logging() const {
    return app_.log_state->capture.Logging_Running;
}

double QX_Log::Logged_RPM() const {
    const Log_State& log = *app_.log_state;
    const int r = log.capture.Log_Row_Count;
    if (r < 1) return 0;
    return log.Log_Data.Num(r, std::max<int>(log.columns.Col_RPM, 1));
}

bool QX_Log::Open_File(const std::string& path) {
    Log_Context c = Ctx();
    const bool opened = quorlen::Open_File(c, path);
    Show_Settings();
    Clear_LineTextWindow();
    Sync();
    if (opened) After_Open();
    return opened;
}

void QX_Log::After_Open() {
    if (View_On(State().setup, Rpm_Graph_View) && hooks_.Show_RPM_Graph) hooks_.Show_RPM_Graph();
}

void QX_Log::File_Open_Click() {
    File_Dialog_Setup setup;
    setup.initial_dir = State().Log_Dir;
    setup.filter = Log_File_Filter;
    setup.must_exist = true;
    if (auto picked = hooks_.Dialogs().Pick_Open_File(setup)) {
        Open_File(picked->full_name);
        Remember_Log_Dir();
    }
}

void QX_Log::File_Open_Compare_Click() {
    File_Dialog_Setup setup;
    setup.title = "Open a log to compare";
    setup.initial_dir = State().Log_Dir;
    setup.filter = Log_File_Filter;
    setup.must_exist = true;
    auto picked = hooks_.Dialogs().Pick_Open_File(setup);
    if (!picked) return;
    Log_Context c = Ctx();
    Open_Compare_File(c, picked->full_name);
    Clear_LineTextWindow();
    Sync();
}

void QX_Log::File_Close_Compare_Click() {
    Close_Compare(State());
    Update_Chart();
    Sync();
}

void QX_Log::File_Save_As_Click() {
    Take_Settings();
    File_Dialog_Setup setup;
    setup.initial_dir = State().Log_Dir;
    setup.filter = Log_File_Filter;
    setup.default_ext = "qxl";
    setup.confirm_overwrite = true;
    setup.initial_name = State().Log_File_Name;
    auto picked = hooks_.Dialogs().Pick_Save_File(setup);
    if (!picked || picked->full_name.empty()) return;
    Log_Context c = Ctx();
    Save_File(c, picked->full_name);
    Remember_Log_Dir();
    Sync();
}

void QX_Log::Remember_Log_Dir() {
    Proc_Guard guard(app_.log, "Log dir");
    guard.Step([&] { app_.ini.Write_Ini("Default_Logdir", State().Log_Dir); });
}

void QX_Log::Open_Default_File_Click() {
    Log_Context c = Ctx();
    quorlen::Open_Default_File_Click(c);
    Show_Settings();
    Sync();
}

void QX_Log::Save_as_Default_File_Click() {
    if (Take_Settings()) Setup_Changed();
    Log_Context c = Ctx();
    Update_Log_Settings_Setup(c);
    quorlen::Save_as_Default_File_Click(c);
}

void QX_Log::cmd_Clear_Logg_Click() {
    Log_Context c = Ctx();
    quorlen::Check_If_Unsaved_File(c);
    quorlen::cmd_Clear_Logg_Click(c);
    State().Unsaved = false;
    Clear_LineTextWindow();
    Update_Chart();
    Sync();
}

void QX_Log::cmd_Export_Log_qxs_settings_Click() {
    if (hooks_.Take_Settings) hooks_.Take_Settings(State().Log_Dataset_Text);
}

void QX_Log::closeEvent(QCloseEvent* event) {
    // The program is closing: a running log ends, and an unsaved one is not lost unasked.
    if (app_.program.Closing) {
        Log_Context c = Ctx();
        if (State().capture.Logging_Running) Start_Logging(c);
        quorlen::Check_If_Unsaved_File(c);
    }
    Child_Form::closeEvent(event);
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
