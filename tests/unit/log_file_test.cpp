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
#include <sys/stat.h>

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

TEST_F(LogFile, EndOfTextCharactersAreRepairedAwayAndEverythingAfterThemStays) {
    Load_Defaults();
    const std::string whole = Log_File_With(Text_Data(50), "1\r\n2\r\n");
    std::string damaged = whole;
    damaged.insert(damaged.find(boxsim::Text_Row(boxsim::Engine_At(30))) + 10, "\x1A");
    damaged.insert(damaged.find("[log_dataset]"), "\x03");
    const std::string path = Put("damaged.qxl", damaged);
    ASSERT_TRUE(Open(path));

    EXPECT_EQ(Read_File(path + "_repairing_copy.qxl"), damaged);
    EXPECT_FALSE(std::filesystem::exists(path + "_repaired.qxl"));
    EXPECT_EQ(Read_File(path), whole);
    EXPECT_EQ(state->Last_Row, 50);
    EXPECT_EQ(state->Log_Dataset_Text, "[log_dataset]\r\n1\r\n2\r\n[end log_dataset]");
    EXPECT_TRUE(state->Repaired);
    EXPECT_EQ(state->Repaired_Bytes, 2);
    const std::string note = "  *repaired w. 2 err";
    EXPECT_NE(state->form.txt_Log_Free_Text.find(note), std::string::npos);
    EXPECT_NE(state->form.Caption.find(note), std::string::npos);
}

TEST_F(LogFile, ARepairThatCantBeWrittenIsSaidAndLeavesTheFileAlone) {
    Load_Defaults();
    std::string damaged = Log_File_With(Text_Data(20));
    damaged.insert(damaged.find(boxsim::Text_Row(boxsim::Engine_At(5))), "\x1A");
    const std::string path = Put("held.qxl", damaged);
    // Where the safety copy would go stands a folder: nothing can be written.
    std::filesystem::create_directory(path + "_repairing_copy.qxl");
    ASSERT_TRUE(Open(path));
    EXPECT_EQ(Read_File(path), damaged);
    EXPECT_FALSE(state->Repaired);
    EXPECT_FALSE(state->Repair_Failure.empty());
    EXPECT_EQ(state->Last_Row, 20);
    ASSERT_FALSE(dialogs.informed.empty());
    EXPECT_NE(dialogs.informed.back().find("can not be repaired"), std::string::npos)
        << dialogs.informed.back();
}

TEST_F(LogFile, WhatIsNotALogFileIsRefusedAndTheLogOnShowStays) {
    Load_Defaults();
    const std::string good = Log_File_With(Text_Data(30));
    ASSERT_TRUE(Open(Put("good.qxl", good)));
    std::u16string wide(good.begin(), good.end());
    std::string cr_only = good;
    for (std::size_t at; (at = cr_only.find("\r\n")) != std::string::npos;)
        cr_only.replace(at, 2, "\r");
    std::string noise(4000, '\0');
    for (std::size_t i = 0; i < noise.size(); ++i)
        noise[i] = static_cast<char>((i * 7919 + 13) % 251);
    const std::vector<std::pair<std::string, std::string>> files = {
        {"empty.qxl", ""},
        {"noise.qxl", noise},
        {"utf16.qxl", std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * 2)},
        {"cr-only.qxl", cr_only}};
    for (const auto& [name, content] : files) {
        EXPECT_FALSE(Open(Put(name, content))) << name;
        EXPECT_EQ(dialogs.informed.back(), "This is not a log file: " + name);
        EXPECT_EQ(state->Last_Row, 30) << name;
    }
    // A pipe would hold the window for ever; a folder reads as nothing.
    const std::string fifo = dir.File("pipe.qxl");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(Open(fifo));
    EXPECT_EQ(dialogs.informed.back(), fifo + " is a named pipe (FIFO)");
    EXPECT_FALSE(Open(dir.Path().string()));
    EXPECT_EQ(dialogs.informed.back(), dir.Path().string() + " is a folder");
    EXPECT_FALSE(Open("/dev/null"));
    EXPECT_EQ(dialogs.informed.back(), "/dev/null is a device");
    EXPECT_EQ(state->Last_Row, 30);
}

TEST_F(LogFile, AFileWithoutSettingsIsReadWithTheBuiltInSensors) {
    Load_Defaults();
    std::string file = Log_File_With(Text_Data(10));
    const auto settings = file.find("[log_settings]");
    file.erase(settings, file.find("[end log_settings]") + 18 - settings);
    // Its own sensors are of no use without the settings that give them to the signals.
    file.replace(file.find("Log_Sens_Def=RPM\t"), 17, "Log_Sens_Def=Mine\t");
    ASSERT_TRUE(Open(Put("no-settings.qxl", file)));
    EXPECT_EQ(state->Log_Sens_Tab[0][0], "RPM");
    EXPECT_EQ(state->Log_Sens_Count, 17);
    EXPECT_NE(state->Log_Settings_Text.find("Log_Def73="), std::string::npos);
    EXPECT_EQ(state->Last_Row, 10);
}

TEST_F(LogFile, NumbersOutOfRangeInTheSettingsAreNotTaken) {
    Load_Defaults();
    std::string file = Log_File_With(Text_Data(40));
    auto set = [&](const std::string& key, const std::string& value) {
        const auto at = file.find(key + "=");
        file.replace(at, file.find("\r\n", at) - at, key + "=" + value);
    };
    // Each of these once overflowed an index, a loop bound or a 16-bit number.
    set("Log_Signal_Smoothing",
        "99999999999\t2147483647\t70000\t-99999999999\t1\t2\t3\t99999999999999999999\t");
    set("Log_Def1", "AN1\t4294967297\tAD\t1\t0\t1\t1\tAN1\t");
    set("Log_Zoom", "99999999999999\t-7\t");
    set("Log_Gearing", "1\t2\t3\t4\t5\t6\t4294967299\t135\t3647\t");
    ASSERT_TRUE(Open(Put("wild.qxl", file)));
    EXPECT_EQ(state->Last_Row, 40);
    EXPECT_EQ(state->setup.filter.p1, 0);
    EXPECT_EQ(state->setup.filter.p2, 3000);
    EXPECT_EQ(state->setup.filter.p6, -10);
    EXPECT_EQ(state->Log_Signal_Tab[1].sensor, -1);
    // A zoom outside the log settles on the whole log.
    EXPECT_EQ(state->window.Zoom_Start, 1);
    EXPECT_EQ(state->window.Zoom_Stop, 40);
    EXPECT_EQ(state->setup.Gear_option, 3); // as the default settings chose it
    // A smoothing longer than the log leaves the power unsmoothed, as a short log does.
    EXPECT_FALSE(Log_Array::Empty(state->Log_Data(20, state->columns.Col_Power)));
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

TEST_F(LogFile, ASignalThatLostItsSensorLosesItsNameAndUnit) {
    Load_Defaults();
    Log_Signal& sig = state->Log_Signal_Tab[2];
    ASSERT_FALSE(sig.unit.empty());
    sig.sensor = -1;
    Update_Log_Sens_Tab(*state);
    EXPECT_EQ(sig.name, "");
    EXPECT_EQ(sig.unit, "");
    EXPECT_EQ(state->setup.controls[2].view_caption, state->setup.controls[2].custom_name + " []");
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
