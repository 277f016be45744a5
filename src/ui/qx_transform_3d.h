#pragma once
// "Fuel and ignition map size conversion": the three steps of changing a main map's shape
// and axes, one page for the fuel map and one for the ignition map. Step 2 holds what the
// step changes: the size list, the two resolution sliders, and the axes with their buttons.
// The logic is in engine/axis_transform.

#include "engine/axis_transform.h"
#include "ui/child_form.h"

#include <array>
#include <functional>

class QComboBox;
class QLabel;
class QPushButton;
class QScrollBar;
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
    void Size_Combo_Click(Map_Head head, int index);
    void d_3D_RPM_scroll_Click(Map_Head head, int value);
    void d_3D_MAP_scroll_Click(Map_Head head, int value);
    // The step buttons over the selection of the axis grid that had the focus last.
    void Table_Increase_Click(Map_Head head);
    void Table_Decrease_Click(Map_Head head);
    void Table_Insert_Click(Map_Head head);

    Transform_State& State() { return state_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Page {
        QWidget* page = nullptr;
        QComboBox* size = nullptr;
        QScrollBar* rpm_scroll = nullptr;
        QLabel* rpm_text = nullptr;
        QScrollBar* map_scroll = nullptr;
        QLabel* map_text = nullptr;
        QTableWidget* rpm_grid = nullptr;
        QTableWidget* map_grid = nullptr;
        QTableWidget* saved = nullptr;
        QTableWidget* saved2 = nullptr;
    };

    QWidget* Build_Page(Map_Head head);
    Page& Of(Map_Head head) { return pages_[head == Map_Head::Fuel ? 0 : 1]; }
    Axis_Context Axes();
    Table_Hooks Hooks() const;
    void Show_Axes(Map_Head head);
    void Show_Saved(Map_Head head);
    // The selected steps of the axis under focus, 1-based; false when nothing is selected.
    bool Selected_Steps(Map_Head head, int& first, int& last);

    App_Context& app_;
    Transform_Hooks hooks_;
    Transform_State state_;
    QTabWidget* tabs_ = nullptr;
    std::array<Page, 2> pages_{};
};

} // namespace quorlen::ui
