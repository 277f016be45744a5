#pragma once
// "RPM Graph": the signals ticked on the log window against engine speed or load instead of
// time, over the log window's rows, with the compared file beside them.

#include "logging/log_chart.h"
#include "ui/child_form.h"

#include <functional>

class QRadioButton;

namespace quorlen {
struct App_Context;
class User_Dialogs;
} // namespace quorlen

namespace quorlen::ui {

class Log_Chart_View;

class QX_RPM final : public Child_Form {
public:
    QX_RPM(App_Context& app, std::function<User_Dialogs&()> dialogs, QWidget* parent);

    void Show_RPM();
    void Show_MAP();
    // The log window's chart changed: the same rows again, when the graph is on show.
    void Update_Graph();
    void mnu_export_Click();
    Log_Chart_View* Chart_View() const { return MSChart2_; }
    Reference_Signal Reference() const { return reference_; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void Draw();

    App_Context& app_;
    std::function<User_Dialogs&()> dialogs_;
    Reference_Signal reference_ = Reference_Signal::RPM;
    QRadioButton* RPM_Option_ = nullptr;
    QRadioButton* MAP_Option_ = nullptr;
    Log_Chart_View* MSChart2_ = nullptr;
};

} // namespace quorlen::ui
