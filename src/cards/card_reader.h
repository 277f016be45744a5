#pragma once
// What the program needs of a smart-card reader with a synchronous memory card in it. The
// product talks to every reader through PC/SC (cards/pcsc); the operations are the ones the
// reader libraries of the original readers offered, so both card paths sit on top of them.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

enum class Card_Type { SLE4442, SLE4428 };

// Bytes of memory: 256 and 1024.
int Card_Size(Card_Type type);
// Bytes of the card's code (PSC): 3 and 2.
int Code_Length(Card_Type type);
// Presentations left when none has failed: 3 and 8.
int Full_Tries(Card_Type type);
const char* Card_Type_Name(Card_Type type);
// "SLE4442" or "SLE4428", in either case; nullopt for anything else.
std::optional<Card_Type> Card_Type_Named(std::string_view name);

enum class Card_Error {
    None,
    No_Service, // no smart-card service (pcscd) is running
    No_Reader,  // the reader is not there (any more)
    No_Card,    // the reader is empty, or the card went out
    Wrong_Type, // the reader or the card refuses the card type
    Wrong_PIN,  // the code was refused; the card counted it
    Locked,     // no presentations left: the card takes no more writes
    Refused,    // the card answered, but not what was asked (a status word, bytes not taken)
    Failed      // anything else the service reported
};

struct Card_Result {
    Card_Error error = Card_Error::None;
    std::string text; // for the person at the screen; empty when all went well
    bool Ok() const { return error == Card_Error::None; }
};

Card_Result Card_Fail(Card_Error error, std::string text);

class Card_Reader {
public:
    virtual ~Card_Reader() = default;

    // The readers on the PC, by name.
    virtual Card_Result List_Readers(std::vector<std::string>& names) = 0;
    // Prepares the reader: it must be there, a card need not.
    virtual Card_Result Initial(const std::string& reader) = 0;
    // Takes the card in `reader`; a previous card is let go first.
    virtual Card_Result Connect(const std::string& reader) = 0;
    // Lets go of the card, resetting it so that a presented code does not outlive us.
    virtual Card_Result Disconnect() = 0;
    virtual bool Connected() const = 0;
    // Tells the reader which card it holds; the operations below need it first.
    virtual Card_Result Set_Card_Type(Card_Type type) = 0;
    // Resets the card; `atr` gets its answer to reset.
    virtual Card_Result Reset(std::vector<std::uint8_t>& atr) = 0;

    // Presents the code; `tries_left` is what the card's error counter allows afterwards.
    virtual Card_Result Verify_PIN(const std::vector<std::uint8_t>& code, int& tries_left) = 0;
    // Sets a new code; the current one must have been presented.
    virtual Card_Result Change_PIN(const std::vector<std::uint8_t>& code) = 0;
    virtual Card_Result Read_Error_Counter(int& tries_left) = 0;

    virtual Card_Result Read(int start, int length, std::vector<std::uint8_t>& bytes) = 0;
    virtual Card_Result Write_Byte(int address, std::uint8_t value) = 0;
    virtual Card_Result Write_Page(int address, const std::vector<std::uint8_t>& bytes) = 0;
    // One flag a byte, for the bytes that have a protect bit: true = protected.
    virtual Card_Result Read_Protect_Bits(std::vector<bool>& protected_bytes) = 0;
    // Protects `bytes` from `address` on; the card protects only bytes equal to its memory.
    virtual Card_Result Write_Protect_Bits(int address, const std::vector<std::uint8_t>& bytes) = 0;
};

} // namespace quorlen
