#include "smartcard.h"

namespace boxsim {

namespace {

int Hex_Value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

} // namespace

std::string Smartcard::Begin_Write() {
    writing_ = true;
    next_ = 0;
    pending_ = -1;
    return "r#";
}

std::string Smartcard::Take(char c) {
    const int value = Hex_Value(c);
    if (value < 0) {
        writing_ = false;
        return "E";
    }
    if (pending_ < 0) {
        pending_ = value;
        return {};
    }
    content_[static_cast<std::size_t>(next_)] = static_cast<std::uint8_t>(pending_ * 16 + value);
    pending_ = -1;
    ++next_;
    if (silence_after_ >= 0 && next_ >= silence_after_) {
        // The card keeps what it got so far: it is left half written.
        silent_ = true;
        writing_ = false;
        return {};
    }
    if (next_ < static_cast<int>(content_.size())) return "m";
    writing_ = false;
    completed_ = true;
    return "!";
}

bool Smartcard::Take_Completed() {
    const bool done = completed_;
    completed_ = false;
    return done;
}

} // namespace boxsim
