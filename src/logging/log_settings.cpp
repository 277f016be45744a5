#include "logging/log_settings.h"

#include "core/proc_guard.h"
#include "core/text.h"
#include "logging/log_signals.h"
#include "logging/log_text.h"

#include <algorithm>

namespace quorlen {

namespace {

constexpr const char* Too_Old_Text = "Too old box. Not supported by this software";

// "Key=" and every field followed by a TAB, and CR LF.
std::string Line(const std::string& key, std::initializer_list<std::string> fields) {
    std::string line = key + "=";
    for (const std::string& f : fields)
        line += f + "\t";
    return line + "\r\n";
}

std::string Flag(int value) {
    return value != 0 ? "1" : "0";
}

std::string Row_Text(int row) {
    return std::to_string(row);
}

std::string Description_Field(std::string text) {
    for (std::size_t p; (p = text.find("\r\n")) != std::string::npos;)
        text.replace(p, 2, " ");
    return text;
}

std::string Log_Def_Line(const Log_State& log, int i) {
    const Signal_Controls& c = log.setup.controls[static_cast<std::size_t>(i)];
    const int place = c.combo_index >= 0 ? c.combo_index : i;
    const std::string sensor_name = c.combo_index >= 0 && c.combo_index < Log_Sensor_Rows
                                        ? log.Log_Sens_Tab[static_cast<std::size_t>(c.combo_index)][0]
                                        : "";
    return Line("Log_Def" + std::to_string(i),
                {c.custom_name, std::to_string(place), sensor_name, Flag(c.view), Flag(c.secondary),
                 c.log_signal == 0 ? "0" : "1", place != 0 ? "1" : "0", c.label});
}

void Set_Version_Flags(Log_State& log, const std::string& version) {
    if (version == "3.5") {
        log.Log_New_Format = true;
        log.Log_Wide_Row = log.Log_Row_Columns >= 14;
    } else if (version == "4.0") {
        log.Log_New_Format = true;
        log.Log_Wide_Row = true;
    } else {
        log.Log_New_Format = false;
        log.Log_Wide_Row = false;
    }
}

} // namespace

std::string Log_File_Version_Text(const Log_State& log, int dataset_id) {
    if (!log.Log_New_Format) return "3.4";
    return dataset_id >= StandAlone_Dataset ? "4.0" : "3.5";
}

void Update_Log_Settings_Setup(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "Update Log Settings");
    guard.Step([&] {
        const Log_State& log = ctx.log;
        const Log_Setup& s = log.setup;
        const Log_Form& f = log.form;
        std::string text = "[log_settings]\r\n";
        text += Line("Log_File_Name", {log.Log_File_Name});
        text += Line("Log_Date", {f.txt_Log_Date});
        text += Line("Log_Time", {f.txt_Log_time});
        text += Line("Log_Length", {f.txt_Log_Length});
        text += "Log_Description=" + Description_Field(f.txt_Log_Free_Text) + ";\r\n";
        text += Line("Log_File_Version", {Log_File_Version_Text(log, ctx.DatasetID())});
        for (int i = 0; i < Log_Signal_Count; ++i)
            text += Log_Def_Line(log, i);
        text += Line("Log_Scale", {Commas_To_Points(s.Scale[0]), Commas_To_Points(s.Scale[1]),
                                   Commas_To_Points(s.Scale[2]), Commas_To_Points(s.Scale[3]), ""});
        text += Line("Log_Zoom", {Row_Text(log.window.Zoom_Start), Row_Text(log.window.Zoom_Stop)});
        std::string gearing = "Log_Gearing=";
        for (int g = 1; g <= 6; ++g)
            gearing += Commas_To_Points(s.txt_Gearing[static_cast<std::size_t>(g)]) + "\t";
        text += gearing + std::to_string(s.Gear_option) + "\t" + Commas_To_Points(s.txt_Speed) + "\t" +
                Commas_To_Points(s.txt_RPM) + "\t\r\n";
        text += Line("Log_Speed_Unit", {Speed_Unit_Text(s.Speed_option)});
        text += Line("Log_Weight_Unit", {Weight_Unit_Text(s.Weight_option)});
        text += Line("Log_Torque_Unit", {Torque_Unit_Text(s.Torque_option)});
        text += Line("Log_Hp", {Commas_To_Points(s.txt_Weight), Commas_To_Points(s.txt_Min_Hp),
                                Commas_To_Points(s.txt_Max_Hp), "", Commas_To_Points(s.txt_AirResistance),
                                Commas_To_Points(s.txt_FrontalArea), Commas_To_Points(s.txt_AirDensity),
                                Commas_To_Points(s.txt_Transloss_0k), Commas_To_Points(s.txt_Transloss_6k)});
        text += Line("Log_AutoSave", {Flag(s.check_AutoSave), s.txt_Default_Save_Name});
        text += Line("Log_SettingsInLog", {Flag(s.check_SettingsInLogg)});
        text += Line("Log_To_File_Only", {Flag(s.check_LogToFileOnly)});
        text += Line("Log_Time_Interval",
                     {Commas_To_Points(s.txt_Show_Log_Sek), Commas_To_Points(s.txt_Show_Log_Interval)});
        text += Line("Log_Signal_Smoothing",
                     {Commas_To_Points(s.txt_FIR[0]), Commas_To_Points(s.txt_FIR[1]),
                      std::to_string(s.filter.p1), std::to_string(s.filter.p2), Number_Text(s.filter.p3),
                      Number_Text(s.filter.p4), Number_Text(s.filter.p5), std::to_string(s.filter.p6)});
        std::string views = "Log_Views=";
        for (int v : s.Views_chk)
            views += Flag(v) + "\t";
        text += views + "\r\n";
        text += Line("Log_Start_String", {log.Log_Start_String});
        ctx.log.Log_Settings_Text = text + "[end log_settings]";
    });
}

void Update_Log_Settings_Form(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "Update Log Settings");
    guard.Step([&] {
        std::string& t = ctx.log.Log_Settings_Text;
        const Log_Setup& s = ctx.log.setup;
        const Log_Form& f = ctx.log.form;
        set_log_file_setting(t, "Log_File_Name", ctx.log.Log_File_Name, 1, 1);
        // The field ends at its ";", which stands.
        set_log_file_setting(t, "Log_Description", Description_Field(f.txt_Log_Free_Text), 1, 1);
        set_log_file_setting(t, "Log_Date", f.txt_Log_Date, 1, 1);
        set_log_file_setting(t, "Log_Time", f.txt_Log_time, 1, 1);
        set_log_file_setting(t, "Log_Length", f.txt_Log_Length, 1, 1);
        set_log_file_setting(t, "Log_Time_Interval", Commas_To_Points(s.txt_Show_Log_Sek), 1, 1);
        set_log_file_setting(t, "Log_Time_Interval", Commas_To_Points(s.txt_Show_Log_Interval), 1, 2);
        const std::string smoothing[] = {Commas_To_Points(s.txt_FIR[0]), Commas_To_Points(s.txt_FIR[1]),
                                         std::to_string(s.filter.p1),    std::to_string(s.filter.p2),
                                         Number_Text(s.filter.p3),       Number_Text(s.filter.p4),
                                         Number_Text(s.filter.p5),       std::to_string(s.filter.p6)};
        for (int k = 0; k < 8; ++k)
            set_log_file_setting(t, "Log_Signal_Smoothing", smoothing[k], 1, k + 1);
        for (int k = 0; k < 4; ++k)
            set_log_file_setting(t, "Log_Scale", Commas_To_Points(s.Scale[static_cast<std::size_t>(k)]), 1,
                                 k + 1);
        set_log_file_setting(t, "Log_Zoom", Row_Text(ctx.log.window.Zoom_Start), 1, 1);
        set_log_file_setting(t, "Log_Zoom", Row_Text(ctx.log.window.Zoom_Stop), 1, 2);
    });
}

void Read_Log_Settings(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "Read Log settings");
    Log_State& log = ctx.log;
    Log_Setup& s = log.setup;
    Log_Form& f = log.form;
    const std::string& t = log.Log_Settings_Text;
    std::string line, value;
    auto get = [&](const char* key, int field, int occurrence = 1) {
        get_log_file_setting(t, key, line, value, occurrence, field, &ctx.dialogs);
        return value;
    };

    log.Controls_Ready = false;
    guard.Step([&] {
        Set_Version_Flags(log, get("Log_File_Version", 1));
        // Free text keeps its commas: the "," to "." of the reader is meant for numbers.
        std::string description = Raw_Log_File_Setting(t, "Log_Description", 1, 1);
        if (log.Reading_Compare) {
            f.txt_Log_Date_compare = get("Log_Date", 1);
            f.txt_Log_time_compare = get("Log_Time", 1);
            f.txt_Log_Length_compare = get("Log_Length", 1);
            f.txt_Log_Free_Text_compare = description;
        } else {
            f.txt_Log_Date = get("Log_Date", 1);
            f.txt_Log_time = get("Log_Time", 1);
            f.txt_Log_Length = get("Log_Length", 1);
            f.txt_Log_Free_Text = description;
        }
    });
    guard.Step([&] {
        if (log.Repaired)
            f.txt_Log_Free_Text += "  *repaired w. " + std::to_string(log.Repaired_Bytes) + " err";
    });
    guard.Step([&] {
        int i = 0;
        for (; i < Log_Signal_Count; ++i) {
            auto kl = Find_Key_Line(t, "Log_Def", i + 1);
            if (!kl) break;
            const std::string def =
                Commas_To_Points(t.substr(kl->value_start, kl->value_end - kl->value_start)) + "\r";
            auto field = [&](int n) { return Field_Of(def, n).value_or(""); };
            Signal_Controls& c = s.controls[static_cast<std::size_t>(i)];
            Log_Signal& sig = log.Log_Signal_Tab[static_cast<std::size_t>(i)];
            const std::string place = field(2);
            // A place past the sensor table names no sensor at all.
            const auto sensor = Whole_Within(Val(place), 0, Log_Sensor_Rows - 1);
            if (place.empty() || !sensor) {
                sig.sensor = -1;
                c.combo_index = -1;
            } else {
                sig.sensor = static_cast<int>(*sensor);
                c.combo_index = sig.sensor < log.Log_Sens_Count ? sig.sensor : -1;
            }
            c.custom_name = field(1);
            c.view_caption = c.custom_name + " [" + sig.unit + "]";
            c.view = Val(field(4)) != 0 ? 1 : 0;
            c.secondary = Val(field(5)) != 0 ? 1 : 0;
            c.log_signal = field(6) == "0" ? 0 : 1;
            const std::string label = field(8);
            c.label = label.empty() ? std::to_string(i) + ":" : label;
        }
        log.Signals_Read = i;
    });
    guard.Step([&] {
        if (ctx.hooks.Signals_Changed) ctx.hooks.Signals_Changed();
    });
    guard.Step([&] {
        for (int k = 1; k <= 6; ++k)
            s.Views_chk[static_cast<std::size_t>(k - 1)] = get("Log_Views", k) == "0" ? 0 : 1;
    });
    guard.Step([&] {
        for (int k = 1; k <= 4; ++k) {
            std::string v = get("Log_Scale", k);
            if (!v.empty()) s.Scale[static_cast<std::size_t>(k - 1)] = v;
        }
    });
    guard.Step([&] {
        if (log.Reading_Compare) return;
        const std::string first = get("Log_Zoom", 1), last = get("Log_Zoom", 2);
        // The chart settles the window against the rows once they are read.
        auto row = [](const std::string& text) {
            return static_cast<int>(std::clamp(Val(text), 0.0, static_cast<double>(Log_Row_Limit)));
        };
        if (!first.empty() && first != "Auto") log.window.Zoom_Start = row(first);
        if (!last.empty() && last != "Auto") log.window.Zoom_Stop = row(last);
    });
    guard.Step([&] {
        const std::string speed = get("Log_Speed_Unit", 1);
        s.Speed_option = speed == "mph" ? 1 : speed == "m/s" ? 2 : 0;
        s.Weight_option = get("Log_Weight_Unit", 1) == "lbs" ? 1 : 0;
        s.Torque_option = get("Log_Torque_Unit", 1) == "ft-lbs" ? 1 : 0;
    });
    guard.Step([&] {
        for (int g = 1; g <= 6; ++g)
            s.txt_Gearing[static_cast<std::size_t>(g)] = get("Log_Gearing", g);
        if (const auto gear = Whole_Within(Val(get("Log_Gearing", 7)), 1, 6))
            s.Gear_option = static_cast<int>(*gear);
        s.txt_Speed = get("Log_Gearing", 8);
        s.txt_RPM = get("Log_Gearing", 9);
    });
    guard.Step([&] {
        auto number = [&](int field) { return Number_Text(Val(get("Log_Hp", field))); };
        s.txt_Weight = number(1);
        s.txt_Min_Hp = number(2);
        s.txt_Max_Hp = number(3);
        get("Log_Hp", 4);
        s.txt_AirResistance = number(5);
        s.txt_FrontalArea = number(6);
        s.txt_AirDensity = number(7);
        s.txt_Transloss_0k = number(8);
        s.txt_Transloss_6k = number(9);
    });
    guard.Step([&] {
        s.check_AutoSave = get("Log_AutoSave", 1) == "1" ? 1 : 0;
        s.txt_Default_Save_Name = get("Log_AutoSave", 2);
        s.check_SettingsInLogg = get("Log_SettingsInLog", 1) == "1" ? 1 : 0;
        const bool file_only = get("Log_To_File_Only", 1) == "1";
        s.check_LogToFileOnly = file_only ? 1 : 0;
        f.label_NoGraph_Visible = file_only;
    });
    guard.Step([&] {
        s.txt_Show_Log_Sek = get("Log_Time_Interval", 1);
        s.txt_Show_Log_Interval = get("Log_Time_Interval", 2);
        s.txt_FIR[0] = get("Log_Signal_Smoothing", 1);
        s.txt_FIR[1] = get("Log_Signal_Smoothing", 2);
        // The kept filter parameters are 16-bit numbers; one that does not fit keeps its value.
        auto int16 = [&](int field, std::int16_t& target) {
            if (const auto v = Whole_Within(Val(get("Log_Signal_Smoothing", field)), -32768, 32767))
                target = static_cast<std::int16_t>(*v);
        };
        int16(3, s.filter.p1);
        int16(4, s.filter.p2);
        s.filter.p3 = Val(get("Log_Signal_Smoothing", 5));
        s.filter.p4 = Val(get("Log_Signal_Smoothing", 6));
        s.filter.p5 = Val(get("Log_Signal_Smoothing", 7));
        int16(8, s.filter.p6);
    });
    guard.Step([&] {
        log.Log_Start_String = get("Log_Start_String", 1);
        if (log.Log_Start_String.empty()) log.Log_Start_String = "La";
    });
    guard.Step([&] {
        if (!log.Log_New_Format || !log.Log_Wide_Row) ctx.dialogs.Inform(Too_Old_Text);
        // A file of an older form is brought to the present one.
        if (log.Signals_Read < 35) Update_Log_Settings_Setup(ctx);
        Update_Log_Sens_Tab(log);
    });
    log.Controls_Ready = true;
}

void Update_All_Log_Setting_Variables(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "Update Log Settings");
    guard.Step([&] { Update_Log_Sens_Def(ctx.log); });
    guard.Step([&] { Update_Log_Settings_Form(ctx); });
}

void Read_All_Log_Setting_Variables(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "Read Log settings");
    guard.Step([&] { Read_Log_Sens_Def(ctx.log); });
    guard.Step([&] { Read_Log_Settings(ctx); });
}

} // namespace quorlen
