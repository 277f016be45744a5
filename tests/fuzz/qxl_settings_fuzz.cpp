// The [log_settings] section of a log: read into the controls, written back both ways, and
// then used on a short log, where the smoothing, the zoom and the car settings take effect.

#include "fuzz_support.h"
#include "logging/log_file.h"
#include "logging/log_settings.h"
#include "support/log_fixture.h"

namespace {

// Thirty rows of the stand-alone layout, enough for every filter to have work.
std::string Rows() {
    std::string rows = "[log_data]\r\nLa\r\n";
    for (int r = 0; r < 30; ++r) {
        std::string row = "$0" + std::to_string(1000 + 100 * r) + " ";
        for (int c = 2; c <= 42; ++c)
            row += c >= 40 ? "h0" + std::to_string(r % 10) + " " : std::to_string(100 + (r * c) % 900) + " ";
        rows += row + "\r\n";
    }
    return rows + "[end log_data]\r\n";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    static const std::string rows = Rows();
    test::Log_Fixture f;
    f.Load_Defaults(false);
    Log_State& log = *f.state;
    auto c = f.Ctx();
    log.Log_Settings_Text =
        "[log_settings]\r\n" + std::string(fuzz::Text(data, size)) + "\r\n[end log_settings]";
    Read_Log_Settings(c);
    log.Log_Data_Text = rows;
    QX_Log_Data_Read(c);
    Update_Log_Settings_Form(c);
    Read_Log_Settings(c);
    Update_Log_Settings_Setup(c);
    Read_Log_Settings(c);
    QX_Log_Data_Read(c);
    return 0;
}
