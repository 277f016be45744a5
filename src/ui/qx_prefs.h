#pragma once

#include "ui/child_form.h"

#include "link/qt/qt_port_platform.h"

#include <functional>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QRadioButton;

namespace quorlen {
struct App_Context;
}

namespace quorlen::ui {

// The PC settings: interface, language, start question, line speed, auto start, ports.
class QX_prefs final : public Child_Form {
public:
    // `port_chosen` hears, on each showing, whether the list selected a port.
    QX_prefs(App_Context& app, QWidget* parent, std::function<void()> update_all,
             std::function<void(bool selected)> port_chosen = {});

    // The first routine: fill the controls from the state the load read.
    void Init_From_State();
    void ApplyButton_Click();
    void OKButton_Click();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void Fill_Port_List();
    QRadioButton* Radio(QButtonGroup* group, const QString& name, const QString& caption, int id);
    App_Context& app_;
    std::function<void()> update_all_;
    std::function<void(bool)> port_chosen_;
    Qt_Port_Platform platform_;
    QButtonGroup* interface_group_;
    QButtonGroup* language_group_;
    QButtonGroup* autoguide_group_;
    QButtonGroup* speed_group_;
    QCheckBox* Auto_Start_option_[2];
    QCheckBox* ManualUSBDetect_Check_;
    QComboBox* Combo1_;
    QLineEdit* Text1_;
};

} // namespace quorlen::ui
