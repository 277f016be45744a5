#pragma once
// Recording the box's live stream. The port's receive event fills a buffer, Timer1 turns
// the buffer into rows, and timer_LogAlert watches for silence, restarts the stream and
// notes the interruption. Each is a plain function of the state: the log window calls them
// from its timers, the command-line tool and the tests from a clock of their own.

#include "logging/log_context.h"

#include <string>
#include <string_view>

namespace quorlen {

inline constexpr int Receive_Threshold = 131;  // the event acts from this many characters
inline constexpr int Overload_Count = 3000;    // characters left waiting at a tick: the computer lags
inline constexpr int Log_Alert_Period = 500;   // ms
inline constexpr int Receive_Poll_Period = 20; // ms, how often the window looks for received data

inline constexpr const char* Overload_Text =
    "The computer can not handle this logging speed. Please lower the number of seconds to show or increase "
    "the update interval";

inline constexpr const char* HS_Port_Busy_Text = "Com port used by high speed logging. Stop it and retry";

// Starts a log when none runs, and stops the one that runs; refuses while a high-speed
// capture holds the port.
void Start_Logging(Log_Context& ctx);
// "bL", "00" and the frame length 58 in two hex digits.
void Start_Logging_bin(Log_Context& ctx);

// The port's receive event.
void Log_Receive_Event(Log_Context& ctx);
void Timer1_Timer(Log_Context& ctx);
void timer_LogAlert_Timer(Log_Context& ctx);

// Complete text rows, or binary frames, out of the stream buffer into the log.
void QX_Log_Row_Data_Read(Log_Context& ctx);
void QX_Fast_Log_Row_Data_Read(Log_Context& ctx);
// A frame (from its length byte to its "DS") into the text row a text log carries; a wrong
// length or sum is noted in the free text and the row is kept.
std::string Convert_to_Slowdata(Log_Context& ctx, std::string_view frame);

// The backup of a running log beside the program, written as data arrives.
void Init_Logg_Backup_File(Log_Context& ctx);
void Finalize_Logg_Backup_File(Log_Context& ctx);

// Empties the rows, the buffers and the arrays.
void cmd_Clear_Logg_Click(Log_Context& ctx);
void Enable_Buttons_after_log(Log_Context& ctx);

// The timers of the log window on a clock: the receive event every 20 ms, Timer1 at its
// interval, the silence watch every 500 ms. `wait` lets the given seconds pass.
class Log_Timers {
public:
    explicit Log_Timers(Log_Context& ctx) : ctx_(ctx) {}
    // Runs the timers until `until` on the context's clock, or until the log stops.
    void Run_Until(double until, const std::function<void(double seconds)>& wait);

private:
    Log_Context& ctx_;
    double next_receive_ = 0, next_timer1_ = 0, next_alert_ = 0;
    bool started_ = false;
};

} // namespace quorlen
