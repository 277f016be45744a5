#include "box.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

namespace boxsim {

namespace {

constexpr char Hex_Digits[] = "0123456789ABCDEF";
constexpr std::size_t Banner_Answer_Length = 200;

int Hex_Value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

// 250 and 251 are the box's own: it keeps them whatever the PC sends.
bool Takes_From_Pc(int address) {
    return address >= 0 && address < 1024 && address != 250 && address != 251;
}

// A box with a card runs from it, so the card starts out holding the box's settings.
Smartcard::Content Card_From(const Image& image) {
    Smartcard::Content content{};
    std::copy_n(image.begin(), content.size(), content.begin());
    return content;
}

std::uint8_t Slave_Copy(int address, std::uint8_t value) {
    return address == Mode_Byte ? static_cast<std::uint8_t>(value | Slave_Mark) : value;
}

} // namespace

std::uint16_t Checksum(const std::uint8_t* data, std::size_t count) {
    unsigned sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum = (sum + data[i]) & 0xFFFFu;
    return static_cast<std::uint16_t>(sum == 0 ? 65535u : sum - 1);
}

std::string Banner(const Box_Config& config, const Image& memory, bool i2c_fault) {
    char field[16];
    std::string text = "\r\n";
    text += "VELMORA ECU " + config.firmware + "\r\n";
    if (config.serial_decimal)
        std::snprintf(field, sizeof field, "%05d", config.serial % 100000);
    else
        std::snprintf(field, sizeof field, "%02X%02Xh", (config.serial >> 8) & 0xFF, config.serial & 0xFF);
    text += std::string("Serial : ") + field + "\r\n";
    std::snprintf(field, sizeof field, "%03d", config.dataset >= 0 ? config.dataset : memory[Dataset_Byte]);
    text += std::string("SC ID ") + field + "\r\n";
    text += "Status 000";
    if (config.status_value) text += config.engine_running ? "01" : "00";
    text += "\r\n";
    if (config.slave_present) text += "Slave present\r\n";
    if (config.smartcard) text += "Smartcard present\r\n";
    text += config.engine_running ? "Engine running\r\n" : "Engine stopped\r\n";
    if (i2c_fault) text += "I2C TIME OUT 2\r\n";
    // The mode line is the last: a banner is complete when it holds "mode" and ends in LF.
    const std::string mode = (memory[Mode_Byte] & Slave_Mark) ? "Slave mode\r\n" : "Master mode\r\n";

    const std::size_t length = 1 + text.size() + mode.size(); // the echo of "v" counts too
    const std::size_t pad = config.banner_pad;
    if (pad >= length + 2)
        text += std::string(pad - length - 2, '-') + "\r\n";
    else if (pad == length + 1)
        text.insert(text.size() - 2, " ");
    return text + mode;
}

Box::Box(Box_Config config, Box_Faults faults)
    : config_(std::move(config)), faults_(faults), card_(Card_From(config_.image), faults.card_silence_after),
      stream_(Stream_Faults{faults.pause_at_row, std::chrono::seconds(2), faults.bad_sum_row, 200},
              config_.throttle),
      hs_(HS_Faults{faults.hs_bad_check, faults.hs_gap_at, std::chrono::milliseconds(500)}) {
    memory_ = config_.image;
    committed_ = config_.image;
    slave_ = config_.slave_image;
    if (config_.dataset < 0) config_.dataset = config_.image[Dataset_Byte];
    bootloader_ = config_.bootloader;
    if (config_.engine.enabled) {
        engine_ = std::make_unique<Engine_Model>(config_.engine, config_.image);
        stream_.Set_Engine([this](long row) { return engine_->Sample(row, memory_); });
    }
}

std::string Box::Receive(std::string_view in, Time now) {
    std::string out;
    for (char c : in)
        Take(c, now, out);
    return out;
}

std::string Box::Tick(Time now) {
    std::string out;
    if ((state_ == State::Frame_Header || state_ == State::Frame_Data) &&
        now - last_frame_byte_ > Frame_Gap) {
        // A frame that stops half way is refused, so the box is ready for the next command.
        frame_.clear();
        state_ = State::Idle;
        Emit(out, "E");
    }
    Emit(out, stream_.Tick(now));
    Emit(out, hs_.Tick(now));
    return out;
}

Time Box::Next_Deadline() const {
    if (state_ == State::Frame_Header || state_ == State::Frame_Data)
        return std::min({last_frame_byte_ + Frame_Gap, stream_.Next_Deadline(), hs_.Next_Deadline()});
    return std::min(stream_.Next_Deadline(), hs_.Next_Deadline());
}

bool Box::Continues(char c) const {
    if (card_.Writing()) return true;
    switch (state_) {
    case State::Frame_Header:
    case State::Frame_Data:
        return true;
    case State::After_r:
        return c == 'd' || c == 's';
    case State::After_u:
        return c == 'e';
    case State::After_b:
        return c == 'R' || c == 'W' || c == 'L' || (c == 'r' && config_.smartcard);
    case State::After_L:
        return c == 'a';
    case State::After_bL:
        return Hex_Value(c) >= 0;
    default:
        return false;
    }
}

void Box::Start_Command() {
    ++commands_;
    if (faults_.silence_after >= 0 && commands_ > faults_.silence_after) silent_ = true;
    if (faults_.bootloader_after >= 0 && commands_ == faults_.bootloader_after + 1) Reset_Into_Bootloader();
}

void Box::Take(char c, Time now, std::string& out) {
    if (silent_) return;
    if (!Continues(c)) {
        Start_Command();
        if (silent_) return;
    }
    if (bootloader_) {
        if (c == 'g') {
            bootloader_ = false;
            Emit(out, "g\r\n");
        } else if (c == 'v') {
            Emit(out, "v\r\nbl24>");
        } else {
            Emit(out, std::string(1, c));
        }
        return;
    }

    // The high-speed stream fills the line; the box listens only for the blank that ends it.
    if (hs_.Active()) {
        if (c == ' ') hs_.Stop();
        return;
    }
    if (card_.Writing()) {
        Take_Card(c, out);
        return;
    }

    // While the log streams the box listens only for its end (a blank) and for a new start.
    if (stream_.Active() != Log_Stream::Mode::Off && state_ == State::Idle) {
        if (c == ' ') {
            stream_.Stop();
            return;
        }
        if (c != 'L' && c != 'b') return;
    }

    switch (state_) {
    case State::After_L:
        state_ = State::Idle;
        if (c == 'a') {
            Emit(out, "a\r\n" + stream_.Start_Text(now));
            return;
        }
        break;

    case State::After_bL:
        if (Hex_Value(c) >= 0) {
            stream_length_ += c;
            Emit(out, std::string(1, c));
            if (stream_length_.size() == 4) {
                // "00" and the length in two hex digits; a frame holds at most 255 data bytes.
                state_ = State::Idle;
                stream_.Start_Binary(std::min(std::stoi(stream_length_, nullptr, 16), 255), now);
            }
            return;
        }
        state_ = State::Idle;
        break;

    case State::Frame_Header:
    case State::Frame_Data:
        frame_ += c;
        last_frame_byte_ = now;
        if (state_ == State::Frame_Header && frame_.size() == 6) {
            frame_count_ = static_cast<std::size_t>(static_cast<std::uint8_t>(frame_[2])) << 8 |
                           static_cast<std::uint8_t>(frame_[3]);
            state_ = State::Frame_Data;
        }
        if (state_ == State::Frame_Data && frame_.size() == 6 + frame_count_) Finish_Frame(out);
        return;

    case State::After_r:
        state_ = State::Idle;
        if (c == 'd') {
            Emit(out, Text_Image("d", '@', memory_));
            return;
        }
        if (c == 's') {
            // Without a slave nothing follows the echo: the program learns it by the time-out.
            Emit(out, config_.slave_present ? Text_Image("s", '#', slave_) : "s");
            return;
        }
        break;

    case State::After_u:
        state_ = State::Idle;
        if (c == 'e') {
            if (faults_.failed_commits != 0) {
                if (faults_.failed_commits > 0) --faults_.failed_commits;
                Emit(out, "eE");
            } else {
                Commit();
                Emit(out, "e*");
            }
            return;
        }
        break;

    case State::After_b:
        state_ = State::Idle;
        if (c == 'R') {
            std::string frame = "R";
            frame.append(memory_.begin(), memory_.end());
            const std::uint16_t sum = Checksum(memory_.data(), memory_.size());
            frame += static_cast<char>(sum >> 8);
            frame += static_cast<char>(sum & 0xFF);
            frame += '@';
            Emit(out, frame);
            return;
        }
        if (c == 'W') {
            frame_.clear();
            last_frame_byte_ = now;
            state_ = State::Frame_Header;
            Emit(out, "W\r\nbw>");
            return;
        }
        if (c == 'L') {
            stream_length_.clear();
            state_ = State::After_bL;
            Emit(out, "L");
            return;
        }
        if (c == 'r' && config_.smartcard) {
            Emit(out, card_.Begin_Write());
            return;
        }
        if (c == 'w') {
            address_ = 0;
            digits_ = 0;
            state_ = State::Address;
            Emit(out, "w$");
            return;
        }
        break;

    case State::Address:
        if (Hex_Value(c) >= 0) {
            address_ = address_ * 16 + Hex_Value(c);
            if (++digits_ == 4) {
                digits_ = 0;
                state_ = State::Value;
            }
            Emit(out, std::string(1, c));
            return;
        }
        state_ = State::Idle;
        break;

    case State::Value:
        if (Hex_Value(c) >= 0) {
            if (digits_ == 0) {
                pending_digit_ = Hex_Value(c);
                digits_ = 1;
                Emit(out, std::string(1, c));
            } else {
                // The box writes here and then prompts for the byte at the next address.
                Write_Byte(address_, static_cast<std::uint8_t>(pending_digit_ * 16 + Hex_Value(c)));
                ++address_;
                digits_ = 0;
                Emit(out, std::string(1, c) + "w");
            }
            return;
        }
        state_ = State::Idle;
        if (c == '$' && digits_ == 0) {
            Emit(out, "$\r\n>");
            return;
        }
        break;

    case State::Idle:
        break;
    }
    Take_Idle(c, now, out);
}

void Box::Take_Idle(char c, Time now, std::string& out) {
    switch (c) {
    case 'v': {
        const bool i2c = faults_.i2c_timeouts < 0 || banners_ < faults_.i2c_timeouts;
        ++banners_;
        std::string answer = "v";
        answer += Banner(config_, memory_, i2c);
        Emit(out, answer);
        return;
    }
    case 'g':
        Emit(out, "g\r\n");
        return;
    case 'd':
        Emit(out, hs_.Start(Plan_For(config_.hs, memory_), static_cast<int>(line_baud_ / 10), now));
        return;
    case 'r':
        state_ = State::After_r;
        break;
    case 'u':
        state_ = State::After_u;
        break;
    case 'b':
        state_ = State::After_b;
        break;
    case 'L':
        state_ = State::After_L;
        break;
    default:
        break;
    }
    Emit(out, std::string(1, c));
}

void Box::Take_Card(char c, std::string& out) {
    Emit(out, card_.Take(c));
    if (card_.Silent()) silent_ = true;
    if (!card_.Take_Completed()) return;
    const auto& card = card_.Bytes();
    std::copy(card.begin(), card.end(), memory_.begin());
    std::copy(card.begin(), card.end(), committed_.begin());
}

void Box::Emit(std::string& out, std::string_view text) const {
    if (!silent_) out += text;
}

void Box::Write_Byte(int address, std::uint8_t value) {
    if (!Takes_From_Pc(address)) return;
    memory_[address] = value;
    uncommitted_.set(address);
}

void Box::Commit() {
    committed_ = memory_;
    if (config_.slave_present) {
        for (int a = 0; a < 1024; ++a)
            if (uncommitted_.test(a)) slave_[a] = Slave_Copy(a, memory_[a]);
    }
    uncommitted_.reset();
}

void Box::Finish_Frame(std::string& out) {
    const auto at = [this](std::size_t i) { return static_cast<std::uint8_t>(frame_[i]); };
    const int first = at(0) << 8 | at(1);
    const auto count = frame_count_;
    const unsigned sum = at(4) << 8 | at(5);
    const auto* data = reinterpret_cast<const std::uint8_t*>(frame_.data() + 6);
    bool good = count >= 1 && first + count <= memory_.size() && Checksum(data, count) == sum;
    if (good && faults_.rejected_frames != 0) {
        if (faults_.rejected_frames > 0) --faults_.rejected_frames;
        good = false;
    }
    if (good) {
        for (std::size_t i = 0; i < count; ++i) {
            const int a = first + static_cast<int>(i);
            if (!Takes_From_Pc(a)) continue;
            memory_[a] = committed_[a] = data[i];
            if (config_.slave_present) slave_[a] = Slave_Copy(a, data[i]);
            uncommitted_.reset(a);
        }
    }
    frame_.clear();
    state_ = State::Idle;
    Emit(out, good ? "&" : "E");
}

void Box::Reset_Into_Bootloader() {
    memory_ = committed_;
    uncommitted_.reset();
    frame_.clear();
    state_ = State::Idle;
    bootloader_ = true;
}

std::string Box::Text_Image(std::string_view echo, char marker, const Image& image) const {
    std::string text(echo);
    text += "\r\n";
    text += marker;
    for (std::uint8_t b : image) {
        text += Hex_Digits[b >> 4];
        text += Hex_Digits[b & 0xF];
    }
    text += "\r\n>";
    return text;
}

} // namespace boxsim
