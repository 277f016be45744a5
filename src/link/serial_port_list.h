#pragma once
// The serial ports of the machine, for the preferences to choose from. The system's own
// walk (QSerialPortInfo on Linux) sits behind Port_Platform; the merge, the filter and the
// rules of the list on show are here and know no system.

#include "link/port_names.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorlen {

// One port as the system's walk reports it.
struct Found_Port {
    std::string Name;        // a name for people
    std::string Description; // the system's description of the device
    std::string Location;    // device path
    bool Usb = false;        // the device has a USB vendor and product identity
    std::string Stable_Path; // its /dev/serial/by-id link, when it has one
};

class Port_Platform {
public:
    virtual ~Port_Platform() = default;
    // The system's list of serial ports; false when it could not be walked.
    virtual bool Walk(std::vector<Found_Port>& found) = 0;
    // The path names a terminal device (following links).
    virtual bool Exists(const std::string& path) const = 0;
    // The port can't be opened now.
    virtual bool Cannot_Open(const std::string& path) const = 0;
    virtual bool Is_Pseudo_Terminal(const std::string& path) const = 0;
};

// The words a USB adapter's entry must carry to be offered without "Not available! ".
inline constexpr const char* Usb_Port_Description = "USB Serial Port";

class clsSerialPort {
public:
    clsSerialPort() = default;
    explicit clsSerialPort(const Port_Platform* platform) : platform_(platform) {}

    std::string Name;
    std::string Description;
    std::string DevPath;
    bool IsUsb = false;
    bool IsBusy = false;
    std::string Product;     // a USB adapter's own description ("FT232R USB UART")
    std::string Stable_Path; // the link that names the adapter whatever its ttyUSB number
    std::int16_t COMx = 0;

    // Reading WasBusy copies the stored flag into IsBusy and answers false, whatever the
    // flag: that is what callers have always got from it.
    bool WasBusy() {
        IsBusy = WasBusy_;
        return false;
    }
    void WasBusy(bool value) { WasBusy_ = value; }

    // What the port is called on screen: its device path here ("COM" + COMx without one).
    std::string COMxString() const;
    // True when the port can't be opened now.
    bool checkIfOpen() const;
    // True when the port exists and is a serial port.
    bool CheckIfExist() const;

private:
    bool WasBusy_ = false;
    const Port_Platform* platform_ = nullptr;
};

class clsSerialPortList {
public:
    // `simulator_links` are paths where the box simulator is usually found; those that
    // exist join the list, as do the paths `names` has registered (the chosen port).
    clsSerialPortList(Port_Platform& platform, Port_Names& names,
                      std::vector<std::string> simulator_links = {});

    void EnumerateList(std::int16_t max_port, bool CheckExist, bool CheckOpen, bool Merge);
    // The numbered ports 1 to `max_port`, whether the system knows them or not.
    void PopulateList(std::int16_t max_port, bool CheckExist, bool CheckOpen);

    // From 1.
    clsSerialPort& port(int index) { return ports_.at(static_cast<std::size_t>(index - 1)); }
    const clsSerialPort& port(int index) const { return ports_.at(static_cast<std::size_t>(index - 1)); }
    void port(int index, const clsSerialPort& value) { port(index) = value; }
    void AddPort(const clsSerialPort& value) { ports_.push_back(value); }
    std::int16_t PortCount() const { return static_cast<std::int16_t>(ports_.size()); }

private:
    bool Device_Walk(bool CheckExist, bool CheckOpen);
    void Add_Filtered(const clsSerialPort& p, bool CheckExist, bool CheckOpen);

    Port_Platform* platform_;
    Port_Names& names_;
    std::vector<std::string> simulator_links_;
    std::vector<clsSerialPort> ports_;
};

// Where the simulator's link usually stands: $XDG_RUNTIME_DIR/quorlen-box, /tmp/quorlen-box.
std::vector<std::string> Simulator_Link_Candidates(const char* xdg_runtime_dir);

// The list of the preferences form and the entry it selects.
struct Combo1_Entry {
    std::string text;
    int COMx = 0;
};
struct Combo1_Fill {
    std::vector<Combo1_Entry> entries;
    int selected = -1; // entry index; -1 when none
    int Com_Port = 0;  // the selected port number, changed when the only USB adapter was taken
};
Combo1_Fill Fill_Combo1(const clsSerialPortList& list, int Com_Port);

} // namespace quorlen
