#include "cards/storage_card.h"

#include <algorithm>

namespace quorlen {

Card_Result Storage_Card_Reader::Exchange(const Apdu& command, Apdu_Reply& reply) {
    std::vector<std::uint8_t> raw;
    Card_Result sent = Transmit(command, raw);
    if (!sent.Ok()) return sent;
    auto split = Split_Reply(raw);
    if (!split) return Card_Fail(Card_Error::Failed, "The reader gave no status for the command");
    reply = std::move(*split);
    return {};
}

Card_Result Storage_Card_Reader::Need_Type() const {
    if (!type_known_) return Card_Fail(Card_Error::Refused, "Choose the card type first");
    return {};
}

Card_Result Storage_Card_Reader::Check_Span(int start, int length) const {
    if (start < 0 || length < 0 || start + length > Card_Size(type_))
        return Card_Fail(Card_Error::Refused,
                         "Address beyond the card's memory (" + std::to_string(Card_Size(type_)) + " bytes)");
    return {};
}

Card_Result Storage_Card_Reader::Set_Card_Type(Card_Type type) {
    Apdu_Reply reply;
    Card_Result r = Exchange(Select_Card_Type_Apdu(type), reply);
    if (!r.Ok()) return r;
    r = Status_Word_Result(reply);
    if (!r.Ok()) return r;
    type_ = type;
    type_known_ = true;
    return {};
}

Card_Result Storage_Card_Reader::Verify_PIN(const std::vector<std::uint8_t>& code, int& tries_left) {
    if (Card_Result r = Need_Type(); !r.Ok()) return r;
    if (static_cast<int>(code.size()) != Code_Length(type_))
        return Card_Fail(Card_Error::Wrong_PIN, std::string("The PIN of an ") + Card_Type_Name(type_) +
                                                    " has " + std::to_string(Code_Length(type_) * 2) +
                                                    " hex digits");
    // A card with no presentations left must not be asked again: it would only say no.
    int before = 0;
    if (Card_Result r = Read_Error_Counter(before); !r.Ok()) return r;
    if (before == 0) {
        tries_left = 0;
        return Card_Fail(Card_Error::Locked, "The card is locked: its PIN was refused too often");
    }
    Apdu_Reply reply;
    if (Card_Result r = Exchange(Present_Code_Apdu(code), reply); !r.Ok()) return r;
    auto outcome = Parse_Pin_Reply(type_, reply);
    if (!outcome) return Status_Word_Result(reply);
    tries_left = outcome->tries_left;
    if (outcome->accepted) return {};
    if (tries_left == 0) return Card_Fail(Card_Error::Locked, "Wrong PIN: the card is now locked");
    return Card_Fail(Card_Error::Wrong_PIN, "Wrong PIN: " + std::to_string(tries_left) +
                                                (tries_left == 1 ? " try" : " tries") + " left");
}

Card_Result Storage_Card_Reader::Change_PIN(const std::vector<std::uint8_t>& code) {
    if (Card_Result r = Need_Type(); !r.Ok()) return r;
    if (static_cast<int>(code.size()) != Code_Length(type_))
        return Card_Fail(Card_Error::Refused, std::string("The PIN of an ") + Card_Type_Name(type_) +
                                                  " has " + std::to_string(Code_Length(type_) * 2) +
                                                  " hex digits");
    Apdu_Reply reply;
    if (Card_Result r = Exchange(Change_Code_Apdu(code), reply); !r.Ok()) return r;
    return Status_Word_Result(reply);
}

Card_Result Storage_Card_Reader::Read_Error_Counter(int& tries_left) {
    if (Card_Result r = Need_Type(); !r.Ok()) return r;
    Apdu_Reply reply;
    if (Card_Result r = Exchange(Error_Counter_Apdu(type_), reply); !r.Ok()) return r;
    auto counter = Parse_Error_Counter(type_, reply);
    if (!counter)
        return reply.Ok() ? Card_Fail(Card_Error::Refused, "The card gave no error counter")
                          : Status_Word_Result(reply);
    tries_left = *counter;
    return {};
}

Card_Result Storage_Card_Reader::Read(int start, int length, std::vector<std::uint8_t>& bytes) {
    if (Card_Result r = Need_Type(); !r.Ok()) return r;
    if (Card_Result r = Check_Span(start, length); !r.Ok()) return r;
    bytes.clear();
    for (int at = start; at < start + length; at += Max_Apdu_Data) {
        const int n = std::min(Max_Apdu_Data, start + length - at);
        Apdu_Reply reply;
        if (Card_Result r = Exchange(Read_Memory_Apdu(at, n), reply); !r.Ok()) return r;
        if (Card_Result r = Status_Word_Result(reply); !r.Ok()) return r;
        if (static_cast<int>(reply.data.size()) != n)
            return Card_Fail(Card_Error::Refused, "The card sent " + std::to_string(reply.data.size()) +
                                                      " bytes for " + std::to_string(n) + " asked at " +
                                                      std::to_string(at));
        bytes.insert(bytes.end(), reply.data.begin(), reply.data.end());
    }
    return {};
}

Card_Result Storage_Card_Reader::Write_Runs(std::uint8_t ins, int address,
                                            const std::vector<std::uint8_t>& bytes) {
    if (Card_Result r = Need_Type(); !r.Ok()) return r;
    const int length = static_cast<int>(bytes.size());
    if (Card_Result r = Check_Span(address, length); !r.Ok()) return r;
    for (int done = 0; done < length; done += Max_Apdu_Data) {
        const int n = std::min(Max_Apdu_Data, length - done);
        const std::uint8_t* data = bytes.data() + done;
        const Apdu command = ins == 0xD0 ? Write_Memory_Apdu(address + done, data, n)
                                         : Write_Protection_Apdu(address + done, data, n);
        Apdu_Reply reply;
        if (Card_Result r = Exchange(command, reply); !r.Ok()) return r;
        if (Card_Result r = Status_Word_Result(reply); !r.Ok()) return r;
    }
    return {};
}

Card_Result Storage_Card_Reader::Write_Byte(int address, std::uint8_t value) {
    return Write_Runs(0xD0, address, {value});
}

Card_Result Storage_Card_Reader::Write_Page(int address, const std::vector<std::uint8_t>& bytes) {
    return Write_Runs(0xD0, address, bytes);
}

Card_Result Storage_Card_Reader::Write_Protect_Bits(int address, const std::vector<std::uint8_t>& bytes) {
    return Write_Runs(0xD1, address, bytes);
}

Card_Result Storage_Card_Reader::Read_Protect_Bits(std::vector<bool>& protected_bytes) {
    if (Card_Result r = Need_Type(); !r.Ok()) return r;
    std::vector<std::uint8_t> memory;
    for (const Apdu& command : Read_Protection_Apdus(type_)) {
        Apdu_Reply reply;
        if (Card_Result r = Exchange(command, reply); !r.Ok()) return r;
        if (Card_Result r = Status_Word_Result(reply); !r.Ok()) return r;
        memory.insert(memory.end(), reply.data.begin(), reply.data.end());
    }
    auto flags = Unpack_Protect_Bits(type_, memory);
    if (!flags) return Card_Fail(Card_Error::Refused, "The card's protection memory came short");
    protected_bytes = std::move(*flags);
    return {};
}

} // namespace quorlen
