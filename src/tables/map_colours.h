#pragma once
// The colours of the main maps, so that a tuner sees the shape of a map at a glance, and
// the verify view: how the settings in the box differ from those in the program, cell by
// cell for the main maps and address by address for the rest.

#include "tables/edit_state.h"
#include "tables/map_tables.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorlen {

struct Rgb {
    std::uint8_t r = 255, g = 255, b = 255;
    bool operator==(const Rgb&) const = default;
};

inline constexpr Rgb White{255, 255, 255};

// The mid value M of the colouring, in bytes: the number in Mid_3D_limit_txt over 0.1.
double Mid_Limit(const std::string& Mid_3D_limit_txt);

// Mid-value colouring: from M up the cell reddens one level a byte, below M it blues.
Rgb Mid_Colour(int b, double M);
// Share of a four-stroke cycle the injector is open at the column's engine speed: blue
// below 50 %, white to red up to 100 %, full red beyond.
Rgb Duty_Colour(int b, double rpm);
Rgb Grey_Colour(int b);

// The legend boxes: the colours of byte 0 and byte 255.
Rgb Color_Low_frame(double M);
Rgb Color_High_frame(double M);

struct Map_Colours {
    int rows = 0;
    int cols = 0;
    std::vector<Rgb> cells; // row after row, as the image holds the cells
    Rgb low = White;
    Rgb high = White;
    const Rgb& At(int r, int c) const { return cells[static_cast<std::size_t>((r - 1) * cols + (c - 1))]; }
};

// The back colour of every cell of the fuel map (all four modes) and of the ignition map
// (no duty colouring there: its cells stay white in that mode), by Color_3D_Check.
Map_Colours Update_3D_Colors(Tables_Context& ctx);
Map_Colours Update_3D_Ign_Colors(Tables_Context& ctx);

// --- verify -------------------------------------------------------------------------------

// Whether TempByte holds an image read from the box: it stays all zeros until a read.
bool Box_Read_At_Hand(const Settings_Image& image);

// The colour of a difference of `pct` percent against the limit L: mild and strong for a
// program value above the box's ("Leaner in box"), and for one below ("Richer in box").
Rgb Verify_Colour(double pct, int L);

struct Verify_Cell {
    std::string text = "0.0"; // the difference, box minus program, "0.0"
    bool compared = false;    // changed and a read at hand
    double box = 0;           // B, decoded from TempByte
    double program = 0;       // A, from CardByte
    double pct = 0;
    Rgb colour = White;
};

struct Verify_View {
    Table_Id id = Table_Id::Fuel_3D;
    int rows = 0;
    int cols = 0;
    std::vector<Verify_Cell> cells; // row after row
    std::string higher_caption;     // "Leaner in box" / "Lower in box"
    std::string lower_caption;      // "Richer in box" / "Higher in box"
    const Verify_Cell& At(int r, int c) const {
        return cells[static_cast<std::size_t>((r - 1) * cols + (c - 1))];
    }
};

// The Verify_Check pass over a main map: each changed cell with the box's value, the
// difference and its colour against the integer L of Mid_3D_limit_txt.
Verify_View Verify_Check_Pass(Tables_Context& ctx, Table_Id id);

struct Verify_Line {
    int address = 0;
    std::string name;         // the table and point, or the setting's label
    int program_byte = 0;     // CardByte
    int box_byte = 0;         // TempByte
    std::string program_text; // "0.00" where the address has a scaling, "0" otherwise
    std::string box_text;
};

// Show_VerifyData: every changed address of the one-dimensional tables and the settings
// (the main maps have their grid), when a read is at hand.
std::vector<Verify_Line> Show_VerifyData(Tables_Context& ctx);

} // namespace quorlen
