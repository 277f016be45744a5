#include "link/error_codes.h"

#include "core/proc_guard.h"
#include "link/settings_context.h"
#include "link/write_settings.h"

namespace quorlen {

namespace {

// Index 8 (1019) has no words of its own; its column is never read.
const char* const Low_Nibble_Text[11] = {"AFR high ",       "Throttel high ",      "MAP high ",
                                         "Coolant high ",   "IAT/Aux1 high ",      "12V/Aux2 high ",
                                         "Cam Crank Sync ", "Fuel adaptive high ", "",
                                         "Boost limit ",    "AFR at load "};
const char* const High_Nibble_Text[11] = {
    "AFR low ", "Throttel low ",      "MAP low ", "Coolant low ", "IAT/Aux1 low ", "12V/Aux2 low ",
    "Crank ",   "Fuel adaptive low ", "",         "RPM limit ",   "Unsupported "};

} // namespace

std::string Err_text(int address, int value) {
    const int index = address - First_Error_Counter;
    if (index < 0 || index > 10 || index == 8) return "Unsupported " + std::to_string(address) + "\r\n";
    std::string text;
    if ((value & 15) != 0) text += Low_Nibble_Text[index] + std::to_string(value & 15) + "\r\n";
    if ((value & 240) != 0) text += High_Nibble_Text[index] + std::to_string((value & 240) / 16) + "\r\n";
    return text;
}

void Show_Error_Code(const Image_Array<std::uint8_t>& master, const Image_Array<std::uint8_t>& slave,
                     Form_Texts& texts) {
    std::string text = "Master:\r\n";
    for (int a = First_Error_Counter; a <= Last_Error_Counter; ++a)
        if (master[a] != 0) text += Err_text(a, master[a]);
    text += "\r\nSlave:\r\n";
    for (int a = First_Error_Counter; a <= Last_Error_Counter; ++a)
        if (slave[a] != 0) text += Err_text(a, slave[a]);
    texts.Error_Codes_txt = text;
}

void Show_Error_Code(const Settings_Image& image, Form_Texts& texts) {
    Show_Error_Code(image.CardByte, image.SlaveByte, texts);
}

void Show_Error_Codes(Settings_Context& s, const Image_Array<std::uint8_t>& master) {
    s.rw.Error_Codes_Shown = true;
    const bool report_shown = s.hooks.Debug_txt_Shown && s.hooks.Debug_txt_Shown();
    s.rw.Error_Codes_Height = report_shown ? 1452 : 4095;
    Show_Error_Code(master, s.image.SlaveByte, s.link.texts);
}

void Hide_Error_Codes(Rw_State& rw) {
    rw.Error_Codes_Shown = false;
}

void Clear_Err_Counters_cmd_Click(Settings_Context& s) {
    Proc_Guard guard(s.link.log, "Clear err counters");
    Link_Context& c = s.link;
    s.image.Write_Errors_Only = true;
    for (int a = First_Error_Counter; a <= Last_Error_Counter; ++a) {
        s.image.CardByte[a] = 0;
        s.image.SlaveByte[a] = 0;
        s.image.ChangedByte[a] = Changed_Mark;
    }
    const bool log_running =
        c.line.Is_Open() && c.flags.Logging_Active && !(s.hooks.Log_Paused && s.hooks.Log_Paused());
    guard.Step([&] {
        if (log_running)
            s.Call(s.hooks.Write_while_logging);
        else
            Write_Settings_Click(s);
    });
    Hide_Error_Codes(s.rw);
    guard.Step([&] { s.Call(s.hooks.Update_All); });
    s.image.Write_Errors_Only = false;
}

} // namespace quorlen
