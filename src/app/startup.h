#pragma once
// The parts of start-up and of the preferences that are decisions rather than windows.

#include "app/app_context.h"
#include "core/proc_guard.h"

#include <string>

namespace quorlen {

// Init_ini_file: port, data folder, start folder, sensor table, presets, selected preset.
void Init_ini_file(App_Context& app);
// Its presets part: PresetList and the preset chosen last; from a reading of the ini of the
// caller's load, or from a reading of its own.
void Load_Presets(App_Context& app, Proc_Guard& guard);
void Load_Presets(App_Context& app, Proc_Guard& guard, const Ini_Snapshot& ini);

// Step 8: "SC_Reader" and "Serial" both select the serial option; that is how the key has
// always been read.
int Interface_Option_For(const std::string& Default_interface);
std::string Interface_Key_For(int option);

// Steps 9 and 10. The second selection of the Autoguide option is made on the Language text
// read as a number; "ENG" and "SWE" are not numbers, and the failed test falls through to
// the selection. The option only shows the choice: the question at start follows the
// Autoguide value itself.
void Read_Language_And_Autoguide(App_Context& app);

// Steps 25 to 27.
void Read_Link_And_Autostart(App_Context& app);

// Option handlers of the preferences. While Starting_Up they only record the choice (the
// load sets them from the file it just read); afterwards they write their key.
void interface_option_Click(App_Context& app, int option);
void Language_Click(App_Context& app, int index);
void Autoguide_Click(App_Context& app, int index);
void ComSpeed_option_Click(App_Context& app, int index);
void ManualUSBDetect_Check_Click(App_Context& app, bool ticked);
// The two auto-start options are a pair that may be both off but never both on; the pair is
// written every time, so a file with both on is mended at the next start.
void Auto_Start_option_Click(App_Context& app, int index, bool ticked);
// Apply of the preferences: the port of the chosen entry and the interface.
void Prefs_Apply(App_Context& app, int com_port);

// "Ver. 3.4.0 M3v3 "
std::string Version_Label_Text(const std::string& program_version);

} // namespace quorlen
