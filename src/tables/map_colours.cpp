#include "tables/map_colours.h"

#include "core/proc_guard.h"
#include "image/scaling.h"
#include "tables/cell_entry.h"

#include <algorithm>
#include <cmath>

namespace quorlen {

namespace {

std::size_t At(int address) {
    return static_cast<std::size_t>(Checked_Address(address));
}

// A colour level is a whole byte; a level between two takes the even one.
std::uint8_t Level(double x) {
    return static_cast<std::uint8_t>(std::clamp(Round_Even_Whole(x), 0.0, 255.0));
}

Rgb Grey_Of(double level) {
    return {Level(level), Level(level), Level(level)};
}

Map_Colours Colour_Map(Tables_Context& ctx, bool fuel, const char* words) {
    Map_Colours out;
    Proc_Guard guard(ctx.log, words);
    guard.Step([&] {
        Map_Block block = fuel ? Fuel_Block(ctx) : Ign_Block(ctx);
        out.rows = block.rows;
        out.cols = block.cols;
        out.cells.assign(static_cast<std::size_t>(block.rows * block.cols), White);
        Colour_Mode mode = ctx.tables.colours.Color_3D_Check;
        if (mode == Colour_Mode::Duty && !fuel) mode = Colour_Mode::None;
        double M = Mid_Limit(ctx.tables.colours.Mid_3D_limit_txt);
        switch (mode) {
        case Colour_Mode::Mid:
            out.low = Color_Low_frame(M);
            out.high = Color_High_frame(M);
            break;
        case Colour_Mode::Grey:
            out.low = Grey_Colour(0);
            out.high = Grey_Colour(255);
            break;
        case Colour_Mode::Duty:
            out.low = Duty_Colour(0, 0);
            out.high = {255, 0, 0};
            break;
        case Colour_Mode::None:
        case Colour_Mode::Log_Hits:
            break;
        }
        const auto& bytes = ctx.image.CardByte;
        for (int r = 1; r <= block.rows; ++r) {
            for (int c = 1; c <= block.cols; ++c) {
                int b = bytes[At(block.Cell(r, c))];
                Rgb& cell = out.cells[static_cast<std::size_t>((r - 1) * block.cols + (c - 1))];
                switch (mode) {
                case Colour_Mode::Mid:
                    cell = Mid_Colour(b, M);
                    break;
                case Colour_Mode::Grey:
                    cell = Grey_Colour(b);
                    break;
                case Colour_Mode::Duty:
                    cell = Duty_Colour(b, ctx.image.CardValue[At(block.Rpm_Step(c))]);
                    break;
                case Colour_Mode::None:
                case Colour_Mode::Log_Hits:
                    break;
                }
            }
        }
    });
    return out;
}

// The addresses a verify compares: 250 to 255 are the box's own, and from 1011 on lie its
// error counters.
bool Compared(int address) {
    return (address >= 0 && address <= 249) || (address >= 256 && address <= 1010);
}

bool In_Block_Cells(const Map_Block& block, int address) {
    return address >= block.Start() && address <= block.End();
}

std::optional<double> Decode_Main_Cell(Table_Id id, std::uint8_t b) {
    return id == Table_Id::Fuel_3D ? Fuel_Cell_Value(b) : Ign_Cell_Value(b);
}

struct Address_Meaning {
    std::string name;
    std::optional<Table_Id> table;
};

Address_Meaning Meaning_Of(Tables_Context& ctx, int address) {
    for (Table_Id id : {Table_Id::Ign_Comp1, Table_Id::Fuel2_Map, Table_Id::Fuel2_Rpm, Table_Id::Afr,
                        Table_Id::Pwm1, Table_Id::Pwm2, Table_Id::Pwm3, Table_Id::Pwm4}) {
        auto table = One_D(id);
        int base = One_D_Base(id);
        if (address >= base && address < base + table->points)
            return {std::string(table->caption) + " point " + std::to_string(address - base + 1), id};
    }
    for (auto [block, title] : {std::pair{Fuel_Block(ctx), "Fuel"}, std::pair{Ign_Block(ctx), "Ignition"}}) {
        if (address == block.base) return {std::string(title) + " map RPM columns", {}};
        if (address == block.Rows_Byte()) return {std::string(title) + " map load rows", {}};
        if (address > block.base && address <= block.base + block.cols)
            return {std::string(title) + " RPM step " + std::to_string(address - block.base), {}};
        if (address > block.Rows_Byte() && address < block.Start())
            return {std::string(title) + " load step " + std::to_string(address - block.Rows_Byte()), {}};
    }
    if (const Scaling_Row* row = Find_Scaling_Row(address); row != nullptr && *row->label != 0)
        return {row->label, {}};
    return {"Setting", {}};
}

std::string Verify_Text(Tables_Context& ctx, const Address_Meaning& meaning, int address, std::uint8_t b) {
    if (meaning.table) {
        auto value = Table_Value(ctx, *meaning.table, b);
        return value ? Format_Number(*value, "0.00") : Format_Number(b, "0");
    }
    if (ctx.image.ScrollFactor[At(address)] != 0)
        return Format_Number(Scroll_Value(ctx.image, address, b), "0.00");
    return Format_Number(b, "0");
}

} // namespace

double Mid_Limit(const std::string& Mid_3D_limit_txt) {
    return Text_To_Double(Mid_3D_limit_txt) / 0.1;
}

Rgb Mid_Colour(int b, double M) {
    if (b >= M) {
        std::uint8_t level = Level(245 + M - b);
        return {255, level, level};
    }
    std::uint8_t level = Level(b + 250 - M);
    return {level, level, 255};
}

Rgb Duty_Colour(int b, double rpm) {
    double v = b / 10.0;
    double duty = std::floor(rpm * v / 1200);
    if (duty < 50) {
        std::uint8_t level = byte_chk(2 * duty + 154);
        return {level, level, 255};
    }
    if (duty <= 100) {
        std::uint8_t level = byte_chk(354 - 2 * duty);
        return {255, level, level};
    }
    return {255, 0, 0};
}

Rgb Grey_Colour(int b) {
    return Grey_Of(b / 2.0);
}

Rgb Color_Low_frame(double M) {
    return {Level(250 - M), Level(250 - M), 255};
}

Rgb Color_High_frame(double M) {
    return {255, Level(M - 10), Level(M - 10)};
}

Map_Colours Update_3D_Colors(Tables_Context& ctx) {
    return Colour_Map(ctx, true, "Update 3D Colors");
}

Map_Colours Update_3D_Ign_Colors(Tables_Context& ctx) {
    return Colour_Map(ctx, false, "Update 3D Ign Colors");
}

// --- verify -------------------------------------------------------------------------------

bool Box_Read_At_Hand(const Settings_Image& image) {
    return std::any_of(image.TempByte.begin(), image.TempByte.begin() + Image_Size,
                       [](std::uint8_t b) { return b != 0; });
}

Rgb Verify_Colour(double pct, int L) {
    if (pct == 0) return White;
    if (pct > 0) return pct < L ? Rgb{160, 255, 255} : Rgb{5, 208, 255};
    return pct > -L ? Rgb{255, 255, 128} : Rgb{255, 224, 0};
}

Verify_View Verify_Check_Pass(Tables_Context& ctx, Table_Id id) {
    Verify_View view;
    view.id = id;
    bool fuel = id == Table_Id::Fuel_3D;
    view.higher_caption = fuel ? "Leaner in box" : "Lower in box";
    view.lower_caption = fuel ? "Richer in box" : "Higher in box";
    Proc_Guard guard(ctx.log, fuel ? "Update 3D Colors" : "Update 3D Ign Colors");
    guard.Step([&] {
        Map_Block block = fuel ? Fuel_Block(ctx) : Ign_Block(ctx);
        view.rows = block.rows;
        view.cols = block.cols;
        view.cells.assign(static_cast<std::size_t>(block.rows * block.cols), Verify_Cell{});
        bool read = Box_Read_At_Hand(ctx.image);
        int L = static_cast<int>(Text_To_Double(ctx.tables.colours.Mid_3D_limit_txt));
        for (int r = 1; r <= block.rows; ++r) {
            for (int c = 1; c <= block.cols; ++c) {
                auto a = At(block.Cell(r, c));
                Verify_Cell& cell = view.cells[static_cast<std::size_t>((r - 1) * block.cols + (c - 1))];
                if (ctx.image.ChangedByte[a] < Changed_Mark || !read) continue;
                cell.compared = true;
                cell.box = *Decode_Main_Cell(id, ctx.image.TempByte[a]);
                cell.program = *Decode_Main_Cell(id, ctx.image.CardByte[a]);
                double difference = cell.program - cell.box;
                cell.text = Format_Number(-difference, "0.0");
                if (cell.program != 0)
                    cell.pct = Round_Even(100 * difference / cell.program, 1);
                else
                    cell.pct = difference < 0 ? -999 : 999;
                cell.colour = Verify_Colour(cell.pct, L);
            }
        }
    });
    return view;
}

std::vector<Verify_Line> Show_VerifyData(Tables_Context& ctx) {
    std::vector<Verify_Line> lines;
    Proc_Guard guard(ctx.log, "Show VerifyData");
    guard.Step([&] {
        if (!Box_Read_At_Hand(ctx.image)) return;
        Map_Block fuel = Fuel_Block(ctx);
        Map_Block ign = Ign_Block(ctx);
        for (int a = 0; a < Image_Size; ++a) {
            if (!Compared(a) || In_Block_Cells(fuel, a) || In_Block_Cells(ign, a)) continue;
            if (ctx.image.ChangedByte[At(a)] < Changed_Mark) continue;
            Address_Meaning meaning = Meaning_Of(ctx, a);
            Verify_Line line;
            line.address = a;
            line.name = meaning.name;
            line.program_byte = ctx.image.CardByte[At(a)];
            line.box_byte = ctx.image.TempByte[At(a)];
            line.program_text = Verify_Text(ctx, meaning, a, ctx.image.CardByte[At(a)]);
            line.box_text = Verify_Text(ctx, meaning, a, ctx.image.TempByte[At(a)]);
            lines.push_back(std::move(line));
        }
    });
    return lines;
}

} // namespace quorlen
