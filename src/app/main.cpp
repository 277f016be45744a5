// quorlen: the GUI program.
//
// Options (none are needed for normal use):
//   --app-path DIR     keep the program's data in DIR instead of choosing it
//   --unattended       answer questions with their default button, open no file dialog
//   --quit-after-load  start, print the start-up time, and leave by File, Exit
//   --screenshot FILE  start, grab the main window to FILE (PNG), and leave
//   --port PATH        talk to the box on PATH in this run (e.g. the simulator's link)

#include "core/app_path.h"
#include "ui/boost_prog_main.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QIcon>
#include <QStandardPaths>
#include <QTimer>

#include <cstdio>

int main(int argc, char** argv) {
    QElapsedTimer since_start;
    since_start.start();
    QApplication application(argc, argv);
    QApplication::setApplicationName("quorlen");
    // Ties the windows to the installed launcher and its icon (the taskbar, the dock).
    QGuiApplication::setDesktopFileName("com.velmora.Quorlen");
    QApplication::setWindowIcon(QIcon::fromTheme("com.velmora.Quorlen"));

    QCommandLineParser parser;
    parser.setApplicationDescription("RZ400/RZ800M3 Interface Software");
    parser.addHelpOption();
    QCommandLineOption app_path_opt("app-path", "Keep the program's data in DIR.", "DIR");
    QCommandLineOption unattended_opt("unattended", "Answer questions with their default button.");
    QCommandLineOption quit_opt("quit-after-load", "Print the start-up time and leave by File, Exit.");
    QCommandLineOption shot_opt("screenshot", "Grab the main window to FILE and leave.", "FILE");
    QCommandLineOption port_opt("port", "Talk to the box on PATH in this run, whatever the settings say.",
                                "PATH");
    parser.addOptions({app_path_opt, unattended_opt, quit_opt, shot_opt, port_opt});
    parser.process(application);

    quorlen::ui::Start_Options options;
    if (parser.isSet(app_path_opt)) {
        QDir().mkpath(parser.value(app_path_opt));
        options.app_path =
            quorlen::With_One_Trailing_Slash(QDir(parser.value(app_path_opt)).absolutePath().toStdString());
    } else {
        quorlen::App_Path_Inputs in;
        in.executable_dir = QCoreApplication::applicationDirPath().toStdString();
        in.installed_data =
            QDir(QCoreApplication::applicationDirPath() + "/../share/quorlen").absolutePath().toStdString();
        in.user_data = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation).toStdString();
        options.app_path = quorlen::Resolve_App_Path(in);
    }
    if (parser.isSet(port_opt)) options.port = QDir(parser.value(port_opt)).absolutePath().toStdString();
    options.unattended = parser.isSet(unattended_opt) || parser.isSet(quit_opt) || parser.isSet(shot_opt);

    quorlen::ui::BoostProgMain window(options);
    window.Form_Load();

    if (parser.isSet(quit_opt)) {
        std::printf("start-up to ready main window: %lld ms\n",
                    static_cast<long long>(since_start.elapsed()));
        std::fflush(stdout);
        QTimer::singleShot(0, &window, [&window] { window.File_exit_Click(); });
    }
    if (parser.isSet(shot_opt)) {
        QString file = parser.value(shot_opt);
        QTimer::singleShot(300, &window, [&window, file] {
            window.grab().save(file);
            window.File_exit_Click();
        });
    }
    return QApplication::exec();
}
