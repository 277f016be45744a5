#pragma once
// Program-wide state, grouped by concern. The main controller owns one of each and hands
// them by reference to whatever needs them; nothing here is global, so a test builds fresh
// ones.

#include <cstdint>
#include <string>

namespace quorlen {

// Identity and run state of the program.
struct Program_State {
    int Brand_Variant = 0;
    int Product_Variant = 2;
    std::string Program_Title; // text in front of the file name in the main title
    std::string Product_Title; // for the about box and the splash form
    std::string Company_Line;  // "by " + this in the about box
    std::string Ini_File_Name;
    std::string Log_Settings_File_Name;
    std::string Manual_Link;
    std::string Web_Link;
    std::string Help_wwwlink_Caption;
    std::string Comm_Tab0_Caption;
    std::string Comm_Tab1_Caption;

    std::string App_Path;        // always ends with exactly one "/"
    std::string Program_Version; // major.minor.revision
    std::string Settings_File_Name = "New1.qxs";

    std::int32_t ComSpeed = 115200;
    int Com_Port = 1;
    bool Starting_Up = false;
    bool Closing = false;
    int Autoguide = 0;
    bool Autostart_Pending = false;
    std::string Language; // "ENG", "SWE" or unset
    int ManualUSBDetect = 0;
};

// Texts the main window shows, kept here so the command-line tool can print the same words.
struct Form_Texts {
    std::string Title;
    std::string rs232_text;
    std::string Debug_txt;
    std::string Error_Codes_txt;
    std::string txt_File_Description;
};

// Where the settings on show came from and where File, Save goes.
struct File_State {
    std::string CurrentFileName; // file title, no folder
    std::string CurrentDataDir;  // folder with its closing "/"
    bool OpenDefaultNow = false;
};

// Who owns the serial port. Only one thing may at a time; every timer and command looks here
// first. The link layer fills in the rest of the session.
struct Link_Flags {
    bool Link_Busy = false;
    bool Connection_Check_Busy = false;
    bool Connect_Info_Busy = false;
    bool Write_In_Progress = false;
    bool Logging_Active = false;
    bool HS_Logging_Active = false; // the high-speed capture streams on the port
    bool Live_Write_Busy = false;
};

} // namespace quorlen
