#include "cli/cli_tables.h"

#include "cli/cli_support.h"

#include "core/app_path.h"
#include "core/atomic_file.h"
#include "files/settings_files.h"

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <unistd.h>

namespace quorlen::cli {

namespace fs = std::filesystem;

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

Cli_Tables::Cli_Tables(std::FILE* err, const std::string& ini) : dialogs(err), err_(err) {
    app.program.App_Path = ini.empty() ? Cli_App_Path() : std::string();
    app.ini = ini.empty() ? Ini_File(app.program.App_Path + "RZ400_800M3.ini", "") : Ini_File(ini, "");
    // A configuration given by name must be there: without it every sensor would be missing.
    if (!ini.empty())
        if (const auto why = Why_Not_A_File(ini)) ini_problem_ = "--ini " + ini + " " + *why;
    // The diagnostics (the selection checks of the load, the failures of an edit) go to a
    // scratch file and then to stderr, so the tuner sees what the program would have logged.
    log_path_ = (fs::temp_directory_path() / ("quorlen-cli-" + std::to_string(::getpid()) + ".log")).string();
    app.log.Open(log_path_);
    {
        Proc_Guard guard(app.log, "Init ini file");
        guard.Step([&] { Load_Sensor_Definitions(app.sensors, app.ini, guard); });
    }
    Init_Cardbyte(app.image, app.log);
}

Cli_Tables::~Cli_Tables() {
    Flush_Diagnostics();
}

void Cli_Tables::Drop_Diagnostics() {
    flushed_ = true;
    app.log.Close();
    std::remove(log_path_.c_str());
}

bool Cli_Tables::Ini_Ok() {
    if (ini_problem_.empty()) return true;
    // Nothing was done to speak of: the load's own diagnostics are dropped.
    Drop_Diagnostics();
    std::fprintf(err_, "quorlen-cli: %s\n", ini_problem_.c_str());
    return false;
}

bool Cli_Tables::Load(const std::string& file) {
    if (!Ini_Ok()) return false;
    const auto content = Load_Qxs_File(file);
    if (!content) {
        Drop_Diagnostics();
        std::fprintf(err_, "%s: %s\n", file.c_str(), Not_Valid_Qxs_Text);
        return false;
    }
    std::copy(content->bytes.begin(), content->bytes.end(), app.image.CardByte.begin());
    comment = content->comment;
    Take_Image();
    return true;
}

void Cli_Tables::Take_Image() {
    Analog_Context analog = app.Analog();
    Init_Analog_from_CardByte(analog);
    Tables_Context ctx = Context();
    Update_Tabs(ctx);
    Show_Right_Tabs(ctx);
    Update_All(ctx);
}

bool Cli_Tables::Save(const std::string& out) {
    Note_Dataset(app.image, err_);
    try {
        Save_Settings_File(app.image, Comment_To_Save(), out);
    } catch (const std::exception& e) {
        std::fprintf(err_, "%s: %s\n", out.c_str(), e.what());
        return false;
    }
    return true;
}

std::string Cli_Tables::Comment_To_Save() const {
    // The reader ends every comment line with CR LF and the writer adds one after the
    // comment: without the reader's last one the comment goes back as it came.
    std::string text = comment;
    if (text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0) text.resize(text.size() - 2);
    return text;
}

void Cli_Tables::Flush_Diagnostics() {
    if (flushed_) return;
    flushed_ = true;
    app.log.Close();
    if (std::FILE* f = std::fopen(log_path_.c_str(), "rb")) {
        int c;
        while ((c = std::fgetc(f)) != EOF)
            if (c != '\r') std::fputc(c, err_);
        std::fclose(f);
    }
    std::remove(log_path_.c_str());
    for (char c : app.texts.Debug_txt)
        if (c != '\r') std::fputc(c, err_);
}

} // namespace quorlen::cli
