#pragma once
// The box's live cell adjustment: one command character, sent while the log stream stands
// still, moves the cell of a main map that the engine runs in by one step, and the box tells
// which bytes it wrote.
//
//   "+" / "-"  the main fuel map, one byte richer or leaner
//   ">" / "<"  the main ignition map, one byte more or less advance
//
// The answer starts with the echo and ends with CR LF. For each byte written it holds an
// entry "EEadr:AAAA EEdata: VV" (address and value in hex), entries separated by a blank.
// The box adjusts the cell that the running point sits close to: within a quarter of the
// axis step of a breakpoint on both axes it is one cell; close on one axis only, the point
// straddles two cells, and both move. Between breakpoints on both axes it answers
// "#1:NOT CLOSE" and writes nothing; with the engine stopped "#0:NO RPM - nothing done".

#include "log_stream.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace boxsim {

using Adjust_Image = std::array<std::uint8_t, 1024>;

inline constexpr int Fuel_Map_Base = 256;
inline constexpr int Ign_Map_Base = 653;
inline constexpr int Main_Load_Byte = 174; // low nibble: the input both main maps run on

bool Is_Cell_Adjust_Command(char c);

struct Cell_Adjustment {
    std::string answer;                               // what goes back, echo included
    std::vector<std::pair<int, std::uint8_t>> writes; // address, new value
};

// The adjustment for `command` with the engine at `engine`. `fault_address` >= 0 makes the box
// write that address instead of the cell (a firmware that runs off its map).
Cell_Adjustment Adjust_Running_Cell(char command, const Engine_Sample& engine, bool engine_running,
                                    const Adjust_Image& memory, long fault_address = -1);

} // namespace boxsim
