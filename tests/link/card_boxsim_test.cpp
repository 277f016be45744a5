// The Mapchip in the box against the real simulator: what the program sends, what the
// status line says, and a round trip through the card with quorlen-cli.

#include "cards/card_inbox.h"
#include "support/cli_run.h"
#include "support/settings_session.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

using test::Boxsim_Run;
using test::Settings_Session;

class Card_In_Box : public ::testing::Test {
protected:
    bool Start(std::vector<std::string> args) {
        args.insert(args.end(), {"--trace", dir.File("trace.txt")});
        box = std::make_unique<Boxsim_Run>(BOXSIM_EXECUTABLE, args);
        p = std::make_unique<Settings_Session>(box->Link());
        return box->Ready();
    }
    template <class Procedure>
    void Run(Procedure procedure) {
        Settings_Context s = p->Context();
        Card_Context k{p->program, p->texts, p->files, p->image, undo, card, p->log, p->dialogs, {}};
        procedure(s, k);
    }
    bool Sent(const std::string& command) {
        auto sent = test::Trace_In(dir.File("trace.txt"));
        return std::find(sent.begin(), sent.end(), command) != sent.end();
    }

    test::Temp_Dir dir;
    std::unique_ptr<Boxsim_Run> box;
    std::unique_ptr<Settings_Session> p;
    Undo_List undo;
    Card_State card;
};

TEST_F(Card_In_Box, WithoutACardNothingIsWritten) {
    ASSERT_TRUE(Start({}));
    Run(Check_Card_Present_cmd_Click);
    EXPECT_EQ(card.qx_crw_text, "< No Mapchip present >");
    Run(Write_Card_Inbox_cmd_Click);
    EXPECT_EQ(card.qx_crw_text, "< No Mapchip present >");
    EXPECT_FALSE(Sent("br"));
    EXPECT_FALSE(p->flags.Write_In_Progress || p->flags.Link_Busy);
}

TEST_F(Card_In_Box, ASilentBoxIsNoResponse) {
    ASSERT_TRUE(Start({"--smartcard", "--fault", "silence"}));
    Run(Read_Card_Inbox_cmd_Click);
    EXPECT_EQ(card.qx_crw_text, "< No response... >");
}

TEST_F(Card_In_Box, ABoxThatStopsInTheMiddleOfAWriteIsAFailure) {
    ASSERT_TRUE(Start({"--smartcard", "--fault", "cardsilence@100"}));
    for (int i = 0; i < 256; ++i)
        p->image.CardByte[i] = static_cast<std::uint8_t>(255 - i);
    Run(Write_Card_Inbox_cmd_Click);
    EXPECT_EQ(card.qx_crw_text, "< failure... >");
    EXPECT_NE(p->texts.Debug_txt.find("Card write stopped at byte 99"), std::string::npos);
    EXPECT_FALSE(p->flags.Write_In_Progress);
}

TEST_F(Card_In_Box, TheLastByteNeedsTheClosingReply) {
    // Silence after the 256th byte: every "m" came, the closing "!" did not.
    ASSERT_TRUE(Start({"--smartcard", "--fault", "cardsilence@256"}));
    Run(Write_Card_Inbox_cmd_Click);
    EXPECT_EQ(card.qx_crw_text, "< failure... >");
    EXPECT_NE(p->texts.Debug_txt.find("Card write stopped at byte 255"), std::string::npos);
}

TEST_F(Card_In_Box, AWrittenCardIsWhatTheBoxServes) {
    ASSERT_TRUE(Start({"--smartcard"}));
    Run(Check_Card_Present_cmd_Click);
    EXPECT_EQ(card.qx_crw_text, "< Mapchip present >");
    for (int i = 0; i < 256; ++i)
        p->image.CardByte[i] = static_cast<std::uint8_t>(i * 11 + 1);
    p->image.DatasetID = p->image.CardByte[255];
    const auto written = p->image.CardByte;
    Run(Write_Card_Inbox_cmd_Click);
    ASSERT_EQ(card.qx_crw_text, "< Card Write OK >");

    p->image.CardByte.fill(0);
    Run(Read_Card_Inbox_cmd_Click);
    EXPECT_EQ(card.qx_crw_text, "< Card Read OK >");
    EXPECT_TRUE(std::equal(written.begin(), written.begin() + 256, p->image.CardByte.begin()));
    EXPECT_EQ(p->texts.Title.find("Settings loaded from card") != std::string::npos, true);
    EXPECT_EQ(p->files.CurrentFileName, "New1.qxs");
    // Reading is an edit: it can be taken back.
    EXPECT_EQ(undo.UndoIndex, 1);
}

TEST_F(Card_In_Box, ACardOfAnotherDatasetCanBeRefused) {
    ASSERT_TRUE(Start({"--smartcard"}));
    p->image.CardByte.fill(7);
    p->image.DatasetID = 1; // the box's default settings hold another dataset
    const auto before = p->image.CardByte;
    p->dialogs.answers.push_back(Answer::Cancel);
    Run(Read_Card_Inbox_cmd_Click);
    EXPECT_EQ(card.qx_crw_text, "< Card Read cancel >");
    ASSERT_EQ(p->dialogs.asked.size(), 1u);
    EXPECT_EQ(p->dialogs.asked[0].rfind("File has different dataset ID (", 0), 0u);
    EXPECT_EQ(p->image.CardByte, before);
}

TEST_F(Card_In_Box, RoundTripThroughTheCommandLine) {
    ASSERT_TRUE(Start({"--smartcard"}));
    Image_Bytes bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>((i * 37 + 5) & 0xFF);
    test::Save_Image(dir.File("in.qxs"), bytes);
    auto check = test::Run_Cli({"card-check", "--port", box->Link()});
    EXPECT_EQ(check.code, 0) << check.out << check.err;
    auto write = test::Run_Cli({"card-write", "--port", box->Link(), dir.File("in.qxs")});
    ASSERT_EQ(write.code, 0) << write.out << write.err;
    EXPECT_EQ(write.out, "< Card Write OK >\n");
    auto read = test::Run_Cli({"card-read", "--port", box->Link(), "-o", dir.File("out.qxs")});
    ASSERT_EQ(read.code, 0) << read.out << read.err;
    auto back = test::Load_Image(dir.File("out.qxs"));
    ASSERT_TRUE(back);
    // Saved by the program's rules: 250 and 251 as 0, 255 as the program's dataset.
    Image_Bytes saved = bytes;
    saved[250] = saved[251] = 0;
    saved[255] = 200;
    EXPECT_TRUE(std::equal(saved.begin(), saved.begin() + 256, back->begin()));
}

TEST_F(Card_In_Box, TheCommandLineTellsAMissingCardAndAMissingBox) {
    ASSERT_TRUE(Start({}));
    EXPECT_EQ(test::Run_Cli({"card-check", "--port", box->Link()}).code, 1);
    box->Stop();
    EXPECT_EQ(test::Run_Cli({"card-check", "--port", box->Link()}).code, 2);
}

} // namespace
} // namespace quorlen
