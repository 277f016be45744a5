#include "cli/analysis_commands.h"

#include "analysis/fuel_correction.h"
#include "cli/cli_support.h"
#include "cli/cli_tables.h"
#include "cli/log_session.h"
#include "core/text.h"
#include "image/scaling.h"
#include "logging/log_text.h"

#include <map>
#include <optional>

namespace quorlen::cli {

namespace {

struct Analysis_Args {
    std::string log, settings, out, table, ini;
    std::map<std::string, double> numbers; // the numeric options by name
    bool lambda = false;
};

const char* const Numeric_Options[] = {"--min-seconds",       "--max-change", "--min-rpm", "--min-coolant",
                                       "--max-throttle-rate", "--settle",     "--target"};

bool Parse(const std::vector<std::string>& args, bool correct, Analysis_Args& a, std::FILE* err) {
    const auto fail = [&](const std::string& what) {
        std::fprintf(err, "quorlen-cli %s: %s (see quorlen-cli --help)\n", args[0].c_str(), what.c_str());
        return false;
    };
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        if (!correct && name == "--lambda") {
            a.lambda = true;
            continue;
        }
        if (name.empty() || name[0] != '-') {
            if (!a.log.empty()) return fail("more than one log file");
            a.log = name;
            continue;
        }
        const std::string value = Take_Option_Value(args, i, name);
        if (value.empty()) return fail("'" + name + "' wants a value");
        if (name == "--settings") {
            a.settings = value;
        } else if (name == "--ini") {
            a.ini = value;
        } else if (!correct && name == "--table") {
            a.table = value;
        } else if (correct && (name == "-o" || name == "--output")) {
            a.out = value;
        } else if ((correct || name == "--min-seconds") &&
                   std::find(std::begin(Numeric_Options), std::end(Numeric_Options), name) !=
                       std::end(Numeric_Options)) {
            const std::string text = Commas_To_Points(value);
            char* end = nullptr;
            const double number = std::strtod(text.c_str(), &end);
            if (end == text.c_str() || *end != '\0' || !std::isfinite(number) || number < 0)
                return fail("'" + name + "' wants a number of 0 or more");
            a.numbers[name] = number;
        } else {
            return fail("unexpected '" + args[i] + "'");
        }
    }
    if (a.log.empty() || a.settings.empty()) return fail("want a log file and --settings FILE.qxs");
    if (correct && a.out.empty()) return fail("want -o OUT.qxs");
    if (!correct && a.table != "fuel" && a.table != "ignition") return fail("--table is fuel or ignition");
    if (a.lambda && a.table != "fuel") return fail("--lambda reads the fuel map");
    return true;
}

// The settings and the log, each loaded as the program loads them.
struct Loaded {
    explicit Loaded(std::FILE* err, const std::string& ini) : tables(err, ini), session(err) {}
    Cli_Tables tables;
    Log_Session session;
};

bool Load(Loaded& l, const Analysis_Args& a, std::FILE* err) {
    if (!l.tables.Load(a.settings)) return false;
    l.tables.Flush_Diagnostics();
    // The log is read under the dataset of the settings, as the log window reads it.
    l.session.image.DatasetID = l.tables.app.image.DatasetID;
    return Open_Log(l.session, a.log, err);
}

} // namespace

int Log_Hits_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Analysis_Args a;
    if (!Parse(args, false, a, err)) return 2;
    Loaded l(err, a.ini);
    if (!Load(l, a, err)) return 1;
    const Table_Id id = a.table == "fuel" ? Table_Id::Fuel_3D : Table_Id::Ignition_3D;
    const Log_State& log = *l.session.log;
    const App_Context& app = l.tables.app;
    const Hit_Grid hits = Cell_Hits(Make_Map_Locator(app.image, app.sensors, log, id), log);
    // With --lambda: how far each cell's steady rows read from the target, leaner positive.
    Fuel_Proposal lambda;
    if (a.lambda) {
        Correction_Options options;
        if (auto it = a.numbers.find("--min-seconds"); it != a.numbers.end())
            options.min_seconds = it->second;
        lambda = Propose_Fuel_Correction(app.image, app.sensors, log, options);
        if (!lambda.problem.empty()) {
            std::fprintf(err, "quorlen-cli log-hits: %s\n", lambda.problem.c_str());
            return 1;
        }
    }
    const Tables_Context ctx = l.tables.Context();
    for (int r = 0; r <= hits.rows; ++r) {
        for (int c = 0; c <= hits.cols; ++c) {
            if (c > 0) std::fputc('\t', out);
            std::string text;
            if (r == 0 || c == 0)
                text = Grid_Text(ctx, id, r, c);
            else if (!a.lambda)
                text = Format_Number(hits.At(r, c), "0.00");
            else if (lambda.At(r, c).enough)
                text = Format_Number((lambda.At(r, c).ratio - 1) * 100, "0.0");
            std::fputs(text.c_str(), out);
        }
        std::fputc('\n', out);
    }
    std::fprintf(err, "%s\n", Hit_Legend(hits).c_str());
    return 0;
}

int Fuel_Correct_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Analysis_Args a;
    if (!Parse(args, true, a, err)) return 2;
    Loaded l(err, a.ini);
    if (!Load(l, a, err)) return 1;

    Correction_Options options;
    const auto number = [&](const char* name, double& into) {
        if (auto it = a.numbers.find(name); it != a.numbers.end()) into = it->second;
    };
    number("--min-seconds", options.min_seconds);
    number("--max-change", options.max_change_pct);
    number("--min-rpm", options.steady.min_rpm);
    number("--min-coolant", options.steady.min_coolant);
    number("--max-throttle-rate", options.steady.max_throttle_rate);
    number("--settle", options.steady.settle_seconds);
    if (auto it = a.numbers.find("--target"); it != a.numbers.end()) options.fixed_target = it->second;

    App_Context& app = l.tables.app;
    const Fuel_Proposal p = Propose_Fuel_Correction(app.image, app.sensors, *l.session.log, options);
    if (!p.problem.empty()) {
        std::fprintf(err, "quorlen-cli fuel-correct: %s\n", p.problem.c_str());
        return 1;
    }
    std::fprintf(err, "target: %s; injector dead time %s ms\n", p.target_text.c_str(),
                 Format_Number(p.dead_time_ms, "0.000").c_str());
    std::fprintf(err, "rows: %d, steady: %d\n", p.rows_total, p.verdicts[0]);
    for (int v = 1; v < Verdict_Count; ++v)
        if (p.verdicts[static_cast<std::size_t>(v)] > 0)
            std::fprintf(err, "left out, %s: %d\n", Verdict_Text(static_cast<Row_Verdict>(v)),
                         p.verdicts[static_cast<std::size_t>(v)]);
    for (const Cell_Correction& c : p.cells) {
        if (!c.changed) continue;
        std::fprintf(out, "%d\t%d\t%s\t%s\t%s\t%s\n", c.row, c.col, Fuel_Cell_Text(c.old_byte).c_str(),
                     Fuel_Cell_Text(c.new_byte).c_str(), Format_Number(c.percent, "0.0").c_str(),
                     Format_Number(c.seconds, "0.00").c_str());
    }
    Apply_Fuel_Correction(app.image, app.undo, p);
    std::fprintf(err, "changed cells: %d\n", p.Changed_Count());
    return l.tables.Save(a.out) ? 0 : 1;
}

} // namespace quorlen::cli
