#include "image/settings_image.h"

#include "core/proc_guard.h"
#include "core/run_error.h"

#include <cmath>

namespace quorlen {

int Checked_Address(int address) {
    if (address < 0 || address >= Array_Size) throw errors::Subscript_Out_Of_Range();
    return address;
}

std::uint8_t byte_chk(double value) {
    if (std::isnan(value)) return 0;
    if (value > 255) return 255;
    if (value < 0) return 0;
    double whole = std::floor(value + 0.001);
    return static_cast<std::uint8_t>(whole > 255 ? 255 : whole);
}

std::uint16_t Checksum_Of(const std::uint8_t* bytes, int first, int last) {
    std::uint32_t s = 0;
    for (int i = first; i <= last; ++i) {
        s += bytes[Checked_Address(i)];
        if (s > 65535) s -= 65536;
    }
    return s == 0 ? std::uint16_t{65535} : static_cast<std::uint16_t>(s - 1);
}

std::uint16_t Calck_Checksum(const Settings_Image& image, int first, int last) {
    return Checksum_Of(image.CardByte.data(), first, last);
}

std::uint16_t Calc_Temp_Checksum(const Settings_Image& image, int first, int last) {
    return Checksum_Of(image.TempByte.data(), first, last);
}

void Set_Cbyte(Settings_Image& image, Debug_Log& log, int address, int value, int offset, double factor,
               std::string format) {
    Proc_Guard guard(log, "Set Cbyte");
    guard.Step([&] {
        int a = Checked_Address(address);
        if (value < 0 || value > 255) throw errors::Overflow();
        image.CardByte[a] = static_cast<std::uint8_t>(value);
        image.ScrollOffset[a] = static_cast<std::int16_t>(offset);
        image.ScrollFactor[a] = factor;
        image.ScrollFormat[a] = std::move(format);
    });
}

void Set_CardByte_bit(Settings_Image& image, Debug_Log& log, int address, int bit, int value) {
    Proc_Guard guard(log, "Set card byte bit");
    guard.Step([&] {
        int a = Checked_Address(address);
        if (bit < 0 || bit > 7) throw errors::Overflow();
        auto mask = static_cast<std::uint8_t>(1u << bit);
        if (value == 0) image.CardByte[a] = static_cast<std::uint8_t>(image.CardByte[a] & ~mask);
        if (value == 1) image.CardByte[a] = static_cast<std::uint8_t>(image.CardByte[a] | mask);
    });
}

int Get_CardByte_bit(const Settings_Image& image, Debug_Log& log, int address, int bit) {
    Proc_Guard guard(log, "Get cardbyte bit");
    int result = 0;
    guard.Step([&] {
        int a = Checked_Address(address);
        if (bit < 0 || bit > 7) throw errors::Overflow();
        result = (image.CardByte[a] >> bit) & 1;
    });
    return result;
}

std::string Byte_Bits_Text(std::uint8_t value) {
    std::string bits(8, '0');
    for (int bit = 0; bit < 8; ++bit)
        if (value & (1u << bit)) bits[static_cast<std::size_t>(7 - bit)] = '1';
    return bits;
}

std::string Show_Cardbyte_bits(const Settings_Image& image, Debug_Log& log, int address) {
    Proc_Guard guard(log, "Show cardbyte bits");
    std::string text;
    guard.Step([&] { text = Byte_Bits_Text(image.CardByte[Checked_Address(address)]); });
    return text;
}

int Bin_2_Dec(std::string_view text) {
    if (text.size() != 8) return 0;
    int result = 0;
    for (std::size_t i = 0; i < 8; ++i)
        if (text[i] == '1') result += 128 >> i;
    return result;
}

void Bin_2_Dec(std::string_view text, int& result) {
    result = Bin_2_Dec(text);
}

std::string dec2hex(int value, int digits) {
    static constexpr char hex[] = "0123456789ABCDEF";
    if (digits == 0) return "0";
    int count = (digits >= 1 && digits <= 3) ? digits : 4;
    auto v = static_cast<std::uint16_t>(value);
    std::string text(static_cast<std::size_t>(count), '0');
    for (int i = count - 1; i >= 0; --i) {
        text[static_cast<std::size_t>(i)] = hex[v & 15];
        v = static_cast<std::uint16_t>(v >> 4);
    }
    return text;
}

int Hex_Digit_Value(char c) {
    int code = static_cast<unsigned char>(c);
    int value = code - 48;
    if (code > 60) value -= 7;
    if (code > 80) value -= 32;
    return value;
}

std::uint8_t Hex2_To_Byte(std::string_view two_digits) {
    int high = two_digits.size() > 0 ? Hex_Digit_Value(two_digits[0]) : 0;
    int low = two_digits.size() > 1 ? Hex_Digit_Value(two_digits[1]) : 0;
    return static_cast<std::uint8_t>(high * 16 + low);
}

bool Get_Errcardbyte(Settings_Image& image) {
    if (image.Write_Errors_Only) {
        image.First_Changed = 1011;
        image.Last_Changed = 1023;
        return true;
    }
    int first = 0;
    int last = 65535;
    bool any = false;
    for (int i = 0; i <= 1010; ++i) {
        if (image.ChangedByte[i] > 254) {
            if (!any) first = i;
            any = true;
            last = i;
        }
    }
    image.First_Changed = first;
    image.Last_Changed = last;
    return image.Last_Changed < 65535;
}

namespace {
void Fill(Settings_Image& image, int first, int last, std::uint8_t value) {
    for (int i = first; i <= last; ++i)
        image.CardByte[Checked_Address(i)] = value;
}
} // namespace

void Clear_StandAlone_CardByte(Settings_Image& image) {
    Fill(image, 100, 132, 0);
    Fill(image, 133, 153, 128);
    Fill(image, 154, 170, 128);
    Fill(image, 256, 652, 0);
    Fill(image, 653, 883, 0);
    static constexpr std::uint8_t an_sel[12] = {1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 5, 6};
    for (int i = 0; i < 12; ++i)
        image.CardByte[static_cast<std::size_t>(884 + i)] = an_sel[i];
    Fill(image, 896, 979, 0);
    for (int a = 980; a <= 994; a += 2) {
        image.CardByte[static_cast<std::size_t>(a)] = 0;
        image.CardByte[static_cast<std::size_t>(a + 1)] = 255;
    }
    // Coolant's limits are cleared the other way round, so the box never flags a cold or a
    // hot engine on a fresh image.
    image.CardByte[986] = 255;
    image.CardByte[987] = 0;
    image.CardByte[996] = 255;
    Fill(image, 997, 1010, 0);
    Fill(image, 1011, 1023, 0);
}

void Init_Cardbyte(Settings_Image& image, Debug_Log& log) {
    Proc_Guard guard(log, "Init Cardbyte");
    guard.Step([&] { Fill(image, 1, 255, 0); });
    // One-dimensional areas, 21 points each.
    guard.Step([&] { Fill(image, 79, 99, 192); });
    guard.Step([&] { Fill(image, 133, 153, 128); });
    guard.Step([&] {
        if (image.Second_Table_Base > 0)
            Fill(image, image.Second_Table_Base, image.Second_Table_Base + 20, 128);
    });
    guard.Step([&] {
        auto& b = image.CardByte;
        b[22] = 0, b[1] = 0, b[6] = 2, b[16] = 2, b[7] = 255, b[11] = 255, b[13] = 100, b[14] = 128,
        b[15] = 0;
        b[17] = 255, b[18] = 255, b[19] = 255, b[23] = 255, b[31] = 255, b[34] = 0, b[35] = 128, b[44] = 5;
    });
    Set_Cbyte(image, log, 40, 128, 0, 0.78125, "0");
    for (int a = 41; a <= 43; ++a)
        Set_Cbyte(image, log, a, 1, 0, 1, "0");
    guard.Step([&] { Fill(image, 100, 119, 128); });
    guard.Step([&] { Fill(image, 133, 153, 192); });
    guard.Step([&] {
        if (image.DatasetID >= 200) {
            image.Second_Table_Base = 896;
            Set_StandAlone_ScrollFactors(image, log);
            Clear_StandAlone_CardByte(image);
        }
    });
    guard.Step([&] { image.CardByte[255] = static_cast<std::uint8_t>(image.DatasetID); });
}

} // namespace quorlen
