#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_HSLOG_USAGE                                                                              \
    "  hslog --port PATH|N --seconds N [--baud 115200|625000] -o FILE.qxo\n"                                 \
    "                     record the box's high-speed digital stream for N seconds into FILE.qxo:\n"         \
    "                     baud / 10 samples a second of the eight lines, the check byte (255)\n"             \
    "                     every 11520th byte. Exit 0 when samples came, 2 when none did, 3 when\n"           \
    "                     a check byte was wrong (the samples before it are kept), 1 when the\n"             \
    "                     port can't be opened (and why)\n"                                                  \
    "  hs-analyze FILE.qxo [--start A --stop B] (--rpm R | --teeth T) [--peak]\n"                            \
    "                     the test results of samples A to B (default: all) as the analysis of\n"            \
    "                     the high-speed log window gives them, revolutions from the engine\n"               \
    "                     speed R or from T crank teeth a revolution; --peak also prints the\n"              \
    "                     chart's rows of the stretch as the window draws them with peak\n"                  \
    "                     detection (time in ms, then the eight lines, crank first)\n"                       \
    "  crank FILE.qxs [--qxo FILE.qxo] [--ini INI]\n"                                                        \
    "                     what the crank viewer shows, in words: the trigger wheel of the\n"                 \
    "                     settings' engine layout, the 51deg BTDC mark and top dead centre on it,\n"         \
    "                     and with a capture the wheel and cam it shows, with a warning where\n"             \
    "                     they disagree. Layouts from the ini file beside the program, or INI.\n"            \
    "                     Exit 0 when all agree, 3 with warnings, 1 when a file can't be read\n"

// args[0] is the command's name.
int Hslog_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Hs_Analyze_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Crank_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
