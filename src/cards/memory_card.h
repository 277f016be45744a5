#pragma once
// Whole operations on the memory card that both card paths and the command-line tool use:
// take the card, present its PIN, write a span so that the card is proven to hold it.

#include "cards/card_reader.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorlen {

// Connects to the card in `reader` and tells the reader its type.
Card_Result Open_Memory_Card(Card_Reader& reader, const std::string& name, Card_Type type);

// Presents the PIN given as hex text ("FFFFFF"); an empty text presents nothing.
Card_Result Present_PIN_Text(Card_Reader& reader, Card_Type type, const std::string& pin_text);

// Writes `bytes` from `first` on. Only the bytes that differ from the card are sent (the
// card's memory wears with each write), and the span is read back: a card that was not
// unlocked by its PIN, or whose bytes are protected, takes the command and ignores it, and
// this is the only way to know. `written` counts the bytes sent.
Card_Result Write_Memory_Span(Card_Reader& reader, int first, const std::vector<std::uint8_t>& bytes,
                              int* written = nullptr);

} // namespace quorlen
