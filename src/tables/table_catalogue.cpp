#include "tables/table_catalogue.h"

#include "image/scaling.h"

namespace quorlen {

namespace {

constexpr Map_Size Fuel_Sizes[] = {
    {19, 18, "19 rpm x 18 analog"},     {21, 16, "21 rpm x 16 analog NEW"},
    {25, 13, "25 rpm x 13 analog"},     {18, 11, "18 rpm x 11 analog NEW(I)"},
    {16, 21, "16 rpm x 21 analog NEW"}, {13, 25, "13 rpm x 25 analog"},
    {11, 11, "11 rpm x 11 analog (I)"}, {15, 13, "15 rpm x 13 analog NEW(I)"},
};

constexpr Map_Size Ign_Sizes[] = {
    {18, 11, "18 rpm x 11 analog (F)"},
    {15, 13, "15 rpm x 13 analog (F)"},
    {11, 18, "11 rpm x 18 analog"},
    {11, 11, "11 rpm x 11 analog NEW(F)"},
};

struct Named_Table {
    Table_Id id;
    std::string_view name;
};

constexpr Named_Table Names[] = {
    {Table_Id::Fuel_3D, "fuel"},        {Table_Id::Ignition_3D, "ignition"},
    {Table_Id::Ign_Comp1, "ign-comp1"}, {Table_Id::Fuel2_Map, "fuel2-map"},
    {Table_Id::Fuel2_Rpm, "fuel2-rpm"}, {Table_Id::Afr, "afr"},
    {Table_Id::Pwm1, "pwm1"},           {Table_Id::Pwm2, "pwm2"},
    {Table_Id::Pwm3, "pwm3"},           {Table_Id::Pwm4, "pwm4"},
    {Table_Id::Pwm2_Fuel, "pwm2-fuel"},
};

// Where the selections live. The main maps share the low nibble of byte 174 (3, MAP, on a
// fresh image); the one-dimensional tables each have a byte of the group that the table
// update reads (0 there, as on a fresh image, is engine speed); the lambda table follows the
// AFR control's load option (byte 216 bit 4: MAP or throttle) and its sensor input follows
// AFR_Number (byte 15 bit 6: input 1 or input 5).
constexpr int Main_Load_Byte = 174;
constexpr int Ign2nd_Load_Byte = 68;
constexpr int Fuel2nd_Load_Byte = 69;
constexpr int Fuel3rd_Load_Byte = 73;
constexpr int Pwm_Load_Byte = 74;
constexpr int Ign3rd_Load_Byte = 77;

int Selection_Of_Code(int code) {
    return code >= 1 && code <= Analog_Inputs ? code : Rpm_Selection;
}

} // namespace

std::span<const Map_Size> Fuel_Size_Variants() {
    return Fuel_Sizes;
}

std::span<const Map_Size> Ign_Size_Variants() {
    return Ign_Sizes;
}

int Fuel_Size_Index(const Settings_Image& image) {
    return image.CardByte[Size_Byte] & 7;
}

int Ign_Size_Index(const Settings_Image& image) {
    return (image.CardByte[Size_Byte] & 192) / 64;
}

int Fuel_2nd_Function(const Settings_Image& image) {
    return (image.CardByte[Size_Byte] & 56) / 8;
}

bool Fuel_2nd_Scale_500(const Settings_Image& image) {
    return (image.CardByte[5] & 64) != 0;
}

double Ign_Cell_Value(std::uint8_t b) {
    return b * 0.2;
}

std::string Ign_Cell_Text(std::uint8_t b) {
    return Format_Number(Ign_Cell_Value(b), "0.0");
}

double Fuel_Cell_Value(std::uint8_t b) {
    if (b == 0) return 0;
    if (b < 25) return b * 0.06 + 1.0;
    return b * 0.1;
}

std::string Fuel_Cell_Text(std::uint8_t b) {
    return Format_Number(Fuel_Cell_Value(b), b >= 1 && b < 25 ? "0.00" : "0.0");
}

std::string Rpm_Axis_Text(int running_sum) {
    return Format_Number(running_sum * Rpm_Per_Step, "0");
}

Load_Selections Read_Load_Selections(const Settings_Image& image) {
    const auto& b = image.CardByte;
    Load_Selections s;
    s.Fuel3DLoadSensor = Selection_Of_Code(b[Main_Load_Byte] & 15);
    s.IgnLoadSensor = s.Fuel3DLoadSensor;
    s.Ign2ndLoadSensor = Selection_Of_Code(b[Ign2nd_Load_Byte]);
    s.Ign3rdLoadSensor = Selection_Of_Code(b[Ign3rd_Load_Byte]);
    s.Fuel2ndLoadSensor = Selection_Of_Code(b[Fuel2nd_Load_Byte]);
    s.Fuel3rdLoadSensor = Selection_Of_Code(b[Fuel3rd_Load_Byte]);
    s.PwmLoadSensor = Selection_Of_Code(b[Pwm_Load_Byte]);
    s.LambdaLoadSensor = (b[216] & 16) ? 2 : 3;
    s.LambdaSensor = (b[15] & 64) ? 5 : 1;
    return s;
}

std::string Load_Input_Name(int selection) {
    switch (selection) {
    case Rpm_Selection:
        return "RPM";
    case 1:
        return "AFR";
    case 2:
        return "Throttle";
    case 3:
        return "MAP";
    case 4:
        return "Coolant";
    case 9:
        return "AUX1/BAT";
    case 10:
        return "AUX2/IAT";
    default:
        return "Analog " + std::to_string(selection);
    }
}

int Sensor_For_Selection(const Settings_Image& image, const Sensor_State& sensors, int selection) {
    if (selection < 1 || selection > Analog_Inputs) return -1;
    int input = image.Analog_Channel[static_cast<std::size_t>(selection)];
    int s = sensors.Sensor_Of_Input(input);
    return sensors.table.Has(s) ? s : -1;
}

std::optional<One_D_Table> One_D(Table_Id id) {
    switch (id) {
    case Table_Id::Ign_Comp1:
        return One_D_Table{id, "1st Ignition compensation", 21};
    case Table_Id::Fuel2_Map:
        return One_D_Table{id, "2nd Fuel MAP", 21};
    case Table_Id::Fuel2_Rpm:
        return One_D_Table{id, "2nd Fuel RPM", 21};
    case Table_Id::Afr:
        return One_D_Table{id, "AFR Control", 17};
    case Table_Id::Pwm1:
        return One_D_Table{id, "PWM 1", 21};
    case Table_Id::Pwm2:
        return One_D_Table{id, "PWM 2", 21};
    case Table_Id::Pwm3:
        return One_D_Table{id, "PWM 3", 21};
    case Table_Id::Pwm4:
        return One_D_Table{id, "PWM 4", 21};
    default:
        return std::nullopt;
    }
}

int One_D_Base(Table_Id id) {
    switch (id) {
    case Table_Id::Ign_Comp1:
        return 191;
    case Table_Id::Fuel2_Map:
        return 100;
    case Table_Id::Fuel2_Rpm:
        return 133;
    case Table_Id::Afr:
        return 154;
    case Table_Id::Pwm1:
        return 896;
    case Table_Id::Pwm2:
        return 917;
    case Table_Id::Pwm3:
        return 938;
    case Table_Id::Pwm4:
        return 959;
    default:
        return -1;
    }
}

std::optional<Table_Id> Table_By_Name(std::string_view name) {
    for (const Named_Table& t : Names)
        if (t.name == name) return t.id;
    return std::nullopt;
}

std::string_view Table_Name(Table_Id id) {
    for (const Named_Table& t : Names)
        if (t.id == id) return t.name;
    return {};
}

} // namespace quorlen
