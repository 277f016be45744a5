#pragma once
// A log of the simulator's test-drive as the program would have saved it: the shipped default
// log settings around text rows from the box's own stream generator.

#include "log_stream.h"

#include <fstream>
#include <sstream>
#include <string>

namespace quorlen::test {

// `count` rows of the drive from its row `first` (20 rows a second; the pull starts at 100),
// under the name `name`.
inline std::string Drive_Log_Text(const std::string& shipped_defaults_path, int first, int count,
                                  const std::string& name = "drive.qxl") {
    std::ifstream in(shipped_defaults_path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    std::string text = s.str();
    const std::string key = "Log_File_Name=RZ400_800M3_Default_Log_Settings.qxl";
    if (const auto at = text.find(key); at != std::string::npos)
        text.replace(at, key.size(), "Log_File_Name=" + name);
    std::string data = "[log_data]\r\nLa\r\n" + boxsim::Text_Header() + "\r\n";
    for (int r = first; r < first + count; ++r)
        data += boxsim::Text_Row(boxsim::Engine_At(r)) + "\r\n";
    data += "[end log_data]\r\n";
    const auto data_at = text.find("[log_data]");
    const auto dataset_at = text.find("[log_dataset]");
    return text.substr(0, data_at) + data + "\r\n" + text.substr(dataset_at);
}

} // namespace quorlen::test
