#include "core/text.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace quorlen {

namespace {
char Lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}
bool Is_Blank(char c) {
    return c == ' ' || c == '\t';
}
} // namespace

bool Equal_No_Case(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (Lower(a[i]) != Lower(b[i])) return false;
    return true;
}

bool Ends_With_No_Case(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && Equal_No_Case(text.substr(text.size() - end.size()), end);
}

double Val(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && Is_Blank(text[i]))
        ++i;
    std::string number;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) number += text[i++];
    bool point = false;
    for (; i < text.size(); ++i) {
        char c = text[i];
        if (std::isdigit(static_cast<unsigned char>(c))) {
            number += c;
        } else if (c == '.' && !point) {
            point = true;
            number += c;
        } else {
            break;
        }
    }
    if (number.empty() || number == "-" || number == "+" || number == ".") return 0.0;
    // The program's numbers always have the point; the locale the desktop runs in must not
    // make "1.5" read as 1.
    std::string_view digits = number;
    if (digits.front() == '+') digits.remove_prefix(1);
    double value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

std::optional<long> Whole_Within(double value, long lo, long hi) {
    const double whole = std::trunc(value);
    if (!(whole >= static_cast<double>(lo) && whole <= static_cast<double>(hi))) return std::nullopt;
    return static_cast<long>(whole);
}

std::optional<long> To_Integer(std::string_view text) {
    std::string trimmed = Trim(text);
    if (trimmed.empty()) return std::nullopt;
    long value = 0;
    const char* first = trimmed.data();
    if (*first == '+') ++first;
    const char* last = trimmed.data() + trimmed.size();
    auto [end, ec] = std::from_chars(first, last, value);
    if (ec != std::errc() || end != last) return std::nullopt;
    return value;
}

std::vector<std::string> Split_Lines(std::string_view text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t lf = text.find('\n', start);
        std::size_t end = lf == std::string_view::npos ? text.size() : lf;
        std::size_t stop = end;
        if (stop > start && text[stop - 1] == '\r') --stop;
        lines.emplace_back(text.substr(start, stop - start));
        if (lf == std::string_view::npos) break;
        start = lf + 1;
    }
    return lines;
}

std::string Trim(std::string_view text) {
    std::size_t a = 0, b = text.size();
    while (a < b && std::isspace(static_cast<unsigned char>(text[a])))
        ++a;
    while (b > a && std::isspace(static_cast<unsigned char>(text[b - 1])))
        --b;
    return std::string(text.substr(a, b - a));
}

} // namespace quorlen
