#include "link/serial_line.h"

#include <charconv>

namespace quorlen {

std::string Settings_Text(std::int32_t baud) {
    return std::to_string(baud) + ",n,8,1";
}

std::optional<std::int32_t> Settings_Baud(std::string_view settings) {
    std::int32_t baud = 0;
    auto [end, ec] = std::from_chars(settings.data(), settings.data() + settings.size(), baud);
    if (ec != std::errc() || baud <= 0) return std::nullopt;
    if (end != settings.data() + settings.size() && *end != ',') return std::nullopt;
    return baud;
}

std::string Group_To_Join(const std::string& device_group, unsigned mode) {
    constexpr unsigned group_read_write = 060;
    if (device_group.empty() || device_group == "root" || device_group == "tty" ||
        (mode & group_read_write) != group_read_write)
        return "dialout";
    return device_group;
}

std::string Open_Failure_Advice(const std::string& path, const Open_Result& result) {
    switch (result.failure) {
    case Open_Failure::None:
        return path + " is open";
    case Open_Failure::Missing:
        return path + " does not exist: is the adapter plugged in, or the simulator running?";
    case Open_Failure::Busy:
        return path + " is in use by another program; close that program and try again";
    case Open_Failure::No_Permission: {
        const std::string group = Group_To_Join(result.group, 060);
        return path + ": permission denied. Add yourself to the group '" + group + "' (sudo usermod -aG " +
               group + " $USER) and log in again";
    }
    case Open_Failure::Not_A_Serial_Port:
        return path + " is not a serial port";
    case Open_Failure::Other:
        break;
    }
    return path + ": " + (result.text.empty() ? "cannot be opened" : result.text);
}

} // namespace quorlen
