#pragma once
// "Fuel correction": the open log's steady rows against the main fuel map. The thresholds of
// the steady filters stand at the top, the proposal as a grid of percent changes with the
// steady time of each cell below; the tuner selects cells and applies them as one edit of the
// image. The study itself lives in analysis/.

#include "analysis/fuel_correction.h"
#include "ui/child_form.h"

#include <functional>
#include <map>
#include <string>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace quorlen {
struct App_Context;
class User_Dialogs;
} // namespace quorlen

namespace quorlen::ui {

struct Fuel_Correction_Hooks {
    std::function<User_Dialogs&()> Dialogs;
    // Every view follows the image after the cells are written.
    std::function<void()> Update_All;
};

class QX_Fuel_Correction final : public Child_Form {
public:
    QX_Fuel_Correction(App_Context& app, Fuel_Correction_Hooks hooks, QWidget* parent);

    // The open log studied again with the thresholds on show.
    void cmd_Propose_Click();
    // The selected cells' new times into the image, as one edit.
    void cmd_Apply_Click();
    void cmd_Select_Changes_Click();

    const Fuel_Proposal& Proposal() const { return proposal_; }
    QTableWidget* Grid() const { return grid_; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    QLineEdit* Field(const char* name, const std::string& text);
    void Read_Fields();
    void Show_Fields();
    void Show_Proposal();

    App_Context& app_;
    Fuel_Correction_Hooks hooks_;
    Correction_Options options_;
    Fuel_Proposal proposal_;
    std::map<std::string, QLineEdit*> fields_;
    std::map<std::string, QLabel*> units_;
    QLabel* lbl_Study_ = nullptr;
    QLabel* lbl_Status_ = nullptr;
    QTableWidget* grid_ = nullptr;
    QPushButton* cmd_Apply_ = nullptr;
};

} // namespace quorlen::ui
