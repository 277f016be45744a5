#pragma once
// The readable settings summary: the words a person reads of a tune, shown in the summary
// viewer, printed for a customer, and stored in every log between the lines
// "[readable_settings]" and "[end readable_settings]" so that a log tells by itself what tune
// it was taken with. Lines end in CR LF; a label and its value are parted by two TABs.

#include <string>
#include <vector>

namespace quorlen {

inline constexpr const char* Readable_Settings_Tag = "[readable_settings]";
inline constexpr const char* Readable_Settings_End_Tag = "[end readable_settings]";

// What the summary tells, gathered by the caller: the box's part is what the box said last,
// empty when no box has answered.
struct Summary_Facts {
    std::string program_version;  // major.minor.revision
    std::string operating_system; // the running system's name
    std::string firmware;         // the box's firmware version
    std::string sc_id;            // the smart-card ID
    std::string serial;           // the box's serial number, without "RZ"
    bool slave_mode = false;      // the image sets the box to slave
    bool slave_present = false;   // a slave box answered
};

// Update_Readable_Setting_Window's text, from "[readable_settings]" to
// "[end readable_settings]" and its CR LF.
std::string Readable_Settings_Text(const Summary_Facts& facts);

// A grid as its window shows it: row 0 the header row, column 0 the header column.
using Text_Grid = std::vector<std::vector<std::string>>;

// The maps the table section shows.
struct Summary_Tables {
    Text_Grid ignition; // the ignition map
    Text_Grid fuel;     // the fuel map
    Text_Grid boost;    // the boost (PWM 1) table: axis, sensor value, duty
    bool boost_over_rpm = false;
};

// "--------Tables--------" and each map in full, one after the other, in columns wide
// enough for their widest cell.
std::string Show_Tabels_Alt1(const Summary_Tables& tables);
// The same section with the axes three side by side: the load axes of the ignition map, the
// fuel map and the boost table, then the rpm axes of the fuel map, the ignition map and the
// boost table. The boost table stands under load or rpm, as its axis runs, with its values.
std::string Show_Tabels_Alt2(const Summary_Tables& tables);

// The readable section of a log text: from its opening tag to the end of its closing tag
// line. Empty when the log holds none (or nothing at all).
std::string Readable_Section_Of(const std::string& log_text);

// The text between the two tags of a readable section, without the tag lines; what a log's
// [readable_settings] section holds is this text framed by the tags.
std::string Readable_Settings_Body(const std::string& readable_text);

} // namespace quorlen
