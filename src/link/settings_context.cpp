#include "link/settings_context.h"

namespace quorlen {

void Settings_Context::Add_Debug(const std::string& line) const {
    std::string& text = link.texts.Debug_txt;
    if (!text.empty() && (text.size() < 2 || text.compare(text.size() - 2, 2, "\r\n") != 0)) text += "\r\n";
    text += line;
    text += "\r\n";
}

void Settings_Context::Add_Both(const std::string& line) const {
    Add_Debug(line);
    link.texts.rs232_text = line;
}

void Settings_Context::Port_Failure() const {
    Add_Both("< Failed to open " + link.Port_Name() + " >");
}

void Settings_Context::Command_Buttons(bool enabled) const {
    if (link.hooks.Command_Buttons) link.hooks.Command_Buttons(enabled);
    Call(link.hooks.Handle_button_enable);
}

void Settings_Context::Service_Events() const {
    Call(hooks.Service_Events);
}

void Settings_Context::Progress(int done, int total) const {
    rw.Progress_Done = done;
    rw.Progress_Total = total;
    if (hooks.Progress) hooks.Progress(done, total);
}

} // namespace quorlen
