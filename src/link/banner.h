#pragma once
// The box's answer to "v": CR LF lines, found by their names, ended by LF.

#include <string>
#include <string_view>

namespace quorlen {

struct Banner_Fields {
    std::string Box_Version;
    long Box_Serial = 0;
    std::string Box_Dataset_ID;
    std::string Box_Status_Flags;
    std::string Box_Status_Value; // "" when the status line ends after the flags
    bool Engine_Running = false;
    bool Slave_Present = false;
    bool Smartcard_Present = false;
    bool Master = false;
};

// Complete: it holds "mode" and its last character is LF.
bool Banner_Complete(std::string_view answer);
// The box sits in its boot loader: the answer is the bare echo, or carries its prompt.
bool Banner_From_Bootloader(std::string_view answer);
// The display bus of the box failed while it wrote the banner.
bool Banner_Has_I2C_Timeout(std::string_view answer);

Banner_Fields Read_Banner(std::string_view answer);
// The text of the "Connected box info" box, CR LF lines.
std::string Box_Info_Text_Of(const Banner_Fields& fields);

} // namespace quorlen
