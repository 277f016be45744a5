// The box's error counters in words.

#include "link/error_codes.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

TEST(Error_Codes, EachNibbleHasItsWordsAndTheGapsAreUnsupported) {
    EXPECT_EQ(Err_text(1011, 0x21), "AFR high 1\r\nAFR low 2\r\n");
    EXPECT_EQ(Err_text(1017, 0x30), "Crank 3\r\n");
    EXPECT_EQ(Err_text(1012, 0x0F), "Throttel high 15\r\n");
    EXPECT_EQ(Err_text(1021, 0xF0), "Unsupported 15\r\n") << "the high side of 1021 is named so";
    EXPECT_EQ(Err_text(1019, 0x01), "Unsupported 1019\r\n");
    EXPECT_EQ(Err_text(1022, 0x44), "Unsupported 1022\r\n");
    EXPECT_EQ(Err_text(1010, 0x44), "Unsupported 1010\r\n");
    EXPECT_EQ(Err_text(1015, 0), "");
}

TEST(Error_Codes, MasterThenSlave) {
    Settings_Image image;
    Form_Texts texts;
    Show_Error_Code(image, texts);
    EXPECT_EQ(texts.Error_Codes_txt, "Master:\r\n\r\nSlave:\r\n");
    image.CardByte[1020] = 0x12;
    image.SlaveByte[1013] = 0x01;
    image.SlaveByte[1023] = 0x55; // beyond the counters
    Show_Error_Code(image, texts);
    EXPECT_EQ(texts.Error_Codes_txt,
              "Master:\r\nBoost limit 2\r\nRPM limit 1\r\n\r\nSlave:\r\nMAP high 1\r\n");
}

} // namespace
} // namespace quorlen
