#include "link/qt/qt_port_platform.h"

#include <QSerialPort>
#include <QSerialPortInfo>
#include <QSysInfo>

#include <climits>
#include <cstdlib>
#include <map>
#include <sys/stat.h>

namespace quorlen {

bool Qt_Port_Platform::Walk(std::vector<Found_Port>& found) {
    const std::map<std::string, std::string> stable = Stable_Links();
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) {
        Found_Port f;
        f.Location = info.systemLocation().toStdString();
        f.Description = info.description().toStdString();
        f.Name = f.Description.empty() ? info.portName().toStdString()
                                       : f.Description + " (" + info.portName().toStdString() + ")";
        f.Usb = info.hasVendorIdentifier() && info.hasProductIdentifier();
        if (auto it = stable.find(f.Location); it != stable.end()) f.Stable_Path = it->second;
        found.push_back(std::move(f));
    }
    return true;
}

bool Qt_Port_Platform::Exists(const std::string& path) const {
    struct stat st {};
    return stat(path.c_str(), &st) == 0 && S_ISCHR(st.st_mode);
}

bool Qt_Port_Platform::Cannot_Open(const std::string& path) const {
    QSerialPort port;
    port.setPortName(QString::fromStdString(path));
    if (!port.open(QIODevice::ReadWrite)) return true;
    port.close();
    return false;
}

bool Qt_Port_Platform::Is_Pseudo_Terminal(const std::string& path) const {
    char resolved[PATH_MAX];
    if (realpath(path.c_str(), resolved) == nullptr) return false;
    return std::string(resolved).rfind("/dev/pts/", 0) == 0;
}

std::string Running_System_Name() {
    return QSysInfo::prettyProductName().toStdString();
}

} // namespace quorlen
