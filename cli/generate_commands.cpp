#include "cli/generate_commands.h"

#include "cli/cli_tables.h"

#include "app/tune_tools.h"

#include <optional>

namespace quorlen::cli {

namespace {

struct Generate_Args {
    std::string file, out, ini;
    std::vector<std::pair<std::string, std::string>> fuel, ignition;
    bool run_fuel = true;
    bool run_ignition = true;
};

int Usage_Error(std::FILE* err, const std::string& why) {
    if (!why.empty()) std::fprintf(err, "quorlen-cli generate: %s\n", why.c_str());
    std::fputs("usage:\n" QUORLEN_CLI_GENERATE_USAGE, err);
    return 2;
}

// "--fuel A=1 B=2 --fuel C=3": every KEY=VALUE after a --fuel or --ignition belongs to it.
std::optional<Generate_Args> Parse(const std::vector<std::string>& args, std::string& why) {
    Generate_Args a;
    std::vector<std::pair<std::string, std::string>>* group = nullptr;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool has_value = i + 1 < args.size();
        if (arg == "--fuel" || arg == "--ignition") {
            group = arg == "--fuel" ? &a.fuel : &a.ignition;
            continue;
        }
        if ((arg == "-o" || arg == "--ini" || arg == "--only") && has_value) {
            group = nullptr;
            const std::string& value = args[++i];
            if (arg == "-o") {
                a.out = value;
            } else if (arg == "--ini") {
                a.ini = value;
            } else if (value == "fuel" || value == "ignition") {
                a.run_fuel = value == "fuel";
                a.run_ignition = !a.run_fuel;
            } else {
                why = "--only takes fuel or ignition";
                return std::nullopt;
            }
            continue;
        }
        const std::size_t eq = arg.find('=');
        if (group != nullptr && eq != std::string::npos && arg[0] != '-') {
            group->emplace_back(arg.substr(0, eq), arg.substr(eq + 1));
            continue;
        }
        if (a.file.empty() && arg[0] != '-') {
            a.file = arg;
            continue;
        }
        why = "unexpected '" + arg + "'";
        return std::nullopt;
    }
    if (a.file.empty() || a.out.empty()) {
        why = "a settings file and -o OUT are needed";
        return std::nullopt;
    }
    return a;
}

void Print_Pair(std::FILE* out, const std::string& caption, const std::string& value) {
    if (!caption.empty() || !value.empty()) std::fprintf(out, "%s%s\n", caption.c_str(), value.c_str());
}

void Print_Fuel(std::FILE* out, const App_Context& app) {
    const Auto_Fuel_Labels& l = app.autosetup.fuel.labels;
    Print_Pair(out, l.Air_hp_label[0], l.Air_hp_label[1]);
    Print_Pair(out, l.Fuel_hp_label[0], l.Fuel_hp_label[1]);
    Print_Pair(out, l.Max_fuel_lable[0], l.Max_fuel_lable[1]);
    Print_Pair(out, l.Under_fuel_lable[0], l.Under_fuel_lable[1]);
    Print_Pair(out, l.Max_fuel_lable[2], l.Max_fuel_lable[3]);
    Print_Pair(out, app.engine.Setup_Fuel_label, "");
}

void Print_Ignition(std::FILE* out, const App_Context& app) {
    const Auto_Ignition& ign = app.autosetup.ignition;
    for (std::size_t k = 0; k < ign.captions.size(); ++k)
        if (!ign.captions[k].empty())
            std::fprintf(out, "%s\t%s\n", ign.captions[k].c_str(),
                         (ign.in.*Ignition_Boxes()[k].text).c_str());
}

int Keys(std::FILE* out) {
    const Auto_Setup_State form;
    for (const Fuel_Box& box : Fuel_Boxes())
        std::fprintf(out, "--fuel %s\t%s\t%s\n", box.name, (form.fuel.in.*box.text).c_str(), box.caption);
    std::fprintf(out, "--fuel FuelType_option\tPetrol\tPetrol or E85\n");
    for (int k = 0; k < Speed_Points; ++k) {
        const auto i = static_cast<std::size_t>(k);
        std::fprintf(out, "--fuel MaxRPM_txt(%d)\t%s\tRPM %s\n", k, form.fuel.in.MaxRPM_txt[i].c_str(),
                     Speed_Point_Caption[k]);
        std::fprintf(out, "--fuel Volume_Efficiency_txt(%d)\t%s\tVolumetric efficiency [%%] at that RPM\n", k,
                     form.fuel.in.Volume_Efficiency_txt[i].c_str());
    }
    Auto_Ignition captions;
    Update_Ignition_maxload_label(captions, Ign_Load_MAP);
    for (std::size_t k = 0; k < Ignition_Boxes().size(); ++k)
        std::fprintf(out, "--ignition %s\t%s\t%s\n", Ignition_Boxes()[k].name,
                     (form.ignition.in.*Ignition_Boxes()[k].text).c_str(), captions.captions[k].c_str());
    return 0;
}

} // namespace

int Generate_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    if (args.size() == 2 && args[1] == "--keys") return Keys(out);
    std::string why;
    auto a = Parse(args, why);
    if (!a) return Usage_Error(err, why);

    Cli_Tables loaded(err, a->ini);
    App_Context& app = loaded.app;
    Auto_Setup_State& form = app.autosetup;
    for (const auto& [key, value] : a->fuel)
        if (!Set_Fuel_Input(form.fuel.in, key, value))
            return Usage_Error(err, "the fuel frame has no box '" + key + "' taking '" + value + "'");
    for (const auto& [key, value] : a->ignition)
        if (!Set_Ignition_Input(form.ignition.in, key, value))
            return Usage_Error(err, "the ignition frame has no box '" + key + "'");
    if (!loaded.Load(a->file)) return 1;
    Init_Engine_Config(app);

    Auto_Setup_Context ctx = app.Auto_Setup(loaded.dialogs);
    Update_Setup_Figures(ctx);
    Update_Ignition_maxload_label(form.ignition, app.tables.loads.IgnLoadSensor);
    auto update_all = [&] {
        Tables_Context tables = loaded.Context();
        Update_All(tables);
    };
    bool failed = false;
    if (a->run_fuel) {
        Generate_Outcome made = Generate_Autofuel_cmd(ctx, update_all);
        Print_Fuel(out, app);
        std::fprintf(made.made ? out : err, "%s\n", made.message.c_str());
        failed = !made.made;
    } else {
        Print_Fuel(out, app);
    }
    if (a->run_ignition) {
        Generate_Outcome made = Generate_Autoignition_cmd(ctx, update_all);
        Print_Ignition(out, app);
        std::fprintf(made.made ? out : err, "%s\n", made.message.c_str());
        failed = failed || !made.made;
    }
    loaded.Flush_Diagnostics();
    if (failed) return 1;
    return loaded.Save(a->out) ? 0 : 1;
}

} // namespace quorlen::cli
