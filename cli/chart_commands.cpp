#include "cli/chart_commands.h"

#include "cli/cli_support.h"
#include "cli/log_session.h"
#include "core/text.h"
#include "logging/log_chart.h"
#include "logging/log_signals.h"
#include "logging/log_study.h"
#include "ui/log_chart_view.h"

#include <QApplication>
#include <QChart>

#include <algorithm>
#include <memory>

namespace quorlen::cli {

namespace {

struct Chart_Args {
    std::string file, compare, output;
    std::vector<std::string> names, second;
    long from = 0, to = 0;
    bool x_axis = false;
    Reference_Signal reference = Reference_Signal::RPM;
    int width = 1200, height = 700;
};

void Split_Names(const std::string& list, std::vector<std::string>& names) {
    std::size_t at = 0;
    while (at <= list.size()) {
        const std::size_t comma = list.find(',', at);
        const std::string one =
            Trim(list.substr(at, comma == std::string::npos ? std::string::npos : comma - at));
        if (!one.empty()) names.push_back(one);
        if (comma == std::string::npos) break;
        at = comma + 1;
    }
}

bool Parse(const std::vector<std::string>& args, Chart_Args& a, std::FILE* err) {
    const auto fail = [&](const std::string& what) {
        std::fprintf(err, "quorlen-cli log-chart: %s (see quorlen-cli --help)\n", what.c_str());
        return false;
    };
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        if (name.empty() || name[0] != '-') {
            if (!a.file.empty()) return fail("more than one log file");
            a.file = name;
            continue;
        }
        const std::string value = Take_Option_Value(args, i, name);
        if (value.empty()) return fail("'" + name + "' wants a value");
        if (name == "--signals" || name == "--second") {
            Split_Names(value, name == "--signals" ? a.names : a.second);
        } else if (name == "--from" || name == "--to") {
            const auto row = To_Integer(value);
            if (!row || *row < 1 || *row > Log_Row_Limit) return fail(name + " wants a row from 1 to 7000");
            (name == "--from" ? a.from : a.to) = *row;
        } else if (name == "--compare") {
            a.compare = value;
        } else if (name == "--x") {
            if (!Equal_No_Case(value, "RPM") && !Equal_No_Case(value, "MAP"))
                return fail("--x wants RPM or MAP");
            a.x_axis = true;
            a.reference = Equal_No_Case(value, "MAP") ? Reference_Signal::MAP : Reference_Signal::RPM;
        } else if (name == "--size") {
            const auto x = value.find('x');
            const auto w = To_Integer(value.substr(0, x)),
                       h = To_Integer(x == std::string::npos ? "" : value.substr(x + 1));
            if (!w || !h || *w < 200 || *h < 150 || *w > 8000 || *h > 8000)
                return fail("--size wants WIDTHxHEIGHT, from 200x150 to 8000x8000");
            a.width = static_cast<int>(*w);
            a.height = static_cast<int>(*h);
        } else if (name == "-o" || name == "--output") {
            a.output = value;
        } else {
            return fail("unexpected '" + args[i] + "'");
        }
    }
    if (a.file.empty() || a.output.empty() || (a.names.empty() && a.second.empty()))
        return fail("want FILE.qxl, --signals NAME,... and -o OUT");
    if ((a.from != 0) != (a.to != 0)) return fail("--from and --to go together");
    if (!Ends_With_No_Case(a.output, ".png") && !Ends_With_No_Case(a.output, ".bmp") &&
        !Ends_With_No_Case(a.output, ".csv"))
        return fail("-o wants a name ending in .png, .bmp or .csv");
    return true;
}

// The signal a name stands for: its name as shown, its label, its sensor's name, or its number.
int Signal_Named(const Log_State& log, const std::string& name) {
    const int count = std::min(log.columns.Signals, Log_Signal_Count);
    for (int i = 0; i < count; ++i) {
        const auto& c = log.setup.controls[static_cast<std::size_t>(i)];
        if (Equal_No_Case(name, Shown_Signal_Name(log, i)) || Equal_No_Case(name, c.label) ||
            Equal_No_Case(name, log.Log_Signal_Tab[static_cast<std::size_t>(i)].name))
            return i;
    }
    if (const auto number = To_Integer(name); number && *number >= 0 && *number < count)
        return static_cast<int>(*number);
    return -1;
}

// Qt Charts draws only with a widget application; the tool makes one that shows nothing, and
// keeps the platform's remarks about windows it never shows off the tool's output.
class Offscreen_Application {
public:
    Offscreen_Application() {
        if (QCoreApplication::instance() != nullptr) return;
        qputenv("QT_QPA_PLATFORM", "offscreen");
        previous_ =
            qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
                if (type == QtCriticalMsg || type == QtFatalMsg)
                    std::fprintf(stderr, "%s\n", qPrintable(text));
            });
        previous_set_ = true;
        app_ = std::make_unique<QApplication>(argc_, argv_);
    }
    ~Offscreen_Application() {
        app_.reset();
        if (previous_set_) qInstallMessageHandler(previous_);
    }
    Offscreen_Application(const Offscreen_Application&) = delete;
    Offscreen_Application& operator=(const Offscreen_Application&) = delete;
    static bool Ready() { return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr; }

private:
    static inline char name_[] = "quorlen-cli";
    static inline char* argv_[] = {name_, nullptr};
    static inline int argc_ = 1;
    QtMessageHandler previous_ = nullptr;
    bool previous_set_ = false;
    std::unique_ptr<QApplication> app_;
};

bool Draw(const Log_State& log, const Chart_Args& a, std::FILE* err) {
    Offscreen_Application app;
    if (!Offscreen_Application::Ready()) {
        std::fprintf(err, "quorlen-cli log-chart: no widget application to draw with\n");
        return false;
    }
    ui::Log_Chart_View view;
    view.setAttribute(Qt::WA_DontShowOnScreen);
    view.resize(a.width, a.height);
    view.show();
    QCoreApplication::processEvents();
    const ui::Chart_Look look = ui::Look_Of(log.setup);
    std::string title;
    if (a.x_axis) {
        view.Show_Xy(Rpm_Graph(log, a.reference, view.Buckets(), a.height), look);
        title = Rpm_Graph_Caption(log);
    } else {
        Chart_Builder builder;
        Chart_Options options;
        options.width = view.Buckets();
        options.x_in_rows = View_On(log.setup, Rows_View);
        view.Show(builder.Build(log, options), look);
        title = log.Log_File_Name + (log.Compare_Mode ? "  compared with  " + log.Compare_File_Name : "");
    }
    title +=
        "   rows " + std::to_string(log.window.Zoom_Start) + " to " + std::to_string(log.window.Zoom_Stop);
    view.chart()->setTitle(QString::fromLatin1(title.c_str()));
    QCoreApplication::processEvents();
    return ui::Save_Chart_Picture(view, a.output);
}

} // namespace

int Log_Chart_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Chart_Args a;
    if (!Parse(args, a, err)) return 2;
    Log_Session s(err);
    if (!Open_Log(s, a.file, err)) return 1;
    Log_State& log = *s.log;
    if (log.Last_Row <= 0) {
        std::fprintf(err, "%s: no rows to draw\n", a.file.c_str());
        return 1;
    }
    for (auto& c : log.setup.controls)
        c.view = 0;
    if (!a.second.empty())
        for (auto& c : log.setup.controls)
            c.secondary = 0;
    std::vector<std::string> all = a.names;
    all.insert(all.end(), a.second.begin(), a.second.end());
    for (const std::string& name : all) {
        const int signal = Signal_Named(log, name);
        if (signal < 0) {
            std::fprintf(err, "quorlen-cli log-chart: the log has no signal '%s'; it has:", name.c_str());
            for (int i = 0; i < std::min(log.columns.Signals, Log_Signal_Count); ++i)
                std::fprintf(err, "%s %s", i == 0 ? "" : ",", Shown_Signal_Name(log, i).c_str());
            std::fprintf(err, "\n");
            return 2;
        }
        auto& c = log.setup.controls[static_cast<std::size_t>(signal)];
        c.view = 1;
        c.log_signal = c.log_signal == 0 ? 1 : c.log_signal;
        if (std::find(a.second.begin(), a.second.end(), name) != a.second.end()) c.secondary = 1;
    }
    if (!a.compare.empty()) {
        if (const auto why = Why_Not_A_File(a.compare)) {
            std::fprintf(err, "%s %s\n", a.compare.c_str(), why->c_str());
            return 1;
        }
        auto c = s.Ctx();
        if (!Open_Compare_File(c, a.compare)) {
            std::fprintf(err, "%s: no rows to compare\n", a.compare.c_str());
            return 1;
        }
    }
    const Window_Limits limits = Limits_Of(log);
    log.window = Zoom_All(limits);
    if (a.from != 0)
        log.window = Zoom_To_Rows(log.window, limits, static_cast<int>(a.from), static_cast<int>(a.to));

    bool written = false;
    if (Ends_With_No_Case(a.output, ".csv")) {
        try {
            Replace_File_Atomically(a.output, a.x_axis ? Rpm_Graph_Csv(log, a.reference) : Chart_Csv(log));
            written = true;
        } catch (const std::exception& e) {
            std::fprintf(err, "%s: %s\n", a.output.c_str(), e.what());
        }
    } else {
        written = Draw(log, a, err);
        if (!written) std::fprintf(err, "%s: could not be written\n", a.output.c_str());
    }
    if (!written) return 1;
    std::fprintf(out, "rows: %d to %d\nfile: %s\n", log.window.Zoom_Start, log.window.Zoom_Stop,
                 a.output.c_str());
    if (log.Compare_Mode)
        std::fprintf(out, "compared rows: %d to %d\n", log.window.Compare_Start, log.window.Compare_Stop);
    return 0;
}

} // namespace quorlen::cli
