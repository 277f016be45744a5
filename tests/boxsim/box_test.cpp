// The box's side of the protocol, driven by feeding it strings: what the program's parser and
// read/write routines rely on must hold here character for character.

#include "box.h"

#include <gtest/gtest.h>

#include <string>

namespace boxsim {
namespace {

using namespace std::chrono_literals;

// A field of the banner the way the program locates it: `length` characters, `offset` after
// the start of `name`.
// The echo and a banner that ends with its mode line.
bool Whole_Banner(const std::string& answer) {
    return answer.size() > 1 && answer[0] == 'v' && answer.back() == '\n' &&
           answer.find("mode") != std::string::npos;
}

std::string Field(const std::string& banner, const std::string& name, std::size_t offset,
                  std::size_t length) {
    const auto at = banner.find(name);
    if (at == std::string::npos) return "<missing " + name + ">";
    return banner.substr(at + offset, length);
}

Image Counting_Image() {
    Image image{};
    for (std::size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<std::uint8_t>(i * 7 + 3);
    return image;
}

std::string Send(Box& box, const std::string& text, Time now = {}) {
    return box.Receive(text, now);
}

std::uint8_t Hex_Pair(const std::string& text, std::size_t at) {
    return static_cast<std::uint8_t>(std::stoi(text.substr(at, 2), nullptr, 16));
}

// The byte dialogue for one run, as the program sends it, checking each echo on the way.
void Write_Run(Box& box, int address, const std::vector<std::uint8_t>& values) {
    char digits[8];
    ASSERT_EQ(Send(box, "b"), "b");
    ASSERT_EQ(Send(box, "w"), "w$");
    std::snprintf(digits, sizeof digits, "%04X", address);
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(Send(box, std::string(1, digits[i])), std::string(1, digits[i]));
    for (std::uint8_t v : values) {
        std::snprintf(digits, sizeof digits, "%02X", v);
        ASSERT_EQ(Send(box, std::string(1, digits[0])), std::string(1, digits[0]));
        ASSERT_EQ(Send(box, std::string(1, digits[1])), std::string(1, digits[1]) + "w");
    }
    ASSERT_EQ(Send(box, "$").size(), 4u);
}

std::string Frame(int first, const std::vector<std::uint8_t>& data, int checksum_adjust = 0) {
    const auto count = data.size();
    const int sum = Checksum(data.data(), count) + checksum_adjust;
    std::string frame;
    for (int v : {first >> 8, first & 0xFF, static_cast<int>(count >> 8), static_cast<int>(count & 0xFF),
                  (sum >> 8) & 0xFF, sum & 0xFF})
        frame += static_cast<char>(v);
    frame.append(data.begin(), data.end());
    return frame;
}

TEST(Checksum, IsTheWrappingSumLessOne) {
    const std::uint8_t zeros[4] = {};
    EXPECT_EQ(Checksum(zeros, 4), 65535);
    const std::uint8_t one[1] = {1};
    EXPECT_EQ(Checksum(one, 1), 0);
    // 257 bytes of 255 sum to 65535; one more 1 makes exactly 65536, which wraps to 0.
    std::vector<std::uint8_t> wrap(257, 255);
    EXPECT_EQ(Checksum(wrap.data(), wrap.size()), 65534);
    wrap.push_back(1);
    EXPECT_EQ(Checksum(wrap.data(), wrap.size()), 65535);
}

TEST(Banner, HasEveryFieldWhereTheProgramLooks) {
    Box_Config config;
    config.image[Dataset_Byte] = 7;
    config.serial = 0x1A2B;
    config.firmware = "800M3 V9.99b";
    config.engine_running = true;
    config.slave_present = true;
    config.smartcard = true;
    Box box(config);
    const std::string answer = Send(box, "v");

    EXPECT_EQ(answer.substr(answer.size() - 13), "Master mode\r\n");
    EXPECT_EQ(answer[0], 'v');
    EXPECT_EQ(answer.back(), '\n');
    EXPECT_NE(answer.find("mode"), std::string::npos);
    for (std::size_t i = 0; i < answer.size(); ++i)
        if (answer[i] == '\n') {
            EXPECT_EQ(answer[i - 1], '\r') << "bare LF at " << i;
        }
    // These markers start the text frames; a banner left over in the buffer must not fake one.
    EXPECT_EQ(answer.find_first_of("@#"), std::string::npos);

    const auto version_at = answer.find("VELMORA ECU") + 12;
    EXPECT_EQ(answer.substr(version_at, answer.find("\r\n", version_at) - version_at), "800M3 V9.99b");
    EXPECT_EQ(Field(answer, "Serial", 9, 5), "1A2Bh");
    EXPECT_EQ(Field(answer, "SC ID", 6, 3), "007");
    EXPECT_EQ(Field(answer, "Status", 7, 3), "000");
    EXPECT_EQ(Field(answer, "Status", 10, 2), "01");
    EXPECT_NE(answer.find("Master"), std::string::npos);
    EXPECT_NE(answer.find("Slave present"), std::string::npos);
    EXPECT_NE(answer.find("Smartcard present"), std::string::npos);
    EXPECT_EQ(answer.find("I2C TIME OUT 2"), std::string::npos);
}

TEST(Banner, FollowsConfigurationAndMemory) {
    Box_Config config;
    config.serial = 1234;
    config.serial_decimal = true;
    config.dataset = 201;
    config.status_value = false;
    config.image[Mode_Byte] = Slave_Mark;
    Box box(config);
    const std::string answer = Send(box, "v");
    EXPECT_EQ(Field(answer, "Serial", 9, 5), "01234");
    EXPECT_EQ(Field(answer, "SC ID", 6, 3), "201");
    EXPECT_EQ(Field(answer, "Status", 10, 2), "\r\n");
    // A box whose own mode byte says slave has no "Master" anywhere, but still "mode".
    EXPECT_EQ(answer.find("Master"), std::string::npos);
    EXPECT_NE(answer.find("Slave mode"), std::string::npos);
    EXPECT_EQ(answer.find("Slave present"), std::string::npos);
    EXPECT_EQ(answer.find("Smartcard present"), std::string::npos);
}

TEST(Banner, EndsWithItsModeLineAndIsPaddedOnlyWhenAsked) {
    Box_Config config;
    const std::string natural = Banner(config, config.image, false);
    EXPECT_LT(natural.size() + 1, 120u);
    EXPECT_EQ(natural.substr(natural.size() - 13), "Master mode\r\n");
    EXPECT_EQ(natural.find("-\r\n"), std::string::npos);
    // Every firmware length, including the one that leaves a single character to fill.
    config.banner_pad = 200;
    for (std::size_t n = 0; n < 150; ++n) {
        config.firmware = std::string(n, 'x');
        const std::string banner = Banner(config, config.image, n % 2 == 0);
        EXPECT_GE(banner.size() + 1, 200u) << n;
        if (banner.size() + 1 > 200) {
            EXPECT_EQ(banner.find("-\r\n"), std::string::npos) << "padded needlessly " << n;
        }
        // The padding stands before the mode line, so the banner still ends with it.
        EXPECT_EQ(banner.substr(banner.size() - 13), "Master mode\r\n") << n;
        EXPECT_EQ(banner.substr(banner.find("VELMORA ECU") + 12, n + 2), config.firmware + "\r\n") << n;
    }
}

TEST(Banner, DisplayBusFaultOnlyForTheFirstBanners) {
    Box_Faults faults;
    faults.i2c_timeouts = 2;
    Box box(Box_Config{}, faults);
    EXPECT_NE(Send(box, "v").find("I2C TIME OUT 2"), std::string::npos);
    const std::string second = Send(box, "v");
    EXPECT_NE(second.find("I2C TIME OUT 2"), std::string::npos);
    EXPECT_LT(second.find("I2C TIME OUT 2"), second.find("mode"));
    EXPECT_EQ(Send(box, "v").find("I2C TIME OUT 2"), std::string::npos);
}

TEST(Bootloader, AnswersPromptUntilGoThenBanner) {
    Box_Config config;
    config.bootloader = true;
    Box box(config);
    const std::string prompt = Send(box, "v");
    EXPECT_NE(prompt.find("bl24>"), std::string::npos);
    EXPECT_EQ(prompt.find("mode"), std::string::npos);
    EXPECT_EQ(Send(box, "rd"), "rd"); // the boot loader only echoes
    EXPECT_EQ(Send(box, "g").size(), 3u);
    EXPECT_FALSE(box.In_Bootloader());
    EXPECT_NE(Send(box, "v").find("mode"), std::string::npos);
}

TEST(Bootloader, ResetFaultLosesWhatWasNotCommitted) {
    Box_Faults faults;
    faults.bootloader_after = 19; // a run is 9 commands: the reset meets the second "ue"
    Box box(Box_Config{}, faults);
    Write_Run(box, 10, {0x11});
    EXPECT_EQ(Send(box, "ue"), "ue*");
    Write_Run(box, 11, {0x22});
    EXPECT_EQ(box.Memory()[11], 0x22);
    EXPECT_EQ(Send(box, "ue"), "ue") << "the boot loader only echoes";
    EXPECT_TRUE(box.In_Bootloader());
    EXPECT_EQ(box.Memory()[10], 0x11);
    EXPECT_EQ(box.Memory()[11], 0x00);
    EXPECT_NE(Send(box, "v").find("bl24>"), std::string::npos);
}

TEST(ByteWrite, EchoesAutoIncrementsAndCommitsOnUe) {
    Box box(Box_Config{});
    Write_Run(box, 300, {0x42, 0xFF, 0x07});
    EXPECT_EQ(box.Memory()[300], 0x42);
    EXPECT_EQ(box.Memory()[301], 0xFF);
    EXPECT_EQ(box.Memory()[302], 0x07);
    EXPECT_EQ(box.Committed()[300], 0x00) << "nothing is kept before ue";
    EXPECT_EQ(Send(box, "ue"), "ue*");
    EXPECT_EQ(box.Committed()[301], 0xFF);
    // The box reads digits in either case.
    EXPECT_EQ(Send(box, "bw03ff"), "bw$03ff");
    EXPECT_EQ(Send(box, "a"), "a");
    EXPECT_EQ(Send(box, "b"), "bw");
    EXPECT_EQ(box.Memory()[1023], 0xAB);
    // Past the end of memory the dialogue goes on but nothing is stored.
    EXPECT_EQ(Send(box, "12$"), "12w$\r\n>");
    EXPECT_EQ(box.Memory()[0], 0x00);
}

TEST(ByteWrite, KeepsItsOwnReservedBytesAndLeavesOnStrayCharacters) {
    Box_Config config;
    config.image[250] = 9;
    config.image[251] = 8;
    Box box(config);
    Write_Run(box, 249, {1, 2, 3, 4});
    EXPECT_EQ(box.Memory()[249], 1);
    EXPECT_EQ(box.Memory()[250], 9);
    EXPECT_EQ(box.Memory()[251], 8);
    EXPECT_EQ(box.Memory()[252], 4);
    // A half byte followed by a command is dropped, and the command is served.
    Send(box, "bw01004");
    EXPECT_TRUE(Whole_Banner(Send(box, "v")));
    EXPECT_EQ(box.Memory()[256], 0);
}

TEST(TextRead, MasterAndSlaveFrames) {
    Box_Config config;
    config.image = Counting_Image();
    config.slave_present = true;
    config.slave_image = Counting_Image();
    config.slave_image[5] = 0xAB;
    Box box(config);

    const std::string rd = Send(box, "rd");
    ASSERT_EQ(rd.size(), 2056u);
    EXPECT_EQ(rd.substr(0, 2), "rd");
    const auto at = rd.find('@');
    ASSERT_NE(at, std::string::npos);
    for (std::size_t i = 0; i < 1024; ++i)
        ASSERT_EQ(Hex_Pair(rd, at + 1 + 2 * i), config.image[i]) << i;

    const std::string rs = Send(box, "rs");
    ASSERT_EQ(rs.size(), 2056u);
    const auto hash = rs.find('#');
    ASSERT_NE(hash, std::string::npos);
    EXPECT_EQ(rs.find('@'), std::string::npos);
    EXPECT_EQ(Hex_Pair(rs, hash + 1 + 2 * 5), 0xAB);

    Box alone(Box_Config{});
    EXPECT_EQ(Send(alone, "rs"), "rs") << "no slave: only the echo, and the program times out";
}

TEST(BinaryRead, FrameWithChecksumAndTerminator) {
    Box_Config config;
    config.image = Counting_Image();
    config.image[17] = '@'; // a data byte equal to the terminator
    Box box(config);
    const std::string frame = Send(box, "bR");
    ASSERT_EQ(frame.size(), 1029u);
    EXPECT_EQ(frame.substr(0, 2), "bR");
    EXPECT_EQ(frame.rfind('@'), 1028u);
    std::vector<std::uint8_t> data(frame.begin() + 2, frame.begin() + 1026);
    EXPECT_TRUE(std::equal(data.begin(), data.end(), config.image.begin()));
    const unsigned sum = static_cast<std::uint8_t>(frame[1026]) << 8 | static_cast<std::uint8_t>(frame[1027]);
    EXPECT_EQ(sum, Checksum(config.image.data(), 1024));
}

TEST(BinaryWrite, AcceptsGoodFrameAndRefusesBadOnes) {
    Box_Config config;
    config.slave_present = true;
    config.slave_image[Mode_Byte] = Slave_Mark;
    Box box(config);
    const std::string prompt = Send(box, "bW");
    EXPECT_EQ(prompt.size(), 7u);
    EXPECT_EQ(prompt.substr(0, 2), "bW");
    // Writing the master's mode byte reaches the slave with the slave's mark kept.
    EXPECT_EQ(Send(box, Frame(0, {0x00, 0x01, 0x02})), "&");
    EXPECT_EQ(box.Committed()[2], 0x02) << "a frame needs no ue";
    EXPECT_EQ(box.Slave_Memory()[1], 0x01 | Slave_Mark);
    EXPECT_EQ(box.Slave_Memory()[2], 0x02);

    Send(box, "bW");
    EXPECT_EQ(Send(box, Frame(100, {5, 6}, 1)), "E") << "bad checksum";
    EXPECT_EQ(box.Memory()[100], 0);
    Send(box, "bW");
    EXPECT_EQ(Send(box, Frame(1023, {5, 6})), "E") << "runs past the end";
    Send(box, "bW");
    EXPECT_EQ(Send(box, Frame(1023, {0x77})), "&");
    EXPECT_EQ(box.Memory()[1023], 0x77);
    EXPECT_NE(Send(box, "v").find("mode"), std::string::npos) << "back to commands after a frame";
}

TEST(BinaryWrite, StalledFrameIsRefusedAfterTheGap) {
    Box box(Box_Config{});
    Send(box, "bW", 0ms);
    const std::string part = Frame(10, {1, 2, 3}).substr(0, 7);
    EXPECT_EQ(box.Receive(part, 10ms), "");
    EXPECT_EQ(box.Next_Deadline(), 10ms + Box::Frame_Gap);
    EXPECT_EQ(box.Tick(10ms + Box::Frame_Gap), "");
    EXPECT_EQ(box.Tick(11ms + Box::Frame_Gap), "E");
    EXPECT_EQ(box.Memory()[10], 0);
    EXPECT_TRUE(Whole_Banner(box.Receive("v", 12ms + Box::Frame_Gap)));
}

TEST(BinaryWrite, RejectFaultRefusesGoodFrames) {
    Box_Faults faults;
    faults.rejected_frames = 1;
    Box box(Box_Config{}, faults);
    Send(box, "bW");
    EXPECT_EQ(Send(box, Frame(40, {9})), "E");
    EXPECT_EQ(box.Memory()[40], 0);
    Send(box, "bW");
    EXPECT_EQ(Send(box, Frame(40, {9})), "&");
}

TEST(Counters, ShowInReadsAndClearOnBothBoxes) {
    Box_Config config;
    config.image[1011] = 0x21;
    config.image[1022] = 0x05;
    config.slave_present = true;
    config.slave_image[Mode_Byte] = Slave_Mark;
    config.slave_image[1017] = 0x30;
    Box box(config);
    const std::string rd = Send(box, "rd");
    EXPECT_EQ(Hex_Pair(rd, rd.find('@') + 1 + 2 * 1011), 0x21);
    // The program clears the counters with one run over 1011 to 1023 and a commit.
    Write_Run(box, 1011, std::vector<std::uint8_t>(13, 0));
    EXPECT_EQ(box.Slave_Memory()[1017], 0x30) << "the slave follows only on commit";
    EXPECT_EQ(Send(box, "ue"), "ue*");
    for (int a = First_Counter; a <= Last_Counter; ++a) {
        EXPECT_EQ(box.Committed()[a], 0) << a;
        EXPECT_EQ(box.Slave_Memory()[a], 0) << a;
    }
    EXPECT_EQ(box.Slave_Memory()[Mode_Byte], Slave_Mark) << "bytes not written stay the slave's own";
}

TEST(Faults, SilenceStopsAnsweringAndActing) {
    Box_Faults faults;
    faults.silence_after = 3;
    Box box(Box_Config{}, faults);
    EXPECT_TRUE(Whole_Banner(Send(box, "v")));
    EXPECT_EQ(Send(box, "bR").size(), 1029u); // one command
    EXPECT_EQ(Send(box, "b"), "b");
    EXPECT_EQ(Send(box, "w"), "");
    EXPECT_EQ(Send(box, "0000FF$ue"), "");
    EXPECT_EQ(box.Committed()[0], 0);
    EXPECT_TRUE(box.Silent());
}

TEST(Faults, FailedCommitKeepsNothing) {
    Box_Faults faults;
    faults.failed_commits = 1;
    Box box(Box_Config{}, faults);
    Write_Run(box, 5, {0x55});
    EXPECT_EQ(Send(box, "ue"), "ueE");
    EXPECT_EQ(box.Committed()[5], 0);
    EXPECT_EQ(Send(box, "ue"), "ue*");
    EXPECT_EQ(box.Committed()[5], 0x55);
}

} // namespace
} // namespace boxsim
