#include "cards/todos.h"

#include "cards/memory_card.h"
#include "cards/storage_apdu.h"
#include "core/proc_guard.h"
#include "core/text.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace quorlen {

namespace {

constexpr int Row_Bytes = 16;

void Say(Todos_Form& f, const Card_Result& r, const std::string& success) {
    f.txt_Status = r.Ok() ? success : "< " + r.text + " >";
}

// The card must be there and of the chosen type before any memory operation.
bool Need_Card(Todos_Form& f, Card_Reader& reader) {
    if (f.Card_Connected && reader.Connected()) return true;
    ConnectCard(f, reader);
    return f.Card_Connected;
}

// WriteData as bytes: hex pairs, as many as WriteLength asks.
std::optional<std::vector<std::uint8_t>> Write_Bytes(Todos_Form& f) {
    auto bytes = Parse_Code_Text(f.WriteData);
    if (!bytes || f.WriteLength < 1 || static_cast<int>(bytes->size()) < f.WriteLength) {
        f.txt_Status = "< WriteData needs " + std::to_string(std::max(f.WriteLength, 1)) + " bytes in hex >";
        return std::nullopt;
    }
    bytes->resize(static_cast<std::size_t>(f.WriteLength));
    return bytes;
}

// Reads the written span back: the card takes a write it is not unlocked for and ignores it.
void Check_Written(Todos_Form& f, Card_Reader& reader, const std::vector<std::uint8_t>& bytes) {
    std::vector<std::uint8_t> back;
    Card_Result r = reader.Read(f.TWAdd, static_cast<int>(bytes.size()), back);
    if (r.Ok() && back != bytes)
        r = Card_Fail(Card_Error::Refused,
                      "The card did not take the bytes: present the PIN, or they are protected");
    Say(f, r, "< Write Data Success! >");
}

bool Load_Card_Image(Card_Context& k, Card_Reader& reader, std::vector<std::uint8_t>& bytes) {
    Todos_Form& f = k.card.todos;
    f.TRAdd = 0;
    f.ReadData = Card_Size(f.CardListCombo);
    ComRead(f, reader);
    if (f.txt_Status != "< Read success! >") return false;
    bytes = f.Buffer;
    return true;
}

} // namespace

Card_Result Init_driverlist(Todos_Form& f, Card_Reader& reader) {
    std::vector<std::string> names;
    Card_Result r = reader.List_Readers(names);
    f.ReaderlistCombo = r.Ok() ? names : std::vector<std::string>{};
    f.Reader_Index = f.ReaderlistCombo.empty() ? -1 : 0;
    for (std::size_t i = 0; i < f.ReaderlistCombo.size(); ++i) {
        if (f.ReaderlistCombo[i].find(Todos_Reader_Name) != std::string::npos) {
            f.Reader_Index = static_cast<int>(i);
            break;
        }
    }
    return r;
}

void ConnectCard(Todos_Form& f, Card_Reader& reader) {
    f.Card_Connected = false;
    const std::string* name = f.Reader();
    if (name == nullptr) {
        f.txt_Status = "< No reader chosen >";
        return;
    }
    Card_Result r = Open_Memory_Card(reader, *name, f.CardListCombo);
    f.Card_Connected = r.Ok();
    Say(f, r, std::string("< ") + Card_Type_Name(f.CardListCombo) + " connected >");
}

void Disconnect(Todos_Form& f, Card_Reader& reader) {
    Say(f, reader.Disconnect(), "< Card disconnected >");
    f.Card_Connected = false;
}

void CardReset(Todos_Form& f, Card_Reader& reader) {
    if (!Need_Card(f, reader)) return;
    std::vector<std::uint8_t> atr;
    Card_Result r = reader.Reset(atr);
    // A reset forgets what the reader was told about the card.
    if (r.Ok()) r = reader.Set_Card_Type(f.CardListCombo);
    f.ATR.clear();
    for (std::uint8_t b : atr)
        f.ATR += (f.ATR.empty() ? "" : " ") + dec2hex(b, 2);
    Say(f, r, "< Reset: " + f.ATR + " >");
}

void ComRead(Todos_Form& f, Card_Reader& reader) {
    if (!Need_Card(f, reader)) return;
    std::vector<std::uint8_t> bytes;
    Card_Result r = reader.Read(f.TRAdd, f.ReadData, bytes);
    if (r.Ok()) {
        f.Buffer = std::move(bytes);
        f.Buffer_Start = f.TRAdd;
        f.VScroll1 = 0;
    }
    Say(f, r, "< Read success! >");
}

void ComWrite(Todos_Form& f, Card_Reader& reader) {
    if (!Need_Card(f, reader)) return;
    auto bytes = Write_Bytes(f);
    if (!bytes) return;
    for (std::size_t i = 0; i < bytes->size(); ++i) {
        Card_Result r = reader.Write_Byte(f.TWAdd + static_cast<int>(i), (*bytes)[i]);
        if (!r.Ok()) return Say(f, r, "");
    }
    Check_Written(f, reader, *bytes);
}

void Pagewrite(Todos_Form& f, Card_Reader& reader) {
    if (!Need_Card(f, reader)) return;
    auto bytes = Write_Bytes(f);
    if (!bytes) return;
    Card_Result r = reader.Write_Page(f.TWAdd, *bytes);
    if (!r.Ok()) return Say(f, r, "");
    Check_Written(f, reader, *bytes);
}

void ReadPB(Todos_Form& f, Card_Reader& reader) {
    if (!Need_Card(f, reader)) return;
    std::vector<bool> flags;
    Card_Result r = reader.Read_Protect_Bits(flags);
    if (r.Ok()) f.Protected = flags;
    const auto count = std::count(flags.begin(), flags.end(), true);
    Say(f, r, "< " + std::to_string(count) + " of " + std::to_string(flags.size()) + " bytes protected >");
}

void WritePB(Todos_Form& f, Card_Reader& reader) {
    if (!Need_Card(f, reader)) return;
    auto bytes = Write_Bytes(f);
    if (!bytes) return;
    Card_Result r = reader.Write_Protect_Bits(f.TWAdd, *bytes);
    std::vector<bool> flags;
    if (r.Ok()) r = reader.Read_Protect_Bits(flags);
    if (r.Ok()) {
        f.Protected = flags;
        for (int a = f.TWAdd; a < f.TWAdd + f.WriteLength; ++a) {
            if (a >= static_cast<int>(flags.size())) {
                r = Card_Fail(Card_Error::Refused, "Byte " + std::to_string(a) + " has no protect bit");
                break;
            }
            if (!flags[static_cast<std::size_t>(a)]) {
                r = Card_Fail(Card_Error::Refused, "Byte " + std::to_string(a) +
                                                       " was not protected: it must equal the card's byte, "
                                                       "and the PIN must be presented");
                break;
            }
        }
    }
    Say(f, r, "< Protect bits written >");
}

void VerifyPIN(Todos_Form& f, Card_Reader& reader) {
    if (!Need_Card(f, reader)) return;
    if (f.PIN.empty()) {
        f.txt_Status = "< Type the PIN first >";
        return;
    }
    Card_Result r = Present_PIN_Text(reader, f.CardListCombo, f.PIN);
    // A refused code is cleared so that a second click cannot use up another try.
    if (r.error == Card_Error::Wrong_PIN || r.error == Card_Error::Locked) f.PIN.clear();
    Say(f, r, "< PIN accepted >");
}

void ComChp(Todos_Form& f, Card_Reader& reader) {
    if (!Need_Card(f, reader)) return;
    auto code = Parse_Code_Text(f.New_PIN);
    if (!code) {
        f.txt_Status = "< The new PIN is hex digits >";
        return;
    }
    Card_Result r = reader.Change_PIN(*code);
    if (r.Ok()) f.PIN = f.New_PIN;
    Say(f, r, "< PIN changed >");
}

std::optional<int> Address_From_Text(const std::string& text, bool hex, Card_Type type) {
    const std::string t = Trim(text);
    if (t.empty() || t.size() > 6) return std::nullopt;
    int value = 0;
    for (char c : t) {
        const int digit = hex ? (std::isxdigit(static_cast<unsigned char>(c)) ? Hex_Digit_Value(c) : -1)
                              : (std::isdigit(static_cast<unsigned char>(c)) ? c - '0' : -1);
        if (digit < 0) return std::nullopt;
        value = value * (hex ? 16 : 10) + digit;
    }
    if (value >= Card_Size(type)) return std::nullopt;
    return value;
}

std::string Address_Hex(int address) {
    return dec2hex(address, 3);
}

int Memory_Rows(const Todos_Form& f) {
    return static_cast<int>((f.Buffer.size() + Row_Bytes - 1) / Row_Bytes);
}

std::string Memory_View_Text(const Todos_Form& f, int rows) {
    std::string text;
    const int first_row = std::clamp(f.VScroll1, 0, std::max(Memory_Rows(f) - 1, 0));
    for (int row = first_row; row < first_row + rows && row < Memory_Rows(f); ++row) {
        const int offset = row * Row_Bytes;
        text += dec2hex(f.Buffer_Start + offset, 3) + ":";
        for (int i = offset; i < offset + Row_Bytes && i < static_cast<int>(f.Buffer.size()); ++i) {
            const int address = f.Buffer_Start + i;
            const bool locked = address < static_cast<int>(f.Protected.size()) &&
                                f.Protected[static_cast<std::size_t>(address)];
            text += " " + dec2hex(f.Buffer[static_cast<std::size_t>(i)], 2) + (locked ? "P" : "");
        }
        text += "\n";
    }
    return text;
}

bool cmd_FindTodos(Card_Context& k, Card_Reader& reader) {
    Proc_Guard guard(k.log, "cmd Find Todos click");
    Card_Result r = Init_driverlist(k.card.todos, reader);
    if (!k.card.todos.ReaderlistCombo.empty()) return true;
    std::string text = "There are no Todos reader/writer connected to the PC";
    if (!r.Ok()) text += "\r\n(" + r.text + ")";
    k.dialogs.Inform(text);
    return false;
}

void cmdReadTodos(Card_Context& k, Card_Reader& reader) {
    Proc_Guard guard(k.log, "cmd Read Todos click");
    Todos_Form& f = k.card.todos;
    if (f.Reader() == nullptr && !cmd_FindTodos(k, reader)) return;
    guard.Step([&] {
        std::vector<std::uint8_t> bytes;
        if (!Load_Card_Image(k, reader, bytes)) return;
        std::string status;
        Take_Card_Bytes(k, bytes, 1, static_cast<int>(bytes.size()) - 1, status);
        k.card.txt_TodosStatus = status;
    });
    if (guard.Failed())
        std::copy(k.card.Card_Backup.begin(), k.card.Card_Backup.end(), k.image.CardByte.begin());
}

void cmd_WriteTodos(Card_Context& k, Card_Reader& reader) {
    Proc_Guard guard(k.log, "cmd Write Todos click");
    Todos_Form& f = k.card.todos;
    if (f.Reader() == nullptr && !cmd_FindTodos(k, reader)) return;
    guard.Step([&] {
        if (!Need_Card(f, reader)) return;
        const int last = Card_Size(f.CardListCombo) - 1;
        const std::vector<std::uint8_t> bytes = Card_Write_Bytes(k, 1, last);
        Card_Result r = Present_PIN_Text(reader, f.CardListCombo, f.PIN);
        if (r.error == Card_Error::Wrong_PIN || r.error == Card_Error::Locked) f.PIN.clear();
        int written = 0;
        if (r.Ok()) r = Write_Memory_Span(reader, 1, bytes, &written);
        Say(f, r, "< Write Data Success! >");
        if (!r.Ok()) return;
        Card_Write_Done(k, bytes, 1);
        k.Add_Debug(std::to_string(written) + " bytes differed from the card");
        k.card.txt_TodosStatus = "< Card Write OK >";
    });
}

void cmd_DisConnectTodos(Card_Context& k, Card_Reader& reader) {
    Disconnect(k.card.todos, reader);
    k.card.txt_TodosStatus = "Remove Map chip";
}

} // namespace quorlen
