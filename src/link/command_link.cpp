#include "link/command_link.h"

#include "core/proc_guard.h"
#include "core/run_error.h"

#include <chrono>

namespace quorlen {

double Steady_Seconds() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

double Link_Context::Now() const {
    return hooks.Now ? hooks.Now() : Steady_Seconds();
}

void Link_Context::Dummy_Wait() const {
    if (hooks.Dummy_Wait) hooks.Dummy_Wait();
}

void Send_Wait_Rec(Link_Context& c, std::string_view command, double timeout, int expected,
                   std::string& answer, bool& ok) {
    const auto wanted = static_cast<std::size_t>(expected < 0 ? 0 : expected);
    Send_Wait_Until(
        c, command, timeout, [wanted](const std::string& so_far) { return so_far.size() >= wanted; }, answer,
        ok);
}

void Send_Wait_Until(Link_Context& c, std::string_view command, double timeout,
                     const std::function<bool(const std::string&)>& complete, std::string& answer, bool& ok) {
    Proc_Guard guard(c.log, "Send wait rec");
    ok = false;
    c.state.Last_Exchange_Failure.clear();
    if (!c.line.Is_Open()) {
        c.texts.rs232_text = "Port not open";
        answer.clear();
        return;
    }
    try {
        c.line.Clear_Input();
        c.line.Read_All();
        answer.clear();
    } catch (const Run_Error&) {
        c.texts.rs232_text = "Port not open";
        return;
    }
    const double t0 = c.Now();
    guard.Step([&] {
        if (!command.empty()) c.line.Write(command);
        for (;;) {
            answer += c.line.Read_All();
            if (complete(answer)) {
                ok = true;
                break;
            }
            const double left = t0 + timeout - c.Now();
            if (left <= 0 || !c.line.Is_Open()) break;
            c.line.Wait_For_Input(left);
        }
        if (!ok) c.state.Last_Exchange_Failure = "Answer timeout";
    });
    c.state.Last_Exchange_Seconds = c.Now() - t0;
}

bool Open_Port_If_Closed(Link_Context& c, Open_Result* failure) {
    if (c.line.Is_Open()) return false;
    const std::string path = c.state.Ports.Path_Of(c.program.Com_Port);
    if (path.empty()) throw Run_Error(8002, "Invalid port number");
    c.line.Set_Port(path);
    c.line.Set_Settings(Settings_Text(c.program.ComSpeed));
    Open_Result result = c.line.Open();
    c.state.Last_Open_Failure = result.failure;
    if (failure != nullptr) *failure = result;
    if (!result.Ok()) throw Run_Error(8010, Open_Failure_Advice(path, result));
    c.Dummy_Wait();
    return true;
}

void Drop_Input(Link_Context& c) {
    c.line.Read_All();
}

} // namespace quorlen
