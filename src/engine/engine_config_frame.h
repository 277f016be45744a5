#pragma once
// The engine frame of the settings form without its widgets: the layout list, the nine
// lists that show the chosen row's fields, and the selection guide that narrows the rows
// down question by question until one is left.
//
// The frame is in one of three states. Showing: the lists hold the image's row, the caption
// names it. Editing ("EDIT"): the lists become a chain of questions, each answer refilling
// the next list with what the rows still allow. Selection found: one row is left and
// "APPLY" takes it into the image. "APPLY" and "CANCEL" go back to showing. The image
// changes only through the layout list, so only on "APPLY" or on a direct choice.

#include "core/debug_log.h"
#include "engine/engine_catalogue.h"
#include "image/settings_image.h"
#include "tables/undo_list.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quorlen {

// The lists in the order of the guide's chain; Car_Example ends it.
enum class Engine_List : int {
    Cylinder_info,
    Ignition_type,
    Fuel_system,
    Crank_sensor,
    Cam_sensor,
    Cam2_sensor,
    TDC_sensor,
    Firing_order,
    Car_Example
};
inline constexpr int Engine_List_Count = 9;

// The control name of a list, its catalogue column, and the prompt the guide puts at its
// head ("" for the first list, whose head is a real answer, and for Car_Example).
const char* Engine_List_Name(Engine_List list);
int Engine_List_Column(Engine_List list);
const char* Engine_List_Prompt(Engine_List list);

// The frame's colours as the original form's colour values: the system's face colour, and
// the red of the editing state.
inline constexpr std::uint32_t Frame_Face_Colour = 0x8000000f;
inline constexpr std::uint32_t Frame_Editing_Colour = 0x8080ff;

struct Engine_List_Box {
    std::vector<std::string> items;
    int index = -1;
    // The selected item's text; empty with none.
    const std::string& Text() const;
    void Clear() {
        items.clear();
        index = -1;
    }
    // Adds the item unless the list holds it already (exact comparison).
    void Add_Unique(const std::string& item);
};

struct Engine_Config_Frame {
    std::vector<std::string> Engine_setup_combo; // always 256 items
    int Engine_setup_combo_index = -1;
    bool Engine_setup_combo_Locked = false; // against the user's change
    std::array<Engine_List_Box, Engine_List_Count> lists;
    std::string Caption = "Engine configuration";
    std::uint32_t BackColor = Frame_Face_Colour;
    bool Engine_Config_OK_Enabled = false;
    std::string Cylinder_info_txt;
    std::array<std::string, 2> Ign_Channel_order_info_txt;  // firing order, channel to cylinder
    std::array<std::string, 2> Fuel_Channel_order_info_txt; // firing order, channel to cylinder
    std::string FW_info_txt;
    std::string Selected_Engine_config_row_txt;
    std::string Crank_angle_example_label;
    std::string Fuel_teeth_recomend;
    bool Guide_Busy = false;

    Engine_List_Box& List(Engine_List l) { return lists[static_cast<std::size_t>(l)]; }
    const Engine_List_Box& List(Engine_List l) const { return lists[static_cast<std::size_t>(l)]; }
    // Editing or selection found: the guide owns the lists.
    bool Guide_Active() const { return BackColor == Frame_Editing_Colour; }
};

struct Engine_Config_Context {
    Engine_Config_State& engine;
    Engine_Config_Frame& frame;
    Settings_Image& image;
    Undo_List& undo;
    Debug_Log& log;
    // The program's refresh of every view after the layout changed.
    std::function<void()> Update_All;
};

// The layout list's 256 items (at start, and when the catalogue is read again).
void Fill_Engine_setup_combo(Engine_Config_Context& ctx);

// The user's choice of item e in the layout list (also what "APPLY" and "CANCEL" run): the
// layout byte takes e, as an edit the undo list can take back; the lists and texts show row
// e + 1; "APPLY" is enabled; Update_All runs. A row past the table shows every field empty
// and the fault goes to the diagnostics log.
void Engine_setup_combo_Click(Engine_Config_Context& ctx, int e);

// The frame follows the image after a load, a read or an undo: the layout list shows the
// image's item and, unless the guide is at work, the lists show its row. Nothing is written
// and nothing else runs. Does nothing when the list shows that item already.
void Show_Engine_Config_Of_Image(Engine_Config_Context& ctx);

// What the rest of the program reads of the layout (tooth angle, sequential fuel, the fuel
// labels), from the image, whether or not the frame has been made.
void Engine_Config_Follow_Image(Engine_Config_State& engine, const Settings_Image& image);

// "EDIT": the guide starts with the first question.
void Init_Selection_guide_Click(Engine_Config_Context& ctx);
// The choice of item `index` in one of the nine lists. In the guide it refills the next list;
// a question left with a single answer is answered at once, so the chain can run to its end.
void Engine_List_Click(Engine_Config_Context& ctx, Engine_List list, int index);
// "APPLY": the row the guide arrived at becomes the layout.
void Engine_Config_OK_Click(Engine_Config_Context& ctx);
// "CANCEL": back to the image's row. The layout list stays locked until the next "APPLY",
// unlike after "APPLY"; that is how the frame has always behaved.
void Engine_Config_Cancle_Click(Engine_Config_Context& ctx);

} // namespace quorlen
