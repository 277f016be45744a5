#pragma once
// The trace file: one line per burst on the line, so that a failing exchange can be read back
// character by character with its timing. Form: seconds since start, a blank, "in" (to the box),
// "out" (from the box) or "fault", a blank, and the characters as a C-escaped quoted string (or
// the fault's description).

#include "box.h"

#include <cstdio>
#include <string>
#include <string_view>

namespace boxsim {

// Printable ASCII stays; quote and backslash are escaped; CR, LF and tab as \r \n \t; the rest as
// \xHH.
std::string Escape(std::string_view bytes);

class Trace {
public:
    Trace() = default;
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;
    ~Trace();

    bool Open(const std::string& path, Time start, std::string& error);
    void Data(Time now, std::string_view direction, std::string_view bytes);
    void Note(Time now, std::string_view text);

private:
    void Line(Time now, std::string_view direction, std::string_view text);
    std::FILE* file_ = nullptr;
    Time start_{};
};

} // namespace boxsim
