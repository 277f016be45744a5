#include "ui/qx_sensor_editor.h"

#include "app/app_context.h"
#include "core/proc_guard.h"
#include "engine/analog_inputs.h"
#include "engine/axis_transform.h"
#include "logging/log_calc.h"
#include "logging/log_state.h"
#include "ui/qt_dialogs.h"

#include <QButtonGroup>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLineSeries>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <QValueAxis>

#include <algorithm>

namespace quorlen::ui {

namespace {

QString Indexed(const char* name, int index) {
    return QStringLiteral("%1(%2)").arg(name).arg(index);
}

QLineEdit* Field(QWidget* parent, const QString& name, int width = 90) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(name);
    edit->setMaximumWidth(width);
    return edit;
}

QPushButton* Button(QWidget* parent, const char* name, const QString& caption, const QString& tip = {}) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    if (!tip.isEmpty()) button->setToolTip(tip);
    return button;
}

// The items are set again only when they changed, since this runs with every refresh of the
// image; the choice stays where it was as far as the list still reaches.
void Set_Items(QComboBox* combo, const QStringList& items) {
    QStringList now;
    for (int k = 0; k < combo->count(); ++k)
        now << combo->itemText(k);
    if (now == items) return;
    QSignalBlocker block(combo);
    int index = combo->currentIndex();
    combo->clear();
    combo->addItems(items);
    combo->setCurrentIndex(std::min(index, static_cast<int>(combo->count()) - 1));
}

void Set_Text(QLineEdit* edit, const std::string& text) {
    QString t = From_8bit(text);
    if (edit->text() != t) edit->setText(t);
}

} // namespace

QX_Sensor_Editor::QX_Sensor_Editor(App_Context& app, Sensor_Editor_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)) {
    setObjectName("QX_Sensor_Editor");
    setWindowTitle("Sensor viewer");
    auto* layout = new QVBoxLayout(this);
    SensorEditor_SSTab_ = new QTabWidget(this);
    SensorEditor_SSTab_->setObjectName("SensorEditor_SSTab");
    SensorEditor_SSTab_->addTab(Build_Select_Page(), "Select tuning sensors");
    SensorEditor_SSTab_->addTab(Build_Editor_Page(), "Sensor editor");
    layout->addWidget(SensorEditor_SSTab_);

    TPS_Timer_ = new QTimer(this);
    TPS_Timer_->setObjectName("TPS_Timer");
    TPS_Timer_->setInterval(TPS_Timer_Interval);
    connect(TPS_Timer_, &QTimer::timeout, this, &QX_Sensor_Editor::TPS_Timer_Timer);

    Update_Grid(editor_);
    Show_Selections();
    Show_Fields();
    Save_sensor_frame_->hide();
}

QX_Sensor_Editor::~QX_Sensor_Editor() = default;

// --- building ------------------------------------------------------------------------------

QWidget* QX_Sensor_Editor::Build_Select_Page() {
    auto* page = new QWidget;
    page->setObjectName("Select_tuning_sensors_page");
    auto* layout = new QVBoxLayout(page);
    auto* grid = new QGridLayout;
    for (int i = 1; i <= Analog_Inputs; ++i) {
        auto* label = new QLabel(QString::fromUtf8(Analog_Input_Label(i).data()), page);
        label->setObjectName(Indexed("AN_Label", i));
        auto* combo = new QComboBox(page);
        combo->setObjectName(Indexed("AN_Combo", i));
        combo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        combo->setMinimumContentsLength(26);
        AN_Combo_[static_cast<std::size_t>(i)] = combo;
        // Six inputs a column: the tuner sees all twelve at once.
        int row = (i - 1) % 6;
        int col = (i - 1) / 6 * 2;
        grid->addWidget(label, row, col);
        grid->addWidget(combo, row, col + 1);
        connect(combo, &QComboBox::activated, this, [this, i](int index) { AN_Combo_Click(i, index); });
    }
    grid->setColumnStretch(4, 1);
    layout->addLayout(grid);

    auto* tps = new QGroupBox("Throttle sensor", page);
    auto* tps_layout = new QHBoxLayout(tps);
    auto* calibrate = Button(tps, "Calibrate_TPS_sens", "Calibrate TPS",
                             "Starts a log, and measures the throttle released and pressed to the floor. The "
                             "result is a new sensor, \"UserDef_Throttle\", on Analog 2");
    connect(calibrate, &QPushButton::clicked, this, &QX_Sensor_Editor::Calibrate_TPS_sens_Click);
    tps_layout->addWidget(calibrate);
    auto* how =
        new QLabel("The engine box must be connected. Follow the messages: release the throttle, then "
                   "press it fully.",
                   tps);
    how->setWordWrap(true);
    tps_layout->addWidget(how, 1);
    layout->addWidget(tps);
    layout->addStretch(1);
    return page;
}

QGroupBox* QX_Sensor_Editor::Build_Definition() {
    auto* box = new QGroupBox("Definition");
    auto* form = new QFormLayout(box);
    txt_SensorName_ = Field(box, "txt_SensorName", 240);
    txt_SensorUnit_ = Field(box, "txt_SensorUnit");
    txt_SensorDecimals_ = Field(box, "txt_SensorDecimals", 50);
    txt_SensorInUnit_ = Field(box, "txt_SensorInUnit");
    form->addRow("Name", txt_SensorName_);
    form->addRow("Unit", txt_SensorUnit_);
    form->addRow("Decimals", txt_SensorDecimals_);
    form->addRow("In signal unit", txt_SensorInUnit_);

    auto* types = new QHBoxLayout;
    Sensor_Type_ = new QButtonGroup(box);
    int id = 0;
    for (const char* caption : {"Linear", "Table", "Linear 2C (negative)"}) {
        auto* option = new QRadioButton(caption, box);
        option->setObjectName(Indexed("Sensor_Type", id));
        Sensor_Type_->addButton(option, id++);
        types->addWidget(option);
    }
    form->addRow("Type", types);
    connect(Sensor_Type_, &QButtonGroup::idClicked, this, [this] { Definition_Edited(); });

    frame_Linear_ = new QFrame(box);
    frame_Linear_->setObjectName("frame_Linear");
    auto* linear = new QFormLayout(frame_Linear_);
    linear->setContentsMargins(0, 0, 0, 0);
    txt_SensorGain_ = Field(frame_Linear_, "txt_SensorGain", 120);
    txt_SensorOffset_ = Field(frame_Linear_, "txt_SensorOffset", 120);
    txt_SensorMin_ = Field(frame_Linear_, "txt_SensorMin", 60);
    txt_SensorMax_ = Field(frame_Linear_, "txt_SensorMax", 60);
    linear->addRow("Gain (value per bit)", txt_SensorGain_);
    linear->addRow("Offset", txt_SensorOffset_);
    linear->addRow("Min raw", txt_SensorMin_);
    linear->addRow("Max raw", txt_SensorMax_);
    form->addRow(frame_Linear_);

    // The points follow the typing at once.
    for (QLineEdit* edit : {txt_SensorName_, txt_SensorUnit_, txt_SensorDecimals_, txt_SensorInUnit_,
                            txt_SensorGain_, txt_SensorOffset_, txt_SensorMin_, txt_SensorMax_})
        connect(edit, &QLineEdit::textEdited, this, [this] { Definition_Edited(); });

    Save_sensor_frame_ = new QFrame(box);
    Save_sensor_frame_->setObjectName("Save_sensor_frame");
    Save_sensor_frame_->setFrameShape(QFrame::StyledPanel);
    auto* save = new QHBoxLayout(Save_sensor_frame_);
    chk_Tuning_ = new QCheckBox("Tuning sensor", Save_sensor_frame_);
    chk_Tuning_->setObjectName("chk_Tuning");
    chk_Log_ = new QCheckBox("Log sensor", Save_sensor_frame_);
    chk_Log_->setObjectName("chk_Log");
    auto* save_button = Button(Save_sensor_frame_, "cmd_SaveSensor", "Save sensor",
                               "A sensor of the same name is replaced, otherwise the sensor is added");
    save->addWidget(chk_Tuning_);
    save->addWidget(chk_Log_);
    save->addStretch(1);
    save->addWidget(save_button);
    form->addRow(Save_sensor_frame_);
    connect(chk_Tuning_, &QCheckBox::toggled, this, [this](bool on) { editor_.chk_Tuning = on; });
    connect(chk_Log_, &QCheckBox::toggled, this, [this](bool on) { editor_.chk_Log = on; });
    connect(save_button, &QPushButton::clicked, this, &QX_Sensor_Editor::cmd_SaveSensor_Click);
    return box;
}

QGroupBox* QX_Sensor_Editor::Build_Create() {
    auto* box = new QGroupBox("Linear sensor through two points");
    auto* grid = new QGridLayout(box);
    grid->addWidget(new QLabel("In [V]", box), 0, 1);
    grid->addWidget(new QLabel("Value", box), 0, 2);
    grid->addWidget(new QLabel("Low", box), 1, 0);
    grid->addWidget(new QLabel("High", box), 2, 0);
    for (int i = 0; i < 4; ++i) {
        QLineEdit* edit = Field(box, Indexed("txt_Create_Sens", i), 70);
        txt_Create_Sens_[static_cast<std::size_t>(i)] = edit;
        grid->addWidget(edit, 1 + i / 2, 1 + i % 2);
    }
    auto* create = Button(box, "cmd_EditSensor", "Create sensor",
                          "Makes a linear sensor through the two points, clamped between them");
    grid->addWidget(create, 1, 3, 2, 1);
    connect(create, &QPushButton::clicked, this, &QX_Sensor_Editor::cmd_EditSensor_Click);
    return box;
}

QGroupBox* QX_Sensor_Editor::Build_Tester() {
    auto* box = new QGroupBox("Sensor tester (the tuning sensor viewed)");
    auto* grid = new QGridLayout(box);
    Text2_ = Field(box, "Text2", 80);
    Text1_ = Field(box, "Text1", 80);
    grid->addWidget(new QLabel("In signal [V]", box), 0, 0);
    grid->addWidget(Text2_, 0, 1);
    grid->addWidget(new QLabel("Real value", box), 1, 0);
    grid->addWidget(Text1_, 1, 1);
    auto* frw = Button(box, "cmd_Frw_Calc", "Calculate out signal");
    auto* rev = Button(box, "cmd_Rev_Calc", "Calculate in signal");
    grid->addWidget(frw, 0, 2);
    grid->addWidget(rev, 1, 2);
    connect(frw, &QPushButton::clicked, this, &QX_Sensor_Editor::cmd_Frw_Calc_Click);
    connect(rev, &QPushButton::clicked, this, &QX_Sensor_Editor::cmd_Rev_Calc_Click);
    return box;
}

QWidget* QX_Sensor_Editor::Build_Grid() {
    auto* panel = new QWidget;
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* display = new QHBoxLayout;
    display->addWidget(new QLabel("In signal shown in", panel));
    In_Display_Combo_ = new QComboBox(panel);
    In_Display_Combo_->setObjectName("In_Display_Combo");
    In_Display_Combo_->addItems({"Volt", "% of 5 V", "bin (0-255)"});
    display->addWidget(In_Display_Combo_);
    display->addStretch(1);
    layout->addLayout(display);
    connect(In_Display_Combo_, &QComboBox::activated, this, [this](int index) {
        editor_.in_display = static_cast<In_Display>(index);
        Show_Grid();
        Show_In_Diagram();
    });

    Sensor_grid_ = new QTableWidget(Sensor_Points, 3, panel);
    Sensor_grid_->setObjectName("Sensor_grid");
    Sensor_grid_->verticalHeader()->hide();
    Sensor_grid_->setSelectionMode(QAbstractItemView::ContiguousSelection);
    Sensor_grid_->verticalHeader()->setDefaultSectionSize(QFontMetrics(font()).height() + 4);
    layout->addWidget(Sensor_grid_, 1);
    connect(Sensor_grid_, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
        if (showing_ || item->column() != 2) return;
        Set_Point_Text(editor_, item->row() + 1, To_8bit(item->text()));
        Definition_Edited();
    });

    point_tools_ = new QWidget(panel);
    auto* tools = new QGridLayout(point_tools_);
    tools->setContentsMargins(0, 0, 0, 0);
    struct Tool {
        const char* name;
        const char* caption;
        const char* tip;
        void (*run)(Sensor_Editor&, int, int);
    };
    const Tool row_tools[] = {
        {"plus", "+", "Increase selected values by 1 unit", &plus},
        {"minus", "-", "Decrease selected values by 1 unit", &minus},
        {"steep", "Steep", "Raise the \"angle\" of the selected values", &steep},
        {"flat", "Flat", "Lower the \"angle\" of the selected values", &flat},
    };
    int col = 0;
    for (const Tool& t : row_tools) {
        auto* b = Button(point_tools_, t.name, t.caption, t.tip);
        tools->addWidget(b, 0, col++);
        auto run = t.run;
        connect(b, &QPushButton::clicked, this, [this, run] { Point_Tool(run); });
    }
    set_table_text_ = Field(point_tools_, "set_table_text", 60);
    scale_table_text_ = Field(point_tools_, "scale_table_text", 60);
    auto* set = Button(point_tools_, "set_table", "Set", "Set all selected values to this value");
    auto* scale =
        Button(point_tools_, "scale_table", "Scale %", "Scale all selected values by this percentage");
    tools->addWidget(set_table_text_, 1, 0);
    tools->addWidget(set, 1, 1);
    tools->addWidget(scale_table_text_, 1, 2);
    tools->addWidget(scale, 1, 3);
    connect(set, &QPushButton::clicked, this, [this] { Point_Tool(&set_table); });
    connect(scale, &QPushButton::clicked, this, [this] { Point_Tool(&scale_table); });
    layout->addWidget(point_tools_);
    return panel;
}

QWidget* QX_Sensor_Editor::Build_Editor_Page() {
    auto* page = new QWidget;
    page->setObjectName("Sensor_editor_page");
    auto* frame = new QFrame(page);
    frame->setObjectName("frame_Sensor_Editor");
    auto* outer = new QVBoxLayout(page);
    outer->addWidget(frame);
    auto* layout = new QHBoxLayout(frame);

    auto* left = new QVBoxLayout;
    auto* views = new QFormLayout;
    View_Tuning_Sensor_Combo_ = new QComboBox(frame);
    View_Tuning_Sensor_Combo_->setObjectName("View_Tuning_Sensor_Combo");
    View_Tuning_Sensor_Combo_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    View_Log_Sensor_Combo_ = new QComboBox(frame);
    View_Log_Sensor_Combo_->setObjectName("View_Log_Sensor_Combo");
    View_Log_Sensor_Combo_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    View_Tuning_Sensor_Combo_->setPlaceholderText("choose a sensor to view");
    View_Log_Sensor_Combo_->setPlaceholderText("choose a sensor to view");
    views->addRow("View tuning sensor", View_Tuning_Sensor_Combo_);
    views->addRow("View log sensor", View_Log_Sensor_Combo_);
    left->addLayout(views);
    connect(View_Tuning_Sensor_Combo_, &QComboBox::activated, this,
            &QX_Sensor_Editor::View_Tuning_Sensor_Combo_Click);
    connect(View_Log_Sensor_Combo_, &QComboBox::activated, this,
            &QX_Sensor_Editor::View_Log_Sensor_Combo_Click);
    left->addWidget(Build_Definition());
    left->addWidget(Build_Create());
    left->addWidget(Build_Tester());
    left->addStretch(1);
    layout->addLayout(left);

    layout->addWidget(Build_Grid());

    auto* chart = new QChart;
    chart->legend()->hide();
    series_ = new QLineSeries(chart);
    series_->setPointsVisible(true);
    chart->addSeries(series_);
    auto* x = new QValueAxis(chart);
    auto* y = new QValueAxis(chart);
    x->setTitleText("in signal");
    y->setTitleText("real value");
    x->setLabelFormat("%g");
    y->setLabelFormat("%g");
    chart->addAxis(x, Qt::AlignBottom);
    chart->addAxis(y, Qt::AlignLeft);
    series_->attachAxis(x);
    series_->attachAxis(y);
    Sensor_chart_ = new QChartView(chart, frame);
    Sensor_chart_->setObjectName("Sensor_chart");
    Sensor_chart_->setRenderHint(QPainter::Antialiasing);
    Sensor_chart_->setMinimumSize(360, 300);
    layout->addWidget(Sensor_chart_, 1);
    return page;
}

// --- showing -------------------------------------------------------------------------------

void QX_Sensor_Editor::Show_Selections() {
    const Analog_Selection& in = app_.sensors.inputs;
    QStringList names;
    for (const std::string& name : in.Selection_List)
        names << From_8bit(name);
    for (int i = 1; i <= Analog_Inputs; ++i) {
        QComboBox* combo = AN_Combo_[static_cast<std::size_t>(i)];
        QSignalBlocker block(combo);
        Set_Items(combo, names);
        combo->setCurrentIndex(in.An_Combo_Index[static_cast<std::size_t>(i)]);
    }
    QStringList tuning;
    for (const std::string& item : in.Sensor_View_List)
        tuning << From_8bit(item);
    Set_Items(View_Tuning_Sensor_Combo_, tuning);
    QStringList log_sensors;
    const Log_State& log = *app_.log_state;
    for (int r = 0; r < log.Log_Sens_Count; ++r) {
        const Log_Sensor_Row& row = log.Log_Sens_Tab[static_cast<std::size_t>(r)];
        log_sensors << From_8bit(row[0] + ", " + row[1]);
    }
    Set_Items(View_Log_Sensor_Combo_, log_sensors);
}

std::vector<std::pair<QLineEdit*, std::string*>> QX_Sensor_Editor::Fields() {
    Sensor_Editor& e = editor_;
    std::vector<std::pair<QLineEdit*, std::string*>> fields = {{txt_SensorName_, &e.txt_SensorName},
                                                               {txt_SensorUnit_, &e.txt_SensorUnit},
                                                               {txt_SensorDecimals_, &e.txt_SensorDecimals},
                                                               {txt_SensorInUnit_, &e.txt_SensorInUnit},
                                                               {txt_SensorGain_, &e.txt_SensorGain},
                                                               {txt_SensorOffset_, &e.txt_SensorOffset},
                                                               {txt_SensorMin_, &e.txt_SensorMin},
                                                               {txt_SensorMax_, &e.txt_SensorMax},
                                                               {set_table_text_, &e.set_table_text},
                                                               {scale_table_text_, &e.scale_table_text},
                                                               {Text1_, &e.Text1},
                                                               {Text2_, &e.Text2}};
    for (std::size_t i = 0; i < txt_Create_Sens_.size(); ++i)
        fields.emplace_back(txt_Create_Sens_[i], &e.txt_Create_Sens[i]);
    return fields;
}

void QX_Sensor_Editor::Take_Fields() {
    for (auto [edit, text] : Fields())
        *text = To_8bit(edit->text());
    if (Sensor_Type_->checkedId() >= 0)
        editor_.Sensor_Type = static_cast<Sensor_Kind>(Sensor_Type_->checkedId());
}

void QX_Sensor_Editor::Show_Fields() {
    const Sensor_Editor& e = editor_;
    for (auto [edit, text] : Fields())
        Set_Text(edit, *text);
    Sensor_Type_->button(static_cast<int>(e.Sensor_Type))->setChecked(true);
    {
        QSignalBlocker a(chk_Tuning_), b(chk_Log_);
        chk_Tuning_->setChecked(e.chk_Tuning);
        chk_Log_->setChecked(e.chk_Log);
    }
    frame_Linear_->setVisible(e.Sensor_Type != Sensor_Kind::Table);
    point_tools_->setEnabled(e.Sensor_Type == Sensor_Kind::Table);
    Show_Grid();
    Show_In_Diagram();
}

void QX_Sensor_Editor::Show_Grid() {
    showing_ = true;
    const Sensor_Editor& e = editor_;
    Sensor_grid_->setHorizontalHeaderLabels(
        {From_8bit(Grid_Heading(e, 1)), From_8bit(Grid_Heading(e, 2)), From_8bit(Grid_Heading(e, 3))});
    bool editable = e.Sensor_Type == Sensor_Kind::Table;
    for (int i = 1; i <= Sensor_Points; ++i) {
        const QString texts[] = {QString::number(i), From_8bit(Grid_In_Text(e, i)),
                                 From_8bit(Grid_Out_Text(e, i))};
        for (int c = 0; c < 3; ++c) {
            QTableWidgetItem* item = Sensor_grid_->item(i - 1, c);
            if (item == nullptr) {
                item = new QTableWidgetItem;
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                Sensor_grid_->setItem(i - 1, c, item);
            }
            item->setText(texts[c]);
            Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
            if (c == 2 && editable) flags |= Qt::ItemIsEditable;
            item->setFlags(flags);
        }
    }
    Sensor_grid_->resizeColumnsToContents();
    showing_ = false;
}

void QX_Sensor_Editor::Show_In_Diagram() {
    QList<QPointF> points;
    double lo = 0, hi = 0;
    for (int i = 1; i <= Sensor_Points; ++i) {
        double x = Grid_In_Value(editor_, i);
        double y = editor_.points[static_cast<std::size_t>(i)];
        points.append(QPointF(x, y));
        lo = i == 1 ? y : std::min(lo, y);
        hi = i == 1 ? y : std::max(hi, y);
    }
    series_->replace(points);
    auto axes = Sensor_chart_->chart()->axes();
    auto* x = static_cast<QValueAxis*>(axes[0]);
    auto* y = static_cast<QValueAxis*>(axes[1]);
    // Ticks at whole volts, every 20 % or every 32 bits, up to the last point.
    x->setRange(0, points.last().x());
    x->setTickType(QValueAxis::TicksDynamic);
    x->setTickAnchor(0);
    x->setTickInterval(editor_.in_display == In_Display::Volts     ? 1
                       : editor_.in_display == In_Display::Percent ? 20
                                                                   : 32);
    double pad = std::max((hi - lo) * 0.05, 0.5);
    y->setRange(lo - pad, hi + pad);
    y->applyNiceNumbers();
    x->setTitleText(From_8bit("in signal " + In_Unit_Text(editor_)));
    std::string unit = Out_Unit_Text(editor_);
    y->setTitleText(From_8bit(unit.empty() ? "real value" : "real value " + unit));
}

void QX_Sensor_Editor::Definition_Edited() {
    Take_Fields();
    Update_Grid(editor_);
    Show_Fields();
    Save_sensor_frame_->show();
}

void QX_Sensor_Editor::Point_Tool(void (*tool)(Sensor_Editor&, int, int)) {
    auto ranges = Sensor_grid_->selectedRanges();
    if (ranges.isEmpty()) return;
    Take_Fields();
    tool(editor_, ranges.first().topRow() + 1, ranges.first().bottomRow() + 1);
    Show_Fields();
    Save_sensor_frame_->show();
}

// --- the inputs ----------------------------------------------------------------------------

void QX_Sensor_Editor::AN_Combo_Click(int input, int index) {
    Analog_Choice_Context ctx{app_.sensors, app_.image,       app_.ini, app_.texts,
                              app_.log,     hooks_.Dialogs(), app_.undo};
    Analog_Hooks hooks;
    hooks.Update_Tabs = hooks_.Update_Tabs;
    hooks.Update_All = hooks_.Update_All;
    hooks.Update_scroll_change = hooks_.Update_scroll_change;
    Sensor_Choice_Click(ctx, input, index, hooks);
    Show_Selections();
}

// --- saving --------------------------------------------------------------------------------

Sensor_Save_Hooks QX_Sensor_Editor::Save_Hooks() {
    Sensor_Save_Hooks h;
    h.Sensors_Changed = [this] {
        if (hooks_.Update_Tabs) hooks_.Update_Tabs();
        if (hooks_.Update_All) hooks_.Update_All();
        if (hooks_.Update_scroll_change) hooks_.Update_scroll_change();
        Show_Selections();
    };
    h.Save_Log_Sensor = [this](const Log_Sensor_Row& row) {
        Log_State& log = *app_.log_state;
        int r = Store_Log_Sensor(log.Log_Sens_Tab, log.Log_Sens_Count, row);
        if (r >= 0 && hooks_.Log_Sensors_Changed) hooks_.Log_Sensors_Changed();
        Show_Selections();
        return r;
    };
    return h;
}

void QX_Sensor_Editor::cmd_SaveSensor_Click() {
    Take_Fields();
    Sensor_Save_Context ctx{editor_,    app_.sensors, app_.image,      app_.ini,
                            app_.texts, app_.log,     hooks_.Dialogs()};
    cmd_SaveSensor(ctx, Save_Hooks());
    Save_sensor_frame_->hide();
}

void QX_Sensor_Editor::cmd_EditSensor_Click() {
    Take_Fields();
    if (!cmd_EditSensor(editor_)) return;
    Show_Fields();
    Save_sensor_frame_->show();
}

void QX_Sensor_Editor::View_Tuning_Sensor_Combo_Click(int index) {
    View_Tuning_Sensor(editor_, app_.sensors.table, index);
    Show_Fields();
    Save_sensor_frame_->hide();
}

void QX_Sensor_Editor::View_Log_Sensor_Combo_Click(int index) {
    const Log_State& log = *app_.log_state;
    if (index < 0 || index >= log.Log_Sens_Count) return;
    View_Log_Sensor(editor_, log.Log_Sens_Tab[static_cast<std::size_t>(index)]);
    Show_Fields();
    Save_sensor_frame_->hide();
}

// --- tester --------------------------------------------------------------------------------

void QX_Sensor_Editor::cmd_Frw_Calc_Click() {
    Take_Fields();
    cmd_Frw_Calc(editor_, app_.sensors.table, View_Tuning_Sensor_Combo_->currentIndex());
    Set_Text(Text1_, editor_.Text1);
}

void QX_Sensor_Editor::cmd_Rev_Calc_Click() {
    Take_Fields();
    Proc_Guard guard(app_.log, "cmd Rev Calc");
    guard.Step([&] { cmd_Rev_Calc(editor_, app_.sensors.table, View_Tuning_Sensor_Combo_->currentIndex()); });
    Set_Text(Text2_, editor_.Text2);
}

// --- the throttle calibration ------------------------------------------------------------------

TPS_Hooks QX_Sensor_Editor::Tps_Hooks() {
    TPS_Hooks h;
    h.Start_Logging = hooks_.Start_Logging;
    h.Logging_Running = [this] { return app_.log_state->capture.Logging_Running; };
    h.Live_Raw = [this] { return Live_Raw_Input(*app_.log_state, 2); };
    h.Save_Sensor = [this] {
        Sensor_Save_Context ctx{editor_,    app_.sensors, app_.image,      app_.ini,
                                app_.texts, app_.log,     hooks_.Dialogs()};
        return cmd_SaveSensor(ctx, Save_Hooks());
    };
    h.Select_Input_2 = [this](int sensor) { AN_Combo_Click(2, sensor); };
    h.Throttle_Load_Steps = [this](int min_raw, int max_raw) {
        Axis_Context ctx{app_.image, app_.sensors, app_.undo, app_.log};
        Throttle_Load_Steps(ctx, min_raw, max_raw, {hooks_.Update_Tabs, nullptr, hooks_.Update_All});
    };
    return h;
}

void QX_Sensor_Editor::Calibrate_TPS_sens_Click() {
    quorlen::Calibrate_TPS_sens_Click(tps_, Tps_Hooks());
    if (tps_.TPS_Timer_Enabled) TPS_Timer_->start();
}

void QX_Sensor_Editor::TPS_Timer_Timer() {
    Take_Fields();
    quorlen::TPS_Timer_Timer(tps_, editor_, hooks_.Dialogs(), Tps_Hooks());
    if (!tps_.TPS_Timer_Enabled) TPS_Timer_->stop();
    Show_Fields();
    if (tps_.TPS_Calib_State == 0) Save_sensor_frame_->hide();
}

} // namespace quorlen::ui
