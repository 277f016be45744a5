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

} // namespace

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
