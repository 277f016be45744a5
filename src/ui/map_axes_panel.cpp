#include "ui/map_axes_panel.h"

#include "app/app_context.h"

#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTableWidget>

namespace quorlen::ui {

namespace {

constexpr const char* Step_Tip = "Mark RPM or Load value, and click to adjust the resolution";

QTableWidget* Axis_Grid(QWidget* parent, const char* name) {
    auto* grid = new QTableWidget(parent);
    grid->setObjectName(name);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setSelectionMode(QAbstractItemView::ContiguousSelection);
    grid->setToolTip(Step_Tip);
    QFontMetrics fm(grid->font());
    grid->verticalHeader()->setDefaultSectionSize(fm.height() + 4);
    grid->horizontalHeader()->setDefaultSectionSize(fm.horizontalAdvance("00000") + 10);
    return grid;
}

QTableWidgetItem* Cell(const QString& text) {
    auto* item = new QTableWidgetItem(text);
    item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

} // namespace

Map_Axes_Panel::Map_Axes_Panel(App_Context& app, Map_Head head, Map_Axes_Hooks hooks, const QString& title,
                               QWidget* parent)
    : QGroupBox(title, parent), app_(app), head_(head), hooks_(std::move(hooks)) {
    const bool fuel = head == Map_Head::Fuel;
    setObjectName(fuel ? "Fuel_Axes_frame" : "Ign_Axes_frame");
    auto* grid = new QGridLayout(this);

    size_ = new QComboBox(this);
    size_->setObjectName(fuel ? "FUEL_3D_MAP_Size_Combo" : "Ign_3D_MAP_Size_Combo");
    for (const Map_Size& size : fuel ? Fuel_Size_Variants() : Ign_Size_Variants())
        size_->addItem(size.item);
    grid->addWidget(new QLabel("Table size", this), 0, 0);
    grid->addWidget(size_, 0, 1, 1, 2);
    connect(size_, &QComboBox::activated, this, &Map_Axes_Panel::Size_Combo_Click);

    auto slider = [&](int row, const char* label, const char* name, const char* text_name,
                      QScrollBar*& scroll, QLabel*& text) {
        scroll = new QScrollBar(Qt::Horizontal, this);
        scroll->setObjectName(name);
        scroll->setRange(0, Resolution_Scroll_Max);
        scroll->setPageStep(1);
        scroll->setMinimumWidth(110);
        scroll->setToolTip("Every step of the axis: 1, 2, 4 ... 128");
        text = new QLabel(this);
        text->setObjectName(text_name);
        text->setMinimumWidth(QFontMetrics(text->font()).horizontalAdvance("000000.00"));
        grid->addWidget(new QLabel(label, this), row, 0);
        grid->addWidget(scroll, row, 1);
        grid->addWidget(text, row, 2);
    };
    slider(1, "RPM resolution", "d_3D_RPM_scroll", "d_3D_RPM_text", rpm_scroll_, rpm_text_);
    slider(2, "Load resolution", "d_3D_MAP_scroll", "d_3D_MAP_text", map_scroll_, map_text_);
    connect(rpm_scroll_, &QScrollBar::valueChanged, this, &Map_Axes_Panel::d_3D_RPM_scroll_Click);
    connect(map_scroll_, &QScrollBar::valueChanged, this, &Map_Axes_Panel::d_3D_MAP_scroll_Click);

    rpm_grid_ = Axis_Grid(this, fuel ? "RPM_3D_Grid" : "RPM_3D_Ign_Grid");
    rpm_grid_->setRowCount(2);
    rpm_grid_->setVerticalHeaderLabels({"RPM", "Step"});
    rpm_grid_->installEventFilter(this);
    map_grid_ = Axis_Grid(this, fuel ? "MAP_3D_Grid" : "MAP_3D_Ign_Grid");
    map_grid_->setColumnCount(2);
    map_grid_->setHorizontalHeaderLabels({"Load", "Step"});
    map_grid_->setMinimumWidth(150);
    map_grid_->setMinimumHeight(QFontMetrics(map_grid_->font()).height() * 12);
    map_grid_->installEventFilter(this);
    // A cell picked with the mouse or the keys puts the buttons on its axis, as the focus does.
    connect(rpm_grid_, &QTableWidget::itemSelectionChanged, this, [this] {
        if (!refreshing_) focus_ = Axis_Focus::Rpm;
    });
    connect(map_grid_, &QTableWidget::itemSelectionChanged, this, [this] {
        if (!refreshing_) focus_ = Axis_Focus::Map;
    });
    grid->addWidget(rpm_grid_, 3, 0, 1, 3);
    grid->addWidget(map_grid_, 0, 3, 5, 1);

    buttons_ = new QHBoxLayout;
    auto button = [&](const char* name, const char* caption, void (Map_Axes_Panel::*click)()) {
        auto* b = new QPushButton(caption, this);
        b->setObjectName(name);
        b->setToolTip(Step_Tip);
        buttons_->addWidget(b);
        connect(b, &QPushButton::clicked, this, click);
    };
    button(fuel ? "Table_Increase" : "Table_Ign_Increase", "Increase   value",
           &Map_Axes_Panel::Table_Increase_Click);
    button(fuel ? "Table_Decrease" : "Table_Ign_Decrease", "Decrease value",
           &Map_Axes_Panel::Table_Decrease_Click);
    button(fuel ? "Table_Insert" : "Table_Ign_Insert", "Insert step", &Map_Axes_Panel::Table_Insert_Click);
    buttons_->addStretch(1);
    grid->addLayout(buttons_, 4, 0, 1, 3);
    grid->setColumnStretch(1, 1);
    Refresh();
}

Axis_Context Map_Axes_Panel::Axes() {
    return {app_.image, app_.sensors, app_.undo, app_.log};
}

Table_Hooks Map_Axes_Panel::Hooks() const {
    return {hooks_.Update_Tabs, hooks_.Show_Right_Tabs, hooks_.Update_All};
}

void Map_Axes_Panel::Refresh() {
    refreshing_ = true;
    QSignalBlocker block_size(size_), block_rpm(rpm_scroll_), block_map(map_scroll_);
    size_->setCurrentIndex(head_ == Map_Head::Fuel ? Fuel_Size_Index(app_.image)
                                                   : Ign_Size_Index(app_.image));
    int rpm = Resolution_Of(app_.image, head_, Axis_Focus::Rpm);
    int load = Resolution_Of(app_.image, head_, Axis_Focus::Map);
    rpm_scroll_->setValue(rpm);
    map_scroll_->setValue(load);
    Axis_Context ctx = Axes();
    rpm_text_->setText(QString::fromStdString(d_3D_RPM_text(rpm)));
    map_text_->setText(QString::fromStdString(d_3D_MAP_text(ctx, head_, load)));

    Map_Block block = Head_Block(app_.image, head_);
    auto speeds = Rpm_Axis_Texts(ctx, head_);
    auto loads = Load_Axis_Texts(ctx, head_);
    rpm_grid_->setColumnCount(block.cols);
    for (int c = 1; c <= block.cols; ++c) {
        rpm_grid_->setItem(0, c - 1, Cell(QString::fromStdString(speeds[static_cast<std::size_t>(c - 1)])));
        rpm_grid_->setItem(1, c - 1, Cell(QString::number(app_.image.CardByte[block.Rpm_Step(c)])));
    }
    map_grid_->setRowCount(block.rows);
    for (int r = 1; r <= block.rows; ++r) {
        map_grid_->setItem(r - 1, 0, Cell(QString::fromStdString(loads[static_cast<std::size_t>(r - 1)])));
        map_grid_->setItem(r - 1, 1, Cell(QString::number(app_.image.CardByte[block.Load_Step(r)])));
    }
    map_grid_->resizeColumnsToContents();
    rpm_grid_->setFixedHeight(rpm_grid_->horizontalHeader()->sizeHint().height() +
                              2 * rpm_grid_->rowHeight(0) +
                              rpm_grid_->horizontalScrollBar()->sizeHint().height() + 6);
    refreshing_ = false;
}

bool Map_Axes_Panel::Selected_Steps(int& first, int& last) {
    bool rpm = focus_ == Axis_Focus::Rpm;
    auto ranges = (rpm ? rpm_grid_ : map_grid_)->selectedRanges();
    if (ranges.isEmpty()) return false;
    first = (rpm ? ranges.first().leftColumn() : ranges.first().topRow()) + 1;
    last = (rpm ? ranges.first().rightColumn() : ranges.first().bottomRow()) + 1;
    return true;
}

bool Map_Axes_Panel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) {
        if (watched == rpm_grid_) focus_ = Axis_Focus::Rpm;
        if (watched == map_grid_) focus_ = Axis_Focus::Map;
    }
    return QGroupBox::eventFilter(watched, event);
}

void Map_Axes_Panel::Size_Combo_Click(int index) {
    Tables_Context ctx = app_.Tables(hooks_.Dialogs());
    Map_Size_Click(ctx, head_, index, Hooks());
    Refresh();
}

void Map_Axes_Panel::d_3D_RPM_scroll_Click(int value) {
    d_3D_RPM_scroll_Change(Axes(), head_, value, Hooks());
    Refresh();
}

void Map_Axes_Panel::d_3D_MAP_scroll_Click(int value) {
    d_3D_MAP_scroll_Change(Axes(), head_, value, Hooks());
    Refresh();
}

void Map_Axes_Panel::Table_Increase_Click() {
    int first = 0, last = 0;
    if (Selected_Steps(first, last)) Table_Increase(Axes(), head_, focus_, first, last, Hooks());
    Refresh();
}

void Map_Axes_Panel::Table_Decrease_Click() {
    int first = 0, last = 0;
    if (Selected_Steps(first, last)) Table_Decrease(Axes(), head_, focus_, first, last, Hooks());
    Refresh();
}

void Map_Axes_Panel::Table_Insert_Click() {
    int first = 0, last = 0;
    if (Selected_Steps(first, last)) Table_Insert(Axes(), head_, focus_, first, last, Hooks());
    Refresh();
}

} // namespace quorlen::ui
