#pragma once
// The .qxl file: five sections of text, each held as one string while the log is open, and
// written back in one piece. Read and saved unchanged, a file keeps every byte.

#include "logging/log_context.h"

#include <string>
#include <string_view>

namespace quorlen {

// Splits Log_File_Text into the sections, rebuilding any that is missing; false with "This is
// a log file without complete log data" when there are no rows to speak of.
bool QX_Info_Data_File_Test(Log_Context& ctx);

// Drops the box's "#" message lines from a data text, all but the "#RPM" header; `count` is
// the number of lines dropped, less 1.
std::string Filter_logfile_errors(std::string_view text, long& count);

// The rows of Log_Data_Text into Log_Data (Compare_Data for the second file of compare mode),
// then the extended signals. Rows of another length than the first are skipped.
void QX_Log_Data_Read(Log_Context& ctx);

// A log file has CR LF line ends and at least one of its section tags (or the row head of the
// oldest logs); an empty file, random bytes, UTF-16 or a CR-only text has not.
bool Looks_Like_Log_File(std::string_view content);

// Reads a log file. End-of-text characters in it are repaired away: a safety copy
// "<path>_repairing_copy.qxl" stays beside it and the file keeps everything else. When the
// file can't be written the log is shown repaired and the file stays as it was. False, with
// the log on show untouched, for a path that is not a regular file or a file that is not a
// log. `keep_dir` leaves the folder of logs as it is (the default settings file).
bool Open_File(Log_Context& ctx, const std::string& path, bool keep_dir = false);
// Writes the sections to `path`, without a line end behind the last.
void Save_File(Log_Context& ctx, const std::string& path, bool default_file = false);
// The sections as one text.
std::string Join_Log_File(const Log_State& log);

// Saves a finished log under the present name with the date and time added.
void Log_File_Auto_Save(Log_Context& ctx);
// A live log past 6900 rows: this part is saved as stem_date_time_001.qxl (002, ...) and the
// log goes on in the next. Returns the text that begins the next part's rows.
std::string Fast_Save_Long_Log_File(Log_Context& ctx);
// Cuts the data text behind its last LF and closes it with "[end log_data]".
void Trim_Log_Data(Log_State& log);

// The default log settings beside the program.
std::string Default_Log_Settings_Path(const Log_Context& ctx);
void Open_Default_File_Click(Log_Context& ctx);
// `by_program` skips the question "Do you want to replace existing default log settings?".
void Save_as_Default_File_Click(Log_Context& ctx, bool by_program = false);
// Load of the log window: defaults, then the default file when there is one.
void Load_Log_Defaults(Log_Context& ctx);

// "(rows - 1) * 0.05" seconds as the length box shows it: "12.3 s".
std::string Log_Length_Text(int rows);
// Folder and name of a path ("" folder for a bare name).
std::string Folder_Of_Path(const std::string& path);
std::string Title_Of_Path(const std::string& path);

} // namespace quorlen
