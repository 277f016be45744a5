// The link without a box: Send_Wait_Rec and the session on a scripted line whose clock only
// moves when the link waits, the banner's fields, the port numbers, and the port list.

#include "core/run_error.h"
#include "link/banner.h"
#include "link/serial_port_list.h"
#include "link/session.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

namespace quorlen {
namespace {

// A line whose answers arrive at scripted times after each command; time passes only in
// Wait_For_Input and Dummy_Wait.
class Fake_Line final : public Serial_Line {
public:
    double now = 0;
    // Answer chunks to a command: (seconds after it was sent, text).
    std::map<std::string, std::vector<std::pair<double, std::string>>> answers;
    Open_Result open_result;
    std::vector<std::string> written;
    int opens = 0;

    void Arrive_At(double time, const std::string& text) { due_.push_back({time, text}); }

    void Set_Port(const std::string& path) override { port_ = path; }
    std::string Port() const override { return port_; }
    void Set_Settings(const std::string& settings) override { settings_ = settings; }
    Open_Result Open() override {
        ++opens;
        open_ = open_result.Ok();
        return open_result;
    }
    void Close() override { open_ = false; }
    bool Is_Open() const override { return open_; }
    void Clear_Input() override { Read_All(); }
    int Bytes_Waiting() override { return static_cast<int>(Peek().size()); }
    std::string Read_All() override {
        std::string got = Peek();
        waiting_.clear();
        return got;
    }
    void Write(std::string_view bytes) override {
        Need_Open();
        written.emplace_back(bytes);
        for (const auto& [delay, text] : answers[std::string(bytes)])
            due_.push_back({now + delay, text});
    }
    bool Wait_For_Input(double seconds) override {
        double next = now + seconds;
        for (const auto& d : due_)
            next = std::min(next, d.first);
        now = next;
        return !Peek().empty();
    }
    const std::string& Settings() const { return settings_; }

private:
    void Need_Open() const {
        if (!open_) throw Run_Error(8012, "Port not open");
    }
    const std::string& Peek() {
        Need_Open();
        std::stable_sort(due_.begin(), due_.end(), [](auto& a, auto& b) { return a.first < b.first; });
        while (!due_.empty() && due_.front().first <= now) {
            waiting_ += due_.front().second;
            due_.erase(due_.begin());
        }
        return waiting_;
    }
    bool open_ = false;
    std::string port_, settings_, waiting_;
    std::vector<std::pair<double, std::string>> due_;
};

const std::string Banner_Answer = "v\r\nVELMORA ECU 800M3 V3.42\r\nSerial : 04D2h\r\nSC ID 201\r\n"
                                  "Status 00001\r\nMaster mode\r\nEngine running\r\n";

class Link : public ::testing::Test {
protected:
    Link_Context Context() {
        Link_Hooks hooks;
        hooks.Now = [this] { return line.now; };
        hooks.Dummy_Wait = [this] { line.now += 0.05; };
        hooks.Start_Logg_cmd_Click = [this](int index) { started.push_back(index); };
        hooks.Message_Box = [this](const std::string& title, const std::string& text) {
            boxes.push_back(title + "|" + text);
        };
        return Link_Context{program, texts, flags, state, log, line, auto_start, std::move(hooks)};
    }
    std::string Log() { return test::Read_File(dir.File("Debug_file.log")); }

    void SetUp() override { log.Open(dir.File("Debug_file.log")); }

    test::Temp_Dir dir;
    Fake_Line line;
    Program_State program;
    Form_Texts texts;
    Link_Flags flags;
    Link_State state;
    Debug_Log log;
    bool auto_start[2] = {false, false};
    std::vector<int> started;
    std::vector<std::string> boxes;
};

// --- Send_Wait_Rec ----------------------------------------------------------------------

TEST_F(Link, SendWaitRecReturnsWhenTheCountArrivesNotAtTheTimeout) {
    line.open_result = {};
    line.Open();
    line.Arrive_At(0, "stale");
    line.answers["rd"] = {{0.010, "rd\r\n@01"},
                          {0.020, "02"
                                  "XYZ"}};
    auto c = Context();
    std::string answer;
    bool ok = false;
    Send_Wait_Rec(c, "rd", 5.0, 9, answer, ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(answer, "rd\r\n@0102XYZ") << "input from before is dropped, extra characters are kept";
    EXPECT_DOUBLE_EQ(line.now, 0.020);
    EXPECT_DOUBLE_EQ(state.Last_Exchange_Seconds, 0.020);
    EXPECT_EQ(line.written, std::vector<std::string>{"rd"});
}

TEST_F(Link, SendWaitRecHandsBackAShortAnswerAfterTheTimeout) {
    line.Open();
    line.answers["v"] = {{0.01, "v\r\nVELMORA"}};
    auto c = Context();
    std::string answer;
    bool ok = true;
    Send_Wait_Rec(c, "v", 0.2, 200, answer, ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(answer, "v\r\nVELMORA");
    EXPECT_DOUBLE_EQ(line.now, 0.2);
    EXPECT_EQ(state.Last_Exchange_Failure, "Answer timeout");
}

TEST_F(Link, SendWaitRecWithAnEmptyCommandOnlyWaitsForTheFirstCharacter) {
    line.Open();
    line.now = 1.0;
    line.Arrive_At(1.03, "&");
    line.Arrive_At(1.04, "more");
    auto c = Context();
    std::string answer;
    bool ok = false;
    Send_Wait_Rec(c, "", 0.5, 1, answer, ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(answer, "&");
    EXPECT_DOUBLE_EQ(line.now, 1.03);
    EXPECT_TRUE(line.written.empty());
}

TEST_F(Link, SendWaitRecOnAClosedPortSaysSoAndSendsNothing) {
    auto c = Context();
    std::string answer = "old";
    bool ok = true;
    Send_Wait_Rec(c, "v", 0.2, 200, answer, ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(texts.rs232_text, "Port not open");
    EXPECT_TRUE(line.written.empty());
    EXPECT_DOUBLE_EQ(line.now, 0.0);
}

// --- banner -----------------------------------------------------------------------------

TEST(Banner, FieldsAreFoundByTheirNames) {
    Banner_Fields f = Read_Banner(Banner_Answer);
    EXPECT_EQ(f.Box_Version, "800M3 V3.42");
    EXPECT_EQ(f.Box_Serial, 1234) << "04D2h is two hex pairs";
    EXPECT_EQ(f.Box_Dataset_ID, "201");
    EXPECT_EQ(f.Box_Status_Flags, "000");
    EXPECT_EQ(f.Box_Status_Value, "01");
    EXPECT_TRUE(f.Engine_Running);
    EXPECT_TRUE(f.Master);
    EXPECT_FALSE(f.Slave_Present);
    EXPECT_EQ(Box_Info_Text_Of(f), "VELMORA RZ 800M3 V3.42\r\nSerial RZ1234\r\nSC ID 201\r\nMaster mode\r\n");

    f = Read_Banner("v\r\nVELMORA ECU X\r\nSerial : 00042\r\nSC ID 007\r\nStatus 000\r\nSlave mode\r\n"
                    "Slave present\r\nSmartcard present\r\n");
    EXPECT_EQ(f.Box_Serial, 42);
    EXPECT_EQ(f.Box_Status_Value, "") << "a status line that ends after its flags";
    EXPECT_FALSE(f.Engine_Running);
    EXPECT_EQ(
        Box_Info_Text_Of(f),
        "VELMORA RZ X\r\nSerial RZ42\r\nSC ID 007\r\nSlave mode\r\nSmartcard Present \r\nSlave Present \r\n");

    EXPECT_FALSE(Read_Banner("Status 00002\r\n").Engine_Running) << "bit 0 only";
    EXPECT_TRUE(Read_Banner("Status 00003\r\n").Engine_Running);
}

TEST(Banner, CompleteNeedsModeAndAFinalLineFeed) {
    EXPECT_TRUE(Banner_Complete(Banner_Answer));
    EXPECT_FALSE(Banner_Complete(Banner_Answer.substr(0, Banner_Answer.size() - 1)));
    EXPECT_FALSE(Banner_Complete("v\r\nVELMORA ECU\r\n"));
    EXPECT_TRUE(Banner_From_Bootloader("v"));
    EXPECT_TRUE(Banner_From_Bootloader("v\r\nbl24>"));
    EXPECT_FALSE(Banner_From_Bootloader(Banner_Answer));
}

// --- session ----------------------------------------------------------------------------

TEST_F(Link, ConnectionCheckOpensAsksClosesAndNamesThePort) {
    program.Com_Port = 1;
    program.ComSpeed = 625000;
    line.answers["v"] = {{0.01, Banner_Answer}};
    auto c = Context();
    Check_connection_timer(c);
    EXPECT_EQ(line.Port(), "/dev/ttyUSB0");
    EXPECT_EQ(line.Settings(), "625000,n,8,1");
    EXPECT_FALSE(line.Is_Open()) << "closed again, so other programs can reach the box";
    EXPECT_TRUE(state.Connected);
    EXPECT_TRUE(texts.rs232_text.empty()) << "the poll is quiet";
    EXPECT_EQ(state.Online_mnu_Caption, "System connected to /dev/ttyUSB0");
    EXPECT_EQ(state.Engine_OnOff_mnu_Caption, "Engine running");
    EXPECT_TRUE(state.Engine_OnOff_mnu_Visible);
    EXPECT_FALSE(flags.Link_Busy || flags.Connection_Check_Busy);
}

TEST_F(Link, ConnectionCheckStaysAwayWhileAnotherOwnsThePort) {
    auto c = Context();
    for (bool Link_Flags::*flag :
         {&Link_Flags::Write_In_Progress, &Link_Flags::Link_Busy, &Link_Flags::Connect_Info_Busy}) {
        flags = {};
        flags.*flag = true;
        Check_connection_timer(c);
    }
    EXPECT_EQ(line.opens, 0);

    flags = {};
    flags.Logging_Active = true;
    c.hooks.Logged_RPM = [] { return 850.0; };
    Check_connection_timer(c);
    EXPECT_EQ(line.opens, 0) << "the port is the log's";
    EXPECT_TRUE(state.Engine_Running);
    EXPECT_EQ(state.Engine_OnOff_mnu_Caption, "Engine running");
}

TEST_F(Link, AutoStartWaitsForACleanCheckAndHappensOnce) {
    auto c = Context();
    auto_start[1] = true;
    program.Autostart_Pending = true;
    line.open_result = {Open_Failure::Missing, "No such file or directory", ""};
    Check_connection_timer(c);
    Check_connection_timer(c);
    EXPECT_TRUE(started.empty());
    EXPECT_TRUE(program.Autostart_Pending);
    EXPECT_FALSE(flags.Link_Busy || flags.Connection_Check_Busy);
    EXPECT_EQ(state.Online_mnu_Caption, "System not connected");
    const std::string log_text = Log();
    EXPECT_NE(log_text.find("Error in Check connection timer \r\n/dev/ttyUSB0 does not exist"),
              std::string::npos);
    EXPECT_EQ(log_text.find("Error in Check"), log_text.rfind("Error in Check"))
        << "a missing port is logged once";

    line.open_result = {};
    line.answers["v"] = {{0.01, Banner_Answer}};
    Check_connection_timer(c);
    Check_connection_timer(c);
    EXPECT_EQ(started, std::vector<int>{1});
    EXPECT_FALSE(program.Autostart_Pending);
}

TEST_F(Link, ConnectInfoShowsTheBoxOrWhyNot) {
    auto c = Context();
    line.answers["v"] = {{0.01, Banner_Answer}};
    texts.Debug_txt = "old report";
    Connect_Info_Click(c);
    EXPECT_EQ(boxes, std::vector<std::string>{"Connected box info|" + state.Box_Info_Text});
    EXPECT_EQ(texts.rs232_text, "< Info received OK >");
    EXPECT_EQ(texts.Debug_txt, "");
    EXPECT_FALSE(flags.Connect_Info_Busy);

    line.answers["v"] = {};
    Connect_Info_Click(c);
    EXPECT_EQ(boxes.back(), "Connected box info|No responce from system");
    EXPECT_EQ(texts.rs232_text, "< No responce >");
    EXPECT_EQ(texts.Debug_txt, "\r\nNo responce from system");

    line.open_result = {Open_Failure::Busy, "Permission error while locking the device", ""};
    Connect_Info_Click(c);
    EXPECT_EQ(boxes.size(), 2u);
    EXPECT_EQ(texts.rs232_text, "< Failed to open /dev/ttyUSB0 >");

    flags.Connection_Check_Busy = true;
    texts.rs232_text.clear();
    Connect_Info_Click(c);
    EXPECT_TRUE(texts.rs232_text.empty()) << "refused while the poll holds the port";
}

// Permission is the one failure only the user can mend: it is put before them once, with the
// remedy, however many checks fail the same way; a port that is merely missing is not.
TEST_F(Link, APortTheUserMayNotOpenIsToldOnceWithTheGroupToJoin) {
    auto c = Context();
    line.open_result = {Open_Failure::No_Permission, "Permission denied", "dialout"};
    for (int tick = 0; tick < 3; ++tick)
        Check_connection_timer(c);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].rfind("Serial port|/dev/ttyUSB0: permission denied", 0), 0u) << boxes[0];
    EXPECT_NE(boxes[0].find("sudo usermod -aG dialout $USER"), std::string::npos) << boxes[0];
    EXPECT_NE(texts.Debug_txt.find("sudo usermod -aG dialout $USER"), std::string::npos);
    EXPECT_TRUE(texts.rs232_text.empty()) << "the poll leaves the status line alone";

    Connect_Info_Click(c);
    ASSERT_EQ(boxes.size(), 2u) << "asked for, the reason is given again";
    EXPECT_NE(boxes[1].find("dialout"), std::string::npos);

    line.open_result = {Open_Failure::Missing, "No such file or directory", ""};
    Check_connection_timer(c);
    Connect_Info_Click(c);
    EXPECT_EQ(boxes.size(), 2u);
    EXPECT_NE(texts.Debug_txt.find("does not exist"), std::string::npos);
}

// --- ports ------------------------------------------------------------------------------

TEST(Port_Names, UsualDevicesHaveFixedNumbersAndOtherPathsAreKeptByPath) {
    EXPECT_EQ(Fixed_Port_Number("/dev/ttyUSB0"), 1);
    EXPECT_EQ(Fixed_Port_Number("/dev/ttyACM3"), 12);
    EXPECT_EQ(Fixed_Port_Number("/dev/ttyS0"), 13);
    EXPECT_EQ(Fixed_Port_Number("/dev/ttyUSB8"), 108);
    EXPECT_EQ(Fixed_Port_Number("/dev/ttyS01"), 0);
    EXPECT_EQ(Fixed_Port_Number("/dev/ttyUSBx"), 0);
    for (int n : {1, 8, 9, 16, 108, 204, 399})
        EXPECT_EQ(Fixed_Port_Number(Fixed_Port_Path(n)), n) << n;
    EXPECT_EQ(Fixed_Port_Path(17), "");

    Port_Names names;
    const int box = names.From_Ini(" /tmp/quorlen-box");
    EXPECT_EQ(box, First_Path_Number);
    EXPECT_EQ(names.Number_For("/tmp/quorlen-box"), box);
    EXPECT_EQ(names.Ini_Value(box), "/tmp/quorlen-box");
    EXPECT_EQ(names.Name_Of(box), "/tmp/quorlen-box");
    EXPECT_EQ(names.From_Ini("3"), 3);
    EXPECT_EQ(names.Ini_Value(3), "3");
    EXPECT_EQ(names.Name_Of(50), "COM50");
}

class Fake_Platform final : public Port_Platform {
public:
    bool walk_ok = true;
    std::vector<Found_Port> ports;
    std::vector<std::string> existing, held;
    bool Walk(std::vector<Found_Port>& found) override {
        if (walk_ok) found = ports;
        return walk_ok;
    }
    bool Exists(const std::string& path) const override { return In(existing, path); }
    bool Cannot_Open(const std::string& path) const override { return In(held, path); }
    bool Is_Pseudo_Terminal(const std::string& path) const override { return path.find("box") != path.npos; }

private:
    static bool In(const std::vector<std::string>& v, const std::string& s) {
        return std::find(v.begin(), v.end(), s) != v.end();
    }
};

std::vector<std::string> Paths(const clsSerialPortList& list) {
    std::vector<std::string> paths;
    for (int i = 1; i <= list.PortCount(); ++i)
        paths.push_back(list.port(i).DevPath);
    return paths;
}

TEST(Port_List, FilterMergeAndTheFallBackToNumberedPorts) {
    Fake_Platform platform;
    platform.ports = {{"FT232R (ttyUSB0)", "FT232R USB UART", "/dev/ttyUSB0", true, ""},
                      {"ttyS0", "", "/dev/ttyS0", false, ""},
                      {"ttyS5", "", "/dev/ttyS5", false, ""}};
    platform.existing = {"/dev/ttyUSB0", "/dev/ttyS0", "/dev/ttyACM0", "/run/box"};
    platform.held = {"/dev/ttyUSB0"};
    Port_Names names;
    clsSerialPortList list(platform, names, {"/run/box", "/tmp/nobox"});

    list.EnumerateList(16, false, false, false);
    EXPECT_EQ(Paths(list), (std::vector<std::string>{"/dev/ttyUSB0", "/dev/ttyS0", "/dev/ttyS5", "/run/box"}))
        << "a port held by another program is listed like any other";
    EXPECT_EQ(list.port(1).Description, "USB Serial Port");
    EXPECT_TRUE(list.port(1).IsUsb);
    EXPECT_EQ(list.port(3).COMx, 305);
    EXPECT_EQ(list.port(4).Description, "pseudo-terminal");

    list.EnumerateList(16, true, true, false);
    EXPECT_EQ(Paths(list), (std::vector<std::string>{"/dev/ttyS0", "/run/box"}));
    list.EnumerateList(16, false, true, false);
    EXPECT_EQ(Paths(list), (std::vector<std::string>{"/dev/ttyS0", "/dev/ttyS5", "/run/box"}));

    // Merge: the numbered ports that exist and the walk does not know join at the end.
    list.EnumerateList(16, true, false, true);
    EXPECT_EQ(Paths(list),
              (std::vector<std::string>{"/dev/ttyUSB0", "/dev/ttyS0", "/run/box", "/dev/ttyACM0"}));

    platform.walk_ok = false;
    list.EnumerateList(16, true, false, false);
    EXPECT_EQ(Paths(list), (std::vector<std::string>{"/dev/ttyUSB0", "/dev/ttyACM0", "/dev/ttyS0"}));
    EXPECT_EQ(list.port(2).Name, "COM9");

    clsSerialPort p;
    p.WasBusy(true);
    EXPECT_FALSE(p.WasBusy());
    EXPECT_TRUE(p.IsBusy) << "reading WasBusy sets IsBusy";
}

TEST(Port_List, ComboShowsUsbAdaptersPlainlyAndTakesTheOnlyOneWhenNothingMatches) {
    Fake_Platform platform;
    platform.ports = {{"", "", "/dev/ttyS0", false, ""},
                      {"", "Prolific", "/dev/ttyUSB2", true, ""},
                      {"", "FTDI", "/dev/ttyUSB9", true, ""}};
    Port_Names names;
    clsSerialPortList list(platform, names);
    list.EnumerateList(16, false, false, false);

    Combo1_Fill fill = Fill_Combo1(list, 7);
    ASSERT_EQ(fill.entries.size(), 3u);
    EXPECT_EQ(fill.entries[0].text, "Not available! /dev/ttyS0  ");
    EXPECT_EQ(fill.entries[1].text, "/dev/ttyUSB2  USB Serial Port: Prolific");
    EXPECT_EQ(fill.entries[2].text, "Not available! /dev/ttyUSB9  USB Serial Port: FTDI")
        << "COM109 is above 16";
    EXPECT_EQ(fill.selected, 1) << "the one USB adapter is taken";
    EXPECT_EQ(fill.Com_Port, 3);

    fill = Fill_Combo1(list, 13);
    EXPECT_EQ(fill.selected, 0);
    EXPECT_EQ(fill.Com_Port, 13);

    platform.ports.push_back({"", "", "/dev/ttyUSB1", true, ""});
    list.EnumerateList(16, false, false, false);
    fill = Fill_Combo1(list, 7);
    EXPECT_EQ(fill.selected, -1) << "two adapters: the user chooses";
    EXPECT_EQ(fill.Com_Port, 7);
}

TEST(Port_Permission, TheAdviceNamesAGroupThatGrantsTheDeviceAndNeverRootOrTty) {
    EXPECT_EQ(Group_To_Join("dialout", 0660), "dialout");
    EXPECT_EQ(Group_To_Join("uucp", 0660), "uucp");
    // A group that may only read, or only write, grants nothing.
    EXPECT_EQ(Group_To_Join("plugdev", 0640), "dialout");
    EXPECT_EQ(Group_To_Join("tty", 0620), "dialout");
    EXPECT_EQ(Group_To_Join("tty", 0660), "dialout");
    EXPECT_EQ(Group_To_Join("root", 0660), "dialout");
    EXPECT_EQ(Group_To_Join("", 0666), "dialout");

    const std::string advice =
        Open_Failure_Advice("/dev/ttyUSB0", {Open_Failure::No_Permission, "Permission denied", "root"});
    EXPECT_EQ(advice, "/dev/ttyUSB0: permission denied. Add yourself to the group 'dialout' "
                      "(sudo usermod -aG dialout $USER) and log in again");
}

// A USB adapter gets the next free ttyUSB number when it is plugged in; its by-id link stays.
TEST(Port_List, AnAdapterIsRememberedByItsStableLinkAndFoundAgainByIt) {
    test::Temp_Dir dir;
    const std::filesystem::path by_id = dir.Path() / "by-id";
    std::filesystem::create_directories(by_id);
    const std::string ftdi = (by_id / "usb-FTDI_FT232R_USB_UART_A10K3X-if00-port0").string();
    std::filesystem::create_symlink("/dev/ttyUSB3", ftdi);
    std::filesystem::create_symlink("../ttyACM0", by_id / "usb-relative");
    const auto links = Stable_Links(by_id.string());
    ASSERT_EQ(links.size(), 2u);
    EXPECT_EQ(links.at("/dev/ttyUSB3"), ftdi);
    EXPECT_EQ(links.at(dir.File("ttyACM0")), (by_id / "usb-relative").string()) << "relative to the link";
    EXPECT_TRUE(Stable_Links(dir.File("none")).empty());

    Fake_Platform platform;
    platform.ports = {{"", "FT232R USB UART", "/dev/ttyUSB3", true, ftdi}, {"", "", "/dev/ttyS0", false, ""}};
    Port_Names names;
    clsSerialPortList list(platform, names);
    list.EnumerateList(16, false, false, false);
    Combo1_Fill fill = Fill_Combo1(list, 4);
    EXPECT_EQ(fill.entries[0].text,
              "/dev/ttyUSB3  USB Serial Port: FT232R USB UART  (usb-FTDI_FT232R_USB_UART_A10K3X-if00-port0)");
    EXPECT_EQ(names.Ini_Value(4), ftdi) << "the ini keeps the name that survives re-plugging";
    EXPECT_EQ(names.Ini_Value(13), "13") << "an on-board port has no link and keeps its number";

    // Next start, the adapter plugged in: the link gives its number, and stays its name.
    Port_Names next;
    EXPECT_EQ(next.From_Ini(ftdi), 4);
    EXPECT_EQ(next.Path_Of(4), "/dev/ttyUSB3");
    EXPECT_EQ(next.Ini_Value(4), ftdi);
    // Unplugged: no link, the path is kept for the run and written back as it was.
    std::filesystem::remove(ftdi);
    Port_Names unplugged;
    const int number = unplugged.From_Ini(ftdi);
    EXPECT_GE(number, First_Path_Number);
    EXPECT_EQ(unplugged.Path_Of(number), ftdi);
    EXPECT_EQ(unplugged.Ini_Value(number), ftdi);
}

} // namespace
} // namespace quorlen
