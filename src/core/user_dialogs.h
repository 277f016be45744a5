#pragma once
// What domain code may ask of the person at the screen. The GUI answers with message boxes
// and file dialogs; the command-line tool and the tests answer from a script. Domain code
// never opens a window itself.

#include <optional>
#include <string>

namespace quorlen {

enum class Answer { Ok, Cancel, Yes, No };

// The symbol a message box shows beside its text.
enum class Icon { None, Stop, Question, Information };

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
    // A plain message box with an OK button.
    virtual void Inform(const std::string& text) = 0;
    // The same with a symbol: the stop sign for what went wrong, the information symbol for
    // what the tuner should know. Where there are no symbols (a terminal) the text stands alone.
    virtual void Show_Message(Icon icon, const std::string& text) {
        (void)icon;
        Inform(text);
    }
    // The same with a title of its own ("Connected box info"); by default the program's.
    virtual void Inform_Titled(const std::string& title, const std::string& text) {
        (void)title;
        Inform(text);
    }
    // A warning that must not be missed: the box with the stop sign.
    void Warn(const std::string& text) { Show_Message(Icon::Stop, text); }
    // A question with OK and Cancel buttons.
    virtual Answer Ask_Ok_Cancel(const std::string& text) = 0;
    // A question with Yes and No buttons.
    virtual Answer Ask_Yes_No(const std::string& text) = 0;
    // nullopt when cancelled.
    virtual std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup& setup) = 0;
    virtual std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup& setup) = 0;
};

// Nobody at the screen: what is said goes nowhere, a question takes its first button, a file
// dialog is cancelled. For work done again behind the person's back (a log calculated anew),
// and for benchmarks.
class Silent_Dialogs final : public User_Dialogs {
public:
    void Inform(const std::string&) override {}
    Answer Ask_Ok_Cancel(const std::string&) override { return Answer::Ok; }
    Answer Ask_Yes_No(const std::string&) override { return Answer::Yes; }
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup&) override { return std::nullopt; }
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup&) override { return std::nullopt; }
};

} // namespace quorlen
