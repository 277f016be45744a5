#pragma once
// The engine frame of the settings form: the layout list, the nine lists of the chosen
// layout's fields, its texts, and the selection guide's buttons. The logic is in
// engine/engine_config_frame.h; this shows its state and forwards the user's choices. The
// recommended teeth go to the form's label beside the teeth sliders, which the teeth slider
// also writes.

#include "engine/engine_config_frame.h"

#include <QGroupBox>

#include <array>
#include <functional>
#include <string>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace quorlen {
struct App_Context;
}

namespace quorlen::ui {

class Engine_Config_Box final : public QGroupBox {
public:
    // `update_all` is the program's refresh after the layout changed.
    Engine_Config_Box(App_Context& app, std::function<void()> update_all, QWidget* parent);

    // The layout list from the catalogue, and the image's layout (at start, and when the
    // catalogue is read again).
    void Init();
    // After any change of the image: the frame shows the image's layout unless the guide is
    // at work.
    void Follow_Image();

    const Engine_Config_Frame& State() const { return frame_; }

private:
    Engine_Config_Context Ctx();
    void Sync();
    template <class F>
    void Run(F&& action);

    App_Context& app_;
    std::function<void()> update_all_;
    Engine_Config_Frame frame_;
    bool syncing_ = false;

    QComboBox* Engine_setup_combo_ = nullptr;
    std::array<QComboBox*, Engine_List_Count> lists_{};
    QLineEdit* Cylinder_info_txt_ = nullptr;
    std::array<QLineEdit*, 2> Ign_Channel_order_info_txt_{};
    std::array<QLineEdit*, 2> Fuel_Channel_order_info_txt_{};
    QLineEdit* FW_info_txt_ = nullptr;
    QLineEdit* Selected_Engine_config_row_txt_ = nullptr;
    QLabel* Crank_angle_example_label_ = nullptr;
    // The recommendation of teeth last handed to the settings form's label beside the teeth.
    std::string teeth_shown_;
    QPushButton* Init_Selection_guide_ = nullptr;
    QPushButton* Engine_Config_OK_ = nullptr;
    QPushButton* Engine_Config_Cancle_ = nullptr;
};

} // namespace quorlen::ui
