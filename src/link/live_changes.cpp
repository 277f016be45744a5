#include "link/live_changes.h"

#include "core/proc_guard.h"
#include "link/write_settings.h"

#include <algorithm>

namespace quorlen {

namespace {

constexpr const char* Log_Name = "Write while logging";
// How long the line may stay silent in the middle of a row before the rest of it is given up
// for lost: longer than a USB adapter's default latency, shorter than the box's row period.
constexpr double Row_Silence = 0.020;
// However the stream behaves, the change goes ahead after this.
constexpr double Drain_Limit = 0.150;

void Say(Live_Context& ctx, const std::string& text) {
    ctx.s.link.texts.rs232_text = text;
    if (ctx.hooks.Status) ctx.hooks.Status(text);
}

bool Paused(const Live_Context& ctx) {
    return ctx.hooks.Log_Paused && ctx.hooks.Log_Paused();
}

void Call(const std::function<void()>& hook) {
    if (hook) hook();
}

void Call(const std::function<void(bool)>& hook, bool on) {
    if (hook) hook(on);
}

bool Ends_With(const std::string& text, const std::string& end) {
    return !end.empty() && text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The blank stops the box after the row it is sending. The rest of that row must be off the
// line before the first command, or its characters would be read as the answers. The end of
// what the log received before the blank tells whether a row was under way: if it was, its
// end is awaited (and kept); if not, either a few character times show whether the box began
// one just as the blank came, or (`rows_sorted_later`) the write's line tells such a row from
// the answers as it comes. Returns what arrived meanwhile.
std::string Drain_Stream(Live_Context& ctx, std::string tail, bool rows_sorted_later) {
    Serial_Line& line = ctx.log_line;
    const Link_Context& c = ctx.s.link;
    const double start = c.Now();
    // A row the box began before the blank reached it shows its first character by then: the
    // blank's way there, that character's way back, and the latency of the two ends. The
    // guard counts from the blank, not from the last character: a row that ends after it is
    // the last one, since the box had the blank before it could begin another.
    const double guard = start + 3 * 10.0 / std::max(c.program.ComSpeed, 1200) + 0.0005;
    double last_arrival = start;
    std::string rest;
    for (;;) {
        const std::string got = line.Read_All();
        const double now = c.Now();
        if (!got.empty()) {
            rest += got;
            tail += got;
            if (tail.size() > 8) tail.erase(0, tail.size() - 8);
            last_arrival = now;
            continue;
        }
        const bool row_ended = tail.empty() || Ends_With(tail, ctx.Row_End);
        if (row_ended && rows_sorted_later) break;
        const double wait = row_ended ? guard - now : Row_Silence - (now - last_arrival);
        if (wait <= 0 || now - start >= Drain_Limit || !line.Is_Open()) break;
        line.Wait_For_Input(std::min(wait, Drain_Limit - (now - start)));
    }
    return rest;
}

// The write's line right after the blank, for a text stream. A row the box began just as the
// blank came arrives in front of the first answer; waiting a guard time for it would cost a
// good part of the write's own time, and a USB adapter's latency could outlast any such
// guard. So until the first answer character, whole lines that begin the way the box's rows
// and messages do ("$", "#") are kept for the log; the first other character is the box
// answering, and from there on the line is left as it is.
class Row_Sorting_Line final : public Serial_Line {
public:
    Row_Sorting_Line(Serial_Line& line, char row_end) : line_(line), row_end_(row_end) {}

    // Whole rows, and a row's beginning if the write ended inside it.
    std::string rows;

    void Set_Port(const std::string& path) override { line_.Set_Port(path); }
    std::string Port() const override { return line_.Port(); }
    void Set_Settings(const std::string& settings) override { line_.Set_Settings(settings); }
    Open_Result Open() override { return line_.Open(); }
    void Close() override { line_.Close(); }
    bool Is_Open() const override { return line_.Is_Open(); }
    // An exchange empties the input before its command: rows are still kept, and anything
    // else came before a command could be answered.
    void Clear_Input() override {
        if (sorting_)
            Sort(line_.Read_All(), false);
        else
            line_.Clear_Input();
    }
    int Bytes_Waiting() override { return line_.Bytes_Waiting(); }
    std::string Read_All() override {
        std::string got = line_.Read_All();
        return sorting_ ? Sort(got, true) : got;
    }
    void Write(std::string_view bytes) override { line_.Write(bytes); }
    bool Wait_For_Input(double seconds) override { return line_.Wait_For_Input(seconds); }
    Line_Losses Losses() override { return line_.Losses(); }

private:
    // What of `got` is the answer's.
    std::string Sort(const std::string& got, bool answers) {
        for (std::size_t i = 0; i < got.size(); ++i) {
            const char c = got[i];
            if (in_row_) {
                rows += c;
                in_row_ = c != row_end_;
            } else if (c == '$' || c == '#') {
                rows += c;
                in_row_ = true;
            } else if (answers) {
                sorting_ = false;
                return got.substr(i);
            }
        }
        return {};
    }

    Serial_Line& line_;
    char row_end_;
    bool sorting_ = true;
    bool in_row_ = false;
};

// Sends the blank that stops the stream, waits out the row in flight and hands what came to
// the log.
void Stop_Stream(Live_Context& ctx, Proc_Guard& guard, bool rows_sorted_later = false) {
    std::string tail;
    guard.Step([&] {
        tail = ctx.hooks.Stream_Tail ? ctx.hooks.Stream_Tail() : std::string();
        ctx.log_line.Write(" ");
    });
    std::string rest;
    guard.Step([&] { rest = Drain_Stream(ctx, tail, rows_sorted_later); });
    ctx.live.Stream_Quiet_At = ctx.s.link.Now();
    guard.Step([&] {
        if (ctx.hooks.Stream_Stopped) ctx.hooks.Stream_Stopped(rest);
    });
}

// The link on the log's port, for the exchanges that go on it.
Link_Context Log_Link(Live_Context& ctx) {
    const Link_Context& c = ctx.s.link;
    return Link_Context{c.program,           c.texts, c.flags, c.state, c.log, ctx.log_line,
                        c.Auto_Start_option, c.hooks};
}

void Clear_Marks(Settings_Image& image) {
    std::fill(image.ChangedByte.begin(), image.ChangedByte.end(), 0);
}

// Leading hex digits of `text` from `at`, at most `digits` of them; 0 when there are none.
int Hex_Value(const std::string& text, std::size_t at, std::size_t digits) {
    int value = 0;
    for (std::size_t i = at; i < text.size() && i < at + digits; ++i) {
        const int d = Hex_Digit_Value(text[i]);
        const bool hex = (text[i] >= '0' && text[i] <= '9') || (text[i] >= 'A' && text[i] <= 'F') ||
                         (text[i] >= 'a' && text[i] <= 'f');
        if (!hex) break;
        value = value * 16 + d;
    }
    return value;
}

void Binary_Write(Live_Context& ctx, Proc_Guard& guard) {
    Link_Context link = Log_Link(ctx);
    Settings_Context on_log{link, ctx.s.image, ctx.s.rw, ctx.s.files, ctx.s.dialogs, ctx.s.hooks};
    if (!Get_Errcardbyte(ctx.s.image)) return;
    bool ok = false;
    guard.Step([&] { Write_bin(on_log, ctx.s.image.First_Changed, ctx.s.image.Last_Changed, ok); });
}

void Change(Live_Context& ctx, Proc_Guard& guard) {
    if (!ctx.live.Cell_Adjust_Command.empty())
        guard.Step([&] { Adjust_Current_Cell_TX(ctx); });
    else
        Binary_Write(ctx, guard);
    ctx.live.Cell_Adjust_Command.clear();
}

// The stream back on after a change: the log takes rows again from a clean port, and the
// window the change cost is kept for the status and the benchmark.
void Restart_Stream(Live_Context& ctx, Proc_Guard& guard, double t0) {
    Settings_Context& s = ctx.s;
    Link_Flags& flags = s.link.flags;
    Live_State& live = ctx.live;
    flags.Logging_Active = true;
    guard.Step([&] { Call(ctx.hooks.Drop_Log_Input); });
    Call(ctx.hooks.Receive_Event, true);
    Call(ctx.hooks.Log_Timers, true);
    guard.Step([&] { ctx.log_line.Write(ctx.Log_Start_Command); });
    live.Restarted_At = s.link.Now();
    live.Last_Window_Seconds = live.Restarted_At - t0;
    Say(ctx, "< Settings updated >");
    Clear_Marks(s.image);
}

} // namespace

std::vector<Adjusted_Byte> Adjusted_Bytes(const std::string& answer) {
    std::vector<Adjusted_Byte> bytes;
    std::size_t at = answer.find("EEadr");
    while (at != std::string::npos && bytes.size() < 2) {
        const std::size_t p = at + 6;
        bytes.push_back({Hex_Value(answer, p, 4), Hex_Value(answer, p + 13, 2)});
        at = answer.find("EEadr", p);
    }
    return bytes;
}

void Write_while_logging(Live_Context& ctx) {
    Settings_Context& s = ctx.s;
    Link_Flags& flags = s.link.flags;
    if (!ctx.log_line.Is_Open() || !flags.Logging_Active || Paused(ctx)) return;
    Proc_Guard guard(s.link.log, Log_Name);
    Live_State& live = ctx.live;
    live.In_Progress = true;
    const double t0 = s.link.Now();
    // The write goes on the settings port; when that is the log's own port object there is
    // nothing to hand over, and closing and opening it would only lengthen the hole.
    const bool separate_port = &s.link.line != &ctx.log_line;
    // Rows are told from answers on the log's own port under a text stream; a port opened
    // afresh, or binary frames that may begin with any byte, need the guard time instead.
    const bool sort_rows = !separate_port && ctx.Row_End == "\r\n";

    Stop_Stream(ctx, guard, sort_rows);
    flags.Live_Write_Busy = true;
    Say(ctx, "< Updateing ... >");
    live.Live_Update_Shown = true;
    if (separate_port)
        guard.Step([&] { ctx.log_line.Close(); });
    else
        Call(ctx.hooks.Receive_Event, false); // the write's answers are not the log's
    Call(ctx.hooks.Log_Timers, false);
    flags.Logging_Active = false;

    const std::string before = s.link.texts.rs232_text;
    Row_Sorting_Line sorter(ctx.log_line, '\n');
    Link_Context sorted_link{
        s.link.program,           s.link.texts, s.link.flags, s.link.state, s.link.log, sorter,
        s.link.Auto_Start_option, s.link.hooks};
    Settings_Context on_sorter{sorted_link, s.image, s.rw, s.files, s.dialogs, s.hooks};
    guard.Step([&] { Write_Settings_Fast_Click(sort_rows ? on_sorter : s); });
    // A row that came in front of the answers belongs to the log like the rest of the stream.
    if (!sorter.rows.empty())
        guard.Step([&] {
            if (ctx.hooks.Stream_Stopped) ctx.hooks.Stream_Stopped(sorter.rows);
        });
    if (s.link.texts.rs232_text != before && ctx.hooks.Status) ctx.hooks.Status(s.link.texts.rs232_text);
    if (flags.Live_Write_Busy) guard.Step([&] { s.Service_Events(); });

    // From here on the log goes on whatever became of the write.
    if (separate_port || !ctx.log_line.Is_Open()) {
        guard.Step([&] { Call(ctx.hooks.Open_Log_Port); });
        guard.Step([&] { s.link.Dummy_Wait(); });
    }
    Restart_Stream(ctx, guard, t0);
    live.In_Progress = false;
}

void Write_Fast_while_logging(Live_Context& ctx) {
    Settings_Context& s = ctx.s;
    Link_Flags& flags = s.link.flags;
    Live_State& live = ctx.live;
    if (!ctx.log_line.Is_Open() || !flags.Logging_Active) return;
    Proc_Guard guard(s.link.log, Log_Name);
    live.In_Progress = true;

    if (Paused(ctx)) {
        // The stream stands still and the port is free: the change goes at once, and the
        // silence watch starts the stream again as it does after any interruption.
        Say(ctx, "< Updating ... >");
        Call(ctx.hooks.Receive_Event, false);
        Change(ctx, guard);
        Say(ctx, "< Settings updated >");
        Call(ctx.hooks.Receive_Event, true);
        live.In_Progress = false;
        return;
    }

    const double t0 = s.link.Now();
    Stop_Stream(ctx, guard);
    Call(ctx.hooks.Receive_Event, false);
    flags.Live_Write_Busy = true;
    Say(ctx, "< Updating ... >");
    live.Live_Update_Shown = true;
    Call(ctx.hooks.Log_Timers, false);
    flags.Logging_Active = false;
    guard.Step([&] { Call(ctx.hooks.Drop_Log_Input); });

    Change(ctx, guard);

    Restart_Stream(ctx, guard, t0);
    flags.Live_Write_Busy = false;
    live.In_Progress = false;
}

void Adjust_Current_Cell_TX(Live_Context& ctx) {
    Settings_Context& s = ctx.s;
    Proc_Guard guard(s.link.log, Log_Name);
    Link_Context link = Log_Link(ctx);
    const std::string& command = ctx.live.Cell_Adjust_Command;
    std::string answer;
    bool complete = false;
    // The box ends every answer with a line end after the echo, so the exchange ends there
    // rather than at the time-out when the answer is one of the short ones.
    const char echo = command.empty() ? '\0' : command.back();
    Send_Wait_Until(
        link, command, 1.0,
        [echo](const std::string& so_far) {
            const std::size_t at = so_far.find(echo);
            return at != std::string::npos && so_far.find('\n', at) != std::string::npos;
        },
        answer, complete);
    // What came before the echo is the stream's, not the answer's.
    if (const std::size_t at = answer.find(echo); at != std::string::npos && echo != '\0')
        answer.erase(0, at);
    const bool ok = static_cast<int>(answer.size()) >= Cell_Adjust_Answer_Length;
    s.link.texts.Debug_txt2 += answer + "\r\n";

    if (!ok) {
        if (answer.find("#1:NOT CLOSE") != std::string::npos) {
            ctx.live.ErrCode_label1 = "Not in cell";
            Say(ctx, "<Not in cell>");
        } else {
            s.dialogs.Warn("Did not get right info about written data\r\n" + answer);
        }
        return;
    }
    if (answer.find("NO RPM") != std::string::npos) {
        s.dialogs.Inform("No RPM detected, so nothing was written");
        return;
    }
    if (answer.find("EEadr") == std::string::npos) {
        s.dialogs.Inform("Did not get right info about written data. EEAdr missing.\r\n" + answer);
        return;
    }
    // The box's change is an edit like any other: one step for undo.
    guard.Step([&] { s.Call(s.hooks.save_to_undolist); });
    for (const Adjusted_Byte& b : Adjusted_Bytes(answer)) {
        guard.Step([&] {
            s.image.CardByte[static_cast<std::size_t>(Checked_Address(b.address))] =
                static_cast<std::uint8_t>(b.value);
        });
        if (b.address <= 257 || b.address >= 884) {
            s.dialogs.Inform("Error, the system was writing outside valid memory range, :" +
                             std::to_string(b.address));
        } else {
            ctx.live.ErrCode_label1 = "Update OK";
            Say(ctx, "<Update OK>");
        }
    }
    guard.Step([&] { s.Call(s.hooks.Update_All); });
}

void SendByteWhileLogging(Live_Context&) {}

} // namespace quorlen
