#pragma once
// The parameter pages of the settings form without any window: which slider stands on which
// tab and frame, what each one shows for its byte, the rules some addresses follow when they
// move, and the warnings. The form, the command-line tool and the tests all go through here.
//
// A slider is known by its image address: slider k moves CardByte(k). Two sliders move a
// 16-bit value, low byte first (80/81 and 82/83).

#include "core/debug_log.h"
#include "core/ini_file.h"
#include "engine/engine_catalogue.h"
#include "image/settings_image.h"
#include "sensors/sensor_defs.h"
#include "tables/map_tables.h" // Scroll_Shown
#include "tables/undo_list.h"

#include <array>
#include <bitset>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

// --- tabs and frames -------------------------------------------------------------------------

inline constexpr int Settings_Tab_Count = 16;

namespace Settings_Tab {
inline constexpr int Launch_ALS = 0;
inline constexpr int Ignition = 1;
inline constexpr int PWM_Outputs = 2;
inline constexpr int AFR_Control = 3;
inline constexpr int Unused = 4; // keeps the numbers of the later tabs; never shown
inline constexpr int Idle = 5;
inline constexpr int Temp_Corrections = 6;
inline constexpr int Start_Up = 7;
inline constexpr int Digital_Inputs = 8;
inline constexpr int Analog_Settings = 9;
inline constexpr int Limits_Warnings = 10;
inline constexpr int Engine_Setup = 11;
inline constexpr int Fuel_Acceleration = 12;
inline constexpr int Fuel_Settings = 13;
inline constexpr int Development = 14;
inline constexpr int Digital_Outputs = 15;
} // namespace Settings_Tab

// The caption of tab `index` of QX_Settings_SSTab ("" for the unused one).
std::string_view Settings_Tab_Caption(int index);

struct Page_Frame {
    const char* name; // objectName of the group box
    int tab;
    const char* caption;
    int columns; // sliders flow over this many columns
    // Shown in the frame's place when its function is off: how to switch it on.
    const char* hint = nullptr;
};

// Every frame of the pages, in form order (tab by tab, top to bottom).
std::span<const Page_Frame> Page_Frames();
const Page_Frame* Find_Page_Frame(std::string_view name);

// --- sliders ---------------------------------------------------------------------------------

// Which analogue input gives a slider its sensor, and so its unit.
enum class Input_Binding {
    None,
    Fixed,          // `input` names the input, 1..12
    Lambda_Sensor,  // input 1, or 5 when AFR_Number is set
    Lambda_Load,    // MAP or throttle, as the AFR control's load option says
    Als_Temp,       // the input that the "Launch/ALS high temp sensor" slider names
    Digital_Output, // the sensor chosen on digital output `input` (0..3)
};

struct Page_Param {
    int address;
    int tab;
    const char* frame;
    const char* label; // empty: a row of the digital outputs' grid, labelled by output 1's
    int min = 0;
    int max = 255;
    Input_Binding binding = Input_Binding::None;
    int input = 0;
    bool wide = false; // 16-bit value at address (low) and address + 1 (high)
    // Scaling for the addresses that have no catalogue row; factor 0 keeps the image's.
    int offset = 0;
    double factor = 0;
    const char* format = nullptr;
    const char* unit = nullptr; // overrides the catalogue's unit when set
    // objectName of a slider outside the address-indexed array ("AE_IG_scroll"); null for
    // the array's own "scroll_<address>".
    const char* control = nullptr;
};

// The label a slider goes by: its own, or for an unlabelled cell of the digital outputs' grid
// the row's label and the output ("RPM ON, output 2").
std::string Param_Label(const Page_Param& p);

// Every slider of the pages in form order.
std::span<const Page_Param> Page_Params();
const Page_Param* Find_Page_Param(int address);

// Where the shown number of the fuel cut boost level stands for "no cut": the slider's top.
inline constexpr int Boost_Cut_Off_Byte = 255;
inline constexpr const char* Off_Text = "OFF";
// The boost warning fires below one bar absolute: the level lies in vacuum.
inline constexpr double Vacuum_Limit_Bar = 1.0;
inline constexpr double Dwell_Warning_ms = 5.0;

// --- state -----------------------------------------------------------------------------------

// The lists of the output and input function choices, from the configuration file.
struct Output_Lists {
    std::vector<std::string> Pwm_Function;     // pwm_combo 1..4
    std::vector<std::string> Pwm_Load;         // pwm_combo 0
    std::vector<std::string> Digital_Function; // digital_combo
    // Which thresholds each digital function needs: "none", "fan", "rpm", "analog", "both".
    std::vector<std::string> Digital_Needs;
    std::vector<std::string> Digital_Sensor; // Digital_sensor_combo
};

struct Pages_State {
    bool Engine_Tab_Read = false; // the layout catalogue is read from the configuration
    int Layout_Row_Taken = -1;    // the catalogue row the layout state was last taken from
    Output_Lists lists;
    // The texts of the two labels beside the teeth sliders.
    std::string Fuel_teeth_recomend;
    bool Forbidden_tooth_visible = false;
};

struct Pages_Context {
    Settings_Image& image;
    const Sensor_State& sensors;
    Pages_State& pages;
    Engine_Config_State& engine;
    Undo_List& undo;
    const Ini_File& ini;
    Debug_Log& log;
};

// The engine layout that image byte 6 names: the catalogue is read from the configuration
// the first time, and the tooth angle and the fuel system are taken again whenever the byte
// names another row.
const Engine_Config_State& Current_Layout(Pages_Context& ctx);

// The lists of the configuration file; numbered items where the file has none.
Output_Lists Load_Output_Lists(const Ini_File& ini);

// --- showing a slider ------------------------------------------------------------------------

struct Page_Message {
    std::string text;
    bool stop_icon = false;
};

// The slider's value: its byte, or the 16-bit value of a wide one.
int Scroll_Position(const Settings_Image& image, const Page_Param& p);

// The analogue input (1..12) behind slider `p` now, or 0 for none.
int Bound_Input(const Pages_Context& ctx, const Page_Param& p);

// Text and unit of slider `p` at position `v`, as scroll_Change shows it (default text,
// sensor text, digital output thresholds, "OFF", wide values).
Scroll_Shown Scroll_Text_At(const Pages_Context& ctx, const Page_Param& p, int v);

// Shows slider `address` for the image as it stands: text and unit, and CardValue takes
// the number shown. Nothing is written and no message comes up.
Scroll_Shown Show_Scroll(Pages_Context& ctx, int address);

// --- moving a slider -------------------------------------------------------------------------

struct Scroll_Outcome {
    Scroll_Shown shown;
    std::vector<Page_Message> messages;
    bool changed = false; // the image took a new value
};

// The user moved slider `address` to `v`, or the program set it. The value is held to the
// slider's range; a value that differs goes to the image (undo snapshot first, marked
// changed). Then the rules of the address in their order, the text, and the warnings. A
// message never undoes the change. While the engine layout is being filled in
// (Engine_Config_Busy) only the write happens.
Scroll_Outcome scroll_Change(Pages_Context& ctx, int address, int v);

// Sets slider `address` and the image from a number; `v` comes back held to the range.
Scroll_Outcome Update_Scroll(Pages_Context& ctx, int address, int& v);

// After a sensor change: for each input in order, the sliders bound to it are shown again
// with the input's sensor and unit. Returns the addresses that were run, in that order.
std::vector<int> Update_scroll_change(Pages_Context& ctx);

// The position a typed text stands for: the one whose shown value lies nearest ("OFF" on
// the fuel cut boost level). nullopt for text that is not a number.
std::optional<int> Position_For_Text(const Pages_Context& ctx, int address, std::string_view typed);

// "Address 21, byte 15 (0x0F)", or both bytes of a wide slider.
std::string Scroll_Tooltip(const Settings_Image& image, const Page_Param& p);

// True when a byte behind slider `p` is changed and not yet written.
bool Scroll_Changed(const Settings_Image& image, const Page_Param& p);

} // namespace quorlen
