// Building the settings form: the tabs, the frames of each, the sliders and choices in them,
// and the charts.

#include "ui/engine_config_box.h"
#include "ui/map_axes_panel.h"
#include "ui/model_preset_box.h"
#include "ui/qt_dialogs.h"
#include "ui/qx_settings.h"
#include "ui/table_models.h"

#include "tables/cell_entry.h"

#include <QButtonGroup>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProxyStyle>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleOptionTab>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>
#include <QValueAxis>

namespace quorlen::ui {

namespace {

QString Name(const char* base, int index) {
    return QStringLiteral("%1_%2").arg(base).arg(index);
}

QString Text_Of(std::string_view text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

// How many grid rows a frame takes, to balance the two columns of a tab.
int Frame_Rows(const Page_Frame& frame) {
    int rows = 0;
    for (const Page_Param& p : Page_Params())
        if (std::string_view(p.frame) == frame.name) ++rows;
    for (const Page_Choice& c : Page_Choices())
        if (std::string_view(c.frame) == frame.name) rows += c.style == Choice_Style::Options ? 2 : 1;
    return (rows + frame.columns - 1) / frame.columns + 1;
}

// Fifteen tabs do not fit side by side on a laptop screen: they stand down the left edge,
// their captions written across as usual.
class Side_Tab_Style final : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override {
        QSize s = QProxyStyle::sizeFromContents(type, option, size, widget);
        if (type == CT_TabBarTab) s.transpose();
        return s;
    }

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
        if (element == CE_TabBarTabLabel) {
            if (const auto* tab = qstyleoption_cast<const QStyleOptionTab*>(option)) {
                QStyleOptionTab across(*tab);
                across.shape = QTabBar::RoundedNorth;
                QProxyStyle::drawControl(element, &across, painter, widget);
                return;
            }
        }
        QProxyStyle::drawControl(element, option, painter, widget);
    }
};

} // namespace

void QX_settings::Show_Engine_On(const std::string& text) {
    Engine_On_label_->setText(QString::fromLatin1(text.c_str()));
}

void QX_settings::Build() {
    setWindowTitle("Settings");
    auto* layout = new QVBoxLayout(this);

    auto* top = new QHBoxLayout;
    Find_Setting_txt_ = new QLineEdit(this);
    Find_Setting_txt_->setObjectName("Find_Setting_txt");
    Find_Setting_txt_->setPlaceholderText("Find setting");
    Find_Setting_txt_->setClearButtonEnabled(true);
    Find_Setting_txt_->setMaximumWidth(360);
    top->addWidget(Find_Setting_txt_);
    top->addStretch(1);
    Engine_On_label_ = new QLabel(QString::fromLatin1(app_.log_state->form.Engine_On_Text.c_str()), this);
    Engine_On_label_->setObjectName("Engine_On_label");
    top->addWidget(Engine_On_label_);
    layout->addLayout(top);

    QX_Settings_SSTab_ = new QTabWidget(this);
    QX_Settings_SSTab_->setObjectName("QX_Settings_SSTab");
    QX_Settings_SSTab_->setTabPosition(QTabWidget::West);
    auto* side_style = new Side_Tab_Style;
    side_style->setParent(this);
    QX_Settings_SSTab_->tabBar()->setStyle(side_style);
    for (int t = 0; t < Settings_Tab_Count; ++t)
        QX_Settings_SSTab_->addTab(Build_Tab(t), Text_Of(Settings_Tab_Caption(t)));
    QX_Settings_SSTab_->setTabVisible(Settings_Tab::Unused, false);
    layout->addWidget(QX_Settings_SSTab_, 1);

    auto* bottom = new QHBoxLayout;
    bottom->addStretch(1);
    auto* ok = new QPushButton("OK", this);
    ok->setObjectName("OK");
    ok->setMinimumWidth(100);
    connect(ok, &QPushButton::clicked, this, &QX_settings::hide);
    bottom->addWidget(ok);
    layout->addLayout(bottom);

    QStringList labels;
    for (auto& row : rows_)
        if (!labels.contains(row->search_label)) labels << row->search_label;
    for (auto& choice : choices_)
        labels << From_8bit(choice->c->caption);
    auto* completer = new QCompleter(labels, this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    Find_Setting_txt_->setCompleter(completer);
    connect(Find_Setting_txt_, &QLineEdit::textChanged, this, &QX_settings::Find_Setting);
    connect(Find_Setting_txt_, &QLineEdit::returnPressed, this, &QX_settings::Find_Setting_Jump);
    connect(completer, qOverload<const QString&>(&QCompleter::activated), this, [this](const QString& text) {
        Find_Setting(text);
        Find_Setting_Jump();
    });
    resize(1240, 760);
}

QWidget* QX_settings::Build_Tab(int tab) {
    auto* area = new QScrollArea(QX_Settings_SSTab_);
    area->setObjectName(Name("QX_Settings_SSTab_page", tab));
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    auto* page = new QWidget(area);
    auto* outer = new QVBoxLayout(page);
    auto* columns = new QHBoxLayout;
    auto* left = new QVBoxLayout;
    auto* right = new QVBoxLayout;
    int left_rows = 0, right_rows = 0;
    for (const Page_Frame& frame : Page_Frames()) {
        if (frame.tab != tab) continue;
        QGroupBox* box = Build_Frame(frame, page);
        QLabel* hint = nullptr;
        if (frame.hint != nullptr) {
            hint = new QLabel(From_8bit(frame.hint), page);
            hint->setObjectName(QString(frame.name) + "_hint");
            hint->setWordWrap(true);
            hint->setStyleSheet("color: palette(dark); font-style: italic; padding: 6px");
            hints_[frame.name] = hint;
        }
        // Wide frames (several columns of sliders) take the whole width.
        QVBoxLayout* column = outer;
        if (frame.columns == 1) {
            int rows = Frame_Rows(frame);
            column = left_rows <= right_rows ? left : right;
            (column == left ? left_rows : right_rows) += rows;
        }
        column->addWidget(box);
        if (hint != nullptr) column->addWidget(hint);
    }
    Build_Tab_Extras(tab, page, left, right);
    left->addStretch(1);
    right->addStretch(1);
    columns->addLayout(left, 1);
    columns->addLayout(right, 1);
    outer->addLayout(columns, 1);
    area->setWidget(page);
    pages_[static_cast<std::size_t>(tab)] = area;
    return area;
}

QGroupBox* QX_settings::Build_Frame(const Page_Frame& frame, QWidget* parent) {
    auto* box = new QGroupBox(From_8bit(frame.caption), parent);
    box->setObjectName(frame.name);
    frames_[frame.name] = box;
    if (std::string_view(frame.name) == "Digital_Output_frame") {
        Build_Digital_Outputs(box);
        return box;
    }
    auto* grid = new QGridLayout(box);
    int row = 0;
    for (const Page_Choice& c : Page_Choices())
        if (std::string_view(c.frame) == frame.name) Add_Choice(c, box, grid, row++);
    int k = 0;
    for (const Page_Param& p : Page_Params()) {
        if (std::string_view(p.frame) != frame.name) continue;
        Row& r = Add_Row(p, box);
        int grid_row = row + k / frame.columns;
        int col = 4 * (k % frame.columns);
        grid->addWidget(r.label, grid_row, col);
        grid->addWidget(r.scroll, grid_row, col + 1);
        grid->addWidget(r.text, grid_row, col + 2);
        grid->addWidget(r.unit, grid_row, col + 3);
        ++k;
    }
    for (int c = 0; c < frame.columns; ++c) {
        grid->setColumnStretch(4 * c, 3);
        grid->setColumnStretch(4 * c + 1, 2);
    }
    return box;
}

QX_settings::Row& QX_settings::Add_Row(const Page_Param& p, QWidget* parent) {
    auto row = std::make_unique<Row>();
    row->p = &p;
    const bool named = p.control != nullptr;
    if (*p.label != 0) {
        row->label = new QLabel(From_8bit(p.label), parent);
        row->label->setObjectName(named ? QString(p.control) + "_label" : Name("scroll_label", p.address));
        row->label->setWordWrap(true);
        row->label->setMinimumWidth(150);
        row->search_label = row->label->text();
    }
    row->scroll = new QScrollBar(Qt::Horizontal, parent);
    row->scroll->setObjectName(named ? QString(p.control) : Name("scroll", p.address));
    row->scroll->setRange(p.min, p.max);
    row->scroll->setSingleStep(1);
    row->scroll->setPageStep(p.wide ? 100 : std::max(1, (p.max - p.min + 1) / 16));
    row->scroll->setFocusPolicy(Qt::StrongFocus);
    // Right and Page Up raise the value (a scroll bar's own default runs the other way).
    row->scroll->setInvertedControls(false);
    // The image takes the value when the thumb is let go; meanwhile the text follows it.
    row->scroll->setTracking(false);
    row->scroll->setMinimumWidth(140);
    row->text = new QLineEdit(parent);
    row->text->setObjectName(named ? QString(p.control) + "_text" : Name("scroll_text", p.address));
    row->text->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    row->text->setFixedWidth(QFontMetrics(row->text->font()).horizontalAdvance("Analog 12  ") + 12);
    row->unit = new QLabel(parent);
    row->unit->setObjectName(named ? QString(p.control) + "_unit" : Name("scroll_unit_label", p.address));
    row->unit->setMinimumWidth(QFontMetrics(row->unit->font()).horizontalAdvance("dV/samp"));

    const int address = p.address;
    connect(row->scroll, &QScrollBar::valueChanged, this, [this, address](int value) {
        if (!showing_) scroll_Change(address, value);
    });
    connect(row->scroll, &QScrollBar::sliderMoved, this, [this, address](int value) {
        Row* r = row_of_[static_cast<std::size_t>(address)];
        Pages_Context ctx = app_.Pages();
        r->text->setText(From_8bit(Scroll_Text_At(ctx, *r->p, value).text));
    });
    connect(row->text, &QLineEdit::editingFinished, this, [this, address] { Text_Entered(address); });

    Row& ref = *row;
    row_of_[static_cast<std::size_t>(address)] = row.get();
    rows_.push_back(std::move(row));
    return ref;
}

QX_settings::Choice& QX_settings::Add_Choice(const Page_Choice& c, QWidget* parent, QGridLayout* grid,
                                             int row) {
    auto choice = std::make_unique<Choice>();
    choice->c = &c;
    const QString tip = c.source == Choice_Items::Fixed
                            ? QString()
                            : QStringLiteral("Select MAP table data, as defined in qxcard.ini");
    const auto items = Choice_Item_Texts(app_.pages, c);
    if (c.style != Choice_Style::Check) {
        choice->caption = new QLabel(From_8bit(c.caption), parent);
        choice->caption->setObjectName(QString(c.name) + "_label");
    }
    switch (c.style) {
    case Choice_Style::Combo: {
        choice->combo = new QComboBox(parent);
        choice->combo->setObjectName(c.name);
        for (const std::string& item : items)
            choice->combo->addItem(From_8bit(item));
        choice->combo->setToolTip(tip);
        connect(choice->combo, qOverload<int>(&QComboBox::activated), this,
                [this, &c](int n) { Choice_Clicked(c, n); });
        choice->control = choice->combo;
        break;
    }
    case Choice_Style::Options: {
        auto* box = new QWidget(parent);
        box->setObjectName(c.name);
        auto* options = new QGridLayout(box);
        options->setContentsMargins(0, 0, 0, 0);
        choice->group = new QButtonGroup(box);
        const int per_row = items.size() > 3 ? 2 : static_cast<int>(items.size());
        for (std::size_t i = 0; i < items.size(); ++i) {
            auto* option = new QRadioButton(From_8bit(items[i]), box);
            if (i < c.option_names.size() && c.option_names[i] != nullptr)
                option->setObjectName(c.option_names[i]);
            choice->group->addButton(option, static_cast<int>(i));
            options->addWidget(option, static_cast<int>(i) / per_row, static_cast<int>(i) % per_row);
        }
        connect(choice->group, &QButtonGroup::idClicked, this, [this, &c](int n) { Choice_Clicked(c, n); });
        choice->control = box;
        break;
    }
    case Choice_Style::Check:
        choice->check = new QCheckBox(From_8bit(c.caption), parent);
        choice->check->setObjectName(c.name);
        connect(choice->check, &QCheckBox::clicked, this,
                [this, &c](bool on) { Choice_Clicked(c, on ? 1 : 0); });
        choice->control = choice->check;
        break;
    }
    if (grid != nullptr) {
        if (choice->caption != nullptr) {
            grid->addWidget(choice->caption, row, 0);
            grid->addWidget(choice->control, row, 1, 1, 3);
        } else {
            grid->addWidget(choice->control, row, 0, 1, 4);
        }
    }
    Choice& ref = *choice;
    choices_.push_back(std::move(choice));
    return ref;
}

QX_settings::Chart* QX_settings::Add_Chart(QWidget* parent, const QString& name, const QString& title) {
    auto chart = std::make_unique<Chart>();
    chart->chart = new QChart;
    chart->chart->setTitle(title);
    chart->chart->legend()->setAlignment(Qt::AlignBottom);
    chart->x = new QValueAxis(chart->chart);
    chart->y = new QValueAxis(chart->chart);
    chart->x->setLabelFormat("%g");
    chart->y->setLabelFormat("%g");
    chart->chart->addAxis(chart->x, Qt::AlignBottom);
    chart->chart->addAxis(chart->y, Qt::AlignLeft);
    chart->view = new QChartView(chart->chart, parent);
    chart->view->setObjectName(name);
    chart->view->setRenderHint(QPainter::Antialiasing);
    chart->view->setMinimumHeight(260);
    Chart* ref = chart.get();
    charts_.push_back(std::move(chart));
    return ref;
}

void QX_settings::Build_Digital_Outputs(QGroupBox* box) {
    auto* grid = new QGridLayout(box);
    for (int i = 0; i < 4; ++i) {
        const int col = 1 + i;
        const auto index = static_cast<std::size_t>(i);
        Choice& function =
            Add_Choice(*Find_Page_Choice(Name("digital_combo", i).toStdString()), box, nullptr, 0);
        grid->addWidget(function.caption, 0, col);
        grid->addWidget(function.control, 1, col);
        Choice& sensor =
            Add_Choice(*Find_Page_Choice(Name("Digital_sensor_combo", i).toStdString()), box, nullptr, 0);
        Digital_Sensor_label_[index] = new QLabel("Sensor", box);
        Digital_Sensor_label_[index]->setObjectName(Name("Digital_Sensor_label", i));
        delete sensor.caption; // the column's own "Sensor" label names it
        sensor.caption = nullptr;
        auto* sensor_line = new QHBoxLayout;
        sensor_line->addWidget(Digital_Sensor_label_[index]);
        sensor_line->addWidget(sensor.control, 1);
        grid->addLayout(sensor_line, 2, col);
        for (int k = 0; k < 4; ++k) {
            const int address = 231 + 5 * i + k;
            Row& r = Add_Row(*Find_Page_Param(address), box);
            if (r.label != nullptr) {
                row_headers_[static_cast<std::size_t>(k)] = r.label;
                r.label->setMinimumWidth(80);
                grid->addWidget(r.label, 3 + k, 0);
            }
            r.search_label = From_8bit(Param_Label(*r.p));
            auto* cell = new QHBoxLayout;
            r.scroll->setMinimumWidth(90);
            cell->addWidget(r.scroll, 1);
            cell->addWidget(r.text);
            cell->addWidget(r.unit);
            grid->addLayout(cell, 3 + k, col);
        }
        Dig_chart_frame_[index] = new QGroupBox(box);
        Dig_chart_frame_[index]->setObjectName(Name("Dig_chart_frame", i));
        auto* chart_layout = new QVBoxLayout(Dig_chart_frame_[index]);
        chart_layout->setContentsMargins(0, 0, 0, 0);
        Dig_chart_[index] = Add_Chart(Dig_chart_frame_[index], Name("Dig_chart", i), QString());
        Dig_chart_[index]->view->setMinimumHeight(200);
        Dig_chart_[index]->chart->legend()->hide();
        Dig_chart_[index]->x->setTickCount(3);
        Dig_chart_[index]->y->setTickCount(2);
        chart_layout->addWidget(Dig_chart_[index]->view);
        grid->addWidget(Dig_chart_frame_[index], 7, col);
        grid->setColumnStretch(col, 1);
        grid->setColumnMinimumWidth(col, 215);
    }
}

// The PWM2 extra fuel table under its switch: the output's duty down the side, the fuel it
// adds beside, typed into as the one-dimensional maps are.
void QX_settings::Build_Pwm_Fuel_Grid(QGroupBox* box) {
    auto* grid = static_cast<QGridLayout*>(box->layout());
    Pwm_Fuel_Model_ =
        new Image_Table_Model([this] { return app_.Tables(hooks_.Dialogs()); }, Table_Id::Pwm2_Fuel, this);
    PWM2_FuelCorr_grid_ = new QTableView(box);
    QTableView* view = PWM2_FuelCorr_grid_;
    view->setObjectName("PWM2_FuelCorr_grid");
    view->setModel(Pwm_Fuel_Model_);
    view->horizontalHeader()->hide();
    view->verticalHeader()->hide();
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setCornerButtonEnabled(false);
    view->setSelectionMode(QAbstractItemView::ContiguousSelection);
    view->setItemDelegate(new Grid_Cell_Delegate(view));
    Pwm_Fuel_Model_->Set_Font(view->font());
    view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    view->verticalHeader()->setDefaultSectionSize(QFontMetrics(view->font()).height() + 6);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
    view->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    view->installEventFilter(this);
    // Any move of the selection starts a new number.
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { Grid_RowColChange(app_.tables); });
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this] { Grid_RowColChange(app_.tables); });
    grid->addWidget(view, grid->rowCount(), 0, 1, 4, Qt::AlignLeft);
}

QWidget* QX_settings::Build_Map_Axes(Map_Head head, QWidget* page) {
    const bool fuel = head == Map_Head::Fuel;
    Map_Axes_Hooks hooks{hooks_.Dialogs, hooks_.Update_Tabs, hooks_.Show_Right_Tabs, hooks_.Update_All};
    auto* panel = new Map_Axes_Panel(app_, head, std::move(hooks),
                                     fuel ? "Fuel map size and axes" : "Ignition map size and axes", page);
    auto* convert = new QPushButton("Size conversion...", panel);
    convert->setObjectName(fuel ? "Fuel_Transform_3D_cmd" : "Ign_Transform_3D_cmd");
    convert->setToolTip("Change the size or the axes of the map and convert it, keeping its values");
    panel->Buttons()->addWidget(convert);
    connect(convert, &QPushButton::clicked, this, [this, fuel] {
        if (hooks_.Show_Transform_3D) hooks_.Show_Transform_3D(fuel ? 0 : 1);
    });
    axes_[fuel ? 0 : 1] = panel;
    return panel;
}

void QX_settings::Build_Tab_Extras(int tab, QWidget* page, QVBoxLayout* left, QVBoxLayout* right) {
    auto grid_of = [this](const char* frame) { return static_cast<QGridLayout*>(frames_[frame]->layout()); };
    switch (tab) {
    case Settings_Tab::PWM_Outputs:
        Build_Pwm_Fuel_Grid(frames_["PWM2_FuelCorr_frame"]);
        break;
    case Settings_Tab::Temp_Corrections:
        Temp_Chart_ = Add_Chart(page, "Temp_Chart", "Temperature corrections");
        right->addWidget(Temp_Chart_->view);
        break;
    case Settings_Tab::Start_Up:
        Startup_Chart_ = Add_Chart(page, "Startup_Chart", "Start up corrections");
        right->addWidget(Startup_Chart_->view);
        break;
    case Settings_Tab::Fuel_Settings:
        Battery_Chart_ = Add_Chart(page, "Battery_Chart", "Battery correction");
        Battery_Chart_->chart->legend()->hide();
        right->addWidget(Battery_Chart_->view);
        left->addWidget(Build_Map_Axes(Map_Head::Fuel, page));
        break;
    case Settings_Tab::Ignition:
        right->addWidget(Build_Map_Axes(Map_Head::Ignition, page));
        break;
    case Settings_Tab::Digital_Inputs: {
        QGridLayout* dig2 = grid_of("Dig2_frame");
        Dig2_AutoTune_lable_ = new QLabel("Long term adaptive is switched on and off by Digital 2 in", page);
        Dig2_AutoTune_lable_->setObjectName("Dig2_AutoTune_lable");
        Dig2_AutoTune_lable_->setWordWrap(true);
        dig2->addWidget(Dig2_AutoTune_lable_, dig2->rowCount(), 0, 1, 4);
        auto* description = new QGroupBox("What the inputs control", page);
        description->setObjectName("Description_frame");
        auto* lines = new QVBoxLayout(description);
        for (int i = 0; i < 2; ++i) {
            auto* label = new QLabel(description);
            label->setObjectName(Name("Description_label", i));
            lines->addWidget(label);
            Description_label_[static_cast<std::size_t>(i)] = label;
        }
        right->addWidget(description);
        break;
    }
    case Settings_Tab::Analog_Settings: {
        auto* inputs = new QGroupBox("Sensors of the analogue inputs", page);
        inputs->setObjectName("Analog_Inputs_frame");
        auto* lines = new QVBoxLayout(inputs);
        Analog_Input_Sensors_ = new QLabel(inputs);
        Analog_Input_Sensors_->setObjectName("Analog_Input_Sensors");
        Analog_Input_Sensors_->setTextInteractionFlags(Qt::TextSelectableByMouse);
        lines->addWidget(Analog_Input_Sensors_);
        right->addWidget(inputs);
        break;
    }
    case Settings_Tab::Limits_Warnings: {
        auto* clear = new QPushButton("Clear error counters", page);
        clear->setObjectName("Clear_Err_Counters_cmd");
        clear->setEnabled(static_cast<bool>(hooks_.Clear_Err_Counters));
        connect(clear, &QPushButton::clicked, this, [this] {
            if (hooks_.Clear_Err_Counters) hooks_.Clear_Err_Counters();
        });
        right->addWidget(clear, 0, Qt::AlignLeft);
        break;
    }
    case Settings_Tab::Engine_Setup: {
        // The engine layout frame (catalogue, guide) stands here, above the teeth.
        auto* slot = new QWidget(page);
        slot->setObjectName("Engine_Config_slot");
        auto* slot_layout = new QVBoxLayout(slot);
        slot_layout->setContentsMargins(0, 0, 0, 0);
        Engine_Config_frame_ = new Engine_Config_Box(app_, hooks_.Update_All, slot);
        Engine_Config_frame_->Init();
        slot_layout->addWidget(Engine_Config_frame_);
        left->insertWidget(0, slot);
        Model_preset_frame_ = new Model_Preset_Box(app_, hooks_.Dialogs, hooks_.Update_All, page);
        Model_preset_frame_->Init();
        right->addWidget(Model_preset_frame_);
        QGridLayout* teeth = grid_of("Crank_Teeth_frame");
        Forbidden_tooth_label_ = new QLabel("This tooth is forbidden with the selected crank wheel", page);
        Forbidden_tooth_label_->setObjectName("Forbidden_tooth_label");
        Forbidden_tooth_label_->setStyleSheet("color: #c00000; font-weight: bold");
        Forbidden_tooth_label_->setVisible(false);
        Fuel_teeth_recomend_ = new QLabel(page);
        Fuel_teeth_recomend_->setObjectName("Fuel_teeth_recomend");
        int row = teeth->rowCount();
        teeth->addWidget(Forbidden_tooth_label_, row, 0, 1, 4);
        teeth->addWidget(Fuel_teeth_recomend_, row + 1, 0, 1, 4);
        break;
    }
    default:
        break;
    }
}

} // namespace quorlen::ui
