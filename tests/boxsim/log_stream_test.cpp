// The box's log streams, driven by feeding the box strings and moving its clock: what the
// program's capture relies on (rows at 20 a second, frames with a correct sum, a header as
// long as a row, a blank that stops) and what makes a log worth looking at.

#include "box.h"
#include "faults.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace boxsim {
namespace {

using namespace std::chrono_literals;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t lf; (lf = text.find("\r\n", start)) != std::string::npos; start = lf + 2)
        lines.push_back(text.substr(start, lf - start));
    return lines;
}

// Every frame in `text`, cut by its own length byte rather than by searching for markers.
std::vector<std::string> Frames(const std::string& text) {
    std::vector<std::string> frames;
    std::size_t at = text.find("PS");
    while (at != std::string::npos && at + 3 <= text.size()) {
        const std::size_t length = static_cast<std::uint8_t>(text[at + 2]);
        if (at + 7 + length > text.size()) break;
        frames.push_back(text.substr(at, 7 + length));
        at += 7 + length;
    }
    return frames;
}

bool Sum_Is_Right(const std::string& frame) {
    const auto b = [&](std::size_t i) { return static_cast<unsigned>(static_cast<std::uint8_t>(frame[i])); };
    const std::size_t length = b(2);
    unsigned sum = static_cast<unsigned>(length);
    for (std::size_t i = 0; i < length; ++i)
        sum += b(3 + i);
    return ((sum - 1) & 0xFFFF) == (b(3 + length) << 8 | b(4 + length));
}

TEST(TextStream, HeaderRowsAtTwentyASecondAndABlankStops) {
    Box box(Box_Config{});
    std::string out = box.Receive("La", Time{});
    const auto head = Lines(out);
    ASSERT_EQ(head.size(), 2u);
    EXPECT_EQ(head[0], "La");
    EXPECT_EQ(head[1].rfind("#RPM", 0), 0u);

    out = box.Tick(Time{1s});
    const auto rows = Lines(out);
    ASSERT_EQ(rows.size(), 20u);
    for (const auto& row : rows) {
        EXPECT_EQ(row.size(), head[1].size()) << row; // the reader compares the two lengths
        EXPECT_EQ(std::count(row.begin(), row.end(), ' '), 42);
        EXPECT_EQ(row[0], '$');
        EXPECT_EQ(row.find_first_of("l#"), std::string::npos);
    }
    EXPECT_EQ(box.Next_Deadline(), Time{1050ms});

    EXPECT_EQ(box.Receive(" ", Time{1010ms}), "");
    EXPECT_EQ(box.Tick(Time{3s}), "");
    EXPECT_EQ(box.Streaming(), Log_Stream::Mode::Off);
    // The dialogue works again once the stream has stopped.
    EXPECT_EQ(box.Receive("v", Time{3s}).substr(0, 3), "v\r\n");
}

TEST(TextStream, BoxMessagesStandBetweenRowsOnLinesOfTheirOwn) {
    Box box(Box_Config{});
    box.Receive("La", Time{});
    const auto lines = Lines(box.Tick(Time{30s}));
    const auto messages =
        std::count_if(lines.begin(), lines.end(), [](const auto& l) { return l[0] == '#'; });
    EXPECT_GE(messages, 2);
    EXPECT_EQ(static_cast<long>(lines.size()) - messages, 600);
}

TEST(BinaryStream, FramesOfTheAskedLengthWithTheBoxSum) {
    Box box(Box_Config{});
    std::string out = box.Receive("bL", Time{});
    out += box.Receive("00", Time{});
    out += box.Receive("3A", Time{});
    EXPECT_EQ(out, "bL003A");
    out = box.Tick(Time{2s});
    const auto frames = Frames(out);
    ASSERT_EQ(frames.size(), 40u);
    EXPECT_EQ(frames.size() * (7 + 58), out.size());
    for (const auto& f : frames) {
        EXPECT_EQ(f.substr(f.size() - 2), "DS");
        EXPECT_EQ(static_cast<std::uint8_t>(f[2]), 58);
        EXPECT_TRUE(Sum_Is_Right(f));
    }
    box.Receive(" ", Time{2s});
    EXPECT_EQ(box.Tick(Time{5s}), "");
}

TEST(BinaryStream, NoMarkerInsideTheDataOverAWholeDrive) {
    for (long row = 0; row < 45 * 20; ++row) {
        const std::string data = Frame_Data(Engine_At(row), 58);
        EXPECT_EQ(data.find("PS"), std::string::npos) << row;
        EXPECT_EQ(data.find("DS"), std::string::npos) << row;
    }
}

TEST(Engine, ADriveThroughTheGearsWithBoostAndFuelCut) {
    std::set<int> gears;
    double top_rpm = 0, top_map = 0, rich = 9;
    bool fuel_cut = false;
    std::uint32_t last_counter = 0;
    for (long row = 0; row < 45 * 20; ++row) {
        const Engine_Sample s = Engine_At(row);
        gears.insert(s.gear);
        top_rpm = std::max(top_rpm, s.rpm);
        top_map = std::max(top_map, s.map_bar);
        if (s.throttle > 50) rich = std::min(rich, s.lambda);
        fuel_cut |= s.fuel_ms == 0 && s.rpm > 1500;
        EXPECT_GE(s.rpm, 850);
        EXPECT_GE(s.coolant, 80);
        if (row > 0) {
            EXPECT_EQ(s.engine_on, last_counter + 1);
        }
        last_counter = s.engine_on;
        // A status byte from 10 to 15 would be one hex letter short in the program's row.
        for (std::uint8_t b : s.status)
            EXPECT_FALSE(b >= 10 && b <= 15) << row;
    }
    EXPECT_EQ(gears, (std::set<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_GT(top_rpm, 6400);
    EXPECT_GT(top_map, 1.7);
    EXPECT_LT(rich, 0.9);
    EXPECT_TRUE(fuel_cut);
}

TEST(StreamFaults, PauseLosesTwoSecondsAndBadSumSpoilsOneFrame) {
    Box_Faults faults;
    Line_Fault_Plan line;
    std::string error;
    ASSERT_TRUE(Add_Fault("pause@10", faults, line, error));
    ASSERT_TRUE(Add_Fault("badsum@3", faults, line, error));
    EXPECT_FALSE(Add_Fault("pause", faults, line, error));

    Box box(Box_Config{}, faults);
    box.Receive("bL003A", Time{});
    EXPECT_EQ(Frames(box.Tick(Time{500ms})).size(), 10u);
    EXPECT_EQ(box.Tick(Time{2500ms}), ""); // the pause
    const auto after = Frames(box.Tick(Time{3500ms}));
    EXPECT_EQ(after.size(), 20u);

    Box spoilt(Box_Config{}, faults);
    spoilt.Receive("bL003A", Time{});
    const auto frames = Frames(spoilt.Tick(Time{300ms}));
    ASSERT_EQ(frames.size(), 6u);
    for (std::size_t i = 0; i < frames.size(); ++i)
        EXPECT_EQ(Sum_Is_Right(frames[i]), i != 3) << i;
}

// A test holds the throttle where it wants it, counted from the start of each stream.
TEST(ScriptedThrottle, TheThrottleInputReadsTheScriptFromTheStartOfTheStream) {
    Box_Config config;
    std::string error;
    ASSERT_TRUE(Parse_Throttle_Script("5:230,0:30", config.throttle, error)) << error;
    EXPECT_EQ(Scripted_Throttle(config.throttle, 4.95), 30);
    EXPECT_EQ(Scripted_Throttle(config.throttle, 5.0), 230);
    Box box(config);
    const auto Throttles = [](const std::string& out) {
        std::set<std::string> seen;
        for (const auto& row : Lines(out))
            if (row.rfind('$', 0) == 0) seen.insert(row.substr(7 + 11 * 4, 3));
        return seen;
    };
    box.Receive("La", Time{10s});
    EXPECT_EQ(Throttles(box.Tick(Time{14s})), std::set<std::string>{"030"});
    EXPECT_EQ(Throttles(box.Tick(Time{16s})), (std::set<std::string>{"030", "230"}));
    box.Receive(" ", Time{16s});
    box.Tick(Time{17s});
    box.Receive("bL003A", Time{20s}); // a new stream starts the script again
    const auto frames = Frames(box.Tick(Time{21s}));
    ASSERT_FALSE(frames.empty());
    for (const auto& f : frames)
        EXPECT_EQ(static_cast<std::uint8_t>(f[3 + 13]), 30);

    for (const char* bad : {"", "5", "1:256", "-1:3", "x:3", "1:30,"})
        EXPECT_FALSE(Parse_Throttle_Script(bad, config.throttle, error)) << bad;
}

} // namespace
} // namespace boxsim
