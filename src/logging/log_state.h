#pragma once
// Everything a log is while it is on show or being recorded: the five section texts of the
// file, the signal and sensor tables, the car settings of the setup form, the texts of the
// log window, the numbers of every row, and the state of a running capture. Plain data: the
// log window binds to it, the command-line tool and the tests fill it without a screen.

#include "sensors/sensor_defs.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

namespace quorlen {

inline constexpr int Log_Signal_Count = 74; // signals 0..73; signal c-1 serves column c
inline constexpr int Log_Data_Columns = 75; // columns 0..74, column 0 the time
inline constexpr int Log_Row_Limit = 7000;  // rows 1..7000; row 0 holds the names
inline constexpr int Log_Split_Rows = 6900; // a live log goes on in a new file past this
inline constexpr int Log_Rows_Per_Second = 20;
inline constexpr int StandAlone_Dataset = 200; // dataset IDs from here use the second layout
inline constexpr int Old_Layout_Signals = 40;

inline constexpr const char* Log_Backup_File_Name = "tmp_backup_log_file.qxl";
inline constexpr const char* Default_Log_Settings_File_Name = "RZ400_800M3_Default_Log_Settings.qxl";

// Log_Data: one number per row and column; an empty cell is NaN. Row 0 holds the names.
// Rows are held from 0 up to the last one written, so a short log costs only its own rows.
class Log_Array {
public:
    Log_Array() = default;
    // Subscript out of range for a row past 7000 or a column past 74.
    double& operator()(int row, int column);
    double operator()(int row, int column) const;
    // The value as arithmetic takes it: an empty cell counts as 0.
    double Num(int row, int column) const;
    // The 75 cells of a row, for loops that walk many rows; a row's own, so walk row by row.
    const double* Row(int row) const;
    std::string& Name(int column);
    const std::string& Name(int column) const;
    void Clear();
    static bool Empty(double v) { return v != v; }

private:
    void Hold_Row(int row);
    std::vector<double> values_;
    std::array<std::string, Log_Data_Columns> names_;
};

// Where each signal stands in a row; -1 where the layout has no such column.
struct Log_Columns {
    std::int16_t Col_RPM = 1, Col_Ign = -1, Col_Fuel = -1;
    std::int16_t Col_AN1 = -1, Col_AN2 = -1, Col_AN3 = -1, Col_AN4 = -1;
    std::int16_t Col_AN1_Slave = -1, Col_AN2_Slave = -1, Col_AN3_Slave = -1, Col_AN4_Slave = -1;
    std::int16_t Col_RPM2 = -1, Col_Power = -1, Col_Torque = -1, Col_Speed = -1, Col_Accel = -1;
    std::int16_t Col_Fuel_DC = -1, Col_Fuel_DC2 = -1, Col_Delta = -1, Col_Consumption = -1, Col_Economy = -1;
    std::int16_t Col_AD1_Bin = -1, Col_AD2_Bin = -1, Col_AD3_Bin = -1;
    std::int16_t Col_Status1 = -1, Col_Status2 = -1, Col_Status3 = -1;
    int Signals = Old_Layout_Signals; // signals the layout shows
};

// Log_Signal_Tab: one row per signal.
struct Log_Signal {
    int sensor = -1; // row in Log_Sens_Tab, -1 for none
    std::string name;
    std::string unit;
};

// The controls of one signal on the setup form.
struct Signal_Controls {
    std::string label; // label_SignalName
    bool label_visible = true;
    std::string custom_name; // txt_CustomSignalName
    int combo_index = -1;    // Log_Sensor_combo
    int view = 0;            // Check_SignalsToView
    std::string view_caption;
    int secondary = 0;  // Secondary_Check
    int log_signal = 1; // LogSignal_Check: 0 clear, 1 set, 2 grey
};

// The six kept parameters of the signal smoothing.
struct Filter_Parameters {
    std::int16_t p1 = 0, p2 = 3000;
    double p3 = 100.0, p4 = 5.0, p5 = 0.7;
    std::int16_t p6 = -10;
};

// QX_Log_Setup: the car and the signals.
struct Log_Setup {
    std::array<std::string, 7> txt_Gearing{}; // 1..6
    int Gear_option = 1;                      // on the log window
    std::string txt_Speed, txt_RPM;
    int Speed_option = 0; // 0 km/h, 1 mph, 2 m/s
    std::string txt_Weight;
    int Weight_option = 0; // 0 kg, 1 lbs
    int Torque_option = 0; // 0 Nm, 1 ft-lbs
    std::string txt_Max_Hp, txt_Min_Hp;
    std::string txt_AirResistance, txt_FrontalArea, txt_AirDensity;
    std::string txt_Transloss_0k, txt_Transloss_6k;
    std::string txt_FuelInjectorSize;
    std::string txt_Default_Save_Name;
    int check_SettingsInLogg = 1;
    int check_AutoSave = 1;
    int check_LogToFileOnly = 0;
    std::string txt_Show_Log_Sek, txt_Show_Log_Interval;
    std::array<std::string, 5> txt_FIR{};
    Filter_Parameters filter;
    std::array<int, 6> Views_chk{};
    std::array<std::string, 4> Scale{}; // 1st Y min, max, 2nd Y min, max
    std::array<Signal_Controls, Log_Signal_Count> controls{};
};

// The texts and flags of the log window that the logic sets.
struct Log_Form {
    std::string Caption;
    std::string txt_Log_Date, txt_Log_time, txt_Log_Length = "0.0 s";
    std::string txt_Log_Free_Text;
    std::string txt_Log_Date_compare, txt_Log_time_compare, txt_Log_Length_compare, txt_Log_Free_Text_compare;
    bool txt_Log_Free_Text_compare_Visible = false;
    std::string cmd_Open_Com_Caption = "START";
    bool cmd_Open_Com_Enabled = true;
    bool cmd_Clear_Logg_Enabled = true;
    bool menus_Enabled = true;
    bool File_Info_Frame_Visible = true;
    bool txt_Logging_alert_Visible = false;
    bool txt_Logging_alert_Inverted = false; // the blink: fore and back colours swapped
    bool txt_NoConnection_alert_Visible = false;
    bool MSChart1_Visible = true;
    bool label_NoGraph_Visible = false;
    int Binary_log_opt = 0;         // 0 "Norm", 1 "Binary"
    std::string txt_File;           // the rows as text, for the live view
    std::string txt_LineTextWindow; // the values at the clicked row, or the hint
    std::string Engine_On_Text;     // "Engine on for ..." on the settings window
};

// The receive side of the port as the capture sees it: what arrived and is not yet taken,
// the most one read takes, and the threshold of the receive event.
struct Log_Port_Settings {
    int RThreshold = 130;
    int InputLen = 400;
};

// One running capture.
struct Capture_State {
    std::string Log_Stream_Buffer;
    int Log_Row_Count = 0;
    bool Log_Receive_Enabled = false;
    bool Logging_Running = false;
    bool Log_First_Data_Seen = false;
    bool Log_Data_Since_Tick = false;
    bool Log_Interrupted = false;
    bool Log_Data_While_Interrupted = false;
    bool Log_Delayed_Start = false;
    bool Log_Had_Interruption = false;
    bool Log_Receive_Busy = false;
    bool Log_Stopped_By_Overload = false;
    bool Binary = false;
    // A live view: the stream is shown and kept in memory, but no log file is saved, neither
    // at the stop nor when a long log runs over into a new part.
    bool Live_View = false;

    // The timers of the log window: the window runs them, tests tick them by hand.
    bool Timer1_Enabled = false;
    int Timer1_Interval = 200; // ms
    bool timer_LogAlert_Enabled = false;
    bool ShowCurser_Timer_Enabled = false;

    Log_Port_Settings port;
    std::string pending;         // read from the line, not yet taken by Input
    std::string Log_Row;         // the row being converted
    std::FILE* backup = nullptr; // file 99
    std::string backup_path;
};

// How Calculate_Data turns each column of a row into values, prepared from the sensor rows
// at the row-0 call so the rows themselves are plain arithmetic.
struct Signal_Plan {
    enum class Kind : std::uint8_t { None, Linear, Linear2c, Tab, Status1, Status2, Status3, Unknown };
    Kind kind = Kind::None;
    double gain = 0, offset = 0;
    std::array<double, Log_Sensor_Cells> cells{};
};

// The rows on show, from 1: of the log, and of the compared file lined up beside them.
struct Chart_Window {
    int Zoom_Start = 1, Zoom_Stop = 1;
    int Compare_Start = 1, Compare_Stop = 1;
    bool operator==(const Chart_Window&) const = default;
};

struct Log_State {
    // The five sections, each with its tag lines.
    std::string Log_Settings_Text, Log_Sens_Def_Text, Readable_Settings_Text, Log_Data_Text, Log_Dataset_Text;
    std::string Log_File_Text;

    std::array<Log_Signal, Log_Signal_Count> Log_Signal_Tab{};
    std::vector<Log_Sensor_Row> Log_Sens_Tab = std::vector<Log_Sensor_Row>(Log_Sensor_Rows);
    int Log_Sens_Count = 0;
    Log_Columns columns;
    Log_Setup setup;
    Log_Form form;
    std::string Log_Start_String = "La";

    Log_Array Log_Data;
    Log_Array Compare_Data;
    std::int16_t Log_Row_Columns = 0;
    int Last_Row = 0;
    Chart_Window window;
    int Compare_Last_Row = 0;
    bool Compare_Mode = false;
    std::string Compare_File_Name;
    // Goes up whenever the numbers of either array change, so a chart knows what it may keep.
    std::uint64_t Data_Version = 0;
    bool Reading_Compare = false; // the file being read is the second of compare mode

    bool Log_New_Format = true;
    bool Log_Wide_Row = true;
    bool Repaired = false;
    long Repaired_Bytes = 0;
    std::string Repair_Failure; // why a file that needed repair could not be written, or "".
    bool Controls_Ready = false;
    bool Unsaved = false;
    int Signals_Read = 0; // Log_Def lines of the last settings read

    std::string Log_File_Name; // the present name, no folder
    std::string Log_Dir;       // folder of logs, no closing "/"
    int Part_Counter = 0;      // parts of a split log so far

    Capture_State capture;
    std::array<Signal_Plan, Log_Signal_Count> plan{};
    bool plan_ready = false;
    // Numbers the calculation reads once at row 0.
    struct Car_Values {
        double Gearing = 0, Speed_Factor = 3.6, Mass = 0, Power_Max = 0, Power_Min = 0, Air_Constant = 0,
               Loss_0 = 0, Loss_6000 = 0;
    } car;
};

} // namespace quorlen
