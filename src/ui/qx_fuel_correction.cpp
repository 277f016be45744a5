#include "ui/qx_fuel_correction.h"

#include "app/app_context.h"
#include "image/scaling.h"
#include "tables/cell_entry.h"
#include "ui/qt_dialogs.h"

#include <QBrush>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace quorlen::ui {

namespace {

// A threshold as a tuner types it: up to two decimals, none that say nothing.
std::string Number(double v) {
    std::string text = Format_Number(v, "0.00");
    while (text.back() == '0')
        text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text;
}

const std::string& Signal_Unit(const Log_State& log, int column) {
    static const std::string none;
    return column >= 1 && column <= Log_Signal_Count
               ? log.Log_Signal_Tab[static_cast<std::size_t>(column - 1)].unit
               : none;
}

// More fuel reddens, less blues, by the size of the change; a cell that had its say and
// stays is pale green.
QColor Cell_Colour(const Cell_Correction& c) {
    if (!c.enough) return Qt::white;
    if (!c.changed) return QColor(226, 243, 226);
    const double t = std::min(std::fabs(c.percent) / 15.0, 1.0);
    const int fade = static_cast<int>(std::lround(225 - 120 * t));
    return c.percent > 0 ? QColor(255, fade, fade) : QColor(fade, fade, 255);
}

} // namespace

QX_Fuel_Correction::QX_Fuel_Correction(App_Context& app, Fuel_Correction_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)) {
    setObjectName("QX_Fuel_Correction");
    setWindowTitle("Fuel correction");
    auto* layout = new QVBoxLayout(this);

    auto* filters = new QGroupBox("Steady rows, and how far a pass goes", this);
    auto* grid = new QGridLayout(filters);
    const struct {
        const char* name;
        const char* caption;
        int row, col;
    } rows[] = {
        {"txt_Min_Rpm", "Engine speed from", 0, 0},
        {"txt_Min_Coolant", "Coolant from", 1, 0},
        {"txt_Max_Throttle_Rate", "Throttle moving slower than", 2, 0},
        {"txt_Settle", "Settling after a throttle move or enrichment", 3, 0},
        {"txt_Min_Seconds", "Steady time a cell needs", 0, 1},
        {"txt_Max_Change", "Most change of a cell in one pass", 1, 1},
        {"txt_Fixed_Target", "Target when AFR control is off", 2, 1},
    };
    for (const auto& r : rows) {
        auto* caption = new QLabel(r.caption, filters);
        QLineEdit* edit = Field(r.name, "");
        auto* unit = new QLabel(filters);
        units_[r.name] = unit;
        grid->addWidget(caption, r.row, r.col * 4);
        grid->addWidget(edit, r.row, r.col * 4 + 1);
        grid->addWidget(unit, r.row, r.col * 4 + 2);
        connect(edit, &QLineEdit::returnPressed, this, &QX_Fuel_Correction::cmd_Propose_Click);
    }
    grid->setColumnMinimumWidth(3, 24);
    grid->setColumnStretch(7, 1);
    fields_["txt_Fixed_Target"]->setToolTip("In the lambda sensor's unit; the AFR target table is used when "
                                            "AFR control is on");
    layout->addWidget(filters);

    lbl_Study_ = new QLabel(this);
    lbl_Study_->setObjectName("lbl_Study");
    lbl_Study_->setWordWrap(true);
    layout->addWidget(lbl_Study_);

    grid_ = new QTableWidget(this);
    grid_->setObjectName("Fuel_Correction_Grid");
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    grid_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    grid_->verticalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    grid_->horizontalHeader()->setMinimumSectionSize(44);
    grid_->setWordWrap(true);
    QFont small = grid_->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    grid_->setFont(small);
    layout->addWidget(grid_, 1);

    auto* buttons = new QHBoxLayout;
    const auto button = [&](const char* name, const char* caption, const char* tip,
                            void (QX_Fuel_Correction::*slot)()) {
        auto* b = new QPushButton(caption, this);
        b->setObjectName(name);
        b->setToolTip(tip);
        connect(b, &QPushButton::clicked, this, slot);
        buttons->addWidget(b);
        return b;
    };
    button("cmd_Propose", "Propose again", "Study the open log again with the thresholds above",
           &QX_Fuel_Correction::cmd_Propose_Click);
    button("cmd_Select_Changes", "Select all changes", "Select every cell with a proposed change",
           &QX_Fuel_Correction::cmd_Select_Changes_Click);
    cmd_Apply_ = button("cmd_Apply", "Apply selected cells",
                        "Write the selected cells' new times into the fuel map (undo takes them back)",
                        &QX_Fuel_Correction::cmd_Apply_Click);
    // Only chosen cells are written, so there is nothing to apply until some are chosen.
    connect(grid_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { cmd_Apply_->setEnabled(grid_->selectionModel()->hasSelection()); });
    lbl_Status_ = new QLabel(this);
    lbl_Status_->setObjectName("lbl_Status");
    buttons->addWidget(lbl_Status_, 1);
    layout->addLayout(buttons);
    Show_Fields();
    resize(1180, 720);
}

QLineEdit* QX_Fuel_Correction::Field(const char* name, const std::string& text) {
    auto* edit = new QLineEdit(QString::fromStdString(text), this);
    edit->setObjectName(name);
    edit->setMaximumWidth(70);
    fields_[name] = edit;
    return edit;
}

void QX_Fuel_Correction::Show_Fields() {
    const Steady_Filter& f = options_.steady;
    const std::pair<const char*, double> values[] = {
        {"txt_Min_Rpm", f.min_rpm},
        {"txt_Min_Coolant", f.min_coolant},
        {"txt_Max_Throttle_Rate", f.max_throttle_rate},
        {"txt_Settle", f.settle_seconds},
        {"txt_Min_Seconds", options_.min_seconds},
        {"txt_Max_Change", options_.max_change_pct},
    };
    for (auto [name, value] : values)
        fields_[name]->setText(QString::fromStdString(Number(value)));
    if (options_.fixed_target)
        fields_["txt_Fixed_Target"]->setText(QString::fromStdString(Number(*options_.fixed_target)));
}

void QX_Fuel_Correction::Read_Fields() {
    const auto value = [this](const char* name, double& into) {
        const std::string text = To_8bit(fields_[name]->text());
        if (!text.empty()) into = std::max(0.0, Text_To_Double(text));
    };
    value("txt_Min_Rpm", options_.steady.min_rpm);
    value("txt_Min_Coolant", options_.steady.min_coolant);
    value("txt_Max_Throttle_Rate", options_.steady.max_throttle_rate);
    value("txt_Settle", options_.steady.settle_seconds);
    value("txt_Min_Seconds", options_.min_seconds);
    value("txt_Max_Change", options_.max_change_pct);
    const std::string target = To_8bit(fields_["txt_Fixed_Target"]->text());
    if (target.empty())
        options_.fixed_target.reset();
    else
        options_.fixed_target = Text_To_Double(target);
}

void QX_Fuel_Correction::showEvent(QShowEvent* event) {
    Child_Form::showEvent(event);
    cmd_Propose_Click();
}

void QX_Fuel_Correction::cmd_Propose_Click() {
    Read_Fields();
    const Log_State& log = *app_.log_state;
    proposal_ = Propose_Fuel_Correction(app_.image, app_.sensors, log, options_);
    lbl_Status_->clear();
    Show_Proposal();
}

void QX_Fuel_Correction::Show_Proposal() {
    const Log_State& log = *app_.log_state;
    const Fuel_Proposal& p = proposal_;
    units_["txt_Min_Rpm"]->setText("rpm");
    units_["txt_Min_Coolant"]->setText(From_8bit(Signal_Unit(log, log.columns.Col_AN4)));
    units_["txt_Max_Throttle_Rate"]->setText(From_8bit(Signal_Unit(log, log.columns.Col_AN2)) + "/s");
    units_["txt_Settle"]->setText("s");
    units_["txt_Min_Seconds"]->setText("s");
    units_["txt_Max_Change"]->setText("%");
    units_["txt_Fixed_Target"]->setText(From_8bit(p.target_unit));
    if (fields_["txt_Fixed_Target"]->text().isEmpty())
        fields_["txt_Fixed_Target"]->setPlaceholderText(QString::fromStdString(Number(p.fixed_target)));
    fields_["txt_Fixed_Target"]->setEnabled(!p.afr_control);

    QString study;
    if (log.Last_Row == 0) {
        study = "No log is open: record one or open a file in the log window.";
    } else if (!p.problem.empty()) {
        study = From_8bit(p.problem);
    } else {
        study =
            QString("Target: %1. Injector dead time %2 ms. %3 rows, %4 steady")
                .arg(From_8bit(p.target_text), QString::fromStdString(Format_Number(p.dead_time_ms, "0.000")))
                .arg(p.rows_total)
                .arg(p.verdicts[0]);
        QStringList out;
        for (int v = 1; v < Verdict_Count; ++v)
            if (p.verdicts[static_cast<std::size_t>(v)] > 0)
                out << QString("%1 %2")
                           .arg(p.verdicts[static_cast<std::size_t>(v)])
                           .arg(Verdict_Text(static_cast<Row_Verdict>(v)));
        if (!out.isEmpty()) study += "; left out: " + out.join(", ");
        study += QString(". %1 cells to change.").arg(p.Changed_Count());
    }
    lbl_Study_->setText(study);

    grid_->clear();
    grid_->setRowCount(p.rows);
    grid_->setColumnCount(p.cols);
    const Tables_Context ctx = app_.Tables(hooks_.Dialogs());
    QStringList rpm, load;
    for (int c = 1; c <= p.cols; ++c)
        rpm << QString::fromStdString(Grid_Text(ctx, Table_Id::Fuel_3D, 0, c));
    for (int r = 1; r <= p.rows; ++r)
        load << QString::fromStdString(Grid_Text(ctx, Table_Id::Fuel_3D, r, 0));
    grid_->setHorizontalHeaderLabels(rpm);
    grid_->setVerticalHeaderLabels(load);
    for (const Cell_Correction& c : p.cells) {
        auto* item = new QTableWidgetItem;
        item->setTextAlignment(Qt::AlignCenter);
        QString text;
        if (c.seconds > 0) {
            const QString seconds = QString::fromStdString(Format_Number(c.seconds, "0.0")) + " s";
            // A cell that stays shows its time alone; its pale green says it was heard.
            text =
                c.changed
                    ? QString::fromStdString((c.percent > 0 ? "+" : "") + Format_Number(c.percent, "0.0")) +
                          "%\n" + seconds
                    : seconds;
            if (!c.enough) item->setForeground(Qt::gray);
            item->setToolTip(
                QString("Lambda %1 % %2 over %3 s of steady rows; %4 ms to %5 ms%6")
                    .arg(QString::fromStdString(Format_Number(std::fabs(c.ratio - 1) * 100, "0.0")),
                         c.ratio >= 1 ? "lean" : "rich",
                         QString::fromStdString(Format_Number(c.seconds, "0.00")),
                         QString::fromStdString(Fuel_Cell_Text(c.old_byte)),
                         QString::fromStdString(Fuel_Cell_Text(c.new_byte)),
                         c.limited ? ", held to the most change of a pass" : ""));
        }
        item->setText(text);
        item->setBackground(Cell_Colour(c));
        // Only a proposed change can be chosen.
        item->setFlags(c.changed ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::ItemIsEnabled);
        grid_->setItem(c.row - 1, c.col - 1, item);
    }
    cmd_Apply_->setEnabled(false);
}

void QX_Fuel_Correction::cmd_Select_Changes_Click() {
    grid_->clearSelection();
    for (const Cell_Correction& c : proposal_.cells)
        if (c.changed) grid_->item(c.row - 1, c.col - 1)->setSelected(true);
}

void QX_Fuel_Correction::cmd_Apply_Click() {
    std::vector<std::pair<int, int>> chosen;
    for (const QModelIndex& index : grid_->selectionModel()->selectedIndexes())
        chosen.emplace_back(index.row() + 1, index.column() + 1);
    if (chosen.empty()) return;
    const int written = Apply_Fuel_Correction(app_.image, app_.undo, proposal_, chosen);
    if (written > 0 && hooks_.Update_All) hooks_.Update_All();
    for (auto [r, c] : chosen) {
        const Cell_Correction& cell = proposal_.At(r, c);
        if (app_.image.CardByte[static_cast<std::size_t>(cell.address)] != cell.new_byte) continue;
        QTableWidgetItem* item = grid_->item(r - 1, c - 1);
        item->setText(item->text() + "\napplied");
        item->setFlags(Qt::ItemIsEnabled);
    }
    grid_->clearSelection();
    lbl_Status_->setText(written > 0
                             ? QString("%1 cells written into the fuel map, marked for the next write. "
                                       "Take a new log before the next pass.")
                                   .arg(written)
                             : QString("Nothing to write: the chosen cells were changed since."));
}

} // namespace quorlen::ui
