// The box's answer to "v": the banner's fields, and the session check that asks for it
// (answers split at 0x1E: a box in trouble answers more than once).

#include "fuzz_support.h"
#include "link/banner.h"
#include "link/session.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    const std::string_view text = fuzz::Text(data, size);
    Banner_Complete(text);
    Banner_From_Bootloader(text);
    Box_Info_Text_Of(Read_Banner(text));

    fuzz::Box_Session box(fuzz::Pieces(text));
    auto link = box.Link();
    Check_connection_timer(link);
    Connect_Info_Click(link);
    return 0;
}
