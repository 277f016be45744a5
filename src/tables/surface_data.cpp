#include "tables/surface_data.h"

#include "core/text.h"
#include "image/scaling.h"

namespace quorlen {

namespace {

std::size_t At(int address) {
    return static_cast<std::size_t>(Checked_Address(address));
}

Surface_Data Surface_Of(const Tables_Context& ctx, bool fuel) {
    Surface_Data data;
    Map_Block block = fuel ? Fuel_Block(ctx) : Ign_Block(ctx);
    const Tab_Captions& captions = ctx.tables.captions;
    data.series = fuel ? "Fuel map" : "Ignition map";
    data.x_title = "RPM";
    data.z_title = fuel ? captions.Fuel_Load_Header : captions.Ign_Load_Header;
    data.y_title = fuel ? "Fuel [ms]" : "Ignition [deg]";
    const auto& value = ctx.image.CardValue;
    for (int c = 1; c <= block.cols; ++c)
        data.x.push_back(value[At(block.Rpm_Step(c))]);
    for (int r = 1; r <= block.rows; ++r) {
        data.z.push_back(value[At(block.Load_Step(r))]);
        std::vector<double> row;
        for (int c = 1; c <= block.cols; ++c) {
            std::uint8_t b = ctx.image.CardByte[At(block.Cell(r, c))];
            row.push_back(Round_Even(fuel ? Fuel_Cell_Value(b) : Ign_Cell_Value(b), 2));
        }
        data.y.push_back(std::move(row));
    }
    return data;
}

// PWM1 comp.: the first of its four sliders.
constexpr int Pwm1_Comp_Index = 92;
// The 21 points of the one-dimensional tables' axes, and of the loads the surfaces take.
constexpr int Surface_Points = 21;

// Acceleration enrichment: byte 4 bits 0-1 its input (0 off), threshold, gain and sustain.
constexpr int Ae_Input_Byte = 4;
constexpr int Ae_Threshold = 86;
constexpr int Ae_Gain = 87;
constexpr int Ae_Sustain = 88;
// The load change runs over the whole input, 5 V a sample at most, in steps of 0.25 V.
constexpr double Load_Change_Step = 0.25;

} // namespace

Surface_Data Calculate_PWM3dmap(const Tables_Context& ctx) {
    Surface_Data data;
    const bool boost = ctx.tables.Pwm1_Boost;
    data.series = boost ? "Boost map" : "PWM map";
    Chart_Data table = Table_Chart(ctx, Table_Id::Pwm1);
    data.x_title = table.x_title;
    data.z_title = "Load [" + Comp_Curve_Unit(ctx, Pwm1_Comp_Index) + "]";
    data.y_title = (boost ? "Boost [" : "PWM [") + Table_Unit(ctx, Table_Id::Pwm1) + "]";
    data.x = table.x;
    const int base = One_D_Base(Table_Id::Pwm1);
    for (int r = 0; r < Surface_Points; ++r) {
        const double raw = r * 255.0 / (Surface_Points - 1);
        data.z.push_back(Round_Even(Comp_Curve_Load(ctx, Pwm1_Comp_Index, raw), 2));
        const double percent = Comp_Curve_At(ctx, Pwm1_Comp_Index, raw);
        std::vector<double> row;
        for (std::size_t c = 0; c < data.x.size(); ++c) {
            const int b = ctx.image.CardByte[At(base + static_cast<int>(c))];
            const std::uint8_t scaled = byte_chk(b * percent / 100);
            row.push_back(Round_Even(Table_Value(ctx, Table_Id::Pwm1, scaled).value_or(0), 2));
        }
        data.y.push_back(std::move(row));
    }
    return data;
}

Surface_Data Calculate_Acc3dmap(const Tables_Context& ctx) {
    Surface_Data data;
    const auto& b = ctx.image.CardByte;
    data.series = "Acceleration fuel";
    data.x_title = "Load change";
    data.z_title = "Engine cycles";
    data.y_title = "Acc fuel [ms]";
    const bool on = (b[Ae_Input_Byte] & 3) != 0;
    const double threshold = Scroll_Value(ctx.image, Ae_Threshold, b[Ae_Threshold]);
    const double gain = Scroll_Value(ctx.image, Ae_Gain, b[Ae_Gain]);
    const int sustain = b[Ae_Sustain];
    for (int i = 0; i < Surface_Points; ++i)
        data.x.push_back(i * Load_Change_Step);
    // One cycle past the sustain shows where the enrichment ends.
    for (int cycle = 1; cycle <= sustain + 1; ++cycle) {
        data.z.push_back(cycle);
        std::vector<double> row;
        for (double change : data.x)
            row.push_back(on && cycle <= sustain && change > threshold ? Round_Even(change * gain, 2) : 0.0);
        data.y.push_back(std::move(row));
    }
    return data;
}

Surface_Data Calculate_Fuel3dmap(const Tables_Context& ctx) {
    return Surface_Of(ctx, true);
}

Surface_Data Calculate_Ign3dmap(const Tables_Context& ctx) {
    return Surface_Of(ctx, false);
}

std::string Surface_Csv(const Surface_Data& data) {
    std::string text = data.z_title + " / " + data.x_title;
    for (double x : data.x)
        text += "," + Format_Number(x, "0.00");
    text += "\r\n";
    for (std::size_t r = 0; r < data.y.size(); ++r) {
        text += Format_Number(data.z[r], "0.00");
        for (double y : data.y[r])
            text += "," + Format_Number(y, "0.00");
        text += "\r\n";
    }
    return text;
}

std::string Export_Name(const std::string& settings_file_name) {
    std::string name = settings_file_name;
    auto slash = name.find_last_of("/\\");
    if (slash != std::string::npos) name = name.substr(slash + 1);
    auto dot = name.rfind('.');
    if (dot != std::string::npos && Equal_No_Case(name.substr(dot), ".qxs")) name.erase(dot);
    return name + "_qxs";
}

} // namespace quorlen
