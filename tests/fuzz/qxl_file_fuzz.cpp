// A log file as File, Open reads it (a damaged one is mended), then saved and read again,
// with the numbers that come from its settings section of the saved box image.

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

    Get_Boost_sensor(*f.state, f.debug);
    Get_Ignition_mode(*f.state, f.debug);
    Get_MasterSlave_mode(*f.state, f.debug);

    const std::string saved = f.dir.File("saved.qxl");
    Save_File(c, saved);
    Open_File(c, saved);
    return 0;
}
