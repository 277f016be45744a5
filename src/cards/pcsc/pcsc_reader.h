#pragma once
// Every smart-card reader on Linux, through PC/SC (pcsc-lite and its pcscd service). Only
// the connection lives here; the memory-card commands are Storage_Card_Reader's.

#include "cards/storage_card.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorlen {

class Pcsc_Reader final : public Storage_Card_Reader {
public:
    Pcsc_Reader() = default;
    Pcsc_Reader(const Pcsc_Reader&) = delete;
    Pcsc_Reader& operator=(const Pcsc_Reader&) = delete;
    ~Pcsc_Reader() override;

    Card_Result List_Readers(std::vector<std::string>& names) override;
    Card_Result Initial(const std::string& reader) override;
    Card_Result Connect(const std::string& reader) override;
    Card_Result Disconnect() override;
    bool Connected() const override { return card_ != 0; }
    Card_Result Reset(std::vector<std::uint8_t>& atr) override;

    // Lets go of the card and of the service (at shutdown, or when pcscd went away).
    void Release();

protected:
    Card_Result Transmit(const Apdu& command, std::vector<std::uint8_t>& reply) override;

private:
    Card_Result Context();
    Card_Result Result_Of(long rv, const std::string& reader = {});

    // The types of pcsc-lite stay out of this header: 0 means none.
    std::intptr_t context_ = 0;
    bool has_context_ = false;
    std::intptr_t card_ = 0;
    unsigned long protocol_ = 0;
};

} // namespace quorlen
