// The box's live log stream as the log window takes it: text rows or binary frames arriving
// in pieces, with the silence watch ticking between them, then the stop and the file.
// The first byte chooses the mode; the rest, split at 0x1E, is what arrives between ticks
// (an empty piece is a moment of silence).

#include "fuzz_support.h"
#include "logging/log_capture.h"
#include "logging/log_file.h"
#include "logging/log_settings.h"
#include "support/log_fixture.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    if (size == 0) return 0;
    test::Log_Fixture f;
    f.Load_Defaults(false);
    Log_State& log = *f.state;
    log.form.Binary_log_opt = data[0] & 1;
    log.setup.check_SettingsInLogg = 0;
    log.setup.check_AutoSave = 0;
    log.Log_Dir = f.dir.Path().string();
    auto c = f.Ctx();
    Start_Logging(c);
    if (!log.capture.Logging_Running) return 0;
    int piece = 0;
    for (const std::string& arriving : fuzz::Pieces(fuzz::Text(data + 1, size - 1))) {
        f.line.incoming += arriving;
        Log_Receive_Event(c);
        if (++piece % 3 == 0) Timer1_Timer(c);
        if (arriving.empty()) timer_LogAlert_Timer(c);
        if (!log.capture.Logging_Running) break;
    }
    if (log.capture.Logging_Running) Start_Logging(c);

    // Noise on the line never reaches the file: the next open would take it for the end.
    Update_All_Log_Setting_Variables(c);
    if (Join_Log_File(log).find_first_of("\x1A\x03") != std::string::npos) std::abort();
    return 0;
}
