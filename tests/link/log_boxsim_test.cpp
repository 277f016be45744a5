// Logs recorded from the real simulator over a pseudo-terminal, in real time: through
// quorlen-cli as a tuner would record one, and through the capture with a backup that is
// read while the log still runs. Short recordings; the minute-long one is a script.

#include "cli/commands.h"
#include "core/atomic_file.h"
#include "files/qxs_format.h"
#include "files/settings_files.h"
#include "link/qt/qt_serial_line.h"
#include "logging/log_capture.h"
#include "logging/log_export.h"
#include "logging/log_file.h"
#include "logging/log_signals.h"
#include "support/boxsim_run.h"
#include "support/cli_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace quorlen {
namespace {

using test::Read_File;

// The box's row counter (column 30) of every whole row in a log text.
std::vector<int> Counters(const std::string& text) {
    std::vector<int> counters;
    for (std::size_t at = 0; (at = text.find("\n$", at)) != std::string::npos;) {
        ++at;
        const std::string row = text.substr(at, text.find('\r', at) - at);
        if (row.size() == 171) counters.push_back(std::stoi(row.substr(4 * 30 - 1, 3)));
    }
    return counters;
}

int Gaps(const std::vector<int>& counters) {
    int gaps = 0;
    for (std::size_t i = 1; i < counters.size(); ++i)
        gaps += (counters[i] - counters[i - 1] + 256) % 256 != 1;
    return gaps;
}

std::string Run_Cli(const std::vector<std::string>& args, int& status) {
    test::Cli_Result r = test::Run_Cli(args);
    status = r.code;
    return r.out + r.err;
}

class LogRecording : public ::testing::TestWithParam<bool> {
protected:
    test::Temp_Dir dir;
};

TEST_P(LogRecording, TwentyRowsASecondNothingLostAndTheBoxImageInside) {
    const bool binary = GetParam();
    const std::string image_file = dir.File("box.qxs");
    Image_Bytes image{};
    for (std::size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<std::uint8_t>((i * 7 + 5) % 256);
    image[255] = 200;
    test::Write_File(image_file, Format_Qxs(image, "boxsim"));
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--image", image_file});
    ASSERT_TRUE(box.Ready());

    const std::string log = dir.File("run.qxl");
    std::vector<std::string> args{"log", "--port", box.Link(), "--seconds", "5", "--settings", "-o", log};
    if (binary) args.push_back("--binary");
    int status = 0;
    const std::string said = Run_Cli(args, status);
    ASSERT_EQ(status, 0) << said;

    const std::string text = Read_File(log);
    const auto counters = Counters(text);
    EXPECT_GE(counters.size(), 95u) << said;
    EXPECT_LE(counters.size(), 101u);
    EXPECT_EQ(Gaps(counters), 0);

    // Reopened, the rows are all there and the image comes back out of the log.
    status = 0;
    const std::string info = Run_Cli({"log-info", log}, status);
    EXPECT_NE(info.find("rows: " + std::to_string(counters.size()) + "\n"), std::string::npos) << info;
    EXPECT_NE(info.find("columns: 42\n"), std::string::npos);
    EXPECT_NE(info.find("repaired: no"), std::string::npos);

    Program_State program;
    Form_Texts texts;
    File_State files;
    Settings_Image taken;
    Ini_File ini(dir.File("RZ400_800M3.ini"), dir.File("QXS.new"));
    Debug_Log debug;
    test::Scripted_Dialogs dialogs;
    Undo_List undo;
    Settings_File_Context ctx{program, texts, files, taken, undo, ini, debug, dialogs, {}};
    ASSERT_TRUE(cmd_Export_Log_qxs_settings_Click(ctx, text));
    EXPECT_TRUE(std::equal(image.begin(), image.end(), taken.CardByte.begin()));

    // The CSV has a head and a line a row; the RPM is in rpm in either mode.
    const std::string csv = Run_Cli({"log-csv", log}, status);
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), static_cast<long>(counters.size()) + 1);
    const auto second_line = csv.find('\n') + 1;
    const double rpm = std::stod(csv.substr(csv.find(',', second_line) + 1));
    EXPECT_GT(rpm, 800);
    EXPECT_LT(rpm, 7000);
}

INSTANTIATE_TEST_SUITE_P(TextAndBinary, LogRecording, ::testing::Values(false, true),
                         [](const auto& p) { return p.param ? "Binary" : "Text"; });

// The log tells by itself which box and which tune it was taken with.
TEST(LogSummary, TheBoxItCameFromStandsBetweenTheMarkers) {
    test::Temp_Dir dir;
    test::Boxsim_Run box(BOXSIM_EXECUTABLE, {"--slave", "--serial", "4321", "--firmware", "800M3 V3.50"});
    ASSERT_TRUE(box.Ready());
    const std::string log = dir.File("run.qxl");
    int status = 0;
    const std::string said =
        Run_Cli({"log", "--port", box.Link(), "--seconds", "1", "--settings", "-o", log}, status);
    ASSERT_EQ(status, 0) << said;
    const test::Cli_Result summary = test::Run_Cli({"summary", log});
    ASSERT_EQ(summary.code, 0) << summary.err;
    const std::string& out = summary.out;
    const auto begin = out.find("[readable_settings]\n");
    const auto end = out.find("[end readable_settings]\n");
    ASSERT_EQ(begin, 0u) << out;
    ASSERT_NE(end, std::string::npos) << out;
    const std::string inside = out.substr(begin, end - begin);
    EXPECT_NE(inside.find("QX-box firmware: \t\t800M3 V3.50\n"), std::string::npos) << inside;
    EXPECT_NE(inside.find("RZ-box SC ID: \t\t200\n"), std::string::npos) << inside;
    EXPECT_NE(inside.find("RZ-box Serial: \t\tRZ4321\n"), std::string::npos) << inside;
    EXPECT_NE(inside.find("RZ mode: \t\tMaster & Slave present\n"), std::string::npos) << inside;
    // Recorded without the box's settings, a log says nothing of them.
    const std::string bare = dir.File("bare.qxl");
    Run_Cli({"log", "--port", box.Link(), "--seconds", "1", "-o", bare}, status);
    EXPECT_EQ(test::Run_Cli({"summary", bare}).out, "");
}

// The capture itself on the real line, driven by the clock as the window would drive it.
class LiveCapture : public ::testing::Test {
protected:
    bool Start_Box(const std::vector<std::string>& args) {
        box = std::make_unique<test::Boxsim_Run>(BOXSIM_EXECUTABLE, args);
        if (!box->Ready()) return false;
        program.App_Path = dir.Slash();
        program.Program_Title = "VELMORA RZ400/RZ800M3 Interface Software - ";
        test::Write_File(dir.File(Default_Log_Settings_File_Name),
                         Read_File(std::string(QUORLEN_DATA_DIR) + "/" + Default_Log_Settings_File_Name));
        debug.Open(dir.File("Debug_file.log"));
        ctx = std::make_unique<Log_Context>(
            Log_Context{*state, image, program, texts, flags, debug, dialogs, &line, box->Link(), {}});
        Load_Log_Defaults(*ctx);
        state->setup.check_SettingsInLogg = 0;
        state->setup.check_AutoSave = 0;
        state->Log_Dir = dir.Path().string();
        return true;
    }
    void Run(double seconds) {
        Log_Timers timers(*ctx);
        timers.Run_Until(ctx->Now() + seconds,
                         [](double s) { std::this_thread::sleep_for(std::chrono::duration<double>(s)); });
    }

    test::Temp_Dir dir;
    std::unique_ptr<test::Boxsim_Run> box;
    std::unique_ptr<Log_State> state = std::make_unique<Log_State>();
    Settings_Image image;
    Program_State program;
    Form_Texts texts;
    Link_Flags flags;
    Debug_Log debug;
    test::Scripted_Dialogs dialogs;
    Qt_Serial_Line line;
    std::unique_ptr<Log_Context> ctx;
};

TEST_F(LiveCapture, TheBackupHoldsEveryRowWhileTheLogRuns) {
    ASSERT_TRUE(Start_Box({}));
    Start_Logging(*ctx);
    Run(3.0);
    // As a killed program would leave it: no closing sections, every row received so far.
    const std::string backup = Read_File(dir.File(Log_Backup_File_Name));
    const auto counters = Counters(backup);
    EXPECT_GE(counters.size(), 55u);
    EXPECT_EQ(Gaps(counters), 0);
    EXPECT_EQ(backup.find("[end_log_data]"), std::string::npos);
    const std::string copy = dir.File("killed.qxl");
    test::Write_File(copy, backup);
    Start_Logging(*ctx);

    auto reader_state = std::make_unique<Log_State>();
    Log_Context reader{*reader_state, image, program, texts, flags, debug, dialogs, nullptr, "", {}};
    Load_Log_Defaults(reader);
    ASSERT_TRUE(Open_File(reader, copy));
    EXPECT_EQ(reader_state->Last_Row, static_cast<int>(counters.size()));
}

TEST_F(LiveCapture, APauseIsNotedAndTheLogGoesOn) {
    ASSERT_TRUE(Start_Box({"--fault", "pause@30"}));
    Start_Logging(*ctx);
    Run(6.0);
    EXPECT_TRUE(state->capture.Log_Had_Interruption);
    Start_Logging(*ctx);
    const auto mark = state->Log_Data_Text.find(" 'Interuption of log\r\n");
    ASSERT_NE(mark, std::string::npos);
    const auto after = Counters(state->Log_Data_Text.substr(mark));
    EXPECT_GE(after.size(), 20u);
    EXPECT_EQ(Gaps(after), 0);
    EXPECT_GE(state->Last_Row, 50);
    debug.Close();
    EXPECT_NE(Read_File(dir.File("Debug_file.log")).find("There were some interruptions during the log"),
              std::string::npos);
}

TEST_F(LiveCapture, AHangUpLeavesTheLogToBeStoppedAndSaved) {
    ASSERT_TRUE(Start_Box({"--fault", "hangup@6000"}));
    Start_Logging(*ctx);
    Run(3.0);
    EXPECT_TRUE(state->capture.Log_Interrupted);
    Start_Logging(*ctx);
    EXPECT_FALSE(state->capture.Logging_Running);
    EXPECT_GE(state->Last_Row, 25);
    EXPECT_EQ(Gaps(Counters(state->Log_Data_Text)), 0);
}

} // namespace
} // namespace quorlen
