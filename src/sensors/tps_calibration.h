#pragma once
// Measuring the throttle sensor: a log is started, the user releases the pedal, the raw
// reading of the throttle input is taken, the user presses the pedal to the floor, it is taken
// again, and the two readings become a linear 0-100 % sensor. The steps are paced by the
// messages the user confirms; a timer drives the ticks, and tests drive them by hand.

#include "core/user_dialogs.h"
#include "sensors/sensor_editor.h"

#include <functional>
#include <optional>

namespace quorlen {

inline constexpr int TPS_Timer_Interval = 500; // ms
inline constexpr const char* User_Throttle_Name = "UserDef_Throttle";
inline constexpr const char* TPS_No_Log_Text = "Could not start logging. Please check connection!";
inline constexpr const char* TPS_Release_Text = "Release Throttle totally";
inline constexpr const char* TPS_Identical_Text =
    "The high and low level of the TPS are identical, so the calibration is aborted.\r\nPlease retry";

struct TPS_Calibration {
    // 0 idle, 1 waiting for released throttle, 2 taking the released reading, 3 taking the
    // full reading.
    int TPS_Calib_State = 0;
    int TPS_Min_Raw = 0;
    int TPS_Max_Raw = 0;
    bool TPS_Timer_Enabled = false;
    // A tick is inside a message box; a tick that comes meanwhile does nothing.
    bool Tick_Busy = false;
};

struct TPS_Hooks {
    // Starts a log (Start_Logging) and tells whether one runs.
    std::function<void()> Start_Logging;
    std::function<bool()> Logging_Running;
    // The raw reading of the throttle input in the newest row of the running log; nullopt
    // before the first row has come.
    std::function<std::optional<int>()> Live_Raw;
    // The sensor is saved (cmd_SaveSensor) and becomes input 2's (AN_Combo(2)).
    std::function<int()> Save_Sensor;
    std::function<void(int sensor)> Select_Input_2;
    // The load steps of the maps whose load is the throttle follow the new range.
    std::function<void(int min_raw, int max_raw)> Throttle_Load_Steps;
};

// Calibrate_TPS_sens: starts a log unless one runs; when none runs after that, nothing else.
void Calibrate_TPS_sens_Click(TPS_Calibration& c, const TPS_Hooks& hooks);
// One tick of TPS_Timer.
void TPS_Timer_Timer(TPS_Calibration& c, Sensor_Editor& e, User_Dialogs& dialogs, const TPS_Hooks& hooks);

} // namespace quorlen
