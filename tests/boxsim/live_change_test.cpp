// The box while a tuner changes settings with the engine running: the stream stops at any
// character and starts again where the engine is, writes go through in between, and the
// cell adjustment finds the cell the engine runs in.

#include "box.h"
#include "faults.h"

#include <gtest/gtest.h>

#include <string>

namespace boxsim {
namespace {

using namespace std::chrono_literals;

// A 4 x 3 fuel map at 256: RPM points 1000, 2000, 3000, 4000; load points (MAP raw) 50, 100,
// 150; cells numbered 10, 11, ... row by row. The ignition map at 653 is 2 x 2, 2000 and
// 4000 rpm by raw 100 and 200.
Image Map_Image() {
    Image m{};
    m[Main_Load_Byte] = 3; // MAP, the third input
    const int cols = 4, rows = 3;
    m[256] = cols;
    for (int c = 1; c <= cols; ++c)
        m[256 + c] = 16;
    m[256 + cols + 1] = rows;
    for (int r = 1; r <= rows; ++r)
        m[256 + cols + 1 + r] = 50;
    for (int k = 0; k < cols * rows; ++k)
        m[256 + cols + rows + 2 + k] = static_cast<std::uint8_t>(10 + k);
    m[653] = 2;
    m[654] = m[655] = 32;
    m[656] = 2;
    m[657] = m[658] = 100;
    for (int k = 0; k < 4; ++k)
        m[659 + k] = static_cast<std::uint8_t>(100 + k);
    return m;
}

int Fuel_Cell(int row, int col) {
    return 256 + 4 + 3 + 2 + (row - 1) * 4 + (col - 1);
}

Engine_Sample At(double rpm, int map_raw) {
    Engine_Sample s;
    s.rpm = rpm;
    s.columns[14] = static_cast<std::uint8_t>(map_raw);
    return s;
}

TEST(CellAdjust, OneCellNearABreakpointTwoWhenStraddlingNoneBetween) {
    const Image m = Map_Image();
    Cell_Adjustment a = Adjust_Running_Cell('+', At(2000, 100), true, m);
    ASSERT_EQ(a.writes.size(), 1u) << a.answer;
    EXPECT_EQ(a.writes[0].first, Fuel_Cell(2, 2));
    EXPECT_EQ(a.answer, "+EEadr:010E EEdata: 10\r\n");
    // The program reads the value 13 characters after the address: that layout must hold.
    const std::size_t p = a.answer.find("EEadr") + 6;
    EXPECT_EQ(a.answer.substr(p, 4), "010E");
    EXPECT_EQ(a.answer.substr(p + 13, 2), "10");
    EXPECT_GE(a.answer.size(), 24u);

    // Half way between 2000 and 3000 rpm, on a load point: the two cells either side.
    a = Adjust_Running_Cell('-', At(2500, 100), true, m);
    ASSERT_EQ(a.writes.size(), 2u) << a.answer;
    EXPECT_EQ(a.writes[0].first, Fuel_Cell(2, 2));
    EXPECT_EQ(a.writes[1].first, Fuel_Cell(2, 3));
    EXPECT_EQ(a.writes[1].second, m[static_cast<std::size_t>(Fuel_Cell(2, 3))] - 1);
    EXPECT_EQ(a.answer.find("EEadr", 2), 23u) << "the echo, an entry, a blank, the next entry";

    a = Adjust_Running_Cell('+', At(2500, 125), true, m);
    EXPECT_TRUE(a.writes.empty());
    EXPECT_EQ(a.answer, "+#1:NOT CLOSE\r\n");
    EXPECT_LT(a.answer.size(), 24u) << "a short answer, so the program takes it as no update";

    // Above the last point and below the first, the outer cells; ignition by its own keys.
    a = Adjust_Running_Cell('+', At(9000, 20), true, m);
    ASSERT_EQ(a.writes.size(), 1u);
    EXPECT_EQ(a.writes[0].first, Fuel_Cell(1, 4));
    a = Adjust_Running_Cell('<', At(4100, 200), true, m);
    ASSERT_EQ(a.writes.size(), 1u);
    EXPECT_EQ(a.writes[0], std::make_pair(662, std::uint8_t{102}));
}

TEST(CellAdjust, StoppedEngineAndAFirmwareOffItsMap) {
    const Image m = Map_Image();
    Cell_Adjustment a = Adjust_Running_Cell('+', At(2000, 100), false, m);
    EXPECT_TRUE(a.writes.empty());
    EXPECT_NE(a.answer.find("NO RPM"), std::string::npos);
    EXPECT_GE(a.answer.size(), 24u) << "complete, so the program reads the words";
    a = Adjust_Running_Cell('+', At(120, 100), true, m);
    EXPECT_NE(a.answer.find("NO RPM"), std::string::npos) << "a stalled engine has no cell";

    a = Adjust_Running_Cell('+', At(2000, 100), true, m, 900);
    ASSERT_EQ(a.writes.size(), 1u);
    EXPECT_EQ(a.answer.substr(0, 11), "+EEadr:0384");
    EXPECT_EQ(a.writes[0], std::make_pair(900, std::uint8_t{1}));

    // Equal breakpoints are no division by zero: the walk stops at the first point above.
    Image flat = m;
    flat[258] = 0; // the second RPM point repeats the first
    a = Adjust_Running_Cell('+', At(1500, 100), true, flat);
    EXPECT_FALSE(a.writes.empty()) << a.answer;
}

TEST(LiveBox, AnyCharacterStopsTheStreamWritesGoThroughAndTheEngineRunsOn) {
    Box_Config config;
    config.image = Map_Image();
    config.engine_running = true;
    Box box(config);
    box.Receive("La", Time{});
    const std::string before = box.Tick(Time{1s});
    ASSERT_FALSE(before.empty());
    // An "x" is no command the box knows, yet it ends the stream: nothing more comes.
    EXPECT_EQ(box.Receive("x", Time{1s}), "");
    EXPECT_EQ(box.Tick(Time{2s}), "");
    EXPECT_EQ(box.Streaming(), Log_Stream::Mode::Off);

    // Byte-wise write and commit, and a binary frame, between the stop and the restart.
    EXPECT_EQ(box.Receive("b", Time{2s}), "b");
    EXPECT_EQ(box.Receive("w", Time{2s}), "w$");
    EXPECT_EQ(box.Receive("0120", Time{2s}), "0120");
    EXPECT_EQ(box.Receive("7", Time{2s}), "7");
    EXPECT_EQ(box.Receive("F", Time{2s}), "Fw");
    EXPECT_EQ(box.Receive("$", Time{2s}), "$\r\n>");
    EXPECT_EQ(box.Receive("ue", Time{2s}), "ue*");
    EXPECT_EQ(box.Committed()[0x120], 0x7F);
    EXPECT_EQ(box.Receive("bW", Time{2s}).size(), 7u);
    std::string frame{'\x01', '\x30', '\x00', '\x01'};
    const std::uint8_t value = 0x42;
    const std::uint16_t sum = Checksum(&value, 1);
    frame += static_cast<char>(sum >> 8);
    frame += static_cast<char>(sum & 0xFF);
    frame += static_cast<char>(value);
    EXPECT_EQ(box.Receive(frame, Time{2s}), "&");
    EXPECT_EQ(box.Committed()[0x130], 0x42);

    // The cell adjustment while the stream stands, then the stream again.
    const std::string adjusted = box.Receive("+", Time{2s});
    EXPECT_EQ(adjusted.substr(0, 6), "+EEadr") << adjusted;
    const std::string again = box.Receive("La", Time{3s});
    EXPECT_NE(again.find("#RPM"), std::string::npos);
    const std::string rows = box.Tick(Time{3s} + 60ms);
    ASSERT_FALSE(rows.empty());
    // Two seconds stood still: the engine's own counter (column 30) went on by about 40 rows.
    const auto counter = [](const std::string& text, bool last) {
        const std::size_t at = last ? text.rfind("\r\n$", text.size() - 3) : text.find('$');
        const std::size_t row = last ? at + 2 : at;
        return std::stoi(text.substr(row + 4 * 30 - 1, 3));
    };
    const int jump = (counter(rows, false) - counter(before, true) + 256) % 256;
    EXPECT_GE(jump, 38);
    EXPECT_LE(jump, 42);
}

TEST(LiveBox, TheWrongAddressFaultIsNamedOnTheCommandLine) {
    Box_Faults faults;
    Line_Fault_Plan line;
    std::string error;
    ASSERT_TRUE(Add_Fault("celladdr@900", faults, line, error)) << error;
    EXPECT_EQ(faults.adjust_address, 900);
    EXPECT_FALSE(Add_Fault("celladdr@1024", faults, line, error));
    EXPECT_FALSE(Add_Fault("celladdr", faults, line, error));
}

} // namespace
} // namespace boxsim
