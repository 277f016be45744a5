#pragma once
// File, Open / Save / Save As of settings, the default file at start, and the scratch copy.
// The flows talk to the person only through User_Dialogs and refresh the views only
// through the hooks, so they run the same in the GUI, the command-line tool and the tests.

#include "core/debug_log.h"
#include "core/ini_file.h"
#include "core/program_state.h"
#include "core/user_dialogs.h"
#include "files/qxs_format.h"
#include "image/settings_image.h"
#include "tables/undo_list.h"

#include <functional>
#include <optional>
#include <string>

namespace quorlen {

inline constexpr const char* Default_Settings_File_Name = "RZ400_800M3_Default_Settings.qxs";
inline constexpr const char* Temp_Qxs_File_Name = "tmp_qxs_file.qxs";
inline constexpr const char* Open_Filter =
    "Box setting files  *.qxs|*.qxs|Quorlen logg files *.qxl|*.qxl|All files *.*|*.*";
inline constexpr const char* Save_Filter = "Box setting file *.qxs|*.qxs";
inline constexpr const char* Not_Valid_Qxs_Text = "Not a valid qxs-file";

struct Settings_File_Hooks {
    std::function<void()> Update_All;
    std::function<void()> Update_Tabs;
    std::function<void()> AN_Combo_Click; // the sensor editor's first input, after a load
    // A log file picked in the settings dialog: load it as a log, then take its settings.
    std::function<void(const std::string& full_name)> Open_Log_File;
    // A file the user opened or saved by name, for the list of recent files.
    std::function<void(const std::string& full_name)> Remember_File;
};

struct Settings_File_Context {
    Program_State& program;
    Form_Texts& texts;
    File_State& files;
    Settings_Image& image;
    Undo_List& undo;
    Ini_File& ini;
    Debug_Log& log;
    User_Dialogs& dialogs;
    Settings_File_Hooks hooks;
};

// The question asked when settings of another dataset are loaded.
std::string Dataset_Question(int found, int selected, const std::string& what = "File");

// Folder part of a dialog's full name: the full name less the file title, by length.
std::string Cut_Data_Dir(const std::string& full_name, const std::string& file_title);

// A name without a folder is taken from App_Path, where the program keeps its files (the
// original ran in its own folder and looked there).
std::string Resolve_In_App_Path(const std::string& app_path, const std::string& name);

// The one way an image is saved as a settings file: 250 and 251 become 0 and 255 the
// selected DatasetID in the image itself, then the file replaces `path` whole. Throws when
// the file cannot be written; the old file is then untouched.
void Save_Settings_File(Settings_Image& image, const std::string& comment, const std::string& path);
// The same with the context's image and comment box.
void Save_Settings_File(Settings_File_Context& ctx, const std::string& path);

void File_open_Click(Settings_File_Context& ctx);
// File, Open of a file already chosen (from the list of recent files): the same load, without
// the dialog.
void File_open_Named(Settings_File_Context& ctx, const std::string& full_name);
void File_save_Click(Settings_File_Context& ctx);
void File_save_as_Click(Settings_File_Context& ctx);
void Save_Current_qxs_2_file(Settings_File_Context& ctx);
void Restore_current_qxs(Settings_File_Context& ctx);

// The title bar: the program's title followed by what is on show.
void Set_Title(Settings_File_Context& ctx, const std::string& tail);

// Reads a settings file for tools that want just the content (the command-line tool):
// nullopt for anything that the program would answer "Not a valid qxs-file".
std::optional<Qxs_Content> Load_Qxs_File(const std::string& path);

} // namespace quorlen
