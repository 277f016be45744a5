#include "qxs_file.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace boxsim {

std::optional<Image> Parse_Qxs(std::string_view text, std::string& error) {
    Image image{};
    std::size_t pos = 0;
    for (std::size_t i = 0; i < image.size(); ++i) {
        while (pos < text.size() && (text[pos] == ' ' || text[pos] == '\r' || text[pos] == '\n'))
            ++pos;
        const std::size_t start = pos;
        long value = 0;
        while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9' && value <= 255) {
            value = value * 10 + (text[pos] - '0');
            ++pos;
        }
        const bool ends_well = pos == text.size() || text[pos] == ' ' || text[pos] == ',' ||
                               text[pos] == '\r' || text[pos] == '\n';
        if (pos == start || !ends_well || value > 255) {
            const bool ran_out = pos >= text.size() && pos == start;
            error = ran_out ? "only " : "number ";
            error += std::to_string(ran_out ? i : i + 1);
            error += ran_out ? " numbers" : " is not a byte";
            return std::nullopt;
        }
        image[i] = static_cast<std::uint8_t>(value);
        if (pos < text.size() && text[pos] == ',') ++pos;
    }
    return image;
}

std::string Format_Qxs(const Image& image, std::string_view comment) {
    std::string text;
    text.reserve(image.size() * 6 + comment.size() + 2);
    for (std::uint8_t b : image) {
        text += ' ';
        text += std::to_string(b);
        text += " \r\n";
    }
    text += comment;
    text += "\r\n";
    return text;
}

std::optional<Image> Load_Qxs(const std::string& path, std::string& error) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = path + ": " + std::strerror(errno);
        return std::nullopt;
    }
    std::ostringstream text;
    text << in.rdbuf();
    std::string why;
    auto image = Parse_Qxs(text.str(), why);
    if (!image) error = path + ": not a settings file (" + why + ")";
    return image;
}

bool Save_Qxs(const std::string& path, const Image& image, std::string& error) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << Format_Qxs(image);
    out.close();
    if (!out) {
        error = path + ": cannot be written";
        return false;
    }
    return true;
}

} // namespace boxsim
