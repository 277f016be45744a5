#include "cli/hslog_commands.h"

#include "cli/cli_support.h"
#include "cli/cli_tables.h"
#include "core/atomic_file.h"

#include "core/text.h"
#include "files/settings_files.h"
#include "hslog/crank_view.h"
#include "hslog/hs_capture.h"
#include "hslog/pulse_analysis.h"
#include "image/scaling.h"
#include "link/port_names.h"
#include "link/qt/qt_serial_line.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace quorlen::cli {

namespace {

int Fail(const std::vector<std::string>& args, const std::string& what, std::FILE* err) {
    std::fprintf(err, "quorlen-cli %s: %s (see quorlen-cli --help)\n", args[0].c_str(), what.c_str());
    return 2;
}

struct Hslog_Args {
    std::string port, output;
    std::string baud = "115200";
    long seconds = 0;
};

bool Parse_Hslog(const std::vector<std::string>& args, Hslog_Args& a, std::string& error) {
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        const std::string value = Take_Option_Value(args, i, name);
        if (value.empty()) {
            error = "'" + name + "' wants a value";
            return false;
        }
        if (name == "--port") {
            a.port = value;
        } else if (name == "--baud") {
            a.baud = value;
        } else if (name == "-o" || name == "--output") {
            a.output = value;
        } else if (name == "--seconds") {
            const auto n = To_Integer(value);
            if (!n || *n <= 0 || *n > 24 * 3600) {
                error = "--seconds wants a whole number above 0";
                return false;
            }
            a.seconds = *n;
        } else {
            error = "unexpected '" + args[i] + "'";
            return false;
        }
    }
    if (a.port.empty() || a.output.empty() || a.seconds <= 0) {
        error = "want --port PATH, --seconds N and -o FILE.qxo";
        return false;
    }
    if (a.baud != "115200" && a.baud != "625000") {
        error = "--baud is 115200 or 625000";
        return false;
    }
    return true;
}

} // namespace

int Hslog_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Hslog_Args a;
    std::string error;
    if (!Parse_Hslog(args, a, error)) return Fail(args, error, err);

    Core_Application core;
    Program_State program;
    program.ComSpeed = a.baud == "625000" ? 625000 : 115200;
    Link_Flags flags;
    Debug_Log debug; // not opened: what matters is said on the tool's own output
    Stderr_Dialogs dialogs(err);
    Qt_Serial_Line line;
    Port_Names ports;
    const auto number = To_Integer(a.port);
    const std::string port = number ? ports.Name_Of(static_cast<int>(*number)) : a.port;

    // The capture grows beside the file it replaces, which stays whole until the end.
    HS_State hs;
    hs.Output_Path = a.output + ".part";
    std::remove(hs.Output_Path.c_str());
    HS_Context ctx{hs, program, flags, debug, dialogs, &line, port, "", {}};
    ctx.hooks.Dummy_Wait = [] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); };

    line.Set_Port(port);
    line.Set_Settings(Settings_Text(program.ComSpeed));
    if (const Open_Result opened = line.Open(); !opened.Ok()) {
        std::fprintf(err, "quorlen-cli: %s\n", Open_Failure_Advice(port, opened).c_str());
        return 1;
    }
    line.Close();

    Start_HSLogg_Click(ctx);
    if (!hs.capture.Running) return 1;
    const double end = ctx.Now() + static_cast<double>(a.seconds);
    while (hs.capture.Running && ctx.Now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(HS_Receive_Poll));
        HS_Poll(ctx);
    }
    if (hs.capture.Running) Stop_HSLogg_Click(ctx);

    if (std::rename(hs.Output_Path.c_str(), a.output.c_str()) != 0) {
        std::fprintf(err, "quorlen-cli hslog: can not move %s to %s; the capture stays in the first\n",
                     hs.Output_Path.c_str(), a.output.c_str());
        return 1;
    }
    const std::int64_t samples = hs.capture.Sample_Count;
    const std::int64_t checks = samples >= 2 + Osc_Check_Interval ? (samples - 2) / Osc_Check_Interval : 0;
    std::fprintf(out, "samples: %lld\ntime: %s s\nrate: %d samples a second\ncheck bytes: %lld%s\nfile: %s\n",
                 static_cast<long long>(samples),
                 Format_Number(static_cast<double>(samples) * 10 / program.ComSpeed, "0.0").c_str(),
                 Sample_Rate_Of(program.ComSpeed), static_cast<long long>(checks),
                 hs.capture.Checksum_Failed ? ", then a wrong one" : ", all 255", a.output.c_str());
    std::fputs(Lines_Of(hs.form.txt_Err).c_str(), out);
    if (hs.capture.Checksum_Failed) return 3;
    return samples > 0 ? 0 : 2;
}

int Hs_Analyze_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    std::string file, start, stop, reference;
    bool peak = false;
    Analyze_Reference by = Analyze_Reference::RPM;
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        if (name == "--peak") {
            peak = true;
            continue;
        }
        if (name.empty() || name[0] != '-') {
            if (!file.empty()) return Fail(args, "more than one file", err);
            file = name;
            continue;
        }
        const std::string value = Take_Option_Value(args, i, name);
        if (value.empty()) return Fail(args, "'" + name + "' wants a value", err);
        if (name == "--start") {
            start = value;
        } else if (name == "--stop") {
            stop = value;
        } else if (name == "--rpm" || name == "--teeth") {
            if (!reference.empty()) return Fail(args, "--rpm or --teeth, not both", err);
            reference = value;
            by = name == "--rpm" ? Analyze_Reference::RPM : Analyze_Reference::Crank_Pulses_Per_Rev;
        } else {
            return Fail(args, "unexpected '" + args[i] + "'", err);
        }
    }
    if (file.empty() || reference.empty()) return Fail(args, "want FILE.qxo and --rpm R or --teeth T", err);

    std::string error;
    const auto trace = Read_Osc_File(file, error);
    if (!trace) {
        std::fprintf(err, "%s\n", error.c_str());
        return 1;
    }
    if (const std::string notes = Osc_Trace_Notes(*trace); !notes.empty())
        std::fprintf(err, "%s\n", notes.c_str());
    const long count = trace->Count();
    const Osc_Stretch stretch =
        Clamp_Stretch(start.empty() ? "1" : start, stop.empty() ? std::to_string(count) : stop, count);
    const Analyze_Result result = Analyze_Stretch(*trace, stretch, by, reference);
    std::fprintf(out, "samples %ld to %ld of %ld, %d a second\n", stretch.first, stretch.last, count,
                 trace->sample_rate);
    std::fputs(Lines_Of(result.text).c_str(), out);
    if (!result.fault.empty()) {
        std::fprintf(err, "Error in cmd Analyze click %s\n", result.fault.c_str());
        return 1;
    }
    if (peak) {
        const Osc_Chart chart = Build_Osc_Chart(*trace, stretch, true);
        std::fprintf(out, "chart: %zu rows, %ld samples a row\n", chart.rows.size(), chart.step);
        for (std::size_t k = 0; k < chart.rows.size(); ++k) {
            std::string bits;
            for (int c = 0; c < Osc_Lines; ++c)
                bits += Get_Data_ByteVal_bit(chart.rows[k], c) ? '1' : '0';
            std::fprintf(
                out, "%s\t%s\n",
                Format_Number(Sample_Time_ms(chart.Row_Sample(k), trace->sample_rate), "0.00").c_str(),
                bits.c_str());
        }
    }
    return 0;
}

int Crank_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    std::string file, qxo, ini;
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        if (name.empty() || name[0] != '-') {
            if (!file.empty()) return Fail(args, "more than one settings file", err);
            file = name;
            continue;
        }
        const std::string value = Take_Option_Value(args, i, name);
        if (value.empty()) return Fail(args, "'" + name + "' wants a value", err);
        if (name == "--qxo")
            qxo = value;
        else if (name == "--ini")
            ini = value;
        else
            return Fail(args, "unexpected '" + args[i] + "'", err);
    }
    if (file.empty()) return Fail(args, "want FILE.qxs", err);

    const auto settings = Load_Qxs_File(file);
    if (!settings) {
        std::fprintf(err, "%s: %s\n", file.c_str(), Not_Valid_Qxs_Text);
        return 1;
    }
    // A configuration given by name must be there: without it no layout has a wheel.
    if (!ini.empty())
        if (const auto why = Why_Not_A_File(ini)) {
            std::fprintf(err, "quorlen-cli: --ini %s %s\n", ini.c_str(), why->c_str());
            return 1;
        }
    const Ini_File layouts(ini.empty() ? Cli_App_Path() + "RZ400_800M3.ini" : ini, "");
    Engine_Config_Table tab;
    Load_Engine_Config_Tab(tab, layouts);
    const Wheel_Layout wheel =
        Wheel_Layout_For(tab, settings->bytes[Engine_Layout_Address], settings->bytes[Mark_Teeth_Address]);

    std::optional<Crank_Measure> measure;
    if (!qxo.empty()) {
        std::string error;
        const auto trace = Read_Osc_File(qxo, error);
        if (!trace) {
            std::fprintf(err, "%s\n", error.c_str());
            return 1;
        }
        measure = Measure_Crank(*trace, std::max<int>(1, static_cast<int>(wheel.gaps.size())));
    }
    const Crank_Report report = Crank_View_Report(wheel, measure ? &*measure : nullptr, qxo);
    for (const std::string& line : report.lines)
        std::fprintf(out, "%s\n", line.c_str());
    for (const std::string& warning : report.warnings)
        std::fprintf(out, "Warning: %s\n", warning.c_str());
    return report.warnings.empty() ? 0 : 3;
}

} // namespace quorlen::cli
