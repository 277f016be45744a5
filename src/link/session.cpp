#include "link/session.h"

#include "core/proc_guard.h"
#include "core/run_error.h"
#include "link/banner.h"

namespace quorlen {

namespace {

void Append_Debug(Link_Context& c, const std::string& line) {
    c.texts.Debug_txt += "\r\n" + line;
}

void Show_Engine_State(Link_Context& c) {
    c.state.Engine_OnOff_mnu_Caption = c.state.Engine_Running ? "Engine running" : "Engine off";
    c.state.Engine_OnOff_mnu_Visible = true;
}

void Call(const std::function<void()>& hook) {
    if (hook) hook();
}

// A port the user may not open stays shut until they act, and only they can: the reason and
// the remedy are put before them, not only in the diagnostics log.
void Tell_When_Not_Permitted(Link_Context& c, const std::string& advice) {
    if (c.state.Last_Open_Failure == Open_Failure::No_Permission && c.hooks.Message_Box)
        c.hooks.Message_Box("Serial port", advice);
}

// Open if closed, drop what waits, ask, close again if we opened it.
void Ask_Box(Link_Context& c, Proc_Guard& guard) {
    const bool opened = Open_Port_If_Closed(c);
    guard.Step([&] { Drop_Input(c); });
    guard.Step([&] { get_connect_info(c); });
    if (opened) guard.Step([&] { c.line.Close(); });
}

} // namespace

void Ask_Banner(Link_Context& c, double timeout, int expected, std::string& answer, bool& ok) {
    const auto wanted = static_cast<std::size_t>(expected < 0 ? 0 : expected);
    Send_Wait_Until(
        c, "v", timeout,
        [wanted](const std::string& so_far) { return so_far.size() >= wanted || Banner_Complete(so_far); },
        answer, ok);
}

void get_connect_info(Link_Context& c) {
    Proc_Guard guard(c.log, "Get connect info");
    std::string answer;
    bool ok = false;
    // The count is an upper bound: a box's banner is usually shorter, and ends with its
    // mode line.
    Ask_Banner(c, 0.2, 200, answer, ok);
    if (Banner_Has_I2C_Timeout(answer)) {
        // The display bus of the box failed while it wrote; it usually recovers at once.
        Ask_Banner(c, 0.1, 200, answer, ok);
        if (Banner_Has_I2C_Timeout(answer)) {
            Ask_Banner(c, 0.1, 200, answer, ok);
            if (Banner_Has_I2C_Timeout(answer)) Append_Debug(c, "3 I2C time out in row");
        }
    }
    if (Banner_From_Bootloader(answer)) Send_Wait_Rec(c, "g", 0.1, 3, answer, ok);

    if (Banner_Complete(answer)) {
        if (!c.flags.Connection_Check_Busy) c.texts.rs232_text = "< Info received OK >";
        guard.Step([&] {
            const Banner_Fields f = Read_Banner(answer);
            c.state.Box_Version = f.Box_Version;
            c.state.Box_Serial = f.Box_Serial;
            c.state.Box_Dataset_ID = f.Box_Dataset_ID;
            c.state.Box_Status_Flags = f.Box_Status_Flags;
            c.state.Box_Status_Value = f.Box_Status_Value;
            c.state.Engine_Running = f.Engine_Running;
            c.state.Slave_Present = f.Slave_Present;
            c.state.Smartcard_Present = f.Smartcard_Present;
            c.state.Box_Info_Text = Box_Info_Text_Of(f);
        });
        c.state.Connected = true;
    } else {
        c.state.Box_Info_Text = "No responce from system";
        if (!c.flags.Connection_Check_Busy) c.texts.rs232_text = "< No responce >";
        Append_Debug(c, c.state.Box_Info_Text);
        c.state.Connected = false;
    }
}

void Check_connection_timer(Link_Context& c) {
    if (c.flags.Logging_Active) {
        // The port belongs to the log; the engine state comes from its rows.
        c.state.Engine_Running = c.hooks.Logged_RPM && c.hooks.Logged_RPM() > 0;
        Show_Engine_State(c);
        Call(c.hooks.Show_Right_Tabs_Adjust_Current_Frame);
        return;
    }
    // The high-speed capture owns the port while it streams; the poll waits until it ends.
    if (c.flags.Write_In_Progress || c.flags.Link_Busy || c.flags.Connect_Info_Busy ||
        c.flags.HS_Logging_Active)
        return;

    Proc_Guard guard(c.log, "Check connection timer \r\n");
    c.flags.Connection_Check_Busy = true;
    c.flags.Link_Busy = true;
    try {
        Ask_Box(c, guard);
    } catch (const Run_Error& e) {
        // A port that stays missing would write this every 1.5 s; once is enough.
        const std::string failure = e.what();
        const bool new_failure = failure != c.state.Last_Check_Failure;
        if (new_failure) {
            c.log.Write_Line("Error in Check connection timer \r\n" + failure);
            Append_Debug(c, failure);
        }
        c.state.Last_Check_Failure = failure;
        c.program.Autostart_Pending = true;
        c.flags.Link_Busy = false;
        c.flags.Connection_Check_Busy = false;
        if (new_failure) Tell_When_Not_Permitted(c, failure);
        return;
    }
    c.state.Last_Check_Failure.clear();
    // Shown whatever the answer was: it names the port the program is watching.
    c.state.Online_mnu_Caption = "System connected to " + c.Port_Name();
    c.state.Online_mnu_Visible = true;
    guard.Step([&] { Call(c.hooks.Show_Right_Tabs_Adjust_Current_Frame); });
    Show_Engine_State(c);
    if (!c.state.Engine_Running) c.state.Live_Adjust_Option0_Visible = false;
    c.flags.Connection_Check_Busy = false;

    // Auto start waits for a check that went through without an error.
    if (!guard.Failed() && c.program.Autostart_Pending && c.hooks.Start_Logg_cmd_Click) {
        if (c.Auto_Start_option[0])
            guard.Step([&] { c.hooks.Start_Logg_cmd_Click(0); });
        else if (c.Auto_Start_option[1])
            guard.Step([&] { c.hooks.Start_Logg_cmd_Click(1); });
    }
    if (!guard.Failed()) c.program.Autostart_Pending = false;
    c.flags.Link_Busy = false;
    if (guard.Failed()) {
        c.program.Autostart_Pending = true;
        c.flags.Connection_Check_Busy = false;
    }
}

void Connect_Info_Click(Link_Context& c) {
    if (c.flags.Connection_Check_Busy) return;
    Proc_Guard guard(c.log, "Connect info");
    c.flags.Connect_Info_Busy = true;
    c.texts.rs232_text = "< .... >";
    c.texts.Debug_txt.clear();
    if (c.hooks.Command_Buttons) c.hooks.Command_Buttons(false);
    Call(c.hooks.Handle_button_enable);
    try {
        Ask_Box(c, guard);
        if (!c.state.Info_Message_Silent && c.hooks.Message_Box)
            c.hooks.Message_Box("Connected box info", c.state.Box_Info_Text);
    } catch (const Run_Error& e) {
        // The report says why, so the user knows what to do about it.
        c.texts.rs232_text = "< Failed to open " + c.Port_Name() + " >";
        Append_Debug(c, e.what());
        guard.Fail(e.what());
        Tell_When_Not_Permitted(c, e.what());
    }
    if (c.hooks.Command_Buttons) c.hooks.Command_Buttons(true);
    Call(c.hooks.Handle_button_enable);
    c.flags.Connect_Info_Busy = false;
}

void Command2_Click(Link_Context& c) {
    if (c.flags.Connection_Check_Busy || c.flags.Link_Busy || c.flags.Write_In_Progress ||
        c.flags.Logging_Active)
        return;
    Proc_Guard guard(c.log, "Command2 click");
    c.flags.Connect_Info_Busy = true;
    if (c.line.Is_Open()) {
        // A port opened by hand is closed for the sweep, as the close button would.
        guard.Step([&] { c.line.Close(); });
        c.state.Com_Open_Enabled = true;
        c.state.Com_Close_Enabled = false;
    }
    const int chosen = c.program.Com_Port;
    for (int n = 1; n <= 9; ++n) {
        c.program.Com_Port = n;
        try {
            Ask_Box(c, guard);
            if (c.hooks.Message_Box) c.hooks.Message_Box("Connected box info", c.state.Box_Info_Text);
        } catch (const Run_Error&) {
            Append_Debug(c, "< Failed to open " + c.Port_Name() + " >");
        }
    }
    c.program.Com_Port = chosen;
    c.flags.Connect_Info_Busy = false;
}

void Com_Open_Click(Link_Context& c) {
    Proc_Guard guard(c.log, "Com open click ");
    try {
        Open_Port_If_Closed(c);
    } catch (const Run_Error& e) {
        // The report says why, so the user knows what to do about it.
        c.texts.rs232_text = "< Failed to open " + c.Port_Name() + " >";
        Append_Debug(c, e.what());
        guard.Fail(e.what());
        Tell_When_Not_Permitted(c, e.what());
        return;
    }
    if (!c.state.Com_Quiet) c.texts.rs232_text = "< " + c.Port_Name() + " open >";
    c.state.Com_Open_Enabled = false;
    c.state.Com_Close_Enabled = true;
}

void Com_Close_Click(Link_Context& c) {
    Proc_Guard guard(c.log, "Com close click ");
    // The log stream's timers need no stop here: a running log owns the port, and the main
    // window refuses Com close until the log has stopped and let go of it.
    guard.Step([&] { c.line.Close(); });
    if (!c.state.Com_Quiet) c.texts.rs232_text = "< " + c.Port_Name() + " closed >";
    c.state.Com_Quiet = false;
    c.state.Com_Open_Enabled = true;
    c.state.Com_Close_Enabled = false;
}

void Look_For_Box(Link_Context& c) {
    if (c.flags.Link_Busy || c.flags.Write_In_Progress || c.flags.Logging_Active || c.flags.Connect_Info_Busy)
        return;
    Proc_Guard guard(c.log, "Look for box");
    c.flags.Link_Busy = true;
    try {
        Ask_Box(c, guard);
    } catch (const Run_Error&) {
        // A port that can't be opened is the poll's to report.
    }
    c.flags.Link_Busy = false;
}

} // namespace quorlen
