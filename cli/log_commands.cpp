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

void Sleep(double seconds) {
    if (seconds > 0) std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

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
    Core_Application core;
    Log_Session s(err);
    s.program.ComSpeed = a.baud == "625000" ? 625000 : 115200;

    // The settings read goes through the command link on the same port.
    Link_State link_state;
    const int port_number =
        To_Integer(a.port) ? static_cast<int>(*To_Integer(a.port)) : link_state.Ports.Number_For(a.port);
    s.program.Com_Port = port_number;
    s.port = link_state.Ports.Name_Of(port_number);
    const bool no_auto_start[2] = {false, false};
    Link_Hooks link_hooks;
    link_hooks.Dummy_Wait = [] { Sleep(0.05); };
    Link_Context link{s.program, s.texts, s.flags, link_state, s.debug, s.line, no_auto_start, link_hooks};
    Rw_State rw;
    File_State files;
    Settings_Context settings{link, s.image, rw, files, s.dialogs, {}};
    s.hooks.Read_Box_Settings = [&] { Read_Settings_Click(settings); };
    s.program.Program_Version = QUORLEN_VERSION;
    s.hooks.Settings_Summary = [&] {
        return Readable_Settings_Body(
            Readable_Settings_Text(Summary_Facts_Of(s.program, link_state, s.image, Running_System_Name())));
    };

    // A port that can't be opened is said plainly before anything starts.
    s.line.Set_Port(s.port);
    s.line.Set_Settings(Settings_Text(s.program.ComSpeed));
    if (const Open_Result result = s.line.Open(); !result.Ok()) {
        std::fprintf(err, "quorlen-cli: %s\n", Open_Failure_Advice(s.port, result).c_str());
        return 1;
    }
    s.line.Close();

    s.Load_Defaults();
    Log_State& log = *s.log;
    log.form.Binary_log_opt = a.binary ? 1 : 0;
    log.setup.check_SettingsInLogg = a.settings ? 1 : 0;
    log.setup.check_AutoSave = 0;
    log.Log_Dir = Folder_Of_Path(a.output);
    Rpm_Sensor_For_Mode(log);
    log.plan_ready = false;

    auto c = s.Ctx();
    Start_Logging(c);
    if (!log.capture.Logging_Running) {
        std::fputs(s.texts.Debug_txt.c_str(), err);
        std::fprintf(err, "quorlen-cli log: Error in box communication. Could not start logging\n");
        return 2;
    }
    Log_Timers timers(c);
    timers.Run_Until(c.Now() + a.seconds, Sleep);
    if (log.capture.Logging_Running) Start_Logging(c);
    Save_File(c, a.output);

    if (log.capture.Log_Delayed_Start) std::fprintf(err, "There were a delay before logging started.\n");
    if (log.capture.Log_Had_Interruption) std::fprintf(err, "There were some interruptions during the log\n");
    std::fprintf(out, "rows: %d\nlength: %s\nfile: %s\n", log.Last_Row, log.form.txt_Log_Length.c_str(),
                 a.output.c_str());
    for (const std::string& note : Split_Lines(log.form.txt_Log_Free_Text))
        if (note.rfind("Err ", 0) == 0) std::fprintf(out, "%s\n", note.c_str());
    return log.Last_Row > 0 ? 0 : 2;
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
