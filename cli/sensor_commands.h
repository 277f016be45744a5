#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// A macro, so that the command list of quorlen-cli can join it to its own text.
#define QUORLEN_CLI_SENSOR_USAGE                                                                             \
    "  sensor [--ini INI] --list\n"                                                                          \
    "                     the tuning sensors of the ini file: number, name, type, unit and\n"                \
    "                     decimals, separated by TAB (row 0 is the built-in \"<not used>\")\n"               \
    "  sensor [--ini INI] NAME --forward RAW\n"                                                              \
    "                     the value and unit of raw reading RAW (0..255) on the sensor NAME\n"               \
    "                     (its name, or its number); a raw value the sensor clamps is told\n"                \
    "                     on stderr\n"                                                                       \
    "  sensor [--ini INI] NAME --reverse VALUE\n"                                                            \
    "                     the raw reading of VALUE; exit 1 for a sensor that isn't there or\n"               \
    "                     gives no value\n"

inline constexpr const char* Sensor_Usage = QUORLEN_CLI_SENSOR_USAGE;

// args[0] is "sensor".
int Sensor_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
