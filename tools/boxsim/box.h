#pragma once
// The box's side of the serial protocol, as a pure state machine: characters in, characters
// out, with the time handed in by the caller. It knows nothing of ports, pacing or the
// clock, so every exchange can be tested by feeding it strings.
//
// Memory model: the box works on a RAM copy of its settings. The byte-wise dialogue writes
// that copy, and "ue" commits it to the non-volatile memory; a reset falls back to what was
// committed. The binary frame "bW" writes both at once, because the program sends no "ue"
// after it. A slave box beside the master gets each byte the master takes, when the master
// commits it, with its own slave mark forced on.

#include "engine_model.h"
#include "hs_stream.h"
#include "log_stream.h"
#include "smartcard.h"

#include <array>
#include <bitset>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace boxsim {

using Image = std::array<std::uint8_t, 1024>;
// Time since any fixed origin; the caller decides which.
using Time = std::chrono::nanoseconds;

inline constexpr int Mode_Byte = 1;
inline constexpr std::uint8_t Slave_Mark = 0x08; // bit 3 of the mode byte: "this box is a slave"
inline constexpr int Dataset_Byte = 255;
inline constexpr int First_Counter = 1011;
inline constexpr int Last_Counter = 1022;

struct Box_Config {
    Image image{};
    bool slave_present = false;
    Image slave_image{};
    int serial = 1234;
    bool serial_decimal = false; // "01234" instead of the hex form "04D2h"
    int dataset = -1;            // the box's SC ID; -1 takes image byte 255
    std::string firmware = "800M3 V3.42";
    bool smartcard = false;
    bool engine_running = false;
    bool bootloader = false;  // starts in its boot loader until it gets "g"
    bool status_value = true; // false: the older banner whose Status line ends after the flags
    HS_Setup hs;              // the engine of the high-speed stream
    Engine_Setup engine;      // the engine behind the log stream, when one is played
    // 0: the banner is as long as its lines; N: padded before its last line to N characters
    // with the echo, as some firmware does.
    std::size_t banner_pad = 0;
    Throttle_Script throttle; // the throttle input of the log stream, held by a test
};

// Faults that act on the box's behaviour rather than on the line.
struct Box_Faults {
    long i2c_timeouts = 0;        // this many banners carry the display bus failure (-1: all)
    long silence_after = -1;      // after this many commands the box neither acts nor answers (-1: never)
    long bootloader_after = -1;   // after this many commands the box resets into its boot loader (-1: never)
    long rejected_frames = 0;     // this many good "bW" frames are refused with "E" (-1: all)
    long failed_commits = 0;      // this many "ue" are refused (-1: all)
    long pause_at_row = -1;       // the log stream goes quiet for 2 s at this row (-1: never)
    long bad_sum_row = -1;        // the binary log frame of this row carries a wrong sum (-1: none)
    long card_silence_after = -1; // a card write goes silent after this many bytes (-1: never)
    long hs_bad_check = -1;       // this check byte of the high-speed stream is 254 (-1: none)
    long hs_gap_at = -1;          // the high-speed stream is quiet for 0.5 s from this sample (-1: never)
};

// The box's own checksum: 16-bit sum minus one, wrapping, where a sum of 0 gives 65535.
std::uint16_t Checksum(const std::uint8_t* data, std::size_t count);

// The answer text of "v" after the echo, including the display bus line when `i2c_fault`.
// Its last line is the mode line; it is as long as its lines unless the configuration pads it.
std::string Banner(const Box_Config& config, const Image& memory, bool i2c_fault);

class Box {
public:
    explicit Box(Box_Config config, Box_Faults faults = {});
    // The log stream asks the box's engine for its rows by address.
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;

    // Feeds characters as they arrive at `now`; returns what the box sends back.
    std::string Receive(std::string_view in, Time now);
    // Lets time-driven behaviour happen (a binary frame that stopped half way).
    std::string Tick(Time now);
    // When `Tick` has something to do next; Time::max() when nothing waits.
    Time Next_Deadline() const;

    const Image& Memory() const { return memory_; }
    const Image& Committed() const { return committed_; }
    bool Slave_Present() const { return config_.slave_present; }
    const Image& Slave_Memory() const { return slave_; }
    bool In_Bootloader() const { return bootloader_; }
    Log_Stream::Mode Streaming() const { return stream_.Active(); }
    bool HS_Streaming() const { return hs_.Active(); }
    long HS_Bytes_Sent() const { return hs_.Bytes_Sent(); }
    // The speed the program set on its port; the high-speed stream runs at a tenth of it.
    void Set_Line_Baud(long baud) { line_baud_ = baud; }
    const Smartcard::Content& Card() const { return card_.Bytes(); }
    bool Silent() const { return silent_; }
    // Commands taken so far: each exchange of the dialogue ("v", "rd", "b", "w", one digit,
    // "$", "ue", a whole "bW" with its frame) counts one.
    long Commands() const { return commands_; }

    // An inter-character gap longer than this abandons a half-received binary frame. It is
    // shorter than the program's wait for the answer, so the box is listening again before
    // the program's next command.
    static constexpr Time Frame_Gap = std::chrono::milliseconds(400);

private:
    enum class State {
        Idle,
        After_b,
        After_r,
        After_u,
        Address,
        Value,
        Frame_Header,
        Frame_Data,
        After_L,
        After_bL
    };

    bool Continues(char c) const;
    void Take(char c, Time now, std::string& out);
    void Take_Idle(char c, Time now, std::string& out);
    void Start_Command();
    void Emit(std::string& out, std::string_view text) const;
    void Write_Byte(int address, std::uint8_t value);
    void Commit();
    void Finish_Frame(std::string& out);
    void Reset_Into_Bootloader();
    std::string Text_Image(std::string_view echo, char marker, const Image& image) const;

    Box_Config config_;
    Box_Faults faults_;
    Image memory_{};
    Image committed_{};
    Image slave_{};
    std::bitset<1024> uncommitted_;
    int dataset_ = 0;

    State state_ = State::Idle;
    bool bootloader_ = false;
    bool silent_ = false;
    long commands_ = 0;
    long banners_ = 0;

    int address_ = 0;
    int digits_ = 0;
    int pending_digit_ = 0;

    std::string frame_;
    std::size_t frame_count_ = 0;

    Smartcard card_;
    void Take_Card(char c, std::string& out);

    Log_Stream stream_;
    std::unique_ptr<Engine_Model> engine_;
    HS_Stream hs_;
    long line_baud_ = 115200;
    std::string stream_length_; // the hex digits after "bL"
    Time last_frame_byte_{};
};

} // namespace boxsim
