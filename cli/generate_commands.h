#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_GENERATE_USAGE                                                                           \
    "  generate FILE.qxs -o OUT.qxs [--fuel KEY=VALUE ...] [--ignition KEY=VALUE ...]\n"                     \
    "           [--only fuel|ignition] [--ini INI]\n"                                                        \
    "                     the auto setup's map generators on FILE: the fuel map, then the\n"                 \
    "                     ignition map, from the boxes of its two frames. KEY is a box's name\n"             \
    "                     (NumberOfInjectors_txt, MaxRPM_txt(3), FuelType_option=E85,\n"                     \
    "                     Ign_advance_txt...); the others keep the form's defaults. Prints the\n"            \
    "                     capacity labels and the ignition captions as the form shows them and\n"            \
    "                     how many cells each map changed, and saves the result to OUT.\n"                   \
    "                     Exit 0 when OUT is written; 1 when FILE is not a settings file, OUT\n"             \
    "                     can't be written or a generator fails (the reason is printed and\n"                \
    "                     nothing is saved); 2 for a KEY the frames do not have.\n"                          \
    "  generate --keys    the boxes of the two frames: KEY, default and caption, one a line\n"

// args[0] is "generate".
int Generate_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
