#pragma once
// The one road to the box: Send_Wait_Rec, and the rule for opening the port that every
// procedure follows (open it when closed, remember that, close it at the end, so other
// programs can reach the box between operations).

#include "core/debug_log.h"
#include "core/program_state.h"
#include "link/link_state.h"
#include "link/serial_line.h"

#include <functional>
#include <string>
#include <string_view>

namespace quorlen {

// What the link asks of the program around it. Every hook may be left empty.
struct Link_Hooks {
    // Seconds on a steady clock; tests hand in a clock of their own.
    std::function<double()> Now;
    // Serves the event loop for 0.05 s (the GUI), or just lets the time pass.
    std::function<void()> Dummy_Wait;
    // The four command buttons, and the enabling that depends on the page on show.
    std::function<void(bool enabled)> Command_Buttons;
    std::function<void()> Handle_button_enable;
    std::function<void()> Show_Right_Tabs_Adjust_Current_Frame;
    // A message box with its title.
    std::function<void(const std::string& title, const std::string& text)> Message_Box;
    // Auto start: shows the log window and starts a log (0 to file, 1 live view).
    std::function<void(int index)> Start_Logg_cmd_Click;
    // The engine speed of the running log.
    std::function<double()> Logged_RPM;
};

struct Link_Context {
    Program_State& program; // Com_Port, ComSpeed, Autostart_Pending
    Form_Texts& texts;      // rs232_text, Debug_txt
    Link_Flags& flags;
    Link_State& state;
    Debug_Log& log;
    Serial_Line& line;
    const bool (&Auto_Start_option)[2];
    Link_Hooks hooks;

    double Now() const;
    void Dummy_Wait() const;
    // The name of the selected port as the texts show it.
    std::string Port_Name() const { return state.Ports.Name_Of(program.Com_Port); }
};

// A steady clock in seconds.
double Steady_Seconds();

// Sends `command` (nothing when empty) and collects until `expected` characters have come
// or `timeout` seconds have passed. `ok` tells which; a short answer is still handed back,
// and characters beyond `expected` that came in the same read stay in it. Returns the
// moment the count is reached: the time-out is a bound, never a wait.
void Send_Wait_Rec(Link_Context& c, std::string_view command, double timeout, int expected,
                   std::string& answer, bool& ok);
// The same exchange for answers whose length is not known, ended by what they hold (a
// marker character, a complete banner): `complete` is asked after each arrival.
void Send_Wait_Until(Link_Context& c, std::string_view command, double timeout,
                     const std::function<bool(const std::string&)>& complete, std::string& answer, bool& ok);

// Opens the selected port with the speed setting when it is closed; true when this call
// opened it. Raises Run_Error when it can't, with `failure` filled when given.
bool Open_Port_If_Closed(Link_Context& c, Open_Result* failure = nullptr);
// Reads and drops whatever is waiting.
void Drop_Input(Link_Context& c);

} // namespace quorlen
