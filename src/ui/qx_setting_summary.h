#pragma once
// The setting summary viewer: the readable words of a tune, the box's or a log's, with the
// maps if wanted; opened from and saved to rich text files, and printed.

#include "app/tune_tools.h"
#include "core/user_dialogs.h"
#include "ui/child_form.h"

#include <functional>
#include <string>

class QComboBox;
class QPagedPaintDevice;
class QTextEdit;

namespace quorlen::ui {

struct Summary_Window_Hooks {
    std::function<User_Dialogs&()> Dialogs;
    // The readable section of the log the log window holds, and that log's file name; both
    // empty when no log is open.
    std::function<std::string()> Log_Readable_Settings;
    std::function<std::string()> Log_File_Name;
};

class QX_Setting_Summary final : public Child_Form {
public:
    QX_Setting_Summary(App_Context& app, Summary_Window_Hooks hooks, QWidget* parent);

    // Builds the summary of the current image and the box last heard, and shows it.
    void Update_Readable_Setting_Window();
    // "View box file settings" and "View log file settings", as buttons and as menu entries.
    void cmd_View_Box_Settings_Click();
    void cmd_View_Log_Settings_Click();
    void Open_Click();
    // "Export to textfile"
    void SaveAs_Click();
    bool Save_File(const std::string& path);
    // The printer dialog, then the print.
    void Print_Click();
    // The print itself, on a printer the dialog set up or a PDF.
    void Print_To(QPagedPaintDevice& device);

    // What the box holds now, CR LF lines, 8-bit characters.
    std::string Shown_Text() const;

private:
    void Show(const std::string& text);
    Summary_Tables_Layout Tables_Layout() const;

    App_Context& app_;
    Summary_Window_Hooks hooks_;
    QTextEdit* txt_SettingSummary_ = nullptr;
    QComboBox* Summary_Tables_combo_ = nullptr;
    bool showing_log_ = false;
};

} // namespace quorlen::ui
