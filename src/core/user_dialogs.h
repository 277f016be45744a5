#pragma once
// What domain code may ask of the person at the screen. The GUI answers with message boxes
// and file dialogs; the command-line tool and the tests answer from a script. Domain code
// never opens a window itself.

#include <optional>
#include <string>

namespace quorlen {

enum class Answer { Ok, Cancel, Yes, No };

struct File_Dialog_Setup {
    std::string title;
    std::string initial_dir;
    std::string filter;      // "Label|*.ext|Label|*.ext" as the program states it
    std::string default_ext; // without the dot; empty for none
    std::string initial_name;
    bool must_exist = false; // open: the file must exist
    bool confirm_overwrite = false;
};

struct Picked_File {
    std::string full_name;  // folder and name
    std::string file_title; // name only
};

class User_Dialogs {
public:
    virtual ~User_Dialogs() = default;
    // A plain information box with an OK button.
    virtual void Inform(const std::string& text) = 0;
    // The same with a title of its own ("Connected box info"); by default the program's.
    virtual void Inform_Titled(const std::string& title, const std::string& text) {
        (void)title;
        Inform(text);
    }
    // A warning that must not be missed (a stop sign on screen); by default a plain box.
    virtual void Warn(const std::string& text) { Inform(text); }
    // A question with OK and Cancel buttons.
    virtual Answer Ask_Ok_Cancel(const std::string& text) = 0;
    // A question with Yes and No buttons.
    virtual Answer Ask_Yes_No(const std::string& text) = 0;
    // nullopt when cancelled.
    virtual std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup& setup) = 0;
    virtual std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup& setup) = 0;
};

} // namespace quorlen
