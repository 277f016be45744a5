#pragma once
// How a trace becomes the chart of QX_Log_HS and the counts of its analysis. The chart draws
// the eight lines one above the other from at most about 2000 rows, one sample a row or one
// every Step samples; the analysis counts the level changes of each line in the stretch on
// show. Both work on sample numbers from 1, as txt_start and txt_stop show them.

#include "hslog/osc_file.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

inline constexpr int Osc_Lines = 8;
// Bit c of a sample is line c.
inline constexpr std::array<const char*, Osc_Lines> Osc_Line_Names = {"Crank", "IGN A",  "IGN B",  "PWM",
                                                                      "CAM",   "Launch", "IG Cut", "Fuel"};
inline constexpr long Max_Chart_Rows = 2000;

inline bool Get_Data_ByteVal_bit(std::uint8_t byte, int bit) {
    return (byte >> bit & 1) != 0;
}
// Eight characters "0" and "1", bit 7 first, as a byte is written in binary.
std::string Byte_2_BitString(std::uint8_t byte);
// Sample n of the trace, counting from 0; 0 outside it.
std::uint8_t Get_Data_Byte(const Osc_Trace& trace, long n);

// Where line `bit` is drawn: its low level and, 0.5 above, its high one.
constexpr double Level_Value(int bit, bool high) {
    return 7 - bit + (high ? 1.2 : 0.7);
}
// Milliseconds from the start of the trace to sample `number` (from 1).
double Sample_Time_ms(long number, int sample_rate);

// The stretch on show: Osc_First and Osc_Last with the texts written back to txt_start and
// txt_stop. Numbers() is 0 for an empty trace.
struct Osc_Stretch {
    long first = 1;
    long last = 0;
    std::string start_text = "1";
    std::string stop_text = "0";
    long Numbers() const { return last >= first ? last - first + 1 : 0; }
};

// Takes the two texts and keeps them inside the trace: a stop below the start becomes the
// start, the stop stays within 1 and the count, the start within 1 and the stop.
Osc_Stretch Clamp_Stretch(std::string_view start_text, std::string_view stop_text, long count);
Osc_Stretch Stretch_Of(long first, long last, long count);

// Samples a row: a stretch of up to 2000 samples is drawn sample by sample, 2001 take two.
constexpr long Chart_Step(long numbers) {
    return numbers <= 0 ? 1 : 1 + (numbers - 1) / Max_Chart_Rows;
}

// The rows of the chart for a stretch. Row k shows sample first + k * step; with peak
// detection a line that changes anywhere in the row's samples is drawn on the level away
// from the one last drawn, so a pulse shorter than a row still shows as a notch.
struct Osc_Chart {
    long first = 1;
    long last = 0;
    long step = 1;
    std::vector<std::uint8_t> rows; // bit c set: line c on its upper level
    long Row_Sample(std::size_t k) const { return first + static_cast<long>(k) * step; }
};
Osc_Chart Build_Osc_Chart(const Osc_Trace& trace, const Osc_Stretch& stretch, bool peak_detect);

// The zoom and scroll buttons: in and out halve and double the span about its middle, the
// scrolls move it by half a span; all keep inside the trace.
Osc_Stretch Zoom_All(long count);
Osc_Stretch Zoom_In(const Osc_Stretch& s, long count);
Osc_Stretch Zoom_Out(const Osc_Stretch& s, long count);
Osc_Stretch Scroll_Left(const Osc_Stretch& s, long count);
Osc_Stretch Scroll_Right(const Osc_Stretch& s, long count);

// Level changes of each line over the samples of the stretch; the first sample only sets
// the level, so a line that never changes counts 0 and a pulse counts 2.
std::array<long, Osc_Lines> Count_Level_Changes(const Osc_Trace& trace, const Osc_Stretch& stretch);

// Analyze_option: the text of txt_RPM is the engine speed, or the crank teeth a revolution.
enum class Analyze_Reference { RPM = 0, Crank_Pulses_Per_Rev = 1 };

struct Analyze_Result {
    std::string text;  // txt_Analyze, as far as it got
    std::string fault; // the error that stopped it ("Division by zero"), empty when none
};
// cmd_Analyze_Click: the test results of the stretch with revolutions from the reference.
Analyze_Result Analyze_Stretch(const Osc_Trace& trace, const Osc_Stretch& stretch,
                               Analyze_Reference reference, std::string_view reference_text);

// cmd_GetRPM_Click: the speed at which the stretch is one revolution; nullopt for an empty
// stretch.
std::optional<double> Stretch_RPM(const Osc_Stretch& stretch, int sample_rate);

} // namespace quorlen
