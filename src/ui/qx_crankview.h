#pragma once
// The crank viewer: the trigger wheel of the image's engine layout as the sensor sees it at
// the 51-degree mark of cylinder 1, and what the open high-speed capture says of the wheel
// and the cam, with warnings where the two disagree. The numbers are in hslog/crank_view.h;
// this draws them.

#include "hslog/crank_view.h"
#include "ui/child_form.h"

#include <functional>
#include <optional>
#include <string>

class QLabel;
class QPlainTextEdit;

namespace quorlen {
struct App_Context;
} // namespace quorlen

namespace quorlen::ui {

// The wheel, drawn with the sensor at the top: the tooth of the mark is under it, the wheel
// turns clockwise, and top dead centre of cylinder 1 comes 51 degrees later.
class Crank_Wheel_Widget final : public QWidget {
public:
    explicit Crank_Wheel_Widget(QWidget* parent);
    void Show(const Wheel_Layout& wheel, const std::optional<double>& cam_angle);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Wheel_Layout wheel_;
    std::optional<double> cam_angle_;
};

struct Crank_View_Hooks {
    // The engine layouts of the configuration file.
    std::function<const Engine_Config_Table&()> Layouts;
    // The capture open in the high-speed log window, and its file; nullptr when none.
    std::function<const Osc_Trace*()> Trace;
    std::function<std::string()> Trace_Name;
    std::function<void()> Show_HS_Log;
};

class QX_CrankView final : public Child_Form {
public:
    QX_CrankView(App_Context& app, Crank_View_Hooks hooks, QWidget* parent);

    // Draws the image's layout and setting 18 again, and measures the capture again.
    void Refresh();
    const Crank_Report& Report() const { return report_; }

private:
    App_Context& app_;
    Crank_View_Hooks hooks_;
    Crank_Report report_;
    Crank_Wheel_Widget* Crank_Wheel_ = nullptr;
    QPlainTextEdit* txt_Crank_Info_ = nullptr;
    QLabel* lbl_Crank_Warnings_ = nullptr;
};

} // namespace quorlen::ui
