#include "app/tune_tools.h"

#include "core/proc_guard.h"
#include "files/presets.h"
#include "tables/cell_entry.h"
#include "tables/map_tables.h"
#include "tables/selection_ops.h"
#include "tables/undo_list.h"

namespace quorlen {

namespace {

const Preset_Row* Preset_At(const App_Context& app, int n) {
    return Preset_Exists(app, n) ? &app.PresetList[static_cast<std::size_t>(n)] : nullptr;
}

// The injection time behind the dead time, over the whole fuel map, to `percent` percent.
void Scale_Fuel_Map(App_Context& app, User_Dialogs& dialogs, double percent) {
    Tables_Context ctx = app.Tables(dialogs);
    const Map_Block block = Fuel_Block(ctx);
    const double dead_time = Injector_Dead_Time(app.image);
    for (int row = 1; row <= block.rows; ++row)
        for (int col = 1; col <= block.cols; ++col) {
            const int a = block.Cell(row, col);
            const double ms = Fuel_Cell_Value(app.image.CardByte[Checked_Address(a)]);
            Put_Byte(app.image, a, Fuel_ms_to_byte((ms - dead_time) * percent / 100 + dead_time));
        }
}

Text_Grid Grid_Of(const Tables_Context& ctx, Table_Id id) {
    const Grid_Shape shape = Grid_Size(ctx, id);
    Text_Grid grid(static_cast<std::size_t>(shape.rows));
    for (int r = 0; r < shape.rows; ++r)
        for (int c = 0; c < shape.cols; ++c)
            grid[static_cast<std::size_t>(r)].push_back(Grid_Text(ctx, id, r, c));
    return grid;
}

} // namespace

// --- engine layout ------------------------------------------------------------------------

void Init_Engine_Config(App_Context& app) {
    Proc_Guard guard(app.log, "Init engine config");
    guard.Step([&] {
        Load_Engine_Config_Tab(app.engine.Engine_Config_Tab, app.ini, &app.texts.Debug_txt);
        app.pages.Engine_Tab_Read = true;
        app.pages.Layout_Row_Taken = -1;
    });
    guard.Step([&] { Engine_Config_Follow_Image(app.engine, app.image); });
}

Engine_Config_Context Engine_Context(App_Context& app, Engine_Config_Frame& frame,
                                     std::function<void()> update_all) {
    return {app.engine, frame, app.image, app.undo, app.log, std::move(update_all)};
}

std::vector<std::pair<std::string, std::string>> Engine_Frame_Fields(const Engine_Config_Frame& f) {
    std::vector<std::pair<std::string, std::string>> fields;
    const int e = f.Engine_setup_combo_index;
    fields.emplace_back("Engine_setup_combo", e >= 0 && e < static_cast<int>(f.Engine_setup_combo.size())
                                                  ? f.Engine_setup_combo[static_cast<std::size_t>(e)]
                                                  : std::string());
    fields.emplace_back("Engine_Config_frame", f.Caption);
    for (int i = 0; i < Engine_List_Count; ++i) {
        const auto list = static_cast<Engine_List>(i);
        fields.emplace_back(Engine_List_Name(list), f.List(list).Text());
    }
    fields.emplace_back("Cylinder_info_txt", f.Cylinder_info_txt);
    fields.emplace_back("Ign_Channel_order_info_txt(0)", f.Ign_Channel_order_info_txt[0]);
    fields.emplace_back("Ign_Channel_order_info_txt(1)", f.Ign_Channel_order_info_txt[1]);
    fields.emplace_back("Fuel_Channel_order_info_txt(0)", f.Fuel_Channel_order_info_txt[0]);
    fields.emplace_back("Fuel_Channel_order_info_txt(1)", f.Fuel_Channel_order_info_txt[1]);
    fields.emplace_back("FW_info_txt", f.FW_info_txt);
    fields.emplace_back("Crank_angle_example_label", f.Crank_angle_example_label);
    fields.emplace_back("Fuel_teeth_recomend", f.Fuel_teeth_recomend);
    return fields;
}

// --- presets --------------------------------------------------------------------------------

bool Preset_Exists(const App_Context& app, int n) {
    return n >= 0 && n < static_cast<int>(app.PresetList.size());
}

std::string Show_Preset_Changes(App_Context& app, int n) {
    const Preset_Row* row = Preset_At(app, n);
    return row ? Show_Preset_Changes(*row, app.image, app.log) : std::string();
}

void Apply_User_Preset(App_Context& app, int n, const std::function<void()>& update_all) {
    const Preset_Row* row = Preset_At(app, n);
    if (row == nullptr) return;
    save_to_undolist(app.undo, app.image);
    Apply_Preset(*row, app.image, app.log);
    if (update_all) update_all();
}

void Select_User_Preset(App_Context& app, int n) {
    if (!Preset_Exists(app, n) || n == app.User_Preset) return;
    app.User_Preset = n;
    Proc_Guard guard(app.log, "Preset list click");
    guard.Step([&] { app.ini.Write_Ini("User_Preset", std::to_string(n)); });
}

bool Preset_B_Click(App_Context& app, int n, const std::string& Pre_perc, User_Dialogs& dialogs,
                    const std::function<void()>& update_all) {
    double percent = 0;
    if (!Pre_perc_Valid(Pre_perc, percent)) {
        dialogs.Inform(Pre_perc_Missing_Text);
        return false;
    }
    const Preset_Row* row = Preset_At(app, n);
    if (row == nullptr) return false;
    save_to_undolist(app.undo, app.image);
    Proc_Guard guard(app.log, "Preset B click");
    guard.Step([&] { Apply_Preset(*row, app.image, app.log); });
    guard.Step([&] { Scale_Fuel_Map(app, dialogs, percent); });
    if (update_all) update_all();
    return true;
}

std::string Dataset_Description(const App_Context& app) {
    return Dataset_Description(app.program.App_Path, app.image.DatasetID, app.image);
}

// --- summary --------------------------------------------------------------------------------

Summary_Facts Summary_Facts_Of(const App_Context& app, const std::string& operating_system) {
    return Summary_Facts_Of(app.program, app.link_state, app.image, operating_system);
}

Summary_Facts Summary_Facts_Of(const Program_State& program, const Link_State& box,
                               const Settings_Image& image, const std::string& operating_system) {
    Summary_Facts f;
    f.program_version = program.Program_Version;
    f.operating_system = operating_system;
    f.firmware = box.Box_Version;
    f.sc_id = box.Box_Dataset_ID;
    // The serial is known only once a box has answered.
    if (!box.Box_Version.empty() || box.Box_Serial != 0) f.serial = std::to_string(box.Box_Serial);
    f.slave_mode = (image.CardByte[1] & 8) != 0;
    f.slave_present = box.Slave_Present;
    return f;
}

Summary_Tables Summary_Tables_Of(App_Context& app, User_Dialogs& dialogs) {
    const Tables_Context ctx = app.Tables(dialogs);
    Summary_Tables t;
    t.ignition = Grid_Of(ctx, Table_Id::Ignition_3D);
    t.fuel = Grid_Of(ctx, Table_Id::Fuel_3D);
    t.boost = Grid_Of(ctx, Table_Id::Pwm1);
    t.boost_over_rpm = !t.boost.empty() && !t.boost[0].empty() && t.boost[0][0] == "RPM";
    return t;
}

std::string Summary_Table_Section(App_Context& app, User_Dialogs& dialogs, Summary_Tables_Layout layout) {
    switch (layout) {
    case Summary_Tables_Layout::Alt1:
        return Show_Tabels_Alt1(Summary_Tables_Of(app, dialogs));
    case Summary_Tables_Layout::Alt2:
        return Show_Tabels_Alt2(Summary_Tables_Of(app, dialogs));
    default:
        return {};
    }
}

} // namespace quorlen
