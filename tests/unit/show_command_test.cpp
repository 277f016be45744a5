#include "cli/commands.h"
#include "files/qxs_format.h"
#include "files/settings_files.h"
#include "support/cli_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <sstream>

namespace quorlen {
namespace {

using test::Temp_Dir;
using test::Write_File;

test::Cli_Result Cli(const std::vector<std::string>& args) {
    return test::Run_Cli(args);
}

std::vector<std::vector<std::string>> Grid(const std::string& text) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        rows.emplace_back();
        std::size_t start = 0;
        for (std::size_t tab; (tab = line.find('\t', start)) != std::string::npos; start = tab + 1)
            rows.back().push_back(line.substr(start, tab - start));
        rows.back().push_back(line.substr(start));
    }
    return rows;
}

class Show : public ::testing::Test {
protected:
    void SetUp() override {
        ini = std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini";
        shipped = std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3_Default_Settings.qxs";
        bytes = Load_Qxs_File(shipped)->bytes;
    }
    std::string Save() {
        Write_File(dir.File("t.qxs"), Format_Qxs(bytes, "test"));
        return dir.File("t.qxs");
    }
    test::Cli_Result Table(const std::string& name) {
        return Cli({"show", Save(), "--table", name, "--ini", ini});
    }

    Temp_Dir dir;
    std::string ini;
    std::string shipped;
    Image_Bytes bytes;
};

TEST_F(Show, TheShippedMapsPrintAsTheGridsShowThemWithoutRepairs) {
    test::Cli_Result r = Cli({"show", shipped, "--table", "fuel", "--ini", ini});
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.err, "");
    auto grid = Grid(r.out);
    ASSERT_EQ(grid.size(), 19u);
    EXPECT_EQ(grid[0].size(), 20u);
    EXPECT_EQ(grid[0][0], "RPM");
    EXPECT_EQ(grid[0][19], "8500");
    EXPECT_EQ(grid[1][0], "0.15");
    for (const char* name : {"ignition", "ign-comp1", "fuel2-map", "fuel2-rpm", "afr", "pwm1", "pwm2", "pwm3",
                             "pwm4", "pwm2-fuel"}) {
        r = Cli({"show", shipped, "--table", name, "--ini", ini});
        EXPECT_EQ(r.code, 0) << name;
        EXPECT_EQ(r.err, "") << name;
    }
    EXPECT_EQ(Grid(Cli({"show", shipped, "--table", "ign-comp1", "--ini", ini}).out)[1],
              (std::vector<std::string>{"0", "", "0.0"}));
    EXPECT_EQ(Grid(Cli({"show", shipped, "--table", "pwm2-fuel", "--ini", ini}).out).size(), 6u);
}

TEST_F(Show, EverySizeVariantPrintsItsShapeWithTheFirstCellInPlace) {
    const int fuel[8][2] = {{19, 18}, {21, 16}, {25, 13}, {18, 11}, {16, 21}, {13, 25}, {11, 11}, {15, 13}};
    for (int i = 0; i < 8; ++i) {
        auto [cols, rows] = fuel[i];
        bytes.fill(0);
        bytes[255] = 200;
        bytes[175] = static_cast<std::uint8_t>(i);
        bytes[256] = static_cast<std::uint8_t>(cols);
        bytes[256 + cols + 1] = static_cast<std::uint8_t>(rows);
        bytes[static_cast<std::size_t>(256 + cols + rows + 2)] = 24;
        auto grid = Grid(Table("fuel").out);
        ASSERT_EQ(grid.size(), static_cast<std::size_t>(rows + 1)) << i;
        EXPECT_EQ(grid[0].size(), static_cast<std::size_t>(cols + 1)) << i;
        EXPECT_EQ(grid[1][1], "2.44") << i;
        EXPECT_EQ(grid[1][2], "0.0") << i;
    }
    const int ign[4][2] = {{18, 11}, {15, 13}, {11, 18}, {11, 11}};
    for (int i = 0; i < 4; ++i) {
        auto [cols, rows] = ign[i];
        bytes.fill(0);
        bytes[255] = 200;
        bytes[175] = static_cast<std::uint8_t>(i << 6);
        bytes[static_cast<std::size_t>(653 + cols + rows + 2)] = 77;
        auto grid = Grid(Table("ignition").out);
        ASSERT_EQ(grid.size(), static_cast<std::size_t>(rows + 1)) << i;
        EXPECT_EQ(grid[0].size(), static_cast<std::size_t>(cols + 1)) << i;
        EXPECT_EQ(grid[1][1], "15.4") << i;
    }
}

TEST_F(Show, RepairsAreReportedOnStderrInTheMessageWords) {
    bytes[257] = 3; // the first step is an offset and stays
    bytes[258] = 6;
    bytes[186] = 9;
    test::Cli_Result r = Table("fuel");
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.err,
              "Some errors in Fuel RPM table was automatically corrected. Double check and save the file\n"
              "Error in PWM1 signal selection setting\n");
    EXPECT_EQ(Grid(r.out)[0][1], "188");
    EXPECT_EQ(Grid(r.out)[0][2], "438");
}

TEST_F(Show, AnIniThatIsNotThereIsAnErrorNotARunWithoutSensors) {
    const std::string file = Save();
    for (const std::string& bad : {dir.File("none.ini"), dir.Path().string()}) {
        for (const std::vector<std::string>& args :
             {std::vector<std::string>{"show", file, "--table", "fuel", "--ini", bad},
              {"edit", file, "-o", dir.File("out.qxs"), "--ini", bad, "--op", "fuel", "1,1", "=5"},
              {"settings", file, "--ini", bad},
              {"summary", file, "--ini", bad},
              {"generate", file, "-o", dir.File("out.qxs"), "--ini", bad},
              {"crank", file, "--ini", bad}}) {
            test::Cli_Result r = Cli(args);
            EXPECT_EQ(r.code, 1) << args[0] << " " << bad;
            EXPECT_EQ(r.out, "");
            const std::string why = bad == dir.Path().string() ? " is a folder\n" : " does not exist\n";
            EXPECT_EQ(r.err, "quorlen-cli: --ini " + bad + why);
        }
    }
    EXPECT_FALSE(std::filesystem::exists(dir.File("out.qxs")));
    // The commands that read only the configuration say the same.
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"engine", "--list", "--ini", dir.File("none.ini")},
          {"preset", "--list", "--ini", dir.File("none.ini")},
          {"sensor", "--ini", dir.File("none.ini"), "--list"}}) {
        test::Cli_Result r = Cli(args);
        EXPECT_EQ(r.code, 1) << args[0];
        EXPECT_EQ(r.err, "quorlen-cli: --ini " + dir.File("none.ini") + " does not exist\n");
    }
}

TEST_F(Show, ParametersPrintTheirTextAndUnit) {
    bytes[17] = 255;
    bytes[79] = 0;
    bytes[13] = 75;
    std::string file = Save();
    EXPECT_EQ(Cli({"show", file, "--param", "17", "--ini", ini}).out, "16000\trpm\n");
    EXPECT_EQ(Cli({"show", file, "--param", "79", "--ini", ini}).out, "0.816\tms\n");
    EXPECT_EQ(Cli({"show", file, "--param", "13", "--ini", ini}).out, "15.0\tdeg\n");
    test::Cli_Result raw = Cli({"show", file, "--param", "300", "--ini", ini});
    EXPECT_EQ(raw.out, std::to_string(bytes[300]) + "\t\n");
    EXPECT_NE(raw.err.find("no scaling"), std::string::npos);
}

TEST_F(Show, BadArgumentsAndFiles) {
    EXPECT_EQ(Cli({"show", shipped, "--table", "nope"}).code, 2);
    EXPECT_EQ(Cli({"show", shipped}).code, 2);
    EXPECT_EQ(Cli({"show", shipped, "--param", "1025"}).code, 2);
    Write_File(dir.File("bad.qxs"), "hello");
    test::Cli_Result r = Cli({"show", dir.File("bad.qxs"), "--table", "fuel", "--ini", ini});
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.err.find("Not a valid qxs-file"), std::string::npos);
    EXPECT_NE(Cli({"--help"}).out.find("show FILE --table NAME"), std::string::npos);
}

} // namespace
} // namespace quorlen
