#pragma once
// What the main window keeps for the box link: the port used for settings work, the
// machine's port walk, and the controls the link adds to the communication page.

#include "link/qt/qt_port_platform.h"
#include "link/qt/qt_serial_line.h"
#include "link/serial_port_list.h"

#include <memory>

class QLabel;
class QPushButton;

namespace quorlen::ui {

struct Link_Panel {
    Qt_Serial_Line MSComm1;
    Qt_Port_Platform platform;
    std::unique_ptr<clsSerialPortList> Port_List; // built by the load
    QPushButton* Command2 = nullptr;
    QLabel* OS_label = nullptr;
    QLabel* Box_Info_label = nullptr; // the last banner on one line
};

} // namespace quorlen::ui
