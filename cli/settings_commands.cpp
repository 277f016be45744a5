#include "cli/settings_commands.h"

#include "cli/cli_tables.h"

#include "core/text.h"
#include "engine/page_choices.h"
#include "files/settings_files.h"

#include <exception>
#include <optional>

namespace quorlen::cli {

namespace {

struct Assignment {
    int address;
    std::string text;
};

struct Settings_Args {
    std::string file;
    std::string out;
    std::string ini;
    std::vector<Assignment> assignments;
};

int Usage_Error(std::FILE* err, const std::string& why) {
    if (!why.empty()) std::fprintf(err, "quorlen-cli: %s\n", why.c_str());
    std::fputs("usage:\n", err);
    std::fputs(Settings_Usage, err);
    return 2;
}

// "21=5.5": an address and the text after the first "=".
std::optional<Assignment> Parse_Assignment(const std::string& arg) {
    std::size_t eq = arg.find('=');
    if (eq == std::string::npos) return std::nullopt;
    auto address = To_Integer(std::string_view(arg).substr(0, eq));
    if (!address || *address < 0 || *address >= Array_Size) return std::nullopt;
    return Assignment{static_cast<int>(*address), arg.substr(eq + 1)};
}

std::optional<Settings_Args> Parse(const std::vector<std::string>& args, bool assignments) {
    Settings_Args a;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        bool has_value = i + 1 < args.size();
        if (assignments && (arg == "-o" || arg == "--out") && has_value) {
            a.out = args[++i];
        } else if (arg == "--ini" && has_value) {
            a.ini = args[++i];
        } else if (a.file.empty() && arg.rfind("-", 0) != 0) {
            a.file = arg;
        } else if (assignments && arg.find('=') != std::string::npos) {
            auto assignment = Parse_Assignment(arg);
            if (!assignment) return std::nullopt;
            a.assignments.push_back(*assignment);
        } else {
            return std::nullopt;
        }
    }
    if (a.file.empty()) return std::nullopt;
    if (assignments && (a.out.empty() || a.assignments.empty())) return std::nullopt;
    return a;
}

// The tables' load leaves the pages their lists and the layout of the file.
Pages_Context Pages(Cli_Tables& loaded) {
    loaded.app.pages.lists = Load_Output_Lists(loaded.app.ini);
    return loaded.app.Pages();
}

} // namespace

int Settings_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    auto a = Parse(args, false);
    if (!a) return Usage_Error(err, "");
    Cli_Tables loaded(err, a->ini);
    if (!loaded.Load(a->file)) return 1;
    Pages_Context ctx = Pages(loaded);
    for (const Page_Item& item : Page_Items_In_Order()) {
        if (item.param != nullptr) {
            const Page_Param& p = *item.param;
            Scroll_Shown shown = Show_Scroll(ctx, p.address);
            std::fprintf(out, "%s\t%s\t%d\t%s\t%s\n", std::string(Settings_Tab_Caption(p.tab)).c_str(),
                         Param_Label(p).c_str(), p.address, shown.text.c_str(), shown.unit.c_str());
        } else {
            const Page_Choice& c = *item.choice;
            std::fprintf(out, "%s\t%s\t%d\t%s\t\n", std::string(Settings_Tab_Caption(c.tab)).c_str(),
                         c.caption, c.address, Choice_Text(ctx.pages, ctx.image, c).c_str());
        }
    }
    loaded.Flush_Diagnostics();
    return 0;
}

int Set_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    auto a = Parse(args, true);
    if (!a) return Usage_Error(err, "");
    for (const Assignment& s : a->assignments)
        if (Find_Page_Param(s.address) == nullptr)
            return Usage_Error(err, "address " + std::to_string(s.address) + " has no slider on the pages");

    Cli_Tables loaded(err, a->ini);
    if (!loaded.Load(a->file)) return 1;
    Pages_Context ctx = Pages(loaded);
    // Every text is checked before the first is set, so a mistyped one changes nothing; each
    // is then read against the pages as the ones before it left them (a sensor choice changes
    // what a limit's number means).
    for (const Assignment& s : a->assignments)
        if (!Position_For_Text(ctx, s.address, s.text))
            return Usage_Error(err,
                               "'" + s.text + "' is not a value of address " + std::to_string(s.address));
    for (const Assignment& s : a->assignments) {
        const Page_Param& p = *Find_Page_Param(s.address);
        int position = *Position_For_Text(ctx, s.address, s.text);
        Scroll_Outcome outcome = Update_Scroll(ctx, p.address, position);
        std::fprintf(out, "%d\t%s\t%s\t%s\n", p.address, Param_Label(p).c_str(), outcome.shown.text.c_str(),
                     outcome.shown.unit.c_str());
        for (const Page_Message& m : outcome.messages)
            std::fprintf(out, "%s\n", m.text.c_str());
    }
    loaded.Flush_Diagnostics();

    App_Context& app = loaded.app;
    app.texts.txt_File_Description = loaded.Comment_To_Save();
    Settings_File_Context files{app.program, app.texts, app.files,      app.image, app.undo,
                                app.ini,     app.log,   loaded.dialogs, {}};
    try {
        Save_Settings_File(files, a->out);
    } catch (const std::exception& e) {
        std::fprintf(err, "%s: %s\n", a->out.c_str(), e.what());
        return 1;
    }
    return 0;
}

} // namespace quorlen::cli
