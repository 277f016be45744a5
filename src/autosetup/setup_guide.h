#pragma once
// The setup guide: 21 steps that lead a first-time user through the forms, each bringing the
// right form and tab to the front and telling what to do there. The guide edits nothing
// itself. Its steps are data here; the window carries them out.

#include <string>
#include <vector>

namespace quorlen {

inline constexpr int Guide_Steps = 21;

enum class Guide_Form { None, Sensor_Editor, Settings, Main };
// Which generator frame a step shows; the others leave both as they are.
enum class Guide_Frame { Keep, Fuel, Ignition };

struct Guide_Step {
    // Closed before the step's own form opens.
    bool close_sensor_editor = false;
    bool close_settings = false;
    Guide_Form form = Guide_Form::None;
    // The tab of the form: of the sensor viewer, of the settings form, or sstab_Main.
    int tab = -1;
    // With the main window: the tab of SSTab_Fuel or SSTab_Ignition under it.
    int sub_tab = -1;
    Guide_Frame frame = Guide_Frame::Keep;
    // The ignition generator's captions follow the ignition load.
    bool ignition_captions = false;
};

// Tabs of the main window the guide opens.
inline constexpr int Main_Tab_Ignition = 1;
inline constexpr int Main_Tab_Fuel = 2;
inline constexpr int Sensor_Tab_Select = 0; // "Select tuning sensors"

// Step 1 to 21; nullptr for any other number, which does nothing.
const Guide_Step* Guide_Step_Of(int step);
// The step's lines, in English: the window shows each through the translation of the chosen
// language, so a translation is kept line by line. Empty outside 1 to 21.
const std::vector<const char*>& Guide_Lines(int step);
// The step's lines joined by CR LF with an empty line between them.
std::string Guide_Text(int step);

// "Next step" (index 0) adds one, "Previous step" (any other index) takes one away, with no
// limit: past either end the counter goes on and nothing is shown until the user walks back.
// Returns the step to carry out, nullptr outside 1 to 21.
const Guide_Step* Autosetup_next(int& Setup_Step, int index);
// "Restart": step 1.
const Guide_Step* Guide_Restart(int& Setup_Step);

} // namespace quorlen
