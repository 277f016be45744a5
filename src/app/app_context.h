#pragma once
// All program-wide state of one run, grouped by concern. The main window owns one; tests and
// the command-line tool build their own.

#include "autosetup/auto_setup.h"
#include "cards/card_state.h"
#include "core/debug_log.h"
#include "core/ini_file.h"
#include "core/program_state.h"
#include "engine/engine_catalogue.h"
#include "engine/settings_pages.h"
#include "files/presets.h"
#include "image/scaling.h"
#include "image/settings_image.h"
#include "link/link_state.h"
#include "link/rw_state.h"
#include "logging/log_state.h"
#include "sensors/sensor_defs.h"
#include "tables/map_tables.h"
#include "tables/undo_list.h"

#include <memory>

namespace quorlen {

// The choices of the preferences form, as option indexes (-1: none ticked).
struct Prefs_State {
    int interface_option = -1; // 0 serial box (a), 1 card reader (b), 2 Mapchip (c), 3 Todos II (d)
    int Language = -1;         // 0 ENG, 1 SWE
    int Autoguide = -1;        // 0 do not ask at start, 1 ask
    int ComSpeed_option = -1;  // 0 115200, 1 625000
    bool Auto_Start_option[2] = {false, false}; // 0 log to file, 1 live view
    bool ManualUSBDetect_Check = false;
};

struct App_Context {
    Debug_Log log;
    Program_State program;
    Form_Texts texts;
    File_State files;
    Link_Flags link;
    Link_State link_state;
    Rw_State rw;
    Card_State card;
    Settings_Image image;
    Undo_List undo;
    Sensor_State sensors;
    Tables_State tables;
    Scroll_Limits scroll_limits;
    Engine_Config_State engine;
    Pages_State pages;
    Preset_Table PresetList;
    int User_Preset = 0;
    Prefs_State prefs;
    Auto_Setup_State autosetup;
    Ini_File ini{"", ""};
    // The log on show (and the one being recorded) with its settings: the log window binds to
    // it, and every window that studies the log reads it here. Held apart: the two row arrays
    // are large.
    std::unique_ptr<Log_State> log_state = std::make_unique<Log_State>();

    // Points the configuration file at App_Path; the rewrite goes through "QXS.new" there.
    void Use_App_Path(const std::string& app_path);

    Analog_Context Analog() { return {sensors, image, ini, texts, log}; }
    Tables_Context Tables(User_Dialogs& dialogs) { return {image, sensors, tables, log, dialogs, undo}; }
    Pages_Context Pages() { return {image, sensors, pages, engine, undo, ini, log}; }
    Auto_Setup_Context Auto_Setup(User_Dialogs& dialogs) {
        return {autosetup, Tables(dialogs), undo, engine};
    }
};

} // namespace quorlen
