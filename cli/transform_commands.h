#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_TRANSFORM_USAGE                                                                          \
    "  transform FILE -o OUT (--fuel-size N | --ign-size N) [--rpm-scroll S] [--map-scroll S]\n"             \
    "            [--ini INI]\n"                                                                              \
    "                     change the shape of the fuel or ignition map the way the map size\n"               \
    "                     conversion does: save the map, choose shape N (its place in the size\n"            \
    "                     list from 0, or CxR such as 21x16), set every RPM or load step to\n"               \
    "                     2^(S-1) (S 0..8), convert the saved map onto the new axes and save\n"              \
    "                     the result to OUT. Prints the old and the new axes; exit 0 when OUT\n"             \
    "                     is written, 1 when FILE is not a settings file or OUT can't be written\n"

inline constexpr const char* Transform_Usage = QUORLEN_CLI_TRANSFORM_USAGE;

// args[0] is "transform".
int Transform_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
