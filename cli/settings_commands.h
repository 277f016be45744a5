#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_SETTINGS_USAGE                                                                           \
    "  settings FILE [--ini INI]\n"                                                                          \
    "                     print every parameter of the settings pages, one a line in the\n"                  \
    "                     order of the form: tab, label, address, shown value, unit,\n"                      \
    "                     separated by TAB. Choices show their item; their unit is empty.\n"                 \
    "  set FILE -o OUT [--ini INI] ADDR=TEXT [ADDR=TEXT ...]\n"                                              \
    "                     set the slider at image address ADDR to the value TEXT as a user\n"                \
    "                     would type it (the nearest position; OFF where the slider has it),\n"              \
    "                     in the order given, print each new value and every message the form\n"             \
    "                     would show, and save to OUT (which may be FILE) as File, Save does.\n"             \
    "                     Exit 0 when OUT is written, 1 when FILE is not a settings file or OUT\n"           \
    "                     can't be written, 2 for an address without a slider or a TEXT that\n"              \
    "                     is not a number (nothing is changed then).\n"

inline constexpr const char* Settings_Usage = QUORLEN_CLI_SETTINGS_USAGE;

// args[0] is "settings" or "set".
int Settings_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Set_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
