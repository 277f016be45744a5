#include "cli/show_command.h"

#include "cli/cli_tables.h"

#include "app/app_context.h"
#include "core/text.h"

#include <optional>

namespace quorlen::cli {

namespace {

struct Show_Args {
    std::string file;
    std::string table;
    std::optional<int> param;
    std::string ini;
};

std::optional<Show_Args> Parse(const std::vector<std::string>& args) {
    Show_Args a;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        bool has_value = i + 1 < args.size();
        if (arg == "--table" && has_value) {
            a.table = args[++i];
        } else if (arg == "--param" && has_value) {
            auto n = To_Integer(args[++i]);
            if (!n || *n < 0 || *n >= Array_Size) return std::nullopt;
            a.param = static_cast<int>(*n);
        } else if (arg == "--ini" && has_value) {
            a.ini = args[++i];
        } else if (a.file.empty() && arg.rfind("--", 0) != 0) {
            a.file = arg;
        } else {
            return std::nullopt;
        }
    }
    if (a.file.empty() || a.table.empty() == !a.param.has_value()) return std::nullopt;
    return a;
}

} // namespace

int Show_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    auto a = Parse(args);
    std::optional<Table_Id> table;
    if (a && !a->table.empty()) table = Table_By_Name(a->table);
    if (!a || (!a->table.empty() && !table)) {
        std::fputs("usage:\n", err);
        std::fputs(Show_Usage, err);
        return 2;
    }

    Cli_Tables loaded(err, a->ini);
    if (!loaded.Load(a->file)) return 1;
    loaded.Flush_Diagnostics();
    App_Context& app = loaded.app;
    Tables_Context ctx = loaded.Context();

    if (table) {
        Grid_Shape shape = Grid_Size(ctx, *table);
        for (int r = 0; r < shape.rows; ++r) {
            for (int c = 0; c < shape.cols; ++c) {
                if (c > 0) std::fputc('\t', out);
                std::fputs(Grid_Text(ctx, *table, r, c).c_str(), out);
            }
            std::fputc('\n', out);
        }
        return 0;
    }
    int address = *a->param;
    if (address == 92 || address == 94 || address == 96 || address == 98 ||
        Find_Scaling_Row(address) != nullptr ||
        app.image.ScrollFactor[static_cast<std::size_t>(address)] != 0) {
        Scroll_Shown shown = Main_Scroll_Text(ctx, address);
        std::fprintf(out, "%s\t%s\n", shown.text.c_str(), shown.unit.c_str());
    } else {
        std::fprintf(err, "address %d has no scaling of its own: the byte is shown\n", address);
        std::fprintf(out, "%d\t\n", app.image.CardByte[static_cast<std::size_t>(address)]);
    }
    return 0;
}

} // namespace quorlen::cli
