#pragma once
// Display: the live data of a running log as instruments a tuner reads at a glance beside the
// car: sixteen gauges, each a large number with its unit and a bar along its range. Its keys
// ask the box to move the cell the engine runs in. The numbers come from logging/; this only
// paints them.

#include "logging/live_display.h"
#include "ui/child_form.h"

#include <array>
#include <functional>
#include <string>

class QLabel;

namespace quorlen {
struct App_Context;
}

namespace quorlen::ui {

class Gauge;

struct Display_Hooks {
    // A live cell adjustment by the box: "+", "-" (fuel), ">", "<" (ignition).
    std::function<void(const std::string& command)> Cell_Adjust;
};

class Display final : public Child_Form {
public:
    Display(App_Context& app, Display_Hooks hooks, QWidget* parent);

    // cmd_Show_Current_Data's part here: every gauge to its reading.
    void Show_Readings(const Gauge_Readings& readings);
    // cmd_Show_Current_Data_Clear: every gauge empty.
    void Clear();
    // The last word of the live changes, under the gauges.
    void Show_Status(const std::string& text);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    App_Context& app_;
    Display_Hooks hooks_;
    std::array<Gauge*, Gauge_Count> gauges_{};
    QLabel* status_ = nullptr;
};

} // namespace quorlen::ui
