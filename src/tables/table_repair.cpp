#include "tables/table_repair.h"

#include "tables/table_catalogue.h"

#include <bit>
#include <string>

namespace quorlen {

std::string_view Axis_Repair_Message(Repair_Axis axis) {
    switch (axis) {
    case Repair_Axis::Fuel_Rpm:
        return "Some errors in Fuel RPM table was automatically corrected. Double check and save the file";
    case Repair_Axis::Fuel_Load:
        return "Some errors in Fuel Load table was automatically corrected. Double check and save the file";
    case Repair_Axis::Ign_Rpm:
        return "Some errors in Ignition RPM table was automatically corrected. Double check and save the "
               "file";
    case Repair_Axis::Ign_Load:
        return "Some errors in Ignition Load table was automatically corrected. Double check and save the "
               "file";
    case Repair_Axis::Pwm2_Fuel:
        return "Some errors in PWM2 extra fuel table was automatically corrected. Check and save the file";
    }
    return {};
}

std::uint8_t Power_Of_Two_Step(std::uint8_t b) {
    return b == 0 ? b : std::bit_floor(b);
}

bool Read_Axis_Steps(Settings_Image& image, Repair_Axis axis, int first_step, int count, int* sums,
                     User_Dialogs& dialogs) {
    bool AxisRepaired = false;
    int sum = 0;
    // The first step of a main map's axis is where the axis starts, not a spacing the box
    // shifts by: the throttle calibration and the step buttons set it to any value.
    const bool offset_first = axis != Repair_Axis::Pwm2_Fuel;
    for (int i = 0; i < count; ++i) {
        auto a = static_cast<std::size_t>(Checked_Address(first_step + i));
        std::uint8_t b = image.CardByte[a];
        if (i == 0 && offset_first) {
            sum = b;
        } else if (b != 0) {
            std::uint8_t mended = Power_Of_Two_Step(b);
            if (mended != b) {
                AxisRepaired = true;
                image.CardByte[a] = mended;
                image.ChangedByte[a] = Changed_Mark;
            }
            sum += mended;
            if (sum > 255) sum = 255;
        }
        if (sums != nullptr) sums[i] = sum;
    }
    if (AxisRepaired) dialogs.Show_Message(Icon::Information, std::string(Axis_Repair_Message(axis)));
    return AxisRepaired;
}

namespace {

// Returns the nibble, cleared in the image when it is out of range.
int Checked_Nibble(Settings_Image& image, Debug_Log& log, int address, bool high, const std::string& what) {
    auto a = static_cast<std::size_t>(address);
    int value = high ? (image.CardByte[a] & 240) / 16 : image.CardByte[a] & 15;
    if (value < 9) return value;
    image.CardByte[a] = static_cast<std::uint8_t>(image.CardByte[a] & (high ? 15 : 240));
    image.ChangedByte[a] = Changed_Mark;
    log.Write_Line("Error in " + what + " setting");
    return 0;
}

} // namespace

void Check_Output_Selections(Settings_Image& image, Debug_Log& log, int (&pwm_selection)[4],
                             int (&digital_function)[4], int (&digital_sensor)[4]) {
    for (int i = 0; i < 4; ++i)
        pwm_selection[i] = Checked_Nibble(image, log, 186 + i / 2, i % 2 == 1,
                                          "PWM" + std::to_string(i + 1) + " signal selection");
    for (int i = 0; i < 4; ++i) {
        std::string digital = "Digital " + std::to_string(i + 1);
        digital_function[i] = Checked_Nibble(image, log, 230 + 5 * i, true, digital + " function");
        digital_sensor[i] = Checked_Nibble(image, log, 230 + 5 * i, false, digital + " sensor");
    }
}

void Fix_Pwm_Fuel_Block(Settings_Image& image) {
    image.CardByte[static_cast<std::size_t>(image.PwmFuelBase)] = 1;
    image.CardByte[static_cast<std::size_t>(image.PwmFuelBase + 2)] = Pwm_Fuel_Points;
}

} // namespace quorlen
