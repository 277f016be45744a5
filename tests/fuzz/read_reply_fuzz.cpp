// The box's answers to a read or a verify of its settings: the banner, the text image after
// "@" or "#", the binary frame of "bR". The first byte picks the button; the rest, split at
// 0x1E, answers the commands in turn.

#include "fuzz_support.h"
#include "link/read_verify.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    if (size == 0) return 0;
    fuzz::Box_Session box(fuzz::Pieces(fuzz::Text(data + 1, size - 1)));
    for (int a = 0; a < Image_Size; ++a)
        box.image.CardByte[static_cast<std::size_t>(a)] = static_cast<std::uint8_t>(a * 7);
    box.image.DatasetID = 201;
    box.dialogs.answers = {data[0] & 8 ? Answer::Cancel : Answer::Ok};
    auto link = box.Link();
    Settings_Context s{link, box.image, box.rw, box.files, box.dialogs, {}};
    const Settings_Image before = box.image;
    const int button = data[0] & 7;
    switch (button) {
    case 0:
        Read_Settings_Click(s);
        break;
    case 1:
        Read_bin_command_cmd_Click(s);
        break;
    case 2:
        Verify_Settings_Click(s);
        break;
    case 3:
        Verify_bR_Settings_Click(s);
        break;
    case 4:
        Read_Settings_Fast(s);
        break;
    case 5:
        Com_Read_Click(s);
        break;
    case 6:
        Check_Slave_Data_Strategy(s);
        break;
    default:
        Fast_Verify_Click(s);
        break;
    }
    // A compare marks what differs and takes nothing into the image; a read takes it whole or
    // not at all (the old single-button path says nothing when it took it).
    const bool read_finished = box.texts.Debug_txt.find("Read finished") != std::string::npos;
    const bool may_take = button == 5 || (button <= 1 && read_finished);
    if (!may_take && box.image.CardByte != before.CardByte) std::abort();
    return 0;
}
