#pragma once
// What the main window adds for reading, verifying and writing settings: the progress of the
// operation under way, the binary paths' buttons and labels, and the clearing of the box's
// error counters.

class QLabel;
class QProgressBar;
class QPushButton;

namespace quorlen::ui {

struct Rw_Panel {
    QProgressBar* Progress = nullptr; // characters or bytes of the operation under way
    QPushButton* Read_bin_command_cmd = nullptr;
    QPushButton* Verify_bR_Settings = nullptr;
    QPushButton* Write_bin_command_cmd = nullptr;
    QPushButton* Clear_Err_Counters_cmd = nullptr;
    QLabel* Timer_label = nullptr;
    QLabel* Write_bin_checksum_labell = nullptr;
    bool Running = false; // a settings procedure owns the port; the served events must not start another
};

} // namespace quorlen::ui
