#pragma once
// The user gives an analogue input another sensor. The choice is stored in the configuration
// and the image; parameters that hold a physical value measured on that input (temperatures
// on the coolant input) are recoded under the new sensor so that they keep their degrees.

#include "core/user_dialogs.h"
#include "sensors/sensor_defs.h"
#include "tables/undo_list.h"

#include <string>
#include <vector>

namespace quorlen {

inline constexpr int Coolant_Input = 4;

struct Analog_Choice_Context {
    Sensor_State& sensors;
    Settings_Image& image;
    Ini_File& ini;
    Form_Texts& texts;
    Debug_Log& log;
    User_Dialogs& dialogs;
    Undo_List& undo;
};

// The image addresses whose byte is a physical value measured on `input`: on the coolant
// input the temperature settings, the lambda table's load points when its load is that input,
// and the thresholds of each digital output that watches it. None on the other inputs.
std::vector<int> Physical_Addresses(const Settings_Image& image, int input);
// "Check PWM1 map. Map is changed" for each PWM map whose axis runs on `input` (coolant only).
std::vector<std::string> Physical_Map_Messages(const Settings_Image& image, int input);

// CardValue of those addresses as the sensor of the input reads their bytes now.
void Remember_Physical_Values(Analog_Choice_Context& ctx, int input);
// Their bytes again from CardValue through the input's sensor, and the messages.
void Keep_Physical_sensorvalue(Analog_Choice_Context& ctx, int input);

// AN_Combo_Click with what belongs around it: an undo snapshot first, the physical values
// kept across the change. `hooks` refresh the views afterwards.
void Sensor_Choice_Click(Analog_Choice_Context& ctx, int input, int list_index, Analog_Hooks hooks);

} // namespace quorlen
