#include "cli/edit_command.h"

#include "cli/cli_support.h"
#include "cli/cli_tables.h"

#include "core/text.h"
#include "tables/cell_entry.h"
#include "tables/selection_ops.h"

#include <algorithm>
#include <exception>
#include <optional>

namespace quorlen::cli {

namespace {

struct Edit_Op {
    std::string table_name;
    std::string selection;
    std::string operation;
};

struct Edit_Args {
    std::string file;
    std::string out;
    std::string ini;
    std::vector<Edit_Op> ops;
};

std::optional<Edit_Args> Parse(const std::vector<std::string>& args) {
    Edit_Args a;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if ((arg == "-o" || arg == "--out") && i + 1 < args.size()) {
            a.out = args[++i];
        } else if (arg == "--ini" && i + 1 < args.size()) {
            a.ini = args[++i];
        } else if (arg == "--op" && i + 3 < args.size()) {
            a.ops.push_back({args[i + 1], args[i + 2], args[i + 3]});
            i += 3;
        } else if (arg == "--undo" || arg == "--redo") {
            a.ops.push_back({"", "", arg.substr(2)});
        } else if (a.file.empty() && arg.rfind("-", 0) != 0) {
            a.file = arg;
        } else {
            return std::nullopt;
        }
    }
    if (a.file.empty() || a.out.empty() || a.ops.empty()) return std::nullopt;
    return a;
}

std::optional<int> Whole(std::string_view text) {
    auto n = To_Integer(text);
    if (!n || *n < 0 || *n > 1000) return std::nullopt;
    return static_cast<int>(*n);
}

// "r,c" or "i" as one grid position: row and column (a one-dimensional point stands in the
// value column).
std::optional<std::pair<int, int>> Position(std::string_view text, bool main_map) {
    if (!main_map) {
        auto i = Whole(text);
        if (!i) return std::nullopt;
        return std::pair{*i, 2};
    }
    auto comma = text.find(',');
    if (comma == std::string_view::npos) return std::nullopt;
    auto r = Whole(text.substr(0, comma));
    auto c = Whole(text.substr(comma + 1));
    if (!r || !c) return std::nullopt;
    return std::pair{*r, *c};
}

std::optional<Grid_Selection> Selection(const std::string& text, bool main_map, Grid_Shape shape) {
    auto colon = text.find(':');
    auto first = Position(std::string_view(text).substr(0, colon), main_map);
    auto last =
        colon == std::string::npos ? first : Position(std::string_view(text).substr(colon + 1), main_map);
    if (!first || !last) return std::nullopt;
    for (auto [r, c] : {*first, *last})
        if (r < 1 || r >= shape.rows || c < 1 || c >= shape.cols) return std::nullopt;
    return Grid_Selection{first->first, first->second, last->first, last->second};
}

// The key code of a character of type=TEXT, or 0.
int Key_Of(char ch) {
    if (ch >= '0' && ch <= '9') return ch;
    switch (ch) {
    case ',':
        return Key::Comma;
    case '.':
        return Key::Point;
    case '-':
        return Key::Minus;
    case '<':
        return Key::Back;
    case 'P':
    case 'p':
        return Key::P;
    case 'O':
    case 'o':
        return Key::O;
    case 'A':
    case 'a':
        return Key::A;
    case 'Z':
    case 'z':
        return Key::Z;
    default:
        return 0;
    }
}

using Main_Handler = Grid_Selection (*)(Tables_Context&, const Grid_Selection&, const Edit_Hooks&);
using One_D_Handler = void (*)(Tables_Context&, const Grid_Selection&, const Edit_Hooks&);

struct Named_Main {
    const char* name;
    Main_Handler handler;
};

struct Named_One_D {
    const char* name;
    One_D_Handler handler;
};

constexpr Named_Main Main_Ops[] = {
    {"plus", plus_3d_Click},
    {"minus", minus_3D_Click},
    {"steep-load", steep_Load_3D_Click},
    {"steep-load-b", steep_Load_3D_B_Click},
    {"steep-rpm", steep_RPM_3D_Click},
    {"steep-rpm-l", steep_RPM_3D_L_Click},
    {"flat-load", flat_Load_3D_Click},
    {"flat-load-b", flat_Load_3D_B_Click},
    {"flat-rpm", flat_RPM_3D_Click},
    {"flat-rpm-l", flat_RPM_3D_L_Click},
    {"even-cols", Even_Cols_cmd_Click},
    {"even-rows", Even_Rows_cmd_Click},
};

constexpr Named_One_D One_D_Ops[] = {
    {"plus", plus_Click}, {"minus", minus_Click},     {"steep", steep_Click},
    {"flat", flat_Click}, {"steep-l", steep_L_Click}, {"flat-l", flat_L_Click},
};

bool Op_Fits(Table_Id id, const std::string& op) {
    bool main_map = id == Table_Id::Fuel_3D || id == Table_Id::Ignition_3D;
    for (const char* prefix : {"scale=", "set="})
        if (op.rfind(prefix, 0) == 0) return true;
    if (op.rfind("type=", 0) == 0)
        return op.size() > 5 &&
               std::all_of(op.begin() + 5, op.end(), [](char ch) { return Key_Of(ch) != 0; });
    if (main_map)
        return std::any_of(std::begin(Main_Ops), std::end(Main_Ops), [&](auto& m) { return op == m.name; });
    return std::any_of(std::begin(One_D_Ops), std::end(One_D_Ops), [&](auto& o) { return op == o.name; });
}

// Runs one operation as its button or keys would (Op_Fits has passed it).
void Run_Op(Tables_Context& ctx, Table_Id id, Grid_Selection sel, const std::string& op, std::FILE* out) {
    bool main_map = id == Table_Id::Fuel_3D || id == Table_Id::Ignition_3D;
    Show_Table(ctx.tables, id);
    Grid_RowColChange(ctx.tables);
    Edit_Hooks hooks;
    Edit_State& edit = ctx.tables.edit;
    auto value = [&](std::string_view prefix) -> std::optional<std::string> {
        if (op.rfind(prefix, 0) != 0) return std::nullopt;
        return op.substr(prefix.size());
    };
    if (auto p = value("scale=")) {
        (main_map ? edit.scale_table_text_3D : edit.scale_table_text) = *p;
        if (main_map)
            scale_table_3D_Click(ctx, sel, hooks);
        else
            scale_table_Click(ctx, sel, hooks);
        return;
    }
    if (auto v = value("set=")) {
        std::string& text = main_map ? edit.set_table_text_3D : edit.set_table_text;
        text = *v;
        if (main_map)
            set_table_3D_Click(ctx, sel, hooks);
        else
            set_table_Click(ctx, sel, hooks);
        if (text != *v) std::fprintf(out, "set text became \"%s\"\n", text.c_str());
        return;
    }
    if (auto text = value("type=")) {
        for (char ch : *text) {
            if (id == Table_Id::Fuel_3D)
                Fuel_3D_Grid_KeyDown(ctx, sel, Key_Of(ch), hooks);
            else if (id == Table_Id::Ignition_3D)
                Ignition_3D_Grid_KeyDown(ctx, sel, Key_Of(ch), hooks);
            else
                One_D_Grid_KeyDown(ctx, id, sel, Key_Of(ch), hooks);
        }
        return;
    }
    for (const Named_Main& m : Main_Ops)
        if (main_map && op == m.name) m.handler(ctx, sel, hooks);
    for (const Named_One_D& o : One_D_Ops)
        if (!main_map && op == o.name) o.handler(ctx, sel, hooks);
}

bool Is_Step(const Edit_Op& op) {
    return op.table_name.empty();
}

int Usage_Error(std::FILE* err, const std::string& why) {
    if (!why.empty()) std::fprintf(err, "quorlen-cli edit: %s\n", why.c_str());
    std::fputs("usage:\n", err);
    std::fputs(Edit_Usage, err);
    return 2;
}

} // namespace

int Edit_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    auto a = Parse(args);
    if (!a) return Usage_Error(err, "");
    for (const Edit_Op& op : a->ops) {
        if (Is_Step(op)) continue;
        auto id = Table_By_Name(op.table_name);
        if (!id || *id == Table_Id::Pwm2_Fuel)
            return Usage_Error(err, "no table '" + op.table_name + "' to edit");
    }

    Cli_Tables loaded(err, a->ini);
    if (!loaded.Load(a->file)) return 1;
    Tables_Context ctx = loaded.Context();
    Settings_Image& image = loaded.app.image;

    // Every operation is checked before the first runs, so a mistyped one changes nothing.
    std::vector<Grid_Selection> selections;
    for (const Edit_Op& op : a->ops) {
        if (Is_Step(op)) {
            selections.emplace_back();
            continue;
        }
        Table_Id id = *Table_By_Name(op.table_name);
        bool main_map = id == Table_Id::Fuel_3D || id == Table_Id::Ignition_3D;
        auto sel = Selection(op.selection, main_map, Grid_Size(ctx, id));
        if (!sel) return Usage_Error(err, "selection '" + op.selection + "' is not on " + op.table_name);
        if (!Op_Fits(id, op.operation))
            return Usage_Error(err, "'" + op.operation + "' is not an operation of " + op.table_name);
        selections.push_back(*sel);
    }
    for (std::size_t k = 0; k < a->ops.size(); ++k) {
        const Edit_Op& op = a->ops[k];
        auto before = image.CardByte;
        const auto update_all = [&] { Update_All(ctx); };
        if (op.operation == "undo")
            edit_undo_Click(loaded.app.undo, image, update_all);
        else if (op.operation == "redo")
            edit_redo_Click(loaded.app.undo, image, update_all);
        else
            Run_Op(ctx, *Table_By_Name(op.table_name), selections[k], op.operation, out);
        int changed = 0;
        for (int i = 0; i < Image_Size; ++i)
            if (image.CardByte[static_cast<std::size_t>(i)] != before[static_cast<std::size_t>(i)]) ++changed;
        if (Is_Step(op))
            std::fprintf(out, "%s: %d bytes changed\n", op.operation.c_str(), changed);
        else
            std::fprintf(out, "%s %s %s: %d bytes changed\n", op.table_name.c_str(), op.selection.c_str(),
                         op.operation.c_str(), changed);
    }
    loaded.Flush_Diagnostics();

    return loaded.Save(a->out) ? 0 : 1;
}

} // namespace quorlen::cli
