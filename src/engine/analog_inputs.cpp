#include "engine/analog_inputs.h"

#include "core/proc_guard.h"
#include "engine/page_choices.h"
#include "tables/table_catalogue.h"

namespace quorlen {

namespace {

constexpr int Always_Kept[] = {177, 212, 171, 172, 30};
constexpr int Lambda_Load_Points[] = {96, 98};

} // namespace

std::vector<int> Physical_Addresses(const Settings_Image& image, int input) {
    std::vector<int> addresses;
    if (input != Coolant_Input) return addresses;
    if (Read_Load_Selections(image).LambdaLoadSensor == input)
        addresses.insert(addresses.end(), std::begin(Lambda_Load_Points), std::end(Lambda_Load_Points));
    for (int output = 0; output < 4; ++output) {
        if (Digital_Sensor_Input(image, output) != input) continue;
        addresses.push_back(233 + 5 * output);
        addresses.push_back(234 + 5 * output);
    }
    addresses.insert(addresses.end(), std::begin(Always_Kept), std::end(Always_Kept));
    return addresses;
}

std::vector<std::string> Physical_Map_Messages(const Settings_Image& image, int input) {
    std::vector<std::string> messages;
    if (input != Coolant_Input) return messages;
    for (int output = 1; output <= 4; ++output)
        if (Pwm_Signal(image, output) == input)
            messages.push_back("Check PWM" + std::to_string(output) + " map. Map is changed");
    return messages;
}

void Remember_Physical_Values(Analog_Choice_Context& ctx, int input) {
    int s = ctx.sensors.Sensor_Of_Input(input);
    for (int a : Physical_Addresses(ctx.image, input)) {
        auto i = static_cast<std::size_t>(a);
        if (auto value = Forward_Sensor_Value(ctx.sensors.table, s, ctx.image.CardByte[i]))
            ctx.image.CardValue[i] = *value;
    }
}

void Keep_Physical_sensorvalue(Analog_Choice_Context& ctx, int input) {
    Proc_Guard guard(ctx.log, "Keep Physical sensorvalue");
    for (const std::string& message : Physical_Map_Messages(ctx.image, input))
        ctx.dialogs.Inform(message);
    int s = ctx.sensors.Sensor_Of_Input(input);
    for (int a : Physical_Addresses(ctx.image, input)) {
        guard.Step([&] {
            auto i = static_cast<std::size_t>(a);
            auto raw = Reversed_Sensor_Value(ctx.sensors.table, s, ctx.image.CardValue[i]);
            if (!raw) return;
            std::uint8_t b = byte_chk(*raw);
            if (ctx.image.CardByte[i] != b) ctx.image.ChangedByte[i] = Changed_Mark;
            ctx.image.CardByte[i] = b;
        });
    }
}

void Sensor_Choice_Click(Analog_Choice_Context& ctx, int input, int list_index, Analog_Hooks hooks) {
    const Analog_Selection& in = ctx.sensors.inputs;
    if (in.Analog_Init_Busy || input < 1 || input > Analog_Inputs) return;
    if (byte_chk(list_index) == in.An_Sel[static_cast<std::size_t>(input)]) return;
    save_to_undolist(ctx.undo, ctx.image);
    Remember_Physical_Values(ctx, input);
    hooks.Keep_Physical_sensorvalue = [&ctx](int changed) { Keep_Physical_sensorvalue(ctx, changed); };
    Analog_Context analog{ctx.sensors, ctx.image, ctx.ini, ctx.texts, ctx.log};
    AN_Combo_Click(analog, input, list_index, hooks);
}

} // namespace quorlen
