#pragma once
// User presets as the configuration file keeps them: value<name>second$third!fourth£

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

} // namespace quorlen
