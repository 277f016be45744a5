#include "cli/commands.h"
#include "files/qxs_format.h"
#include "support/cli_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

namespace quorlen {
namespace {

using test::Temp_Dir;
using test::Write_File;

test::Cli_Result Cli(const std::vector<std::string>& args) {
    return test::Run_Cli(args);
}

TEST(Cli, QxsCheckPrintsDatasetChecksumAndCommentLines) {
    Temp_Dir dir;
    Image_Bytes bytes{};
    bytes[255] = 200;
    bytes[0] = 1;
    Write_File(dir.File("a.qxs"), Format_Qxs(bytes, "line one\r\nline two"));
    auto r = Cli({"qxs-check", dir.File("a.qxs")});
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "dataset ID: 200\nchecksum: 00C8\ncomment lines: 2\n");

    Write_File(dir.File("bad.qxs"), "hello");
    r = Cli({"qxs-check", dir.File("bad.qxs")});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.out, "Not a valid qxs-file\n");
}

TEST(Cli, QxsDiffListsEachDifferingAddress) {
    Temp_Dir dir;
    Image_Bytes a{}, b{};
    Write_File(dir.File("a.qxs"), Format_Qxs(a, ""));
    Write_File(dir.File("b.qxs"), Format_Qxs(b, "other comment"));
    EXPECT_EQ(Cli({"qxs-diff", dir.File("a.qxs"), dir.File("b.qxs")}).code, 0);
    b[300] = 17;
    b[1023] = 2;
    Write_File(dir.File("b.qxs"), Format_Qxs(b, ""));
    auto r = Cli({"qxs-diff", dir.File("a.qxs"), dir.File("b.qxs")});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.out, "300\t0\t17\n1023\t0\t2\n");
    EXPECT_EQ(Cli({"qxs-diff", dir.File("a.qxs"), dir.File("none.qxs")}).code, 2);
    EXPECT_EQ(Cli({"frobnicate"}).code, 2);
}

TEST(Cli, LogCommandsRefuseWhatIsNotALogAndNameIt) {
    Temp_Dir dir;
    std::string noise(3000, '\0');
    for (std::size_t i = 0; i < noise.size(); ++i)
        noise[i] = static_cast<char>((i * 131 + 7) % 256);
    const std::u16string wide = u"[log_settings]\r\nLog_File_Version=4.0\t\r\n[end log_settings]\r\n";
    Write_File(dir.File("empty.qxl"), "");
    Write_File(dir.File("noise.qxl"), noise);
    Write_File(dir.File("utf16.qxl"),
               std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * 2));
    Write_File(dir.File("cr.qxl"),
               "[log_settings]\rLog_File_Version=4.0\t\r[end log_settings]\r[log_data]\rLa\r");
    for (const char* command : {"log-info", "log-csv"}) {
        for (const char* name : {"empty.qxl", "noise.qxl", "utf16.qxl", "cr.qxl"}) {
            auto r = Cli({command, dir.File(name)});
            EXPECT_EQ(r.code, 1) << command << " " << name;
            EXPECT_EQ(r.out, "") << command << " " << name;
            EXPECT_EQ(r.err, std::string("This is not a log file: ") + name + "\n") << command;
        }
        auto r = Cli({command, dir.Path().string()});
        EXPECT_EQ(r.code, 1);
        EXPECT_EQ(r.err, dir.Path().string() + " is a folder\n");
        r = Cli({command, "/dev/null"});
        EXPECT_EQ(r.err, "/dev/null is a device\n");
        r = Cli({command, dir.File("missing.qxl")});
        EXPECT_EQ(r.err, dir.File("missing.qxl") + " does not exist\n");
    }
}

TEST(Cli, LogInfoSaysWhenARepairCantBeWritten) {
    Temp_Dir dir;
    std::string log =
        test::Read_File(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3_Default_Log_Settings.qxl");
    log.insert(log.find("[log_dataset]"), "\x1A");
    Write_File(dir.File("held.qxl"), log);
    std::filesystem::create_directory(dir.File("held.qxl_repairing_copy.qxl"));
    auto r = Cli({"log-info", dir.File("held.qxl")});
    EXPECT_EQ(r.code, 0);
    EXPECT_NE(r.out.find("repaired: no, it needs repair but can not be written"), std::string::npos) << r.out;
    EXPECT_NE(r.err.find("can not be repaired"), std::string::npos) << r.err;
    EXPECT_EQ(test::Read_File(dir.File("held.qxl")), log);
}

} // namespace
} // namespace quorlen

namespace quorlen {
namespace {

const std::string Shipped_Ini = std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini";
const std::string Shipped_Qxs = std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3_Default_Settings.qxs";

TEST(Cli, SensorListsAndConvertsBothWays) {
    auto r = Cli({"sensor", "--ini", Shipped_Ini, "--list"});
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out.substr(0, r.out.find('\n', r.out.find('\n') + 1) + 1),
              "0\t<not used>\t\tvalue\t0\n1\tAFR wideband 0-5V 10-20\tLinear\tAFR\t1\n");
    r = Cli({"sensor", "--ini", Shipped_Ini, "tps 0.5-4.5v", "--forward", "128"});
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "50 %\n");
    r = Cli({"sensor", "--ini", Shipped_Ini, "2", "--forward", "10"}); // below 0.5 V
    EXPECT_EQ(r.out, "0 %\n");
    EXPECT_EQ(r.err, "TPS 0.5-4.5V takes raw 10 as 26\n");
    r = Cli({"sensor", "--ini", Shipped_Ini, "Coolant temp Bosch NTC", "--reverse", "80,8"});
    EXPECT_EQ(r.out, "32\n");
    EXPECT_EQ(Cli({"sensor", "--ini", Shipped_Ini, "No such", "--forward", "1"}).code, 1);
    EXPECT_EQ(Cli({"sensor", "--ini", Shipped_Ini, "2", "--forward", "300"}).code, 2);
    EXPECT_EQ(Cli({"sensor", "--ini", Shipped_Ini, "2"}).code, 2);
    EXPECT_EQ(Cli({"sensor", "--ini", "/nonexistent/q.ini", "--list"}).code, 1);
}

TEST(Cli, TransformPrintsBothAxesAndWritesTheConvertedFile) {
    Temp_Dir dir;
    auto r = Cli({"transform", Shipped_Qxs, "-o", dir.File("out.qxs"), "--ign-size", "15x13", "--rpm-scroll",
                  "5", "--map-scroll", "4", "--ini", Shipped_Ini});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find("old RPM axis (18): 500 750 1000"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("new RPM axis (15): 1000 2000 3000"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("new load axis (13): 0.07 0.15"), std::string::npos) << r.out;
    auto check = Cli({"qxs-check", dir.File("out.qxs")});
    EXPECT_EQ(check.code, 0);
    auto diff = Cli({"qxs-diff", Shipped_Qxs, dir.File("out.qxs")});
    EXPECT_NE(diff.out.find("175\t"), std::string::npos); // the size byte

    EXPECT_EQ(Cli({"transform", Shipped_Qxs, "-o", dir.File("x.qxs"), "--fuel-size", "9"}).code, 2);
    EXPECT_EQ(
        Cli({"transform", Shipped_Qxs, "-o", dir.File("x.qxs"), "--fuel-size", "1", "--rpm-scroll", "9"})
            .code,
        2);
    EXPECT_EQ(Cli({"transform", dir.File("none.qxs"), "-o", dir.File("x.qxs"), "--fuel-size", "1"}).code, 1);
}

} // namespace
} // namespace quorlen
