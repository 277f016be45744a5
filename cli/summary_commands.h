#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_SUMMARY_USAGE                                                                            \
    "  summary FILE.qxs|FILE.qxl [--tables alt1|alt2] [--rtf OUT.rtf] [--pdf OUT.pdf] [--ini INI]\n"         \
    "                     the readable settings summary: of a settings file as the summary\n"                \
    "                     viewer shows it, of a log the part the log was recorded with.\n"                   \
    "                     --tables adds the maps, one after the other (alt1) or their axes\n"                \
    "                     side by side (alt2); a log's maps come from its settings. Printed,\n"              \
    "                     or written as rich text (--rtf) or laid out on A4 pages (--pdf)\n"

// args[0] is the command's name.
int Summary_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
