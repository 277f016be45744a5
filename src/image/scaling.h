#pragma once
// Single settings of the box are one byte each; a page shows them in real units by one rule,
// real value = (byte - offset) * factor, written in the row's format. The constants of that
// rule are the scaling catalogue below, filled into the image's sister arrays at start.

#include "image/settings_image.h"

#include <span>
#include <string>
#include <string_view>

namespace quorlen {

// --- numbers as the screen writes them ---------------------------------------------------

// Rounds to `decimals` places with a tie going to the even digit. A value that lies within
// a hair of the tie in binary (2.675 is stored as 2.67499999...) counts as the tie the
// decimal text means.
double Round_Even(double value, int decimals);

// A whole number with a tie going to the even one, as every conversion to an integer does.
double Round_Even_Whole(double value);

// Writes a number in a display format of zeros and at most one point: "0", "0.0", "0.000",
// "000" (at least three digits). A value that rounds to zero is written without a sign.
std::string Format_Number(double value, std::string_view format);

// The number of decimals of a format ("0.00" has 2).
int Format_Decimals(std::string_view format);

// The format of a sensor with `decimals` places: "0", or "0." and at most four zeros.
std::string Decimals_Format(int decimals);

// --- the catalogue ------------------------------------------------------------------------

struct Scaling_Row {
    int address;
    int value; // default byte
    int offset;
    double factor;
    const char* format;
    const char* label; // empty where the page sets the label by the function in use
    const char* unit;
};

// Every row in the order it is applied (address order, with 212 and 132 after 173, and 84
// twice).
std::span<const Scaling_Row> Scaling_Catalogue();

// The catalogue row of an address, or nullptr.
const Scaling_Row* Find_Scaling_Row(int address);

// (byte - ScrollOffset) * ScrollFactor, and that number in ScrollFormat.
double Scroll_Value(const Settings_Image& image, int address, int byte_value);
std::string Scroll_Text(const Settings_Image& image, int address, int byte_value);

// The general case of a settings page slider: the byte follows the slider (marked changed
// when it differs), and CardValue takes the shown text as a number. Returns the text.
std::string Settings_scroll_Change(Settings_Image& image, int address, int value);

// --- slider limits ------------------------------------------------------------------------

inline constexpr int Keep_Limit = -99;

struct Scroll_Limits {
    Image_Array<int> Min{};
    Image_Array<int> Max;
    Scroll_Limits() { Max.fill(255); }
};

// Sets the limits of slider `index`; Keep_Limit as `max` keeps the one it has.
void show_scroll(Scroll_Limits& limits, int index, int min, int max);

} // namespace quorlen
