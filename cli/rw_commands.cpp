#include "cli/rw_commands.h"

#include "cli/cli_support.h"

#include "core/atomic_file.h"
#include "core/run_error.h"
#include "core/text.h"
#include "files/qxs_format.h"
#include "files/settings_files.h"
#include "link/error_codes.h"
#include "link/qt/qt_serial_line.h"
#include "link/read_verify.h"
#include "link/write_settings.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

namespace quorlen::cli {

namespace {

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

struct Rw_Args {
    std::string port;
    std::string baud = "115200";
    std::string file;
    std::string output;
    bool binary = false;
    bool fast = false;
};

// "--name VALUE" or "--name=VALUE", flags, and at most one file; false, with a message, on
// anything else.
bool Parse(const std::vector<std::string>& args, Rw_Args& a, std::FILE* err) {
    const auto fail = [&](const std::string& what) {
        std::fprintf(err, "quorlen-cli %s: %s (see quorlen-cli --help)\n", args[0].c_str(), what.c_str());
        return false;
    };
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        if (name == "--binary") {
            a.binary = true;
            continue;
        }
        if (name == "--fast") {
            a.fast = true;
            continue;
        }
        if (name.empty() || name[0] != '-') {
            if (!a.file.empty()) return fail("more than one file");
            a.file = name;
            continue;
        }
        std::string value = Take_Option_Value(args, i, name);
        if (value.empty()) return fail("'" + name + "' wants a value");
        if (name == "--port")
            a.port = value;
        else if (name == "--baud")
            a.baud = value;
        else if (name == "-o" || name == "--output")
            a.output = value;
        else
            return fail("unexpected '" + args[i] + "'");
    }
    if (a.port.empty()) return fail("want --port PATH or a port number");
    if (a.baud != "115200" && a.baud != "625000") return fail("the baud rate is 115200 or 625000");
    if (a.binary && a.fast) return fail("--binary and --fast exclude each other");
    return true;
}

// Everything one command holds while it talks to the box.
class Box_Session {
public:
    Box_Session(const Rw_Args& a, std::FILE* out, std::FILE* err)
        : dialogs(out, err), link_{program, texts, flags, state, log, line, no_auto_start_, Hooks()},
          s{link_, image, rw, files, dialogs, {}} {
        program.ComSpeed = a.baud == "625000" ? 625000 : 115200;
        if (auto n = To_Integer(a.port))
            program.Com_Port = static_cast<int>(*n);
        else
            program.Com_Port = state.Ports.Number_For(a.port);
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

// The file to compare with or write: its image becomes the program's.
bool Load_Into(Box_Session& b, const Rw_Args& a, std::FILE* err) {
    if (a.file.empty()) {
        std::fprintf(err, "quorlen-cli: want a settings file\n");
        return false;
    }
    auto content = Load_Qxs_File(a.file);
    if (!content) {
        std::fprintf(err, "%s: %s\n", a.file.c_str(), Not_Valid_Qxs_Text);
        return false;
    }
    std::copy(content->bytes.begin(), content->bytes.end(), b.image.CardByte.begin());
    b.image.DatasetID = content->bytes[255];
    b.texts.txt_File_Description = content->comment;
    return true;
}

int Port_Failed(const Box_Session& b, std::FILE* out) {
    b.Print_Report(out);
    return 2;
}

} // namespace

int Read_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Rw_Args a;
    if (!Parse(args, a, err)) return 2;
    if (a.output.empty() || !a.file.empty()) {
        std::fprintf(err, "quorlen-cli read: want -o FILE.qxs and no other file\n");
        return 2;
    }
    Box_Session b(a, out, err);
    if (a.binary)
        Read_bin_command_cmd_Click(b.s);
    else
        Read_Settings_Click(b.s);
    b.Print_Report(out);
    if (b.rw.Read_Failed) return 2;
    if (!b.rw.Read_Complete) return 1;
    Note_Dataset(b.image, err);
    try {
        Save_Settings_File(b.image, b.texts.txt_File_Description, a.output);
    } catch (const Run_Error& e) {
        std::fprintf(err, "%s: %s\n", a.output.c_str(), e.what());
        return 1;
    }
    return 0;
}

int Verify_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Rw_Args a;
    if (!Parse(args, a, err)) return 2;
    Box_Session b(a, out, err);
    if (!Load_Into(b, a, err)) return 2;
    if (a.binary)
        Verify_bR_Settings_Click(b.s);
    else
        Verify_Settings_Click(b.s);
    b.Print_Report(out);
    if (!b.rw.Read_Complete) return 2;
    return b.Equal() ? 0 : 1;
}

int Write_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Rw_Args a;
    if (!Parse(args, a, err)) return 2;
    Box_Session b(a, out, err);
    if (!Load_Into(b, a, err)) return 2;
    bool written = false;
    if (!a.binary && !a.fast) {
        Write_Settings_Click(b.s);
        written = b.rw.Write_Succeeded;
    } else {
        // These paths write what is marked and prove nothing themselves: a verify marks the
        // differences first, and another proves the result.
        const auto verify = a.binary ? Verify_bR_Settings_Click : Verify_Settings_Click;
        verify(b.s);
        // The error counters are the box's own: a write of settings leaves them as they are.
        std::fill(b.image.ChangedByte.begin() + First_Error_Counter, b.image.ChangedByte.end(), 0);
        if (b.rw.Read_Complete) {
            if (a.binary)
                Write_bin_command_cmd_Click(b.s);
            else
                Write_Settings_Fast_Click(b.s);
            if (b.rw.Write_Succeeded) {
                verify(b.s);
                written = b.Equal();
            }
        }
    }
    b.Print_Report(out);
    if (b.rw.Read_Failed) return 2;
    return written ? 0 : 1;
}

int Errors_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Rw_Args a;
    if (!Parse(args, a, err)) return 2;
    Box_Session b(a, out, err);
    b.dialogs.quiet_questions = true; // only the counters are wanted, whatever the dataset
    Read_Settings_Click(b.s);
    if (!b.rw.Read_Complete) return Port_Failed(b, out);
    Show_Error_Code(b.image, b.texts);
    std::fputs(Lines_Of(b.texts.Error_Codes_txt).c_str(), out);
    return 0;
}

int Clear_Errors_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Rw_Args a;
    if (!Parse(args, a, err)) return 2;
    Box_Session b(a, out, err);
    Clear_Err_Counters_cmd_Click(b.s);
    b.Print_Report(out);
    if (b.rw.Read_Failed) return 2;
    return b.rw.Write_Succeeded ? 0 : 1;
}

} // namespace quorlen::cli
