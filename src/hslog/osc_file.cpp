#include "hslog/osc_file.h"

#include "core/atomic_file.h"
#include "core/run_error.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace quorlen {

namespace {

// A line of the samples without its line end; the CR is taken off by the caller.
std::optional<int> Sample_Value(std::string_view line) {
    if (line.empty() || line.size() > 3) return std::nullopt;
    int value = 0;
    for (char c : line) {
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    if (value > 255) return std::nullopt;
    return value;
}

bool Starts_With(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

std::optional<long> Whole_Number(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\r'))
        text.remove_suffix(1);
    if (text.empty() || text.size() > 12) return std::nullopt;
    long value = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

// The closing lines: the count and, from our own captures, the rate.
void Read_Tail(std::string_view tail, Osc_Trace& trace) {
    while (!tail.empty()) {
        const std::size_t lf = tail.find('\n');
        const std::string_view line = tail.substr(0, lf);
        if (Starts_With(line, Osc_Rows_Label)) {
            if (auto n = Whole_Number(line.substr(std::strlen(Osc_Rows_Label)))) trace.rows_stated = *n;
        } else if (Starts_With(line, Osc_Rate_Label)) {
            // A rate no serial line gives is a damaged file; the default stands then.
            auto n = Whole_Number(line.substr(std::strlen(Osc_Rate_Label)));
            if (n && *n >= 1 && *n <= 1'000'000) {
                trace.sample_rate = static_cast<int>(*n);
                trace.rate_from_file = true;
            }
        }
        if (lf == std::string_view::npos) break;
        tail.remove_prefix(lf + 1);
    }
}

// "000\r\n" for every byte, made once.
const std::array<std::array<char, 5>, 256>& Sample_Lines() {
    static const auto lines = [] {
        std::array<std::array<char, 5>, 256> t{};
        for (int b = 0; b < 256; ++b)
            t[static_cast<std::size_t>(b)] = {static_cast<char>('0' + b / 100),
                                              static_cast<char>('0' + b / 10 % 10),
                                              static_cast<char>('0' + b % 10), '\r', '\n'};
        return t;
    }();
    return lines;
}

} // namespace

std::optional<Osc_Trace> Read_Osc_Text(std::string_view text, std::string& error, int fallback_rate) {
    const std::string_view begin = Osc_Begin_Mark;
    std::size_t at = 0;
    // The mark stands on a line of its own, normally the first.
    for (;;) {
        at = text.find(begin, at);
        if (at == std::string_view::npos) {
            error = "Not a high-speed log file: no " + std::string(Osc_Begin_Mark) + " line";
            return std::nullopt;
        }
        if (at == 0 || text[at - 1] == '\n') break;
        at += begin.size();
    }
    std::size_t pos = text.find('\n', at);
    Osc_Trace trace;
    trace.sample_rate = fallback_rate > 0 ? fallback_rate : Default_Sample_Rate;
    if (pos == std::string_view::npos) {
        trace.cut_off = true;
        return trace;
    }
    ++pos;
    long line_number =
        static_cast<long>(std::count(text.begin(), text.begin() + static_cast<long>(pos), '\n')) + 1;
    trace.samples.reserve((text.size() - pos) / 5 + 1);
    const std::string_view end = Osc_End_Mark;
    while (pos < text.size()) {
        const std::size_t lf = text.find('\n', pos);
        std::string_view line =
            text.substr(pos, lf == std::string_view::npos ? std::string_view::npos : lf - pos);
        const bool whole_line = lf != std::string_view::npos;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (Starts_With(line, end)) {
            // A whole file that does not state its rate comes from a capture at 115200 baud.
            trace.sample_rate = Default_Sample_Rate;
            Read_Tail(whole_line ? text.substr(lf + 1) : std::string_view(), trace);
            Hold_Framing_Bytes(trace);
            return trace;
        }
        const auto value = Sample_Value(line);
        if (!value) {
            // A half-written last line is what a cut-off capture leaves; anything else is damage.
            if (!whole_line) break;
            trace.bad_line = line_number;
            break;
        }
        if (!whole_line && line.size() < 3) break;
        trace.samples.push_back(static_cast<std::uint8_t>(*value));
        if (!whole_line) break;
        pos = lf + 1;
        ++line_number;
    }
    trace.cut_off = true;
    Hold_Framing_Bytes(trace);
    return trace;
}

void Hold_Framing_Bytes(Osc_Trace& trace) {
    auto& s = trace.samples;
    if (s.size() >= 2 && s[0] == 'd') {
        s[0] = s[1];
        ++trace.held;
    }
    // Byte n (from 1) is a check byte when n - 2 is a whole number of intervals past the first.
    for (std::size_t i = 1 + Osc_Check_Interval; i < s.size(); i += Osc_Check_Interval) {
        if (s[i] != 255) continue;
        s[i] = s[i - 1];
        ++trace.held;
    }
}

std::optional<Osc_Trace> Read_Osc_File(const std::string& path, std::string& error, int fallback_rate) {
    if (const auto why = Why_Not_A_File(path)) {
        error = path + " " + *why;
        return std::nullopt;
    }
    std::string text;
    try {
        text = Read_Whole_File(path);
    } catch (const Run_Error& e) {
        error = path + ": " + e.what();
        return std::nullopt;
    }
    return Read_Osc_Text(text, error, fallback_rate);
}

std::string Osc_Trace_Notes(const Osc_Trace& trace) {
    std::string notes;
    if (trace.bad_line > 0)
        notes += "Line " + std::to_string(trace.bad_line) + " is not a sample; the trace ends before it. ";
    else if (trace.cut_off)
        notes += "The capture was cut off: there is no " + std::string(Osc_End_Mark) + " line. The " +
                 std::to_string(trace.Count()) + " samples before the cut are shown. ";
    else if (trace.rows_stated >= 0 && trace.rows_stated != trace.Count())
        notes += "The file says " + std::to_string(trace.rows_stated) + " samples but holds " +
                 std::to_string(trace.Count()) + ". ";
    if (!trace.rate_from_file && (trace.cut_off || trace.bad_line > 0))
        notes += "Times assume " + std::to_string(trace.sample_rate) + " samples a second.";
    while (!notes.empty() && notes.back() == ' ')
        notes.pop_back();
    return notes;
}

Osc_Writer::~Osc_Writer() {
    if (file_ != nullptr) std::fclose(file_);
}

bool Osc_Writer::Open(const std::string& path, std::string& error) {
    if (file_ != nullptr) std::fclose(file_);
    written_ = 0;
    good_ = true;
    // "x": a capture never replaces a file that is already there.
    file_ = std::fopen(path.c_str(), "wbx");
    if (file_ == nullptr) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    const std::string head = std::string(Osc_Begin_Mark) + "\r\n";
    if (std::fwrite(head.data(), 1, head.size(), file_) != head.size() || std::fflush(file_) != 0) {
        error = path + ": " + std::strerror(errno);
        std::fclose(file_);
        file_ = nullptr;
        return false;
    }
    return true;
}

bool Osc_Writer::Write(std::string_view bytes) {
    if (file_ == nullptr || !good_) return false;
    if (bytes.empty()) return true;
    const auto& lines = Sample_Lines();
    buffer_.resize(bytes.size() * 5);
    char* out = buffer_.data();
    for (char c : bytes) {
        std::memcpy(out, lines[static_cast<std::uint8_t>(c)].data(), 5);
        out += 5;
    }
    if (std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size() || std::fflush(file_) != 0) {
        good_ = false;
        return false;
    }
    written_ += static_cast<long>(bytes.size());
    return true;
}

bool Osc_Writer::Close(int sample_rate) {
    if (file_ == nullptr) return false;
    bool ok = good_;
    if (ok) {
        const std::string tail = std::string(Osc_End_Mark) + "\r\n" + Osc_Rows_Label +
                                 std::to_string(written_) + "\r\n" + Osc_Rate_Label +
                                 std::to_string(sample_rate) + "\r\n";
        ok = std::fwrite(tail.data(), 1, tail.size(), file_) == tail.size();
    }
    ok = std::fclose(file_) == 0 && ok;
    file_ = nullptr;
    return ok;
}

} // namespace quorlen
