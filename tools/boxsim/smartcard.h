#pragma once
// The Mapchip in the box's slot: 256 bytes, written through the box's card-writing mode.
// "br" puts the box in that mode and it answers "#"; then each byte comes as two hex digits
// (upper or lower case) and the box writes it to the card before it answers "m", or "!"
// after the last byte. Anything but a hex digit in that mode abandons the write with "E".
// A box with a card in its slot runs from it: a completed write is loaded into the first 256
// bytes of the box's memory, so the box's read path serves the card.

#include <array>
#include <cstdint>
#include <string>

namespace boxsim {

class Smartcard {
public:
    using Content = std::array<std::uint8_t, 256>;

    // `silence_after`: after this many bytes of a write the box stops answering (-1: never).
    Smartcard(const Content& content, long silence_after)
        : content_(content), silence_after_(silence_after) {}

    // The rest of the answer to "br" after its "b" echo.
    std::string Begin_Write();
    bool Writing() const { return writing_; }
    // One character in card-writing mode: what the box answers.
    std::string Take(char c);
    // True once, after the last byte of a write went to the card.
    bool Take_Completed();
    // The fault struck: the box answers nothing any more.
    bool Silent() const { return silent_; }
    const Content& Bytes() const { return content_; }

private:
    Content content_;
    long silence_after_;
    bool writing_ = false;
    bool completed_ = false;
    bool silent_ = false;
    int next_ = 0;     // the card address of the next byte
    int pending_ = -1; // the first digit of a byte, -1 when none
};

} // namespace boxsim
