#pragma once
// The File menu's list of files opened or saved lately, newest first.

#include <cstddef>
#include <string>
#include <vector>

namespace quorlen {

inline constexpr std::size_t Recent_Files_Kept = 8;

// `list` with `path` put first: a file already there moves up rather than standing twice, and
// the oldest falls off beyond `kept`.
std::vector<std::string> Push_Recent(std::vector<std::string> list, const std::string& path,
                                     std::size_t kept = Recent_Files_Kept);

// The menu's text of entry `index` (from 0): "&1 name.qxs", the folder left to the tooltip,
// and a "&" of the name doubled so that it shows.
std::string Recent_Menu_Text(std::size_t index, const std::string& path);

} // namespace quorlen
