#include "ui/table_models.h"

#include <QBrush>
#include <QColor>
#include <QFont>

namespace quorlen::ui {

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
    case Qt::DisplayRole:
        return QString::fromStdString(Grid_Text(source_(), id_, index.row(), index.column()));
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignCenter);
    case Qt::BackgroundRole:
        return header ? QBrush(QColor(0xd8, 0xdc, 0xe4)) : QVariant();
    case Qt::FontRole:
        return header ? QVariant(bold_) : QVariant();
    default:
        return {};
    }
}

bool Image_Table_Model::Refresh() {
    Grid_Shape shape = Grid_Size(source_(), id_);
    if (shape.rows != shape_.rows || shape.cols != shape_.cols) {
        beginResetModel();
        shape_ = shape;
        endResetModel();
        return true;
    }
    if (shape_.rows > 0 && shape_.cols > 0)
        emit dataChanged(index(0, 0), index(shape_.rows - 1, shape_.cols - 1), {Qt::DisplayRole});
    return false;
}

} // namespace quorlen::ui
