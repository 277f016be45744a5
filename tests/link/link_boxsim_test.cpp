// The session against the real simulator on a pseudo-terminal, through the QSerialPort
// adapter the program uses: banner fields, boot loader, display bus failures, silence,
// hang-up, and ports that can't be opened.

#include "core/run_error.h"
#include "link/qt/qt_serial_line.h"
#include "link/session.h"
#include "support/boxsim_run.h"
#include "support/temp_dir.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace quorlen {
namespace {

class Session : public ::testing::Test {
protected:
    // Starts the simulator and points the session at it.
    bool Start(const std::vector<std::string>& args) {
        box = std::make_unique<test::Boxsim_Run>(BOXSIM_EXECUTABLE, args);
        program.Com_Port = state.Ports.Number_For(box->Link());
        return box->Ready();
    }
    Link_Context Context() {
        Link_Hooks hooks;
        hooks.Message_Box = [this](const std::string& title, const std::string& text) {
            boxes.push_back(title + "|" + text);
        };
        return Link_Context{program, texts, flags, state, log, line, auto_start, std::move(hooks)};
    }
    // Connect info's way: open, ask, close.
    void Ask() {
        auto c = Context();
        const bool opened = Open_Port_If_Closed(c);
        Drop_Input(c);
        get_connect_info(c);
        if (opened) line.Close();
    }
    std::string Log() { return test::Read_File(dir.File("Debug_file.log")); }
    void SetUp() override { log.Open(dir.File("Debug_file.log")); }

    test::Temp_Dir dir;
    std::unique_ptr<test::Boxsim_Run> box;
    Qt_Serial_Line line;
    Program_State program;
    Form_Texts texts;
    Link_Flags flags;
    Link_State state;
    Debug_Log log;
    bool auto_start[2] = {false, false};
    std::vector<std::string> boxes;
};

TEST_F(Session, BannerFieldsOfAMasterBox) {
    ASSERT_TRUE(Start({"--serial", "4660", "--dataset", "77", "--firmware", "800M3 V9.99"}));
    Ask();
    EXPECT_TRUE(state.Connected);
    EXPECT_EQ(texts.rs232_text, "< Info received OK >");
    EXPECT_EQ(state.Box_Version, "800M3 V9.99");
    EXPECT_EQ(state.Box_Serial, 4660) << "sent as 1234h";
    EXPECT_EQ(state.Box_Dataset_ID, "077");
    EXPECT_EQ(state.Box_Status_Flags, "000");
    EXPECT_FALSE(state.Engine_Running);
    EXPECT_FALSE(state.Slave_Present || state.Smartcard_Present);
    EXPECT_EQ(state.Box_Info_Text, "VELMORA RZ 800M3 V9.99\r\nSerial RZ4660\r\nSC ID 077\r\nMaster mode\r\n");
    EXPECT_TRUE(texts.Debug_txt.empty());
}

TEST_F(Session, SlaveSmartcardRunningEngineAndTheFastLine) {
    ASSERT_TRUE(
        Start({"--serial-decimal", "--serial", "4321", "--slave", "--smartcard", "--engine-running"}));
    program.ComSpeed = 625000;
    Ask();
    EXPECT_TRUE(state.Connected);
    EXPECT_EQ(state.Box_Serial, 4321);
    EXPECT_EQ(state.Box_Status_Value, "01");
    EXPECT_TRUE(state.Engine_Running);
    EXPECT_TRUE(state.Slave_Present);
    EXPECT_TRUE(state.Smartcard_Present);
    EXPECT_NE(state.Box_Info_Text.find("Master mode\r\nSmartcard Present \r\nSlave Present \r\n"),
              std::string::npos);
}

TEST_F(Session, BootLoaderGetsGoAndTheNextAskSucceeds) {
    ASSERT_TRUE(Start({"--bootloader"}));
    Ask();
    EXPECT_FALSE(state.Connected);
    EXPECT_EQ(state.Box_Info_Text, "No responce from system");
    Ask();
    EXPECT_TRUE(state.Connected);
}

TEST_F(Session, DisplayBusTimeoutsAreRetriedAndThreeInARowReported) {
    ASSERT_TRUE(Start({"--i2c-timeouts", "2"}));
    Ask();
    EXPECT_TRUE(state.Connected);
    EXPECT_EQ(texts.Debug_txt.find("I2C"), std::string::npos) << "the third answer was clean";

    ASSERT_TRUE(Start({"--i2c-timeouts", "3"}));
    Ask();
    EXPECT_TRUE(state.Connected) << "the rest goes on";
    EXPECT_EQ(texts.Debug_txt, "\r\n3 I2C time out in row");
}

TEST_F(Session, SilentBoxIsNoResponse) {
    ASSERT_TRUE(Start({"--fault", "silence"}));
    Ask();
    EXPECT_FALSE(state.Connected);
    EXPECT_EQ(state.Box_Info_Text, "No responce from system");
    EXPECT_EQ(texts.rs232_text, "< No responce >");
    EXPECT_EQ(texts.Debug_txt, "\r\nNo responce from system");
    EXPECT_EQ(state.Last_Exchange_Failure, "Answer timeout");
}

TEST_F(Session, ExchangeEndsWithTheCountOrTheWholeBannerOnARealLine) {
    ASSERT_TRUE(Start({"--wire-baud", "115200", "--banner-pad", "200"}));
    auto c = Context();
    Open_Port_If_Closed(c);
    std::string answer;
    bool ok = false;
    // A generous bound: the answer ends the exchange, not the clock.
    Send_Wait_Rec(c, "v", 30.0, 200, answer, ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(answer.size(), 200u);
    EXPECT_EQ(answer.back(), '\n');
    Send_Wait_Rec(c, "g", 30.0, 3, answer, ok);
    EXPECT_EQ(answer, "g\r\n");

    // A banner shorter than the count ends the exchange with its mode line.
    ASSERT_TRUE(Start({"--wire-baud", "115200"}));
    line.Close();
    Open_Port_If_Closed(c);
    const double t0 = Steady_Seconds();
    Ask_Banner(c, 30.0, 200, answer, ok);
    EXPECT_LT(Steady_Seconds() - t0, 1.0);
    EXPECT_TRUE(ok);
    EXPECT_LT(answer.size(), 200u);
    EXPECT_EQ(answer.substr(answer.size() - 13), "Master mode\r\n");
    // The session check asks no longer than that.
    get_connect_info(c);
    EXPECT_TRUE(state.Connected);
    EXPECT_LT(state.Last_Exchange_Seconds, 0.1);
}

TEST_F(Session, HangUpClosesTheLineAndThePollKeepsTrying) {
    ASSERT_TRUE(Start({"--fault", "hangup@150"})); // within the second banner
    Ask();
    EXPECT_TRUE(state.Connected);
    auto c = Context();
    Open_Port_If_Closed(c);
    get_connect_info(c);
    EXPECT_FALSE(state.Connected);
    EXPECT_FALSE(line.Is_Open()) << "a line whose far end went is closed";

    box->Stop();
    flags = {};
    Check_connection_timer(c);
    Check_connection_timer(c);
    EXPECT_FALSE(flags.Link_Busy || flags.Connection_Check_Busy);
    EXPECT_TRUE(program.Autostart_Pending);
    const std::string text = Log();
    EXPECT_NE(text.find("Error in Check connection timer \r\n" + box->Link() + " does not exist"),
              std::string::npos);
    EXPECT_EQ(text.find("Error in Check"), text.rfind("Error in Check"));
}

TEST_F(Session, PortsThatCannotBeOpenedSayWhy) {
    ASSERT_TRUE(Start({}));
    Qt_Serial_Line first;
    first.Set_Port(box->Link());
    ASSERT_TRUE(first.Open().Ok());
    line.Set_Port(box->Link());
    Open_Result held = line.Open();
    EXPECT_EQ(held.failure, Open_Failure::Busy) << held.text;

    auto c = Context();
    Connect_Info_Click(c);
    EXPECT_EQ(texts.rs232_text, "< Failed to open " + box->Link() + " >");
    EXPECT_TRUE(boxes.empty());
    EXPECT_EQ(texts.Debug_txt,
              "\r\n" + box->Link() + " is in use by another program; close that program and try again");
    EXPECT_NE(Log().find("Error in Connect info" + box->Link() + " is in use by another program"),
              std::string::npos);

    line.Set_Port(dir.File("no-such-port"));
    EXPECT_EQ(line.Open().failure, Open_Failure::Missing);
    test::Write_File(dir.File("plain-file"), "");
    line.Set_Port(dir.File("plain-file"));
    EXPECT_EQ(line.Open().failure, Open_Failure::Not_A_Serial_Port);
    EXPECT_THROW(line.Read_All(), Run_Error);
}

} // namespace
} // namespace quorlen
