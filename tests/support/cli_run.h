#pragma once
// quorlen-cli run in the test's own process, with what it printed.

#include "cli/commands.h"

#include <cstdio>
#include <string>
#include <vector>

namespace quorlen::test {

struct Cli_Result {
    int code;
    std::string out;
    std::string err;
};

inline Cli_Result Run_Cli(const std::vector<std::string>& args) {
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    const int code = cli::Run(args, out, err);
    auto text = [](std::FILE* f) {
        std::string s;
        std::rewind(f);
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, f)) > 0;)
            s.append(buffer, n);
        std::fclose(f);
        return s;
    };
    std::string out_text = text(out);
    return {code, out_text, text(err)};
}

} // namespace quorlen::test
