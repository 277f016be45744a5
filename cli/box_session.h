#pragma once
// What a command of quorlen-cli holds while it talks to a box: the program's state for one
// run, the line, and answers to the questions the procedures ask.

#include "cli/cli_support.h"

#include "core/atomic_file.h"
#include "core/debug_log.h"
#include "core/program_state.h"
#include "core/run_error.h"
#include "core/user_dialogs.h"
#include "files/qxs_format.h"
#include "files/settings_files.h"
#include "image/settings_image.h"
#include "link/link_state.h"
#include "link/qt/qt_serial_line.h"
#include "link/rw_state.h"
#include "link/settings_context.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

namespace quorlen::cli {

// A terminal's stand-in for the message boxes: messages go to the output; questions are
// answered as a tuner who asked for the command would, and said on the error stream.
class Cli_Dialogs final : public User_Dialogs {
public:
    Cli_Dialogs(std::FILE* out, std::FILE* err) : out_(out), err_(err) {}
    bool quiet_questions = false;

    void Inform(const std::string& text) override { std::fputs(Lines_Of(text).c_str(), out_); }
    Answer Ask_Ok_Cancel(const std::string& text) override {
        Note(text, "OK");
        return Answer::Ok;
    }
    Answer Ask_Yes_No(const std::string& text) override {
        Note(text, "Yes");
        return Answer::Yes;
    }
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup&) override { return std::nullopt; }
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup&) override { return std::nullopt; }

private:
    void Note(const std::string& text, const char* answer) {
        if (!quiet_questions) std::fprintf(err_, "%s(answered %s)\n", Lines_Of(text).c_str(), answer);
    }
    std::FILE* out_;
    std::FILE* err_;
};

// Everything one command holds while it talks to the box.
class Box_Session {
public:
    Box_Session(const std::string& port, const std::string& baud, std::FILE* out, std::FILE* err)
        : dialogs(out, err), link_{program, texts, flags, state, log, line, no_auto_start_, Hooks()},
          s{link_, image, rw, files, dialogs, {}} {
        program.ComSpeed = baud == "625000" ? 625000 : 115200;
        if (auto n = To_Integer(port))
            program.Com_Port = static_cast<int>(*n);
        else
            program.Com_Port = state.Ports.Number_For(port);
    }

    // The report as the window's Debug_txt shows it, and the counters when they are on show.
    void Print_Report(std::FILE* out) const {
        std::fputs(Lines_Of(texts.Debug_txt).c_str(), out);
        if (rw.Error_Codes_Shown) std::fputs(Lines_Of(texts.Error_Codes_txt).c_str(), out);
    }
    bool Equal() const { return rw.Read_Complete && !rw.Master_Mismatch && !rw.Slave_Mismatch; }

    Core_Application core;
    Program_State program;
    Form_Texts texts;
    File_State files;
    Link_Flags flags;
    Link_State state;
    Debug_Log log; // not opened: the tool reports on its own output
    Qt_Serial_Line line;
    Settings_Image image;
    Rw_State rw;
    Cli_Dialogs dialogs;

private:
    static Link_Hooks Hooks() {
        Link_Hooks hooks;
        hooks.Dummy_Wait = [] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); };
        return hooks;
    }
    const bool no_auto_start_[2] = {false, false};
    Link_Context link_;

public:
    Settings_Context s;
};

// A settings file into the image, its comment into the comment box; false, said on `err`,
// when the program would not load it.
inline bool Load_Settings_File(const std::string& file, Settings_Image& image, Form_Texts& texts,
                               std::FILE* err) {
    if (file.empty()) {
        std::fprintf(err, "quorlen-cli: want a settings file\n");
        return false;
    }
    auto content = Load_Qxs_File(file);
    if (!content) {
        std::fprintf(err, "%s: %s\n", file.c_str(), Not_Valid_Qxs_Text);
        return false;
    }
    std::copy(content->bytes.begin(), content->bytes.end(), image.CardByte.begin());
    image.DatasetID = content->bytes[255];
    texts.txt_File_Description = content->comment;
    return true;
}

// The image and a comment as a settings file by the program's own save rules, replacing
// `file` whole or not at all.
inline bool Save_Settings_File(const std::string& file, Settings_Image& image, const std::string& comment,
                               std::FILE* err) {
    Note_Dataset(image, err);
    try {
        quorlen::Save_Settings_File(image, comment, file);
    } catch (const Run_Error& e) {
        std::fprintf(err, "%s: %s\n", file.c_str(), e.what());
        return false;
    }
    return true;
}

} // namespace quorlen::cli
