#include "cards/memory_card.h"

#include "cards/storage_apdu.h"

namespace quorlen {

Card_Result Open_Memory_Card(Card_Reader& reader, const std::string& name, Card_Type type) {
    if (Card_Result r = reader.Connect(name); !r.Ok()) return r;
    return reader.Set_Card_Type(type);
}

Card_Result Present_PIN_Text(Card_Reader& reader, Card_Type type, const std::string& pin_text) {
    if (pin_text.empty()) return {};
    auto code = Parse_Code_Text(pin_text);
    if (!code || static_cast<int>(code->size()) != Code_Length(type))
        return Card_Fail(Card_Error::Wrong_PIN, std::string("The PIN of an ") + Card_Type_Name(type) +
                                                    " is " + std::to_string(Code_Length(type) * 2) +
                                                    " hex digits");
    int tries_left = 0;
    return reader.Verify_PIN(*code, tries_left);
}

Card_Result Write_Memory_Span(Card_Reader& reader, int first, const std::vector<std::uint8_t>& bytes,
                              int* written) {
    const int count = static_cast<int>(bytes.size());
    if (written != nullptr) *written = 0;
    std::vector<std::uint8_t> before;
    if (Card_Result r = reader.Read(first, count, before); !r.Ok()) return r;
    for (int i = 0; i < count;) {
        if (before[i] == bytes[i]) {
            ++i;
            continue;
        }
        int end = i;
        while (end < count && before[end] != bytes[end])
            ++end;
        const std::vector<std::uint8_t> run(bytes.begin() + i, bytes.begin() + end);
        Card_Result r =
            run.size() == 1 ? reader.Write_Byte(first + i, run[0]) : reader.Write_Page(first + i, run);
        if (!r.Ok()) return r;
        if (written != nullptr) *written += end - i;
        i = end;
    }
    std::vector<std::uint8_t> after;
    if (Card_Result r = reader.Read(first, count, after); !r.Ok()) return r;
    for (int i = 0; i < count; ++i) {
        if (after[i] != bytes[i])
            return Card_Fail(Card_Error::Refused, "The card did not take byte " + std::to_string(first + i) +
                                                      ": it needs its PIN, or the byte is protected");
    }
    return {};
}

} // namespace quorlen
