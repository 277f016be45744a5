#include "cards/card_context.h"

#include "files/settings_files.h"

#include <algorithm>

namespace quorlen {

namespace {

constexpr int Mode_Byte = 1;
constexpr int Slave_Bit = 3;
constexpr int Dataset_Byte = 255;
constexpr int Reserved_Bytes[] = {250, 251};

} // namespace

void Card_Context::Add_Debug(const std::string& line) const {
    std::string& t = texts.Debug_txt;
    if (!t.empty() && t.back() != '\n') t += "\r\n";
    t += line + "\r\n";
}

bool Take_Card_Bytes(Card_Context& k, const std::vector<std::uint8_t>& bytes, int first, int last,
                     std::string& status) {
    Settings_Image& im = k.image;
    std::copy_n(im.CardByte.begin(), k.card.Card_Backup.size(), k.card.Card_Backup.begin());
    last = std::min(last, static_cast<int>(bytes.size()) - 1);
    if (first > last) return false;
    // The question comes before the image changes, so a No leaves nothing to undo.
    if (last >= Dataset_Byte && first <= Dataset_Byte && bytes[Dataset_Byte] != im.DatasetID &&
        k.dialogs.Ask_Ok_Cancel(Dataset_Question(bytes[Dataset_Byte], im.DatasetID)) != Answer::Ok) {
        std::copy(k.card.Card_Backup.begin(), k.card.Card_Backup.end(), im.CardByte.begin());
        status = "< Card Read cancel >";
        return false;
    }
    save_to_undolist(k.undo, im);
    for (int a = first; a <= last; ++a)
        im.CardByte[a] = bytes[static_cast<std::size_t>(a)];
    status = "< Card Read OK >";
    k.program.Settings_File_Name = "New1.qxs";
    k.files.CurrentFileName = "New1.qxs";
    k.texts.Title = k.program.Program_Title + "Settings loaded from card";
    k.Add_Debug("Settings loaded from card");
    k.Update_All();
    return true;
}

std::vector<std::uint8_t> Card_Write_Bytes(Card_Context& k, int first, int last) {
    if (Get_CardByte_bit(k.image, k.log, Mode_Byte, Slave_Bit) != 0)
        k.dialogs.Inform("This setting will set Harvelin to slave");
    std::vector<std::uint8_t> bytes(k.image.CardByte.begin() + first, k.image.CardByte.begin() + last + 1);
    for (int a : Reserved_Bytes)
        if (a >= first && a <= last) bytes[static_cast<std::size_t>(a - first)] = 0;
    return bytes;
}

void Card_Write_Done(Card_Context& k, const std::vector<std::uint8_t>& bytes, int first) {
    for (int a : Reserved_Bytes)
        if (a >= first && a < first + static_cast<int>(bytes.size())) k.image.CardByte[a] = 0;
    const int last = first + static_cast<int>(bytes.size()) - 1;
    k.Add_Debug("Card written, bytes " + std::to_string(first) + " to " + std::to_string(last) +
                ", checksum " + dec2hex(Checksum_Of(bytes.data(), 0, static_cast<int>(bytes.size()) - 1), 4));
}

} // namespace quorlen
