#include "cli/show_command.h"

#include "app/app_context.h"
#include "core/app_path.h"
#include "core/text.h"
#include "files/settings_files.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <unistd.h>

namespace quorlen::cli {

namespace {

namespace fs = std::filesystem;

// The message boxes of a load become lines on stderr.
class Stderr_Dialogs final : public User_Dialogs {
public:
    explicit Stderr_Dialogs(std::FILE* err) : err_(err) {}
    void Inform(const std::string& text) override { std::fprintf(err_, "%s\n", text.c_str()); }
    Answer Ask_Ok_Cancel(const std::string&) override { return Answer::Ok; }
    Answer Ask_Yes_No(const std::string&) override { return Answer::Yes; }
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup&) override { return std::nullopt; }
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup&) override { return std::nullopt; }

private:
    std::FILE* err_;
};

// The program's data folder, found as the GUI finds it.
std::string Cli_App_Path() {
    std::error_code ec;
    fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    App_Path_Inputs in;
    in.executable_dir = ec ? "." : exe.parent_path().string();
    in.installed_data = (fs::path(in.executable_dir) / "../share/quorlen").lexically_normal().string();
    const char* xdg = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    if (xdg != nullptr && *xdg != 0)
        in.user_data = std::string(xdg) + "/quorlen";
    else if (home != nullptr)
        in.user_data = std::string(home) + "/.local/share/quorlen";
    return Resolve_App_Path(in);
}

struct Show_Args {
    std::string file;
    std::string table;
    std::optional<int> param;
    std::string ini;
};

std::optional<Show_Args> Parse(const std::vector<std::string>& args) {
    Show_Args a;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        bool has_value = i + 1 < args.size();
        if (arg == "--table" && has_value) {
            a.table = args[++i];
        } else if (arg == "--param" && has_value) {
            auto n = To_Integer(args[++i]);
            if (!n || *n < 0 || *n >= Array_Size) return std::nullopt;
            a.param = static_cast<int>(*n);
        } else if (arg == "--ini" && has_value) {
            a.ini = args[++i];
        } else if (a.file.empty() && arg.rfind("--", 0) != 0) {
            a.file = arg;
        } else {
            return std::nullopt;
        }
    }
    if (a.file.empty() || a.table.empty() == !a.param.has_value()) return std::nullopt;
    return a;
}

void Copy_Log_Lines(const std::string& path, std::FILE* err) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return;
    int c;
    while ((c = std::fgetc(f)) != EOF)
        if (c != '\r') std::fputc(c, err);
    std::fclose(f);
}

} // namespace

int Show_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    auto a = Parse(args);
    std::optional<Table_Id> table;
    if (a && !a->table.empty()) table = Table_By_Name(a->table);
    if (!a || (!a->table.empty() && !table)) {
        std::fputs("usage:\n", err);
        std::fputs(Show_Usage, err);
        return 2;
    }

    App_Context app;
    app.program.App_Path = a->ini.empty() ? Cli_App_Path() : std::string();
    app.ini = a->ini.empty() ? Ini_File(app.program.App_Path + "RZ400_800M3.ini", "") : Ini_File(a->ini, "");

    // The diagnostics of the load (the selection checks) go to a scratch file and then to
    // stderr, so the tuner sees what the program would have logged.
    std::string log_path =
        (fs::temp_directory_path() / ("quorlen-cli-" + std::to_string(::getpid()) + ".log")).string();
    app.log.Open(log_path);
    Stderr_Dialogs dialogs(err);
    {
        Proc_Guard guard(app.log, "Init ini file");
        guard.Step([&] { Load_Sensor_Definitions(app.sensors, app.ini, guard); });
    }
    Init_Cardbyte(app.image, app.log);

    auto content = Load_Qxs_File(a->file);
    if (!content) {
        app.log.Close();
        std::remove(log_path.c_str());
        std::fprintf(err, "%s: %s\n", a->file.c_str(), Not_Valid_Qxs_Text);
        return 1;
    }
    std::copy(content->bytes.begin(), content->bytes.end(), app.image.CardByte.begin());

    Analog_Context analog = app.Analog();
    Init_Analog_from_CardByte(analog);
    Tables_Context ctx = app.Tables(dialogs);
    Update_Tabs(ctx);
    Show_Right_Tabs(ctx);
    Update_All(ctx);
    app.log.Close();
    Copy_Log_Lines(log_path, err);
    std::remove(log_path.c_str());
    for (char c : app.texts.Debug_txt)
        if (c != '\r') std::fputc(c, err);

    if (table) {
        Grid_Shape shape = Grid_Size(ctx, *table);
        for (int r = 0; r < shape.rows; ++r) {
            for (int c = 0; c < shape.cols; ++c) {
                if (c > 0) std::fputc('\t', out);
                std::fputs(Grid_Text(ctx, *table, r, c).c_str(), out);
            }
            std::fputc('\n', out);
        }
        return 0;
    }
    int address = *a->param;
    if (address == 92 || address == 94 || address == 96 || address == 98 ||
        Find_Scaling_Row(address) != nullptr ||
        app.image.ScrollFactor[static_cast<std::size_t>(address)] != 0) {
        Scroll_Shown shown = Main_Scroll_Text(ctx, address);
        std::fprintf(out, "%s\t%s\n", shown.text.c_str(), shown.unit.c_str());
    } else {
        std::fprintf(err, "address %d has no scaling of its own: the byte is shown\n", address);
        std::fprintf(out, "%d\t\n", app.image.CardByte[static_cast<std::size_t>(address)]);
    }
    return 0;
}

} // namespace quorlen::cli
