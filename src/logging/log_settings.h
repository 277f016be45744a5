#pragma once
// The [log_settings] section: built from the controls of the setup form, brought up to date
// by the log window before a save, and read back into the controls.

#include "logging/log_context.h"

#include <string>

namespace quorlen {

// "3.4" when the file read last was of the oldest form, else "4.0" for the stand-alone
// dataset IDs and "3.5" below them.
std::string Log_File_Version_Text(const Log_State& log, int dataset_id);

// Update_Log_Settings of the setup form: the whole section again from the controls.
void Update_Log_Settings_Setup(Log_Context& ctx);
// Update_Log_Settings of the log window: only the keys the window owns, field by field.
void Update_Log_Settings_Form(Log_Context& ctx);
// The section into the controls and flags.
void Read_Log_Settings(Log_Context& ctx);

// Sensors, then settings, each way. The log window's update is the one a save and a start
// use, so that a file read and saved unchanged keeps every byte.
void Update_All_Log_Setting_Variables(Log_Context& ctx);
void Read_All_Log_Setting_Variables(Log_Context& ctx);

} // namespace quorlen
