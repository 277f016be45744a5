#pragma once
// The box interpolates along an axis by shifting, so every non-zero axis step must be a power
// of two; a settings file or card may hold others. Each table update mends what is out of
// rule in the image itself and tells the user once per axis. The signal selections of the
// outputs are checked the same way, quietly, into the diagnostics log.

#include "core/debug_log.h"
#include "core/user_dialogs.h"
#include "image/settings_image.h"

#include <cstdint>
#include <string_view>

namespace quorlen {

enum class Repair_Axis { Fuel_Rpm, Fuel_Load, Ign_Rpm, Ign_Load, Pwm2_Fuel };

// The information text of each axis, as the user has always read it.
std::string_view Axis_Repair_Message(Repair_Axis axis);

// A step rounded down to a power of two (3 to 2, 255 to 128); 0 and powers of two stay.
std::uint8_t Power_Of_Two_Step(std::uint8_t b);

// Reads the steps of one axis in order: each is mended in the image (and marked changed)
// when it is out of rule, and the running sums, saturating at 255, go to `sums` (count
// entries). The first step of a main map's axis is an offset and may hold any value. At the
// end one message for the axis when anything was mended. Returns whether it was.
bool Read_Axis_Steps(Settings_Image& image, Repair_Axis axis, int first_step, int count, int* sums,
                     User_Dialogs& dialogs);

// The four PWM signal selections (bytes 186, 187: PWM1 low nibble, PWM2 high, PWM3 low, PWM4
// high) and the function and sensor nibbles of the four digital outputs (230, 235, 240,
// 245): a nibble of 9 or more is cleared, the other nibble kept, with "Error in PWM1 signal
// selection setting" and the like in the log. The checked values go to the arrays.
void Check_Output_Selections(Settings_Image& image, Debug_Log& log, int (&pwm_selection)[4],
                             int (&digital_function)[4], int (&digital_sensor)[4]);

// The fixed count bytes of the PWM2 extra fuel block: one column, five rows.
void Fix_Pwm_Fuel_Block(Settings_Image& image);

} // namespace quorlen
