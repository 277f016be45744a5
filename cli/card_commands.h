#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_CARD_USAGE                                                                               \
    "  card-check --port PATH|N\n"                                                                           \
    "                     is a Mapchip in the box's slot; exit 0 yes, 1 no, 2 the box did not\n"             \
    "                     answer\n"                                                                          \
    "  card-read --port PATH|N -o FILE.qxs\n"                                                                \
    "                     the box's settings, served from its Mapchip, into FILE.qxs\n"                      \
    "  card-write --port PATH|N FILE.qxs\n"                                                                  \
    "                     bytes 0..255 of FILE.qxs to the Mapchip in the box; exit 0 only when\n"            \
    "                     the box confirmed the whole card\n"                                                \
    "  pcsc-list          the smart-card readers on the PC (PC/SC); exit 2 when the service\n"               \
    "                     (pcscd) is not running\n"                                                          \
    "  pcsc-read [--reader NAME] [--type SLE4442|SLE4428] [--pin HEX] -o FILE.qxs\n"                         \
    "                     the memory card in a reader into FILE.qxs: card bytes 1 up to 255\n"               \
    "                     (SLE4442) or 1023 (SLE4428, the default) over the default settings\n"              \
    "  pcsc-write [--reader NAME] [--type SLE4442|SLE4428] [--pin HEX] FILE.qxs\n"                           \
    "                     FILE.qxs to the card over the same bytes, presenting the PIN first\n"              \
    "                     when given; exit 0 only when the card holds them (read back)\n"

// args[0] is the command's name.
int Card_Check_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Card_Read_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Card_Write_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Pcsc_List_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Pcsc_Read_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
int Pcsc_Write_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
