#pragma once
// The Todos II reader form: each reader operation by hand, with the memory of the card in
// view. The main form's Todos path uses the same fields.

#include "ui/child_form.h"

#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QScrollBar;
class QSpinBox;

namespace quorlen {
struct App_Context;
class Card_Reader;
struct Todos_Form;
} // namespace quorlen

namespace quorlen::ui {

class frm_TodosII final : public Child_Form {
public:
    // `status_changed` lets the main form repaint its Todos status line.
    frm_TodosII(App_Context& app, Card_Reader& reader, std::function<void()> status_changed, QWidget* parent);

    // Puts the fields of the state on the form (after the main form used them).
    void Show_State();

private:
    void Take_Fields();
    void Run(void (*operation)(Todos_Form&, Card_Reader&));
    void Address_Pair(QLineEdit* dec, QLineEdit* hex, int& field);

    App_Context& app_;
    Card_Reader& reader_;
    std::function<void()> status_changed_;
    QComboBox* ReaderlistCombo_;
    QComboBox* CardListCombo_;
    QLineEdit* TRAdd_;
    QLineEdit* TRAdd_Hex_;
    QSpinBox* ReadData_;
    QLineEdit* TWAdd_;
    QLineEdit* TWAdd_Hex_;
    QLineEdit* WriteData_;
    QSpinBox* WriteLength_;
    QLineEdit* PIN_;
    QLineEdit* New_PIN_;
    QLabel* ATR_;
    QPlainTextEdit* Memory_View_;
    QScrollBar* VScroll1_;
    QLineEdit* txt_Status_;
};

} // namespace quorlen::ui
