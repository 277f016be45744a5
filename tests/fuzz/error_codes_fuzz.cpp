// The box's error counters as a read brings them (bytes 1011 to 1022 of the master's and the
// slave's images) in words, and the answers to clearing them. Answers split at 0x1E.

#include "fuzz_support.h"
#include "link/error_codes.h"
#include "link/read_verify.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    fuzz::Box_Session box(fuzz::Pieces(fuzz::Text(data, size)));
    auto link = box.Link();
    Settings_Context s{link, box.image, box.rw, box.files, box.dialogs, {}};
    Read_Settings_Click(s);
    Show_Error_Code(box.image, box.texts);
    Clear_Err_Counters_cmd_Click(s);
    return 0;
}
