#include "files/qxs_format.h"

#include "image/scaling.h"

#include <charconv>

namespace quorlen {

namespace {

// A number as a byte: sign, digits, a decimal point and an exponent are all a number
// ("0005", "5.0", "+5" and "5e0" are 5), rounded to the whole byte with a tie to the even
// one. Refused only when it is no number or doesn't fit a byte.
std::optional<std::uint8_t> Byte_Of(std::string_view item) {
    std::size_t i = 0;
    const auto digits = [&] {
        const std::size_t from = i;
        while (i < item.size() && item[i] >= '0' && item[i] <= '9')
            ++i;
        return i - from;
    };
    if (i < item.size() && (item[i] == '+' || item[i] == '-')) ++i;
    std::size_t mantissa = digits();
    if (i < item.size() && item[i] == '.') {
        ++i;
        mantissa += digits();
    }
    if (mantissa == 0) return std::nullopt;
    if (i < item.size() && (item[i] == 'e' || item[i] == 'E')) {
        ++i;
        if (i < item.size() && (item[i] == '+' || item[i] == '-')) ++i;
        if (digits() == 0) return std::nullopt;
    }
    if (i != item.size()) return std::nullopt;
    // Read without the locale's decimal mark: the file's is always the point.
    const std::string_view number = item.front() == '+' ? item.substr(1) : item;
    double value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || end != number.data() + number.size()) return std::nullopt;
    value = Round_Even_Whole(value);
    if (!(value >= 0 && value <= 255)) return std::nullopt;
    return static_cast<std::uint8_t>(value);
}

class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    bool At_End() const { return pos_ >= text_.size(); }

    // A byte value: blanks and line ends before it are passed over; it ends at a comma, a
    // blank or a line end, and the rest of its line (up to the delimiter) is consumed.
    std::optional<std::uint8_t> Number() {
        while (!At_End() && (Peek() == ' ' || Peek() == '\r' || Peek() == '\n' || Peek() == '\t'))
            ++pos_;
        if (At_End()) return std::nullopt;
        std::size_t start = pos_;
        while (!At_End() && Peek() != ',' && Peek() != ' ' && Peek() != '\r' && Peek() != '\n' &&
               Peek() != '\t')
            ++pos_;
        auto value = Byte_Of(text_.substr(start, pos_ - start));
        if (!value) return std::nullopt;
        Skip_Delimiter();
        return value;
    }

    // A comment item: blanks ahead passed over; a quoted item runs to the next quote; any
    // other item ends at a comma or at the line's end.
    std::string Item() {
        while (!At_End() && Peek() == ' ')
            ++pos_;
        std::string item;
        if (!At_End() && Peek() == '"') {
            ++pos_;
            std::size_t close = text_.find('"', pos_);
            std::size_t end = close == std::string_view::npos ? text_.size() : close;
            item = std::string(text_.substr(pos_, end - pos_));
            pos_ = close == std::string_view::npos ? text_.size() : close + 1;
            while (!At_End() && Peek() != ',' && Peek() != '\r' && Peek() != '\n')
                ++pos_;
        } else {
            std::size_t start = pos_;
            while (!At_End() && Peek() != ',' && Peek() != '\r' && Peek() != '\n')
                ++pos_;
            item = std::string(text_.substr(start, pos_ - start));
        }
        Consume_End_Of_Item();
        return item;
    }

private:
    char Peek() const { return text_[pos_]; }

    void Skip_Delimiter() {
        while (!At_End() && (Peek() == ' ' || Peek() == '\t'))
            ++pos_;
        Consume_End_Of_Item();
    }

    void Consume_End_Of_Item() {
        if (At_End()) return;
        if (Peek() == ',') {
            ++pos_;
        } else if (Peek() == '\r') {
            ++pos_;
            if (!At_End() && Peek() == '\n') ++pos_;
        } else if (Peek() == '\n') {
            ++pos_;
        }
    }

    std::string_view text_;
    std::size_t pos_ = 0;
};

std::optional<Image_Bytes> Read_Numbers(Reader& reader) {
    Image_Bytes bytes{};
    for (auto& b : bytes) {
        auto value = reader.Number();
        if (!value) return std::nullopt;
        b = *value;
    }
    return bytes;
}

} // namespace

std::optional<Qxs_Content> Parse_Qxs(std::string_view text) {
    Reader reader(text);
    auto bytes = Read_Numbers(reader);
    if (!bytes) return std::nullopt;
    Qxs_Content content;
    content.bytes = *bytes;
    while (!reader.At_End()) {
        content.comment += reader.Item();
        content.comment += "\r\n";
    }
    return content;
}

std::optional<Image_Bytes> Parse_Qxs_Numbers(std::string_view text) {
    Reader reader(text);
    return Read_Numbers(reader);
}

std::string Format_Qxs(const Image_Bytes& bytes, std::string_view comment, bool with_comment) {
    std::string text;
    text.reserve(bytes.size() * 6 + comment.size() + 2);
    for (std::uint8_t b : bytes) {
        text += ' ';
        text += std::to_string(b);
        text += " \r\n";
    }
    if (with_comment) {
        text += comment;
        text += "\r\n";
    }
    return text;
}

} // namespace quorlen
