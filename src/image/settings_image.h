#pragma once
// The 1024-byte settings image and its sister arrays. Every page, grid and chart of the
// program is a view on CardByte; an edit writes a byte and marks it in ChangedByte.
//
// The arrays run to index 1024: address 1024 exists in the program and never goes to or
// comes from the box. An index of 1025 or more is a fault (Subscript out of range).

#include "core/debug_log.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorlen {

inline constexpr int Image_Size = 1024;
inline constexpr int Array_Size = 1025;
inline constexpr std::uint8_t Changed_Mark = 255;

template <class T>
using Image_Array = std::array<T, Array_Size>;

struct Settings_Image {
    Image_Array<std::uint8_t> CardByte{};
    Image_Array<std::uint8_t> TempByte{};
    Image_Array<std::uint8_t> SlaveByte{};
    Image_Array<std::uint8_t> ChangedByte{};
    Image_Array<std::int16_t> ScrollOffset{};
    Image_Array<double> ScrollFactor{};
    Image_Array<std::string> ScrollFormat{};
    Image_Array<double> CardValue{};

    std::int16_t DatasetID = 200;
    int First_Changed = 0;
    int Last_Changed = 0; // 65535 when nothing is to be written
    bool Write_Errors_Only = false;

    int FuelBlockBase = 256;
    int IgnBlockBase = 653;
    // The second table base that the stand-alone dataset moves to the PWM tables; 0 until
    // Init_Cardbyte has seen a stand-alone dataset.
    int Second_Table_Base = 0;
    // The small PWM2 extra fuel block, and three more tables that start at the ignition block.
    int PwmFuelBase = 46;
    std::array<int, 3> Further_Table_Bases{653, 653, 653};
    // The input number behind each analogue channel code 1 to 12 (index 0 unused), and the
    // channel of the boost sensor.
    std::array<int, 13> Analog_Channel{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    int BoostSensor = 3;
};

// Throws Subscript out of range for an index outside 0..1024.
int Checked_Address(int address);

// --- values -----------------------------------------------------------------------------

// The value as a byte: 255 above 255, 0 below 0, else the whole part of value + 0.001 (so
// 2.9999 from a division still lands on 3).
std::uint8_t byte_chk(double value);

// 16-bit sum minus one, wrapping; an all-zero range gives 65535. The box's own rule.
std::uint16_t Calck_Checksum(const Settings_Image& image, int first, int last);
std::uint16_t Calc_Temp_Checksum(const Settings_Image& image, int first, int last);
std::uint16_t Checksum_Of(const std::uint8_t* bytes, int first, int last);

// --- bits and digits --------------------------------------------------------------------

void Set_Cbyte(Settings_Image& image, Debug_Log& log, int address, int value, int offset, double factor,
               std::string format);
void Set_CardByte_bit(Settings_Image& image, Debug_Log& log, int address, int bit, int value);
int Get_CardByte_bit(const Settings_Image& image, Debug_Log& log, int address, int bit);
std::string Show_Cardbyte_bits(const Settings_Image& image, Debug_Log& log, int address);
std::string Byte_Bits_Text(std::uint8_t value);

// "10001000" gives 136; any other length leaves the result 0; characters other than "1"
// count as 0.
int Bin_2_Dec(std::string_view text);
void Bin_2_Dec(std::string_view text, int& result);

// Upper-case hexadecimal of the low digits of a 16-bit value: 1 to 3 digits give that
// many, 0 gives "0", more give 4.
std::string dec2hex(int value, int digits);

// No digit is rejected: the box's hex digits in either case decode, anything else decodes to
// something, as the box's own reader does.
int Hex_Digit_Value(char c);
std::uint8_t Hex2_To_Byte(std::string_view two_digits);

// --- image state ------------------------------------------------------------------------

// The span of changed bytes to write: First_Changed and Last_Changed, true if any. The box's
// error counters (1011 and up) are written only on explicit request (Write_Errors_Only).
bool Get_Errcardbyte(Settings_Image& image);

void Clear_StandAlone_CardByte(Settings_Image& image);

// The stand-alone dataset's flag bytes, scaling catalogue and table bases (image/scaling.cpp).
void Set_StandAlone_ScrollFactors(Settings_Image& image, Debug_Log& log);

// Defaults at start and on a new dataset.
void Init_Cardbyte(Settings_Image& image, Debug_Log& log);

} // namespace quorlen
