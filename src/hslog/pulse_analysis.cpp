#include "hslog/pulse_analysis.h"

#include "core/text.h"
#include "image/scaling.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace quorlen {

namespace {

constexpr const char* Separator = "-------------------------";
constexpr std::array<const char*, Osc_Lines> Per_Rev_Labels = {
    "Crank pulse/rev: ", "IGN A pulse/rev: ",  "IGN B pulse/rev: ",  "PWM   pulse/rev: ",
    "CAM   pulse/rev: ", "Launch pulse/rev: ", "IG Cut pulse/rev: ", "Fuel   pulse/rev: "};
constexpr std::array<const char*, Osc_Lines> Pulse_Labels = {
    "Crank pulses: ", "IGN A pulses: ",  "IGN B pulses: ",  "PWM   pulses: ",
    "CAM   pulses: ", "Launch pulses: ", "IG Cut pulses: ", "Fuel   pulses: "};

// A number out of a text box: "," reads as ".", the whole part taken with a tie to even,
// and far too large a value held at the limit instead of wrapping.
long Whole_Of(std::string_view text) {
    std::string t(text);
    std::replace(t.begin(), t.end(), ',', '.');
    const double v = Round_Even_Whole(Val(t));
    constexpr double limit = 1e12;
    return static_cast<long>(std::clamp(v, -limit, limit));
}

double Number_Of(std::string_view text) {
    std::string t(text);
    std::replace(t.begin(), t.end(), ',', '.');
    return Val(t);
}

std::string Half_Count_Text(long count) {
    return std::to_string(count / 2) + (count % 2 != 0 ? ".5" : "");
}

struct Division_By_Zero {};

double Divide(double a, double b) {
    if (b == 0) throw Division_By_Zero{};
    return a / b;
}

// The lines set in any sample of a bucket, and those set in all of them. The whole file
// in 2000 rows scans every sample, so eight go at a time.
void Scan_Bucket(const std::uint8_t* s, std::size_t n, std::uint8_t& any_set, std::uint8_t& all_set) {
    std::uint64_t any = 0;
    std::uint64_t all = ~std::uint64_t{0};
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        std::uint64_t word;
        std::memcpy(&word, s + i, 8);
        any |= word;
        all &= word;
    }
    for (int shift = 0; shift < 64; shift += 8) {
        any_set = static_cast<std::uint8_t>(any_set | (any >> shift));
        all_set = static_cast<std::uint8_t>(all_set & (all >> shift));
    }
    for (; i < n; ++i) {
        any_set = static_cast<std::uint8_t>(any_set | s[i]);
        all_set = static_cast<std::uint8_t>(all_set & s[i]);
    }
}

} // namespace

std::string Byte_2_BitString(std::uint8_t byte) {
    std::string bits(8, '0');
    for (int b = 0; b < 8; ++b)
        if (Get_Data_ByteVal_bit(byte, 7 - b)) bits[static_cast<std::size_t>(b)] = '1';
    return bits;
}

std::uint8_t Get_Data_Byte(const Osc_Trace& trace, long n) {
    if (n < 0 || n >= trace.Count()) return 0;
    return trace.samples[static_cast<std::size_t>(n)];
}

double Sample_Time_ms(long number, int sample_rate) {
    return static_cast<double>(number - 1) * 1000.0 / (sample_rate > 0 ? sample_rate : Default_Sample_Rate);
}

Osc_Stretch Stretch_Of(long first, long last, long count) {
    Osc_Stretch s;
    if (count <= 0) return s;
    if (last < first) last = first;
    last = std::clamp(last, 1L, count);
    first = std::clamp(first, 1L, last);
    s.first = first;
    s.last = last;
    s.start_text = std::to_string(first);
    s.stop_text = std::to_string(last);
    return s;
}

Osc_Stretch Clamp_Stretch(std::string_view start_text, std::string_view stop_text, long count) {
    return Stretch_Of(Whole_Of(start_text), Whole_Of(stop_text), count);
}

Osc_Chart Build_Osc_Chart(const Osc_Trace& trace, const Osc_Stretch& stretch, bool peak_detect) {
    Osc_Chart chart;
    chart.first = stretch.first;
    chart.last = std::min(stretch.last, trace.Count());
    const long numbers = chart.last >= chart.first ? chart.last - chart.first + 1 : 0;
    chart.step = Chart_Step(numbers);
    if (numbers == 0) return chart;
    const long step = chart.step;
    const std::uint8_t* s = trace.samples.data() + (chart.first - 1);
    const auto rows = static_cast<std::size_t>((numbers + step - 1) / step);
    chart.rows.resize(rows);
    std::uint8_t last_level = s[0];
    for (std::size_t k = 0; k < rows; ++k) {
        const long at = static_cast<long>(k) * step;
        std::uint8_t level = s[at];
        if (peak_detect && step > 1) {
            // Lines whose row sample repeats the last level but that leave it somewhere in
            // the row's samples are drawn on the other level; last_level keeps for them.
            const long end = std::min(at + step, numbers);
            std::uint8_t any_set = 0;
            std::uint8_t all_set = 0xFF;
            Scan_Bucket(s + at, static_cast<std::size_t>(end - at), any_set, all_set);
            const std::uint8_t same = static_cast<std::uint8_t>(~(level ^ last_level));
            const std::uint8_t left =
                static_cast<std::uint8_t>((last_level & ~all_set) | (~last_level & any_set));
            const std::uint8_t notch = same & left;
            level = static_cast<std::uint8_t>(level ^ notch);
            last_level = static_cast<std::uint8_t>((level & ~notch) | (last_level & notch));
        } else {
            last_level = level;
        }
        chart.rows[k] = level;
    }
    return chart;
}

Osc_Stretch Zoom_All(long count) {
    return Stretch_Of(1, count, count);
}

Osc_Stretch Zoom_In(const Osc_Stretch& s, long count) {
    const long span = s.Numbers();
    if (span <= 2) return Stretch_Of(s.first, s.last, count);
    const long half = span / 2;
    const long first = s.first + (span - half) / 2;
    return Stretch_Of(first, first + half - 1, count);
}

Osc_Stretch Zoom_Out(const Osc_Stretch& s, long count) {
    const long span = std::max(s.Numbers(), 1L);
    const long wide = std::min(span * 2, std::max(count, 1L));
    long first = s.first - (wide - span) / 2;
    first = std::clamp(first, 1L, std::max(count - wide + 1, 1L));
    return Stretch_Of(first, first + wide - 1, count);
}

namespace {

Osc_Stretch Scroll(const Osc_Stretch& s, long count, long direction) {
    const long span = std::max(s.Numbers(), 1L);
    const long move = std::max(span / 2, 1L) * direction;
    const long first = std::clamp(s.first + move, 1L, std::max(count - span + 1, 1L));
    return Stretch_Of(first, first + span - 1, count);
}

} // namespace

Osc_Stretch Scroll_Left(const Osc_Stretch& s, long count) {
    return Scroll(s, count, -1);
}

Osc_Stretch Scroll_Right(const Osc_Stretch& s, long count) {
    return Scroll(s, count, 1);
}

std::array<long, Osc_Lines> Count_Level_Changes(const Osc_Trace& trace, const Osc_Stretch& stretch) {
    std::array<long, Osc_Lines> counts{};
    const long last = std::min(stretch.last, trace.Count());
    if (stretch.first < 1 || last <= stretch.first) return counts;
    const std::uint8_t* s = trace.samples.data();
    for (long i = stretch.first; i < last; ++i) {
        const unsigned change = static_cast<unsigned>(s[i] ^ s[i - 1]);
        if (change == 0) continue;
        for (int c = 0; c < Osc_Lines; ++c)
            counts[static_cast<std::size_t>(c)] += static_cast<long>(change >> c & 1u);
    }
    return counts;
}

Analyze_Result Analyze_Stretch(const Osc_Trace& trace, const Osc_Stretch& stretch,
                               Analyze_Reference reference, std::string_view reference_text) {
    Analyze_Result result;
    std::string& t = result.text;
    const long numbers = std::min(stretch.last, trace.Count()) >= stretch.first
                             ? std::min(stretch.last, trace.Count()) - stretch.first + 1
                             : 0;
    const double tot_time = static_cast<double>(numbers) / trace.sample_rate;
    t = "\r\nTest results\r\nTot time: " + Format_Number(tot_time, "0.000") + "\r\n";
    const auto counts = Count_Level_Changes(trace, stretch);
    try {
        double revs = 0;
        if (reference == Analyze_Reference::RPM) {
            const double rev_time = Divide(1, Number_Of(reference_text) / 60);
            t += "Crank rev time: " + Format_Number(rev_time, "0.000") + "\r\n";
            revs = Divide(tot_time, rev_time);
            t += "Number of revs: " + Format_Number(revs, "0.00") + "\r\n";
        } else {
            revs = Divide(static_cast<double>(counts[0]) / 2, Number_Of(reference_text));
            t += "Number of revs: " + Format_Number(revs, "0.00") + "\r\n";
            // No revolutions in no time is no speed, not a fault.
            const double rpm = revs == 0 ? 0 : Divide(revs, tot_time) * 60;
            t += "RPM: " + Format_Number(rpm, "0.0") + "\r\n";
        }
        t += std::string(Separator) + "\r\n";
        for (int c = 0; c < Osc_Lines; ++c) {
            const long count = counts[static_cast<std::size_t>(c)];
            if (revs != 0)
                t += std::string(Per_Rev_Labels[static_cast<std::size_t>(c)]) +
                     Format_Number(static_cast<double>(count) / 2 / revs, "0.00") + "\r\n";
            else
                t += std::string(Pulse_Labels[static_cast<std::size_t>(c)]) + Half_Count_Text(count) + "\r\n";
        }
    } catch (const Division_By_Zero&) {
        result.fault = "Division by zero";
    }
    return result;
}

std::optional<double> Stretch_RPM(const Osc_Stretch& stretch, int sample_rate) {
    const long numbers = stretch.Numbers();
    if (numbers <= 0 || sample_rate <= 0) return std::nullopt;
    return 60.0 * sample_rate / static_cast<double>(numbers);
}

} // namespace quorlen
