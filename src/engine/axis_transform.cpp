#include "engine/axis_transform.h"

#include "core/proc_guard.h"
#include "core/text.h"
#include "image/scaling.h"

#include <algorithm>
#include <cmath>

namespace quorlen {

namespace {

constexpr int Throttle_Selection = 2;

std::size_t At(int address) {
    return static_cast<std::size_t>(Checked_Address(address));
}

void Write(Settings_Image& image, int address, std::uint8_t value) {
    auto a = At(address);
    if (image.CardByte[a] != value) image.ChangedByte[a] = Changed_Mark;
    image.CardByte[a] = value;
}

void Run(const Table_Hooks& hooks) {
    if (hooks.Update_Tabs) hooks.Update_Tabs();
    if (hooks.Show_Right_Tabs) hooks.Show_Right_Tabs();
    if (hooks.Update_All) hooks.Update_All();
}

int Load_Selection(const Settings_Image& image, Map_Head head) {
    Load_Selections loads = Read_Load_Selections(image);
    return head == Map_Head::Fuel ? loads.Fuel3DLoadSensor : loads.IgnLoadSensor;
}

std::string Cell_Text(Map_Head head, std::uint8_t b) {
    return head == Map_Head::Fuel ? Fuel_Cell_Text(b) : Ign_Cell_Text(b);
}

std::uint8_t Cell_Byte(Map_Head head, double v) {
    return head == Map_Head::Fuel ? Fuel_Transform_Byte(v) : Ign_Transform_Byte(v);
}

// The first step of each axis, and the number of steps.
int First_Step(const Map_Block& block, Axis_Focus axis) {
    return axis == Axis_Focus::Rpm ? block.Rpm_Step(1) : block.Load_Step(1);
}

int Step_Count(const Map_Block& block, Axis_Focus axis) {
    return axis == Axis_Focus::Rpm ? block.cols : block.rows;
}

// Speeds compare as the 16-bit integers of their texts.
double Speed_Of(const std::string& text) {
    return Round_Even_Whole(Val(text));
}

// One pass of the conversion along one axis. `old_axis(j)` is the saved breakpoint j
// (1..old_count), `value(j)` the saved value there (j = 0 reads the header column or row, as
// the saved grid holds it), and `put(v)` codes the result. Along the speed a breakpoint below
// the first saved one is interpolated from the header, as the box's tuners have always seen
// it; along the load the first saved row is taken instead, because the header there is an
// engine speed that would read as a full injector.
template <class Axis, class Value, class Put>
void Resample(double N, int old_count, bool from_header_below_first, Axis old_axis, Value value, Put put) {
    if (old_count < 1) return;
    if (N <= old_axis(1) && !(from_header_below_first && N > 0 && N < old_axis(1))) {
        put(value(1));
        return;
    }
    for (int j = 1; j <= old_count; ++j) {
        double O = old_axis(j);
        double P = j == 1 ? 0 : old_axis(j - 1);
        if (P < N && N <= O) {
            if (N == O) {
                put(value(j));
                return;
            }
            double u = (N - P) / (O - P);
            put(value(j - 1) * (1 - u) + value(j) * u);
            return;
        }
        if (P < N && j == old_count) {
            put(value(old_count));
            return;
        }
    }
    // Saved breakpoints that run backwards can leave N between none of them: the last saved
    // value stands, as it does beyond the axis.
    put(value(old_count));
}

void Save_Head(const Axis_Context& ctx, Transform_State& state, Map_Head head) {
    Proc_Guard guard(ctx.log, head == Map_Head::Fuel ? "Save transform" : "Save Ign transform");
    guard.Step([&] {
        Saved_Map& saved = state.Of(head);
        Map_Block block = Head_Block(ctx.image, head);
        auto rpm = Rpm_Axis_Texts(ctx, head);
        auto load = Load_Axis_Texts(ctx, head);
        saved.grid.Resize(block.rows + 1, block.cols + 1);
        saved.grid.At(0, 0) = "RPM";
        for (int c = 1; c <= block.cols; ++c)
            saved.grid.At(0, c) = rpm[static_cast<std::size_t>(c - 1)];
        for (int r = 1; r <= block.rows; ++r) {
            saved.grid.At(r, 0) = load[static_cast<std::size_t>(r - 1)];
            for (int c = 1; c <= block.cols; ++c)
                saved.grid.At(r, c) = Cell_Text(head, ctx.image.CardByte[At(block.Cell(r, c))]);
        }
        saved.grid2 = saved.grid;
        saved.Saved_RPM_Count = block.cols;
        saved.Saved_MAP_Count = block.rows;
    });
}

bool Convert_Head(const Axis_Context& ctx, Transform_State& state, Map_Head head, const Table_Hooks& hooks) {
    Saved_Map& saved = state.Of(head);
    if (saved.Saved_RPM_Count < 1 || saved.Saved_MAP_Count < 1) return false;
    {
        Proc_Guard guard(ctx.log, head == Map_Head::Fuel ? "Convert Transform" : "Convert Ign Transform");
        guard.Step([&] {
            save_to_undolist(ctx.undo, ctx.image);
            Map_Block block = Head_Block(ctx.image, head);
            auto rpm = Rpm_Axis_Texts(ctx, head);
            auto load = Load_Axis_Texts(ctx, head);
            const Saved_Grid& old = saved.grid;
            const int old_cols = saved.Saved_RPM_Count;
            const int old_rows = saved.Saved_MAP_Count;

            // Speed pass: the new speeds over the saved loads.
            Saved_Grid& mid = saved.grid2;
            mid.Resize(old_rows + 1, block.cols + 1);
            mid.At(0, 0) = "RPM";
            for (int r = 1; r <= old_rows; ++r)
                mid.At(r, 0) = old.At(r, 0);
            for (int c = 1; c <= block.cols; ++c) {
                mid.At(0, c) = rpm[static_cast<std::size_t>(c - 1)];
                double N = Speed_Of(rpm[static_cast<std::size_t>(c - 1)]);
                for (int r = 1; r <= old_rows; ++r) {
                    Resample(
                        N, old_cols, true, [&](int j) { return Speed_Of(old.At(0, j)); },
                        [&](int j) { return old.Number(r, j); },
                        [&](double v) { mid.At(r, c) = Cell_Text(head, Cell_Byte(head, v)); });
                }
            }

            // Load pass: from the speed pass onto the new loads, into the image.
            for (int r = 1; r <= block.rows; ++r) {
                double N = Val(load[static_cast<std::size_t>(r - 1)]);
                for (int c = 1; c <= block.cols; ++c) {
                    Resample(
                        N, old_rows, false, [&](int j) { return mid.Number(j, 0); },
                        [&](int j) { return mid.Number(j, c); },
                        [&](double v) { Write(ctx.image, block.Cell(r, c), Cell_Byte(head, v)); });
                }
            }
        });
    }
    if (hooks.Update_All) hooks.Update_All();
    return true;
}

template <class Change>
void Change_Steps(const Axis_Context& ctx, Map_Head head, Axis_Focus axis, int first, int last,
                  const Table_Hooks& hooks, const char* name, Change change) {
    {
        Proc_Guard guard(ctx.log, name);
        guard.Step([&] {
            Map_Block block = Head_Block(ctx.image, head);
            int count = Step_Count(block, axis);
            if (first > last) std::swap(first, last);
            first = std::max(first, 1);
            last = std::min(last, count);
            if (first > last) return;
            save_to_undolist(ctx.undo, ctx.image);
            for (int i = first; i <= last; ++i) {
                int a = First_Step(block, axis) + i - 1;
                Write(ctx.image, a, change(ctx.image.CardByte[At(a)], i));
            }
        });
    }
    if (hooks.Update_All) hooks.Update_All();
}

std::uint8_t Doubled(std::uint8_t b) {
    return static_cast<std::uint8_t>(Round_Even_Whole(std::pow(2.0, std::log2(b) + 1)));
}

std::uint8_t Halved(std::uint8_t b) {
    return static_cast<std::uint8_t>(Round_Even_Whole(std::pow(2.0, std::log2(b) - 1)));
}

void Set_All_Steps(const Axis_Context& ctx, Map_Head head, Axis_Focus axis, int s, const Table_Hooks& hooks,
                   const char* name) {
    {
        Proc_Guard guard(ctx.log, name);
        guard.Step([&] {
            Map_Block block = Head_Block(ctx.image, head);
            save_to_undolist(ctx.undo, ctx.image);
            std::uint8_t step = Resolution_Step(s);
            for (int i = 0; i < Step_Count(block, axis); ++i)
                Write(ctx.image, First_Step(block, axis) + i, step);
        });
    }
    if (hooks.Update_All) hooks.Update_All();
}

} // namespace

// --- the grids ------------------------------------------------------------------------------

void Saved_Grid::Resize(int r, int c) {
    rows = std::max(r, 0);
    cols = std::max(c, 0);
    cells.assign(static_cast<std::size_t>(rows * cols), std::string());
}

const std::string& Saved_Grid::At(int r, int c) const {
    if (r < 0 || r >= rows || c < 0 || c >= cols) throw errors::Subscript_Out_Of_Range();
    return cells[static_cast<std::size_t>(r * cols + c)];
}

std::string& Saved_Grid::At(int r, int c) {
    if (r < 0 || r >= rows || c < 0 || c >= cols) throw errors::Subscript_Out_Of_Range();
    return cells[static_cast<std::size_t>(r * cols + c)];
}

double Saved_Grid::Number(int r, int c) const {
    return Val(At(r, c));
}

// --- axes -----------------------------------------------------------------------------------

Map_Block Head_Block(const Settings_Image& image, Map_Head head) {
    if (head == Map_Head::Fuel) {
        const Map_Size& size = Fuel_Size_Variants()[static_cast<std::size_t>(Fuel_Size_Index(image))];
        return {image.FuelBlockBase, size.cols, size.rows};
    }
    const Map_Size& size = Ign_Size_Variants()[static_cast<std::size_t>(Ign_Size_Index(image))];
    return {image.IgnBlockBase, size.cols, size.rows};
}

std::vector<int> Axis_Sums(const Settings_Image& image, int first_step, int count) {
    std::vector<int> sums;
    int sum = 0;
    for (int i = 0; i < count; ++i) {
        sum = std::min(sum + image.CardByte[At(first_step + i)], 255);
        sums.push_back(sum);
    }
    return sums;
}

std::vector<std::string> Rpm_Axis_Texts(const Axis_Context& ctx, Map_Head head) {
    Map_Block block = Head_Block(ctx.image, head);
    std::vector<std::string> texts;
    for (int sum : Axis_Sums(ctx.image, block.Rpm_Step(1), block.cols))
        texts.push_back(Rpm_Axis_Text(sum));
    return texts;
}

std::vector<std::string> Load_Axis_Texts(const Axis_Context& ctx, Map_Head head) {
    Map_Block block = Head_Block(ctx.image, head);
    int selection = Load_Selection(ctx.image, head);
    int s = Sensor_For_Selection(ctx.image, ctx.sensors, selection);
    std::vector<std::string> texts;
    for (int sum : Axis_Sums(ctx.image, block.Load_Step(1), block.rows)) {
        if (selection == Rpm_Selection) {
            texts.push_back(Rpm_Axis_Text(sum));
            continue;
        }
        auto value = Forward_Sensor_Value(ctx.sensors.table, s, sum);
        texts.push_back(value ? Format_Number(*value, "0.00") : std::string());
    }
    return texts;
}

std::uint8_t Fuel_Transform_Byte(double v) {
    if (v == 0) return 0;
    if (v > 0.53 && v < 1.06) return 1;
    if (v < 2.5) return byte_chk(Round_Even_Whole((v - 1) / 0.06));
    return byte_chk(Round_Even_Whole(v / 0.1));
}

std::uint8_t Ign_Transform_Byte(double v) {
    return byte_chk(Round_Even_Whole(v / 0.2));
}

// --- steps 1 and 3 ------------------------------------------------------------------------------

void Save_transform(const Axis_Context& ctx, Transform_State& state) {
    Save_Head(ctx, state, Map_Head::Fuel);
}

void Save_Ign_transform(const Axis_Context& ctx, Transform_State& state) {
    Save_Head(ctx, state, Map_Head::Ignition);
}

bool Convert_Transform(const Axis_Context& ctx, Transform_State& state, const Table_Hooks& hooks) {
    return Convert_Head(ctx, state, Map_Head::Fuel, hooks);
}

bool Convert_Ign_Transform(const Axis_Context& ctx, Transform_State& state, const Table_Hooks& hooks) {
    return Convert_Head(ctx, state, Map_Head::Ignition, hooks);
}

// --- step 2 -----------------------------------------------------------------------------------

void Map_Size_Click(Tables_Context& ctx, Map_Head head, int index, const Table_Hooks& hooks) {
    if (head == Map_Head::Fuel)
        FUEL_3D_MAP_Size_Combo_Click(ctx, index, hooks);
    else
        Ign_3D_MAP_Size_Combo_Click(ctx, index, hooks);
}

std::uint8_t Increased_Step(std::uint8_t b, int i) {
    if (i == 1) return b == 255 ? b : static_cast<std::uint8_t>(b + 1);
    if (b == 0) return 1;
    if (b >= 128) return b;
    return Doubled(b);
}

std::uint8_t Decreased_Step(std::uint8_t b, int i) {
    if (i == 1) return b == 0 ? b : static_cast<std::uint8_t>(b - 1);
    if (b < 2) return b;
    return Halved(b);
}

std::uint8_t Inserted_Step(std::uint8_t b, int i) {
    if (b < 2) return i == 1 ? 0 : b;
    return Halved(b);
}

void Table_Increase(const Axis_Context& ctx, Map_Head head, Axis_Focus axis, int first, int last,
                    const Table_Hooks& hooks) {
    Change_Steps(ctx, head, axis, first, last, hooks, "Table Increase", Increased_Step);
}

void Table_Decrease(const Axis_Context& ctx, Map_Head head, Axis_Focus axis, int first, int last,
                    const Table_Hooks& hooks) {
    Change_Steps(ctx, head, axis, first, last, hooks, "Table Decrease", Decreased_Step);
}

void Table_Insert(const Axis_Context& ctx, Map_Head head, Axis_Focus axis, int first, int last,
                  const Table_Hooks& hooks) {
    if (first > last) std::swap(first, last);
    Change_Steps(ctx, head, axis, first + 1, last + 1, hooks, "Table Insert", Inserted_Step);
}

std::uint8_t Resolution_Step(int s) {
    // 2^-1 at the bottom rounds, tie to even, to 0.
    return byte_chk(Round_Even_Whole(std::pow(2.0, s - 1)));
}

std::string d_3D_RPM_text(int s) {
    if (s < 1) return "0";
    double rpm = std::pow(2.0, s - 1) * Rpm_Per_Step;
    return Format_Number(rpm, rpm == std::floor(rpm) ? "0" : "0.0");
}

std::string d_3D_MAP_text(const Axis_Context& ctx, Map_Head head, int s) {
    int selection = Load_Selection(ctx.image, head);
    double step = s < 1 ? 0 : std::pow(2.0, s - 1);
    if (selection == Rpm_Selection) return Format_Number(step * Rpm_Per_Step, "0");
    int sensor = Sensor_For_Selection(ctx.image, ctx.sensors, selection);
    auto value = Forward_Sensor_Value(ctx.sensors.table, sensor, step);
    if (!value) return {};
    return Format_Number(*value, Decimals_Format(ctx.sensors.table.Decimals(sensor)));
}

void d_3D_RPM_scroll_Change(const Axis_Context& ctx, Map_Head head, int s, const Table_Hooks& hooks) {
    Set_All_Steps(ctx, head, Axis_Focus::Rpm, s, hooks, "d 3D RPM scroll");
}

void d_3D_MAP_scroll_Change(const Axis_Context& ctx, Map_Head head, int s, const Table_Hooks& hooks) {
    Set_All_Steps(ctx, head, Axis_Focus::Map, s, hooks, "d 3D MAP scroll");
}

int Resolution_Of(const Settings_Image& image, Map_Head head, Axis_Focus axis) {
    Map_Block block = Head_Block(image, head);
    if (Step_Count(block, axis) < 2) return 0;
    std::uint8_t b = image.CardByte[At(First_Step(block, axis) + 1)];
    if (b == 0 || (b & (b - 1)) != 0) return 0;
    return static_cast<int>(std::log2(b)) + 1;
}

// --- throttle -------------------------------------------------------------------------------

void Throttle_Load_Steps(const Axis_Context& ctx, int min_raw, int max_raw, const Table_Hooks& hooks) {
    const Map_Head heads[] = {Map_Head::Fuel, Map_Head::Ignition};
    bool any = false;
    for (Map_Head head : heads)
        any = any || Load_Selection(ctx.image, head) == Throttle_Selection;
    if (!any) return;
    {
        Proc_Guard guard(ctx.log, "Calibrate TPS sens");
        guard.Step([&] {
            save_to_undolist(ctx.undo, ctx.image);
            for (Map_Head head : heads) {
                if (Load_Selection(ctx.image, head) != Throttle_Selection) continue;
                Map_Block block = Head_Block(ctx.image, head);
                int k = 0;
                while (k < 6 && (1 << k) * block.rows + min_raw < max_raw)
                    ++k;
                Write(ctx.image, block.Load_Step(1), byte_chk(min_raw));
                for (int r = 2; r <= block.rows; ++r)
                    Write(ctx.image, block.Load_Step(r), static_cast<std::uint8_t>(1 << k));
            }
        });
    }
    Run(hooks);
}

} // namespace quorlen
