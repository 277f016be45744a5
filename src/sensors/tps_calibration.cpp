#include "sensors/tps_calibration.h"

#include "core/proc_guard.h"

namespace quorlen {

namespace {

void Stop(TPS_Calibration& c) {
    c.TPS_Timer_Enabled = false;
    c.TPS_Calib_State = 0;
}

bool Running(const TPS_Hooks& hooks) {
    return hooks.Logging_Running && hooks.Logging_Running();
}

std::optional<int> Live(const TPS_Hooks& hooks) {
    return hooks.Live_Raw ? hooks.Live_Raw() : std::nullopt;
}

void Save_And_Apply(TPS_Calibration& c, Sensor_Editor& e, const TPS_Hooks& hooks) {
    cmd_EditSensor(e);
    e.txt_SensorName = User_Throttle_Name;
    e.txt_SensorDecimals = "0";
    e.txt_SensorUnit = "%";
    // Input 2 is to take the sensor, so it has to land among the tuning sensors whatever
    // the boxes were left at.
    e.chk_Tuning = true;
    Update_Grid(e);
    int s = hooks.Save_Sensor ? hooks.Save_Sensor() : -1;
    if (s < 0) return;
    if (hooks.Select_Input_2) hooks.Select_Input_2(s);
    if (hooks.Throttle_Load_Steps) hooks.Throttle_Load_Steps(c.TPS_Min_Raw, c.TPS_Max_Raw);
}

} // namespace

void Calibrate_TPS_sens_Click(TPS_Calibration& c, const TPS_Hooks& hooks) {
    if (c.TPS_Calib_State != 0) return;
    if (!Running(hooks) && hooks.Start_Logging) hooks.Start_Logging();
    if (!Running(hooks)) return;
    c.TPS_Timer_Enabled = true;
    c.TPS_Calib_State = 1;
}

void TPS_Timer_Timer(TPS_Calibration& c, Sensor_Editor& e, User_Dialogs& dialogs, const TPS_Hooks& hooks) {
    if (c.Tick_Busy || !c.TPS_Timer_Enabled) return;
    c.Tick_Busy = true;
    if (!Running(hooks)) {
        // The log never started, or stopped on the way: nothing measured is to be trusted.
        Stop(c);
        dialogs.Warn(TPS_No_Log_Text);
        c.Tick_Busy = false;
        return;
    }
    switch (c.TPS_Calib_State) {
    case 1:
        dialogs.Inform(TPS_Release_Text);
        c.TPS_Calib_State = 2;
        break;
    case 2: {
        // Until the first row of the log is in there is nothing to read; the next tick tries.
        auto raw = Live(hooks);
        if (!raw) break;
        c.TPS_Min_Raw = *raw;
        e.txt_Create_Sens[0] = Raw_To_Volts_Text(*raw);
        e.txt_Create_Sens[1] = "0";
        dialogs.Inform("Min TPS: " + e.txt_Create_Sens[0] + "V\r\nPress full throttle");
        c.TPS_Calib_State = 3;
        break;
    }
    case 3: {
        auto raw = Live(hooks);
        if (!raw) break;
        Stop(c);
        c.TPS_Max_Raw = *raw;
        e.txt_Create_Sens[2] = Raw_To_Volts_Text(*raw);
        e.txt_Create_Sens[3] = "100";
        if (e.txt_Create_Sens[0] == e.txt_Create_Sens[2]) {
            dialogs.Inform(TPS_Identical_Text);
            break;
        }
        Answer a = dialogs.Ask_Yes_No("Max TPS: " + e.txt_Create_Sens[2] +
                                      "V\r\nDo you want to save the new sensor definition");
        if (a == Answer::Yes) Save_And_Apply(c, e, hooks);
        break;
    }
    default:
        Stop(c);
        break;
    }
    c.Tick_Busy = false;
}

} // namespace quorlen
