#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_EDIT_USAGE                                                                               \
    "  edit FILE -o OUT [--ini INI] --op TABLE SEL OP [--op TABLE SEL OP | --undo | --redo ...]\n"           \
    "                     edit the maps of a settings file as the buttons and keys beside the\n"             \
    "                     grids do, in the order given, and save the result to OUT (which may\n"             \
    "                     be FILE). TABLE is fuel, ignition, ign-comp1, fuel2-map, fuel2-rpm,\n"             \
    "                     afr or pwm1 .. pwm4. SEL is r1,c1:r2,c2 on fuel and ignition (grid\n"              \
    "                     rows and columns from 1, r,c for one cell) and i1:i2 on the others\n"              \
    "                     (points from 1, i for one). OP is one of\n"                                        \
    "                       plus minus                  (every table)\n"                                     \
    "                       steep flat steep-l flat-l   (one-dimensional tables)\n"                          \
    "                       steep-load steep-load-b steep-rpm steep-rpm-l\n"                                 \
    "                       flat-load flat-load-b flat-rpm flat-rpm-l even-cols even-rows\n"                 \
    "                                                   (fuel and ignition)\n"                               \
    "                       scale=P                     P percent of the shown values\n"                     \
    "                       set=V                       the value V, cut to the table's limits\n"            \
    "                       type=TEXT                   the keys of TEXT typed into the selection:\n"        \
    "                                                   digits, ',' '.' '-', P O A Z, '<' for Back\n"        \
    "                     --undo and --redo step back and forth as Edit, Undo and Redo do.\n"                \
    "                     OUT is saved as File, Save saves: 250 and 251 as 0, 255 as the\n"                  \
    "                     program's dataset (200).\n"                                                        \
    "                     Each OP prints how many bytes it changed; exit 0 when OUT is written,\n"           \
    "                     1 when FILE is not a settings file or OUT can't be written.\n"

inline constexpr const char* Edit_Usage = QUORLEN_CLI_EDIT_USAGE;

// args[0] is "edit".
int Edit_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
