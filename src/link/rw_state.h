#pragma once
// What reading, verifying and writing settings remember between procedures: the flags that a
// write tests after its verify, and what the window shows of the last operation.

#include <string>

namespace quorlen {

struct Rw_State {
    bool Verify_Mode = false;  // the next read compares instead of taking the image
    bool Write_Verify = false; // the verify is the last step of a write
    bool Master_Mismatch = false;
    bool Slave_Mismatch = false;
    bool Master_Error_Set = false; // a counter byte 1011..1022 is not 0
    bool Slave_Error_Set = false;
    bool Read_Failed = false; // the port could not be used
    // The last read or compare got every answer it asked for. Without this a write could take
    // a compare that never happened for one that found nothing to do.
    bool Read_Complete = false;
    // The master's image came whole in the last read or compare (its slave's may not have).
    bool Master_Read = false;
    // The last write ended with "Write finished": proved by its verify, or nothing to do.
    bool Write_Succeeded = false;
    bool Slave_Checked = false; // Check_Slave_Data_Strategy heard a slave

    // What the window shows.
    bool Error_Codes_Shown = false; // ErrCode_label and Error_Codes_txt
    int Error_Codes_Height = 4095;  // twips: 1452 when the report is on show beside it
    std::string Timer_label;
    std::string Write_bin_checksum_labell;
    int Progress_Done = 0; // characters or bytes of the operation under way
    int Progress_Total = 0;
};

} // namespace quorlen
