#pragma once
// Reading the box's image into CardByte, and verifying: the same read, compared instead of
// taken, where each difference marks its byte so that a write then sends just what differs.
// A slave box behind the master is read and compared too, and the error counters at the end
// of the image are always looked at.

#include "link/settings_context.h"

namespace quorlen {

// The Read button: the text image, with the question when the box holds another dataset.
void Read_Settings_Click(Settings_Context& s);
// The same flow through the binary frame.
void Read_bin_command_cmd_Click(Settings_Context& s);
// Sends "bR" and checks the frame; TempByte holds the image when `ok`.
void Read_bin(Settings_Context& s, bool& ok);

// The Verify button, and its binary twin.
void Verify_Settings_Click(Settings_Context& s);
void Verify_bR_Settings_Click(Settings_Context& s);

// A shorter compare that counts the differences, for use while nothing else runs.
void Read_Settings_Fast(Settings_Context& s);
void Fast_Verify_Click(Settings_Context& s);

// The older single-button path.
void Com_Read_Click(Settings_Context& s);
// Whether a slave answers; sets Slave_Checked.
void Check_Slave_Data_Strategy(Settings_Context& s);

} // namespace quorlen
