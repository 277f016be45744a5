#include "core/ini_file.h"

#include "core/atomic_file.h"
#include "core/text.h"

#include "core/run_error.h"

namespace quorlen {

namespace {

// Position of the separator as the reader sees it: the first "=", else the first "]".
std::size_t Key_End_For_Read(std::string_view line) {
    std::size_t p = line.find('=');
    if (p == std::string_view::npos) p = line.find(']');
    return p;
}

std::string Read_Text_If_Any(const std::string& path) {
    try {
        return Read_Whole_File(path);
    } catch (const Run_Error&) {
        return {};
    }
}

} // namespace

Ini_File::Ini_File(std::string path, std::string temp_path)
    : path_(std::move(path)), temp_path_(std::move(temp_path)) {}

bool Ini_File::Read_Ini(std::string_view key, std::string& value, int occurrence) const {
    value.clear();
    std::string text;
    try {
        text = Read_Whole_File(path_);
    } catch (const Run_Error&) {
        return false; // no file: every key reads empty
    }

    int count = 1;
    bool found = false;
    for (const std::string& line : Split_Lines(text)) {
        std::size_t p = Key_End_For_Read(line);
        if (p == std::string::npos || p == 0) continue;
        if (Equal_No_Case(std::string_view(line).substr(0, p), key)) {
            if (count == occurrence) {
                value = line.substr(p + 1);
                found = true;
            }
            ++count;
        }
    }
    return found;
}

std::string Ini_File::Read_Ini(std::string_view key, int occurrence) const {
    std::string value;
    Read_Ini(key, value, occurrence);
    return value;
}

double Ini_File::Read_Ini_Number(std::string_view key, int occurrence) const {
    return Val(Read_Ini(key, occurrence));
}

std::string Ini_Rewrite(std::string_view old_text, std::string_view key, std::string_view value,
                        std::string_view match) {
    std::string out;
    out.reserve(old_text.size() + key.size() + value.size() + 4);
    std::string entry = std::string(key) + "=" + std::string(value) + "\r\n";
    bool done = false;
    bool pending = false;
    for (const std::string& line : Split_Lines(old_text)) {
        std::size_t p = line.find('=');
        if (p != std::string::npos) {
            if (Equal_No_Case(std::string_view(line).substr(0, p), key)) {
                if (match.empty()) {
                    out += entry;
                    done = true;
                    pending = false;
                    continue;
                }
                // Once the entry is placed, later lines of the list are only copied: marking
                // them pending again would write the entry a second time.
                if (!done) pending = true;
                if (line.find(match) != std::string::npos) {
                    out += entry;
                    done = true;
                    pending = false;
                    continue;
                }
            }
        } else if (pending) {
            out += entry;
            done = true;
            pending = false;
        }
        out += line;
        out += "\r\n";
    }
    if (!done) out += entry;
    return out;
}

void Ini_File::Write_Ini(std::string_view key, std::string_view value, std::string_view match) {
    std::string old_text = Read_Text_If_Any(path_);
    Replace_File_Atomically(path_, Ini_Rewrite(old_text, key, value, match), temp_path_);
}

} // namespace quorlen
