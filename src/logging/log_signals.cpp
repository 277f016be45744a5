#include "logging/log_signals.h"

#include "core/proc_guard.h"
#include "core/text.h"
#include "image/scaling.h"
#include "logging/log_settings.h"
#include "logging/log_text.h"

#include <cmath>

namespace quorlen {

namespace {

constexpr const char* Old_Labels[Old_Layout_Signals] = {
    "RPM",          "AN1 In",       "AN2 In",        "AN3 In",         "AN4 In",      "IGNITION",
    "IN Fuel",      "TOT Fuel",     "ADD FUEL",      "PWM In Time",    "AN1 Out",     "AN2 Out",
    "PWM Out",      "Time, 256sec", "Time, sec",     "Time, hundreds", "AN1 (slave)", "AN2 (slave)",
    "AN3 (slave)",  "AN4 (slave)",  "RPM Smoothing", "POWER",          "TORQUE",      "SPEED",
    "ACCELERATION", "IN Fuel DC",   "TOT Fuel DC",   "Option",         "Option",      "Option",
    "AD1_BIN",      "AD2_BIN",      "AD3_BIN",       "Option",         "Option",      "Option",
    "Option",       "Option",       "Option",        "Option"};

// The built-in log sensors in their order: name, type, gain, offset, minimum, maximum, unit,
// decimals, input unit.
constexpr const char* Default_Linear_Sensors[][9] = {
    {"RPM", "Linear", "1000", "0", "0", "10", "rpm", "0", "trpm"},
    {"Ignition", "Linear", "0.2", "-25.4", "0", "255", "Deg", "1", "bin"},
    {"Fuel", "Linear", "0.204", "0", "0", "255", "ms", "1", "bin"},
    {"Analog_0-5V", "Linear", "0.01953125", "0", "0", "255", "V", "2", "bin"},
    {"Analog_0-100%", "Linear", "0.390625", "0", "0", "255", "%", "0", "bin"},
    {"AD_0-255", "Linear", "1", "0", "0", "255", "AD", "0", "bin"},
    {"Pos_0-32", "Linear", "0.125", "0", "0", "255", "Pos", "0", "bin"},
    {"Power", "Linear", "1", "0", "0", "255", "AD", "0", "bin"},
    {"Torque", "Linear", "1", "0", "0", "255", "AD", "0", "bin"},
    {"Speed_kmph", "Linear", "1", "0", "0", "255", "AD", "0", "bin"},
    {"Speed_mph", "Linear", "1.652", "0", "0", "255", "AD", "0", "bin"},
    {"Accel", "Linear", "1", "0", "0", "255", "AD", "0", "bin"},
    {"MPX 2.5bar", "Linear", "0.0098039", "0.09", "0", "255", "bar", "2", "bin"},
    {"50%_Fuel_Calibration", "Linear", "0.408", "0", "0", "255", "2xms", "1", "bin"},
};

struct Table_Sensor {
    const char* name;
    const char* unit;
    const char* decimals;
    const char* input;
    std::array<double, Sensor_Points> points;
};

std::array<double, Sensor_Points> Points(std::initializer_list<double> head, double rest) {
    std::array<double, Sensor_Points> p{};
    p.fill(rest);
    std::size_t i = 0;
    for (double v : head)
        p[i++] = v;
    return p;
}

const Table_Sensor* Default_Table_Sensors() {
    static const Table_Sensor sensors[] = {
        {"MPX_Tab", "bar", "2", "bin",
         Points({0,    0,    0.24, 0.32, 0.4,  0.48, 0.55, 0.63, 0.71, 0.79, 0.87,
                 0.94, 1.02, 1.1,  1.18, 1.26, 1.34, 1.41, 1.49, 1.57, 1.65, 1.73,
                 1.8,  1.88, 1.96, 2.04, 2.12, 2.19, 2.27, 2.35, 2.43, 2.5,  2.5},
                2.5)},
        {"Smart_throttle", "%", "1", "AD", Points({0, 0, 0, 0, 7.3, 21.8, 36.4, 50.9, 65.5, 80, 94.5}, 100)},
        {"WB_Lambda", "lambda", "2", "AD",
         Points({0.68, 0.68, 0.68, 0.68, 0.68, 0.68, 0.68, 0.68, 0.68, 0.68, 0.72, 0.758, 0.79, 0.83, 0.88,
                 0.935, 1, 1.128, 1.273},
                1.4)},
    };
    return sensors;
}

std::int16_t Column_Or_None(int column) {
    return static_cast<std::int16_t>(column);
}

void Reset_Signals(Log_State& log, int count) {
    log.columns.Signals = count;
    for (int i = 0; i < Log_Signal_Count; ++i) {
        auto& s = log.setup.controls[static_cast<std::size_t>(i)];
        s.label_visible = i < count;
    }
}

// The sensors a fresh log starts with, by place in the built-in list.
void Default_Sensor_Choice(Log_State& log, std::initializer_list<std::pair<int, int>> choice) {
    for (auto& s : log.Log_Signal_Tab)
        s.sensor = -1;
    for (auto& c : log.setup.controls)
        c.combo_index = -1;
    for (auto [signal, sensor] : choice) {
        log.Log_Signal_Tab[static_cast<std::size_t>(signal)].sensor = sensor;
        log.setup.controls[static_cast<std::size_t>(signal)].combo_index = sensor;
    }
}

// The dataset section as lines: start of the first number and count of LF up to the end tag.
struct Dataset_Lines {
    std::size_t first = 0;
    long lines = -1; // -1: no section
};

Dataset_Lines Dataset_Section(const std::string& text) {
    Dataset_Lines d;
    std::size_t tag = text.find("[log_dataset]");
    if (tag == std::string::npos) return d;
    std::size_t lf = text.find('\n', tag);
    std::size_t end = text.find("[end log_dataset]", tag);
    if (lf == std::string::npos || end == std::string::npos) return d;
    d.first = lf + 1;
    d.lines = Count_Char(text, '\n', d.first, end);
    return d;
}

int Dataset_Line_Value(const std::string& text, std::size_t first, int line) {
    std::size_t at = first;
    for (int i = 0; i < line && at != std::string::npos; ++i) {
        at = text.find('\n', at);
        if (at != std::string::npos) ++at;
    }
    if (at == std::string::npos) return 0;
    return static_cast<int>(Val(std::string_view(text).substr(at, 8)));
}

// The byte of the image that holds the ignition output mode (bits 0, 1) and the box's
// master or slave role (bits 2, 3).
constexpr int Mode_Byte_Line = 1;

} // namespace

std::span<const char* const> Old_Layout_Labels() {
    return Old_Labels;
}

void Load_Default_Signal_Names(Log_State& log) {
    Log_Columns& c = log.columns;
    c = Log_Columns{};
    c.Col_RPM = 1, c.Col_Ign = 6, c.Col_Fuel = 8;
    c.Col_AN1 = 2, c.Col_AN2 = 3, c.Col_AN3 = 4, c.Col_AN4 = 5;
    c.Col_AN1_Slave = 17, c.Col_AN2_Slave = 18, c.Col_AN3_Slave = 19, c.Col_AN4_Slave = 20;
    c.Col_RPM2 = 21, c.Col_Power = 22, c.Col_Torque = 23, c.Col_Speed = 24, c.Col_Accel = 25;
    c.Col_Fuel_DC = 26, c.Col_Fuel_DC2 = 27, c.Col_Consumption = 36;
    c.Col_AD1_Bin = 31, c.Col_AD2_Bin = 32, c.Col_AD3_Bin = 33;
    Reset_Signals(log, Old_Layout_Signals);
    for (int i = 0; i < Log_Signal_Count; ++i)
        log.setup.controls[static_cast<std::size_t>(i)].label =
            i < Old_Layout_Signals ? Old_Labels[i] : std::to_string(i) + ":";
    Default_Sensor_Choice(log, {{0, 0},  {1, 3},  {2, 3},  {3, 3},  {4, 3},  {5, 1},  {6, 2},
                                {7, 2},  {8, 2},  {10, 3}, {11, 3}, {12, 4}, {16, 3}, {17, 3},
                                {18, 3}, {19, 3}, {21, 7}, {22, 8}, {23, 9}, {24, 11}});
}

void Load_StandAlone_Default_Signal_Names(Log_State& log) {
    Log_Columns& c = log.columns;
    c = Log_Columns{};
    c.Col_RPM = 1, c.Col_Ign = 2, c.Col_Fuel = 4;
    c.Col_AN1 = 12, c.Col_AN2 = 13, c.Col_AN3 = 14, c.Col_AN4 = 15;
    c.Col_AN1_Slave = 25, c.Col_AN2_Slave = 26, c.Col_AN3_Slave = 27, c.Col_AN4_Slave = 28;
    c.Col_RPM2 = 40, c.Col_Power = 41, c.Col_Torque = 42, c.Col_Speed = 43, c.Col_Accel = 44;
    c.Col_Fuel_DC = Column_Or_None(-1), c.Col_Fuel_DC2 = 45;
    c.Col_Delta = 46, c.Col_Consumption = 46, c.Col_Economy = 47;
    c.Col_AD1_Bin = 48, c.Col_AD2_Bin = 49, c.Col_AD3_Bin = 50;
    c.Col_Status1 = 51, c.Col_Status2 = 59, c.Col_Status3 = 67;
    Reset_Signals(log, Log_Signal_Count);
    for (int i = 0; i < Log_Signal_Count; ++i)
        log.setup.controls[static_cast<std::size_t>(i)].label = std::to_string(i) + ":";
    Default_Sensor_Choice(log, {{0, 0}, {1, 1}, {3, 2}, {11, 3}, {12, 3}, {13, 3}, {14, 3}});
}

void Load_Default_Log_Sens_Def(Log_State& log) {
    std::string text = "[log_sensor_def]\r\n";
    for (const auto& s : Default_Linear_Sensors) {
        text += "Log_Sens_Def=";
        for (const char* field : s)
            text += std::string(field) + "\t";
        text += "\r\n";
    }
    const Table_Sensor* tables = Default_Table_Sensors();
    for (int t = 0; t < 3; ++t) {
        text += "Log_Sens_Def=" + std::string(tables[t].name) + "\tTab\t";
        for (double p : tables[t].points)
            text += Number_Text(p) + "\t";
        text += std::string(tables[t].unit) + "\t" + tables[t].decimals + "\t" + tables[t].input + "\t\r\n";
    }
    text += "[end log_sensor_def]";
    log.Log_Sens_Def_Text = text;
    Read_Log_Sens_Def(log);
}

void Load_Default_Log_Settings(Log_State& log) {
    Log_Setup& s = log.setup;
    log.Log_Start_String = "La";
    s.filter = Filter_Parameters{};
    s.txt_Weight = "1000";
    s.txt_Max_Hp = "500";
    s.txt_Min_Hp = "20";
    s.txt_AirResistance = "0";
    s.txt_FrontalArea = "2";
    s.txt_AirDensity = "1.225";
    s.txt_Transloss_0k = "0";
    s.txt_Transloss_6k = "0";
    s.txt_FuelInjectorSize = "0";
    s.txt_Speed = "135";
    s.txt_RPM = "3647";
    for (int g = 1; g <= 6; ++g)
        s.txt_Gearing[static_cast<std::size_t>(g)] = std::to_string(g);
    s.Gear_option = 1;
    s.Speed_option = 0;
    s.Weight_option = 0;
    s.Torque_option = 0;
    s.check_SettingsInLogg = 1;
    s.check_AutoSave = 1;
    s.check_LogToFileOnly = 0;
    s.txt_Default_Save_Name = "QXLog-";
    s.txt_Show_Log_Sek = "20";
    s.txt_Show_Log_Interval = "0,2";
    s.txt_FIR = {"0", "0", "", "", ""};
    s.Views_chk = {};
    s.Scale = {"Auto", "Auto", "Auto", "Auto"};
    for (int i = 0; i < Log_Signal_Count; ++i) {
        auto& sig = s.controls[static_cast<std::size_t>(i)];
        sig.label_visible = true;
        sig.custom_name = sig.label;
        sig.view = i == 0 ? 1 : 0;
        sig.secondary = 0;
        sig.log_signal = 1;
    }
    log.form.txt_Log_Free_Text = "Enter you comments here";
    log.form.txt_Log_Length = "0.0 s";
}

void Init_Default_Log_Settings_Controls(Log_Context& ctx) {
    Update_Log_Sens_Tab(ctx.log);
    Update_Log_Settings_Setup(ctx);
    if (ctx.hooks.Signals_Changed) ctx.hooks.Signals_Changed();
}

void Load_All_Default_Log_Settings(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "Load all default log settings");
    guard.Step([&] {
        if (ctx.DatasetID() < StandAlone_Dataset)
            Load_Default_Signal_Names(ctx.log);
        else
            Load_StandAlone_Default_Signal_Names(ctx.log);
    });
    guard.Step([&] { Load_Default_Log_Sens_Def(ctx.log); });
    guard.Step([&] { Load_Default_Log_Settings(ctx.log); });
    guard.Step([&] { Init_Default_Log_Settings_Controls(ctx); });
}

void Read_Log_Sens_Def(Log_State& log) {
    int n = 1;
    std::string line, name;
    for (;; ++n) {
        if (n > Log_Sensor_Rows) break;
        get_log_file_setting(log.Log_Sens_Def_Text, "Log_Sens_Def", line, name, n, 1);
        if (name.empty()) break;
        log.Log_Sens_Tab[static_cast<std::size_t>(n - 1)] = Parse_Log_Sens_Def(line);
    }
    log.Log_Sens_Count = n - 1;
    for (int i = log.Log_Sens_Count; i < Log_Sensor_Rows; ++i)
        log.Log_Sens_Tab[static_cast<std::size_t>(i)] = Log_Sensor_Row{};
}

void Update_Log_Sens_Def(Log_State& log) {
    std::string text = "[log_sens_def]\r\n";
    for (int r = 0; r < log.Log_Sens_Count; ++r) {
        const Log_Sensor_Row& row = log.Log_Sens_Tab[static_cast<std::size_t>(r)];
        const int last = row[1] == "Tab" ? 36 : 7;
        text += "Log_Sens_Def=" + row[0] + "\t" + row[1] + "\t";
        for (int c = 2; c <= last; ++c)
            text += Commas_To_Points(row[static_cast<std::size_t>(c)]) + "\t";
        text += "\r\n";
    }
    log.Log_Sens_Def_Text = text + "[end log_sens_def]";
}

void Update_Log_Sens_Tab(Log_State& log) {
    for (int i = 0; i < Log_Signal_Count; ++i) {
        Log_Signal& sig = log.Log_Signal_Tab[static_cast<std::size_t>(i)];
        // A signal without a sensor keeps nothing of the one it had.
        if (sig.sensor < 0 || sig.sensor >= Log_Sensor_Rows) {
            sig.name.clear();
            sig.unit.clear();
            continue;
        }
        const Log_Sensor_Row& row = log.Log_Sens_Tab[static_cast<std::size_t>(sig.sensor)];
        sig.name = row[0];
        sig.unit = row[1] == "Tab" ? row[35] : row[6];
    }
    auto fixed = [&](int column, const std::string& unit) {
        if (column >= 1 && column <= Log_Signal_Count)
            log.Log_Signal_Tab[static_cast<std::size_t>(column - 1)].unit = unit;
    };
    const Log_Columns& c = log.columns;
    fixed(c.Col_Power, "hp");
    fixed(c.Col_Torque, Torque_Unit_Text(log.setup.Torque_option));
    fixed(c.Col_Speed, Speed_Unit_Text(log.setup.Speed_option));
    fixed(c.Col_Accel, "m/s^2");
    for (int i = 0; i < Log_Signal_Count; ++i) {
        auto& sig = log.setup.controls[static_cast<std::size_t>(i)];
        sig.view_caption =
            sig.custom_name + " [" + log.Log_Signal_Tab[static_cast<std::size_t>(i)].unit + "]";
    }
}

void Update_Log_Dataset(Log_State& log, const Settings_Image& image) {
    std::string text = "[log_dataset]\r\n";
    text.reserve(16 + 1024 * 5 + 20);
    for (int a = 0; a < Image_Size; ++a)
        text += std::to_string(image.CardByte[static_cast<std::size_t>(a)]) + "\r\n";
    log.Log_Dataset_Text = text + "[end log_dataset]";
}

void cmd_Calc_Gearing_Click(Log_Setup& setup) {
    const double speed = std::trunc(Text_Value(setup.txt_Speed));
    const double rpm = std::trunc(Text_Value(setup.txt_RPM));
    if (rpm == 0) return;
    setup.txt_Gearing[1] = Number_Text(Round_Even(1000 * speed / rpm, 2));
}

int Get_Boost_sensor(const Log_State& log, Debug_Log& debug) {
    const Dataset_Lines d = Dataset_Section(log.Log_Dataset_Text);
    if (d.lines > 256) debug.Write_Line("Error");
    if (d.lines != 256) return 9;
    return Dataset_Line_Value(log.Log_Dataset_Text, d.first, 5) & 3;
}

int Get_Ignition_mode(const Log_State& log, Debug_Log& debug) {
    const Dataset_Lines d = Dataset_Section(log.Log_Dataset_Text);
    if (d.lines > Image_Size) debug.Write_Line("Error. Too many databytes");
    if (d.lines != Image_Size) return 9;
    return Dataset_Line_Value(log.Log_Dataset_Text, d.first, Mode_Byte_Line) & 3;
}

int Get_MasterSlave_mode(const Log_State& log, Debug_Log& debug) {
    const Dataset_Lines d = Dataset_Section(log.Log_Dataset_Text);
    if (d.lines > Image_Size) debug.Write_Line("Error");
    if (d.lines != Image_Size) return 9;
    return (Dataset_Line_Value(log.Log_Dataset_Text, d.first, Mode_Byte_Line) >> 2) & 3;
}

const char* Speed_Unit_Text(int option) {
    return option == 1 ? "mph" : option == 2 ? "m/s" : "km/h";
}

const char* Weight_Unit_Text(int option) {
    return option == 1 ? "lbs" : "kg";
}

const char* Torque_Unit_Text(int option) {
    return option == 1 ? "ft-lbs" : "Nm";
}

void Rpm_Sensor_For_Mode(Log_State& log) {
    auto find = [&](const std::string& name) {
        for (int s = 0; s < log.Log_Sens_Count; ++s)
            if (log.Log_Sens_Tab[static_cast<std::size_t>(s)][0] == name) return s;
        return -1;
    };
    const int text = find("RPM"), binary = find("RPM_bin");
    const int now = log.Log_Signal_Tab[0].sensor;
    if (text < 0 || binary < 0 || (now != text && now != binary)) return;
    const int wanted = log.form.Binary_log_opt == 1 ? binary : text;
    if (wanted == now) return;
    log.Log_Signal_Tab[0].sensor = wanted;
    log.setup.controls[0].combo_index = wanted;
    set_log_file_setting(log.Log_Settings_Text, "Log_Def", std::to_string(wanted), 1, 2);
    set_log_file_setting(log.Log_Settings_Text, "Log_Def",
                         log.Log_Sens_Tab[static_cast<std::size_t>(wanted)][0], 1, 3);
    set_log_file_setting(log.Log_Settings_Text, "Log_Def", wanted != 0 ? "1" : "0", 1, 7);
    Update_Log_Sens_Tab(log);
    log.plan_ready = false;
}

int Sensor_Place(const Log_State& log, int signal) {
    return log.Log_Signal_Tab[static_cast<std::size_t>(signal)].sensor;
}

std::string Shown_Signal_Name(const Log_State& log, int signal) {
    const auto& c = log.setup.controls[static_cast<std::size_t>(signal)];
    if (!c.custom_name.empty()) return c.custom_name;
    const auto& s = log.Log_Signal_Tab[static_cast<std::size_t>(signal)];
    if (!s.name.empty()) return s.name;
    return c.label;
}

int Input_Column(const Log_Columns& c, int input) {
    switch (input) {
    case 1:
        return c.Col_AN1;
    case 2:
        return c.Col_AN2;
    case 3:
        return c.Col_AN3;
    case 4:
        return c.Col_AN4;
    default:
        break;
    }
    // The stand-alone layout (the one with status bytes) logs all twelve inputs in order.
    if (input >= 5 && input <= Analog_Inputs && c.Col_Status1 >= 0 && c.Col_AN1 >= 1)
        return c.Col_AN1 + input - 1;
    return -1;
}

int Slave_Input_Column(const Log_Columns& c, int input) {
    const int first = c.Col_AN1_Slave;
    return input >= 1 && input <= 4 && first >= 1 ? first + input - 1 : -1;
}

} // namespace quorlen
