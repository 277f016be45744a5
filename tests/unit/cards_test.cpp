// The card paths' logic without a reader: replies of the storage-card commands, the
// Chipdrive search and its fallback, and what a read or write does to the image.

#include "cards/chipdrive.h"
#include "cards/storage_apdu.h"
#include "cards/todos.h"
#include "support/scripted_dialogs.h"

#include <gtest/gtest.h>

#include <deque>

namespace quorlen {
namespace {

TEST(Storage_Apdu, RepliesOfThePinAndTheCounter) {
    auto reply = [](std::vector<std::uint8_t> raw) { return *Split_Reply(raw); };
    EXPECT_FALSE(Split_Reply({0x90}));
    auto ok = Parse_Pin_Reply(Card_Type::SLE4442, reply({0x90, 0x07}));
    ASSERT_TRUE(ok);
    EXPECT_TRUE(ok->accepted);
    EXPECT_EQ(ok->tries_left, 3);
    auto wrong = Parse_Pin_Reply(Card_Type::SLE4442, reply({0x90, 0x03}));
    EXPECT_FALSE(wrong->accepted);
    EXPECT_EQ(wrong->tries_left, 2);
    auto locked = Parse_Pin_Reply(Card_Type::SLE4428, reply({0x90, 0x00}));
    EXPECT_FALSE(locked->accepted);
    EXPECT_EQ(locked->tries_left, 0);
    EXPECT_EQ(Parse_Pin_Reply(Card_Type::SLE4428, reply({0x90, 0x7F}))->tries_left, 7);
    // A reply with data, or another status, is no answer to a presented code.
    EXPECT_FALSE(Parse_Pin_Reply(Card_Type::SLE4442, reply({0x01, 0x90, 0x07})));
    EXPECT_FALSE(Parse_Pin_Reply(Card_Type::SLE4442, reply({0x63, 0x00})));
    EXPECT_EQ(Parse_Error_Counter(Card_Type::SLE4442, reply({0x03, 0, 0, 0, 0x90, 0x00})), 2);
    EXPECT_FALSE(Parse_Error_Counter(Card_Type::SLE4442, reply({0x90, 0x00})));
}

TEST(Storage_Apdu, ProtectBitsAndStatusWords) {
    auto flags = Unpack_Protect_Bits(Card_Type::SLE4442, {0xFE, 0xFF, 0xFF, 0x7F});
    ASSERT_TRUE(flags);
    ASSERT_EQ(flags->size(), 32u);
    EXPECT_TRUE((*flags)[0]);
    EXPECT_FALSE((*flags)[1]);
    EXPECT_TRUE((*flags)[31]);
    EXPECT_FALSE(Unpack_Protect_Bits(Card_Type::SLE4428, std::vector<std::uint8_t>(127, 0xFF)));
    EXPECT_EQ(Status_Word_Result(Apdu_Reply{{}, 0x6A, 0x81}).error, Card_Error::Wrong_Type);
    EXPECT_EQ(Status_Word_Result(Apdu_Reply{{}, 0x6B, 0x00}).text,
              "Address beyond the card's memory (6B 00)");
    EXPECT_TRUE(Status_Word_Result(Apdu_Reply{{}, 0x90, 0x00}).Ok());
}

TEST(Storage_Apdu, CommandsAndTheirFields) {
    EXPECT_EQ(Read_Memory_Apdu(0x3F0, 16), (Apdu{0xFF, 0xB0, 0x03, 0xF0, 0x10}));
    const std::uint8_t data[] = {1, 2};
    EXPECT_EQ(Write_Memory_Apdu(5, data, 2), (Apdu{0xFF, 0xD0, 0x00, 0x05, 0x02, 1, 2}));
    EXPECT_EQ(Select_Card_Type_Apdu(Card_Type::SLE4428), (Apdu{0xFF, 0xA4, 0x00, 0x00, 0x01, 0x05}));
    EXPECT_EQ(Read_Protection_Apdus(Card_Type::SLE4428).size(), 4u);
    EXPECT_EQ(Parse_Code_Text("ff ff ff"), (std::vector<std::uint8_t>{0xFF, 0xFF, 0xFF}));
    EXPECT_FALSE(Parse_Code_Text("FFF"));
    EXPECT_FALSE(Parse_Code_Text("12G4"));
    EXPECT_FALSE(Parse_Code_Text(""));
}

TEST(Todos_Fields, AddressesInDecimalAndHexAndTheMemoryView) {
    EXPECT_EQ(Address_From_Text("255", false, Card_Type::SLE4442), 255);
    EXPECT_FALSE(Address_From_Text("256", false, Card_Type::SLE4442));
    EXPECT_EQ(Address_From_Text("3ff", true, Card_Type::SLE4428), 1023);
    EXPECT_FALSE(Address_From_Text("1A", false, Card_Type::SLE4428));
    EXPECT_EQ(Address_Hex(1023), "3FF");
    Todos_Form f;
    f.Buffer_Start = 0x10;
    for (int i = 0; i < 40; ++i)
        f.Buffer.push_back(static_cast<std::uint8_t>(i));
    f.Protected.assign(32, false);
    f.Protected[0x11] = true;
    EXPECT_EQ(Memory_Rows(f), 3);
    f.VScroll1 = 2;
    EXPECT_EQ(Memory_View_Text(f, 4), "030: 20 21 22 23 24 25 26 27\n");
    f.VScroll1 = 0;
    EXPECT_EQ(Memory_View_Text(f, 1).substr(0, 14), "010: 00 01P 02");
}

// The Chipdrive's command entry, scripted: each command gets the next reply.
class Scripted_Port final : public Chipdrive_Port {
public:
    struct Reply {
        long rc;
        std::string status;
        std::string data;
    };
    std::deque<Reply> replies;
    std::vector<std::string> commands;
    std::vector<std::string> written;
    long SCardComand(const std::string& command, std::string& status, std::string& data) override {
        commands.push_back(command);
        if (command.find("MemWrite") != std::string::npos) written.push_back(data);
        Reply r = replies.empty() ? Reply{0, Chipdrive_Ready, {}} : replies.front();
        if (!replies.empty()) replies.pop_front();
        status = r.status;
        if (!r.data.empty()) data = r.data;
        return r.rc;
    }
};

struct Paths : ::testing::Test {
    Program_State program;
    Form_Texts texts;
    File_State files;
    Settings_Image image;
    Undo_List undo;
    Card_State card;
    Debug_Log log;
    test::Scripted_Dialogs dialogs;
    Card_Context k{program, texts, files, image, undo, card, log, dialogs, {}};
    Scripted_Port port;
};

TEST_F(Paths, TheSearchFallsBackToTheSecondPortOnlyWhenTheFirstFails) {
    ChipDrive_timer_Timer(k, port);
    EXPECT_EQ(port.commands, (std::vector<std::string>{"Device,SearchComPort,1"}));
    EXPECT_EQ(card.txt_Chipdrive_status, "< Card Reader OK >");

    port.commands.clear();
    port.replies = {{static_cast<long>(Card_Error::No_Reader), "No reader 1 on the PC", {}}};
    ChipDrive_timer_Timer(k, port);
    EXPECT_EQ(port.commands, (std::vector<std::string>{"Device,SearchComPort,1", "Device,SearchComPort,2"}));
    EXPECT_EQ(card.txt_Chipdrive_status, "< Card Reader OK >");

    port.commands.clear();
    port.replies = {{1, "x", {}}, {static_cast<long>(Card_Error::No_Reader), "No reader 2 on the PC", {}}};
    ChipDrive_timer_Timer(k, port);
    EXPECT_EQ(card.txt_Chipdrive_status, "< No Reader >");
    // A read without a reader found says so and sends nothing.
    port.commands.clear();
    Read_Chipdrive_cmd(k, port);
    EXPECT_EQ(card.txt_Chipdrive_status, "< No Reader >");
    EXPECT_TRUE(port.commands.empty());
}

TEST_F(Paths, ARefusedCardReadRestoresEveryByte) {
    card.Chipdrive_Status_Text = Chipdrive_Ready;
    for (int i = 0; i < 1024; ++i)
        image.CardByte[i] = static_cast<std::uint8_t>(i * 3);
    image.DatasetID = 1;
    const auto before = image.CardByte;
    port.replies = {{0, Chipdrive_Ready, std::string(256, '\x55')}};
    dialogs.answers.push_back(Answer::Cancel);
    Read_Chipdrive_cmd(k, port);
    EXPECT_EQ(card.txt_Chipdrive_status, "< Card Read cancel >");
    ASSERT_EQ(dialogs.asked.size(), 1u);
    EXPECT_EQ(dialogs.asked[0],
              "File has different dataset ID (85) than currently selected in preferences (1), "
              "load anyway?\r\n(Dataset ID is not changed.)");
    EXPECT_EQ(image.CardByte, before);
    EXPECT_EQ(undo.UndoIndex, 0);

    // Said yes to, the card's bytes 1 to 255 arrive and nothing else.
    port.replies = {{0, Chipdrive_Ready, std::string(256, '\x55')}};
    Read_Chipdrive_cmd(k, port);
    EXPECT_EQ(card.txt_Chipdrive_status, "< Card Read OK >");
    EXPECT_EQ(image.CardByte[0], before[0]);
    EXPECT_EQ(image.CardByte[1], 0x55);
    EXPECT_EQ(image.CardByte[255], 0x55);
    EXPECT_EQ(image.CardByte[256], before[256]);
    EXPECT_EQ(files.CurrentFileName, "New1.qxs");
    EXPECT_NE(texts.Debug_txt.find("Settings loaded from card"), std::string::npos);
}

TEST_F(Paths, TheSlaveMessageComesOnlyWithBit3Set) {
    card.Chipdrive_Status_Text = Chipdrive_Ready;
    image.CardByte[1] = 0xF7;
    image.CardByte[250] = image.CardByte[251] = 9;
    Write_Chipdrive_cmd(k, port);
    EXPECT_TRUE(dialogs.informed.empty());
    EXPECT_EQ(card.txt_Chipdrive_status, "< Card Write OK >");
    ASSERT_EQ(port.written.size(), 1u);
    EXPECT_EQ(port.commands.back(), "Card,MemWrite,1,255");
    EXPECT_EQ(port.written[0].size(), 255u);
    EXPECT_EQ(port.written[0][249], '\0'); // card byte 250
    EXPECT_EQ(image.CardByte[250], 0);

    image.CardByte[1] = 0x08;
    Write_Chipdrive_cmd(k, port);
    EXPECT_EQ(dialogs.informed, (std::vector<std::string>{"This setting will set Harvelin to slave"}));
}

TEST_F(Paths, AFailedWriteChangesNothingAndForgetsAWrongPin) {
    card.Chipdrive_Status_Text = Chipdrive_Ready;
    card.Card_PIN = "000000";
    image.CardByte[250] = 9;
    port.replies = {{static_cast<long>(Card_Error::Wrong_PIN), "Wrong PIN: 2 tries left", {}}};
    Write_Chipdrive_cmd(k, port);
    EXPECT_EQ(card.txt_Chipdrive_status, "< Wrong PIN: 2 tries left >");
    EXPECT_EQ(image.CardByte[250], 9);
    EXPECT_TRUE(card.Card_PIN.empty());
    port.replies = {{static_cast<long>(Card_Error::No_Card), "No card in the reader", {}}};
    Write_Chipdrive_cmd(k, port);
    EXPECT_EQ(card.txt_Chipdrive_status, "< No Card >");
}

} // namespace
} // namespace quorlen
