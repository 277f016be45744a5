#pragma once
// "Model presets" on the settings form: the user presets of the configuration file, what the
// chosen one would change, and the buttons that apply it (with a fuel base for "Preset B").

#include "core/user_dialogs.h"

#include <QGroupBox>

#include <functional>

class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace quorlen {
struct App_Context;
}

namespace quorlen::ui {

class Model_Preset_Box final : public QGroupBox {
public:
    Model_Preset_Box(App_Context& app, std::function<User_Dialogs&()> dialogs,
                     std::function<void()> update_all, QWidget* parent);

    // The list from PresetList with the preset chosen last, and what it would change.
    void Init();
    // After any change of the image: what the chosen preset would change now.
    void Show_Changes();

    void PresetList_Click(int index);
    void Apply_Preset_Click();
    void Preset_B_Click();

private:
    App_Context& app_;
    std::function<User_Dialogs&()> dialogs_;
    std::function<void()> update_all_;
    QComboBox* PresetList_ = nullptr;
    QPlainTextEdit* Preset_Changes_txt_ = nullptr;
    QLineEdit* Pre_perc_ = nullptr;
    QPushButton* Apply_Preset_ = nullptr;
    QPushButton* Preset_B_ = nullptr;
};

} // namespace quorlen::ui
