#include "core/debug_log.h"

#include "core/proc_guard.h"

#include <ctime>

namespace quorlen {

Debug_Log::~Debug_Log() {
    Close();
}

bool Debug_Log::Open(const std::string& path) {
    Close();
    path_ = path;
    file_ = std::fopen(path.c_str(), "ab");
    return file_ != nullptr;
}

void Debug_Log::Close() {
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
    }
}

void Debug_Log::Write_Line(std::string_view text) {
    if (file_ == nullptr) return;
    std::fwrite(text.data(), 1, text.size(), file_);
    std::fwrite("\r\n", 1, 2, file_);
    std::fflush(file_);
}

namespace {
std::string Format_Now(const char* format) {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char buffer[64];
    std::size_t n = std::strftime(buffer, sizeof buffer, format, &local);
    return std::string(buffer, n);
}
} // namespace

std::string Now_Date_Time_Text() {
    return Format_Now("%Y-%m-%d %H:%M:%S");
}
std::string Now_Time_Text() {
    return Format_Now("%H:%M:%S");
}

void Init_Debug_File(Debug_Log& log, const std::string& app_path) {
    Proc_Guard guard(log, "Init Debug file");
    guard.Step([&] {
        if (!log.Open(app_path + "Debug_file.log")) throw errors::Path_Not_Found();
    });
    guard.Step([&] { log.Write_Line("Quorlen started: " + Now_Date_Time_Text()); });
}

} // namespace quorlen
