#pragma once
// What the log code needs of the program around it. The log window hands in its hooks; the
// command-line tool and the tests hand in their own, or none.

#include "core/debug_log.h"
#include "core/program_state.h"
#include "core/user_dialogs.h"
#include "image/settings_image.h"
#include "logging/log_state.h"

#include <functional>
#include <string>

namespace quorlen {

class Serial_Line;

struct Log_Hooks {
    // Seconds on a steady clock, and the date and time texts a log is stamped with.
    std::function<double()> Now;
    std::function<std::string()> Date_Text; // "2024-05-31"
    std::function<std::string()> Time_Text; // "14:03:59"
    // Serves the event loop a moment (the GUI), or lets a little time pass.
    std::function<void()> Dummy_Wait;
    // The whole read of the box's settings into the image; the status text tells how it went.
    std::function<void()> Read_Box_Settings;
    // The readable settings summary of the image.
    std::function<std::string()> Settings_Summary;
    // Asks to save a changed log before it is replaced.
    std::function<void()> Check_If_Unsaved_File;
    std::function<void()> Update_Chart;
    std::function<void()> Show_Current_Data_Clear;
    // The read, write and connect controls of the main window, and its log button caption.
    std::function<void(bool enabled)> Main_Controls_Enabled;
    std::function<void(const std::string& caption)> Main_Log_Caption;
    // The main window's status caption ("ONLINE" while a log runs, "" after).
    std::function<void(const std::string& caption)> Main_Status;
    // "Engine on for ..." on the settings window.
    std::function<void(const std::string& text)> Show_Engine_On;
    // Index of ae_combo on the settings window: which signal the enrichment follows.
    std::function<int()> ae_combo_index;
    // The sensor lists, the signal controls and the layout changed.
    std::function<void()> Signals_Changed;
};

struct Log_Context {
    Log_State& log;
    Settings_Image& image;  // CardByte and the dataset ID of the preferences
    Program_State& program; // App_Path, Program_Title, ComSpeed
    Form_Texts& texts;      // rs232_text: how the box read went
    Link_Flags& flags;
    Debug_Log& debug;
    User_Dialogs& dialogs;
    Serial_Line* line = nullptr; // the log's port
    std::string port;            // its device path
    Log_Hooks hooks;

    double Now() const;
    std::string Date_Text() const;
    std::string Time_Text() const;
    void Dummy_Wait() const;
    int DatasetID() const { return image.DatasetID; }
};

} // namespace quorlen
