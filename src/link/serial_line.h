#pragma once
// The serial line as the link needs it, and nothing more: the product drives a QSerialPort
// behind it, the tests a scripted line with a clock of their own. Bytes travel as chars, one
// byte a char, 0 to 255.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorlen {

// Why a port did not open; the command-line tool turns it into advice.
enum class Open_Failure { None, Missing, Busy, No_Permission, Not_A_Serial_Port, Other };

// Characters the line lost since it was opened: the UART's own overruns, and the driver's
// buffer running full. Zero where the device does not count them (a pseudo-terminal).
struct Line_Losses {
    long overrun = 0;
    long buffer_overrun = 0;
};

struct Open_Result {
    Open_Failure failure = Open_Failure::None;
    std::string text;  // the system's words, for the diagnostics log
    std::string group; // with No_Permission: the group to join for the device, when known
    bool Ok() const { return failure == Open_Failure::None; }
};

class Serial_Line {
public:
    virtual ~Serial_Line() = default;

    // Device path; takes effect at the next open.
    virtual void Set_Port(const std::string& path) = 0;
    virtual std::string Port() const = 0;
    // "115200,n,8,1"; takes effect at the next open.
    virtual void Set_Settings(const std::string& settings) = 0;

    virtual Open_Result Open() = 0;
    virtual void Close() = 0;
    // False once the far end has hung up, even before Close.
    virtual bool Is_Open() const = 0;

    // The operations below raise Run_Error ("Port not open") on a closed port.
    // Drops everything received and not yet read, in the driver too.
    virtual void Clear_Input() = 0;
    virtual int Bytes_Waiting() = 0;
    virtual std::string Read_All() = 0;
    virtual void Write(std::string_view bytes) = 0;

    // Blocks until input is waiting or `seconds` have passed, without serving the event
    // loop; true when input is waiting. Returns at once on a line that has gone away.
    virtual bool Wait_For_Input(double seconds) = 0;

    // The loss counters of the device; a line that keeps none reports none.
    virtual Line_Losses Losses() { return {}; }
};

// "115200,n,8,1": the port settings for a speed.
std::string Settings_Text(std::int32_t baud);
// The speed of a settings text; nullopt when it is not one.
std::optional<std::int32_t> Settings_Baud(std::string_view settings);

// The group that grants a device to its members: its own group when that group may both read
// and write it (permission bits of `mode`), "dialout" otherwise. Never root or tty: joining
// them would grant far more than a serial port.
std::string Group_To_Join(const std::string& device_group, unsigned mode);

// One line a person can act on: what went wrong with `path` and, for Linux permissions, how
// to get them.
std::string Open_Failure_Advice(const std::string& path, const Open_Result& result);

} // namespace quorlen
