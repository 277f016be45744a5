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

#include <string>
#include <string_view>
#include <vector>

namespace quorlen {

inline constexpr int First_Path_Number = 1000;

// The fixed number of a device path; 0 when it has none.
int Fixed_Port_Number(std::string_view path);
// The device of a fixed number; "" when the number has none.
std::string Fixed_Port_Path(int number);

class Port_Names {
public:
    // The number of `path`, registering it when it has no fixed one.
    int Number_For(const std::string& path);
    // The device of a number; "" when none is known.
    std::string Path_Of(int number) const;
    // What the texts call the port: its device path, or "COM" + number when it has none.
    std::string Name_Of(int number) const;

    // The value of comport1 for a number: the number, or the path of a registered one.
    std::string Ini_Value(int number) const;
    // The number of a comport1 value: a path ("/...") or a number read leniently.
    int From_Ini(const std::string& value);

    // Paths registered so far, in the order they were first seen.
    const std::vector<std::string>& Registered() const { return paths_; }

private:
    std::vector<std::string> paths_;
};

} // namespace quorlen
