#include "files/qxs_format.h"

namespace quorlen {

namespace {

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
        std::string_view item = text_.substr(start, pos_ - start);
        if (item.empty() || item.size() > 3) return std::nullopt;
        int value = 0;
        for (char c : item) {
            if (c < '0' || c > '9') return std::nullopt;
            value = value * 10 + (c - '0');
        }
        if (value > 255) return std::nullopt;
        Skip_Delimiter();
        return static_cast<std::uint8_t>(value);
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
