#include "ui/frm_todos_ii.h"

#include "app/app_context.h"
#include "cards/todos.h"
#include "ui/qt_dialogs.h"

#include <QComboBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {

constexpr int View_Rows = 16;

QLineEdit* Field(QWidget* parent, const char* name, int width) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(name);
    edit->setMaximumWidth(width);
    return edit;
}

} // namespace

frm_TodosII::frm_TodosII(App_Context& app, Card_Reader& reader, std::function<void()> status_changed,
                         QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), reader_(reader),
      status_changed_(std::move(status_changed)) {
    setObjectName("frm_TodosII");
    setWindowTitle("Todos II card reader");
    auto* layout = new QVBoxLayout(this);
    auto button = [this](QBoxLayout* row, const char* name, const char* caption,
                         void (*operation)(Todos_Form&, Card_Reader&)) {
        auto* b = new QPushButton(caption, this);
        b->setObjectName(name);
        row->addWidget(b);
        connect(b, &QPushButton::clicked, this, [this, operation] { Run(operation); });
        return b;
    };

    auto* reader_row = new QHBoxLayout;
    ReaderlistCombo_ = new QComboBox(this);
    ReaderlistCombo_->setObjectName("ReaderlistCombo");
    ReaderlistCombo_->setMinimumContentsLength(24);
    auto* refresh = new QPushButton("Readers", this);
    refresh->setObjectName("Init_driverlist");
    refresh->setToolTip("Look for the readers on the PC again");
    CardListCombo_ = new QComboBox(this);
    CardListCombo_->setObjectName("CardListCombo");
    CardListCombo_->addItems({"SLE4442", "SLE4428"});
    reader_row->addWidget(new QLabel("Reader", this));
    reader_row->addWidget(ReaderlistCombo_, 1);
    reader_row->addWidget(refresh);
    reader_row->addWidget(new QLabel("Card", this));
    reader_row->addWidget(CardListCombo_);
    layout->addLayout(reader_row);
    connect(refresh, &QPushButton::clicked, this, [this] {
        Card_Result r = Init_driverlist(app_.card.todos, reader_);
        app_.card.todos.txt_Status = r.Ok()
                                         ? std::to_string(app_.card.todos.ReaderlistCombo.size()) + " readers"
                                         : "< " + r.text + " >";
        Show_State();
    });

    auto* card_row = new QHBoxLayout;
    button(card_row, "ConnectCard", "Connect", ConnectCard);
    button(card_row, "Disconnect", "Disconnect", Disconnect);
    button(card_row, "CardReset", "Reset", CardReset);
    ATR_ = new QLabel(this);
    ATR_->setObjectName("ATR_label");
    card_row->addWidget(ATR_, 1);
    layout->addLayout(card_row);

    auto* read_box = new QGroupBox("Read", this);
    auto* read_row = new QHBoxLayout(read_box);
    TRAdd_ = Field(this, "TRAdd", 70);
    TRAdd_Hex_ = Field(this, "TRAdd_Hex", 60);
    ReadData_ = new QSpinBox(this);
    ReadData_->setObjectName("ReadData");
    ReadData_->setRange(1, 1024);
    read_row->addWidget(new QLabel("Address", this));
    read_row->addWidget(TRAdd_);
    read_row->addWidget(new QLabel("hex", this));
    read_row->addWidget(TRAdd_Hex_);
    read_row->addWidget(new QLabel("Length", this));
    read_row->addWidget(ReadData_);
    button(read_row, "ComRead", "Read", ComRead);
    button(read_row, "ReadPB", "Read protect bits", ReadPB);
    read_row->addStretch();
    layout->addWidget(read_box);

    auto* write_box = new QGroupBox("Write", this);
    auto* write_grid = new QGridLayout(write_box);
    TWAdd_ = Field(this, "TWAdd", 70);
    TWAdd_Hex_ = Field(this, "TWAdd_Hex", 60);
    WriteData_ = new QLineEdit(this);
    WriteData_->setObjectName("WriteData");
    WriteData_->setPlaceholderText("bytes in hex: 01 A0 FF");
    WriteLength_ = new QSpinBox(this);
    WriteLength_->setObjectName("WriteLength");
    WriteLength_->setRange(1, 1024);
    auto* address_row = new QHBoxLayout;
    address_row->addWidget(new QLabel("Address", this));
    address_row->addWidget(TWAdd_);
    address_row->addWidget(new QLabel("hex", this));
    address_row->addWidget(TWAdd_Hex_);
    address_row->addWidget(new QLabel("Length", this));
    address_row->addWidget(WriteLength_);
    address_row->addStretch();
    write_grid->addLayout(address_row, 0, 0);
    write_grid->addWidget(WriteData_, 1, 0);
    auto* write_buttons = new QHBoxLayout;
    button(write_buttons, "ComWrite", "Write bytes", ComWrite);
    button(write_buttons, "Pagewrite", "Write page", Pagewrite);
    button(write_buttons, "WritePB", "Protect", WritePB);
    write_buttons->addStretch();
    write_grid->addLayout(write_buttons, 2, 0);
    layout->addWidget(write_box);

    auto* pin_box = new QGroupBox("PIN", this);
    auto* pin_row = new QHBoxLayout(pin_box);
    PIN_ = Field(this, "txt_PIN", 90);
    PIN_->setPlaceholderText("hex");
    New_PIN_ = Field(this, "txt_NewPIN", 90);
    New_PIN_->setPlaceholderText("new, hex");
    pin_row->addWidget(PIN_);
    button(pin_row, "VerifyPIN", "Present", VerifyPIN);
    pin_row->addSpacing(20);
    pin_row->addWidget(New_PIN_);
    button(pin_row, "ComChp", "Change PIN", ComChp);
    pin_row->addStretch();
    layout->addWidget(pin_box);

    auto* view_row = new QHBoxLayout;
    Memory_View_ = new QPlainTextEdit(this);
    Memory_View_->setObjectName("Memory_View");
    Memory_View_->setReadOnly(true);
    Memory_View_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    Memory_View_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    Memory_View_->setLineWrapMode(QPlainTextEdit::NoWrap);
    Memory_View_->setMinimumSize(560, 280);
    VScroll1_ = new QScrollBar(Qt::Vertical, this);
    VScroll1_->setObjectName("VScroll1");
    view_row->addWidget(Memory_View_, 1);
    view_row->addWidget(VScroll1_);
    layout->addLayout(view_row, 1);
    connect(VScroll1_, &QScrollBar::valueChanged, this, [this](int row) {
        app_.card.todos.VScroll1 = row;
        Memory_View_->setPlainText(QString::fromStdString(Memory_View_Text(app_.card.todos, View_Rows)));
    });

    txt_Status_ = new QLineEdit(this);
    txt_Status_->setObjectName("txt_Status");
    txt_Status_->setReadOnly(true);
    layout->addWidget(txt_Status_);

    Address_Pair(TRAdd_, TRAdd_Hex_, app_.card.todos.TRAdd);
    Address_Pair(TWAdd_, TWAdd_Hex_, app_.card.todos.TWAdd);
    Show_State();
}

// The decimal and the hex view of one address follow each other as they are typed.
void frm_TodosII::Address_Pair(QLineEdit* dec, QLineEdit* hex, int& field) {
    auto follow = [this, &field](QLineEdit* from, QLineEdit* to, bool from_hex) {
        connect(from, &QLineEdit::textEdited, this, [this, &field, from, to, from_hex] {
            auto address = Address_From_Text(To_8bit(from->text()), from_hex, app_.card.todos.CardListCombo);
            from->setStyleSheet(address ? "" : "color: red");
            if (!address) return;
            field = *address;
            to->setText(QString::fromStdString(from_hex ? std::to_string(*address) : Address_Hex(*address)));
        });
    };
    follow(dec, hex, false);
    follow(hex, dec, true);
}

void frm_TodosII::Take_Fields() {
    Todos_Form& f = app_.card.todos;
    f.Reader_Index = ReaderlistCombo_->currentIndex();
    f.CardListCombo = CardListCombo_->currentIndex() == 0 ? Card_Type::SLE4442 : Card_Type::SLE4428;
    f.ReadData = ReadData_->value();
    f.WriteData = To_8bit(WriteData_->text());
    f.WriteLength = WriteLength_->value();
    f.PIN = To_8bit(PIN_->text());
    f.New_PIN = To_8bit(New_PIN_->text());
}

void frm_TodosII::Run(void (*operation)(Todos_Form&, Card_Reader&)) {
    Take_Fields();
    operation(app_.card.todos, reader_);
    Show_State();
}

void frm_TodosII::Show_State() {
    const Todos_Form& f = app_.card.todos;
    {
        QSignalBlocker block(ReaderlistCombo_);
        ReaderlistCombo_->clear();
        for (const std::string& name : f.ReaderlistCombo)
            ReaderlistCombo_->addItem(From_8bit(name));
        ReaderlistCombo_->setCurrentIndex(f.Reader_Index);
    }
    CardListCombo_->setCurrentIndex(f.CardListCombo == Card_Type::SLE4442 ? 0 : 1);
    TRAdd_->setText(QString::number(f.TRAdd));
    TRAdd_Hex_->setText(QString::fromStdString(Address_Hex(f.TRAdd)));
    TWAdd_->setText(QString::number(f.TWAdd));
    TWAdd_Hex_->setText(QString::fromStdString(Address_Hex(f.TWAdd)));
    ReadData_->setValue(f.ReadData);
    WriteLength_->setValue(f.WriteLength);
    PIN_->setText(From_8bit(f.PIN));
    ATR_->setText(f.ATR.empty() ? QString() : "ATR " + QString::fromStdString(f.ATR));
    {
        QSignalBlocker block(VScroll1_);
        VScroll1_->setRange(0, std::max(Memory_Rows(f) - View_Rows, 0));
        VScroll1_->setPageStep(View_Rows);
        VScroll1_->setValue(f.VScroll1);
    }
    Memory_View_->setPlainText(QString::fromStdString(Memory_View_Text(f, View_Rows)));
    txt_Status_->setText(From_8bit(f.txt_Status));
    if (status_changed_) status_changed_();
}

} // namespace quorlen::ui
