#pragma once
// The engine layout, the user presets and the readable summary as the program uses them:
// what the main window, the settings form, the summary viewer, the log window and the
// command-line tool share, on the program's state.

#include "app/app_context.h"
#include "engine/engine_config_frame.h"
#include "files/settings_summary.h"

#include <functional>
#include <string>

namespace quorlen {

// --- engine layout ------------------------------------------------------------------------

// The catalogue from the configuration file (part of Init_Tabs), and the layout the image
// names.
void Init_Engine_Config(App_Context& app);

Engine_Config_Context Engine_Context(App_Context& app, Engine_Config_Frame& frame,
                                     std::function<void()> update_all);

// The texts the engine frame shows for the image's layout, in the frame's order, as
// name and value: the lists, the caption and the information texts.
std::vector<std::pair<std::string, std::string>> Engine_Frame_Fields(const Engine_Config_Frame& frame);

// --- presets --------------------------------------------------------------------------------

// Whether n names a preset of PresetList.
bool Preset_Exists(const App_Context& app, int n);
std::string Show_Preset_Changes(App_Context& app, int n);
// The preset as an edit: a snapshot for undo, the changes marked for the next write, and the
// views refreshed. A number that names no preset does nothing.
void Apply_User_Preset(App_Context& app, int n, const std::function<void()>& update_all);
// The user's choice in the preset list, kept for the next start.
void Select_User_Preset(App_Context& app, int n);
// "Preset B": the preset, then the fuel map's injection time behind the injector dead time
// brought to `Pre_perc` percent, in one edit. Without a base percentage it says so and
// changes nothing; returns whether it ran.
bool Preset_B_Click(App_Context& app, int n, const std::string& Pre_perc, User_Dialogs& dialogs,
                    const std::function<void()>& update_all);
// The dataset's description beside the configuration file, for the image's dataset.
std::string Dataset_Description(const App_Context& app);

// --- summary --------------------------------------------------------------------------------

// What the summary says of this program, this system and the box last heard.
Summary_Facts Summary_Facts_Of(const App_Context& app, const std::string& operating_system);
Summary_Facts Summary_Facts_Of(const Program_State& program, const Link_State& box,
                               const Settings_Image& image, const std::string& operating_system);

enum class Summary_Tables_Layout { None, Alt1, Alt2 };

// The maps as their grids show them; the tables must be up to date (Update_All has run).
Summary_Tables Summary_Tables_Of(App_Context& app, User_Dialogs& dialogs);
// The table section in the chosen layout; empty for None.
std::string Summary_Table_Section(App_Context& app, User_Dialogs& dialogs, Summary_Tables_Layout layout);

} // namespace quorlen
