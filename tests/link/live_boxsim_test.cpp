// Changes made while the engine runs, end to end: quorlen-cli records a log from the real
// simulator on a line paced like 115200 baud, writes bytes and has the box move its running
// cell while the log goes on, and at the end the box holds the program's image, the log lost
// no more rows than the stream stood still for, and the status texts came in their order.
// scripts/live-minute.sh runs the same for a whole minute.

#include "support/boxsim_run.h"
#include "support/cli_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace quorlen {
namespace {

// The box's row counter (column 30) of every whole text row, in order.
std::vector<int> Counters(const std::string& text) {
    std::vector<int> counters;
    for (std::size_t at = 0; (at = text.find("\n$", at)) != std::string::npos;) {
        ++at;
        const std::string row = text.substr(at, text.find('\r', at) - at);
        if (row.size() == 171) counters.push_back(std::stoi(row.substr(4 * 30 - 1, 3)));
    }
    return counters;
}

// What the command said, line by line, without its time column.
std::vector<std::string> Said(const std::string& out) {
    std::vector<std::string> lines;
    std::istringstream in(out);
    for (std::string line; std::getline(in, line);) {
        const std::size_t s = line.find(" s  ");
        if (s != std::string::npos && s <= 8) lines.push_back(line.substr(s + 4));
    }
    return lines;
}

bool Starts(const std::string& text, const std::string& head) {
    return text.rfind(head, 0) == 0;
}

TEST(LiveEndToEnd, TenWritesAndFiveAdjustmentsKeepTheLogWholeAndTheBoxEqualToTheImage) {
    test::Temp_Dir dir;
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--engine-running", "--wire-baud", "115200"});
    ASSERT_TRUE(box.Ready());
    const std::string log = dir.File("live.qxl");
    std::vector<std::string> args{"live", "--port", box.Link(), "--seconds", "9", "-o", log, "--verify"};
    // Fuel and ignition cells and a few parameters, then the box's own cell moves both ways.
    const char* writes[] = {"300=40", "301=41", "420=90", "421=91", "660=30",
                            "661=31", "700=32", "40=3",   "41=4",   "302=42"};
    double at = 0.5;
    for (const char* w : writes) {
        args.insert(args.end(), {"--at", std::to_string(at) + ":" + w});
        at += 0.4;
    }
    for (const char* a : {"+", ">", "-", "<", "+"}) {
        args.insert(args.end(), {"--adjust", std::to_string(at) + ":" + a});
        at += 0.5;
    }
    const test::Cli_Result r = test::Run_Cli(args);
    ASSERT_EQ(r.code, 0) << r.out << r.err;
    EXPECT_NE(r.out.find("verify: the box holds the image"), std::string::npos) << r.out;

    // Each change: what it is, its opening text, its own words, "< Settings updated >", and
    // how long the stream stood still. The byte-wise write has the old spelling.
    const std::vector<std::string> said = Said(r.out);
    int writes_seen = 0, adjusts_seen = 0;
    double longest_window_ms = 0;
    for (std::size_t i = 0; i < said.size(); ++i) {
        const bool write = Starts(said[i], "write ");
        if (!write && !Starts(said[i], "adjust ")) continue;
        (write ? writes_seen : adjusts_seen)++;
        ASSERT_LT(i + 1, said.size());
        EXPECT_EQ(said[i + 1], write ? "< Updateing ... >" : "< Updating ... >") << said[i];
        std::size_t j = i + 2;
        for (; j < said.size() && said[j] != "< Settings updated >"; ++j) {
            if (write)
                EXPECT_TRUE(Starts(said[j], " FWrite finished")) << said[j];
            else
                EXPECT_TRUE(said[j] == "<Update OK>" || said[j] == "<Not in cell>") << said[j];
        }
        ASSERT_LT(j + 1, said.size()) << said[i] << ": no \"< Settings updated >\"";
        EXPECT_GT(j, i + 2) << said[i] << ": nothing between the opening and the end";
        ASSERT_TRUE(Starts(said[j + 1], "stream stood still ")) << said[j + 1];
        longest_window_ms = std::max(longest_window_ms, std::stod(said[j + 1].substr(19)));
    }
    EXPECT_EQ(writes_seen, 10);
    EXPECT_EQ(adjusts_seen, 5);

    // The engine runs on while the stream stands, so a window can cost the rows it covers,
    // and not one more: no row cut, none lost after the stream came back.
    const auto counters = Counters(test::Read_File(log));
    ASSERT_GE(counters.size(), 150u);
    const int allowed = 1 + static_cast<int>(std::ceil(longest_window_ms / 50.0));
    int lost = 0;
    for (std::size_t i = 1; i < counters.size(); ++i) {
        const int step = (counters[i] - counters[i - 1] + 256) % 256;
        EXPECT_GE(step, 1) << "row " << i;
        EXPECT_LE(step, allowed) << "row " << i << ", longest window " << longest_window_ms << " ms";
        lost += step - 1;
    }
    EXPECT_LE(lost, 15 * (allowed - 1)) << r.out;
}

} // namespace
} // namespace quorlen
