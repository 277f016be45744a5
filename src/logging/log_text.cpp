#include "logging/log_text.h"

#include "core/text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace quorlen {

std::string Commas_To_Points(std::string_view text) {
    std::string out(text);
    std::replace(out.begin(), out.end(), ',', '.');
    return out;
}

std::string Number_Text(double value) {
    if (!std::isfinite(value)) return "0";
    if (value == 0) return "0";
    char text[64];
    if (std::fabs(value) < 1e15 && value == std::trunc(value)) {
        std::snprintf(text, sizeof text, "%.0f", value);
        return text;
    }
    std::snprintf(text, sizeof text, "%.15g", value);
    std::string out = text;
    if (out.find('e') == std::string::npos) return out;
    // Very small or large values: plain digits rather than an exponent no reader takes.
    std::snprintf(text, sizeof text, "%.15f", value);
    out = text;
    while (!out.empty() && out.back() == '0')
        out.pop_back();
    if (!out.empty() && out.back() == '.') out.pop_back();
    return out;
}

double Text_Value(std::string_view text) {
    return Val(Commas_To_Points(text));
}

int Hex_Field_Value(std::string_view field) {
    int value = 0;
    bool any = false;
    for (char c : field) {
        if (c == 'h' || c == 'H') {
            if (any) break;
            continue;
        }
        int d = -1;
        if (c >= '0' && c <= '9')
            d = c - '0';
        else if (c >= 'A' && c <= 'F')
            d = c - 'A' + 10;
        else if (c >= 'a' && c <= 'f')
            d = c - 'a' + 10;
        if (d < 0) break;
        value = value * 16 + d;
        any = true;
    }
    return value;
}

std::optional<std::pair<std::size_t, std::size_t>> Field_Bounds(std::string_view line, int n) {
    auto end_of = [&](std::size_t from) -> std::optional<std::size_t> {
        for (char c : {'\t', ';', '\r'}) {
            std::size_t at = line.find(c, from);
            if (at != std::string_view::npos) return at;
        }
        return std::nullopt;
    };
    std::size_t start = 0;
    auto stop = end_of(0);
    if (!stop) return std::nullopt;
    for (int i = 2; i <= n; ++i) {
        std::size_t tab = line.find('\t', *stop);
        start = tab == std::string_view::npos ? 0 : tab + 1;
        stop = end_of(start);
        if (!stop) return std::nullopt;
    }
    return std::pair{start, *stop};
}

std::optional<std::string> Field_Of(std::string_view line, int n) {
    auto b = Field_Bounds(line, n);
    if (!b) return std::nullopt;
    return std::string(line.substr(b->first, b->second - b->first));
}

std::optional<Key_Line> Find_Key_Line(std::string_view text, std::string_view key, int occurrence) {
    if (key.empty() || occurrence < 1) return std::nullopt;
    std::size_t at = std::string_view::npos;
    std::size_t from = 0;
    for (int k = 0; k < occurrence; ++k) {
        at = text.find(key, from);
        if (at == std::string_view::npos) return std::nullopt;
        from = at + key.size();
    }
    Key_Line kl;
    kl.key = at;
    std::size_t eq = text.find('=', at);
    if (eq == std::string_view::npos) return std::nullopt;
    kl.value_start = eq + 1;
    std::size_t crlf = text.find("\r\n", kl.value_start);
    kl.value_end = crlf == std::string_view::npos ? text.size() : crlf;
    return kl;
}

namespace {

void Warn_Missing(User_Dialogs* dialogs, int field) {
    if (dialogs != nullptr)
        dialogs->Inform_Titled("WARNING", "Did not find data no:" + std::to_string(field));
}

} // namespace

bool get_log_file_setting(std::string_view text, std::string_view key, std::string& line, std::string& value,
                          int occurrence, int field, User_Dialogs* dialogs) {
    line.clear();
    value.clear();
    auto kl = Find_Key_Line(text, key, occurrence);
    if (!kl) return false;
    line = Commas_To_Points(text.substr(kl->value_start, kl->value_end - kl->value_start));
    auto v = Field_Of(line + "\r", field);
    if (!v) {
        Warn_Missing(dialogs, field);
        line.clear();
        return false;
    }
    value = *v;
    return true;
}

std::string Raw_Log_File_Setting(std::string_view text, std::string_view key, int occurrence, int field) {
    auto kl = Find_Key_Line(text, key, occurrence);
    if (!kl) return {};
    std::string line(text.substr(kl->value_start, kl->value_end - kl->value_start));
    return Field_Of(line + "\r", field).value_or("");
}

bool set_log_file_setting(std::string& text, std::string_view key, std::string_view value, int occurrence,
                          int field, User_Dialogs* dialogs) {
    auto kl = Find_Key_Line(text, key, occurrence);
    if (!kl) return false;
    std::string line = text.substr(kl->value_start, kl->value_end - kl->value_start) + "\r";
    auto b = Field_Bounds(line, field);
    if (!b) {
        Warn_Missing(dialogs, field);
        return false;
    }
    // A field found at the virtual CR ends the line: nothing of the text lies behind it.
    std::size_t stop = std::min(b->second, line.size() - 1);
    text.replace(kl->value_start + b->first, stop - b->first, value);
    return true;
}

bool Is_End_Of_Text(char c) {
    return c == '\x1A' || c == '\x03';
}

std::size_t Drop_End_Of_Text(std::string& text) {
    const auto kept = std::remove_if(text.begin(), text.end(), Is_End_Of_Text);
    const auto dropped = static_cast<std::size_t>(text.end() - kept);
    text.erase(kept, text.end());
    return dropped;
}

long Count_Char(std::string_view text, char c, std::size_t from, std::size_t to) {
    if (from >= text.size()) return 0;
    to = std::min(to, text.size());
    if (to <= from) return 0;
    return static_cast<long>(
        std::count(text.begin() + static_cast<long>(from), text.begin() + static_cast<long>(to), c));
}

} // namespace quorlen
