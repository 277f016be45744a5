#pragma once
// The auto setup form: a small window that stays above the others, leads a first-time user
// through the forms step by step, and holds the fuel and ignition map generators. It edits
// nothing itself but the maps it is asked to generate; the steps and the generators' logic
// live in autosetup/.

#include "app/app_context.h"
#include "ui/child_form.h"

#include <array>
#include <functional>
#include <map>
#include <string>

class QButtonGroup;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace quorlen::ui {

struct AutoSetup_Hooks {
    std::function<User_Dialogs&()> Dialogs;
    std::function<void()> Update_All;
    // A child form of the main window by name, made on first use (nullptr for a form the
    // program does not have), and whether it has been made.
    std::function<QWidget*(const std::string&)> Form;
    std::function<bool(const std::string&)> Form_Exists;
    // The settings form on a tab, and the main window on a tab and the tab under it.
    std::function<void(int)> Show_Settings;
    std::function<void(int, int)> Show_Main_Tab;
    // The ignition map's grid selects its first cell.
    std::function<void()> Select_Ignition_First_Cell;
    // Opens the manual with the desktop's viewer.
    std::function<void()> Open_Manual;
};

class QX_AutoSetup_frm final : public Child_Form {
public:
    QX_AutoSetup_frm(App_Context& app, AutoSetup_Hooks hooks, QWidget* parent);

    // Step 1, then the capacity figures for the boxes' figures.
    void Form_Load();
    // 0 "Next step", 1 "Previous step".
    void Autosetup_next(int index);
    void Command1_Click(); // "Restart"
    void Command2_Click(); // "HELP"
    void Generate_Autofuel_cmd_Click();
    void Generate_Autoignition_cmd_Click();
    // Goes to step `step` and carries it out.
    void Show_Step(int step);
    // After any change of the image: the labels follow the layout, the captions the load.
    void Follow_Image();

private:
    QGroupBox* Build_Fuel_Frame();
    QGroupBox* Build_Ignition_Frame();
    // What a box's change works out again: nothing (the ignition boxes are read when the map
    // is generated), the fuel figures, or the air figures and then the fuel figures.
    enum class Box_Feeds { Nothing, Fuel, Air };
    QLineEdit* Add_Box(QWidget* parent, const QString& name, std::string* text, Box_Feeds feeds);
    void Box_Edited(QLineEdit* box, std::string* text, Box_Feeds feeds);
    // Carries out the step Setup_Step names; nothing for a number outside the guide.
    void Run_Step();
    void Show_Boxes();
    void Show_Fuel_Labels();
    void Show_Captions();
    void Show_Outcome(const Generate_Outcome& outcome);
    Auto_Setup_Context Ctx();

    App_Context& app_;
    AutoSetup_Hooks hooks_;
    QPlainTextEdit* Autosetup_guidetext_ = nullptr;
    QLabel* Step_label_ = nullptr;
    QGroupBox* AutoFuel_frame_ = nullptr;
    QGroupBox* AutoIgnition_frame_ = nullptr;
    QButtonGroup* FuelType_option_ = nullptr;
    std::map<QLineEdit*, std::string*> boxes_;
    std::map<std::string, QLabel*> labels_;
    std::array<QLabel*, 4> ignition_captions_{};
    QLabel* Ign_load_label_ = nullptr;
    QLabel* Generate_status_label_ = nullptr;
};

} // namespace quorlen::ui
