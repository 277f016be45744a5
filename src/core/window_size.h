#pragma once
// Saved window placement: a state digit, then width, height, left and top in twips, each
// ended by a tab, and a closing ";" ("0" "12000\t9000\t300\t200\t;").

#include <optional>
#include <string>
#include <string_view>

namespace quorlen {

struct Window_Size {
    int state = 0;                                // 0 normal, 1 minimised, 2 maximised
    int width = 0, height = 0, left = 0, top = 0; // twips
};

// Twips are 1/1440 inch; at the 96 dots an inch the sizes were saved at, 15 to a pixel.
inline constexpr int Twips_Per_Pixel = 15;

std::optional<Window_Size> Parse_Window_Size(std::string_view value);
std::string Format_Window_Size(const Window_Size& size);

// What Save_Display_Window_Size writes for a window in `current` state, given the value
// saved before: a normal window its own placement, a maximised one the old placement with
// the new state digit, a minimised one nothing.
std::optional<std::string> Window_Size_To_Save(const Window_Size& current, std::string_view saved);

} // namespace quorlen
