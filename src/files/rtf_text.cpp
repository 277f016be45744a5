#include "files/rtf_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <vector>

namespace quorlen {

namespace {

const char* const Hex = "0123456789abcdef";

int Hex_Value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

// Groups whose text is not part of the document.
bool Is_Destination(std::string_view word) {
    static constexpr std::array<std::string_view, 24> names{"fonttbl",
                                                            "colortbl",
                                                            "stylesheet",
                                                            "info",
                                                            "pict",
                                                            "header",
                                                            "footer",
                                                            "headerl",
                                                            "headerr",
                                                            "headerf",
                                                            "footerl",
                                                            "footerr",
                                                            "footerf",
                                                            "footnote",
                                                            "object",
                                                            "listtable",
                                                            "listoverridetable",
                                                            "rsidtbl",
                                                            "generator",
                                                            "xmlnstbl",
                                                            "themedata",
                                                            "latentstyles",
                                                            "datastore",
                                                            "fldinst"};
    for (std::string_view name : names)
        if (word == name) return true;
    return false;
}

struct Group {
    bool skip = false;
    int uc = 1; // characters that stand in for a \u character
};

// The font size in half points at which the widest line fits an A4 page between half-inch
// margins (Courier New advances 0.6 of its size), from 10 points down to 5.
int Half_Points_For(std::string_view text) {
    std::size_t widest = 1, width = 0;
    for (char c : text) {
        if (c == '\n') {
            width = 0;
            continue;
        }
        width += c == '\t' ? 8 - width % 8 : (c == '\r' ? 0 : 1);
        widest = std::max(widest, width);
    }
    constexpr double Line_Points = 595.0 - 2 * 36;
    const double size = Line_Points / (0.6 * static_cast<double>(widest));
    return std::clamp(static_cast<int>(size * 2), 10, 20);
}

} // namespace

std::string Text_To_Rtf(std::string_view text) {
    std::string rtf =
        "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fmodern\\fprq1\\fcharset0 Courier New;}}"
        "\r\n\\paperw11906\\paperh16838\\margl720\\margr720\\margt720\\margb720"
        "\r\n\\viewkind4\\uc1\\pard\\f0\\fs" +
        std::to_string(Half_Points_For(text)) + " ";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
        if (c == '\n' || c == '\r') {
            rtf += "\\par\r\n";
        } else if (c == '\t') {
            rtf += "\\tab ";
        } else if (c == '\\' || c == '{' || c == '}') {
            rtf += '\\';
            rtf += static_cast<char>(c);
        } else if (c >= 0x80) {
            rtf += "\\'";
            rtf += Hex[c >> 4];
            rtf += Hex[c & 15];
        } else if (c >= 0x20) {
            rtf += static_cast<char>(c);
        }
    }
    rtf += "}\r\n";
    return rtf;
}

std::string Rtf_To_Text(std::string_view rtf) {
    if (rtf.substr(0, 5) != "{\\rtf") return std::string(rtf);
    std::string text;
    std::vector<Group> stack{Group{}};
    bool group_start = false;
    int fallback = 0; // characters still to drop after a \u character
    auto put = [&](char c) {
        if (stack.back().skip) return;
        if (fallback > 0) {
            --fallback;
            return;
        }
        text += c;
    };
    std::size_t i = 0;
    while (i < rtf.size()) {
        const char c = rtf[i];
        if (c == '{') {
            stack.push_back(stack.back());
            group_start = true;
            fallback = 0;
            ++i;
            continue;
        }
        if (c == '}') {
            if (stack.size() > 1) stack.pop_back();
            group_start = false;
            fallback = 0;
            ++i;
            continue;
        }
        if (c == '\r' || c == '\n') {
            ++i;
            continue;
        }
        if (c != '\\') {
            put(c);
            group_start = false;
            ++i;
            continue;
        }
        // A control word or symbol.
        ++i;
        if (i >= rtf.size()) break;
        const char s = rtf[i];
        if (std::isalpha(static_cast<unsigned char>(s))) {
            std::size_t w = i;
            while (i < rtf.size() && std::isalpha(static_cast<unsigned char>(rtf[i])))
                ++i;
            const std::string_view word = rtf.substr(w, i - w);
            bool has_param = false;
            long param = 0;
            bool negative = false;
            if (i < rtf.size() && rtf[i] == '-') {
                negative = true;
                ++i;
            }
            while (i < rtf.size() && std::isdigit(static_cast<unsigned char>(rtf[i]))) {
                has_param = true;
                if (param < 1000000) param = param * 10 + (rtf[i] - '0');
                ++i;
            }
            if (negative) param = -param;
            if (i < rtf.size() && rtf[i] == ' ') ++i;
            if (group_start && Is_Destination(word)) stack.back().skip = true;
            group_start = false;
            if (word == "par" || word == "line" || word == "sect" || word == "page") {
                put('\r');
                put('\n');
            } else if (word == "tab") {
                put('\t');
            } else if (word == "uc" && has_param) {
                stack.back().uc = static_cast<int>(param);
            } else if (word == "u" && has_param) {
                const long code = param < 0 ? param + 65536 : param;
                put(code >= 0 && code < 256 ? static_cast<char>(code) : '?');
                fallback = stack.back().skip ? 0 : stack.back().uc;
            }
            continue;
        }
        group_start = group_start && s == '*';
        if (s == '*') {
            stack.back().skip = true;
            ++i;
            continue;
        }
        if (s == '\'') {
            const int hi = i + 1 < rtf.size() ? Hex_Value(rtf[i + 1]) : -1;
            const int lo = i + 2 < rtf.size() ? Hex_Value(rtf[i + 2]) : -1;
            if (hi >= 0 && lo >= 0) {
                put(static_cast<char>(hi * 16 + lo));
                i += 3;
            } else {
                ++i;
            }
            continue;
        }
        if (s == '\r' || s == '\n') {
            put('\r');
            put('\n');
        } else if (s == '~') {
            put(' ');
        } else if (s == '_') {
            put('-');
        } else if (s == '\\' || s == '{' || s == '}') {
            put(s);
        }
        ++i;
    }
    return text;
}

} // namespace quorlen
