#include "cards/storage_apdu.h"

#include <bit>
#include <cctype>
#include <cstdio>
#include <string>

namespace quorlen {

namespace {

constexpr std::uint8_t Reader_Class = 0xFF;

Apdu Header(std::uint8_t ins, int address, int length) {
    return {Reader_Class, ins, static_cast<std::uint8_t>((address >> 8) & 0xFF),
            static_cast<std::uint8_t>(address & 0xFF), static_cast<std::uint8_t>(length & 0xFF)};
}

// Built byte by byte: GCC 12 warns falsely about inserting into a vector made from a list.
Apdu With_Data(std::uint8_t ins, int p1, int p2, const std::uint8_t* bytes, std::size_t length) {
    Apdu apdu;
    apdu.reserve(5 + length);
    for (std::uint8_t b : {Reader_Class, ins, static_cast<std::uint8_t>(p1), static_cast<std::uint8_t>(p2),
                           static_cast<std::uint8_t>(length & 0xFF)})
        apdu.push_back(b);
    for (std::size_t i = 0; i < length; ++i)
        apdu.push_back(bytes[i]);
    return apdu;
}

Apdu With_Data(std::uint8_t ins, int address, const std::uint8_t* bytes, int length) {
    return With_Data(ins, (address >> 8) & 0xFF, address & 0xFF, bytes, static_cast<std::size_t>(length));
}

int Full_Counter(Card_Type type) {
    return type == Card_Type::SLE4442 ? 0x07 : 0xFF;
}

} // namespace

int Card_Size(Card_Type type) {
    return type == Card_Type::SLE4442 ? 256 : 1024;
}

int Code_Length(Card_Type type) {
    return type == Card_Type::SLE4442 ? 3 : 2;
}

int Full_Tries(Card_Type type) {
    return std::popcount(static_cast<unsigned>(Full_Counter(type)));
}

const char* Card_Type_Name(Card_Type type) {
    return type == Card_Type::SLE4442 ? "SLE4442" : "SLE4428";
}

std::optional<Card_Type> Card_Type_Named(std::string_view name) {
    std::string upper;
    for (char c : name)
        upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (upper == "SLE4442") return Card_Type::SLE4442;
    if (upper == "SLE4428") return Card_Type::SLE4428;
    return std::nullopt;
}

Card_Result Card_Fail(Card_Error error, std::string text) {
    return Card_Result{error, std::move(text)};
}

Apdu Select_Card_Type_Apdu(Card_Type type) {
    return {Reader_Class, 0xA4, 0x00,
            0x00,         0x01, static_cast<std::uint8_t>(type == Card_Type::SLE4442 ? 0x06 : 0x05)};
}

Apdu Read_Memory_Apdu(int address, int length) {
    return Header(0xB0, address, length);
}

Apdu Write_Memory_Apdu(int address, const std::uint8_t* bytes, int length) {
    return With_Data(0xD0, address, bytes, length);
}

Apdu Write_Protection_Apdu(int address, const std::uint8_t* bytes, int length) {
    return With_Data(0xD1, address, bytes, length);
}

Apdu Present_Code_Apdu(const std::vector<std::uint8_t>& code) {
    return With_Data(0x20, 0x00, 0x00, code.data(), code.size());
}

Apdu Change_Code_Apdu(const std::vector<std::uint8_t>& code) {
    return With_Data(0xD2, 0x00, 0x01, code.data(), code.size());
}

Apdu Error_Counter_Apdu(Card_Type type) {
    return {Reader_Class, 0xB1, 0x00, 0x00, static_cast<std::uint8_t>(Code_Length(type) + 1)};
}

std::vector<Apdu> Read_Protection_Apdus(Card_Type type) {
    if (type == Card_Type::SLE4442) return {{Reader_Class, 0xB2, 0x00, 0x00, 0x04}};
    std::vector<Apdu> pages;
    for (std::uint8_t page = 0; page < 4; ++page)
        pages.push_back({Reader_Class, 0xB2, page, 0x00, 0x20});
    return pages;
}

std::optional<Apdu_Reply> Split_Reply(const std::vector<std::uint8_t>& reply) {
    if (reply.size() < 2) return std::nullopt;
    Apdu_Reply r;
    r.data.assign(reply.begin(), reply.end() - 2);
    r.sw1 = reply[reply.size() - 2];
    r.sw2 = reply[reply.size() - 1];
    return r;
}

Card_Result Status_Word_Result(const Apdu_Reply& reply) {
    if (reply.Ok()) return {};
    char sw[8];
    std::snprintf(sw, sizeof sw, "%02X %02X", reply.sw1, reply.sw2);
    const std::string code = std::string(" (") + sw + ")";
    if (reply.sw1 == 0x6A && reply.sw2 == 0x81)
        return Card_Fail(Card_Error::Wrong_Type, "The card is not of the type chosen" + code);
    if (reply.sw1 == 0x69 && reply.sw2 == 0x82)
        return Card_Fail(Card_Error::Refused, "The card wants its PIN first" + code);
    if (reply.sw1 == 0x69 && reply.sw2 == 0x86)
        return Card_Fail(Card_Error::Refused, "The reader was not told the card type" + code);
    if (reply.sw1 == 0x6B || (reply.sw1 == 0x6A && reply.sw2 == 0x86))
        return Card_Fail(Card_Error::Refused, "Address beyond the card's memory" + code);
    if (reply.sw1 == 0x6D || reply.sw1 == 0x6E)
        return Card_Fail(Card_Error::Wrong_Type, "The reader does not take memory card commands" + code);
    return Card_Fail(Card_Error::Refused, "The card refused the command" + code);
}

std::optional<Pin_Outcome> Parse_Pin_Reply(Card_Type type, const Apdu_Reply& reply) {
    if (reply.sw1 != 0x90 || !reply.data.empty()) return std::nullopt;
    const int full = Full_Counter(type);
    const int counter = reply.sw2 & full;
    return Pin_Outcome{counter == full, std::popcount(static_cast<unsigned>(counter))};
}

std::optional<int> Parse_Error_Counter(Card_Type type, const Apdu_Reply& reply) {
    if (!reply.Ok() || reply.data.empty()) return std::nullopt;
    return std::popcount(static_cast<unsigned>(reply.data[0] & Full_Counter(type)));
}

std::optional<std::vector<bool>> Unpack_Protect_Bits(Card_Type type,
                                                     const std::vector<std::uint8_t>& memory) {
    // The SLE4442 protects its first 32 bytes one by one; the SLE4428 every byte.
    const std::size_t count = type == Card_Type::SLE4442 ? 32 : 1024;
    if (memory.size() < count / 8) return std::nullopt;
    std::vector<bool> flags(count);
    for (std::size_t a = 0; a < count; ++a)
        flags[a] = ((memory[a / 8] >> (a % 8)) & 1) == 0;
    return flags;
}

std::optional<std::vector<std::uint8_t>> Parse_Code_Text(std::string_view text) {
    std::string digits;
    for (char c : text) {
        if (c == ' ' || c == ':') continue;
        if (!std::isxdigit(static_cast<unsigned char>(c))) return std::nullopt;
        digits += c;
    }
    if (digits.empty() || digits.size() % 2 != 0) return std::nullopt;
    std::vector<std::uint8_t> code;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        code.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return code;
}

} // namespace quorlen
