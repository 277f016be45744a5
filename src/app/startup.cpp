#include "app/startup.h"

#include "core/proc_guard.h"
#include "core/text.h"

#include <cmath>

namespace quorlen {

namespace {

// An option value of the file as the program keeps it; one that is no whole number of a
// sensible size counts as absent.
int Ini_Flag(double value) {
    return static_cast<int>(Whole_Within(value, -32768, 32767).value_or(0));
}

} // namespace

void App_Context::Use_App_Path(const std::string& app_path) {
    program.App_Path = app_path;
    ini = Ini_File(app_path + (program.Ini_File_Name.empty() ? "RZ400_800M3.ini" : program.Ini_File_Name),
                   app_path + "QXS.new");
}

void Init_ini_file(App_Context& app) {
    Proc_Guard guard(app.log, "Init ini file");
    // One read of the file for the whole load: the lists in it may be long.
    Ini_Snapshot ini;
    guard.Step([&] { ini = app.ini.Snapshot(); });
    guard.Step([&] {
        std::string port;
        app.program.Com_Port = ini.Read_Ini("comport1", port) ? app.link_state.Ports.From_Ini(port) : 1;
    });
    guard.Step([&] { app.files.CurrentDataDir = ini.Read_Ini("card_data_dir"); });
    guard.Step([&] { app.ini.Write_Ini("start_dir", app.program.App_Path); });
    guard.Step([&] { Load_Sensor_Definitions(app.sensors, ini, guard, &app.texts.Debug_txt); });
    Load_Presets(app, guard, ini);
}

void Load_Presets(App_Context& app, Proc_Guard& guard) {
    Ini_Snapshot ini;
    guard.Step([&] { ini = app.ini.Snapshot(); });
    Load_Presets(app, guard, ini);
}

void Load_Presets(App_Context& app, Proc_Guard& guard, const Ini_Snapshot& ini) {
    guard.Step([&] {
        app.PresetList.clear();
        for (const std::string& line : ini.Read_List("preset_list")) {
            if (line.empty()) break;
            app.PresetList.push_back(Parse_Preset_Line(line));
        }
        if (app.PresetList.empty()) app.PresetList.push_back(No_Preset_Row());
    });
    guard.Step([&] {
        int count = static_cast<int>(app.PresetList.size());
        std::string text;
        auto chosen = ini.Read_Ini("User_Preset", text) ? To_Integer(text) : std::nullopt;
        app.User_Preset = (chosen && *chosen >= 0 && *chosen < count) ? static_cast<int>(*chosen) : count;
    });
}

int Interface_Option_For(const std::string& value) {
    if (value == "SC_Reader" || value == "Serial") return 0;
    if (value == "QX_Mapchip") return 2;
    if (value == "TodosII_Reader") return 3;
    return -1;
}

std::string Interface_Key_For(int option) {
    switch (option) {
    case 0:
        return "Serial";
    case 1:
        return "SC_Reader";
    case 2:
        return "QX_Mapchip";
    case 3:
        return "TodosII_Reader";
    default:
        return "";
    }
}

void Read_Language_And_Autoguide(App_Context& app) {
    app.program.Language = app.ini.Read_Ini("Language");
    if (app.program.Language == "ENG") Language_Click(app, 0);
    if (app.program.Language == "SWE") Language_Click(app, 1);

    app.program.Autoguide = Ini_Flag(app.ini.Read_Ini_Number("Autoguide"));
    if (app.program.Autoguide == 0) Autoguide_Click(app, 0);
    auto as_number = To_Integer(app.program.Language);
    if (!as_number || *as_number == 1) Autoguide_Click(app, 1);
}

void Read_Link_And_Autostart(App_Context& app) {
    std::string speed;
    if (app.ini.Read_Ini("ComSpeed", speed)) {
        double value = Val(speed);
        if (value == 0) ComSpeed_option_Click(app, 0);
        if (value == 1) ComSpeed_option_Click(app, 1);
    } else {
        ComSpeed_option_Click(app, 0);
    }
    // Ticking runs the handler, which unticks the other: with both set in the file the
    // second wins.
    // Both are read before either is ticked, as the first tick rewrites the pair.
    bool log = app.ini.Read_Ini_Number("Autostart_Log") == 1;
    bool live = app.ini.Read_Ini_Number("Autostart_Live") == 1;
    if (log) Auto_Start_option_Click(app, 0, true);
    if (live) Auto_Start_option_Click(app, 1, true);
    app.program.ManualUSBDetect = Ini_Flag(app.ini.Read_Ini_Number("ManualUSBDetect"));
    app.prefs.ManualUSBDetect_Check = app.program.ManualUSBDetect == 1;
}

void interface_option_Click(App_Context& app, int option) {
    app.prefs.interface_option = option;
}

void Language_Click(App_Context& app, int index) {
    app.prefs.Language = index;
    if (app.program.Starting_Up) return;
    Proc_Guard guard(app.log, "Language click");
    app.program.Language = index == 1 ? "SWE" : "ENG";
    guard.Step([&] { app.ini.Write_Ini("Language", app.program.Language); });
}

void Autoguide_Click(App_Context& app, int index) {
    app.prefs.Autoguide = index;
    if (app.program.Starting_Up) return;
    Proc_Guard guard(app.log, "Autoguide click");
    guard.Step([&] { app.ini.Write_Ini("Autoguide", index == 1 ? "1" : "0"); });
}

void ComSpeed_option_Click(App_Context& app, int index) {
    app.prefs.ComSpeed_option = index;
    app.program.ComSpeed = index == 1 ? 625000 : 115200;
    if (app.program.Starting_Up) return;
    Proc_Guard guard(app.log, "ComSpeed option click");
    guard.Step([&] { app.ini.Write_Ini("ComSpeed", index == 1 ? "1" : "0"); });
}

void ManualUSBDetect_Check_Click(App_Context& app, bool ticked) {
    app.prefs.ManualUSBDetect_Check = ticked;
    app.program.ManualUSBDetect = ticked ? 1 : 0;
    if (app.program.Starting_Up) return;
    Proc_Guard guard(app.log, "ManualUSBDetect check click");
    guard.Step([&] { app.ini.Write_Ini("ManualUSBDetect", ticked ? "1" : "0"); });
}

void Auto_Start_option_Click(App_Context& app, int index, bool ticked) {
    Proc_Guard guard(app.log, "Auto start option click");
    if (index < 0 || index > 1) return;
    app.prefs.Auto_Start_option[index] = ticked;
    if (ticked) app.prefs.Auto_Start_option[1 - index] = false;
    guard.Step([&] { app.ini.Write_Ini("Autostart_Log", app.prefs.Auto_Start_option[0] ? "1" : "0"); });
    guard.Step([&] { app.ini.Write_Ini("Autostart_Live", app.prefs.Auto_Start_option[1] ? "1" : "0"); });
    if (ticked) app.program.Autostart_Pending = true;
}

void Prefs_Apply(App_Context& app, int com_port) {
    Proc_Guard guard(app.log, "Apply button click");
    app.program.Com_Port = com_port;
    guard.Step([&] { app.ini.Write_Ini("comport1", app.link_state.Ports.Ini_Value(com_port)); });
    guard.Step([&] {
        std::string key = Interface_Key_For(app.prefs.interface_option);
        if (!key.empty()) app.ini.Write_Ini("Default_Interface", key);
    });
}

std::string Version_Label_Text(const std::string& program_version) {
    return "Ver. " + program_version + " M3v3 ";
}

} // namespace quorlen
