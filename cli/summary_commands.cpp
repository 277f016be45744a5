#include "cli/summary_commands.h"

#include "cli/cli_options.h"
#include "cli/cli_support.h"
#include "cli/cli_tables.h"

#include "app/tune_tools.h"
#include "core/atomic_file.h"
#include "files/qt/text_pages.h"
#include "files/rtf_text.h"
#include "link/qt/qt_port_platform.h"
#include "logging/log_export.h"

#include <QGuiApplication>
#include <QPageSize>
#include <QPrinter>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>

#ifndef QUORLEN_VERSION
#define QUORLEN_VERSION "0.0.0"
#endif

namespace quorlen::cli {

namespace {

bool Is_Log(const std::string& file) {
    const std::filesystem::path ext = std::filesystem::path(file).extension();
    return Equal_No_Case(ext.string(), ".qxl");
}

// Pages want fonts, and fonts want a GUI application: one without a screen is made for the
// time of the print when the tool has none yet.
bool Write_Pdf(const std::string& path, const std::string& text, std::FILE* err) {
    static int argc = 3;
    static char name[] = "quorlen-cli", option[] = "-platform", platform[] = "offscreen";
    static char* argv[] = {name, option, platform, nullptr};
    std::unique_ptr<QGuiApplication> own;
    if (QCoreApplication::instance() == nullptr)
        own = std::make_unique<QGuiApplication>(argc, argv);
    else if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr) {
        std::fprintf(err, "quorlen-cli summary: pages can't be laid out here\n");
        return false;
    }
    // The pages go to a scratch file beside the target that replaces it only when complete.
    const std::string scratch = path + ".part";
    {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(QString::fromStdString(scratch));
        printer.setPageSize(QPageSize(QPageSize::A4));
        printer.setDocName("Setting summary");
        Print_Text(printer, text);
    }
    std::error_code ec;
    std::filesystem::rename(scratch, path, ec);
    if (ec || !File_Exists(path)) {
        std::filesystem::remove(scratch, ec);
        std::fprintf(err, "%s: can't be written\n", path.c_str());
        return false;
    }
    return true;
}

} // namespace

int Summary_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    auto o = Parse_Options(args, {"--ini", "--tables", "--rtf", "--pdf"}, {}, err);
    if (!o) return 2;
    const std::string tables = o->Value("--tables");
    if (o->file.empty() || (o->Has("--tables") && tables != "alt1" && tables != "alt2")) {
        std::fputs("usage:\n" QUORLEN_CLI_SUMMARY_USAGE, err);
        return 2;
    }
    const Summary_Tables_Layout layout = !o->Has("--tables") ? Summary_Tables_Layout::None
                                         : tables == "alt1"  ? Summary_Tables_Layout::Alt1
                                                             : Summary_Tables_Layout::Alt2;

    Cli_Tables loaded(err, o->Value("--ini"));
    App_Context& app = loaded.app;
    app.program.Program_Version = QUORLEN_VERSION;
    std::string text;
    if (Is_Log(o->file)) {
        std::string log_text;
        try {
            log_text = Read_Whole_File(o->file);
        } catch (const std::exception& e) {
            std::fprintf(err, "%s: %s\n", o->file.c_str(), e.what());
            return 1;
        }
        const std::string section = Readable_Section_Of(log_text);
        if (!Readable_Settings_Body(section).empty()) text = section;
        if (layout != Summary_Tables_Layout::None) {
            Settings_File_Context ctx{app.program, app.texts, app.files,      app.image, app.undo,
                                      app.ini,     app.log,   loaded.dialogs, {}};
            if (!cmd_Export_Log_qxs_settings_Click(ctx, log_text)) return 1;
            loaded.Take_Image();
        }
    } else {
        if (!loaded.Load(o->file)) return 1;
        text = Readable_Settings_Text(Summary_Facts_Of(app, Running_System_Name()));
    }
    text += Summary_Table_Section(app, loaded.dialogs, layout);
    loaded.Flush_Diagnostics();

    if (o->Has("--rtf")) {
        try {
            Replace_File_Atomically(o->Value("--rtf"), Text_To_Rtf(text));
        } catch (const std::exception& e) {
            std::fprintf(err, "%s: %s\n", o->Value("--rtf").c_str(), e.what());
            return 1;
        }
    }
    if (o->Has("--pdf") && !Write_Pdf(o->Value("--pdf"), text, err)) return 1;
    if (!o->Has("--rtf") && !o->Has("--pdf")) {
        for (const std::string& line : Split_Lines(text))
            std::fprintf(out, "%s\n", line.c_str());
    }
    return 0;
}

} // namespace quorlen::cli
