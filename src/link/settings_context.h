#pragma once
// What reading, verifying and writing settings need around the command link: the image, the
// person at the screen, the views to refresh, and the window's feedback. Every hook may be
// left empty; the command-line tool and the tests leave most of them so.

#include "core/program_state.h"
#include "core/user_dialogs.h"
#include "image/settings_image.h"
#include "link/command_link.h"
#include "link/rw_state.h"

#include <functional>
#include <string>

namespace quorlen {

struct Settings_Hooks {
    std::function<void()> Update_All;
    std::function<void()> Update_Tabs;
    // A snapshot for undo, before the box's settings replace the image on show.
    std::function<void()> save_to_undolist;
    // Serves the event loop once, so the window stays alive between bytes.
    std::function<void()> Service_Events;
    // Characters (reads) or bytes (writes) done out of the total of the step under way.
    std::function<void(int done, int total)> Progress;
    std::function<void()> Show_QX_prefs;
    std::function<void()> Show_Debug_txt;
    std::function<bool()> Debug_txt_Shown;
    // The verify view: shown when Verify_Check is ticked, hidden otherwise.
    std::function<void()> Verify_View;
    // Live changes while a log stream holds the port.
    std::function<bool()> Log_Paused;
    std::function<void()> Write_while_logging;
};

struct Settings_Context {
    Link_Context& link;
    Settings_Image& image;
    Rw_State& rw;
    File_State& files;
    User_Dialogs& dialogs;
    Settings_Hooks hooks;

    // Appends one line to Debug_txt, starting it on a line of its own.
    void Add_Debug(const std::string& line) const;
    // The same line in Debug_txt and as the status in rs232_text.
    void Add_Both(const std::string& line) const;
    // "< Failed to open COMn >" in both texts.
    void Port_Failure() const;
    // The four command buttons, and what depends on them.
    void Command_Buttons(bool enabled) const;
    void Service_Events() const;
    void Progress(int done, int total) const;
    void Call(const std::function<void()>& hook) const {
        if (hook) hook();
    }
};

// Every address a verify compares: 250 to 255 are the box's own, and from 1011 on lie its
// error counters.
inline bool Compared_Address(int address) {
    return (address >= 0 && address <= 249) || (address >= 256 && address <= 1010);
}

} // namespace quorlen
