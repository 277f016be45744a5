#include "ui/qx_transform_3d.h"

#include "app/app_context.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
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
void Fill(QTableWidget* grid, const Saved_Grid& texts) {
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
    auto* page = new QWidget;
    page->setObjectName(fuel ? "Transform_Fuel_page" : "Transform_Ign_page");
    auto* layout = new QVBoxLayout(page);

    auto* save = new QPushButton(captions.step1, page);
    save->setObjectName(fuel ? "Save_transform" : "Save_Ign_transform");
    layout->addWidget(save);
    connect(save, &QPushButton::clicked, this, [this, head] { Save_transform_Click(head); });

    Map_Axes_Hooks axes{hooks_.Dialogs, hooks_.Update_Tabs, hooks_.Show_Right_Tabs, hooks_.Update_All};
    p.axes = new Map_Axes_Panel(app_, head, axes, captions.step2, page);
    auto* sensors = new QPushButton("Sensor viewer...", p.axes);
    sensors->setObjectName(fuel ? "Transform_Sensors_cmd" : "Transform_Ign_Sensors_cmd");
    sensors->setToolTip("The load axis is shown through the sensor of the map's load input");
    p.axes->Buttons()->addWidget(sensors);
    connect(sensors, &QPushButton::clicked, this, [this] {
        if (hooks_.Show_Sensor_Editor) hooks_.Show_Sensor_Editor();
    });
    layout->addWidget(p.axes);
    auto* note = new QLabel("Save the map first. Then choose the new size and set the steps: until the saved "
                            "map is converted, the bytes of the map are read under the new shape.",
                            page);
    note->setWordWrap(true);
    layout->addWidget(note);

    auto* convert = new QPushButton(captions.step3, page);
    convert->setObjectName(fuel ? "Convert_Transform" : "Convert_Ign_Transform");
    layout->addWidget(convert);
    connect(convert, &QPushButton::clicked, this, [this, head] { Convert_Transform_Click(head); });

    auto* grids = new QHBoxLayout;
    for (int k = 0; k < 2; ++k) {
        auto* column = new QVBoxLayout;
        column->addWidget(new QLabel(k == 0 ? captions.saved : captions.recalculated, page));
        const char* name = fuel ? (k == 0 ? "Fuel_3D_Grid_Transform" : "Fuel_3D_Grid2_Transform")
                                : (k == 0 ? "Ign_3D_Grid_Transform" : "Ign_3D_Grid2_Transform");
        QTableWidget* g = Read_Only_Grid(page, name);
        (k == 0 ? p.saved : p.saved2) = g;
        column->addWidget(g, 1);
        grids->addLayout(column, 1);
    }
    layout->addLayout(grids, 1);
    return page;
}

void QX_Transform_3D::Show_Head(Map_Head head) {
    tabs_->setCurrentIndex(head == Map_Head::Fuel ? 0 : 1);
}

void QX_Transform_3D::Refresh() {
    for (Page& p : pages_)
        p.axes->Refresh();
}

void QX_Transform_3D::Show_Saved(Map_Head head) {
    const Saved_Map& saved = state_.Of(head);
    Fill(Of(head).saved, saved.grid);
    Fill(Of(head).saved2, saved.grid2);
}

void QX_Transform_3D::Save_transform_Click(Map_Head head) {
    Axis_Context ctx{app_.image, app_.sensors, app_.undo, app_.log};
    if (head == Map_Head::Fuel)
        Save_transform(ctx, state_);
    else
        Save_Ign_transform(ctx, state_);
    Show_Saved(head);
}

void QX_Transform_3D::Convert_Transform_Click(Map_Head head) {
    Axis_Context ctx{app_.image, app_.sensors, app_.undo, app_.log};
    Table_Hooks hooks{hooks_.Update_Tabs, hooks_.Show_Right_Tabs, hooks_.Update_All};
    bool done = head == Map_Head::Fuel ? Convert_Transform(ctx, state_, hooks)
                                       : Convert_Ign_Transform(ctx, state_, hooks);
    if (!done) {
        hooks_.Dialogs().Inform(Nothing_Saved_Text);
        return;
    }
    Show_Saved(head);
    Refresh();
}

} // namespace quorlen::ui
