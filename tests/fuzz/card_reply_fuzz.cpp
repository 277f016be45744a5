// A memory card's replies through a reader: status words, the code's error counter, memory
// and protection bits. Each command the program sends gets the next piece of the input (split
// at 0x1E) as its whole reply. The first byte picks the card type and whether a PIN is given.

#include "cards/memory_card.h"
#include "cards/storage_card.h"
#include "fuzz_support.h"

namespace {

class Scripted_Card final : public quorlen::Storage_Card_Reader {
public:
    explicit Scripted_Card(std::vector<std::string> replies) : replies_(std::move(replies)) {}
    quorlen::Card_Result List_Readers(std::vector<std::string>& names) override {
        names = {"Fuzz Reader 0"};
        return {};
    }
    quorlen::Card_Result Initial(const std::string&) override { return {}; }
    quorlen::Card_Result Connect(const std::string&) override {
        connected_ = true;
        Forget_Card_Type();
        return {};
    }
    quorlen::Card_Result Disconnect() override {
        connected_ = false;
        return {};
    }
    bool Connected() const override { return connected_; }
    quorlen::Card_Result Reset(std::vector<std::uint8_t>& atr) override {
        atr = {0xA2, 0x13, 0x10, 0x91};
        return {};
    }

private:
    quorlen::Card_Result Transmit(const quorlen::Apdu&, std::vector<std::uint8_t>& reply) override {
        if (next_ >= replies_.size())
            return quorlen::Card_Fail(quorlen::Card_Error::No_Card, "The card went out");
        const std::string& r = replies_[next_++];
        reply.assign(r.begin(), r.end());
        return {};
    }
    std::vector<std::string> replies_;
    std::size_t next_ = 0;
    bool connected_ = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    if (size == 0) return 0;
    Scripted_Card reader(fuzz::Pieces(fuzz::Text(data + 1, size - 1)));
    const Card_Type type = data[0] & 1 ? Card_Type::SLE4428 : Card_Type::SLE4442;
    if (!Open_Memory_Card(reader, "Fuzz Reader 0", type).Ok()) return 0;
    Present_PIN_Text(reader, type, data[0] & 2 ? (type == Card_Type::SLE4442 ? "FFFFFF" : "FFFF") : "");
    int tries = 0;
    reader.Read_Error_Counter(tries);
    std::vector<std::uint8_t> bytes;
    reader.Read(0, Card_Size(type), bytes);
    std::vector<bool> protect;
    reader.Read_Protect_Bits(protect);
    std::vector<std::uint8_t> span(40);
    for (std::size_t i = 0; i < span.size(); ++i)
        span[i] = static_cast<std::uint8_t>(i * 11);
    Write_Memory_Span(reader, 20, span);
    reader.Write_Protect_Bits(0, {1, 2, 3});
    return 0;
}
