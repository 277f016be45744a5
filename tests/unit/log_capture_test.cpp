// Live capture as a state machine on a simulated clock: the box's side is the simulator's
// protocol code, fed through a fake line; the receive event and the timers run as the log
// window would run them. No real time passes.

#include "box.h"
#include "core/atomic_file.h"
#include "logging/log_capture.h"
#include "logging/log_file.h"
#include "logging/log_settings.h"
#include "support/log_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace quorlen {
namespace {

using test::Read_File;

// The rows of a log text: lines that begin with "$", with the box's row counter (column 30).
std::vector<int> Counters(const std::string& text) {
    std::vector<int> counters;
    std::size_t at = 0;
    while ((at = text.find("\n$", at)) != std::string::npos) {
        ++at;
        const std::size_t end = text.find('\r', at);
        const std::string row = text.substr(at, end - at);
        // Whole rows only: 171 characters, or one short for a status byte of one letter.
        if (row.size() >= 170 && row.size() <= 171 && row.find('\'') == std::string::npos)
            counters.push_back(std::stoi(row.substr(4 * 30 - 1, 3)));
    }
    return counters;
}

// Counts the steps where the counter does not go up by one.
int Gaps(const std::vector<int>& counters) {
    int gaps = 0;
    for (std::size_t i = 1; i < counters.size(); ++i)
        if ((counters[i] - counters[i - 1] + 256) % 256 != 1) ++gaps;
    return gaps;
}

class LogCapture : public test::Log_Fixture, public ::testing::Test {
protected:
    LogCapture() {
        Load_Defaults();
        hooks.Read_Box_Settings = [this] {
            std::copy(box->Memory().begin(), box->Memory().end(), image.CardByte.begin());
            texts.rs232_text = "Read finished";
        };
        state->Log_Dir = dir.Path().string();
        Use_Box({});
    }

    void Use_Box(boxsim::Box_Faults faults) {
        boxsim::Box_Config config;
        for (std::size_t i = 0; i < config.image.size(); ++i)
            config.image[i] = static_cast<std::uint8_t>(i * 13 + 1);
        config.image[255] = 200;
        box = std::make_unique<boxsim::Box>(config, faults);
    }

    boxsim::Time Box_Time() const {
        return std::chrono::duration_cast<boxsim::Time>(std::chrono::duration<double>(clock - 1000.0));
    }

    // The wire: what the program wrote reaches the box, what the box sends waits at the port.
    void Pump() {
        for (; sent < line.written.size(); ++sent) {
            const std::string answer = box->Receive(line.written[sent], Box_Time());
            if (!mute && line.open) line.incoming += answer;
        }
        const std::string out = box->Tick(Box_Time());
        if (!mute && line.open) line.incoming += out;
    }

    void Start() {
        ctx = std::make_unique<Log_Context>(Ctx());
        Start_Logging(*ctx);
        Pump();
        timers = std::make_unique<Log_Timers>(*ctx);
    }

    void Run(double seconds) {
        timers->Run_Until(clock + seconds, [this](double step) {
            clock += step;
            Pump();
        });
    }

    void Stop() { Start_Logging(*ctx); }

    std::string Saved(const std::string& name = "QXLog-_2024-05-31_14-03-59.qxl") {
        return Read_File(dir.File(name));
    }

    std::unique_ptr<boxsim::Box> box;
    std::unique_ptr<Log_Context> ctx;
    std::unique_ptr<Log_Timers> timers;
    std::size_t sent = 0;
    bool mute = false;
};

TEST_F(LogCapture, TextLogKeepsEveryRowAndTheBoxSettings) {
    Start();
    EXPECT_EQ(line.written.front(), "La");
    EXPECT_TRUE(flags.Logging_Active);
    EXPECT_EQ(state->form.cmd_Open_Com_Caption, "STOP");
    Run(5.0);
    EXPECT_GE(state->capture.Log_Row_Count, 94);
    EXPECT_TRUE(state->form.txt_Logging_alert_Visible);
    Stop();

    EXPECT_EQ(line.written.back(), " ");
    EXPECT_FALSE(line.open);
    EXPECT_FALSE(flags.Logging_Active);
    const std::string file = Saved();
    const auto counters = Counters(file);
    EXPECT_NEAR(static_cast<double>(counters.size()), 100, 3);
    EXPECT_EQ(Gaps(counters), 0);
    EXPECT_EQ(state->Last_Row, static_cast<int>(counters.size()));
    // The settings section carries the box's image, one decimal a line.
    EXPECT_NE(file.find("[log_dataset]\r\n1\r\n14\r\n27\r\n"), std::string::npos);
    // Box messages came along in the data, and the file reads back as it was.
    EXPECT_NE(file.find("#RPM"), std::string::npos);
    const std::string path = dir.File("QXLog-_2024-05-31_14-03-59.qxl");
    ASSERT_TRUE(Open_File(*ctx, path));
    EXPECT_EQ(state->Last_Row, static_cast<int>(counters.size()));
    Save_File(*ctx, path);
    EXPECT_EQ(Read_File(path), file);

    // The backup holds every row too, behind its own closing line.
    const std::string backup = Read_File(dir.File(Log_Backup_File_Name));
    EXPECT_EQ(backup.rfind("[log_data] 'Backup of last made logging 2024-05-31 14:03:59\r\n", 0), 0u);
    EXPECT_NE(backup.find("\r\n[end_log_data]\r\n[log_settings]"), std::string::npos);
    const auto backup_counters = Counters(backup);
    ASSERT_GE(backup_counters.size(), counters.size());
    EXPECT_LE(backup_counters.size(), counters.size() + 1);
    EXPECT_TRUE(std::equal(counters.begin(), counters.end(), backup_counters.begin()));
}

TEST_F(LogCapture, BinaryLogConvertsEveryFrame) {
    state->form.Binary_log_opt = 1;
    Start();
    EXPECT_EQ(line.All_Written(), "bL003A");
    Run(5.0);
    Stop();
    const std::string file = Saved();
    const auto counters = Counters(file);
    EXPECT_NEAR(static_cast<double>(counters.size()), 100, 3);
    EXPECT_EQ(Gaps(counters), 0);
    EXPECT_EQ(state->Log_Row_Columns, 42);
    EXPECT_EQ(state->form.txt_Log_Free_Text.find("Err"), std::string::npos);
    EXPECT_NE(state->form.Engine_On_Text.find("Engine on for "), std::string::npos);
    // Binary data stay out of the backup: its header line and closing sections only.
    EXPECT_TRUE(Counters(Read_File(dir.File(Log_Backup_File_Name))).empty());
}

TEST_F(LogCapture, FramesThatBreakTheRulesAreNotedNotDropped) {
    state->form.Binary_log_opt = 1;
    Start();
    auto frame = [](int row, bool bad_sum = false) {
        return boxsim::Frame(boxsim::Frame_Data(boxsim::Engine_At(row), 58), bad_sum);
    };
    state->capture.Log_Stream_Buffer = frame(1) + frame(2, true);
    QX_Fast_Log_Row_Data_Read(*ctx);
    const std::string& notes = state->form.txt_Log_Free_Text;
    EXPECT_NE(notes.find("\r\nErr check sum "), std::string::npos);
    EXPECT_EQ(notes.find("Err data length"), std::string::npos);
    EXPECT_EQ(state->capture.Log_Row_Count, 2);

    // "PS" inside the data ends the frame there: the pieces are rows of the wrong length,
    // and the frame count of the chunk runs out before its last frame.
    std::string with_marker = boxsim::Frame_Data(boxsim::Engine_At(3), 58);
    with_marker[20] = 'P';
    with_marker[21] = 'S';
    state->capture.Log_Stream_Buffer = boxsim::Frame(with_marker) + frame(4) + frame(5);
    QX_Fast_Log_Row_Data_Read(*ctx);
    EXPECT_NE(notes.find("\r\nErr data length 58 16"), std::string::npos);
    EXPECT_EQ(state->capture.Log_Row_Count, 5);

    // A chunk of a single frame has no next start, and is lost.
    state->capture.Log_Stream_Buffer = frame(6);
    QX_Fast_Log_Row_Data_Read(*ctx);
    EXPECT_EQ(dialogs.informed.back(), "No complete data in this chunk");
    EXPECT_EQ(dialogs.icons.back(), Icon::Stop);
    EXPECT_EQ(state->capture.Log_Row_Count, 5);

    // A status byte from 10 to 15 comes out as one letter.
    std::string data = boxsim::Frame_Data(boxsim::Engine_At(7), 58);
    data[46] = '\x0A';
    const std::string f = boxsim::Frame(data);
    const std::string row = Convert_to_Slowdata(*ctx, std::string_view(f).substr(2, f.size() - 2));
    EXPECT_NE(row.find(" hA h"), std::string::npos);
    EXPECT_EQ(row.size(), 170u);
}

TEST_F(LogCapture, ADelayedStartIsRetriedAndNoted) {
    mute = true;
    Start();
    Run(1.2);
    EXPECT_TRUE(state->capture.Log_Delayed_Start);
    EXPECT_TRUE(state->form.txt_NoConnection_alert_Visible);
    EXPECT_GE(std::count(line.written.begin(), line.written.end(), "La"), 3);
    mute = false;
    Run(2.0);
    EXPECT_FALSE(state->form.txt_NoConnection_alert_Visible);
    Stop();
    EXPECT_NE(Saved().find("[log_data]\r\na 'Delayed start error occured\r\n"), std::string::npos);
    EXPECT_NE(Debug_Text().find(
                  "There were a delay before logging started. Current box settings were therefore not read."),
              std::string::npos);
}

TEST_F(LogCapture, APauseOfTheStreamIsNotedAndTheLogGoesOn) {
    boxsim::Box_Faults faults;
    faults.pause_at_row = 40;
    Use_Box(faults);
    Start();
    Run(8.0);
    Stop();
    EXPECT_TRUE(state->capture.Log_Had_Interruption);
    const std::string file = Saved();
    const auto mark = file.find(" 'Interuption of log\r\n");
    ASSERT_NE(mark, std::string::npos);
    // Rows on both sides of the pause; the one the mark stands behind is not read back.
    const auto before = Counters(file.substr(0, mark));
    const auto after = Counters(file.substr(mark));
    EXPECT_GE(before.size(), 38u);
    EXPECT_GE(after.size(), 60u);
    EXPECT_EQ(Gaps(after), 0);
    EXPECT_GE(state->Last_Row, 90);
    EXPECT_NE(Debug_Text().find("There were some interruptions during the log"), std::string::npos);
    // The backup has every row that came.
    const auto backup = Counters(Read_File(dir.File(Log_Backup_File_Name)));
    EXPECT_GE(backup.size(), before.size() + after.size());
}

TEST_F(LogCapture, AGoneLineIsRetriedAndTheStopStillSaves) {
    Start();
    Run(2.0);
    line.open = false; // the cable is out
    line.refuse_open = true;
    Run(2.0);
    EXPECT_TRUE(state->capture.Log_Interrupted);
    EXPECT_TRUE(state->capture.Logging_Running);
    Stop();
    EXPECT_FALSE(state->capture.Logging_Running);
    EXPECT_NEAR(static_cast<double>(Counters(Saved()).size()), 40, 3);
}

TEST_F(LogCapture, ALaggingComputerStopsTheLogWithoutTheBlank) {
    Start();
    Run(1.0);
    line.incoming += std::string(3100, '0');
    Timer1_Timer(*ctx);
    EXPECT_FALSE(state->capture.Logging_Running);
    EXPECT_TRUE(state->capture.Log_Stopped_By_Overload);
    EXPECT_NE(line.written.back(), " ");
    EXPECT_EQ(dialogs.informed.back(), Overload_Text);
    EXPECT_EQ(dialogs.icons.back(), Icon::Stop);
    EXPECT_NE(Debug_Text().find(Overload_Text), std::string::npos);
}

TEST_F(LogCapture, AnIntervalOfNothingStopsTimer1) {
    state->setup.txt_Show_Log_Interval = "0";
    Start();
    EXPECT_FALSE(state->capture.Timer1_Enabled);
    state->setup.txt_Show_Log_Interval = "0,2";
    state->setup.check_LogToFileOnly = 1;
    Stop();
    Start();
    EXPECT_EQ(state->capture.Timer1_Interval, 40);
    EXPECT_TRUE(state->form.label_NoGraph_Visible);
}

TEST_F(LogCapture, NoiseOnTheLineNeverCostsTheRowsAfterIt) {
    Start();
    // End-of-text bytes arrive between rows and inside them, as a bad cable brings them.
    int bursts = 0;
    timers->Run_Until(clock + 3.0, [&](double step) {
        clock += step;
        Pump();
        if (line.incoming.size() > 40 && bursts < 6) {
            line.incoming.insert(line.incoming.size() / (bursts % 2 + 1), bursts % 2 ? "\x03" : "\x1A");
            ++bursts;
        }
    });
    Stop();
    const std::string file = Saved();
    EXPECT_EQ(file.find_first_of("\x1A\x03"), std::string::npos);
    const std::size_t rows = Counters(file).size();
    EXPECT_GE(rows, 55u);
    EXPECT_EQ(Read_File(state->capture.backup_path).find_first_of("\x1A\x03"), std::string::npos);

    // Opened again, nothing needs repair and every row is there.
    auto c = Ctx();
    ASSERT_TRUE(Open_File(c, dir.File("QXLog-_2024-05-31_14-03-59.qxl")));
    EXPECT_FALSE(state->Repaired);
    EXPECT_EQ(static_cast<std::size_t>(state->Last_Row), rows);
}

class LogSplit : public LogCapture, public ::testing::WithParamInterface<int> {};

TEST_P(LogSplit, Row6901StartsANewFileAndNoRowIsLost) {
    state->form.Binary_log_opt = GetParam();
    state->setup.check_SettingsInLogg = 0;
    Start();
    Run(350.0);
    Stop();
    const std::string first = Saved("QXLog-_2024-05-31_14-03-59_001.qxl");
    const std::string second = Saved("QXLog-_2024-05-31_14-03-59_002.qxl");
    const auto a = Counters(first), b = Counters(second);
    EXPECT_GE(a.size(), 6901u);
    EXPECT_LT(a.size(), 6910u);
    EXPECT_EQ(Gaps(a), 0);
    EXPECT_EQ(Gaps(b), 0);
    ASSERT_FALSE(b.empty());
    EXPECT_EQ((b.front() - a.back() + 256) % 256, 1);
    EXPECT_NEAR(static_cast<double>(a.size() + b.size()), 7000, 3);
    EXPECT_FALSE(std::filesystem::exists(dir.File("QXLog-_2024-05-31_14-03-59_003.qxl")));

    // The first part's length is its line count less the tag, start and closing lines.
    const auto data = first.find("[log_data]");
    const auto end = first.find("[end log_data]\r\n", data) + 16;
    const long lines =
        std::count(first.begin() + static_cast<long>(data), first.begin() + static_cast<long>(end), '\n');
    EXPECT_NE(first.find("Log_Zoom=1\t" + std::to_string(lines - 3) + "\t"), std::string::npos);
    EXPECT_NE(first.find("Log_Length=" + Log_Length_Text(static_cast<int>(lines - 3)) + "\t"),
              std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(TextAndBinary, LogSplit, ::testing::Values(0, 1));

} // namespace
} // namespace quorlen
