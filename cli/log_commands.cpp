#include "cli/log_commands.h"

#include "cli/cli_support.h"

#include "app/tune_tools.h"
#include "cli/cli_tables.h"
#include "cli/log_session.h"
#include "core/atomic_file.h"
#include "core/text.h"
#include "link/qt/qt_port_platform.h"
#include "link/qt/qt_serial_line.h"
#include "link/read_verify.h"
#include "logging/log_capture.h"
#include "logging/log_chart.h"
#include "logging/log_file.h"
#include "logging/log_settings.h"
#include "logging/log_signals.h"
#include "logging/log_text.h"

#include <QCoreApplication>

#include <chrono>
#include <memory>
#include <thread>

#ifndef QUORLEN_VERSION
#define QUORLEN_VERSION "0.0.0"
#endif

namespace quorlen::cli {

namespace {

struct Log_Args {
    std::string port, output, file;
    std::string baud = "115200";
    double seconds = -1;
    bool binary = false, settings = false;
};

bool Parse(const std::vector<std::string>& args, Log_Args& a, std::FILE* err) {
    const auto fail = [&](const std::string& what) {
        std::fprintf(err, "quorlen-cli %s: %s (see quorlen-cli --help)\n", args[0].c_str(), what.c_str());
        return false;
    };
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        if (name == "--binary" || name == "--settings") {
            (name == "--binary" ? a.binary : a.settings) = true;
            continue;
        }
        if (name.empty() || name[0] != '-') {
            if (!a.file.empty()) return fail("more than one file");
            a.file = name;
            continue;
        }
        std::string value = Take_Option_Value(args, i, name);
        if (value.empty()) return fail("'" + name + "' wants a value");
        if (name == "--port") {
            a.port = value;
        } else if (name == "--baud") {
            a.baud = value;
        } else if (name == "-o" || name == "--output") {
            a.output = value;
        } else if (name == "--seconds") {
            auto n = To_Integer(value);
            if (!n || *n <= 0 || *n > 24 * 3600) return fail("--seconds wants a whole number above 0");
            a.seconds = static_cast<double>(*n);
        } else {
            return fail("unexpected '" + args[i] + "'");
        }
    }
    return true;
}

} // namespace

int Log_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Log_Args a;
    if (!Parse(args, a, err)) return 2;
    if (a.port.empty() || a.output.empty() || a.seconds <= 0 || !a.file.empty() ||
        (a.baud != "115200" && a.baud != "625000")) {
        std::fprintf(
            err, "quorlen-cli log: want --port PATH, --seconds N and -o FILE.qxl (see quorlen-cli --help)\n");
        return 2;
    }
    Recording r(err, a.port, a.baud);
    r.s.program.Program_Version = QUORLEN_VERSION;
    if (!r.Port_Opens(err)) return 1;
    if (!r.Start("log", a.binary, a.settings, a.output, err)) return 2;
    r.Run_Until(r.Ctx().Now() + a.seconds);
    return r.Stop_And_Save(a.output, out, err);
}

int Log_Info_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    if (args.size() != 2) {
        std::fprintf(err, "quorlen-cli log-info: want one log file (see quorlen-cli --help)\n");
        return 2;
    }
    Log_Session s(err);
    if (!Open_Log(s, args[1], err)) return 1;
    const Log_State& log = *s.log;
    std::string line, version;
    get_log_file_setting(log.Log_Settings_Text, "Log_File_Version", line, version, 1, 1);
    std::fprintf(out, "rows: %d\ncolumns: %d\nlength: %s\nversion: %s\n", log.Last_Row, log.Log_Row_Columns,
                 log.form.txt_Log_Length.c_str(), version.c_str());
    if (log.Repaired)
        std::fprintf(out, "repaired: yes, %ld bytes lost; the file as it was is %s_repairing_copy.qxl\n",
                     log.Repaired_Bytes, args[1].c_str());
    else if (!log.Repair_Failure.empty())
        std::fprintf(out, "repaired: no, it needs repair but can not be written (%s)\n",
                     log.Repair_Failure.c_str());
    else
        std::fprintf(out, "repaired: no\n");
    return 0;
}

int Log_Csv_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    if (args.size() != 2) {
        std::fprintf(err, "quorlen-cli log-csv: want one log file (see quorlen-cli --help)\n");
        return 2;
    }
    Log_Session s(err);
    if (!Open_Log(s, args[1], err)) return 1;
    const Log_State& log = *s.log;
    const int columns = log.columns.Signals;
    std::string head = "Time [s]";
    for (int c = 1; c <= columns; ++c) {
        const std::string& unit = log.Log_Signal_Tab[static_cast<std::size_t>(c - 1)].unit;
        const std::string name = Shown_Signal_Name(log, c - 1);
        head += "," + Csv_Field(unit.empty() ? name : name + " [" + unit + "]");
    }
    std::fprintf(out, "%s\n", head.c_str());
    std::string row;
    for (int r = 1; r <= log.Last_Row; ++r) {
        row.clear();
        for (int c = 0; c <= columns; ++c) {
            if (c > 0) row += ",";
            const double v = log.Log_Data(r, c);
            if (!Log_Array::Empty(v)) row += Number_Text(v);
        }
        std::fprintf(out, "%s\n", row.c_str());
    }
    return 0;
}

} // namespace quorlen::cli
