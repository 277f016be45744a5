#include "cli/card_commands.h"

#include "cli/box_session.h"

#include "cards/card_inbox.h"
#include "cards/pcsc/pcsc_reader.h"
#include "cards/todos.h"
#include "tables/undo_list.h"

#include <map>

namespace quorlen::cli {

namespace {

struct Card_Args {
    std::map<std::string, std::string> options; // "--port" and the like, with their values
    std::string file;
};

// "--name VALUE" or "--name=VALUE" out of `allowed`, and at most one file; false, with a
// message, on anything else.
bool Parse(const std::vector<std::string>& args, const std::vector<std::string>& allowed, Card_Args& a,
           std::FILE* err) {
    const auto fail = [&](const std::string& what) {
        std::fprintf(err, "quorlen-cli %s: %s (see quorlen-cli --help)\n", args[0].c_str(), what.c_str());
        return false;
    };
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        if (name.empty() || name[0] != '-') {
            if (!a.file.empty()) return fail("more than one file");
            a.file = name;
            continue;
        }
        std::string value = Take_Option_Value(args, i, name);
        if (name == "--output") name = "-o";
        if (std::find(allowed.begin(), allowed.end(), name) == allowed.end())
            return fail("unexpected '" + args[i] + "'");
        if (value.empty()) return fail("'" + name + "' wants a value");
        a.options[name] = value;
    }
    return true;
}

std::string Option(const Card_Args& a, const std::string& name, const std::string& otherwise = {}) {
    auto it = a.options.find(name);
    return it == a.options.end() ? otherwise : it->second;
}

// The card commands' state beside a box session: the card state and the undo list the
// image edits go through.
struct Card_Session {
    Card_Session(Program_State& program, Form_Texts& texts, File_State& files, Settings_Image& image,
                 User_Dialogs& dialogs)
        : k{program, texts, files, image, undo, card, log, dialogs, {}} {}
    Undo_List undo;
    Card_State card;
    Debug_Log log;
    Card_Context k;
};

int Box_Card_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err, bool want_output,
                     bool want_file, void (*command)(Settings_Context&, Card_Context&), const char* success) {
    Card_Args a;
    if (!Parse(args, {"--port", "--baud", "-o"}, a, err)) return 2;
    const std::string port = Option(a, "--port");
    const std::string baud = Option(a, "--baud", "115200");
    if (port.empty() || (baud != "115200" && baud != "625000") ||
        want_output != (a.options.count("-o") > 0) || want_file != !a.file.empty()) {
        std::fprintf(err, "quorlen-cli %s: see quorlen-cli --help for its arguments\n", args[0].c_str());
        return 2;
    }
    Box_Session b(port, baud, out, err);
    Card_Session c(b.program, b.texts, b.files, b.image, b.dialogs);
    if (want_file && !Load_Settings_File(a.file, b.image, b.texts, err)) return 2;
    command(b.s, c.k);
    std::fprintf(out, "%s\n", c.card.qx_crw_text.c_str());
    const std::string& status = c.card.qx_crw_text;
    if (status == success) {
        if (want_output && !Save_Settings_File(Option(a, "-o"), b.image, b.texts.txt_File_Description, err))
            return 1;
        return 0;
    }
    const bool no_answer = status.rfind("< No response", 0) == 0 || status.rfind("< Failed to open", 0) == 0;
    if (no_answer) std::fputs(Lines_Of(b.texts.Debug_txt).c_str(), err);
    return no_answer ? 2 : 1;
}

// The memory card commands: the Todos path, on the reader named or the one it picks.
struct Reader_Session {
    Reader_Session(std::FILE* out, std::FILE* err)
        : dialogs(out, err), c(program, texts, files, image, dialogs) {
        Init_Cardbyte(image, c.log);
    }
    Program_State program;
    Form_Texts texts;
    File_State files;
    Settings_Image image;
    Cli_Dialogs dialogs;
    Card_Session c;
    Pcsc_Reader reader;
};

// Chooses the reader and the card type; false, with the reason said, when it can't.
bool Prepare_Reader(Reader_Session& r, const Card_Args& a, std::FILE* err) {
    Todos_Form& f = r.c.card.todos;
    auto type = Card_Type_Named(Option(a, "--type", "SLE4428"));
    if (!type) {
        std::fprintf(err, "quorlen-cli: the card type is SLE4442 or SLE4428\n");
        return false;
    }
    f.CardListCombo = *type;
    f.PIN = Option(a, "--pin");
    Card_Result listed = Init_driverlist(f, r.reader);
    if (!listed.Ok() || f.ReaderlistCombo.empty()) {
        std::fprintf(err, "%s\n",
                     listed.Ok() ? "No card reader is connected to the PC" : listed.text.c_str());
        return false;
    }
    const std::string wanted = Option(a, "--reader");
    if (!wanted.empty()) {
        f.Reader_Index = -1;
        for (std::size_t i = 0; i < f.ReaderlistCombo.size() && f.Reader_Index < 0; ++i)
            if (f.ReaderlistCombo[i] == wanted) f.Reader_Index = static_cast<int>(i);
        for (std::size_t i = 0; i < f.ReaderlistCombo.size() && f.Reader_Index < 0; ++i)
            if (f.ReaderlistCombo[i].find(wanted) != std::string::npos) f.Reader_Index = static_cast<int>(i);
        if (f.Reader_Index < 0) {
            std::fprintf(err, "No reader named '%s'\n", wanted.c_str());
            return false;
        }
    }
    return true;
}

} // namespace

int Card_Check_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    return Box_Card_Command(args, out, err, false, false, Check_Card_Present_cmd_Click,
                            "< Mapchip present >");
}

int Card_Read_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    return Box_Card_Command(args, out, err, true, false, Read_Card_Inbox_cmd_Click, "< Card Read OK >");
}

int Card_Write_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    return Box_Card_Command(args, out, err, false, true, Write_Card_Inbox_cmd_Click, "< Card Write OK >");
}

int Pcsc_List_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    if (args.size() != 1) {
        std::fprintf(err, "quorlen-cli pcsc-list takes no arguments\n");
        return 2;
    }
    Pcsc_Reader reader;
    std::vector<std::string> names;
    Card_Result r = reader.List_Readers(names);
    if (!r.Ok()) {
        std::fprintf(err, "%s\n", r.text.c_str());
        return 2;
    }
    if (names.empty()) std::fprintf(out, "No card reader is connected to the PC\n");
    for (const std::string& name : names)
        std::fprintf(out, "%s\n", name.c_str());
    return names.empty() ? 1 : 0;
}

int Pcsc_Read_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Card_Args a;
    if (!Parse(args, {"--reader", "--type", "--pin", "-o"}, a, err)) return 2;
    if (Option(a, "-o").empty() || !a.file.empty()) {
        std::fprintf(err, "quorlen-cli pcsc-read: want -o FILE.qxs and no other file\n");
        return 2;
    }
    Reader_Session r(out, err);
    if (!Prepare_Reader(r, a, err)) return 2;
    Todos_Form& f = r.c.card.todos;
    // A PIN given here is presented, so that a tuner can test it before a write.
    if (!f.PIN.empty()) {
        VerifyPIN(f, r.reader);
        std::fprintf(out, "%s\n", f.txt_Status.c_str());
        if (f.txt_Status != "< PIN accepted >") return 1;
    }
    cmdReadTodos(r.c.k, r.reader);
    std::fprintf(out, "%s\n%s\n", f.txt_Status.c_str(), r.c.card.txt_TodosStatus.c_str());
    if (r.c.card.txt_TodosStatus != "< Card Read OK >") return 1;
    return Save_Settings_File(Option(a, "-o"), r.image, "Settings loaded from card", err) ? 0 : 1;
}

int Pcsc_Write_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Card_Args a;
    if (!Parse(args, {"--reader", "--type", "--pin"}, a, err)) return 2;
    Reader_Session r(out, err);
    if (!Load_Settings_File(a.file, r.image, r.texts, err)) return 2;
    if (!Prepare_Reader(r, a, err)) return 2;
    cmd_WriteTodos(r.c.k, r.reader);
    std::fprintf(out, "%s\n%s\n", r.c.card.todos.txt_Status.c_str(), r.c.card.txt_TodosStatus.c_str());
    std::fputs(Lines_Of(r.texts.Debug_txt).c_str(), out);
    return r.c.card.txt_TodosStatus == "< Card Write OK >" ? 0 : 1;
}

} // namespace quorlen::cli
