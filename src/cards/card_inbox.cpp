#include "cards/card_inbox.h"

#include "core/proc_guard.h"
#include "core/run_error.h"
#include "files/settings_files.h"
#include "link/banner.h"
#include "link/read_verify.h"

#include <algorithm>

namespace quorlen {

namespace {

constexpr double Banner_Timeout = 0.5;
constexpr double Mode_Timeout = 1.0;
// The box writes each byte to the card before it answers: an EEPROM write takes a few
// milliseconds, the rest is the line.
constexpr double Byte_Timeout = 0.5;
constexpr double Closing_Timeout = 2.0;

bool Holds(const std::string& answer, char marker) {
    return answer.find(marker) != std::string::npos;
}

// Opens the port and asks the box whether a card is in its slot. False, with the status
// said, when not; `opened` tells whether this call opened the port.
bool Card_Present(Settings_Context& s, Card_Context& k, bool& opened) {
    Link_Context& c = s.link;
    std::string& status = k.card.qx_crw_text;
    opened = false;
    try {
        opened = Open_Port_If_Closed(c);
    } catch (const Run_Error& e) {
        status = "< Failed to open COM" + c.Port_Name() + " >";
        k.Add_Debug(e.what());
        return false;
    }
    status = "< ... >";
    k.Service_Events();
    std::string answer;
    bool complete = false;
    Send_Wait_Until(
        c, "v", Banner_Timeout, [](const std::string& a) { return Banner_Complete(a); }, answer, complete);
    c.state.Smartcard_Present = answer.find("Smartcard present") != std::string::npos;
    if (!complete && !c.state.Smartcard_Present) {
        status = "< No response... >";
        return false;
    }
    if (!c.state.Smartcard_Present) {
        status = "< No Mapchip present >";
        return false;
    }
    return true;
}

void Close_If_Opened(Link_Context& c, bool opened) {
    if (opened) c.line.Close();
}

} // namespace

void Check_Card_Present_cmd_Click(Settings_Context& s, Card_Context& k) {
    Link_Context& c = s.link;
    if (c.flags.Connection_Check_Busy || c.flags.Link_Busy || c.flags.Write_In_Progress) return;
    Proc_Guard guard(c.log, "Check card present cmd");
    c.flags.Link_Busy = true;
    bool opened = false;
    guard.Step([&] {
        if (Card_Present(s, k, opened)) k.card.qx_crw_text = "< Mapchip present >";
    });
    guard.Step([&] { Close_If_Opened(c, opened); });
    c.flags.Link_Busy = false;
}

void Read_Card_Inbox_cmd_Click(Settings_Context& s, Card_Context& k) {
    Link_Context& c = s.link;
    if (c.flags.Connection_Check_Busy || c.flags.Link_Busy || c.flags.Write_In_Progress) return;
    Proc_Guard guard(c.log, "Read card in box");
    bool opened = false;
    bool present = false;
    c.flags.Link_Busy = true;
    guard.Step([&] { present = Card_Present(s, k, opened); });
    c.flags.Link_Busy = false;
    if (!present) {
        guard.Step([&] { Close_If_Opened(c, opened); });
        return;
    }
    guard.Step([&] {
        Settings_Image& im = k.image;
        std::copy_n(im.CardByte.begin(), k.card.Card_Backup.size(), k.card.Card_Backup.begin());
        k.card.qx_crw_text = "< reading data from RZ... >";
        k.Service_Events();
        save_to_undolist(k.undo, im);
        Com_Read_Click(s);
        if (!s.rw.Read_Complete) {
            k.card.qx_crw_text = "< failure... >";
            return;
        }
        if (im.CardByte[255] != im.DatasetID &&
            k.dialogs.Ask_Ok_Cancel(Dataset_Question(im.CardByte[255], im.DatasetID)) != Answer::Ok) {
            std::copy(k.card.Card_Backup.begin(), k.card.Card_Backup.end(), im.CardByte.begin());
            k.card.qx_crw_text = "< Card Read cancel >";
            k.Update_All();
            return;
        }
        k.card.qx_crw_text = "< Card Read OK >";
        k.program.Settings_File_Name = "New1.qxs";
        k.files.CurrentFileName = "New1.qxs";
        k.texts.Title = k.program.Program_Title + "Settings loaded from card";
        k.Add_Debug("Settings loaded from card");
        k.Update_All();
    });
    // Com_Read_Click closes the port it used; one opened here before it is closed by now.
    guard.Step([&] { Close_If_Opened(c, opened && c.line.Is_Open()); });
}

void Write_Card_Inbox_cmd_Click(Settings_Context& s, Card_Context& k) {
    Link_Context& c = s.link;
    if (c.flags.Connection_Check_Busy || c.flags.Link_Busy || c.flags.Write_In_Progress) return;
    Proc_Guard guard(c.log, "Write card inbox cmd");
    std::string& status = k.card.qx_crw_text;
    bool opened = false;
    c.flags.Link_Busy = true;
    c.flags.Write_In_Progress = true;
    guard.Step([&] {
        if (!Card_Present(s, k, opened)) return;
        std::string answer;
        bool ok = false;
        Send_Wait_Until(
            c, "br", Mode_Timeout, [](const std::string& a) { return Holds(a, '#'); }, answer, ok);
        if (!ok) {
            status = "< No response... >";
            return;
        }
        Settings_Image& im = k.image;
        std::copy_n(im.CardByte.begin(), Mapchip_Size, im.TempByte.begin());
        for (int i = 0; i < Mapchip_Size; ++i) {
            const std::string digits = dec2hex(im.TempByte[i], 2);
            const bool last = i == Mapchip_Size - 1;
            if (!last) {
                Send_Wait_Until(
                    c, digits, Byte_Timeout, [](const std::string& a) { return Holds(a, 'm'); }, answer, ok);
            } else {
                // Only the box's "!" proves the card complete; any other reply ends the wait
                // at once and counts as a failure.
                Send_Wait_Until(
                    c, digits, Closing_Timeout, [](const std::string& a) { return !a.empty(); }, answer, ok);
                ok = ok && Holds(answer, '!');
            }
            if (!ok) {
                status = "< failure... >";
                k.Add_Debug("Card write stopped at byte " + std::to_string(i));
                return;
            }
            if (i % 16 == 15) {
                s.Progress(i + 1, Mapchip_Size);
                k.Service_Events();
            }
        }
        status = "< Card Write OK >";
        k.Add_Debug("Card written in the box, bytes 0 to 255, checksum " +
                    dec2hex(Calc_Temp_Checksum(im, 0, Mapchip_Size - 1), 4));
    });
    guard.Step([&] { Close_If_Opened(c, opened); });
    c.flags.Write_In_Progress = false;
    c.flags.Link_Busy = false;
}

} // namespace quorlen
