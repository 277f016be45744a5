#pragma once
// The Ignition, Fuel and PWM tabs of the main window: the map grids, the charts of the
// one-dimensional tables, the size and function combos, the compensation sliders and the
// labels that name the load sensors; and the editing of the grids: keys, clipboard, the
// buttons and text boxes beside them, the colouring of the main maps, the surface view and
// the verify view. They show what the table logic reads from the image and forward the
// user's choices to it; the main window decides when they refresh.

#include "app/app_context.h"
#include "ui/table_models.h"

#include <QObject>

#include <functional>
#include <map>
#include <vector>

class QButtonGroup;
class QChartView;
class QCheckBox;
class QComboBox;
class QFrame;
class QKeyEvent;
class QLineEdit;
class QLabel;
class QScrollBar;
class QBoxLayout;
class QTabWidget;
class QTableView;
class QWidget;

namespace quorlen::ui {

struct Map_Tabs_Hooks {
    std::function<User_Dialogs&()> Dialogs;
    std::function<void()> Update_All;
    std::function<void()> Update_Tabs;
    std::function<void()> Show_Right_Tabs;
    // A child form by name, made on first use, and whether it has been made.
    std::function<QWidget*(const std::string&)> Form;
    std::function<bool(const std::string&)> Form_Exists;
    // Enter on a main map while a log stream holds the port.
    std::function<void()> Write_while_logging;
    // The map size conversion, on the page of the fuel (0) or the ignition (1) map.
    std::function<void(int head)> Show_Transform_3D;
};

class Map_Tabs final : public QObject {
public:
    Map_Tabs(App_Context& app, Map_Tabs_Hooks hooks, QTabWidget* ignition, QTabWidget* fuel, QTabWidget* pwm,
             QObject* parent);
    ~Map_Tabs() override;

    // Fills the combos once.
    void Init_Tabs();
    // Grid shapes and column widths, the combos' choices.
    void Update_Tabs();
    // Labels, units and the PWM1 tab's caption.
    void Show_Right_Tabs();
    // Every grid, chart and slider follows the image.
    void Update_All();

    Image_Table_Model* Model(Table_Id id) const;
    QTableView* Grid(Table_Id id) const;

    // The main form's slider at `index` moved to `value`.
    void scroll_Change(int index, int value);

    // --- editing (map_tabs_edit.cpp) ---

    // The selection of a grid as the grid keeps it (anchor and far corner), and setting it.
    Grid_Selection Selection_Of(Table_Id id) const;
    void Set_Selection(Table_Id id, const Grid_Selection& sel);
    // Enables the buttons that serve the table on show; a one-dimensional table shows its
    // limits.
    void Handle_button_enable();
    // The verify view follows Verify_Check: shown and filled when ticked, hidden otherwise.
    void Verify_View();
    // The surface view, made on first use.
    void Show_3D_View();
    // The open log changed: the "Log hits" colouring follows it.
    void Log_Changed();

private:
    struct Chart;
    struct Slider {
        QScrollBar* scroll = nullptr;
        QLabel* text = nullptr;
        QLabel* unit = nullptr;
    };

    Tables_Context Context() const;
    QTableView* Add_Grid(QWidget* parent, const char* name, Table_Id id);
    Chart* Add_Chart(QWidget* parent, const QString& name);
    QLabel* Add_Label(QWidget* parent, const char* name);
    QWidget* Build_Main_Map(QWidget* page, Table_Id id);
    QWidget* Build_One_D(QWidget* page, Table_Id id, const char* grid_name, const QString& chart_name);
    void Build_Comp_Page(QWidget* page, int first_index, const QString& chart_name);
    void Fit_Columns(QTableView* view);
    void Fit_Main_Map(Table_Id id);
    void Offer_Chart(Chart& chart, Chart_Data data);
    void Show_Pending(Chart& chart);
    void Show_Chart(Chart& chart, const Chart_Data& data);
    void Show_Sliders();

    void Build_Edit_Panels();
    QWidget* Build_One_D_Panel();
    QWidget* Build_Main_Map_Panel();
    void Place_Panels();
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool Grid_Key(Table_Id id, QKeyEvent* event);
    Edit_Hooks Edit();
    void Colours_Follow_Image();
    void Recolour();
    void Show_Edit_Texts();
    void Refresh_3D_View();

    App_Context& app_;
    Map_Tabs_Hooks hooks_;
    QTabWidget* ignition_;
    QTabWidget* fuel_;
    QTabWidget* pwm_;

    std::map<Table_Id, Image_Table_Model*> models_;
    std::map<Table_Id, QTableView*> grids_;
    std::map<Table_Id, Chart*> charts_;
    std::vector<std::unique_ptr<Chart>> chart_store_;
    Chart* pwm_comp_chart_ = nullptr;
    Chart* ign_comp_chart_ = nullptr;
    std::map<int, Slider> sliders_;
    bool drag_step_due_ = false; // a slider was pressed and has not moved yet

    QComboBox* FUEL_3D_MAP_Size_Combo_ = nullptr;
    QComboBox* Ign_3D_MAP_Size_Combo_ = nullptr;
    QComboBox* FUEL_2nd_MAP_Function_Combo_ = nullptr;
    std::map<std::string, QLabel*> labels_;

    // Editing.
    std::map<Table_Id, QBoxLayout*> panel_slots_;
    QWidget* one_d_panel_ = nullptr;
    QWidget* main_map_panel_ = nullptr;
    std::map<std::string, QWidget*> edit_controls_;
    std::map<std::string, QLineEdit*> edit_texts_;
    QLabel* maxText_ = nullptr;
    QLabel* minText_ = nullptr;
    QButtonGroup* Color_3D_Check_ = nullptr;
    QLineEdit* Mid_3D_limit_txt_ = nullptr;
    QFrame* Color_Low_frame_ = nullptr;
    QFrame* Color_High_frame_ = nullptr;
    QLabel* Log_Hits_Legend_ = nullptr;
    QCheckBox* Verify_Check_ = nullptr;
    QScrollBar* Verify_limit_scroll_ = nullptr;
};

} // namespace quorlen::ui
