#include "core/app_path.h"
#include "core/atomic_file.h"
#include "core/debug_log.h"
#include "core/ini_file.h"
#include "core/proc_guard.h"
#include "core/recent_files.h"
#include "core/text.h"
#include "core/window_size.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorlen {
namespace {

using test::Read_File;
using test::Temp_Dir;
using test::Write_File;

// --- configuration file -----------------------------------------------------------------

TEST(IniRewrite, ReplacesKeyInAnyCaseWithTheNewSpellingAndKeepsOtherLines) {
    std::string old_text = "[Quorlen]\r\nLANGUAGE=SWE\r\ncomport1=3\r\n";
    EXPECT_EQ(Ini_Rewrite(old_text, "Language", "ENG", ""), "[Quorlen]\r\nLanguage=ENG\r\ncomport1=3\r\n");
}

TEST(IniRewrite, NewKeyInEmptyFileGivesOneLine) {
    EXPECT_EQ(Ini_Rewrite("", "Autoguide", "0", ""), "Autoguide=0\r\n");
}

TEST(IniRewrite, MatchReplacesOnlyTheListLineThatHoldsIt) {
    std::string old_text = "Sens_Def=MAP 2.5 bar\t1\r\nSens_Def=Coolant GM\t2\r\nSens_Def=TPS\t3\r\n";
    EXPECT_EQ(Ini_Rewrite(old_text, "Sens_Def", "Coolant GM\t9", "Coolant GM"),
              "Sens_Def=MAP 2.5 bar\t1\r\nSens_Def=Coolant GM\t9\r\nSens_Def=TPS\t3\r\n");
}

TEST(IniRewrite, NewListEntryLandsAfterItsListBeforeALineWithoutEquals) {
    std::string old_text = "preset_list=a\r\npreset_list=b\r\n[Engines]\r\nEngine_Config=x\r\n";
    EXPECT_EQ(Ini_Rewrite(old_text, "preset_list", "c", "no such"),
              "preset_list=a\r\npreset_list=b\r\npreset_list=c\r\n[Engines]\r\nEngine_Config=x\r\n");
    // With nothing after the list, the end of the file is the place.
    EXPECT_EQ(Ini_Rewrite("x=1\r\npreset_list=a\r\n", "preset_list", "c", "zz"),
              "x=1\r\npreset_list=a\r\npreset_list=c\r\n");
}

TEST(IniRewrite, MatchedEntryIsNotWrittenTwiceWhenTheListGoesOn) {
    std::string old_text = "Sens_Def=A\r\nSens_Def=B\r\nSens_Def=C\r\n; end\r\n";
    EXPECT_EQ(Ini_Rewrite(old_text, "Sens_Def", "B2", "B"),
              "Sens_Def=A\r\nSens_Def=B2\r\nSens_Def=C\r\n; end\r\n");
}

TEST(IniFile, ReadsValuesWithEqualsInsideAndListsByOccurrenceAndBracketKeys) {
    Temp_Dir dir;
    Write_File(dir.File("q.ini"),
               "[Main]\r\nformula=a=b+c\r\nSens_Def=one\r\nSENS_DEF=two\r\nplain line\r\n");
    Ini_File ini(dir.File("q.ini"), dir.File("QXS.new"));
    EXPECT_EQ(ini.Read_Ini("Formula"), "a=b+c");
    EXPECT_EQ(ini.Read_Ini("sens_def", 1), "one");
    EXPECT_EQ(ini.Read_Ini("sens_def", 2), "two");
    std::string value = "stale";
    EXPECT_FALSE(ini.Read_Ini("sens_def", value, 3));
    EXPECT_EQ(value, "");
    EXPECT_TRUE(ini.Read_Ini("[main", value));
    EXPECT_EQ(ini.Read_Ini_Number("missing"), 0);
}

TEST(IniFile, ASnapshotReadsAsTheFileDoes) {
    Temp_Dir dir;
    // A last line without its line end, and a bare CR inside a value, read as the file has them.
    Write_File(dir.File("q.ini"),
               "[Main]\r\nformula=a=b+c\r\nSens_Def=one\nSENS_DEF=t\rwo\r\nplain line\r\n=x\r\nlast=1");
    const Ini_File ini(dir.File("q.ini"), dir.File("QXS.new"));
    const Ini_Snapshot snapshot = ini.Snapshot();
    for (const char* key : {"formula", "FORMULA", "sens_def", "[main", "plain line", "", "last", "none"})
        for (int occurrence : {0, 1, 2, 3}) {
            std::string from_file = "stale", from_snapshot = "stale";
            EXPECT_EQ(ini.Read_Ini(key, from_file, occurrence),
                      snapshot.Read_Ini(key, from_snapshot, occurrence))
                << key << " " << occurrence;
            EXPECT_EQ(from_file, from_snapshot) << key << " " << occurrence;
        }
    EXPECT_EQ(snapshot.Read_List("Sens_Def"), (std::vector<std::string>{"one", "t\rwo"}));
    EXPECT_TRUE(Ini_File(dir.File("none.ini"), "").Snapshot().Read_List("Sens_Def").empty());
}

TEST(IniFile, MissingFileReadsEmptyAndWriteCreatesIt) {
    Temp_Dir dir;
    Ini_File ini(dir.File("q.ini"), dir.File("QXS.new"));
    EXPECT_EQ(ini.Read_Ini("comport1"), "");
    ini.Write_Ini("comport1", "4");
    EXPECT_EQ(Read_File(dir.File("q.ini")), "comport1=4\r\n");
    EXPECT_FALSE(File_Exists(dir.File("QXS.new")));
}

TEST(IniFile, FailedWriteLeavesTheOldFileWhole) {
    Temp_Dir dir;
    Write_File(dir.File("q.ini"), "a=1\r\n");
    // The temporary file cannot be made: a folder stands in its place.
    std::filesystem::create_directory(dir.File("QXS.new"));
    Ini_File ini(dir.File("q.ini"), dir.File("QXS.new"));
    EXPECT_THROW(ini.Write_Ini("a", "2"), Run_Error);
    EXPECT_EQ(Read_File(dir.File("q.ini")), "a=1\r\n");
}

// A writer killed at any moment leaves the old or the new file, never a part of either.
TEST(ReadWholeFile, OnlyARegularFileIsReadAndNothingWaitsOnAPipe) {
    Temp_Dir dir;
    Write_File(dir.File("a.txt"), std::string("a\0b", 3));
    EXPECT_EQ(Read_Whole_File(dir.File("a.txt")), std::string("a\0b", 3));
    const std::string pipe = dir.File("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {pipe, dir.File(""), std::string("/dev/zero")}) {
        try {
            Read_Whole_File(path);
            ADD_FAILURE() << path << " was read";
        } catch (const Run_Error& e) {
            EXPECT_EQ(e.number(), 75) << path;
        }
    }
    EXPECT_THROW(Read_Whole_File(dir.File("none")), Run_Error);
}

TEST(AtomicReplace, KilledWriterLeavesOldOrNewFileWhole) {
    Temp_Dir dir;
    const std::string path = dir.File("tune.qxs");
    const std::string old_content(300000, 'o');
    const std::string new_content(400000, 'n');
    for (int round = 0; round < 40; ++round) {
        Write_File(path, old_content);
        pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (;;)
                Replace_File_Atomically(path, new_content, dir.File("QXS.new"));
        }
        usleep(static_cast<useconds_t>(200 + round * 97));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        std::string now = Read_File(path);
        ASSERT_TRUE(now == old_content || now == new_content)
            << "round " << round << ": " << now.size() << " bytes";
    }
}

// --- diagnostics ------------------------------------------------------------------------

TEST(ProcGuard, LaterStepsRunAndOneLineNamesTheLastError) {
    Temp_Dir dir;
    Debug_Log log;
    ASSERT_TRUE(log.Open(dir.File("Debug_file.log")));
    int steps_run = 0;
    {
        Proc_Guard guard(log, "Init ini file");
        guard.Step([&] { throw errors::File_Not_Found(); });
        guard.Step([&] { ++steps_run; });
        guard.Step([&] { throw errors::Subscript_Out_Of_Range(); });
        guard.Step([&] { ++steps_run; });
    }
    log.Close();
    EXPECT_EQ(steps_run, 2);
    EXPECT_EQ(Read_File(dir.File("Debug_file.log")), "Error in Init ini fileSubscript out of range\r\n");
}

TEST(DebugLog, StartLineComesFirstAndAReadOnlyFolderStartsWithoutALog) {
    Temp_Dir dir;
    Debug_Log log;
    Init_Debug_File(log, dir.Slash());
    log.Close();
    EXPECT_EQ(Read_File(dir.File("Debug_file.log")).rfind("Quorlen started: ", 0), 0u);

    Debug_Log nowhere;
    Init_Debug_File(nowhere, "/proc/no-such-folder/");
    EXPECT_FALSE(nowhere.Is_Open());
    nowhere.Write_Line("dropped"); // must not fail
}

// --- small readers ----------------------------------------------------------------------

TEST(Text, LenientAndStrictNumbers) {
    EXPECT_EQ(Val(""), 0);
    EXPECT_EQ(Val("ENG"), 0);
    EXPECT_EQ(Val(" 12abc"), 12);
    EXPECT_EQ(Val("-2.5"), -2.5);
    EXPECT_FALSE(To_Integer("ENG").has_value());
    EXPECT_FALSE(To_Integer("").has_value());
    EXPECT_EQ(To_Integer(" 1 "), 1);
}

TEST(WindowSize, RoundTripAndTheThreeStates) {
    Window_Size normal{0, 12000, 9000, 300, 200};
    EXPECT_EQ(Format_Window_Size(normal), "012000\t9000\t300\t200\t;");
    auto parsed = Parse_Window_Size("012000\t9000\t300\t200\t;");
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->height, 9000);
    EXPECT_EQ(parsed->top, 200);

    Window_Size maximised{2, 30000, 20000, 0, 0};
    EXPECT_EQ(Window_Size_To_Save(maximised, "012000\t9000\t300\t200\t;"), "212000\t9000\t300\t200\t;");
    EXPECT_FALSE(Window_Size_To_Save(Window_Size{1, 1, 1, 1, 1}, "012000\t9000\t300\t200\t;"));
    EXPECT_FALSE(Parse_Window_Size("0abc\t"));
    EXPECT_FALSE(Parse_Window_Size("04294967296\t9000\t300\t200\t;"));
}

TEST(AppPath, SeedingCopiesTheShippedFoldersAndKeepsTheUsersFiles) {
    test::Temp_Dir installed, user;
    std::filesystem::create_directories(installed.File("Basemaps"));
    test::Write_File(installed.File("RZ400_800M3.ini"), "shipped");
    test::Write_File(installed.File("Basemaps/2.0L_4cyl_Turbo.qxs"), "map");
    test::Write_File(user.File("RZ400_800M3.ini"), "mine");
    auto copied = Seed_Data_Folder(installed.Slash(), user.Slash());
    EXPECT_EQ(copied, std::vector<std::string>{"Basemaps/2.0L_4cyl_Turbo.qxs"});
    EXPECT_EQ(test::Read_File(user.File("Basemaps/2.0L_4cyl_Turbo.qxs")), "map");
    EXPECT_EQ(test::Read_File(user.File("RZ400_800M3.ini")), "mine");
}

} // namespace
} // namespace quorlen

namespace quorlen {
namespace {

TEST(Recent_Files, NewestFirstOnceEachAndTheOldestFallsOff) {
    std::vector<std::string> list;
    for (int i = 1; i <= 9; ++i)
        list = Push_Recent(list, "/maps/m" + std::to_string(i) + ".qxs");
    ASSERT_EQ(list.size(), Recent_Files_Kept);
    EXPECT_EQ(list.front(), "/maps/m9.qxs");
    EXPECT_EQ(list.back(), "/maps/m2.qxs") << "m1 was the oldest";

    list = Push_Recent(list, "/maps/m5.qxs");
    EXPECT_EQ(list.size(), Recent_Files_Kept) << "moved up, not added twice";
    EXPECT_EQ(list[0], "/maps/m5.qxs");
    EXPECT_EQ(list[1], "/maps/m9.qxs");
    EXPECT_EQ(std::count(list.begin(), list.end(), "/maps/m5.qxs"), 1);
    EXPECT_EQ(Push_Recent(list, ""), list);
}

TEST(Recent_Files, MenuTextsNumberTheNameAndKeepItsAmpersand) {
    EXPECT_EQ(Recent_Menu_Text(0, "/home/t/maps/Volvo B230.qxs"), "&1 Volvo B230.qxs");
    EXPECT_EQ(Recent_Menu_Text(2, "/home/t/R&D.qxs"), "&3 R&&D.qxs");
    EXPECT_EQ(Recent_Menu_Text(9, "/x/ten.qxl"), "10 ten.qxl");
}

} // namespace
} // namespace quorlen
