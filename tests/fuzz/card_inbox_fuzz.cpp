// The box's answers about the card in its slot: the banner that says a card is there, and the
// answers while its bytes are read or written. The first byte picks the button; the rest,
// split at 0x1E, answers the commands in turn. A read that said nothing of success leaves the
// image alone.

#include "cards/card_inbox.h"
#include "fuzz_support.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    if (size == 0) return 0;
    fuzz::Box_Session box(fuzz::Pieces(fuzz::Text(data + 1, size - 1)));
    for (int a = 0; a < Image_Size; ++a)
        box.image.CardByte[static_cast<std::size_t>(a)] = static_cast<std::uint8_t>(a * 5);
    box.image.DatasetID = 200;
    box.image.CardByte[255] = 200;
    box.dialogs.answers = {data[0] & 4 ? Answer::Cancel : Answer::Ok, Answer::Ok};
    Undo_List undo;
    Card_State card;
    Card_Context k{box.program, box.texts, box.files, box.image, undo, card, box.log, box.dialogs, {}};
    auto link = box.Link();
    Settings_Context s{link, box.image, box.rw, box.files, box.dialogs, {}};
    const Settings_Image before = box.image;
    switch (data[0] & 3) {
    case 0:
        Check_Card_Present_cmd_Click(s, k);
        break;
    case 1:
        Read_Card_Inbox_cmd_Click(s, k);
        break;
    default:
        Write_Card_Inbox_cmd_Click(s, k);
        break;
    }
    // Only a read takes bytes into the image.
    if ((data[0] & 3) != 1 && box.image.CardByte != before.CardByte) std::abort();
    return 0;
}
