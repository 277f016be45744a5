#include "logging/log_study.h"

#include "core/proc_guard.h"
#include "logging/log_chart.h"
#include "logging/log_file.h"
#include "logging/log_settings.h"
#include "logging/log_signals.h"

#include <memory>

namespace quorlen {

bool Open_Compare_File(Log_Context& ctx, const std::string& path) {
    Proc_Guard guard(ctx.debug, "Open compare file");
    Log_State& log = ctx.log;
    if (log.capture.Logging_Running || path.empty()) return false;

    // The reader puts the file's sections, sensors and settings where the log's stand; the
    // log's own are put back once the compared rows are calculated.
    auto kept = std::make_unique<Log_State>(log);
    Log_Context reading = ctx;
    reading.hooks.Signals_Changed = nullptr;
    reading.hooks.Update_Chart = nullptr;
    log.Reading_Compare = true;
    bool opened = false;
    guard.Step([&] { opened = Open_File(reading, path, true); });
    const int rows = log.Compare_Last_Row;
    if (!opened || rows <= 0) {
        log = std::move(*kept);
        return false;
    }
    Log_Array compare = std::move(log.Compare_Data);
    const Log_Form read_form = log.form;
    log = std::move(*kept);
    log.Compare_Data = std::move(compare);
    log.Compare_Last_Row = rows;
    log.Compare_Mode = true;
    log.Compare_File_Name = Title_Of_Path(path);
    log.form.txt_Log_Date_compare = read_form.txt_Log_Date_compare;
    log.form.txt_Log_time_compare = read_form.txt_Log_time_compare;
    log.form.txt_Log_Length_compare = read_form.txt_Log_Length_compare;
    log.form.txt_Log_Free_Text_compare = read_form.txt_Log_Free_Text_compare;
    log.form.txt_Log_Free_Text_compare_Visible = true;
    log.window = Zoom_All(Limits_Of(log));
    ++log.Data_Version;
    guard.Step([&] {
        if (ctx.hooks.Update_Chart) ctx.hooks.Update_Chart();
    });
    return true;
}

void Close_Compare(Log_State& log) {
    if (!log.Compare_Mode) return;
    log.Compare_Mode = false;
    log.Compare_Data.Clear();
    log.Compare_Last_Row = 0;
    log.Compare_File_Name.clear();
    Log_Form& f = log.form;
    f.txt_Log_Date_compare.clear();
    f.txt_Log_time_compare.clear();
    f.txt_Log_Length_compare.clear();
    f.txt_Log_Free_Text_compare.clear();
    f.txt_Log_Free_Text_compare_Visible = false;
    log.window = Settle(log.window, Limits_Of(log));
    ++log.Data_Version;
}

void Check_If_Unsaved_File(Log_Context& ctx) {
    Log_State& log = ctx.log;
    if (!log.Unsaved || log.Reading_Compare) return;
    if (ctx.dialogs.Ask_Yes_No(Unsaved_Log_Question) != Answer::Yes) return;
    File_Dialog_Setup setup;
    setup.initial_dir = log.Log_Dir;
    setup.filter = Log_File_Filter;
    setup.default_ext = "qxl";
    setup.confirm_overwrite = true;
    setup.initial_name = log.Log_File_Name;
    const auto picked = ctx.dialogs.Pick_Save_File(setup);
    if (!picked || picked->full_name.empty()) return;
    // The log keeps its own sections while a file is compared with it, so it can be saved.
    const bool compare = log.Compare_Mode;
    log.Compare_Mode = false;
    Save_File(ctx, picked->full_name);
    log.Compare_Mode = compare;
}

void Apply_Log_Setup(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "Update Log Settings");
    Log_State& log = ctx.log;
    guard.Step([&] { Update_Log_Sens_Tab(log); });
    guard.Step([&] { Update_Log_Settings_Setup(ctx); });
    log.plan_ready = false;
    if (log.capture.Logging_Running || log.Last_Row <= 0) return;
    guard.Step([&] {
        // A log calculated again says nothing it didn't say when it was opened.
        Silent_Dialogs quiet;
        Log_Context again{log,       ctx.image, ctx.program, ctx.texts, ctx.flags,
                          ctx.debug, quiet,     ctx.line,    ctx.port,  ctx.hooks};
        log.Reading_Compare = false;
        QX_Log_Data_Read(again);
    });
    log.window = Settle(log.window, Limits_Of(log));
    log.Unsaved = true;
}

} // namespace quorlen
