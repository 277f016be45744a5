// The main window while a log runs: the live display and the cursors on the main maps, the
// frame that moves the running cell, the changes that go to the box through the log's stream,
// and the one rule that the log's port is nobody else's meanwhile. The work itself is in
// link/ (the exchanges), logging/ (the values) and analysis/ (where the engine runs).

#include "analysis/running_cell.h"
#include "core/proc_guard.h"
#include "logging/log_live.h"
#include "ui/boost_prog_main.h"
#include "ui/display.h"
#include "ui/map_tabs.h"
#include "ui/qx_log.h"

#include <QApplication>
#include <QButtonGroup>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>

namespace quorlen::ui {

namespace {

constexpr int Box_Adjusts = 0;    // Live_Adjust_option: the box picks the cell it runs in
constexpr int Cursor_Adjusts = 1; // the cells round the cursor, written as a binary frame

std::string Cell_Text(const char* map, const Running_Cell& cell) {
    if (!cell.shown) return std::string(map) + ": -";
    return std::string(map) + ": column " + std::to_string(cell.Cursor_Column) + ", row " +
           std::to_string(cell.Cursor_Row);
}

} // namespace

bool BoostProgMain::Log_Holds_Port() const {
    return app_.log_state->capture.Logging_Running;
}

// --- the frame -----------------------------------------------------------------------------

void BoostProgMain::Build_Live_Frame(QWidget* parent) {
    auto* frame = new QGroupBox("Live: the cell the engine runs in", parent);
    frame->setObjectName("Adjust_current_frame");
    auto* row = new QHBoxLayout(frame);
    Running_Cell_label_ = new QLabel(frame);
    Running_Cell_label_->setObjectName("Running_Cell_label");
    Running_Cell_label_->setMinimumWidth(300);
    row->addWidget(Running_Cell_label_);
    Live_Adjust_option_ = new QButtonGroup(frame);
    const char* captions[] = {"The box adjusts the cell it runs in", "Cells round the cursor"};
    const char* tips[] = {"Only while the engine runs: the box moves the cell it is in and says which",
                          "The cells that carry the running point move here, and go to the box at once"};
    for (int i : {Box_Adjusts, Cursor_Adjusts}) {
        auto* option = new QRadioButton(captions[i], frame);
        option->setObjectName(QStringLiteral("Live_Adjust_option(%1)").arg(i));
        option->setToolTip(tips[i]);
        Live_Adjust_option_->addButton(option, i);
        row->addWidget(option);
    }
    Live_Adjust_option_->button(Cursor_Adjusts)->setChecked(true);
    for (int step : {-1, 1}) {
        auto* b = new QPushButton(step > 0 ? "+1" : QString::fromUtf8("\u22121"), frame);
        b->setObjectName(step > 0 ? "plus_3D(1)" : "minus_3D(1)");
        b->setToolTip(step > 0 ? "The running cell one step up, on the map on show"
                               : "The running cell one step down, on the map on show");
        connect(b, &QPushButton::clicked, this, [this, step] { Adjust_current_Click(step); });
        row->addWidget(b);
    }
    ErrCode_label1_ = new QLabel(frame);
    ErrCode_label1_->setObjectName("ErrCode_label(1)");
    ErrCode_label1_->setMinimumWidth(90);
    row->addWidget(ErrCode_label1_);
    row->addStretch(1);
    frame->setVisible(false);
    Adjust_current_frame_ = frame;
}

void BoostProgMain::Show_Right_Tabs_Adjust_Current_Frame() {
    if (Adjust_current_frame_ == nullptr) return;
    Adjust_current_frame_->setVisible(Log_Holds_Port());
    // The box knows no cell while the engine stands.
    app_.link_state.Live_Adjust_Option0_Visible = app_.link_state.Engine_Running;
    QAbstractButton* box = Live_Adjust_option_->button(Box_Adjusts);
    box->setVisible(app_.link_state.Live_Adjust_Option0_Visible);
    if (!box->isVisible() && box->isChecked()) Live_Adjust_option_->button(Cursor_Adjusts)->setChecked(true);
}

void BoostProgMain::Show_Live_State() {
    if (ErrCode_label1_ != nullptr) ErrCode_label1_->setText(From_8bit(app_.live.ErrCode_label1));
    if (Running_Cell_label_ != nullptr)
        Running_Cell_label_->setText(QString::fromStdString(Cell_Text("Fuel", app_.display.fuel) + "     " +
                                                            Cell_Text("Ignition", app_.display.ign)));
    if (Debug_txt2_ != nullptr) {
        QString answers = From_8bit(app_.texts.Debug_txt2);
        answers.replace("\r\n", "\n");
        if (Debug_txt2_->toPlainText() != answers) Debug_txt2_->setPlainText(answers);
        Debug_txt2_->setVisible(!answers.isEmpty());
    }
}

// Painted at once: the change holds the event loop while it talks to the box.
void BoostProgMain::Show_Live_Status(const std::string& text) {
    rs232_text_->setText(From_8bit(text));
    rs232_text_->repaint();
    Show_Live_State();
    if (ErrCode_label1_ != nullptr) ErrCode_label1_->repaint();
    if (Form_Exists("Display")) static_cast<Display*>(Form("Display"))->Show_Status(text);
}

// --- the changes -----------------------------------------------------------------------------

void BoostProgMain::Run_Live(const std::function<void(Live_Context&)>& change) {
    if (!Log_Holds_Port() || app_.live.In_Progress) return;
    auto* log = static_cast<QX_Log*>(Form("QX_Log"));
    log->Live_Change([&](Log_Context& lc) {
        if (lc.line == nullptr) return;
        const Link_Context link = Link();
        // The write goes on the log's own port object, so nothing has to be handed over, and
        // nothing waits for a port to settle while the stream stands still.
        Link_Context on_log{link.program,           link.texts, link.flags, link.state, link.log, *lc.line,
                            link.Auto_Start_option, link.hooks};
        on_log.hooks.Dummy_Wait = [] { QApplication::processEvents(); };
        Settings_Context s{on_log, app_.image, app_.rw, app_.files, *active_dialogs_, Rw_Hooks()};
        Live_Context ctx = Live_Context_Of(lc, s, app_.live);
        const auto timers = ctx.hooks.Log_Timers;
        ctx.hooks.Log_Timers = [timers, log](bool on) {
            timers(on);
            log->Timers_Follow_State();
        };
        ctx.hooks.Status = [this](const std::string& text) { Show_Live_Status(text); };
        change(ctx);
    });
    Show_Texts();
    Show_Link_State();
    Show_Rw_State();
    Show_Live_State();
    Update_All();
}

void BoostProgMain::Write_while_logging() {
    Run_Live([](Live_Context& c) { quorlen::Write_while_logging(c); });
}

void BoostProgMain::Cell_Adjust(const std::string& command) {
    if (!Log_Holds_Port() || app_.live.In_Progress) return;
    app_.live.ErrCode_label1 = "ONLINE";
    Show_Live_State();
    app_.live.Cell_Adjust_Command = command;
    Run_Live([](Live_Context& c) { quorlen::Write_Fast_while_logging(c); });
    app_.live.Cell_Adjust_Command.clear();
}

void BoostProgMain::Adjust_current_Click(int step) {
    if (!Log_Holds_Port() || app_.live.In_Progress) return;
    const bool ignition = app_.tables.sstab_Main == 1;
    if (Live_Adjust_option_->checkedId() == Box_Adjusts &&
        Live_Adjust_option_->button(Box_Adjusts)->isVisible()) {
        if (ignition)
            Cell_Adjust(step > 0 ? Adjust_Ign_Up : Adjust_Ign_Down);
        else
            Cell_Adjust(step > 0 ? Adjust_Fuel_Up : Adjust_Fuel_Down);
        return;
    }
    app_.live.ErrCode_label1 = "ONLINE";
    Show_Live_State();
    Proc_Guard guard(app_.log, step > 0 ? "Plus 3D" : "minus 3D");
    bool changed = false;
    guard.Step([&] {
        Tables_Context ctx = app_.Tables(*active_dialogs_);
        changed = Adjust_Running_Cells(ctx, ignition ? Table_Id::Ignition_3D : Table_Id::Fuel_3D,
                                       ignition ? app_.display.ign : app_.display.fuel, step);
    });
    guard.Finish();
    if (!changed) return;
    Update_All();
    Run_Live([](Live_Context& c) { quorlen::Write_Fast_while_logging(c); });
}

// --- the display ---------------------------------------------------------------------------

QWidget* BoostProgMain::Make_Display() {
    Display_Hooks hooks;
    hooks.Cell_Adjust = [this](const std::string& command) { Cell_Adjust(command); };
    return new Display(app_, std::move(hooks), this);
}

void BoostProgMain::Show_Display() {
    const bool first = !Form_Exists("Display");
    auto* display = static_cast<Display*>(Form("Display"));
    if (first) Apply_Saved_Size(display, "Display_Window_Size");
    display->show();
    display->raise();
    cmd_Show_Current_Data_Click();
}

void BoostProgMain::cmd_Show_Current_Data_Click() {
    Proc_Guard guard(app_.log, "Show Current Data");
    guard.Step([&] {
        const Log_State& log = *app_.log_state;
        const int row = Current_Data_Row(log);
        if (Form_Exists("Display") && Form("Display")->isVisible())
            static_cast<Display*>(Form("Display"))->Show_Readings(Read_Gauges(log, row));
        Locate_Running_Cells(app_.display, app_.image, app_.sensors, log, row);
        map_tabs_->Set_IGN_Curser(app_.display.ign);
        map_tabs_->Set_FUEL_Curser(app_.display.fuel);
        Show_Live_State();
    });
}

void BoostProgMain::cmd_Show_Current_Data_Clear() {
    Proc_Guard guard(app_.log, "cmd Show Current Data clear");
    guard.Step([&] {
        if (Form_Exists("Display")) static_cast<Display*>(Form("Display"))->Clear();
        app_.display = {};
        map_tabs_->Set_IGN_Curser(app_.display.ign);
        map_tabs_->Set_FUEL_Curser(app_.display.fuel);
        Show_Live_State();
        Show_Right_Tabs_Adjust_Current_Frame();
    });
}

// --- one owner of the port ---------------------------------------------------------------------

void BoostProgMain::Port_Controls_Enabled(bool enabled) {
    Set_Command_Buttons_Enabled(enabled);
    Com_Open_->setEnabled(enabled && app_.link_state.Com_Open_Enabled);
    Com_Close_->setEnabled(enabled && app_.link_state.Com_Close_Enabled);
    for (const char* name :
         {"Read_bin_command_cmd", "Verify_bR_Settings", "Write_bin_command_cmd", "Command2",
          "Check_Card_Present_cmd", "Read_Card_Inbox_cmd", "Write_Card_Inbox_cmd"})
        if (auto* b = findChild<QPushButton*>(name)) b->setEnabled(enabled);
    Show_Right_Tabs_Adjust_Current_Frame();
}

} // namespace quorlen::ui
