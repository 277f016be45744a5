#pragma once
// The storage-card commands that PC/SC readers of synchronous memory cards accept: the
// reader's own class FF, with which it drives the card's wires itself. Building them and
// reading the replies are plain functions, so every reply a card or reader may give can be
// tested (and fuzzed) without either.

#include "cards/card_reader.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorlen {

using Apdu = std::vector<std::uint8_t>;

// Longest run one read or write moves; the length byte of the command caps it below 256.
inline constexpr int Max_Apdu_Data = 128;

Apdu Select_Card_Type_Apdu(Card_Type type);
Apdu Read_Memory_Apdu(int address, int length);
Apdu Write_Memory_Apdu(int address, const std::uint8_t* bytes, int length);
Apdu Write_Protection_Apdu(int address, const std::uint8_t* bytes, int length);
Apdu Present_Code_Apdu(const std::vector<std::uint8_t>& code);
Apdu Change_Code_Apdu(const std::vector<std::uint8_t>& code);
Apdu Error_Counter_Apdu(Card_Type type);
// The SLE4442 has one block of protection memory; the SLE4428 four pages of 32 bytes.
std::vector<Apdu> Read_Protection_Apdus(Card_Type type);

struct Apdu_Reply {
    std::vector<std::uint8_t> data;
    std::uint8_t sw1 = 0;
    std::uint8_t sw2 = 0;
    bool Ok() const { return sw1 == 0x90 && sw2 == 0x00; }
};

// Data and status word; nullopt for a reply shorter than a status word.
std::optional<Apdu_Reply> Split_Reply(const std::vector<std::uint8_t>& reply);

// What a status word other than 90 00 means, for the person at the screen.
Card_Result Status_Word_Result(const Apdu_Reply& reply);

// The reply to a presented code is 90 and the card's error counter: all bits set means the
// code was right. `tries_left` is the number of bits still set.
struct Pin_Outcome {
    bool accepted = false;
    int tries_left = 0;
};
std::optional<Pin_Outcome> Parse_Pin_Reply(Card_Type type, const Apdu_Reply& reply);
// The error counter is the first byte of its reply.
std::optional<int> Parse_Error_Counter(Card_Type type, const Apdu_Reply& reply);
// Protection memory to one flag a byte (a cleared bit protects its byte); nullopt when the
// reply holds fewer bytes than the card has protect bits for.
std::optional<std::vector<bool>> Unpack_Protect_Bits(Card_Type type, const std::vector<std::uint8_t>& memory);

// "FFFFFF", "ff ff ff": the code's bytes; nullopt unless it is whole hex pairs.
std::optional<std::vector<std::uint8_t>> Parse_Code_Text(std::string_view text);

} // namespace quorlen
