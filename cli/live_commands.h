#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_LIVE_USAGE                                                                               \
    "  live --port PATH|N --seconds N -o FILE.qxl [--binary] [--baud 115200|625000]\n"                       \
    "       [--at S:ADDR=VALUE ...] [--adjust S:+|-|>|< ...] [--fast] [--verify] [--save FILE.qxs]\n"        \
    "                     record a log as \"log --settings\" does and change the box while it\n"             \
    "                     runs: at second S write VALUE (0..255) to ADDR (0..1023) the way Enter\n"          \
    "                     in a map does (byte-wise; the binary frame with --fast), or have the\n"            \
    "                     box move the cell the engine runs in: \"+\" / \"-\" the fuel map,\n"               \
    "                     \">\" / \"<\" the ignition map. Prints each status text as it comes\n"             \
    "                     and how long the stream stood still. --verify compares the box with\n"             \
    "                     the program's image afterwards, --save keeps that image. Exit 0 when\n"            \
    "                     rows came (and the verify found the box equal), 1 when the port\n"                 \
    "                     can't be opened, 2 when no rows came, 3 when the verify differs\n"

// args[0] is the command's name.
int Live_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
