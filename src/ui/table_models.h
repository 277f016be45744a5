#pragma once
// A grid of the map tabs as a Qt model that reads the settings image: the view asks for the
// cells it paints, so a table update is a data-changed signal, not a rebuild. Row 0 and
// column 0 are the axis headers, as in the program's grids.

#include "tables/map_tables.h"

#include <QAbstractTableModel>
#include <QFont>

#include <functional>

namespace quorlen::ui {

class Image_Table_Model final : public QAbstractTableModel {
public:
    using Context_Source = std::function<Tables_Context()>;

    Image_Table_Model(Context_Source source, Table_Id id, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    Table_Id Id() const { return id_; }
    // The headers are painted in the bold of the view's font.
    void Set_Font(const QFont& font);
    // Follows the image: a new shape resets the model, otherwise every cell is signalled as
    // changed. Returns true when the shape changed.
    bool Refresh();

private:
    Context_Source source_;
    Table_Id id_;
    Grid_Shape shape_;
    QFont bold_;
};

} // namespace quorlen::ui
