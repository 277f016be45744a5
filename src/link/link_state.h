#pragma once
// What the program knows of the box and of the port between exchanges. The flags that say
// who owns the port are Link_Flags (core); this is the rest of the session.

#include "link/port_names.h"
#include "link/serial_line.h"

#include <string>

namespace quorlen {

struct Link_State {
    // The last banner.
    bool Connected = false;
    std::string Box_Info_Text;
    std::string Box_Version;
    long Box_Serial = 0;
    std::string Box_Dataset_ID;
    std::string Box_Status_Flags;
    std::string Box_Status_Value;
    bool Engine_Running = false;
    bool Slave_Present = false;
    bool Smartcard_Present = false;

    // The last exchange, for the diagnostics view.
    double Last_Exchange_Seconds = 0;
    std::string Last_Exchange_Failure; // "Answer timeout", or empty

    // Captions and states of the main window that follow the link.
    std::string Online_mnu_Caption = "System not connected";
    bool Online_mnu_Visible = true;
    std::string Engine_OnOff_mnu_Caption = "Engine off";
    bool Engine_OnOff_mnu_Visible = false;
    bool Live_Adjust_Option0_Visible = true; // first choice of the live cell adjustment
    bool Com_Open_Enabled = true;
    bool Com_Close_Enabled = false;
    bool Com_Quiet = false;           // Com_Open_Click and Com_Close_Click leave rs232_text alone
    bool Info_Message_Silent = false; // a card operation wants no "Connected box info" box

    // The port numbers of this run.
    Port_Names Ports;
    // The failure of the last connection check, so a port that stays missing is logged once.
    std::string Last_Check_Failure;
    // Why the last open of the port failed (None when it opened).
    Open_Failure Last_Open_Failure = Open_Failure::None;
};

} // namespace quorlen
