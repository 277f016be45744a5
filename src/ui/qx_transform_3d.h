#pragma once
// "Fuel and ignition map size conversion": the three steps of changing a main map's shape
// and axes, one page for the fuel map and one for the ignition map. Step 2 holds what the
// step changes, as the settings form has it. The logic is in engine/axis_transform.

#include "engine/axis_transform.h"
#include "ui/child_form.h"
#include "ui/map_axes_panel.h"

#include <array>
#include <functional>

class QTabWidget;
class QTableWidget;

namespace quorlen {
struct App_Context;
} // namespace quorlen

namespace quorlen::ui {

struct Transform_Hooks {
    std::function<User_Dialogs&()> Dialogs;
    std::function<void()> Update_Tabs;
    std::function<void()> Show_Right_Tabs;
    std::function<void()> Update_All;
    // The sensor viewer, for the sensor definitions step 2 may change.
    std::function<void()> Show_Sensor_Editor;
};

class QX_Transform_3D final : public Child_Form {
public:
    QX_Transform_3D(App_Context& app, Transform_Hooks hooks, QWidget* parent);
    ~QX_Transform_3D() override;

    // The page of that map on top.
    void Show_Head(Map_Head head);
    // Sizes, sliders and axes follow the image; the saved grids stay as they are.
    void Refresh();

    void Save_transform_Click(Map_Head head);
    void Convert_Transform_Click(Map_Head head);

    Transform_State& State() { return state_; }

private:
    struct Page {
        Map_Axes_Panel* axes = nullptr;
        QTableWidget* saved = nullptr;
        QTableWidget* saved2 = nullptr;
    };

    QWidget* Build_Page(Map_Head head);
    Page& Of(Map_Head head) { return pages_[head == Map_Head::Fuel ? 0 : 1]; }
    void Show_Saved(Map_Head head);

    App_Context& app_;
    Transform_Hooks hooks_;
    Transform_State state_;
    QTabWidget* tabs_ = nullptr;
    std::array<Page, 2> pages_{};
};

} // namespace quorlen::ui
