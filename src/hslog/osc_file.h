#pragma once
// The high-speed log file (.qxo): a mark line, one sample a line in three digits, a closing
// mark and the number of samples. The capture writes it as the bytes arrive, so a capture
// that is cut off (the program killed, the disk full) leaves every sample up to that moment;
// the reader takes what is there and says whether the closing mark came.
//
// Behind the sample count the writer adds the sample rate of the line the capture was made
// at: a trace taken at 625000 baud has 62500 samples a second, not 11520, and every time and
// speed read from it depends on that. A reader that stops at the closing mark never sees it.

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

inline constexpr const char* Osc_Begin_Mark = "[Log_Osc_Data]";
inline constexpr const char* Osc_End_Mark = "[End_Log_Osc_Data]";
inline constexpr const char* Osc_Rows_Label = "Number of rows: ";
inline constexpr const char* Osc_Rate_Label = "Sample rate: ";
// Samples a second at 115200 baud, the box's usual line: ten bit times a sample.
inline constexpr int Default_Sample_Rate = 11520;
// Every this many bytes of the stream one is a check byte.
inline constexpr long Osc_Check_Interval = 11520;

// Samples a second of a line of `baud`.
constexpr int Sample_Rate_Of(std::int32_t baud) {
    return static_cast<int>(baud / 10);
}

// A trace as read from a file: the samples, one byte each (bit 0 the crank line).
struct Osc_Trace {
    std::vector<std::uint8_t> samples;
    int sample_rate = Default_Sample_Rate;
    bool rate_from_file = false; // the file stated its rate; otherwise the default was taken
    bool cut_off = false;        // no closing mark: the capture ended without closing the file
    long rows_stated = -1;       // the count behind the closing mark; -1 when there is none
    long bad_line = 0;           // line number where something other than a sample stood (0: none)
    long held = 0;               // bytes of the stream's framing that now hold the lines' level

    long Count() const { return static_cast<long>(samples.size()); }
};

// Reads the text of a .qxo file. nullopt, with `error` set, when it is not one (no mark
// line). A line that is not a sample of 0 to 255 ends the samples there and is named in
// `bad_line`; a last line without its line end is a sample cut in half and is dropped.
// A whole file without its rate line was made at 115200 baud; a cut-off one may be ours at
// either speed and takes `fallback_rate`, the caller's best guess.
std::optional<Osc_Trace> Read_Osc_Text(std::string_view text, std::string& error,
                                       int fallback_rate = Default_Sample_Rate);
// The same from a file; `error` also tells why a file could not be read.
std::optional<Osc_Trace> Read_Osc_File(const std::string& path, std::string& error,
                                       int fallback_rate = Default_Sample_Rate);

// The stream's framing is in the file as it came: the box's echo of "d" as the first byte and
// a check byte of 255 every 11520th. Neither is a state of the lines, and on a chart or in a
// count each would be a one-sample pulse on every line (at 625000 baud five a second). They
// take the level of the sample next to them; the reader does this for every trace it reads.
void Hold_Framing_Bytes(Osc_Trace& trace);

// What a person should be told about a trace that opened but is not whole; empty when whole.
std::string Osc_Trace_Notes(const Osc_Trace& trace);

// Writes a capture as it arrives. Each Write reaches the file before it returns, so nothing
// of the capture waits in memory.
class Osc_Writer {
public:
    Osc_Writer() = default;
    Osc_Writer(const Osc_Writer&) = delete;
    Osc_Writer& operator=(const Osc_Writer&) = delete;
    // A writer dropped while open leaves the file as a cut-off capture.
    ~Osc_Writer();

    // Creates `path` and writes the mark line; false with `error` set when it can't.
    bool Open(const std::string& path, std::string& error);
    bool Is_Open() const { return file_ != nullptr; }
    // Each byte as one line "000"; false when the disk refused them (they are not counted).
    bool Write(std::string_view bytes);
    // The closing mark, the sample count and the rate; false when the disk refused it.
    bool Close(int sample_rate);
    long Written() const { return written_; }
    // False once a write has failed (disk full, device gone); the file is then cut off.
    bool Good() const { return good_; }

private:
    std::FILE* file_ = nullptr;
    long written_ = 0;
    bool good_ = true;
    std::string buffer_;
};

} // namespace quorlen
