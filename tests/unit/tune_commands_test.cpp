// quorlen-cli's engine, preset and summary commands on the shipped files.

#include "core/atomic_file.h"
#include "files/settings_files.h"
#include "support/cli_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

using test::Run_Cli;

class TuneCommands : public ::testing::Test {
protected:
    const std::string data = QUORLEN_DATA_DIR;
    const std::string ini = data + "/RZ400_800M3.ini";
    const std::string qxs = data + "/RZ400_800M3_Default_Settings.qxs";
    test::Temp_Dir dir;
};

TEST_F(TuneCommands, EngineListsTheLayoutsAsTheListShowsThem) {
    auto r = Run_Cli({"engine", "--ini", ini, "--list"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(std::count(r.out.begin(), r.out.end(), '\n'), 49);
    EXPECT_EQ(r.out.rfind("1. EX: Generic 4 cyl base setting Crank 36-1  No cam", 0), 0u);
}

TEST_F(TuneCommands, EngineShowsAndSelectsALayout) {
    auto r = Run_Cli({"engine", qxs, "--ini", ini});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find("Crank_sensor\tCrank 36-1\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Fuel_teeth_recomend\tRecomended: 10 teeth\n"), std::string::npos);
    EXPECT_NE(r.out.find("Fuel_Mode_label\tNOTICE! Semi sequential fuel\n"), std::string::npos);

    const std::string out = dir.File("out.qxs");
    r = Run_Cli({"engine", qxs, "--ini", ini, "--select", "8", "-o", out});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find("Fuel_teeth_recomend\tRecomended: 77 teeth\n"), std::string::npos) << r.out;
    auto saved = Load_Qxs_File(out);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->bytes[6], 7);
    EXPECT_EQ(Run_Cli({"qxs-diff", qxs, out}).out, "6\t0\t7\n");

    // Out of range, or -o without --select: a usage error and no file.
    EXPECT_EQ(Run_Cli({"engine", qxs, "--select", "257", "-o", dir.File("x.qxs")}).code, 2);
    EXPECT_EQ(Run_Cli({"engine", qxs, "-o", dir.File("x.qxs")}).code, 2);
    EXPECT_FALSE(File_Exists(dir.File("x.qxs")));
}

TEST_F(TuneCommands, PresetShowsAndApplies) {
    auto r = Run_Cli({"preset", "--ini", ini, "--list"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find("6\t200\tIdle control on\n"), std::string::npos) << r.out;

    r = Run_Cli({"preset", qxs, "--ini", ini, "--show", "7"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "These presets will change:\n185: 0 -> 64\n");

    const std::string out = dir.File("seq.qxs");
    r = Run_Cli({"preset", qxs, "--ini", ini, "--apply", "7", "-o", out});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(Run_Cli({"qxs-diff", qxs, out}).out, "185\t0\t64\n");
    EXPECT_EQ(Run_Cli({"preset", qxs, "--ini", ini, "--show", "11"}).code, 2);
}

TEST_F(TuneCommands, SummaryOfASettingsFileAndOfALogWithout) {
    auto r = Run_Cli({"summary", qxs, "--ini", ini});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out.rfind("[readable_settings]\nQuorlen version: \t\t", 0), 0u) << r.out;
    EXPECT_NE(r.out.find("RZ mode: \t\tMaster\n[end readable_settings]\n"), std::string::npos);
    EXPECT_EQ(r.out.find("--------Tables--------"), std::string::npos);

    r = Run_Cli({"summary", qxs, "--ini", ini, "--tables", "alt2"});
    EXPECT_NE(r.out.find("Fuel rpm table   Ignition rpm table   Boost rpm table"), std::string::npos)
        << r.out;
    EXPECT_EQ(Run_Cli({"summary", qxs, "--tables", "alt3"}).code, 2);

    // The default log settings hold no readable settings: nothing to show.
    r = Run_Cli({"summary", data + "/RZ400_800M3_Default_Log_Settings.qxl"});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "");
}

} // namespace
} // namespace quorlen
