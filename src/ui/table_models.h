#pragma once
// A grid of the map tabs as a Qt model that reads the settings image: the view asks for the
// cells it paints, so a table update is a data-changed signal, not a rebuild. Row 0 and
// column 0 are the axis headers, as in the program's grids.

#include "tables/map_colours.h"
#include "tables/map_tables.h"

#include <QAbstractTableModel>
#include <QColor>
#include <QFont>
#include <QHash>
#include <QStaticText>
#include <QStyledItemDelegate>

#include <functional>
#include <vector>

class QKeyEvent;
class QTableView;

namespace quorlen::ui {

// The key code the grids' handlers know for a key event; 0 for one they don't.
int Grid_Key_Code(const QKeyEvent* e);
// The selection of a grid as the grid keeps it (anchor and far corner); without a selection
// the current cell, or row 1 and column `first_col`.
Grid_Selection View_Selection(const QTableView* view, int first_col);

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

    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // The back colours of the value cells (a main map's colouring); empty for plain white.
    void Set_Colours(const Map_Colours& colours);
    QColor Cell_Colour(int row, int col) const;
    // Tooltips of the value cells, row after row; empty for none.
    void Set_Tooltips(std::vector<QString> tips);
    // The selected cells show the number being typed until the selection moves on.
    void Show_Key_Text(int r1, int c1, int r2, int c2, const QString& text);
    void Drop_Key_Text();
    bool Shows_Key_Text() const { return !key_text_.isNull(); }

private:
    Context_Source source_;
    Table_Id id_;
    Grid_Shape shape_;
    QFont bold_;
    Map_Colours colours_;
    std::vector<QString> tooltips_;
    QString key_text_;
    int key_r1_ = 0, key_c1_ = 0, key_r2_ = -1, key_c2_ = -1;
};

// Paints a cell of the grids: its back colour (or the selection's), and its text centred,
// laid out once per distinct text and font. A keypress repaints every cell of a map, and
// the general delegate lays every text out anew each time.
class Grid_Cell_Delegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

private:
    const QStaticText& Laid_Out(const QString& text, const QFont& font) const;
    mutable QHash<QString, QStaticText> texts_[2]; // plain, bold
};

} // namespace quorlen::ui
