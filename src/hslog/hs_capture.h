#pragma once
// Recording the box's high-speed stream: after "d" the box sends the state of eight digital
// lines, one byte a sample, at the full speed of the line, with a check byte of 255 every
// 11520th byte. The bytes go straight to a .qxo file. The receive handling is a plain
// function of the state fed from the port; the window calls it from a timer, the command-line
// tool from its own loop, and the tests with bytes of their own.

#include "core/debug_log.h"
#include "core/program_state.h"
#include "core/user_dialogs.h"
#include "hslog/osc_file.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace quorlen {

class Serial_Line;

inline constexpr int HS_RThreshold = 1000;   // bytes that make a receive event
inline constexpr int HS_Receive_Poll = 10;   // ms, how often the window looks at the port
inline constexpr int HS_Timer1_Period = 100; // ms
inline constexpr std::size_t Too_Slow_Dots = 101;

// The port's events as the handler knows them.
inline constexpr int comEvReceive = 2;
inline constexpr int comEventOverrun = 1006;
inline constexpr int comEventRxOver = 1008;

inline constexpr const char* Port_Busy_Text = "Com port used by normal logging. Close logging and retry";
inline constexpr const char* Checksum_Error_Text = "Checksum error. Automatic stop of logging";
inline constexpr const char* Too_Slow_Text = "Warning, the computer is too slow";
inline constexpr const char* Write_Failed_Text =
    "The high-speed log file can not be written (is the disk full?). Automatic stop of logging";
inline constexpr const char* Port_Lost_Text =
    "The port went away (a cable or adapter pulled?). Automatic stop of logging";

// True for the byte numbers (from 1) that must carry the check byte. The box's first byte
// is its echo of "d", so its own count is one behind ours, and its first sample (our
// number 2) is no check byte.
constexpr bool Check_Byte_Due(std::int64_t number) {
    return number != 2 && number >= 2 && (number - 2) % Osc_Check_Interval == 0;
}

// "RZ_Osc_file_2024-05-31_14-03-59.qxo" from the date and time texts.
std::string Osc_File_Name(const std::string& date, const std::string& time);

// The texts and switches of QX_Log_HS that the capture sets.
struct HS_Form {
    bool Start_HSLogg_Enabled = true;
    bool Stop_HSLogg_Enabled = false;
    bool Osc_Chart_Visible = true;
    bool Timer1_Enabled = false;
    std::string txt_Log_time;   // time of day the capture started
    std::string txt_Log_Length; // "12.3 s" while it runs, "12.3 sek" of an opened file
    std::string txt_Err;        // the port's complaints
    std::string Text3;          // one "." for each receive event that came while one ran
};

struct HS_Capture_State {
    std::int64_t Sample_Count = 0; // bytes taken into the file
    bool Event_Busy = false;
    bool Stopping = false;
    bool Running = false;
    long Calls = 0;
    bool Checksum_Failed = false;
    bool Too_Slow_Shown = false;
    std::int32_t baud = 115200;
    double started = 0;
    Osc_Writer file;
    std::string path;       // the file of this capture
    long overruns_seen = 0; // the line's loss counters at the last look
    long rx_overs_seen = 0;
};

struct HS_State {
    HS_Form form;
    HS_Capture_State capture;
    std::string Output_Path; // when set, the capture goes here instead of a dated name
};

struct HS_Hooks {
    std::function<double()> Now; // seconds on a steady clock
    std::function<std::string()> Date_Text;
    std::function<std::string()> Time_Text;
    std::function<void()> Dummy_Wait;
    // True while the main window's port is open (a log, or a port opened by hand).
    std::function<bool()> Main_Port_Busy;
    // Opens the finished capture for the chart and the analysis.
    std::function<void(const std::string& path)> Open_File;
};

struct HS_Context {
    HS_State& hs;
    Program_State& program; // ComSpeed
    Link_Flags& flags;
    Debug_Log& debug;
    User_Dialogs& dialogs;
    Serial_Line* line = nullptr; // the capture's own port
    std::string port;            // its device path
    std::string dir;             // the log folder, without a closing "/"
    HS_Hooks hooks;

    double Now() const;
};

// Opens the port, the file, and asks the box for the stream; a click while the form's own
// port is open stops the capture instead.
void Start_HSLogg_Click(HS_Context& ctx);
// Ends the stream, closes the file with its count, tells the result and opens the file.
void Stop_HSLogg_Click(HS_Context& ctx);
// The port's event: 2 takes what is waiting, 1006 and 1008 are noted in txt_Err.
void HS_Receive_Event(HS_Context& ctx, int event);
// What the window's poll does: raises 1006 and 1008 for losses the line counted since the
// last look, and 2 when the threshold of bytes is waiting.
void HS_Poll(HS_Context& ctx);
// Shows the time the capture has run.
void HS_Timer1_Timer(HS_Context& ctx);

// Takes received bytes into the capture: counts, checks and writes them. False when a check
// byte was wrong (the bytes before it are in the file, it and those after are not) or the
// file refused them (Checksum_Failed tells which).
bool HS_Take_Bytes(HS_Capture_State& cap, std::string_view bytes);

} // namespace quorlen
