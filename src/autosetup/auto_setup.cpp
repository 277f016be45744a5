#include "autosetup/auto_setup.h"

#include "autosetup/generator_math.h"
#include "core/proc_guard.h"
#include "core/text.h"
#include "tables/selection_ops.h"

#include <array>
#include <optional>

namespace quorlen {

namespace {

Map_Axes Axes_Of(const Tables_Context& ctx, Table_Id id, const Map_Block& block) {
    Map_Axes axes;
    for (int r = 1; r <= block.rows; ++r)
        axes.load.push_back(Grid_Text(ctx, id, r, 0));
    for (int c = 1; c <= block.cols; ++c)
        axes.rpm.push_back(Grid_Text(ctx, id, 0, c));
    return axes;
}

// Works the map out whole first, so that an input that makes the arithmetic fail leaves the
// image as it was; then writes it as one edit.
Generate_Outcome Generate(Auto_Setup_Context& ctx, const Map_Block& block, const char* procedure,
                          const char* what,
                          const std::function<std::optional<std::vector<std::uint8_t>>()>& work,
                          const std::function<void()>& update_all) {
    Generate_Outcome out;
    std::optional<std::vector<std::uint8_t>> cells;
    {
        Proc_Guard guard(ctx.tables.log, procedure);
        try {
            cells = work();
        } catch (const Generator_Fault& e) {
            guard.Fail(e.what());
            out.message =
                std::string("The ") + what + " map was not generated: " + e.what() + " - " + e.hint() + ".";
            return out;
        } catch (const std::exception& e) {
            guard.Fail(e.what());
            out.message = std::string("The ") + what + " map was not generated: " + e.what() + ".";
            return out;
        }
    }
    if (!cells) {
        out.message =
            std::string("The ") + what + " map is left as it was: its load is neither MAP nor throttle.";
        return out;
    }
    Settings_Image& image = ctx.tables.image;
    for (int i = 0; i < static_cast<int>(cells->size()); ++i)
        if (image.CardByte[static_cast<std::size_t>(block.Start() + i)] !=
            (*cells)[static_cast<std::size_t>(i)])
            ++out.changed;
    if (out.changed > 0) {
        save_to_undolist(ctx.undo, image);
        for (int i = 0; i < static_cast<int>(cells->size()); ++i) {
            const std::uint8_t b = (*cells)[static_cast<std::size_t>(i)];
            if (image.CardByte[static_cast<std::size_t>(block.Start() + i)] != b)
                Put_Byte(image, block.Start() + i, b);
        }
    }
    out.made = true;
    out.message =
        std::string("The ") + what + " map is generated: " + std::to_string(out.changed) + " cells changed.";
    if (update_all) update_all();
    return out;
}

const Fuel_Box Fuel_Box_Table[] = {
    {"FuelInjectorSize_txt", "Fuel injector size [cc/min] @ 3bar", &Auto_Fuel_Inputs::FuelInjectorSize_txt,
     false},
    {"NumberOfInjectors_txt", "Number of fuel injectors", &Auto_Fuel_Inputs::NumberOfInjectors_txt, false},
    {"Cylinder_volume_txt", "Total engine cylinder volume [cc]", &Auto_Fuel_Inputs::Cylinder_volume_txt,
     true},
    {"FuelP_txt", "Fuel pressure [bar]", &Auto_Fuel_Inputs::FuelP_txt, false},
    {"InjectorOffset_txt", "Injector offset time [ms]", &Auto_Fuel_Inputs::InjectorOffset_txt, false},
    {"max_MAP_txt", "Estimated maximal MAP [bar]", &Auto_Fuel_Inputs::max_MAP_txt, true},
    {"idle_MAP_txt", "Lowest MAP [bar]", &Auto_Fuel_Inputs::idle_MAP_txt, false},
    {"lambda_txt", "Desired lambda", &Auto_Fuel_Inputs::lambda_txt, false},
};

const Ignition_Box Ignition_Box_Table[] = {
    {"Ign_atm_maxrpm_txt", &Auto_Ignition_Inputs::Ign_atm_maxrpm_txt},
    {"Ign_atm_idle_txt", &Auto_Ignition_Inputs::Ign_atm_idle_txt},
    {"Ign_retard_txt", &Auto_Ignition_Inputs::Ign_retard_txt},
    {"Ign_advance_txt", &Auto_Ignition_Inputs::Ign_advance_txt},
};

// "MaxRPM_txt(3)" or "MaxRPM_txt3" as 3, for the array named `array`.
std::optional<std::size_t> Array_Index(std::string_view name, std::string_view array) {
    if (name.substr(0, array.size()) != array) return std::nullopt;
    std::string_view rest = name.substr(array.size());
    if (rest.size() == 3 && rest.front() == '(' && rest.back() == ')') rest = rest.substr(1, 1);
    if (rest.size() != 1 || rest[0] < '0' || rest[0] >= '0' + Speed_Points) return std::nullopt;
    return static_cast<std::size_t>(rest[0] - '0');
}

} // namespace

void Update_Setup_Figures(Auto_Setup_Context& ctx) {
    Update_Air_hp_label(ctx.form.fuel, ctx.tables.log);
    Update_Fuel_hp_label(ctx.form.fuel, ctx.engine.Sequential_Fuel, ctx.tables.log);
}

bool Auto_Setup_Follow_Image(Auto_Setup_Context& ctx) {
    bool changed = false;
    if (ctx.engine.Sequential_Fuel != ctx.form.fuel.Sequential_Fuel) {
        Update_Fuel_hp_label(ctx.form.fuel, ctx.engine.Sequential_Fuel, ctx.tables.log);
        changed = true;
    }
    const int load = ctx.tables.tables.loads.IgnLoadSensor;
    if (load != ctx.form.ignition.Captions_Load) {
        const Ignition_Captions before = ctx.form.ignition.captions;
        Update_Ignition_maxload_label(ctx.form.ignition, load);
        changed = changed || before != ctx.form.ignition.captions;
    }
    return changed;
}

Generate_Outcome Generate_Autofuel_cmd(Auto_Setup_Context& ctx, const std::function<void()>& update_all) {
    Auto_Fuel& fuel = ctx.form.fuel;
    Update_Setup_Figures(ctx);
    Comma_To_Point(fuel.in.InjectorOffset_txt);
    const Map_Block block = Fuel_Block(ctx.tables);
    const Map_Axes axes = Axes_Of(ctx.tables, Table_Id::Fuel_3D, block);
    return Generate(
        ctx, block, "Generate Autofuel cmd ", "fuel",
        [&] { return std::optional<std::vector<std::uint8_t>>(Autofuel_Cells(fuel, axes)); }, update_all);
}

Generate_Outcome Generate_Autoignition_cmd(Auto_Setup_Context& ctx, const std::function<void()>& update_all) {
    const Map_Block block = Ign_Block(ctx.tables);
    const Map_Axes axes = Axes_Of(ctx.tables, Table_Id::Ignition_3D, block);
    const int load = ctx.tables.tables.loads.IgnLoadSensor;
    const std::string top = ctx.form.fuel.in.MaxRPM_txt[Top_Point];
    return Generate(
        ctx, block, "Generate Autoignition cmd ", "ignition",
        [&] { return Autoignition_Cells(ctx.form.ignition, load, top, axes); }, update_all);
}

std::span<const Fuel_Box> Fuel_Boxes() {
    return Fuel_Box_Table;
}

std::span<const Ignition_Box> Ignition_Boxes() {
    return Ignition_Box_Table;
}

bool Set_Fuel_Input(Auto_Fuel_Inputs& in, std::string_view name, const std::string& value) {
    for (const Fuel_Box& box : Fuel_Box_Table) {
        if (name == box.name) {
            in.*box.text = value;
            return true;
        }
    }
    if (auto k = Array_Index(name, "MaxRPM_txt")) {
        in.MaxRPM_txt[*k] = value;
        return true;
    }
    if (auto k = Array_Index(name, "Volume_Efficiency_txt")) {
        in.Volume_Efficiency_txt[*k] = value;
        return true;
    }
    if (name == "FuelType_option") {
        if (Equal_No_Case(value, "Petrol") || value == "0")
            in.FuelType_option = Petrol;
        else if (Equal_No_Case(value, "E85") || value == "1")
            in.FuelType_option = E85;
        else
            return false;
        return true;
    }
    return false;
}

bool Set_Ignition_Input(Auto_Ignition_Inputs& in, std::string_view name, const std::string& value) {
    for (const Ignition_Box& box : Ignition_Box_Table) {
        if (name == box.name) {
            in.*box.text = value;
            return true;
        }
    }
    return false;
}

} // namespace quorlen
