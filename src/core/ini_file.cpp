#include "core/ini_file.h"

#include "core/atomic_file.h"
#include "core/text.h"

#include "core/run_error.h"

#include <cctype>

namespace quorlen {

namespace {

// Position of the separator as the reader sees it: the first "=", else the first "]".
std::size_t Key_End_For_Read(std::string_view line) {
    std::size_t p = line.find('=');
    if (p == std::string_view::npos) p = line.find(']');
    return p;
}

// Calls `entry(key, value)` for each line that has a key, in file order, until it returns
// false. Lines end at LF, with one CR before it dropped; a last line without LF counts.
template <class Entry>
void For_Each_Entry(std::string_view text, Entry entry) {
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t lf = text.find('\n', start);
        std::size_t stop = lf == std::string_view::npos ? text.size() : lf;
        if (stop > start && text[stop - 1] == '\r') --stop;
        const std::string_view line = text.substr(start, stop - start);
        const std::size_t p = Key_End_For_Read(line);
        if (p != std::string_view::npos && p != 0 && !entry(line.substr(0, p), line.substr(p + 1))) return;
        if (lf == std::string_view::npos) return;
        start = lf + 1;
    }
}

std::string Lower_Case(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
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

Ini_Snapshot::Ini_Snapshot(std::string_view text) {
    For_Each_Entry(text, [&](std::string_view key, std::string_view value) {
        values_[Lower_Case(key)].emplace_back(value);
        return true;
    });
}

bool Ini_Snapshot::Read_Ini(std::string_view key, std::string& value, int occurrence) const {
    value.clear();
    const std::vector<std::string>& list = Read_List(key);
    if (occurrence < 1 || static_cast<std::size_t>(occurrence) > list.size()) return false;
    value = list[static_cast<std::size_t>(occurrence - 1)];
    return true;
}

std::string Ini_Snapshot::Read_Ini(std::string_view key, int occurrence) const {
    std::string value;
    Read_Ini(key, value, occurrence);
    return value;
}

double Ini_Snapshot::Read_Ini_Number(std::string_view key, int occurrence) const {
    return Val(Read_Ini(key, occurrence));
}

const std::vector<std::string>& Ini_Snapshot::Read_List(std::string_view key) const {
    static const std::vector<std::string> none;
    const auto found = values_.find(Lower_Case(key));
    return found == values_.end() ? none : found->second;
}

bool Ini_File::Read_Ini(std::string_view key, std::string& value, int occurrence) const {
    value.clear();
    std::string text;
    try {
        text = Read_Whole_File(path_);
    } catch (const Run_Error&) {
        return false; // no file: every key reads empty
    }
    // Only one line can be the occurrence asked for, so the first match of the count ends it.
    int count = 1;
    bool found = false;
    For_Each_Entry(text, [&](std::string_view line_key, std::string_view line_value) {
        if (!Equal_No_Case(line_key, key)) return true;
        if (count++ != occurrence) return true;
        value = line_value;
        found = true;
        return false;
    });
    return found;
}

Ini_Snapshot Ini_File::Snapshot() const {
    return Ini_Snapshot(Read_Text_If_Any(path_));
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
