#include "cli/transform_commands.h"

#include "cli/cli_tables.h"

#include "core/text.h"
#include "engine/axis_transform.h"

#include <optional>

namespace quorlen::cli {

namespace {

struct Transform_Args {
    std::string file;
    std::string out;
    std::string ini;
    std::optional<Map_Head> head;
    std::string size;
    std::optional<int> rpm_scroll;
    std::optional<int> map_scroll;
};

std::optional<int> Scroll(const std::string& text) {
    auto n = To_Integer(text);
    if (!n || *n < 0 || *n > Resolution_Scroll_Max) return std::nullopt;
    return static_cast<int>(*n);
}

std::optional<Transform_Args> Parse(const std::vector<std::string>& args) {
    Transform_Args a;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        bool has_value = i + 1 < args.size();
        if ((arg == "-o" || arg == "--out") && has_value) {
            a.out = args[++i];
        } else if (arg == "--ini" && has_value) {
            a.ini = args[++i];
        } else if ((arg == "--fuel-size" || arg == "--ign-size") && has_value && !a.head) {
            a.head = arg == "--fuel-size" ? Map_Head::Fuel : Map_Head::Ignition;
            a.size = args[++i];
        } else if (arg == "--rpm-scroll" && has_value) {
            if (!(a.rpm_scroll = Scroll(args[++i]))) return std::nullopt;
        } else if (arg == "--map-scroll" && has_value) {
            if (!(a.map_scroll = Scroll(args[++i]))) return std::nullopt;
        } else if (a.file.empty() && arg.rfind("-", 0) != 0) {
            a.file = arg;
        } else {
            return std::nullopt;
        }
    }
    if (a.file.empty() || a.out.empty() || !a.head) return std::nullopt;
    return a;
}

// The place of a shape in its list: given as the place itself, or as "21x16".
std::optional<int> Size_Index(Map_Head head, const std::string& text) {
    auto sizes = head == Map_Head::Fuel ? Fuel_Size_Variants() : Ign_Size_Variants();
    if (auto n = To_Integer(text)) {
        if (*n >= 0 && *n < static_cast<long>(sizes.size())) return static_cast<int>(*n);
        return std::nullopt;
    }
    for (std::size_t i = 0; i < sizes.size(); ++i)
        if (text == std::to_string(sizes[i].cols) + "x" + std::to_string(sizes[i].rows))
            return static_cast<int>(i);
    return std::nullopt;
}

void Print_Axes(std::FILE* out, const char* when, const std::vector<std::string>& rpm,
                const std::vector<std::string>& load) {
    std::fprintf(out, "%s RPM axis (%zu):", when, rpm.size());
    for (const std::string& t : rpm)
        std::fprintf(out, " %s", t.c_str());
    std::fprintf(out, "\n%s load axis (%zu):", when, load.size());
    for (const std::string& t : load)
        std::fprintf(out, " %s", t.c_str());
    std::fprintf(out, "\n");
}

int Usage_Error(std::FILE* err, const std::string& why) {
    if (!why.empty()) std::fprintf(err, "quorlen-cli transform: %s\n", why.c_str());
    std::fputs("usage:\n", err);
    std::fputs(Transform_Usage, err);
    return 2;
}

} // namespace

int Transform_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    auto a = Parse(args);
    if (!a) return Usage_Error(err, "");
    const Map_Head head = *a->head;
    auto index = Size_Index(head, a->size);
    if (!index) return Usage_Error(err, "no map size '" + a->size + "'");

    Cli_Tables loaded(err, a->ini);
    if (!loaded.Load(a->file)) return 1;
    App_Context& app = loaded.app;
    Axis_Context axis{app.image, app.sensors, app.undo, app.log};
    Tables_Context tables = loaded.Context();
    Table_Hooks hooks{[&] { Update_Tabs(tables); }, [&] { Show_Right_Tabs(tables); },
                      [&] { Update_All(tables); }};
    Transform_State state;

    // Step 1, as the map is shown.
    if (head == Map_Head::Fuel)
        Save_transform(axis, state);
    else
        Save_Ign_transform(axis, state);
    Print_Axes(out, "old", Rpm_Axis_Texts(axis, head), Load_Axis_Texts(axis, head));

    // Step 2: the shape, then the spacing.
    Map_Size_Click(tables, head, *index, hooks);
    if (a->rpm_scroll) d_3D_RPM_scroll_Change(axis, head, *a->rpm_scroll, hooks);
    if (a->map_scroll) d_3D_MAP_scroll_Change(axis, head, *a->map_scroll, hooks);

    // Step 3.
    if (head == Map_Head::Fuel)
        Convert_Transform(axis, state, hooks);
    else
        Convert_Ign_Transform(axis, state, hooks);
    Print_Axes(out, "new", Rpm_Axis_Texts(axis, head), Load_Axis_Texts(axis, head));
    loaded.Flush_Diagnostics();
    return loaded.Save(a->out) ? 0 : 1;
}

} // namespace quorlen::cli
