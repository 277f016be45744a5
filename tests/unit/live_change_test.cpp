// Changes while the log stream runs, against the simulator's own protocol code on a paced,
// simulated wire: the stream stops, the change reaches the box, the stream comes back and the
// log has no cut rows; and the box's answers to a cell adjustment, one by one.

#include "link/error_codes.h"
#include "logging/log_capture.h"
#include "logging/log_live.h"
#include "support/box_line.h"
#include "support/log_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace quorlen {
namespace {

using test::Read_File;

// Dataset 200 with a small fuel map whose first cell covers the simulator's idle (900 rpm,
// MAP raw 28): RPM points 1000..4000, MAP points 50, 100, 150.
boxsim::Image Box_Image() {
    boxsim::Image m{};
    m[255] = 200;
    m[174] = 3;
    m[256] = 4;
    for (int c = 1; c <= 4; ++c)
        m[256 + c] = 16;
    m[261] = 3;
    for (int r = 1; r <= 3; ++r)
        m[261 + r] = 50;
    for (int k = 0; k < 12; ++k)
        m[265 + k] = static_cast<std::uint8_t>(40 + k);
    return m;
}

// The box's row counters of the whole rows of a log text; a row with anything joined to it
// has another length and is counted as cut.
struct Rows {
    std::vector<int> counters;
    int cut = 0;
};
Rows Rows_Of(const std::string& text) {
    Rows rows;
    for (std::size_t at = 0; (at = text.find("\n$", at)) != std::string::npos;) {
        ++at;
        const std::string row = text.substr(at, text.find('\r', at) - at);
        if (row.size() == 170 || row.size() == 171)
            rows.counters.push_back(std::stoi(row.substr(4 * 30 - 1, 3)));
        else
            ++rows.cut;
    }
    return rows;
}

int Largest_Step(const std::vector<int>& counters) {
    int largest = 0;
    for (std::size_t i = 1; i < counters.size(); ++i)
        largest = std::max(largest, (counters[i] - counters[i - 1] + 256) % 256);
    return largest;
}

class LiveChange : public test::Log_Fixture, public ::testing::Test {
protected:
    LiveChange() {
        Load_Defaults();
        state->Log_Dir = dir.Path().string();
        hooks.Read_Box_Settings = [this] {
            std::copy(box->Memory().begin(), box->Memory().end(), image.CardByte.begin());
            texts.rs232_text = "Read finished";
        };
        boxsim::Box_Config config;
        config.image = Box_Image();
        config.engine_running = true;
        Use_Box(config);
    }

    void Use_Box(const boxsim::Box_Config& config) {
        box = std::make_unique<boxsim::Box>(config);
        wire = std::make_unique<test::Box_Line>(*box, clock);
        Link_Hooks h;
        h.Now = [this] { return clock; };
        link = std::make_unique<Link_Context>(
            Link_Context{program, texts, flags, link_state, debug, *wire, no_auto_start, h});
        settings = std::make_unique<Settings_Context>(Settings_Context{*link, image, rw, files, dialogs, {}});
        settings->hooks.save_to_undolist = [this] { ++snapshots; };
    }

    void Start(bool binary = false) {
        state->form.Binary_log_opt = binary ? 1 : 0;
        ctx = std::make_unique<Log_Context>(Log_Context{*state, image, program, texts, flags, debug, dialogs,
                                                        wire.get(), "/dev/ttyBOX", hooks});
        Start_Logging(*ctx);
        timers = std::make_unique<Log_Timers>(*ctx);
    }

    void Run(double seconds) {
        timers->Run_Until(clock + seconds, [this](double step) {
            clock += step;
            wire->Pump();
        });
    }

    Live_Context Live() {
        Live_Context c = Live_Context_Of(*ctx, *settings, live);
        c.hooks.Status = [this](const std::string& text) { said.push_back(text); };
        return c;
    }

    void Mark(int address, std::uint8_t value) {
        image.CardByte[address] = value;
        image.ChangedByte[address] = Changed_Mark;
    }

    std::string Log_Text() {
        Start_Logging(*ctx);
        return state->Log_Data_Text;
    }

    std::unique_ptr<boxsim::Box> box;
    std::unique_ptr<test::Box_Line> wire;
    Link_State link_state;
    Rw_State rw;
    File_State files;
    const bool no_auto_start[2] = {false, false};
    std::unique_ptr<Link_Context> link;
    std::unique_ptr<Settings_Context> settings;
    std::unique_ptr<Log_Context> ctx;
    std::unique_ptr<Log_Timers> timers;
    Live_State live;
    std::vector<std::string> said;
    int snapshots = 0;
};

TEST_F(LiveChange, AByteWrittenWhileTheTextLogRunsReachesTheBoxAndTheLogGoesOn) {
    Start();
    Run(1.006); // into the middle of a row on the wire
    Mark(300, 77);
    Mark(301, 78);
    const std::size_t before = wire->written.size();
    Live_Context c = Live();
    Write_while_logging(c);

    EXPECT_EQ(box->Committed()[300], 77);
    EXPECT_EQ(box->Committed()[301], 78);
    ASSERT_EQ(said.size(), 3u);
    EXPECT_EQ(said[0], "< Updateing ... >");
    EXPECT_EQ(said[1].rfind(" FWrite finished M ", 0), 0u) << said[1];
    EXPECT_EQ(said[2], "< Settings updated >");
    // The blank first, the start string last, and the marks gone.
    EXPECT_EQ(wire->written[before], " ");
    EXPECT_EQ(wire->written.back(), "La");
    EXPECT_TRUE(
        std::all_of(image.ChangedByte.begin(), image.ChangedByte.end(), [](auto b) { return b == 0; }));
    EXPECT_TRUE(flags.Logging_Active);
    EXPECT_FALSE(flags.Live_Write_Busy);
    EXPECT_TRUE(state->capture.timer_LogAlert_Enabled);
    EXPECT_FALSE(live.In_Progress);
    EXPECT_LT(live.Last_Window_Seconds, 0.030);

    Run(1.0);
    const Rows rows = Rows_Of(Log_Text());
    EXPECT_EQ(rows.cut, 0) << "the row on the wire at the stop is kept whole, and nothing joins the restart";
    EXPECT_GE(rows.counters.size(), 38u);
    EXPECT_LE(Largest_Step(rows.counters), 2) << "at most the row due while the stream stood still";
    EXPECT_FALSE(state->capture.Log_Had_Interruption);
}

// The blank can meet a row the box has just begun, and behind a USB adapter's latency none
// of it has arrived when the write begins: the row comes in front of the write's first
// answer. Around row 200 the box also sends a "#" message line first. Every write gets
// through, and the rows that came in front are the log's, whole and in their place; a write
// between rows, with nothing in front, goes as well.
TEST_F(LiveChange, ARowBegunAsTheBlankComesIsKeptAndTheWriteStillGoes) {
    wire->latency = 0.002;
    Start();
    Run(9.75);
    const auto next_row_at = [this] {
        return 1000.0 + std::chrono::duration<double>(box->Next_Deadline()).count();
    };
    for (int k = 0; k < 8; ++k) {
        // Just after the box began a row, before its first character is on the wire; every
        // third write lands in the quiet between rows instead.
        const double at = next_row_at() + (k % 3 == 2 ? -0.020 : 1e-7);
        Run(at - clock);
        const std::vector<int> before = Rows_Of(state->Log_Data_Text).counters;
        ASSERT_FALSE(before.empty());
        Mark(300 + k, static_cast<std::uint8_t>(90 + k));
        said.clear();
        Live_Context c = Live();
        Write_while_logging(c);
        EXPECT_EQ(box->Committed()[300 + k], 90 + k) << "write " << k;
        EXPECT_EQ(said.back(), "< Settings updated >") << "write " << k;
        Run(0.3);
        const std::vector<int> after = Rows_Of(state->Log_Data_Text).counters;
        ASSERT_GT(after.size(), before.size());
        if (k % 3 != 2) {
            EXPECT_EQ(after[before.size()], (before.back() + 1) % 256)
                << "write " << k << ": the row that met the blank is the next one in the log";
        }
    }
    Run(0.5);
    const std::string text = Log_Text();
    const Rows rows = Rows_Of(text);
    EXPECT_EQ(rows.cut, 0);
    EXPECT_LE(Largest_Step(rows.counters), 2);
    EXPECT_NE(text.find("#Lambda heater"), std::string::npos) << "the box's message is kept like a row";
    EXPECT_FALSE(state->capture.Log_Had_Interruption);
}

TEST_F(LiveChange, TheBinaryFrameGoesWhileTheBinaryLogRuns) {
    Start(true);
    Run(1.0);
    Mark(420, 9);
    Live_Context c = Live();
    Write_Fast_while_logging(c);
    EXPECT_EQ(box->Committed()[420], 9);
    EXPECT_EQ(said, (std::vector<std::string>{"< Updating ... >", "< Settings updated >"}));
    EXPECT_EQ(wire->written.back(), "bL003A");
    EXPECT_EQ(state->capture.port.RThreshold, 130)
        << "the receive event is on again for the restarted stream";
    EXPECT_FALSE(flags.Live_Write_Busy);
    const int rows_before = state->capture.Log_Row_Count;
    Run(1.0);
    EXPECT_GE(state->capture.Log_Row_Count - rows_before, 18);
    EXPECT_EQ(state->form.txt_Log_Free_Text.find("Err"), std::string::npos) << state->form.txt_Log_Free_Text;
}

TEST_F(LiveChange, TheBoxMovesTheRunningCellAndTheImageFollows) {
    Start();
    Run(1.0);
    const boxsim::Image before = box->Memory();
    live.Cell_Adjust_Command = Adjust_Fuel_Up;
    Live_Context c = Live();
    Write_Fast_while_logging(c);

    EXPECT_EQ(box->Memory()[265], before[265] + 1) << "idle sits on the first cell";
    EXPECT_EQ(image.CardByte[265], box->Memory()[265]);
    EXPECT_EQ(said, (std::vector<std::string>{"< Updating ... >", "<Update OK>", "< Settings updated >"}));
    EXPECT_EQ(live.ErrCode_label1, "Update OK");
    EXPECT_EQ(snapshots, 1);
    EXPECT_EQ(texts.Debug_txt2, "+EEadr:0109 EEdata: 29\r\n\r\n");
    EXPECT_TRUE(live.Cell_Adjust_Command.empty()) << "a later binary write is not taken for an adjustment";
    EXPECT_TRUE(flags.Logging_Active);
}

TEST_F(LiveChange, AStoppedEngineChangesNothing) {
    boxsim::Box_Config config;
    config.image = Box_Image();
    Use_Box(config);
    Start();
    Run(1.0);
    live.Cell_Adjust_Command = Adjust_Fuel_Down;
    Live_Context c = Live();
    Write_Fast_while_logging(c);
    EXPECT_EQ(image.CardByte[265], 40);
    EXPECT_EQ(dialogs.informed, (std::vector<std::string>{"No RPM detected, so nothing was written"}));
    EXPECT_EQ(snapshots, 0);
}

TEST_F(LiveChange, APausedStreamTakesNoByteWriteButAnAdjustmentAtOnce) {
    Start();
    Run(1.0);
    // The box falls silent; the silence watch takes the stream for interrupted.
    wire->Write(" ");
    Run(1.1);
    ASSERT_TRUE(Log_Paused(*state));
    Mark(300, 1);
    const std::size_t before = wire->written.size();
    Live_Context c = Live();
    Write_while_logging(c);
    EXPECT_EQ(wire->written.size(), before) << "nothing goes out while the stream is being recovered";
    EXPECT_EQ(image.ChangedByte[300], Changed_Mark) << "the mark waits for the next write";
    EXPECT_TRUE(said.empty());

    live.Cell_Adjust_Command = Adjust_Fuel_Up;
    Write_Fast_while_logging(c);
    ASSERT_EQ(wire->written.size(), before + 1);
    EXPECT_EQ(wire->written.back(), "+") << "no blank and no restart: the silence watch restarts the stream";
    EXPECT_EQ(said, (std::vector<std::string>{"< Updating ... >", "<Update OK>", "< Settings updated >"}));
    EXPECT_EQ(state->capture.port.RThreshold, 130);
}

TEST_F(LiveChange, ClearingErrorCodesDuringALogGoesTheLiveWayUpTo1022) {
    boxsim::Box_Config config;
    config.image = Box_Image();
    config.image[1015] = 0x21;
    config.image[1022] = 0x05;
    Use_Box(config);
    Start();
    Run(0.6);
    ASSERT_EQ(image.CardByte[1015], 0x21);
    settings->hooks.Log_Paused = [this] { return Log_Paused(*state); };
    settings->hooks.Write_while_logging = [this] {
        Live_Context c = Live();
        Write_while_logging(c);
    };
    Clear_Err_Counters_cmd_Click(*settings);
    EXPECT_EQ(box->Committed()[1015], 0);
    EXPECT_EQ(box->Committed()[1022], 0) << "the fast write reaches the last counter";
    EXPECT_FALSE(image.Write_Errors_Only);
    EXPECT_EQ(said.back(), "< Settings updated >");
    EXPECT_TRUE(flags.Logging_Active);
    EXPECT_NE(wire->All_Written().find("03F3"), std::string::npos) << "one run from the first counter";
}

// --- the box's answers, one by one -------------------------------------------------------------

// A line that answers each command from the test's script at once.
class Answering_Line final : public Serial_Line {
public:
    std::string answer;
    std::string incoming;
    bool open = true;
    void Set_Port(const std::string&) override {}
    std::string Port() const override { return "/dev/ttyBOX"; }
    void Set_Settings(const std::string&) override {}
    Open_Result Open() override {
        open = true;
        return {};
    }
    void Close() override { open = false; }
    bool Is_Open() const override { return open; }
    void Clear_Input() override { incoming.clear(); }
    int Bytes_Waiting() override { return static_cast<int>(incoming.size()); }
    std::string Read_All() override {
        std::string all;
        all.swap(incoming);
        return all;
    }
    void Write(std::string_view) override { incoming += answer; }
    bool Wait_For_Input(double seconds) override {
        clock += seconds;
        return !incoming.empty();
    }
    double clock = 0;
};

class CellAnswer : public ::testing::Test {
protected:
    std::vector<std::string> Adjust(const std::string& answer) {
        box.answer = answer;
        Link_Hooks h;
        h.Now = [this] { return box.clock; };
        Link_Context l{program, texts, flags, link_state, debug, box, no_auto_start, h};
        Settings_Context s{l, image, rw, files, dialogs, {}};
        std::vector<std::string> said;
        Live_Context c{s, box, live, "La", "\r\n", {}};
        c.hooks.Status = [&said](const std::string& text) { said.push_back(text); };
        live.Cell_Adjust_Command = Adjust_Fuel_Up;
        Adjust_Current_Cell_TX(c);
        return said;
    }

    Answering_Line box;
    Program_State program;
    Form_Texts texts;
    Link_Flags flags;
    Link_State link_state;
    Debug_Log debug;
    Settings_Image image;
    Rw_State rw;
    File_State files;
    test::Scripted_Dialogs dialogs;
    Live_State live;
    const bool no_auto_start[2] = {false, false};
};

TEST_F(CellAnswer, NoRpmLeavesTheImageAsItWas) {
    image.CardByte[300] = 17;
    const auto before = image.CardByte;
    EXPECT_TRUE(Adjust("+#0:NO RPM - nothing done\r\n").empty());
    EXPECT_EQ(image.CardByte, before);
    EXPECT_EQ(dialogs.informed, (std::vector<std::string>{"No RPM detected, so nothing was written"}));
}

TEST_F(CellAnswer, TwoEntriesUpdateBothBytes) {
    const auto said = Adjust("+EEadr:012C EEdata: 2A EEadr:012D EEdata: FF\r\n");
    EXPECT_EQ(image.CardByte[300], 0x2A);
    EXPECT_EQ(image.CardByte[301], 0xFF);
    EXPECT_EQ(said, (std::vector<std::string>{"<Update OK>", "<Update OK>"}));
    EXPECT_TRUE(dialogs.informed.empty());
    EXPECT_EQ(texts.Debug_txt2, "+EEadr:012C EEdata: 2A EEadr:012D EEdata: FF\r\n\r\n");
}

TEST_F(CellAnswer, AnAddressOutsideTheMapsIsWrittenThenReported) {
    const auto said = Adjust("+EEadr:0384 EEdata: 07\r\n");
    EXPECT_EQ(image.CardByte[900], 7) << "written before the range is tested";
    EXPECT_EQ(dialogs.informed,
              (std::vector<std::string>{"Error, the system was writing outside valid memory range, :900"}));
    EXPECT_TRUE(said.empty());
    // The edges of the range: 258 and 883 are inside, 257 and 884 outside.
    Adjust("+EEadr:0102 EEdata: 01 EEadr:0373 EEdata: 01\r\n");
    EXPECT_EQ(dialogs.informed.size(), 1u);
    Adjust("+EEadr:0101 EEdata: 01 EEadr:0374 EEdata: 01\r\n");
    EXPECT_EQ(dialogs.informed.size(), 3u);
    // An address past the image is reported and writes nothing.
    const auto image_before = image.CardByte;
    Adjust("+EEadr:FFFF EEdata: 01\r\n");
    EXPECT_EQ(image.CardByte, image_before);
    EXPECT_EQ(dialogs.informed.back(), "Error, the system was writing outside valid memory range, :65535");
}

TEST_F(CellAnswer, NotCloseAndAnswersThatMakeNoSense) {
    EXPECT_EQ(Adjust("+#1:NOT CLOSE\r\n"), (std::vector<std::string>{"<Not in cell>"}));
    EXPECT_EQ(live.ErrCode_label1, "Not in cell");
    EXPECT_TRUE(dialogs.informed.empty());
    EXPECT_LT(box.clock, 0.5) << "a short answer ends at its line end, not at the time-out";

    Adjust("+garbage\r\n");
    ASSERT_EQ(dialogs.warned.size(), 1u);
    EXPECT_EQ(dialogs.warned[0], "Did not get right info about written data\r\n+garbage\r\n");
    Adjust("+twenty four characters, no entry\r\n");
    EXPECT_EQ(
        dialogs.informed.back(),
        "Did not get right info about written data. EEAdr missing.\r\n+twenty four characters, no entry\r\n");
    // Silence: the whole second, then the same word.
    box.clock = 0;
    Adjust("");
    EXPECT_NEAR(box.clock, 1.0, 0.01);
    EXPECT_EQ(dialogs.warned.size(), 2u);
}

TEST(AdjustedBytes, EntriesAreReadAtTheirFixedPlacesAndAtMostTwo) {
    const auto bytes =
        Adjusted_Bytes("+EEadr:0300 EEdata: 0A EEadr:0301 EEdata: 0B EEadr:0302 EEdata: 0C\r\n");
    ASSERT_EQ(bytes.size(), 2u);
    EXPECT_EQ(bytes[0].address, 0x300);
    EXPECT_EQ(bytes[0].value, 10);
    EXPECT_EQ(bytes[1].address, 0x301);
    EXPECT_EQ(bytes[1].value, 11);
    // Digits in either case; a field cut short reads what digits it has.
    EXPECT_EQ(Adjusted_Bytes("xEEadr:01ff EEdata: fe").front().value, 254);
    EXPECT_EQ(Adjusted_Bytes("xEEadr:01").front().address, 1);
    EXPECT_TRUE(Adjusted_Bytes("no entry").empty());
}

} // namespace
} // namespace quorlen
