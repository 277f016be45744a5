#pragma once
// The settings image a log carries, taken back into the program.

#include "files/settings_files.h"

#include <string_view>

namespace quorlen {

// Takes the 1024 lines of "[log_dataset]" in `log_text` into CardByte, asking first when the
// dataset ID differs from the preferences'. Without a full section it says "This log file does
// not include any valid box settings" and changes nothing. True when the image was taken.
bool cmd_Export_Log_qxs_settings_Click(Settings_File_Context& ctx, std::string_view log_text);

} // namespace quorlen
