// A log file as File, Open reads it (a damaged one is mended), then saved and read again;
// the readable settings a summary takes from it, and the modes read from its box image.

#include "files/settings_summary.h"
#include "fuzz_support.h"
#include "logging/log_file.h"
#include "logging/log_signals.h"
#include "support/log_fixture.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    test::Log_Fixture f;
    f.Load_Defaults(false);
    const std::string path = f.dir.File("fuzz.qxl");
    test::Write_File(path, std::string(fuzz::Text(data, size)));
    auto c = f.Ctx();
    Open_File(c, path);

    // What was read carries no end-of-text character: the next save would put it back.
    const std::string joined = Join_Log_File(*f.state);
    if (joined.find_first_of("\x1A\x03") != std::string::npos) std::abort();

    // The readable settings it carries, as the summary of a log takes them.
    Readable_Settings_Body(Readable_Section_Of(std::string(fuzz::Text(data, size))));
    Get_Boost_sensor(*f.state, f.debug);
    Get_Ignition_mode(*f.state, f.debug);
    Get_MasterSlave_mode(*f.state, f.debug);

    const std::string saved = f.dir.File("saved.qxl");
    Save_File(c, saved);
    Open_File(c, saved);
    return 0;
}
