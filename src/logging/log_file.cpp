#include "logging/log_file.h"

#include "core/atomic_file.h"
#include "core/proc_guard.h"
#include "core/run_error.h"
#include "image/scaling.h"
#include "logging/log_calc.h"
#include "logging/log_chart.h"
#include "logging/log_settings.h"
#include "logging/log_signals.h"
#include "logging/log_study.h"
#include "logging/log_text.h"

#include <algorithm>

namespace quorlen {

namespace {

constexpr const char* No_Data_Text = "This is a log file without complete log data";
constexpr const char* Not_A_Log_Text = "This is not a log file: ";
constexpr const char* Data_Tag = "[log_data]";
constexpr const char* Data_End_Tag = "[end log_data]";

struct Section {
    std::string Log_State::*text;
    const char* open;
    const char* close;
};

constexpr Section Sections[] = {
    {&Log_State::Log_Sens_Def_Text, "[log_sens_def]", "[end log_sens_def]"},
    {&Log_State::Readable_Settings_Text, "[readable_settings]", "[end readable_settings]"},
    {&Log_State::Log_Dataset_Text, "[log_dataset]", "[end log_dataset]"},
    {&Log_State::Log_Settings_Text, "[log_settings]", "[end log_settings]"},
};

std::string Safe_File_Name(std::string name) {
    for (char& c : name)
        if (std::string_view(":/*?<>|\"").find(c) != std::string_view::npos) c = '-';
    return name;
}

std::string Without_Qxl(const std::string& name) {
    if (name.size() >= 4 && name.compare(name.size() - 4, 4, ".qxl") == 0)
        return name.substr(0, name.size() - 4);
    return name;
}

std::string Part_Text(int counter) {
    char text[16];
    std::snprintf(text, sizeof text, "%03d", counter);
    return text;
}

std::string Path_In(const std::string& dir, const std::string& name) {
    return dir.empty() ? name : dir + "/" + name;
}

} // namespace

bool Looks_Like_Log_File(std::string_view content) {
    if (content.find("\r\n") == std::string_view::npos) return false;
    for (const char* mark : {"[log_settings]", "[log_sens_def]", "[log_data]", "[log_dataset]", "RPM AN1"})
        if (content.find(mark) != std::string_view::npos) return true;
    return false;
}

std::string Log_Length_Text(int rows) {
    return Format_Number(std::max(rows - 1, 0) * 0.05, "0.0") + " s";
}

std::string Folder_Of_Path(const std::string& path) {
    const auto slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::string Title_Of_Path(const std::string& path) {
    const auto slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool QX_Info_Data_File_Test(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "QX Info Data File test ");
    Log_State& log = ctx.log;
    const std::string& all = log.Log_File_Text;
    bool ok = false;

    for (const Section& s : Sections) {
        guard.Step([&] {
            const std::size_t open = all.find(s.open);
            const std::size_t close = open == std::string::npos ? open : all.find(s.close, open);
            if (close != std::string::npos) {
                log.*s.text = all.substr(open, close + std::string_view(s.close).size() - open);
                return;
            }
            log.*s.text = std::string(s.open) + "\r\n" + s.close + "\r\n";
            // Without its own sensors, or without the settings that tie its signals to them, a
            // log is read with the built-in sensors; the settings are rebuilt from the controls.
            if (s.text == &Log_State::Log_Sens_Def_Text || s.text == &Log_State::Log_Settings_Text)
                Load_Default_Log_Sens_Def(log);
        });
    }

    guard.Step([&] {
        std::string& data = log.Log_Data_Text;
        const std::size_t tag = all.find(Data_Tag);
        if (tag != std::string::npos) {
            const std::size_t close = all.find(Data_End_Tag, tag);
            data = all.substr(tag, close == std::string::npos ? std::string::npos : close - tag);
        } else if (const std::size_t old = all.find("RPM AN1"); old != std::string::npos) {
            data = std::string(Data_Tag) + "\r\n" + log.Log_Start_String + "\r\n" + all.substr(old);
        } else {
            data = std::string(Data_Tag) + "\r\n";
        }
        data += std::string(Data_End_Tag) + "\r\n";

        // Where the rows begin: the header of a text log, or the start line of a binary one.
        std::size_t from = data.find("RPM");
        if (from == std::string::npos) {
            from = data.find("\r\nL");
            if (from == std::string::npos) from = data.find("\r\na");
            if (from != std::string::npos) from += 2;
        }
        if (from == std::string::npos) {
            ctx.dialogs.Inform(No_Data_Text);
            return;
        }
        const std::size_t end = data.find(Data_End_Tag);
        const long rows = std::clamp<long>(Count_Char(data, '\n', from, end) - 1, 0, Log_Row_Limit);
        const std::size_t dollar = data.find('$');
        if (dollar != std::string::npos) {
            const std::size_t cr = data.find('\r', dollar);
            log.Log_Row_Columns = static_cast<std::int16_t>(Count_Char(data, ' ', dollar, cr));
        }
        log.form.txt_Log_Length = Log_Length_Text(static_cast<int>(rows));
        if (!log.Reading_Compare) {
            log.window.Zoom_Start = 1;
            log.window.Zoom_Stop = static_cast<int>(rows);
        }
        ok = true;
    });
    return ok;
}

std::string Filter_logfile_errors(std::string_view text, long& count) {
    count = 0;
    const std::size_t header = text.find("#RPM");
    std::size_t hash = text.find('#', header == std::string_view::npos ? 0 : header + 1);
    if (hash == std::string_view::npos) return std::string(text);
    std::string out(text.substr(0, hash));
    out.reserve(text.size());
    long dropped = 0;
    while (hash != std::string_view::npos) {
        ++dropped;
        std::size_t cr = text.find('\r', hash);
        std::size_t next_line = cr == std::string_view::npos ? text.size() : cr + 1;
        if (next_line < text.size() && text[next_line] == '\n') ++next_line;
        hash = text.find('#', next_line);
        out.append(text.substr(next_line, (hash == std::string_view::npos ? text.size() : hash) - next_line));
    }
    count = dropped - 1;
    return out;
}

void QX_Log_Data_Read(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "QX Log Data Read");
    Log_State& log = ctx.log;
    Log_Array& data = log.Reading_Compare ? log.Compare_Data : log.Log_Data;
    const std::string& text = log.Log_Data_Text;

    std::size_t row_length = 0;
    bool has_rows = false;
    guard.Step([&] {
        std::size_t start = text.find("#RPM");
        if (start == std::string::npos) {
            const std::size_t start_line = text.find("\r\nL");
            if (start_line != std::string::npos) {
                const std::size_t lf = text.find('\n', start_line + 2);
                start = lf == std::string::npos ? text.size() : lf + 1;
            } else {
                start = text.find(Data_Tag);
                if (start == std::string::npos) start = 0;
            }
        }
        const std::size_t cr = text.find('\r', start);
        if (cr == std::string::npos) return;
        const std::size_t header_length = cr - start;
        const std::size_t dollar = text.find('$', start);
        if (dollar == std::string::npos) return;
        const std::size_t row_cr = text.find('\r', dollar);
        if (row_cr == std::string::npos) return;
        row_length = row_cr - dollar;
        if (row_length != header_length)
            ctx.dialogs.Show_Message(Icon::Information,
                                     "Length of log header (" + std::to_string(header_length) +
                                         "), does not match log data (" + std::to_string(row_length) + ")");
        log.Log_Row_Columns = static_cast<std::int16_t>(Count_Char(text, ' ', dollar, row_cr));
        has_rows = true;
    });

    int accepted = 0;
    guard.Step([&] {
        Calculate_Data(ctx, "", 0, data);
        if (!has_rows) return;
        long dropped = 0;
        const std::string filtered = Filter_logfile_errors(text, dropped);
        const std::string_view all(filtered);
        std::size_t at = 0;
        while (at < all.size() && accepted < Log_Row_Limit) {
            std::size_t lf = all.find('\n', at);
            std::string_view row = all.substr(at, (lf == std::string_view::npos ? all.size() : lf) - at);
            if (!row.empty() && row.back() == '\r') row.remove_suffix(1);
            if (row.find("RPM") != std::string_view::npos || row.find('l') != std::string_view::npos)
                row = {};
            if (!row.empty() && row.size() == row_length) Calculate_Data(ctx, row, ++accepted, data);
            if (lf == std::string_view::npos) break;
            at = lf + 1;
        }
    });
    guard.Step([&] {
        if (log.Reading_Compare)
            log.Compare_Last_Row = accepted;
        else
            log.Last_Row = accepted;
        Calculate_Extended_Signals(ctx, data, accepted);
        ++log.Data_Version;
    });
    guard.Step([&] {
        if (log.Reading_Compare)
            log.form.txt_Log_Length_compare = Log_Length_Text(accepted);
        else
            log.form.txt_Log_Length = Log_Length_Text(accepted);
    });
}

bool Open_File(Log_Context& ctx, const std::string& path, bool keep_dir) {
    Proc_Guard guard(ctx.debug, "Open File");
    Log_State& log = ctx.log;
    if (ctx.hooks.Check_If_Unsaved_File) ctx.hooks.Check_If_Unsaved_File();
    if (path.empty()) return false;
    log.form.File_Info_Frame_Visible = true;
    if (!keep_dir) log.Log_Dir = Folder_Of_Path(path);

    // A pipe or a device would hold the window forever, and a folder reads as nothing.
    if (const auto why = Why_Not_A_File(path)) {
        ctx.dialogs.Inform(path + " " + *why);
        return false;
    }
    std::string content;
    bool read = false;
    guard.Step([&] {
        content = Read_Whole_File(path);
        read = true;
    });
    if (!read) return false;
    std::string repaired = content;
    const std::size_t dropped = Drop_End_Of_Text(repaired);
    // Whatever the window shows stays when the file is something else.
    if (!Looks_Like_Log_File(repaired)) {
        ctx.dialogs.Inform(Not_A_Log_Text + Title_Of_Path(path));
        return false;
    }

    log.Repaired = false;
    log.Repaired_Bytes = 0;
    log.Repair_Failure.clear();
    log.Log_File_Name = Title_Of_Path(path);
    log.form.Caption = ctx.program.Program_Title + log.Log_File_Name;
    // An end-of-text mark is noise that once reached a file: it goes, and the rows and sections
    // behind it stay. The file as it was stays beside it as the safety copy.
    if (dropped > 0) {
        try {
            Replace_File_Atomically(path + "_repairing_copy.qxl", content);
            Replace_File_Atomically(path, repaired, path + "_repaired.qxl");
            log.Repaired = true;
            log.Repaired_Bytes = static_cast<long>(dropped);
            log.form.Caption += "  *repaired w. " + std::to_string(log.Repaired_Bytes) + " err";
        } catch (const Run_Error& e) {
            log.Repair_Failure = e.what();
            guard.Fail(e.what());
            ctx.dialogs.Inform("This log file holds " + std::to_string(dropped) +
                               " end-of-text characters and can not be repaired: " + e.what() +
                               ". It is shown without them; the file is unchanged.");
        }
        content = std::move(repaired);
    }
    log.Log_File_Text = std::move(content);

    guard.Step([&] { QX_Info_Data_File_Test(ctx); });
    guard.Step([&] { Read_Log_Sens_Def(log); });
    guard.Step([&] { Read_Log_Settings(ctx); });
    guard.Step([&] { QX_Log_Data_Read(ctx); });
    guard.Step([&] {
        // A log opened on its own ends a comparison; its saved window is held inside its rows.
        if (log.Reading_Compare) return;
        Close_Compare(log);
        // A window of one row or none, as the default settings carry, shows the whole log.
        Chart_Window& w = log.window;
        if (w.Zoom_Stop <= w.Zoom_Start) w = Zoom_All(Limits_Of(log));
        w = Settle(w, Limits_Of(log));
    });
    log.Log_File_Text.clear();
    log.Log_File_Text.shrink_to_fit();
    guard.Step([&] {
        if (ctx.hooks.Signals_Changed) ctx.hooks.Signals_Changed();
        if (ctx.hooks.Update_Chart) ctx.hooks.Update_Chart();
    });
    log.Unsaved = false;
    return true;
}

std::string Join_Log_File(const Log_State& log) {
    return log.Log_Settings_Text + "\r\n" + log.Log_Sens_Def_Text + "\r\n" + log.Readable_Settings_Text +
           "\r\n" + log.Log_Data_Text + "\r\n" + log.Log_Dataset_Text;
}

void Save_File(Log_Context& ctx, const std::string& path, bool default_file) {
    Proc_Guard guard(ctx.debug, "Save File");
    Log_State& log = ctx.log;
    if (log.Compare_Mode) {
        ctx.dialogs.Inform("Can not save because two files are open in compare mode.");
        return;
    }
    if (path.empty()) return;
    if (!default_file) {
        log.Log_Dir = Folder_Of_Path(path);
        log.Log_File_Name = Title_Of_Path(path);
        log.form.Caption = ctx.program.Program_Title + log.Log_File_Name;
    }
    guard.Step([&] { Update_All_Log_Setting_Variables(ctx); });
    bool saved = false;
    guard.Step([&] {
        Replace_File_Atomically(path, Join_Log_File(log));
        saved = true;
    });
    if (saved) log.Unsaved = false;
}

void Log_File_Auto_Save(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "Log file auto save");
    Log_State& log = ctx.log;
    if (log.capture.Live_View) return;
    guard.Step([&] {
        std::string name = log.Log_File_Name;
        if (log.Part_Counter == 0)
            name = Safe_File_Name(Without_Qxl(name) + "_" + log.form.txt_Log_Date + "_" +
                                  log.form.txt_Log_time + ".qxl");
        Save_File(ctx, Path_In(log.Log_Dir, name));
    });
}

void Trim_Log_Data(Log_State& log) {
    std::string& t = log.Log_Data_Text;
    const std::size_t lf = t.rfind('\n');
    t.resize(lf == std::string::npos ? 0 : lf + 1);
    t += std::string(Data_End_Tag) + "\r\n";
}

std::string Fast_Save_Long_Log_File(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "Fast save long log file");
    Log_State& log = ctx.log;
    Capture_State& cap = log.capture;
    std::string tail;
    guard.Step([&] {
        if (log.Part_Counter == 0) {
            log.Part_Counter = 1;
            std::string time = log.form.txt_Log_time;
            std::replace(time.begin(), time.end(), ':', '-');
            const std::string stem =
                log.Log_File_Name.substr(0, log.Log_File_Name.size() >= 4 ? log.Log_File_Name.size() - 4 : 0);
            log.Log_File_Name = stem + "_" + log.form.txt_Log_Date + "_" + time + "_" + Part_Text(1) + ".qxl";
        }
        // In a text log the data text runs ahead of the rows taken so far: what follows its
        // last line end begins the next part.
        const std::size_t lf = log.Log_Data_Text.rfind('\n');
        if (!cap.Binary && lf != std::string::npos) tail = log.Log_Data_Text.substr(lf + 1);
        Trim_Log_Data(log);
        std::string& t = log.Log_Data_Text;
        std::size_t at = 0;
        for (long n = 0; n < Log_Row_Limit && at != std::string::npos; ++n) {
            at = t.find('\n', at);
            if (at != std::string::npos) ++at;
        }
        if (at != std::string::npos && at < t.size() && Count_Char(t, '\n', at) > 0) {
            t.resize(at);
            t += std::string(Data_End_Tag) + "\r\n";
        }
        // The part's length is its line count less the tag, start and closing lines, whatever
        // else (a header, the box's messages) stands among the rows.
        log.Last_Row = std::clamp<int>(static_cast<int>(Count_Char(t, '\n')) - 3, 0, Log_Row_Limit);
        log.window.Zoom_Start = 1;
        log.window.Zoom_Stop = log.Last_Row;
        log.form.txt_Log_Length = Log_Length_Text(log.Last_Row);
        log.Unsaved = true;
        Log_File_Auto_Save(ctx);
    });
    guard.Step([&] {
        log.form.txt_File.clear();
        cap.Log_Row_Count = 0;
        log.form.txt_Log_time = ctx.Time_Text();
        log.form.txt_Log_Date = ctx.Date_Text();
        log.Log_Data_Text =
            std::string(Data_Tag) + "\r\n" +
            (cap.Log_Delayed_Start ? "a 'Delayed start error occured" : log.Log_Start_String) + "\r\n" + tail;
        ++log.Part_Counter;
        if (log.Log_File_Name.size() >= 7)
            log.Log_File_Name = log.Log_File_Name.substr(0, log.Log_File_Name.size() - 7) +
                                Part_Text(log.Part_Counter) + ".qxl";
    });
    return tail;
}

std::string Default_Log_Settings_Path(const Log_Context& ctx) {
    return ctx.program.App_Path + Default_Log_Settings_File_Name;
}

void Open_Default_File_Click(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "Open default file click");
    guard.Step([&] {
        if (!File_Exists(Default_Log_Settings_Path(ctx))) return;
        Open_File(ctx, Default_Log_Settings_Path(ctx), true);
        ctx.log.Log_File_Name = ctx.log.setup.txt_Default_Save_Name + ".qxl";
    });
}

void Save_as_Default_File_Click(Log_Context& ctx, bool by_program) {
    Proc_Guard guard(ctx.debug, "Save as default file click");
    if (!by_program &&
        ctx.dialogs.Ask_Yes_No("Do you want to replace existing default log settings?") != Answer::Yes)
        return;
    if (!ctx.log.Log_Wide_Row) {
        ctx.dialogs.Inform("You can not use this file (ver. 3.4.20 or earlier) as default log settings");
        return;
    }
    guard.Step([&] { Save_File(ctx, Default_Log_Settings_Path(ctx), true); });
}

void Load_Log_Defaults(Log_Context& ctx) {
    Load_All_Default_Log_Settings(ctx);
    Open_Default_File_Click(ctx);
}

} // namespace quorlen
