// The main window's Mapchip tab: the card in the box, the Chipdrive reader and the Todos II
// reader, each with its status line. The work itself is in cards/.

#include "cards/card_inbox.h"
#include "cards/todos.h"
#include "core/proc_guard.h"
#include "ui/boost_prog_main.h"
#include "ui/card_panel.h"
#include "ui/frm_todos_ii.h"
#include "ui/rw_panel.h"

#include <QApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {

const char* const Com_Tab_Names[] = {"Box_Communication", "Mapchip_Communication"};

QLineEdit* Status_Line(QWidget* parent, const char* name) {
    auto* line = new QLineEdit(parent);
    line->setObjectName(name);
    line->setReadOnly(true);
    line->setMinimumWidth(220);
    return line;
}

} // namespace

void BoostProgMain::Build_Card_Panel() {
    cards_ = std::make_unique<Card_Panel>(app_.card.Card_PIN);
    auto* tab = findChild<QWidget*>("Mapchip_Communication");
    if (tab == nullptr) return;
    auto* layout = new QVBoxLayout(tab);
    auto frame = [&](const char* name, const char* title) {
        auto* box = new QGroupBox(title, tab);
        box->setObjectName(name);
        auto* grid = new QGridLayout(box);
        layout->addWidget(box);
        return grid;
    };
    auto button = [this, tab](QGridLayout* grid, const char* name, const char* caption, int col, auto slot) {
        auto* b = new QPushButton(caption, tab);
        b->setObjectName(name);
        b->setMinimumWidth(110);
        grid->addWidget(b, 0, col);
        connect(b, &QPushButton::clicked, this, slot);
        return b;
    };

    QGridLayout* inbox = frame("Mapchip_Inbox_frame", "Mapchip in the box");
    button(inbox, "Check_Card_Present_cmd", "Check card", 0, &BoostProgMain::Check_Card_Present_cmd_Click);
    button(inbox, "Read_Card_Inbox_cmd", "Read card", 1, &BoostProgMain::Read_Card_Inbox_cmd_Click);
    button(inbox, "Write_Card_Inbox_cmd", "Write card", 2, &BoostProgMain::Write_Card_Inbox_cmd_Click);
    cards_->qx_crw_text = Status_Line(tab, "qx_crw_text");
    inbox->addWidget(cards_->qx_crw_text, 0, 3);
    cards_->Progress = new QProgressBar(tab);
    cards_->Progress->setObjectName("card_Progress");
    cards_->Progress->setRange(0, 256);
    cards_->Progress->setValue(0);
    cards_->Progress->setFormat("");
    inbox->addWidget(cards_->Progress, 1, 0, 1, 4);

    QGridLayout* chipdrive = frame("Chipdrive_frame", "Chipdrive card reader");
    button(chipdrive, "Chipdrive_Connect", "Find reader", 0, &BoostProgMain::Chipdrive_Connect_Click);
    button(chipdrive, "Read_Chipdrive_cmd", "Read card", 1, &BoostProgMain::Read_Chipdrive_cmd_Click);
    button(chipdrive, "Write_Chipdrive_cmd", "Write card", 2, &BoostProgMain::Write_Chipdrive_cmd_Click);
    cards_->txt_Chipdrive_status = Status_Line(tab, "txt_Chipdrive_status");
    chipdrive->addWidget(cards_->txt_Chipdrive_status, 0, 3);
    auto* pin_row = new QHBoxLayout;
    pin_row->addWidget(new QLabel("Card PIN (hex), presented before a write:", tab));
    cards_->txt_Card_PIN = new QLineEdit(tab);
    cards_->txt_Card_PIN->setObjectName("txt_Card_PIN");
    cards_->txt_Card_PIN->setMaximumWidth(90);
    pin_row->addWidget(cards_->txt_Card_PIN);
    pin_row->addStretch();
    chipdrive->addLayout(pin_row, 1, 0, 1, 4);
    connect(cards_->txt_Card_PIN, &QLineEdit::textEdited, this,
            [this](const QString& text) { app_.card.Card_PIN = To_8bit(text.trimmed()); });

    QGridLayout* todos = frame("Todos_frame", "Todos II card reader");
    button(todos, "cmd_FindTodos", "Reader...", 0, &BoostProgMain::cmd_FindTodos_Click);
    button(todos, "cmdReadTodos", "Read card", 1, &BoostProgMain::cmdReadTodos_Click);
    button(todos, "cmd_WriteTodos", "Write card", 2, &BoostProgMain::cmd_WriteTodos_Click);
    cards_->txt_TodosStatus = Status_Line(tab, "txt_TodosStatus");
    todos->addWidget(cards_->txt_TodosStatus, 0, 3);
    auto* disconnect = new QPushButton("Disconnect", tab);
    disconnect->setObjectName("cmd_DisConnectTodos");
    todos->addWidget(disconnect, 1, 0);
    connect(disconnect, &QPushButton::clicked, this, &BoostProgMain::cmd_DisConnectTodos_Click);
    layout->addStretch();

    cards_->ChipDrive_timer = new QTimer(this);
    cards_->ChipDrive_timer->setObjectName("ChipDrive_timer");
    cards_->ChipDrive_timer->setSingleShot(true);
    cards_->ChipDrive_timer->setInterval(0);
    connect(cards_->ChipDrive_timer, &QTimer::timeout, this, [this] {
        Card_Context k = Cards();
        ChipDrive_timer_Timer(k, cards_->chipdrive);
        Show_Card_State();
    });

    connect(SSTab_Communication_, &QTabWidget::currentChanged, this,
            &BoostProgMain::SSTab_Communication_Click);
    Show_Card_State();
}

Card_Context BoostProgMain::Cards() {
    Card_Hooks hooks;
    hooks.Update_All = [this] { Update_All(); };
    hooks.Service_Events = [this] {
        Show_Card_State();
        QApplication::processEvents();
    };
    return Card_Context{app_.program, app_.texts, app_.files,       app_.image,      app_.undo,
                        app_.card,    app_.log,   *active_dialogs_, std::move(hooks)};
}

void BoostProgMain::Show_Card_State() {
    if (cards_ == nullptr || cards_->qx_crw_text == nullptr) return;
    const Card_State& card = app_.card;
    cards_->qx_crw_text->setText(From_8bit(card.qx_crw_text));
    cards_->txt_Chipdrive_status->setText(From_8bit(card.txt_Chipdrive_status));
    cards_->txt_TodosStatus->setText(From_8bit(card.txt_TodosStatus));
    if (cards_->txt_Card_PIN->text() != From_8bit(card.Card_PIN))
        cards_->txt_Card_PIN->setText(From_8bit(card.Card_PIN));
}

void BoostProgMain::Run_Card_Inbox(void (*procedure)(Settings_Context&, Card_Context&)) {
    if (rw_ == nullptr || rw_->Running) return;
    rw_->Running = true;
    Take_Comment_From_Window();
    Link_Context c = Link();
    Settings_Hooks hooks = Rw_Hooks();
    hooks.Progress = [this](int done, int total) {
        cards_->Progress->setRange(0, total > 0 ? total : 1);
        cards_->Progress->setFormat(total > 0 ? "%v of %m bytes" : "");
        cards_->Progress->setValue(done);
        cards_->Progress->repaint();
    };
    Settings_Context s{c, app_.image, app_.rw, app_.files, *active_dialogs_, std::move(hooks)};
    Card_Context k = Cards();
    cards_->Progress->setValue(0);
    procedure(s, k);
    Show_Texts();
    Show_Link_State();
    Show_Card_State();
    rw_->Running = false;
}

void BoostProgMain::Check_Card_Present_cmd_Click() {
    Run_Card_Inbox(quorlen::Check_Card_Present_cmd_Click);
}

void BoostProgMain::Read_Card_Inbox_cmd_Click() {
    Run_Card_Inbox(quorlen::Read_Card_Inbox_cmd_Click);
}

void BoostProgMain::Write_Card_Inbox_cmd_Click() {
    Run_Card_Inbox(quorlen::Write_Card_Inbox_cmd_Click);
}

void BoostProgMain::Chipdrive_Connect_Click() {
    Card_Context k = Cards();
    Chipdrive_Connect(k);
    Show_Card_State();
    cards_->ChipDrive_timer->start();
}

void BoostProgMain::Read_Chipdrive_cmd_Click() {
    Card_Context k = Cards();
    Read_Chipdrive_cmd(k, cards_->chipdrive);
    Show_Texts();
    Show_Card_State();
}

void BoostProgMain::Write_Chipdrive_cmd_Click() {
    Take_Comment_From_Window();
    Card_Context k = Cards();
    Write_Chipdrive_cmd(k, cards_->chipdrive);
    Show_Texts();
    Show_Card_State();
}

void BoostProgMain::cmd_FindTodos_Click() {
    Card_Context k = Cards();
    if (!cmd_FindTodos(k, cards_->reader)) return;
    auto* form = static_cast<frm_TodosII*>(Form("frm_TodosII"));
    form->Show_State();
    form->show();
    form->raise();
}

void BoostProgMain::cmdReadTodos_Click() {
    Card_Context k = Cards();
    cmdReadTodos(k, cards_->reader);
    Todos_Form_Follows();
    Show_Texts();
    Show_Card_State();
}

void BoostProgMain::cmd_WriteTodos_Click() {
    Take_Comment_From_Window();
    Card_Context k = Cards();
    cmd_WriteTodos(k, cards_->reader);
    Todos_Form_Follows();
    Show_Texts();
    Show_Card_State();
}

void BoostProgMain::cmd_DisConnectTodos_Click() {
    Card_Context k = Cards();
    cmd_DisConnectTodos(k, cards_->reader);
    Todos_Form_Follows();
    Show_Card_State();
}

void BoostProgMain::Todos_Form_Follows() {
    if (Form_Exists("frm_TodosII")) static_cast<frm_TodosII*>(Form("frm_TodosII"))->Show_State();
}

QWidget* BoostProgMain::Make_Todos_Form() {
    return new frm_TodosII(
        app_, cards_->reader, [this] { Show_Card_State(); }, this);
}

void BoostProgMain::SSTab_Communication_Click(int index) {
    // The Chipdrive is looked for when the card tab is first shown, as the reader's own
    // software did when it started.
    if (index == 1 && !cards_->Searched && !app_.program.Starting_Up) {
        cards_->Searched = true;
        Chipdrive_Connect_Click();
    }
    if (app_.program.Starting_Up || index < 0 || index > 1) return;
    Proc_Guard guard(app_.log, "SSTab Communication click");
    guard.Step([&] { app_.ini.Write_Ini("Default_Com_interface", Com_Tab_Names[index]); });
}

void BoostProgMain::Show_Com_Tab() {
    const std::string saved = app_.ini.Read_Ini("Default_Com_interface");
    const int index = saved == Com_Tab_Names[1] ? 1 : 0;
    if (SSTab_Communication_->currentIndex() == index) return;
    QSignalBlocker block(SSTab_Communication_);
    SSTab_Communication_->setCurrentIndex(index);
}

void BoostProgMain::Release_Card_Reader() {
    if (cards_ != nullptr) cards_->reader.Release();
}

} // namespace quorlen::ui
