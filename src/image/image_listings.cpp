#include "image/image_listings.h"

#include <array>

namespace quorlen {

namespace {
const char* const CRLF = "\r\n";
}

std::string Listing_All_CardByte(const Settings_Image& image) {
    std::string text;
    text.reserve(1024 * 24);
    for (int a = 0; a < Image_Size; ++a) {
        text += std::to_string(a) + "\t" + std::to_string(image.CardByte[static_cast<std::size_t>(a)]) +
                "\t" + Byte_Bits_Text(image.CardByte[static_cast<std::size_t>(a)]) + "\t0" + CRLF;
    }
    return text;
}

std::string Listing_Flag_Bytes(const Settings_Image& image) {
    static constexpr std::array<int, 19> addresses = {3,   4,   5,   6,   15,  174, 175, 181, 182, 185,
                                                      186, 187, 188, 215, 216, 230, 235, 240, 245};
    static constexpr std::array<const char*, 12> labels = {"  ALS | 3rdIgn | 3rdFuel",
                                                           "  MapRes | ALSpol|2ndPWMload|Dig2sel",
                                                           "  SeqFuel|LongTerm|ALSSel | Dig1",
                                                           "  PWM2 | PWM1",
                                                           "  PWM4 | PWM3",
                                                           "  PWM2_pol|2ndIg|PWM2|PWM4|PWM2",
                                                           "  Flagreg0",
                                                           "  Flagreg1",
                                                           "  Digital1 func | sensor",
                                                           "  Digital2 func | sensor",
                                                           "  Digital3 func | sensor",
                                                           "  Digital4 func | sensor"};
    std::string text;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        int a = addresses[i];
        text += std::to_string(a) + "\t" + Byte_Bits_Text(image.CardByte[static_cast<std::size_t>(a)]);
        std::size_t first_labelled = addresses.size() - labels.size();
        if (i >= first_labelled) text += labels[i - first_labelled];
        text += CRLF;
    }
    return text;
}

std::string Listing_Map_Block(const Settings_Image& image, int base) {
    auto at = [&](int a) {
        return a >= 0 && a < Image_Size ? int{image.CardByte[static_cast<std::size_t>(a)]} : 0;
    };
    int cols = at(base);
    int rows = at(base + cols + 1);
    std::string text = "RPM steps (" + std::to_string(cols) + "):";
    for (int c = 1; c <= cols; ++c)
        text += "\t" + std::to_string(at(base + c));
    text += CRLF;
    text += "Load steps (" + std::to_string(rows) + "):";
    for (int r = 1; r <= rows; ++r)
        text += "\t" + std::to_string(at(base + cols + 1 + r));
    text += CRLF;
    int start = base + cols + rows + 2;
    for (int r = 1; r <= rows; ++r) {
        for (int c = 1; c <= cols; ++c) {
            int a = start + (r - 1) * cols + (c - 1);
            if (c > 1) text += "\t";
            text += std::to_string(a) + ":" + std::to_string(at(a));
        }
        text += CRLF;
    }
    return text;
}

std::string Listing_Analog_Selections(const Settings_Image& image) {
    std::string text;
    for (int a = 884; a <= 895; ++a)
        text += std::to_string(image.CardByte[static_cast<std::size_t>(a)]) + CRLF;
    return text;
}

} // namespace quorlen
