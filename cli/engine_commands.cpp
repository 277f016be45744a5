#include "cli/engine_commands.h"

#include "cli/cli_options.h"
#include "cli/cli_support.h"
#include "cli/cli_tables.h"

#include "app/startup.h"
#include "app/tune_tools.h"
#include "core/text.h"

#include <optional>

namespace quorlen::cli {

namespace {

int Usage(std::FILE* err, const char* usage) {
    std::fputs("usage:\n", err);
    std::fputs(usage, err);
    return 2;
}

// A whole number from `low` to `high`, or nothing.
std::optional<int> Number(const std::string& text, int low, int high) {
    auto n = To_Integer(text);
    if (!n || *n < low || *n > high) return std::nullopt;
    return static_cast<int>(*n);
}

void Print_Fields(std::FILE* out, const App_Context& app, const Engine_Config_Frame& frame) {
    for (const auto& [name, value] : Engine_Frame_Fields(frame))
        std::fprintf(out, "%s\t%s\n", name.c_str(), value.c_str());
    std::string label = app.engine.Main_Fuel_label;
    if (auto p = label.find("\r\n"); p != std::string::npos) label.replace(p, 2, " ");
    std::fprintf(out, "Fuel_Mode_label\t%s\n", label.c_str());
}

std::string Preset_Line(const Preset_Row& row, int n) {
    return std::to_string(n) + "\t" + row.dataset + "\t" + row.name;
}

} // namespace

int Engine_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    auto o = Parse_Options(args, {"--ini", "--select", "-o"}, {"--list"}, err);
    if (!o) return 2;
    const bool list = o->Has("--list");
    const bool select = o->Has("--select");
    if (list == !o->file.empty() || (list && (select || o->Has("-o"))) || select != o->Has("-o"))
        return Usage(err, QUORLEN_CLI_ENGINE_USAGE);
    std::optional<int> item;
    if (select && !(item = Number(o->Value("--select"), 1, Engine_Combo_Count)))
        return Usage(err, QUORLEN_CLI_ENGINE_USAGE);

    Cli_Tables loaded(err, o->Value("--ini"));
    App_Context& app = loaded.app;
    if (!loaded.Ini_Ok()) return 1;
    if (list) {
        Init_Engine_Config(app);
        for (int i = 0; i < Engine_Layouts; ++i)
            std::fprintf(out, "%s\n", Engine_Combo_Item(app.engine.Engine_Config_Tab, i).c_str());
        return 0;
    }
    if (!loaded.Load(o->file)) return 1;
    Init_Engine_Config(app);
    Engine_Config_Frame frame;
    Engine_Config_Context ctx = Engine_Context(app, frame, [&] { loaded.Take_Image(); });
    Fill_Engine_setup_combo(ctx);
    Show_Engine_Config_Of_Image(ctx);
    if (select) Engine_setup_combo_Click(ctx, *item - 1);
    loaded.Flush_Diagnostics();
    Print_Fields(out, app, frame);
    if (select && !loaded.Save(o->Value("-o"))) return 1;
    return 0;
}

int Preset_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    auto o = Parse_Options(args, {"--ini", "--show", "--apply", "-o"}, {"--list"}, err);
    if (!o) return 2;
    const bool list = o->Has("--list");
    const bool show = o->Has("--show");
    const bool apply = o->Has("--apply");
    if (list + show + apply != 1 || list == !o->file.empty() || apply != o->Has("-o"))
        return Usage(err, QUORLEN_CLI_PRESET_USAGE);

    Cli_Tables loaded(err, o->Value("--ini"));
    App_Context& app = loaded.app;
    if (!loaded.Ini_Ok()) return 1;
    {
        Proc_Guard guard(app.log, "Init ini file");
        Load_Presets(app, guard);
    }
    const int count = static_cast<int>(app.PresetList.size());
    if (list) {
        for (int n = 0; n < count; ++n)
            std::fprintf(out, "%s\n",
                         Preset_Line(app.PresetList[static_cast<std::size_t>(n)], n + 1).c_str());
        return 0;
    }
    auto number = Number(o->Value(show ? "--show" : "--apply"), 1, count);
    if (!number) {
        std::fprintf(err, "quorlen-cli preset: the ini file has presets 1 to %d\n", count);
        return 2;
    }
    if (!loaded.Load(o->file)) return 1;
    const int n = *number - 1;
    std::fputs(Lines_Of(Show_Preset_Changes(app, n)).c_str(), out);
    if (show) return 0;
    Apply_User_Preset(app, n, [&] { loaded.Take_Image(); });
    loaded.Flush_Diagnostics();
    return loaded.Save(o->Value("-o")) ? 0 : 1;
}

} // namespace quorlen::cli
