#pragma once
// How port numbers (COMx, the ini key comport1) meet Linux device paths.
//
// The usual kernel names have fixed numbers, so a number in the ini file means the same
// device on every start, and the USB adapters a tuner uses fall below 17:
//   COM1..COM8    /dev/ttyUSB0..7    USB serial adapters
//   COM9..COM12   /dev/ttyACM0..3    USB modem-class adapters
//   COM13..COM16  /dev/ttyS0..3      on-board RS232
//   100+n, 200+n, 300+n              ttyUSBn, ttyACMn, ttySn beyond those (n below 100)
// Any other path (a pseudo-terminal, a /dev/serial/by-id link, the simulator's link) gets a
// number from 1000 up for this run, and the ini file keeps its path instead of the number.

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

inline constexpr int First_Path_Number = 1000;

// The fixed number of a device path; 0 when it has none.
int Fixed_Port_Number(std::string_view path);
// The device of a fixed number; "" when the number has none.
std::string Fixed_Port_Path(int number);

// Where a link (e.g. /dev/serial/by-id/usb-FTDI_...-port0 -> ../../ttyUSB0) points, as an
// absolute path; "" when `path` is no link.
std::string Link_Target(const std::string& path);

// The links of `folder` (udev's /dev/serial/by-id), by the device each points to. A USB
// adapter keeps its link when it is plugged in again, whatever ttyUSB number it gets.
std::map<std::string, std::string> Stable_Links(const std::string& folder = "/dev/serial/by-id");

class Port_Names {
public:
    // The number of `path`, registering it when it has no fixed one.
    int Number_For(const std::string& path);
    // The device of a number; "" when none is known.
    std::string Path_Of(int number) const;
    // What the texts call the port: its device path, or "COM" + number when it has none.
    std::string Name_Of(int number) const;

    // The value of comport1 for a number: the number, or the path of a registered one, or
    // the stable link of a device that has one.
    std::string Ini_Value(int number) const;
    // The number of a comport1 value: a path ("/...") or a number read leniently. A link to a
    // device with a fixed number gives that number and stays its stable name.
    int From_Ini(const std::string& value);

    // The link by which the device of a fixed number is remembered ("" to forget it).
    void Set_Stable_Path(int number, const std::string& link);

    // Paths registered so far, in the order they were first seen.
    const std::vector<std::string>& Registered() const { return paths_; }

private:
    std::vector<std::string> paths_;
    std::map<int, std::string> stable_;
};

} // namespace quorlen
