#include "cli/sensor_commands.h"

#include "cli/cli_tables.h"
#include "core/atomic_file.h"

#include "core/proc_guard.h"
#include "core/text.h"
#include "image/scaling.h"
#include "sensors/sensor_defs.h"

#include <optional>

namespace quorlen::cli {

namespace {

struct Sensor_Args {
    std::string ini;
    bool list = false;
    std::string name;
    std::optional<std::string> forward;
    std::optional<std::string> reverse;
};

std::optional<Sensor_Args> Parse(const std::vector<std::string>& args) {
    Sensor_Args a;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--ini" && i + 1 < args.size()) {
            a.ini = args[++i];
        } else if (arg == "--list") {
            a.list = true;
        } else if (arg == "--forward" && i + 1 < args.size()) {
            a.forward = args[++i];
        } else if (arg == "--reverse" && i + 1 < args.size()) {
            a.reverse = args[++i];
        } else if (a.name.empty() && (arg.rfind("--", 0) != 0)) {
            a.name = arg;
        } else {
            return std::nullopt;
        }
    }
    int asks = (a.list ? 1 : 0) + (a.forward ? 1 : 0) + (a.reverse ? 1 : 0);
    if (asks != 1 || a.list == !a.name.empty()) return std::nullopt;
    return a;
}

int Usage_Error(std::FILE* err) {
    std::fputs("usage:\n", err);
    std::fputs(Sensor_Usage, err);
    return 2;
}

// A number, or a name: the exact one first, else one that differs only in case.
int Find_Sensor(const Sensor_Table& table, const std::string& name) {
    if (auto n = To_Integer(name)) return *n >= 0 && *n < table.Sens_Count ? static_cast<int>(*n) : -1;
    for (int s = 0; s < table.Sens_Count; ++s)
        if (table.Name(s) == name) return s;
    for (int s = 0; s < table.Sens_Count; ++s)
        if (Equal_No_Case(table.Name(s), name)) return s;
    return -1;
}

std::optional<double> Number(const std::string& text) {
    std::string t = Trim(text);
    for (char& c : t)
        if (c == ',') c = '.';
    char* end = nullptr;
    double v = std::strtod(t.c_str(), &end);
    if (t.empty() || end != t.c_str() + t.size()) return std::nullopt;
    return v;
}

} // namespace

int Sensor_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    auto a = Parse(args);
    if (!a) return Usage_Error(err);
    std::string path = a->ini.empty() ? Cli_App_Path() + "RZ400_800M3.ini" : a->ini;
    if (const auto why = Why_Not_A_File(path)) {
        if (a->ini.empty())
            std::fprintf(err, "%s: no such ini file\n", path.c_str());
        else
            std::fprintf(err, "quorlen-cli: --ini %s %s\n", path.c_str(), why->c_str());
        return 1;
    }
    Ini_File ini(path, "");
    Debug_Log log;
    Sensor_State sensors;
    {
        Proc_Guard guard(log, "Init ini file");
        guard.Step([&] { Load_Sensor_Definitions(sensors, ini, guard); });
    }
    const Sensor_Table& table = sensors.table;

    if (a->list) {
        for (int s = 0; s < table.Sens_Count; ++s)
            std::fprintf(out, "%d\t%s\t%s\t%s\t%d\n", s, table.Name(s).c_str(), table.Type(s).c_str(),
                         table.Unit(s).c_str(), table.Decimals(s));
        return 0;
    }

    int s = Find_Sensor(table, a->name);
    if (s < 0) {
        std::fprintf(err, "no sensor '%s' in %s\n", a->name.c_str(), path.c_str());
        return 1;
    }
    auto number = Number(a->forward ? *a->forward : *a->reverse);
    if (!number) return Usage_Error(err);
    std::string format = Decimals_Format(table.Decimals(s));

    if (a->forward) {
        double raw = *number;
        if (raw < 0 || raw > 255) {
            std::fprintf(err, "raw reading %s is outside 0..255\n", a->forward->c_str());
            return 2;
        }
        auto value = Forward_Sensor_Calc(table, s, raw);
        if (raw != *number)
            std::fprintf(err, "%s takes raw %s as %s\n", table.Name(s).c_str(), a->forward->c_str(),
                         Format_Number(raw, "0").c_str());
        if (!value) {
            std::fprintf(err, "%s gives no value\n", table.Name(s).c_str());
            return 1;
        }
        std::string unit = table.Unit(s);
        std::fprintf(out, "%s%s%s\n", Format_Number(*value, format).c_str(), unit.empty() ? "" : " ",
                     unit.c_str());
        return 0;
    }

    try {
        auto raw = Reversed_Sensor_Value(table, s, *number);
        if (!raw) {
            std::fprintf(err, "%s gives no raw reading\n", table.Name(s).c_str());
            return 1;
        }
        std::fprintf(out, "%s\n", Format_Number(*raw, "0").c_str());
    } catch (const std::exception& e) {
        std::fprintf(err, "%s: %s\n", table.Name(s).c_str(), e.what());
        return 1;
    }
    return 0;
}

} // namespace quorlen::cli
