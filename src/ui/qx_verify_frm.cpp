#include "ui/qx_verify_frm.h"

#include "app/app_context.h"
#include "image/scaling.h"
#include "tables/map_colours.h"

#include <QBrush>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {

QColor Colour(const Rgb& c) {
    return QColor(c.r, c.g, c.b);
}

QTableWidgetItem* Item(const QString& text, const QColor& back = Qt::white) {
    auto* item = new QTableWidgetItem(text);
    item->setTextAlignment(Qt::AlignCenter);
    item->setBackground(back);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    return item;
}

// The four colours of a difference, as the legend shows them: program above the box (mild,
// strong), then below it.
const Rgb Legend_Colours[4] = {{160, 255, 255}, {5, 208, 255}, {255, 255, 128}, {255, 224, 0}};

} // namespace

QX_Verify_frm::QX_Verify_frm(App_Context& app, std::function<User_Dialogs&()> dialogs, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), dialogs_(std::move(dialogs)) {
    setObjectName("QX_Verify_frm");
    setWindowTitle("Verify");
    auto* layout = new QVBoxLayout(this);
    title_ = new QLabel(this);
    title_->setObjectName("Verify_Title_label");
    layout->addWidget(title_);

    auto* legend = new QHBoxLayout;
    const char* names[4] = {"Label7", "Label7_strong", "Label8", "Label8_strong"};
    for (int i = 0; i < 4; ++i) {
        legend_[i] = new QLabel(this);
        legend_[i]->setObjectName(names[i]);
        legend_[i]->setAutoFillBackground(true);
        legend_[i]->setMargin(3);
        QPalette p = legend_[i]->palette();
        p.setColor(QPalette::Window, Colour(Legend_Colours[i]));
        p.setColor(QPalette::WindowText, Qt::black);
        legend_[i]->setPalette(p);
        legend->addWidget(legend_[i]);
    }
    legend->addStretch(1);
    layout->addLayout(legend);

    grid_ = new QTableWidget(this);
    grid_->setObjectName("Verify_Grid");
    grid_->horizontalHeader()->hide();
    grid_->verticalHeader()->hide();
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->verticalHeader()->setDefaultSectionSize(QFontMetrics(grid_->font()).height() + 6);
    grid_->horizontalHeader()->setDefaultSectionSize(QFontMetrics(grid_->font()).horizontalAdvance("-000.0") +
                                                     10);
    layout->addWidget(grid_, 3);

    layout->addWidget(new QLabel("Changed tables and settings", this));
    list_ = new QTableWidget(0, 6, this);
    list_->setObjectName("VerifyData_Grid");
    list_->setHorizontalHeaderLabels({"Address", "Setting", "Program", "Box", "Program value", "Box value"});
    list_->verticalHeader()->hide();
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list_->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(list_, 1);
    resize(760, 560);
}

void QX_Verify_frm::Show_Verify(Table_Id main_map) {
    User_Dialogs& dialogs = dialogs_();
    Tables_Context ctx = app_.Tables(dialogs);
    Verify_View view = Verify_Check_Pass(ctx, main_map);
    bool fuel = main_map == Table_Id::Fuel_3D;
    title_->setText(fuel ? "Fuel main 3D map: box minus program, ms"
                         : "Ignition main 3D map: box minus program, deg");
    legend_[0]->setText(QString::fromStdString(view.higher_caption));
    legend_[1]->setText(QString::fromStdString(view.higher_caption) + ", strong");
    legend_[2]->setText(QString::fromStdString(view.lower_caption));
    legend_[3]->setText(QString::fromStdString(view.lower_caption) + ", strong");

    grid_->setUpdatesEnabled(false);
    grid_->setRowCount(view.rows + 1);
    grid_->setColumnCount(view.cols + 1);
    const QColor header(0xd8, 0xdc, 0xe4);
    for (int r = 0; r <= view.rows; ++r) {
        for (int c = 0; c <= view.cols; ++c) {
            if (r == 0 || c == 0) {
                grid_->setItem(r, c, Item(QString::fromStdString(Grid_Text(ctx, main_map, r, c)), header));
                continue;
            }
            const Verify_Cell& cell = view.At(r, c);
            auto* item = Item(QString::fromStdString(cell.text), Colour(cell.colour));
            if (cell.compared)
                item->setToolTip(
                    QStringLiteral("Box %1, program %2, %3 %")
                        .arg(QString::fromStdString(Format_Number(cell.box, fuel ? "0.00" : "0.0")))
                        .arg(QString::fromStdString(Format_Number(cell.program, fuel ? "0.00" : "0.0")))
                        .arg(QString::fromStdString(Format_Number(cell.pct, "0.0"))));
            grid_->setItem(r, c, item);
        }
    }
    grid_->setUpdatesEnabled(true);

    auto lines = Show_VerifyData(ctx);
    list_->setRowCount(static_cast<int>(lines.size()));
    for (int i = 0; i < static_cast<int>(lines.size()); ++i) {
        const Verify_Line& l = lines[static_cast<std::size_t>(i)];
        list_->setItem(i, 0, Item(QString::number(l.address)));
        list_->setItem(i, 1, Item(QString::fromStdString(l.name)));
        list_->setItem(i, 2, Item(QString::number(l.program_byte)));
        list_->setItem(i, 3, Item(QString::number(l.box_byte)));
        list_->setItem(i, 4, Item(QString::fromStdString(l.program_text)));
        list_->setItem(i, 5, Item(QString::fromStdString(l.box_text)));
    }
}

void QX_Verify_frm::Set_QX_Verify_Size(QSize grid) {
    resize(std::max(grid.width() + 40, 480), grid.height() + 260);
}

} // namespace quorlen::ui
