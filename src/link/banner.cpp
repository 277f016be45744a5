#include "link/banner.h"

#include "core/text.h"

namespace quorlen {

namespace {

// `count` characters from `offset` after where `name` starts; "" without the name.
std::string Field(std::string_view answer, std::string_view name, std::size_t offset, std::size_t count) {
    const auto at = answer.find(name);
    if (at == std::string_view::npos || at + offset > answer.size()) return "";
    return std::string(answer.substr(at + offset, count));
}

long Hex_Pair(std::string_view pair) {
    long value = 0;
    for (char c : pair) {
        int digit = -1;
        if (c >= '0' && c <= '9') digit = c - '0';
        if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
        if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
        if (digit < 0) break; // read as far as it is hexadecimal, like the decimal form
        value = value * 16 + digit;
    }
    return value;
}

} // namespace

bool Banner_Complete(std::string_view answer) {
    return answer.find("mode") != std::string_view::npos && !answer.empty() && answer.back() == '\n';
}

bool Banner_From_Bootloader(std::string_view answer) {
    return answer == "v" || answer.find("bl24>") != std::string_view::npos;
}

bool Banner_Has_I2C_Timeout(std::string_view answer) {
    return answer.find("I2C TIME OUT 2") != std::string_view::npos;
}

Banner_Fields Read_Banner(std::string_view answer) {
    Banner_Fields f;
    if (const auto at = answer.find("VELMORA ECU");
        at != std::string_view::npos && at + 12 <= answer.size()) {
        const auto end = answer.find("\r\n", at + 12);
        f.Box_Version =
            std::string(answer.substr(at + 12, end == std::string_view::npos ? end : end - at - 12));
    }
    const std::string serial = Field(answer, "Serial", 9, 5);
    if (serial.size() == 5 && serial[4] == 'h')
        f.Box_Serial = Hex_Pair(std::string_view(serial).substr(0, 2)) * 256 +
                       Hex_Pair(std::string_view(serial).substr(2, 2));
    else
        f.Box_Serial = static_cast<long>(Val(serial));
    f.Box_Dataset_ID = Field(answer, "SC ID", 6, 3);
    f.Box_Status_Flags = Field(answer, "Status", 7, 3);
    f.Box_Status_Value = Field(answer, "Status", 10, 2);
    if (f.Box_Status_Value == "\r\n") f.Box_Status_Value.clear();
    f.Engine_Running = (static_cast<long>(Val(f.Box_Status_Value)) & 1) != 0;
    f.Slave_Present = answer.find("Slave present") != std::string_view::npos;
    f.Smartcard_Present = answer.find("Smartcard present") != std::string_view::npos;
    f.Master = answer.find("Master") != std::string_view::npos;
    return f;
}

std::string Box_Info_Text_Of(const Banner_Fields& f) {
    std::string text = "VELMORA RZ " + f.Box_Version + "\r\n";
    text += "Serial RZ" + std::to_string(f.Box_Serial) + "\r\n";
    text += "SC ID " + f.Box_Dataset_ID + "\r\n";
    text += f.Master ? "Master mode" : "Slave mode";
    text += "\r\n";
    if (f.Smartcard_Present) text += "Smartcard Present \r\n";
    if (f.Slave_Present) text += "Slave Present \r\n";
    return text;
}

} // namespace quorlen
