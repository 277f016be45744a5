#pragma once
// What the card commands keep between clicks: their status lines, the image as it stood
// before a card read, the reader the Chipdrive search found, and the Todos II form's fields.

#include "cards/card_reader.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quorlen {

inline constexpr const char* No_Status_Yet = "<------>";

// The fields of frm_TodosII, one by one as the form shows them.
struct Todos_Form {
    std::vector<std::string> ReaderlistCombo;
    int Reader_Index = -1;
    Card_Type CardListCombo = Card_Type::SLE4428; // the Todos path moves the whole image
    int TRAdd = 0;                                // read: start address and length
    int ReadData = 1024;
    int TWAdd = 0; // write: start address, bytes as hex, how many of them
    std::string WriteData;
    int WriteLength = 1;
    std::string PIN;     // hex, presented by Verify and before the main form's write
    std::string New_PIN; // hex, set by ComChp
    std::string txt_Status = No_Status_Yet;
    std::string ATR; // hex, from the last reset
    // The last read: its bytes from Buffer_Start on, and the protect bits if read.
    std::vector<std::uint8_t> Buffer;
    int Buffer_Start = 0;
    std::vector<bool> Protected;
    int VScroll1 = 0; // first row (16 bytes) of the memory view
    bool Card_Connected = false;

    const std::string* Reader() const {
        return Reader_Index >= 0 && Reader_Index < static_cast<int>(ReaderlistCombo.size())
                   ? &ReaderlistCombo[static_cast<std::size_t>(Reader_Index)]
                   : nullptr;
    }
};

struct Card_State {
    std::string qx_crw_text;                          // the card in the box
    std::string txt_Chipdrive_status = No_Status_Yet; // the Chipdrive path
    std::string txt_TodosStatus = No_Status_Yet;      // the Todos path on the main form
    std::array<std::uint8_t, 1024> Card_Backup{};
    // "Connect ready" once the Chipdrive search found a reader, and which one.
    std::string Chipdrive_Status_Text;
    std::string Chipdrive_Reader;
    // Hex; presented before a Chipdrive write when set. A wrong one is forgotten at once, so
    // that it cannot use up the card's tries.
    std::string Card_PIN;
    Todos_Form todos;
};

} // namespace quorlen
