#include "ui/autoguide_dialog.h"

#include "app/app_context.h"
#include "ui/translation.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace quorlen::ui {

Autoguide_startup_Dialog::Autoguide_startup_Dialog(App_Context& app, QWidget* parent,
                                                   std::function<void()> show_guide,
                                                   std::function<void(int)> set_autoguide)
    : Child_Form(app.program.Closing, parent) {
    setObjectName("Autoguide_startup_Dialog");
    setWindowTitle(QString::fromStdString(app.program.Product_Title));
    const char* const context = "Autoguide_startup_Dialog";
    auto* layout = new QVBoxLayout(this);
    auto* question = new QLabel(Tr(context, "Do you want to run the auto setup guide?"), this);
    question->setObjectName("Label1");
    QFont bold = question->font();
    bold.setBold(true);
    question->setFont(bold);
    auto* explanation = new QLabel(Tr(context, "Auto setup guide helps you to make all settings berfore your "
                                               "first start, including a fuel and ignition map."),
                                   this);
    explanation->setObjectName("Label2");
    explanation->setWordWrap(true);
    check_ = new QCheckBox(Tr(context, "Do not show this question again at next program start. You find Auto "
                                       "setup in Settings menu"),
                           this);
    check_->setObjectName("Check1");
    auto* buttons = new QDialogButtonBox(this);
    auto* ok = buttons->addButton(Tr(context, "Yes"), QDialogButtonBox::AcceptRole);
    ok->setObjectName("OKButton");
    auto* cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName("CancelButton");
    layout->addWidget(question);
    layout->addWidget(explanation);
    layout->addWidget(check_);
    layout->addWidget(buttons);
    connect(check_, &QCheckBox::toggled, this,
            [set_autoguide](bool ticked) { set_autoguide(ticked ? 0 : 1); });
    connect(ok, &QPushButton::clicked, this, [this, show_guide] {
        hide();
        if (show_guide) show_guide();
    });
    connect(cancel, &QPushButton::clicked, this, &QWidget::hide);
    setMinimumWidth(460);
}

} // namespace quorlen::ui
