#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_CHART_USAGE                                                                              \
    "  log-chart FILE.qxl --signals NAME,NAME [--from ROW --to ROW] [--compare FILE2.qxl]\n"                 \
    "            [--second NAME,NAME] [--x RPM|MAP] [--size WxH] -o OUT.png|OUT.bmp|OUT.csv\n"               \
    "                     the log window's chart of the named signals (their names as the\n"                 \
    "                     log shows them, or their numbers from 0) over rows ROW..ROW (all\n"                \
    "                     by default), with FILE2 laid over it from its row 1; --second puts\n"              \
    "                     signals on the right value axis; --x plots them against RPM or MAP\n"              \
    "                     as the RPM graph does. Pictures are drawn offscreen (1200x700\n"                   \
    "                     unless --size); .csv writes every shown row. Exit 0 when written,\n"               \
    "                     1 when a file can't be read or written, 2 for a signal the log\n"                  \
    "                     does not have (the ones it has are listed)\n"

// args[0] is the command's name.
int Log_Chart_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
