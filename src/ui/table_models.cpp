#include "ui/table_models.h"

#include "tables/cell_entry.h"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QPainter>
#include <QTableView>

#include <algorithm>

namespace quorlen::ui {

int Grid_Key_Code(const QKeyEvent* e) {
    if (e->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) return 0;
    const bool pad = e->modifiers() & Qt::KeypadModifier;
    const int key = e->key();
    if (key >= Qt::Key_0 && key <= Qt::Key_9) return (pad ? Key::Pad_0 : '0') + (key - Qt::Key_0);
    switch (key) {
    case Qt::Key_Backspace:
        return Key::Back;
    case Qt::Key_Delete:
        return Key::Delete;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return Key::Enter;
    case Qt::Key_Period:
        return pad ? Key::Pad_Decimal : Key::Point;
    case Qt::Key_Comma:
        return pad ? Key::Pad_Decimal : Key::Comma;
    case Qt::Key_Minus:
        return pad ? Key::Pad_Minus : Key::Minus;
    case Qt::Key_P:
        return Key::P;
    case Qt::Key_O:
        return Key::O;
    case Qt::Key_A:
        return Key::A;
    case Qt::Key_Z:
        return Key::Z;
    default:
        return 0;
    }
}

Grid_Selection View_Selection(const QTableView* view, int first_col) {
    QModelIndex current = view->currentIndex();
    QItemSelection selection = view->selectionModel()->selection();
    if (selection.isEmpty()) {
        int r = current.isValid() ? std::max(current.row(), 1) : 1;
        int c = current.isValid() ? std::max(current.column(), 1) : first_col;
        return {r, c, r, c};
    }
    const QItemSelectionRange& range = selection.first();
    bool anchored = current.isValid() && range.contains(current);
    int row = anchored ? current.row() : range.top();
    int col = anchored ? current.column() : range.left();
    return {row, col, row == range.top() ? range.bottom() : range.top(),
            col == range.left() ? range.right() : range.left()};
}

void Image_Table_Model::Set_Font(const QFont& font) {
    bold_ = font;
    bold_.setBold(true);
}

Image_Table_Model::Image_Table_Model(Context_Source source, Table_Id id, QObject* parent)
    : QAbstractTableModel(parent), source_(std::move(source)), id_(id) {
    shape_ = Grid_Size(source_(), id_);
}

int Image_Table_Model::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : shape_.rows;
}

int Image_Table_Model::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : shape_.cols;
}

QVariant Image_Table_Model::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    bool header = index.row() == 0 || index.column() == 0;
    switch (role) {
    case Qt::DisplayRole: {
        int r = index.row(), c = index.column();
        if (!key_text_.isNull() && r >= key_r1_ && r <= key_r2_ && c >= key_c1_ && c <= key_c2_)
            return key_text_;
        return QString::fromStdString(Grid_Text(source_(), id_, r, c));
    }
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignCenter);
    case Qt::BackgroundRole:
        if (header) return QBrush(QColor(0xd8, 0xdc, 0xe4));
        if (colours_.cells.empty()) return {};
        return QBrush(Cell_Colour(index.row(), index.column()));
    case Qt::ForegroundRole: {
        // Text stays readable on the dark end of the grey scale.
        if (header || colours_.cells.empty()) return {};
        QColor back = Cell_Colour(index.row(), index.column());
        return back.lightness() < 110 ? QBrush(Qt::white) : QVariant();
    }
    case Qt::FontRole:
        return header ? QVariant(bold_) : QVariant();
    case Qt::ToolTipRole: {
        const int i = (index.row() - 1) * colours_.cols + (index.column() - 1);
        if (header || index.column() > colours_.cols || i < 0 || i >= static_cast<int>(tooltips_.size()))
            return {};
        return tooltips_[static_cast<std::size_t>(i)];
    }
    default:
        return {};
    }
}

Qt::ItemFlags Image_Table_Model::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    // Only cells that hold a byte can be selected: a selection never takes in a header or
    // the sensor column of a one-dimensional table.
    if (Grid_Address(source_(), id_, index.row(), index.column()) < 0) return Qt::ItemIsEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

void Image_Table_Model::Set_Colours(const Map_Colours& colours) {
    colours_ = colours;
}

void Image_Table_Model::Set_Tooltips(std::vector<QString> tips) {
    tooltips_ = std::move(tips);
}

QColor Image_Table_Model::Cell_Colour(int row, int col) const {
    if (row < 1 || col < 1 || row > colours_.rows || col > colours_.cols) return Qt::white;
    const Rgb& c = colours_.At(row, col);
    return QColor(c.r, c.g, c.b);
}

void Image_Table_Model::Show_Key_Text(int r1, int c1, int r2, int c2, const QString& text) {
    key_r1_ = r1, key_c1_ = c1, key_r2_ = r2, key_c2_ = c2;
    key_text_ = text.isNull() ? QString("") : text;
    emit dataChanged(index(r1, c1), index(r2, c2), {Qt::DisplayRole});
}

void Image_Table_Model::Drop_Key_Text() {
    if (key_text_.isNull()) return;
    key_text_ = QString();
    if (key_r2_ >= key_r1_ && key_c2_ >= key_c1_)
        emit dataChanged(index(key_r1_, key_c1_), index(key_r2_, key_c2_), {Qt::DisplayRole});
}

bool Image_Table_Model::Refresh() {
    Grid_Shape shape = Grid_Size(source_(), id_);
    if (shape.rows != shape_.rows || shape.cols != shape_.cols) {
        beginResetModel();
        shape_ = shape;
        key_text_ = QString();
        endResetModel();
        return true;
    }
    if (shape_.rows > 0 && shape_.cols > 0)
        emit dataChanged(index(0, 0), index(shape_.rows - 1, shape_.cols - 1),
                         {Qt::DisplayRole, Qt::BackgroundRole});
    return false;
}

const QStaticText& Grid_Cell_Delegate::Laid_Out(const QString& text, const QFont& font) const {
    auto& cache = texts_[font.bold() ? 1 : 0];
    auto it = cache.find(text);
    if (it != cache.end()) return *it;
    // Typed texts come and go; the cache is cleared rather than allowed to grow.
    if (cache.size() > 4096) cache.clear();
    QStaticText laid(text);
    laid.setTextFormat(Qt::PlainText);
    laid.setPerformanceHint(QStaticText::AggressiveCaching);
    laid.prepare(QTransform(), font);
    return *cache.insert(text, laid);
}

void Grid_Cell_Delegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
    const bool selected = option.state & QStyle::State_Selected;
    QVariant back = index.data(Qt::BackgroundRole);
    if (selected)
        painter->fillRect(option.rect, option.palette.brush(QPalette::Highlight));
    else if (back.canConvert<QBrush>())
        painter->fillRect(option.rect, back.value<QBrush>());
    QString text = index.data(Qt::DisplayRole).toString();
    if (text.isEmpty()) return;
    QVariant font_role = index.data(Qt::FontRole);
    QFont font = font_role.isValid() ? font_role.value<QFont>() : option.font;
    QVariant fore = index.data(Qt::ForegroundRole);
    QColor pen = selected                    ? option.palette.color(QPalette::HighlightedText)
                 : fore.canConvert<QBrush>() ? fore.value<QBrush>().color()
                                             : option.palette.color(QPalette::Text);
    const QStaticText& laid = Laid_Out(text, font);
    QSizeF size = laid.size();
    QPointF at(option.rect.x() + (option.rect.width() - size.width()) / 2,
               option.rect.y() + (option.rect.height() - size.height()) / 2);
    painter->save();
    painter->setFont(font);
    painter->setPen(pen);
    painter->setClipRect(option.rect);
    painter->drawStaticText(at, laid);
    painter->restore();
}

} // namespace quorlen::ui
