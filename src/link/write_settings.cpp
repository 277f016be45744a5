#include "link/write_settings.h"

#include "core/proc_guard.h"
#include "core/run_error.h"
#include "link/read_verify.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace quorlen {

namespace {

constexpr int Mode_Byte = 1;
constexpr std::uint8_t Slave_Mark = 8;
constexpr int Retry_Limit = 4;
// Exchanges in a row without a single character before the line counts as gone. One lost
// echo costs one empty exchange; a box that stopped answering would otherwise run every
// restart and every commit out to its time-outs before the write could say so.
constexpr int Silent_Exchanges = 3;

struct Dialogue_Timeouts {
    double b, w, address, first_digit, second_digit;
};
constexpr Dialogue_Timeouts Normal_Timeouts{0.3, 0.3, 0.2, 0.2, 1.5};
// Right after a log stream was stopped the box answers more slowly.
constexpr Dialogue_Timeouts Fast_Timeouts{0.5, 0.5, 0.5, 0.3, 1.5};

bool Marked(const Settings_Image& image, int address) {
    return image.ChangedByte[address] > 254;
}

class Byte_Writer {
public:
    Byte_Writer(Settings_Context& s, const Dialogue_Timeouts& t, bool fast) : s_(s), t_(t), fast_(fast) {}

    // The dialogue over the marked addresses of first..last; false on a wrong character.
    bool Pass(int first, int last);
    // "ue" up to three times; false when none was answered "ue*".
    bool Commit();
    // The port closed under the write, or the box stopped answering altogether.
    bool Line_Lost() const { return lost_; }
    // Why, in a line of its own for the write log.
    std::string Lost_Text() const {
        return port_closed_ ? "Port closed during the write, write given up "
                            : "No answer from the box, write given up ";
    }

private:
    std::string Exchange(std::string_view command, double timeout, int expected);

    Settings_Context& s_;
    const Dialogue_Timeouts& t_;
    bool fast_;
    int silent_ = 0;
    bool lost_ = false;
    bool port_closed_ = false;
};

std::string Byte_Writer::Exchange(std::string_view command, double timeout, int expected) {
    std::string answer;
    if (lost_) return answer;
    bool ok = false;
    Send_Wait_Rec(s_.link, command, timeout, expected, answer, ok);
    if (!s_.link.line.Is_Open())
        lost_ = port_closed_ = true;
    else if (!answer.empty())
        silent_ = 0;
    else if (++silent_ >= Silent_Exchanges)
        lost_ = true;
    return answer;
}

bool Byte_Writer::Pass(int first, int last) {
    const Settings_Image& im = s_.image;
    int total = 0;
    for (int a = first; a <= last; ++a)
        total += Marked(im, a) ? 1 : 0;
    int done = 0;
    s_.Progress(0, total);
    bool in_run = false;
    for (int a = first; a <= last; ++a) {
        if (!Marked(im, a)) continue;
        if (!in_run) {
            Exchange("b", t_.b, 1);
            Exchange("w", t_.w, 2);
            for (char digit : dec2hex(a, 4))
                Exchange(std::string_view(&digit, 1), t_.address, 1);
            in_run = true;
        }
        const int value = im.CardByte[a];
        const std::string digits = dec2hex(value, 2);
        Exchange(std::string_view(digits).substr(0, 1), t_.first_digit, 1);
        const std::string answer = Exchange(std::string_view(digits).substr(1, 1), t_.second_digit, 2);
        // The prompt for the next byte is the box's word that it took this one; the other
        // echoes only show the way.
        if (answer.size() < 2 || answer[1] != 'w') {
            s_.Add_Debug(fast_
                             ? "B: " + std::to_string(a) + " " + std::to_string(value) + " W_ERR " + answer
                             : "Byte: " + std::to_string(a) + " " + std::to_string(value) + " WRITE ERROR ");
            return false;
        }
        // The box moves on to the next address by itself; a gap ends the run.
        if (a == last || !Marked(im, a + 1)) {
            Exchange("$", 0.5, 4);
            in_run = false;
        }
        s_.Progress(++done, total);
        s_.Service_Events();
    }
    return !lost_;
}

bool Byte_Writer::Commit() {
    const double timeouts[3] = {1.5, 0.9, 0.9};
    for (int k = 0; k < 3 && !lost_; ++k) {
        const std::string answer = Exchange("ue", timeouts[k], 3);
        const std::string n = std::to_string(k + 1);
        if (answer.rfind("ue*", 0) == 0) {
            s_.Add_Debug("UE" + n + " OK ");
            return true;
        }
        s_.Add_Debug("UE" + n + " error ");
    }
    return false;
}

// Whole passes, each with its commit, until one goes through, the restarts run out or the
// line is gone. There is no resume at the failed address: the marks are still all there.
bool Write_Loop(Settings_Context& s, Byte_Writer& writer, int first, int last) {
    int Retry_Count = 0;
    for (;;) {
        const bool Write_Error = !writer.Pass(first, last);
        if (Write_Error) ++Retry_Count;
        const bool UE_Error = !writer.Commit();
        // A refused commit restarts the write as a wrong character does, and counts as one.
        if (UE_Error && !Write_Error) ++Retry_Count;
        if (!Write_Error && !UE_Error) return true;
        if (writer.Line_Lost()) {
            s.Add_Debug(writer.Lost_Text());
            return false;
        }
        if (Retry_Count >= Retry_Limit) return false;
        s.Add_Debug("Write_W_Error. Restart write " + std::to_string(Retry_Count));
    }
}

std::string Finished_Text(const Settings_Context& s) {
    return s.link.state.Slave_Present ? "Write finished, M&S " : "Write finished, M";
}

std::string Finished_Log(const Settings_Context& s) {
    return s.link.state.Slave_Present ? "Write finished M&S " : "Write finished M ";
}

} // namespace

void Write_Settings_Click(Settings_Context& s) {
    Link_Context& c = s.link;
    Rw_State& rw = s.rw;
    Settings_Image& im = s.image;
    if (c.flags.Connection_Check_Busy) return;
    Proc_Guard guard(c.log, "Write settings");
    rw.Write_Succeeded = false;
    s.Add_Both("Write started " + Now_Time_Text());
    c.flags.Write_In_Progress = true;
    s.Command_Buttons(false);
    // One opening serves the whole write: the verifies and the dialogue share it, so the port
    // is neither closed nor settled again between them. A port that won't open is the
    // verify's to report.
    bool opened = false;
    const auto give_up = [&] {
        c.flags.Write_In_Progress = false;
        rw.Write_Verify = false;
        if (opened) c.line.Close();
        s.Command_Buttons(true);
    };

    if ((im.CardByte[Mode_Byte] & Slave_Mark) != 0 &&
        s.dialogs.Ask_Yes_No(
            "This will force QX-system to enter slave mode. Do you really want to continue?") !=
            Answer::Yes) {
        s.Add_Both("Write aborted " + Now_Time_Text());
        give_up();
        return;
    }
    try {
        opened = Open_Port_If_Closed(c);
    } catch (const Run_Error&) {
    }
    guard.Step([&] { Verify_Settings_Click(s); });
    if (rw.Read_Failed) {
        s.Port_Failure();
        give_up();
        guard.Step([&] { s.Call(s.hooks.Show_QX_prefs); });
        return;
    }
    s.Command_Buttons(false);
    if (!c.state.Connected) {
        s.Port_Failure();
        give_up();
        return;
    }

    // What the verify found to send. Giving up puts these marks back, whatever a later verify
    // of a half-written box made of them. Any difference it found means a write, even when
    // the slave's answer came short: the master is compared, and the slave takes what the
    // master commits.
    const auto marks = im.ChangedByte;
    const bool compared = rw.Master_Read;
    const bool needed = rw.Master_Mismatch || rw.Slave_Mismatch || rw.Master_Error_Set || rw.Slave_Error_Set;
    bool written = true;
    if (compared && needed) {
        const int first = im.Write_Errors_Only ? 1011 : 0;
        const int last = im.Write_Errors_Only ? 1023 : 1010;
        c.texts.rs232_text = "Writing... ";
        s.Service_Events();
        Byte_Writer writer(s, Normal_Timeouts, false);
        try {
            opened = Open_Port_If_Closed(c) || opened;
            written = Write_Loop(s, writer, first, last);
        } catch (const Run_Error& e) {
            written = false;
            guard.Fail(e.what());
        }
        c.flags.Write_In_Progress = false;
        rw.Write_Verify = true;
        // The box's "ue*" says the commit is done: the verify follows at once, with the
        // window served but no pause of its own.
        s.Service_Events();
        guard.Step([&] { Verify_Settings_Click(s); });
    }
    c.flags.Write_In_Progress = false;
    // The master's part is proved by its own compare; a slave that answered short leaves the
    // write finished for the master alone. Clearing the counters compares no settings: the
    // write going through is the proof, and a box that counts again at once has still been
    // cleared.
    const bool proved =
        im.Write_Errors_Only
            ? compared
            : compared && (!needed || (rw.Master_Read && !rw.Master_Mismatch)) && !rw.Slave_Mismatch;
    const bool slave_unknown = c.state.Slave_Present && !rw.Read_Complete && !im.Write_Errors_Only;
    rw.Write_Verify = false;

    const std::string time = Now_Time_Text();
    if (!c.state.Connected || !written || !proved) {
        s.Add_Both("Write aborted " + time);
        s.Call(s.hooks.Show_Debug_txt);
        for (std::size_t i = 0; i < marks.size(); ++i)
            if (marks[i] > 254) im.ChangedByte[i] = Changed_Mark;
    } else if (slave_unknown) {
        c.texts.rs232_text = "Write finished, M";
        s.Add_Debug("Write finished M " + time);
        s.Add_Debug("Slave not verified: its answer was incomplete. Verify again ");
        s.Call(s.hooks.Show_Debug_txt);
    } else {
        c.texts.rs232_text = Finished_Text(s);
        s.Add_Debug(Finished_Log(s) + time);
        rw.Write_Succeeded = true;
        if (im.Write_Errors_Only) s.dialogs.Inform("All error codes are cleared");
    }
    c.flags.Live_Write_Busy = false;
    if (opened) guard.Step([&] { c.line.Close(); });
    s.Command_Buttons(true);
}

void Write_Settings_Fast_Click(Settings_Context& s) {
    Link_Context& c = s.link;
    Proc_Guard guard(c.log, "Write settings fast ");
    s.rw.Write_Succeeded = false;
    const bool was_writing = c.flags.Write_In_Progress;
    c.flags.Write_In_Progress = true;
    bool written = false;
    bool opened = false;
    Byte_Writer writer(s, Fast_Timeouts, true);
    try {
        opened = Open_Port_If_Closed(c);
        written = Write_Loop(s, writer, 0, Image_Size - 1);
    } catch (const Run_Error& e) {
        s.Port_Failure();
        guard.Fail(e.what());
    }
    const std::string time = Now_Time_Text();
    if (written) {
        s.Add_Both((c.state.Slave_Present ? " FWrite finished M&S " : " FWrite finished M ") + time);
        s.rw.Write_Succeeded = true;
        // Left set, it tells the live write that this one failed its way out.
        c.flags.Live_Write_Busy = false;
    } else {
        s.Add_Both("Write aborted " + time);
    }
    if (opened) guard.Step([&] { c.line.Close(); });
    c.flags.Write_In_Progress = was_writing;
}

void Write_bin_command_cmd_Click(Settings_Context& s) {
    Link_Context& c = s.link;
    Settings_Image& im = s.image;
    if (c.flags.Connection_Check_Busy) {
        s.Add_Both("Press write again " + Now_Time_Text());
        return;
    }
    Proc_Guard guard(c.log, "Write bin command");
    s.rw.Write_Succeeded = false;
    s.Add_Both("Write started " + Now_Time_Text());
    c.flags.Write_In_Progress = true;
    s.Command_Buttons(false);
    if (s.rw.Read_Failed) {
        s.Port_Failure();
        c.flags.Write_In_Progress = false;
        s.Command_Buttons(true);
        guard.Step([&] { s.Call(s.hooks.Show_QX_prefs); });
        return;
    }
    bool opened = false;
    if (c.state.Connected) {
        s.Service_Events();
        try {
            opened = Open_Port_If_Closed(c);
        } catch (const Run_Error& e) {
            guard.Fail(e.what());
        }
        c.texts.rs232_text = "Writing... ";
    }
    std::string status;
    bool ok = true;
    if (Get_Errcardbyte(im)) {
        ok = false;
        guard.Step([&] { Write_bin(s, im.First_Changed, im.Last_Changed, ok); });
    } else {
        status = "Nothing to write ";
        s.Add_Debug("Nothing to write");
    }
    c.flags.Write_In_Progress = false;
    s.rw.Write_Verify = false;

    const std::string time = Now_Time_Text();
    if (!ok) {
        status += c.state.Connected ? "Write error " : "No connection ";
        status += "Write aborted " + time;
        s.Add_Debug(status);
    } else {
        std::fill(im.ChangedByte.begin(), im.ChangedByte.end(), 0);
        status += Finished_Text(s);
        s.Add_Debug(Finished_Log(s) + time);
        s.rw.Write_Succeeded = true;
        if (im.Write_Errors_Only) s.dialogs.Inform("All error codes are cleared");
    }
    c.texts.rs232_text = status;
    if (opened) guard.Step([&] { c.line.Close(); });
    s.Command_Buttons(true);
}

void Write_bin(Settings_Context& s, int first, int last, bool& ok) {
    Link_Context& c = s.link;
    Proc_Guard guard(c.log, "Write bin");
    ok = false;
    const int count = last - first + 1;
    if (first < 0 || count < 1 || last >= Image_Size) {
        guard.Fail("Subscript out of range");
        return;
    }
    const std::uint16_t sum = Calck_Checksum(s.image, first, last);
    s.rw.Write_bin_checksum_labell = std::to_string(sum);
    s.Progress(0, count);

    std::string answer;
    bool got = false;
    Send_Wait_Rec(c, "bW", 0.5, 7, answer, got);
    if (!got) {
        s.Add_Debug(answer.empty() ? "No & or E after write error" : "Write error. Received:" + answer);
        return;
    }
    guard.Step([&] {
        Drop_Input(c);
        std::string frame;
        for (int v : {first >> 8, first & 255, count >> 8, count & 255, sum >> 8, sum & 255})
            frame += static_cast<char>(v);
        frame.append(reinterpret_cast<const char*>(&s.image.CardByte[static_cast<std::size_t>(first)]),
                     static_cast<std::size_t>(count));
        // Sent as the command of the exchange, so that the box's answer can't come before the
        // input is emptied for it.
        const double t0 = c.Now();
        Send_Wait_Rec(c, frame, 0.5, 1, answer, got);
        char shown[64];
        std::snprintf(shown, sizeof shown, "%.5fs   %d bytes", c.Now() - t0, count);
        s.rw.Timer_label = shown;
        s.Progress(count, count);
        if (!answer.empty() && answer[0] == '&') {
            s.Add_Debug("& OK ");
            ok = true;
        } else if (!answer.empty() && answer[0] == 'E') {
            s.Add_Debug("E error");
        } else if (!answer.empty()) {
            s.Add_Debug("Write error. Received:" + answer);
        } else {
            s.Add_Debug("No & or E after write error");
        }
    });
}

void Com_write_Click(Settings_Context& s) {
    Check_Slave_Data_Strategy(s);
    if ((s.image.CardByte[Mode_Byte] & Slave_Mark) != 0)
        s.dialogs.Inform("This setting will set Harvelin to slave");
    std::swap(s.link.state.Com_Open_Enabled, s.link.state.Com_Close_Enabled);
    Verify_Settings_Click(s);
}

} // namespace quorlen
