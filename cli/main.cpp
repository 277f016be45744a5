// quorlen-cli: the program's library without windows, for scripts, CI and tuners who want a
// quick answer about a file.

#include "cli/commands.h"

#include <cstdio>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    return quorlen::cli::Run(args, stdout, stderr);
}
