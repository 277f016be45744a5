// The main window's side of the box link: the buttons and captions of the communication
// page, the 1500 ms poll, and the port list of the load. The work itself is in link/.

#include "core/proc_guard.h"
#include "link/session.h"
#include "ui/boost_prog_main.h"
#include "ui/link_panel.h"

#include <QAction>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>

#include <cstdlib>

namespace quorlen::ui {

namespace {

QString Lines_Of(const std::string& text) {
    QString shown = From_8bit(text);
    shown.replace("\r\n", "\n");
    return shown;
}

} // namespace

void BoostProgMain::Build_Link_Panel() {
    link_ = std::make_unique<Link_Panel>();
    auto* box = findChild<QWidget*>("Box_Communication");
    auto* grid = box != nullptr ? qobject_cast<QGridLayout*>(box->layout()) : nullptr;
    if (grid != nullptr) {
        link_->Command2 = new QPushButton("Search ports", box);
        link_->Command2->setObjectName("Command2");
        link_->Command2->setToolTip("Look for the box on ports 1 to 9");
        grid->addWidget(link_->Command2, 1, 2);
        link_->OS_label = new QLabel(box);
        link_->OS_label->setObjectName("OS_label");
        grid->addWidget(link_->OS_label, 2, 0, 1, 4);
        link_->Box_Info_label = new QLabel(box);
        link_->Box_Info_label->setObjectName("Box_Info_label");
        grid->addWidget(link_->Box_Info_label, 3, 0, 1, 5);
        connect(link_->Command2, &QPushButton::clicked, this, &BoostProgMain::Command2_Click);
    }
    connect(Connect_Info_, &QPushButton::clicked, this, &BoostProgMain::Connect_Info_Click);
    connect(Com_Open_, &QPushButton::clicked, this, &BoostProgMain::Com_Open_Click);
    connect(Com_Close_, &QPushButton::clicked, this, &BoostProgMain::Com_Close_Click);
    connect(Check_connection_timer_, &QTimer::timeout, this, &BoostProgMain::Check_connection_timer_Timer);
    Show_Link_State();
}

Link_Context BoostProgMain::Link() {
    Link_Hooks hooks;
    hooks.Dummy_Wait = [this] {
        Show_Link_State();
        Dummy_Wait(50);
    };
    hooks.Command_Buttons = [this](bool enabled) { Set_Command_Buttons_Enabled(enabled); };
    hooks.Message_Box = [this](const std::string& title, const std::string& text) {
        Show_Link_State();
        active_dialogs_->Inform_Titled(title, text);
    };
    hooks.Start_Logg_cmd_Click = [this](int index) { Start_Logg_cmd_Click(index); };
    hooks.Logged_RPM = [this] { return Logged_RPM(); };
    hooks.Show_Right_Tabs_Adjust_Current_Frame = [this] { Show_Right_Tabs_Adjust_Current_Frame(); };
    return Link_Context{app_.program,
                        app_.texts,
                        app_.link,
                        app_.link_state,
                        app_.log,
                        link_->MSComm1,
                        app_.prefs.Auto_Start_option,
                        std::move(hooks)};
}

void BoostProgMain::Show_Link_State() {
    const Link_State& s = app_.link_state;
    rs232_text_->setText(From_8bit(app_.texts.rs232_text));
    const QString report = Lines_Of(app_.texts.Debug_txt);
    if (Debug_txt_->toPlainText() != report) {
        Debug_txt_->setPlainText(report);
        Debug_txt_->verticalScrollBar()->setValue(Debug_txt_->verticalScrollBar()->maximum());
    }
    Online_mnu_->setText(From_8bit(s.Online_mnu_Caption));
    Online_mnu_->setVisible(s.Online_mnu_Visible);
    Engine_OnOff_mnu_->setText(QString::fromStdString(s.Engine_OnOff_mnu_Caption));
    Engine_OnOff_mnu_->setVisible(s.Engine_OnOff_mnu_Visible);
    Com_Open_->setEnabled(s.Com_Open_Enabled);
    if (link_->Box_Info_label != nullptr) {
        QString info = Lines_Of(s.Box_Info_Text).trimmed();
        info.replace("\n", "  -  ");
        link_->Box_Info_label->setText(info);
    }
    Com_Close_->setEnabled(s.Com_Close_Enabled);
}

void BoostProgMain::Load_Port_List() {
    link_->Port_List = std::make_unique<clsSerialPortList>(
        link_->platform, app_.link_state.Ports, Simulator_Link_Candidates(std::getenv("XDG_RUNTIME_DIR")));
    link_->Port_List->EnumerateList(16, true, false, false);
    EnumerateList();
}

void BoostProgMain::EnumerateList() {
    Proc_Guard guard(app_.log, "Enumerate list");
    guard.Step([&] {
        if (link_->OS_label == nullptr) return;
        link_->OS_label->clear();
        link_->OS_label->setText(link_->OS_label->text() + QString::fromStdString(Running_System_Name()));
    });
}

void BoostProgMain::Start_Check_connection_timer() {
    if (!options_.port.empty()) app_.program.Com_Port = app_.link_state.Ports.Number_For(options_.port);
    Check_connection_timer_->start();
}

void BoostProgMain::Check_connection_timer_Timer() {
    // A live change has stopped the log's stream and has the port meanwhile.
    if (Log_Holds_Port() && !app_.link.Logging_Active) return;
    Link_Context c = Link();
    Check_connection_timer(c);
    Show_Link_State();
}

void BoostProgMain::Connect_Info_Click() {
    if (Log_Holds_Port()) return;
    Link_Context c = Link();
    quorlen::Connect_Info_Click(c);
    Show_Link_State();
}

void BoostProgMain::Command2_Click() {
    if (Log_Holds_Port()) return;
    Link_Context c = Link();
    quorlen::Command2_Click(c);
    Show_Link_State();
}

void BoostProgMain::Com_Open_Click() {
    if (Log_Holds_Port()) return;
    Link_Context c = Link();
    quorlen::Com_Open_Click(c);
    Show_Link_State();
}

void BoostProgMain::Com_Close_Click() {
    if (Log_Holds_Port()) return;
    Link_Context c = Link();
    quorlen::Com_Close_Click(c);
    Show_Link_State();
}

void BoostProgMain::Prefs_Port_Chosen(bool selected) {
    if (selected && !Log_Holds_Port()) {
        Link_Context c = Link();
        Look_For_Box(c);
    } else {
        app_.link_state.Online_mnu_Caption = "System not connected";
        app_.link_state.Online_mnu_Visible = true;
    }
    Show_Link_State();
}

void BoostProgMain::Start_Logg_cmd_Click(int index) {
    Log_Autostart(index);
}

} // namespace quorlen::ui
