#pragma once
// The choices of the settings pages: option groups, lists and check boxes that each own a
// field of bits in one image byte, and what the pages show or hide because of them.
//
// Every field is (byte AND mask) >> shift. A choice of n rewrites only its field, so
// digital_combo keeps the sensor nibble, Digital_sensor_combo the function nibble, and
// Dig1_function the upper six bits of byte 185.

#include "engine/settings_pages.h"

#include <array>
#include <bitset>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

enum class Choice_Style {
    Combo,   // a drop-down list
    Options, // a group of option buttons, one objectName per item
    Check,   // a check box: item 0 unticked, item 1 ticked
};

// Where the items of a list come from.
enum class Choice_Items { Fixed, Pwm_Function, Pwm_Load, Digital_Function, Digital_Sensor };

struct Page_Choice {
    const char* name; // objectName (of the list, the check box, or the group of options)
    int tab;
    const char* frame;
    const char* caption;
    int address;
    int mask;
    int shift;
    Choice_Style style;
    Choice_Items source = Choice_Items::Fixed;
    std::array<const char*, 8> items{}; // the fixed items, up to the first null
    // objectNames of the options, one per item, for Choice_Style::Options.
    std::array<const char*, 8> option_names{};
};

// Every choice in form order.
std::span<const Page_Choice> Page_Choices();
const Page_Choice* Find_Page_Choice(std::string_view name);

// The items of a choice as the form lists them.
std::vector<std::string> Choice_Item_Texts(const Pages_State& pages, const Page_Choice& c);

// The value of the field now.
int Choice_Value(const Settings_Image& image, const Page_Choice& c);
// The item shown for the value, or the number when the list has no such item.
std::string Choice_Text(const Pages_State& pages, const Settings_Image& image, const Page_Choice& c);

// The hooks a choice may need to run after it writes.
struct Choice_Hooks {
    std::function<void()> Update_Tabs;
    std::function<void()> Show_Right_Tabs;
    std::function<void()> Update_All;
};

// The user chose item n of choice `name`: the field takes n (undo snapshot first, the byte
// marked changed when it differs), then what the choice runs besides: a PWM signal selection
// or the anti-lag input changes what the tables are, so Update_Tabs and Show_Right_Tabs run;
// every choice ends with Update_All. Returns false for an unknown name or an n
// that does not fit the field.
bool Choice_Click(Pages_Context& ctx, std::string_view name, int n, const Choice_Hooks& hooks);

// One control of the pages: a slider or a choice.
struct Page_Item {
    const Page_Param* param = nullptr;
    const Page_Choice* choice = nullptr;
};

// Every control in the order of the form: tab by tab, frame by frame, the choices of a frame
// before its sliders; the digital outputs one output after the other.
std::vector<Page_Item> Page_Items_In_Order();

// --- what the functions read --------------------------------------------------------------------

// The index of ae_combo: 0 off, 1 throttle, 2 MAP. The log's "Delta AE" follows it.
int ae_combo_Index(const Settings_Image& image);

// Items of the function lists as the box counts them.
namespace Dig1 {
inline constexpr int Rev_Limit_2 = 0;
inline constexpr int Launch_Control = 2;
inline constexpr int Speed_Sensor = 3;
} // namespace Dig1
namespace Dig2 {
inline constexpr int Rev_Limit_2 = 0;
inline constexpr int Anti_Lag = 2;
inline constexpr int Pwm_Activation = 4;
inline constexpr int Speed_Sensor = 5;
inline constexpr int Long_Term_Adaptive = 6;
inline constexpr int Ignition_Cut = 7;
} // namespace Dig2

// The signal selection of PWM output 1..4 (bytes 186, 187) and the function and sensor of
// digital output 0..3.
int Pwm_Signal(const Settings_Image& image, int output);
int Digital_Function(const Settings_Image& image, int output);
int Digital_Sensor(const Settings_Image& image, int output);
// The analogue input (1..9) that a digital output's sensor selection names.
int Digital_Sensor_Input(const Settings_Image& image, int output);

// --- what the pages show -----------------------------------------------------------------------

struct Settings_View {
    std::array<bool, Settings_Tab_Count> tab_visible{};
    std::vector<std::pair<std::string, bool>> frames; // frame objectName, visible
    std::bitset<Array_Size> param_visible;            // by slider address
    std::array<bool, 4> sens_visible{};               // show_sens of each digital output
    bool fan_visible = false;                         // show_fan_scroll
    bool AutoTune_visible = false;                    // AutoTune_option and Dig2_AutoTune_lable
    bool AntiLag_ExtraAir_visible = false;
    bool Narrow_target_visible = false;
    // Description_label: who controls the 2nd RPM limit, and the PWM external activation.
    std::array<std::string, 2> Description_label;
};

// The tabs and frames that belong to the loaded dataset, and within them the groups that the
// chosen functions need (Show_Right_Settings, Set_Idle_Control_visibility, show_scroll,
// show_sens, show_fan_scroll and the function clicks of the inputs and outputs).
Settings_View Show_Right_Settings(const Pages_Context& ctx);

// Only the idle controls of the chosen mode: none but the idle entry with idle control off;
// the speed and its PID with it on, and the valve's frequency unless the ignition alone
// holds the idle; the fixed idle ignition and its fade out when that is on.
void Set_Idle_Control_visibility(const Settings_Image& image, Settings_View& view);

bool Frame_Visible(const Settings_View& view, std::string_view frame);

} // namespace quorlen
