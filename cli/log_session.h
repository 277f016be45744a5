#pragma once
// A log as the log window holds one, without the window: the commands that read, record or
// draw logs share it.

#include "app/tune_tools.h"
#include "cli/cli_support.h"
#include "cli/cli_tables.h"
#include "core/atomic_file.h"
#include "files/settings_summary.h"
#include "link/qt/qt_port_platform.h"
#include "link/qt/qt_serial_line.h"
#include "link/read_verify.h"
#include "link/settings_context.h"
#include "logging/log_capture.h"
#include "logging/log_context.h"
#include "logging/log_file.h"
#include "logging/log_signals.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

namespace quorlen::cli {

struct Log_Session {
    explicit Log_Session(std::FILE* err) : dialogs(err) {
        program.App_Path = Cli_App_Path();
        hooks.Dummy_Wait = [] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); };
    }
    Log_Context Ctx() { return {*log, image, program, texts, flags, debug, dialogs, &line, port, hooks}; }
    // The program's defaults and the default log settings beside it.
    void Load_Defaults() {
        auto c = Ctx();
        Load_Log_Defaults(c);
    }

    std::unique_ptr<Log_State> log = std::make_unique<Log_State>();
    Settings_Image image;
    Program_State program;
    Form_Texts texts;
    Link_Flags flags;
    Debug_Log debug; // not opened: what matters is said on the tool's own output
    Stderr_Dialogs dialogs;
    Qt_Serial_Line line;
    std::string port;
    Log_Hooks hooks;
};

// A log recorded from the box on a port, with the command link on the same port for the
// box's settings (and for changes while the stream runs): what "log" and "live" share.
class Recording {
public:
    Recording(std::FILE* err, const std::string& port, const std::string& baud)
        : s(err), link{s.program, s.texts, s.flags, link_state, s.debug, s.line, no_auto_start_, {}},
          settings{link, s.image, rw, files, s.dialogs, {}} {
        s.program.ComSpeed = baud == "625000" ? 625000 : 115200;
        const auto number = To_Integer(port);
        s.program.Com_Port = number ? static_cast<int>(*number) : link_state.Ports.Number_For(port);
        s.port = link_state.Ports.Name_Of(s.program.Com_Port);
        link.hooks.Dummy_Wait = [] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); };
        s.hooks.Read_Box_Settings = [this] { Read_Settings_Click(settings); };
        s.hooks.Settings_Summary = [this] {
            return Readable_Settings_Body(Readable_Settings_Text(
                Summary_Facts_Of(s.program, link_state, s.image, Running_System_Name())));
        };
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    // A port that can't be opened is said plainly before anything starts.
    bool Port_Opens(std::FILE* err) {
        s.line.Set_Port(s.port);
        s.line.Set_Settings(Settings_Text(s.program.ComSpeed));
        if (const Open_Result result = s.line.Open(); !result.Ok()) {
            std::fprintf(err, "quorlen-cli: %s\n", Open_Failure_Advice(s.port, result).c_str());
            return false;
        }
        s.line.Close();
        return true;
    }

    // The default log settings, then the choices of the command line; false, said on `err`,
    // when the stream did not start.
    bool Start(const char* command, bool binary, bool read_settings, const std::string& output,
               std::FILE* err) {
        s.Load_Defaults();
        Log_State& log = *s.log;
        log.form.Binary_log_opt = binary ? 1 : 0;
        log.setup.check_SettingsInLogg = read_settings ? 1 : 0;
        log.setup.check_AutoSave = 0;
        log.Log_Dir = Folder_Of_Path(output);
        Rpm_Sensor_For_Mode(log);
        log.plan_ready = false;
        ctx_ = std::make_unique<Log_Context>(s.Ctx());
        Start_Logging(*ctx_);
        if (log.capture.Logging_Running) return true;
        std::fputs(s.texts.Debug_txt.c_str(), err);
        std::fprintf(err, "quorlen-cli %s: Error in box communication. Could not start logging\n", command);
        return false;
    }

    // Lets the log's timers run until `seconds` after the start of the program's clock.
    void Run_Until(double until) {
        if (!timers_) timers_ = std::make_unique<Log_Timers>(*ctx_);
        timers_->Run_Until(until, [](double seconds) {
            if (seconds > 0) std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
        });
    }

    // Stops the log when it still runs and saves it; prints what a tuner wants to know.
    int Stop_And_Save(const std::string& output, std::FILE* out, std::FILE* err) {
        Log_State& log = *s.log;
        if (log.capture.Logging_Running) Start_Logging(*ctx_);
        Save_File(*ctx_, output);
        if (log.capture.Log_Delayed_Start) std::fprintf(err, "There were a delay before logging started.\n");
        if (log.capture.Log_Had_Interruption)
            std::fprintf(err, "There were some interruptions during the log\n");
        std::fprintf(out, "rows: %d\nlength: %s\nfile: %s\n", log.Last_Row, log.form.txt_Log_Length.c_str(),
                     output.c_str());
        for (const std::string& note : Split_Lines(log.form.txt_Log_Free_Text))
            if (note.rfind("Err ", 0) == 0) std::fprintf(out, "%s\n", note.c_str());
        return log.Last_Row > 0 ? 0 : 2;
    }

    Log_Context& Ctx() { return *ctx_; }

    Core_Application core;
    Log_Session s;
    Link_State link_state;

private:
    const bool no_auto_start_[2] = {false, false};

public:
    Link_Context link;
    Rw_State rw;
    File_State files;
    Settings_Context settings;

private:
    std::unique_ptr<Log_Context> ctx_;
    std::unique_ptr<Log_Timers> timers_;
};

// The defaults, then the log at `path`; false, said on `err`, when it can't be read as one
// (a missing file, a folder, a pipe, a file that is no log).
inline bool Open_Log(Log_Session& s, const std::string& path, std::FILE* err) {
    if (const auto why = Why_Not_A_File(path)) {
        std::fprintf(err, "%s %s\n", path.c_str(), why->c_str());
        return false;
    }
    s.Load_Defaults();
    auto c = s.Ctx();
    return Open_File(c, path);
}

} // namespace quorlen::cli
