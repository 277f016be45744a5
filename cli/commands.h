#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::cli {

// Runs one command line (without the program name); returns the exit code.
int Run(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

} // namespace quorlen::cli
