#include "ui/map_tabs.h"

#include "engine/axis_transform.h"
#include "image/scaling.h"
#include "tables/cell_entry.h"

#include <QChart>
#include <QChartView>
#include <QComboBox>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineSeries>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>
#include <QValueAxis>

#include <algorithm>
#include <optional>

namespace quorlen::ui {

// Laying out a chart's axis texts is what a refresh costs, so a chart takes new data only
// when it differs, and a chart out of sight waits until its page is shown.
struct Map_Tabs::Chart {
    QChartView* view = nullptr;
    QLineSeries* series = nullptr;
    QValueAxis* x = nullptr;
    QValueAxis* y = nullptr;
    Chart_Data shown;
    std::optional<Chart_Data> pending;
};

namespace {

QString Caption_Text(const std::string& caption) {
    QString text = QString::fromStdString(caption);
    if (text.startsWith("\r\n")) text.remove(0, 2);
    return text;
}

QString Indexed(const char* name, int index) {
    return QStringLiteral("%1(%2)").arg(name).arg(index);
}

const char* Slider_Label(int index) {
    switch (index) {
    case 92:
    case 96:
        return "Low load point";
    case 94:
    case 98:
        return "High load point";
    case 95:
        return "High load PWM1 comp.";
    default:
        if (const Scaling_Row* row = Find_Scaling_Row(index)) return row->label;
        return "";
    }
}

} // namespace

Map_Tabs::Map_Tabs(App_Context& app, Map_Tabs_Hooks hooks, QTabWidget* ignition, QTabWidget* fuel,
                   QTabWidget* pwm, QObject* parent)
    : QObject(parent), app_(app), hooks_(std::move(hooks)), ignition_(ignition), fuel_(fuel), pwm_(pwm) {
    Build_Main_Map(ignition_->widget(0), Table_Id::Ignition_3D);
    Build_One_D(ignition_->widget(1), Table_Id::Ign_Comp1, "Ig_2ndMAP_Grid", "Ig2ndMapChart");
    Build_Comp_Page(ignition_->widget(2), 96, "IG_3rd_Chart");

    Build_Main_Map(fuel_->widget(0), Table_Id::Fuel_3D);
    QWidget* fuel_map = Build_One_D(fuel_->widget(1), Table_Id::Fuel2_Map, "Fuel_MAP_Grid", "FuelMapChart");
    Build_One_D(fuel_->widget(2), Table_Id::Fuel2_Rpm, "Fuel_RPM_Grid", "FuelRpmChart");
    Build_One_D(fuel_->widget(4), Table_Id::Afr, "Fuel_Lambda_Grid", "FuelLambdaChart");

    FUEL_2nd_MAP_Function_Combo_ = new QComboBox(fuel_map);
    FUEL_2nd_MAP_Function_Combo_->setObjectName("FUEL_2nd_MAP_Function_Combo");
    auto* function_row = new QHBoxLayout;
    function_row->addWidget(new QLabel("Function of both 2nd fuel tables", fuel_map));
    function_row->addWidget(FUEL_2nd_MAP_Function_Combo_);
    function_row->addStretch(1);
    static_cast<QBoxLayout*>(fuel_map->layout())->insertLayout(0, function_row);
    connect(FUEL_2nd_MAP_Function_Combo_, &QComboBox::activated, this, [this](int index) {
        Tables_Context ctx = Context();
        FUEL_2nd_MAP_Function_Combo_Click(ctx, index,
                                          {hooks_.Update_Tabs, hooks_.Show_Right_Tabs, hooks_.Update_All});
    });

    const Table_Id pwm_tables[] = {Table_Id::Pwm1, Table_Id::Pwm2, Table_Id::Pwm3, Table_Id::Pwm4};
    const int pwm_pages[] = {0, 2, 3, 4};
    for (int i = 0; i < 4; ++i) {
        QByteArray grid = Indexed("PWM_MAP_Grid", i + 1).toLatin1();
        Build_One_D(pwm_->widget(pwm_pages[i]), pwm_tables[i], grid.constData(),
                    Indexed("PwmMapChart", i + 1));
    }
    Build_Comp_Page(pwm_->widget(1), 92, "PwmMapChart(0)");

    Build_Edit_Panels();

    for (QTabWidget* tabs : {ignition_, fuel_, pwm_})
        connect(tabs, &QTabWidget::currentChanged, this, [this] {
            if (hooks_.Show_Right_Tabs) hooks_.Show_Right_Tabs();
        });
}

Map_Tabs::~Map_Tabs() = default;

Tables_Context Map_Tabs::Context() const {
    return app_.Tables(hooks_.Dialogs());
}

Image_Table_Model* Map_Tabs::Model(Table_Id id) const {
    auto it = models_.find(id);
    return it == models_.end() ? nullptr : it->second;
}

QTableView* Map_Tabs::Grid(Table_Id id) const {
    auto it = grids_.find(id);
    return it == grids_.end() ? nullptr : it->second;
}

// --- building ------------------------------------------------------------------------------

QLabel* Map_Tabs::Add_Label(QWidget* parent, const char* name) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    labels_[name] = label;
    return label;
}

QTableView* Map_Tabs::Add_Grid(QWidget* parent, const char* name, Table_Id id) {
    auto* model = new Image_Table_Model([this] { return Context(); }, id, this);
    auto* view = new QTableView(parent);
    view->setObjectName(name);
    view->setModel(model);
    view->horizontalHeader()->hide();
    view->verticalHeader()->hide();
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setWordWrap(false);
    view->setCornerButtonEnabled(false);
    view->setSelectionMode(QAbstractItemView::ContiguousSelection);
    view->setItemDelegate(new Grid_Cell_Delegate(view));
    view->installEventFilter(this);
    // Any move of the selection starts a new number and ends the typed text on show.
    auto moved = [this, model] {
        model->Drop_Key_Text();
        Grid_RowColChange(app_.tables);
    };
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this, moved);
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this, moved);
    QFontMetrics fm(view->font());
    view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    view->verticalHeader()->setDefaultSectionSize(fm.height() + 6);
    model->Set_Font(view->font());
    models_[id] = model;
    grids_[id] = view;
    return view;
}

Map_Tabs::Chart* Map_Tabs::Add_Chart(QWidget* parent, const QString& name) {
    auto chart = std::make_unique<Chart>();
    auto* qchart = new QChart;
    qchart->legend()->hide();
    qchart->setMargins(QMargins(4, 4, 4, 4));
    chart->series = new QLineSeries(qchart);
    chart->series->setPointsVisible(true);
    qchart->addSeries(chart->series);
    chart->x = new QValueAxis(qchart);
    chart->y = new QValueAxis(qchart);
    chart->x->setLabelFormat("%g");
    chart->y->setLabelFormat("%g");
    qchart->addAxis(chart->x, Qt::AlignBottom);
    qchart->addAxis(chart->y, Qt::AlignLeft);
    chart->series->attachAxis(chart->x);
    chart->series->attachAxis(chart->y);
    chart->view = new QChartView(qchart, parent);
    chart->view->setObjectName(name);
    chart->view->setRenderHint(QPainter::Antialiasing);
    chart->view->setMinimumSize(320, 240);
    Chart* raw = chart.get();
    chart_store_.push_back(std::move(chart));
    return raw;
}

QWidget* Map_Tabs::Build_Main_Map(QWidget* page, Table_Id id) {
    bool fuel = id == Table_Id::Fuel_3D;
    auto* layout = new QVBoxLayout(page);
    auto* top = new QHBoxLayout;
    top->addWidget(Add_Label(page, fuel ? "Fuel_3D_Load_label" : "Ign_Load_label"), 1);
    auto* size_label = new QLabel("Table size", page);
    auto* combo = new QComboBox(page);
    combo->setObjectName(fuel ? "FUEL_3D_MAP_Size_Combo" : "Ign_3D_MAP_Size_Combo");
    combo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    top->addWidget(size_label);
    top->addWidget(combo);
    // Another size reads the bytes under the new shape: the conversion keeps the map.
    auto* convert = new QPushButton("Size conversion...", page);
    convert->setObjectName(fuel ? "Fuel_Transform_3D_cmd" : "Ign_Transform_3D_cmd");
    convert->setToolTip("Change the size or the axes of this map and convert it, keeping its values");
    top->addWidget(convert);
    connect(convert, &QPushButton::clicked, this, [this, fuel] {
        if (hooks_.Show_Transform_3D) hooks_.Show_Transform_3D(fuel ? 0 : 1);
    });
    layout->addLayout(top);
    auto* unit = Add_Label(page, fuel ? "Fuel_Load_Header_label" : "Ign_Load_Header_label");
    layout->addWidget(unit);
    QTableView* grid = Add_Grid(page, fuel ? "Fuel_3D_Grid" : "Ignition_3D_Grid", id);
    // A point smaller than the window's text, so that 26 columns fit a laptop's screen.
    QFont font = grid->font();
    font.setPointSizeF(font.pointSizeF() - 1);
    grid->setFont(font);
    models_[id]->Set_Font(font);
    grid->verticalHeader()->setDefaultSectionSize(QFontMetrics(font).height() + 6);
    layout->addWidget(grid, 1);
    // The buttons of the main maps come here when this map is on show.
    auto* slot = new QVBoxLayout;
    layout->addLayout(slot);
    panel_slots_[id] = slot;
    (fuel ? FUEL_3D_MAP_Size_Combo_ : Ign_3D_MAP_Size_Combo_) = combo;
    connect(combo, &QComboBox::activated, this, [this, fuel](int index) {
        Tables_Context ctx = Context();
        Table_Hooks hooks{hooks_.Update_Tabs, hooks_.Show_Right_Tabs, hooks_.Update_All};
        Map_Size_Click(ctx, fuel ? Map_Head::Fuel : Map_Head::Ignition, index, hooks);
    });
    return page;
}

QWidget* Map_Tabs::Build_One_D(QWidget* page, Table_Id id, const char* grid_name, const QString& chart_name) {
    auto* layout = new QVBoxLayout(page);
    auto* captions = new QVBoxLayout;
    switch (id) {
    case Table_Id::Ign_Comp1:
        captions->addWidget(Add_Label(page, "Ig_2nd_Load_label"));
        break;
    case Table_Id::Fuel2_Map:
        captions->addWidget(Add_Label(page, "Fuel_MAP_Load_label"));
        break;
    case Table_Id::Fuel2_Rpm:
        captions->addWidget(Add_Label(page, "Fuel_RPM_Load_label"));
        captions->addWidget(Add_Label(page, "Fuel_RPM_Function_label"));
        break;
    case Table_Id::Afr:
        captions->addWidget(Add_Label(page, "Lambda_Load_label"));
        captions->addWidget(Add_Label(page, "Lambda_Sensor_label"));
        break;
    default: {
        int n = static_cast<int>(id) - static_cast<int>(Table_Id::Pwm1) + 1;
        QByteArray name = Indexed("PWM_Load_label", n).toLatin1();
        captions->addWidget(Add_Label(page, name.constData()));
        if (id == Table_Id::Pwm1) captions->addWidget(Add_Label(page, "PWM_boost_sensor_label"));
        break;
    }
    }
    layout->addLayout(captions);
    auto* body = new QHBoxLayout;
    QTableView* grid = Add_Grid(page, grid_name, id);
    grid->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
    grid->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Maximum);
    body->addWidget(grid, 0, Qt::AlignTop);
    Chart* chart = Add_Chart(page, chart_name);
    charts_[id] = chart;
    body->addWidget(chart->view, 1);
    auto* slot = new QVBoxLayout;
    body->addLayout(slot);
    panel_slots_[id] = slot;
    layout->addLayout(body, 1);
    return page;
}

void Map_Tabs::Build_Comp_Page(QWidget* page, int first_index, const QString& chart_name) {
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(Add_Label(page, first_index == 92 ? "PWM_comp_Load_label" : "Ig_3rd_Load_label"));
    auto* grid = new QGridLayout;
    for (int i = 0; i < 4; ++i) {
        int index = first_index + i;
        Slider s;
        auto* label = new QLabel(Slider_Label(index), page);
        label->setObjectName(Indexed("scroll_label", index));
        s.scroll = new QScrollBar(Qt::Horizontal, page);
        s.scroll->setObjectName(Indexed("scroll", index));
        s.scroll->setMinimumWidth(260);
        s.text = new QLabel(page);
        s.text->setObjectName(Indexed("scroll_text", index));
        s.text->setMinimumWidth(QFontMetrics(s.text->font()).horizontalAdvance("-00000.00"));
        s.text->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        s.unit = new QLabel(page);
        s.unit->setObjectName(Indexed("scroll_unit_label", index));
        grid->addWidget(label, i, 0);
        grid->addWidget(s.scroll, i, 1);
        grid->addWidget(s.text, i, 2);
        grid->addWidget(s.unit, i, 3);
        connect(s.scroll, &QScrollBar::valueChanged, this,
                [this, index](int value) { scroll_Change(index, value); });
        connect(s.scroll, &QScrollBar::sliderPressed, this, [this] { drag_step_due_ = true; });
        sliders_[index] = s;
    }
    grid->setColumnStretch(1, 1);
    layout->addLayout(grid);
    Chart* chart = Add_Chart(page, chart_name);
    (first_index == 92 ? pwm_comp_chart_ : ign_comp_chart_) = chart;
    layout->addWidget(chart->view, 1);
}

// --- the four refreshes ---------------------------------------------------------------------------

void Map_Tabs::Init_Tabs() {
    QSignalBlocker fuel_block(FUEL_3D_MAP_Size_Combo_);
    QSignalBlocker ign_block(Ign_3D_MAP_Size_Combo_);
    QSignalBlocker function_block(FUEL_2nd_MAP_Function_Combo_);
    FUEL_3D_MAP_Size_Combo_->clear();
    for (const Map_Size& size : Fuel_Size_Variants())
        FUEL_3D_MAP_Size_Combo_->addItem(size.item);
    Ign_3D_MAP_Size_Combo_->clear();
    for (const Map_Size& size : Ign_Size_Variants())
        Ign_3D_MAP_Size_Combo_->addItem(size.item);
    FUEL_2nd_MAP_Function_Combo_->clear();
    for (const std::string& item : Fuel_2nd_Function_Items())
        FUEL_2nd_MAP_Function_Combo_->addItem(QString::fromStdString(item));
}

void Map_Tabs::Fit_Columns(QTableView* view) {
    view->resizeColumnsToContents();
    QFont bold = view->font();
    bold.setBold(true);
    int least = QFontMetrics(bold).horizontalAdvance("00.00") + 10;
    for (int c = 0; c < view->model()->columnCount(); ++c)
        view->setColumnWidth(c, std::max(view->columnWidth(c) + 6, least));
}

// The main maps' columns take the width of the widest text they can hold (an RPM header
// of five digits, a load of the sensor's decimals), so that values never squeeze a column
// and the widest map still fits the window.
void Map_Tabs::Fit_Main_Map(Table_Id id) {
    QTableView* view = grids_[id];
    QFont bold = view->font();
    bold.setBold(true);
    QFontMetrics fm(bold);
    int cell = fm.horizontalAdvance("00000") + 9;
    int first = cell;
    const auto& loads = id == Table_Id::Fuel_3D ? app_.tables.Fuel_Load_Text : app_.tables.Ign_Load_Text;
    for (const std::string& text : loads)
        first = std::max(first, fm.horizontalAdvance(QString::fromStdString(text)) + 9);
    for (int c = 0; c < view->model()->columnCount(); ++c) {
        int width = c == 0 ? first : cell;
        if (view->columnWidth(c) != width) view->setColumnWidth(c, width);
    }
}

void Map_Tabs::Update_Tabs() {
    for (auto& [id, model] : models_) {
        model->Refresh();
        if (id == Table_Id::Fuel_3D || id == Table_Id::Ignition_3D)
            Fit_Main_Map(id);
        else
            Fit_Columns(grids_[id]);
    }
    QSignalBlocker fuel_block(FUEL_3D_MAP_Size_Combo_);
    QSignalBlocker ign_block(Ign_3D_MAP_Size_Combo_);
    QSignalBlocker function_block(FUEL_2nd_MAP_Function_Combo_);
    FUEL_3D_MAP_Size_Combo_->setCurrentIndex(Fuel_Size_Index(app_.image));
    Ign_3D_MAP_Size_Combo_->setCurrentIndex(Ign_Size_Index(app_.image));
    int function = app_.tables.Fuel2nd_Function;
    FUEL_2nd_MAP_Function_Combo_->setCurrentIndex(function < FUEL_2nd_MAP_Function_Combo_->count() ? function
                                                                                                   : -1);
    auto items = Fuel_2nd_Function_Items();
    labels_["Fuel_RPM_Function_label"]->setText(function < static_cast<int>(items.size())
                                                    ? "Function: " + QString::fromStdString(items[function])
                                                    : QStringLiteral("Function: not in use"));
}

void Map_Tabs::Show_Right_Tabs() {
    const Tab_Captions& c = app_.tables.captions;
    auto set = [this](const char* name, const std::string& text) {
        labels_[name]->setText(Caption_Text(text));
    };
    set("Ign_Load_label", c.Ign_Load);
    set("Ig_2nd_Load_label", c.Ign2nd_Load);
    set("Ig_3rd_Load_label", c.Ign3rd_Load);
    set("Fuel_3D_Load_label", c.Fuel3D_Load);
    set("Fuel_MAP_Load_label", c.Fuel2nd_Load);
    set("Fuel_RPM_Load_label", c.Fuel3rd_Load);
    set("Lambda_Load_label", c.Lambda_Load);
    set("Lambda_Sensor_label", c.Lambda_Sensor);
    set("PWM_comp_Load_label", c.Pwm_Load);
    for (int i = 1; i <= 4; ++i)
        set(Indexed("PWM_Load_label", i).toLatin1().constData(), c.Pwm_Load);
    set("PWM_boost_sensor_label", c.PWM_boost_sensor_label);
    labels_["PWM_boost_sensor_label"]->setVisible(c.Pwm_Boost_Visible);
    labels_["Fuel_Load_Header_label"]->setText(QString::fromStdString(c.Fuel_Load_Header));
    labels_["Ign_Load_Header_label"]->setText(QString::fromStdString(c.Ign_Load_Header));
    pwm_->setTabText(0, QString::fromStdString(c.Pwm1_Tab));
    for (auto& chart : chart_store_)
        if (chart->view->isVisible()) Show_Pending(*chart);
    Place_Panels();
    // Units and sensor columns may have changed width; over engine speed the sensor column
    // has nothing to say.
    for (auto& [id, view] : grids_) {
        if (id == Table_Id::Fuel_3D || id == Table_Id::Ignition_3D) continue;
        view->setColumnHidden(1, view->model()->index(0, 0).data().toString() == "RPM");
        Fit_Columns(view);
    }
}

void Map_Tabs::Offer_Chart(Chart& chart, Chart_Data data) {
    bool same = data.x == chart.shown.x && data.y == chart.shown.y && data.x_title == chart.shown.x_title &&
                data.y_title == chart.shown.y_title;
    if (same) {
        chart.pending.reset();
        return;
    }
    chart.pending = std::move(data);
    if (chart.view->isVisible()) Show_Pending(chart);
}

void Map_Tabs::Show_Pending(Chart& chart) {
    if (!chart.pending) return;
    chart.shown = std::move(*chart.pending);
    chart.pending.reset();
    Show_Chart(chart, chart.shown);
}

void Map_Tabs::Show_Chart(Chart& chart, const Chart_Data& data) {
    QList<QPointF> points;
    points.reserve(static_cast<qsizetype>(data.x.size()));
    for (std::size_t i = 0; i < data.x.size(); ++i)
        points.append(QPointF(data.x[i], data.y[i]));
    chart.series->replace(points);
    auto range = [](const std::vector<double>& v, double& lo, double& hi) {
        if (v.empty()) {
            lo = 0, hi = 1;
            return;
        }
        auto [a, b] = std::minmax_element(v.begin(), v.end());
        lo = *a, hi = *b;
    };
    double x0, x1, y0, y1;
    range(data.x, x0, x1);
    range(data.y, y0, y1);
    if (x1 <= x0) x1 = x0 + 1;
    if (y1 - y0 < 1e-9 && y0 == 0) {
        // A flat line at zero sits in the middle, not on the axis.
        y0 = -1;
        y1 = 1;
    } else if (data.y_from_zero) {
        y0 = std::min(y0, 0.0);
        y1 = std::max(y1, 0.0);
    }
    double pad = std::max((y1 - y0) * 0.05, 0.5);
    chart.x->setRange(x0, x1);
    chart.y->setRange(y0 < 0 || !data.y_from_zero ? y0 - pad : y0, y1 + pad);
    chart.x->applyNiceNumbers();
    chart.y->applyNiceNumbers();
    chart.x->setTitleText(QString::fromStdString(data.x_title));
    chart.y->setTitleText(QString::fromStdString(data.y_title));
}

void Map_Tabs::Show_Sliders() {
    Tables_Context ctx = Context();
    for (auto& [index, s] : sliders_) {
        QSignalBlocker block(s.scroll);
        auto a = static_cast<std::size_t>(index);
        s.scroll->setRange(app_.scroll_limits.Min[a], app_.scroll_limits.Max[a]);
        s.scroll->setValue(app_.image.CardByte[a]);
        Scroll_Shown shown = Main_Scroll_Text(ctx, index);
        s.text->setText(QString::fromStdString(shown.text));
        s.unit->setText(QString::fromStdString(shown.unit));
    }
}

void Map_Tabs::Update_All() {
    Colours_Follow_Image();
    for (auto& [id, model] : models_) {
        // A redraw shows the image; typing puts its text back on the cells afterwards.
        model->Drop_Key_Text();
        bool reshaped = model->Refresh();
        if (id == Table_Id::Fuel_3D || id == Table_Id::Ignition_3D)
            Fit_Main_Map(id);
        else if (reshaped)
            Fit_Columns(grids_[id]);
    }
    Tables_Context ctx = Context();
    for (auto& [id, chart] : charts_)
        Offer_Chart(*chart, Table_Chart(ctx, id));
    Offer_Chart(*pwm_comp_chart_, Comp_Curve_Chart(ctx, 92));
    Offer_Chart(*ign_comp_chart_, Comp_Curve_Chart(ctx, 96));
    Show_Sliders();
    Show_Edit_Texts();
    if (hooks_.Form_Exists && hooks_.Form_Exists("QX_3Dmap")) Refresh_3D_View();
    if (app_.tables.colours.Verify_Check) Verify_View();
}

void Map_Tabs::scroll_Change(int index, int value) {
    Tables_Context ctx = Context();
    Slider& s = sliders_[index];
    // A drag is one step for undo; a click or a key on the bar is a step each.
    const bool new_step = !s.scroll->isSliderDown() || drag_step_due_;
    drag_step_due_ = false;
    Scroll_Shown shown = Main_scroll_Change(ctx, index, value, hooks_.Update_All, new_step);
    s.text->setText(QString::fromStdString(shown.text));
    s.unit->setText(QString::fromStdString(shown.unit));
}

} // namespace quorlen::ui
