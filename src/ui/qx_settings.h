#pragma once
// The settings form: every single-value parameter of the image on the tabs of
// QX_Settings_SSTab. A slider, its label, its value text and its unit share the image address
// of the parameter ("scroll_17", "scroll_label_17", "scroll_text_17", "scroll_unit_label_17");
// the logic of what each shows and does lives in engine/.

#include "app/app_context.h"
#include "engine/axis_transform.h"
#include "engine/page_charts.h"
#include "engine/page_choices.h"
#include "ui/child_form.h"

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class QAbstractButton;
class QButtonGroup;
class QChart;
class QChartView;
class QLineSeries;
class QValueAxis;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QScrollArea;
class QScrollBar;
class QTabWidget;
class QTableView;
class QVBoxLayout;

namespace quorlen::ui {

class Engine_Config_Box;
class Image_Table_Model;
class Model_Preset_Box;
class Map_Axes_Panel;

struct QX_settings_Hooks {
    std::function<User_Dialogs&()> Dialogs;
    // The main window's refreshes: every change of the image runs Update_All.
    std::function<void()> Update_All;
    std::function<void()> Update_Tabs;
    std::function<void()> Show_Right_Tabs;
    // Clears the box's error counters and writes them (the main window's routine).
    std::function<void()>
        Clear_Err_Counters; // The map size conversion, on the page of the fuel (0) or the ignition (1) map.
    std::function<void(int head)> Show_Transform_3D;
};

class QX_settings final : public Child_Form {
public:
    QX_settings(App_Context& app, QX_settings_Hooks hooks, QWidget* parent);
    ~QX_settings() override;

    QTabWidget* Tabs() const { return QX_Settings_SSTab_; }
    // "Engine on for ... sec", as a binary log tells it.
    void Show_Engine_On(const std::string& text);
    // Shows the form on tab `index`.
    void Show_Tab(int index);

    // Every control from the image; the main window's Update_All runs it while the form is
    // shown, and showing the form runs it.
    void Update_Settings();
    void Show_Right_Settings();

    // The user moved slider `index` (or typed its value): the image takes it, the messages
    // of the page come up, and every view follows.
    void scroll_Change(int index, int value);
    // After a sensor change: the sliders bound to an input show its sensor and unit again.
    void Update_scroll_change();

    void Update_Temp_Chart();
    void Update_Battery_Chart();
    void Update_Startup_Chart();
    void Update_Digital_chart();

    // Shows or hides the group of controls of slider `index`, the fan's slider, and the
    // sensor choice and chart of digital output `index`.
    void show_scroll(int index, bool visible);
    void show_fan_scroll(bool visible);
    void show_sens(int index, bool visible);

    // The "Find setting" field: filters every tab by label text; Enter jumps to the first
    // match.
    void Find_Setting(const QString& text);
    void Find_Setting_Jump();

protected:
    void showEvent(QShowEvent* event) override;
    // Typing, Ctrl+C and Ctrl+V on the PWM2 extra fuel grid.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // One slider with its label (none for the unlabelled cells of the digital outputs' grid),
    // value text and unit.
    struct Row {
        const Page_Param* p = nullptr;
        QLabel* label = nullptr;
        QScrollBar* scroll = nullptr;
        QLineEdit* text = nullptr;
        QLabel* unit = nullptr;
        QString search_label; // what "Find setting" looks in
        bool function_visible = true;
        bool bold = false;
    };
    struct Choice {
        const Page_Choice* c = nullptr;
        QLabel* caption = nullptr; // the caption in front of a list or a group of options
        QWidget* control = nullptr;
        QComboBox* combo = nullptr;
        QButtonGroup* group = nullptr;
        QCheckBox* check = nullptr;
        bool bold = false;
    };
    struct Chart {
        QChartView* view = nullptr;
        QChart* chart = nullptr;
        QValueAxis* x = nullptr;
        QValueAxis* y = nullptr;
        std::vector<QLineSeries*> series;
        Page_Chart last; // redrawn only when the curves change
        bool drawn = false;
    };

    void Build();
    QWidget* Build_Tab(int tab);
    QGroupBox* Build_Frame(const Page_Frame& frame, QWidget* parent);
    void Build_Digital_Outputs(QGroupBox* box);
    Row& Add_Row(const Page_Param& p, QWidget* parent);
    Choice& Add_Choice(const Page_Choice& c, QWidget* parent, QGridLayout* grid, int row);
    Chart* Add_Chart(QWidget* parent, const QString& name, const QString& title);
    void Build_Tab_Extras(int tab, QWidget* page, QVBoxLayout* left, QVBoxLayout* right);
    void Build_Pwm_Fuel_Grid(QGroupBox* box);
    QWidget* Build_Map_Axes(Map_Head head, QWidget* page);

    void Choice_Clicked(const Page_Choice& c, int n);
    void Text_Entered(int index);
    void Show_Messages(const std::vector<Page_Message>& messages);
    // `typed`: the user has just entered a value in the row's text, which then shows it.
    void Show_Row(Row& row, bool typed = false);
    void Show_Choice(Choice& choice);
    void Show_Chart(Chart& chart, const Page_Chart& curves);
    void Apply_View();
    void Show_Analog_Inputs();
    bool Matches(const QString& label) const;

    App_Context& app_;
    QX_settings_Hooks hooks_;
    QTabWidget* QX_Settings_SSTab_ = nullptr;
    QLineEdit* Find_Setting_txt_ = nullptr;
    std::array<QScrollArea*, Settings_Tab_Count> pages_{};
    std::map<std::string, QGroupBox*> frames_;
    std::map<std::string, QLabel*> hints_; // in a frame's place while its function is off
    std::vector<std::unique_ptr<Row>> rows_;
    std::array<Row*, Array_Size> row_of_{};
    std::vector<std::unique_ptr<Choice>> choices_;
    std::vector<std::unique_ptr<Chart>> charts_;
    Chart* Temp_Chart_ = nullptr;
    Chart* Battery_Chart_ = nullptr;
    Chart* Startup_Chart_ = nullptr;
    std::array<Chart*, 4> Dig_chart_{};
    std::array<QGroupBox*, 4> Dig_chart_frame_{};
    std::array<QLabel*, 4> Digital_Sensor_label_{};
    std::array<QLabel*, 4> row_headers_{};
    std::array<QLabel*, 2> Description_label_{};
    QLabel* Dig2_AutoTune_lable_ = nullptr;
    QLabel* Engine_On_label_ = nullptr;
    QLabel* Fuel_teeth_recomend_ = nullptr;
    QLabel* Forbidden_tooth_label_ = nullptr;
    QLabel* Analog_Input_Sensors_ = nullptr;
    QTableView* PWM2_FuelCorr_grid_ = nullptr;
    Image_Table_Model* Pwm_Fuel_Model_ = nullptr;
    Engine_Config_Box* Engine_Config_frame_ = nullptr;
    Model_Preset_Box* Model_preset_frame_ = nullptr;
    // The shape and axes of the fuel map (Fuel settings) and of the ignition map (Ignition).
    std::array<Map_Axes_Panel*, 2> axes_{};
    Settings_View view_;
    QString filter_;
    bool showing_ = false; // the program is setting the controls: their signals do nothing
};

} // namespace quorlen::ui
