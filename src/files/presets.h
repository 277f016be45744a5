#pragma once
// User presets: named recipes of small changes to the image, kept in the configuration file
// as value<name>second$third!fourth£. Each of the three change lists is a row of items
// separated by ",": "@n" makes n the current position (above 255 it is 255), "sn" sets the
// bits n in the byte there (OR), "rn" keeps only the bits n (AND).

#include "core/debug_log.h"
#include "image/settings_image.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

struct Preset_Row {
    std::string name;    // between "<" and ">"
    std::string dataset; // before "<": the dataset the preset applies to
    std::string list1;   // between ">" and "$"
    std::string list2;   // between "$" and "!"
    std::string list3;   // between "!" and the pound sign
};

using Preset_Table = std::vector<Preset_Row>;

// The pound sign may stand as UTF-8 or as the single byte of the old 8-bit code page.
Preset_Row Parse_Preset_Line(std::string_view line);

// The one row of a configuration file without presets.
Preset_Row No_Preset_Row();

// One byte a preset item changed.
struct Preset_Change {
    int address = 0;
    int old_value = 0;
    int new_value = 0;
};

// Runs the three lists of `row` over `bytes`, in order, the position carrying from one list
// to the next. Returns the items that changed a byte. An item that would put a byte past
// 255, or a position below 0, changes nothing; its fault is left in `fault`.
std::vector<Preset_Change> Run_Preset_Lists(const Preset_Row& row, Image_Array<std::uint8_t>& bytes,
                                            std::string* fault = nullptr);

// "These presets will change:" and a line "position: old -> new" for each item that would
// change a byte, each line ended by CR LF. The image is left as it is.
std::string Show_Preset_Changes(const Preset_Row& row, const Settings_Image& image, Debug_Log& log);

// Applies the preset to the image and marks each byte it changed for the next write.
// Returns the changes.
std::vector<Preset_Change> Apply_Preset(const Preset_Row& row, Settings_Image& image, Debug_Log& log);

// The description file of a dataset: "DatasetID" + id + ".txt" in `folder` (which ends with
// "/"). Each line is an address, a comma and its words; a line whose words hold "bit" tells of
// a bit of that byte, and the byte is shown beside it in binary. Empty when there is no file.
std::string Dataset_Description_File(const std::string& folder, int dataset_id);
std::string Dataset_Description(const std::string& folder, int dataset_id, const Settings_Image& image);

// The base percentage of "Preset B": a number above 0, or nothing.
inline constexpr const char* Pre_perc_Missing_Text = "Please specify base percentage for preset calculation";
bool Pre_perc_Valid(std::string_view text, double& percent);

} // namespace quorlen
