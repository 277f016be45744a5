// quorlen-cli log-hits and fuel-correct on a log of the simulator's engine swept through the
// shipped fuel map, 12 % short of fuel in one region.

#include "cli/cli_tables.h"
#include "support/cli_run.h"
#include "support/sweep_log.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <sstream>

namespace quorlen {
namespace {

const std::string Data_Dir = QUORLEN_DATA_DIR;
const std::string Ini = Data_Dir + "/RZ400_800M3.ini";
const std::string Settings = Data_Dir + "/RZ400_800M3_Default_Settings.qxs";

std::vector<std::vector<std::string>> Cells(const std::string& text) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> row;
        std::size_t at = 0;
        for (std::size_t tab; (tab = line.find('\t', at)) != std::string::npos; at = tab + 1)
            row.push_back(line.substr(at, tab - at));
        row.push_back(line.substr(at));
        rows.push_back(row);
    }
    return rows;
}

class Fuel_Cli : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        cli::Cli_Tables settings(stderr, Ini);
        ASSERT_TRUE(settings.Load(Settings));
        settings.Flush_Diagnostics();
        dir = new test::Temp_Dir;
        test::Write_File(
            dir->File("sweep.qxl"),
            test::Sweep_Log_File(settings.app.image, test::Read_File(Ini),
                                 test::Read_File(Data_Dir + "/RZ400_800M3_Default_Log_Settings.qxl"),
                                 "3000-5000:1.0-1.5:+12", 6000));
    }
    static void TearDownTestSuite() {
        delete dir;
        dir = nullptr;
    }
    static std::string Log() { return dir->File("sweep.qxl"); }

    static test::Temp_Dir* dir;
};

test::Temp_Dir* Fuel_Cli::dir = nullptr;

TEST_F(Fuel_Cli, Log_Hits_Prints_The_Map_Shape_With_Seconds_And_Lambda_Errors) {
    const auto hits =
        test::Run_Cli({"log-hits", Log(), "--settings", Settings, "--table", "fuel", "--ini", Ini});
    ASSERT_EQ(hits.code, 0) << hits.err;
    const auto grid = Cells(hits.out);
    ASSERT_EQ(grid.size(), 19u); // 18 load rows under the RPM axis
    ASSERT_EQ(grid[0].size(), 20u);
    EXPECT_EQ(grid[0][0], "RPM");
    EXPECT_EQ(grid[0][1], "500");
    double total = 0;
    for (std::size_t r = 1; r < grid.size(); ++r)
        for (std::size_t c = 1; c < grid[r].size(); ++c)
            total += std::stod(grid[r][c]);
    EXPECT_NEAR(total, 300, 0.5); // every row of the sweep ran somewhere in the map
    EXPECT_EQ(hits.err, "Log hits: 0 s to 3.2 s, 6000 rows\n");

    // The region's cells read about 12 % lean; elsewhere lambda is on the target.
    const auto lambda = test::Run_Cli(
        {"log-hits", Log(), "--settings", Settings, "--table", "fuel", "--lambda", "--ini", Ini});
    ASSERT_EQ(lambda.code, 0) << lambda.err;
    const auto errors = Cells(lambda.out);
    int region = 0;
    for (std::size_t r = 1; r < errors.size(); ++r)
        for (std::size_t c = 1; c < errors[r].size(); ++c) {
            if (errors[r][c].empty()) continue;
            const double rpm = std::stod(errors[0][c]), load = std::stod(errors[r][0]);
            const double error = std::stod(errors[r][c]);
            if (rpm >= 3000 && rpm <= 5000 && load >= 1.0 && load <= 1.5) {
                EXPECT_NEAR(error, 12, 1.5) << rpm << " " << load;
                ++region;
            } else {
                EXPECT_NEAR(error, 0, 1.5) << rpm << " " << load;
            }
        }
    EXPECT_GE(region, 12);

    // The ignition map has its own shape.
    const auto ign =
        test::Run_Cli({"log-hits", Log(), "--settings", Settings, "--table", "ignition", "--ini", Ini});
    ASSERT_EQ(ign.code, 0) << ign.err;
    EXPECT_EQ(Cells(ign.out)[0].size(), 19u);
}

TEST_F(Fuel_Cli, Fuel_Correct_Prints_Each_Changed_Cell_And_Saves_Exactly_Those) {
    const std::string out = dir->File("corrected.qxs");
    const auto r = test::Run_Cli({"fuel-correct", Log(), "--settings", Settings, "-o", out, "--ini", Ini});
    ASSERT_EQ(r.code, 0) << r.err;
    const auto lines = Cells(r.out);
    ASSERT_GE(lines.size(), 12u);
    for (const auto& line : lines) {
        ASSERT_EQ(line.size(), 6u);
        EXPECT_GT(std::stod(line[3]), std::stod(line[2])); // the region ran lean: more fuel
        EXPECT_GT(std::stod(line[4]), 0);
        EXPECT_LE(std::stod(line[4]), 15);
        EXPECT_GE(std::stod(line[5]), 1);
    }
    const auto diff = test::Run_Cli({"qxs-diff", Settings, out});
    EXPECT_EQ(Cells(diff.out).size(), lines.size()) << diff.out;

    // A tighter limit holds every cell to it; a longer demand for steady time leaves all alone.
    const auto held = test::Run_Cli(
        {"fuel-correct", Log(), "--settings", Settings, "-o", out, "--max-change", "4", "--ini", Ini});
    ASSERT_EQ(held.code, 0) << held.err;
    for (const auto& line : Cells(held.out))
        EXPECT_LE(std::stod(line[4]), 4);
    const auto none = test::Run_Cli(
        {"fuel-correct", Log(), "--settings", Settings, "-o", out, "--min-seconds", "5", "--ini", Ini});
    ASSERT_EQ(none.code, 0) << none.err;
    EXPECT_EQ(none.out, "");
    EXPECT_NE(none.err.find("changed cells: 0"), std::string::npos);
}

TEST_F(Fuel_Cli, Bad_Arguments_And_Missing_Files_Say_What_Is_Wrong) {
    auto r = test::Run_Cli({"fuel-correct", Log(), "--settings", Settings});
    EXPECT_EQ(r.code, 2);
    EXPECT_NE(r.err.find("want -o OUT.qxs"), std::string::npos) << r.err;
    r = test::Run_Cli({"log-hits", Log(), "--settings", Settings, "--table", "boost"});
    EXPECT_EQ(r.code, 2);
    EXPECT_NE(r.err.find("--table is fuel or ignition"), std::string::npos) << r.err;
    r = test::Run_Cli({"log-hits", Log(), "--settings", Settings, "--table", "ignition", "--lambda"});
    EXPECT_EQ(r.code, 2);
    r = test::Run_Cli(
        {"fuel-correct", Log(), "--settings", Settings, "-o", dir->File("x.qxs"), "--max-change", "lots"});
    EXPECT_EQ(r.code, 2);
    r = test::Run_Cli({"fuel-correct", dir->File("missing.qxl"), "--settings", Settings, "-o",
                       dir->File("x.qxs"), "--ini", Ini});
    EXPECT_EQ(r.code, 1);
    EXPECT_FALSE(r.err.empty());
    EXPECT_FALSE(std::filesystem::exists(dir->File("x.qxs")));
}

} // namespace
} // namespace quorlen
