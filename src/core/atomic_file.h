#pragma once
// Replacing a user's file: the new content goes to a temporary file in the same folder, is
// flushed to the disk, and is renamed over the old one. A crash at any moment leaves either
// the old file or the new one whole, never a mixture or a half.

#include <optional>
#include <string>
#include <string_view>

namespace quorlen {

// Writes `content` to `temp_path` (same file system as `path`), syncs it, renames it over
// `path` and syncs the folder. Throws Run_Error on failure, leaving `path` untouched and
// removing the temporary file.
void Replace_File_Atomically(const std::string& path, std::string_view content, const std::string& temp_path);

// Same, with a temporary name of its own beside `path`.
void Replace_File_Atomically(const std::string& path, std::string_view content);

// The whole file as bytes; throws Run_Error: "File not found" when it cannot be opened,
// "Path/File access error" when it is no regular file (a folder, a pipe, a device).
std::string Read_Whole_File(const std::string& path);

bool File_Exists(const std::string& path);

// What keeps `path` from being read as a file, in words that complete "<path> ...": "does not
// exist", "is a folder", "is a named pipe (FIFO)", "is a device", "is a socket", "can not be
// read (Permission denied)". nullopt for a regular file that can be read.
std::optional<std::string> Why_Not_A_File(const std::string& path);

} // namespace quorlen
