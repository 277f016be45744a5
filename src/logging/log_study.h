#pragma once
// What the log window does with an open log besides reading and writing it: a second file
// laid over it for comparison, the question before an unsaved log is replaced, and a change
// of the log settings calculated into the log at once.

#include "logging/log_context.h"

#include <string>

namespace quorlen {

inline constexpr const char* Log_File_Filter = "Quorlen logg files *.qxl|*.qxl|All files *.*|*.*";
inline constexpr const char* Unsaved_Log_Question = "The current log is not saved. Do you want to save it?";

// Reads `path` as the compared file: its rows into Compare_Data, calculated with its own
// sensors and car settings, while the open log keeps every section and setting of its own.
// Both files are then shown whole. False, with nothing changed, when the file gives no rows
// or a log is being recorded.
bool Open_Compare_File(Log_Context& ctx, const std::string& path);
// Back to the one log.
void Close_Compare(Log_State& log);

// Before a log with rows that were never saved is replaced: asks, and on Yes offers the save
// dialog. Reading a compared file replaces nothing and asks nothing.
void Check_If_Unsaved_File(Log_Context& ctx);

// The setup form's choices (sensors, names, units, car, smoothing) into the signal table and
// the settings text, and the open log calculated again with them; such a log is then unsaved,
// since its file no longer says what the window shows.
void Apply_Log_Setup(Log_Context& ctx);

} // namespace quorlen
