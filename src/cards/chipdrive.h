#pragma once
// The Chipdrive path: one command entry that takes a command text and gives a numeric
// status, a status text and data, and the main form's search, read and write on top of it.
// The path moves card bytes 1 to 255, the first block, in one command each way.

#include "cards/card_context.h"
#include "cards/card_reader.h"

#include <string>

namespace quorlen {

class Chipdrive_Port {
public:
    virtual ~Chipdrive_Port() = default;
    // 0 when the command went through; `status` says what happened in words, `data` carries
    // the bytes, one a character.
    virtual long SCardComand(const std::string& command, std::string& status, std::string& data) = 0;
};

// The command texts on any reader with a memory card: "Device,SearchComPort,N" takes the
// N-th reader on the PC; "Card,MemRead,START,LENGTH" and "Card,MemWrite,START,LENGTH" move
// bytes of an SLE4442 in the reader found, the write proven by reading back.
class Reader_Chipdrive final : public Chipdrive_Port {
public:
    // `pin` is presented before a write when not empty.
    Reader_Chipdrive(Card_Reader& reader, const std::string& pin) : reader_(reader), pin_(pin) {}
    long SCardComand(const std::string& command, std::string& status, std::string& data) override;
    const std::string& Reader_Found() const { return found_; }

private:
    long Search(int number, std::string& status);
    long Fail(const Card_Result& r, std::string& status);

    Card_Reader& reader_;
    const std::string& pin_;
    std::string found_;
};

inline constexpr const char* Chipdrive_Ready = "Connect ready";

// Shows "< Searching... >"; the search itself runs on the next tick of ChipDrive_timer, so
// the text is on the screen while it runs.
void Chipdrive_Connect(Card_Context& k);
void ChipDrive_timer_Timer(Card_Context& k, Chipdrive_Port& port);
void Read_Chipdrive_cmd(Card_Context& k, Chipdrive_Port& port);
void Write_Chipdrive_cmd(Card_Context& k, Chipdrive_Port& port);

} // namespace quorlen
