#pragma once
// What the main window keeps for the Mapchip tab: the card reader (PC/SC), the Chipdrive
// command entry on top of it, and the tab's controls.

#include "cards/chipdrive.h"
#include "cards/pcsc/pcsc_reader.h"

class QLineEdit;
class QProgressBar;
class QPushButton;
class QTimer;

namespace quorlen::ui {

struct Card_Panel {
    explicit Card_Panel(const std::string& pin) : chipdrive(reader, pin) {}
    Pcsc_Reader reader;
    Reader_Chipdrive chipdrive;
    QLineEdit* qx_crw_text = nullptr;
    QProgressBar* Progress = nullptr;
    QLineEdit* txt_Chipdrive_status = nullptr;
    QLineEdit* txt_Card_PIN = nullptr;
    QLineEdit* txt_TodosStatus = nullptr;
    QTimer* ChipDrive_timer = nullptr;
    bool Searched = false; // the Chipdrive search ran once the tab was first shown
};

} // namespace quorlen::ui
