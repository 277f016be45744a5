// The box's answers while settings are written: echoes and prompts of the byte-wise write,
// the "&" or "E" of the binary frame, "ue*" of the commit, and the verify around them. The
// first byte picks the write; the rest, split at 0x1E, answers the commands in turn.

#include "fuzz_support.h"
#include "link/write_settings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    if (size == 0) return 0;
    fuzz::Box_Session box(fuzz::Pieces(fuzz::Text(data + 1, size - 1)));
    for (int a = 0; a < Image_Size; ++a)
        box.image.CardByte[static_cast<std::size_t>(a)] = static_cast<std::uint8_t>(a * 3);
    // A few edits to send: a run at the start of a map and single bytes further on.
    for (int a : {300, 301, 302, 303, 700, 1010})
        box.image.ChangedByte[static_cast<std::size_t>(a)] = Changed_Mark;
    // The binary write goes only to a box that the last check found.
    box.state.Connected = (data[0] & 4) != 0;
    auto link = box.Link();
    Settings_Context s{link, box.image, box.rw, box.files, box.dialogs, {}};
    switch (data[0] & 3) {
    case 0:
        Write_Settings_Click(s);
        break;
    case 1:
        Write_bin_command_cmd_Click(s);
        break;
    case 2:
        Write_Settings_Fast_Click(s);
        break;
    default:
        Com_write_Click(s);
        break;
    }
    return 0;
}
