#pragma once
// A map as a surface: the main fuel or ignition map (engine speed across, load deep, the cell
// values up), PWM 1 with its compensation, or the acceleration fuel; coloured from blue
// through white to red. Without OpenGL the window keeps the data (and its export as text)
// and says why there is no surface.

#include "tables/surface_data.h"
#include "ui/child_form.h"

#include <QImage>

#include <functional>

class QComboBox;
class QLabel;

class Q3DSurface;
class QSurface3DSeries;

namespace quorlen {
struct App_Context;
class User_Dialogs;
} // namespace quorlen

namespace quorlen::ui {

class QX_3Dmap final : public Child_Form {
public:
    QX_3Dmap(App_Context& app, std::function<User_Dialogs&()> dialogs, QWidget* parent);

    // 0 the fuel map, 1 the ignition map, 2 PWM 1 (boost or PWM), 3 the acceleration fuel.
    void Show_Map(int index);
    // The chosen map's Calculate_*3dmap into the surface.
    void Update_3D();
    // Asks for a name and saves the picture (.bmp) or the data (.csv).
    void Export_Image_Click();

    const Surface_Data& Data() const { return data_; }
    bool Has_Surface() const { return graph_ != nullptr; }
    // The surface drawn at `size`; null without OpenGL.
    QImage Surface_Image(QSize size) const;

private:
    App_Context& app_;
    std::function<User_Dialogs&()> dialogs_;
    QComboBox* Map_Select_Combo_;
    QLabel* status_;
    Q3DSurface* graph_ = nullptr;
    QSurface3DSeries* series_ = nullptr;
    Surface_Data data_;
};

} // namespace quorlen::ui
