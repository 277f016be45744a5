#include "hslog/hs_capture.h"

#include "core/atomic_file.h"
#include "core/proc_guard.h"
#include "core/run_error.h"
#include "image/scaling.h"
#include "link/serial_line.h"

#include <algorithm>
#include <chrono>

namespace quorlen {

namespace {

constexpr const char* Start_Name = "Start HSLogg click";
constexpr const char* Stop_Name = "Stop HSLogg click";
constexpr const char* Receive_Name = "MSComm HS OnComm";

bool Port_Open(const HS_Context& ctx) {
    return ctx.line != nullptr && ctx.line->Is_Open();
}

std::string Replace_Marks(std::string text) {
    std::replace(text.begin(), text.end(), ':', '-');
    std::replace(text.begin(), text.end(), '/', '-');
    return text;
}

void Note_Slow_Event(HS_Context& ctx) {
    HS_Form& f = ctx.hs.form;
    f.Text3 += ".";
    if (f.Text3.size() >= Too_Slow_Dots && !ctx.hs.capture.Too_Slow_Shown) {
        ctx.hs.capture.Too_Slow_Shown = true;
        ctx.dialogs.Inform(Too_Slow_Text);
    }
}

// The dated name in the log folder; a second capture in the same second gets "_2" and on.
std::string Free_Osc_Path(const std::string& dir, const std::string& name) {
    const std::string folder = dir.empty() ? std::string() : dir + "/";
    const std::string stem = name.substr(0, name.size() - 4);
    std::string path = folder + name;
    for (int n = 2; n < 100 && File_Exists(path); ++n)
        path = folder + stem + "_" + std::to_string(n) + ".qxo";
    return path;
}

void Buttons_Idle(HS_Context& ctx) {
    HS_Form& f = ctx.hs.form;
    f.Start_HSLogg_Enabled = true;
    f.Stop_HSLogg_Enabled = false;
    f.Timer1_Enabled = false;
    ctx.hs.capture.Running = false;
    ctx.flags.HS_Logging_Active = false;
}

} // namespace

double HS_Context::Now() const {
    if (hooks.Now) return hooks.Now();
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::string Osc_File_Name(const std::string& date, const std::string& time) {
    return Replace_Marks("RZ_Osc_file_" + date + "_" + time + ".qxo");
}

bool HS_Take_Bytes(HS_Capture_State& cap, std::string_view bytes) {
    std::size_t good = bytes.size();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (Check_Byte_Due(cap.Sample_Count + 1 + static_cast<std::int64_t>(i)) &&
            static_cast<std::uint8_t>(bytes[i]) < 255) {
            good = i;
            cap.Checksum_Failed = true;
            break;
        }
    }
    if (!cap.file.Write(bytes.substr(0, good))) return false;
    cap.Sample_Count += static_cast<std::int64_t>(good);
    return !cap.Checksum_Failed;
}

void Start_HSLogg_Click(HS_Context& ctx) {
    HS_Capture_State& cap = ctx.hs.capture;
    HS_Form& f = ctx.hs.form;
    if (Port_Open(ctx) || cap.Running) {
        Stop_HSLogg_Click(ctx);
        return;
    }
    if (ctx.hooks.Main_Port_Busy && ctx.hooks.Main_Port_Busy()) {
        ctx.dialogs.Inform(Port_Busy_Text);
        return;
    }
    Proc_Guard guard(ctx.debug, Start_Name);
    if (ctx.line == nullptr) {
        guard.Fail("Port not open");
        return;
    }
    f.Start_HSLogg_Enabled = false;
    f.Stop_HSLogg_Enabled = true;
    cap.baud = ctx.program.ComSpeed;
    ctx.line->Set_Port(ctx.port);
    ctx.line->Set_Settings(Settings_Text(cap.baud));
    if (const Open_Result opened = ctx.line->Open(); !opened.Ok()) {
        // The stream has nowhere to come from: say why and leave everything as it was.
        ctx.dialogs.Inform(Open_Failure_Advice(ctx.port, opened));
        guard.Fail(opened.text);
        Buttons_Idle(ctx);
        return;
    }
    ctx.flags.HS_Logging_Active = true;
    if (ctx.hooks.Dummy_Wait) ctx.hooks.Dummy_Wait();

    const std::string date = ctx.hooks.Date_Text ? ctx.hooks.Date_Text() : Now_Date_Time_Text().substr(0, 10);
    const std::string time = ctx.hooks.Time_Text ? ctx.hooks.Time_Text() : Now_Time_Text();
    cap.path =
        !ctx.hs.Output_Path.empty() ? ctx.hs.Output_Path : Free_Osc_Path(ctx.dir, Osc_File_Name(date, time));
    f.Osc_Chart_Visible = false;
    std::string error;
    if (!cap.file.Open(cap.path, error)) {
        ctx.dialogs.Inform("Can not write the high-speed log file " + error);
        guard.Fail(error);
        ctx.line->Close();
        f.Osc_Chart_Visible = true;
        Buttons_Idle(ctx);
        return;
    }
    cap.Sample_Count = 0;
    cap.Calls = 0;
    cap.Checksum_Failed = false;
    cap.Too_Slow_Shown = false;
    cap.Event_Busy = false;
    cap.Stopping = false;
    f.Text3.clear();
    f.txt_Log_time = time;
    f.txt_Log_Length = "0.0 s";
    const Line_Losses losses = ctx.line->Losses();
    cap.overruns_seen = losses.overrun;
    cap.rx_overs_seen = losses.buffer_overrun;
    guard.Step([&] {
        ctx.line->Clear_Input();
        ctx.line->Read_All();
        ctx.line->Write("d");
    });
    cap.started = ctx.Now();
    cap.Running = true;
    f.Timer1_Enabled = true;
}

void HS_Receive_Event(HS_Context& ctx, int event) {
    HS_Capture_State& cap = ctx.hs.capture;
    HS_Form& f = ctx.hs.form;
    if (event == comEventOverrun) {
        f.txt_Err += "Com event: comEventOverrun\r\n";
        return;
    }
    if (event == comEventRxOver) {
        f.txt_Err += "Com event: comEventRxOver\r\n" + std::to_string(event);
        return;
    }
    if (event != comEvReceive) return;
    if (cap.Event_Busy) {
        Note_Slow_Event(ctx);
        return;
    }
    if (cap.Stopping || !cap.Running || !Port_Open(ctx)) return;

    Proc_Guard guard(ctx.debug, Receive_Name);
    cap.Event_Busy = true;
    ++cap.Calls;
    bool good = true;
    guard.Step([&] { good = HS_Take_Bytes(cap, ctx.line->Read_All()); });
    cap.Event_Busy = false;
    if (!good) {
        // Events that come while the message is up find the stop begun and leave the port alone.
        cap.Stopping = true;
        ctx.dialogs.Inform(cap.Checksum_Failed ? Checksum_Error_Text : Write_Failed_Text);
        Stop_HSLogg_Click(ctx);
        return;
    }
    // A threshold's worth that came while this event ran is an event that had to wait.
    guard.Step([&] {
        if (Port_Open(ctx) && ctx.line->Bytes_Waiting() >= HS_RThreshold) Note_Slow_Event(ctx);
    });
}

void HS_Poll(HS_Context& ctx) {
    HS_Capture_State& cap = ctx.hs.capture;
    if (!cap.Running || cap.Stopping) return;
    if (!Port_Open(ctx)) {
        // What came before is in the file; close it as a stop would.
        cap.Stopping = true;
        ctx.dialogs.Inform(Port_Lost_Text);
        Stop_HSLogg_Click(ctx);
        return;
    }
    const Line_Losses losses = ctx.line->Losses();
    for (; cap.overruns_seen < losses.overrun; ++cap.overruns_seen)
        HS_Receive_Event(ctx, comEventOverrun);
    for (; cap.rx_overs_seen < losses.buffer_overrun; ++cap.rx_overs_seen)
        HS_Receive_Event(ctx, comEventRxOver);
    int waiting = 0;
    try {
        waiting = ctx.line->Bytes_Waiting();
    } catch (const Run_Error&) {
        return; // the line went away; the stop will say so
    }
    if (waiting >= HS_RThreshold) HS_Receive_Event(ctx, comEvReceive);
}

void HS_Timer1_Timer(HS_Context& ctx) {
    if (!ctx.hs.capture.Running) return;
    ctx.hs.form.txt_Log_Length = Format_Number(ctx.Now() - ctx.hs.capture.started, "0.0") + " s";
}

void Stop_HSLogg_Click(HS_Context& ctx) {
    HS_Capture_State& cap = ctx.hs.capture;
    HS_Form& f = ctx.hs.form;
    Proc_Guard guard(ctx.debug, Stop_Name);
    cap.Stopping = true;
    if (Port_Open(ctx)) {
        guard.Step([&] { ctx.line->Write(" "); });
        // What arrived before the stop belongs to the capture.
        guard.Step([&] {
            if (!cap.Checksum_Failed && cap.file.Good()) HS_Take_Bytes(cap, ctx.line->Read_All());
        });
        guard.Step([&] { ctx.line->Close(); });
    } else if (ctx.line != nullptr) {
        guard.Step([&] { ctx.line->Close(); }); // a line that went away still holds its device
    }
    const bool had_file = cap.file.Is_Open();
    const bool written = cap.file.Is_Open() && cap.file.Close(Sample_Rate_Of(cap.baud));
    if (had_file && !written) guard.Fail("Can not write " + cap.path);
    Buttons_Idle(ctx);
    cap.Stopping = false;
    if (!had_file) return;

    const double seconds = static_cast<double>(cap.Sample_Count) / cap.baud * 10;
    ctx.dialogs.Inform(std::to_string(cap.Sample_Count) +
                       " samples were captured. Time: " + Format_Number(seconds, "0.0") + "sek");
    f.Osc_Chart_Visible = true;
    if (ctx.hooks.Open_File) guard.Step([&] { ctx.hooks.Open_File(cap.path); });
}

} // namespace quorlen
