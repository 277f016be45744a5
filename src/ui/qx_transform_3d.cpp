#include "ui/qx_transform_3d.h"

#include "app/app_context.h"

#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {

struct Captions {
    const char* step1;
    const char* step2;
    const char* step3;
    const char* saved;
    const char* recalculated;
};

constexpr Captions Fuel_Captions{
    "1) Click to save current fuel map", "2) Adjust the RPM and MAP resolution, sensor definitions etc.",
    "3) Click to convert saved map", "Saved fuel map", "Recalulated fuel step 1"};
constexpr Captions Ign_Captions{"1) Save current ignition map",
                                "2) Adjust the RPM and MAP resolution to match what you prefere",
                                "3) Convert saved map", "Saved ignition map", "Recalulated ignition step 1"};

constexpr const char* Step_Tip = "Mark RPM or Load value, and click to adjust the resolution";

QTableWidget* Read_Only_Grid(QWidget* parent, const char* name) {
    auto* grid = new QTableWidget(parent);
    grid->setObjectName(name);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->horizontalHeader()->hide();
    grid->verticalHeader()->hide();
    grid->verticalHeader()->setDefaultSectionSize(QFontMetrics(grid->font()).height() + 4);
    grid->horizontalHeader()->setDefaultSectionSize(QFontMetrics(grid->font()).horizontalAdvance("00000") +
                                                    10);
    return grid;
}

QTableWidgetItem* Cell(const QString& text, bool header) {
    auto* item = new QTableWidgetItem(text);
    item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    if (header) {
        QFont bold = item->font();
        bold.setBold(true);
        item->setFont(bold);
        item->setBackground(QColor(225, 225, 225));
    }
    return item;
}

// The text grids as they stand: row 0 and column 0 are the axes.
void Fill(QTableWidget* grid, const Text_Grid& texts) {
    grid->clearContents();
    grid->setRowCount(texts.rows);
    grid->setColumnCount(texts.cols);
    for (int r = 0; r < texts.rows; ++r)
        for (int c = 0; c < texts.cols; ++c)
            grid->setItem(r, c, Cell(QString::fromStdString(texts.At(r, c)), r == 0 || c == 0));
}

} // namespace

QX_Transform_3D::QX_Transform_3D(App_Context& app, Transform_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)) {
    setObjectName("QX_Transform_3D");
    setWindowTitle("Fuel and ignition map size conversion");
    auto* layout = new QVBoxLayout(this);
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName("Transform_SSTab");
    tabs_->addTab(Build_Page(Map_Head::Fuel), "Fuel map");
    tabs_->addTab(Build_Page(Map_Head::Ignition), "Ignition map");
    layout->addWidget(tabs_);
    resize(1280, 860);
    Refresh();
}

QX_Transform_3D::~QX_Transform_3D() = default;

QWidget* QX_Transform_3D::Build_Page(Map_Head head) {
    const bool fuel = head == Map_Head::Fuel;
    const Captions& captions = fuel ? Fuel_Captions : Ign_Captions;
    Page& p = Of(head);
    p.page = new QWidget;
    p.page->setObjectName(fuel ? "Transform_Fuel_page" : "Transform_Ign_page");
    auto* layout = new QVBoxLayout(p.page);

    auto* top = new QHBoxLayout;
    auto* steps = new QVBoxLayout;
    auto* save = new QPushButton(captions.step1, p.page);
    save->setObjectName(fuel ? "Save_transform" : "Save_Ign_transform");
    steps->addWidget(save);
    connect(save, &QPushButton::clicked, this, [this, head] { Save_transform_Click(head); });

    auto* adjust = new QGroupBox(captions.step2, p.page);
    adjust->setObjectName(fuel ? "Transform_Adjust_frame" : "Transform_Ign_Adjust_frame");
    auto* grid = new QGridLayout(adjust);
    p.size = new QComboBox(adjust);
    p.size->setObjectName(fuel ? "FUEL_3D_MAP_Size_Combo" : "Ign_3D_MAP_Size_Combo");
    for (const Map_Size& size : fuel ? Fuel_Size_Variants() : Ign_Size_Variants())
        p.size->addItem(size.item);
    grid->addWidget(new QLabel("Table size", adjust), 0, 0);
    grid->addWidget(p.size, 0, 1, 1, 2);
    connect(p.size, &QComboBox::activated, this, [this, head](int index) { Size_Combo_Click(head, index); });

    auto slider = [&](int row, const char* label, const char* name, const char* text_name,
                      QScrollBar*& scroll, QLabel*& text) {
        scroll = new QScrollBar(Qt::Horizontal, adjust);
        scroll->setObjectName(name);
        scroll->setRange(0, Resolution_Scroll_Max);
        scroll->setPageStep(1);
        scroll->setMinimumWidth(180);
        text = new QLabel(adjust);
        text->setObjectName(text_name);
        text->setMinimumWidth(QFontMetrics(text->font()).horizontalAdvance("000000.00"));
        grid->addWidget(new QLabel(label, adjust), row, 0);
        grid->addWidget(scroll, row, 1);
        grid->addWidget(text, row, 2);
    };
    slider(1, "RPM step", "d_3D_RPM_scroll", "d_3D_RPM_text", p.rpm_scroll, p.rpm_text);
    slider(2, "Load step", "d_3D_MAP_scroll", "d_3D_MAP_text", p.map_scroll, p.map_text);
    connect(p.rpm_scroll, &QScrollBar::valueChanged, this,
            [this, head](int value) { d_3D_RPM_scroll_Click(head, value); });
    connect(p.map_scroll, &QScrollBar::valueChanged, this,
            [this, head](int value) { d_3D_MAP_scroll_Click(head, value); });

    auto* buttons = new QHBoxLayout;
    auto button = [&](const char* name, const char* caption, void (QX_Transform_3D::*click)(Map_Head)) {
        auto* b = new QPushButton(caption, adjust);
        b->setObjectName(name);
        b->setToolTip(Step_Tip);
        buttons->addWidget(b);
        connect(b, &QPushButton::clicked, this, [this, head, click] { (this->*click)(head); });
    };
    button(fuel ? "Table_Increase" : "Table_Ign_Increase", "Increase   value",
           &QX_Transform_3D::Table_Increase_Click);
    button(fuel ? "Table_Decrease" : "Table_Ign_Decrease", "Decrease value",
           &QX_Transform_3D::Table_Decrease_Click);
    button(fuel ? "Table_Insert" : "Table_Ign_Insert", "Insert step", &QX_Transform_3D::Table_Insert_Click);
    auto* sensors = new QPushButton("Sensor viewer...", adjust);
    sensors->setObjectName(fuel ? "Transform_Sensors_cmd" : "Transform_Ign_Sensors_cmd");
    sensors->setToolTip("The load axis is shown through the sensor of the map's load input");
    buttons->addStretch(1);
    buttons->addWidget(sensors);
    connect(sensors, &QPushButton::clicked, this, [this] {
        if (hooks_.Show_Sensor_Editor) hooks_.Show_Sensor_Editor();
    });
    grid->addLayout(buttons, 3, 0, 1, 3);
    steps->addWidget(adjust);

    auto* convert = new QPushButton(captions.step3, p.page);
    convert->setObjectName(fuel ? "Convert_Transform" : "Convert_Ign_Transform");
    steps->addWidget(convert);
    steps->addStretch(1);
    connect(convert, &QPushButton::clicked, this, [this, head] { Convert_Transform_Click(head); });
    top->addLayout(steps);

    p.map_grid = Read_Only_Grid(p.page, fuel ? "MAP_3D_Grid" : "MAP_3D_Ign_Grid");
    p.map_grid->setColumnCount(2);
    p.map_grid->horizontalHeader()->show();
    p.map_grid->verticalHeader()->show();
    p.map_grid->setHorizontalHeaderLabels({"Load", "Step"});
    p.map_grid->setMinimumWidth(170);
    p.map_grid->setMinimumHeight(QFontMetrics(p.map_grid->font()).height() * 14);
    p.map_grid->setToolTip(Step_Tip);
    p.map_grid->installEventFilter(this);
    top->addWidget(p.map_grid);

    p.rpm_grid = Read_Only_Grid(p.page, fuel ? "RPM_3D_Grid" : "RPM_3D_Ign_Grid");
    p.rpm_grid->setRowCount(2);
    p.rpm_grid->horizontalHeader()->show();
    p.rpm_grid->verticalHeader()->show();
    p.rpm_grid->setVerticalHeaderLabels({"RPM", "Step"});
    p.rpm_grid->setToolTip(Step_Tip);
    p.rpm_grid->installEventFilter(this);
    auto* right = new QVBoxLayout;
    right->addWidget(p.rpm_grid);
    auto* note =
        new QLabel("Save the map first. Then choose the new size and set the steps: the bytes of the "
                   "map are read under the new shape until the saved map is converted.",
                   p.page);
    note->setWordWrap(true);
    right->addWidget(note);
    right->addStretch(1);
    top->addLayout(right, 1);
    layout->addLayout(top);

    auto* grids = new QHBoxLayout;
    for (int k = 0; k < 2; ++k) {
        auto* column = new QVBoxLayout;
        column->addWidget(new QLabel(k == 0 ? captions.saved : captions.recalculated, p.page));
        const char* name = fuel ? (k == 0 ? "Fuel_3D_Grid_Transform" : "Fuel_3D_Grid2_Transform")
                                : (k == 0 ? "Ign_3D_Grid_Transform" : "Ign_3D_Grid2_Transform");
        QTableWidget* g = Read_Only_Grid(p.page, name);
        (k == 0 ? p.saved : p.saved2) = g;
        column->addWidget(g, 1);
        grids->addLayout(column, 1);
    }
    layout->addLayout(grids, 1);
    return p.page;
}

// --- showing -------------------------------------------------------------------------------

Axis_Context QX_Transform_3D::Axes() {
    return {app_.image, app_.sensors, app_.undo, app_.log};
}

Table_Hooks QX_Transform_3D::Hooks() const {
    return {hooks_.Update_Tabs, hooks_.Show_Right_Tabs, hooks_.Update_All};
}

void QX_Transform_3D::Show_Head(Map_Head head) {
    tabs_->setCurrentIndex(head == Map_Head::Fuel ? 0 : 1);
}

void QX_Transform_3D::Refresh() {
    for (Map_Head head : {Map_Head::Fuel, Map_Head::Ignition}) {
        Page& p = Of(head);
        QSignalBlocker a(p.size), b(p.rpm_scroll), c(p.map_scroll);
        p.size->setCurrentIndex(head == Map_Head::Fuel ? Fuel_Size_Index(app_.image)
                                                       : Ign_Size_Index(app_.image));
        int rpm = Resolution_Of(app_.image, head, Axis_Focus::Rpm);
        int load = Resolution_Of(app_.image, head, Axis_Focus::Map);
        p.rpm_scroll->setValue(rpm);
        p.map_scroll->setValue(load);
        Axis_Context ctx = Axes();
        p.rpm_text->setText(QString::fromStdString(d_3D_RPM_text(rpm)));
        p.map_text->setText(QString::fromStdString(d_3D_MAP_text(ctx, head, load)));
        Show_Axes(head);
    }
}

void QX_Transform_3D::Show_Axes(Map_Head head) {
    Page& p = Of(head);
    Axis_Context ctx = Axes();
    Map_Block block = Head_Block(app_.image, head);
    auto rpm = Rpm_Axis_Texts(ctx, head);
    auto load = Load_Axis_Texts(ctx, head);
    p.rpm_grid->setColumnCount(block.cols);
    for (int c = 1; c <= block.cols; ++c) {
        p.rpm_grid->setItem(0, c - 1,
                            Cell(QString::fromStdString(rpm[static_cast<std::size_t>(c - 1)]), false));
        p.rpm_grid->setItem(1, c - 1, Cell(QString::number(app_.image.CardByte[block.Rpm_Step(c)]), false));
    }
    p.map_grid->setRowCount(block.rows);
    for (int r = 1; r <= block.rows; ++r) {
        p.map_grid->setItem(r - 1, 0,
                            Cell(QString::fromStdString(load[static_cast<std::size_t>(r - 1)]), false));
        p.map_grid->setItem(r - 1, 1, Cell(QString::number(app_.image.CardByte[block.Load_Step(r)]), false));
    }
    p.map_grid->resizeColumnsToContents();
    p.rpm_grid->setFixedHeight(p.rpm_grid->horizontalHeader()->height() + 2 * p.rpm_grid->rowHeight(0) +
                               p.rpm_grid->horizontalScrollBar()->sizeHint().height() + 4);
}

void QX_Transform_3D::Show_Saved(Map_Head head) {
    const Saved_Map& saved = state_.Of(head);
    Fill(Of(head).saved, saved.grid);
    Fill(Of(head).saved2, saved.grid2);
}

bool QX_Transform_3D::Selected_Steps(Map_Head head, int& first, int& last) {
    Page& p = Of(head);
    bool rpm = state_.focus == Axis_Focus::Rpm;
    auto ranges = (rpm ? p.rpm_grid : p.map_grid)->selectedRanges();
    if (ranges.isEmpty()) return false;
    first = (rpm ? ranges.first().leftColumn() : ranges.first().topRow()) + 1;
    last = (rpm ? ranges.first().rightColumn() : ranges.first().bottomRow()) + 1;
    return true;
}

bool QX_Transform_3D::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) {
        for (Page& p : pages_) {
            if (watched == p.rpm_grid) state_.focus = Axis_Focus::Rpm;
            if (watched == p.map_grid) state_.focus = Axis_Focus::Map;
        }
    }
    return Child_Form::eventFilter(watched, event);
}

// --- the steps -----------------------------------------------------------------------------

void QX_Transform_3D::Save_transform_Click(Map_Head head) {
    Axis_Context ctx = Axes();
    if (head == Map_Head::Fuel)
        Save_transform(ctx, state_);
    else
        Save_Ign_transform(ctx, state_);
    Show_Saved(head);
}

void QX_Transform_3D::Convert_Transform_Click(Map_Head head) {
    Axis_Context ctx = Axes();
    bool done = head == Map_Head::Fuel ? Convert_Transform(ctx, state_, Hooks())
                                       : Convert_Ign_Transform(ctx, state_, Hooks());
    if (!done) {
        hooks_.Dialogs().Inform(Nothing_Saved_Text);
        return;
    }
    Show_Saved(head);
    Refresh();
}

void QX_Transform_3D::Size_Combo_Click(Map_Head head, int index) {
    Tables_Context ctx = app_.Tables(hooks_.Dialogs());
    Map_Size_Click(ctx, app_.undo, head, index, Hooks());
    Refresh();
}

void QX_Transform_3D::d_3D_RPM_scroll_Click(Map_Head head, int value) {
    d_3D_RPM_scroll_Change(Axes(), head, value, Hooks());
    Refresh();
}

void QX_Transform_3D::d_3D_MAP_scroll_Click(Map_Head head, int value) {
    d_3D_MAP_scroll_Change(Axes(), head, value, Hooks());
    Refresh();
}

void QX_Transform_3D::Table_Increase_Click(Map_Head head) {
    int first = 0, last = 0;
    if (Selected_Steps(head, first, last)) Table_Increase(Axes(), head, state_.focus, first, last, Hooks());
    Refresh();
}

void QX_Transform_3D::Table_Decrease_Click(Map_Head head) {
    int first = 0, last = 0;
    if (Selected_Steps(head, first, last)) Table_Decrease(Axes(), head, state_.focus, first, last, Hooks());
    Refresh();
}

void QX_Transform_3D::Table_Insert_Click(Map_Head head) {
    int first = 0, last = 0;
    if (Selected_Steps(head, first, last)) Table_Insert(Axes(), head, state_.focus, first, last, Hooks());
    Refresh();
}

} // namespace quorlen::ui
