#pragma once
// The sensor viewer: the sensor of each analogue input, the calibration of the throttle from
// a running log, and the editor in which a definition is looked at, typed, drawn, tested and
// saved among the tuning or the log sensors. The logic is in sensors/ and engine/.

#include "sensors/sensor_editor.h"
#include "sensors/tps_calibration.h"
#include "ui/child_form.h"

#include <array>
#include <functional>
#include <string>
#include <utility>
#include <vector>

class QButtonGroup;
class QCheckBox;
class QChartView;
class QComboBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QTableWidget;
class QTimer;
class QLineSeries;

namespace quorlen {
struct App_Context;
} // namespace quorlen

namespace quorlen::ui {

// What the sensor viewer asks of the main window and the log window.
struct Sensor_Editor_Hooks {
    std::function<User_Dialogs&()> Dialogs;
    // The views after an input's sensor has changed: the tables' shapes and labels, their
    // contents, and the settings pages' sensor-dependent texts.
    std::function<void()> Update_Tabs;
    std::function<void()> Update_All;
    std::function<void()> Update_scroll_change;
    // The start of a log in the log window, and its lists after a log sensor was stored.
    std::function<void()> Start_Logging;
    std::function<void()> Log_Sensors_Changed;
};

class QX_Sensor_Editor final : public Child_Form {
public:
    QX_Sensor_Editor(App_Context& app, Sensor_Editor_Hooks hooks, QWidget* parent);
    ~QX_Sensor_Editor() override;

    // The twelve lists follow the sensor table and An_Sel; the viewing lists the sensors.
    void Show_Selections();

    void AN_Combo_Click(int input, int index);
    void Calibrate_TPS_sens_Click();
    void TPS_Timer_Timer();
    void cmd_SaveSensor_Click();
    void cmd_EditSensor_Click();
    void cmd_Frw_Calc_Click();
    void cmd_Rev_Calc_Click();
    void View_Tuning_Sensor_Combo_Click(int index);
    void View_Log_Sensor_Combo_Click(int index);

    Sensor_Editor& Editor() { return editor_; }
    const TPS_Calibration& Calibration() const { return tps_; }

private:
    QWidget* Build_Select_Page();
    QWidget* Build_Editor_Page();
    QGroupBox* Build_Definition();
    QGroupBox* Build_Create();
    QGroupBox* Build_Tester();
    QWidget* Build_Grid();
    // The fields of the form into the editor's state, and back.
    std::vector<std::pair<QLineEdit*, std::string*>> Fields();
    void Take_Fields();
    void Show_Fields();
    void Show_Grid();
    void Show_In_Diagram();
    void Definition_Edited();
    void Point_Tool(void (*tool)(Sensor_Editor&, int, int));
    Sensor_Save_Hooks Save_Hooks();
    TPS_Hooks Tps_Hooks();

    App_Context& app_;
    Sensor_Editor_Hooks hooks_;
    Sensor_Editor editor_;
    TPS_Calibration tps_;
    bool showing_ = false;

    QTabWidget* SensorEditor_SSTab_ = nullptr;
    std::array<QComboBox*, Analog_Inputs + 1> AN_Combo_{};
    QTimer* TPS_Timer_ = nullptr;
    QComboBox* View_Tuning_Sensor_Combo_ = nullptr;
    QComboBox* View_Log_Sensor_Combo_ = nullptr;
    QLineEdit* txt_SensorName_ = nullptr;
    QLineEdit* txt_SensorUnit_ = nullptr;
    QLineEdit* txt_SensorDecimals_ = nullptr;
    QLineEdit* txt_SensorInUnit_ = nullptr;
    QLineEdit* txt_SensorGain_ = nullptr;
    QLineEdit* txt_SensorOffset_ = nullptr;
    QLineEdit* txt_SensorMin_ = nullptr;
    QLineEdit* txt_SensorMax_ = nullptr;
    QButtonGroup* Sensor_Type_ = nullptr;
    QFrame* frame_Linear_ = nullptr;
    QFrame* Save_sensor_frame_ = nullptr;
    QCheckBox* chk_Tuning_ = nullptr;
    QCheckBox* chk_Log_ = nullptr;
    std::array<QLineEdit*, 4> txt_Create_Sens_{};
    QComboBox* In_Display_Combo_ = nullptr;
    QTableWidget* Sensor_grid_ = nullptr;
    QLineEdit* set_table_text_ = nullptr;
    QLineEdit* scale_table_text_ = nullptr;
    QWidget* point_tools_ = nullptr;
    QChartView* Sensor_chart_ = nullptr;
    QLineSeries* series_ = nullptr;
    QLineEdit* Text1_ = nullptr;
    QLineEdit* Text2_ = nullptr;
};

} // namespace quorlen::ui
