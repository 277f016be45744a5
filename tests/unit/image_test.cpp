#include "core/run_error.h"
#include "image/image_listings.h"
#include "image/settings_image.h"
#include "support/temp_dir.h"
#include "tables/undo_list.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

TEST(Checksum, SixteenBitSumMinusOneWrapping) {
    Settings_Image image;
    EXPECT_EQ(Calck_Checksum(image, 0, 1023), 65535); // all zero
    image.CardByte[10] = 1;
    EXPECT_EQ(Calck_Checksum(image, 0, 1023), 0); // sums to 1
    image.CardByte.fill(0);
    // 257 bytes of 255 = 65535; one more 1 makes exactly 65536, which wraps to 0.
    for (int i = 0; i < 257; ++i)
        image.CardByte[static_cast<std::size_t>(i)] = 255;
    image.CardByte[300] = 1;
    EXPECT_EQ(Calck_Checksum(image, 0, 1023), 65535);
    image.CardByte[301] = 5;
    EXPECT_EQ(Calck_Checksum(image, 0, 1023), 4);
    // The temporary image is summed on its own.
    EXPECT_EQ(Calc_Temp_Checksum(image, 0, 1023), 65535);
    EXPECT_THROW(Calck_Checksum(image, 0, 1025), Run_Error);
}

TEST(Bits, SetGetShowAndTheBoundOfTheArrays) {
    Settings_Image image;
    Debug_Log log;
    image.CardByte[215] = 0b10001000;
    Set_CardByte_bit(image, log, 215, 3, 2); // neither 0 nor 1: the byte stays
    EXPECT_EQ(image.CardByte[215], 0b10001000);
    Set_CardByte_bit(image, log, 215, 3, 0);
    Set_CardByte_bit(image, log, 215, 0, 1);
    EXPECT_EQ(image.CardByte[215], 0b10000001);
    EXPECT_EQ(Get_CardByte_bit(image, log, 215, 7), 1);
    EXPECT_EQ(Get_CardByte_bit(image, log, 215, 6), 0);
    EXPECT_EQ(Show_Cardbyte_bits(image, log, 215), "10000001");

    test::Temp_Dir dir;
    ASSERT_TRUE(log.Open(dir.File("Debug_file.log")));
    Set_CardByte_bit(image, log, 1025, 0, 1);
    Set_Cbyte(image, log, 1024, 7, 0, 1.0, "0"); // 1024 exists in the program
    log.Close();
    EXPECT_EQ(image.CardByte[1024], 7);
    EXPECT_EQ(test::Read_File(dir.File("Debug_file.log")),
              "Error in Set card byte bitSubscript out of range\r\n");
}

TEST(Digits, BinaryAndHexadecimalHelpers) {
    EXPECT_EQ(Bin_2_Dec("10001000"), 136);
    EXPECT_EQ(Bin_2_Dec("1000100"), 0);
    EXPECT_EQ(Bin_2_Dec("1x00000a"), 128);
    EXPECT_EQ(dec2hex(255, 2), "FF");
    EXPECT_EQ(dec2hex(1023, 4), "03FF");
    EXPECT_EQ(dec2hex(5, 0), "0");
    EXPECT_EQ(dec2hex(0x1ABC, 3), "ABC");
    EXPECT_EQ(dec2hex(0x1ABC, 9), "1ABC");
    EXPECT_EQ(Hex2_To_Byte("ff"), 255);
    EXPECT_EQ(Hex2_To_Byte("A0"), 160);
    EXPECT_EQ(Hex2_To_Byte("3c"), 0x3C);
}

TEST(ByteChk, ClampsAndTakesTheWholePartWithASmallAllowance) {
    EXPECT_EQ(byte_chk(300), 255);
    EXPECT_EQ(byte_chk(-4), 0);
    EXPECT_EQ(byte_chk(2.9995), 3);
    EXPECT_EQ(byte_chk(2.99), 2);
    EXPECT_EQ(byte_chk(255.4), 255);
}

TEST(ChangedSpan, OnlyBelowTheCountersUnlessAskedFor) {
    Settings_Image image;
    image.ChangedByte[1015] = 255;
    EXPECT_FALSE(Get_Errcardbyte(image));
    EXPECT_EQ(image.Last_Changed, 65535);

    image.ChangedByte[300] = 255;
    image.ChangedByte[301] = 254; // not a mark
    image.ChangedByte[42] = 255;
    EXPECT_TRUE(Get_Errcardbyte(image));
    EXPECT_EQ(image.First_Changed, 42);
    EXPECT_EQ(image.Last_Changed, 300);

    image.Write_Errors_Only = true;
    EXPECT_TRUE(Get_Errcardbyte(image));
    EXPECT_EQ(image.First_Changed, 1011);
    EXPECT_EQ(image.Last_Changed, 1023);
}

TEST(InitCardbyte, StandAloneDefaults) {
    Settings_Image image;
    Debug_Log log;
    image.CardByte.fill(77);
    image.DatasetID = 200;
    Init_Cardbyte(image, log);
    EXPECT_EQ(image.CardByte[0], 77); // the first byte is not touched
    EXPECT_EQ(image.CardByte[255], 200);
    EXPECT_EQ(image.CardByte[6], 0);
    EXPECT_EQ(image.CardByte[40], 128);
    EXPECT_EQ(image.ScrollFactor[40], 0.78125);
    EXPECT_EQ(image.CardByte[133], 128);
    EXPECT_EQ(image.CardByte[300], 0);
    EXPECT_EQ(image.CardByte[884], 1);
    EXPECT_EQ(image.CardByte[895], 6);
    EXPECT_EQ(image.CardByte[980], 0);
    EXPECT_EQ(image.CardByte[981], 255);
    EXPECT_EQ(image.CardByte[986], 255); // coolant limits the other way round
    EXPECT_EQ(image.CardByte[987], 0);
    EXPECT_EQ(image.CardByte[996], 255);
    EXPECT_EQ(image.CardByte[1015], 0);

    Settings_Image old_dataset;
    old_dataset.DatasetID = 68;
    Init_Cardbyte(old_dataset, log);
    EXPECT_EQ(old_dataset.CardByte[6], 2);
    EXPECT_EQ(old_dataset.CardByte[133], 192);
    EXPECT_EQ(old_dataset.CardByte[255], 68);
}

TEST(Listings, FlagBytesCarryTheirLabelsAndMapBlocksTheirAddresses) {
    Settings_Image image;
    image.CardByte[245] = 0x21;
    std::string flags = Listing_Flag_Bytes(image);
    EXPECT_NE(flags.find("3\t00000000\r\n"), std::string::npos);
    EXPECT_NE(flags.find("245\t00100001  Digital4 func | sensor\r\n"), std::string::npos);

    image.CardByte[256] = 2; // two columns
    image.CardByte[259] = 1; // one row
    image.CardByte[261] = 9;
    std::string block = Listing_Map_Block(image, 256);
    EXPECT_NE(block.find("261:9\t262:0\r\n"), std::string::npos);
    EXPECT_EQ(Listing_All_CardByte(image).substr(0, 16), "0\t0\t00000000\t0\r\n");
}

// --- undo -------------------------------------------------------------------------------

// An edit as the program makes one: a snapshot, then bytes written and marked.
void Edit(Undo_List& undo, Settings_Image& image, int address, int value) {
    save_to_undolist(undo, image);
    image.CardByte[static_cast<std::size_t>(address)] = static_cast<std::uint8_t>(value);
}

TEST(Undo, StepsBackAndForthOverTheWholeImageAndMarksWhatItChanges) {
    Settings_Image image;
    Undo_List undo;
    int updates = 0;
    auto update = [&] { ++updates; };

    // At start there is nothing to undo or redo, and neither touches the image.
    image.CardByte[120] = 77;
    EXPECT_FALSE(Can_Undo(undo, image));
    EXPECT_FALSE(Can_Redo(undo, image));
    edit_redo_Click(undo, image, update);
    edit_undo_Click(undo, image, update);
    EXPECT_EQ(image.CardByte[120], 77);
    EXPECT_EQ(updates, 0);

    const auto loaded = image.CardByte;
    Edit(undo, image, 7, 1);    // a page
    Edit(undo, image, 400, 90); // a main map
    Edit(undo, image, 1000, 5); // the top of the image
    const auto edited = image.CardByte;

    edit_undo_Click(undo, image, update);
    EXPECT_EQ(image.CardByte[1000], 0);
    EXPECT_EQ(image.ChangedByte[1000], Changed_Mark);
    EXPECT_EQ(image.ChangedByte[400], 0); // unchanged by this step
    edit_undo_Click(undo, image, update);
    edit_undo_Click(undo, image, update);
    EXPECT_EQ(image.CardByte, loaded);
    EXPECT_FALSE(Can_Undo(undo, image));
    edit_undo_Click(undo, image, update); // nothing before the first
    EXPECT_EQ(updates, 3);
    EXPECT_FALSE(undo.UndoBusy);

    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(Can_Redo(undo, image));
        edit_redo_Click(undo, image, update);
    }
    EXPECT_EQ(image.CardByte, edited);
    EXPECT_FALSE(Can_Redo(undo, image));
    edit_redo_Click(undo, image, update); // nothing after the last
    EXPECT_EQ(image.CardByte, edited);
}

TEST(Undo, ANewEditDropsTheRedoStepsAndNothingIsStoredTwice) {
    Settings_Image image;
    Undo_List undo;
    Edit(undo, image, 300, 1);
    Edit(undo, image, 300, 2);
    save_to_undolist(undo, image); // nothing changed since: no step of its own
    save_to_undolist(undo, image);
    edit_undo_Click(undo, image, {});
    EXPECT_EQ(image.CardByte[300], 1);

    Edit(undo, image, 301, 9); // a new branch: redo has nowhere to go
    EXPECT_FALSE(Can_Redo(undo, image));
    edit_undo_Click(undo, image, {});
    EXPECT_EQ(image.CardByte[300], 1);
    EXPECT_EQ(image.CardByte[301], 0);
    edit_undo_Click(undo, image, {});
    EXPECT_EQ(image.CardByte[300], 0);

    // An edit that slipped in after an undo without a snapshot is kept as the newest state.
    edit_redo_Click(undo, image, {});
    image.CardByte[302] = 4;
    EXPECT_FALSE(Can_Redo(undo, image));
    EXPECT_TRUE(Can_Undo(undo, image));
    edit_undo_Click(undo, image, {});
    EXPECT_EQ(image.CardByte[302], 0);
    EXPECT_EQ(image.CardByte[300], 1);
    edit_redo_Click(undo, image, {});
    EXPECT_EQ(image.CardByte[302], 4);
}

TEST(Undo, KeepsTheLast100StepsAndTheRedrawTakesNoSnapshot) {
    Settings_Image image;
    Undo_List undo;
    for (int i = 1; i <= 150; ++i)
        Edit(undo, image, 900, i);
    EXPECT_EQ(undo.UndoIndex, 100);
    int steps = 0;
    while (Can_Undo(undo, image)) {
        edit_undo_Click(undo, image, [&] { save_to_undolist(undo, image); });
        ++steps;
    }
    EXPECT_EQ(steps, 100);
    EXPECT_EQ(image.CardByte[900], 50); // the state before the 51st edit
    for (int i = 0; i < 100; ++i)
        edit_redo_Click(undo, image, {});
    EXPECT_EQ(image.CardByte[900], 150);
}

} // namespace
} // namespace quorlen
