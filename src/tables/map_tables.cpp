#include "tables/map_tables.h"

#include "core/proc_guard.h"
#include "image/scaling.h"
#include "tables/table_repair.h"

#include <cstdlib>

namespace quorlen {

namespace {

std::size_t At(int address) {
    return static_cast<std::size_t>(Checked_Address(address));
}

// One-dimensional tables: their load selection.
int Selection_Of(const Tables_State& t, Table_Id id) {
    switch (id) {
    case Table_Id::Ign_Comp1:
        return t.loads.Ign2ndLoadSensor;
    case Table_Id::Fuel2_Map:
        return t.loads.Fuel2ndLoadSensor;
    case Table_Id::Fuel2_Rpm:
        return t.loads.Fuel3rdLoadSensor;
    case Table_Id::Afr:
        return t.loads.LambdaLoadSensor;
    default:
        return t.loads.PwmLoadSensor;
    }
}

bool Is_Pwm(Table_Id id) {
    return id == Table_Id::Pwm1 || id == Table_Id::Pwm2 || id == Table_Id::Pwm3 || id == Table_Id::Pwm4;
}

bool Is_Fuel2(Table_Id id) {
    return id == Table_Id::Fuel2_Map || id == Table_Id::Fuel2_Rpm;
}

// The sensor whose arithmetic turns a table byte into its value, for the tables that have
// one: the lambda sensor, and the boost sensor of PWM1 in boost mode.
int Value_Sensor(const Tables_Context& ctx, Table_Id id) {
    if (id == Table_Id::Afr)
        return Sensor_For_Selection(ctx.image, ctx.sensors, ctx.tables.loads.LambdaSensor);
    if (id == Table_Id::Pwm1 && ctx.tables.Pwm1_Boost)
        return Sensor_For_Selection(ctx.image, ctx.sensors, ctx.image.BoostSensor);
    return -1;
}

std::string Sensor_Format(const Sensor_Table& table, int s) {
    return Decimals_Format(table.Has(s) ? table.Decimals(s) : 2);
}

std::string Sensor_Text(const Tables_Context& ctx, int s, double raw) {
    auto value = Forward_Sensor_Value(ctx.sensors.table, s, raw);
    return value ? Format_Number(*value, Sensor_Format(ctx.sensors.table, s)) : std::string();
}

std::string Sensor_Unit(const Tables_Context& ctx, int s) {
    return ctx.sensors.table.Has(s) ? ctx.sensors.table.Unit(s) : std::string();
}

std::string Value_Format(const Tables_Context& ctx, Table_Id id) {
    int s = Value_Sensor(ctx, id);
    if (id == Table_Id::Afr || (id == Table_Id::Pwm1 && ctx.tables.Pwm1_Boost))
        return Sensor_Format(ctx.sensors.table, s);
    if (Is_Fuel2(id) && !Fuel2_Rpm_Coded(ctx, id)) return ctx.tables.Fuel2nd_Function == 1 ? "0" : "0.0";
    return "0.0";
}

std::string Value_Unit(const Tables_Context& ctx, Table_Id id) {
    if (id == Table_Id::Ign_Comp1) return Ign_Comp1_Coding(ctx).percent ? "%" : "deg";
    if (Fuel2_Rpm_Coded(ctx, id)) return "%";
    if (Is_Fuel2(id)) {
        switch (ctx.tables.Fuel2nd_Function) {
        case 0:
        case 2:
            return "ms";
        case 1:
            return "%";
        default:
            return "";
        }
    }
    if (id == Table_Id::Afr || (id == Table_Id::Pwm1 && ctx.tables.Pwm1_Boost))
        return Sensor_Unit(ctx, Value_Sensor(ctx, id));
    return "%";
}

// Raw input of row i (1-based) of a one-dimensional table over an analogue input: an even
// division of the 0-5 V range.
double Row_Raw(int i, int points) {
    return (i - 1) * 255.0 / (points - 1);
}

double Row_Volts(int i, int points) {
    return (i - 1) * 5.0 / (points - 1);
}

// CR LF, the title, " - " and the input's name as the tables' lists give it, and the unit
// of the sensor on that input when it has one.
std::string Caption(const Tables_Context& ctx, const char* title, int selection) {
    std::string text = "\r\n" + std::string(title) + " - " + Load_Input_Name(selection);
    int s = Sensor_For_Selection(ctx.image, ctx.sensors, selection);
    if (s >= 0 && !ctx.sensors.table.Unit(s).empty()) text += " [" + ctx.sensors.table.Unit(s) + "]";
    return text;
}

std::string Load_Header(const Tables_Context& ctx, int selection) {
    if (selection == Rpm_Selection) return "Load [rpm]";
    return "Load [" + Sensor_Unit(ctx, Sensor_For_Selection(ctx.image, ctx.sensors, selection)) + "]";
}

// Reads one load axis of a main map: header texts, CardValue, and the last row's value.
void Read_Load_Axis(Tables_Context& ctx, Repair_Axis axis, const Map_Block& block, int selection,
                    std::vector<std::string>& texts, double& max_value) {
    std::vector<int> sums(static_cast<std::size_t>(block.rows));
    Read_Axis_Steps(ctx.image, axis, block.Load_Step(1), block.rows, sums.data(), ctx.dialogs);
    int s = Sensor_For_Selection(ctx.image, ctx.sensors, selection);
    std::string format = Sensor_Format(ctx.sensors.table, s);
    texts.assign(sums.size(), {});
    for (int r = 1; r <= block.rows; ++r) {
        int sum = sums[static_cast<std::size_t>(r - 1)];
        std::optional<double> value;
        if (selection == Rpm_Selection) {
            value = sum * Rpm_Per_Step;
            texts[static_cast<std::size_t>(r - 1)] = Rpm_Axis_Text(sum);
        } else {
            value = Forward_Sensor_Value(ctx.sensors.table, s, sum);
            if (value) texts[static_cast<std::size_t>(r - 1)] = Format_Number(*value, format);
        }
        ctx.image.CardValue[At(block.Load_Step(r))] = value.value_or(0);
        max_value = value.value_or(0);
    }
}

void Read_Rpm_Axis(Tables_Context& ctx, Repair_Axis axis, const Map_Block& block,
                   std::vector<std::string>& texts) {
    std::vector<int> sums(static_cast<std::size_t>(block.cols));
    Read_Axis_Steps(ctx.image, axis, block.Rpm_Step(1), block.cols, sums.data(), ctx.dialogs);
    texts.assign(sums.size(), {});
    for (int c = 1; c <= block.cols; ++c) {
        int sum = sums[static_cast<std::size_t>(c - 1)];
        texts[static_cast<std::size_t>(c - 1)] = Rpm_Axis_Text(sum);
        ctx.image.CardValue[At(block.Rpm_Step(c))] = sum * Rpm_Per_Step;
        ctx.tables.LastRpmColumn = c;
    }
}

Map_Block Pwm_Fuel_Block(const Tables_Context& ctx) {
    return {ctx.image.PwmFuelBase, 1, Pwm_Fuel_Points};
}

} // namespace

Map_Block Fuel_Block(const Tables_Context& ctx) {
    return {ctx.image.FuelBlockBase, ctx.tables.FuelCols, ctx.tables.FuelRows};
}

Map_Block Ign_Block(const Tables_Context& ctx) {
    return {ctx.image.IgnBlockBase, ctx.tables.IgnCols, ctx.tables.IgnRows};
}

// --- the four routines ---------------------------------------------------------------------

namespace {
void Read_Sizes(Tables_Context& ctx) {
    Tables_State& t = ctx.tables;
    const Map_Size& fuel = Fuel_Size_Variants()[static_cast<std::size_t>(Fuel_Size_Index(ctx.image))];
    const Map_Size& ign = Ign_Size_Variants()[static_cast<std::size_t>(Ign_Size_Index(ctx.image))];
    t.FuelCols = fuel.cols;
    t.FuelRows = fuel.rows;
    t.IgnCols = ign.cols;
    t.IgnRows = ign.rows;
}
} // namespace

void Update_Tabs(Tables_Context& ctx) {
    Proc_Guard guard(ctx.log, "Update Tabs");
    guard.Step([&] {
        Tables_State& t = ctx.tables;
        Read_Sizes(ctx);
        t.loads = Read_Load_Selections(ctx.image);
        t.Fuel2nd_Function = Fuel_2nd_Function(ctx.image);
        t.Fuel2nd_Scale_500 = Fuel_2nd_Scale_500(ctx.image);
        t.Pwm1_Boost = (ctx.image.CardByte[186] & 15) == Pwm_Boost_Selection;
    });
}

void Show_Right_Tabs(Tables_Context& ctx) {
    Proc_Guard guard(ctx.log, "Show Right Tabs");
    guard.Step([&] {
        const Load_Selections& l = ctx.tables.loads;
        Tab_Captions& c = ctx.tables.captions;
        c.Ign_Load = Caption(ctx, "Ignition Load sensor: ", l.IgnLoadSensor);
        c.Ign2nd_Load = Caption(ctx, "1st Ignition comp load sensor: ", l.Ign2ndLoadSensor);
        c.Ign3rd_Load = Caption(ctx, "2nd Ignition comp load sensor: ", l.Ign3rdLoadSensor);
        c.Fuel3D_Load = Caption(ctx, "Fuel 3D Load sensor: ", l.Fuel3DLoadSensor);
        c.Fuel2nd_Load = Caption(ctx, "Fuel Load sensor: ", l.Fuel2ndLoadSensor);
        c.Fuel3rd_Load = Caption(ctx, "Fuel Load sensor: ", l.Fuel3rdLoadSensor);
        c.Lambda_Load = Caption(ctx, "Lambda Load sensor: ", l.LambdaLoadSensor);
        c.Lambda_Sensor = Caption(ctx, "Lambda sensor: ", l.LambdaSensor);
        c.Pwm_Load = Caption(ctx, "PWM Load sensor: ", l.PwmLoadSensor);
        c.Pwm_Boost_Visible = ctx.tables.Pwm1_Boost;
        int boost = Sensor_For_Selection(ctx.image, ctx.sensors, ctx.image.BoostSensor);
        c.PWM_boost_sensor_label = "\r\nPWM PID control. Boost sensor:  ";
        if (boost >= 0) c.PWM_boost_sensor_label += ctx.sensors.table.Name(boost);
        c.Pwm1_Tab = ctx.tables.Pwm1_Boost ? "PWM1 Boost control" : "PWM 1";
        c.Fuel_Load_Header = Load_Header(ctx, l.Fuel3DLoadSensor);
        c.Ign_Load_Header = Load_Header(ctx, l.IgnLoadSensor);
    });
}

bool Update_All(Tables_Context& ctx) {
    Tables_State& t = ctx.tables;
    if (t.UpdateBusy) return false;
    t.UpdateBusy = true;
    {
        Proc_Guard guard(ctx.log, "Update All");
        // The axes are read under the sizes the image holds now: a file just loaded may
        // have others than the tables last shaped, and mending its bytes under the old
        // shape would "repair" cells and counts.
        guard.Step([&] { Read_Sizes(ctx); });
        guard.Step([&] { Fix_Pwm_Fuel_Block(ctx.image); });
        guard.Step([&] {
            Map_Block fuel = Fuel_Block(ctx);
            Read_Rpm_Axis(ctx, Repair_Axis::Fuel_Rpm, fuel, t.Fuel_Rpm_Text);
            Read_Load_Axis(ctx, Repair_Axis::Fuel_Load, fuel, t.loads.Fuel3DLoadSensor, t.Fuel_Load_Text,
                           t.MaxLoadValue_Fuel);
        });
        guard.Step([&] {
            Map_Block ign = Ign_Block(ctx);
            Read_Rpm_Axis(ctx, Repair_Axis::Ign_Rpm, ign, t.Ign_Rpm_Text);
            Read_Load_Axis(ctx, Repair_Axis::Ign_Load, ign, t.loads.IgnLoadSensor, t.Ign_Load_Text,
                           t.MaxLoadValue_Ign);
        });
        guard.Step([&] {
            Map_Block block = Pwm_Fuel_Block(ctx);
            int sums[Pwm_Fuel_Points] = {};
            Read_Axis_Steps(ctx.image, Repair_Axis::Pwm2_Fuel, block.Load_Step(1), Pwm_Fuel_Points, sums,
                            ctx.dialogs);
            t.Pwm_Fuel_Axis_Text.clear();
            for (int sum : sums)
                t.Pwm_Fuel_Axis_Text.push_back(Format_Number(sum * 100.0 / 255, "0.0"));
        });
        guard.Step([&] {
            Check_Output_Selections(ctx.image, ctx.log, t.Pwm_Selection, t.Digital_Function,
                                    t.Digital_Sensor);
        });
        guard.Step([&] {
            auto& value = ctx.image.CardValue;
            const auto& b = ctx.image.CardByte;
            for (Map_Block block : {Fuel_Block(ctx), Ign_Block(ctx)}) {
                bool fuel = block.base == ctx.image.FuelBlockBase;
                for (int a = block.Start(); a <= block.End(); ++a)
                    value[At(a)] = fuel ? Fuel_Cell_Value(b[At(a)]) : Ign_Cell_Value(b[At(a)]);
            }
            for (Table_Id id : {Table_Id::Ign_Comp1, Table_Id::Fuel2_Map, Table_Id::Fuel2_Rpm, Table_Id::Afr,
                                Table_Id::Pwm1, Table_Id::Pwm2, Table_Id::Pwm3, Table_Id::Pwm4}) {
                int base = One_D_Base(id);
                for (int i = 0; i < One_D(id)->points; ++i)
                    value[At(base + i)] = Table_Value(ctx, id, b[At(base + i)]).value_or(0);
            }
        });
    }
    t.UpdateBusy = false;
    return true;
}

void Init_Tabs(Tables_Context& ctx) {
    Update_Tabs(ctx);
}

std::optional<Table_Id> Current_Table(const Tables_State& t) {
    switch (t.sstab_Main) {
    case 1:
        if (t.SSTab_Ignition == 0) return Table_Id::Ignition_3D;
        if (t.SSTab_Ignition == 1) return Table_Id::Ign_Comp1;
        return std::nullopt;
    case 2:
        switch (t.SSTab_Fuel) {
        case 0:
            return Table_Id::Fuel_3D;
        case 1:
            return Table_Id::Fuel2_Map;
        case 2:
            return Table_Id::Fuel2_Rpm;
        case 4:
            return Table_Id::Afr;
        default:
            return std::nullopt;
        }
    case 3:
        switch (t.SSTab_PWM) {
        case 0:
            return Table_Id::Pwm1;
        case 2:
            return Table_Id::Pwm2;
        case 3:
            return Table_Id::Pwm3;
        case 4:
            return Table_Id::Pwm4;
        default:
            return std::nullopt;
        }
    default:
        return std::nullopt;
    }
}

// --- codings that a table's limits decide ---------------------------------------------------

Linear_Coding Ign_Rpm_Coding(const Settings_Image& image) {
    const int b = image.CardByte[44];
    const bool bit4 = (b & 16) != 0;
    const bool bit5 = (b & 32) != 0;
    if (image.DatasetID >= Stand_Alone_Dataset)
        return bit4 ? Ign_Map_Coding : Linear_Coding{-12.8, 12.7, 5, 128};
    if (bit5) return Ign_Map_Coding;
    if (bit4) return {-200, 198, 0.64, 128, true};
    return {-100, 99, 1.28, 128, true};
}

Linear_Coding Ign_Comp1_Coding(const Tables_Context& ctx) {
    return ctx.tables.loads.Ign2ndLoadSensor == Rpm_Selection ? Ign_Rpm_Coding(ctx.image) : Ign_Map_Coding;
}

bool Fuel2_Rpm_Coded(const Tables_Context& ctx, Table_Id id) {
    return Is_Fuel2(id) && ctx.image.DatasetID < Stand_Alone_Dataset &&
           Selection_Of(ctx.tables, id) == Rpm_Selection;
}

// --- grids --------------------------------------------------------------------------------

Grid_Shape Grid_Size(const Tables_Context& ctx, Table_Id id) {
    if (id == Table_Id::Fuel_3D) return {ctx.tables.FuelRows + 1, ctx.tables.FuelCols + 1};
    if (id == Table_Id::Ignition_3D) return {ctx.tables.IgnRows + 1, ctx.tables.IgnCols + 1};
    if (id == Table_Id::Pwm2_Fuel) return {Pwm_Fuel_Points + 1, 2};
    return {One_D(id)->points + 1, 3};
}

std::optional<double> Table_Value(const Tables_Context& ctx, Table_Id id, std::uint8_t b) {
    switch (id) {
    case Table_Id::Fuel_3D:
        return Fuel_Cell_Value(b);
    case Table_Id::Ignition_3D:
        return Ign_Cell_Value(b);
    case Table_Id::Ign_Comp1: {
        Linear_Coding coding = Ign_Comp1_Coding(ctx);
        return (b - coding.offset) / coding.gain;
    }
    case Table_Id::Pwm2_Fuel:
        return (b - Pwm_Fuel_Coding.offset) / Pwm_Fuel_Coding.gain;
    case Table_Id::Fuel2_Map:
    case Table_Id::Fuel2_Rpm:
        if (Fuel2_Rpm_Coded(ctx, id)) return b / Fuel_Rpm_Coding.gain;
        switch (ctx.tables.Fuel2nd_Function) {
        case 0:
            return b / 10.0;
        case 1:
            return ctx.tables.Fuel2nd_Scale_500 ? b * 2.0 : b;
        case 2:
            return b / -10.0;
        default:
            return std::nullopt;
        }
    case Table_Id::Afr:
        return Forward_Sensor_Value(ctx.sensors.table, Value_Sensor(ctx, id), b);
    default: // PWM
        if (id == Table_Id::Pwm1 && ctx.tables.Pwm1_Boost)
            return Forward_Sensor_Value(ctx.sensors.table, Value_Sensor(ctx, id), b);
        return b * 0.5;
    }
}

int Grid_Address(const Tables_Context& ctx, Table_Id id, int row, int col) {
    Grid_Shape shape = Grid_Size(ctx, id);
    if (row < 1 || col < 1 || row >= shape.rows || col >= shape.cols) return -1;
    switch (id) {
    case Table_Id::Fuel_3D:
        return Fuel_Block(ctx).Cell(row, col);
    case Table_Id::Ignition_3D:
        return Ign_Block(ctx).Cell(row, col);
    case Table_Id::Pwm2_Fuel:
        return Pwm_Fuel_Block(ctx).Cell(row, col);
    default:
        return col == 2 ? One_D_Base(id) + row - 1 : -1;
    }
}

std::string Grid_Text(const Tables_Context& ctx, Table_Id id, int row, int col) {
    const Tables_State& t = ctx.tables;
    const auto& b = ctx.image.CardByte;
    auto header = [](const std::vector<std::string>& texts, int i) {
        return i >= 1 && i <= static_cast<int>(texts.size()) ? texts[static_cast<std::size_t>(i - 1)]
                                                             : std::string();
    };
    if (id == Table_Id::Fuel_3D || id == Table_Id::Ignition_3D) {
        bool fuel = id == Table_Id::Fuel_3D;
        if (row == 0 && col == 0) return "RPM";
        if (row == 0) return header(fuel ? t.Fuel_Rpm_Text : t.Ign_Rpm_Text, col);
        if (col == 0) return header(fuel ? t.Fuel_Load_Text : t.Ign_Load_Text, row);
        int a = Grid_Address(ctx, id, row, col);
        if (a < 0) return {};
        return fuel ? Fuel_Cell_Text(b[At(a)]) : Ign_Cell_Text(b[At(a)]);
    }
    if (id == Table_Id::Pwm2_Fuel) {
        if (row == 0) return col == 0 ? "PWM2 [%]" : "Fuel [%]";
        if (col == 0) return header(t.Pwm_Fuel_Axis_Text, row);
        int a = Grid_Address(ctx, id, row, col);
        return a < 0 ? std::string() : Format_Number(*Table_Value(ctx, id, b[At(a)]), "0.0");
    }

    int points = One_D(id)->points;
    int selection = Selection_Of(t, id);
    bool rpm = selection == Rpm_Selection;
    int load_sensor = rpm ? -1 : Sensor_For_Selection(ctx.image, ctx.sensors, selection);
    if (row == 0) {
        if (col == 0) return rpm ? "RPM" : "V";
        if (col == 1) return rpm ? "" : Sensor_Unit(ctx, load_sensor);
        return Value_Unit(ctx, id);
    }
    if (col == 0) {
        if (rpm) return Format_Number((row - 1) * One_D_Rpm_Step, Is_Pwm(id) ? "000" : "0");
        return Format_Number(Row_Volts(row, points), "0.00");
    }
    if (col == 1) return rpm ? "" : Sensor_Text(ctx, load_sensor, Row_Raw(row, points));
    auto value = Table_Value(ctx, id, b[At(One_D_Base(id) + row - 1)]);
    return value ? Format_Number(*value, Value_Format(ctx, id)) : std::string();
}

// --- charts -------------------------------------------------------------------------------

Chart_Data Table_Chart(const Tables_Context& ctx, Table_Id id) {
    Chart_Data chart;
    auto table = One_D(id);
    if (!table) return chart;
    int selection = Selection_Of(ctx.tables, id);
    int load_sensor = Sensor_For_Selection(ctx.image, ctx.sensors, selection);
    bool rpm = selection == Rpm_Selection;
    chart.x_title = rpm ? "RPM"
                    : load_sensor >= 0
                        ? Load_Input_Name(selection) + " [" + Sensor_Unit(ctx, load_sensor) + "]"
                        : "V";
    chart.y_title = table->caption;
    std::string unit = Value_Unit(ctx, id);
    if (!unit.empty()) chart.y_title += " [" + unit + "]";
    chart.y_from_zero = Value_Sensor(ctx, id) < 0;
    const auto& b = ctx.image.CardByte;
    for (int i = 1; i <= table->points; ++i) {
        auto y = Table_Value(ctx, id, b[At(One_D_Base(id) + i - 1)]);
        if (!y) continue;
        double x = rpm ? (i - 1) * One_D_Rpm_Step
                       : Forward_Sensor_Value(ctx.sensors.table, load_sensor, Row_Raw(i, table->points))
                             .value_or(Row_Volts(i, table->points));
        chart.x.push_back(x);
        chart.y.push_back(*y);
    }
    return chart;
}

namespace {

int Curve_Selection(const Tables_State& t, int index) {
    return index <= 95 ? t.loads.PwmLoadSensor : t.loads.Ign3rdLoadSensor;
}

// Engine speed of a load point byte on a curve that runs over speed: the scale of the
// one-dimensional tables, 0 to 10000 rpm over the byte.
constexpr double Curve_Rpm_Factor = 10000.0 / 255;

double Curve_X(const Tables_Context& ctx, int selection, double raw) {
    if (selection == Rpm_Selection) return raw * Curve_Rpm_Factor;
    int s = Sensor_For_Selection(ctx.image, ctx.sensors, selection);
    return Forward_Sensor_Value(ctx.sensors.table, s, raw).value_or(raw * 5 / 255);
}

} // namespace

Chart_Data Comp_Curve_Chart(const Tables_Context& ctx, int first_index) {
    Chart_Data chart;
    int selection = Curve_Selection(ctx.tables, first_index);
    const auto& b = ctx.image.CardByte;
    double x1 = Curve_X(ctx, selection, b[At(first_index)]);
    double x2 = Curve_X(ctx, selection, b[At(first_index + 2)]);
    double y1 = Scroll_Value(ctx.image, first_index + 1, b[At(first_index + 1)]);
    double y2 = Scroll_Value(ctx.image, first_index + 3, b[At(first_index + 3)]);
    chart.x = {Curve_X(ctx, selection, 0), x1, x2, Curve_X(ctx, selection, 255)};
    chart.y = {y1, y1, y2, y2};
    Scroll_Shown load = Main_Scroll_Text(ctx, first_index);
    chart.x_title = Load_Input_Name(selection) + (load.unit.empty() ? "" : " [" + load.unit + "]");
    chart.y_title = first_index <= 95 ? "PWM1 comp. [%]" : "2nd Ignition compensation [deg]";
    return chart;
}

double Comp_Curve_At(const Tables_Context& ctx, int first_index, double raw) {
    const auto& b = ctx.image.CardByte;
    const double p1 = b[At(first_index)];
    const double p2 = b[At(first_index + 2)];
    const double y1 = Scroll_Value(ctx.image, first_index + 1, b[At(first_index + 1)]);
    const double y2 = Scroll_Value(ctx.image, first_index + 3, b[At(first_index + 3)]);
    if (raw <= p1) return y1;
    if (raw >= p2) return y2;
    return y1 + (y2 - y1) * (raw - p1) / (p2 - p1);
}

double Comp_Curve_Load(const Tables_Context& ctx, int first_index, double raw) {
    return Curve_X(ctx, Curve_Selection(ctx.tables, first_index), raw);
}

std::string Comp_Curve_Unit(const Tables_Context& ctx, int first_index) {
    return Main_Scroll_Text(ctx, first_index).unit;
}

std::string Table_Unit(const Tables_Context& ctx, Table_Id id) {
    return Value_Unit(ctx, id);
}

// --- combos and sliders -------------------------------------------------------------------------

std::vector<std::string> Fuel_2nd_Function_Items() {
    return {"Added time", "Percentage", "Subtracted time"};
}

namespace {

void Run(const Table_Hooks& hooks) {
    if (hooks.Update_Tabs) hooks.Update_Tabs();
    if (hooks.Show_Right_Tabs) hooks.Show_Right_Tabs();
    if (hooks.Update_All) hooks.Update_All();
}

void Write(Settings_Image& image, int address, int value) {
    auto a = At(address);
    auto v = static_cast<std::uint8_t>(value);
    if (image.CardByte[a] != v) image.ChangedByte[a] = Changed_Mark;
    image.CardByte[a] = v;
}

} // namespace

void FUEL_3D_MAP_Size_Combo_Click(Tables_Context& ctx, int index, const Table_Hooks& hooks) {
    if (index < 0 || index >= static_cast<int>(Fuel_Size_Variants().size())) return;
    Proc_Guard guard(ctx.log, "FUEL 3D MAP Size Combo Click");
    save_to_undolist(ctx.undo, ctx.image);
    guard.Step([&] {
        const Map_Size& size = Fuel_Size_Variants()[static_cast<std::size_t>(index)];
        Write(ctx.image, Size_Byte, (ctx.image.CardByte[Size_Byte] & ~7) | index);
        Write(ctx.image, ctx.image.FuelBlockBase, size.cols);
        Write(ctx.image, ctx.image.FuelBlockBase + size.cols + 1, size.rows);
    });
    Run(hooks);
}

void Ign_3D_MAP_Size_Combo_Click(Tables_Context& ctx, int index, const Table_Hooks& hooks) {
    if (index < 0 || index >= static_cast<int>(Ign_Size_Variants().size())) return;
    Proc_Guard guard(ctx.log, "Ign 3D MAP Size Combo Click");
    save_to_undolist(ctx.undo, ctx.image);
    guard.Step([&] {
        const Map_Size& size = Ign_Size_Variants()[static_cast<std::size_t>(index)];
        Write(ctx.image, Size_Byte, (ctx.image.CardByte[Size_Byte] & 63) | (index << 6));
        Write(ctx.image, ctx.image.IgnBlockBase, size.cols);
        Write(ctx.image, ctx.image.IgnBlockBase + size.cols + 1, size.rows);
    });
    Run(hooks);
}

void FUEL_2nd_MAP_Function_Combo_Click(Tables_Context& ctx, int index, const Table_Hooks& hooks) {
    if (index < 0 || index > 7) return;
    save_to_undolist(ctx.undo, ctx.image);
    Write(ctx.image, Size_Byte, (ctx.image.CardByte[Size_Byte] & ~56) | (index << 3));
    Run(hooks);
}

Scroll_Shown Main_Scroll_Text(const Tables_Context& ctx, int index) {
    int value = ctx.image.CardByte[At(index)];
    bool load_point = index == 92 || index == 94 || index == 96 || index == 98;
    if (!load_point) {
        const Scaling_Row* row = Find_Scaling_Row(index);
        return {Scroll_Text(ctx.image, index, value), row != nullptr ? row->unit : ""};
    }
    int selection = Curve_Selection(ctx.tables, index);
    if (selection == Rpm_Selection) {
        double factor = ctx.image.ScrollFactor[At(index)];
        return {Format_Number(value * (factor != 0 ? factor : Curve_Rpm_Factor), "0"), "rpm"};
    }
    int s = Sensor_For_Selection(ctx.image, ctx.sensors, selection);
    return {Sensor_Text(ctx, s, value), Sensor_Unit(ctx, s)};
}

Scroll_Shown Main_scroll_Change(Tables_Context& ctx, int index, int value,
                                const std::function<void()>& update, bool new_step) {
    auto a = At(index);
    std::uint8_t byte = byte_chk(value);
    if (ctx.image.CardByte[a] != byte) {
        if (new_step) save_to_undolist(ctx.undo, ctx.image);
        ctx.image.ChangedByte[a] = Changed_Mark;
        ctx.image.CardByte[a] = byte;
        if (update) update();
    }
    return Main_Scroll_Text(ctx, index);
}

} // namespace quorlen
