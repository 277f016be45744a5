#pragma once
// The command line of one command: options with a value ("--name VALUE" or "--name=VALUE"),
// flags, and at most one file.

#include <cstdio>
#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quorlen::cli {

struct Cli_Options {
    std::string file;
    std::map<std::string, std::string> values;
    std::set<std::string> flags;

    bool Has(const std::string& name) const { return values.count(name) != 0 || flags.count(name) != 0; }
    std::string Value(const std::string& name) const {
        auto it = values.find(name);
        return it == values.end() ? std::string() : it->second;
    }
};

// args[0] is the command's name. Anything the command does not know, a missing value or a
// second file is told on `err` and gives nullopt.
inline std::optional<Cli_Options> Parse_Options(const std::vector<std::string>& args,
                                                std::initializer_list<const char*> with_value,
                                                std::initializer_list<const char*> flags, std::FILE* err) {
    Cli_Options o;
    const auto fail = [&](const std::string& why) {
        std::fprintf(err, "quorlen-cli %s: %s (see quorlen-cli --help)\n", args[0].c_str(), why.c_str());
        return std::nullopt;
    };
    const auto known = [](std::initializer_list<const char*> names, const std::string& name) {
        for (const char* n : names)
            if (name == n) return true;
        return false;
    };
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        if (name.size() < 2 || name[0] != '-') {
            if (!o.file.empty()) return fail("more than one file");
            o.file = name;
            continue;
        }
        if (known(flags, name)) {
            o.flags.insert(name);
            continue;
        }
        std::string value;
        const auto eq = name.find('=');
        if (eq != std::string::npos) {
            value = name.substr(eq + 1);
            name.resize(eq);
        }
        if (!known(with_value, name)) return fail("unexpected '" + args[i] + "'");
        if (eq == std::string::npos && i + 1 < args.size()) value = args[++i];
        if (value.empty()) return fail("'" + name + "' wants a value");
        o.values[name] = value;
    }
    return o;
}

} // namespace quorlen::cli
