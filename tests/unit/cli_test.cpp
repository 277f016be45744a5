#include "cli/commands.h"
#include "files/qxs_format.h"
#include "support/cli_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdio>

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

} // namespace
} // namespace quorlen
