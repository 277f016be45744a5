#include "ui/qx_debug.h"

#include "app/app_context.h"
#include "image/image_listings.h"
#include "ui/qt_dialogs.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace quorlen::ui {

QX_Debug::QX_Debug(App_Context& app, QWidget* parent) : Child_Form(app.program.Closing, parent), app_(app) {
    setObjectName("QX_Debug");
    setWindowTitle("Debug");
    auto* layout = new QVBoxLayout(this);
    auto* buttons = new QHBoxLayout;
    auto add = [&](const char* name, const char* caption, void (QX_Debug::*slot)()) {
        auto* b = new QPushButton(caption, this);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, slot);
        buttons->addWidget(b);
    };
    add("Debug_View_allCardByte", "All bytes", &QX_Debug::Debug_View_allCardByte_Click);
    add("Command1", "Flag bytes", &QX_Debug::Command1_Click);
    add("Command3", "Fuel table", &QX_Debug::Command3_Click);
    add("Command5", "Ignition table", &QX_Debug::Command5_Click);
    add("Command4", "Analog inputs", &QX_Debug::Command4_Click);
    buttons->addStretch();
    layout->addLayout(buttons);
    Text1_ = new QPlainTextEdit(this);
    Text1_->setObjectName("Text1");
    Text1_->setReadOnly(true);
    Text1_->setLineWrapMode(QPlainTextEdit::NoWrap);
    Text1_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    layout->addWidget(Text1_);
    resize(640, 560);
}

void QX_Debug::Show(const std::string& text) {
    QString shown = From_8bit(text);
    shown.replace("\r\n", "\n");
    Text1_->setPlainText(shown);
}

void QX_Debug::Debug_View_allCardByte_Click() {
    Text1_->clear();
    Show(Listing_All_CardByte(app_.image));
}
void QX_Debug::Command1_Click() {
    Show(Listing_Flag_Bytes(app_.image));
}
void QX_Debug::Command3_Click() {
    Show(Listing_Map_Block(app_.image, app_.image.FuelBlockBase));
}
void QX_Debug::Command5_Click() {
    Show(Listing_Map_Block(app_.image, app_.image.IgnBlockBase));
}
void QX_Debug::Command4_Click() {
    Show(Listing_Analog_Selections(app_.image));
}

} // namespace quorlen::ui
