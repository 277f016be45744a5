// Reading, verifying and writing settings against the real simulator on a pseudo-terminal:
// what goes over the wire, what the texts say, and what a write does with a faulty line.

#include "cli/commands.h"
#include "link/error_codes.h"
#include "support/cli_run.h"
#include "support/settings_session.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace quorlen {
namespace {

using test::Boxsim_Run;
using test::Settings_Session;

class Settings_Link : public ::testing::Test {
protected:
    // A box with `image` in it; the trace of what it took in is kept.
    bool Start(const Image_Bytes& image, std::vector<std::string> args = {}) {
        test::Save_Image(dir.File("box.qxs"), image);
        std::vector<std::string> all{"--image",           dir.File("box.qxs"), "--image-out",
                                     dir.File("out.qxs"), "--trace",           dir.File("trace.txt")};
        all.insert(all.end(), args.begin(), args.end());
        box = std::make_unique<Boxsim_Run>(BOXSIM_EXECUTABLE, all);
        p = std::make_unique<Settings_Session>(box->Link());
        return box->Ready();
    }
    // What the box kept once it stopped.
    Image_Bytes Kept() {
        box->Stop();
        return test::Load_Image(dir.File("out.qxs")).value_or(Image_Bytes{});
    }
    // What the program sent after the verify before a write and before the verify after it.
    std::vector<std::string> Write_Dialogue() {
        auto sent = test::Trace_In(dir.File("trace.txt"));
        auto first = std::find(sent.begin(), sent.end(), "rd");
        auto last = std::find(first == sent.end() ? first : first + 1, sent.end(), "v");
        return {first == sent.end() ? first : first + 1, last};
    }
    static Image_Bytes Plain_Image() {
        Image_Bytes image{};
        for (std::size_t i = 0; i < image.size(); ++i)
            image[i] = static_cast<std::uint8_t>(i * 7 + 3);
        image[1] = 0;
        image[255] = 200;
        for (int a = 1011; a <= 1023; ++a)
            image[static_cast<std::size_t>(a)] = 0;
        return image;
    }

    test::Temp_Dir dir;
    std::unique_ptr<Boxsim_Run> box;
    std::unique_ptr<Settings_Session> p;
};

TEST_F(Settings_Link, AFileWrittenAndReadBackIsTheSameOverTheComparedRanges) {
    Image_Bytes box_image = Plain_Image();
    ASSERT_TRUE(Start(box_image));
    Image_Bytes wanted{};
    std::mt19937 rng(7);
    for (auto& b : wanted)
        b = static_cast<std::uint8_t>(rng());
    wanted[1] &= 0xF7;
    wanted[255] = 200;
    p->Take(wanted);
    p->Run(Write_Settings_Click);
    EXPECT_EQ(p->texts.rs232_text, "Write finished, M");
    EXPECT_TRUE(p->rw.Write_Succeeded);
    EXPECT_NE(p->texts.Debug_txt.find("UE1 OK \r\n"), std::string::npos);
    EXPECT_FALSE(p->flags.Write_In_Progress || p->flags.Link_Busy || p->line.Is_Open());
    EXPECT_TRUE(p->buttons_enabled);
    EXPECT_FALSE(p->progress_out_of_range);
    EXPECT_GT(p->events_served, 900) << "the window is served after every byte";

    Settings_Session reader(box->Link());
    reader.Run(Read_Settings_Click);
    EXPECT_EQ(reader.texts.rs232_text.rfind("Read finished ", 0), 0u);
    EXPECT_TRUE(test::Compared_Differences(reader.Card(), wanted).empty());
    EXPECT_EQ(reader.texts.Title, "Settings loaded from box");
    EXPECT_EQ(reader.files.CurrentFileName, "New1.qxs");
    EXPECT_EQ(reader.texts.txt_File_Description, "Settings loaded from box");
    EXPECT_TRUE(std::all_of(reader.image.SlaveByte.begin(), reader.image.SlaveByte.end(), [](std::uint8_t b) {
        return b == 0;
    })) << "no slave: all of SlaveByte is 0, 1024 included";

    Settings_Session binary(box->Link());
    binary.Run(Read_bin_command_cmd_Click);
    EXPECT_EQ(binary.Card(), reader.Card());
    EXPECT_TRUE(test::Compared_Differences(Kept(), wanted).empty()) << "committed, not just taken";
}

TEST_F(Settings_Link, OneByteCostsItsDialogueAndNeighboursShareTheAddress) {
    Image_Bytes image = Plain_Image();
    ASSERT_TRUE(Start(image));
    image[300] = 0x5A;
    p->Take(image);
    p->Run(Write_Settings_Click);
    EXPECT_EQ(Write_Dialogue(),
              (std::vector<std::string>{"b", "w", "0", "1", "2", "C", "5", "A", "$", "ue"}));
    EXPECT_EQ(p->image.ChangedByte[300], 0) << "the verify after the write found it written";

    image[300] = 0x01;
    image[301] = 0xFF;
    ASSERT_TRUE(Start(Plain_Image()));
    p->Take(image);
    p->Run(Write_Settings_Click);
    EXPECT_EQ(Write_Dialogue(),
              (std::vector<std::string>{"b", "w", "0", "1", "2", "C", "0", "1", "F", "F", "$", "ue"}));
    EXPECT_EQ(Kept()[301], 0xFF);
}

TEST_F(Settings_Link, ComparedRangesCountersAndTheDatasetQuestion) {
    Image_Bytes image = Plain_Image();
    ASSERT_TRUE(Start(image, {"--errors", "1015=2"})); // IAT/Aux1, high side
    p->Take(image);
    p->image.CardByte[252] ^= 1;
    p->image.CardByte[256] ^= 1;
    p->Run(Verify_Settings_Click);
    EXPECT_EQ(p->image.ChangedByte[252], 0) << "252 is the box's own";
    EXPECT_EQ(p->image.ChangedByte[256], Changed_Mark);
    EXPECT_EQ(p->image.ChangedByte[1015], Changed_Mark);
    EXPECT_NE(p->texts.Debug_txt.find("Master miss match 256 " + std::to_string(image[256]) + "\r\n"),
              std::string::npos);
    EXPECT_EQ(p->texts.Debug_txt.find("miss match 252"), std::string::npos);
    EXPECT_NE(p->texts.Debug_txt.find("Master error code 1015 2\r\n"), std::string::npos);
    EXPECT_NE(p->texts.Debug_txt.find("Master error codes set "), std::string::npos);
    EXPECT_EQ(p->texts.rs232_text, "Verify failed ");
    EXPECT_TRUE(p->rw.Error_Codes_Shown);
    EXPECT_EQ(p->texts.Error_Codes_txt, "Master:\r\nIAT/Aux1 high 2\r\n\r\nSlave:\r\n");
    ASSERT_TRUE(Get_Errcardbyte(p->image));
    EXPECT_EQ(p->image.Last_Changed, 256) << "the scan leaves the counters alone";

    // Another dataset in the box, and the tuner says Cancel: nothing changes.
    p->image.DatasetID = 77;
    const Image_Bytes mine = p->Card();
    p->dialogs.answers = {Answer::Cancel};
    p->Run(Read_Settings_Click);
    ASSERT_EQ(p->dialogs.asked.size(), 1u);
    EXPECT_EQ(p->dialogs.asked[0], "The box has a different dataset ID (200) than currently selected in "
                                   "preferences (77), load anyway?\r\n(Dataset ID is not changed.)");
    EXPECT_EQ(p->Card(), mine);
    EXPECT_EQ(p->texts.rs232_text.rfind("Read aborted ", 0), 0u);
    EXPECT_EQ(p->image.DatasetID, 77);
}

TEST_F(Settings_Link, SlaveKeepsItsMarkAndALostMarkIsWrittenBack) {
    Image_Bytes image = Plain_Image();
    Image_Bytes slave = image;
    slave[1] |= 8;
    test::Save_Image(dir.File("slave.qxs"), slave);
    ASSERT_TRUE(Start(image, {"--slave", dir.File("slave.qxs")}));
    p->Take(image);
    p->Run(Verify_Settings_Click);
    EXPECT_FALSE(p->rw.Slave_Mismatch);
    EXPECT_EQ(p->texts.rs232_text, "Verify finished, M&S ");
    EXPECT_NE(p->texts.Debug_txt.find("Slave reset to slave \r\nNo slave miss match"), std::string::npos);

    slave[1] &= 0xF7;
    test::Save_Image(dir.File("slave.qxs"), slave);
    ASSERT_TRUE(Start(image, {"--slave", dir.File("slave.qxs")}));
    p->Run(Verify_Settings_Click);
    EXPECT_TRUE(p->rw.Slave_Mismatch);
    EXPECT_EQ(p->image.ChangedByte[1], Changed_Mark);
    EXPECT_NE(p->texts.Debug_txt.find("Slave need reset to slave "), std::string::npos);
    p->Run(Write_Settings_Click);
    EXPECT_EQ(p->texts.rs232_text, "Write finished, M&S ");
    EXPECT_EQ(p->image.SlaveByte[1] & 8, 8);
}

TEST_F(Settings_Link, ASlaveThatMissesAnAnswerDoesNotHoldBackTheMaster) {
    // The character lost lies in the slave's image of the verify before the write.
    Image_Bytes image = Plain_Image();
    ASSERT_TRUE(Start(image, {"--slave", "--fault", "drop@2400"}));
    image[40] = static_cast<std::uint8_t>(image[40] + 1);
    p->Take(image);
    p->Run(Write_Settings_Click);
    EXPECT_NE(p->texts.Debug_txt.find("Slave answer incomplete, slave not compared "), std::string::npos)
        << p->texts.Debug_txt;
    const auto dialogue = Write_Dialogue();
    EXPECT_NE(std::find(dialogue.begin(), dialogue.end(), "ue"), dialogue.end());
    EXPECT_EQ(p->texts.rs232_text, "Write finished, M&S ");
    EXPECT_TRUE(p->rw.Write_Succeeded);
    EXPECT_EQ(Kept()[40], image[40]);
}

TEST_F(Settings_Link, AWriteThatLosesTheBoxSaysSoInALineOfItsOwn) {
    Image_Bytes image = Plain_Image();
    ASSERT_TRUE(Start(image, {"--fault", "silence@5"})); // "v", "rd", "b", "w", one digit
    image[300] = static_cast<std::uint8_t>(image[300] + 1);
    p->Take(image);
    p->Run(Write_Settings_Click);
    EXPECT_NE(p->texts.Debug_txt.find("\r\nNo answer from the box, write given up "), std::string::npos)
        << p->texts.Debug_txt;
    EXPECT_EQ(p->texts.rs232_text.rfind("Write aborted ", 0), 0u);
    EXPECT_EQ(p->image.ChangedByte[300], Changed_Mark) << "the edit waits for the next write";
}

TEST_F(Settings_Link, ClearedCountersAreToldByTheWriteNotByTheVerifyAfterIt) {
    // The character lost lies in the master's image of the verify after the write.
    ASSERT_TRUE(Start(Plain_Image(), {"--errors", "1011=5", "--fault", "drop@3000"}));
    p->Take(Plain_Image());
    p->Run(Clear_Err_Counters_cmd_Click);
    EXPECT_EQ(p->dialogs.informed, std::vector<std::string>{"All error codes are cleared"})
        << p->texts.Debug_txt;
    EXPECT_EQ(p->texts.rs232_text, "Write finished, M");
    EXPECT_NE(p->texts.Debug_txt.find("UE1 OK \r\nWrite verify started"), std::string::npos)
        << p->texts.Debug_txt;
    EXPECT_NE(p->texts.Debug_txt.find("No complete answer from the box "), std::string::npos);
    EXPECT_EQ(Kept()[1011], 0);
}

TEST_F(Settings_Link, FastCompareCountsAndTheSlaveCheckHearsTheSlave) {
    Image_Bytes image = Plain_Image();
    ASSERT_TRUE(Start(image, {"--slave"}));
    p->Run(Check_Slave_Data_Strategy);
    EXPECT_TRUE(p->rw.Slave_Checked);
    p->state.Slave_Present = true;
    p->Take(image);
    p->image.CardByte[10] ^= 1;
    p->image.CardByte[900] ^= 1;
    p->Run(Read_Settings_Fast);
    EXPECT_NE(p->texts.Debug_txt.find(
                  "2 master miss match\r\n2 slave miss match\r\nVerify finished with 4 updates"),
              std::string::npos)
        << p->texts.Debug_txt;
    EXPECT_EQ(p->texts.rs232_text, "Verify finished, M&S ");
    EXPECT_EQ(p->image.ChangedByte[900], Changed_Mark);
    p->Run(Write_Settings_Fast_Click);
    EXPECT_EQ(p->texts.rs232_text.rfind(" FWrite finished M&S ", 0), 0u);
    EXPECT_EQ(Kept()[900], image[900] ^ 1);
}

TEST_F(Settings_Link, SlaveQuestionNoSendsNothing) {
    Image_Bytes image = Plain_Image();
    ASSERT_TRUE(Start(image));
    image[1] |= 8;
    p->Take(image);
    p->dialogs.answers = {Answer::No};
    p->Run(Write_Settings_Click);
    EXPECT_EQ(p->dialogs.asked,
              std::vector<std::string>{
                  "This will force QX-system to enter slave mode. Do you really want to continue?"});
    EXPECT_EQ(p->texts.rs232_text.rfind("Write aborted ", 0), 0u);
    EXPECT_TRUE(test::Trace_In(dir.File("trace.txt")).empty());
    EXPECT_FALSE(p->flags.Write_In_Progress);
}

TEST_F(Settings_Link, BinaryFrameItsAnswersAndNothingToWrite) {
    Image_Bytes image = Plain_Image();
    image[500] = '@'; // a data byte 64 is no terminator
    ASSERT_TRUE(Start(image, {"--fault", "reject@1"}));
    p->Take(image);
    p->Run(Verify_bR_Settings_Click);
    EXPECT_EQ(p->texts.rs232_text, "Verify finished, M");
    p->Run(Write_bin_command_cmd_Click);
    EXPECT_EQ(p->texts.rs232_text, "Nothing to write Write finished, M");

    p->image.CardByte[700] = 0x11;
    p->image.ChangedByte[700] = Changed_Mark;
    p->Run(Write_bin_command_cmd_Click);
    EXPECT_NE(p->texts.Debug_txt.find("E error"), std::string::npos);
    EXPECT_EQ(p->texts.rs232_text.rfind("Write error Write aborted ", 0), 0u);
    EXPECT_EQ(p->image.ChangedByte[700], Changed_Mark) << "a refused frame keeps its marks";

    p->Run(Write_bin_command_cmd_Click);
    EXPECT_EQ(p->texts.rs232_text, "Write finished, M");
    EXPECT_NE(p->texts.Debug_txt.find("& OK "), std::string::npos);
    EXPECT_EQ(p->rw.Write_bin_checksum_labell, "16");
    EXPECT_EQ(p->rw.Timer_label.substr(7), "s   1 bytes");
    EXPECT_EQ(p->image.ChangedByte[700], 0);
    auto sent = test::Trace_In(dir.File("trace.txt"));
    ASSERT_GE(sent.size(), 2u);
    EXPECT_EQ(sent[sent.size() - 2], "bW");
    EXPECT_EQ(sent.back(), std::string("\x02\xBC\x00\x01\x00\x10\x11", 7)) << "one byte, a frame of 7";
    EXPECT_EQ(Kept()[700], 0x11);
}

TEST_F(Settings_Link, PortThatCannotBeOpened) {
    Settings_Session lonely(dir.File("no-such-port"));
    bool prefs_shown = false;
    Settings_Context s = lonely.Context();
    s.hooks.Show_QX_prefs = [&] { prefs_shown = true; };
    Write_Settings_Click(s);
    EXPECT_TRUE(lonely.rw.Read_Failed);
    EXPECT_TRUE(prefs_shown);
    EXPECT_EQ(lonely.texts.rs232_text, "< Failed to open " + dir.File("no-such-port") + " >");
    EXPECT_FALSE(lonely.flags.Write_In_Progress || lonely.flags.Link_Busy);
    EXPECT_TRUE(lonely.buttons_enabled);
}

// The fault kinds of a line one at a time, then a short randomized campaign: each write ends
// proved or aborted with its marks, and a clean box then takes the whole job.
TEST(Write_Faults, EveryWriteEndsVerifiedOrAbortedAndLosesNoEdit) {
    const Image_Bytes plain = [] {
        test::Scenario s = test::Make_Scenario(1);
        return s.box;
    }();
    // Output of the verify before the write: 200 banner + 2056 image characters; then one
    // byte's dialogue at 300: "b", "w$", 4 address digits, a value digit, digit and "w".
    struct Case {
        const char* fault;
        test::Outcome expected;
    };
    for (const Case& c :
         {Case{"drop@2266", test::Outcome::Verified},    // the decisive prompt
          Case{"corrupt@2260", test::Outcome::Verified}, // an address echo
          Case{"uefail@3", test::Outcome::Verified}, Case{"silence@5", test::Outcome::Aborted},
          Case{"hangup@2262", test::Outcome::Aborted}}) {
        test::Scenario sc;
        sc.box = plain;
        sc.edited = plain;
        sc.edited[300] ^= 0x55;
        sc.faults = {c.fault};
        test::Temp_Dir dir;
        const auto result = test::Run_Scenario(BOXSIM_EXECUTABLE, sc, dir);
        EXPECT_EQ(result.outcome, c.expected) << c.fault << ": " << result.why;
    }
    int counts[3] = {0, 0, 0};
    for (unsigned seed = 100; seed < 112; ++seed) {
        test::Temp_Dir dir;
        const auto sc = test::Make_Scenario(seed);
        const auto result = test::Run_Scenario(BOXSIM_EXECUTABLE, sc, dir);
        ++counts[static_cast<int>(result.outcome)];
        EXPECT_NE(result.outcome, test::Outcome::Lost_Edit) << "seed " << seed << ": " << result.why;
    }
    std::printf("fault scenarios: %d verified, %d aborted cleanly, %d lost an edit\n", counts[0], counts[1],
                counts[2]);
}

// --- the command-line tool ------------------------------------------------------------

test::Cli_Result Cli(const std::vector<std::string>& args) {
    return test::Run_Cli(args);
}

TEST_F(Settings_Link, CommandLineReadVerifyWriteAndTheErrorCounters) {
    const Image_Bytes image = Plain_Image();
    ASSERT_TRUE(Start(image, {"--errors", "1011=0x21,1017=0x30,1019=1"}));
    const std::string texts = "Master:\nAFR high 1\nAFR low 2\nCrank 3\nUnsupported 1019\nSlave:\n";
    const std::string file = dir.File("read.qxs");
    auto read = Cli({"read", "--port", box->Link(), "-o", file});
    EXPECT_EQ(read.code, 0) << read.out;
    EXPECT_NE(read.out.find(texts), std::string::npos) << read.out;
    EXPECT_TRUE(test::Compared_Differences(test::Load_Image(file).value(), image).empty());
    // Saved by the program's own rules: the reserved bytes as 0, the dataset as selected.
    EXPECT_NE(image[250], 0);
    EXPECT_EQ(test::Load_Image(file).value()[250], 0);
    EXPECT_EQ(test::Load_Image(file).value()[251], 0);
    EXPECT_EQ(test::Load_Image(file).value()[255], 200);

    auto verify = Cli({"verify", "--port", box->Link(), file, "--binary"});
    EXPECT_EQ(verify.code, 0) << verify.out;
    EXPECT_NE(verify.out.find("Master error code 1011 33\n"), std::string::npos);
    EXPECT_NE(verify.out.find(texts), std::string::npos) << verify.out;
    EXPECT_EQ(Cli({"errors", "--port", box->Link()}).out, texts);

    Image_Bytes edited = image;
    edited[40] = 99;
    test::Save_Image(dir.File("edited.qxs"), edited);
    verify = Cli({"verify", "--port", box->Link(), dir.File("edited.qxs")});
    EXPECT_EQ(verify.code, 1);
    EXPECT_NE(verify.out.find("Master miss match 40 " + std::to_string(image[40]) + "\n"), std::string::npos);
    for (const char* how : {"--fast", "--binary"}) {
        edited[41] = static_cast<std::uint8_t>(edited[41] + 1);
        test::Save_Image(dir.File("edited.qxs"), edited);
        auto write = Cli({"write", "--port", box->Link(), dir.File("edited.qxs"), how});
        EXPECT_EQ(write.code, 0) << how << write.out;
    }

    auto before = test::Trace_In(dir.File("trace.txt")).size();
    auto clear = Cli({"clear-errors", "--port", box->Link()});
    EXPECT_EQ(clear.code, 0) << clear.out;
    EXPECT_NE(clear.out.find("All error codes are cleared\n"), std::string::npos);
    auto sent = test::Trace_In(dir.File("trace.txt"));
    std::string addresses;
    for (std::size_t i = before; i + 1 < sent.size(); ++i)
        if (sent[i] == "w") addresses += sent[i + 1] + sent[i + 2] + sent[i + 3] + sent[i + 4] + " ";
    EXPECT_EQ(addresses, "03F3 03F9 03FB ") << "only the counters that count: 1011, 1017, 1019";
    EXPECT_EQ(Cli({"errors", "--port", box->Link()}).out, "Master:\nSlave:\n");
    const Image_Bytes kept = Kept();
    EXPECT_TRUE(test::Compared_Differences(kept, edited).empty());
    EXPECT_EQ(kept[1011] + kept[1017] + kept[1019], 0);
}

} // namespace
} // namespace quorlen
