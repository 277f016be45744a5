// Memory cards through the real PC/SC stack: pcscd with the virtual reader of vpcd, and a
// simulated SLE4442 or SLE4428 (tools/vcard). Run by scripts/virtual-card.sh, which starts a
// private pcscd around this program; each test puts its own card in the reader.

#include "cards/chipdrive.h"
#include "cards/memory_card.h"
#include "cards/pcsc/pcsc_reader.h"
#include "cards/todos.h"
#include "support/cli_run.h"
#include "support/scripted_dialogs.h"
#include "support/settings_session.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace quorlen {
namespace {

const std::string Script = std::string(QUORLEN_SOURCE_DIR) + "/scripts/virtual-card.sh";

struct Card_Image {
    Program_State program;
    Form_Texts texts;
    File_State files;
    Settings_Image image;
    Undo_List undo;
    Card_State card;
    Debug_Log log;
    test::Scripted_Dialogs dialogs;
    Card_Context k{program, texts, files, image, undo, card, log, dialogs, {}};
};

class Pcsc_Card : public ::testing::Test {
protected:
    // Puts a card in the reader and waits until PC/SC sees it.
    void Insert(Card_Type type, const std::string& pin) {
        const std::string command =
            Script + " insert " + dir.File("card.bin") + " --type " + Card_Type_Name(type) + " --pin " + pin;
        ASSERT_EQ(std::system(command.c_str()), 0);
        std::vector<std::string> names;
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        Card_Result r;
        while (std::chrono::steady_clock::now() < end) {
            reader.List_Readers(names);
            if (!names.empty()) {
                r = Open_Memory_Card(reader, names[0], type);
                if (r.Ok()) break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        ASSERT_FALSE(names.empty());
        ASSERT_TRUE(r.Ok()) << r.text;
        name = names[0];
    }
    void TearDown() override {
        reader.Release();
        std::system((Script + " remove").c_str());
    }
    std::string Security() { return test::Read_File(dir.File("card.bin.security")); }
    static Image_Bytes Pattern() {
        Image_Bytes bytes{};
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<std::uint8_t>((i * 29 + 11) & 0xFF);
        bytes[1] = 0x20;             // bit 3 clear: the box stays master
        bytes[250] = bytes[251] = 0; // a card write clears them, as a settings file does
        return bytes;
    }

    test::Temp_Dir dir;
    Pcsc_Reader reader;
    std::string name;
};

TEST_F(Pcsc_Card, TodosPathWritesAndReadsTheWholeImage) {
    Insert(Card_Type::SLE4428, "1234");
    reader.Release();
    const Image_Bytes bytes = Pattern();
    test::Save_Image(dir.File("in.qxs"), bytes);
    auto write = test::Run_Cli({"pcsc-write", "--type", "SLE4428", "--pin", "1234", dir.File("in.qxs")});
    ASSERT_EQ(write.code, 0) << write.out << write.err;
    EXPECT_NE(write.out.find("< Write Data Success! >\n< Card Write OK >"), std::string::npos);
    auto read = test::Run_Cli({"pcsc-read", "--reader", name, "-o", dir.File("out.qxs")});
    ASSERT_EQ(read.code, 0) << read.out << read.err;
    auto back = test::Load_Image(dir.File("out.qxs"));
    ASSERT_TRUE(back);
    // Saved by the program's rules: 250 and 251 as 0, 255 as the program's dataset.
    Image_Bytes saved = bytes;
    saved[250] = saved[251] = 0;
    saved[255] = 200;
    EXPECT_TRUE(std::equal(saved.begin() + 1, saved.end(), back->begin() + 1));
}

TEST_F(Pcsc_Card, ChipdrivePathMovesBytesOneTo255) {
    Insert(Card_Type::SLE4442, "A1B2C3");
    reader.Release();
    Card_Image p;
    p.card.Card_PIN = "A1B2C3";
    Reader_Chipdrive port(reader, p.card.Card_PIN);
    Chipdrive_Connect(p.k);
    EXPECT_EQ(p.card.txt_Chipdrive_status, "< Searching... >");
    ChipDrive_timer_Timer(p.k, port);
    ASSERT_EQ(p.card.txt_Chipdrive_status, "< Card Reader OK >");

    const Image_Bytes bytes = Pattern();
    std::copy(bytes.begin(), bytes.end(), p.image.CardByte.begin());
    p.image.CardByte[250] = 99; // goes to the card as 0
    p.image.DatasetID = bytes[255];
    Write_Chipdrive_cmd(p.k, port);
    ASSERT_EQ(p.card.txt_Chipdrive_status, "< Card Write OK >") << p.texts.Debug_txt;
    EXPECT_EQ(p.image.CardByte[250], 0);
    EXPECT_TRUE(p.dialogs.informed.empty()); // bit 3 of byte 1 is clear in the pattern

    p.image.CardByte.fill(0);
    Read_Chipdrive_cmd(p.k, port);
    ASSERT_EQ(p.card.txt_Chipdrive_status, "< Card Read OK >");
    EXPECT_EQ(p.image.CardByte[0], 0); // the path never moves byte 0
    EXPECT_TRUE(std::equal(bytes.begin() + 1, bytes.begin() + 256, p.image.CardByte.begin() + 1));
    EXPECT_EQ(p.image.CardByte[256], 0);
    EXPECT_EQ(p.texts.Title, "Settings loaded from card");
}

TEST_F(Pcsc_Card, AWrongPinIsRefusedAndCounted) {
    Insert(Card_Type::SLE4442, "123456");
    int tries = -1;
    ASSERT_TRUE(reader.Read_Error_Counter(tries).Ok());
    EXPECT_EQ(tries, 3);
    Card_Result r = Present_PIN_Text(reader, Card_Type::SLE4442, "FFFFFF");
    EXPECT_EQ(r.error, Card_Error::Wrong_PIN);
    EXPECT_EQ(r.text, "Wrong PIN: 2 tries left");
    ASSERT_TRUE(reader.Read_Error_Counter(tries).Ok());
    EXPECT_EQ(tries, 2);
    EXPECT_NE(Security().find("\"counter\": 3"), std::string::npos);
    // Without the right PIN the card takes the write and ignores it: the read-back tells.
    r = Write_Memory_Span(reader, 10, {1, 2, 3});
    EXPECT_EQ(r.error, Card_Error::Refused);
    EXPECT_NE(r.text.find("did not take byte 10"), std::string::npos);
    // The right PIN restores the counter and opens the card.
    ASSERT_TRUE(Present_PIN_Text(reader, Card_Type::SLE4442, "123456").Ok());
    EXPECT_TRUE(Write_Memory_Span(reader, 10, {1, 2, 3}).Ok());
    ASSERT_TRUE(reader.Read_Error_Counter(tries).Ok());
    EXPECT_EQ(tries, 3);

    reader.Release();
    test::Save_Image(dir.File("in.qxs"), Pattern());
    auto write = test::Run_Cli({"pcsc-write", "--type", "SLE4442", "--pin", "000000", dir.File("in.qxs")});
    EXPECT_EQ(write.code, 1);
    EXPECT_NE(write.out.find("< Wrong PIN: 2 tries left >"), std::string::npos) << write.out;
}

TEST_F(Pcsc_Card, ALockedCardIsNotAskedAgain) {
    Insert(Card_Type::SLE4442, "123456");
    for (int left : {2, 1}) {
        Card_Result r = Present_PIN_Text(reader, Card_Type::SLE4442, "000000");
        EXPECT_EQ(r.text, "Wrong PIN: " + std::to_string(left) + (left == 1 ? " try" : " tries") + " left");
    }
    EXPECT_EQ(Present_PIN_Text(reader, Card_Type::SLE4442, "000000").error, Card_Error::Locked);
    Card_Result r = Present_PIN_Text(reader, Card_Type::SLE4442, "123456");
    EXPECT_EQ(r.error, Card_Error::Locked);
    EXPECT_EQ(r.text, "The card is locked: its PIN was refused too often");
}

TEST_F(Pcsc_Card, ARefusedReadRestoresEveryByte) {
    Insert(Card_Type::SLE4428, "FFFF");
    reader.Release();
    Card_Image p;
    p.card.todos.CardListCombo = Card_Type::SLE4428;
    for (int i = 0; i < 1024; ++i)
        p.image.CardByte[i] = static_cast<std::uint8_t>(i % 253);
    p.image.DatasetID = 17; // the blank card holds 255 at byte 255
    const auto before = p.image.CardByte;
    p.dialogs.answers.push_back(Answer::Cancel);
    cmdReadTodos(p.k, reader);
    EXPECT_EQ(p.card.todos.txt_Status, "< Read success! >");
    EXPECT_EQ(p.card.txt_TodosStatus, "< Card Read cancel >");
    EXPECT_EQ(p.image.CardByte, before);
    EXPECT_EQ(p.undo.UndoIndex, 0);
}

TEST_F(Pcsc_Card, WithoutACardTheTextsSaySoAndNothingChanges) {
    Insert(Card_Type::SLE4442, "FFFFFF");
    reader.Release();
    std::system((Script + " remove").c_str());
    Card_Image p;
    Reader_Chipdrive port(reader, p.card.Card_PIN);
    ChipDrive_timer_Timer(p.k, port);
    ASSERT_EQ(p.card.txt_Chipdrive_status, "< Card Reader OK >");
    p.image.CardByte.fill(42);
    const auto before = p.image.CardByte;
    // pcscd notices the card went out on its next poll.
    for (int i = 0; i < 40 && p.card.txt_Chipdrive_status != "< No Card >"; ++i) {
        Read_Chipdrive_cmd(p.k, port);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_EQ(p.card.txt_Chipdrive_status, "< No Card >");
    Write_Chipdrive_cmd(p.k, port);
    EXPECT_EQ(p.card.txt_Chipdrive_status, "< No Card >");
    EXPECT_EQ(p.image.CardByte, before);
}

TEST_F(Pcsc_Card, TheTodosFormWorksByHand) {
    Insert(Card_Type::SLE4428, "4321");
    Todos_Form f;
    ASSERT_TRUE(Init_driverlist(f, reader).Ok());
    f.CardListCombo = Card_Type::SLE4428;
    ConnectCard(f, reader);
    ASSERT_EQ(f.txt_Status, "< SLE4428 connected >");
    CardReset(f, reader);
    EXPECT_EQ(f.ATR, "3B 04 92 23 10 91");
    f.PIN = "4321";
    VerifyPIN(f, reader);
    ASSERT_EQ(f.txt_Status, "< PIN accepted >");
    f.TWAdd = 0x300;
    f.WriteData = "DE AD BE EF";
    f.WriteLength = 4;
    Pagewrite(f, reader);
    EXPECT_EQ(f.txt_Status, "< Write Data Success! >");
    f.WriteLength = 2;
    WritePB(f, reader);
    EXPECT_EQ(f.txt_Status, "< Protect bits written >");
    ReadPB(f, reader);
    EXPECT_EQ(f.txt_Status, "< 2 of 1024 bytes protected >");
    f.WriteData = "00 00";
    ComWrite(f, reader); // protected: the card ignores it
    EXPECT_NE(f.txt_Status.find("did not take"), std::string::npos);
    f.TRAdd = 0x2F0;
    f.ReadData = 32;
    ComRead(f, reader);
    ASSERT_EQ(f.txt_Status, "< Read success! >");
    EXPECT_NE(Memory_View_Text(f, 2).find("300: DEP ADP BE EF"), std::string::npos) << Memory_View_Text(f, 2);
    f.New_PIN = "9999";
    ComChp(f, reader);
    EXPECT_EQ(f.txt_Status, "< PIN changed >");
    EXPECT_NE(Security().find("\"pin\": \"9999\""), std::string::npos);
}

// Run in a process of its own, with PC/SC pointed at a socket where no pcscd listens.
TEST(No_Service, TheProgramSaysSoAndGoesOn) {
    Pcsc_Reader reader;
    std::vector<std::string> names;
    Card_Result r = reader.List_Readers(names);
    EXPECT_EQ(r.error, Card_Error::No_Service);
    EXPECT_EQ(r.text, "The smart-card service (pcscd) is not running");

    Card_Image p;
    Reader_Chipdrive port(reader, p.card.Card_PIN);
    ChipDrive_timer_Timer(p.k, port);
    EXPECT_EQ(p.card.txt_Chipdrive_status, "< No Reader >");
    EXPECT_NE(p.texts.Debug_txt.find("(pcscd) is not running"), std::string::npos);
    Read_Chipdrive_cmd(p.k, port);
    EXPECT_EQ(p.card.txt_Chipdrive_status, "< No Reader >");

    EXPECT_FALSE(cmd_FindTodos(p.k, reader));
    ASSERT_EQ(p.dialogs.informed.size(), 1u);
    EXPECT_EQ(p.dialogs.informed[0], "There are no Todos reader/writer connected to the PC\r\n"
                                     "(The smart-card service (pcscd) is not running)");
    auto list = test::Run_Cli({"pcsc-list"});
    EXPECT_EQ(list.code, 2);
    EXPECT_EQ(list.err, "The smart-card service (pcscd) is not running\n");
}

} // namespace
} // namespace quorlen
