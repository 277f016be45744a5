#include "logging/log_export.h"

#include "core/proc_guard.h"
#include "core/run_error.h"
#include "core/text.h"

namespace quorlen {

namespace {

constexpr const char* Read_Error_Text = "Error. Can not read out the settings from the log file";

} // namespace

bool cmd_Export_Log_qxs_settings_Click(Settings_File_Context& ctx, std::string_view text) {
    Proc_Guard guard(ctx.log, "Export Log qxs settings");
    bool taken = false;
    long lines = -1;
    guard.Step([&] {
        const std::size_t tag = text.find("[log_dataset]");
        const std::size_t end_tag = text.find("[end log_dataset]");
        if (tag == std::string_view::npos || end_tag == std::string_view::npos) return;
        std::size_t start = text.find('\n', tag);
        if (start == std::string_view::npos || start + 1 > end_tag) return;
        ++start;
        lines = 0;
        for (std::size_t at = start; at < end_tag; ++at) {
            if (text[at] != '\n') continue;
            if (++lines > Image_Size) ctx.log.Write_Line(Read_Error_Text);
        }
        if (lines != Image_Size) return;

        std::size_t number = start;
        for (int i = 0; i < Image_Size; ++i) {
            const std::size_t cr = text.find('\r', number);
            const std::size_t stop = cr == std::string_view::npos ? end_tag : cr;
            const double v = Val(text.substr(number, stop - number));
            if (v < 0 || v > 255) throw errors::Overflow();
            ctx.image.TempByte[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(v);
            const std::size_t lf = text.find('\n', number);
            number = lf == std::string_view::npos ? end_tag : lf + 1;
        }
        if (ctx.image.TempByte[255] != ctx.image.DatasetID &&
            ctx.dialogs.Ask_Ok_Cancel(Dataset_Question(ctx.image.TempByte[255], ctx.image.DatasetID)) !=
                Answer::Ok)
            return;
        save_to_undolist(ctx.undo, ctx.image);
        std::copy_n(ctx.image.TempByte.begin(), Image_Size, ctx.image.CardByte.begin());
        ctx.texts.Debug_txt += "Settings loaded from log file " + Now_Time_Text() + "\r\n";
        ctx.files.CurrentFileName = "New1.qxs";
        Set_Title(ctx, "Settings loaded from log file");
        if (ctx.hooks.Update_All) {
            ctx.hooks.Update_All();
            ctx.hooks.Update_All();
        }
        taken = true;
    });
    if (guard.Failed())
        ctx.log.Write_Line(Read_Error_Text);
    else if (lines != Image_Size)
        ctx.dialogs.Show_Message(Icon::Information, "This log file does not include any valid box settings");
    return taken;
}

} // namespace quorlen
