#pragma once
// What the card commands need around them: the image they read into or write from, the
// person at the screen, and the views to refresh.

#include "cards/card_state.h"
#include "core/debug_log.h"
#include "core/program_state.h"
#include "core/user_dialogs.h"
#include "image/settings_image.h"
#include "tables/undo_list.h"

#include <functional>
#include <string>
#include <vector>

namespace quorlen {

struct Card_Hooks {
    std::function<void()> Update_All;
    // Lets the window paint a status before a step that may take a while.
    std::function<void()> Service_Events;
};

struct Card_Context {
    Program_State& program;
    Form_Texts& texts;
    File_State& files;
    Settings_Image& image;
    Undo_List& undo;
    Card_State& card;
    Debug_Log& log;
    User_Dialogs& dialogs;
    Card_Hooks hooks;

    void Service_Events() const {
        if (hooks.Service_Events) hooks.Service_Events();
    }
    void Update_All() const {
        if (hooks.Update_All) hooks.Update_All();
    }
    // One line in the communication report.
    void Add_Debug(const std::string& line) const;
};

// Card bytes `first` to `last` (positions in `bytes` are card addresses) into the image:
// the image goes to Card_Backup first; a card of another dataset is loaded only when the
// person says so, else the backup goes back and `status` says "< Card Read cancel >".
// Returns true when the image took the bytes.
bool Take_Card_Bytes(Card_Context& k, const std::vector<std::uint8_t>& bytes, int first, int last,
                     std::string& status);

// The bytes `first` to `last` as they go to a card: 250 and 251 cleared, as in a settings
// file. Tells first when the settings would make the box a slave.
std::vector<std::uint8_t> Card_Write_Bytes(Card_Context& k, int first, int last);
// After a card took them: the image clears 250 and 251 too, and the report tells the
// checksum of what the card holds.
void Card_Write_Done(Card_Context& k, const std::vector<std::uint8_t>& bytes, int first);

} // namespace quorlen
