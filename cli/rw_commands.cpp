#include "cli/rw_commands.h"

#include "cli/box_session.h"
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

// The file to compare with or write: its image becomes the program's.
bool Load_Into(Box_Session& b, const Rw_Args& a, std::FILE* err) {
    return Load_Settings_File(a.file, b.image, b.texts, err);
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
    Box_Session b(a.port, a.baud, out, err);
    if (a.binary)
        Read_bin_command_cmd_Click(b.s);
    else
        Read_Settings_Click(b.s);
    b.Print_Report(out);
    if (b.rw.Read_Failed) return 2;
    if (!b.rw.Read_Complete) return 1;
    return Save_Settings_File(a.output, b.image, b.texts.txt_File_Description, err) ? 0 : 1;
}

int Verify_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Rw_Args a;
    if (!Parse(args, a, err)) return 2;
    Box_Session b(a.port, a.baud, out, err);
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
    Box_Session b(a.port, a.baud, out, err);
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
    Box_Session b(a.port, a.baud, out, err);
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
    Box_Session b(a.port, a.baud, out, err);
    Clear_Err_Counters_cmd_Click(b.s);
    b.Print_Report(out);
    if (b.rw.Read_Failed) return 2;
    return b.rw.Write_Succeeded ? 0 : 1;
}

} // namespace quorlen::cli
