#include "cli/link_commands.h"

#include "cli/cli_support.h"

#include "core/debug_log.h"
#include "core/run_error.h"
#include "core/text.h"
#include "link/qt/qt_port_platform.h"
#include "link/qt/qt_serial_line.h"
#include "link/session.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <thread>

namespace quorlen::cli {

namespace {

// "--port PATH" or "--port=PATH", and "--baud" alike; false, with a message, on anything else.
bool Parse(const std::vector<std::string>& args, std::string& port, std::string& baud, std::FILE* err) {
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        std::string value = Take_Option_Value(args, i, name);
        if (name == "--port" && !value.empty()) {
            port = value;
        } else if (name == "--baud" && !value.empty()) {
            baud = value;
        } else {
            std::fprintf(err, "quorlen-cli %s: unexpected '%s' (see quorlen-cli --help)\n", args[0].c_str(),
                         args[i].c_str());
            return false;
        }
    }
    return true;
}

int Port_Number(Port_Names& names, const std::string& port) {
    if (port.empty()) return 1;
    if (auto n = To_Integer(port)) return static_cast<int>(*n);
    return names.Number_For(port);
}

} // namespace

int Ports(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    std::string port, baud;
    if (!Parse(args, port, baud, err)) return 2;
    Core_Application core;
    Qt_Port_Platform platform;
    Port_Names names;
    const int chosen = Port_Number(names, port);
    clsSerialPortList list(platform, names, Simulator_Link_Candidates(std::getenv("XDG_RUNTIME_DIR")));
    list.EnumerateList(16, false, false, false);
    const Combo1_Fill fill = Fill_Combo1(list, chosen);
    for (const Combo1_Entry& entry : fill.entries)
        std::fprintf(out, "%s\n", entry.text.c_str());
    if (fill.selected >= 0)
        std::fprintf(out, "selected: %s\n",
                     fill.entries[static_cast<std::size_t>(fill.selected)].text.c_str());
    else
        std::fprintf(out, "selected: none (the main window shows \"System not connected\")\n");
    return 0;
}

int Info(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    std::string port, baud = "115200";
    if (!Parse(args, port, baud, err)) return 2;
    if (port.empty() || (baud != "115200" && baud != "625000")) {
        std::fprintf(err, "quorlen-cli info: want --port PATH and a baud rate of 115200 or 625000\n");
        return 2;
    }
    Core_Application core;
    Program_State program;
    Form_Texts texts;
    Link_Flags flags;
    Link_State state;
    Debug_Log log; // not opened: the tool reports on its own output
    Qt_Serial_Line line;
    const bool no_auto_start[2] = {false, false};
    program.ComSpeed = baud == "625000" ? 625000 : 115200;
    program.Com_Port = Port_Number(state.Ports, port);
    Link_Hooks hooks;
    hooks.Dummy_Wait = [] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); };
    Link_Context c{program, texts, flags, state, log, line, no_auto_start, std::move(hooks)};

    Open_Result failure;
    try {
        Open_Port_If_Closed(c, &failure);
    } catch (const Run_Error& e) {
        const std::string path = state.Ports.Name_Of(program.Com_Port);
        std::fprintf(err, "quorlen-cli: %s\n",
                     failure.Ok() ? e.what() : Open_Failure_Advice(path, failure).c_str());
        return 1;
    }
    Drop_Input(c);
    get_connect_info(c);
    line.Close();

    std::fputs(Lines_Of(state.Box_Info_Text).c_str(), out);
    // What the program adds to its report (a display bus that keeps failing, say).
    for (const std::string& line_text : Split_Lines(texts.Debug_txt))
        if (!line_text.empty() && line_text != state.Box_Info_Text)
            std::fprintf(out, "%s\n", line_text.c_str());
    return state.Connected ? 0 : 2;
}

} // namespace quorlen::cli
