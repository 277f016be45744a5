#pragma once
// The Todos II path: frm_TodosII with each reader operation by hand, and the main form's
// read and write of the whole image (card bytes 1 to 1023, or to 255 on an SLE4442).

#include "cards/card_context.h"
#include "cards/card_reader.h"

#include <optional>
#include <string>

namespace quorlen {

inline constexpr const char* Todos_Reader_Name = "Todos Argos Mini II";

// Fills ReaderlistCombo and picks a Todos reader when there is one, else the first.
Card_Result Init_driverlist(Todos_Form& f, Card_Reader& reader);

// The form's operations; each says how it went in txt_Status.
void ConnectCard(Todos_Form& f, Card_Reader& reader);
void Disconnect(Todos_Form& f, Card_Reader& reader);
void CardReset(Todos_Form& f, Card_Reader& reader);
void ComRead(Todos_Form& f, Card_Reader& reader);
void ComWrite(Todos_Form& f, Card_Reader& reader);
void Pagewrite(Todos_Form& f, Card_Reader& reader);
void ReadPB(Todos_Form& f, Card_Reader& reader);
void WritePB(Todos_Form& f, Card_Reader& reader);
void VerifyPIN(Todos_Form& f, Card_Reader& reader);
void ComChp(Todos_Form& f, Card_Reader& reader);

// An address field: decimal, or hex when `hex`; nullopt for text that is neither or lies
// outside the card.
std::optional<int> Address_From_Text(const std::string& text, bool hex, Card_Type type);
std::string Address_Hex(int address);
// The memory view: 16 bytes a row from row VScroll1 of the last read, `rows` rows, each with
// its address in hex and "P" after a byte whose protect bit is set.
std::string Memory_View_Text(const Todos_Form& f, int rows);
// Rows the view can scroll through.
int Memory_Rows(const Todos_Form& f);

// The main form. cmd_FindTodos is false, after telling why, when there is no reader at all.
bool cmd_FindTodos(Card_Context& k, Card_Reader& reader);
void cmdReadTodos(Card_Context& k, Card_Reader& reader);
void cmd_WriteTodos(Card_Context& k, Card_Reader& reader);
void cmd_DisConnectTodos(Card_Context& k, Card_Reader& reader);

} // namespace quorlen
