#pragma once
// Plain text in and out of Rich Text Format, as much of it as the summary needs: lines,
// tabs and the 8-bit characters of the program, in a fixed-pitch font so that tables keep
// their columns in a word processor. The reader takes what other programs write as well:
// it skips font tables, pictures and other destinations, and keeps the text.

#include <string>
#include <string_view>

namespace quorlen {

// `text` has CR LF (or LF) line ends and 8-bit (Windows-1252) characters.
std::string Text_To_Rtf(std::string_view text);

// The text of an RTF document with CR LF line ends, 8-bit characters as the program keeps
// them; characters beyond that code page become "?". A text that is not RTF at all comes
// back as it stands.
std::string Rtf_To_Text(std::string_view rtf);

} // namespace quorlen
