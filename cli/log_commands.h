#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_LOG_USAGE                                                                                \
    "  log --port PATH|N --seconds N [--binary] [--settings] [--baud 115200|625000] -o FILE.qxl\n"           \
    "                     record the box's live data for N seconds into FILE.qxl, with the\n"                \
    "                     default log settings beside the program: text rows (\"La\"), or\n"                 \
    "                     binary frames with --binary (the RPM then read by the sensor\n"                    \
    "                     \"RPM_bin\" when the settings have one); --settings reads the box's\n"             \
    "                     settings into the log first. Exit 0 when rows came, 2 when none\n"                 \
    "                     did, 1 when the port can't be opened (and why)\n"                                  \
    "  log-info FILE.qxl  rows, columns, length, file version, and whether the file had to be\n"             \
    "                     repaired (a damaged file is mended in place, with a safety copy)\n"                \
    "  log-csv FILE.qxl   the calculated signals as CSV: a head of \"name [unit]\", then one\n"              \
    "                     line a row, time first. Both exit 1 when the file can't be read or\n"              \
    "                     is not a log, and say why\n"

// args[0] is the command's name.
int Log_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Log_Info_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Log_Csv_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
