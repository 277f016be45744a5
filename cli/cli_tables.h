#pragma once
// A settings file loaded as the program loads it, for the commands that show or edit its
// tables: sensors from the configuration file beside the program (or a given one), the
// image defaults, the file, the analogue inputs, and the four table routines. What the
// program would log or say meanwhile ends up on stderr.

#include "app/app_context.h"

#include <cstdio>
#include <string>

namespace quorlen::cli {

// The message boxes of a command become lines on stderr; questions take their default.
class Stderr_Dialogs final : public User_Dialogs {
public:
    explicit Stderr_Dialogs(std::FILE* err) : err_(err) {}
    void Inform(const std::string& text) override { std::fprintf(err_, "%s\n", text.c_str()); }
    Answer Ask_Ok_Cancel(const std::string&) override { return Answer::Ok; }
    Answer Ask_Yes_No(const std::string&) override { return Answer::Yes; }
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup&) override { return std::nullopt; }
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup&) override { return std::nullopt; }

private:
    void Drop_Diagnostics();
    std::FILE* err_;
};

// The program's data folder, found as the GUI finds it.
std::string Cli_App_Path();

class Cli_Tables {
public:
    // `ini` empty: the configuration file beside the program.
    Cli_Tables(std::FILE* err, const std::string& ini);
    ~Cli_Tables();
    Cli_Tables(const Cli_Tables&) = delete;
    Cli_Tables& operator=(const Cli_Tables&) = delete;

    // Loads `file` and runs Update_Tabs, Show_Right_Tabs and Update_All over it; false, with
    // "Not a valid qxs-file" on stderr, when it is not a settings file, and with the reason when
    // the configuration file given is missing or not a file.
    bool Load(const std::string& file);
    // False, with the reason on stderr, when the configuration file given is missing or not a
    // file; for the commands that read only the configuration.
    bool Ini_Ok();
    // After the image changed as a whole: the analogue inputs and the four table routines.
    void Take_Image();
    // The image and the file's comment to `out` by the program's save rules (250 and 251 as
    // 0, 255 as the dataset), through a temporary file; false, with the reason on stderr,
    // when it can't be written.
    bool Save(const std::string& out);
    // The diagnostics so far (the log and the debug text) go to stderr; later ones are
    // dropped. Runs at the end of the object's life if not before.
    void Flush_Diagnostics();

    Tables_Context Context() { return app.Tables(dialogs); }
    // The comment as a save writes it back unchanged.
    std::string Comment_To_Save() const;

    App_Context app;
    Stderr_Dialogs dialogs;
    std::string comment; // the file's comment, lines joined by CR LF

private:
    void Drop_Diagnostics();
    std::FILE* err_;
    std::string log_path_;
    std::string ini_problem_;
    bool flushed_ = false;
};

} // namespace quorlen::cli
