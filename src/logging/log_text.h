#pragma once
// The text primitives of the log file: keys found by their n-th appearance, fields cut the
// way the sensor entries are cut, numbers written with a point whatever the locale.

#include "core/user_dialogs.h"

#include <optional>
#include <string>
#include <string_view>

namespace quorlen {

// Every "," becomes ".".
std::string Commas_To_Points(std::string_view text);

// A number the way the program writes one into a file: at most 15 significant digits, no
// trailing zeros, a point for the decimal mark ("0.7", "100", "-10", "0.0098039").
std::string Number_Text(double value);

// A number from a control's text, with "," read as ".": "0,2" is 0.2.
double Text_Value(std::string_view text);

// The value of a status byte field: "h3F" and "3Fh" read as hex, as "&H3F" does; "&" with
// no hex digit behind it reads 0.
int Hex_Field_Value(std::string_view field);

// Positions [start, stop) of field n (1-based) of `line`, where a field ends at a TAB, or,
// when there is none further on, at ";", or at CR. Only a TAB moves on to the next field,
// and a field asked for past the last one begins again at the front, as the sensor entries
// are read. nullopt when nothing ends the field.
std::optional<std::pair<std::size_t, std::size_t>> Field_Bounds(std::string_view line, int n);
// The field itself; nullopt as above.
std::optional<std::string> Field_Of(std::string_view line, int n);

// Position of the occurrence-th `key` (1 = first) and of the line behind its "=", as
// [value_start, value_end) up to the next CR LF; nullopt when there is no such key.
struct Key_Line {
    std::size_t key = 0;
    std::size_t value_start = 0;
    std::size_t value_end = 0;
};
std::optional<Key_Line> Find_Key_Line(std::string_view text, std::string_view key, int occurrence);

// Finds the occurrence-th `key` in `text` and takes the text behind the next "=" up to the
// next CR LF as `line` (each "," as "."), and field `field` of it as `value`. Without the key
// both are empty and the result is false. A field that cannot be found shows "Did not find
// data no:" and the number in a box titled "WARNING" (when `dialogs` is given) and gives
// empty values.
bool get_log_file_setting(std::string_view text, std::string_view key, std::string& line, std::string& value,
                          int occurrence, int field, User_Dialogs* dialogs = nullptr);
// The same reading without the "," to "." of numbers, for free text.
std::string Raw_Log_File_Setting(std::string_view text, std::string_view key, int occurrence, int field);

// Replaces field `field` of the occurrence-th `key` line with `value`; the rest of the line
// and of the text stands. False, with the text unchanged, when the key or field is missing.
bool set_log_file_setting(std::string& text, std::string_view key, std::string_view value, int occurrence,
                          int field, User_Dialogs* dialogs = nullptr);

// The end-of-text marks (0x1A, 0x03) at which the text reading of old files stopped. On the
// line they are noise, and in a log they have no place.
bool Is_End_Of_Text(char c);
// Drops every end-of-text mark from `text`; the number dropped.
std::size_t Drop_End_Of_Text(std::string& text);

// Number of `c` in text[from, to).
long Count_Char(std::string_view text, char c, std::size_t from = 0, std::size_t to = std::string_view::npos);

} // namespace quorlen
