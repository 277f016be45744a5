#include "link/read_verify.h"

#include "core/proc_guard.h"
#include "core/run_error.h"
#include "core/text.h"
#include "link/banner.h"
#include "link/error_codes.h"
#include "link/session.h"

#include <algorithm>
#include <array>

namespace quorlen {

namespace {

constexpr int Banner_Length = 200;
constexpr int Text_Image_Length = 2056;
constexpr int Binary_Frame_Length = 1029;
constexpr int Mode_Byte = 1;
constexpr std::uint8_t Slave_Mark = 8;
constexpr const char* Slave_Incomplete_Text = "Slave answer incomplete, slave not compared ";

using Box_Image = std::array<std::uint8_t, Image_Size>;

// The image in a text answer: pairs of hex digits after the first `marker`. False when the
// marker is missing or the digits are cut short, as when a character was lost on the line.
bool Take_Text_Image(const std::string& answer, char marker, Box_Image& bytes) {
    const auto at = answer.find(marker);
    if (at == std::string::npos || answer.size() < at + 1 + 2 * Image_Size) return false;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::size_t p = at + 1 + 2 * i;
        bytes[i] = byte_chk(Hex_Digit_Value(answer[p]) * 16 + Hex_Digit_Value(answer[p + 1]));
    }
    return true;
}

// One exchange of a read, counted into the progress of the whole read.
bool Ask(Settings_Context& s, const char* command, double timeout, int expected, std::string& answer) {
    bool ok = false;
    Send_Wait_Rec(s.link, command, timeout, expected, answer, ok);
    s.Progress(std::min(s.rw.Progress_Done + expected, s.rw.Progress_Total), s.rw.Progress_Total);
    return ok;
}

bool Read_Master(Settings_Context& s, bool binary, Box_Image& bytes) {
    if (binary) {
        bool ok = false;
        Read_bin(s, ok);
        if (ok) std::copy_n(s.image.TempByte.begin(), Image_Size, bytes.begin());
        return ok;
    }
    std::string answer;
    return Ask(s, "rd", 1.0, Text_Image_Length, answer) && Take_Text_Image(answer, '@', bytes);
}

bool Read_Slave(Settings_Context& s, Box_Image& bytes) {
    std::string answer;
    return Ask(s, "rs", 1.0, Text_Image_Length, answer) && Take_Text_Image(answer, '#', bytes);
}

bool Any_Counter_Set(const Image_Array<std::uint8_t>& bytes) {
    return std::any_of(bytes.begin() + First_Error_Counter, bytes.begin() + Last_Error_Counter + 1,
                       [](std::uint8_t b) { return b != 0; });
}

// The box's SC ID as the banner gave it, against the selected dataset.
bool Same_Dataset(const std::string& box_id, int selected) {
    const auto id = To_Integer(box_id);
    return id && *id == selected;
}

std::string Box_Dataset_Question(const std::string& box_id, int selected) {
    return "The box has a different dataset ID (" + box_id + ") than currently selected in preferences (" +
           std::to_string(selected) + "), load anyway?\r\n(Dataset ID is not changed.)";
}

// Marks each compared address where `box` differs from CardByte; returns how many.
int Mark_Differences(Settings_Context& s, const Image_Array<std::uint8_t>& box, bool slave, bool report) {
    int count = 0;
    for (int i = 0; i < Image_Size; ++i) {
        if (!Compared_Address(i)) continue;
        int mine = s.image.CardByte[i];
        int theirs = box[i];
        // The slave keeps its own mark; the master's value of it is no difference.
        if (slave && i == Mode_Byte) {
            mine &= 247;
            theirs &= 247;
        }
        if (mine == theirs) continue;
        ++count;
        s.image.ChangedByte[i] = Changed_Mark;
        if (report)
            s.Add_Debug(slave ? "Slave miss match " + std::to_string(i) + ":" + std::to_string(box[i])
                              : "Master miss match " + std::to_string(i) + " " + std::to_string(box[i]));
    }
    return count;
}

// A counter that is not 0 is marked, so that the box's value is not mistaken for work done.
bool Mark_Counters(Settings_Context& s, const Image_Array<std::uint8_t>& box, bool slave, bool report) {
    bool any = false;
    for (int a = First_Error_Counter; a <= Last_Error_Counter; ++a) {
        if (box[a] == 0) continue;
        any = true;
        s.image.ChangedByte[a] = Changed_Mark;
        if (report)
            s.Add_Debug((slave ? "Slave error code " : "Master error code ") + std::to_string(a) + " " +
                        std::to_string(box[a]));
    }
    return any;
}

void Read_Steps(Settings_Context& s, bool binary) {
    Link_Context& c = s.link;
    Settings_Image& im = s.image;
    s.Add_Both("Read started " + Now_Time_Text());
    Box_Image bytes{};
    if (!Read_Master(s, binary, bytes)) return;
    s.rw.Master_Read = true;
    if (!binary && !Same_Dataset(c.state.Box_Dataset_ID, im.DatasetID) &&
        s.dialogs.Ask_Ok_Cancel(Box_Dataset_Question(c.state.Box_Dataset_ID, im.DatasetID)) != Answer::Ok) {
        s.Add_Both("Read aborted " + Now_Time_Text());
        return;
    }
    s.Call(s.hooks.save_to_undolist);
    for (int i = 0; i < Image_Size; ++i) {
        im.CardByte[i] = im.TempByte[i] = bytes[i];
        im.ChangedByte[i] = 0;
    }
    im.ChangedByte[Image_Size] = 0;
    Hide_Error_Codes(s.rw);
    s.rw.Master_Error_Set = Any_Counter_Set(im.CardByte);

    bool complete = true;
    if (c.state.Slave_Present) {
        Box_Image slave{};
        complete = Read_Slave(s, slave);
        if (!complete) s.Add_Debug(Slave_Incomplete_Text);
        if (complete) {
            // The slave's last byte is left as it was.
            std::copy_n(slave.begin(), Image_Size - 1, im.SlaveByte.begin());
            s.rw.Slave_Error_Set = Any_Counter_Set(im.SlaveByte);
        }
    } else {
        std::fill_n(im.SlaveByte.begin(), Image_Size, 0);
        s.rw.Slave_Error_Set = false;
    }
    if (s.rw.Master_Error_Set || s.rw.Slave_Error_Set) Show_Error_Codes(s, im.CardByte);

    s.Add_Both("Read finished " + Now_Time_Text());
    c.program.Settings_File_Name = "New1.qxs";
    s.files.CurrentFileName = "New1.qxs";
    c.texts.Title = c.program.Program_Title + "Settings loaded from box";
    c.texts.txt_File_Description = "Settings loaded from box";
    s.rw.Read_Complete = complete;
}

void Compare_Steps(Settings_Context& s, bool binary) {
    Link_Context& c = s.link;
    Settings_Image& im = s.image;
    Rw_State& rw = s.rw;
    Box_Image bytes{};
    // Flags of an earlier compare must not outlive a read that failed.
    rw.Master_Mismatch = rw.Slave_Mismatch = rw.Master_Error_Set = rw.Slave_Error_Set = false;
    if (!Read_Master(s, binary, bytes)) {
        s.Add_Debug("No complete answer from the box ");
        return;
    }
    rw.Master_Read = true;
    std::copy_n(bytes.begin(), Image_Size, im.TempByte.begin());
    std::fill(im.ChangedByte.begin(), im.ChangedByte.end(), 0);

    Hide_Error_Codes(rw);
    const bool quiet = c.flags.Write_In_Progress;
    // Clearing the counters writes nothing else, so there are no settings to compare.
    const bool settings = !im.Write_Errors_Only;
    if (settings) rw.Master_Mismatch = Mark_Differences(s, im.TempByte, false, !quiet) > 0;
    rw.Master_Error_Set = Mark_Counters(s, im.TempByte, false, !quiet);
    s.Add_Debug(rw.Master_Mismatch ? "Some master miss match" : "No master miss match");
    s.Service_Events();

    bool complete = true;
    if (c.state.Slave_Present) {
        Box_Image slave{};
        complete = Read_Slave(s, slave);
        if (!complete) s.Add_Debug(Slave_Incomplete_Text);
        if (complete) {
            std::copy_n(slave.begin(), Image_Size, im.SlaveByte.begin());
            if (settings) rw.Slave_Mismatch = Mark_Differences(s, im.SlaveByte, true, !quiet) > 0;
            rw.Slave_Error_Set = Mark_Counters(s, im.SlaveByte, true, !quiet);
            if (settings) {
                if ((im.SlaveByte[Mode_Byte] & Slave_Mark) == 0) {
                    rw.Slave_Mismatch = true;
                    im.ChangedByte[Mode_Byte] = Changed_Mark;
                    s.Add_Debug("Slave need reset to slave ");
                } else {
                    s.Add_Debug("Slave reset to slave ");
                }
            }
            s.Add_Debug(rw.Slave_Mismatch ? "Some slave miss match" : "No slave miss match");
        }
        s.Service_Events();
    }

    const std::string time = Now_Time_Text();
    if (!rw.Master_Mismatch && !rw.Slave_Mismatch && complete) {
        s.Add_Debug((rw.Write_Verify ? "Write verify finished " : "Verify finished ") + time);
        if (!quiet)
            c.texts.rs232_text = c.state.Slave_Present ? "Verify finished, M&S " : "Verify finished, M";
        c.texts.Error_Codes_txt.clear();
    } else if (rw.Write_Verify) {
        c.texts.rs232_text = "Write verify failed ";
        s.Add_Debug("Write verify finished and failed " + time);
    } else if (!quiet) {
        c.texts.rs232_text = "Verify failed ";
        s.Add_Debug("Verify finished and failed " + time);
    }
    if (!quiet && rw.Master_Error_Set) s.Add_Debug("Master error codes set " + time);
    if (!quiet && rw.Slave_Error_Set) s.Add_Debug("Slave error codes set " + time);
    if (rw.Master_Error_Set || rw.Slave_Error_Set) Show_Error_Codes(s, im.TempByte);
    rw.Read_Complete = complete;
}

void Read_Flow(Settings_Context& s, bool binary) {
    Link_Context& c = s.link;
    if (c.flags.Connection_Check_Busy) return;
    Proc_Guard guard(c.log, "Read Settings");
    s.rw.Read_Failed = false;
    s.rw.Read_Complete = false;
    s.rw.Master_Read = false;
    c.flags.Link_Busy = true;
    s.Command_Buttons(false);
    bool opened = false;
    try {
        opened = Open_Port_If_Closed(c);
        Drop_Input(c);
    } catch (const Run_Error& e) {
        s.rw.Read_Failed = true;
        s.Port_Failure();
        s.Add_Debug(e.what());
        guard.Fail(e.what());
    }
    if (!s.rw.Read_Failed) {
        guard.Step([&] {
            c.texts.rs232_text.clear();
            s.Service_Events();
            s.Progress(0, Banner_Length);
            get_connect_info(c);
            if (!c.state.Connected) {
                s.Add_Both("Read aborted " + Now_Time_Text());
                return;
            }
            const int image = binary ? Binary_Frame_Length : Text_Image_Length;
            s.Progress(Banner_Length,
                       Banner_Length + image + (c.state.Slave_Present ? Text_Image_Length : 0));
            if (s.rw.Verify_Mode)
                Compare_Steps(s, binary);
            else
                Read_Steps(s, binary);
        });
    }
    if (opened) guard.Step([&] { c.line.Close(); });
    guard.Step([&] { s.Call(s.hooks.Update_All); });
    guard.Step([&] { s.Call(s.hooks.Update_Tabs); });
    guard.Step([&] { s.Call(s.hooks.Update_All); });
    s.rw.Verify_Mode = false;
    c.flags.Link_Busy = false;
    s.Command_Buttons(true);
}

void Verify_Flow(Settings_Context& s, bool binary) {
    Link_Context& c = s.link;
    if (c.flags.Connection_Check_Busy) return;
    Proc_Guard guard(c.log, "Verify settings click ");
    s.Command_Buttons(false);
    const std::string time = Now_Time_Text();
    const bool in_write = c.flags.Write_In_Progress || s.rw.Write_Verify;
    s.Add_Debug((in_write ? "Write verify started " : "Verify started ") + time);
    c.texts.rs232_text = "Verify started " + time;
    guard.Step([&] { s.Call(s.hooks.Verify_View); });
    s.rw.Verify_Mode = true;
    Read_Flow(s, binary);
    s.Command_Buttons(true);
}

} // namespace

void Read_bin(Settings_Context& s, bool& ok) {
    Proc_Guard guard(s.link.log, "Read bin");
    ok = false;
    std::string answer;
    if (!Ask(s, "bR", 1.0, Binary_Frame_Length, answer)) {
        s.dialogs.Inform("Error in bR reception, not rsok");
        return;
    }
    // A data byte of 64 is no terminator: only the last "@" counts, and it must end the frame.
    if (answer.rfind('@') != static_cast<std::size_t>(Binary_Frame_Length - 1)) {
        s.dialogs.Inform("Error in bR reception");
        return;
    }
    for (int i = 0; i < Image_Size; ++i)
        s.image.TempByte[i] = static_cast<std::uint8_t>(answer[static_cast<std::size_t>(i) + 2]);
    const int received =
        static_cast<std::uint8_t>(answer[1026]) * 256 + static_cast<std::uint8_t>(answer[1027]);
    if (Calc_Temp_Checksum(s.image, 0, Image_Size - 1) != received) {
        s.dialogs.Inform("Error in bR received checksum");
        return;
    }
    ok = true;
}

void Read_Settings_Click(Settings_Context& s) {
    Read_Flow(s, false);
}

void Read_bin_command_cmd_Click(Settings_Context& s) {
    Read_Flow(s, true);
}

void Verify_Settings_Click(Settings_Context& s) {
    Verify_Flow(s, false);
}

void Verify_bR_Settings_Click(Settings_Context& s) {
    Verify_Flow(s, true);
}

void Read_Settings_Fast(Settings_Context& s) {
    Link_Context& c = s.link;
    if (c.flags.Connection_Check_Busy || c.flags.Link_Busy) return;
    Proc_Guard guard(c.log, "Read settings fast");
    Settings_Image& im = s.image;
    s.rw.Read_Complete = false;
    bool opened = false;
    try {
        opened = Open_Port_If_Closed(c);
    } catch (const Run_Error& e) {
        s.rw.Read_Failed = true;
        s.Port_Failure();
        guard.Fail(e.what());
        return;
    }
    c.flags.Link_Busy = true;
    s.Add_Both("FRead started " + Now_Time_Text());
    s.Progress(0, Text_Image_Length * (c.state.Slave_Present ? 2 : 1));
    guard.Step([&] {
        Box_Image bytes{};
        if (!Read_Master(s, false, bytes)) {
            s.Add_Both("Read aborted " + Now_Time_Text());
            return;
        }
        std::copy_n(bytes.begin(), Image_Size, im.TempByte.begin());
        std::fill(im.ChangedByte.begin(), im.ChangedByte.end(), 0);
        const bool settings = !im.Write_Errors_Only;
        const int master = settings ? Mark_Differences(s, im.TempByte, false, false) : 0;
        int slave = 0;
        if (c.state.Slave_Present) {
            if (!Read_Slave(s, bytes)) {
                s.Add_Both("Read aborted " + Now_Time_Text());
                return;
            }
            std::copy_n(bytes.begin(), Image_Size, im.SlaveByte.begin());
            if (settings) slave = Mark_Differences(s, im.SlaveByte, true, false);
        }
        s.Add_Debug(master > 0 ? std::to_string(master) + " master miss match" : "No master miss match");
        if (c.state.Slave_Present)
            s.Add_Debug(slave > 0 ? std::to_string(slave) + " slave miss match" : "No slave miss match");
        s.Add_Debug("Verify finished with " + std::to_string(master + slave) + " updates");
        c.texts.rs232_text = c.state.Slave_Present ? "Verify finished, M&S " : "Verify finished, M";
        s.rw.Master_Mismatch = master > 0;
        s.rw.Slave_Mismatch = slave > 0;
        s.rw.Read_Complete = true;
    });
    if (opened) guard.Step([&] { c.line.Close(); });
    c.flags.Link_Busy = false;
}

void Fast_Verify_Click(Settings_Context& s) {
    Read_Settings_Fast(s);
}

void Com_Read_Click(Settings_Context& s) {
    Link_Context& c = s.link;
    if (c.flags.Connection_Check_Busy || c.flags.Link_Busy || c.flags.Write_In_Progress) return;
    Proc_Guard guard(c.log, "Com read click");
    try {
        Open_Port_If_Closed(c);
    } catch (const Run_Error& e) {
        s.Port_Failure();
        guard.Fail(e.what());
        return;
    }
    c.flags.Link_Busy = true;
    s.rw.Read_Complete = false;
    guard.Step([&] {
        get_connect_info(c);
        std::string banner;
        bool whole = false;
        Ask_Banner(c, 0.5, 2048, banner, whole);
        Box_Image bytes{};
        if (s.rw.Slave_Checked) {
            c.texts.rs232_text = "< verifying... >";
            if (Read_Slave(s, bytes)) std::copy_n(bytes.begin(), Image_Size, s.image.SlaveByte.begin());
        } else {
            c.texts.rs232_text = "< reading data from RZ... >";
            if (Read_Master(s, false, bytes)) {
                s.Call(s.hooks.save_to_undolist);
                for (int i = 0; i < Image_Size; ++i) {
                    s.image.CardByte[i] = s.image.TempByte[i] = bytes[i];
                    s.image.ChangedByte[i] = 0;
                }
                s.rw.Read_Complete = true;
            }
        }
    });
    Com_Close_Click(c);
    c.flags.Link_Busy = false;
    guard.Step([&] { s.Call(s.hooks.Update_All); });
}

void Check_Slave_Data_Strategy(Settings_Context& s) {
    Link_Context& c = s.link;
    Proc_Guard guard(c.log, "Check slave data strategy ");
    bool opened = false;
    guard.Step([&] {
        opened = Open_Port_If_Closed(c);
        c.texts.rs232_text = "< Check >";
        c.Dummy_Wait();
        std::string answer;
        bool ok = false;
        Send_Wait_Rec(c, "rs", 5.0, Text_Image_Length, answer, ok);
        if (!ok) {
            if (!c.line.Is_Open()) opened = Open_Port_If_Closed(c) || opened;
            bool got = false;
            Send_Wait_Rec(c, "v", 0.1, 50, answer, got);
            Drop_Input(c);
            c.texts.rs232_text = "< Check2 >";
            Send_Wait_Rec(c, "rs", 2.0, Text_Image_Length, answer, ok);
        }
        s.rw.Slave_Checked = ok;
    });
    if (opened) guard.Step([&] { c.line.Close(); });
}

} // namespace quorlen
