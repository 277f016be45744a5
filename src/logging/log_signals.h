#pragma once
// Which column of a row is which signal, the log sensors that turn raw columns into values,
// and the default settings a new log starts from.

#include "core/debug_log.h"
#include "image/settings_image.h"
#include "logging/log_context.h"
#include "logging/log_state.h"

#include <span>
#include <string>
#include <string_view>

namespace quorlen {

// The forty labels of the boost-controller layout (dataset ID below 200).
std::span<const char* const> Old_Layout_Labels();

// The column positions and labels of the two layouts. The stand-alone layout takes its
// labels from the default log settings file; until that is read they are "n:".
void Load_Default_Signal_Names(Log_State& log);
void Load_StandAlone_Default_Signal_Names(Log_State& log);

// The built-in log sensors as Log_Sens_Def lines between "[log_sensor_def]" and
// "[end log_sensor_def]", read into the sensor table.
void Load_Default_Log_Sens_Def(Log_State& log);
// The built-in settings of a new log and of the setup form.
void Load_Default_Log_Settings(Log_State& log);
// The controls follow the defaults: the settings text is built from them.
void Init_Default_Log_Settings_Controls(Log_Context& ctx);
// All of the above for the dataset ID of the preferences.
void Load_All_Default_Log_Settings(Log_Context& ctx);

// Log_Sens_Def lines of the sensor text into the table; Log_Sens_Count follows.
void Read_Log_Sens_Def(Log_State& log);
// The table into the sensor text, "[log_sens_def]" ... "[end log_sens_def]".
void Update_Log_Sens_Def(Log_State& log);
// Names and units of the signals from their sensors, the fixed units of the calculated
// signals, and the captions "name [unit]" of the chart's check boxes.
void Update_Log_Sens_Tab(Log_State& log);
// CardByte 0..1023 into the dataset section, one decimal a line.
void Update_Log_Dataset(Log_State& log, const Settings_Image& image);

// Gear 1's speed per 1000 rpm from a known speed at a known rpm: 135 at 3647 gives "37.02".
void cmd_Calc_Gearing_Click(Log_Setup& setup);

// Numbers out of the saved dataset section of the log, not the live image: the boost sensor
// of an old 256-byte image (9 when the section has another size), and the ignition and
// master/slave modes of a 1024-byte one (9 when it has another size).
int Get_Boost_sensor(const Log_State& log, Debug_Log& debug);
int Get_Ignition_mode(const Log_State& log, Debug_Log& debug);
int Get_MasterSlave_mode(const Log_State& log, Debug_Log& debug);

// The unit texts of the options.
const char* Speed_Unit_Text(int option);
const char* Weight_Unit_Text(int option);
const char* Torque_Unit_Text(int option);

// A text row carries the RPM in thousands, a binary one in rpm: with "RPM" and "RPM_bin"
// among the sensors, the RPM signal follows the mode chosen on the log window.
void Rpm_Sensor_For_Mode(Log_State& log);

// The column of Log_Data that holds input 1..12 in the log's layout, or -1 where the layout
// has none (the boost-controller layout logs the first four inputs only). The slave box's
// inputs: its first four, where the layout logs them.
int Input_Column(const Log_Columns& columns, int input);
int Slave_Input_Column(const Log_Columns& columns, int input);

// The sensor of signal i as the combo shows it: its place, or -1.
int Sensor_Place(const Log_State& log, int signal);
// The name a signal is shown by: the custom name, else its sensor's, else its label.
std::string Shown_Signal_Name(const Log_State& log, int signal);

} // namespace quorlen
