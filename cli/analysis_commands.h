#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_ANALYSIS_USAGE                                                                           \
    "  log-hits FILE.qxl --settings FILE.qxs --table fuel|ignition [--ini INI]\n"                            \
    "            [--lambda [--min-seconds S]]\n"                                                             \
    "                     the seconds the engine ran in each cell of the map, each row spread\n"             \
    "                     over the four points around it as the box interpolates: the map's\n"               \
    "                     axes first, cells separated by TAB, as show prints the map. With\n"                \
    "                     --lambda (fuel map): how far lambda read from the target in each cell\n"           \
    "                     over the steady rows, in percent, leaner positive; blank where the\n"              \
    "                     cell had less than S (1) s of them\n"                                              \
    "  fuel-correct FILE.qxl --settings IN.qxs -o OUT.qxs [--min-seconds S]\n"                               \
    "            [--max-change PCT] [--min-rpm N] [--min-coolant C] [--max-throttle-rate R]\n"               \
    "            [--settle S] [--target T] [--ini INI]\n"                                                    \
    "                     the main fuel map corrected by the lambda sensor over the log's\n"                 \
    "                     steady rows (defaults: 1 s of steady time a cell, 15 % a pass, 500\n"              \
    "                     rpm, 70 degrees coolant, throttle below 20 %/s, 0.5 s to settle; the\n"            \
    "                     target from the AFR table, or T when AFR control is off): one line\n"              \
    "                     a changed cell (row, column, old ms, new ms, percent, seconds),\n"                 \
    "                     the result saved to OUT.qxs with the changes marked; what was left\n"              \
    "                     out and why on stderr. Exit 1 when the log can't tell (and why)\n"

// args[0] is the command's name.
int Log_Hits_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Fuel_Correct_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
