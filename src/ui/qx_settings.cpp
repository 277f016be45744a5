#include "ui/qx_settings.h"

#include "core/proc_guard.h"
#include "tables/cell_entry.h"
#include "ui/engine_config_box.h"
#include "ui/map_axes_panel.h"
#include "ui/model_preset_box.h"
#include "ui/qt_dialogs.h"
#include "ui/table_models.h"

#include <QAbstractButton>
#include <QApplication>
#include <QButtonGroup>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLineSeries>
#include <QScrollArea>
#include <QScrollBar>
#include <QShowEvent>
#include <QTabWidget>
#include <QTableView>
#include <QValueAxis>

#include <algorithm>

namespace quorlen::ui {

QX_settings::QX_settings(App_Context& app, QX_settings_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)) {
    setObjectName("QX_settings");
    app_.pages.lists = Load_Output_Lists(app_.ini);
    Build();
}

QX_settings::~QX_settings() = default;

void QX_settings::Show_Tab(int index) {
    if (index >= 0 && index < QX_Settings_SSTab_->count() && QX_Settings_SSTab_->isTabVisible(index))
        QX_Settings_SSTab_->setCurrentIndex(index);
    show();
    raise();
}

void QX_settings::showEvent(QShowEvent* event) {
    Child_Form::showEvent(event);
    Update_Settings();
}

// --- from the image ---------------------------------------------------------------------------

// The PWM2 extra fuel grid takes typed numbers and the clipboard as the map grids do.
bool QX_settings::eventFilter(QObject* watched, QEvent* event) {
    if (watched != PWM2_FuelCorr_grid_ || event->type() != QEvent::KeyPress)
        return Child_Form::eventFilter(watched, event);
    auto* e = static_cast<QKeyEvent*>(event);
    Tables_Context ctx = app_.Tables(hooks_.Dialogs());
    Edit_Hooks hooks;
    hooks.Update_All = hooks_.Update_All;
    Grid_Selection sel = View_Selection(PWM2_FuelCorr_grid_, 1);
    const bool copy = e->matches(QKeySequence::Copy);
    if (copy || e->matches(QKeySequence::Paste)) {
        std::string clip = copy ? std::string() : QApplication::clipboard()->text().toStdString();
        One_D_Grid_KeyPress(ctx, Table_Id::Pwm2_Fuel, sel, copy ? Ctrl_C : Ctrl_V, clip, hooks);
        if (copy) QApplication::clipboard()->setText(QString::fromStdString(clip));
        return true;
    }
    const int code = Grid_Key_Code(e);
    const bool printable = !e->text().isEmpty() && e->text().at(0).isPrint();
    if (code == 0) return printable; // a letter must not move the cursor as a search would
    return One_D_Grid_KeyDown(ctx, Table_Id::Pwm2_Fuel, sel, code, hooks).handled || printable;
}

void QX_settings::Update_Settings() {
    Proc_Guard guard(app_.log, "Update settings form");
    showing_ = true;
    // The layout first: its recommendation of teeth stands until the teeth slider has its say.
    guard.Step([&] {
        if (Engine_Config_frame_ != nullptr) Engine_Config_frame_->Follow_Image();
        if (Model_preset_frame_ != nullptr) Model_preset_frame_->Show_Changes();
    });
    guard.Step([&] {
        for (auto& row : rows_)
            Show_Row(*row);
    });
    guard.Step([&] {
        for (auto& choice : choices_)
            Show_Choice(*choice);
    });
    guard.Step([&] { Show_Right_Settings(); });
    guard.Step([&] {
        Update_Temp_Chart();
        Update_Battery_Chart();
        Update_Startup_Chart();
        Update_Digital_chart();
    });
    guard.Step([&] { Show_Analog_Inputs(); });
    guard.Step([&] {
        Pwm_Fuel_Model_->Refresh();
        PWM2_FuelCorr_grid_->resizeColumnsToContents();
    });
    guard.Step([&] {
        for (Map_Axes_Panel* axes : axes_)
            if (axes != nullptr) axes->Refresh();
    });
    showing_ = false;
}

void QX_settings::Show_Right_Settings() {
    Pages_Context ctx = app_.Pages();
    view_ = quorlen::Show_Right_Settings(ctx);
    Fuel_teeth_recomend_->setText(QString::fromStdString(app_.pages.Fuel_teeth_recomend));
    Forbidden_tooth_label_->setVisible(app_.pages.Forbidden_tooth_visible);
    for (int i = 0; i < 2; ++i)
        Description_label_[static_cast<std::size_t>(i)]->setText(
            QString::fromStdString(view_.Description_label[static_cast<std::size_t>(i)]));
    Apply_View();
}

void QX_settings::Update_scroll_change() {
    Pages_Context ctx = app_.Pages();
    showing_ = true;
    for (int address : quorlen::Update_scroll_change(ctx))
        if (Row* row = row_of_[static_cast<std::size_t>(address)]) Show_Row(*row);
    showing_ = false;
    Update_Temp_Chart();
    Update_Digital_chart();
    Show_Analog_Inputs();
}

// --- the user's changes ----------------------------------------------------------------------

void QX_settings::scroll_Change(int index, int value) {
    Row* row = index >= 0 && index < Array_Size ? row_of_[static_cast<std::size_t>(index)] : nullptr;
    if (row == nullptr) return;
    Pages_Context ctx = app_.Pages();
    Scroll_Outcome out = quorlen::scroll_Change(ctx, index, value);
    showing_ = true;
    Show_Row(*row);
    showing_ = false;
    Show_Messages(out.messages);
    if (!out.changed) return;
    // Other pages and the maps may depend on the value (dead time, sensors, functions).
    if (hooks_.Update_All)
        hooks_.Update_All();
    else
        Update_Settings();
}

void QX_settings::Text_Entered(int index) {
    Row* row = row_of_[static_cast<std::size_t>(index)];
    if (row == nullptr || showing_) return;
    Pages_Context ctx = app_.Pages();
    auto position = Position_For_Text(ctx, index, To_8bit(row->text->text()));
    // The slider's signal runs scroll_Change; then the box shows the value as the slider took it.
    if (position && *position != row->scroll->value()) row->scroll->setValue(*position);
    showing_ = true;
    Show_Row(*row, true);
    showing_ = false;
}

void QX_settings::Choice_Clicked(const Page_Choice& c, int n) {
    if (showing_) return;
    Pages_Context ctx = app_.Pages();
    Choice_Hooks hooks;
    hooks.Update_Tabs = hooks_.Update_Tabs;
    hooks.Show_Right_Tabs = hooks_.Show_Right_Tabs;
    hooks.Update_All = [this] {
        if (hooks_.Update_All)
            hooks_.Update_All();
        else
            Update_Settings();
    };
    quorlen::Choice_Click(ctx, c.name, n, hooks);
}

void QX_settings::Show_Messages(const std::vector<Page_Message>& messages) {
    if (!hooks_.Dialogs) return;
    for (const Page_Message& m : messages) {
        if (m.stop_icon)
            hooks_.Dialogs().Warn(m.text);
        else
            hooks_.Dialogs().Inform(m.text);
    }
}

// --- groups ------------------------------------------------------------------------------------

void QX_settings::show_scroll(int index, bool visible) {
    Row* row = index >= 0 && index < Array_Size ? row_of_[static_cast<std::size_t>(index)] : nullptr;
    // Hidden tab pages hide their children too: the group's own state is what counts.
    if (row == nullptr || row->scroll->isHidden() != visible) return;
    for (QWidget* w : {static_cast<QWidget*>(row->label), static_cast<QWidget*>(row->scroll),
                       static_cast<QWidget*>(row->text), static_cast<QWidget*>(row->unit)})
        if (w != nullptr) w->setVisible(visible);
}

void QX_settings::show_fan_scroll(bool visible) {
    if (QGroupBox* fan = frames_["Fan_frame"]) fan->setVisible(visible);
}

void QX_settings::show_sens(int index, bool visible) {
    if (index < 0 || index > 3) return;
    auto i = static_cast<std::size_t>(index);
    Digital_Sensor_label_[i]->setVisible(visible);
    Dig_chart_frame_[i]->setVisible(visible ||
                                    view_.param_visible[static_cast<std::size_t>(231 + 5 * index)]);
    for (auto& choice : choices_)
        if (choice->c->name == "Digital_sensor_combo_" + std::to_string(index))
            choice->combo->setVisible(visible);
}

// --- find setting ------------------------------------------------------------------------------

bool QX_settings::Matches(const QString& label) const {
    return filter_.isEmpty() || label.contains(filter_, Qt::CaseInsensitive);
}

void QX_settings::Find_Setting(const QString& text) {
    filter_ = text.trimmed();
    Apply_View();
}

void QX_settings::Find_Setting_Jump() {
    if (filter_.isEmpty()) return;
    for (auto& row : rows_) {
        if (!row->function_visible || !Matches(row->search_label)) continue;
        int tab = row->p->tab;
        if (!QX_Settings_SSTab_->isTabVisible(tab)) continue;
        QX_Settings_SSTab_->setCurrentIndex(tab);
        pages_[static_cast<std::size_t>(tab)]->ensureWidgetVisible(row->scroll);
        row->scroll->setFocus(Qt::ShortcutFocusReason);
        return;
    }
    for (auto& choice : choices_) {
        if (!Matches(choice->c->caption) || choice->control->isHidden() ||
            frames_[choice->c->frame]->isHidden())
            continue;
        QX_Settings_SSTab_->setCurrentIndex(choice->c->tab);
        pages_[static_cast<std::size_t>(choice->c->tab)]->ensureWidgetVisible(choice->control);
        choice->control->setFocus(Qt::ShortcutFocusReason);
        return;
    }
}

void QX_settings::Apply_View() {
    // A row is shown when its function needs it and the find field matches it.
    std::map<std::string, bool> frame_match;
    std::array<bool, 4> header_needed{};
    for (auto& row : rows_) {
        const Page_Param& p = *row->p;
        row->function_visible = view_.param_visible[static_cast<std::size_t>(p.address)];
        bool shown = row->function_visible && Matches(row->search_label);
        show_scroll(p.address, shown);
        if (shown) frame_match[p.frame] = true;
        if (p.tab == Settings_Tab::Digital_Outputs && p.address >= 231 && p.address <= 249 && shown)
            header_needed[static_cast<std::size_t>((p.address - 231) % 5)] = true;
    }
    for (int k = 0; k < 4; ++k)
        if (QLabel* header = row_headers_[static_cast<std::size_t>(k)])
            header->setVisible(header_needed[static_cast<std::size_t>(k)]);
    for (auto& choice : choices_)
        if (Matches(choice->c->caption)) frame_match[choice->c->frame] = true;
    // Extra controls that only some functions use.
    for (auto& choice : choices_) {
        std::string_view name = choice->c->name;
        bool visible = true;
        if (name == "AutoTune_option") visible = view_.AutoTune_visible;
        if (name == "AntiLag_ExtraAir_selection") visible = view_.AntiLag_ExtraAir_visible;
        if (name == "Lambda_Polarity") visible = view_.Narrow_target_visible;
        if (choice->caption != nullptr) choice->caption->setVisible(visible);
        choice->control->setVisible(visible);
    }
    Dig2_AutoTune_lable_->setVisible(view_.AutoTune_visible);
    for (int i = 0; i < 4; ++i)
        show_sens(i, view_.sens_visible[static_cast<std::size_t>(i)]);

    std::array<bool, Settings_Tab_Count> tab_match{};
    for (auto& [name, box] : frames_) {
        bool visible = Frame_Visible(view_, name) && (filter_.isEmpty() || frame_match[name]);
        box->setVisible(visible);
        if (visible) tab_match[static_cast<std::size_t>(Find_Page_Frame(name)->tab)] = true;
    }
    show_fan_scroll(view_.fan_visible && (filter_.isEmpty() || frame_match["Fan_frame"]));
    for (auto& [name, hint] : hints_)
        hint->setVisible(filter_.isEmpty() && !Frame_Visible(view_, name));
    for (int t = 0; t < Settings_Tab_Count; ++t) {
        auto i = static_cast<std::size_t>(t);
        bool visible = view_.tab_visible[i] && (filter_.isEmpty() || tab_match[i]);
        if (QX_Settings_SSTab_->isTabVisible(t) != visible) QX_Settings_SSTab_->setTabVisible(t, visible);
    }
}

// --- showing one control ---------------------------------------------------------------------

void QX_settings::Show_Row(Row& row, bool typed) {
    Pages_Context ctx = app_.Pages();
    const Page_Param& p = *row.p;
    Scroll_Shown shown = Show_Scroll(ctx, p.address);
    int position = Scroll_Position(app_.image, p);
    if (row.scroll->value() != position) {
        QSignalBlocker block(row.scroll);
        row.scroll->setValue(position);
    }
    QString text = From_8bit(shown.text);
    // A refresh leaves alone what the user is typing.
    if (row.text->text() != text && (typed || !row.text->hasFocus())) row.text->setText(text);
    QString unit = From_8bit(shown.unit);
    if (row.unit->text() != unit) row.unit->setText(unit);
    QString tip = QString::fromStdString(Scroll_Tooltip(app_.image, p));
    if (row.scroll->toolTip() != tip) {
        row.scroll->setToolTip(tip);
        row.text->setToolTip(tip);
    }
    bool bold = Scroll_Changed(app_.image, p);
    if (bold != row.bold) {
        row.bold = bold;
        for (QWidget* w : {static_cast<QWidget*>(row.label), static_cast<QWidget*>(row.text)}) {
            if (w == nullptr) continue;
            QFont font = w->font();
            font.setBold(bold);
            w->setFont(font);
        }
    }
}

void QX_settings::Show_Choice(Choice& choice) {
    const Page_Choice& c = *choice.c;
    int n = Choice_Value(app_.image, c);
    if (choice.combo != nullptr && choice.combo->currentIndex() != n) {
        QSignalBlocker block(choice.combo);
        // A value past the list shows as its number, so nothing is hidden.
        while (choice.combo->count() <= n)
            choice.combo->addItem(QString::number(choice.combo->count()));
        choice.combo->setCurrentIndex(n);
    }
    if (choice.group != nullptr) {
        if (QAbstractButton* b = choice.group->button(n)) {
            if (!b->isChecked()) {
                QSignalBlocker block(choice.group);
                b->setChecked(true);
            }
        } else if (QAbstractButton* checked = choice.group->checkedButton()) {
            // A value no option stands for: none ticked.
            choice.group->setExclusive(false);
            checked->setChecked(false);
            choice.group->setExclusive(true);
        }
    }
    if (choice.check != nullptr && choice.check->isChecked() != (n != 0)) {
        QSignalBlocker block(choice.check);
        choice.check->setChecked(n != 0);
    }
    bool bold = app_.image.ChangedByte[static_cast<std::size_t>(c.address)] >= Changed_Mark;
    if (bold != choice.bold) {
        choice.bold = bold;
        QWidget* w = choice.caption != nullptr ? static_cast<QWidget*>(choice.caption) : choice.control;
        QFont font = w->font();
        font.setBold(bold);
        w->setFont(font);
    }
}

void QX_settings::Show_Analog_Inputs() {
    QStringList lines;
    const Sensor_Table& table = app_.sensors.table;
    for (int input = 1; input <= Analog_Inputs; ++input) {
        int s = app_.sensors.Sensor_Of_Input(input);
        QString sensor = table.Has(s) ? From_8bit(table.Name(s)) + " [" + From_8bit(table.Unit(s)) + "]"
                                      : QStringLiteral("sensor %1 missing").arg(s);
        lines << QString::fromLatin1(Analog_Input_Label(input).data(),
                                     static_cast<qsizetype>(Analog_Input_Label(input).size())) +
                     ":  " + sensor;
    }
    QString text = lines.join('\n');
    if (Analog_Input_Sensors_->text() != text) Analog_Input_Sensors_->setText(text);
}

// --- charts ------------------------------------------------------------------------------------

void QX_settings::Show_Chart(Chart& chart, const Page_Chart& curves) {
    if (chart.drawn && chart.last == curves) return;
    chart.last = curves;
    chart.drawn = true;
    while (chart.series.size() < curves.series.size()) {
        auto* s = new QLineSeries(chart.chart);
        chart.chart->addSeries(s);
        s->attachAxis(chart.x);
        s->attachAxis(chart.y);
        chart.series.push_back(s);
    }
    double x0 = 0, x1 = 1, y0 = 0, y1 = 1;
    bool first = true;
    for (std::size_t k = 0; k < chart.series.size(); ++k) {
        QList<QPointF> points;
        if (k < curves.series.size()) {
            const Page_Series& s = curves.series[k];
            if (chart.series[k]->name() != QString::fromStdString(s.name))
                chart.series[k]->setName(QString::fromStdString(s.name));
            for (std::size_t i = 0; i < s.x.size(); ++i) {
                points.append(QPointF(s.x[i], s.y[i]));
                if (first) {
                    x0 = x1 = s.x[i];
                    y0 = y1 = s.y[i];
                    first = false;
                }
                x0 = std::min(x0, s.x[i]);
                x1 = std::max(x1, s.x[i]);
                y0 = std::min(y0, s.y[i]);
                y1 = std::max(y1, s.y[i]);
            }
        }
        chart.series[k]->replace(points);
        chart.series[k]->setVisible(k < curves.series.size());
    }
    y0 = std::min(y0, 0.0);
    if (x1 <= x0) x1 = x0 + 1;
    if (y1 <= y0) y1 = y0 + 1;
    double pad = (y1 - y0) * 0.08;
    chart.x->setRange(x0, x1);
    chart.y->setRange(y0 < 0 ? y0 - pad : y0, y1 + pad);
    chart.x->applyNiceNumbers();
    if (curves.on_off) {
        chart.y->setRange(-0.15, 1.15);
        chart.y->setLabelsVisible(false);
    } else {
        chart.y->applyNiceNumbers();
    }
    chart.x->setTitleText(QString::fromStdString(curves.x_title));
    chart.y->setTitleText(QString::fromStdString(curves.y_title));
}

void QX_settings::Update_Temp_Chart() {
    Pages_Context ctx = app_.Pages();
    Show_Chart(*Temp_Chart_, Temp_Chart(ctx));
}

void QX_settings::Update_Battery_Chart() {
    Pages_Context ctx = app_.Pages();
    Show_Chart(*Battery_Chart_, Battery_Chart(ctx));
}

void QX_settings::Update_Startup_Chart() {
    Pages_Context ctx = app_.Pages();
    Show_Chart(*Startup_Chart_, Startup_Chart(ctx));
}

void QX_settings::Update_Digital_chart() {
    Pages_Context ctx = app_.Pages();
    for (int i = 0; i < 4; ++i)
        Show_Chart(*Dig_chart_[static_cast<std::size_t>(i)], Digital_Chart(ctx, i));
}

} // namespace quorlen::ui
