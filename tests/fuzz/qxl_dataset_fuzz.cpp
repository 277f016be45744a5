// The [log_dataset] section of a log: the box's image taken back into the program, and the
// modes read out of it for the log window.

#include "core/ini_file.h"
#include "fuzz_support.h"
#include "logging/log_export.h"
#include "logging/log_signals.h"

#include <cstdlib>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    const std::string text = "[log_dataset]\r\n" + std::string(fuzz::Text(data, size)) + "[end log_dataset]";
    Program_State program;
    Form_Texts texts;
    File_State files;
    Settings_Image image;
    const auto undo = std::make_unique<Undo_List>();
    Ini_File ini("", "");
    Debug_Log debug;
    test::Scripted_Dialogs dialogs;
    Settings_File_Context ctx{program, texts, files, image, *undo, ini, debug, dialogs, {}};
    const Settings_Image before = image;
    if (!cmd_Export_Log_qxs_settings_Click(ctx, text) && image.CardByte != before.CardByte) std::abort();

    Log_State log;
    log.Log_Dataset_Text = text;
    Get_Boost_sensor(log, debug);
    Get_Ignition_mode(log, debug);
    Get_MasterSlave_mode(log, debug);
    return 0;
}
