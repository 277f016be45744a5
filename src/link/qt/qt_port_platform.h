#pragma once
// The ports of a Linux machine as Qt finds them (udev, /sys/class/tty).

#include "link/serial_port_list.h"

namespace quorlen {

class Qt_Port_Platform final : public Port_Platform {
public:
    bool Walk(std::vector<Found_Port>& found) override;
    bool Exists(const std::string& path) const override;
    bool Cannot_Open(const std::string& path) const override;
    bool Is_Pseudo_Terminal(const std::string& path) const override;
};

// The name of the running system for people, e.g. "Debian GNU/Linux 12 (bookworm)".
std::string Running_System_Name();

} // namespace quorlen
