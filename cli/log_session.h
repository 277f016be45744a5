#pragma once
// A log as the log window holds one, without the window: the commands that read, record or
// draw logs share it.

#include "cli/cli_tables.h"
#include "core/atomic_file.h"
#include "link/qt/qt_serial_line.h"
#include "logging/log_context.h"
#include "logging/log_file.h"

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
