#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_ENGINE_USAGE                                                                             \
    "  engine --list [--ini INI]\n"                                                                          \
    "                     the 49 engine layouts as the layout list shows them, one a line\n"                 \
    "  engine FILE.qxs [--ini INI]\n"                                                                        \
    "                     the layout FILE names, as the engine frame shows it: one\n"                        \
    "                     name<TAB>value a line, the recommended teeth among them\n"                         \
    "  engine FILE.qxs --select N -o OUT.qxs [--ini INI]\n"                                                  \
    "                     choose layout N (the number the list shows, 1 to 256) as a tuner\n"                \
    "                     does, save the result to OUT.qxs and print the fields as above\n"                  \
    "                     The catalogue comes from the ini file beside the program, or from INI.\n"

#define QUORLEN_CLI_PRESET_USAGE                                                                             \
    "  preset --list [--ini INI]\n"                                                                          \
    "                     the user presets of the ini file: number<TAB>dataset<TAB>name\n"                   \
    "  preset FILE.qxs --show N [--ini INI]\n"                                                               \
    "                     what preset N would change in FILE: \"These presets will change:\" and\n"          \
    "                     a line address: old -> new for each byte it changes\n"                             \
    "  preset FILE.qxs --apply N -o OUT.qxs [--ini INI]\n"                                                   \
    "                     apply preset N to FILE, save the result to OUT.qxs and print the\n"                \
    "                     changes as --show does\n"

// args[0] is the command's name.
int Engine_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Preset_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
