// The running point on the main maps while a log runs: a box of four frames round the point
// where the engine stands, inside the cell by the fractions the live display found.

#include "ui/map_tabs.h"

#include <QFrame>
#include <QScrollBar>
#include <QTableView>

namespace quorlen::ui {

namespace {

constexpr int Box = 18;      // pixels across the box round the point
constexpr int Thickness = 3; // of each side
const char* const Side_Style = "background-color: #e0007a; border: 1px solid white;";

} // namespace

void Map_Tabs::Build_Curser(Table_Id id, QTableView* grid) {
    const bool fuel = id == Table_Id::Fuel_3D;
    Curser& c = cursers_[id];
    c.frame = new QFrame(grid->viewport());
    c.frame->setObjectName(fuel ? "Curser_3dfuel" : "Curser_IGN");
    c.frame->setAttribute(Qt::WA_TransparentForMouseEvents);
    c.frame->setFixedSize(Box, Box);
    for (int k = 0; k < 4; ++k) {
        auto* side = new QFrame(c.frame);
        side->setObjectName(
            QStringLiteral("%1(%2)").arg(fuel ? "FUEL_Curser_frame" : "IGN_Curser_frame").arg(k));
        side->setStyleSheet(Side_Style);
        // Top, right, bottom, left.
        const bool across = k % 2 == 0;
        side->setGeometry(k == 1 ? Box - Thickness : 0, k == 2 ? Box - Thickness : 0,
                          across ? Box : Thickness, across ? Thickness : Box);
        c.sides[static_cast<std::size_t>(k)] = side;
    }
    c.frame->hide();
    for (QScrollBar* bar : {grid->horizontalScrollBar(), grid->verticalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, this, [this, id] { Place_Curser(id); });
}

void Map_Tabs::Set_IGN_Curser(const Running_Cell& cell) {
    Set_Curser(Table_Id::Ignition_3D, cell);
}

void Map_Tabs::Set_FUEL_Curser(const Running_Cell& cell) {
    Set_Curser(Table_Id::Fuel_3D, cell);
}

void Map_Tabs::Set_Curser(Table_Id id, const Running_Cell& cell) {
    auto it = cursers_.find(id);
    if (it == cursers_.end()) return;
    it->second.cell = cell;
    Place_Curser(id);
}

// The point is the cell's left edge plus Cursor_X of its width, its top plus Cursor_Y of its
// height; the box stands centred on it.
void Map_Tabs::Place_Curser(Table_Id id) {
    Curser& c = cursers_[id];
    QTableView* grid = Grid(id);
    const Running_Cell& cell = c.cell;
    const QModelIndex index = grid->model()->index(cell.Cursor_Row, cell.Cursor_Column);
    if (!cell.shown || !index.isValid()) {
        c.frame->hide();
        return;
    }
    const QRect r = grid->visualRect(index);
    const int x = r.left() + static_cast<int>(cell.Cursor_X * r.width());
    const int y = r.top() + static_cast<int>(cell.Cursor_Y * r.height());
    c.frame->move(x - Box / 2, y - Box / 2);
    c.frame->show();
    c.frame->raise();
}

} // namespace quorlen::ui
