// Editing the grids of the map tabs: the keys and the clipboard of the grids, the buttons and
// text boxes beside them, the colouring of the main maps and the two views that follow the
// maps (surface and verify). Every rule lives in the table logic; this file binds it to the
// widgets and puts the selection back afterwards.

#include "ui/map_tabs.h"

#include "analysis/cell_hits.h"
#include "tables/cell_entry.h"
#include "tables/selection_ops.h"
#include "ui/qx_3dmap.h"
#include "ui/qx_verify_frm.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QClipboard>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {

bool Is_Main_Map(Table_Id id) {
    return id == Table_Id::Fuel_3D || id == Table_Id::Ignition_3D;
}

void Paint_Frame(QFrame* frame, const Rgb& c) {
    frame->setStyleSheet(QStringLiteral("background-color: rgb(%1,%2,%3); border: 1px solid gray;")
                             .arg(c.r)
                             .arg(c.g)
                             .arg(c.b));
}

} // namespace

// --- building --------------------------------------------------------------------------------

void Map_Tabs::Build_Edit_Panels() {
    one_d_panel_ = Build_One_D_Panel();
    main_map_panel_ = Build_Main_Map_Panel();
    one_d_panel_->hide();
    main_map_panel_->hide();
}

QWidget* Map_Tabs::Build_One_D_Panel() {
    auto* panel = new QWidget(fuel_->widget(1));
    panel->setObjectName("Table_Side_1D");
    auto* layout = new QGridLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    auto button = [&](const char* name, const QString& caption, const QString& tip, int row, int col,
                      auto handler) {
        auto* b = new QPushButton(caption, panel);
        b->setObjectName(name);
        b->setToolTip(tip);
        layout->addWidget(b, row, col);
        edit_controls_[name] = b;
        connect(b, &QPushButton::clicked, this, [this, handler] {
            auto id = Current_Table(app_.tables);
            if (!id) return;
            Tables_Context ctx = Context();
            handler(ctx, Selection_Of(*id), Edit());
            Show_Edit_Texts();
        });
    };
    auto text = [&](const char* name, std::string Edit_State::*field, int row) {
        auto* box = new QLineEdit(panel);
        box->setObjectName(name);
        box->setMaximumWidth(70);
        layout->addWidget(box, row, 0);
        edit_texts_[name] = box;
        connect(box, &QLineEdit::textEdited, this,
                [this, field](const QString& t) { app_.tables.edit.*field = t.toStdString(); });
    };
    button("plus", "+1", "One step up on every selected point", 0, 0, plus_Click);
    button("minus", "-1", "One step down on every selected point", 0, 1, minus_Click);
    button("steep", "Steep", "Adds 0, 1, 2 ... from the first selected point", 1, 0, steep_Click);
    button("flat", "Flat", "Takes away 0, 1, 2 ... from the first selected point", 1, 1, flat_Click);
    button("steep_L", "Steep L", "Adds ... 2, 1, 0 up to the last selected point", 2, 0, steep_L_Click);
    button("flat_L", "Flat L", "Takes away ... 2, 1, 0 up to the last selected point", 2, 1, flat_L_Click);
    text("scale_table_text", &Edit_State::scale_table_text, 3);
    button("scale_table", "%", "The selected values times this percentage", 3, 1, scale_table_Click);
    text("set_table_text", &Edit_State::set_table_text, 4);
    button("set_table", "Set", "This value into every selected point", 4, 1, set_table_Click);
    layout->addWidget(new QLabel("Max", panel), 5, 0);
    maxText_ = new QLabel(panel);
    maxText_->setObjectName("maxText");
    layout->addWidget(maxText_, 5, 1);
    layout->addWidget(new QLabel("Min", panel), 6, 0);
    minText_ = new QLabel(panel);
    minText_->setObjectName("minText");
    layout->addWidget(minText_, 6, 1);
    layout->setRowStretch(7, 1);
    return panel;
}

QWidget* Map_Tabs::Build_Main_Map_Panel() {
    auto* panel = new QWidget(fuel_->widget(0));
    panel->setObjectName("Table_Side_3D");
    auto* layout = new QGridLayout(panel);
    layout->setContentsMargins(0, 2, 0, 0);
    layout->setHorizontalSpacing(4);
    layout->setVerticalSpacing(2);
    auto button = [&](const char* name, const QString& caption, const QString& tip, int row, int col,
                      auto handler) {
        auto* b = new QPushButton(caption, panel);
        b->setObjectName(name);
        b->setToolTip(tip);
        layout->addWidget(b, row, col);
        edit_controls_[name] = b;
        connect(b, &QPushButton::clicked, this, [this, handler] {
            auto id = Current_Table(app_.tables);
            if (!id || !Is_Main_Map(*id)) return;
            Tables_Context ctx = Context();
            Grid_Selection back = handler(ctx, Selection_Of(*id), Edit());
            Set_Selection(*id, back);
            Show_Edit_Texts();
        });
    };
    auto text = [&](const char* name, std::string Edit_State::*field, int row, int col) {
        auto* box = new QLineEdit(panel);
        box->setObjectName(name);
        box->setMaximumWidth(60);
        layout->addWidget(box, row, col);
        edit_texts_[name] = box;
        connect(box, &QLineEdit::textEdited, this,
                [this, field](const QString& t) { app_.tables.edit.*field = t.toStdString(); });
    };
    button("steep_Load_3D", QString::fromUtf8("Steep \u2193"), "Adds 0, 1, 2 ... down from the top row", 0, 0,
           steep_Load_3D_Click);
    button("steep_Load_3D_B", QString::fromUtf8("Steep \u2191"), "Adds 0, 1, 2 ... up from the bottom row", 1,
           0, steep_Load_3D_B_Click);
    button("flat_Load_3D", QString::fromUtf8("Flat \u2193"), "Takes away 0, 1, 2 ... down from the top row",
           0, 1, flat_Load_3D_Click);
    button("flat_Load_3D_B", QString::fromUtf8("Flat \u2191"),
           "Takes away 0, 1, 2 ... up from the bottom row", 1, 1, flat_Load_3D_B_Click);
    button("steep_RPM_3D", QString::fromUtf8("Steep \u2192"), "Adds 0, 1, 2 ... right from the left column",
           0, 2, steep_RPM_3D_Click);
    button("steep_RPM_3D_L", QString::fromUtf8("Steep \u2190"), "Adds 0, 1, 2 ... left from the right column",
           1, 2, steep_RPM_3D_L_Click);
    button("flat_RPM_3D", QString::fromUtf8("Flat \u2192"),
           "Takes away 0, 1, 2 ... right from the left column", 0, 3, flat_RPM_3D_Click);
    button("flat_RPM_3D_L", QString::fromUtf8("Flat \u2190"),
           "Takes away 0, 1, 2 ... left from the right column", 1, 3, flat_RPM_3D_L_Click);
    button("plus_3d", "+1", "One step up on every selected cell (A)", 0, 4, plus_3d_Click);
    button("minus_3D", "-1", "One step down on every selected cell (Z)", 1, 4, minus_3D_Click);
    button("Even_Cols_cmd", "Even cols", "Straight lines between the outer columns of the selection", 0, 5,
           Even_Cols_cmd_Click);
    button("Even_Rows_cmd", "Even rows", "Straight lines between the outer rows of the selection", 1, 5,
           Even_Rows_cmd_Click);
    text("scale_table_text_3D", &Edit_State::scale_table_text_3D, 0, 6);
    button("scale_table_3D", "%",
           "The selected values times this percentage (fuel: the time behind the "
           "injector's dead time)",
           0, 7, scale_table_3D_Click);
    text("set_table_text_3D", &Edit_State::set_table_text_3D, 1, 6);
    button("set_table_3D", "Set", "This value into every selected cell", 1, 7, set_table_3D_Click);

    auto* view_3d = new QPushButton("3D view", panel);
    view_3d->setObjectName("View_3D_cmd");
    view_3d->setToolTip("The map as a surface");
    layout->addWidget(view_3d, 0, 8);
    connect(view_3d, &QPushButton::clicked, this, &Map_Tabs::Show_3D_View);

    // Colouring: the four modes, the mid value and the colours of its two ends.
    auto* colours = new QHBoxLayout;
    Color_3D_Check_ = new QButtonGroup(panel);
    const char* captions[] = {"No color", "Colored as ms", "Gray scale", "Colored as duty cycle", "Log hits"};
    for (int i = 0; i < 5; ++i) {
        auto* option = new QRadioButton(captions[i], panel);
        option->setObjectName(QStringLiteral("Color_3D_Check(%1)").arg(i));
        Color_3D_Check_->addButton(option, i);
        colours->addWidget(option);
        edit_controls_[option->objectName().toStdString()] = option;
    }
    Color_3D_Check_->button(static_cast<int>(app_.tables.colours.Color_3D_Check))->setChecked(true);
    connect(Color_3D_Check_, &QButtonGroup::idClicked, this, [this](int mode) {
        app_.tables.colours.Color_3D_Check = static_cast<Colour_Mode>(mode);
        Recolour();
    });
    colours->addSpacing(8);
    colours->addWidget(new QLabel("Mid", panel));
    Mid_3D_limit_txt_ = new QLineEdit(QString::fromStdString(app_.tables.colours.Mid_3D_limit_txt), panel);
    Mid_3D_limit_txt_->setObjectName("Mid_3D_limit_txt");
    Mid_3D_limit_txt_->setMaximumWidth(50);
    Mid_3D_limit_txt_->setToolTip("The value that shows nearly white; while verifying, the percentage "
                                  "that makes a difference strong");
    edit_controls_["Mid_3D_limit_txt"] = Mid_3D_limit_txt_;
    colours->addWidget(Mid_3D_limit_txt_);
    connect(Mid_3D_limit_txt_, &QLineEdit::textEdited, this, [this](const QString& t) {
        app_.tables.colours.Mid_3D_limit_txt = t.toStdString();
        Recolour();
        if (app_.tables.colours.Verify_Check) Verify_View();
    });
    for (QFrame** frame : {&Color_Low_frame_, &Color_High_frame_}) {
        *frame = new QFrame(panel);
        (*frame)->setObjectName(frame == &Color_Low_frame_ ? "Color_Low_frame" : "Color_High_frame");
        (*frame)->setFixedSize(22, 16);
        colours->addWidget(*frame);
    }
    Color_Low_frame_->setToolTip("Colour of the lowest value");
    Color_High_frame_->setToolTip("Colour of the highest value");
    edit_controls_["Color_3D_Check(4)"]->setToolTip(
        "How long the open log ran in each cell, spread over the four points around each row");
    Log_Hits_Legend_ = new QLabel(panel);
    Log_Hits_Legend_->setObjectName("Log_Hits_Legend");
    Log_Hits_Legend_->hide();
    colours->addSpacing(6);
    colours->addWidget(Log_Hits_Legend_);
    colours->addSpacing(12);
    Verify_Check_ = new QCheckBox("Verify", panel);
    Verify_Check_->setObjectName("Verify_Check");
    Verify_Check_->setToolTip("Show how the box's settings differ from the program's");
    edit_controls_["Verify_Check"] = Verify_Check_;
    colours->addWidget(Verify_Check_);
    connect(Verify_Check_, &QCheckBox::toggled, this, [this](bool on) {
        app_.tables.colours.Verify_Check = on;
        Verify_View();
    });
    Verify_limit_scroll_ = new QScrollBar(Qt::Horizontal, panel);
    Verify_limit_scroll_->setObjectName("Verify_limit_scroll");
    Verify_limit_scroll_->setRange(0, 100);
    Verify_limit_scroll_->setMinimumWidth(80);
    Verify_limit_scroll_->setToolTip("The percentage that makes a difference strong");
    colours->addWidget(Verify_limit_scroll_);
    connect(Verify_limit_scroll_, &QScrollBar::valueChanged, this, [this](int value) {
        app_.tables.colours.Mid_3D_limit_txt = std::to_string(value);
        Mid_3D_limit_txt_->setText(QString::number(value));
        Recolour();
        Verify_View();
    });
    colours->addStretch(1);
    layout->addLayout(colours, 2, 0, 1, 10);
    layout->setColumnStretch(9, 1);
    return panel;
}

// --- the panels follow the tabs -------------------------------------------------------------------

void Map_Tabs::Place_Panels() {
    auto id = Current_Table(app_.tables);
    QWidget* show = nullptr;
    QWidget* hide = nullptr;
    if (id && Is_Main_Map(*id)) {
        show = main_map_panel_;
        hide = one_d_panel_;
    } else if (id && One_D(*id)) {
        show = one_d_panel_;
        hide = main_map_panel_;
    } else {
        one_d_panel_->hide();
        main_map_panel_->hide();
        return;
    }
    hide->hide();
    QBoxLayout* slot = panel_slots_[*id];
    if (slot->indexOf(show) < 0) slot->addWidget(show);
    show->show();
    if (Is_Main_Map(*id)) {
        static_cast<QRadioButton*>(edit_controls_["Color_3D_Check(1)"])
            ->setText(*id == Table_Id::Fuel_3D ? "Colored as ms" : "Colored");
        Colours_Follow_Image();
        if (app_.tables.colours.Verify_Check) Verify_View();
    }
    Handle_button_enable();
}

void Map_Tabs::Handle_button_enable() {
    for (const Button_State& b : quorlen::Handle_button_enable(app_.tables)) {
        auto it = edit_controls_.find(b.name);
        if (it != edit_controls_.end()) it->second->setEnabled(b.enabled);
    }
    auto id = Current_Table(app_.tables);
    if (id && One_D(*id)) {
        Tables_Context ctx = Context();
        if (Get_Table_maxmin(ctx, *id)) {
            maxText_->setText(QString::fromStdString(app_.tables.edit.maxText));
            minText_->setText(QString::fromStdString(app_.tables.edit.minText));
        } else {
            maxText_->clear();
            minText_->clear();
        }
    }
}

void Map_Tabs::Show_Edit_Texts() {
    const Edit_State& e = app_.tables.edit;
    const std::pair<const char*, const std::string*> texts[] = {
        {"scale_table_text", &e.scale_table_text},
        {"set_table_text", &e.set_table_text},
        {"scale_table_text_3D", &e.scale_table_text_3D},
        {"set_table_text_3D", &e.set_table_text_3D},
    };
    for (auto [name, text] : texts) {
        QLineEdit* box = edit_texts_[name];
        QString shown = QString::fromStdString(*text);
        if (box->text() != shown) box->setText(shown);
    }
}

// --- colours and the two views ----------------------------------------------------------------------

void Map_Tabs::Colours_Follow_Image() {
    Tables_Context ctx = Context();
    Map_Colours fuel = Update_3D_Colors(ctx);
    Map_Colours ign = Update_3D_Ign_Colors(ctx);
    const bool hits = app_.tables.colours.Color_3D_Check == Colour_Mode::Log_Hits;
    const bool ign_shown = Current_Table(app_.tables) == Table_Id::Ignition_3D;
    QString legend;
    for (auto [id, colours] : {std::pair{Table_Id::Fuel_3D, &fuel}, std::pair{Table_Id::Ignition_3D, &ign}}) {
        std::vector<QString> tips;
        if (hits) {
            const Hit_Grid grid =
                Cell_Hits(Make_Map_Locator(app_.image, app_.sensors, *app_.log_state, id), *app_.log_state);
            *colours = Log_Hit_Colours(grid);
            for (double seconds : grid.seconds)
                tips.push_back(QString::fromStdString(Hit_Text(seconds)));
            if ((id == Table_Id::Ignition_3D) == ign_shown) legend = QString::fromStdString(Hit_Legend(grid));
        }
        models_[id]->Set_Colours(*colours);
        models_[id]->Set_Tooltips(std::move(tips));
    }
    const Map_Colours& shown = ign_shown ? ign : fuel;
    Paint_Frame(Color_Low_frame_, shown.low);
    Paint_Frame(Color_High_frame_, shown.high);
    Log_Hits_Legend_->setText(legend);
    Log_Hits_Legend_->setVisible(hits);
    Color_Low_frame_->setToolTip(hits ? "No time in the log" : "Colour of the lowest value");
    Color_High_frame_->setToolTip(hits ? "The cell the log spent the most time in"
                                       : "Colour of the highest value");
}

void Map_Tabs::Log_Changed() {
    if (app_.tables.colours.Color_3D_Check == Colour_Mode::Log_Hits) Recolour();
}

// A change of the colouring alone: the main maps repaint, nothing else is read.
void Map_Tabs::Recolour() {
    Colours_Follow_Image();
    for (Table_Id id : {Table_Id::Fuel_3D, Table_Id::Ignition_3D})
        models_[id]->Refresh();
}

void Map_Tabs::Verify_View() {
    if (!hooks_.Form) return;
    if (!app_.tables.colours.Verify_Check) {
        if (hooks_.Form_Exists && hooks_.Form_Exists("QX_Verify_frm")) hooks_.Form("QX_Verify_frm")->hide();
        return;
    }
    auto* form = static_cast<QX_Verify_frm*>(hooks_.Form("QX_Verify_frm"));
    Table_Id map =
        Current_Table(app_.tables) == Table_Id::Ignition_3D ? Table_Id::Ignition_3D : Table_Id::Fuel_3D;
    bool first = !form->isVisible();
    form->Show_Verify(map);
    if (first) {
        form->Set_QX_Verify_Size(grids_[map]->size());
        form->show();
    }
}

void Map_Tabs::Show_3D_View() {
    if (!hooks_.Form) return;
    auto* form = static_cast<QX_3Dmap*>(hooks_.Form("QX_3Dmap"));
    form->Show_Map(Current_Table(app_.tables) == Table_Id::Ignition_3D ? 1 : 0);
    form->show();
    form->raise();
}

void Map_Tabs::Refresh_3D_View() {
    auto* form = static_cast<QX_3Dmap*>(hooks_.Form("QX_3Dmap"));
    if (form->isVisible()) form->Update_3D();
}

// --- grids ------------------------------------------------------------------------------------------

Grid_Selection Map_Tabs::Selection_Of(Table_Id id) const {
    return View_Selection(Grid(id), Is_Main_Map(id) ? 1 : 2);
}

void Map_Tabs::Set_Selection(Table_Id id, const Grid_Selection& sel) {
    QTableView* view = Grid(id);
    auto* model = view->model();
    QModelIndex anchor = model->index(sel.Row, sel.Col);
    QModelIndex corner = model->index(sel.RowSel, sel.ColSel);
    if (!anchor.isValid() || !corner.isValid()) return;
    view->selectionModel()->setCurrentIndex(anchor, QItemSelectionModel::NoUpdate);
    view->selectionModel()->select(QItemSelection(anchor, corner), QItemSelectionModel::ClearAndSelect);
}

Edit_Hooks Map_Tabs::Edit() {
    Edit_Hooks hooks;
    hooks.Update_All = hooks_.Update_All;
    hooks.Handle_button_enable = [this] { Handle_button_enable(); };
    hooks.Write_while_logging = hooks_.Write_while_logging;
    return hooks;
}

bool Map_Tabs::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
    for (auto& [id, view] : grids_)
        if (view == watched) return Grid_Key(id, static_cast<QKeyEvent*>(event));
    return QObject::eventFilter(watched, event);
}

bool Map_Tabs::Grid_Key(Table_Id id, QKeyEvent* e) {
    Tables_Context ctx = Context();
    Edit_Hooks hooks = Edit();
    const bool main_map = Is_Main_Map(id);
    const bool fuel = id == Table_Id::Fuel_3D;
    Grid_Selection sel = Selection_Of(id);

    const bool copy = e->matches(QKeySequence::Copy);
    if (copy || e->matches(QKeySequence::Paste)) {
        const int code = copy ? Ctrl_C : Ctrl_V;
        std::string clip = copy ? std::string() : QApplication::clipboard()->text().toStdString();
        if (main_map)
            (fuel ? Fuel_3D_Grid_KeyPress : Ignition_3D_Grid_KeyPress)(ctx, sel, code, clip, hooks);
        else
            One_D_Grid_KeyPress(ctx, id, sel, code, clip, hooks);
        if (copy) {
            QApplication::clipboard()->setText(QString::fromStdString(clip));
        } else {
            Set_Selection(id, sel);
            Show_Edit_Texts();
        }
        return true;
    }

    const int code = Grid_Key_Code(e);
    // Letters and signs that do nothing here must not move the cursor as a search would.
    const bool printable = !e->text().isEmpty() && e->text().at(0).isPrint() &&
                           !(e->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    if (code == 0) return printable;
    if (main_map) {
        Key_Outcome out = (fuel ? Fuel_3D_Grid_KeyDown : Ignition_3D_Grid_KeyDown)(ctx, sel, code, hooks);
        if (!out.handled) return printable;
        if (code == Key::A || code == Key::Z) Set_Selection(id, sel);
        if (out.shows_key_text) {
            if (hooks_.Update_All) hooks_.Update_All();
            Grid_Selection s = Selection_Of(id);
            models_[id]->Show_Key_Text(std::min(s.Row, s.RowSel), std::min(s.Col, s.ColSel),
                                       std::max(s.Row, s.RowSel), std::max(s.Col, s.ColSel),
                                       QString::fromStdString(app_.tables.edit.KeyText));
        }
        return true;
    }
    Key_Outcome out = One_D_Grid_KeyDown(ctx, id, sel, code, hooks);
    if (out.handled) Show_Edit_Texts();
    return out.handled || printable;
}

} // namespace quorlen::ui
