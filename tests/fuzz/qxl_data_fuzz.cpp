// The rows of a log: the box's text rows with its "#" messages, the start and interruption
// marks, rows of odd lengths, as the reader takes them from [log_data].

#include "fuzz_support.h"
#include "logging/log_file.h"
#include "support/log_fixture.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    const std::string_view text = fuzz::Text(data, size);
    long dropped = 0;
    Filter_logfile_errors(text, dropped);

    test::Log_Fixture f;
    f.Load_Defaults(false);
    auto c = f.Ctx();
    f.state->Log_File_Text = std::string(text);
    QX_Info_Data_File_Test(c);
    QX_Log_Data_Read(c);
    f.state->Log_Data_Text = std::string(text);
    QX_Log_Data_Read(c);
    return 0;
}
