#pragma once
// The memory-card operations of a reader in terms of its storage-card commands. A back-end
// supplies the connection and one exchange (Transmit); everything about the cards is here.

#include "cards/card_reader.h"
#include "cards/storage_apdu.h"

namespace quorlen {

class Storage_Card_Reader : public Card_Reader {
public:
    Card_Result Set_Card_Type(Card_Type type) override;
    Card_Result Verify_PIN(const std::vector<std::uint8_t>& code, int& tries_left) override;
    Card_Result Change_PIN(const std::vector<std::uint8_t>& code) override;
    Card_Result Read_Error_Counter(int& tries_left) override;
    Card_Result Read(int start, int length, std::vector<std::uint8_t>& bytes) override;
    Card_Result Write_Byte(int address, std::uint8_t value) override;
    Card_Result Write_Page(int address, const std::vector<std::uint8_t>& bytes) override;
    Card_Result Read_Protect_Bits(std::vector<bool>& protected_bytes) override;
    Card_Result Write_Protect_Bits(int address, const std::vector<std::uint8_t>& bytes) override;

    Card_Type Type() const { return type_; }

protected:
    // One command to the card and its whole reply, status word included.
    virtual Card_Result Transmit(const Apdu& command, std::vector<std::uint8_t>& reply) = 0;
    // A new card forgets the type the reader was told.
    void Forget_Card_Type() { type_known_ = false; }

private:
    Card_Result Exchange(const Apdu& command, Apdu_Reply& reply);
    Card_Result Need_Type() const;
    Card_Result Check_Span(int start, int length) const;
    Card_Result Write_Runs(std::uint8_t ins, int address, const std::vector<std::uint8_t>& bytes);

    Card_Type type_ = Card_Type::SLE4442;
    bool type_known_ = false;
};

} // namespace quorlen
