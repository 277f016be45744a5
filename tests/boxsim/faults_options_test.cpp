// Line faults, the command line and settings files of the simulator.

#include "faults.h"
#include "options.h"
#include "qxs_file.h"

#include <gtest/gtest.h>

namespace boxsim {
namespace {

TEST(LineFaults, CountCharactersOverTheWholeRun) {
    Line_Fault_Plan plan;
    plan.dropped = {3};
    plan.corrupted = {5};
    Line_Faults faults(plan);
    EXPECT_EQ(faults.Filter("ab").out, "ab");
    const auto result = faults.Filter("cdefg");
    EXPECT_EQ(result.out, std::string("d") + static_cast<char>('e' ^ 1) + "fg");
    EXPECT_EQ(result.notes.size(), 2u);
    EXPECT_FALSE(result.hang_up);
    EXPECT_EQ(faults.Filter("cdefg").out, "cdefg") << "each fault strikes once";
}

TEST(LineFaults, HangUpAfterExactlyNCharacters) {
    Line_Fault_Plan plan;
    plan.hangup_after = 4;
    Line_Faults faults(plan);
    auto first = faults.Filter("abc");
    EXPECT_EQ(first.out, "abc");
    EXPECT_FALSE(first.hang_up);
    auto second = faults.Filter("defg");
    EXPECT_EQ(second.out, "d");
    EXPECT_TRUE(second.hang_up);
    EXPECT_EQ(faults.Filter("x").out, "");

    Line_Fault_Plan at_once;
    at_once.hangup_after = 0;
    Line_Faults immediate(at_once);
    EXPECT_FALSE(immediate.Filter("").hang_up) << "nothing to say is no answer yet";
    auto answer = immediate.Filter("v");
    EXPECT_EQ(answer.out, "");
    EXPECT_TRUE(answer.hang_up);
}

TEST(FaultSpecs, KindsAndCounts) {
    Box_Faults box;
    Line_Fault_Plan line;
    std::string error;
    for (const char* fault_text : {"silence@4", "drop@7", "drop@9", "corrupt@2", "slow@30", "hangup@100",
                                   "i2c", "bootloader@12", "reject@1", "uefail"})
        EXPECT_TRUE(Add_Fault(fault_text, box, line, error)) << fault_text << ": " << error;
    EXPECT_EQ(box.silence_after, 4);
    EXPECT_EQ(line.dropped, (std::vector<long>{7, 9}));
    EXPECT_EQ(line.corrupted, (std::vector<long>{2}));
    EXPECT_EQ(line.slow.count(), 30);
    EXPECT_EQ(line.hangup_after, 100);
    EXPECT_EQ(box.i2c_timeouts, -1);
    EXPECT_EQ(box.bootloader_after, 12);
    EXPECT_EQ(box.rejected_frames, 1);
    EXPECT_EQ(box.failed_commits, -1);

    EXPECT_TRUE(Add_Fault("silence", box, line, error));
    EXPECT_EQ(box.silence_after, 0);
    for (const char* bad : {"drop", "slow", "corrupt@", "silence@-1", "hangup@x", "flood@3", ""})
        EXPECT_FALSE(Add_Fault(bad, box, line, error)) << bad;
}

std::optional<Options> Parse(std::vector<std::string> args, std::string& error) {
    return Parse_Options(args, error);
}

TEST(CommandLine, ValuesFlagsAndTheOptionalSlaveFile) {
    std::string error;
    auto o =
        Parse({"--link", "/tmp/x", "--serial=77", "--dataset", "12", "--slave", "--smartcard", "--errors",
               "1011=0x21,1017=48", "--fault", "drop@3", "--wire-baud", "115200", "--bootloader"},
              error);
    ASSERT_TRUE(o) << error;
    EXPECT_EQ(o->link, "/tmp/x");
    EXPECT_EQ(o->box.serial, 77);
    EXPECT_EQ(o->box.dataset, 12);
    EXPECT_TRUE(o->slave);
    EXPECT_TRUE(o->slave_path.empty()) << "the next option is no file";
    EXPECT_TRUE(o->box.smartcard);
    EXPECT_TRUE(o->box.bootloader);
    EXPECT_EQ(o->errors, (std::vector<std::pair<int, int>>{{1011, 0x21}, {1017, 48}}));
    EXPECT_EQ(o->line_faults.dropped, (std::vector<long>{3}));
    EXPECT_EQ(o->wire_baud, 115200);

    o = Parse({"--link", "p", "--tps-script", "0:30,5:230"}, error);
    ASSERT_TRUE(o) << error;
    EXPECT_EQ(o->box.throttle, (Throttle_Script{{0, 30}, {5, 230}}));
    EXPECT_FALSE(Parse({"--link", "p", "--tps-script", "0:300"}, error));

    o = Parse({"--link", "p", "--slave", "s.qxs", "--fault", "bootloader"}, error);
    ASSERT_TRUE(o) << error;
    EXPECT_EQ(o->slave_path, "s.qxs");
    EXPECT_TRUE(o->box.bootloader) << "a boot loader fault without a count starts there";
    EXPECT_EQ(o->box_faults.bootloader_after, -1);
}

TEST(CommandLine, RefusesWhatItCannotServe) {
    std::string error;
    EXPECT_FALSE(Parse({"--serial", "5"}, error)) << "no link";
    for (std::vector<std::string> bad :
         std::vector<std::vector<std::string>>{{"--link", "p", "--serial", "65536"},
                                               {"--link", "p", "--dataset", "abc"},
                                               {"--link", "p", "--errors", "1010=1"},
                                               {"--link", "p", "--errors", "1011=256"},
                                               {"--link", "p", "--errors", "1011"},
                                               {"--link", "p", "--smartcard=yes"},
                                               {"--link", "p", "--fault", "flood"},
                                               {"--link", "p", "--wire-baud"},
                                               {"--link", "p", "--bogus"}}) {
        error.clear();
        EXPECT_FALSE(Parse(bad, error)) << bad.back();
        EXPECT_FALSE(error.empty());
    }
    EXPECT_TRUE(Parse({"--help"}, error));
    EXPECT_NE(Usage().find("hangup"), std::string::npos);
}

TEST(QxsFile, RoundTripAndRefusals) {
    Image image{};
    for (std::size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<std::uint8_t>(255 - i % 256);
    const std::string text = Format_Qxs(image);
    EXPECT_EQ(text.substr(0, 7), " 255 \r\n");
    EXPECT_EQ(text.substr(text.size() - 7), " 0 \r\n\r\n") << "an empty comment is one empty line";
    std::string error;
    auto back = Parse_Qxs(text + "free comment, with a comma\r\n", error);
    ASSERT_TRUE(back) << error;
    EXPECT_EQ(*back, image);

    // Numbers may also be parted by commas.
    EXPECT_TRUE(Parse_Qxs(std::string("1,2,") + text.substr(14), error));

    std::string short_file;
    for (int i = 0; i < 1023; ++i)
        short_file += " 1 \r\n";
    EXPECT_FALSE(Parse_Qxs(short_file, error));
    EXPECT_FALSE(Parse_Qxs(" 256 \r\n" + text, error));
    EXPECT_FALSE(Parse_Qxs(" 1x \r\n" + text, error));
}

} // namespace
} // namespace boxsim
