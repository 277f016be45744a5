// The .qxl file: keys and fields, the shipped defaults, damaged and cut files, backups, box
// messages in the data, old forms, and the image a log carries back into the program.

#include "core/atomic_file.h"
#include "core/ini_file.h"
#include "files/settings_files.h"
#include "log_stream.h"
#include "logging/log_export.h"
#include "logging/log_settings.h"
#include "logging/log_text.h"
#include "support/log_fixture.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quorlen {
namespace {

using test::Read_File;
using test::Write_File;

// The sections of the shipped defaults around the given data section and dataset lines.
std::string Log_File_With(const std::string& data, const std::string& dataset_lines = "") {
    std::string shipped = Read_File(test::Log_Fixture::Shipped_Default_File());
    const std::string name_key = "Log_File_Name=RZ400_800M3_Default_Log_Settings.qxl";
    shipped.replace(shipped.find(name_key), name_key.size(), "Log_File_Name=run.qxl");
    const auto data_at = shipped.find("[log_data]");
    const auto end_at = shipped.find("[log_dataset]");
    return shipped.substr(0, data_at) + data + "\r\n[log_dataset]\r\n" + dataset_lines + "[end log_dataset]" +
           shipped.substr(end_at + std::string("[log_dataset]\r\n[end log_dataset]").size());
}

std::string Rows(int first, int count) {
    std::string rows;
    for (int i = first; i < first + count; ++i)
        rows += boxsim::Text_Row(boxsim::Engine_At(i)) + "\r\n";
    return rows;
}

std::string Text_Data(int rows) {
    return "[log_data]\r\nLa\r\n" + boxsim::Text_Header() + "\r\n" + Rows(0, rows) + "[end log_data]\r\n";
}

class LogFile : public test::Log_Fixture, public ::testing::Test {
protected:
    std::string Put(const std::string& name, const std::string& content) {
        Write_File(dir.File(name), content);
        return dir.File(name);
    }
    bool Open(const std::string& path) {
        auto c = Ctx();
        return Open_File(c, path);
    }
    void Save(const std::string& path) {
        auto c = Ctx();
        Save_File(c, path);
    }
    // Read and saved once by the program, then again: the second save must change nothing.
    void Expect_Saved_Unchanged(const std::string& path) {
        ASSERT_TRUE(Open(path));
        Save(path);
        const std::string first = Read_File(path);
        ASSERT_TRUE(Open(path));
        Save(path);
        EXPECT_EQ(Read_File(path), first);
    }
    // Column 30 carries the box's row counter: consecutive rows differ by one.
    int Counter(int row) { return static_cast<int>(state->Log_Data(row, 30)); }
};

TEST(LogKeys, NthKeyFieldsCommasAndReplacement) {
    std::string text = "[log_settings]\r\nLog_Time=12:00\t\r\nLog_Time_Interval=20\t0,2\t\r\n"
                       "Log_Def0=a\t1\t\r\nLog_Def1=b\t-1\t\r\nLog_Description=x, y;\r\n[end log_settings]";
    std::string line, value;
    // "Log_Time" is also the front of "Log_Time_Interval": its own line comes first.
    EXPECT_TRUE(get_log_file_setting(text, "Log_Time", line, value, 1, 1));
    EXPECT_EQ(value, "12:00");
    get_log_file_setting(text, "Log_Time_Interval", line, value, 1, 2);
    EXPECT_EQ(value, "0.2");
    get_log_file_setting(text, "Log_Def", line, value, 2, 2);
    EXPECT_EQ(value, "-1");
    EXPECT_FALSE(get_log_file_setting(text, "Log_Zoom", line, value, 1, 1));
    EXPECT_EQ(line + value, "");
    EXPECT_EQ(Raw_Log_File_Setting(text, "Log_Description", 1, 1), "x, y");
    // A field asked for past the last begins again at the front, as sensor entries do.
    EXPECT_EQ(Field_Of("a\tb\r\n", 3), "a");
    EXPECT_EQ(Field_Of("a;b\r", 1), "a");

    ASSERT_TRUE(set_log_file_setting(text, "Log_Time_Interval", "0.5", 1, 2));
    EXPECT_NE(text.find("Log_Time_Interval=20\t0.5\t\r\nLog_Def0=a"), std::string::npos);
    const std::string before = text;
    EXPECT_FALSE(set_log_file_setting(text, "Log_Zoom", "1", 1, 1));
    EXPECT_EQ(text, before);
}

TEST_F(LogFile, ShippedDefaultsCarryTheStandAloneLayoutAndSaveByteForByte) {
    Load_Defaults();
    const Log_State& log = *state;
    EXPECT_TRUE(dialogs.informed.empty()) << dialogs.informed.front();
    EXPECT_EQ(log.setup.controls[0].label, "RPM");
    EXPECT_EQ(log.setup.controls[13].label, "AN3 MAP");
    EXPECT_EQ(log.setup.controls[40].label, "Power");
    EXPECT_TRUE(log.setup.controls[73].label_visible);
    EXPECT_TRUE(log.Log_New_Format && log.Log_Wide_Row);
    EXPECT_EQ(log.Log_Sens_Tab[static_cast<std::size_t>(log.Log_Signal_Tab[0].sensor)][0], "RPM");
    EXPECT_EQ(log.Log_Signal_Tab[40].unit, "hp");
    EXPECT_EQ(log.setup.controls[0].view_caption, "RPM [rpm]");
    EXPECT_EQ(log.Log_File_Name, "QXLog-.qxl");

    std::filesystem::create_directory(dir.File("copy"));
    const std::string copy =
        Put("copy/" + std::string(Default_Log_Settings_File_Name), Read_File(Shipped_Default_File()));
    ASSERT_TRUE(Open(copy));
    Save(copy);
    EXPECT_EQ(Read_File(copy), Read_File(Shipped_Default_File()));
}

TEST_F(LogFile, ATextLogReadsEveryRowAndSavesUnchanged) {
    Load_Defaults();
    const std::string path = Put("run.qxl", Log_File_With(Text_Data(300)));
    ASSERT_TRUE(Open(path));
    EXPECT_EQ(state->Last_Row, 300);
    EXPECT_EQ(state->Log_Row_Columns, 42);
    EXPECT_EQ(state->form.txt_Log_Length, "15.0 s"); // 14.95 to the even digit
    for (int r = 2; r <= 300; ++r)
        ASSERT_EQ((Counter(r) - Counter(r - 1) + 256) % 256, 1) << r;
    // Plausible figures through the shipped sensors: idle first, then the pull.
    EXPECT_NEAR(state->Log_Data(1, 1), 900, 30);
    EXPECT_NEAR(state->Log_Data(1, 12), 1.0, 0.02);       // lambda
    EXPECT_NEAR(state->Log_Data(1, 15), 84, 3);           // coolant
    EXPECT_NEAR(state->Log_Data(1, 20), 13.9, 0.1);       // battery
    EXPECT_NEAR(state->Log_Data(250, 14), 1.8, 0.05);     // boost
    EXPECT_NEAR(state->Log_Data(250, 51 + 4), 0.5, 1e-9); // "Engine running", bit 4 of status 1

    Expect_Saved_Unchanged(path);
}

TEST_F(LogFile, AFileCutInsideTheDataOpensToItsLastFullRow) {
    Load_Defaults();
    std::string whole = Log_File_With(Text_Data(100));
    const auto row_90 = whole.find(boxsim::Text_Row(boxsim::Engine_At(90)));
    const std::string path = Put("cut.qxl", whole.substr(0, row_90 + 40));
    ASSERT_TRUE(Open(path));
    EXPECT_EQ(state->Last_Row, 90);
    EXPECT_EQ(state->Log_Dataset_Text, "[log_dataset]\r\n[end log_dataset]\r\n");
    for (const auto& said : dialogs.informed)
        EXPECT_EQ(said.find("without complete log data"), std::string::npos);
}

TEST_F(LogFile, AnEndOfTextCharacterIsRepairedWithTheSafetyCopyBeside) {
    Load_Defaults();
    std::string whole = Log_File_With(Text_Data(50));
    const auto row_30 = whole.find(boxsim::Text_Row(boxsim::Engine_At(30)));
    whole.insert(row_30 + 10, "\x1A");
    const std::string path = Put("damaged.qxl", whole);
    ASSERT_TRUE(Open(path));

    EXPECT_EQ(Read_File(path + "_repairing_copy.qxl"), whole);
    EXPECT_FALSE(std::filesystem::exists(path + "_repaired.qxl"));
    const std::string repaired = Read_File(path);
    EXPECT_EQ(repaired, whole.substr(0, row_30 + 10) + "\r\n");
    const long lost = static_cast<long>(whole.size() - repaired.size());
    EXPECT_TRUE(state->Repaired);
    EXPECT_EQ(state->Repaired_Bytes, lost);
    const std::string note = "  *repaired w. " + std::to_string(lost) + " err";
    EXPECT_NE(state->form.txt_Log_Free_Text.find(note), std::string::npos);
    EXPECT_NE(state->form.Caption.find(note), std::string::npos);
    EXPECT_EQ(state->Last_Row, 30);
}

TEST_F(LogFile, ABackupFileReadsWithOrWithoutItsClosingSections) {
    Load_Defaults();
    const std::string shipped = Read_File(Shipped_Default_File());
    const std::string settings = shipped.substr(0, shipped.find("[log_sens_def]"));
    const std::string sensors = shipped.substr(
        shipped.find("[log_sens_def]"), shipped.find("[readable_settings]") - shipped.find("[log_sens_def]"));
    const std::string head = "[log_data] 'Backup of last made logging 2024-05-31 14:03:59\r\nLa\r\n" +
                             boxsim::Text_Header() + "\r\n" + Rows(0, 120);
    const std::string path = Put("backup.qxl", head + "\r\n[end_log_data]\r\n" + settings + sensors);
    ASSERT_TRUE(Open(path));
    EXPECT_EQ(state->Last_Row, 120);

    // The program was killed: the backup stops after the last row that came.
    const std::string killed =
        Put("killed.qxl", head + boxsim::Text_Row(boxsim::Engine_At(120)).substr(0, 50));
    ASSERT_TRUE(Open(killed));
    EXPECT_EQ(state->Last_Row, 120);
    EXPECT_EQ(Counter(120), boxsim::Engine_At(119).columns[30]);
}

TEST_F(LogFile, BoxMessagesAndShortRowsAreLeftOutOfTheNumbers) {
    Load_Defaults();
    std::string data = Text_Data(40);
    const std::string row_20 = boxsim::Text_Row(boxsim::Engine_At(20));
    data.insert(data.find(row_20), "#Knock cyl 3\r\n");
    // A status byte as one hex letter: the row is a character short.
    std::string row_25 = boxsim::Text_Row(boxsim::Engine_At(25));
    const auto status = row_25.rfind(" h") + 2;
    data.replace(data.find(row_25), row_25.size(),
                 row_25.substr(0, status) + "A" + row_25.substr(status + 2));
    const std::string path = Put("messages.qxl", Log_File_With(data));
    ASSERT_TRUE(Open(path));
    EXPECT_EQ(state->Last_Row, 39);
    EXPECT_EQ(Counter(25), boxsim::Engine_At(24).columns[30]);
    EXPECT_EQ(Counter(26), boxsim::Engine_At(26).columns[30]);
    // The messages stay in the file.
    Expect_Saved_Unchanged(path);
    EXPECT_NE(Read_File(path).find("#Knock cyl 3\r\n"), std::string::npos);
}

TEST(LogFilter, OnlyTheHeaderOfTheHashLinesStays) {
    long count = 0;
    EXPECT_EQ(Filter_logfile_errors("#RPM a\r\n$1\r\n$2\r\n", count), "#RPM a\r\n$1\r\n$2\r\n");
    EXPECT_EQ(Filter_logfile_errors("#RPM a\r\n$1\r\n#x\r\n$2\r\n#y\r\n$3\r\n", count),
              "#RPM a\r\n$1\r\n$2\r\n$3\r\n");
    EXPECT_EQ(count, 1);
    // A live chunk has no header; its messages go all the same.
    EXPECT_EQ(Filter_logfile_errors("$1\r\n#x\r\n$2\r\n", count), "$1\r\n$2\r\n");
    EXPECT_EQ(count, 0);
}

TEST_F(LogFile, OlderFormsAreNamedAndBroughtToThePresentOne) {
    Load_Defaults();
    std::string file = Log_File_With(Text_Data(10));
    file.replace(file.find("Log_File_Version=4.0"), 20, "Log_File_Version=3.4");
    // Keep only the first ten signal lines, as a file of an older program has.
    const auto first_cut = file.find("Log_Def10=");
    file.erase(first_cut, file.find("Log_Scale=") - first_cut);
    ASSERT_TRUE(Open(Put("old.qxl", file)));
    EXPECT_EQ(std::count(dialogs.informed.begin(), dialogs.informed.end(),
                         "Too old box. Not supported by this software"),
              1);
    EXPECT_FALSE(state->Log_New_Format);
    EXPECT_NE(state->Log_Settings_Text.find("Log_Def73="), std::string::npos);
    EXPECT_NE(state->Log_Settings_Text.find("Log_File_Version=3.4\t"), std::string::npos);
}

TEST_F(LogFile, ASignalWithoutSensorIsSavedWithItsOwnNumber) {
    Load_Defaults();
    auto c = Ctx();
    state->setup.controls[5].combo_index = -1;
    state->Log_Signal_Tab[5].sensor = -1;
    Update_Log_Settings_Setup(c);
    EXPECT_NE(state->Log_Settings_Text.find("Log_Def5=Lambda target\t5\t\t"), std::string::npos);
    // Read back, the number is taken for the sensor in that place.
    Read_Log_Settings(c);
    EXPECT_EQ(state->Log_Signal_Tab[5].sensor, 5);
}

TEST_F(LogFile, AutoSaveNamesTheFileByDateAndTime) {
    Load_Defaults();
    auto c = Ctx();
    state->Log_Dir = dir.Path().string();
    state->Log_File_Name = "QXLog-.qxl";
    state->form.txt_Log_Date = "2024-05-31";
    state->form.txt_Log_time = "14:03:59";
    state->Log_Data_Text = "[log_data]\r\nLa\r\n[end log_data]\r\n";
    Log_File_Auto_Save(c);
    EXPECT_TRUE(File_Exists(dir.File("QXLog-_2024-05-31_14-03-59.qxl")));
}

class LogExport : public LogFile {
protected:
    LogExport() : ini(dir.File("RZ400_800M3.ini"), dir.File("QXS.new")) {}
    Settings_File_Context Files() {
        Settings_File_Hooks file_hooks;
        file_hooks.Update_All = [this] { ++updates; };
        return {program, texts, files, image, undo, ini, debug, dialogs, file_hooks};
    }
    static std::string Dataset(int lines, int dataset_id) {
        std::string text = "[log_dataset]\r\n";
        for (int i = 0; i < lines; ++i)
            text += std::to_string(i == 255 ? dataset_id : i % 251) + "\r\n";
        return text + "[end log_dataset]";
    }
    Ini_File ini;
    File_State files;
    Undo_List undo;
    int updates = 0;
};

TEST_F(LogExport, TakesTheImageOnlyFromAWholeDatasetSection) {
    auto ctx = Files();
    ASSERT_TRUE(cmd_Export_Log_qxs_settings_Click(ctx, Dataset(1024, 200)));
    EXPECT_EQ(image.CardByte[1000], 1000 % 251);
    EXPECT_EQ(files.CurrentFileName, "New1.qxs");
    EXPECT_EQ(texts.Title, program.Program_Title + "Settings loaded from log file");
    EXPECT_EQ(updates, 2);
    EXPECT_NE(texts.Debug_txt.find("Settings loaded from log file "), std::string::npos);

    image.CardByte.fill(7);
    dialogs.answers.push_back(Answer::Cancel);
    EXPECT_FALSE(cmd_Export_Log_qxs_settings_Click(ctx, Dataset(1024, 17)));
    EXPECT_EQ(dialogs.asked.back(), Dataset_Question(17, 200));
    EXPECT_EQ(image.CardByte[3], 7);

    EXPECT_FALSE(cmd_Export_Log_qxs_settings_Click(ctx, Dataset(1023, 200)));
    EXPECT_EQ(dialogs.informed.back(), "This log file does not include any valid box settings");
    EXPECT_EQ(dialogs.icons.back(), Icon::Information);
    EXPECT_FALSE(cmd_Export_Log_qxs_settings_Click(ctx, Dataset(1026, 200)));
    const std::string debug_text = Debug_Text();
    std::size_t lines = 0;
    for (auto at = debug_text.find("Error. Can not read out"); at != std::string::npos;
         at = debug_text.find("Error. Can not read out", at + 1))
        ++lines;
    EXPECT_EQ(lines, 2u);
    EXPECT_EQ(image.CardByte[3], 7);

    // A value that doesn't fit a byte: the words go to the diagnostics log, not to a box.
    std::string bad = Dataset(1024, 200);
    bad.replace(bad.find("\r\n5\r\n") + 2, 1, "300");
    const std::size_t boxes = dialogs.informed.size();
    EXPECT_FALSE(cmd_Export_Log_qxs_settings_Click(ctx, bad));
    EXPECT_EQ(dialogs.informed.size(), boxes);
    EXPECT_NE(
        Debug_Text().find("Error. Can not read out the settings from the log file\r\n", debug_text.size()),
        std::string::npos);
    EXPECT_EQ(image.CardByte[3], 7);
}

} // namespace
} // namespace quorlen
