#include "files/presets.h"
#include "files/qxs_format.h"

#include <gtest/gtest.h>

#include <optional>

namespace quorlen {
namespace {

std::string Numbers(int count, int value = 0) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += " " + std::to_string(value) + " \r\n";
    return text;
}

TEST(QxsFormat, WriterFormIsExact) {
    Image_Bytes bytes{};
    bytes[0] = 5;
    bytes[1023] = 255;
    std::string text = Format_Qxs(bytes, "");
    EXPECT_EQ(text.substr(0, 10), " 5 \r\n 0 \r\n");
    EXPECT_EQ(text.substr(text.size() - 9), " 255 \r\n\r\n");
    EXPECT_EQ(text.size(), 1023u * 5 + 7 + 2);
    EXPECT_EQ(Format_Qxs(bytes, "x", false).size(), 1023u * 5 + 7);
}

TEST(QxsFormat, RoundTripKeepsBytesAndAddsOneLineEndToTheComment) {
    Image_Bytes bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7);
    auto once = Parse_Qxs(Format_Qxs(bytes, "Base map"));
    ASSERT_TRUE(once);
    EXPECT_EQ(once->bytes, bytes);
    EXPECT_EQ(once->comment, "Base map\r\n");
    auto twice = Parse_Qxs(Format_Qxs(once->bytes, once->comment));
    ASSERT_TRUE(twice);
    EXPECT_EQ(twice->comment, "Base map\r\n\r\n");
}

TEST(QxsFormat, CommentItemsSplitAtCommasAndLoseTheirQuotes) {
    auto content = Parse_Qxs(Numbers(1024) + "a,b\r\n  \"x, y\" tail\r\n");
    ASSERT_TRUE(content);
    EXPECT_EQ(content->comment, "a\r\nb\r\nx, y\r\n");
}

TEST(QxsFormat, ExactlyTheNumbersGiveAnEmptyComment) {
    auto content = Parse_Qxs(Numbers(1024, 3));
    ASSERT_TRUE(content);
    EXPECT_EQ(content->comment, "");
    EXPECT_EQ(content->bytes[1023], 3);
}

TEST(QxsFormat, NumbersMaySitOnOneLineSeparatedByCommasOrBlanks) {
    std::string text;
    for (int i = 0; i < 1024; ++i)
        text += (i % 2 ? "," : " ") + std::to_string(i % 256);
    auto content = Parse_Qxs(text);
    ASSERT_TRUE(content);
    EXPECT_EQ(content->bytes[300], 300 % 256);
}

TEST(QxsFormat, WhatIsNotASettingsFileIsRefused) {
    EXPECT_FALSE(Parse_Qxs(""));
    EXPECT_FALSE(Parse_Qxs(Numbers(1023)));
    EXPECT_FALSE(Parse_Qxs(Numbers(500) + " 256 \r\n" + Numbers(523)));
    EXPECT_FALSE(Parse_Qxs(Numbers(500) + " -1 \r\n" + Numbers(523)));
    EXPECT_FALSE(Parse_Qxs(Numbers(10) + " ten \r\n" + Numbers(1013)));
    std::string binary(100000, '\0');
    for (std::size_t i = 0; i < binary.size(); ++i)
        binary[i] = static_cast<char>(i * 31 + 7);
    EXPECT_FALSE(Parse_Qxs(binary));
}

TEST(QxsFormat, AnyNumberThatFitsAByteIsRead) {
    const auto read = [](const std::string& item) -> std::optional<int> {
        auto content = Parse_Qxs(Numbers(10) + " " + item + " \r\n" + Numbers(1013));
        if (!content) return std::nullopt;
        return content->bytes[10];
    };
    for (const char* five : {"0005", "5.0", "+5", "5.", "5e0", "0.5e1"})
        EXPECT_EQ(read(five), 5) << five;
    // Fractions take the nearest byte, a tie the even one, as the file's reader always did.
    EXPECT_EQ(read("1.5"), 2);
    EXPECT_EQ(read("2.5"), 2);
    EXPECT_EQ(read("255.4"), 255);
    EXPECT_EQ(read("-0.4"), 0);
    for (const char* refused : {"255.5", "-1", "5a", ".", "+", "1e", "0x10", "1e999"})
        EXPECT_FALSE(read(refused)) << refused;
}

TEST(Presets, FieldsAreCutByTheirDelimiters) {
    Preset_Row row = Parse_Preset_Line("200<Turbo 1.0 bar>@23,s4$@44,r251!@15,s1\xC2\xA3");
    EXPECT_EQ(row.name, "Turbo 1.0 bar");
    EXPECT_EQ(row.dataset, "200");
    EXPECT_EQ(row.list1, "@23,s4");
    EXPECT_EQ(row.list2, "@44,r251");
    EXPECT_EQ(row.list3, "@15,s1");
    EXPECT_EQ(Parse_Preset_Line("200<n>a$b!c\xA3").list3, "c");
}

} // namespace
} // namespace quorlen
