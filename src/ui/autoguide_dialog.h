#pragma once

#include "ui/child_form.h"

#include <functional>

class QCheckBox;

namespace quorlen {
struct App_Context;
}

namespace quorlen::ui {

// The question at start whether to run the setup guide.
class Autoguide_startup_Dialog final : public Child_Form {
public:
    // `show_guide` opens the setup guide; `set_autoguide` sets the preference option.
    Autoguide_startup_Dialog(App_Context& app, QWidget* parent, std::function<void()> show_guide,
                             std::function<void(int)> set_autoguide);

private:
    QCheckBox* check_;
};

} // namespace quorlen::ui
