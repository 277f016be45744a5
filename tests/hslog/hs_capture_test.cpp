// The high-speed capture as a state machine: the box's side is the simulator's stream code,
// fed through a fake line on a simulated clock; the window's poll and timer run as it would
// run them. No real time passes and no port is opened.

#include "box.h"
#include "hslog/hs_capture.h"
#include "hslog/osc_file.h"
#include "support/fake_line.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>

namespace quorlen {
namespace {

using test::Read_File;

class HsCapture : public ::testing::Test {
protected:
    HsCapture() {
        debug.Open(dir.File("Debug_file.log"));
        hooks.Now = [this] { return clock; };
        hooks.Date_Text = [] { return std::string("2024-05-31"); };
        hooks.Time_Text = [] { return std::string("14:03:59"); };
        hooks.Dummy_Wait = [this] { Run(0.05); };
        hooks.Open_File = [this](const std::string& path) { opened.push_back(path); };
        Use_Box({});
    }

    void Use_Box(boxsim::Box_Faults faults) {
        boxsim::Box_Config config;
        config.hs.rpm = 3000;
        box = std::make_unique<boxsim::Box>(config, faults);
        box->Set_Line_Baud(program.ComSpeed);
    }

    HS_Context Ctx() {
        return {hs, program, flags, debug, dialogs, &line, "/dev/ttyFAKE", dir.Path().string(), hooks};
    }

    boxsim::Time Box_Time() const {
        return std::chrono::duration_cast<boxsim::Time>(std::chrono::duration<double>(clock));
    }

    // The wire: what the program wrote reaches the box, what the box sends waits at the port.
    void Pump() {
        for (; sent < line.written.size(); ++sent) {
            const std::string answer = box->Receive(line.written[sent], Box_Time());
            if (line.open) line.incoming += answer;
        }
        const std::string out = box->Tick(Box_Time());
        if (line.open) line.incoming += out;
    }

    // The window's receive poll every 10 ms for `seconds`.
    void Run(double seconds) {
        const double until = clock + seconds;
        while (clock < until - 1e-9) {
            clock += HS_Receive_Poll / 1000.0;
            Pump();
            auto c = Ctx();
            HS_Poll(c);
            Pump();
        }
    }

    void Start() {
        auto c = Ctx();
        Start_HSLogg_Click(c);
        Pump();
    }
    void Stop() {
        auto c = Ctx();
        Stop_HSLogg_Click(c);
        Pump();
    }

    std::string Debug_Text() {
        debug.Close();
        return Read_File(dir.File("Debug_file.log"));
    }

    test::Temp_Dir dir;
    HS_State hs;
    Program_State program;
    Link_Flags flags;
    Debug_Log debug;
    test::Scripted_Dialogs dialogs;
    test::Fake_Line line;
    HS_Hooks hooks;
    std::unique_ptr<boxsim::Box> box;
    std::size_t sent = 0;
    double clock = 1000;
    std::vector<std::string> opened;
};

TEST_F(HsCapture, TheStreamGoesToADatedFileWithEveryCheckByte) {
    Start();
    EXPECT_EQ(line.All_Written(), "d");
    EXPECT_TRUE(flags.HS_Logging_Active);
    EXPECT_FALSE(hs.form.Start_HSLogg_Enabled);
    EXPECT_TRUE(hs.form.Stop_HSLogg_Enabled);
    EXPECT_FALSE(hs.form.Osc_Chart_Visible);
    const std::string path = dir.File("RZ_Osc_file_2024-05-31_14-03-59.qxo");
    EXPECT_EQ(hs.capture.path, path);

    Run(2.5);
    auto c = Ctx();
    HS_Timer1_Timer(c);
    EXPECT_EQ(hs.form.txt_Log_Length, "2.5 s");
    // Written as it came: the file holds the samples while the capture runs.
    EXPECT_GT(Read_File(path).size(), 20000u * 5);

    Stop();
    EXPECT_EQ(line.All_Written(), "d ");
    EXPECT_FALSE(line.open);
    EXPECT_FALSE(flags.HS_Logging_Active);
    EXPECT_TRUE(hs.form.Start_HSLogg_Enabled);
    EXPECT_TRUE(hs.form.Osc_Chart_Visible);
    // 2.5 s at 11520 a second, the echo and what came before the blank.
    const auto samples = hs.capture.Sample_Count;
    EXPECT_NEAR(static_cast<double>(samples), 2.5 * 11520, 0.01 * 2.5 * 11520);
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_EQ(dialogs.informed[0], std::to_string(samples) + " samples were captured. Time: 2.5sek");
    EXPECT_EQ(opened, std::vector<std::string>{path});

    const std::string text = Read_File(path);
    std::string error;
    const auto trace = Read_Osc_Text(text, error);
    ASSERT_TRUE(trace);
    EXPECT_FALSE(trace->cut_off);
    EXPECT_EQ(trace->Count(), samples);
    EXPECT_EQ(trace->sample_rate, 11520);
    EXPECT_EQ(trace->held, 3); // the echo and the check bytes at 11522 and 23042
    EXPECT_EQ(text.substr(text.size() - 20), "Sample rate: 11520\r\n");
}

TEST_F(HsCapture, At625000BaudTheSamplesComeFiveTimesAsFast) {
    program.ComSpeed = 625000;
    box->Set_Line_Baud(625000);
    Start();
    Run(1.0);
    Stop();
    EXPECT_NEAR(static_cast<double>(hs.capture.Sample_Count), 62500, 625);
    EXPECT_EQ(dialogs.informed.at(0),
              std::to_string(hs.capture.Sample_Count) + " samples were captured. Time: 1.0sek");
    std::string error;
    EXPECT_EQ(Read_Osc_File(hs.capture.path, error)->sample_rate, 62500);
}

TEST_F(HsCapture, OnlyTheBytesAtTheCheckPlacesMustBe255AndTheSecondIsExempt) {
    EXPECT_FALSE(Check_Byte_Due(1));
    EXPECT_FALSE(Check_Byte_Due(2));
    EXPECT_FALSE(Check_Byte_Due(11521));
    EXPECT_TRUE(Check_Byte_Due(11522));
    EXPECT_TRUE(Check_Byte_Due(23042));

    HS_Capture_State cap;
    std::string error;
    ASSERT_TRUE(cap.file.Open(dir.File("c.qxo"), error));
    std::string bytes(11521, '\0'); // byte 2 is 0: exempt
    EXPECT_TRUE(HS_Take_Bytes(cap, bytes));
    EXPECT_TRUE(HS_Take_Bytes(cap, "\xff"));
    EXPECT_TRUE(HS_Take_Bytes(cap, std::string(11519, '\x01')));
    // Byte 23042 is 254: the capture keeps the bytes before it and no more.
    EXPECT_FALSE(HS_Take_Bytes(cap, std::string("\x02\xfe\x03", 3)));
    EXPECT_EQ(cap.Sample_Count, 23041);
    EXPECT_EQ(cap.file.Written(), 23041);
}

TEST_F(HsCapture, AWrongCheckByteStopsTheCaptureAndKeepsWhatCameBefore) {
    boxsim::Box_Faults faults;
    faults.hs_bad_check = 2;
    Use_Box(faults);
    Start();
    Run(3.0);
    EXPECT_FALSE(hs.capture.Running);
    ASSERT_GE(dialogs.informed.size(), 2u);
    EXPECT_EQ(dialogs.informed[0], "Checksum error. Automatic stop of logging");
    EXPECT_EQ(dialogs.informed[1], "23041 samples were captured. Time: 2.0sek");
    std::string error;
    const auto trace = Read_Osc_File(hs.capture.path, error);
    ASSERT_TRUE(trace);
    EXPECT_FALSE(trace->cut_off);
    EXPECT_EQ(trace->Count(), 23041);
    EXPECT_FALSE(flags.HS_Logging_Active);
}

TEST_F(HsCapture, AGapInTheStreamIsNoFault) {
    boxsim::Box_Faults faults;
    faults.hs_gap_at = 5000;
    Use_Box(faults);
    Start();
    Run(2.0);
    Stop();
    // Half a second of the engine never came; every check byte still stood in its place.
    EXPECT_NEAR(static_cast<double>(hs.capture.Sample_Count), 1.5 * 11520, 200);
    EXPECT_FALSE(hs.capture.Checksum_Failed);
}

TEST_F(HsCapture, EventsThatComeWhileOneRunsAreCountedUntilTheComputerIsTooSlow) {
    Start();
    hs.capture.Event_Busy = true;
    auto c = Ctx();
    for (int i = 0; i < 100; ++i)
        HS_Receive_Event(c, comEvReceive);
    EXPECT_EQ(hs.form.Text3, std::string(100, '.'));
    EXPECT_TRUE(dialogs.informed.empty());
    HS_Receive_Event(c, comEvReceive);
    HS_Receive_Event(c, comEvReceive);
    EXPECT_EQ(dialogs.informed, std::vector<std::string>{"Warning, the computer is too slow"});
    hs.capture.Event_Busy = false;
    Stop();
}

TEST_F(HsCapture, LossesOfTheLineAreOnlyNoted) {
    Start();
    line.losses.overrun = 1;
    line.losses.buffer_overrun = 1;
    Run(0.2);
    EXPECT_EQ(hs.form.txt_Err, "Com event: comEventOverrun\r\nCom event: comEventRxOver\r\n1008");
    EXPECT_TRUE(hs.capture.Running);
    Stop();
}

TEST_F(HsCapture, ThePortOfTheMainWindowOrAHeldPortStartsNothing) {
    hooks.Main_Port_Busy = [] { return true; };
    Start();
    EXPECT_EQ(dialogs.informed,
              std::vector<std::string>{"Com port used by normal logging. Close logging and retry"});
    EXPECT_EQ(line.opens, 0);
    EXPECT_TRUE(hs.form.Start_HSLogg_Enabled);

    hooks.Main_Port_Busy = nullptr;
    line.refuse_open = true;
    dialogs.informed.clear();
    Start();
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_NE(dialogs.informed[0].find("/dev/ttyFAKE"), std::string::npos);
    EXPECT_TRUE(hs.form.Start_HSLogg_Enabled);
    EXPECT_FALSE(flags.HS_Logging_Active);
    EXPECT_TRUE(opened.empty());
}

TEST_F(HsCapture, APortThatGoesAwayEndsTheCaptureWithWhatCame) {
    Start();
    Run(1.0);
    line.open = false; // the adapter pulled
    Run(0.1);
    EXPECT_FALSE(hs.capture.Running);
    EXPECT_FALSE(flags.HS_Logging_Active);
    ASSERT_EQ(dialogs.informed.size(), 2u);
    EXPECT_EQ(dialogs.informed[0], Port_Lost_Text);
    std::string error;
    const auto trace = Read_Osc_File(hs.capture.path, error);
    ASSERT_TRUE(trace);
    EXPECT_FALSE(trace->cut_off);
    EXPECT_NEAR(static_cast<double>(trace->Count()), 11520, 200);
}

TEST_F(HsCapture, StartWhileTheFormsPortIsOpenStops) {
    Start();
    Run(0.3);
    Start();
    EXPECT_FALSE(hs.capture.Running);
    EXPECT_EQ(line.All_Written(), "d ");
    EXPECT_EQ(opened.size(), 1u);
}

TEST_F(HsCapture, TheFileNameHasNoMarksAFolderCouldNotHold) {
    EXPECT_EQ(Osc_File_Name("2024-05-31", "14:03:59"), "RZ_Osc_file_2024-05-31_14-03-59.qxo");
    EXPECT_EQ(Osc_File_Name("5/31/2024", "2:03:59"), "RZ_Osc_file_5-31-2024_2-03-59.qxo");
    // Two captures in the same second: the second takes a name of its own.
    Start();
    Stop();
    Start();
    EXPECT_EQ(hs.capture.path, dir.File("RZ_Osc_file_2024-05-31_14-03-59_2.qxo"));
    Stop();
    // A folder that can't be written: said, and the port is let go.
    dialogs.informed.clear();
    hs.Output_Path = dir.File("no/such/folder/x.qxo");
    Start();
    ASSERT_EQ(dialogs.informed.size(), 1u);
    EXPECT_EQ(dialogs.informed[0].rfind("Can not write the high-speed log file", 0), 0u);
    EXPECT_FALSE(line.open);
    EXPECT_FALSE(flags.HS_Logging_Active);
    EXPECT_NE(Debug_Text().find("Error in Start HSLogg click"), std::string::npos);
}

} // namespace
} // namespace quorlen
