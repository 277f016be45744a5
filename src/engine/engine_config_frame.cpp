#include "engine/engine_config_frame.h"

#include "core/proc_guard.h"
#include "core/run_error.h"

#include <algorithm>
#include <exception>

namespace quorlen {

namespace {

struct List_Info {
    const char* name;
    int column;
    const char* prompt;
};

constexpr std::array<List_Info, Engine_List_Count> Lists{{
    {"Cylinder_info", Eng_Cylinders, ""},
    {"Ignition_type", Eng_Ignition_Type, "Select ignition type"},
    {"Fuel_system", Eng_Fuel_System, "Select fuel system"},
    {"Crank_sensor", Eng_Crank_Sensor, "Select crank sensor"},
    {"Cam_sensor", Eng_Cam_Sensor, "Select camsensor 1"},
    {"Cam2_sensor", Eng_Cam2_Sensor, "Select cam sensor 2"},
    {"TDC_sensor", Eng_TDC_Sensor, "Select TDC sensor"},
    {"Firing_order", Eng_Firing_Order, "Select firing order"},
    {"Car_Example", Eng_Car_Example, ""},
}};

const List_Info& Info(Engine_List list) {
    return Lists[static_cast<std::size_t>(list)];
}

Engine_List Nth(int i) {
    return static_cast<Engine_List>(i);
}

const char* const Current_Caption = "Engine configuration.  Current selection: ";

// A cell of the catalogue; past the table the fault is noted on the guard and the cell
// reads empty, so the rest of the frame still fills.
std::string Cell(const Engine_Config_Context& ctx, Proc_Guard& guard, int row, int column) {
    try {
        return ctx.engine.Engine_Config_Tab.At(row, column);
    } catch (const std::exception& e) {
        guard.Fail(e.what());
        return {};
    }
}

void Clear_Info_Texts(Engine_Config_Frame& f) {
    f.Cylinder_info_txt.clear();
    f.Ign_Channel_order_info_txt = {};
    f.Fuel_Channel_order_info_txt = {};
    f.FW_info_txt.clear();
    f.Selected_Engine_config_row_txt.clear();
}

// The information texts of a row; the guide's arrival shows the fuel firing order under
// "Needed FW:", as it always has.
void Fill_Info_Texts(Engine_Config_Context& ctx, Proc_Guard& guard, int row, int fw_column) {
    Engine_Config_Frame& f = ctx.frame;
    f.Cylinder_info_txt = Cell(ctx, guard, row, Eng_Cylinder_Notes);
    f.Ign_Channel_order_info_txt = {Cell(ctx, guard, row, Eng_Ign_Firing_Order),
                                    Cell(ctx, guard, row, Eng_Ign_Channel_To_Cyl)};
    f.Fuel_Channel_order_info_txt = {Cell(ctx, guard, row, Eng_Fuel_Firing_Order),
                                     Cell(ctx, guard, row, Eng_Fuel_Channel_To_Cyl)};
    f.FW_info_txt = Cell(ctx, guard, row, fw_column);
}

// Selection steps 1 to 6: the lists, caption, texts and fuel state of one row.
void Show_Row(Engine_Config_Context& ctx, Proc_Guard& guard, int row) {
    Engine_Config_Frame& f = ctx.frame;
    Engine_Config_State& engine = ctx.engine;
    const bool in_table = Engine_Config_Table::Has_Row(row);
    Take_Engine_Row(engine, row);

    engine.Engine_Config_Busy = true;
    for (int i = 0; i < Engine_List_Count; ++i) {
        Engine_List_Box& list = f.List(Nth(i));
        list.Clear();
        if (!in_table) continue;
        list.items.push_back(Cell(ctx, guard, row, Info(Nth(i)).column));
        list.index = 0;
    }
    f.Caption = Current_Caption + Car_Example_Caption(Cell(ctx, guard, row, Eng_Car_Example));
    Fill_Info_Texts(ctx, guard, row, Eng_Needed_FW);
    engine.Engine_Config_Busy = false;

    f.Crank_angle_example_label =
        in_table ? "Example: " + Cell(ctx, guard, row, Eng_Crank_Angle_Example) + "deg" : std::string();
    f.Fuel_teeth_recomend.clear();
    guard.Step([&] {
        f.Fuel_teeth_recomend = Recommended_Teeth_Text(
            Recommended_Fuel_Teeth(engine.Config_Tooth_Degrees, engine.Sequential_Fuel));
    });
}

// The guide has one row left: the last list names it, and "APPLY" may take it.
void Arrive(Engine_Config_Context& ctx, Proc_Guard& guard, int row) {
    Engine_Config_Frame& f = ctx.frame;
    ctx.engine.Engine_Config_New_Row = row;
    const std::string car = Cell(ctx, guard, row, Eng_Car_Example);
    Engine_List_Box& examples = f.List(Engine_List::Car_Example);
    examples.items = {std::to_string(row) + ": " + car};
    examples.index = 0;
    f.Caption = "Engine configuration.  New selection: " + car;
    f.Selected_Engine_config_row_txt = std::to_string(row);
    Fill_Info_Texts(ctx, guard, row, Eng_Fuel_Firing_Order);
    if (!ctx.engine.Engine_Config_Busy) f.Engine_Config_OK_Enabled = true;
}

bool Row_Matches(const Engine_Config_Context& ctx, int row, int last_list) {
    const auto& tab = ctx.engine.Engine_Config_Tab;
    for (int i = 0; i <= last_list; ++i)
        if (tab.Cell(row, Info(Nth(i)).column) != ctx.frame.List(Nth(i)).Text()) return false;
    return true;
}

// One link of the chain: the answer in list `chosen` refills the list after it.
void Guide_Step(Engine_Config_Context& ctx, Proc_Guard& guard, int chosen) {
    Engine_Config_Frame& f = ctx.frame;
    const int next = chosen + 1;
    const Engine_List next_list = Nth(next);
    f.Guide_Busy = true;
    for (int i = next; i < Engine_List_Count; ++i)
        f.List(Nth(i)).Clear();
    Clear_Info_Texts(f);

    Engine_List_Box& target = f.List(next_list);
    if (next_list == Engine_List::Car_Example) {
        int last = 0;
        for (int row = Guide_First_Row; row <= Guide_Last_Row; ++row) {
            if (!Row_Matches(ctx, row, chosen)) continue;
            target.Add_Unique(Cell(ctx, guard, row, Eng_Car_Example));
            last = row;
        }
        if (last != 0) ctx.engine.Engine_Config_New_Row = last;
        f.Guide_Busy = false;
        if (target.items.size() == 1) Arrive(ctx, guard, ctx.engine.Engine_Config_New_Row);
        return;
    }

    target.items.push_back(Info(next_list).prompt);
    for (int row = Guide_First_Row; row <= Guide_Last_Row; ++row)
        if (Row_Matches(ctx, row, chosen)) target.Add_Unique(Cell(ctx, guard, row, Info(next_list).column));
    f.Guide_Busy = false;

    // A question with one answer is not asked. With several, the prompt is chosen, which
    // runs the next link on it: the list after shows its own prompt alone.
    if (target.items.size() == 2)
        Engine_List_Click(ctx, next_list, 1);
    else if (target.items.size() >= 3)
        Engine_List_Click(ctx, next_list, 0);
}

// Several rows can share all eight answers and differ in the car only; the car picked in
// the last list then decides.
void Pick_Car_Example(Engine_Config_Context& ctx, Proc_Guard& guard) {
    const std::string& car = ctx.frame.List(Engine_List::Car_Example).Text();
    int found = 0;
    for (int row = Guide_First_Row; row <= Guide_Last_Row; ++row)
        if (Row_Matches(ctx, row, static_cast<int>(Engine_List::Firing_order)) &&
            ctx.engine.Engine_Config_Tab.Cell(row, Eng_Car_Example) == car)
            found = row;
    if (found != 0) Arrive(ctx, guard, found);
}

} // namespace

const char* Engine_List_Name(Engine_List list) {
    return Info(list).name;
}
int Engine_List_Column(Engine_List list) {
    return Info(list).column;
}
const char* Engine_List_Prompt(Engine_List list) {
    return Info(list).prompt;
}

const std::string& Engine_List_Box::Text() const {
    static const std::string none;
    return index >= 0 && index < static_cast<int>(items.size()) ? items[static_cast<std::size_t>(index)]
                                                                : none;
}

void Engine_List_Box::Add_Unique(const std::string& item) {
    if (std::find(items.begin(), items.end(), item) == items.end()) items.push_back(item);
}

void Fill_Engine_setup_combo(Engine_Config_Context& ctx) {
    ctx.frame.Engine_setup_combo = Engine_Combo_Items(ctx.engine.Engine_Config_Tab);
}

void Engine_setup_combo_Click(Engine_Config_Context& ctx, int e) {
    Proc_Guard guard(ctx.log, "Engine setup combo click");
    if (e < 0 || e >= Engine_Combo_Count) {
        guard.Fail(errors::Overflow().what());
        return;
    }
    const bool busy_on_entry = ctx.engine.Engine_Config_Busy;
    ctx.frame.Engine_setup_combo_index = e;
    const auto value = static_cast<std::uint8_t>(e);
    if (ctx.image.CardByte[Engine_Layout_Address] != value) {
        save_to_undolist(ctx.undo, ctx.image);
        ctx.image.CardByte[Engine_Layout_Address] = value;
        ctx.image.ChangedByte[Engine_Layout_Address] = Changed_Mark;
    }
    const int row = Engine_Config_Row(e);
    // A direct choice is the row "APPLY" confirms, as the guide's arrival is.
    ctx.engine.Engine_Config_New_Row = row;
    Show_Row(ctx, guard, row);
    if (!busy_on_entry) ctx.frame.Engine_Config_OK_Enabled = true;
    guard.Step([&] {
        if (ctx.Update_All) ctx.Update_All();
    });
}

void Show_Engine_Config_Of_Image(Engine_Config_Context& ctx) {
    const int e = ctx.image.CardByte[Engine_Layout_Address];
    if (ctx.frame.Engine_setup_combo_index == e) return;
    Proc_Guard guard(ctx.log, "Engine setup combo click");
    ctx.frame.Engine_setup_combo_index = e;
    if (ctx.frame.Guide_Active()) {
        Take_Engine_Row(ctx.engine, Engine_Config_Row(e));
        return;
    }
    Show_Row(ctx, guard, Engine_Config_Row(e));
}

void Engine_Config_Follow_Image(Engine_Config_State& engine, const Settings_Image& image) {
    Take_Engine_Row(engine, Engine_Config_Row(image.CardByte[Engine_Layout_Address]));
}

void Init_Selection_guide_Click(Engine_Config_Context& ctx) {
    Proc_Guard guard(ctx.log, "Init selection guide click");
    Engine_Config_Frame& f = ctx.frame;
    f.BackColor = Frame_Editing_Colour;
    f.Caption = "EDITING - Engine configuration. Do not change when engine is running!";
    f.Engine_setup_combo_Locked = true;
    Engine_List_Box& cylinders = f.List(Engine_List::Cylinder_info);
    cylinders.Clear();
    // The first row's answer stands first and serves as the prompt.
    cylinders.items.push_back(Cell(ctx, guard, Guide_First_Row, Eng_Cylinders));
    for (int row = Guide_First_Row + 1; row <= Guide_Last_Row; ++row)
        cylinders.Add_Unique(Cell(ctx, guard, row, Eng_Cylinders));
    f.Engine_Config_OK_Enabled = false;
}

void Engine_List_Click(Engine_Config_Context& ctx, Engine_List list, int index) {
    Engine_Config_Frame& f = ctx.frame;
    Engine_List_Box& box = f.List(list);
    if (index < -1 || index >= static_cast<int>(box.items.size())) return;
    box.index = index;
    if (ctx.engine.Engine_Config_Busy || f.Guide_Busy || !f.Guide_Active()) return;
    Proc_Guard guard(ctx.log, std::string(Engine_List_Name(list)) + " click");
    if (list == Engine_List::Car_Example)
        Pick_Car_Example(ctx, guard);
    else
        Guide_Step(ctx, guard, static_cast<int>(list));
}

void Engine_Config_OK_Click(Engine_Config_Context& ctx) {
    Engine_Config_Frame& f = ctx.frame;
    const int row = ctx.engine.Engine_Config_New_Row;
    Engine_setup_combo_Click(ctx, row - 1);
    Proc_Guard guard(ctx.log, "Engine config OK click");
    f.BackColor = Frame_Face_Colour;
    f.Caption = Current_Caption + Cell(ctx, guard, row, Eng_Car_Example);
    f.Engine_Config_OK_Enabled = false;
    f.Engine_setup_combo_Locked = false;
}

void Engine_Config_Cancle_Click(Engine_Config_Context& ctx) {
    Engine_Config_Frame& f = ctx.frame;
    Engine_setup_combo_Click(ctx, f.Engine_setup_combo_index);
    f.Caption = "Engine configuration";
    f.BackColor = Frame_Face_Colour;
    f.Engine_Config_OK_Enabled = false;
}

} // namespace quorlen
