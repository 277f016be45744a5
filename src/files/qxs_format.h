#pragma once
// The .qxs settings file: 1024 lines " value " CR LF, one byte a line, followed by the free
// comment and CR LF. No header, no version, no checksum of its own.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorlen {

using Image_Bytes = std::array<std::uint8_t, 1024>;

struct Qxs_Content {
    Image_Bytes bytes{};
    std::string comment; // as the comment box shows it, lines joined by CR LF
};

// Reads the whole text. nullopt when the number part is not 1024 byte values (too few,
// a value above 255 or negative, or text that is not a number). The comment is read item by
// item the way the file was always read: a comma splits a line, quotes around an item are
// dropped, and every item is followed by CR LF.
std::optional<Qxs_Content> Parse_Qxs(std::string_view text);

// Only the 1024 numbers (the temporary copy has no comment); extra text after them is
// ignored.
std::optional<Image_Bytes> Parse_Qxs_Numbers(std::string_view text);

// The file text of an image and a comment (no comment line at all when `with_comment` is
// false, for the temporary copy).
std::string Format_Qxs(const Image_Bytes& bytes, std::string_view comment, bool with_comment = true);

// Above this size a file cannot be a settings file, and is not read into memory at all.
inline constexpr std::size_t Max_Qxs_File_Size = 16u * 1024u * 1024u;

} // namespace quorlen
