#pragma once

#include "ui/child_form.h"

class QPlainTextEdit;

namespace quorlen {
struct App_Context;
}

namespace quorlen::ui {

// Listings of the image for support work.
class QX_Debug final : public Child_Form {
public:
    QX_Debug(App_Context& app, QWidget* parent);

    void Debug_View_allCardByte_Click();
    void Command1_Click();
    void Command3_Click();
    void Command5_Click();
    void Command4_Click();

private:
    void Show(const std::string& text);
    App_Context& app_;
    QPlainTextEdit* Text1_;
};

} // namespace quorlen::ui
