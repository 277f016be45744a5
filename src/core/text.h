#pragma once
// Small text helpers with the semantics the configuration and settings files were written with.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

bool Equal_No_Case(std::string_view a, std::string_view b);
// "drive.QXL" ends with ".qxl".
bool Ends_With_No_Case(std::string_view text, std::string_view end);

// Leading number of a text, as a loose reader takes it: blanks skipped, an optional sign,
// digits and one decimal point; anything else ends it. "" and "abc" give 0.
double Val(std::string_view text);

// The whole part of a number read from a file or the line when it lies within [lo, hi];
// nullopt for anything else (NaN among it), which would not fit what it is meant for.
std::optional<long> Whole_Within(double value, long lo, long hi);

// Strict conversion of a whole text (blanks around allowed) to an integer; nullopt when the
// text is not a number at all, as "ENG" is not.
std::optional<long> To_Integer(std::string_view text);

// Splits on LF, dropping one CR before each LF; a final line without LF counts, a final LF
// does not add an empty line.
std::vector<std::string> Split_Lines(std::string_view text);

std::string Trim(std::string_view text);

} // namespace quorlen
