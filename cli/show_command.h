#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_SHOW_USAGE                                                                               \
    "  show FILE --table NAME [--ini INI]\n"                                                                 \
    "                     print a map of a settings file as the program shows it: one line a\n"              \
    "                     grid row, row 0 (the axis) first, cells separated by TAB. NAME is\n"               \
    "                     fuel, ignition, ign-comp1, fuel2-map, fuel2-rpm, afr, pwm1 .. pwm4\n"              \
    "                     or pwm2-fuel\n"                                                                    \
    "  show FILE --param ADDR [--ini INI]\n"                                                                 \
    "                     print the shown value of the setting at image address ADDR and\n"                  \
    "                     its unit, separated by TAB\n"                                                      \
    "                     Sensors come from the ini file beside the program, or from INI.\n"                 \
    "                     What the load mends in the file is reported on stderr, in the\n"                   \
    "                     words of the program's messages.\n"

inline constexpr const char* Show_Usage = QUORLEN_CLI_SHOW_USAGE;

// args[0] is "show".
int Show_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
