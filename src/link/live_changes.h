#pragma once
// Changes that reach the box while the engine runs and a log stream holds the port. A change
// gets through by stopping the stream (any character from the PC does), writing, and starting
// the stream again with the string that began it, so the log goes on with a short hole. Three
// ways: the byte-wise dialogue over every marked address, one binary frame of the changed
// span, and the box's own adjustment of the cell the engine runs in, where the box picks the
// cell and tells which bytes it wrote.
//
// A failed write never keeps the log from going on: the stream is started again and the marks
// are cleared whatever happened, trading a possibly lost change for an unbroken log (a verify
// afterwards finds it).

#include "link/settings_context.h"

#include <functional>
#include <string>

namespace quorlen {

// The live cell adjustment's commands: one character, answered by the box with what it wrote.
inline constexpr const char* Adjust_Fuel_Up = "+";
inline constexpr const char* Adjust_Fuel_Down = "-";
inline constexpr const char* Adjust_Ign_Up = ">";
inline constexpr const char* Adjust_Ign_Down = "<";
// An answer of this many characters is complete; a shorter one is the box's "no".
inline constexpr int Cell_Adjust_Answer_Length = 24;

struct Live_State {
    bool Live_Update_Shown = false;  // the status line tells of an update
    std::string Cell_Adjust_Command; // filled in by the caller; empty for a binary write
    std::string ErrCode_label1;      // "ONLINE", "Update OK", "Not in cell"
    // A live change is under way: the stream stands still, and nothing else may take the port
    // or start another change until it runs again.
    bool In_Progress = false;
    // From the blank that stopped the stream to the command that started it again; and, on
    // the link's clock, when the row in flight had come and when the restart went out.
    double Last_Window_Seconds = 0;
    double Stream_Quiet_At = 0;
    double Restarted_At = 0;
};

// What the live changes ask of the log that holds the port.
struct Live_Hooks {
    // The stream stands still while an interruption is being recovered.
    std::function<bool()> Log_Paused;
    // timer_LogAlert and Timer1 of the log window.
    std::function<void(bool on)> Log_Timers;
    // The receive event of the log's port (its threshold).
    std::function<void(bool on)> Receive_Event;
    // Takes what waits at the log's port into the log, and tells the last characters the log
    // has received, by which the stop knows whether a row is under way.
    std::function<std::string()> Stream_Tail;
    // The stream has stopped; `rest` came after the blank. The log keeps the whole rows and
    // drops the part of a row that the stop cut off.
    std::function<void(const std::string& rest)> Stream_Stopped;
    // Reads and drops what waits at the log's port.
    std::function<void()> Drop_Log_Input;
    // Opens the log's port again with the log's port settings.
    std::function<void()> Open_Log_Port;
    // Each status text as it is set, in order.
    std::function<void(const std::string& text)> Status;
};

struct Live_Context {
    // The image, the flags, the texts, the person; its line carries the byte-wise dialogue
    // (the settings port; in a program with one port object, the log's own).
    Settings_Context& s;
    Serial_Line& log_line;
    Live_State& live;
    // What started the stream, and so starts it again.
    std::string Log_Start_Command;
    // How a row of the stream ends ("\r\n" for text rows, "DS" for binary frames).
    std::string Row_End = "\r\n";
    Live_Hooks hooks;
};

// Byte-wise: stops the stream, closes the log's port, writes every marked address with the
// fast dialogue, opens the port again and restarts the stream. Does nothing unless the log's
// port is open, the log active and the stream not paused.
void Write_while_logging(Live_Context& ctx);
// The changed span as one binary frame on the log's port, or, with Cell_Adjust_Command filled
// in, the box's cell adjustment. While the stream runs it is stopped and started again around
// the change; while it stands paused the change goes at once.
void Write_Fast_while_logging(Live_Context& ctx);
// Sends Cell_Adjust_Command on the log's port and takes the bytes the box says it wrote.
void Adjust_Current_Cell_TX(Live_Context& ctx);
// An entry kept for callers; it does nothing.
void SendByteWhileLogging(Live_Context& ctx);

// The address and value of each "EEadr" entry of a cell adjustment's answer, at most two.
struct Adjusted_Byte {
    int address = 0;
    int value = 0;
};
std::vector<Adjusted_Byte> Adjusted_Bytes(const std::string& answer);

} // namespace quorlen
