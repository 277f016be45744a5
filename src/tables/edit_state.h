#pragma once
// What the editing of the grids keeps between keys and clicks: the number being typed, the
// limits of the table in hand, the text boxes beside the buttons, and the colouring of the
// main maps. One of each for the whole program, as the grids share them.

#include <functional>
#include <string>

namespace quorlen {

// A selection as a grid keeps it: the anchor (Row, Col) and the far corner (RowSel,
// ColSel). Row 0 and column 0 are the headers; a one-dimensional table uses the rows only.
struct Grid_Selection {
    int Row = 1;
    int Col = 1;
    int RowSel = 1;
    int ColSel = 1;
    bool operator==(const Grid_Selection&) const = default;
};

struct Edit_State {
    // The number being typed, shared by every grid; its decimal mark is the comma.
    std::string KeyText;
    // The next digit starts a new number (set by every change of a grid's selection).
    bool KeyNewNumber = true;

    // The table in hand, as its Get_*_maxmin routine leaves it: byte = value * TableGain +
    // TableFine + TableOffset, and the limits with their texts.
    double TableMax = 0;
    double TableMin = 0;
    double TableGain = 1;
    double TableFine = 0;
    double TableOffset = 0;
    std::string maxText;
    std::string minText;

    // The text boxes of the buttons: percentage and value, for the one-dimensional tables
    // and for the main maps.
    std::string scale_table_text = "100";
    std::string set_table_text = "0";
    std::string scale_table_text_3D = "100";
    std::string set_table_text_3D = "0";
};

// Color_3D_Check: how the cells of the main maps are coloured. Log_Hits colours by the time
// the open log spent in each cell; the map tabs paint it from the log, the cells' own
// colouring leaves them white.
enum class Colour_Mode { None = 0, Mid = 1, Grey = 2, Duty = 3, Log_Hits = 4 };

struct Colour_State {
    Colour_Mode Color_3D_Check = Colour_Mode::Mid;
    // The mid value of the colouring (ms on the fuel map, degrees on the ignition map), and
    // while the verify view is on, the percentage that makes a difference strong.
    std::string Mid_3D_limit_txt = "5";
    bool Verify_Check = false;
};

// What an operation asks of the program around it. An empty Update_All runs the tables' own.
struct Edit_Hooks {
    std::function<void()> Update_All;
    std::function<void()> Handle_button_enable;
    // Enter on a main map: a live change while a log stream holds the port.
    std::function<void()> Write_while_logging;
};

} // namespace quorlen
