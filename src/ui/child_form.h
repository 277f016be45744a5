#pragma once
// A child window of the main form. Closing it by its system box only hides it, so its page
// and values survive; only a shutdown (Closing set) really closes it.

#include <QCloseEvent>
#include <QDialog>

namespace quorlen::ui {

class Child_Form : public QDialog {
public:
    Child_Form(const bool& closing, QWidget* parent) : QDialog(parent), closing_(closing) {
        setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    }

protected:
    void closeEvent(QCloseEvent* event) override {
        if (closing_) {
            event->accept();
            return;
        }
        event->ignore();
        hide();
    }
    // Escape would close a dialog for good; here it hides, like the system box.
    void reject() override {
        if (closing_)
            QDialog::reject();
        else
            hide();
    }

private:
    const bool& closing_;
};

} // namespace quorlen::ui
