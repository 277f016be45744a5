#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// "ports": the port list as the preferences show it.
int Ports(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);
// "info --port PATH [--baud 115200|625000]": the box's banner as Connect info shows it.
int Info(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
