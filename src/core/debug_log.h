#pragma once
// Debug_file.log: opened at start for append, one line per failing procedure, closed at
// shutdown. If the file cannot be opened every write is silently dropped, so a read-only
// program folder still starts.

#include <cstdio>
#include <string>
#include <string_view>

namespace quorlen {

class Debug_Log {
public:
    Debug_Log() = default;
    Debug_Log(const Debug_Log&) = delete;
    Debug_Log& operator=(const Debug_Log&) = delete;
    ~Debug_Log();

    // Opens `path` for append; false (and later writes are dropped) when it cannot.
    bool Open(const std::string& path);
    void Close();
    bool Is_Open() const { return file_ != nullptr; }
    const std::string& Path() const { return path_; }

    // Appends `text` and CR LF, and flushes so a crash keeps what was written.
    void Write_Line(std::string_view text);

private:
    std::FILE* file_ = nullptr;
    std::string path_;
};

// "YYYY-MM-DD HH:MM:SS" of the local clock, the form of the start line.
std::string Now_Date_Time_Text();
// "HH:MM:SS" of the local clock, the form of the status texts.
std::string Now_Time_Text();

// Init_Debug_File: opens App_Path + "Debug_file.log" and writes the start line.
void Init_Debug_File(Debug_Log& log, const std::string& app_path);

} // namespace quorlen
