#include "files/settings_files.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

using test::Read_File;
using test::Scripted_Dialogs;
using test::Temp_Dir;
using test::Write_File;

class SettingsFiles : public ::testing::Test {
protected:
    SettingsFiles() : ini(dir.File("RZ400_800M3.ini"), dir.File("QXS.new")) {
        program.App_Path = dir.Slash();
        program.Program_Title = "VELMORA RZ400/RZ800M3 Interface Software - ";
        texts.Title = program.Program_Title + "New1.qxs";
        image.DatasetID = 200;
        hooks.Update_All = [this] { ++update_all; };
        hooks.Update_Tabs = [this] { ++update_tabs; };
        hooks.Open_Log_File = [this](const std::string& name) { logs_opened.push_back(name); };
    }

    Settings_File_Context Ctx() { return {program, texts, files, image, undo, ini, log, dialogs, hooks}; }

    std::string Valid_File(const std::string& name, int dataset = 200, int fill = 9,
                           const std::string& comment = "c") {
        Image_Bytes bytes{};
        bytes.fill(static_cast<std::uint8_t>(fill));
        bytes[255] = static_cast<std::uint8_t>(dataset);
        Write_File(dir.File(name), Format_Qxs(bytes, comment));
        return dir.File(name);
    }

    void Pick(const std::string& name) { dialogs.files.push_back(Picked_File{dir.File(name), name}); }

    Temp_Dir dir;
    Program_State program;
    Form_Texts texts;
    File_State files;
    Settings_Image image;
    Undo_List undo;
    Ini_File ini;
    Debug_Log log;
    Scripted_Dialogs dialogs;
    Settings_File_Hooks hooks;
    int update_all = 0, update_tabs = 0;
    std::vector<std::string> logs_opened;
};

TEST_F(SettingsFiles, OpenTakesNameFolderAndComment) {
    Valid_File("tune.qxs", 200, 9, "street tune");
    Pick("tune.qxs");
    auto ctx = Ctx();
    File_open_Click(ctx);
    EXPECT_TRUE(dialogs.informed.empty());
    EXPECT_EQ(image.CardByte[10], 9);
    EXPECT_EQ(texts.txt_File_Description, "street tune\r\n");
    EXPECT_EQ(files.CurrentFileName, "tune.qxs");
    EXPECT_EQ(files.CurrentDataDir, dir.Slash());
    EXPECT_EQ(texts.Title, program.Program_Title + "tune.qxs");
    EXPECT_EQ(ini.Read_Ini("card_data_dir"), dir.Slash());
    EXPECT_EQ(update_all, 2);
    EXPECT_EQ(update_tabs, 1);
    EXPECT_EQ(dialogs.dialogs_shown.at(0).filter,
              "Box setting files  *.qxs|*.qxs|Quorlen logg files *.qxl|*.qxl|All files *.*|*.*");
}

TEST_F(SettingsFiles, BrokenFilesLeaveImageCommentAndTitleButKeepTheNewName) {
    image.CardByte[10] = 33;
    texts.txt_File_Description = "mine\r\n";
    std::string before = texts.Title;
    std::string numbers_1023;
    for (int i = 0; i < 1023; ++i)
        numbers_1023 += " 1 \r\n";
    Write_File(dir.File("short.qxs"), numbers_1023);
    Write_File(dir.File("empty.qxs"), "");
    Write_File(dir.File("big.qxs"), std::string(20u << 20, '\x01'));
    for (const char* name : {"short.qxs", "empty.qxs", "big.qxs", "missing.qxs"}) {
        Pick(name);
        auto ctx = Ctx();
        File_open_Click(ctx);
        EXPECT_EQ(dialogs.informed.back(), "Not a valid qxs-file") << name;
        EXPECT_EQ(image.CardByte[10], 33) << name;
        EXPECT_EQ(texts.txt_File_Description, "mine\r\n") << name;
        EXPECT_EQ(texts.Title, before) << name;
    }
    // File, Save now writes the image on show under the name that failed.
    EXPECT_EQ(files.CurrentFileName, "missing.qxs");
    auto ctx = Ctx();
    File_save_Click(ctx);
    auto saved = Load_Qxs_File(dir.File("missing.qxs"));
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->bytes[10], 33);
}

TEST_F(SettingsFiles, DatasetQuestionCancelLeavesTheWholeImageAsItWas) {
    for (std::size_t i = 0; i < 1024; ++i)
        image.CardByte[i] = static_cast<std::uint8_t>(i * 7 + 3);
    image.ChangedByte[700] = Changed_Mark; // an edit of the maps not yet written
    const auto bytes = image.CardByte;
    const auto marks = image.ChangedByte;
    Valid_File("old.qxs", 68);
    std::string before = texts.Title;
    Pick("old.qxs");
    dialogs.answers.push_back(Answer::Cancel);
    auto ctx = Ctx();
    File_open_Click(ctx);
    ASSERT_EQ(dialogs.asked.size(), 1u);
    EXPECT_EQ(dialogs.asked[0],
              "File has different dataset ID (68) than currently selected in preferences (200), "
              "load anyway?\r\n(Dataset ID is not changed.)");
    EXPECT_EQ(image.CardByte, bytes); // maps included
    EXPECT_EQ(image.ChangedByte, marks);
    EXPECT_EQ(texts.Title, before);
    EXPECT_EQ(files.CurrentFileName, "old.qxs");
    EXPECT_EQ(image.DatasetID, 200);
    // The refused file is not a step that Redo brings back.
    EXPECT_FALSE(Can_Redo(undo, image));
    edit_redo_Click(undo, image, {});
    EXPECT_EQ(image.CardByte, bytes);

    // Loaded with OK, the file is one step that Undo takes back.
    Pick("old.qxs");
    dialogs.answers.push_back(Answer::Ok);
    auto again = Ctx();
    File_open_Click(again);
    EXPECT_EQ(image.CardByte[10], 9);
    edit_undo_Click(undo, image, {});
    EXPECT_EQ(image.CardByte, bytes);
}

TEST_F(SettingsFiles, SaveWritesReservedBytesAndDatasetAndReadsBackTheSame) {
    for (std::size_t i = 0; i < 1024; ++i)
        image.CardByte[i] = static_cast<std::uint8_t>(i * 13 + 1);
    texts.txt_File_Description = "a,b";
    Pick("out.qxs");
    auto ctx = Ctx();
    File_save_as_Click(ctx);
    EXPECT_EQ(dialogs.dialogs_shown.at(0).default_ext, "qxs");
    EXPECT_EQ(image.CardByte[250], 0);
    EXPECT_EQ(image.CardByte[255], 200);
    auto back = Load_Qxs_File(dir.File("out.qxs"));
    ASSERT_TRUE(back);
    EXPECT_TRUE(std::equal(back->bytes.begin(), back->bytes.end(), image.CardByte.begin()));
    EXPECT_EQ(back->bytes[251], 0);
    EXPECT_EQ(back->comment, "a\r\nb\r\n");
    EXPECT_EQ(texts.Title, program.Program_Title + "out.qxs");
    EXPECT_EQ(ini.Read_Ini("card_data_dir"), dir.Slash());
}

TEST_F(SettingsFiles, SaveWithNoCurrentNameWritesNothing) {
    auto ctx = Ctx();
    File_save_Click(ctx);
    EXPECT_FALSE(std::filesystem::exists(dir.File("RZ400_800M3.ini")));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}), 0);
}

TEST_F(SettingsFiles, DefaultFileAtStartLeavesNoNameAndClearsTheFolder) {
    Valid_File("RZ400_800M3_Default_Settings.qxs", 200, 4);
    files.OpenDefaultNow = true;
    files.CurrentDataDir = "/somewhere/";
    auto ctx = Ctx();
    File_open_Click(ctx);
    EXPECT_TRUE(dialogs.dialogs_shown.empty());
    EXPECT_EQ(image.CardByte[3], 4);
    EXPECT_EQ(files.CurrentFileName, "");
    EXPECT_EQ(files.CurrentDataDir, "");
    EXPECT_EQ(ini.Read_Ini("card_data_dir"), "");
}

TEST_F(SettingsFiles, AnyNameHoldingDotQxlGoesToTheLogWindow) {
    Valid_File("run.qxl.qxs");
    Pick("run.qxl.qxs");
    auto ctx = Ctx();
    File_open_Click(ctx);
    ASSERT_EQ(logs_opened.size(), 1u);
    EXPECT_EQ(logs_opened[0], dir.File("run.qxl.qxs"));
    EXPECT_EQ(files.CurrentFileName, "");
}

TEST_F(SettingsFiles, CancelledDialogChangesNothing) {
    auto ctx = Ctx();
    File_open_Click(ctx);
    File_save_as_Click(ctx);
    EXPECT_EQ(files.CurrentFileName, "");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}), 0);
}

TEST_F(SettingsFiles, ScratchCopyRestoresTheImageButNotTheComment) {
    image.CardByte[700] = 21;
    texts.txt_File_Description = "kept";
    auto ctx = Ctx();
    Save_Current_qxs_2_file(ctx);
    EXPECT_EQ(Read_File(dir.File("tmp_qxs_file.qxs")).size(), 1023u * 5 + 6);
    image.CardByte[700] = 0;
    texts.txt_File_Description = "changed";
    Restore_current_qxs(ctx);
    EXPECT_EQ(image.CardByte[700], 21);
    EXPECT_EQ(texts.txt_File_Description, "changed");
}

} // namespace
} // namespace quorlen
