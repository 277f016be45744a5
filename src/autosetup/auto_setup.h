#pragma once
// The auto setup form without a window: the guide's step, the figures of the two map
// generators, and what generating a map does to the image. The form, the command-line tool
// and the tests all go through here.

#include "autosetup/fuel_generator.h"
#include "autosetup/ignition_generator.h"
#include "autosetup/setup_guide.h"
#include "engine/engine_catalogue.h"
#include "tables/map_tables.h"
#include "tables/undo_list.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace quorlen {

struct Auto_Setup_State {
    int Setup_Step = 1;
    Auto_Fuel fuel;
    Auto_Ignition ignition;
};

struct Auto_Setup_Context {
    Auto_Setup_State& form;
    Tables_Context tables;
    Undo_List& undo;
    const Engine_Config_State& engine;
};

// The capacity figures and labels for the figures on the form and the image's layout.
void Update_Setup_Figures(Auto_Setup_Context& ctx);

// After any change of the image: a layout with the other kind of injection works the fuel
// figures out again, and another ignition load changes the ignition captions. Returns
// whether anything the form shows changed.
bool Auto_Setup_Follow_Image(Auto_Setup_Context& ctx);

struct Generate_Outcome {
    bool made = false;   // the map was worked out and is in the image
    int changed = 0;     // cells whose byte changed
    std::string message; // what the form says of it
};

// "Generate fuel map": fresh figures, then the fuel map from the grid's axes. Either the
// whole map goes in, as one edit the undo list can take back and with the changed bytes
// marked for the next write, or, when an input makes the arithmetic fail, nothing does and
// the message says which input. `update_all` shows the result.
Generate_Outcome Generate_Autofuel_cmd(Auto_Setup_Context& ctx, const std::function<void()>& update_all);
// "Generate ignition map", the same for the ignition map. A load other than MAP and
// throttle leaves the table as it was.
Generate_Outcome Generate_Autoignition_cmd(Auto_Setup_Context& ctx, const std::function<void()>& update_all);

// --- the boxes by their controls' names ----------------------------------------------------

struct Fuel_Box {
    const char* name;
    const char* caption;
    std::string Auto_Fuel_Inputs::*text;
    // A change reworks the air figures before the fuel figures.
    bool feeds_air;
};
// The single boxes of the fuel frame in the frame's order.
std::span<const Fuel_Box> Fuel_Boxes();

struct Ignition_Box {
    const char* name;
    std::string Auto_Ignition_Inputs::*text;
};
// The ignition frame's boxes, in the order of their captions.
std::span<const Ignition_Box> Ignition_Boxes();

inline constexpr const char* Speed_Point_Caption[Speed_Points] = {"idle", "", "maxM", "maxP", "max"};

// Sets a box by its name: a fuel frame box, "MaxRPM_txt(k)" or "Volume_Efficiency_txt(k)"
// (k from 0 to 4; "MaxRPM_txt2" is read the same), or "FuelType_option" with "Petrol",
// "E85", 0 or 1. False for a name the frame does not have or a fuel type it does not know.
bool Set_Fuel_Input(Auto_Fuel_Inputs& in, std::string_view name, const std::string& value);
bool Set_Ignition_Input(Auto_Ignition_Inputs& in, std::string_view name, const std::string& value);

} // namespace quorlen
