#pragma once
// The shape and the axes of one main map, as the tuner changes them: the size list, the two
// resolution sliders, the axes with their steps, and the buttons that double, halve or
// insert steps on the axis that had the focus last. It stands on the settings form's fuel and
// ignition pages and in step 2 of the map size conversion.

#include "engine/axis_transform.h"

#include <QGroupBox>

#include <functional>

class QComboBox;
class QHBoxLayout;
class QLabel;
class QScrollBar;
class QTableWidget;

namespace quorlen {
struct App_Context;
} // namespace quorlen

namespace quorlen::ui {

struct Map_Axes_Hooks {
    std::function<User_Dialogs&()> Dialogs;
    std::function<void()> Update_Tabs;
    std::function<void()> Show_Right_Tabs;
    std::function<void()> Update_All;
};

class Map_Axes_Panel final : public QGroupBox {
public:
    Map_Axes_Panel(App_Context& app, Map_Head head, Map_Axes_Hooks hooks, const QString& title,
                   QWidget* parent);

    // The size, the sliders and the axes follow the image.
    void Refresh();

    void Size_Combo_Click(int index);
    void d_3D_RPM_scroll_Click(int value);
    void d_3D_MAP_scroll_Click(int value);
    void Table_Increase_Click();
    void Table_Decrease_Click();
    void Table_Insert_Click();

    Axis_Focus Focus() const { return focus_; }
    // The row of buttons, for a form to add its own.
    QHBoxLayout* Buttons() const { return buttons_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Axis_Context Axes();
    Table_Hooks Hooks() const;
    // The selected steps of the axis under focus, 1-based; false when nothing is selected.
    bool Selected_Steps(int& first, int& last);

    App_Context& app_;
    Map_Head head_;
    Map_Axes_Hooks hooks_;
    Axis_Focus focus_ = Axis_Focus::Rpm;
    bool refreshing_ = false;
    QComboBox* size_ = nullptr;
    QScrollBar* rpm_scroll_ = nullptr;
    QLabel* rpm_text_ = nullptr;
    QScrollBar* map_scroll_ = nullptr;
    QLabel* map_text_ = nullptr;
    QTableWidget* rpm_grid_ = nullptr;
    QTableWidget* map_grid_ = nullptr;
    QHBoxLayout* buttons_ = nullptr;
};

} // namespace quorlen::ui
