#include "trace.h"

#include <cerrno>
#include <cstring>

namespace boxsim {

std::string Escape(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() + 2);
    for (char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            text += '\\';
            text += c;
        } else if (c == '\r') {
            text += "\\r";
        } else if (c == '\n') {
            text += "\\n";
        } else if (c == '\t') {
            text += "\\t";
        } else if (u >= 0x20 && u < 0x7F) {
            text += c;
        } else {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02X", u);
            text += hex;
        }
    }
    return text;
}

Trace::~Trace() {
    if (file_) std::fclose(file_);
}

bool Trace::Open(const std::string& path, Time start, std::string& error) {
    file_ = std::fopen(path.c_str(), "w");
    if (!file_) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    start_ = start;
    return true;
}

void Trace::Data(Time now, std::string_view direction, std::string_view bytes) {
    if (!file_) return;
    std::string quoted = "\"";
    quoted += Escape(bytes);
    quoted += '"';
    Line(now, direction, quoted);
}

void Trace::Note(Time now, std::string_view text) {
    if (file_) Line(now, "fault", text);
}

void Trace::Line(Time now, std::string_view direction, std::string_view text) {
    const double seconds = std::chrono::duration<double>(now - start_).count();
    std::fprintf(file_, "%.6f %.*s %.*s\n", seconds, static_cast<int>(direction.size()), direction.data(),
                 static_cast<int>(text.size()), text.data());
    // Flushed per line: the trace is read while boxsim still runs, and after a kill.
    std::fflush(file_);
}

} // namespace boxsim
