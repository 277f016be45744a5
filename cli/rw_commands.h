#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_RW_USAGE                                                                                 \
    "  read --port PATH|N -o FILE.qxs [--binary] [--baud 115200|625000]\n"                                   \
    "                     read the box's settings into FILE.qxs; exit 0 when the whole image\n"              \
    "                     came\n"                                                                            \
    "  verify --port PATH|N FILE.qxs [--binary]\n"                                                           \
    "                     compare the box with FILE.qxs and print the report with each\n"                    \
    "                     mismatch; exit 0 when equal, 1 when not, 2 when the box can't tell\n"              \
    "  write --port PATH|N FILE.qxs [--binary|--fast]\n"                                                     \
    "                     write what differs byte by byte (--binary: as one frame; --fast:\n"                \
    "                     the fast dialogue), then verify; exit 0 only when the verify found\n"              \
    "                     no mismatch\n"                                                                     \
    "  errors --port PATH|N\n"                                                                               \
    "                     the box's error counters in words, master and slave\n"                             \
    "  clear-errors --port PATH|N\n"                                                                         \
    "                     write zero to the error counters, and nothing else\n"

// args[0] is the command's name.
int Read_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Verify_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Write_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Errors_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Clear_Errors_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
