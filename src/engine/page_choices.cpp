#include "engine/page_choices.h"

#include "core/proc_guard.h"

#include <algorithm>

namespace quorlen {

namespace {

namespace T = Settings_Tab;
using S = Choice_Style;
using I = Choice_Items;

constexpr Page_Choice Choices[] = {
    // Launch / ALS
    {.name = "Anti_lag_sensor_combo",
     .tab = T::Launch_ALS,
     .frame = "ALS_frame",
     .caption = "Anti-lag activated by",
     .address = 185,
     .mask = 0x1C,
     .shift = 2,
     .style = S::Combo,
     .items = {"Not activated", "Digital 1 in", "Digital 2 in", "Throttle position"}},
    {.name = "AntiLag_ExtraAir_selection",
     .tab = T::Launch_ALS,
     .frame = "ALS_frame",
     .caption = "Extra air through the PWM2 idle valve",
     .address = 185,
     .mask = 0x80,
     .shift = 7,
     .style = S::Check},
    // PWM outputs: the outputs in their order, then the load of the second PWM table.
    {.name = "pwm_combo_2",
     .tab = T::PWM_Outputs,
     .frame = "PWM_Function_frame",
     .caption = "PWM 1",
     .address = 186,
     .mask = 0x0F,
     .shift = 0,
     .style = S::Combo,
     .source = I::Pwm_Function},
    {.name = "pwm_combo_1",
     .tab = T::PWM_Outputs,
     .frame = "PWM_Function_frame",
     .caption = "PWM 2",
     .address = 186,
     .mask = 0xF0,
     .shift = 4,
     .style = S::Combo,
     .source = I::Pwm_Function},
    {.name = "pwm_combo_4",
     .tab = T::PWM_Outputs,
     .frame = "PWM_Function_frame",
     .caption = "PWM 3",
     .address = 187,
     .mask = 0x0F,
     .shift = 0,
     .style = S::Combo,
     .source = I::Pwm_Function},
    {.name = "pwm_combo_3",
     .tab = T::PWM_Outputs,
     .frame = "PWM_Function_frame",
     .caption = "PWM 4",
     .address = 187,
     .mask = 0xF0,
     .shift = 4,
     .style = S::Combo,
     .source = I::Pwm_Function},
    {.name = "pwm_combo_0",
     .tab = T::PWM_Outputs,
     .frame = "PWM_Function_frame",
     .caption = "2nd PWM load",
     .address = 182,
     .mask = 0x38,
     .shift = 3,
     .style = S::Combo,
     .source = I::Pwm_Load},
    // The extra fuel table beside it follows the duty of PWM2's output once this is on.
    {.name = "PWM2_FuelCorr_Opt",
     .tab = T::PWM_Outputs,
     .frame = "PWM2_FuelCorr_frame",
     .caption = "Fuel follows the PWM2 output",
     .address = 188,
     .mask = 0x08,
     .shift = 3,
     .style = S::Check},
    // AFR control
    {.name = "Lambda_On_Off",
     .tab = T::AFR_Control,
     .frame = "Lambda_frame",
     .caption = "AFR control",
     .address = 215,
     .mask = 0x01,
     .shift = 0,
     .style = S::Options,
     .items = {"Off", "On"},
     .option_names = {"Lambda_On_Off_option", "Lambda_On_option"}},
    {.name = "Lambda_Type",
     .tab = T::AFR_Control,
     .frame = "Lambda_frame",
     .caption = "Sensor",
     .address = 215,
     .mask = 0x02,
     .shift = 1,
     .style = S::Options,
     .items = {"Narrow band", "Wide band"},
     .option_names = {"Lambda_Narrow_option", "Lambda_Wide_option"}},
    {.name = "Lambda_Polarity",
     .tab = T::AFR_Control,
     .frame = "Lambda_frame",
     .caption = "Narrow band high voltage is",
     .address = 215,
     .mask = 0x04,
     .shift = 2,
     .style = S::Options,
     .items = {"Rich", "Lean"},
     .option_names = {"Lambda_Rich_option", "Lambda_Lean_option"}},
    {.name = "AFR_Number",
     .tab = T::AFR_Control,
     .frame = "Lambda_frame",
     .caption = "AFR sensor on",
     .address = 15,
     .mask = 0x40,
     .shift = 6,
     .style = S::Combo,
     .items = {"Analog 1, AFR", "Analog 5, Slave"}},
    {.name = "Lambda_Load_Combo",
     .tab = T::AFR_Control,
     .frame = "Lambda_frame",
     .caption = "AFR table load",
     .address = 216,
     .mask = 0x10,
     .shift = 4,
     .style = S::Combo,
     .items = {"MAP", "Throttle"}},
    {.name = "Lambda_minLoad",
     .tab = T::AFR_Control,
     .frame = "Lambda_Active_frame",
     .caption = "Load limits on",
     .address = 216,
     .mask = 0x10,
     .shift = 4,
     .style = S::Options,
     .items = {"MAP", "Throttle"},
     .option_names = {"Lambda_minLoad_MAP_option", "Lambda_minLoad_Throttle_option"}},
    // Idle settings
    {.name = "Idle_Control",
     .tab = T::Idle,
     .frame = "Idle_frame",
     .caption = "Idle control",
     .address = 215,
     .mask = 0x10,
     .shift = 4,
     .style = S::Options,
     .items = {"Off", "On"},
     .option_names = {"Idle_ControlOff_option", "Idle_ControlON_option"}},
    {.name = "Idle_Control_Ignition",
     .tab = T::Idle,
     .frame = "Idle_Control_frame",
     .caption = "Idle control by",
     .address = 215,
     .mask = 0x60,
     .shift = 5,
     .style = S::Options,
     .items = {"Air valve (PWM2)", "Ignition", "Air valve and ignition"},
     .option_names = {"Idle_Control_Ignition_option_0", "Idle_Control_Ignition_option_1",
                      "Idle_Control_Ignition_option_2"}},
    {.name = "Idle_Ignition",
     .tab = T::Idle,
     .frame = "Idle_Ignition_frame",
     .caption = "Fixed idle ignition",
     .address = 215,
     .mask = 0x80,
     .shift = 7,
     .style = S::Options,
     .items = {"Off", "On"},
     .option_names = {"Idle_IgnitionOff_option", "Idle_IgnitionOn_option"}},
    // Digital inputs
    {.name = "Dig1_function",
     .tab = T::Digital_Inputs,
     .frame = "Dig1_frame",
     .caption = "Digital 1 in function",
     .address = 185,
     .mask = 0x03,
     .shift = 0,
     .style = S::Options,
     .items = {"2nd RPM limit", "Not activated", "Launch control", "Speed sensor input (0-1kHz)"},
     .option_names = {"Dig1_function_0", "Dig1_function_1", "Dig1_function_2", "Dig1_function_3"}},
    {.name = "Dig2_function",
     .tab = T::Digital_Inputs,
     .frame = "Dig2_frame",
     .caption = "Digital 2 in function",
     .address = 182,
     .mask = 0x07,
     .shift = 0,
     .style = S::Options,
     .items = {"2nd RPM limit", "Temporarily semi sequential fuel", "Anti LAG", "Not activated",
               "External activation of PWM2 idle air", "Speed sensor input (0-1kHz)",
               "Fuel long term adaptive On/Off control", "Ignition cut."},
     .option_names = {"Dig2_function_0", "Dig2_function_1", "Dig2_function_2", "Dig2_function_3",
                      "Dig2_function_4", "Dig2_function_5", "Dig2_function_6", "Dig2_function_7"}},
    {.name = "AutoTune_option",
     .tab = T::Digital_Inputs,
     .frame = "Dig2_frame",
     .caption = "Fuel long term adaptive on",
     .address = 185,
     .mask = 0x20,
     .shift = 5,
     .style = S::Check},
    // Fuel acceleration
    {.name = "ae_combo",
     .tab = T::Fuel_Acceleration,
     .frame = "AE_Base_frame",
     .caption = "Base Acc Enrichment on",
     .address = 4,
     .mask = 0x03,
     .shift = 0,
     .style = S::Combo,
     .items = {"Off", "Throttle", "MAP"}},
    {.name = "AR_Enable",
     .tab = T::Fuel_Acceleration,
     .frame = "AE_Frame",
     .caption = "Also retard on AE",
     .address = 4,
     .mask = 0x04,
     .shift = 2,
     .style = S::Check},
    // Development
    {.name = "Box_Mode",
     .tab = T::Development,
     .frame = "Box_Mode_frame",
     .caption = "This box is the",
     .address = 1,
     .mask = 0x08,
     .shift = 3,
     .style = S::Options,
     .items = {"Master", "Slave"},
     .option_names = {"master", "slave"}},
    // Digital outputs
    {.name = "digital_combo_0",
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .caption = "Digital output 1",
     .address = 230,
     .mask = 0xF0,
     .shift = 4,
     .style = S::Combo,
     .source = I::Digital_Function},
    {.name = "digital_combo_1",
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .caption = "Digital output 2",
     .address = 235,
     .mask = 0xF0,
     .shift = 4,
     .style = S::Combo,
     .source = I::Digital_Function},
    {.name = "digital_combo_2",
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .caption = "Digital output 3",
     .address = 240,
     .mask = 0xF0,
     .shift = 4,
     .style = S::Combo,
     .source = I::Digital_Function},
    {.name = "digital_combo_3",
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .caption = "Digital output 4",
     .address = 245,
     .mask = 0xF0,
     .shift = 4,
     .style = S::Combo,
     .source = I::Digital_Function},
    {.name = "Digital_sensor_combo_0",
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .caption = "Sensor of output 1",
     .address = 230,
     .mask = 0x0F,
     .shift = 0,
     .style = S::Combo,
     .source = I::Digital_Sensor},
    {.name = "Digital_sensor_combo_1",
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .caption = "Sensor of output 2",
     .address = 235,
     .mask = 0x0F,
     .shift = 0,
     .style = S::Combo,
     .source = I::Digital_Sensor},
    {.name = "Digital_sensor_combo_2",
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .caption = "Sensor of output 3",
     .address = 240,
     .mask = 0x0F,
     .shift = 0,
     .style = S::Combo,
     .source = I::Digital_Sensor},
    {.name = "Digital_sensor_combo_3",
     .tab = T::Digital_Outputs,
     .frame = "Digital_Output_frame",
     .caption = "Sensor of output 4",
     .address = 245,
     .mask = 0x0F,
     .shift = 0,
     .style = S::Combo,
     .source = I::Digital_Sensor},
};

std::size_t At(int address) {
    return static_cast<std::size_t>(Checked_Address(address));
}

bool Starts_With(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

int Field(const Settings_Image& image, int address, int mask, int shift) {
    return (image.CardByte[At(address)] & mask) >> shift;
}

bool Single_Bit(int mask) {
    return mask != 0 && (mask & (mask - 1)) == 0;
}

const std::string& Need_Of(const Pages_State& pages, int function) {
    static const std::string Both = "both";
    const auto& needs = pages.lists.Digital_Needs;
    return function >= 0 && function < static_cast<int>(needs.size())
               ? needs[static_cast<std::size_t>(function)]
               : Both;
}

} // namespace

std::span<const Page_Choice> Page_Choices() {
    return Choices;
}

const Page_Choice* Find_Page_Choice(std::string_view name) {
    for (const Page_Choice& c : Choices)
        if (name == c.name) return &c;
    return nullptr;
}

std::vector<std::string> Choice_Item_Texts(const Pages_State& pages, const Page_Choice& c) {
    switch (c.source) {
    case I::Pwm_Function:
        return pages.lists.Pwm_Function;
    case I::Pwm_Load:
        return pages.lists.Pwm_Load;
    case I::Digital_Function:
        return pages.lists.Digital_Function;
    case I::Digital_Sensor:
        return pages.lists.Digital_Sensor;
    case I::Fixed:
        break;
    }
    std::vector<std::string> items;
    if (c.style == S::Check) return {"Off", "On"};
    for (const char* item : c.items)
        if (item != nullptr) items.emplace_back(item);
    return items;
}

int Choice_Value(const Settings_Image& image, const Page_Choice& c) {
    return Field(image, c.address, c.mask, c.shift);
}

std::string Choice_Text(const Pages_State& pages, const Settings_Image& image, const Page_Choice& c) {
    int n = Choice_Value(image, c);
    auto items = Choice_Item_Texts(pages, c);
    return n < static_cast<int>(items.size()) ? items[static_cast<std::size_t>(n)] : std::to_string(n);
}

bool Choice_Click(Pages_Context& ctx, std::string_view name, int n, const Choice_Hooks& hooks) {
    const Page_Choice* c = Find_Page_Choice(name);
    if (c == nullptr || n < 0 || ((n << c->shift) & ~c->mask) != 0) return false;
    Proc_Guard guard(ctx.log, std::string(c->name) + " click");
    guard.Step([&] {
        std::size_t a = At(c->address);
        std::uint8_t old = ctx.image.CardByte[a];
        auto wanted = static_cast<std::uint8_t>((old & ~c->mask) | (n << c->shift));
        if (wanted == old) return;
        save_to_undolist(ctx.undo, ctx.image);
        if (Single_Bit(c->mask))
            Set_CardByte_bit(ctx.image, ctx.log, c->address, c->shift, n);
        else
            ctx.image.CardByte[a] = wanted;
        ctx.image.ChangedByte[a] = Changed_Mark;
    });
    // The PWM signal selections decide the tables' loads and the boost mode, the anti-lag
    // input the tabs on show.
    bool tables_follow =
        Starts_With(c->name, "pwm_combo") || std::string_view(c->name) == "Anti_lag_sensor_combo";
    if (tables_follow && hooks.Update_Tabs) guard.Step([&] { hooks.Update_Tabs(); });
    if (tables_follow && hooks.Show_Right_Tabs) guard.Step([&] { hooks.Show_Right_Tabs(); });
    if (hooks.Update_All) guard.Step([&] { hooks.Update_All(); });
    return true;
}

std::vector<Page_Item> Page_Items_In_Order() {
    std::vector<Page_Item> items;
    for (int tab = 0; tab < Settings_Tab_Count; ++tab) {
        for (const Page_Frame& f : Page_Frames()) {
            if (f.tab != tab) continue;
            std::string_view frame = f.name;
            if (frame == "Digital_Output_frame") {
                for (int i = 0; i < 4; ++i) {
                    items.push_back({nullptr, Find_Page_Choice("digital_combo_" + std::to_string(i))});
                    items.push_back({nullptr, Find_Page_Choice("Digital_sensor_combo_" + std::to_string(i))});
                    for (int k = 1; k <= 4; ++k)
                        items.push_back({Find_Page_Param(230 + 5 * i + k), nullptr});
                }
                continue;
            }
            for (const Page_Choice& c : Choices)
                if (frame == c.frame) items.push_back({nullptr, &c});
            for (const Page_Param& p : Page_Params())
                if (frame == p.frame) items.push_back({&p, nullptr});
        }
    }
    return items;
}

int ae_combo_Index(const Settings_Image& image) {
    return Choice_Value(image, *Find_Page_Choice("ae_combo"));
}

int Pwm_Signal(const Settings_Image& image, int output) {
    if (output < 1 || output > 4) return 0;
    int address = output <= 2 ? 186 : 187;
    return output % 2 == 1 ? Field(image, address, 0x0F, 0) : Field(image, address, 0xF0, 4);
}

int Digital_Function(const Settings_Image& image, int output) {
    return Field(image, 230 + 5 * std::clamp(output, 0, 3), 0xF0, 4);
}

int Digital_Sensor(const Settings_Image& image, int output) {
    return Field(image, 230 + 5 * std::clamp(output, 0, 3), 0x0F, 0);
}

int Digital_Sensor_Input(const Settings_Image& image, int output) {
    return std::min(Digital_Sensor(image, output) + 1, Analog_Inputs);
}

Settings_View Show_Right_Settings(const Pages_Context& ctx) {
    const Settings_Image& image = ctx.image;
    Settings_View view;
    // A stand-alone dataset runs the whole engine; an older one only adds fuel and outputs
    // to another system's ignition.
    bool stand_alone = image.DatasetID >= 200;
    for (int t = 0; t < Settings_Tab_Count; ++t) {
        bool all = t != T::Unused;
        bool partial = t == T::PWM_Outputs || t == T::AFR_Control || t == T::Temp_Corrections ||
                       t == T::Limits_Warnings || t == T::Fuel_Acceleration || t == T::Fuel_Settings;
        view.tab_visible[static_cast<std::size_t>(t)] = stand_alone ? all : partial;
    }

    const int dig1 = Choice_Value(image, *Find_Page_Choice("Dig1_function"));
    const int dig2 = Choice_Value(image, *Find_Page_Choice("Dig2_function"));
    const bool als =
        Choice_Value(image, *Find_Page_Choice("Anti_lag_sensor_combo")) != 0 || dig2 == Dig2::Anti_Lag;
    const bool launch = dig1 == Dig1::Launch_Control;
    const bool lambda_on = (image.CardByte[215] & 0x01) != 0;
    const bool narrow = (image.CardByte[215] & 0x02) == 0;
    bool boost = false;
    for (int output = 1; output <= 4; ++output)
        boost = boost || Pwm_Signal(image, output) == 1;

    view.param_visible.set();
    auto show = [&](std::initializer_list<int> addresses, bool visible) {
        for (int a : addresses)
            view.param_visible[At(a)] = visible;
    };
    show({91, 179, 178, 84, 176, 132}, als);
    Set_Idle_Control_visibility(image, view);
    show({226}, narrow);
    show({45}, (image.CardByte[4] & 0x04) != 0);
    for (int i = 0; i < 4; ++i) {
        const std::string& need = Need_Of(ctx.pages, Digital_Function(image, i));
        bool rpm = need == "rpm" || need == "both";
        bool analog = need == "analog" || need == "both";
        int base = 230 + 5 * i;
        show({base + 1, base + 2}, rpm);
        show({base + 3, base + 4}, analog);
        view.sens_visible[static_cast<std::size_t>(i)] = analog;
        view.fan_visible = view.fan_visible || need == "fan";
    }
    view.Narrow_target_visible = narrow;
    view.AutoTune_visible = dig2 == Dig2::Long_Term_Adaptive;
    view.AntiLag_ExtraAir_visible = als;

    view.Description_label[0] = dig1 == Dig1::Rev_Limit_2   ? "2nd RPM limit controlled by Digital 1"
                                : dig2 == Dig2::Rev_Limit_2 ? "2nd RPM limit controlled by Digital2 in"
                                                            : "2nd RPM limit controlled by Coolant";
    view.Description_label[1] = dig2 == Dig2::Pwm_Activation
                                    ? "PWM external activation controlled by Digital 2 in"
                                    : "PWM external activation controlled by Fan";

    auto frame = [&](const char* name, bool visible) { view.frames.emplace_back(name, visible); };
    for (const Page_Frame& f : Page_Frames())
        frame(f.name, true);
    auto set = [&](const char* name, bool visible) {
        for (auto& [n, v] : view.frames)
            if (n == name) v = visible;
    };
    set("frame_Enrichment", stand_alone);
    set("AE_Frame", ae_combo_Index(image) != 0);
    set("Ignition_Setup_frame", stand_alone);
    set("Gearing_Ignition_Cut_Frame", dig2 == Dig2::Ignition_Cut);
    set("PWM_PID_Frame", boost);
    set("Launch_controls_frame", launch);
    set("LaunchALS_Temp_frame", launch || als);
    set("Idle_Control_frame", (image.CardByte[215] & 0x10) != 0);
    set("Idle_AFR", lambda_on);
    set("Lambda_Active_frame", lambda_on);
    set("Speed_Sensor_frame", dig1 == Dig1::Speed_Sensor || dig2 == Dig2::Speed_Sensor);
    set("PWM_Activation_frame", dig2 == Dig2::Pwm_Activation);
    set("Fan_frame", view.fan_visible);
    return view;
}

void Set_Idle_Control_visibility(const Settings_Image& image, Settings_View& view) {
    const bool idle_control = (image.CardByte[215] & 0x10) != 0;
    const int idle_mode = (image.CardByte[215] & 0x60) >> 5;
    const bool idle_ignition = (image.CardByte[215] & 0x80) != 0;
    for (int a : {7, 8, 9, 10})
        view.param_visible[static_cast<std::size_t>(a)] = idle_control;
    view.param_visible[16] = idle_control && idle_mode != 1;
    for (int a : {13, 35})
        view.param_visible[static_cast<std::size_t>(a)] = idle_ignition;
}

bool Frame_Visible(const Settings_View& view, std::string_view frame) {
    for (const auto& [name, visible] : view.frames)
        if (name == frame) return visible;
    return true;
}

} // namespace quorlen
